// JavaProperties.cpp - see JavaProperties.h.

#include "JavaProperties.h"

#include <assert.h>

#include <cstring>
#include <fstream>

#include "PropertyFile.h"

namespace {

const char kFile[] = "Src/JavaProperties.cpp";

char kErrorReading[] = "Error reading Line %d";
char kTooLong[] = "Line %d is too long";
char kRedefinesProperty[] = "Line %d redefines a property";
char kLoading[] = "Loading '%s' to '%s'";
char kSetting[] = "Setting '%s' to '%s'";
char kNotFound[] = "Property '%s' was not found";

// The blanks of the C locale's isspace(), whatever the process locale is, so
// that a file reads the same in every program.
bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' ||
         c == '\r';
}

}  // namespace

JavaProperties::JavaProperties() {}

JavaProperties::~JavaProperties() {}

bool JavaProperties::Load(const propstring& fileName) {
  if (fileName.empty()) {
    __assert_fail("!fileName.empty()", kFile, 34,
                  "bool JavaProperties::Load(const propstring&)");
  }
  bool opened = false;
  return LoadFile(fileName, opened);
}

bool JavaProperties::Load(std::istream& in) {
  bool result = in.rdstate() == std::ios::goodbit;
  int lineNumber = 0;
  char buffer[kLineBufferSize];
  // Ends only at end of file or after a read error. A line of 512 or more
  // characters leaves the stream failed but not at its end, so the loop then
  // reads empty lines for ever; files rely on the 511-character limit.
  while (!in.eof() && result) {
    ++lineNumber;
    result = ReadLine(in, buffer, lineNumber);
    ParseLine(buffer, lineNumber);
  }
  return result;
}

bool JavaProperties::LoadFile(const propstring& fileName, bool& opened) {
  propstring text;
  if (ReadForParsing(fileName, text, opened)) {
    ParseText(&text[0], text.size());
    return true;
  }
  if (!opened) return false;
  // Left to the stream reader, so that such files end as they always have.
  std::ifstream in(fileName.c_str(), std::ios::in);
  opened = in.is_open();
  return opened && Load(in);
}

bool JavaProperties::Store(const propstring& fileName,
                           const propstring& header) {
  if (fileName.empty()) {
    __assert_fail(
        "!fileName.empty()", kFile, 99,
        "bool JavaProperties::Store(const propstring&, const propstring&)");
  }
  return PropertyFile::Replace(fileName, ToText(header)) ==
         PropertyFile::kWritten;
}

bool JavaProperties::Store(std::ostream& out, const propstring& header) {
  if (out.bad()) return false;
  if (!header.empty()) WriteLine(out, "#" + header);
  for (const auto& entry : m_entries) {
    WriteEntry(out, entry.first, entry.second);
  }
  return out.rdstate() == std::ios::goodbit;
}

propstring JavaProperties::ToText(const propstring& header) const {
  // Sized first: growing a text of megabytes step by step costs more than
  // writing it.
  size_t size = header.empty() ? 0 : header.size() + 2;
  for (const auto& entry : m_entries) {
    size += entry.first.size() + entry.second.size() + 2;
  }
  propstring text;
  text.reserve(size);
  if (!header.empty()) text.append("#").append(header).append("\n");
  for (const auto& entry : m_entries) {
    text.append(entry.first);
    text += '=';
    text.append(entry.second);
    text += '\n';
  }
  return text;
}

void JavaProperties::SetProperty(const propstring& key,
                                 const propstring& value) {
  Log(1, kSetting, key.c_str(), value.c_str());
  m_entries[key] = value;
}

bool JavaProperties::GetProperty(const propstring& key,
                                 propstring& value) const {
  std::map<propstring, propstring>::const_iterator it = m_entries.find(key);
  if (it == m_entries.end()) {
    Log(1, kNotFound, key.c_str());
    return false;
  }
  value = it->second;
  return true;
}

propstring JavaProperties::GetProperty(const propstring& key) const {
  propstring value;
  GetProperty(key, value);
  return value;
}

void JavaProperties::Clear() { m_entries.clear(); }

char* JavaProperties::Extract(char* text) {
  while (IsBlank(*text)) ++text;
  const bool quoted = *text == '"';
  if (quoted) ++text;
  char* start = text;
  char* end = start + std::strlen(start);
  while (end > start && IsBlank(end[-1])) --end;
  if (quoted) {
    // Only the last byte is looked at: "a" b keeps both of its quotes.
    if (end > start && end[-1] == '"') {
      --end;
    } else {
      --start;  // An unmatched opening quote belongs to the text.
    }
  }
  *end = '\0';
  return start;
}

void JavaProperties::ParseLine(char* line, int lineNumber) {
  char* comment = std::strchr(line, '#');
  if (comment != nullptr) *comment = '\0';
  char* equals = std::strchr(line, '=');
  if (equals == nullptr) return;
  *equals = '\0';
  const char* key = Extract(line);
  Table::iterator it = Insert(m_entries, key, Extract(equals + 1), lineNumber);
  Log(1, kLoading, it->first.c_str(), it->second.c_str());
}

void JavaProperties::ParseText(char* text, size_t size) {
  char* cursor = text;
  bool more = true;
  for (int lineNumber = 1; more; ++lineNumber) {
    ParseLine(TakeLine(cursor, text + size, lineNumber, more), lineNumber);
  }
}

JavaProperties::Table::iterator JavaProperties::Insert(Table& table,
                                                       const char* key,
                                                       const char* value,
                                                       int lineNumber) {
  if (table.empty() || table.rbegin()->first.compare(key) < 0) {
    return table.emplace_hint(table.end(), key, value);
  }
  const propstring keyText(key);
  Table::iterator it = table.lower_bound(keyText);
  if (it != table.end() && it->first == keyText) {
    Log(1, kRedefinesProperty, lineNumber);
    it->second = value;
    return it;
  }
  return table.emplace_hint(it, keyText, value);
}

char* JavaProperties::TakeLine(char*& cursor, char* end, int lineNumber,
                               bool& more) {
  char* line = cursor;
  char* feed = static_cast<char*>(
      std::memchr(line, '\n', static_cast<size_t>(end - line)));
  more = feed != nullptr;
  if (!more) {
    *end = '\0';
    return line;
  }
  if (feed - line == kLineBufferSize - 1) Log(1, kTooLong, lineNumber);
  *feed = '\0';
  cursor = feed + 1;
  return line;
}

bool JavaProperties::HasOverlongLine(const propstring& text) {
  size_t start = 0;
  for (;;) {
    const size_t feed = text.find('\n', start);
    const size_t end = feed == propstring::npos ? text.size() : feed;
    if (end - start > kLineBufferSize - 1) return true;
    if (feed == propstring::npos) return false;
    start = feed + 1;
  }
}

bool JavaProperties::ReadForParsing(const propstring& fileName,
                                    propstring& text, bool& opened) {
  const PropertyFile::ReadResult read = PropertyFile::ReadWhole(fileName, text);
  opened = read != PropertyFile::kCannotOpen;
  return read == PropertyFile::kReadWhole && !HasOverlongLine(text);
}

bool JavaProperties::ReadLine(std::istream& in, char* buffer, int lineNumber) {
  in.getline(buffer, kLineBufferSize, in.widen('\n'));
  bool ok = true;
  if (in.bad()) {
    Log(1, kErrorReading, lineNumber);
    ok = false;
  }
  // gcount() counts the consumed line feed too, so this fires exactly for a
  // line of 511 characters, which is still stored whole. Kept as it always
  // was: existing tools look for this message.
  if (in.gcount() > kLineBufferSize - 1) Log(1, kTooLong, lineNumber);
  return ok;
}

void JavaProperties::WriteEntry(std::ostream& out, const propstring& key,
                                const propstring& value) {
  out.write(key.data(), static_cast<std::streamsize>(key.size()));
  out.put('=');
  WriteLine(out, value);
}

void JavaProperties::WriteLine(std::ostream& out, const propstring& text) {
  out.write(text.data(), static_cast<std::streamsize>(text.size()));
  out.put('\n');
  out.flush();
}
