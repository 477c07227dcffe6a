// PropertyManagerOperations.cpp - see PropertyManagerOperations.h.

#include "PropertyManagerOperations.h"

#include <pthread.h>

#include <algorithm>

#include "IniPropertiesFormat.h"
#include "IniPropertiesPersistence.h"
#include "JavaPropertiesFormat.h"
#include "JavaPropertiesPersistence.h"
#include "PropertyFileBinding.h"

namespace {

// Guards the shape of every manager's property list against look-ups that
// run without the manager's mutex. Constant-initialised and never destroyed:
// managers die at process exit.
pthread_rwlock_t g_propertyListLock = PTHREAD_RWLOCK_INITIALIZER;

}  // namespace

PropertyManagerOperations::ListReadLock::ListReadLock() {
  pthread_rwlock_rdlock(&g_propertyListLock);
}

PropertyManagerOperations::ListReadLock::~ListReadLock() {
  pthread_rwlock_unlock(&g_propertyListLock);
}

PropertyManagerOperations::ListWriteLock::ListWriteLock() {
  pthread_rwlock_wrlock(&g_propertyListLock);
}

PropertyManagerOperations::ListWriteLock::~ListWriteLock() {
  pthread_rwlock_unlock(&g_propertyListLock);
}

Property* PropertyManagerOperations::Find(const PropertyManager& manager,
                                          const propstring* section,
                                          const propstring& key) {
  ListReadLock lock;
  for (Property* property : manager.m_properties) {
    if (section != nullptr && property->GetSection() != *section) continue;
    if (property->GetKey() == key) return property;
  }
  return nullptr;
}

template <typename Format>
void PropertyManagerOperations::SetValue(PropertyManager& manager,
                                         Property* property,
                                         const propstring& key,
                                         const propstring& value) {
  if (property == nullptr) {
    PropertyMessages::Write(PropertyMessages::kNotFound, key.c_str());
    return;
  }
  PropertyThreadGuard guard(manager.m_mutex);
  PropertyStrictValues::RequireValue<Format>(manager, *property, value);
  try {
    property->SetValue(value);
  } catch (Property::WrongValue& e) {
    PropertyMessages::Write(PropertyMessages::kFormatChanged,
                            property->GetKey().c_str(), e.m_message.c_str());
    throw Property::WrongValue(e);
  }
}

template void PropertyManagerOperations::SetValue<JavaPropertiesFormat>(
    PropertyManager&, Property*, const propstring&, const propstring&);
template void PropertyManagerOperations::SetValue<IniPropertiesFormat>(
    PropertyManager&, Property*, const propstring&, const propstring&);

void PropertyManagerOperations::Reload(PropertyManager& manager) {
  PropertyThreadGuard guard(manager.m_mutex);
  // The bindings are the manager's clients. A reload notifies listeners,
  // which may bind or unbind files: walk a copy, and skip what is gone.
  const std::list<PropertyClient*> clients = manager.m_clients;
  for (PropertyClient* client : clients) {
    if (std::find(manager.m_clients.begin(), manager.m_clients.end(), client) ==
        manager.m_clients.end()) {
      continue;
    }
    if (auto* flat = dynamic_cast<JavaPropertiesPersistence*>(client)) {
      PropertyFileBinding<JavaPropertiesFormat>(
          flat->m_boundProperties, flat->m_filePath, flat->m_header)
          .Reload();
    } else if (auto* ini = dynamic_cast<IniPropertiesPersistence*>(client)) {
      PropertyFileBinding<IniPropertiesFormat>(ini->m_boundProperties,
                                               ini->m_filePath, ini->m_header)
          .Reload();
    }
  }
}

std::vector<PropertyManagerOperations::Binding>
PropertyManagerOperations::Bindings(PropertyManager& manager) {
  PropertyThreadGuard guard(manager.m_mutex);
  std::vector<Binding> bindings;
  for (PropertyClient* client : manager.m_clients) {
    // The bound list is the binding's own: its address names it.
    if (auto* flat = dynamic_cast<JavaPropertiesPersistence*>(client)) {
      bindings.push_back(Binding{&flat->m_boundProperties, flat->m_filePath});
    } else if (auto* ini = dynamic_cast<IniPropertiesPersistence*>(client)) {
      bindings.push_back(Binding{&ini->m_boundProperties, ini->m_filePath});
    }
  }
  return bindings;
}

std::vector<propstring> PropertyManagerOperations::BoundPaths(
    PropertyManager& manager) {
  std::vector<propstring> paths;
  for (const Binding& binding : Bindings(manager)) {
    paths.push_back(binding.path);
  }
  return paths;
}
