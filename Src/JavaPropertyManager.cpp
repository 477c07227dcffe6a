// JavaPropertyManager.cpp - see JavaPropertyManager.h.

#include "JavaPropertyManager.h"

#include "JavaPropertiesFormat.h"
#include "PropertyManagerOperations.h"
#include "PropertyMessages.h"

namespace {

typedef PropertyManagerOperations Operations;

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
  Operations::Bind(*this, m_persistences, filePath, header, /*writes=*/true,
                   /*recorded=*/true);
}

void JavaPropertyManager::RegisterNonPersistence(const propstring& filePath) {
  // Never a change listener, so it never writes.
  Operations::Bind(*this, m_persistences, filePath, propstring(),
                   /*writes=*/false,
                   /*recorded=*/true);
}

void JavaPropertyManager::UnRegisterPersistence(const propstring& filePath) {
  Operations::Unbind(*this, m_persistences, filePath);
}

Property* JavaPropertyManager::RegisterProperty(const propstring& type,
                                                const propstring& key,
                                                const propstring& initial) {
  JavaPropertyFactory* factory = m_propertyFactory;
  return Operations::Register<JavaPropertiesFormat>(
      *this, nullptr, key, factory != nullptr,
      PropertyMessages::kJavaManagerRegisterProperty,
      [&] { return factory->CreateProperty(type, key, initial); });
}

Property* JavaPropertyManager::UnregisterProperty(const propstring& key) {
  Property* property = GetProperty(key);
  if (property != nullptr) PropertyManager::UnregisterProperty(property);
  return property;
}

void JavaPropertyManager::SetValue(const propstring& key,
                                   const propstring& value) {
  Operations::SetValue<JavaPropertiesFormat>(*this, GetProperty(key), key,
                                             value);
}

propstring JavaPropertyManager::GetValue(const propstring& key) const {
  Property* property = GetProperty(key);
  return property == nullptr ? propstring() : property->GetValue();
}

Property* JavaPropertyManager::GetProperty(const propstring& key) const {
  return Operations::Find(*this, nullptr, key);
}
