// IniPropertiesPersistence.cpp - see IniPropertiesPersistence.h.

#include "IniPropertiesPersistence.h"

#include <assert.h>

#include <algorithm>

#include "PropertyFile.h"

namespace {

const char kFile[] = "Src/IniPropertiesPersistence.cpp";

char kCanNotRead[] = "Can not read File '%s'";
char kCanNotWrite[] = "Can not write File '%s'";
char kFormatChanged[] = "Format of property '%s' seems to be changed: '%s'";

}  // namespace

IniPropertiesPersistence::IniPropertiesPersistence(const propstring& filePath,
                                                   const propstring& header)
    : m_filePath(filePath), m_header(header) {}

IniPropertiesPersistence::~IniPropertiesPersistence() {}

propstring IniPropertiesPersistence::GetFilePath() const { return m_filePath; }

void IniPropertiesPersistence::RegisteredProperty(Property* property) {
  if (property == nullptr) {
    __assert_fail(
        "property != __null", kFile, 41,
        "virtual void IniPropertiesPersistence::RegisteredProperty(Property*)");
  }
  m_boundProperties.push_back(property);
  IniProperties store;
  DoLoad(store);
  SetValue(property, store);
}

void IniPropertiesPersistence::UnregisterProperty(Property* property) {
  if (property == nullptr) {
    __assert_fail("property != __null", kFile, 57,
                  "void IniPropertiesPersistence::UnregisterProperty("
                  "Property*)");
  }
  std::vector<Property*>::iterator it =
      std::find(m_boundProperties.begin(), m_boundProperties.end(), property);
  if (it != m_boundProperties.end()) m_boundProperties.erase(it);
}

void IniPropertiesPersistence::AddingProperty(Property* property) {
  if (property == nullptr) {
    __assert_fail(
        "property", kFile, 76,
        "virtual void IniPropertiesPersistence::AddingProperty(Property*)");
  }
  RegisteredProperty(property);
}

void IniPropertiesPersistence::RemovingProperty(Property* property) {
  if (property == nullptr) {
    __assert_fail(
        "property", kFile, 87,
        "virtual void IniPropertiesPersistence::RemovingProperty(Property*)");
  }
  UnregisterProperty(property);
}

void IniPropertiesPersistence::PropertyChanged(Property* property) {
  if (property == nullptr) {
    __assert_fail(
        "property", kFile, 98,
        "virtual void IniPropertiesPersistence::PropertyChanged(Property*)");
  }
  DoStore();
}

void IniPropertiesPersistence::DoStore() {
  // Merging into what the file holds now keeps keys that other programs or
  // unregistered properties put there, section by section.
  IniProperties store;
  DoLoad(store);
  for (Property* property : m_boundProperties) {
    const propstring section = property->GetSection();
    const propstring key = property->GetKey();
    store.SetProperty(section, key, property->GetValue());
  }
  // A failed write after a successful open goes unreported, as it always
  // has; the in-memory values stay either way.
  PropertyTextBuffer text;
  store.ToText(m_header, text);
  if (PropertyFile::Replace(m_filePath, text.Data(), text.Size()) ==
      PropertyFile::kNotOpened) {
    Log(1, kCanNotWrite, m_filePath.c_str());
  }
}

void IniPropertiesPersistence::DoLoad(IniProperties& store) {
  // The result of the load is not looked at: a read error has been logged,
  // and what was read before it counts.
  bool opened = false;
  store.LoadFile(m_filePath, opened);
  if (!opened) Log(1, kCanNotRead, m_filePath.c_str());
}

void IniPropertiesPersistence::DoLoadAll() {
  IniProperties store;
  DoLoad(store);
  // By index: a load notifies listeners, which may bind further properties.
  for (size_t i = 0; i < m_boundProperties.size(); ++i) {
    SetValue(m_boundProperties[i], store);
  }
}

void IniPropertiesPersistence::SetValue(Property* property,
                                        IniProperties& store) {
  if (property == nullptr) {
    __assert_fail(
        "property", kFile, 164,
        "void IniPropertiesPersistence::SetValue(Property*, IniProperties&)");
  }
  try {
    propstring value;
    const propstring section = property->GetSection();
    const propstring key = property->GetKey();
    if (store.GetProperty(section, key, value)) property->SetValue(value);
  } catch (Property::WrongValue& e) {
    // The rejected text stays in the file until the next store replaces it.
    Log(1, kFormatChanged, property->GetKey().c_str(), e.m_message.c_str());
  }
}
