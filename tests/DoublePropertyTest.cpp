// DoublePropertyTest.cpp - check, text form, native access and
// notifications of DoubleProperty.

#include "DoubleProperty.h"

#include <gtest/gtest.h>

#include <clocale>
#include <limits>
#include <string>

#include "GermanLocale.h"
#include "support/PropertyTesting.h"

namespace {

using test_support::WrongValueMessage;

const char kMessage[] = "Property 'k' can only contain 'a double value'";
const char kKeyMessage[] = "Property key can not contain characters: '= #'";

// The message of the WrongValue that constructing a property throws, or
// test_support::kAccepted.
std::string ConstructionRejection(const std::string& key,
                                  const std::string& value) {
  return WrongValueMessage(
      [&key, &value] { DoubleProperty property(key, value, ""); });
}

// A property "k" holding 1.5, registered on a manager with a counting
// change listener.
class DoublePropertyTest
    : public test_support::RegisteredPropertyFixture<DoubleProperty> {
 protected:
  DoublePropertyTest() : RegisteredPropertyFixture("1.5", kMessage) {}

  void TearDown() override { m_german.Restore(); }

  // Puts LC_NUMERIC into de_DE.UTF-8; fails the test if impossible.
  void SwitchToGermanNumericLocale() {
    const std::string error = m_german.Switch(LC_NUMERIC);
    ASSERT_EQ(error, "") << "a German locale is needed for this test";
  }

  using RegisteredPropertyFixture::ReadBack;

  // The text form after SetDoubleValue(value).
  std::string ReadBack(double value) {
    m_property->SetDoubleValue(value);
    return m_property->GetValue();
  }

  test_support::GermanLocale m_german;
};

TEST_F(DoublePropertyTest, HasDoubleTypeName) {
  EXPECT_EQ(m_property->GetPropertyType(), "PROPERTY_TYPE_DOUBLE");
  EXPECT_STREQ(DoubleProperty::kTypeName, "PROPERTY_TYPE_DOUBLE");
}

TEST_F(DoublePropertyTest, HasDoubleHumanReadableName) {
  EXPECT_EQ(m_property->GetPropertyName(), "Double Property");
}

TEST_F(DoublePropertyTest, ConstructorTakesKeyValueAndSection) {
  DoubleProperty property("key", "-2.5", "section");
  EXPECT_EQ(property.GetKey(), "key");
  EXPECT_EQ(property.GetValue(), "-2.5");
  EXPECT_EQ(property.GetDoubleValue(), -2.5);
  EXPECT_EQ(property.GetSection(), "section");
}

TEST_F(DoublePropertyTest, ConstructorRejectsBadInitialValue) {
  EXPECT_THROW(DoubleProperty("k", "abc", ""), Property::WrongValue);
  EXPECT_EQ(ConstructionRejection("k", "1,5"), kMessage);
}

TEST_F(DoublePropertyTest, ConstructorChecksKeyBeforeValue) {
  EXPECT_EQ(ConstructionRejection("a#=b", "1.5"), kKeyMessage);
  EXPECT_EQ(ConstructionRejection("a#=b", "abc"), kKeyMessage);
}

TEST_F(DoublePropertyTest, OneTenthReadsBackAsOneTenth) {
  EXPECT_EQ(ReadBack("0.1"), "0.1");
  EXPECT_EQ(m_property->GetDoubleValue(), 0.1);
}

TEST_F(DoublePropertyTest, OneThirdReadsBackWithFifteenDigits) {
  EXPECT_EQ(ReadBack(1.0 / 3.0), "0.333333333333333");
  EXPECT_EQ(ReadBack("0.33333333333333333333"), "0.333333333333333");
}

TEST_F(DoublePropertyTest, LargePowerOfTenReadsBackInExponentForm) {
  EXPECT_EQ(ReadBack("1e20"), "1e+20");
}

TEST_F(DoublePropertyTest, WholeNumberReadsBackWithoutPoint) {
  EXPECT_EQ(ReadBack("2"), "2");
  EXPECT_EQ(ReadBack("2.000"), "2");
}

TEST_F(DoublePropertyTest, NegativeValuesReadBackWithMinus) {
  EXPECT_EQ(ReadBack("-2.5"), "-2.5");
  EXPECT_EQ(ReadBack("-1e-5"), "-1e-05");
}

TEST_F(DoublePropertyTest, SwitchesToExponentFormAtFifteenDigits) {
  EXPECT_EQ(ReadBack("100000000000000"), "100000000000000");
  EXPECT_EQ(ReadBack("1000000000000000"), "1e+15");
  EXPECT_EQ(ReadBack("0.0001"), "0.0001");
  EXPECT_EQ(ReadBack("0.00001"), "1e-05");
}

TEST_F(DoublePropertyTest, RoundsToFifteenSignificantDigits) {
  EXPECT_EQ(ReadBack("123456789012345678"), "1.23456789012346e+17");
}

TEST_F(DoublePropertyTest, NegativeZeroKeepsItsSign) {
  EXPECT_EQ(ReadBack("-0"), "-0");
}

TEST_F(DoublePropertyTest, AcceptsSignsAndBarePoints) {
  EXPECT_EQ(ReadBack("+1.25"), "1.25");
  EXPECT_EQ(ReadBack(".5"), "0.5");
  EXPECT_EQ(ReadBack("3."), "3");
  EXPECT_EQ(ReadBack("1E3"), "1000");
}

TEST_F(DoublePropertyTest, RejectsDecimalComma) { ExpectRejected("1,5"); }

TEST_F(DoublePropertyTest, RejectsBlanksAroundValue) {
  ExpectRejected(" 1.5");
  ExpectRejected("1.5 ");
}

TEST_F(DoublePropertyTest, RejectsEmptyText) { ExpectRejected(""); }

TEST_F(DoublePropertyTest, RejectsLettersAndHexadecimal) {
  ExpectRejected("abc");
  ExpectRejected("1.5x");
  ExpectRejected("0x1p3");
}

TEST_F(DoublePropertyTest, RejectsInfinityAndNan) {
  ExpectRejected("inf");
  ExpectRejected("nan");
}

TEST_F(DoublePropertyTest, RejectsOverflowAndUnderflow) {
  ExpectRejected("1e999");
  ExpectRejected("1e-400");
}

TEST_F(DoublePropertyTest, SetValueNotifiesOnceWithNewValue) {
  m_property->SetValue("0.25");
  EXPECT_EQ(m_listener.count, 1);
  EXPECT_EQ(m_listener.lastProperty, m_property);
  EXPECT_EQ(m_listener.lastValue, "0.25");
}

TEST_F(DoublePropertyTest, SettingCurrentValueNotifiesAgain) {
  m_property->SetValue("1.5");
  EXPECT_EQ(m_listener.count, 1);
}

TEST_F(DoublePropertyTest, SetDoubleValueNotifiesOncePerCall) {
  m_property->SetDoubleValue(1.5);
  m_property->SetDoubleValue(1.5);
  EXPECT_EQ(m_listener.count, 2);
  m_property->SetDoubleValue(2.5);
  EXPECT_EQ(m_listener.count, 3);
}

TEST_F(DoublePropertyTest, SetDoubleValueChangesTextForm) {
  EXPECT_EQ(ReadBack(0.75), "0.75");
  EXPECT_EQ(m_property->GetDoubleValue(), 0.75);
  EXPECT_EQ(m_listener.lastValue, "0.75");
}

TEST_F(DoublePropertyTest, SetDoubleValueStoresInfinityUnchecked) {
  EXPECT_EQ(ReadBack(std::numeric_limits<double>::infinity()), "inf");
}

TEST_F(DoublePropertyTest, IsValueValidJudgesWithoutStoring) {
  EXPECT_NO_THROW(m_property->IsValueValid("0.5"));
  EXPECT_THROW(m_property->IsValueValid("0,5"), Property::WrongValue);
  EXPECT_EQ(m_property->GetValue(), "1.5");
  EXPECT_EQ(m_listener.count, 0);
}

TEST_F(DoublePropertyTest, TextFormKeepsDecimalPointUnderGermanLocale) {
  ASSERT_NO_FATAL_FAILURE(SwitchToGermanNumericLocale());
  EXPECT_EQ(ReadBack("0.5"), "0.5");
  EXPECT_EQ(ReadBack(0.25), "0.25");
}

}  // namespace
