// BasePropertyTest.cpp - key check, names, section, manager link, value
// protocol and rejection messages shared by every property type.

#include "BaseProperty.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <string>

#include "IntegerProperty.h"
#include "support/MutexProbe.h"
#include "support/PropertyTesting.h"
#include "support/Recorders.h"

namespace {

using test_support::IsFreeForOtherThreads;
using test_support::kAccepted;
using test_support::RejectionOf;
using test_support::WrongValueMessage;

const char kKeyMessage[] = "Property key can not contain characters: '= #'";

// The smallest concrete property: every text but "bad" is a value.
class PlainProperty : public BaseProperty {
 public:
  PlainProperty(const propstring& key, const propstring& type,
                const propstring& name, const propstring& section)
      : BaseProperty(key, type, name, section) {}

  propstring GetValue() const override { return m_value; }
  void SetValue(const propstring& value) override {
    PropertyThreadGuard guard(m_mutex);
    IsValueValid(value);
    m_value = value;
    NotifyManager();
  }
  void IsValueValid(const propstring& value) override {
    if (value == "bad") RejectValue("anything but bad");
  }

 private:
  propstring m_value;
};

// An integer property that shows its mutex.
typedef test_support::WithVisibleMutex<IntegerProperty>
    MutexShowingIntegerProperty;

// Notes, at each notification, whether the property's mutex was free for
// other threads.
class MutexProbingListener : public PropertyChangeListener {
 public:
  explicit MutexProbingListener(pthread_mutex_t* mutex) : m_mutex(mutex) {}
  void PropertyChanged(Property*) override {
    ++count;
    freeDuringNotification = IsFreeForOtherThreads(m_mutex);
  }

  int count = 0;
  bool freeDuringNotification = true;

 private:
  pthread_mutex_t* m_mutex;
};

// Sets the property to "7" from within its first notification.
class ResettingListener : public PropertyChangeListener {
 public:
  void PropertyChanged(Property* property) override {
    if (++count == 1) property->SetValue("7");
  }

  int count = 0;
};

// The message of the WrongValue that constructing a property with key
// throws, or kAccepted.
std::string KeyRejection(const std::string& key) {
  return WrongValueMessage(
      [&key] { PlainProperty property(key, "T", "N", "S"); });
}

// The message with which an integer property with key rejects a value.
std::string IntegerMessage(const std::string& key) {
  return "Property '" + key + "' can only contain 'an integer value'";
}

class BasePropertyTest : public testing::Test {
 protected:
  BasePropertyTest() { m_manager.AddChangeListener(&m_listener); }

  // A new integer property registered on m_manager, which owns it.
  IntegerProperty* Registered(const std::string& key,
                              const std::string& value) {
    IntegerProperty* property = new IntegerProperty(key, value, "");
    m_manager.RegisterProperty(property);
    return property;
  }

  test_support::CountingChangeListener m_listener;
  test_support::TestManager m_manager;
};

TEST_F(BasePropertyTest, AcceptsKeyWithEqualsSignOnly) {
  EXPECT_EQ(KeyRejection("a=b"), kAccepted);
}

TEST_F(BasePropertyTest, AcceptsKeyWithHashSignOnly) {
  EXPECT_EQ(KeyRejection("a#b"), kAccepted);
}

TEST_F(BasePropertyTest, RejectsKeyWithHashBeforeEquals) {
  EXPECT_EQ(KeyRejection("a#=b"), kKeyMessage);
}

TEST_F(BasePropertyTest, RejectsKeyWithEqualsBeforeHash) {
  EXPECT_EQ(KeyRejection("=#"), kKeyMessage);
  EXPECT_EQ(KeyRejection("a=b#c"), kKeyMessage);
}

TEST_F(BasePropertyTest, AcceptsEmptyKey) {
  EXPECT_EQ(KeyRejection(""), kAccepted);
}

TEST_F(BasePropertyTest, AcceptsKeyWithBlanks) {
  EXPECT_EQ(KeyRejection(" a b "), kAccepted);
}

TEST_F(BasePropertyTest, IsKeyValidJudgesAnyKeyOnExistingProperty) {
  PlainProperty property("k", "T", "N", "S");
  EXPECT_NO_THROW(property.IsKeyValid("a=b"));
  EXPECT_THROW(property.IsKeyValid("a#=b"), Property::WrongValue);
  EXPECT_EQ(property.GetKey(), "k");
}

TEST_F(BasePropertyTest, ConstructorTakesKeyTypeNameAndSectionInThatOrder) {
  PlainProperty property("key", "TYPE", "Name", "section");
  EXPECT_EQ(property.GetKey(), "key");
  EXPECT_EQ(property.GetPropertyType(), "TYPE");
  EXPECT_EQ(property.GetPropertyName(), "Name");
  EXPECT_EQ(property.GetSection(), "section");
}

TEST_F(BasePropertyTest, SetSectionChangesOnlySection) {
  IntegerProperty* property = Registered("k", "5");
  property->SetSection("other");
  EXPECT_EQ(property->GetSection(), "other");
  EXPECT_EQ(property->GetKey(), "k");
  EXPECT_EQ(property->GetValue(), "5");
  EXPECT_EQ(property->GetPropertyType(), "PROPERTY_TYPE_INTEGER");
  EXPECT_EQ(property->GetPropertyName(), "Integer Property");
  EXPECT_EQ(m_listener.count, 0);
}

TEST_F(BasePropertyTest, SetValueWithoutManagerStoresAndNotifiesNobody) {
  IntegerProperty property("k", "5", "");
  property.SetValue("6");
  EXPECT_EQ(property.GetValue(), "6");
  EXPECT_EQ(m_listener.count, 0);
}

TEST_F(BasePropertyTest, SetValueNotifiesChangeListenersOnceWithNewValue) {
  IntegerProperty* property = Registered("k", "5");
  property->SetValue("6");
  EXPECT_EQ(m_listener.count, 1);
  EXPECT_EQ(m_listener.lastProperty, property);
  EXPECT_EQ(m_listener.lastValue, "6");
}

TEST_F(BasePropertyTest, SetValueWithCurrentValueNotifiesAgain) {
  IntegerProperty* property = Registered("k", "5");
  property->SetValue("5");
  property->SetValue("5");
  EXPECT_EQ(m_listener.count, 2);
}

TEST_F(BasePropertyTest, RejectedValueKeepsPreviousTextAndNotifiesNobody) {
  IntegerProperty* property = Registered("k", "5");
  EXPECT_EQ(RejectionOf(property, "x"), IntegerMessage("k"));
  EXPECT_EQ(property->GetValue(), "5");
  EXPECT_EQ(m_listener.count, 0);
}

TEST_F(BasePropertyTest, NotifiesManagerGivenByRegisterPropertyManager) {
  IntegerProperty property("k", "5", "");
  property.RegisterPropertyManager(&m_manager);
  property.SetValue("6");
  EXPECT_EQ(m_listener.count, 1);
  EXPECT_EQ(m_listener.lastProperty, &property);
}

TEST_F(BasePropertyTest, NullManagerStopsNotifications) {
  IntegerProperty* property = Registered("k", "5");
  property->RegisterPropertyManager(nullptr);
  property->SetValue("6");
  EXPECT_EQ(property->GetValue(), "6");
  EXPECT_EQ(m_listener.count, 0);
}

TEST_F(BasePropertyTest, ListenerMaySetSamePropertyAgainDuringNotification) {
  ResettingListener resetting;
  m_manager.AddChangeListener(&resetting);
  IntegerProperty* property = Registered("k", "5");
  property->SetValue("6");
  EXPECT_EQ(resetting.count, 2);
  EXPECT_EQ(property->GetValue(), "7");
}

TEST_F(BasePropertyTest, SetValueHoldsPropertyMutexWhileNotifying) {
  MutexShowingIntegerProperty* property =
      new MutexShowingIntegerProperty("k", "5", "");
  m_manager.RegisterProperty(property);
  MutexProbingListener probe(property->Mutex());
  m_manager.AddChangeListener(&probe);
  property->SetValue("6");
  EXPECT_EQ(probe.count, 1);
  EXPECT_FALSE(probe.freeDuringNotification);
  EXPECT_TRUE(IsFreeForOtherThreads(property->Mutex()));
}

TEST_F(BasePropertyTest, RejectedValueReleasesPropertyMutex) {
  MutexShowingIntegerProperty property("k", "5", "");
  EXPECT_THROW(property.SetValue("x"), Property::WrongValue);
  EXPECT_TRUE(IsFreeForOtherThreads(property.Mutex()));
}

TEST_F(BasePropertyTest, RejectionMessageNamesKeyAndWhatIsAllowed) {
  PlainProperty property("port", "T", "N", "");
  EXPECT_EQ(RejectionOf(&property, "bad"),
            "Property 'port' can only contain 'anything but bad'");
}

TEST_F(BasePropertyTest, LongKeyCutsRejectionMessageAt1023Characters) {
  const std::string key(5000, 'k');
  IntegerProperty property(key, "5", "");
  const std::string message = RejectionOf(&property, "x");
  EXPECT_EQ(message.size(), 1023u);
  EXPECT_EQ(message, ("Property '" + key).substr(0, 1023));
}

TEST_F(BasePropertyTest, RejectionMessageOf1023CharactersIsKeptWhole) {
  const std::string key(976, 'k');
  IntegerProperty property(key, "5", "");
  ASSERT_EQ(IntegerMessage(key).size(), 1023u);
  EXPECT_EQ(RejectionOf(&property, "x"), IntegerMessage(key));
}

TEST_F(BasePropertyTest, RejectionMessageOf1024CharactersLosesLastCharacter) {
  const std::string key(977, 'k');
  IntegerProperty property(key, "5", "");
  EXPECT_EQ(RejectionOf(&property, "x"), IntegerMessage(key).substr(0, 1023));
}

TEST_F(BasePropertyTest, WrongValueHoldsMessage) {
  const Property::WrongValue error(propstring("some text"));
  EXPECT_EQ(error.m_message, "some text");
}

TEST_F(BasePropertyTest, WrongValueIsCopyable) {
  const Property::WrongValue original(propstring("first"));
  Property::WrongValue copy(original);
  EXPECT_EQ(copy.m_message, "first");
  copy = Property::WrongValue(propstring("second"));
  EXPECT_EQ(copy.m_message, "second");
  EXPECT_EQ(original.m_message, "first");
}

}  // namespace
