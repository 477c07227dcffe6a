// IntegerPropertyTest.cpp - check, text form, native access and
// notifications of IntegerProperty.

#include "IntegerProperty.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "support/PropertyTesting.h"

namespace {

using test_support::WrongValueMessage;

const char kMessage[] = "Property 'k' can only contain 'an integer value'";
const char kKeyMessage[] = "Property key can not contain characters: '= #'";

// The message of the WrongValue that constructing a property throws, or
// test_support::kAccepted.
std::string ConstructionRejection(const std::string& key,
                                  const std::string& value) {
  return WrongValueMessage(
      [&key, &value] { IntegerProperty property(key, value, ""); });
}

// A property "k" holding 5, registered on a manager with a counting
// change listener.
class IntegerPropertyTest
    : public test_support::RegisteredPropertyFixture<IntegerProperty> {
 protected:
  IntegerPropertyTest() : RegisteredPropertyFixture("5", kMessage) {}
};

TEST_F(IntegerPropertyTest, HasIntegerTypeName) {
  EXPECT_EQ(m_property->GetPropertyType(), "PROPERTY_TYPE_INTEGER");
  EXPECT_STREQ(IntegerProperty::kTypeName, "PROPERTY_TYPE_INTEGER");
}

TEST_F(IntegerPropertyTest, HasIntegerHumanReadableName) {
  EXPECT_EQ(m_property->GetPropertyName(), "Integer Property");
}

TEST_F(IntegerPropertyTest, ConstructorTakesKeyValueAndSection) {
  IntegerProperty property("key", "-12", "section");
  EXPECT_EQ(property.GetKey(), "key");
  EXPECT_EQ(property.GetValue(), "-12");
  EXPECT_EQ(property.GetIntValue(), -12);
  EXPECT_EQ(property.GetSection(), "section");
}

TEST_F(IntegerPropertyTest, ConstructorRejectsBadInitialValue) {
  EXPECT_THROW(IntegerProperty("k", "abc", ""), Property::WrongValue);
  EXPECT_EQ(ConstructionRejection("k", "+5"), kMessage);
}

TEST_F(IntegerPropertyTest, ConstructorChecksKeyBeforeValue) {
  EXPECT_EQ(ConstructionRejection("a#=b", "5"), kKeyMessage);
  EXPECT_EQ(ConstructionRejection("a#=b", "abc"), kKeyMessage);
}

TEST_F(IntegerPropertyTest, AcceptsNegativeValue) {
  EXPECT_EQ(ReadBack("-12"), "-12");
  EXPECT_EQ(m_property->GetIntValue(), -12);
}

TEST_F(IntegerPropertyTest, DropsLeadingZeros) {
  EXPECT_EQ(ReadBack("0012"), "12");
}

TEST_F(IntegerPropertyTest, MinusZeroReadsBackAsZero) {
  EXPECT_EQ(ReadBack("-0"), "0");
}

TEST_F(IntegerPropertyTest, RoundTripsIntMax) {
  EXPECT_EQ(ReadBack("2147483647"), "2147483647");
  EXPECT_EQ(m_property->GetIntValue(), INT_MAX);
}

TEST_F(IntegerPropertyTest, RoundTripsIntMin) {
  EXPECT_EQ(ReadBack("-2147483648"), "-2147483648");
  EXPECT_EQ(m_property->GetIntValue(), INT_MIN);
}

TEST_F(IntegerPropertyTest, RejectsAllDigitTextOutOfRange) {
  ExpectRejected("2147483648");
  ExpectRejected("-2147483649");
  ExpectRejected("99999999999999999999");
}

TEST_F(IntegerPropertyTest, RejectsLeadingPlus) { ExpectRejected("+5"); }

TEST_F(IntegerPropertyTest, RejectsBlankBeforeValue) { ExpectRejected(" 5"); }

TEST_F(IntegerPropertyTest, RejectsBlankAfterValue) { ExpectRejected("5 "); }

TEST_F(IntegerPropertyTest, RejectsDecimalPoint) { ExpectRejected("5.0"); }

TEST_F(IntegerPropertyTest, RejectsExponent) { ExpectRejected("5e2"); }

TEST_F(IntegerPropertyTest, RejectsEmptyText) { ExpectRejected(""); }

TEST_F(IntegerPropertyTest, RejectsLoneMinus) { ExpectRejected("-"); }

TEST_F(IntegerPropertyTest, RejectsLettersAndHexadecimal) {
  ExpectRejected("abc");
  ExpectRejected("12x");
  ExpectRejected("0x10");
}

TEST_F(IntegerPropertyTest, SetValueNotifiesOnceWithNewValue) {
  m_property->SetValue("7");
  EXPECT_EQ(m_listener.count, 1);
  EXPECT_EQ(m_listener.lastProperty, m_property);
  EXPECT_EQ(m_listener.lastValue, "7");
}

TEST_F(IntegerPropertyTest, SettingCurrentValueNotifiesAgain) {
  m_property->SetValue("5");
  EXPECT_EQ(m_listener.count, 1);
}

TEST_F(IntegerPropertyTest, SetIntValueNotifiesOncePerCall) {
  m_property->SetIntValue(5);
  m_property->SetIntValue(5);
  EXPECT_EQ(m_listener.count, 2);
  m_property->SetIntValue(6);
  EXPECT_EQ(m_listener.count, 3);
}

TEST_F(IntegerPropertyTest, SetIntValueChangesTextForm) {
  m_property->SetIntValue(INT_MIN);
  EXPECT_EQ(m_property->GetValue(), "-2147483648");
  EXPECT_EQ(m_listener.lastValue, "-2147483648");
}

TEST_F(IntegerPropertyTest, GetIntValueReturnsNativeValue) {
  m_property->SetValue("42");
  EXPECT_EQ(m_property->GetIntValue(), 42);
}

TEST_F(IntegerPropertyTest, IsValueValidJudgesWithoutStoring) {
  EXPECT_NO_THROW(m_property->IsValueValid("7"));
  EXPECT_THROW(m_property->IsValueValid("+7"), Property::WrongValue);
  EXPECT_EQ(m_property->GetValue(), "5");
  EXPECT_EQ(m_listener.count, 0);
}

}  // namespace
