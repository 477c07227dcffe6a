// FuzzSupport.h - checks and helpers shared by the fuzz targets.
//
// The targets compare the library's reading with the reference reader of the
// tests (tests/support/ReferenceReader.h), which restates the file rules of
// JavaProperties and IniProperties in the plainest way. A failed check prints
// what was expected and aborts, which both libFuzzer and the replay runner
// report as a failure of the input.

#ifndef FUZZ_FUZZSUPPORT_H_
#define FUZZ_FUZZSUPPORT_H_

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <sstream>
#include <string>

#include "Property.h"
#include "support/ReferenceReader.h"

// Aborts with the failed condition and details (anything that can be
// streamed) unless condition holds.
#define FUZZ_CHECK(condition, details)                   \
  do {                                                   \
    if (!(condition)) {                                  \
      std::ostringstream fuzzCheckDetails;               \
      fuzzCheckDetails << details;                       \
      fuzz_support::Fail(__FILE__, __LINE__, #condition, \
                         fuzzCheckDetails.str());        \
    }                                                    \
  } while (0)

namespace fuzz_support {

typedef test_support::ReferenceSection Table;

[[noreturn]] inline void Fail(const char* file, int line, const char* condition,
                              const std::string& details) {
  std::fprintf(stderr, "%s:%d: check failed: %s\n%s\n", file, line, condition,
               details.c_str());
  std::fflush(stderr);
  std::abort();
}

// text in double quotes, with every byte outside printable ASCII (and the
// quote and backslash) written as \xNN, so that reports show blanks and
// control bytes.
inline std::string Quote(const std::string& text) {
  static const char kHex[] = "0123456789abcdef";
  std::string quoted = "\"";
  for (char c : text) {
    const unsigned char byte = static_cast<unsigned char>(c);
    if (byte < 0x20 || byte >= 0x7f || c == '"' || c == '\\') {
      quoted += "\\x";
      quoted += kHex[byte >> 4];
      quoted += kHex[byte & 0xf];
    } else {
      quoted += c;
    }
  }
  return quoted + "\"";
}

inline std::string Show(const Table& table) {
  std::string text = "{";
  for (const auto& entry : table) {
    text += " " + Quote(entry.first) + ": " + Quote(entry.second);
  }
  return text + " }";
}

inline std::string ToString(const uint8_t* data, size_t size) {
  return std::string(reinterpret_cast<const char*>(data), size);
}

// The length of the longest line of text (lines end at line feeds).
inline size_t LongestLine(const std::string& text) {
  size_t longest = 0;
  size_t start = 0;
  for (;;) {
    const size_t end = text.find('\n', start);
    const size_t length =
        (end == std::string::npos ? text.size() : end) - start;
    if (length > longest) longest = length;
    if (end == std::string::npos) return longest;
    start = end + 1;
  }
}

// True if a text written as a key or a value reads back unchanged.
inline bool IsStableField(const std::string& text) {
  return text.find_first_of(std::string("\n\0", 2)) == std::string::npos &&
         test_support::CleanField(text) == text;
}

// Runs scenario; any exception leaving it fails the input (the library only
// ever throws Property::WrongValue, and the scenarios catch it where a value
// may be rejected).
template <typename Scenario>
void RunWithoutEscapes(Scenario scenario) {
  try {
    scenario();
  } catch (Property::WrongValue& e) {
    FUZZ_CHECK(false, "unexpected Property::WrongValue " << Quote(e.m_message));
  } catch (std::exception& e) {
    FUZZ_CHECK(false, "unexpected exception: " << e.what());
  } catch (...) {
    FUZZ_CHECK(false, "unexpected exception of unknown type");
  }
}

}  // namespace fuzz_support

#endif  // FUZZ_FUZZSUPPORT_H_
