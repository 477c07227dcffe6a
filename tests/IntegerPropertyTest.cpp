// IntegerPropertyTest.cpp - check, text form, native access and
// notifications of IntegerProperty.

#include "IntegerProperty.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "support/Recorders.h"

namespace {

const char kAccepted[] = "(accepted)";
const char kMessage[] = "Property 'k' can only contain 'an integer value'";
const char kKeyMessage[] = "Property key can not contain characters: '= #'";

// The message of the WrongValue that constructing a property throws, or
// kAccepted.
std::string ConstructionRejection(const std::string& key,
                                  const std::string& value) {
  try {
    IntegerProperty property(key, value, "");
  } catch (const Property::WrongValue& e) {
    return e.m_message;
  }
  return kAccepted;
}

// The message of the WrongValue that SetValue(text) throws, or kAccepted.
std::string RejectionOf(Property* property, const std::string& text) {
  try {
    property->SetValue(text);
  } catch (const Property::WrongValue& e) {
    return e.m_message;
  }
  return kAccepted;
}

class IntegerPropertyTest : public testing::Test {
 protected:
  IntegerPropertyTest() : m_property(new IntegerProperty("k", "5", "")) {
    m_manager.RegisterProperty(m_property);
    m_manager.AddChangeListener(&m_listener);
  }

  // The text form after SetValue(text).
  std::string ReadBack(const std::string& text) {
    m_property->SetValue(text);
    return m_property->GetValue();
  }

  // Checks that text is rejected with the integer message, and that the
  // value stays and nobody is told.
  void ExpectRejected(const std::string& text) {
    EXPECT_EQ(RejectionOf(m_property, text), kMessage) << "text: " << text;
    EXPECT_EQ(m_property->GetValue(), "5");
    EXPECT_EQ(m_listener.count, 0);
  }

  test_support::CountingChangeListener m_listener;
  test_support::TestManager m_manager;
  IntegerProperty* m_property;  // Owned by m_manager.
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
