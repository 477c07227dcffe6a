// ManagerFlavoursTest.cpp - what JavaPropertyManager and IniPropertyManager
// both do: registration, look-up, values, bindings to files, destruction,
// locking and assertions, tested once over the traits of each flavour. What
// one flavour alone does is in JavaPropertyManagerTest.cpp and
// IniPropertyManagerTest.cpp.

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "Property.h"
#include "PropertyManager.h"
#include "support/AssertionMessage.h"
#include "support/FlavourFixtures.h"
#include "support/Flavours.h"
#include "support/MutexProbe.h"
#include "support/Recorders.h"
#include "support/TempDir.h"

namespace {

using test_support::EventList;
using test_support::FileExists;
using test_support::FlavourNames;
using test_support::Flavours;
using test_support::IsFreeForOtherThreads;
using test_support::kHeader;
using test_support::kIntegerType;
using test_support::kStringType;
using test_support::LockProbe;
using test_support::Messages;
using test_support::ReadFile;
using test_support::RecordingListener;
using test_support::TracedProperty;
using test_support::WriteFile;
using test_support::WrongValueMessage;

const char kPortRejected[] =
    "Property 'port' can only contain 'an integer value'";

template <typename F>
class ManagerFlavoursTest : public test_support::ManagerFixture<F> {};

TYPED_TEST_SUITE(ManagerFlavoursTest, Flavours, FlavourNames);

// Registration.

TYPED_TEST(ManagerFlavoursTest, RegisterPropertyCreatesPropertyOfTheNamedType) {
  Property* port = this->RegisterPort("8080");
  ASSERT_NE(port, nullptr);
  EXPECT_EQ(port->GetPropertyType(), kIntegerType);
  EXPECT_EQ(port->GetKey(), "port");
  EXPECT_EQ(port->GetValue(), "8080");
}

TYPED_TEST(ManagerFlavoursTest, RegisterPropertyKnowsAllSixTypeNames) {
  const std::vector<std::vector<std::string>> cases = {
      {"PROPERTY_TYPE_INTEGER", "1"},    {"PROPERTY_TYPE_DOUBLE", "1.5"},
      {"PROPERTY_TYPE_BOOLEAN", "true"}, {"PROPERTY_TYPE_STRING", "s"},
      {"PROPERTY_TYPE_LIST", "a|b"},     {"PROPERTY_TYPE_IP_ADDR", "10.0.0.1"}};
  for (const std::vector<std::string>& c : cases) {
    Property* property = this->Register(c[0], "key " + c[0], c[1]);
    ASSERT_NE(property, nullptr) << c[0];
    EXPECT_EQ(property->GetPropertyType(), c[0]);
  }
}

TYPED_TEST(ManagerFlavoursTest, RegisteredPropertyIsFoundByItsAddress) {
  Property* port = this->RegisterPort();
  EXPECT_EQ(this->Find("port"), port);
}

// A flat property has the empty section; an INI property the one it was
// registered in.
TYPED_TEST(ManagerFlavoursTest, RegisteredPropertyHasTheFlavoursSection) {
  EXPECT_EQ(this->RegisterPort()->GetSection(), TypeParam::kSection);
}

TYPED_TEST(ManagerFlavoursTest, RegisteredPropertyKnowsTheManager) {
  this->m_manager.AddChangeListener(&this->m_changes);
  Property* port = this->RegisterPort();
  port->SetValue("81");
  EXPECT_EQ(this->m_changes.count, 1);
  EXPECT_EQ(this->m_changes.lastProperty, port);
}

TYPED_TEST(ManagerFlavoursTest,
           SecondRegistrationReturnsFirstPropertyUnchanged) {
  Property* port = this->RegisterPort("80");
  Property* again = this->Register(kStringType, "port", "text");
  EXPECT_EQ(again, port);
  EXPECT_EQ(again->GetPropertyType(), kIntegerType);
  EXPECT_EQ(again->GetValue(), "80");
}

TYPED_TEST(ManagerFlavoursTest, SecondRegistrationTellsNoListener) {
  this->RegisterPort();
  this->m_manager.AddRegistryListener(&this->m_listener);
  this->m_manager.AddChangeListener(&this->m_listener);
  this->RegisterPort("81");
  EXPECT_TRUE(this->m_events.empty());
}

TYPED_TEST(ManagerFlavoursTest, RegistryListenersHearAddingProperty) {
  this->m_manager.AddRegistryListener(&this->m_listener);
  this->RegisterPort();
  EXPECT_EQ(this->m_events, EventList{"l:adding:port"});
}

TYPED_TEST(ManagerFlavoursTest, UnknownTypeReturnsNullAndRegistersNothing) {
  this->m_manager.AddRegistryListener(&this->m_listener);
  EXPECT_EQ(this->Register("PROPERTY_TYPE_PORT", "port", "80"), nullptr);
  EXPECT_EQ(this->Find("port"), nullptr);
  EXPECT_TRUE(this->m_events.empty());
  EXPECT_EQ(this->Logged(), Messages{});
}

TYPED_TEST(ManagerFlavoursTest, TypeNamesAreCaseSensitive) {
  EXPECT_EQ(this->Register("property_type_integer", "port", "80"), nullptr);
}

TYPED_TEST(ManagerFlavoursTest, RejectedKeyThrowsAndRegistersNothing) {
  this->m_manager.AddRegistryListener(&this->m_listener);
  EXPECT_EQ(
      WrongValueMessage([this] { this->Register(kIntegerType, "a#=b", "80"); }),
      "Property key can not contain characters: '= #'");
  EXPECT_EQ(this->Find("a#=b"), nullptr);
  EXPECT_TRUE(this->m_events.empty());
}

TYPED_TEST(ManagerFlavoursTest, RejectedInitialValueThrowsAndRegistersNothing) {
  this->m_manager.AddRegistryListener(&this->m_listener);
  EXPECT_EQ(WrongValueMessage([this] { this->RegisterPort("eighty"); }),
            kPortRejected);
  EXPECT_EQ(this->Find("port"), nullptr);
  EXPECT_TRUE(this->m_events.empty());
}

TYPED_TEST(ManagerFlavoursTest,
           ConcurrentRegistrationsOfOnePropertyGetOneProperty) {
  Property* first = nullptr;
  Property* second = nullptr;
  std::thread other([this, &first] { first = this->RegisterPort(); });
  second = this->RegisterPort();
  other.join();
  EXPECT_NE(first, nullptr);
  EXPECT_EQ(first, second);
}

// Look-up and reading.

TYPED_TEST(ManagerFlavoursTest, GetPropertyOfUnknownKeyIsNull) {
  this->RegisterPort();
  EXPECT_EQ(this->Find("host"), nullptr);
}

TYPED_TEST(ManagerFlavoursTest, GetPropertyComparesKeysCaseSensitively) {
  this->Register(kIntegerType, "Port", "80");
  EXPECT_EQ(this->Find("port"), nullptr);
}

TYPED_TEST(ManagerFlavoursTest, GetValueReturnsTheValueText) {
  this->RegisterPort("8080");
  EXPECT_EQ(this->Get("port"), "8080");
}

TYPED_TEST(ManagerFlavoursTest, GetValueOfUnknownKeyIsEmptyAndLogsNothing) {
  this->RegisterPort();
  EXPECT_EQ(this->Get("host"), "");
  EXPECT_EQ(this->Logged(), Messages{});
}

// Setting values.

TYPED_TEST(ManagerFlavoursTest, SetValueChangesTheValue) {
  this->RegisterPort();
  this->Set("port", "9090");
  EXPECT_EQ(this->Get("port"), "9090");
}

TYPED_TEST(ManagerFlavoursTest, SetValueNotifiesChangeListenersOnce) {
  Property* port = this->RegisterPort();
  this->m_manager.AddChangeListener(&this->m_changes);
  this->Set("port", "9090");
  EXPECT_EQ(this->m_changes.count, 1);
  EXPECT_EQ(this->m_changes.lastProperty, port);
  EXPECT_EQ(this->m_changes.lastValue, "9090");
}

// The INI manager names the key alone too.
TYPED_TEST(ManagerFlavoursTest, SetValueOfUnknownKeyLogsKeyAloneAndReturns) {
  this->m_manager.AddChangeListener(&this->m_changes);
  this->Set("port", "9090");
  EXPECT_EQ(this->Logged(), Messages{"Property 'port' was not found"});
  EXPECT_EQ(this->m_changes.count, 0);
}

TYPED_TEST(ManagerFlavoursTest, RejectedValueThrowsThePropertysMessage) {
  this->RegisterPort();
  EXPECT_EQ(WrongValueMessage([this] { this->Set("port", "x"); }),
            kPortRejected);
}

TYPED_TEST(ManagerFlavoursTest, RejectedValueLogsFormatChangedWithKeyAlone) {
  this->RegisterPort();
  EXPECT_THROW(this->Set("port", "x"), Property::WrongValue);
  EXPECT_EQ(this->Logged(),
            Messages{"Format of property 'port' seems to be changed: "
                     "'Property 'port' can only contain 'an integer value''"});
}

TYPED_TEST(ManagerFlavoursTest, RejectedValueKeepsTheOldValue) {
  this->RegisterPort("8080");
  EXPECT_THROW(this->Set("port", "x"), Property::WrongValue);
  EXPECT_EQ(this->Get("port"), "8080");
}

TYPED_TEST(ManagerFlavoursTest, RejectedValueNotifiesNobody) {
  this->RegisterPort();
  this->m_manager.AddChangeListener(&this->m_changes);
  EXPECT_THROW(this->Set("port", "x"), Property::WrongValue);
  EXPECT_EQ(this->m_changes.count, 0);
}

// Removal.

TYPED_TEST(ManagerFlavoursTest, UnregisterPropertyReturnsTheProperty) {
  Property* port = this->RegisterPort();
  std::unique_ptr<Property> removed(this->Unregister("port"));
  EXPECT_EQ(removed.get(), port);
}

TYPED_TEST(ManagerFlavoursTest, UnregisteredPropertyIsNoLongerFound) {
  this->RegisterPort();
  std::unique_ptr<Property> removed(this->Unregister("port"));
  EXPECT_EQ(this->Find("port"), nullptr);
  EXPECT_EQ(this->Get("port"), "");
}

TYPED_TEST(ManagerFlavoursTest, UnregisterPropertyTellsRegistryListeners) {
  this->RegisterPort();
  this->m_manager.AddRegistryListener(&this->m_listener);
  std::unique_ptr<Property> removed(this->Unregister("port"));
  EXPECT_EQ(this->m_events, EventList{"l:removing:port"});
}

TYPED_TEST(ManagerFlavoursTest, UnregisterPropertyOfUnknownKeyIsNull) {
  this->m_manager.AddRegistryListener(&this->m_listener);
  EXPECT_EQ(this->Unregister("port"), nullptr);
  EXPECT_TRUE(this->m_events.empty());
}

TYPED_TEST(ManagerFlavoursTest, UnregisteredPropertyIsNotDeletedByTheManager) {
  typedef TypeParam F;
  std::unique_ptr<typename F::Manager> manager = this->NewManager();
  static_cast<PropertyManager*>(manager.get())
      ->RegisterProperty(
          new TracedProperty(F::kSection, "port", &this->m_events));
  std::unique_ptr<Property> removed(F::Unregister(manager.get(), "port"));
  manager.reset();
  EXPECT_TRUE(this->m_events.empty());
  removed.reset();
  EXPECT_EQ(this->m_events, EventList{"port:deleted"});
}

TYPED_TEST(ManagerFlavoursTest, UnregisteredPropertyStillNotifiesTheManager) {
  this->RegisterPort();
  std::unique_ptr<Property> removed(this->Unregister("port"));
  this->m_manager.AddChangeListener(&this->m_changes);
  removed->SetValue("81");
  EXPECT_EQ(this->m_changes.count, 1);
  EXPECT_EQ(this->m_changes.lastProperty, removed.get());
}

TYPED_TEST(ManagerFlavoursTest, UnregisteredKeyCanBeRegisteredAnew) {
  Property* port = this->RegisterPort();
  std::unique_ptr<Property> removed(this->Unregister("port"));
  Property* again = this->RegisterPort("81");
  EXPECT_NE(again, port);
  EXPECT_EQ(this->Get("port"), "81");
}

// Read-write bindings.

TYPED_TEST(ManagerFlavoursTest, BindingLoadsPropertiesRegisteredBefore) {
  WriteFile(this->m_path, TypeParam::Body("port=8080\n"));
  this->RegisterPort();
  this->m_manager.RegisterPersistence(this->m_path, kHeader);
  EXPECT_EQ(this->Get("port"), "8080");
}

TYPED_TEST(ManagerFlavoursTest, RegisteringStoredKeyLoadsAndRewritesFile) {
  typedef TypeParam F;
  WriteFile(this->m_path, F::kComment + std::string(" by hand\n") +
                              F::Body(" port = 8080 \n"));
  this->m_manager.RegisterPersistence(this->m_path, kHeader);
  this->RegisterPort();
  EXPECT_EQ(this->Get("port"), "8080");
  EXPECT_EQ(ReadFile(this->m_path), F::Written(kHeader, "port=8080\n"));
}

TYPED_TEST(ManagerFlavoursTest, EveryChangeRewritesTheFile) {
  typedef TypeParam F;
  this->m_manager.RegisterPersistence(this->m_path, kHeader);
  this->RegisterPort();
  this->Set("port", "81");
  EXPECT_EQ(ReadFile(this->m_path), F::Written(kHeader, "port=81\n"));
  WriteFile(this->m_path, F::Body("other=1\n"));
  this->Set("port", "82");
  EXPECT_EQ(ReadFile(this->m_path), F::Written(kHeader, "other=1\nport=82\n"));
}

TYPED_TEST(ManagerFlavoursTest, SecondRegisterPersistenceOfPathIsIgnored) {
  this->m_manager.RegisterPersistence(this->m_path, "first");
  this->m_manager.RegisterPersistence(this->m_path, "second");
  this->RegisterPort();
  this->Set("port", "81");
  EXPECT_EQ(ReadFile(this->m_path), TypeParam::Written("first", "port=81\n"));
}

// Read-only bindings.

TYPED_TEST(ManagerFlavoursTest, ReadOnlyBindingLoadsStoredValues) {
  WriteFile(this->m_path, TypeParam::Body("port=8080\n"));
  this->m_manager.RegisterNonPersistence(this->m_path);
  EXPECT_EQ(this->RegisterPort()->GetValue(), "8080");
}

TYPED_TEST(ManagerFlavoursTest, ReadOnlyBindingNeverTouchesTheFile) {
  typedef TypeParam F;
  const std::string text =
      F::Body("  port = 8080  " + std::string(1, F::kComment) + " by hand\n");
  WriteFile(this->m_path, text);
  this->m_manager.RegisterNonPersistence(this->m_path);
  this->RegisterPort();
  this->Set("port", "81");
  EXPECT_EQ(ReadFile(this->m_path), text);
}

TYPED_TEST(ManagerFlavoursTest, ReadOnlyBindingCreatesNoFile) {
  this->m_manager.RegisterNonPersistence(this->m_path);
  this->RegisterPort();
  this->Set("port", "81");
  EXPECT_FALSE(FileExists(this->m_path));
}

TYPED_TEST(ManagerFlavoursTest, ReadOnlyBindingLoadsOncePerRegistration) {
  typedef TypeParam F;
  WriteFile(this->m_path, F::Body("port=8080\n"));
  this->m_manager.RegisterNonPersistence(this->m_path);
  this->m_log.Clear();
  this->RegisterPort();
  EXPECT_EQ(this->Logged(), Messages{F::Loading("port", "8080")});
}

TYPED_TEST(ManagerFlavoursTest,
           RegisterNonPersistenceOfReadWritePathIsIgnored) {
  WriteFile(this->m_path, TypeParam::Body("port=8080\n"));
  this->m_manager.RegisterPersistence(this->m_path, kHeader);
  this->m_manager.RegisterNonPersistence(this->m_path);
  this->m_manager.AddChangeListener(&this->m_changes);
  this->RegisterPort();
  EXPECT_EQ(this->m_changes.count, 1);
}

// Unbinding.

TYPED_TEST(ManagerFlavoursTest, UnRegisterPersistenceOfUnboundPathDoesNothing) {
  const std::string other = this->File("other");
  this->m_manager.RegisterPersistence(this->m_path, kHeader);
  this->m_manager.UnRegisterPersistence(other);
  this->RegisterPort();
  this->Set("port", "81");
  EXPECT_EQ(ReadFile(this->m_path), TypeParam::Written(kHeader, "port=81\n"));
  EXPECT_FALSE(FileExists(other));
}

TYPED_TEST(ManagerFlavoursTest, ChangesAfterUnbindingLeaveTheFileAlone) {
  this->m_manager.RegisterPersistence(this->m_path, kHeader);
  this->RegisterPort();
  this->Set("port", "81");
  this->m_manager.UnRegisterPersistence(this->m_path);
  this->Set("port", "82");
  EXPECT_EQ(ReadFile(this->m_path), TypeParam::Written(kHeader, "port=81\n"));
}

TYPED_TEST(ManagerFlavoursTest, UnboundPathCanBeBoundAgain) {
  this->m_manager.RegisterPersistence(this->m_path, "first");
  this->m_manager.UnRegisterPersistence(this->m_path);
  this->m_manager.RegisterPersistence(this->m_path, "second");
  this->RegisterPort();
  this->Set("port", "81");
  EXPECT_EQ(ReadFile(this->m_path), TypeParam::Written("second", "port=81\n"));
}

// Two files.

TYPED_TEST(ManagerFlavoursTest, BindingSecondPathLoadsItsValuesIntoFirstFile) {
  typedef TypeParam F;
  const std::string second = this->File("second");
  WriteFile(second, F::Body("port=9090\nname=db\n"));
  this->m_manager.RegisterPersistence(this->m_path, "first");
  this->RegisterPort();
  this->Register(kStringType, "name", "none");
  this->m_manager.RegisterPersistence(second, "second");
  EXPECT_EQ(this->Get("port"), "9090");
  EXPECT_EQ(this->Get("name"), "db");
  EXPECT_EQ(ReadFile(this->m_path),
            F::Written("first", "name=db\nport=9090\n"));
}

TYPED_TEST(ManagerFlavoursTest, BindingSecondPathLeavesItsOwnFileUnchanged) {
  typedef TypeParam F;
  const std::string second = this->File("second");
  const std::string text =
      F::Body(" port = 9090 " + std::string(1, F::kComment) + " by hand\n");
  WriteFile(second, text);
  this->m_manager.RegisterPersistence(this->m_path, "first");
  this->RegisterPort();
  this->m_manager.RegisterPersistence(second, "second");
  EXPECT_EQ(ReadFile(second), text);
}

TYPED_TEST(ManagerFlavoursTest, ChangeRewritesBothBoundFiles) {
  typedef TypeParam F;
  const std::string second = this->File("second");
  this->m_manager.RegisterPersistence(this->m_path, "first");
  this->m_manager.RegisterPersistence(second, "second");
  this->RegisterPort();
  this->Set("port", "81");
  EXPECT_EQ(ReadFile(this->m_path), F::Written("first", "port=81\n"));
  EXPECT_EQ(ReadFile(second), F::Written("second", "port=81\n"));
}

// Destruction.

TYPED_TEST(ManagerFlavoursTest, DestructionWritesNoFile) {
  typedef TypeParam F;
  std::unique_ptr<typename F::Manager> manager = this->NewManager();
  manager->RegisterPersistence(this->m_path, kHeader);
  manager->RegisterNonPersistence(this->File("read-only"));
  F::Register(manager.get(), kIntegerType, "port", "80");
  F::Set(manager.get(), "port", "81");
  const std::string text =
      F::Body(" port = 81 " + std::string(1, F::kComment) + " by hand\n");
  WriteFile(this->m_path, text);
  manager.reset();
  EXPECT_EQ(ReadFile(this->m_path), text);
}

TYPED_TEST(ManagerFlavoursTest, DestructionDeletesPropertiesThenClients) {
  typedef TypeParam F;
  std::unique_ptr<typename F::Manager> manager = this->NewManager();
  PropertyManager* base = manager.get();
  base->RegisterClient(new RecordingListener("client", &this->m_events));
  base->RegisterProperty(
      new TracedProperty(F::kSection, "port", &this->m_events));
  manager->RegisterPersistence(this->m_path, kHeader);
  manager->RegisterNonPersistence(this->File("read-only"));
  this->m_events.clear();
  manager.reset();
  EXPECT_EQ(this->m_events, (EventList{"port:deleted", "client:deleted"}));
}

// Locking.

TYPED_TEST(ManagerFlavoursTest, SetValueHoldsTheMutexWhileListenersAreTold) {
  this->RegisterPort();
  LockProbe probe(this->m_manager.Mutex());
  this->m_manager.AddChangeListener(&probe);
  this->Set("port", "81");
  EXPECT_EQ(probe.heldDuringCalls, std::vector<bool>{true});
  this->m_manager.RemoveChangeListener(&probe);
}

TYPED_TEST(ManagerFlavoursTest, RegisterPropertyHoldsTheMutexWhileLoadIsTold) {
  WriteFile(this->m_path, TypeParam::Body("port=8080\n"));
  this->m_manager.RegisterNonPersistence(this->m_path);
  LockProbe probe(this->m_manager.Mutex());
  this->m_manager.AddChangeListener(&probe);
  this->RegisterPort();
  EXPECT_EQ(probe.heldDuringCalls, std::vector<bool>{true});
  this->m_manager.RemoveChangeListener(&probe);
}

TYPED_TEST(ManagerFlavoursTest,
           PropertySetDirectlyDoesNotTakeTheManagersMutex) {
  Property* port = this->RegisterPort();
  LockProbe probe(this->m_manager.Mutex());
  this->m_manager.AddChangeListener(&probe);
  port->SetValue("81");
  EXPECT_EQ(probe.heldDuringCalls, std::vector<bool>{false});
  this->m_manager.RemoveChangeListener(&probe);
}

TYPED_TEST(ManagerFlavoursTest, MutexIsReleasedAfterSetValue) {
  this->RegisterPort();
  this->Set("port", "81");
  EXPECT_TRUE(IsFreeForOtherThreads(this->m_manager.Mutex()));
}

TYPED_TEST(ManagerFlavoursTest, MutexIsReleasedAfterRejectedValue) {
  this->RegisterPort();
  EXPECT_THROW(this->Set("port", "x"), Property::WrongValue);
  EXPECT_TRUE(IsFreeForOtherThreads(this->m_manager.Mutex()));
}

TYPED_TEST(ManagerFlavoursTest, MutexIsReleasedAfterRejectedInitialValue) {
  EXPECT_THROW(this->RegisterPort("x"), Property::WrongValue);
  EXPECT_TRUE(IsFreeForOtherThreads(this->m_manager.Mutex()));
}

TYPED_TEST(ManagerFlavoursTest, MutexIsReleasedAfterUnknownType) {
  this->Register("PROPERTY_TYPE_PORT", "port", "80");
  EXPECT_TRUE(IsFreeForOtherThreads(this->m_manager.Mutex()));
}

// Assertions.

template <typename F>
class ManagerFlavoursDeathTest : public testing::Test {};

TYPED_TEST_SUITE(ManagerFlavoursDeathTest, Flavours, FlavourNames);

TYPED_TEST(ManagerFlavoursDeathTest, RegisteringNewKeyWithoutFactoryAborts) {
  typedef TypeParam F;
  typename F::Manager manager("app", nullptr);
  EXPECT_DEATH(F::Register(&manager, kIntegerType, "port", "80"),
               test_support::AssertionRegex(F::kRegisterWithoutFactory));
}

TYPED_TEST(ManagerFlavoursDeathTest, RegisteredKeyIsFoundWithoutFactory) {
  typedef TypeParam F;
  typename F::Manager manager("app", nullptr);
  Property* port = F::NewInteger("port", "80");
  static_cast<PropertyManager&>(manager).RegisterProperty(port);
  EXPECT_EQ(F::Register(&manager, kStringType, "port", "text"), port);
}

}  // namespace
