// IniPropertiesFormat.cpp - see IniPropertiesFormat.h.

#include "IniPropertiesFormat.h"

#include <cstring>

#include "PropertyMessages.h"
#include "PropertyTextReader.h"
#include "PropertyTextWriter.h"

namespace {

// True if the header line of the section name reads back as that section
// and without a note.
bool SectionReadsBackAlone(const propstring& name) {
  return !name.empty() &&
         PropertyTextWriter::FieldTrouble(
             name, IniPropertiesFormat::LineParser::kCommentMark, true) ==
             nullptr &&
         PropertyTextWriter::ReadsWithoutNote(name.size() + 2);
}

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

}  // namespace

IniPropertiesFormat::LineParser::LineParser(IniProperties& store)
    : m_sections(store.m_sections) {}

void IniPropertiesFormat::LineParser::Line(char* line, char* equals, char* end,
                                           int lineNumber) {
  // A line cleaned as a possible header keeps its first '=': cleaning drops
  // only blanks and quotes.
  if (FindHeader(line, end)) {
    EndSection();
    TakeSectionName(line, end, m_current);
    if (HasSection(m_sections, m_current)) {
      PropertyMessages::Write(PropertyMessages::kRedefinesSection, lineNumber);
    }
    return;
  }
  const auto* entry =
      PropertyTextReader::ReadEntry(m_pending, line, equals, end, lineNumber);
  if (entry == nullptr) return;
  m_loading.Write(PropertyMessages::kLoadingSectionEntry, entry->first.c_str(),
                  m_current.c_str(), entry->second.c_str());
}

void IniPropertiesFormat::LineParser::Finish() { EndSection(); }

void IniPropertiesFormat::LineParser::EndSection() {
  if (!m_current.empty()) SectionNamed(m_sections, m_current).swap(m_pending);
  m_pending.clear();
}

bool IniPropertiesFormat::FindHeader(char*& line, char*& end) {
  if (!MayBeHeader(PropertyTextReader::SkipBlanks(line, end), end)) {
    return false;
  }
  // The whole line is cleaned, so a header may stand in blanks or quotes;
  // an entry line goes on cleaned.
  line = PropertyTextReader::ExtractField(line, end);
  return line < end && line[0] == '[';
}

void IniPropertiesFormat::TakeSectionName(const char* text, const char* end,
                                          propstring& name) {
  const void* close = ::memrchr(text, ']', static_cast<size_t>(end - text));
  name.assign(text + 1,
              close == nullptr ? end : static_cast<const char*>(close));
}

const IniPropertiesFormat::Table& IniPropertiesFormat::Sections(
    const IniProperties& store) {
  return store.m_sections;
}

IniPropertiesFormat::Table& IniPropertiesFormat::TableOf(IniProperties& store) {
  return store.m_sections;
}

bool IniPropertiesFormat::ReadsBackAlone(const IniProperties& store,
                                         const propstring& header) {
  if (!PropertyTextWriter::HeaderReadsAlone(header)) return false;
  for (const auto& section : store.m_sections) {
    // A section without entries reads back too, and logs nothing.
    if (!SectionReadsBackAlone(section.first)) return false;
    for (const auto& entry : section.second) {
      if (!EntryReadsBackAlone(section.first, entry.first, entry.second)) {
        return false;
      }
    }
  }
  return true;
}

bool IniPropertiesFormat::EntryReadsBackAlone(const propstring& section,
                                              const propstring& key,
                                              const propstring& value) {
  return SectionReadsBackAlone(section) &&
         Unreadable(section, key, value).empty() &&
         PropertyTextWriter::ReadsWithoutNote(key.size() + 1 + value.size());
}

void IniPropertiesFormat::WriteLoadingMessages(const IniProperties& store) {
  for (const auto& section : store.m_sections) {
    for (const auto& entry : section.second) {
      PropertyMessages::Write(PropertyMessages::kLoadingSectionEntry,
                              entry.first.c_str(), section.first.c_str(),
                              entry.second.c_str());
    }
  }
}

void IniPropertiesFormat::Render(const IniProperties& store,
                                 const propstring& header,
                                 PropertyTextBuffer& text) {
  PropertyTextWriter::AppendHeader(LineParser::kCommentMark, header, text);
  for (const auto& section : store.m_sections) {
    text.Append('[');
    text.Append(section.first);
    text.Append("]\n", 2);
    PropertyTextWriter::AppendEntries(section.second, text);
    text.Append('\n');
  }
}

const propstring* IniPropertiesFormat::Peek(const IniProperties& store,
                                            Property& property) {
  const auto section = store.m_sections.find(property.GetSection());
  if (section == store.m_sections.end()) return nullptr;
  const auto found = section->second.find(property.GetKey());
  return found == section->second.end() ? nullptr : &found->second;
}

bool IniPropertiesFormat::RenderChanged(const char* text, size_t size,
                                        const propstring& header,
                                        const Changes& changes,
                                        PropertyTextBuffer& out) {
  const char* const end = text + size;
  // The header line, as AppendHeader() wrote it, stays.
  const size_t body = header.empty() ? 0 : header.size() + 2;
  if (body > size ||
      (body > 0 &&
       (text[0] != LineParser::kCommentMark || text[body - 1] != '\n' ||
        header.compare(0, header.size(), text + 1, header.size()) != 0))) {
    return false;
  }
  const char* copied = text;
  const char* sections = text + body;
  for (const auto& section : changes) {
    // Sections are "[name]" lines, their entries and an empty line, in byte
    // order of the names; no other line starts with '['.
    const propstring line = "[" + section.first + "]\n";
    const char* found = sections;
    for (;;) {
      found = static_cast<const char*>(::memmem(
          found, static_cast<size_t>(end - found), line.data(), line.size()));
      if (found == nullptr) return false;  // A new section.
      if (found == text + body || found[-1] == '\n') break;
      ++found;
    }
    const char* entries = found + line.size();
    const char* blank = static_cast<const char*>(::memmem(
        entries - 1, static_cast<size_t>(end - entries + 1), "\n\n", 2));
    if (blank == nullptr) return false;
    const char* entriesEnd = blank + 1;
    out.Append(copied, static_cast<size_t>(entries - copied));
    PropertyTextWriter::AppendChangedEntries(entries, entriesEnd,
                                             section.second, out);
    copied = entriesEnd;
    sections = entriesEnd;
  }
  out.Append(copied, static_cast<size_t>(end - copied));
  return true;
}

bool IniPropertiesFormat::Find(const IniProperties& store, Property& property,
                               propstring& value) {
  const propstring section = property.GetSection();
  const propstring key = property.GetKey();
  return store.GetProperty(section, key, value);
}

void IniPropertiesFormat::Put(IniProperties& store, Property& property) {
  const propstring section = property.GetSection();
  const propstring key = property.GetKey();
  store.SetProperty(section, key, property.GetValue());
}

propstring IniPropertiesFormat::Unreadable(const propstring& section,
                                           const propstring& key,
                                           const propstring& value) {
  // Entries under a header without a name are read and dropped.
  if (section.empty()) return "the section is empty";
  // Between its brackets a section name keeps its blanks and quotes.
  if (const char* why = PropertyTextWriter::FieldTrouble(
          section, LineParser::kCommentMark, true)) {
    return propstring("the section ") + why;
  }
  if (PropertyTextWriter::TooLong(section.size() + 2)) {
    return "its section line would be 512 characters or longer";
  }
  if (const char* why = PropertyTextWriter::FieldTrouble(
          key, LineParser::kCommentMark, false)) {
    return propstring("the key ") + why;
  }
  if (key.find('=') != propstring::npos) return "the key holds '='";
  // A line that starts with '[' is a section header.
  if (!key.empty() && key[0] == '[') return "the key starts with '['";
  if (const char* why = PropertyTextWriter::FieldTrouble(
          value, LineParser::kCommentMark, false)) {
    return propstring("the value ") + why;
  }
  if (PropertyTextWriter::TooLong(key.size() + 1 + value.size())) {
    return "its line would be 512 characters or longer";
  }
  return propstring();
}
