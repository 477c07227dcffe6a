// StoreFlavoursTest.cpp - what JavaProperties and IniProperties both do:
// loading from streams and files, writing, round trips and table access,
// tested once over the traits of each flavour. How single lines of a file are
// read is tested by the golden cases of tests/format (FileFormatTest.cpp);
// what one store alone does is in JavaPropertiesTest.cpp and
// IniPropertiesTest.cpp.

#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <sstream>
#include <string>
#include <vector>

#include "PropertySafety.h"
#include "support/AssertionMessage.h"
#include "support/FlavourFixtures.h"
#include "support/Flavours.h"
#include "support/StoreTesting.h"
#include "support/TempDir.h"

namespace {

using test_support::FailingSource;
using test_support::FlavourNames;
using test_support::Flavours;
using test_support::FlushRecorder;
using test_support::LineOfLength;
using test_support::Messages;
using test_support::ReadFile;
using test_support::RefusingSink;
using test_support::TempDir;
using test_support::WriteFile;

template <typename F>
class StoreFlavoursTest : public test_support::StoreFixture<F> {
 protected:
  // "Error reading Line <n>" for the n-th line of a Body() text.
  static std::string ReadErrorAtBodyLine(int n) {
    return "Error reading Line " + std::to_string(F::kFirstBodyLine + n - 1);
  }
};

TYPED_TEST_SUITE(StoreFlavoursTest, Flavours, FlavourNames);

template <typename F>
class StoreFlavoursDeathTest : public StoreFlavoursTest<F> {};

TYPED_TEST_SUITE(StoreFlavoursDeathTest, Flavours, FlavourNames);

// Every beginning of text that ends at a line feed, shortest first.
std::vector<std::string> LinePrefixes(const std::string& text) {
  std::vector<std::string> prefixes;
  for (size_t feed = text.find('\n'); feed != std::string::npos;
       feed = text.find('\n', feed + 1)) {
    prefixes.push_back(text.substr(0, feed + 1));
  }
  return prefixes;
}

// Assertions and lines that are too long.

TYPED_TEST(StoreFlavoursDeathTest, LoadWithEmptyFileNameAborts) {
  EXPECT_DEATH(this->m_properties.Load(""),
               test_support::AssertionRegex(TypeParam::kLoadWithoutFileName));
}

TYPED_TEST(StoreFlavoursDeathTest, StoreWithEmptyFileNameAborts) {
  EXPECT_DEATH(this->m_properties.Store("", "h"),
               test_support::AssertionRegex(TypeParam::kStoreWithoutFileName));
}

TYPED_TEST(StoreFlavoursDeathTest, LoadDoesNotReturnOnLineOf512Characters) {
  std::istringstream in(TypeParam::Body(LineOfLength(512) + "\na=1\n"));
  EXPECT_EXIT(
      {
        alarm(1);
        PropertySafety::SetLongLines(false);  // Also in a library built not to.
        this->m_properties.Load(in);
      },
      testing::KilledBySignal(SIGALRM), "");
}

// Loading from streams.

TYPED_TEST(StoreFlavoursTest, NewStoreWritesNothing) {
  EXPECT_EQ("", this->StoreText());
}

TYPED_TEST(StoreFlavoursTest, FinalLineFeedIsFollowedByOneMoreRead) {
  std::istringstream withLineFeed(TypeParam::Body("a=1\n"));
  std::istringstream withoutLineFeed(TypeParam::Body("a=1"));
  EXPECT_TRUE(this->m_properties.Load(withLineFeed));
  EXPECT_TRUE(this->m_properties.Load(withoutLineFeed));
  EXPECT_EQ(std::ios::eofbit | std::ios::failbit, withLineFeed.rdstate());
  EXPECT_EQ(std::ios::eofbit, withoutLineFeed.rdstate());
}

TYPED_TEST(StoreFlavoursTest, ReadAfterFinalLineFeedIsCountedAsLine) {
  FailingSource source(TypeParam::Body("a=1\n"));
  std::istream in(&source);
  EXPECT_FALSE(this->m_properties.Load(in));
  EXPECT_EQ(
      Messages({TypeParam::Loading("a", "1"), this->ReadErrorAtBodyLine(2)}),
      this->Logged());
}

TYPED_TEST(StoreFlavoursTest, EmptyStreamReturnsTrueAndLeavesStoreUnchanged) {
  this->Preset("x", "1");
  EXPECT_TRUE(this->LoadText(""));
  EXPECT_EQ(TypeParam::Written("", "x=1\n"), this->StoreText());
  EXPECT_EQ(Messages(), this->Logged());
}

TYPED_TEST(StoreFlavoursTest, LoadOnFailedStreamReturnsFalseAndReadsNothing) {
  typedef TypeParam F;
  this->Preset("x", "1");
  const std::string text = F::Body("a=1\n");
  std::istringstream in(text);
  in.setstate(std::ios::failbit);
  EXPECT_FALSE(this->m_properties.Load(in));
  EXPECT_EQ(F::Written("", "x=1\n"), this->StoreText());
  EXPECT_EQ(Messages(), this->Logged());
  in.clear();
  std::string firstLine;
  std::getline(in, firstLine);
  EXPECT_EQ(text.substr(0, text.find('\n')), firstLine);
}

TYPED_TEST(StoreFlavoursTest, LoadOnStreamAtEndOfFileReturnsFalse) {
  std::istringstream in(TypeParam::Body("a=1\n"));
  in.setstate(std::ios::eofbit);
  EXPECT_FALSE(this->m_properties.Load(in));
  EXPECT_EQ("", this->StoreText());
}

// The line of the error and the entries read before it (in the INI store:
// those of the section not yet ended) are kept.
TYPED_TEST(StoreFlavoursTest, ReadErrorIsLoggedKeepsItsLineAndStopsReading) {
  typedef TypeParam F;
  FailingSource source(F::Body("a=1\nb=2"), "\nc=3\n");
  std::istream in(&source);
  EXPECT_FALSE(this->m_properties.Load(in));
  EXPECT_EQ(F::Written("", "a=1\nb=2\n"), this->StoreText());
  EXPECT_EQ(Messages({F::Loading("a", "1"), this->ReadErrorAtBodyLine(2),
                      F::Loading("b", "2")}),
            this->Logged());
}

// Writing to streams.

TYPED_TEST(StoreFlavoursTest, StoreWritesHeaderAsCommentLineBeforeEntries) {
  this->Preset("a", "1");
  EXPECT_EQ(TypeParam::Written("made by x", "a=1\n"),
            this->StoreText("made by x"));
}

TYPED_TEST(StoreFlavoursTest, StoreWithHeaderOfEmptyStoreWritesHeaderOnly) {
  EXPECT_EQ(TypeParam::kComment + std::string("hdr\n"), this->StoreText("hdr"));
}

TYPED_TEST(StoreFlavoursTest, StoreWritesKeysInByteOrder) {
  this->Preset("ab", "3");
  this->Preset("\xe4", "4");
  this->Preset("a", "2");
  this->Preset("B", "1");
  EXPECT_EQ(TypeParam::Written("", "B=1\na=2\nab=3\n\xe4=4\n"),
            this->StoreText());
}

TYPED_TEST(StoreFlavoursTest, StoreFlushesAfterEveryLine) {
  this->Preset("a", "1");
  this->Preset("b", "2");
  FlushRecorder sink;
  std::ostream out(&sink);
  EXPECT_TRUE(this->m_properties.Store(out, "h"));
  EXPECT_EQ(LinePrefixes(TypeParam::Written("h", "a=1\nb=2\n")), sink.flushed);
}

TYPED_TEST(StoreFlavoursTest, StoreWritesTextsVerbatim) {
  this->Preset(" k ", "\" v\"");
  EXPECT_EQ(TypeParam::Written("", " k =\" v\"\n"), this->StoreText());
}

TYPED_TEST(StoreFlavoursTest, StoreOnBadStreamReturnsFalseAndWritesNothing) {
  this->Preset("a", "1");
  std::ostringstream out;
  out.setstate(std::ios::badbit);
  EXPECT_FALSE(this->m_properties.Store(out, "h"));
  EXPECT_EQ("", out.str());
}

TYPED_TEST(StoreFlavoursTest, StoreOnFailedStreamReturnsFalse) {
  this->Preset("a", "1");
  std::ostringstream out;
  out.setstate(std::ios::failbit);
  EXPECT_FALSE(this->m_properties.Store(out, "h"));
  EXPECT_EQ("", out.str());
}

TYPED_TEST(StoreFlavoursTest, StoreReturnsFalseWhenWritingFails) {
  this->Preset("a", "1");
  RefusingSink sink;
  std::ostream out(&sink);
  EXPECT_FALSE(this->m_properties.Store(out, ""));
}

// Round trips.

// Keys and values without blanks around them, quotes around them or a
// comment character read back as they were written.
TYPED_TEST(StoreFlavoursTest, StoreThenLoadReproducesStoreOfCleanTexts) {
  typedef TypeParam F;
  this->Preset("", "empty key");
  this->Preset("key one", "a \"b\" c");
  this->Preset("k", "");
  this->Preset("k[1]", "[v]");
  this->Preset("path", "b=c" + std::string(1, F::kOtherComment) + "[d]");
  this->Preset(F::kOtherComment + std::string("key"), "x=y");
  EXPECT_EQ(this->StoreText(), this->StoredAfterReload("hdr"));
}

TYPED_TEST(StoreFlavoursTest, StoreThenLoadDropsLeadingBlankOfValue) {
  this->Preset("k", " v");
  EXPECT_EQ(TypeParam::Written("", "k=v\n"), this->StoredAfterReload());
}

TYPED_TEST(StoreFlavoursTest, StoreThenLoadDropsQuotesOfValue) {
  this->Preset("k", "\"ab\"");
  EXPECT_EQ(TypeParam::Written("", "k=ab\n"), this->StoredAfterReload());
}

TYPED_TEST(StoreFlavoursTest, StoreThenLoadCutsValueAtCommentCharacter) {
  this->Preset("k", "a" + std::string(1, TypeParam::kComment) + "b");
  EXPECT_EQ(TypeParam::Written("", "k=a\n"), this->StoredAfterReload());
}

// Files.

TYPED_TEST(StoreFlavoursTest, StoreToFileWritesWholeText) {
  TempDir dir;
  this->Preset("b", "2");
  this->Preset("a", "1");
  EXPECT_TRUE(this->m_properties.Store(dir.File("p"), "hdr"));
  EXPECT_EQ(TypeParam::Written("hdr", "a=1\nb=2\n"), ReadFile(dir.File("p")));
}

TYPED_TEST(StoreFlavoursTest, StoreToFileReplacesItsContent) {
  TempDir dir;
  WriteFile(dir.File("p"), TypeParam::Body("old=1\nolder=2\noldest=3\n"));
  this->Preset("a", "1");
  EXPECT_TRUE(this->m_properties.Store(dir.File("p"), ""));
  EXPECT_EQ(TypeParam::Written("", "a=1\n"), ReadFile(dir.File("p")));
}

TYPED_TEST(StoreFlavoursTest, StoreToDirectoryReturnsFalse) {
  TempDir dir;
  this->Preset("a", "1");
  EXPECT_FALSE(this->m_properties.Store(dir.path(), ""));
}

// The device opens for writing, but every write fails for lack of space.
TYPED_TEST(StoreFlavoursTest, StoreToFullDeviceReturnsFalseWithoutThrowing) {
  this->Preset("a", "1");
  EXPECT_FALSE(this->m_properties.Store("/dev/full", "header"));
}

TYPED_TEST(StoreFlavoursTest, StoreBelowRegularFileReturnsFalse) {
  TempDir dir;
  WriteFile(dir.File("plain"), "x");
  this->Preset("a", "1");
  EXPECT_FALSE(this->m_properties.Store(dir.File("plain") + "/p", ""));
  EXPECT_EQ("x", ReadFile(dir.File("plain")));
}

TYPED_TEST(StoreFlavoursTest, LoadFromFileReadsEveryEntry) {
  typedef TypeParam F;
  TempDir dir;
  WriteFile(dir.File("p"),
            F::kComment + std::string("hdr\n") + F::Body("b=2\na=1\n"));
  EXPECT_TRUE(this->m_properties.Load(dir.File("p")));
  EXPECT_EQ(F::Written("", "a=1\nb=2\n"), this->StoreText());
  EXPECT_EQ(Messages({F::Loading("b", "2"), F::Loading("a", "1")}),
            this->Logged());
}

TYPED_TEST(StoreFlavoursTest, LoadOfMissingFileReturnsFalseAndChangesNothing) {
  TempDir dir;
  this->Preset("a", "1");
  EXPECT_FALSE(this->m_properties.Load(dir.File("missing")));
  EXPECT_EQ(TypeParam::Written("", "a=1\n"), this->StoreText());
  EXPECT_EQ(Messages(), this->Logged());
}

TYPED_TEST(StoreFlavoursTest,
           LoadBelowRegularFileReturnsFalseAndChangesNothing) {
  TempDir dir;
  WriteFile(dir.File("plain"), TypeParam::Body("b=2\n"));
  this->Preset("a", "1");
  EXPECT_FALSE(this->m_properties.Load(dir.File("plain") + "/p"));
  EXPECT_EQ(TypeParam::Written("", "a=1\n"), this->StoreText());
}

// Table access.

TYPED_TEST(StoreFlavoursTest, SetPropertyLogsAndOverwrites) {
  typedef TypeParam F;
  F::Put(&this->m_properties, "k", "1");
  F::Put(&this->m_properties, "k", "2");
  EXPECT_EQ(F::Written("", "k=2\n"), this->StoreText());
  EXPECT_EQ(Messages({F::Setting("k", "1"), F::Setting("k", "2")}),
            this->Logged());
}

TYPED_TEST(StoreFlavoursTest, SetPropertyChecksNothing) {
  this->Preset("a=b\n", "#");
  EXPECT_EQ("#", TypeParam::Value(this->m_properties, "a=b\n"));
  EXPECT_EQ(TypeParam::Written("", "a=b\n=#\n"), this->StoreText());
}

TYPED_TEST(StoreFlavoursTest, GetPropertyCopiesValueOfPresentKey) {
  this->Preset("k", "v");
  std::string value = "old";
  EXPECT_TRUE(TypeParam::Lookup(this->m_properties, "k", value));
  EXPECT_EQ("v", value);
  EXPECT_EQ(Messages(), this->Logged());
}

TYPED_TEST(StoreFlavoursTest, GetPropertyOfAbsentKeyLogsAndLeavesValueAlone) {
  this->Preset("k", "v");
  std::string value = "old";
  EXPECT_FALSE(TypeParam::Lookup(this->m_properties, "x", value));
  EXPECT_EQ("old", value);
  EXPECT_EQ(Messages({TypeParam::NotFound("x")}), this->Logged());
}

TYPED_TEST(StoreFlavoursTest, GetPropertyOfAbsentKeyReturnsEmptyText) {
  this->Preset("k", "v");
  EXPECT_EQ("", TypeParam::Value(this->m_properties, "x"));
  EXPECT_EQ(Messages({TypeParam::NotFound("x")}), this->Logged());
}

TYPED_TEST(StoreFlavoursTest, ClearRemovesEveryEntry) {
  this->Preset("a", "1");
  this->Preset("b", "2");
  this->m_properties.Clear();
  EXPECT_EQ("", this->StoreText());
}

}  // namespace
