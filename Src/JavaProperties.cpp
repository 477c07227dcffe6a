// JavaProperties.cpp - see JavaProperties.h.
//
// The format itself (line parsing, the written text) is JavaPropertiesFormat;
// reading and writing files and streams is shared with the INI format.

#include "JavaProperties.h"

#include "JavaPropertiesFormat.h"
#include "PropertyFile.h"
#include "PropertyMessages.h"
#include "PropertyTextBuffer.h"
#include "PropertyTextReader.h"
#include "PropertyTextWriter.h"

JavaProperties::JavaProperties() {}

JavaProperties::~JavaProperties() {}

bool JavaProperties::Load(const propstring& fileName) {
  PropertyMessages::Require(!fileName.empty(),
                            PropertyMessages::kJavaPropertiesLoad);
  bool opened = false;
  JavaPropertiesFormat::LineParser parser(*this);
  return PropertyTextReader::ReadFile(fileName, opened, parser);
}

bool JavaProperties::Load(std::istream& in) {
  JavaPropertiesFormat::LineParser parser(*this);
  return PropertyTextReader::ReadStream(in, parser);
}

bool JavaProperties::Store(const propstring& fileName,
                           const propstring& header) {
  PropertyMessages::Require(!fileName.empty(),
                            PropertyMessages::kJavaPropertiesStore);
  PropertyTextBuffer text;
  JavaPropertiesFormat::Render(*this, header, text);
  return PropertyFile::Replace(fileName, text.Data(), text.Size()) ==
         PropertyFile::kWritten;
}

bool JavaProperties::Store(std::ostream& out, const propstring& header) {
  if (out.bad()) return false;
  PropertyTextWriter::WriteHeader(
      out, JavaPropertiesFormat::LineParser::kCommentMark, header);
  for (const auto& entry : m_entries) {
    PropertyTextWriter::WriteEntry(out, entry.first, entry.second);
  }
  return out.rdstate() == std::ios::goodbit;
}

propstring JavaProperties::ToText(const propstring& header) const {
  PropertyTextBuffer text;
  JavaPropertiesFormat::Render(*this, header, text);
  return propstring(text.Data(), text.Size());
}

void JavaProperties::SetProperty(const propstring& key,
                                 const propstring& value) {
  PropertyMessages::Write(PropertyMessages::kSettingEntry, key.c_str(),
                          value.c_str());
  m_entries[key] = value;
}

bool JavaProperties::GetProperty(const propstring& key,
                                 propstring& value) const {
  std::map<propstring, propstring>::const_iterator it = m_entries.find(key);
  if (it == m_entries.end()) {
    PropertyMessages::Write(PropertyMessages::kNotFound, key.c_str());
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
  return PropertyTextReader::Extract(text);
}
