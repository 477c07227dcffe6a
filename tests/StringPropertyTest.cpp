// StringPropertyTest.cpp - checks, stored text, locking and notifications of
// StringProperty.

#include "StringProperty.h"

#include <gtest/gtest.h>

#include <string>

#include "support/MutexProbe.h"
#include "support/PropertyTesting.h"

namespace {

using test_support::IsFreeForOtherThreads;
using test_support::LockProbe;

const char kHashMessage[] = "Property values can not contain character \"#\"";

// Gives the tests the property's own mutex.
typedef test_support::WithVisibleMutex<StringProperty> ExposedStringProperty;

// A property "k" with the value "initial", bound to a manager (which does not
// own it) with one counting change listener.
class StringPropertyTest
    : public test_support::LinkedPropertyFixture<ExposedStringProperty> {
 protected:
  StringPropertyTest() { Make("initial"); }
};

TEST_F(StringPropertyTest, KeepsUncheckedInitialValueWithHash) {
  StringProperty property("k", "a#b", "");
  EXPECT_EQ("a#b", property.GetValue());
}

TEST_F(StringPropertyTest, KeepsKeyAndSection) {
  StringProperty property("k", "v", "s");
  EXPECT_EQ("k", property.GetKey());
  EXPECT_EQ("s", property.GetSection());
}

TEST_F(StringPropertyTest, ReportsTypeNameAndHumanName) {
  StringProperty property("k", "v", "");
  EXPECT_EQ("PROPERTY_TYPE_STRING", property.GetPropertyType());
  EXPECT_EQ("String Property", property.GetPropertyName());
}

TEST_F(StringPropertyTest, SetValueWithHashThrowsFixedMessage) {
  EXPECT_EQ(kHashMessage, SetValueError("a#b"));
}

TEST_F(StringPropertyTest, SetValueWithLoneHashThrowsFixedMessage) {
  EXPECT_EQ(kHashMessage, SetValueError("#"));
}

TEST_F(StringPropertyTest, RejectedValueKeepsInitialHashValue) {
  StringProperty property("k", "a#b", "");
  EXPECT_THROW(property.SetValue("a#b"), Property::WrongValue);
  EXPECT_EQ("a#b", property.GetValue());
}

TEST_F(StringPropertyTest, RejectedValueKeepsValueAndNotifiesNobody) {
  SetValueError("x#");
  EXPECT_EQ("initial", m_property->GetValue());
  EXPECT_EQ(0, m_listener.count);
}

TEST_F(StringPropertyTest, SetValueAcceptsEmptyTextAndNotifies) {
  EXPECT_EQ("<accepted>", SetValueError(""));
  EXPECT_EQ("", m_property->GetValue());
  EXPECT_EQ(1, m_listener.count);
  EXPECT_EQ("", m_listener.lastValue);
}

TEST_F(StringPropertyTest, SetValueAcceptsEqualsSign) {
  EXPECT_EQ("<accepted>", SetValueError("="));
  EXPECT_EQ("=", m_property->GetValue());
}

TEST_F(StringPropertyTest, SetValueAcceptsLineFeed) {
  EXPECT_EQ("<accepted>", SetValueError("a\nb"));
  EXPECT_EQ("a\nb", m_property->GetValue());
}

TEST_F(StringPropertyTest, SetValueKeepsBlanksAndCase) {
  m_property->SetValue("  Mixed Case  ");
  EXPECT_EQ("  Mixed Case  ", m_property->GetValue());
}

TEST_F(StringPropertyTest, ListenerSeesNewValue) {
  m_property->SetValue("new");
  EXPECT_EQ(1, m_listener.count);
  EXPECT_EQ(m_property.get(), m_listener.lastProperty);
  EXPECT_EQ("new", m_listener.lastValue);
}

TEST_F(StringPropertyTest, SettingCurrentValueNotifiesAgain) {
  m_property->SetValue("initial");
  m_property->SetValue("initial");
  EXPECT_EQ(2, m_listener.count);
}

TEST_F(StringPropertyTest, IsValueValidNeitherStoresNorNotifies) {
  m_property->IsValueValid("other");
  EXPECT_EQ("initial", m_property->GetValue());
  EXPECT_EQ(0, m_listener.count);
}

TEST_F(StringPropertyTest, IsValueValidRejectsHash) {
  try {
    m_property->IsValueValid("a#");
    FAIL() << "a# was accepted";
  } catch (Property::WrongValue& e) {
    EXPECT_EQ(kHashMessage, e.m_message);
  }
}

TEST_F(StringPropertyTest, SetValueWithoutManagerStoresValue) {
  StringProperty property("k", "v", "");
  property.SetValue("w");
  EXPECT_EQ("w", property.GetValue());
}

TEST_F(StringPropertyTest, SetValueHoldsPropertyMutexWhileNotifying) {
  LockProbe probe(m_property->Mutex());
  m_manager.AddChangeListener(&probe);
  m_property->SetValue("new");
  EXPECT_EQ(1, probe.calls);
  EXPECT_TRUE(probe.heldDuringCall);
  EXPECT_TRUE(IsFreeForOtherThreads(m_property->Mutex()));
}

TEST_F(StringPropertyTest, RejectedSetValueReleasesPropertyMutex) {
  SetValueError("#");
  EXPECT_TRUE(IsFreeForOtherThreads(m_property->Mutex()));
}

}  // namespace
