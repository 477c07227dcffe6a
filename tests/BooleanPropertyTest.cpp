// BooleanPropertyTest.cpp - check, text form, native access and
// notifications of BooleanProperty.

#include "BooleanProperty.h"

#include <gtest/gtest.h>

#include <string>

#include "support/PropertyTesting.h"

namespace {

using test_support::WrongValueMessage;

const char kMessage[] = "Property 'k' can only contain 'true or false'";
const char kKeyMessage[] = "Property key can not contain characters: '= #'";

// The message of the WrongValue that constructing a property throws, or
// test_support::kAccepted.
std::string ConstructionRejection(const std::string& key,
                                  const std::string& value) {
  return WrongValueMessage(
      [&key, &value] { BooleanProperty property(key, value, ""); });
}

// A property "k" holding false, registered on a manager with a counting
// change listener.
class BooleanPropertyTest
    : public test_support::RegisteredPropertyFixture<BooleanProperty> {
 protected:
  BooleanPropertyTest() : RegisteredPropertyFixture("false", kMessage) {}
};

TEST_F(BooleanPropertyTest, HasBooleanTypeName) {
  EXPECT_EQ(m_property->GetPropertyType(), "PROPERTY_TYPE_BOOLEAN");
  EXPECT_STREQ(BooleanProperty::kTypeName, "PROPERTY_TYPE_BOOLEAN");
}

TEST_F(BooleanPropertyTest, HasBooleanHumanReadableName) {
  EXPECT_EQ(m_property->GetPropertyName(), "Boolean Property");
}

TEST_F(BooleanPropertyTest, ConstructorTakesKeyValueAndSection) {
  BooleanProperty property("key", "true", "section");
  EXPECT_EQ(property.GetKey(), "key");
  EXPECT_EQ(property.GetValue(), "true");
  EXPECT_EQ(property.GetSection(), "section");
}

TEST_F(BooleanPropertyTest, ConstructorStoresInitialFalse) {
  EXPECT_EQ(m_property->GetValue(), "false");
  EXPECT_FALSE(m_property->GetBooleanValue());
}

TEST_F(BooleanPropertyTest, ConstructorRejectsBadInitialValue) {
  EXPECT_THROW(BooleanProperty("k", "yes", ""), Property::WrongValue);
  EXPECT_EQ(ConstructionRejection("k", "yes"), kMessage);
}

TEST_F(BooleanPropertyTest, ConstructorChecksKeyBeforeValue) {
  EXPECT_EQ(ConstructionRejection("a#=b", "true"), kKeyMessage);
  EXPECT_EQ(ConstructionRejection("a#=b", "yes"), kKeyMessage);
}

TEST_F(BooleanPropertyTest, SetValueTrueReadsBackTrue) {
  m_property->SetValue("true");
  EXPECT_EQ(m_property->GetValue(), "true");
  EXPECT_TRUE(m_property->GetBooleanValue());
  EXPECT_EQ(m_listener.count, 1);
  EXPECT_EQ(m_listener.lastValue, "true");
}

TEST_F(BooleanPropertyTest, SetValueFalseReadsBackFalse) {
  m_property->SetValue("true");
  m_property->SetValue("false");
  EXPECT_EQ(m_property->GetValue(), "false");
  EXPECT_FALSE(m_property->GetBooleanValue());
  EXPECT_EQ(m_listener.lastValue, "false");
}

TEST_F(BooleanPropertyTest, RejectsCapitalisedTrue) { ExpectRejected("True"); }

TEST_F(BooleanPropertyTest, RejectsDigitOne) { ExpectRejected("1"); }

TEST_F(BooleanPropertyTest, RejectsTrueWithLeadingBlank) {
  ExpectRejected(" true");
}

TEST_F(BooleanPropertyTest, RejectsOtherSpellings) {
  ExpectRejected("TRUE");
  ExpectRejected("False");
  ExpectRejected("true ");
  ExpectRejected("0");
  ExpectRejected("yes");
  ExpectRejected("");
}

TEST_F(BooleanPropertyTest, SettingCurrentValueNotifiesAgain) {
  m_property->SetValue("false");
  EXPECT_EQ(m_listener.count, 1);
  EXPECT_EQ(m_property->GetValue(), "false");
}

TEST_F(BooleanPropertyTest, SetBooleanValueNotifiesOncePerCall) {
  m_property->SetBooleanValue(false);
  m_property->SetBooleanValue(false);
  EXPECT_EQ(m_listener.count, 2);
  m_property->SetBooleanValue(true);
  EXPECT_EQ(m_listener.count, 3);
}

TEST_F(BooleanPropertyTest, SetBooleanValueChangesTextForm) {
  m_property->SetBooleanValue(true);
  EXPECT_EQ(m_property->GetValue(), "true");
  EXPECT_TRUE(m_property->GetBooleanValue());
  EXPECT_EQ(m_listener.lastValue, "true");
}

TEST_F(BooleanPropertyTest, IsValueValidJudgesWithoutStoring) {
  EXPECT_NO_THROW(m_property->IsValueValid("true"));
  EXPECT_THROW(m_property->IsValueValid("True"), Property::WrongValue);
  EXPECT_EQ(m_property->GetValue(), "false");
  EXPECT_EQ(m_listener.count, 0);
}

}  // namespace
