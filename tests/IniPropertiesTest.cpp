// IniPropertiesTest.cpp - what the INI store IniProperties alone does:
// sections read whole and replacing those of the same name, the empty
// section name, sections in byte order, a header that reads back before any
// section, and the unused flat table of its base class. What both stores do
// is tested in StoreFlavoursTest.cpp, how lines are read by the cases of
// tests/format.

#include "IniProperties.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "JavaProperties.h"
#include "support/FlavourFixtures.h"
#include "support/Flavours.h"
#include "support/TempDir.h"

namespace {

using test_support::Messages;
using test_support::TempDir;
using test_support::WriteFile;

class IniPropertiesTest : public test_support::StoreFixture<test_support::Ini> {
 protected:
  // Sets section's key to value and forgets the log line that this makes.
  void PresetIn(const std::string& section, const std::string& key,
                const std::string& value) {
    m_properties.SetProperty(section, key, value);
    m_log.Clear();
  }
};

// Sections read from a text.

TEST_F(IniPropertiesTest, SectionReadReplacesStoredSectionAndKeepsOthers) {
  PresetIn("s", "z", "0");
  PresetIn("t", "u", "1");
  EXPECT_TRUE(LoadText("; note\n[s]\nx=1\n"));
  EXPECT_EQ("[s]\nx=1\n\n[t]\nu=1\n\n", StoreText());
  EXPECT_EQ(
      Messages({"Line 2 redefines a section", "Loading 'x' of 's' to '1'"}),
      Logged());
}

TEST_F(IniPropertiesTest, KeyOfEarlierOccurrenceOrStoreIsNotRedefined) {
  PresetIn("s", "a", "0");
  EXPECT_TRUE(LoadText("[s]\na=1\n[s]\na=2\n"));
  EXPECT_EQ(
      Messages({"Line 1 redefines a section", "Loading 'a' of 's' to '1'",
                "Line 3 redefines a section", "Loading 'a' of 's' to '2'"}),
      Logged());
}

TEST_F(IniPropertiesTest, LoadFromFileKeepsSectionsThatFileDoesNotName) {
  TempDir dir;
  WriteFile(dir.File("p.ini"), ";hdr\n[t]\nb=2\n\n[s]\na=1\n\n");
  PresetIn("u", "c", "3");
  EXPECT_TRUE(m_properties.Load(dir.File("p.ini")));
  EXPECT_EQ("[s]\na=1\n\n[t]\nb=2\n\n[u]\nc=3\n\n", StoreText());
}

// Sections written.

TEST_F(IniPropertiesTest, EmptySectionNameIsWrittenAsBareBrackets) {
  PresetIn("", "k", "v");
  EXPECT_EQ("[]\nk=v\n\n", StoreText());
}

TEST_F(IniPropertiesTest, StoreWritesSectionsAndKeysInByteOrder) {
  PresetIn("a", "ab", "3");
  PresetIn("a", "a", "2");
  PresetIn("a", "B", "1");
  PresetIn("B", "k", "0");
  EXPECT_EQ("[B]\nk=0\n\n[a]\nB=1\na=2\nab=3\n\n", StoreText());
}

TEST_F(IniPropertiesTest, StoreWritesSectionNameVerbatim) {
  PresetIn(" s ", " k ", "\" v\"");
  EXPECT_EQ("[ s ]\n k =\" v\"\n\n", StoreText());
}

TEST_F(IniPropertiesTest, HeaderLinesAfterLineFeedAreReadBeforeAnySection) {
  PresetIn("s", "a", "1");
  EXPECT_EQ(";x\nb=2\n[s]\na=1\n\n", StoreText("x\nb=2"));
  EXPECT_EQ("[s]\na=1\n\n", StoredAfterReload("x\nb=2"));
}

// Section names without blanks around them, quotes around them or ';' read
// back as they were written, also with brackets inside, and so do sections
// without entries.
TEST_F(IniPropertiesTest, StoreThenLoadReproducesSectionsOfCleanNames) {
  LoadText("[empty]\n");
  PresetIn("a]b", "k", "v");
  PresetIn("my section", "k", "v");
  EXPECT_EQ(StoreText(), StoredAfterReload("hdr"));
}

TEST_F(IniPropertiesTest, GetPropertyOfMissingSectionLogsAndLeavesValueAlone) {
  PresetIn("s", "k", "v");
  std::string value = "old";
  EXPECT_FALSE(m_properties.GetProperty("t", "k", value));
  EXPECT_EQ("old", value);
  EXPECT_EQ(Messages({"Property 'k' at Section 't' was not found"}), Logged());
}

TEST_F(IniPropertiesTest, FlatTableOfBaseClassStaysEmpty) {
  PresetIn("s", "a", "1");
  LoadText("[t]\nb=2\n");
  JavaProperties& flat = m_properties;
  std::ostringstream out;
  EXPECT_TRUE(flat.Store(out, ""));
  EXPECT_EQ("", out.str());
}

}  // namespace
