// TextNumbersTest.cpp - accepted and rejected syntax, limits, exceptions and
// locale independence of TextNumbers.

#include "TextNumbers.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <climits>
#include <clocale>
#include <limits>
#include <stdexcept>
#include <string>

#include "GermanLocale.h"

namespace {

const char kAccepted[] = "(accepted)";

// The what() of the NotAnInteger thrown for text, or kAccepted.
std::string IntegerRejection(const std::string& text) {
  try {
    TextNumbers::StdStringToInteger(text);
  } catch (const TextNumbers::NotAnInteger& e) {
    return e.what();
  }
  return kAccepted;
}

// The what() of the NotADouble thrown for text, or kAccepted.
std::string DoubleRejection(const std::string& text) {
  try {
    TextNumbers::StdStringToDouble(text);
  } catch (const TextNumbers::NotADouble& e) {
    return e.what();
  }
  return kAccepted;
}

void ExpectNotAnInteger(const std::string& text) {
  EXPECT_EQ(IntegerRejection(text), "not an integer: \"" + text + "\"");
}

void ExpectNotADouble(const std::string& text) {
  EXPECT_EQ(DoubleRejection(text), "not a double: \"" + text + "\"");
}

class TextNumbersTest : public testing::Test {
 protected:
  void TearDown() override { m_german.Restore(); }

  // Puts the whole process into de_DE.UTF-8; fails the test if impossible.
  void SwitchToGermanLocale() {
    const std::string error = m_german.Switch(LC_ALL);
    ASSERT_EQ(error, "") << "a German locale is needed for this test";
  }

  test_support::GermanLocale m_german;
};

TEST_F(TextNumbersTest, ConvertsDecimalInteger) {
  EXPECT_EQ(TextNumbers::StdStringToInteger("42"), 42);
  EXPECT_EQ(TextNumbers::StdStringToInteger("0"), 0);
}

TEST_F(TextNumbersTest, ConvertsSignedInteger) {
  EXPECT_EQ(TextNumbers::StdStringToInteger("-12"), -12);
  EXPECT_EQ(TextNumbers::StdStringToInteger("+7"), 7);
}

TEST_F(TextNumbersTest, ConvertsIntegerWithLeadingZeros) {
  EXPECT_EQ(TextNumbers::StdStringToInteger("007"), 7);
  EXPECT_EQ(TextNumbers::StdStringToInteger("-0"), 0);
}

TEST_F(TextNumbersTest, ConvertsIntegerLimits) {
  EXPECT_EQ(TextNumbers::StdStringToInteger("2147483647"), INT_MAX);
  EXPECT_EQ(TextNumbers::StdStringToInteger("-2147483648"), INT_MIN);
}

TEST_F(TextNumbersTest, RejectsIntegerOneBeyondLimits) {
  ExpectNotAnInteger("2147483648");
  ExpectNotAnInteger("-2147483649");
  ExpectNotAnInteger("99999999999999999999");
}

TEST_F(TextNumbersTest, RejectsEmptyInteger) { ExpectNotAnInteger(""); }

TEST_F(TextNumbersTest, RejectsLoneSignAsInteger) {
  ExpectNotAnInteger("-");
  ExpectNotAnInteger("+");
}

TEST_F(TextNumbersTest, RejectsIntegerWithTwoSigns) {
  ExpectNotAnInteger("+-5");
  ExpectNotAnInteger("-+5");
  ExpectNotAnInteger("--5");
  ExpectNotAnInteger("++5");
}

TEST_F(TextNumbersTest, RejectsBlanksInInteger) {
  ExpectNotAnInteger(" 5");
  ExpectNotAnInteger("5 ");
  ExpectNotAnInteger("\t5");
  ExpectNotAnInteger("5\n");
  ExpectNotAnInteger("- 5");
}

TEST_F(TextNumbersTest, RejectsTrailingGarbageAfterInteger) {
  ExpectNotAnInteger("12x");
  ExpectNotAnInteger("5.0");
  ExpectNotAnInteger("1e3");
}

TEST_F(TextNumbersTest, RejectsIntegerFollowedByNulCharacter) {
  const std::string text("5\0", 2);
  EXPECT_THROW(TextNumbers::StdStringToInteger(text),
               TextNumbers::NotAnInteger);
}

TEST_F(TextNumbersTest, RejectsHexadecimalInteger) {
  ExpectNotAnInteger("0x10");
}

TEST_F(TextNumbersTest, NotAnIntegerNamesTheText) {
  EXPECT_EQ(IntegerRejection("12x"), "not an integer: \"12x\"");
}

TEST_F(TextNumbersTest, NotAnIntegerIsAnInvalidArgument) {
  EXPECT_THROW(TextNumbers::StdStringToInteger("x"), std::invalid_argument);
}

TEST_F(TextNumbersTest, ConvertsDecimalFraction) {
  EXPECT_EQ(TextNumbers::StdStringToDouble("1.5"), 1.5);
  EXPECT_EQ(TextNumbers::StdStringToDouble("0.1"), 0.1);
}

TEST_F(TextNumbersTest, ConvertsSignedDouble) {
  EXPECT_EQ(TextNumbers::StdStringToDouble("-2.5"), -2.5);
  EXPECT_EQ(TextNumbers::StdStringToDouble("+2.5"), 2.5);
}

TEST_F(TextNumbersTest, ConvertsDoubleWithoutDigitsOnOneSideOfPoint) {
  EXPECT_EQ(TextNumbers::StdStringToDouble("3."), 3.0);
  EXPECT_EQ(TextNumbers::StdStringToDouble(".5"), 0.5);
  EXPECT_EQ(TextNumbers::StdStringToDouble("-.5"), -0.5);
}

TEST_F(TextNumbersTest, ConvertsWholeNumberAsDouble) {
  EXPECT_EQ(TextNumbers::StdStringToDouble("7"), 7.0);
}

TEST_F(TextNumbersTest, ConvertsDoubleWithExponent) {
  EXPECT_EQ(TextNumbers::StdStringToDouble("1e3"), 1000.0);
  EXPECT_EQ(TextNumbers::StdStringToDouble("1E3"), 1000.0);
  EXPECT_EQ(TextNumbers::StdStringToDouble("2.5e-3"), 0.0025);
  EXPECT_EQ(TextNumbers::StdStringToDouble("1e+20"), 1e20);
}

TEST_F(TextNumbersTest, ConvertsZero) {
  EXPECT_EQ(TextNumbers::StdStringToDouble("0"), 0.0);
}

TEST_F(TextNumbersTest, ConvertsZeroWithHugeNegativeExponent) {
  EXPECT_EQ(TextNumbers::StdStringToDouble("0e-400"), 0.0);
}

TEST_F(TextNumbersTest, ConvertsLargestDouble) {
  EXPECT_EQ(TextNumbers::StdStringToDouble("1.7976931348623157e308"), DBL_MAX);
}

TEST_F(TextNumbersTest, ConvertsSmallestSubnormalDouble) {
  EXPECT_EQ(TextNumbers::StdStringToDouble("4.9e-324"),
            std::numeric_limits<double>::denorm_min());
}

TEST_F(TextNumbersTest, RejectsDoubleOverflow) {
  ExpectNotADouble("1e999");
  ExpectNotADouble("-1e999");
  ExpectNotADouble("1.8e308");
}

TEST_F(TextNumbersTest, RejectsDoubleUnderflowToZero) {
  ExpectNotADouble("1e-400");
  ExpectNotADouble("-1e-400");
  ExpectNotADouble("2.4e-324");
}

TEST_F(TextNumbersTest, RejectsEmptyDouble) { ExpectNotADouble(""); }

TEST_F(TextNumbersTest, RejectsDoubleWithoutDigits) {
  ExpectNotADouble("-");
  ExpectNotADouble("+");
  ExpectNotADouble(".");
  ExpectNotADouble("-.");
  ExpectNotADouble("e5");
  ExpectNotADouble(".e1");
}

TEST_F(TextNumbersTest, RejectsExponentWithoutDigits) {
  ExpectNotADouble("1e");
  ExpectNotADouble("1e+");
  ExpectNotADouble("1E-");
}

TEST_F(TextNumbersTest, RejectsDoubleWithTwoSigns) {
  ExpectNotADouble("+-1.5");
  ExpectNotADouble("--1.5");
}

TEST_F(TextNumbersTest, RejectsBlanksInDouble) {
  ExpectNotADouble(" 1.5");
  ExpectNotADouble("1.5 ");
  ExpectNotADouble("1. 5");
  ExpectNotADouble("1 e5");
}

TEST_F(TextNumbersTest, RejectsTrailingGarbageAfterDouble) {
  ExpectNotADouble("1.5x");
  ExpectNotADouble("1.5f");
  ExpectNotADouble("1.5.2");
  ExpectNotADouble("1e5e2");
}

TEST_F(TextNumbersTest, RejectsDoubleFollowedByNulCharacter) {
  const std::string text("1.5\0", 4);
  EXPECT_THROW(TextNumbers::StdStringToDouble(text), TextNumbers::NotADouble);
}

TEST_F(TextNumbersTest, RejectsDecimalComma) { ExpectNotADouble("1,5"); }

TEST_F(TextNumbersTest, RejectsHexadecimalDouble) {
  ExpectNotADouble("0x10");
  ExpectNotADouble("0x1p3");
  ExpectNotADouble("0X1.8P1");
}

TEST_F(TextNumbersTest, RejectsInfinityAndNan) {
  ExpectNotADouble("inf");
  ExpectNotADouble("-inf");
  ExpectNotADouble("INF");
  ExpectNotADouble("infinity");
  ExpectNotADouble("nan");
  ExpectNotADouble("NaN");
  ExpectNotADouble("nan(1)");
}

TEST_F(TextNumbersTest, NotADoubleNamesTheText) {
  EXPECT_EQ(DoubleRejection("1,5"), "not a double: \"1,5\"");
}

TEST_F(TextNumbersTest, NotADoubleIsAnInvalidArgument) {
  EXPECT_THROW(TextNumbers::StdStringToDouble("x"), std::invalid_argument);
}

TEST_F(TextNumbersTest, ReadsDecimalPointUnderGermanLocale) {
  ASSERT_NO_FATAL_FAILURE(SwitchToGermanLocale());
  EXPECT_EQ(TextNumbers::StdStringToDouble("0.1"), 0.1);
  EXPECT_EQ(TextNumbers::StdStringToDouble("1.5"), 1.5);
  ExpectNotADouble("1,5");
}

}  // namespace
