// PropertyManagerTest.cpp - registry, clients, listeners, ownership and
// null-pointer assertions of PropertyManager.

#include "PropertyManager.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "StringProperty.h"
#include "support/AssertionMessage.h"
#include "support/Recorders.h"

namespace {

using test_support::CountingChangeListener;
using test_support::EventList;
using test_support::RecordingListener;
using test_support::TestManager;

// A string property that records its deletion as "<label>:deleted" (the label
// is the key unless a test changes it) and counts how often it was told of a
// manager.
class TracedProperty : public StringProperty {
 public:
  TracedProperty(const std::string& key, const std::string& section,
                 EventList* events)
      : StringProperty(key, "initial", section), label(key), m_events(events) {}
  ~TracedProperty() override { m_events->push_back(label + ":deleted"); }

  void RegisterPropertyManager(PropertyManager* manager) override {
    ++managerCalls;
    StringProperty::RegisterPropertyManager(manager);
  }

  PropertyManager* Manager() const { return m_manager; }

  std::string label;
  int managerCalls = 0;

 private:
  EventList* m_events;
};

// A registry and change listener that hands each callback to a function.
class CallbackListener : public PropertyRegistryListener,
                         public PropertyChangeListener {
 public:
  void AddingProperty(Property* property) override { Call(onAdding, property); }
  void RemovingProperty(Property* property) override {
    Call(onRemoving, property);
  }
  void PropertyChanged(Property* property) override {
    Call(onChanged, property);
  }

  std::function<void(Property*)> onAdding;
  std::function<void(Property*)> onRemoving;
  std::function<void(Property*)> onChanged;

 private:
  static void Call(const std::function<void(Property*)>& callback,
                   Property* property) {
    if (callback) callback(property);
  }
};

class PropertyManagerTest : public testing::Test {
 protected:
  // A new, unregistered property; the caller owns it.
  TracedProperty* NewProperty(const std::string& key,
                              const std::string& section = "") {
    return new TracedProperty(key, section, &m_events);
  }

  // Registers a new property on m_manager, which owns it from then on.
  TracedProperty* Register(const std::string& key,
                           const std::string& section = "") {
    TracedProperty* property = NewProperty(key, section);
    m_manager.RegisterProperty(property);
    return property;
  }

  // A new client that records into m_events and counts its deletion in
  // m_clientDeletions. Whoever registers it hands it to the manager.
  RecordingListener* NewClient(const std::string& name) {
    return new RecordingListener(name, &m_events, &m_clientDeletions);
  }

  // The keys of m_manager's properties, in registration order.
  std::vector<std::string> Keys() const {
    std::vector<std::string> keys;
    for (Property* property : m_manager.Properties()) {
      keys.push_back(property->GetKey());
    }
    return keys;
  }

  // Declared first: the manager records into it while it is destroyed.
  EventList m_events;
  int m_clientDeletions = 0;
  TestManager m_manager{"network"};
  RecordingListener m_a{"a", &m_events};
  RecordingListener m_b{"b", &m_events};
};

// Registering properties.

TEST_F(PropertyManagerTest, RegisterPropertyAppendsInRegistrationOrder) {
  Register("one");
  Register("two");
  Register("three");
  EXPECT_EQ(Keys(), (std::vector<std::string>{"one", "two", "three"}));
}

TEST_F(PropertyManagerTest, RegisterPropertyTellsThePropertyItsManager) {
  TracedProperty* property = Register("port");
  EXPECT_EQ(property->Manager(), &m_manager);
  EXPECT_EQ(property->managerCalls, 1);
}

TEST_F(PropertyManagerTest, RegisteringSamePointerTwiceKeepsOneEntry) {
  TracedProperty* property = Register("port");
  m_manager.RegisterProperty(property);
  EXPECT_EQ(m_manager.Properties(), std::vector<Property*>{property});
}

TEST_F(PropertyManagerTest, RegisteringSamePointerTwiceTellsListenersOnce) {
  m_manager.AddRegistryListener(&m_a);
  TracedProperty* property = Register("port");
  m_manager.RegisterProperty(property);
  EXPECT_EQ(m_events, EventList{"a:adding:port"});
  EXPECT_EQ(property->managerCalls, 1);
}

TEST_F(PropertyManagerTest, SameKeyAndSectionLeavesRegistryUnchanged) {
  TracedProperty* first = Register("port", "net");
  std::unique_ptr<TracedProperty> duplicate(NewProperty("port", "net"));
  m_manager.RegisterProperty(duplicate.get());
  EXPECT_EQ(m_manager.Properties(), std::vector<Property*>{first});
}

TEST_F(PropertyManagerTest, SameKeyAndSectionIsNotToldOfTheManager) {
  Register("port", "net");
  std::unique_ptr<TracedProperty> duplicate(NewProperty("port", "net"));
  m_manager.RegisterProperty(duplicate.get());
  EXPECT_EQ(duplicate->managerCalls, 0);
  EXPECT_EQ(duplicate->Manager(), nullptr);
}

TEST_F(PropertyManagerTest, RejectedDuplicateNotifiesNobodyWhenSet) {
  Register("port", "net");
  std::unique_ptr<TracedProperty> duplicate(NewProperty("port", "net"));
  m_manager.RegisterProperty(duplicate.get());
  m_manager.AddChangeListener(&m_a);
  duplicate->SetValue("8080");
  EXPECT_TRUE(m_events.empty());
}

TEST_F(PropertyManagerTest, SameKeyAndSectionTellsNoListener) {
  m_manager.AddRegistryListener(&m_a);
  Register("port", "net");
  std::unique_ptr<TracedProperty> duplicate(NewProperty("port", "net"));
  m_manager.RegisterProperty(duplicate.get());
  EXPECT_EQ(m_events, EventList{"a:adding:port"});
}

TEST_F(PropertyManagerTest, RejectedDuplicateStaysWithTheCaller) {
  std::unique_ptr<TestManager> manager(new TestManager);
  manager->RegisterProperty(NewProperty("port"));
  std::unique_ptr<TracedProperty> duplicate(NewProperty("port"));
  duplicate->label = "duplicate";
  manager->RegisterProperty(duplicate.get());
  manager.reset();
  EXPECT_EQ(m_events, EventList{"port:deleted"});
}

TEST_F(PropertyManagerTest, SameKeyInAnotherSectionIsRegistered) {
  Register("port", "net");
  Register("port", "web");
  EXPECT_EQ(Keys(), (std::vector<std::string>{"port", "port"}));
  EXPECT_EQ(m_manager.Properties()[1]->GetSection(), "web");
}

TEST_F(PropertyManagerTest, KeysDifferingOnlyInCaseMakeTwoProperties) {
  Register("Port");
  Register("port");
  EXPECT_EQ(Keys(), (std::vector<std::string>{"Port", "port"}));
}

TEST_F(PropertyManagerTest, SectionsDifferingOnlyInCaseMakeTwoProperties) {
  Register("port", "Net");
  Register("port", "net");
  EXPECT_EQ(m_manager.Properties().size(), 2u);
}

TEST_F(PropertyManagerTest, KeyThatIsAPrefixOfAnotherMakesTwoProperties) {
  Register("port");
  Register("portal");
  Register("por");
  EXPECT_EQ(Keys(), (std::vector<std::string>{"port", "portal", "por"}));
}

// Clients.

TEST_F(PropertyManagerTest, ClientHearsOfEarlierPropertiesInRegistrationOrder) {
  Register("one");
  Register("two");
  Register("three");
  m_manager.RegisterClient(NewClient("c"));
  EXPECT_EQ(m_events, (EventList{"c:registered:one", "c:registered:two",
                                 "c:registered:three"}));
}

TEST_F(PropertyManagerTest, ClientHearsNothingOfLaterProperties) {
  Register("one");
  m_manager.RegisterClient(NewClient("c"));
  Register("two");
  EXPECT_EQ(m_events, EventList{"c:registered:one"});
}

TEST_F(PropertyManagerTest, ClientOfEmptyRegistryHearsNothing) {
  m_manager.RegisterClient(NewClient("c"));
  EXPECT_TRUE(m_events.empty());
  EXPECT_EQ(m_manager.ClientCount(), 1u);
}

TEST_F(PropertyManagerTest, RegisteringSameClientTwiceMakesNoSecondRound) {
  Register("one");
  RecordingListener* client = NewClient("c");
  m_manager.RegisterClient(client);
  m_manager.RegisterClient(client);
  EXPECT_EQ(m_events, EventList{"c:registered:one"});
  EXPECT_EQ(m_manager.ClientCount(), 1u);
}

TEST_F(PropertyManagerTest, UnregisterClientRemovesItWithoutCallbacks) {
  Register("one");
  std::unique_ptr<RecordingListener> client(NewClient("c"));
  m_manager.RegisterClient(client.get());
  m_events.clear();
  m_manager.UnregisterClient(client.get());
  EXPECT_EQ(m_manager.ClientCount(), 0u);
  EXPECT_TRUE(m_events.empty());
}

TEST_F(PropertyManagerTest, UnregisteredClientIsNotDeletedWithTheManager) {
  std::unique_ptr<TestManager> manager(new TestManager);
  std::unique_ptr<RecordingListener> client(NewClient("c"));
  manager->RegisterClient(client.get());
  manager->UnregisterClient(client.get());
  manager.reset();
  EXPECT_EQ(m_clientDeletions, 0);
}

TEST_F(PropertyManagerTest, UnregisteringAbsentClientIsHarmless) {
  m_manager.RegisterClient(NewClient("c"));
  RecordingListener stranger("stranger", &m_events);
  m_manager.UnregisterClient(&stranger);
  EXPECT_EQ(m_manager.ClientCount(), 1u);
}

// Registry listeners.

TEST_F(PropertyManagerTest,
       LateRegistryListenerHearsNothingOfEarlierProperties) {
  Register("one");
  m_manager.AddRegistryListener(&m_a);
  EXPECT_TRUE(m_events.empty());
  Register("two");
  EXPECT_EQ(m_events, EventList{"a:adding:two"});
}

TEST_F(PropertyManagerTest, AddingPropertyFollowsOrderOfListenerAddition) {
  m_manager.AddRegistryListener(&m_b);
  m_manager.AddRegistryListener(&m_a);
  Register("port");
  EXPECT_EQ(m_events, (EventList{"b:adding:port", "a:adding:port"}));
}

TEST_F(PropertyManagerTest, PropertyIsListedAndKnowsItsManagerDuringAdding) {
  bool listed = false;
  PropertyManager* manager = nullptr;
  CallbackListener probe;
  probe.onAdding = [&](Property* property) {
    listed = m_manager.Properties() == std::vector<Property*>{property};
    manager = static_cast<TracedProperty*>(property)->Manager();
  };
  m_manager.AddRegistryListener(&probe);
  Register("port");
  EXPECT_TRUE(listed);
  EXPECT_EQ(manager, &m_manager);
}

TEST_F(PropertyManagerTest, RegistryListenerAddedTwiceIsCalledOnce) {
  m_manager.AddRegistryListener(&m_a);
  m_manager.AddRegistryListener(&m_a);
  Register("port");
  EXPECT_EQ(m_manager.RegistryListenerCount(), 1u);
  EXPECT_EQ(m_events, EventList{"a:adding:port"});
}

TEST_F(PropertyManagerTest, RegistryListenerAddedTwiceAndRemovedOnceIsAbsent) {
  m_manager.AddRegistryListener(&m_a);
  m_manager.AddRegistryListener(&m_a);
  m_manager.RemoveRegistryListener(&m_a);
  Register("port");
  EXPECT_EQ(m_manager.RegistryListenerCount(), 0u);
  EXPECT_TRUE(m_events.empty());
}

TEST_F(PropertyManagerTest, RemovingAbsentRegistryListenerIsHarmless) {
  m_manager.AddRegistryListener(&m_a);
  m_manager.RemoveRegistryListener(&m_b);
  Register("port");
  EXPECT_EQ(m_events, EventList{"a:adding:port"});
}

// Unregistering properties.

TEST_F(PropertyManagerTest, UnregisteringUnknownPropertyCallsNobody) {
  Register("one");
  m_manager.AddRegistryListener(&m_a);
  m_manager.AddChangeListener(&m_a);
  std::unique_ptr<TracedProperty> stranger(NewProperty("stranger"));
  m_manager.UnregisterProperty(stranger.get());
  EXPECT_TRUE(m_events.empty());
  EXPECT_EQ(Keys(), std::vector<std::string>{"one"});
}

TEST_F(PropertyManagerTest, UnregisterPropertyCallsRemovingOnEveryListener) {
  m_manager.AddRegistryListener(&m_a);
  m_manager.AddRegistryListener(&m_b);
  std::unique_ptr<TracedProperty> property(Register("port"));
  m_events.clear();
  m_manager.UnregisterProperty(property.get());
  EXPECT_EQ(m_events, (EventList{"a:removing:port", "b:removing:port"}));
}

TEST_F(PropertyManagerTest, PropertyIsStillListedDuringRemoving) {
  std::unique_ptr<TracedProperty> property(Register("port"));
  bool listed = false;
  CallbackListener probe;
  probe.onRemoving = [&](Property* removed) {
    listed = m_manager.Properties() == std::vector<Property*>{removed};
  };
  m_manager.AddRegistryListener(&probe);
  m_manager.UnregisterProperty(property.get());
  EXPECT_TRUE(listed);
}

TEST_F(PropertyManagerTest, UnregisterPropertyRemovesOnlyThatProperty) {
  Register("one");
  std::unique_ptr<TracedProperty> two(Register("two"));
  Register("three");
  m_manager.UnregisterProperty(two.get());
  EXPECT_EQ(Keys(), (std::vector<std::string>{"one", "three"}));
}

TEST_F(PropertyManagerTest, UnregisteringPropertyTwiceTellsListenersOnce) {
  m_manager.AddRegistryListener(&m_a);
  std::unique_ptr<TracedProperty> property(Register("port"));
  m_manager.UnregisterProperty(property.get());
  m_manager.UnregisterProperty(property.get());
  EXPECT_EQ(m_events, (EventList{"a:adding:port", "a:removing:port"}));
}

TEST_F(PropertyManagerTest, UnregisteredPropertyIsNotDeletedByTheManager) {
  std::unique_ptr<TestManager> manager(new TestManager);
  TracedProperty* property = NewProperty("port");
  manager->RegisterProperty(property);
  manager->UnregisterProperty(property);
  manager.reset();
  EXPECT_TRUE(m_events.empty());
  delete property;
  EXPECT_EQ(m_events, EventList{"port:deleted"});
}

TEST_F(PropertyManagerTest, UnregisteredPropertyStillNotifiesItsManager) {
  std::unique_ptr<TracedProperty> property(Register("port"));
  m_manager.UnregisterProperty(property.get());
  m_manager.AddChangeListener(&m_a);
  property->SetValue("8080");
  EXPECT_EQ(property->Manager(), &m_manager);
  EXPECT_EQ(m_events, EventList{"a:changed:port"});
}

TEST_F(PropertyManagerTest, KeyOfUnregisteredPropertyCanBeRegisteredAgain) {
  std::unique_ptr<TracedProperty> old(Register("port"));
  m_manager.UnregisterProperty(old.get());
  TracedProperty* replacement = Register("port");
  EXPECT_EQ(m_manager.Properties(), std::vector<Property*>{replacement});
}

// Change listeners.

TEST_F(PropertyManagerTest, SettingRegisteredPropertyNotifiesChangeListeners) {
  TracedProperty* property = Register("port");
  CountingChangeListener counter;
  m_manager.AddChangeListener(&counter);
  property->SetValue("8080");
  EXPECT_EQ(counter.count, 1);
  EXPECT_EQ(counter.lastProperty, property);
  EXPECT_EQ(counter.lastValue, "8080");
}

TEST_F(PropertyManagerTest, NotifyWithoutChangeListenersCallsNobody) {
  m_manager.AddRegistryListener(&m_a);
  m_manager.RegisterClient(NewClient("c"));
  TracedProperty* property = Register("port");
  m_events.clear();
  m_manager.NotifyChangeListeners(property);
  EXPECT_TRUE(m_events.empty());
}

TEST_F(PropertyManagerTest, NotifyCallsChangeListenersInOrderOfAddition) {
  TracedProperty* property = Register("port");
  m_manager.AddChangeListener(&m_b);
  m_manager.AddChangeListener(&m_a);
  m_manager.NotifyChangeListeners(property);
  EXPECT_EQ(m_events, (EventList{"b:changed:port", "a:changed:port"}));
}

TEST_F(PropertyManagerTest, NotifyWithPropertyOfAnotherManagerCallsEveryone) {
  TestManager other("other");
  TracedProperty* foreign = NewProperty("foreign");
  other.RegisterProperty(foreign);
  m_manager.AddChangeListener(&m_a);
  m_manager.AddChangeListener(&m_b);
  m_manager.NotifyChangeListeners(foreign);
  EXPECT_EQ(m_events, (EventList{"a:changed:foreign", "b:changed:foreign"}));
}

TEST_F(PropertyManagerTest, ChangeListenerAddedTwiceIsCalledOnce) {
  TracedProperty* property = Register("port");
  m_manager.AddChangeListener(&m_a);
  m_manager.AddChangeListener(&m_a);
  m_manager.NotifyChangeListeners(property);
  EXPECT_EQ(m_manager.ChangeListenerCount(), 1u);
  EXPECT_EQ(m_events, EventList{"a:changed:port"});
}

TEST_F(PropertyManagerTest, ChangeListenerAddedTwiceAndRemovedOnceIsAbsent) {
  TracedProperty* property = Register("port");
  m_manager.AddChangeListener(&m_a);
  m_manager.AddChangeListener(&m_a);
  m_manager.RemoveChangeListener(&m_a);
  m_manager.NotifyChangeListeners(property);
  EXPECT_EQ(m_manager.ChangeListenerCount(), 0u);
  EXPECT_TRUE(m_events.empty());
}

TEST_F(PropertyManagerTest, RemovingAbsentChangeListenerIsHarmless) {
  TracedProperty* property = Register("port");
  m_manager.AddChangeListener(&m_a);
  m_manager.RemoveChangeListener(&m_b);
  m_manager.NotifyChangeListeners(property);
  EXPECT_EQ(m_events, EventList{"a:changed:port"});
}

// Callbacks that start another walk of the same manager.

TEST_F(PropertyManagerTest, ChangeListenerMaySetAnotherPropertyOfTheManager) {
  TracedProperty* first = Register("first");
  TracedProperty* second = Register("second");
  bool nested = false;
  CallbackListener a;
  a.onChanged = [&](Property* property) {
    m_events.push_back("a:changed:" + property->GetKey());
    if (property == first && !nested) {
      nested = true;
      second->SetValue("nested");
    }
  };
  m_manager.AddChangeListener(&a);
  m_manager.AddChangeListener(&m_b);
  first->SetValue("outer");
  EXPECT_EQ(m_events, (EventList{"a:changed:first", "a:changed:second",
                                 "b:changed:second", "b:changed:first"}));
}

TEST_F(PropertyManagerTest, RegistryListenerMayRegisterAnotherProperty) {
  CallbackListener a;
  a.onAdding = [&](Property* property) {
    m_events.push_back("a:adding:" + property->GetKey());
    if (property->GetKey() == "first") Register("second");
  };
  m_manager.AddRegistryListener(&a);
  m_manager.AddRegistryListener(&m_b);
  Register("first");
  EXPECT_EQ(m_events, (EventList{"a:adding:first", "a:adding:second",
                                 "b:adding:second", "b:adding:first"}));
  EXPECT_EQ(Keys(), (std::vector<std::string>{"first", "second"}));
}

// Callbacks that throw.

TEST_F(PropertyManagerTest, ThrowingAddingPropertyLeavesPropertyRegistered) {
  CallbackListener thrower;
  thrower.onAdding = [](Property*) { throw std::runtime_error("adding"); };
  m_manager.AddRegistryListener(&thrower);
  TracedProperty* property = NewProperty("port");
  EXPECT_THROW(m_manager.RegisterProperty(property), std::runtime_error);
  EXPECT_EQ(m_manager.Properties(), std::vector<Property*>{property});
  EXPECT_EQ(property->Manager(), &m_manager);
}

TEST_F(PropertyManagerTest, ThrowingRemovingPropertyLeavesPropertyRegistered) {
  TracedProperty* property = Register("port");
  CallbackListener thrower;
  thrower.onRemoving = [](Property*) { throw std::runtime_error("removing"); };
  m_manager.AddRegistryListener(&thrower);
  EXPECT_THROW(m_manager.UnregisterProperty(property), std::runtime_error);
  EXPECT_EQ(m_manager.Properties(), std::vector<Property*>{property});
}

// Destruction.

TEST_F(PropertyManagerTest, DestructionDeletesPropertiesBeforeClients) {
  std::unique_ptr<TestManager> manager(new TestManager);
  manager->RegisterClient(NewClient("c1"));
  manager->RegisterProperty(NewProperty("p1"));
  manager->RegisterProperty(NewProperty("p2"));
  manager->RegisterClient(NewClient("c2"));
  m_events.clear();
  manager.reset();
  EXPECT_EQ(m_events, (EventList{"p1:deleted", "p2:deleted", "c1:deleted",
                                 "c2:deleted"}));
}

TEST_F(PropertyManagerTest, DestructionDeletesClientThatIsAlsoListenerOnce) {
  std::unique_ptr<TestManager> manager(new TestManager);
  RecordingListener* client = NewClient("c");
  manager->RegisterClient(client);
  manager->AddRegistryListener(client);
  manager->AddChangeListener(client);
  manager.reset();
  EXPECT_EQ(m_clientDeletions, 1);
}

TEST_F(PropertyManagerTest, DestructionMakesNoCallbacks) {
  std::unique_ptr<TestManager> manager(new TestManager);
  RecordingListener* client = NewClient("c");
  manager->RegisterClient(client);
  manager->AddRegistryListener(client);
  manager->AddChangeListener(client);
  manager->AddRegistryListener(&m_a);
  manager->AddChangeListener(&m_a);
  manager->RegisterProperty(NewProperty("port"));
  m_events.clear();
  manager.reset();
  EXPECT_EQ(m_events, (EventList{"port:deleted", "c:deleted"}));
}

TEST_F(PropertyManagerTest, DestructionLeavesListenersThatAreNotClients) {
  int deletions = 0;
  RecordingListener listener("l", &m_events, &deletions);
  std::unique_ptr<TestManager> manager(new TestManager);
  manager->AddRegistryListener(&listener);
  manager->AddChangeListener(&listener);
  manager.reset();
  EXPECT_EQ(deletions, 0);
}

// Name.

TEST_F(PropertyManagerTest, GetNameReturnsTheConstructorsName) {
  EXPECT_EQ(m_manager.GetName(), "network");
}

// Null pointers.

// Expects call, made on a fresh manager, to abort with the assertion at line
// of Src/PropertyManager.cpp in function, for condition.
void ExpectAssertion(void (*call)(PropertyManager*), int line,
                     const std::string& function,
                     const std::string& condition) {
  TestManager manager;
  EXPECT_DEATH(call(&manager),
               test_support::AssertionRegex("Src/PropertyManager.cpp", line,
                                            function, condition));
}

TEST(PropertyManagerDeathTest, RegisterPropertyWithNullAborts) {
  ExpectAssertion([](PropertyManager* m) { m->RegisterProperty(nullptr); }, 53,
                  "void PropertyManager::RegisterProperty(Property*)",
                  "property");
}

TEST(PropertyManagerDeathTest, UnregisterPropertyWithNullAborts) {
  ExpectAssertion([](PropertyManager* m) { m->UnregisterProperty(nullptr); },
                  79, "void PropertyManager::UnregisterProperty(Property*)",
                  "property");
}

TEST(PropertyManagerDeathTest, RegisterClientWithNullAborts) {
  ExpectAssertion([](PropertyManager* m) { m->RegisterClient(nullptr); }, 102,
                  "void PropertyManager::RegisterClient(PropertyClient*)",
                  "client");
}

TEST(PropertyManagerDeathTest, UnregisterClientWithNullAborts) {
  ExpectAssertion([](PropertyManager* m) { m->UnregisterClient(nullptr); }, 126,
                  "void PropertyManager::UnregisterClient(PropertyClient*)",
                  "client");
}

TEST(PropertyManagerDeathTest, AddRegistryListenerWithNullAborts) {
  ExpectAssertion(
      [](PropertyManager* m) { m->AddRegistryListener(nullptr); }, 145,
      "void PropertyManager::AddRegistryListener(PropertyRegistryListener*)",
      "listener");
}

TEST(PropertyManagerDeathTest, RemoveRegistryListenerWithNullAborts) {
  ExpectAssertion(
      [](PropertyManager* m) { m->RemoveRegistryListener(nullptr); }, 161,
      "void PropertyManager::RemoveRegistryListener(PropertyRegistryListener*)",
      "listener");
}

TEST(PropertyManagerDeathTest, AddChangeListenerWithNullAborts) {
  ExpectAssertion(
      [](PropertyManager* m) { m->AddChangeListener(nullptr); }, 180,
      "void PropertyManager::AddChangeListener(PropertyChangeListener*)",
      "listener");
}

TEST(PropertyManagerDeathTest, RemoveChangeListenerWithNullAborts) {
  ExpectAssertion(
      [](PropertyManager* m) { m->RemoveChangeListener(nullptr); }, 196,
      "void PropertyManager::RemoveChangeListener(PropertyChangeListener*)",
      "listener");
}

TEST(PropertyManagerDeathTest, NotifyChangeListenersWithNullAborts) {
  ExpectAssertion([](PropertyManager* m) { m->NotifyChangeListeners(nullptr); },
                  215, "void PropertyManager::NotifyChangeListeners(Property*)",
                  "property");
}

}  // namespace
