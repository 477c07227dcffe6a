// Recorders.h - test doubles for the registry: a concrete manager, and
// listeners and a property that write every callback and deletion into one
// shared event list, so that tests can check the order of events across
// several objects.

#ifndef TESTS_SUPPORT_RECORDERS_H_
#define TESTS_SUPPORT_RECORDERS_H_

#include <string>
#include <vector>

#include "IntegerProperty.h"
#include "Property.h"
#include "PropertyChangeListener.h"
#include "PropertyClient.h"
#include "PropertyManager.h"
#include "PropertyRegistryListener.h"

namespace test_support {

// Events in the form "<who>:<callback>:<key>", e.g. "a:changed:port".
typedef std::vector<std::string> EventList;

// A manager with no persistence of its own: the three binding operations
// only record that they were called.
class TestManager : public PropertyManager {
 public:
  explicit TestManager(const std::string& name = "test");
  void RegisterPersistence(const propstring& filePath,
                           const propstring& header) override;
  void RegisterNonPersistence(const propstring& filePath) override;
  void UnRegisterPersistence(const propstring& filePath) override;

  // The registered properties, in registration order.
  std::vector<Property*> Properties() const;
  size_t ClientCount() const;
  size_t RegistryListenerCount() const;
  size_t ChangeListenerCount() const;
  pthread_mutex_t* Mutex() const;
};

// Implements all three callback interfaces and records each call as
// "<name>:registered|adding|removing|changed:<key>". Optionally records its
// own destruction as "<name>:deleted" and counts it in *deletions.
class RecordingListener : public PropertyClient,
                          public PropertyRegistryListener,
                          public PropertyChangeListener {
 public:
  RecordingListener(const std::string& name, EventList* events,
                    int* deletions = nullptr);
  ~RecordingListener() override;

  void RegisteredProperty(Property* property) override;
  void AddingProperty(Property* property) override;
  void RemovingProperty(Property* property) override;
  void PropertyChanged(Property* property) override;

 private:
  void Record(const std::string& what, Property* property);

  std::string m_name;
  EventList* m_events;
  int* m_deletions;
};

// Counts PropertyChanged calls and remembers the last property and the value
// it had at the time of the call.
class CountingChangeListener : public PropertyChangeListener {
 public:
  void PropertyChanged(Property* property) override;

  int count = 0;
  Property* lastProperty = nullptr;
  std::string lastValue;
};

// An integer property (initial value "80") of section and key that records
// its deletion as "<key>:deleted".
class TracedProperty : public IntegerProperty {
 public:
  TracedProperty(const std::string& section, const std::string& key,
                 EventList* events);
  ~TracedProperty() override;

 private:
  EventList* m_events;
};

}  // namespace test_support

#endif  // TESTS_SUPPORT_RECORDERS_H_
