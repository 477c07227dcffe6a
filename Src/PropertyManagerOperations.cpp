// PropertyManagerOperations.cpp - see PropertyManagerOperations.h.

#include "PropertyManagerOperations.h"

#include <pthread.h>

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

void PropertyManagerOperations::SetValue(PropertyManager& manager,
                                         Property* property,
                                         const propstring& key,
                                         const propstring& value) {
  if (property == nullptr) {
    PropertyMessages::Write(PropertyMessages::kNotFound, key.c_str());
    return;
  }
  PropertyThreadGuard guard(manager.m_mutex);
  try {
    property->SetValue(value);
  } catch (Property::WrongValue& e) {
    PropertyMessages::Write(PropertyMessages::kFormatChanged,
                            property->GetKey().c_str(), e.m_message.c_str());
    throw Property::WrongValue(e);
  }
}
