// IniPropertyManager.cpp - see IniPropertyManager.h.

#include "IniPropertyManager.h"

#include <assert.h>

namespace {

const char kFile[] = "Src/IniPropertyManager.cpp";

}  // namespace

IniPropertyManager::IniPropertyManager(const propstring& name,
                                       IniPropertyFactory* factory)
    : PropertyManager(name), m_propertyFactory(factory) {}

IniPropertyManager::~IniPropertyManager() {
  // The base destructor deletes the bindings with the other clients.
  m_persistences.clear();
}

void IniPropertyManager::RegisterPersistence(const propstring& filePath,
                                             const propstring& header) {
  if (m_persistences.count(filePath) != 0) return;
  IniPropertiesPersistence* persistence =
      new IniPropertiesPersistence(filePath, header);
  AttachPersistence(persistence, persistence, persistence);
  m_persistences[filePath] = persistence;
}

void IniPropertyManager::RegisterNonPersistence(const propstring& filePath) {
  if (m_persistences.count(filePath) != 0) return;
  // Deliberately not recorded, as this manager has always done: each call
  // adds a reader, and only the manager's destruction removes them.
  IniPropertiesPersistence* persistence =
      new IniPropertiesPersistence(filePath, propstring());
  AttachPersistence(persistence, persistence, nullptr);
}

void IniPropertyManager::UnRegisterPersistence(const propstring& filePath) {
  std::map<propstring, IniPropertiesPersistence*>::iterator it =
      m_persistences.find(filePath);
  if (it == m_persistences.end()) return;
  IniPropertiesPersistence* persistence = it->second;
  // Removing the change listener is harmless for a read-only binding.
  DetachPersistence(persistence, persistence, persistence);
  delete persistence;
  m_persistences.erase(it);
}

Property* IniPropertyManager::RegisterProperty(const propstring& type,
                                               const propstring& section,
                                               const propstring& key,
                                               const propstring& initial) {
  // Unlocked first look-up for the common case; the second one under the
  // mutex makes concurrent registrations of one pair agree on one property.
  Property* property = GetProperty(section, key);
  if (property != nullptr) return property;
  PropertyThreadGuard guard(m_mutex);
  property = GetProperty(section, key);
  if (property != nullptr) return property;
  if (m_propertyFactory == nullptr) {
    __assert_fail("m_propertyFactory", kFile, 41,
                  "Property* IniPropertyManager::RegisterProperty(const "
                  "propstring&, const propstring&, const propstring&, const "
                  "propstring&)");
  }
  property = m_propertyFactory->CreateProperty(type, section, key, initial);
  if (property == nullptr) return nullptr;
  PropertyManager::RegisterProperty(property);
  return property;
}

Property* IniPropertyManager::UnregisterProperty(const propstring& section,
                                                 const propstring& key) {
  Property* property = GetProperty(section, key);
  if (property != nullptr) PropertyManager::UnregisterProperty(property);
  return property;
}

void IniPropertyManager::SetValue(const propstring& section,
                                  const propstring& key,
                                  const propstring& value) {
  SetFoundPropertyValue(GetProperty(section, key), key, value);
}

propstring IniPropertyManager::GetValue(const propstring& section,
                                        const propstring& key) const {
  Property* property = GetProperty(section, key);
  return property == nullptr ? propstring() : property->GetValue();
}

Property* IniPropertyManager::GetProperty(const propstring& section,
                                          const propstring& key) const {
  return FindProperty(&section, key);
}
