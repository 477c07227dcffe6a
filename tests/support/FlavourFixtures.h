// FlavourFixtures.h - fixtures for the tests of a manager, a file binding
// (persistence) and a store of either flavour, over the traits F of
// Flavours.h. The typed tests of what both flavours do and the tests of what
// one flavour alone does derive from the same fixture:
//
//   template <typename F>
//   class ManagerFlavoursTest : public ManagerFixture<F> {};  // typed
//   class IniPropertyManagerTest : public ManagerFixture<Ini> {};

#ifndef TESTS_SUPPORT_FLAVOURFIXTURES_H_
#define TESTS_SUPPORT_FLAVOURFIXTURES_H_

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "Property.h"
#include "support/Flavours.h"
#include "support/LogRecorder.h"
#include "support/MutexProbe.h"
#include "support/PropertyTesting.h"
#include "support/Recorders.h"
#include "support/TempDir.h"

namespace test_support {

// The header of the files that the fixtures bind read-write.
constexpr char kHeader[] = "app settings";
constexpr char kIntegerType[] = "PROPERTY_TYPE_INTEGER";
constexpr char kStringType[] = "PROPERTY_TYPE_STRING";

// A manager of flavour F named "app", with a factory of all six types, whose
// mutex tests can reach, the path "app<extension>" in a fresh directory, a
// recording listener and a counting change listener (neither added yet), and
// a log recorder.
template <typename F>
class ManagerFixture : public testing::Test {
 protected:
  typedef typename F::Manager Manager;

  ManagerFixture() : m_path(File("app")) { AddAllCreators(&m_factory); }

  // Registers the integer property "port" on m_manager.
  Property* RegisterPort(const std::string& initial = "80") {
    return Register(kIntegerType, "port", initial);
  }
  Property* Register(const std::string& type, const std::string& key,
                     const std::string& initial) {
    return F::Register(&m_manager, type, key, initial);
  }
  Property* Find(const std::string& key) const {
    return F::Find(m_manager, key);
  }
  void Set(const std::string& key, const std::string& value) {
    F::Set(&m_manager, key, value);
  }
  std::string Get(const std::string& key) const {
    return F::Get(m_manager, key);
  }
  Property* Unregister(const std::string& key) {
    return F::Unregister(&m_manager, key);
  }

  // The path of a file of the flavour named name in the test's directory.
  std::string File(const std::string& name) const {
    return m_dir.File(name + F::kExtension);
  }

  // A second manager with the same factory, for tests that destroy it.
  std::unique_ptr<Manager> NewManager() {
    return std::unique_ptr<Manager>(new Manager("other", &m_factory));
  }

  // The messages logged since the last Clear(); each must be at level 1.
  Messages Logged() const { return MessagesAllAtLevel(m_log, 1); }

  TempDir m_dir;
  std::string m_path;
  EventList m_events;
  RecordingListener m_listener{"l", &m_events};
  CountingChangeListener m_changes;
  typename F::Factory m_factory;
  WithVisibleMutex<Manager> m_manager{"app", &m_factory};
  LogRecorder m_log;
};

// A manager without persistence of its own, to which the tests attach file
// bindings of flavour F the way the flavour's manager does; a file path in a
// fresh directory; a log recorder.
template <typename F>
class PersistenceFixture : public testing::Test {
 protected:
  typedef typename F::Persistence Persistence;

  PersistenceFixture()
      : m_path(m_dir.File(std::string("app") + F::kExtension)) {}

  // Attaches a new binding of path as a read-write binding does; the manager
  // owns it from then on.
  Persistence* BindReadWrite(const std::string& path,
                             const std::string& header = kHeader) {
    Persistence* persistence = BindReadOnly(path, header);
    m_manager.AddChangeListener(persistence);
    return persistence;
  }

  // Attaches a new binding of path as a read-only binding does: never a
  // change listener.
  Persistence* BindReadOnly(const std::string& path,
                            const std::string& header = "") {
    Persistence* persistence = new Persistence(path, header);
    m_manager.RegisterClient(persistence);
    m_manager.AddRegistryListener(persistence);
    return persistence;
  }

  // Registers a new property of the flavour on the manager, which owns it.
  Property* AddInteger(const std::string& key, const std::string& value) {
    return Add(F::NewInteger(key, value));
  }
  Property* AddString(const std::string& key, const std::string& value) {
    return Add(F::NewString(key, value));
  }
  Property* Add(Property* property) {
    m_manager.RegisterProperty(property);
    return property;
  }

  // The messages logged since the last Clear(); each must be at level 1.
  Messages Logged() const { return MessagesAllAtLevel(m_log, 1); }

  size_t CountLogged(const std::string& message) const {
    const Messages messages = Logged();
    return static_cast<size_t>(
        std::count(messages.begin(), messages.end(), message));
  }

  // A path below a regular file, which can therefore never be opened.
  std::string UnwritablePath() {
    WriteFile(m_dir.File("plain"), "not a directory\n");
    return m_dir.File(std::string("plain/app") + F::kExtension);
  }

  TempDir m_dir;
  std::string m_path;
  TestManager m_manager;
  LogRecorder m_log;
};

// A store of flavour F and a log recorder.
template <typename F>
class StoreFixture : public testing::Test {
 protected:
  bool LoadText(const std::string& text) {
    std::istringstream in(text);
    return m_properties.Load(in);
  }

  // The whole text that Store writes; the store is expected to succeed.
  std::string StoreText(const std::string& header = "") {
    return StoredText(m_properties, header);
  }

  // Writes the store, loads that text into a new store and returns what the
  // new store writes.
  std::string StoredAfterReload(const std::string& header = "") {
    typename F::Store reloaded;
    std::istringstream in(StoreText(header));
    EXPECT_TRUE(reloaded.Load(in));
    return StoredText(reloaded, "");
  }

  // Puts key (of the traits' section) and value into the store and forgets
  // the log line that this makes.
  void Preset(const std::string& key, const std::string& value) {
    F::Put(&m_properties, key, value);
    m_log.Clear();
  }

  // Everything logged so far; every entry is expected at level 1.
  Messages Logged() const { return MessagesAllAtLevel(m_log, 1); }

  LogRecorder m_log;
  typename F::Store m_properties;

 private:
  static std::string StoredText(typename F::Store& store,
                                const std::string& header) {
    std::ostringstream out;
    EXPECT_TRUE(store.Store(out, header));
    return out.str();
  }
};

}  // namespace test_support

#endif  // TESTS_SUPPORT_FLAVOURFIXTURES_H_
