// TextNumbers.cpp - see TextNumbers.h.

#include "TextNumbers.h"

#include <charconv>
#include <system_error>

namespace {

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// Moves pos over a run of decimal digits; returns how many it passed.
size_t SkipDigits(const propstring& text, size_t& pos) {
  const size_t start = pos;
  while (pos < text.size() && IsDigit(text[pos])) ++pos;
  return pos - start;
}

// std::from_chars takes no leading '+', so the sign is judged here and the
// digits after a '+' are handed on alone.
size_t NumberStart(const propstring& text) {
  return !text.empty() && text[0] == '+' ? 1 : 0;
}

bool IsDecimalFloatingSyntax(const propstring& text) {
  size_t pos = 0;
  if (pos < text.size() && (text[pos] == '+' || text[pos] == '-')) ++pos;
  size_t digits = SkipDigits(text, pos);
  if (pos < text.size() && text[pos] == '.') {
    ++pos;
    digits += SkipDigits(text, pos);
  }
  if (digits == 0) return false;
  if (pos < text.size() && (text[pos] == 'e' || text[pos] == 'E')) {
    ++pos;
    if (pos < text.size() && (text[pos] == '+' || text[pos] == '-')) ++pos;
    if (SkipDigits(text, pos) == 0) return false;
  }
  return pos == text.size();
}

}  // namespace

TextNumbers::NotAnInteger::NotAnInteger(const propstring& text)
    : std::invalid_argument("not an integer: \"" + text + "\"") {}

TextNumbers::NotAnInteger::~NotAnInteger() noexcept {}

TextNumbers::NotADouble::NotADouble(const propstring& text)
    : std::invalid_argument("not a double: \"" + text + "\"") {}

TextNumbers::NotADouble::~NotADouble() noexcept {}

int TextNumbers::StdStringToInteger(const propstring& text) {
  const size_t start = NumberStart(text);
  // A '+' followed by a '-' would otherwise pass from_chars as a negative.
  if (start < text.size() && text[start] == '-' && start > 0) {
    throw NotAnInteger(text);
  }
  const char* first = text.data() + start;
  const char* last = text.data() + text.size();
  int value = 0;
  const std::from_chars_result result = std::from_chars(first, last, value);
  if (result.ec != std::errc() || result.ptr != last) throw NotAnInteger(text);
  return value;
}

double TextNumbers::StdStringToDouble(const propstring& text) {
  if (!IsDecimalFloatingSyntax(text)) throw NotADouble(text);
  const char* first = text.data() + NumberStart(text);
  const char* last = text.data() + text.size();
  double value = 0.0;
  const std::from_chars_result result =
      std::from_chars(first, last, value, std::chars_format::general);
  if (result.ec != std::errc() || result.ptr != last) throw NotADouble(text);
  return value;
}
