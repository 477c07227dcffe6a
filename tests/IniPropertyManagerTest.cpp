// IniPropertyManagerTest.cpp - registration by section and key, values, INI
// file bindings with their read-only rules, destruction, locking and
// assertions of IniPropertyManager.

#include "IniPropertyManager.h"

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
const char kLoadingPort[] = "Loading 'port' of 'net' to '8080'";

// A manager that lets tests reach its mutex.
typedef test_support::WithVisibleMutex<IniPropertyManager>
    ExposedIniPropertyManager;

// An integer property that records its deletion as "<key>:deleted".
class TracedProperty : public IntegerProperty {
 public:
  TracedProperty(const std::string& section, const std::string& key,
                 EventList* events)
      : IntegerProperty(key, "80", section), m_events(events) {}
  ~TracedProperty() override { m_events->push_back(GetKey() + ":deleted"); }

 private:
  EventList* m_events;
};

class IniPropertyManagerTest : public testing::Test {
 protected:
  IniPropertyManagerTest() : m_path(m_dir.File("app.ini")) {
    test_support::AddAllCreators(&m_factory);
  }

  // Registers the integer property ("net", "port").
  Property* RegisterPort(const std::string& initial = "80") {
    return m_manager.RegisterProperty(kInteger, "net", "port", initial);
  }

  // A second manager with the same factory, for tests that destroy it.
  std::unique_ptr<IniPropertyManager> NewManager() {
    return std::unique_ptr<IniPropertyManager>(
        new IniPropertyManager("other", &m_factory));
  }

  // The messages logged so far; each must be at level 1.
  Messages Logged() const { return test_support::MessagesAllAtLevel(m_log, 1); }

  TempDir m_dir;
  std::string m_path;
  EventList m_events;
  RecordingListener m_listener{"l", &m_events};
  CountingChangeListener m_changes;
  IniPropertyFactory m_factory;
  ExposedIniPropertyManager m_manager{"app", &m_factory};
  LogRecorder m_log;
};

// Registration.

TEST_F(IniPropertyManagerTest, RegisterPropertyCreatesPropertyOfTheNamedType) {
  Property* port = RegisterPort("8080");
  ASSERT_NE(port, nullptr);
  EXPECT_EQ(port->GetPropertyType(), kInteger);
  EXPECT_EQ(port->GetKey(), "port");
  EXPECT_EQ(port->GetValue(), "8080");
}

TEST_F(IniPropertyManagerTest, RegisterPropertyKnowsAllSixTypeNames) {
  const std::vector<std::vector<std::string>> cases = {
      {"PROPERTY_TYPE_INTEGER", "1"},    {"PROPERTY_TYPE_DOUBLE", "1.5"},
      {"PROPERTY_TYPE_BOOLEAN", "true"}, {"PROPERTY_TYPE_STRING", "s"},
      {"PROPERTY_TYPE_LIST", "a|b"},     {"PROPERTY_TYPE_IP_ADDR", "10.0.0.1"}};
  for (const std::vector<std::string>& c : cases) {
    Property* property = m_manager.RegisterProperty(c[0], "s", c[0], c[1]);
    ASSERT_NE(property, nullptr) << c[0];
    EXPECT_EQ(property->GetPropertyType(), c[0]);
  }
}

TEST_F(IniPropertyManagerTest, RegisteredPropertyHasTheGivenSection) {
  EXPECT_EQ(RegisterPort()->GetSection(), "net");
}

TEST_F(IniPropertyManagerTest, RegisteredPropertyIsFoundBySectionAndKey) {
  Property* port = RegisterPort();
  EXPECT_EQ(m_manager.GetProperty("net", "port"), port);
}

TEST_F(IniPropertyManagerTest, RegisteredPropertyKnowsTheManager) {
  m_manager.AddChangeListener(&m_changes);
  Property* port = RegisterPort();
  port->SetValue("81");
  EXPECT_EQ(m_changes.count, 1);
  EXPECT_EQ(m_changes.lastProperty, port);
}

TEST_F(IniPropertyManagerTest,
       SecondRegistrationReturnsFirstPropertyUnchanged) {
  Property* port = RegisterPort("80");
  Property* again = m_manager.RegisterProperty(kString, "net", "port", "text");
  EXPECT_EQ(again, port);
  EXPECT_EQ(again->GetPropertyType(), kInteger);
  EXPECT_EQ(again->GetValue(), "80");
}

TEST_F(IniPropertyManagerTest, SecondRegistrationTellsNoListener) {
  RegisterPort();
  m_manager.AddRegistryListener(&m_listener);
  m_manager.AddChangeListener(&m_listener);
  RegisterPort("81");
  EXPECT_TRUE(m_events.empty());
}

TEST_F(IniPropertyManagerTest, SameKeyInTwoSectionsGivesTwoProperties) {
  Property* a = m_manager.RegisterProperty(kInteger, "a", "k", "1");
  Property* b = m_manager.RegisterProperty(kInteger, "b", "k", "2");
  ASSERT_NE(b, nullptr);
  EXPECT_NE(a, b);
  EXPECT_EQ(b->GetSection(), "b");
  EXPECT_EQ(m_manager.GetProperty("a", "k"), a);
  EXPECT_EQ(m_manager.GetProperty("b", "k"), b);
}

TEST_F(IniPropertyManagerTest, SetValueInOneSectionLeavesTheOtherAlone) {
  m_manager.RegisterProperty(kInteger, "a", "k", "1");
  m_manager.RegisterProperty(kInteger, "b", "k", "2");
  m_manager.SetValue("a", "k", "10");
  EXPECT_EQ(m_manager.GetValue("a", "k"), "10");
  EXPECT_EQ(m_manager.GetValue("b", "k"), "2");
}

TEST_F(IniPropertyManagerTest, RegistryListenersHearAddingProperty) {
  m_manager.AddRegistryListener(&m_listener);
  RegisterPort();
  EXPECT_EQ(m_events, EventList{"l:adding:port"});
}

TEST_F(IniPropertyManagerTest, UnknownTypeReturnsNullAndRegistersNothing) {
  m_manager.AddRegistryListener(&m_listener);
  EXPECT_EQ(
      m_manager.RegisterProperty("PROPERTY_TYPE_PORT", "net", "port", "80"),
      nullptr);
  EXPECT_EQ(m_manager.GetProperty("net", "port"), nullptr);
  EXPECT_TRUE(m_events.empty());
  EXPECT_EQ(Logged(), Messages{});
}

TEST_F(IniPropertyManagerTest, RejectedKeyThrowsAndRegistersNothing) {
  m_manager.AddRegistryListener(&m_listener);
  EXPECT_EQ(WrongValueMessage([this] {
              m_manager.RegisterProperty(kInteger, "net", "a#=b", "80");
            }),
            "Property key can not contain characters: '= #'");
  EXPECT_EQ(m_manager.GetProperty("net", "a#=b"), nullptr);
  EXPECT_TRUE(m_events.empty());
}

TEST_F(IniPropertyManagerTest, RejectedInitialValueThrowsAndRegistersNothing) {
  m_manager.AddRegistryListener(&m_listener);
  EXPECT_EQ(WrongValueMessage([this] { RegisterPort("eighty"); }),
            kPortRejected);
  EXPECT_EQ(m_manager.GetProperty("net", "port"), nullptr);
  EXPECT_TRUE(m_events.empty());
}

TEST_F(IniPropertyManagerTest, ConcurrentRegistrationsOfOnePairGetOneProperty) {
  Property* first = nullptr;
  Property* second = nullptr;
  std::thread other([this, &first] { first = RegisterPort(); });
  second = RegisterPort();
  other.join();
  EXPECT_NE(first, nullptr);
  EXPECT_EQ(first, second);
}

// Look-up and reading.

TEST_F(IniPropertyManagerTest, GetPropertyOfKeyInAnotherSectionIsNull) {
  RegisterPort();
  EXPECT_EQ(m_manager.GetProperty("web", "port"), nullptr);
}

TEST_F(IniPropertyManagerTest, GetPropertyComparesSectionsCaseSensitively) {
  RegisterPort();
  EXPECT_EQ(m_manager.GetProperty("Net", "port"), nullptr);
}

TEST_F(IniPropertyManagerTest, EmptySectionIsAnOrdinarySection) {
  Property* plain = m_manager.RegisterProperty(kInteger, "", "port", "1");
  EXPECT_EQ(m_manager.GetProperty("", "port"), plain);
  EXPECT_EQ(m_manager.GetProperty("net", "port"), nullptr);
  EXPECT_NE(RegisterPort(), plain);
  EXPECT_EQ(m_manager.GetProperty("", "port"), plain);
}

TEST_F(IniPropertyManagerTest, GetValueReturnsTheValueText) {
  RegisterPort("8080");
  EXPECT_EQ(m_manager.GetValue("net", "port"), "8080");
}

TEST_F(IniPropertyManagerTest, GetValueOfUnknownPairIsEmptyAndLogsNothing) {
  RegisterPort();
  EXPECT_EQ(m_manager.GetValue("web", "port"), "");
  EXPECT_EQ(Logged(), Messages{});
}

// Setting values.

TEST_F(IniPropertyManagerTest, SetValueChangesTheValue) {
  RegisterPort();
  m_manager.SetValue("net", "port", "9090");
  EXPECT_EQ(m_manager.GetValue("net", "port"), "9090");
}

TEST_F(IniPropertyManagerTest, SetValueNotifiesChangeListenersOnce) {
  Property* port = RegisterPort();
  m_manager.AddChangeListener(&m_changes);
  m_manager.SetValue("net", "port", "9090");
  EXPECT_EQ(m_changes.count, 1);
  EXPECT_EQ(m_changes.lastProperty, port);
  EXPECT_EQ(m_changes.lastValue, "9090");
}

TEST_F(IniPropertyManagerTest, SetValueOfUnknownPairLogsKeyAloneAndReturns) {
  m_manager.AddChangeListener(&m_changes);
  m_manager.SetValue("net", "port", "9090");
  EXPECT_EQ(Logged(), Messages{"Property 'port' was not found"});
  EXPECT_EQ(m_changes.count, 0);
}

TEST_F(IniPropertyManagerTest, SetValueOfKeyInAnotherSectionLogsNotFound) {
  RegisterPort("80");
  m_manager.SetValue("web", "port", "9090");
  EXPECT_EQ(Logged(), Messages{"Property 'port' was not found"});
  EXPECT_EQ(m_manager.GetValue("net", "port"), "80");
}

TEST_F(IniPropertyManagerTest, RejectedValueThrowsThePropertysMessage) {
  RegisterPort();
  EXPECT_EQ(
      WrongValueMessage([this] { m_manager.SetValue("net", "port", "x"); }),
      kPortRejected);
}

TEST_F(IniPropertyManagerTest, RejectedValueLogsFormatChangedWithKeyAlone) {
  RegisterPort();
  EXPECT_THROW(m_manager.SetValue("net", "port", "x"), Property::WrongValue);
  EXPECT_EQ(Logged(), Messages{"Format of property 'port' seems to be changed: "
                               "'Property 'port' can only contain 'an integer "
                               "value''"});
}

TEST_F(IniPropertyManagerTest, RejectedValueKeepsTheOldValue) {
  RegisterPort("8080");
  EXPECT_THROW(m_manager.SetValue("net", "port", "x"), Property::WrongValue);
  EXPECT_EQ(m_manager.GetValue("net", "port"), "8080");
}

TEST_F(IniPropertyManagerTest, RejectedValueNotifiesNobody) {
  RegisterPort();
  m_manager.AddChangeListener(&m_changes);
  EXPECT_THROW(m_manager.SetValue("net", "port", "x"), Property::WrongValue);
  EXPECT_EQ(m_changes.count, 0);
}

// Removal.

TEST_F(IniPropertyManagerTest, UnregisterPropertyReturnsTheProperty) {
  Property* port = RegisterPort();
  std::unique_ptr<Property> removed(
      m_manager.UnregisterProperty("net", "port"));
  EXPECT_EQ(removed.get(), port);
}

TEST_F(IniPropertyManagerTest, UnregisteredPropertyIsNoLongerFound) {
  RegisterPort();
  std::unique_ptr<Property> removed(
      m_manager.UnregisterProperty("net", "port"));
  EXPECT_EQ(m_manager.GetProperty("net", "port"), nullptr);
  EXPECT_EQ(m_manager.GetValue("net", "port"), "");
}

TEST_F(IniPropertyManagerTest, UnregisterPropertyTakesOnlyThatSection) {
  Property* a = m_manager.RegisterProperty(kInteger, "a", "k", "1");
  Property* b = m_manager.RegisterProperty(kInteger, "b", "k", "2");
  std::unique_ptr<Property> removed(m_manager.UnregisterProperty("b", "k"));
  EXPECT_EQ(removed.get(), b);
  EXPECT_EQ(m_manager.GetProperty("a", "k"), a);
}

TEST_F(IniPropertyManagerTest, UnregisterPropertyTellsRegistryListeners) {
  RegisterPort();
  m_manager.AddRegistryListener(&m_listener);
  std::unique_ptr<Property> removed(
      m_manager.UnregisterProperty("net", "port"));
  EXPECT_EQ(m_events, EventList{"l:removing:port"});
}

TEST_F(IniPropertyManagerTest, UnregisterPropertyOfUnknownPairIsNull) {
  RegisterPort();
  m_manager.AddRegistryListener(&m_listener);
  EXPECT_EQ(m_manager.UnregisterProperty("web", "port"), nullptr);
  EXPECT_TRUE(m_events.empty());
}

TEST_F(IniPropertyManagerTest, UnregisteredPropertyIsNotDeletedByTheManager) {
  std::unique_ptr<IniPropertyManager> manager = NewManager();
  static_cast<PropertyManager*>(manager.get())
      ->RegisterProperty(new TracedProperty("net", "port", &m_events));
  std::unique_ptr<Property> removed(manager->UnregisterProperty("net", "port"));
  manager.reset();
  EXPECT_TRUE(m_events.empty());
  removed.reset();
  EXPECT_EQ(m_events, EventList{"port:deleted"});
}

TEST_F(IniPropertyManagerTest, UnregisteredPropertyStillNotifiesTheManager) {
  RegisterPort();
  std::unique_ptr<Property> removed(
      m_manager.UnregisterProperty("net", "port"));
  m_manager.AddChangeListener(&m_changes);
  removed->SetValue("81");
  EXPECT_EQ(m_changes.count, 1);
  EXPECT_EQ(m_changes.lastProperty, removed.get());
}

// Read-write bindings.

TEST_F(IniPropertyManagerTest, BindingLoadsPropertiesRegisteredBefore) {
  WriteFile(m_path, "[net]\nport=8080\n");
  RegisterPort();
  m_manager.RegisterPersistence(m_path, kHeader);
  EXPECT_EQ(m_manager.GetValue("net", "port"), "8080");
}

TEST_F(IniPropertyManagerTest, RegisteringStoredPairLoadsAndRewritesFile) {
  WriteFile(m_path, "; by hand\n[net]\n port = 8080 \n");
  m_manager.RegisterPersistence(m_path, kHeader);
  RegisterPort();
  EXPECT_EQ(m_manager.GetValue("net", "port"), "8080");
  EXPECT_EQ(ReadFile(m_path), ";app settings\n[net]\nport=8080\n\n");
}

TEST_F(IniPropertyManagerTest, EveryChangeRewritesTheFile) {
  m_manager.RegisterPersistence(m_path, kHeader);
  RegisterPort();
  m_manager.SetValue("net", "port", "81");
  EXPECT_EQ(ReadFile(m_path), ";app settings\n[net]\nport=81\n\n");
  WriteFile(m_path, "[web]\nother=1\n");
  m_manager.SetValue("net", "port", "82");
  EXPECT_EQ(ReadFile(m_path),
            ";app settings\n[net]\nport=82\n\n[web]\nother=1\n\n");
}

TEST_F(IniPropertyManagerTest, SecondRegisterPersistenceOfPathIsIgnored) {
  m_manager.RegisterPersistence(m_path, "first");
  m_manager.RegisterPersistence(m_path, "second");
  RegisterPort();
  m_manager.SetValue("net", "port", "81");
  EXPECT_EQ(ReadFile(m_path), ";first\n[net]\nport=81\n\n");
}

// Read-only bindings.

TEST_F(IniPropertyManagerTest, ReadOnlyBindingLoadsStoredValues) {
  WriteFile(m_path, "[net]\nport=8080\n");
  m_manager.RegisterNonPersistence(m_path);
  EXPECT_EQ(RegisterPort()->GetValue(), "8080");
}

TEST_F(IniPropertyManagerTest, ReadOnlyBindingNeverTouchesTheFile) {
  const std::string text = "; by hand\n [net] \n  port = 8080  \n";
  WriteFile(m_path, text);
  m_manager.RegisterNonPersistence(m_path);
  RegisterPort();
  m_manager.SetValue("net", "port", "81");
  EXPECT_EQ(ReadFile(m_path), text);
}

TEST_F(IniPropertyManagerTest, ReadOnlyBindingCreatesNoFile) {
  m_manager.RegisterNonPersistence(m_path);
  RegisterPort();
  m_manager.SetValue("net", "port", "81");
  EXPECT_FALSE(FileExists(m_path));
}

TEST_F(IniPropertyManagerTest, ReadOnlyBindingLoadsOncePerRegistration) {
  WriteFile(m_path, "[net]\nport=8080\n");
  m_manager.RegisterNonPersistence(m_path);
  m_log.Clear();
  RegisterPort();
  EXPECT_EQ(Logged(), Messages{kLoadingPort});
}

TEST_F(IniPropertyManagerTest, RegisterNonPersistenceTwiceLoadsTheFileTwice) {
  WriteFile(m_path, "[net]\nport=8080\n");
  m_manager.RegisterNonPersistence(m_path);
  m_manager.RegisterNonPersistence(m_path);
  m_manager.AddChangeListener(&m_changes);
  m_log.Clear();
  RegisterPort();
  EXPECT_EQ(Logged(), (Messages{kLoadingPort, kLoadingPort}));
  EXPECT_EQ(m_changes.count, 2);
}

TEST_F(IniPropertyManagerTest, RegisterNonPersistenceOfReadWritePathIsIgnored) {
  WriteFile(m_path, "[net]\nport=8080\n");
  m_manager.RegisterPersistence(m_path, kHeader);
  m_manager.RegisterNonPersistence(m_path);
  m_manager.AddChangeListener(&m_changes);
  RegisterPort();
  EXPECT_EQ(m_changes.count, 1);
}

TEST_F(IniPropertyManagerTest, UnRegisterPersistenceOfReadOnlyPathDoesNothing) {
  WriteFile(m_path, "[net]\nport=8080\n");
  m_manager.RegisterNonPersistence(m_path);
  m_manager.UnRegisterPersistence(m_path);
  EXPECT_EQ(RegisterPort("80")->GetValue(), "8080");
}

TEST_F(IniPropertyManagerTest, RegisterPersistenceAfterReadOnlyBindsReadWrite) {
  WriteFile(m_path, "; by hand\n[net]\n port = 8080 \n");
  m_manager.RegisterNonPersistence(m_path);
  m_manager.RegisterPersistence(m_path, kHeader);
  RegisterPort();
  m_manager.SetValue("net", "port", "81");
  EXPECT_EQ(ReadFile(m_path), ";app settings\n[net]\nport=81\n\n");
  WriteFile(m_path, "[web]\nother=1\n");
  m_manager.SetValue("net", "port", "82");
  EXPECT_EQ(ReadFile(m_path),
            ";app settings\n[net]\nport=82\n\n[web]\nother=1\n\n");
}

TEST_F(IniPropertyManagerTest, UnbindingPathBoundBothWaysKeepsTheReader) {
  const std::string text = "[net]\nport=8080\n";
  WriteFile(m_path, text);
  m_manager.RegisterNonPersistence(m_path);
  m_manager.RegisterPersistence(m_path, kHeader);
  m_manager.UnRegisterPersistence(m_path);
  EXPECT_EQ(RegisterPort("80")->GetValue(), "8080");
  m_manager.SetValue("net", "port", "81");
  EXPECT_EQ(ReadFile(m_path), text);
}

// Unbinding.

TEST_F(IniPropertyManagerTest, UnRegisterPersistenceOfUnboundPathDoesNothing) {
  const std::string other = m_dir.File("other.ini");
  m_manager.RegisterPersistence(m_path, kHeader);
  m_manager.UnRegisterPersistence(other);
  RegisterPort();
  m_manager.SetValue("net", "port", "81");
  EXPECT_EQ(ReadFile(m_path), ";app settings\n[net]\nport=81\n\n");
  EXPECT_FALSE(FileExists(other));
}

TEST_F(IniPropertyManagerTest, ChangesAfterUnbindingLeaveTheFileAlone) {
  m_manager.RegisterPersistence(m_path, kHeader);
  RegisterPort();
  m_manager.SetValue("net", "port", "81");
  m_manager.UnRegisterPersistence(m_path);
  m_manager.SetValue("net", "port", "82");
  EXPECT_EQ(ReadFile(m_path), ";app settings\n[net]\nport=81\n\n");
}

TEST_F(IniPropertyManagerTest, UnboundPathCanBeBoundAgain) {
  m_manager.RegisterPersistence(m_path, "first");
  m_manager.UnRegisterPersistence(m_path);
  m_manager.RegisterPersistence(m_path, "second");
  RegisterPort();
  m_manager.SetValue("net", "port", "81");
  EXPECT_EQ(ReadFile(m_path), ";second\n[net]\nport=81\n\n");
}

// Two files.

TEST_F(IniPropertyManagerTest, BindingSecondPathLoadsItsValuesIntoFirstFile) {
  const std::string second = m_dir.File("second.ini");
  WriteFile(second, "[net]\nport=9090\nname=db\n");
  m_manager.RegisterPersistence(m_path, "first");
  RegisterPort();
  m_manager.RegisterProperty(kString, "net", "name", "none");
  m_manager.RegisterPersistence(second, "second");
  EXPECT_EQ(m_manager.GetValue("net", "port"), "9090");
  EXPECT_EQ(m_manager.GetValue("net", "name"), "db");
  EXPECT_EQ(ReadFile(m_path), ";first\n[net]\nname=db\nport=9090\n\n");
}

TEST_F(IniPropertyManagerTest, BindingSecondPathLeavesItsOwnFileUnchanged) {
  const std::string second = m_dir.File("second.ini");
  const std::string text = "[net]\n port = 9090 ; by hand\n";
  WriteFile(second, text);
  m_manager.RegisterPersistence(m_path, "first");
  RegisterPort();
  m_manager.RegisterPersistence(second, "second");
  EXPECT_EQ(ReadFile(second), text);
}

TEST_F(IniPropertyManagerTest, ChangeRewritesBothBoundFiles) {
  const std::string second = m_dir.File("second.ini");
  m_manager.RegisterPersistence(m_path, "first");
  m_manager.RegisterPersistence(second, "second");
  RegisterPort();
  m_manager.SetValue("net", "port", "81");
  EXPECT_EQ(ReadFile(m_path), ";first\n[net]\nport=81\n\n");
  EXPECT_EQ(ReadFile(second), ";second\n[net]\nport=81\n\n");
}

// Destruction.

TEST_F(IniPropertyManagerTest, DestructionWritesNoFile) {
  std::unique_ptr<IniPropertyManager> manager = NewManager();
  manager->RegisterPersistence(m_path, kHeader);
  manager->RegisterNonPersistence(m_dir.File("read-only.ini"));
  manager->RegisterProperty(kInteger, "net", "port", "80");
  manager->SetValue("net", "port", "81");
  const std::string text = "[net]\n port = 81 ; by hand\n";
  WriteFile(m_path, text);
  manager.reset();
  EXPECT_EQ(ReadFile(m_path), text);
}

TEST_F(IniPropertyManagerTest, DestructionDeletesPropertiesThenClients) {
  std::unique_ptr<IniPropertyManager> manager = NewManager();
  PropertyManager* base = manager.get();
  base->RegisterClient(new RecordingListener("client", &m_events));
  base->RegisterProperty(new TracedProperty("net", "port", &m_events));
  manager->RegisterPersistence(m_path, kHeader);
  manager->RegisterNonPersistence(m_dir.File("read-only.ini"));
  m_events.clear();
  manager.reset();
  EXPECT_EQ(m_events, (EventList{"port:deleted", "client:deleted"}));
}

// Locking.

TEST_F(IniPropertyManagerTest, SetValueHoldsTheMutexWhileListenersAreTold) {
  RegisterPort();
  LockProbe probe(m_manager.Mutex());
  m_manager.AddChangeListener(&probe);
  m_manager.SetValue("net", "port", "81");
  EXPECT_EQ(probe.heldDuringCalls, std::vector<bool>{true});
  m_manager.RemoveChangeListener(&probe);
}

TEST_F(IniPropertyManagerTest, RegisterPropertyHoldsTheMutexWhileLoadIsTold) {
  WriteFile(m_path, "[net]\nport=8080\n");
  m_manager.RegisterNonPersistence(m_path);
  LockProbe probe(m_manager.Mutex());
  m_manager.AddChangeListener(&probe);
  RegisterPort();
  EXPECT_EQ(probe.heldDuringCalls, std::vector<bool>{true});
  m_manager.RemoveChangeListener(&probe);
}

TEST_F(IniPropertyManagerTest, PropertySetDirectlyDoesNotTakeTheManagersMutex) {
  Property* port = RegisterPort();
  LockProbe probe(m_manager.Mutex());
  m_manager.AddChangeListener(&probe);
  port->SetValue("81");
  EXPECT_EQ(probe.heldDuringCalls, std::vector<bool>{false});
  m_manager.RemoveChangeListener(&probe);
}

TEST_F(IniPropertyManagerTest, MutexIsReleasedAfterSetValue) {
  RegisterPort();
  m_manager.SetValue("net", "port", "81");
  EXPECT_TRUE(IsFreeForOtherThreads(m_manager.Mutex()));
}

TEST_F(IniPropertyManagerTest, MutexIsReleasedAfterRejectedValue) {
  RegisterPort();
  EXPECT_THROW(m_manager.SetValue("net", "port", "x"), Property::WrongValue);
  EXPECT_TRUE(IsFreeForOtherThreads(m_manager.Mutex()));
}

TEST_F(IniPropertyManagerTest, MutexIsReleasedAfterRejectedInitialValue) {
  EXPECT_THROW(RegisterPort("x"), Property::WrongValue);
  EXPECT_TRUE(IsFreeForOtherThreads(m_manager.Mutex()));
}

TEST_F(IniPropertyManagerTest, MutexIsReleasedAfterUnknownType) {
  m_manager.RegisterProperty("PROPERTY_TYPE_PORT", "net", "port", "80");
  EXPECT_TRUE(IsFreeForOtherThreads(m_manager.Mutex()));
}

// Assertions.

TEST(IniPropertyManagerDeathTest, RegisteringNewPairWithoutFactoryAborts) {
  IniPropertyManager manager("app", nullptr);
  EXPECT_DEATH(manager.RegisterProperty(kInteger, "net", "port", "80"),
               test_support::AssertionRegex(
                   "Src/IniPropertyManager.cpp", 41,
                   "Property* IniPropertyManager::RegisterProperty(const "
                   "propstring&, const propstring&, const propstring&, const "
                   "propstring&)",
                   "m_propertyFactory"));
}

TEST(IniPropertyManagerDeathTest, RegisteredPairIsFoundWithoutFactory) {
  IniPropertyManager manager("app", nullptr);
  Property* port = ICreateIntegerProperty("port", "80", "net");
  static_cast<PropertyManager&>(manager).RegisterProperty(port);
  EXPECT_EQ(manager.RegisterProperty(kString, "net", "port", "text"), port);
}

}  // namespace
