// JavaPropertiesPersistence.cpp - see JavaPropertiesPersistence.h.
//
// The binding cycle itself is PropertyFileBinding's, shared with the other
// format; this class keeps the members and checks its arguments.

#include "JavaPropertiesPersistence.h"

#include "JavaPropertiesFormat.h"
#include "PropertyChoices.h"
#include "PropertyFileBinding.h"
#include "PropertyFileTroubles.h"
#include "PropertyMessages.h"
#include "PropertyParseCache.h"

namespace {

typedef PropertyFileBinding<JavaPropertiesFormat> Binding;

}  // namespace

JavaPropertiesPersistence::JavaPropertiesPersistence(const propstring& filePath,
                                                     const propstring& header)
    : m_filePath(filePath), m_header(header) {}

JavaPropertiesPersistence::~JavaPropertiesPersistence() {
  PropertyFileTroubles::Forget(&m_boundProperties);
  PropertyChoices::Forget(&m_boundProperties);
  PropertyParseCache<JavaPropertiesFormat>::Forget(&m_boundProperties);
}

propstring JavaPropertiesPersistence::GetFilePath() const { return m_filePath; }

void JavaPropertiesPersistence::RegisteredProperty(Property* property) {
  PropertyMessages::Require(
      property != nullptr,
      PropertyMessages::kJavaPersistenceRegisteredProperty);
  Binding(m_boundProperties, m_filePath, m_header).Bind(property);
}

void JavaPropertiesPersistence::UnregisterProperty(Property* property) {
  PropertyMessages::Require(
      property != nullptr,
      PropertyMessages::kJavaPersistenceUnregisterProperty);
  Binding(m_boundProperties, m_filePath, m_header).Unbind(property);
}

void JavaPropertiesPersistence::AddingProperty(Property* property) {
  PropertyMessages::Require(property != nullptr,
                            PropertyMessages::kJavaPersistenceAddingProperty);
  RegisteredProperty(property);
}

void JavaPropertiesPersistence::RemovingProperty(Property* property) {
  PropertyMessages::Require(property != nullptr,
                            PropertyMessages::kJavaPersistenceRemovingProperty);
  UnregisterProperty(property);
}

void JavaPropertiesPersistence::PropertyChanged(Property* property) {
  PropertyMessages::Require(property != nullptr,
                            PropertyMessages::kJavaPersistencePropertyChanged);
  DoStore();
}

void JavaPropertiesPersistence::DoStore() {
  Binding(m_boundProperties, m_filePath, m_header).Rewrite();
}

void JavaPropertiesPersistence::DoLoad(JavaProperties& store) {
  Binding(m_boundProperties, m_filePath, m_header).Load(store);
}

void JavaPropertiesPersistence::DoLoadAll() {
  Binding(m_boundProperties, m_filePath, m_header).LoadAll();
}

void JavaPropertiesPersistence::SetValue(Property* property,
                                         JavaProperties& store) {
  PropertyMessages::Require(property != nullptr,
                            PropertyMessages::kJavaPersistenceSetValue);
  Binding(m_boundProperties, m_filePath, m_header)
      .SetFromStore(property, store);
}
