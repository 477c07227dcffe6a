// JavaPropertiesFormat.cpp - see JavaPropertiesFormat.h.

#include "JavaPropertiesFormat.h"

#include "PropertyMessages.h"
#include "PropertyTextReader.h"
#include "PropertyTextWriter.h"

JavaPropertiesFormat::LineParser::LineParser(JavaProperties& store)
    : m_table(store.m_entries) {}

void JavaPropertiesFormat::LineParser::Line(char* line, char* equals, char* end,
                                            int lineNumber) {
  const auto* entry =
      PropertyTextReader::ReadEntry(m_table, line, equals, end, lineNumber);
  if (entry == nullptr) return;
  m_loading.Write(PropertyMessages::kLoadingEntry, entry->first.c_str(),
                  entry->second.c_str());
}

void JavaPropertiesFormat::LineParser::Finish() {}

const JavaPropertiesFormat::Table& JavaPropertiesFormat::Entries(
    const JavaProperties& store) {
  return store.m_entries;
}

JavaPropertiesFormat::Table& JavaPropertiesFormat::TableOf(
    JavaProperties& store) {
  return store.m_entries;
}

bool JavaPropertiesFormat::ReadsBackAlone(const JavaProperties& store,
                                          const propstring& header) {
  if (!PropertyTextWriter::HeaderReadsAlone(header)) return false;
  for (const auto& entry : store.m_entries) {
    if (!EntryReadsBackAlone(propstring(), entry.first, entry.second)) {
      return false;
    }
  }
  return true;
}

bool JavaPropertiesFormat::EntryReadsBackAlone(const propstring& section,
                                               const propstring& key,
                                               const propstring& value) {
  return Unreadable(section, key, value).empty() &&
         PropertyTextWriter::ReadsWithoutNote(key.size() + 1 + value.size());
}

void JavaPropertiesFormat::WriteLoadingMessages(const JavaProperties& store) {
  for (const auto& entry : store.m_entries) {
    PropertyMessages::Write(PropertyMessages::kLoadingEntry,
                            entry.first.c_str(), entry.second.c_str());
  }
}

void JavaPropertiesFormat::Render(const JavaProperties& store,
                                  const propstring& header,
                                  PropertyTextBuffer& text) {
  PropertyTextWriter::AppendHeader(LineParser::kCommentMark, header, text);
  PropertyTextWriter::AppendEntries(store.m_entries, text);
}

const propstring* JavaPropertiesFormat::Peek(const JavaProperties& store,
                                             Property& property) {
  const auto found = store.m_entries.find(property.GetKey());
  return found == store.m_entries.end() ? nullptr : &found->second;
}

bool JavaPropertiesFormat::RenderChanged(const char* text, size_t size,
                                         const propstring& header,
                                         const Changes& changes,
                                         PropertyTextBuffer& out) {
  // The header line, as AppendHeader() wrote it, stays.
  const size_t body = header.empty() ? 0 : header.size() + 2;
  if (body > size ||
      (body > 0 &&
       (text[0] != LineParser::kCommentMark || text[body - 1] != '\n' ||
        header.compare(0, header.size(), text + 1, header.size()) != 0))) {
    return false;
  }
  out.Append(text, body);
  const auto values = changes.find(propstring());
  PropertyTextWriter::AppendChangedEntries(text + body, text + size,
                                           values == changes.end()
                                               ? PropertyTextWriter::NewValues()
                                               : values->second,
                                           out);
  return true;
}

bool JavaPropertiesFormat::Find(const JavaProperties& store, Property& property,
                                propstring& value) {
  return store.GetProperty(property.GetKey(), value);
}

void JavaPropertiesFormat::Put(JavaProperties& store, Property& property) {
  store.SetProperty(property.GetKey(), property.GetValue());
}

propstring JavaPropertiesFormat::Unreadable(const propstring&,
                                            const propstring& key,
                                            const propstring& value) {
  if (const char* why = PropertyTextWriter::FieldTrouble(
          key, LineParser::kCommentMark, false)) {
    return propstring("the key ") + why;
  }
  if (key.find('=') != propstring::npos) return "the key holds '='";
  if (const char* why = PropertyTextWriter::FieldTrouble(
          value, LineParser::kCommentMark, false)) {
    return propstring("the value ") + why;
  }
  if (PropertyTextWriter::TooLong(key.size() + 1 + value.size())) {
    return "its line would be 512 characters or longer";
  }
  return propstring();
}
