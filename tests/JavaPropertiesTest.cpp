// JavaPropertiesTest.cpp - what the flat store JavaProperties alone does:
// field cleaning (Extract), loads that merge key by key, and a header that
// reads back as entries. What both stores do is tested in
// StoreFlavoursTest.cpp, how lines are read by the cases of tests/format.

#include "JavaProperties.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "support/FlavourFixtures.h"
#include "support/Flavours.h"
#include "support/TempDir.h"

namespace {

using test_support::Messages;
using test_support::TempDir;
using test_support::WriteFile;

class JavaPropertiesTest
    : public test_support::StoreFixture<test_support::Flat> {};

struct ExtractCase {
  const char* name;
  std::string field;
  std::string result;
};

// Keeps test output readable: the row's name instead of its bytes.
void PrintTo(const ExtractCase& row, std::ostream* out) { *out << row.name; }

class ExtractTest : public testing::TestWithParam<ExtractCase> {
 protected:
  JavaProperties m_properties;
};

TEST_P(ExtractTest, CleansFieldInPlace) {
  std::vector<char> buffer(GetParam().field.begin(), GetParam().field.end());
  buffer.push_back('\0');
  const char* result = m_properties.Extract(buffer.data());
  ASSERT_GE(result, buffer.data());
  ASSERT_LT(result, buffer.data() + buffer.size());
  EXPECT_EQ(GetParam().result, std::string(result));
}

INSTANTIATE_TEST_SUITE_P(
    Fields, ExtractTest,
    testing::Values(
        ExtractCase{"DropsBlanksAroundText", "  abc  ", "abc"},
        ExtractCase{"KeepsBlanksInsideQuotes", "\"  abc  \"", "  abc  "},
        ExtractCase{"KeepsUnmatchedOpeningQuote", "\"abc", "\"abc"},
        ExtractCase{"LeavesTrailingQuoteOfUnquotedText", "abc\"", "abc\""},
        ExtractCase{"TurnsTwoQuotesIntoEmptyText", "\"\"", ""},
        ExtractCase{"LeavesSingleQuote", "\"", "\""},
        ExtractCase{"TurnsQuoteAndBlanksIntoOneQuote", "\"   ", "\""},
        ExtractCase{"LooksOnlyAtLastByteForClosingQuote", "\"a\" b", "\"a\" b"},
        ExtractCase{"LeavesEmptyTextEmpty", "", ""},
        ExtractCase{"TurnsBlanksIntoEmptyText", "   ", ""},
        ExtractCase{"SkipsBlanksBeforeOpeningQuote", "  \" a \"  ", " a "},
        ExtractCase{"DropsEveryBlankOfCLocale", " \t\n\v\f\rx\r\f\v\n\t ", "x"},
        ExtractCase{"KeepsNonBreakingSpaceByte", "\xa0x\xa0", "\xa0x\xa0"}),
    [](const testing::TestParamInfo<ExtractCase>& info) {
      return std::string(info.param.name);
    });

TEST_F(JavaPropertiesTest, KeySetBeforeLoadIsRedefinedByFile) {
  Preset("a", "0");
  EXPECT_TRUE(LoadText("# note\na=1\n"));
  EXPECT_EQ("1", m_properties.GetProperty("a"));
  EXPECT_EQ(Messages({"Line 2 redefines a property", "Loading 'a' to '1'"}),
            Logged());
}

TEST_F(JavaPropertiesTest, LoadKeepsKeysThatFileDoesNotName) {
  Preset("a", "0");
  LoadText("b=1\n");
  EXPECT_EQ("a=0\nb=1\n", StoreText());
}

TEST_F(JavaPropertiesTest, LoadFromFileKeepsKeysThatFileDoesNotName) {
  TempDir dir;
  WriteFile(dir.File("p.properties"), "#hdr\nb=2\na=1\n");
  Preset("c", "3");
  EXPECT_TRUE(m_properties.Load(dir.File("p.properties")));
  EXPECT_EQ("a=1\nb=2\nc=3\n", StoreText());
}

TEST_F(JavaPropertiesTest, HeaderWithLineFeedIsReadBackAsEntries) {
  Preset("a", "1");
  const std::string text = StoreText("x\nb=2");
  EXPECT_EQ("#x\nb=2\na=1\n", text);
  JavaProperties reloaded;
  std::istringstream in(text);
  EXPECT_TRUE(reloaded.Load(in));
  EXPECT_EQ("2", reloaded.GetProperty("b"));
}

}  // namespace
