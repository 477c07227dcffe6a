// IniPropertiesTest.cpp - reading, writing, section merging and store access
// of the sectioned INI store IniProperties.

#include "IniProperties.h"

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

// The assertion message of Src/IniProperties.cpp for line and function.
std::string AssertionRegex(int line, const std::string& function) {
  return test_support::AssertionRegex("Src/IniProperties.cpp", line, function,
                                      "!fileName.empty()");
}

// The whole text that properties writes with header.
std::string StoredText(IniProperties* properties,
                       const std::string& header = "") {
  std::ostringstream out;
  EXPECT_TRUE(properties->Store(out, header));
  return out.str();
}

class IniPropertiesTest : public testing::Test {
 protected:
  bool LoadText(const std::string& text) {
    std::istringstream in(text);
    return m_properties.Load(in);
  }

  // The whole text that Store writes; the store is expected to succeed.
  std::string StoreText(const std::string& header = "") {
    return StoredText(&m_properties, header);
  }

  // Everything logged so far; every entry is expected at level 1.
  Messages Logged() const { return test_support::MessagesAllAtLevel(m_log, 1); }

  // Sets section's key to value and forgets the log line that this makes.
  void Preset(const std::string& section, const std::string& key,
              const std::string& value) {
    m_properties.SetProperty(section, key, value);
    m_log.Clear();
  }

  // Writes the store, loads that text into a new store and returns what the
  // new store writes.
  std::string StoredAfterReload(const std::string& header = "") {
    IniProperties reloaded;
    std::istringstream in(StoreText(header));
    EXPECT_TRUE(reloaded.Load(in));
    return StoredText(&reloaded);
  }

  LogRecorder m_log;
  IniProperties m_properties;
};

class IniPropertiesDeathTest : public IniPropertiesTest {};

TEST_F(IniPropertiesDeathTest, LoadWithEmptyFileNameAborts) {
  EXPECT_DEATH(m_properties.Load(""),
               AssertionRegex(34,
                              "bool IniProperties::Load(const "
                              "propstring&)"));
}

TEST_F(IniPropertiesDeathTest, StoreWithEmptyFileNameAborts) {
  EXPECT_DEATH(m_properties.Store("", "h"),
               AssertionRegex(124,
                              "bool IniProperties::Store(const "
                              "propstring&, const propstring&)"));
}

TEST_F(IniPropertiesDeathTest, LoadDoesNotReturnOnLineOf512Characters) {
  std::istringstream in("[s]\n" + LineOfLength(512) + "\na=1\n");
  EXPECT_EXIT(
      {
        alarm(1);
        m_properties.Load(in);
      },
      testing::KilledBySignal(SIGALRM), "");
}

TEST_F(IniPropertiesTest, NewStoreWritesNothing) { EXPECT_EQ("", StoreText()); }

TEST_F(IniPropertiesTest, LastLineWithoutLineFeedIsRead) {
  EXPECT_TRUE(LoadText("[s]\na=1"));
  EXPECT_EQ("[s]\na=1\n\n", StoreText());
}

TEST_F(IniPropertiesTest, FinalLineFeedIsFollowedByOneMoreRead) {
  std::istringstream withLineFeed("[s]\na=1\n");
  std::istringstream withoutLineFeed("[s]\na=1");
  EXPECT_TRUE(m_properties.Load(withLineFeed));
  EXPECT_TRUE(m_properties.Load(withoutLineFeed));
  EXPECT_EQ(std::ios::eofbit | std::ios::failbit, withLineFeed.rdstate());
  EXPECT_EQ(std::ios::eofbit, withoutLineFeed.rdstate());
}

TEST_F(IniPropertiesTest, ReadAfterFinalLineFeedIsCountedAsLine) {
  FailingSource source("[s]\n");
  std::istream in(&source);
  EXPECT_FALSE(m_properties.Load(in));
  EXPECT_EQ(Messages({"Error reading Line 2"}), Logged());
}

TEST_F(IniPropertiesTest, EmptyStreamReturnsTrueAndLeavesStoreUnchanged) {
  Preset("s", "a", "1");
  EXPECT_TRUE(LoadText(""));
  EXPECT_EQ("[s]\na=1\n\n", StoreText());
  EXPECT_EQ(Messages(), Logged());
}

TEST_F(IniPropertiesTest, EntryBeforeFirstHeaderIsLoggedAndDropped) {
  EXPECT_TRUE(LoadText("a=1\n[s]\nb=2\n"));
  EXPECT_EQ("[s]\nb=2\n\n", StoreText());
  EXPECT_EQ(Messages({"Loading 'a' of '' to '1'", "Loading 'b' of 's' to '2'"}),
            Logged());
}

TEST_F(IniPropertiesTest, HeaderKeepsInnerBlanksAndLosesOuterOnesAndComment) {
  LoadText("  [ s ]  ;note\nk=1\n");
  EXPECT_EQ("1", m_properties.GetProperty(" s ", "k"));
  EXPECT_EQ("[ s ]\nk=1\n\n", StoreText());
}

TEST_F(IniPropertiesTest, SectionNameRunsToLastClosingBracket) {
  LoadText("[a]b]\nk=1\n");
  EXPECT_EQ("1", m_properties.GetProperty("a]b", "k"));
}

TEST_F(IniPropertiesTest, RestOfHeaderLineIsIgnored) {
  LoadText("[s] x=1\n");
  EXPECT_EQ("[s]\n\n", StoreText());
  EXPECT_EQ(Messages(), Logged());
}

TEST_F(IniPropertiesTest, ValueMayHoldBrackets) {
  LoadText("[s]\nx=[1]\n");
  EXPECT_EQ("[1]", m_properties.GetProperty("s", "x"));
}

TEST_F(IniPropertiesTest, HashIsOrdinaryCharacter) {
  LoadText("[s]\n#k=v\n");
  EXPECT_EQ("v", m_properties.GetProperty("s", "#k"));
}

TEST_F(IniPropertiesTest, RepeatedSectionKeepsOnlyItsLastOccurrence) {
  EXPECT_TRUE(LoadText("[s]\nx=1\n[s]\ny=2\n"));
  EXPECT_EQ("[s]\ny=2\n\n", StoreText());
  EXPECT_EQ(Messages({"Loading 'x' of 's' to '1'", "Line 3 redefines a section",
                      "Loading 'y' of 's' to '2'"}),
            Logged());
}

TEST_F(IniPropertiesTest, SectionReadReplacesStoredSectionAndKeepsOthers) {
  Preset("s", "z", "0");
  Preset("t", "u", "1");
  EXPECT_TRUE(LoadText("; note\n[s]\nx=1\n"));
  EXPECT_EQ("[s]\nx=1\n\n[t]\nu=1\n\n", StoreText());
  EXPECT_EQ(
      Messages({"Line 2 redefines a section", "Loading 'x' of 's' to '1'"}),
      Logged());
}

TEST_F(IniPropertiesTest, HeaderWithoutEntriesMakesEmptySection) {
  EXPECT_TRUE(LoadText("[e]\n"));
  EXPECT_EQ("[e]\n\n", StoreText());
}

TEST_F(IniPropertiesTest, StoreWritesHeaderSectionEntryAndEmptyLine) {
  Preset("s", "a", "1");
  EXPECT_EQ(";hdr\n[s]\na=1\n\n", StoreText("hdr"));
}

TEST_F(IniPropertiesTest, StoreWithHeaderOfEmptyStoreWritesHeaderOnly) {
  EXPECT_EQ(";hdr\n", StoreText("hdr"));
}

TEST_F(IniPropertiesTest, EmptySectionNameIsWrittenAsBareBrackets) {
  Preset("", "k", "v");
  EXPECT_EQ("[]\nk=v\n\n", StoreText());
}

TEST_F(IniPropertiesTest, EntriesUnderBareBracketsAreDroppedOnReading) {
  Preset("", "k", "v");
  EXPECT_EQ("", StoredAfterReload());
  EXPECT_EQ(Messages({"Loading 'k' of '' to 'v'"}), Logged());
}

TEST_F(IniPropertiesTest, BareBracketsEndPreviousSection) {
  EXPECT_TRUE(LoadText("[s]\na=1\n[]\nb=2\n"));
  EXPECT_EQ("[s]\na=1\n\n", StoreText());
}

TEST_F(IniPropertiesTest, LineOf511CharactersIsKeptWholeAndLogsTooLong) {
  EXPECT_TRUE(LoadText("[s]\n" + LineOfLength(511) + "\n"));
  const std::string value(509, 'x');
  EXPECT_EQ(value, m_properties.GetProperty("s", "k"));
  EXPECT_EQ(
      Messages({"Line 2 is too long", "Loading 'k' of 's' to '" + value + "'"}),
      Logged());
}

TEST_F(IniPropertiesTest, LineOf510CharactersIsNotTooLong) {
  EXPECT_TRUE(LoadText("[s]\n" + LineOfLength(510) + "\n"));
  const std::string value(508, 'x');
  EXPECT_EQ(Messages({"Loading 'k' of 's' to '" + value + "'"}), Logged());
}

TEST_F(IniPropertiesTest, RepeatedKeyLogsLaterLineAndKeepsLaterValue) {
  EXPECT_TRUE(LoadText("[s]\na=1\na=2\n"));
  EXPECT_EQ("2", m_properties.GetProperty("s", "a"));
  EXPECT_EQ(
      Messages({"Loading 'a' of 's' to '1'", "Line 3 redefines a property",
                "Loading 'a' of 's' to '2'"}),
      Logged());
}

TEST_F(IniPropertiesTest, KeyOfEarlierOccurrenceOrStoreIsNotRedefined) {
  Preset("s", "a", "0");
  EXPECT_TRUE(LoadText("[s]\na=1\n[s]\na=2\n"));
  EXPECT_EQ(
      Messages({"Line 1 redefines a section", "Loading 'a' of 's' to '1'",
                "Line 3 redefines a section", "Loading 'a' of 's' to '2'"}),
      Logged());
}

TEST_F(IniPropertiesTest, CarriageReturnsBeforeLineFeedsAreTrimmed) {
  LoadText("[s]\r\na = 1 \r\n");
  EXPECT_EQ("[s]\na=1\n\n", StoreText());
}

TEST_F(IniPropertiesTest, HeaderWithoutClosingBracketTakesRestOfLine) {
  LoadText("[abc\nk=1\n");
  EXPECT_EQ("1", m_properties.GetProperty("abc", "k"));
}

TEST_F(IniPropertiesTest, CommentInsideHeaderEndsSectionName) {
  LoadText("[a;b]\nk=1\n");
  EXPECT_EQ("[a]\nk=1\n\n", StoreText());
}

TEST_F(IniPropertiesTest, QuotesAroundWholeHeaderLineAreRemoved) {
  LoadText("  \"[s]\"  \nk=1\n");
  EXPECT_EQ("1", m_properties.GetProperty("s", "k"));
}

TEST_F(IniPropertiesTest, QuotesInsideBracketsBelongToSectionName) {
  LoadText("[\"s\"]\nk=1\n");
  EXPECT_EQ("1", m_properties.GetProperty("\"s\"", "k"));
}

TEST_F(IniPropertiesTest, QuotedLineWithBracketIsReadAsCleanedEntry) {
  LoadText("[s]\n\"k=[v]\"\n");
  EXPECT_EQ("[v]", m_properties.GetProperty("s", "k"));
}

TEST_F(IniPropertiesTest, SemicolonStartsCommentAnywhereOnLine) {
  LoadText("[s]\n;c=1\na=1 ; note\nk=\"a;b\"\n");
  EXPECT_EQ("[s]\na=1\nk=\"a\n\n", StoreText());
}

TEST_F(IniPropertiesTest, LineWithoutEqualsSignIsIgnored) {
  EXPECT_TRUE(LoadText("[s]\nk\n\n"));
  EXPECT_EQ("[s]\n\n", StoreText());
  EXPECT_EQ(Messages(), Logged());
}

TEST_F(IniPropertiesTest, StoreWritesSectionsAndKeysInByteOrder) {
  Preset("a", "ab", "3");
  Preset("a", "a", "2");
  Preset("a", "B", "1");
  Preset("B", "k", "0");
  EXPECT_EQ("[B]\nk=0\n\n[a]\nB=1\na=2\nab=3\n\n", StoreText());
}

TEST_F(IniPropertiesTest, StoreFlushesAfterEveryLine) {
  Preset("s", "a", "1");
  FlushRecorder sink;
  std::ostream out(&sink);
  EXPECT_TRUE(m_properties.Store(out, "h"));
  EXPECT_EQ(std::vector<std::string>(
                {";h\n", ";h\n[s]\n", ";h\n[s]\na=1\n", ";h\n[s]\na=1\n\n"}),
            sink.flushed);
}

TEST_F(IniPropertiesTest, StoreWritesTextsVerbatim) {
  Preset(" s ", " k ", "\" v\"");
  EXPECT_EQ("[ s ]\n k =\" v\"\n\n", StoreText());
}

TEST_F(IniPropertiesTest, HeaderLinesAfterLineFeedAreReadBeforeAnySection) {
  Preset("s", "a", "1");
  EXPECT_EQ(";x\nb=2\n[s]\na=1\n\n", StoreText("x\nb=2"));
  EXPECT_EQ("[s]\na=1\n\n", StoredAfterReload("x\nb=2"));
}

TEST_F(IniPropertiesTest, StoreThenLoadReproducesStoreOfCleanTexts) {
  LoadText("[empty]\n");
  Preset("a]b", "k[1]", "[v]");
  Preset("my section", "#key one", "a \"b\" c");
  Preset("my section", "", "x=y");
  Preset("s", "k", "");
  EXPECT_EQ(StoreText(), StoredAfterReload("hdr"));
}

TEST_F(IniPropertiesTest, StoreThenLoadDropsLeadingBlankOfValue) {
  Preset("s", "k", " v");
  EXPECT_EQ("[s]\nk=v\n\n", StoredAfterReload());
}

TEST_F(IniPropertiesTest, StoreThenLoadDropsQuotesOfValue) {
  Preset("s", "k", "\"ab\"");
  EXPECT_EQ("[s]\nk=ab\n\n", StoredAfterReload());
}

TEST_F(IniPropertiesTest, LoadOnFailedStreamReturnsFalseAndReadsNothing) {
  Preset("s", "a", "1");
  std::istringstream in("[t]\nb=2\n");
  in.setstate(std::ios::failbit);
  EXPECT_FALSE(m_properties.Load(in));
  EXPECT_EQ("[s]\na=1\n\n", StoreText());
  EXPECT_EQ(Messages(), Logged());
  in.clear();
  std::string firstLine;
  std::getline(in, firstLine);
  EXPECT_EQ("[t]", firstLine);
}

TEST_F(IniPropertiesTest, LoadOnStreamAtEndOfFileReturnsFalse) {
  std::istringstream in("[t]\nb=2\n");
  in.setstate(std::ios::eofbit);
  EXPECT_FALSE(m_properties.Load(in));
  EXPECT_EQ("", StoreText());
}

TEST_F(IniPropertiesTest, ReadErrorKeepsLineAndPendingEntriesAndStops) {
  FailingSource source("[s]\na=1\nb=2", "\n[t]\nc=3\n");
  std::istream in(&source);
  EXPECT_FALSE(m_properties.Load(in));
  EXPECT_EQ("[s]\na=1\nb=2\n\n", StoreText());
  EXPECT_EQ(Messages({"Loading 'a' of 's' to '1'", "Error reading Line 3",
                      "Loading 'b' of 's' to '2'"}),
            Logged());
}

TEST_F(IniPropertiesTest, StoreOnBadStreamReturnsFalseAndWritesNothing) {
  Preset("s", "a", "1");
  std::ostringstream out;
  out.setstate(std::ios::badbit);
  EXPECT_FALSE(m_properties.Store(out, "h"));
  EXPECT_EQ("", out.str());
}

TEST_F(IniPropertiesTest, StoreOnFailedStreamReturnsFalse) {
  Preset("s", "a", "1");
  std::ostringstream out;
  out.setstate(std::ios::failbit);
  EXPECT_FALSE(m_properties.Store(out, "h"));
  EXPECT_EQ("", out.str());
}

TEST_F(IniPropertiesTest, StoreReturnsFalseWhenWritingFails) {
  Preset("s", "a", "1");
  RefusingSink sink;
  std::ostream out(&sink);
  EXPECT_FALSE(m_properties.Store(out, ""));
}

TEST_F(IniPropertiesTest, StoreToFileWritesWholeText) {
  TempDir dir;
  Preset("t", "b", "2");
  Preset("s", "a", "1");
  EXPECT_TRUE(m_properties.Store(dir.File("p.ini"), "hdr"));
  EXPECT_EQ(";hdr\n[s]\na=1\n\n[t]\nb=2\n\n", ReadFile(dir.File("p.ini")));
}

TEST_F(IniPropertiesTest, StoreToFileReplacesItsContent) {
  TempDir dir;
  WriteFile(dir.File("p.ini"), "[old]\nold=1\nolder=2\noldest=3\n\n");
  Preset("s", "a", "1");
  EXPECT_TRUE(m_properties.Store(dir.File("p.ini"), ""));
  EXPECT_EQ("[s]\na=1\n\n", ReadFile(dir.File("p.ini")));
}

TEST_F(IniPropertiesTest, StoreToDirectoryReturnsFalse) {
  TempDir dir;
  Preset("s", "a", "1");
  EXPECT_FALSE(m_properties.Store(dir.path(), ""));
}

// The device opens for writing, but every write fails for lack of space.
TEST_F(IniPropertiesTest, StoreToFullDeviceReturnsFalseWithoutThrowing) {
  Preset("s", "a", "1");
  EXPECT_FALSE(m_properties.Store("/dev/full", "header"));
}

TEST_F(IniPropertiesTest, StoreBelowRegularFileReturnsFalse) {
  TempDir dir;
  WriteFile(dir.File("plain"), "x");
  Preset("s", "a", "1");
  EXPECT_FALSE(m_properties.Store(dir.File("plain") + "/p.ini", ""));
  EXPECT_EQ("x", ReadFile(dir.File("plain")));
}

TEST_F(IniPropertiesTest, LoadFromFileMergesItsSections) {
  TempDir dir;
  WriteFile(dir.File("p.ini"), ";hdr\n[t]\nb=2\n\n[s]\na=1\n\n");
  Preset("u", "c", "3");
  EXPECT_TRUE(m_properties.Load(dir.File("p.ini")));
  EXPECT_EQ("[s]\na=1\n\n[t]\nb=2\n\n[u]\nc=3\n\n", StoreText());
  EXPECT_EQ(
      Messages({"Loading 'b' of 't' to '2'", "Loading 'a' of 's' to '1'"}),
      Logged());
}

TEST_F(IniPropertiesTest, LoadOfMissingFileReturnsFalseAndChangesNothing) {
  TempDir dir;
  Preset("s", "a", "1");
  EXPECT_FALSE(m_properties.Load(dir.File("missing")));
  EXPECT_EQ("[s]\na=1\n\n", StoreText());
  EXPECT_EQ(Messages(), Logged());
}

TEST_F(IniPropertiesTest, LoadBelowRegularFileReturnsFalseAndChangesNothing) {
  TempDir dir;
  WriteFile(dir.File("plain"), "[t]\nb=2\n");
  Preset("s", "a", "1");
  EXPECT_FALSE(m_properties.Load(dir.File("plain") + "/p.ini"));
  EXPECT_EQ("[s]\na=1\n\n", StoreText());
}

TEST_F(IniPropertiesTest, SetPropertyLogsKeySectionValueAndOverwrites) {
  m_properties.SetProperty("s", "k", "1");
  m_properties.SetProperty("s", "k", "2");
  EXPECT_EQ("[s]\nk=2\n\n", StoreText());
  EXPECT_EQ(
      Messages({"Setting 'k' of 's' to '1'", "Setting 'k' of 's' to '2'"}),
      Logged());
}

TEST_F(IniPropertiesTest, GetPropertyCopiesValueOfPresentKey) {
  Preset("s", "k", "v");
  std::string value = "old";
  EXPECT_TRUE(m_properties.GetProperty("s", "k", value));
  EXPECT_EQ("v", value);
  EXPECT_EQ(Messages(), Logged());
}

TEST_F(IniPropertiesTest, GetPropertyOfMissingKeyLogsAndLeavesValueAlone) {
  Preset("s", "k", "v");
  std::string value = "old";
  EXPECT_FALSE(m_properties.GetProperty("s", "x", value));
  EXPECT_EQ("old", value);
  EXPECT_EQ(Messages({"Property 'x' at Section 's' was not found"}), Logged());
}

TEST_F(IniPropertiesTest, GetPropertyOfMissingSectionLogsAndLeavesValueAlone) {
  Preset("s", "k", "v");
  std::string value = "old";
  EXPECT_FALSE(m_properties.GetProperty("t", "k", value));
  EXPECT_EQ("old", value);
  EXPECT_EQ(Messages({"Property 'k' at Section 't' was not found"}), Logged());
}

TEST_F(IniPropertiesTest, GetPropertyOfAbsentKeyReturnsEmptyText) {
  Preset("s", "k", "v");
  EXPECT_EQ("", m_properties.GetProperty("s", "x"));
  EXPECT_EQ(Messages({"Property 'x' at Section 's' was not found"}), Logged());
}

TEST_F(IniPropertiesTest, ClearRemovesEverySection) {
  Preset("s", "a", "1");
  Preset("t", "b", "2");
  m_properties.Clear();
  EXPECT_EQ("", StoreText());
}

TEST_F(IniPropertiesTest, FlatTableOfBaseClassStaysEmpty) {
  Preset("s", "a", "1");
  LoadText("[t]\nb=2\n");
  JavaProperties& flat = m_properties;
  std::ostringstream out;
  EXPECT_TRUE(flat.Store(out, ""));
  EXPECT_EQ("", out.str());
}

}  // namespace
