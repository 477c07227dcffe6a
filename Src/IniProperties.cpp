// IniProperties.cpp - see IniProperties.h.

#include "IniProperties.h"

#include <assert.h>

#include <cstring>
#include <fstream>

#include "PropertyFile.h"
#include "PropertyTextBuffer.h"

namespace {

const char kFile[] = "Src/IniProperties.cpp";

char kRedefinesSection[] = "Line %d redefines a section";
char kLoading[] = "Loading '%s' of '%s' to '%s'";
char kSetting[] = "Setting '%s' of '%s' to '%s'";
char kNotFound[] = "Property '%s' at Section '%s' was not found";

typedef std::map<propstring, propstring> Section;
typedef std::map<propstring, Section> Sections;

// Files list their sections in name order when the library wrote them, so
// the last section is looked at first: constant time instead of a search.
Section& SectionNamed(Sections& sections, const propstring& name) {
  if (sections.empty() || sections.rbegin()->first < name) {
    return sections.emplace_hint(sections.end(), name, Section())->second;
  }
  return sections[name];
}

// True if a line must be cleaned as a whole before it is read; first is its
// first byte that is not a blank. Every line holding a '[' is cleaned, but
// cleaning changes nothing for a line that starts with neither '[' nor a
// quote, so only quoted lines are searched for a '['.
bool MayBeHeader(const char* first, const char* end) {
  if (first == end) return false;
  if (*first == '[') return true;
  return *first == '"' &&
         std::memchr(first, '[', static_cast<size_t>(end - first)) != nullptr;
}

// Looks at the last section first, as SectionNamed() does.
bool HasSection(const Sections& sections, const propstring& name) {
  return !sections.empty() && !(sections.rbegin()->first < name) &&
         sections.count(name) != 0;
}

// The name of the header line [text, end) (which starts with '['): up to
// the last ']', or, for a line without one, the rest of the line.
void TakeSectionName(const char* text, const char* end, propstring& name) {
  const void* close = ::memrchr(text, ']', static_cast<size_t>(end - text));
  name.assign(text + 1,
              close == nullptr ? end : static_cast<const char*>(close));
}

}  // namespace

IniProperties::IniProperties() {}

IniProperties::~IniProperties() {}

bool IniProperties::Load(const propstring& fileName) {
  if (fileName.empty()) {
    __assert_fail("!fileName.empty()", kFile, 34,
                  "bool IniProperties::Load(const propstring&)");
  }
  bool opened = false;
  return LoadFile(fileName, opened);
}

bool IniProperties::Load(std::istream& in) {
  bool result = in.rdstate() == std::ios::goodbit;
  int lineNumber = 0;
  char buffer[kLineBufferSize];
  propstring current;
  Table pending;
  // As in the flat reader, a line of 512 or more characters makes this loop
  // run for ever.
  while (!in.eof() && result) {
    ++lineNumber;
    result = ReadLine(in, buffer, lineNumber);
    ParseLine(buffer, lineNumber, current, pending);
  }
  EndSection(current, pending);
  return result;
}

bool IniProperties::LoadFile(const propstring& fileName, bool& opened) {
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

bool IniProperties::Store(const propstring& fileName,
                          const propstring& header) {
  if (fileName.empty()) {
    __assert_fail(
        "!fileName.empty()", kFile, 124,
        "bool IniProperties::Store(const propstring&, const propstring&)");
  }
  PropertyTextBuffer text;
  ToText(header, text);
  return PropertyFile::Replace(fileName, text.Data(), text.Size()) ==
         PropertyFile::kWritten;
}

bool IniProperties::Store(std::ostream& out, const propstring& header) {
  if (out.bad()) return false;
  if (!header.empty()) WriteLine(out, ";" + header);
  for (const auto& section : m_sections) {
    WriteLine(out, "[" + section.first + "]");
    for (const auto& entry : section.second) {
      WriteEntry(out, entry.first, entry.second);
    }
    WriteLine(out, propstring());
  }
  return out.rdstate() == std::ios::goodbit;
}

propstring IniProperties::ToText(const propstring& header) const {
  PropertyTextBuffer text;
  ToText(header, text);
  return propstring(text.Data(), text.Size());
}

void IniProperties::ToText(const propstring& header,
                           PropertyTextBuffer& text) const {
  if (!header.empty()) {
    text.Append(';');
    text.Append(header);
    text.Append('\n');
  }
  for (const auto& section : m_sections) {
    text.Append('[');
    text.Append(section.first);
    text.Append("]\n", 2);
    for (const auto& entry : section.second) {
      AppendEntry(entry.first, entry.second, text);
    }
    text.Append('\n');
  }
}

void IniProperties::SetProperty(const propstring& section,
                                const propstring& key,
                                const propstring& value) {
  Log(1, kSetting, key.c_str(), section.c_str(), value.c_str());
  m_sections[section][key] = value;
}

bool IniProperties::GetProperty(const propstring& section,
                                const propstring& key,
                                propstring& value) const {
  std::map<propstring, Section>::const_iterator found =
      m_sections.find(section);
  if (found != m_sections.end()) {
    Section::const_iterator entry = found->second.find(key);
    if (entry != found->second.end()) {
      value = entry->second;
      return true;
    }
  }
  Log(1, kNotFound, key.c_str(), section.c_str());
  return false;
}

propstring IniProperties::GetProperty(const propstring& section,
                                      const propstring& key) const {
  propstring value;
  GetProperty(section, key, value);
  return value;
}

void IniProperties::Clear() { m_sections.clear(); }

void IniProperties::ParseLine(char* line, int lineNumber, propstring& current,
                              Table& pending) {
  ParseLine(line, line + std::strlen(line), lineNumber, current, pending);
}

void IniProperties::ParseLine(char* line, char* end, int lineNumber,
                              propstring& current, Table& pending) {
  char* comment = static_cast<char*>(
      std::memchr(line, ';', static_cast<size_t>(end - line)));
  if (comment != nullptr) end = comment;
  if (MayBeHeader(SkipBlanks(line, end), end)) {
    // The whole line is cleaned, so a header may stand in blanks or quotes;
    // an entry line goes on cleaned.
    line = ExtractField(line, end);
    if (line < end && line[0] == '[') {
      EndSection(current, pending);
      TakeSectionName(line, end, current);
      if (HasSection(m_sections, current)) {
        Log(1, kRedefinesSection, lineNumber);
      }
      return;
    }
  }
  char* equals = static_cast<char*>(
      std::memchr(line, '=', static_cast<size_t>(end - line)));
  if (equals == nullptr) return;
  char* keyEnd = equals;
  const char* key = ExtractField(line, keyEnd);
  const char* value = ExtractField(equals + 1, end);
  Table::iterator it = Insert(pending, key, keyEnd, value, end, lineNumber);
  Log(1, kLoading, it->first.c_str(), current.c_str(), it->second.c_str());
}

void IniProperties::EndSection(const propstring& current, Table& pending) {
  if (!current.empty()) SectionNamed(m_sections, current).swap(pending);
  pending.clear();
}

void IniProperties::ParseText(char* text, size_t size) {
  char* const end = text + size;
  const bool nulInside = std::memchr(text, '\0', size) != nullptr;
  propstring current;
  Table pending;
  char* cursor = text;
  bool more = true;
  for (int lineNumber = 1; more; ++lineNumber) {
    char* line = TakeLine(cursor, end, lineNumber, more);
    ParseLine(line, LineEnd(line, cursor, end, more, nulInside), lineNumber,
              current, pending);
  }
  EndSection(current, pending);
}
