// Json.cpp - see Json.h.

#include "propctl/Json.h"

#include <cstddef>
#include <string>

namespace {

// The length of the valid UTF-8 sequence at text[at], or 0 if the bytes
// there are not one: no overlong forms, no surrogates, nothing beyond
// U+10FFFF.
size_t Utf8Length(const std::string& text, size_t at) {
  const unsigned char lead = static_cast<unsigned char>(text[at]);
  size_t length;
  unsigned char low = 0x80;
  unsigned char high = 0xBF;
  if (lead >= 0xC2 && lead <= 0xDF) {
    length = 2;
  } else if (lead >= 0xE0 && lead <= 0xEF) {
    length = 3;
    if (lead == 0xE0) low = 0xA0;   // Overlong below U+0800.
    if (lead == 0xED) high = 0x9F;  // Surrogates U+D800-U+DFFF.
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    length = 4;
    if (lead == 0xF0) low = 0x90;   // Overlong below U+10000.
    if (lead == 0xF4) high = 0x8F;  // Beyond U+10FFFF.
  } else {
    return 0;
  }
  if (text.size() - at < length) return 0;
  for (size_t i = 1; i < length; ++i) {
    const unsigned char next = static_cast<unsigned char>(text[at + i]);
    if (next < (i == 1 ? low : 0x80) || next > (i == 1 ? high : 0xBF)) {
      return 0;
    }
  }
  return length;
}

void AppendEscapedByte(unsigned char byte, std::string& out) {
  const char kHex[] = "0123456789abcdef";
  out += "\\u00";
  out += kHex[byte >> 4];
  out += kHex[byte & 0x0F];
}

}  // namespace

std::string JsonString(const std::string& bytes) {
  std::string out = "\"";
  size_t at = 0;
  while (at < bytes.size()) {
    const unsigned char byte = static_cast<unsigned char>(bytes[at]);
    if (byte == '"' || byte == '\\') {
      out += '\\';
      out += static_cast<char>(byte);
      ++at;
    } else if (byte < 0x20 || byte == 0x7F) {
      AppendEscapedByte(byte, out);
      ++at;
    } else if (byte < 0x80) {
      out += static_cast<char>(byte);
      ++at;
    } else if (const size_t length = Utf8Length(bytes, at)) {
      out.append(bytes, at, length);
      at += length;
    } else {
      AppendEscapedByte(byte, out);
      ++at;
    }
  }
  return out + "\"";
}
