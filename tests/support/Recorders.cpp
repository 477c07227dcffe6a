// Recorders.cpp - see Recorders.h.

#include "support/Recorders.h"

namespace test_support {

TestManager::TestManager(const std::string& name) : PropertyManager(name) {}

void TestManager::RegisterPersistence(const propstring&, const propstring&) {}

void TestManager::RegisterNonPersistence(const propstring&) {}

void TestManager::UnRegisterPersistence(const propstring&) {}

std::vector<Property*> TestManager::Properties() const {
  return std::vector<Property*>(m_properties.begin(), m_properties.end());
}

size_t TestManager::ClientCount() const { return m_clients.size(); }

size_t TestManager::RegistryListenerCount() const {
  return m_registryListeners.size();
}

size_t TestManager::ChangeListenerCount() const {
  return m_changeListeners.size();
}

pthread_mutex_t* TestManager::Mutex() const { return m_mutex; }

RecordingListener::RecordingListener(const std::string& name, EventList* events,
                                     int* deletions)
    : m_name(name), m_events(events), m_deletions(deletions) {}

RecordingListener::~RecordingListener() {
  if (m_deletions != nullptr) ++*m_deletions;
  if (m_events != nullptr) m_events->push_back(m_name + ":deleted");
}

void RecordingListener::RegisteredProperty(Property* property) {
  Record("registered", property);
}

void RecordingListener::AddingProperty(Property* property) {
  Record("adding", property);
}

void RecordingListener::RemovingProperty(Property* property) {
  Record("removing", property);
}

void RecordingListener::PropertyChanged(Property* property) {
  Record("changed", property);
}

void RecordingListener::Record(const std::string& what, Property* property) {
  m_events->push_back(m_name + ":" + what + ":" + property->GetKey());
}

void CountingChangeListener::PropertyChanged(Property* property) {
  ++count;
  lastProperty = property;
  lastValue = property->GetValue();
}

TracedProperty::TracedProperty(const std::string& section,
                               const std::string& key, EventList* events)
    : IntegerProperty(key, "80", section), m_events(events) {}

TracedProperty::~TracedProperty() {
  m_events->push_back(GetKey() + ":deleted");
}

}  // namespace test_support
