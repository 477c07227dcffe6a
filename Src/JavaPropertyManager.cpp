// JavaPropertyManager.cpp - see JavaPropertyManager.h.

#include "JavaPropertyManager.h"

#include <assert.h>

namespace {

const char kFile[] = "Src/JavaPropertyManager.cpp";

}  // namespace

JavaPropertyManager::JavaPropertyManager(const propstring& name,
                                         JavaPropertyFactory* factory)
    : PropertyManager(name), m_propertyFactory(factory) {}

JavaPropertyManager::~JavaPropertyManager() {
  // The base destructor deletes the bindings with the other clients.
  m_persistences.clear();
}

void JavaPropertyManager::RegisterPersistence(const propstring& filePath,
                                              const propstring& header) {
  if (m_persistences.count(filePath) != 0) return;
  JavaPropertiesPersistence* persistence =
      new JavaPropertiesPersistence(filePath, header);
  AttachPersistence(persistence, persistence, persistence);
  m_persistences[filePath] = persistence;
}

void JavaPropertyManager::RegisterNonPersistence(const propstring& filePath) {
  if (m_persistences.count(filePath) != 0) return;
  // Never a change listener, so it never writes.
  JavaPropertiesPersistence* persistence =
      new JavaPropertiesPersistence(filePath, propstring());
  AttachPersistence(persistence, persistence, nullptr);
  m_persistences[filePath] = persistence;
}

void JavaPropertyManager::UnRegisterPersistence(const propstring& filePath) {
  std::map<propstring, JavaPropertiesPersistence*>::iterator it =
      m_persistences.find(filePath);
  if (it == m_persistences.end()) return;
  JavaPropertiesPersistence* persistence = it->second;
  // Removing the change listener is harmless for a read-only binding.
  DetachPersistence(persistence, persistence, persistence);
  delete persistence;
  m_persistences.erase(it);
}

Property* JavaPropertyManager::RegisterProperty(const propstring& type,
                                                const propstring& key,
                                                const propstring& initial) {
  // The common case, a key that is registered already, does not wait for
  // the mutex; the second look-up under it makes concurrent registrations
  // of one key agree on one property.
  Property* property = GetProperty(key);
  if (property != nullptr) return property;
  PropertyThreadGuard guard(m_mutex);
  property = GetProperty(key);
  if (property != nullptr) return property;
  if (m_propertyFactory == nullptr) {
    __assert_fail("m_propertyFactory", kFile, 40,
                  "Property* JavaPropertyManager::RegisterProperty(const "
                  "propstring&, const propstring&, const propstring&)");
  }
  property = m_propertyFactory->CreateProperty(type, key, initial);
  if (property == nullptr) return nullptr;
  PropertyManager::RegisterProperty(property);
  return property;
}

Property* JavaPropertyManager::UnregisterProperty(const propstring& key) {
  Property* property = GetProperty(key);
  if (property != nullptr) PropertyManager::UnregisterProperty(property);
  return property;
}

void JavaPropertyManager::SetValue(const propstring& key,
                                   const propstring& value) {
  SetFoundPropertyValue(GetProperty(key), key, value);
}

propstring JavaPropertyManager::GetValue(const propstring& key) const {
  Property* property = GetProperty(key);
  return property == nullptr ? propstring() : property->GetValue();
}

Property* JavaPropertyManager::GetProperty(const propstring& key) const {
  return FindProperty(nullptr, key);
}
