// IniPropertyManager.cpp - see IniPropertyManager.h.

#include "IniPropertyManager.h"

#include "IniPropertiesFormat.h"
#include "PropertyManagerOperations.h"
#include "PropertyMessages.h"

namespace {

typedef PropertyManagerOperations Operations;

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
  Operations::Bind(*this, m_persistences, filePath, header, /*writes=*/true,
                   /*recorded=*/true);
}

void IniPropertyManager::RegisterNonPersistence(const propstring& filePath) {
  // Deliberately not recorded, as this manager has always done: each call
  // adds a reader, and only the manager's destruction removes them.
  Operations::Bind(*this, m_persistences, filePath, propstring(),
                   /*writes=*/false,
                   /*recorded=*/false);
}

void IniPropertyManager::UnRegisterPersistence(const propstring& filePath) {
  Operations::Unbind(*this, m_persistences, filePath);
}

Property* IniPropertyManager::RegisterProperty(const propstring& type,
                                               const propstring& section,
                                               const propstring& key,
                                               const propstring& initial) {
  IniPropertyFactory* factory = m_propertyFactory;
  return Operations::Register<IniPropertiesFormat>(
      *this, &section, key, factory != nullptr,
      PropertyMessages::kIniManagerRegisterProperty,
      [&] { return factory->CreateProperty(type, section, key, initial); });
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
  Operations::SetValue<IniPropertiesFormat>(*this, GetProperty(section, key),
                                            key, value);
}

propstring IniPropertyManager::GetValue(const propstring& section,
                                        const propstring& key) const {
  Property* property = GetProperty(section, key);
  return property == nullptr ? propstring() : property->GetValue();
}

Property* IniPropertyManager::GetProperty(const propstring& section,
                                          const propstring& key) const {
  return Operations::Find(*this, &section, key);
}
