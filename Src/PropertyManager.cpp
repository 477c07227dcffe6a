// PropertyManager.cpp - see PropertyManager.h.

#include "PropertyManager.h"

#include <pthread.h>

#include <algorithm>

#include "PropertyManagerOperations.h"
#include "PropertyMessages.h"
#include "PropertySafety.h"

namespace {

typedef PropertyManagerOperations::ListReadLock ListReadLock;
typedef PropertyManagerOperations::ListWriteLock ListWriteLock;

// True if the list holds a property that registering candidate would
// duplicate: the same object, or equal key and section.
bool IsDuplicate(const std::list<Property*>& properties, Property* candidate) {
  ListReadLock lock;
  for (Property* registered : properties) {
    if (registered == candidate) return true;
    if (registered->GetKey() == candidate->GetKey() &&
        registered->GetSection() == candidate->GetSection()) {
      return true;
    }
  }
  return false;
}

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
  PropertySafety::ForgetManager(this);
  PropertyDeleteMutex(m_mutex);
}

void PropertyManager::RegisterProperty(Property* property) {
  PropertyMessages::Require(property != nullptr,
                            PropertyMessages::kManagerRegisterProperty);
  if (IsDuplicate(m_properties, property)) return;
  {
    ListWriteLock lock;
    m_properties.push_back(property);
  }
  property->RegisterPropertyManager(this);
  for (std::list<PropertyRegistryListener*>::iterator it =
           m_registryListeners.begin();
       it != m_registryListeners.end(); ++it) {
    (*it)->AddingProperty(property);
  }
}

void PropertyManager::UnregisterProperty(Property* property) {
  PropertyMessages::Require(property != nullptr,
                            PropertyMessages::kManagerUnregisterProperty);
  {
    ListReadLock lock;
    if (std::find(m_properties.begin(), m_properties.end(), property) ==
        m_properties.end()) {
      return;
    }
  }
  for (std::list<PropertyRegistryListener*>::iterator it =
           m_registryListeners.begin();
       it != m_registryListeners.end(); ++it) {
    (*it)->RemovingProperty(property);
  }
  // Looked up again: a listener may have changed the list meanwhile.
  ListWriteLock lock;
  RemoveFirst(m_properties, property);
}

void PropertyManager::RegisterClient(PropertyClient* client) {
  PropertyMessages::Require(client != nullptr,
                            PropertyMessages::kManagerRegisterClient);
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
  PropertyMessages::Require(client != nullptr,
                            PropertyMessages::kManagerUnregisterClient);
  RemoveFirst(m_clients, client);
}

void PropertyManager::AddRegistryListener(PropertyRegistryListener* listener) {
  PropertyMessages::Require(listener != nullptr,
                            PropertyMessages::kManagerAddRegistryListener);
  AddOnce(m_registryListeners, listener);
}

void PropertyManager::RemoveRegistryListener(
    PropertyRegistryListener* listener) {
  PropertyMessages::Require(listener != nullptr,
                            PropertyMessages::kManagerRemoveRegistryListener);
  RemoveFirst(m_registryListeners, listener);
}

void PropertyManager::AddChangeListener(PropertyChangeListener* listener) {
  PropertyMessages::Require(listener != nullptr,
                            PropertyMessages::kManagerAddChangeListener);
  AddOnce(m_changeListeners, listener);
}

void PropertyManager::RemoveChangeListener(PropertyChangeListener* listener) {
  PropertyMessages::Require(listener != nullptr,
                            PropertyMessages::kManagerRemoveChangeListener);
  RemoveFirst(m_changeListeners, listener);
}

void PropertyManager::NotifyChangeListeners(Property* property) {
  PropertyMessages::Require(property != nullptr,
                            PropertyMessages::kManagerNotifyChangeListeners);
  for (std::list<PropertyChangeListener*>::iterator it =
           m_changeListeners.begin();
       it != m_changeListeners.end(); ++it) {
    (*it)->PropertyChanged(property);
  }
}

propstring PropertyManager::GetName() const { return m_name; }
