// JavaPropertiesTest.cpp - field cleaning, reading, writing and table access
// of the flat key=value store JavaProperties.

#include "JavaProperties.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <sstream>
#include <string>
#include <vector>

#include "support/AssertionMessage.h"
#include "support/LogRecorder.h"
#include "support/StoreTesting.h"
#include "support/TempDir.h"

namespace {

using Messages = std::vector<std::string>;
using test_support::FailingSource;
using test_support::FlushRecorder;
using test_support::LineOfLength;
using test_support::LogRecorder;
using test_support::ReadFile;
using test_support::RefusingSink;
using test_support::TempDir;
using test_support::WriteFile;

// The assertion message of Src/JavaProperties.cpp for line and function.
std::string AssertionRegex(int line, const std::string& function) {
  return test_support::AssertionRegex("Src/JavaProperties.cpp", line, function,
                                      "!fileName.empty()");
}

class JavaPropertiesTest : public testing::Test {
 protected:
  bool LoadText(const std::string& text) {
    std::istringstream in(text);
    return m_properties.Load(in);
  }

  // The whole text that Store writes; the store is expected to succeed.
  std::string StoreText(const std::string& header = "") {
    std::ostringstream out;
    EXPECT_TRUE(m_properties.Store(out, header));
    return out.str();
  }

  // Everything logged so far; every entry is expected at level 1.
  Messages Logged() const { return test_support::MessagesAllAtLevel(m_log, 1); }

  // Sets key to value and forgets the log line that this makes.
  void Preset(const std::string& key, const std::string& value) {
    m_properties.SetProperty(key, value);
    m_log.Clear();
  }

  LogRecorder m_log;
  JavaProperties m_properties;
};

class JavaPropertiesDeathTest : public JavaPropertiesTest {};

TEST_F(JavaPropertiesDeathTest, LoadWithEmptyFileNameAborts) {
  EXPECT_DEATH(m_properties.Load(""),
               AssertionRegex(34,
                              "bool JavaProperties::Load(const "
                              "propstring&)"));
}

TEST_F(JavaPropertiesDeathTest, StoreWithEmptyFileNameAborts) {
  EXPECT_DEATH(m_properties.Store("", "h"),
               AssertionRegex(99,
                              "bool JavaProperties::Store(const "
                              "propstring&, const propstring&)"));
}

TEST_F(JavaPropertiesDeathTest, LoadDoesNotReturnOnLineOf512Characters) {
  std::istringstream in(LineOfLength(512) + "\na=1\n");
  EXPECT_EXIT(
      {
        alarm(1);
        m_properties.Load(in);
      },
      testing::KilledBySignal(SIGALRM), "");
}

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

TEST_F(JavaPropertiesTest, NewTableWritesNothing) {
  EXPECT_EQ("", StoreText());
}

TEST_F(JavaPropertiesTest, LastLineWithoutLineFeedIsRead) {
  EXPECT_TRUE(LoadText("a=1\nb=2"));
  EXPECT_EQ("a=1\nb=2\n", StoreText());
}

TEST_F(JavaPropertiesTest, FinalLineFeedIsFollowedByOneMoreRead) {
  std::istringstream withLineFeed("a=1\n");
  std::istringstream withoutLineFeed("a=1");
  EXPECT_TRUE(m_properties.Load(withLineFeed));
  EXPECT_TRUE(m_properties.Load(withoutLineFeed));
  EXPECT_EQ(std::ios::eofbit | std::ios::failbit, withLineFeed.rdstate());
  EXPECT_EQ(std::ios::eofbit, withoutLineFeed.rdstate());
}

TEST_F(JavaPropertiesTest, ReadAfterFinalLineFeedIsCountedAsLine) {
  FailingSource source("a=1\n");
  std::istream in(&source);
  EXPECT_FALSE(m_properties.Load(in));
  EXPECT_EQ(Messages({"Loading 'a' to '1'", "Error reading Line 2"}), Logged());
}

TEST_F(JavaPropertiesTest, EmptyStreamReturnsTrueAndLeavesTableUnchanged) {
  Preset("x", "1");
  EXPECT_TRUE(LoadText(""));
  EXPECT_EQ("x=1\n", StoreText());
  EXPECT_EQ(Messages(), Logged());
}

TEST_F(JavaPropertiesTest, FirstEqualsSignSplitsKeyFromValue) {
  LoadText("a=b=c\n");
  EXPECT_EQ("b=c", m_properties.GetProperty("a"));
  EXPECT_EQ("a=b=c\n", StoreText());
}

TEST_F(JavaPropertiesTest, LineStartingWithEqualsSignGivesEmptyKey) {
  LoadText("=x\n");
  EXPECT_EQ("x", m_properties.GetProperty(""));
  EXPECT_EQ(Messages({"Loading '' to 'x'"}), Logged());
}

TEST_F(JavaPropertiesTest, NothingOrBlanksAfterEqualsSignGiveEmptyValue) {
  LoadText("k=\nm=   \n");
  EXPECT_EQ("k=\nm=\n", StoreText());
}

TEST_F(JavaPropertiesTest, LineWithoutEqualsSignIsIgnored) {
  EXPECT_TRUE(LoadText("k\n"));
  EXPECT_EQ("", StoreText());
  EXPECT_EQ(Messages(), Logged());
}

TEST_F(JavaPropertiesTest, BlanksAroundFieldsAreDroppedAndInnerBlankKept) {
  LoadText("  key one  =  v  \n");
  EXPECT_EQ("v", m_properties.GetProperty("key one"));
  EXPECT_EQ("key one=v\n", StoreText());
}

TEST_F(JavaPropertiesTest, QuotedValueLosesItsQuotes) {
  LoadText("k=\"ab\"\n");
  EXPECT_EQ("ab", m_properties.GetProperty("k"));
}

TEST_F(JavaPropertiesTest, UnmatchedOpeningQuoteStaysInValue) {
  LoadText("k=\"ab\n");
  EXPECT_EQ("\"ab", m_properties.GetProperty("k"));
}

TEST_F(JavaPropertiesTest, QuotesKeepBlanksOfValue) {
  LoadText("k=\" ab \"\n");
  EXPECT_EQ(" ab ", m_properties.GetProperty("k"));
}

TEST_F(JavaPropertiesTest, CommentIsCutBeforeQuotesAreMatched) {
  LoadText("k=\"a#b\"\n");
  EXPECT_EQ("\"a", m_properties.GetProperty("k"));
}

TEST_F(JavaPropertiesTest, CommentStartsAtFirstHashAnywhereOnLine) {
  LoadText("#c=1\na=1 # note\nb=x#y=z\n");
  EXPECT_EQ("a=1\nb=x\n", StoreText());
}

TEST_F(JavaPropertiesTest, CarriageReturnBeforeLineFeedIsTrimmed) {
  LoadText("a=1\r\nb = 2 \r\n");
  EXPECT_EQ("a=1\nb=2\n", StoreText());
}

TEST_F(JavaPropertiesTest, LineOf511CharactersIsStoredWholeAndLogsTooLong) {
  EXPECT_TRUE(LoadText("a=1\n" + LineOfLength(511) + "\n"));
  const std::string value(509, 'x');
  EXPECT_EQ(value, m_properties.GetProperty("k"));
  EXPECT_EQ(Messages({"Loading 'a' to '1'", "Line 2 is too long",
                      "Loading 'k' to '" + value + "'"}),
            Logged());
}

TEST_F(JavaPropertiesTest, LineOf510CharactersIsNotTooLong) {
  EXPECT_TRUE(LoadText(LineOfLength(510) + "\n"));
  const std::string value(508, 'x');
  EXPECT_EQ(Messages({"Loading 'k' to '" + value + "'"}), Logged());
}

TEST_F(JavaPropertiesTest, RepeatedKeyLogsLaterLineAndKeepsLaterValue) {
  EXPECT_TRUE(LoadText("a=1\nb=2\na=3\n"));
  EXPECT_EQ("a=3\nb=2\n", StoreText());
  EXPECT_EQ(Messages({"Loading 'a' to '1'", "Loading 'b' to '2'",
                      "Line 3 redefines a property", "Loading 'a' to '3'"}),
            Logged());
}

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

TEST_F(JavaPropertiesTest, LoadOnFailedStreamReturnsFalseAndReadsNothing) {
  Preset("x", "1");
  std::istringstream in("a=1\n");
  in.setstate(std::ios::failbit);
  EXPECT_FALSE(m_properties.Load(in));
  EXPECT_EQ("x=1\n", StoreText());
  EXPECT_EQ(Messages(), Logged());
  in.clear();
  std::string firstLine;
  std::getline(in, firstLine);
  EXPECT_EQ("a=1", firstLine);
}

TEST_F(JavaPropertiesTest, LoadOnStreamAtEndOfFileReturnsFalse) {
  std::istringstream in("a=1\n");
  in.setstate(std::ios::eofbit);
  EXPECT_FALSE(m_properties.Load(in));
  EXPECT_EQ("", StoreText());
}

TEST_F(JavaPropertiesTest, ReadErrorIsLoggedKeepsItsLineAndStopsReading) {
  FailingSource source("a=1\nb=2", "\nc=3\n");
  std::istream in(&source);
  EXPECT_FALSE(m_properties.Load(in));
  EXPECT_EQ("a=1\nb=2\n", StoreText());
  EXPECT_EQ(Messages({"Loading 'a' to '1'", "Error reading Line 2",
                      "Loading 'b' to '2'"}),
            Logged());
}

TEST_F(JavaPropertiesTest, StoreWritesHeaderDirectlyAfterHash) {
  Preset("a", "1");
  EXPECT_EQ("#made by x\na=1\n", StoreText("made by x"));
}

TEST_F(JavaPropertiesTest, StoreWithHeaderOfEmptyTableWritesHeaderOnly) {
  EXPECT_EQ("#hdr\n", StoreText("hdr"));
}

TEST_F(JavaPropertiesTest, StoreWritesKeysInByteOrder) {
  Preset("ab", "3");
  Preset("\xe4", "4");
  Preset("a", "2");
  Preset("B", "1");
  EXPECT_EQ("B=1\na=2\nab=3\n\xe4=4\n", StoreText());
}

TEST_F(JavaPropertiesTest, StoreFlushesAfterEveryLine) {
  Preset("a", "1");
  Preset("b", "2");
  FlushRecorder sink;
  std::ostream out(&sink);
  EXPECT_TRUE(m_properties.Store(out, "h"));
  EXPECT_EQ(std::vector<std::string>({"#h\n", "#h\na=1\n", "#h\na=1\nb=2\n"}),
            sink.flushed);
}

TEST_F(JavaPropertiesTest, StoreWritesTextsVerbatim) {
  Preset(" k ", "\" v\"");
  EXPECT_EQ(" k =\" v\"\n", StoreText());
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

TEST_F(JavaPropertiesTest, StoreThenLoadReproducesTableOfCleanTexts) {
  Preset("", "empty key");
  Preset("key one", "a \"b\" c");
  Preset("k", "");
  Preset("path", "b=c;[d]");
  const std::string text = StoreText("hdr");
  JavaProperties reloaded;
  std::istringstream in(text);
  EXPECT_TRUE(reloaded.Load(in));
  std::ostringstream out;
  EXPECT_TRUE(reloaded.Store(out, "hdr"));
  EXPECT_EQ(text, out.str());
}

// Loads the text that Store writes for key=value into a new table and
// returns the value read back.
std::string ReloadedValue(JavaProperties* properties, const std::string& key) {
  std::ostringstream out;
  properties->Store(out, "");
  JavaProperties reloaded;
  std::istringstream in(out.str());
  reloaded.Load(in);
  return reloaded.GetProperty(key);
}

TEST_F(JavaPropertiesTest, StoreThenLoadDropsLeadingBlankOfValue) {
  Preset("k", " v");
  EXPECT_EQ("v", ReloadedValue(&m_properties, "k"));
}

TEST_F(JavaPropertiesTest, StoreThenLoadDropsQuotesOfValue) {
  Preset("k", "\"ab\"");
  EXPECT_EQ("ab", ReloadedValue(&m_properties, "k"));
}

TEST_F(JavaPropertiesTest, StoreThenLoadCutsValueAtHash) {
  Preset("k", "a#b");
  EXPECT_EQ("a", ReloadedValue(&m_properties, "k"));
}

TEST_F(JavaPropertiesTest, StoreOnBadStreamReturnsFalseAndWritesNothing) {
  Preset("a", "1");
  std::ostringstream out;
  out.setstate(std::ios::badbit);
  EXPECT_FALSE(m_properties.Store(out, "h"));
  EXPECT_EQ("", out.str());
}

TEST_F(JavaPropertiesTest, StoreOnFailedStreamReturnsFalse) {
  Preset("a", "1");
  std::ostringstream out;
  out.setstate(std::ios::failbit);
  EXPECT_FALSE(m_properties.Store(out, "h"));
  EXPECT_EQ("", out.str());
}

TEST_F(JavaPropertiesTest, StoreReturnsFalseWhenWritingFails) {
  Preset("a", "1");
  RefusingSink sink;
  std::ostream out(&sink);
  EXPECT_FALSE(m_properties.Store(out, ""));
}

TEST_F(JavaPropertiesTest, StoreToFileWritesWholeText) {
  TempDir dir;
  Preset("b", "2");
  Preset("a", "1");
  EXPECT_TRUE(m_properties.Store(dir.File("p.properties"), "hdr"));
  EXPECT_EQ("#hdr\na=1\nb=2\n", ReadFile(dir.File("p.properties")));
}

TEST_F(JavaPropertiesTest, StoreToFileReplacesItsContent) {
  TempDir dir;
  WriteFile(dir.File("p.properties"), "old=1\nolder=2\noldest=3\n");
  Preset("a", "1");
  EXPECT_TRUE(m_properties.Store(dir.File("p.properties"), ""));
  EXPECT_EQ("a=1\n", ReadFile(dir.File("p.properties")));
}

TEST_F(JavaPropertiesTest, StoreToDirectoryReturnsFalse) {
  TempDir dir;
  Preset("a", "1");
  EXPECT_FALSE(m_properties.Store(dir.path(), ""));
}

// The device opens for writing, but every write fails for lack of space.
TEST_F(JavaPropertiesTest, StoreToFullDeviceReturnsFalseWithoutThrowing) {
  Preset("a", "1");
  EXPECT_FALSE(m_properties.Store("/dev/full", "header"));
}

TEST_F(JavaPropertiesTest, StoreBelowRegularFileReturnsFalse) {
  TempDir dir;
  WriteFile(dir.File("plain"), "x");
  Preset("a", "1");
  EXPECT_FALSE(m_properties.Store(dir.File("plain") + "/p.properties", ""));
  EXPECT_EQ("x", ReadFile(dir.File("plain")));
}

TEST_F(JavaPropertiesTest, LoadFromFileMergesItsEntries) {
  TempDir dir;
  WriteFile(dir.File("p.properties"), "#hdr\nb=2\na=1\n");
  Preset("c", "3");
  EXPECT_TRUE(m_properties.Load(dir.File("p.properties")));
  EXPECT_EQ("a=1\nb=2\nc=3\n", StoreText());
  EXPECT_EQ(Messages({"Loading 'b' to '2'", "Loading 'a' to '1'"}), Logged());
}

TEST_F(JavaPropertiesTest, LoadOfMissingFileReturnsFalseAndChangesNothing) {
  TempDir dir;
  Preset("a", "1");
  EXPECT_FALSE(m_properties.Load(dir.File("missing")));
  EXPECT_EQ("a=1\n", StoreText());
  EXPECT_EQ(Messages(), Logged());
}

TEST_F(JavaPropertiesTest, LoadBelowRegularFileReturnsFalseAndChangesNothing) {
  TempDir dir;
  WriteFile(dir.File("plain"), "b=2\n");
  Preset("a", "1");
  EXPECT_FALSE(m_properties.Load(dir.File("plain") + "/p.properties"));
  EXPECT_EQ("a=1\n", StoreText());
}

TEST_F(JavaPropertiesTest, SetPropertyLogsAndOverwrites) {
  m_properties.SetProperty("k", "1");
  m_properties.SetProperty("k", "2");
  EXPECT_EQ("k=2\n", StoreText());
  EXPECT_EQ(Messages({"Setting 'k' to '1'", "Setting 'k' to '2'"}), Logged());
}

TEST_F(JavaPropertiesTest, SetPropertyChecksNothing) {
  Preset("a=b\n", "#");
  EXPECT_EQ("#", m_properties.GetProperty("a=b\n"));
  EXPECT_EQ("a=b\n=#\n", StoreText());
}

TEST_F(JavaPropertiesTest, GetPropertyCopiesValueOfPresentKey) {
  Preset("k", "v");
  std::string value = "old";
  EXPECT_TRUE(m_properties.GetProperty("k", value));
  EXPECT_EQ("v", value);
  EXPECT_EQ(Messages(), Logged());
}

TEST_F(JavaPropertiesTest, GetPropertyOfAbsentKeyLogsAndLeavesValueAlone) {
  Preset("k", "v");
  std::string value = "old";
  EXPECT_FALSE(m_properties.GetProperty("x", value));
  EXPECT_EQ("old", value);
  EXPECT_EQ(Messages({"Property 'x' was not found"}), Logged());
}

TEST_F(JavaPropertiesTest, GetPropertyOfAbsentKeyReturnsEmptyText) {
  EXPECT_EQ("", m_properties.GetProperty("x"));
  EXPECT_EQ(Messages({"Property 'x' was not found"}), Logged());
}

TEST_F(JavaPropertiesTest, ClearRemovesEveryEntry) {
  Preset("a", "1");
  Preset("b", "2");
  m_properties.Clear();
  EXPECT_EQ("", StoreText());
}

}  // namespace
