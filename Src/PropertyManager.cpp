// PropertyManager.cpp - see PropertyManager.h.

#include "PropertyManager.h"

#include <assert.h>

#include <algorithm>

namespace {

// Crash reports and their tooling match on these texts, so the file name,
// line and function text of every assertion stay fixed.
const char kFile[] = "Src/PropertyManager.cpp";

// Appends item unless the list holds it already.
template <typename T>
void AddOnce(std::list<T*>& list, T* item) {
  if (std::find(list.begin(), list.end(), item) == list.end()) {
    list.push_back(item);
  }
}

// Erases the first element equal to item, if there is one.
template <typename T>
void RemoveFirst(std::list<T*>& list, T* item) {
  typename std::list<T*>::iterator it =
      std::find(list.begin(), list.end(), item);
  if (it != list.end()) list.erase(it);
}

}  // namespace

PropertyManager::PropertyManager(const propstring& name)
    : m_name(name), m_mutex(PropertyCreateNewMutex()) {}

PropertyManager::~PropertyManager() {
  // Properties go first, so a client that is deleted afterwards must not
  // touch the properties it knew.
  for (Property* property : m_properties) delete property;
  m_properties.clear();
  for (PropertyClient* client : m_clients) delete client;
  m_clients.clear();
  PropertyDeleteMutex(m_mutex);
}

void PropertyManager::RegisterProperty(Property* property) {
  if (property == nullptr) {
    __assert_fail("property", kFile, 53,
                  "void PropertyManager::RegisterProperty(Property*)");
  }
  for (Property* registered : m_properties) {
    if (registered == property) return;
    if (registered->GetKey() == property->GetKey() &&
        registered->GetSection() == property->GetSection()) {
      return;
    }
  }
  m_properties.push_back(property);
  property->RegisterPropertyManager(this);
  for (std::list<PropertyRegistryListener*>::iterator it =
           m_registryListeners.begin();
       it != m_registryListeners.end(); ++it) {
    (*it)->AddingProperty(property);
  }
}

void PropertyManager::UnregisterProperty(Property* property) {
  if (property == nullptr) {
    __assert_fail("property", kFile, 79,
                  "void PropertyManager::UnregisterProperty(Property*)");
  }
  if (std::find(m_properties.begin(), m_properties.end(), property) ==
      m_properties.end()) {
    return;
  }
  for (std::list<PropertyRegistryListener*>::iterator it =
           m_registryListeners.begin();
       it != m_registryListeners.end(); ++it) {
    (*it)->RemovingProperty(property);
  }
  // Looked up again: a listener may have changed the list meanwhile.
  RemoveFirst(m_properties, property);
}

void PropertyManager::RegisterClient(PropertyClient* client) {
  if (client == nullptr) {
    __assert_fail("client", kFile, 102,
                  "void PropertyManager::RegisterClient(PropertyClient*)");
  }
  if (std::find(m_clients.begin(), m_clients.end(), client) !=
      m_clients.end()) {
    return;
  }
  m_clients.push_back(client);
  for (std::list<Property*>::iterator it = m_properties.begin();
       it != m_properties.end(); ++it) {
    client->RegisteredProperty(*it);
  }
}

void PropertyManager::UnregisterClient(PropertyClient* client) {
  if (client == nullptr) {
    __assert_fail("client", kFile, 126,
                  "void PropertyManager::UnregisterClient(PropertyClient*)");
  }
  RemoveFirst(m_clients, client);
}

void PropertyManager::AddRegistryListener(PropertyRegistryListener* listener) {
  if (listener == nullptr) {
    __assert_fail(
        "listener", kFile, 145,
        "void PropertyManager::AddRegistryListener(PropertyRegistryListener*)");
  }
  AddOnce(m_registryListeners, listener);
}

void PropertyManager::RemoveRegistryListener(
    PropertyRegistryListener* listener) {
  if (listener == nullptr) {
    __assert_fail("listener", kFile, 161,
                  "void PropertyManager::RemoveRegistryListener("
                  "PropertyRegistryListener*)");
  }
  RemoveFirst(m_registryListeners, listener);
}

void PropertyManager::AddChangeListener(PropertyChangeListener* listener) {
  if (listener == nullptr) {
    __assert_fail(
        "listener", kFile, 180,
        "void PropertyManager::AddChangeListener(PropertyChangeListener*)");
  }
  AddOnce(m_changeListeners, listener);
}

void PropertyManager::RemoveChangeListener(PropertyChangeListener* listener) {
  if (listener == nullptr) {
    __assert_fail(
        "listener", kFile, 196,
        "void PropertyManager::RemoveChangeListener(PropertyChangeListener*)");
  }
  RemoveFirst(m_changeListeners, listener);
}

void PropertyManager::NotifyChangeListeners(Property* property) {
  if (property == nullptr) {
    __assert_fail("property", kFile, 215,
                  "void PropertyManager::NotifyChangeListeners(Property*)");
  }
  for (std::list<PropertyChangeListener*>::iterator it =
           m_changeListeners.begin();
       it != m_changeListeners.end(); ++it) {
    (*it)->PropertyChanged(property);
  }
}

propstring PropertyManager::GetName() const { return m_name; }
