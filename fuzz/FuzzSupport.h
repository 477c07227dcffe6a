// FuzzSupport.h - checks and small reference readers shared by the fuzz
// targets.
//
// The reference functions restate the file rules of JavaProperties and
// IniProperties in the plainest way (whole strings, no buffers), so that a
// target can compare the library's reading with them. A failed check prints
// what was expected and aborts, which both libFuzzer and the replay runner
// report as a failure of the input.

#ifndef FUZZ_FUZZSUPPORT_H_
#define FUZZ_FUZZSUPPORT_H_

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "Property.h"

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

typedef std::map<std::string, std::string> Table;
typedef std::map<std::string, Table> SectionTable;

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

// The six blanks of the files, in every locale.
inline bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' ||
         c == '\r';
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

// The lines the readers see: split at line feeds, each cut at its first NUL
// (lines are handled as C strings). An input ending in a line feed has one
// more, empty, line; so has the empty input.
inline std::vector<std::string> LinesOf(const std::string& text) {
  std::vector<std::string> lines;
  size_t start = 0;
  for (;;) {
    const size_t end = text.find('\n', start);
    std::string line = text.substr(
        start, end == std::string::npos ? std::string::npos : end - start);
    const size_t nul = line.find('\0');
    if (nul != std::string::npos) line.resize(nul);
    lines.push_back(line);
    if (end == std::string::npos) return lines;
    start = end + 1;
  }
}

// Field cleaning: the field without its leading and trailing blanks, and
// then without one pair of enclosing quotes. A lone opening quote stays.
// field holds no NUL.
inline std::string ReferenceExtract(const std::string& field) {
  size_t begin = 0;
  size_t end = field.size();
  while (begin < end && IsBlank(field[begin])) ++begin;
  while (end > begin && IsBlank(field[end - 1])) --end;
  if (end - begin >= 2 && field[begin] == '"' && field[end - 1] == '"') {
    ++begin;
    --end;
  }
  return field.substr(begin, end - begin);
}

// True if a text written as a key or a value reads back unchanged.
inline bool IsStableField(const std::string& text) {
  return text.find_first_of(std::string("\n\0", 2)) == std::string::npos &&
         ReferenceExtract(text) == text;
}

// The flat reader: what Load of text adds to table.
inline void ReferenceFlatLoad(const std::string& text, Table& table) {
  for (std::string line : LinesOf(text)) {
    const size_t comment = line.find('#');
    if (comment != std::string::npos) line.resize(comment);
    const size_t equals = line.find('=');
    if (equals == std::string::npos) continue;
    table[ReferenceExtract(line.substr(0, equals))] =
        ReferenceExtract(line.substr(equals + 1));
  }
}

// The flat writer: what Store writes for table and header.
inline std::string ReferenceFlatText(const Table& table,
                                     const std::string& header) {
  std::string text;
  if (!header.empty()) text += "#" + header + "\n";
  for (const auto& entry : table) {
    text += entry.first + "=" + entry.second + "\n";
  }
  return text;
}

// True if the cleaned INI line text is a section header; then name is set.
inline bool IsIniHeader(const std::string& cleaned, std::string& name) {
  if (cleaned.empty() || cleaned[0] != '[') return false;
  const size_t close = cleaned.rfind(']');
  name = close == std::string::npos ? cleaned.substr(1)
                                    : cleaned.substr(1, close - 1);
  return true;
}

// An INI line after comment removal and, if it holds '[', cleaning: the
// text that is then read as a header or an entry.
inline std::string IniLineText(std::string line) {
  const size_t comment = line.find(';');
  if (comment != std::string::npos) line.resize(comment);
  if (line.find('[') != std::string::npos) line = ReferenceExtract(line);
  return line;
}

// The INI reader: what Load of text does to sections.
inline void ReferenceIniLoad(const std::string& text, SectionTable& sections) {
  std::string current;
  Table pending;
  for (const std::string& line : LinesOf(text)) {
    const std::string cleaned = IniLineText(line);
    std::string name;
    if (IsIniHeader(cleaned, name)) {
      if (!current.empty()) sections[current] = pending;
      pending.clear();
      current = name;
      continue;
    }
    const size_t equals = cleaned.find('=');
    if (equals == std::string::npos) continue;
    pending[ReferenceExtract(cleaned.substr(0, equals))] =
        ReferenceExtract(cleaned.substr(equals + 1));
  }
  if (!current.empty()) sections[current] = pending;
}

// The INI writer: what Store writes for sections and header.
inline std::string ReferenceIniText(const SectionTable& sections,
                                    const std::string& header) {
  std::string text;
  if (!header.empty()) text += ";" + header + "\n";
  for (const auto& section : sections) {
    text += "[" + section.first + "]\n";
    for (const auto& entry : section.second) {
      text += entry.first + "=" + entry.second + "\n";
    }
    text += "\n";
  }
  return text;
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
