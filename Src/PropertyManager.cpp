// PropertyManager.cpp - see PropertyManager.h.

#include "PropertyManager.h"

#include <assert.h>
#include <pthread.h>

#include <algorithm>

namespace {

// Crash reports and their tooling match on these texts, so the file name,
// line and function text of every assertion stay fixed.
const char kFile[] = "Src/PropertyManager.cpp";

char kNotFound[] = "Property '%s' was not found";
// The same text as a failed load from a file, on purpose: log readers match
// one message for both.
char kFormatChanged[] = "Format of property '%s' seems to be changed: '%s'";

// Guards the shape of every manager's property list against look-ups that
// run without the manager's mutex. Held only around list reads and single
// insertions or erasures, never during a callback, so it cannot deadlock.
// Constant-initialised and never destroyed: managers die at process exit.
pthread_rwlock_t g_propertyListLock = PTHREAD_RWLOCK_INITIALIZER;

class ListReadLock {
 public:
  ListReadLock() { pthread_rwlock_rdlock(&g_propertyListLock); }
  ~ListReadLock() { pthread_rwlock_unlock(&g_propertyListLock); }
};

class ListWriteLock {
 public:
  ListWriteLock() { pthread_rwlock_wrlock(&g_propertyListLock); }
  ~ListWriteLock() { pthread_rwlock_unlock(&g_propertyListLock); }
};

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
  PropertyDeleteMutex(m_mutex);
}

void PropertyManager::RegisterProperty(Property* property) {
  if (property == nullptr) {
    __assert_fail("property", kFile, 53,
                  "void PropertyManager::RegisterProperty(Property*)");
  }
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
  if (property == nullptr) {
    __assert_fail("property", kFile, 79,
                  "void PropertyManager::UnregisterProperty(Property*)");
  }
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

Property* PropertyManager::FindProperty(const propstring* section,
                                        const propstring& key) const {
  ListReadLock lock;
  for (Property* property : m_properties) {
    if (section != nullptr && property->GetSection() != *section) continue;
    if (property->GetKey() == key) return property;
  }
  return nullptr;
}

void PropertyManager::SetFoundPropertyValue(Property* property,
                                            const propstring& key,
                                            const propstring& value) {
  if (property == nullptr) {
    Log(1, kNotFound, key.c_str());
    return;
  }
  PropertyThreadGuard guard(m_mutex);
  try {
    property->SetValue(value);
  } catch (Property::WrongValue& e) {
    Log(1, kFormatChanged, property->GetKey().c_str(), e.m_message.c_str());
    throw Property::WrongValue(e);
  }
}

void PropertyManager::AttachPersistence(
    PropertyClient* client, PropertyRegistryListener* registryListener,
    PropertyChangeListener* changeListener) {
  RegisterClient(client);
  AddRegistryListener(registryListener);
  if (changeListener != nullptr) AddChangeListener(changeListener);
}

void PropertyManager::DetachPersistence(
    PropertyClient* client, PropertyRegistryListener* registryListener,
    PropertyChangeListener* changeListener) {
  UnregisterClient(client);
  RemoveRegistryListener(registryListener);
  RemoveChangeListener(changeListener);
}
