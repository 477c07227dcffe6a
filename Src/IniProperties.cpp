// IniProperties.cpp - see IniProperties.h.
//
// The format itself (line parsing, the written text) is IniPropertiesFormat;
// reading and writing files and streams is shared with the flat format.

#include "IniProperties.h"

#include "IniPropertiesFormat.h"
#include "PropertyFile.h"
#include "PropertyMessages.h"
#include "PropertyTextBuffer.h"
#include "PropertyTextReader.h"
#include "PropertyTextWriter.h"

namespace {

typedef std::map<propstring, propstring> Section;

}  // namespace

IniProperties::IniProperties() {}

IniProperties::~IniProperties() {}

bool IniProperties::Load(const propstring& fileName) {
  PropertyMessages::Require(!fileName.empty(),
                            PropertyMessages::kIniPropertiesLoad);
  bool opened = false;
  IniPropertiesFormat::LineParser parser(*this);
  return PropertyTextReader::ReadFile(fileName, opened, parser);
}

bool IniProperties::Load(std::istream& in) {
  IniPropertiesFormat::LineParser parser(*this);
  return PropertyTextReader::ReadStream(in, parser);
}

bool IniProperties::Store(const propstring& fileName,
                          const propstring& header) {
  PropertyMessages::Require(!fileName.empty(),
                            PropertyMessages::kIniPropertiesStore);
  PropertyTextBuffer text;
  IniPropertiesFormat::Render(*this, header, text);
  return PropertyFile::Replace(fileName, text.Data(), text.Size()) ==
         PropertyFile::kWritten;
}

bool IniProperties::Store(std::ostream& out, const propstring& header) {
  if (out.bad()) return false;
  PropertyTextWriter::WriteHeader(
      out, IniPropertiesFormat::LineParser::kCommentMark, header);
  for (const auto& section : m_sections) {
    PropertyTextWriter::WriteLine(out, "[" + section.first + "]");
    for (const auto& entry : section.second) {
      PropertyTextWriter::WriteEntry(out, entry.first, entry.second);
    }
    PropertyTextWriter::WriteLine(out, propstring());
  }
  return out.rdstate() == std::ios::goodbit;
}

propstring IniProperties::ToText(const propstring& header) const {
  PropertyTextBuffer text;
  IniPropertiesFormat::Render(*this, header, text);
  return propstring(text.Data(), text.Size());
}

void IniProperties::SetProperty(const propstring& section,
                                const propstring& key,
                                const propstring& value) {
  PropertyMessages::Write(PropertyMessages::kSettingSectionEntry, key.c_str(),
                          section.c_str(), value.c_str());
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
  PropertyMessages::Write(PropertyMessages::kSectionEntryNotFound, key.c_str(),
                          section.c_str());
  return false;
}

propstring IniProperties::GetProperty(const propstring& section,
                                      const propstring& key) const {
  propstring value;
  GetProperty(section, key, value);
  return value;
}

void IniProperties::Clear() { m_sections.clear(); }
