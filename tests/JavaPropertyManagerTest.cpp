// JavaPropertyManagerTest.cpp - registration, values, bindings to key=value
// files, destruction, locking and assertions of JavaPropertyManager.

#include "JavaPropertyManager.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "IntegerProperty.h"
#include "Properties.h"
#include "support/AssertionMessage.h"
#include "support/LogRecorder.h"
#include "support/MutexProbe.h"
#include "support/PropertyTesting.h"
#include "support/Recorders.h"
#include "support/TempDir.h"

namespace {

using test_support::CountingChangeListener;
using test_support::EventList;
using test_support::FileExists;
using test_support::IsFreeForOtherThreads;
using test_support::LockProbe;
using test_support::LogRecorder;
using test_support::ReadFile;
using test_support::RecordingListener;
using test_support::TempDir;
using test_support::WriteFile;
using test_support::WrongValueMessage;

typedef std::vector<std::string> Messages;

const char kInteger[] = "PROPERTY_TYPE_INTEGER";
const char kString[] = "PROPERTY_TYPE_STRING";
const char kHeader[] = "app settings";
const char kPortRejected[] =
    "Property 'port' can only contain 'an integer value'";

// A manager that lets tests reach its mutex.
typedef test_support::WithVisibleMutex<JavaPropertyManager>
    ExposedJavaPropertyManager;

// An integer property that records its deletion as "<key>:deleted".
class TracedProperty : public IntegerProperty {
 public:
  TracedProperty(const std::string& key, EventList* events)
      : IntegerProperty(key, "80", ""), m_events(events) {}
  ~TracedProperty() override { m_events->push_back(GetKey() + ":deleted"); }

 private:
  EventList* m_events;
};

class JavaPropertyManagerTest : public testing::Test {
 protected:
  JavaPropertyManagerTest() : m_path(m_dir.File("app.properties")) {
    test_support::AddAllCreators(&m_factory);
  }

  Property* RegisterPort(const std::string& initial = "80") {
    return m_manager.RegisterProperty(kInteger, "port", initial);
  }

  // A second manager with the same factory, for tests that destroy it.
  std::unique_ptr<JavaPropertyManager> NewManager() {
    return std::unique_ptr<JavaPropertyManager>(
        new JavaPropertyManager("other", &m_factory));
  }

  // The messages logged so far; each must be at level 1.
  Messages Logged() const { return test_support::MessagesAllAtLevel(m_log, 1); }

  TempDir m_dir;
  std::string m_path;
  EventList m_events;
  RecordingListener m_listener{"l", &m_events};
  CountingChangeListener m_changes;
  JavaPropertyFactory m_factory;
  ExposedJavaPropertyManager m_manager{"app", &m_factory};
  LogRecorder m_log;
};

// Registration.

TEST_F(JavaPropertyManagerTest, RegisterPropertyCreatesPropertyOfTheNamedType) {
  Property* port = RegisterPort("8080");
  ASSERT_NE(port, nullptr);
  EXPECT_EQ(port->GetPropertyType(), kInteger);
  EXPECT_EQ(port->GetKey(), "port");
  EXPECT_EQ(port->GetValue(), "8080");
}

TEST_F(JavaPropertyManagerTest, RegisterPropertyKnowsAllSixTypeNames) {
  const std::vector<std::vector<std::string>> cases = {
      {"PROPERTY_TYPE_INTEGER", "1"},    {"PROPERTY_TYPE_DOUBLE", "1.5"},
      {"PROPERTY_TYPE_BOOLEAN", "true"}, {"PROPERTY_TYPE_STRING", "s"},
      {"PROPERTY_TYPE_LIST", "a|b"},     {"PROPERTY_TYPE_IP_ADDR", "10.0.0.1"}};
  for (const std::vector<std::string>& c : cases) {
    Property* property = m_manager.RegisterProperty(c[0], "key " + c[0], c[1]);
    ASSERT_NE(property, nullptr) << c[0];
    EXPECT_EQ(property->GetPropertyType(), c[0]);
  }
}

TEST_F(JavaPropertyManagerTest, RegisteredPropertyIsFoundByItsKey) {
  Property* port = RegisterPort();
  EXPECT_EQ(m_manager.GetProperty("port"), port);
}

TEST_F(JavaPropertyManagerTest, RegisteredPropertyHasEmptySection) {
  EXPECT_EQ(RegisterPort()->GetSection(), "");
}

TEST_F(JavaPropertyManagerTest, RegisteredPropertyKnowsTheManager) {
  m_manager.AddChangeListener(&m_changes);
  Property* port = RegisterPort();
  port->SetValue("81");
  EXPECT_EQ(m_changes.count, 1);
  EXPECT_EQ(m_changes.lastProperty, port);
}

TEST_F(JavaPropertyManagerTest,
       SecondRegistrationReturnsFirstPropertyUnchanged) {
  Property* port = RegisterPort("80");
  Property* again = m_manager.RegisterProperty(kString, "port", "text");
  EXPECT_EQ(again, port);
  EXPECT_EQ(again->GetPropertyType(), kInteger);
  EXPECT_EQ(again->GetValue(), "80");
}

TEST_F(JavaPropertyManagerTest, SecondRegistrationTellsNoListener) {
  RegisterPort();
  m_manager.AddRegistryListener(&m_listener);
  m_manager.AddChangeListener(&m_listener);
  RegisterPort("81");
  EXPECT_TRUE(m_events.empty());
}

TEST_F(JavaPropertyManagerTest, RegistryListenersHearAddingProperty) {
  m_manager.AddRegistryListener(&m_listener);
  RegisterPort();
  EXPECT_EQ(m_events, EventList{"l:adding:port"});
}

TEST_F(JavaPropertyManagerTest, UnknownTypeReturnsNullAndRegistersNothing) {
  m_manager.AddRegistryListener(&m_listener);
  EXPECT_EQ(m_manager.RegisterProperty("PROPERTY_TYPE_PORT", "port", "80"),
            nullptr);
  EXPECT_EQ(m_manager.GetProperty("port"), nullptr);
  EXPECT_TRUE(m_events.empty());
  EXPECT_EQ(Logged(), Messages{});
}

TEST_F(JavaPropertyManagerTest, TypeNamesAreCaseSensitive) {
  EXPECT_EQ(m_manager.RegisterProperty("property_type_integer", "port", "80"),
            nullptr);
}

TEST_F(JavaPropertyManagerTest, RejectedKeyThrowsAndRegistersNothing) {
  m_manager.AddRegistryListener(&m_listener);
  EXPECT_EQ(WrongValueMessage(
                [this] { m_manager.RegisterProperty(kInteger, "a#=b", "80"); }),
            "Property key can not contain characters: '= #'");
  EXPECT_EQ(m_manager.GetProperty("a#=b"), nullptr);
  EXPECT_TRUE(m_events.empty());
}

TEST_F(JavaPropertyManagerTest, RejectedInitialValueThrowsAndRegistersNothing) {
  m_manager.AddRegistryListener(&m_listener);
  EXPECT_EQ(WrongValueMessage([this] { RegisterPort("eighty"); }),
            kPortRejected);
  EXPECT_EQ(m_manager.GetProperty("port"), nullptr);
  EXPECT_TRUE(m_events.empty());
}

TEST_F(JavaPropertyManagerTest, ConcurrentRegistrationsOfOneKeyGetOneProperty) {
  Property* first = nullptr;
  Property* second = nullptr;
  std::thread other([this, &first] { first = RegisterPort(); });
  second = RegisterPort();
  other.join();
  EXPECT_NE(first, nullptr);
  EXPECT_EQ(first, second);
}

// Look-up and reading.

TEST_F(JavaPropertyManagerTest, GetPropertyOfUnknownKeyIsNull) {
  RegisterPort();
  EXPECT_EQ(m_manager.GetProperty("host"), nullptr);
}

TEST_F(JavaPropertyManagerTest, GetPropertyComparesKeysCaseSensitively) {
  m_manager.RegisterProperty(kInteger, "Port", "80");
  EXPECT_EQ(m_manager.GetProperty("port"), nullptr);
}

TEST_F(JavaPropertyManagerTest, GetPropertyDoesNotLookAtTheSection) {
  Property* port = ICreateIntegerProperty("port", "80", "net");
  static_cast<PropertyManager&>(m_manager).RegisterProperty(port);
  EXPECT_EQ(m_manager.GetProperty("port"), port);
}

TEST_F(JavaPropertyManagerTest, GetValueReturnsTheValueText) {
  RegisterPort("8080");
  EXPECT_EQ(m_manager.GetValue("port"), "8080");
}

TEST_F(JavaPropertyManagerTest, GetValueOfUnknownKeyIsEmptyAndLogsNothing) {
  EXPECT_EQ(m_manager.GetValue("port"), "");
  EXPECT_EQ(Logged(), Messages{});
}

// Setting values.

TEST_F(JavaPropertyManagerTest, SetValueChangesTheValue) {
  RegisterPort();
  m_manager.SetValue("port", "9090");
  EXPECT_EQ(m_manager.GetValue("port"), "9090");
}

TEST_F(JavaPropertyManagerTest, SetValueNotifiesChangeListenersOnce) {
  Property* port = RegisterPort();
  m_manager.AddChangeListener(&m_changes);
  m_manager.SetValue("port", "9090");
  EXPECT_EQ(m_changes.count, 1);
  EXPECT_EQ(m_changes.lastProperty, port);
  EXPECT_EQ(m_changes.lastValue, "9090");
}

TEST_F(JavaPropertyManagerTest, SetValueOfUnknownKeyLogsAndReturns) {
  m_manager.AddChangeListener(&m_changes);
  m_manager.SetValue("port", "9090");
  EXPECT_EQ(Logged(), Messages{"Property 'port' was not found"});
  EXPECT_EQ(m_changes.count, 0);
}

TEST_F(JavaPropertyManagerTest, RejectedValueThrowsThePropertysMessage) {
  RegisterPort();
  EXPECT_EQ(WrongValueMessage([this] { m_manager.SetValue("port", "x"); }),
            kPortRejected);
}

TEST_F(JavaPropertyManagerTest, RejectedValueLogsFormatChanged) {
  RegisterPort();
  EXPECT_THROW(m_manager.SetValue("port", "x"), Property::WrongValue);
  EXPECT_EQ(Logged(), Messages{"Format of property 'port' seems to be changed: "
                               "'Property 'port' can only contain 'an integer "
                               "value''"});
}

TEST_F(JavaPropertyManagerTest, RejectedValueKeepsTheOldValue) {
  RegisterPort("8080");
  EXPECT_THROW(m_manager.SetValue("port", "x"), Property::WrongValue);
  EXPECT_EQ(m_manager.GetValue("port"), "8080");
}

TEST_F(JavaPropertyManagerTest, RejectedValueNotifiesNobody) {
  RegisterPort();
  m_manager.AddChangeListener(&m_changes);
  EXPECT_THROW(m_manager.SetValue("port", "x"), Property::WrongValue);
  EXPECT_EQ(m_changes.count, 0);
}

// Removal.

TEST_F(JavaPropertyManagerTest, UnregisterPropertyReturnsTheProperty) {
  Property* port = RegisterPort();
  std::unique_ptr<Property> removed(m_manager.UnregisterProperty("port"));
  EXPECT_EQ(removed.get(), port);
}

TEST_F(JavaPropertyManagerTest, UnregisteredPropertyIsNoLongerFound) {
  RegisterPort();
  std::unique_ptr<Property> removed(m_manager.UnregisterProperty("port"));
  EXPECT_EQ(m_manager.GetProperty("port"), nullptr);
  EXPECT_EQ(m_manager.GetValue("port"), "");
}

TEST_F(JavaPropertyManagerTest, UnregisterPropertyTellsRegistryListeners) {
  RegisterPort();
  m_manager.AddRegistryListener(&m_listener);
  std::unique_ptr<Property> removed(m_manager.UnregisterProperty("port"));
  EXPECT_EQ(m_events, EventList{"l:removing:port"});
}

TEST_F(JavaPropertyManagerTest, UnregisterPropertyOfUnknownKeyIsNull) {
  m_manager.AddRegistryListener(&m_listener);
  EXPECT_EQ(m_manager.UnregisterProperty("port"), nullptr);
  EXPECT_TRUE(m_events.empty());
}

TEST_F(JavaPropertyManagerTest, UnregisteredPropertyIsNotDeletedByTheManager) {
  std::unique_ptr<JavaPropertyManager> manager = NewManager();
  static_cast<PropertyManager*>(manager.get())
      ->RegisterProperty(new TracedProperty("port", &m_events));
  std::unique_ptr<Property> removed(manager->UnregisterProperty("port"));
  manager.reset();
  EXPECT_TRUE(m_events.empty());
  removed.reset();
  EXPECT_EQ(m_events, EventList{"port:deleted"});
}

TEST_F(JavaPropertyManagerTest, UnregisteredPropertyStillNotifiesTheManager) {
  RegisterPort();
  std::unique_ptr<Property> removed(m_manager.UnregisterProperty("port"));
  m_manager.AddChangeListener(&m_changes);
  removed->SetValue("81");
  EXPECT_EQ(m_changes.count, 1);
  EXPECT_EQ(m_changes.lastProperty, removed.get());
}

TEST_F(JavaPropertyManagerTest, UnregisteredKeyCanBeRegisteredAnew) {
  Property* port = RegisterPort();
  std::unique_ptr<Property> removed(m_manager.UnregisterProperty("port"));
  Property* again = RegisterPort("81");
  EXPECT_NE(again, port);
  EXPECT_EQ(m_manager.GetValue("port"), "81");
}

// Read-write bindings.

TEST_F(JavaPropertyManagerTest, BindingLoadsPropertiesRegisteredBefore) {
  WriteFile(m_path, "port=8080\n");
  RegisterPort();
  m_manager.RegisterPersistence(m_path, kHeader);
  EXPECT_EQ(m_manager.GetValue("port"), "8080");
}

TEST_F(JavaPropertyManagerTest, RegisteringStoredKeyLoadsAndRewritesFile) {
  WriteFile(m_path, "# by hand\n port = 8080 \n");
  m_manager.RegisterPersistence(m_path, kHeader);
  RegisterPort();
  EXPECT_EQ(m_manager.GetValue("port"), "8080");
  EXPECT_EQ(ReadFile(m_path), "#app settings\nport=8080\n");
}

TEST_F(JavaPropertyManagerTest, EveryChangeRewritesTheFile) {
  m_manager.RegisterPersistence(m_path, kHeader);
  RegisterPort();
  m_manager.SetValue("port", "81");
  EXPECT_EQ(ReadFile(m_path), "#app settings\nport=81\n");
  WriteFile(m_path, "other=1\n");
  m_manager.SetValue("port", "82");
  EXPECT_EQ(ReadFile(m_path), "#app settings\nother=1\nport=82\n");
}

TEST_F(JavaPropertyManagerTest, SecondRegisterPersistenceOfPathIsIgnored) {
  m_manager.RegisterPersistence(m_path, "first");
  m_manager.RegisterPersistence(m_path, "second");
  RegisterPort();
  m_manager.SetValue("port", "81");
  EXPECT_EQ(ReadFile(m_path), "#first\nport=81\n");
}

TEST_F(JavaPropertyManagerTest,
       RegisterPersistenceOfReadOnlyPathKeepsItReadOnly) {
  const std::string text = "port = 8080  # by hand\n";
  WriteFile(m_path, text);
  m_manager.RegisterNonPersistence(m_path);
  m_manager.RegisterPersistence(m_path, kHeader);
  RegisterPort();
  m_manager.SetValue("port", "81");
  EXPECT_EQ(ReadFile(m_path), text);
}

// Read-only bindings.

TEST_F(JavaPropertyManagerTest, ReadOnlyBindingLoadsStoredValues) {
  WriteFile(m_path, "port=8080\n");
  m_manager.RegisterNonPersistence(m_path);
  EXPECT_EQ(RegisterPort()->GetValue(), "8080");
}

TEST_F(JavaPropertyManagerTest, ReadOnlyBindingNeverTouchesTheFile) {
  const std::string text = "  port = 8080  # by hand\n";
  WriteFile(m_path, text);
  m_manager.RegisterNonPersistence(m_path);
  RegisterPort();
  m_manager.SetValue("port", "81");
  EXPECT_EQ(ReadFile(m_path), text);
}

TEST_F(JavaPropertyManagerTest, ReadOnlyBindingCreatesNoFile) {
  m_manager.RegisterNonPersistence(m_path);
  RegisterPort();
  m_manager.SetValue("port", "81");
  EXPECT_FALSE(FileExists(m_path));
}

TEST_F(JavaPropertyManagerTest, SecondRegisterNonPersistenceOfPathIsIgnored) {
  WriteFile(m_path, "port=8080\n");
  m_manager.RegisterNonPersistence(m_path);
  m_manager.RegisterNonPersistence(m_path);
  m_manager.AddChangeListener(&m_changes);
  RegisterPort();
  EXPECT_EQ(m_changes.count, 1);
}

// Unbinding.

TEST_F(JavaPropertyManagerTest, UnRegisterPersistenceOfUnboundPathDoesNothing) {
  const std::string other = m_dir.File("other.properties");
  m_manager.RegisterPersistence(m_path, kHeader);
  m_manager.UnRegisterPersistence(other);
  RegisterPort();
  m_manager.SetValue("port", "81");
  EXPECT_EQ(ReadFile(m_path), "#app settings\nport=81\n");
  EXPECT_FALSE(FileExists(other));
}

TEST_F(JavaPropertyManagerTest, ChangesAfterUnbindingLeaveTheFileAlone) {
  m_manager.RegisterPersistence(m_path, kHeader);
  RegisterPort();
  m_manager.SetValue("port", "81");
  m_manager.UnRegisterPersistence(m_path);
  m_manager.SetValue("port", "82");
  EXPECT_EQ(ReadFile(m_path), "#app settings\nport=81\n");
}

TEST_F(JavaPropertyManagerTest, UnbindingReadOnlyPathStopsLoading) {
  WriteFile(m_path, "port=8080\n");
  m_manager.RegisterNonPersistence(m_path);
  m_manager.UnRegisterPersistence(m_path);
  EXPECT_EQ(RegisterPort("80")->GetValue(), "80");
}

TEST_F(JavaPropertyManagerTest, UnboundPathCanBeBoundAgain) {
  m_manager.RegisterPersistence(m_path, "first");
  m_manager.UnRegisterPersistence(m_path);
  m_manager.RegisterPersistence(m_path, "second");
  RegisterPort();
  m_manager.SetValue("port", "81");
  EXPECT_EQ(ReadFile(m_path), "#second\nport=81\n");
}

// Two files.

TEST_F(JavaPropertyManagerTest, BindingSecondPathLoadsItsValuesIntoFirstFile) {
  const std::string second = m_dir.File("second.properties");
  WriteFile(second, "port=9090\nname=db\n");
  m_manager.RegisterPersistence(m_path, "first");
  RegisterPort();
  m_manager.RegisterProperty(kString, "name", "none");
  m_manager.RegisterPersistence(second, "second");
  EXPECT_EQ(m_manager.GetValue("port"), "9090");
  EXPECT_EQ(m_manager.GetValue("name"), "db");
  EXPECT_EQ(ReadFile(m_path), "#first\nname=db\nport=9090\n");
}

TEST_F(JavaPropertyManagerTest, BindingSecondPathLeavesItsOwnFileUnchanged) {
  const std::string second = m_dir.File("second.properties");
  const std::string text = " port = 9090 # by hand\n";
  WriteFile(second, text);
  m_manager.RegisterPersistence(m_path, "first");
  RegisterPort();
  m_manager.RegisterPersistence(second, "second");
  EXPECT_EQ(ReadFile(second), text);
}

TEST_F(JavaPropertyManagerTest, ChangeRewritesBothBoundFiles) {
  const std::string second = m_dir.File("second.properties");
  m_manager.RegisterPersistence(m_path, "first");
  m_manager.RegisterPersistence(second, "second");
  RegisterPort();
  m_manager.SetValue("port", "81");
  EXPECT_EQ(ReadFile(m_path), "#first\nport=81\n");
  EXPECT_EQ(ReadFile(second), "#second\nport=81\n");
}

// Destruction.

TEST_F(JavaPropertyManagerTest, DestructionWritesNoFile) {
  std::unique_ptr<JavaPropertyManager> manager = NewManager();
  manager->RegisterPersistence(m_path, kHeader);
  manager->RegisterNonPersistence(m_dir.File("read-only.properties"));
  manager->RegisterProperty(kInteger, "port", "80");
  manager->SetValue("port", "81");
  const std::string text = " port = 81 # by hand\n";
  WriteFile(m_path, text);
  manager.reset();
  EXPECT_EQ(ReadFile(m_path), text);
}

TEST_F(JavaPropertyManagerTest, DestructionDeletesPropertiesThenClients) {
  std::unique_ptr<JavaPropertyManager> manager = NewManager();
  PropertyManager* base = manager.get();
  base->RegisterClient(new RecordingListener("client", &m_events));
  base->RegisterProperty(new TracedProperty("port", &m_events));
  manager->RegisterPersistence(m_path, kHeader);
  m_events.clear();
  manager.reset();
  EXPECT_EQ(m_events, (EventList{"port:deleted", "client:deleted"}));
}

// Locking.

TEST_F(JavaPropertyManagerTest, SetValueHoldsTheMutexWhileListenersAreTold) {
  RegisterPort();
  LockProbe probe(m_manager.Mutex());
  m_manager.AddChangeListener(&probe);
  m_manager.SetValue("port", "81");
  EXPECT_EQ(probe.heldDuringCalls, std::vector<bool>{true});
  m_manager.RemoveChangeListener(&probe);
}

TEST_F(JavaPropertyManagerTest, RegisterPropertyHoldsTheMutexWhileLoadIsTold) {
  WriteFile(m_path, "port=8080\n");
  m_manager.RegisterNonPersistence(m_path);
  LockProbe probe(m_manager.Mutex());
  m_manager.AddChangeListener(&probe);
  RegisterPort();
  EXPECT_EQ(probe.heldDuringCalls, std::vector<bool>{true});
  m_manager.RemoveChangeListener(&probe);
}

TEST_F(JavaPropertyManagerTest,
       PropertySetDirectlyDoesNotTakeTheManagersMutex) {
  Property* port = RegisterPort();
  LockProbe probe(m_manager.Mutex());
  m_manager.AddChangeListener(&probe);
  port->SetValue("81");
  EXPECT_EQ(probe.heldDuringCalls, std::vector<bool>{false});
  m_manager.RemoveChangeListener(&probe);
}

TEST_F(JavaPropertyManagerTest, MutexIsReleasedAfterSetValue) {
  RegisterPort();
  m_manager.SetValue("port", "81");
  EXPECT_TRUE(IsFreeForOtherThreads(m_manager.Mutex()));
}

TEST_F(JavaPropertyManagerTest, MutexIsReleasedAfterRejectedValue) {
  RegisterPort();
  EXPECT_THROW(m_manager.SetValue("port", "x"), Property::WrongValue);
  EXPECT_TRUE(IsFreeForOtherThreads(m_manager.Mutex()));
}

TEST_F(JavaPropertyManagerTest, MutexIsReleasedAfterRejectedInitialValue) {
  EXPECT_THROW(RegisterPort("x"), Property::WrongValue);
  EXPECT_TRUE(IsFreeForOtherThreads(m_manager.Mutex()));
}

TEST_F(JavaPropertyManagerTest, MutexIsReleasedAfterUnknownType) {
  m_manager.RegisterProperty("PROPERTY_TYPE_PORT", "port", "80");
  EXPECT_TRUE(IsFreeForOtherThreads(m_manager.Mutex()));
}

// Assertions.

TEST(JavaPropertyManagerDeathTest, RegisteringNewKeyWithoutFactoryAborts) {
  JavaPropertyManager manager("app", nullptr);
  EXPECT_DEATH(manager.RegisterProperty(kInteger, "port", "80"),
               test_support::AssertionRegex(
                   "Src/JavaPropertyManager.cpp", 40,
                   "Property* JavaPropertyManager::RegisterProperty(const "
                   "propstring&, const propstring&, const propstring&)",
                   "m_propertyFactory"));
}

TEST(JavaPropertyManagerDeathTest, RegisteredKeyIsFoundWithoutFactory) {
  JavaPropertyManager manager("app", nullptr);
  Property* port = JCreateIntegerProperty("port", "80");
  static_cast<PropertyManager&>(manager).RegisterProperty(port);
  EXPECT_EQ(manager.RegisterProperty(kString, "port", "text"), port);
}

}  // namespace
