// JavaPropertiesPersistence.cpp - see JavaPropertiesPersistence.h.

#include "JavaPropertiesPersistence.h"

#include <assert.h>

#include <algorithm>

#include "PropertyFile.h"

namespace {

const char kFile[] = "Src/JavaPropertiesPersistence.cpp";

char kCanNotRead[] = "Can not read File '%s'";
char kCanNotWrite[] = "Can not write File '%s'";
char kFormatChanged[] = "Format of property '%s' seems to be changed: '%s'";

}  // namespace

JavaPropertiesPersistence::JavaPropertiesPersistence(const propstring& filePath,
                                                     const propstring& header)
    : m_filePath(filePath), m_header(header) {}

JavaPropertiesPersistence::~JavaPropertiesPersistence() {}

propstring JavaPropertiesPersistence::GetFilePath() const { return m_filePath; }

void JavaPropertiesPersistence::RegisteredProperty(Property* property) {
  if (property == nullptr) {
    __assert_fail("property != __null", kFile, 41,
                  "virtual void "
                  "JavaPropertiesPersistence::RegisteredProperty(Property*)");
  }
  m_boundProperties.push_back(property);
  JavaProperties store;
  DoLoad(store);
  SetValue(property, store);
}

void JavaPropertiesPersistence::UnregisterProperty(Property* property) {
  if (property == nullptr) {
    __assert_fail("property != __null", kFile, 57,
                  "void JavaPropertiesPersistence::UnregisterProperty("
                  "Property*)");
  }
  std::vector<Property*>::iterator it =
      std::find(m_boundProperties.begin(), m_boundProperties.end(), property);
  if (it != m_boundProperties.end()) m_boundProperties.erase(it);
}

void JavaPropertiesPersistence::AddingProperty(Property* property) {
  if (property == nullptr) {
    __assert_fail(
        "property", kFile, 76,
        "virtual void JavaPropertiesPersistence::AddingProperty(Property*)");
  }
  RegisteredProperty(property);
}

void JavaPropertiesPersistence::RemovingProperty(Property* property) {
  if (property == nullptr) {
    __assert_fail(
        "property", kFile, 87,
        "virtual void JavaPropertiesPersistence::RemovingProperty(Property*)");
  }
  UnregisterProperty(property);
}

void JavaPropertiesPersistence::PropertyChanged(Property* property) {
  if (property == nullptr) {
    __assert_fail(
        "property", kFile, 98,
        "virtual void JavaPropertiesPersistence::PropertyChanged(Property*)");
  }
  DoStore();
}

void JavaPropertiesPersistence::DoStore() {
  // Merging into what the file holds now keeps keys that other programs or
  // unregistered properties put there.
  JavaProperties store;
  DoLoad(store);
  for (Property* property : m_boundProperties) {
    store.SetProperty(property->GetKey(), property->GetValue());
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

void JavaPropertiesPersistence::DoLoad(JavaProperties& store) {
  // The result of the load is not looked at: a read error has been logged,
  // and what was read before it counts.
  bool opened = false;
  store.LoadFile(m_filePath, opened);
  if (!opened) Log(1, kCanNotRead, m_filePath.c_str());
}

void JavaPropertiesPersistence::DoLoadAll() {
  JavaProperties store;
  DoLoad(store);
  // By index: a load notifies listeners, which may bind further properties.
  for (size_t i = 0; i < m_boundProperties.size(); ++i) {
    SetValue(m_boundProperties[i], store);
  }
}

void JavaPropertiesPersistence::SetValue(Property* property,
                                         JavaProperties& store) {
  if (property == nullptr) {
    __assert_fail(
        "property", kFile, 163,
        "void JavaPropertiesPersistence::SetValue(Property*, JavaProperties&)");
  }
  try {
    propstring value;
    if (store.GetProperty(property->GetKey(), value)) property->SetValue(value);
  } catch (Property::WrongValue& e) {
    // The rejected text stays in the file until the next store replaces it.
    Log(1, kFormatChanged, property->GetKey().c_str(), e.m_message.c_str());
  }
}
