// IniPropertiesPersistence.cpp - see IniPropertiesPersistence.h.
//
// The binding cycle itself is PropertyFileBinding's, shared with the other
// format; this class keeps the members and checks its arguments.

#include "IniPropertiesPersistence.h"

#include "IniPropertiesFormat.h"
#include "PropertyChoices.h"
#include "PropertyFileBinding.h"
#include "PropertyFileTroubles.h"
#include "PropertyMessages.h"
#include "PropertyParseCache.h"

namespace {

typedef PropertyFileBinding<IniPropertiesFormat> Binding;

}  // namespace

IniPropertiesPersistence::IniPropertiesPersistence(const propstring& filePath,
                                                   const propstring& header)
    : m_filePath(filePath), m_header(header) {}

IniPropertiesPersistence::~IniPropertiesPersistence() {
  PropertyFileTroubles::Forget(&m_boundProperties);
  PropertyChoices::Forget(&m_boundProperties);
  PropertyParseCache<IniPropertiesFormat>::Forget(&m_boundProperties);
}

propstring IniPropertiesPersistence::GetFilePath() const { return m_filePath; }

void IniPropertiesPersistence::RegisteredProperty(Property* property) {
  PropertyMessages::Require(
      property != nullptr, PropertyMessages::kIniPersistenceRegisteredProperty);
  Binding(m_boundProperties, m_filePath, m_header).Bind(property);
}

void IniPropertiesPersistence::UnregisterProperty(Property* property) {
  PropertyMessages::Require(
      property != nullptr, PropertyMessages::kIniPersistenceUnregisterProperty);
  Binding(m_boundProperties, m_filePath, m_header).Unbind(property);
}

void IniPropertiesPersistence::AddingProperty(Property* property) {
  PropertyMessages::Require(property != nullptr,
                            PropertyMessages::kIniPersistenceAddingProperty);
  RegisteredProperty(property);
}

void IniPropertiesPersistence::RemovingProperty(Property* property) {
  PropertyMessages::Require(property != nullptr,
                            PropertyMessages::kIniPersistenceRemovingProperty);
  UnregisterProperty(property);
}

void IniPropertiesPersistence::PropertyChanged(Property* property) {
  PropertyMessages::Require(property != nullptr,
                            PropertyMessages::kIniPersistencePropertyChanged);
  DoStore();
}

void IniPropertiesPersistence::DoStore() {
  Binding(m_boundProperties, m_filePath, m_header).Rewrite();
}

void IniPropertiesPersistence::DoLoad(IniProperties& store) {
  Binding(m_boundProperties, m_filePath, m_header).Load(store);
}

void IniPropertiesPersistence::DoLoadAll() {
  Binding(m_boundProperties, m_filePath, m_header).LoadAll();
}

void IniPropertiesPersistence::SetValue(Property* property,
                                        IniProperties& store) {
  PropertyMessages::Require(property != nullptr,
                            PropertyMessages::kIniPersistenceSetValue);
  Binding(m_boundProperties, m_filePath, m_header)
      .SetFromStore(property, store);
}
