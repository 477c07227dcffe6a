// JavaProperties.cpp - see JavaProperties.h.

#include "JavaProperties.h"

#include <assert.h>

#include <cstring>
#include <fstream>
#include <tuple>
#include <utility>

#include "PropertyFile.h"
#include "PropertyTextBuffer.h"

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
  PropertyTextBuffer text;
  if (ReadForParsing(fileName, text, opened)) {
    ParseText(text.Data(), text.Size());
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
  PropertyTextBuffer text;
  ToText(header, text);
  return PropertyFile::Replace(fileName, text.Data(), text.Size()) ==
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
  PropertyTextBuffer text;
  ToText(header, text);
  return propstring(text.Data(), text.Size());
}

void JavaProperties::ToText(const propstring& header,
                            PropertyTextBuffer& text) const {
  if (!header.empty()) {
    text.Append('#');
    text.Append(header);
    text.Append('\n');
  }
  for (const auto& entry : m_entries) {
    AppendEntry(entry.first, entry.second, text);
  }
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
  char* end = text + std::strlen(text);
  char* start = ExtractField(text, end);
  *end = '\0';
  return start;
}

void JavaProperties::ParseLine(char* line, int lineNumber) {
  ParseLine(line, line + std::strlen(line), lineNumber);
}

void JavaProperties::ParseLine(char* line, char* end, int lineNumber) {
  char* comment = static_cast<char*>(
      std::memchr(line, '#', static_cast<size_t>(end - line)));
  if (comment != nullptr) end = comment;
  char* equals = static_cast<char*>(
      std::memchr(line, '=', static_cast<size_t>(end - line)));
  if (equals == nullptr) return;
  char* keyEnd = equals;
  const char* key = ExtractField(line, keyEnd);
  const char* value = ExtractField(equals + 1, end);
  Table::iterator it = Insert(m_entries, key, keyEnd, value, end, lineNumber);
  Log(1, kLoading, it->first.c_str(), it->second.c_str());
}

void JavaProperties::ParseText(char* text, size_t size) {
  char* const end = text + size;
  const bool nulInside = std::memchr(text, '\0', size) != nullptr;
  char* cursor = text;
  bool more = true;
  for (int lineNumber = 1; more; ++lineNumber) {
    char* line = TakeLine(cursor, end, lineNumber, more);
    ParseLine(line, LineEnd(line, cursor, end, more, nulInside), lineNumber);
  }
}

JavaProperties::Table::iterator JavaProperties::Insert(Table& table,
                                                       const char* key,
                                                       const char* value,
                                                       int lineNumber) {
  return Insert(table, key, key + std::strlen(key), value,
                value + std::strlen(value), lineNumber);
}

JavaProperties::Table::iterator JavaProperties::Insert(
    Table& table, const char* key, const char* keyEnd, const char* value,
    const char* valueEnd, int lineNumber) {
  // Hinted at the end: files in key order, as the library writes them, take
  // constant time per line; any other order falls back to a search.
  const size_t before = table.size();
  Table::iterator it = table.emplace_hint(
      table.end(), std::piecewise_construct,
      std::forward_as_tuple(key, static_cast<size_t>(keyEnd - key)),
      std::forward_as_tuple(value, static_cast<size_t>(valueEnd - value)));
  if (table.size() == before) {
    Log(1, kRedefinesProperty, lineNumber);
    it->second.assign(value, valueEnd);
  }
  return it;
}

char* JavaProperties::ExtractField(char* begin, char*& end) {
  begin = SkipBlanks(begin, end);
  const bool quoted = begin < end && *begin == '"';
  if (quoted) ++begin;
  char* start = begin;
  while (end > start && IsBlank(end[-1])) --end;
  if (quoted) {
    // Only the last byte is looked at: "a" b keeps both of its quotes.
    if (end > start && end[-1] == '"') {
      --end;
    } else {
      --start;  // An unmatched opening quote belongs to the text.
    }
  }
  return start;
}

char* JavaProperties::SkipBlanks(char* begin, char* end) {
  while (begin < end && IsBlank(*begin)) ++begin;
  return begin;
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

char* JavaProperties::LineEnd(char* line, const char* cursor, char* end,
                              bool more, bool nulInside) {
  // Only a text with a NUL byte needs every line measured again.
  if (nulInside) return line + std::strlen(line);
  return more ? line + (cursor - line - 1) : end;
}

bool JavaProperties::HasOverlongLine(const propstring& text) {
  return HasOverlongLine(text.data(), text.size());
}

bool JavaProperties::HasOverlongLine(const char* text, size_t size) {
  // A line is too long exactly when 512 bytes from its start hold no line
  // feed; the last line feed of such a window starts the next line to look
  // at. One search per window instead of one per line.
  const size_t window = kLineBufferSize;
  const char* const end = text + size;
  while (static_cast<size_t>(end - text) > window - 1) {
    const void* feed = ::memrchr(text, '\n', window);
    if (feed == nullptr) return true;
    text = static_cast<const char*>(feed) + 1;
  }
  return false;
}

bool JavaProperties::ReadForParsing(const propstring& fileName,
                                    propstring& text, bool& opened) {
  PropertyTextBuffer buffer;
  const bool whole = ReadForParsing(fileName, buffer, opened);
  if (whole) text.assign(buffer.Data(), buffer.Size());
  return whole;
}

bool JavaProperties::ReadForParsing(const propstring& fileName,
                                    PropertyTextBuffer& text, bool& opened) {
  const PropertyFile::ReadResult read = PropertyFile::ReadWhole(fileName, text);
  opened = read != PropertyFile::kCannotOpen;
  return read == PropertyFile::kReadWhole &&
         !HasOverlongLine(text.Data(), text.Size());
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

void JavaProperties::AppendEntry(const propstring& key,
                                 const propstring& value,
                                 PropertyTextBuffer& text) {
  // One reservation per line: the copies are then plain moves.
  char* line = text.Extend(key.size() + value.size() + 2);
  PropertyTextBuffer::Copy(line, key.data(), key.size());
  line += key.size();
  *line++ = '=';
  PropertyTextBuffer::Copy(line, value.data(), value.size());
  line[value.size()] = '\n';
}

void JavaProperties::WriteLine(std::ostream& out, const propstring& text) {
  out.write(text.data(), static_cast<std::streamsize>(text.size()));
  out.put('\n');
  out.flush();
}
