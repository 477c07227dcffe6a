// PropertyLayoutKeeperTest.cpp - layout-keeping edits of property files:
// golden cases byte for byte for each rule (shared ones once for both
// formats), and randomized files and tables (fixed seeds) checking that an
// edit reads as the normalised text does and changes only the lines it may.

#include "PropertyLayoutKeeper.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "IniProperties.h"
#include "IniPropertiesFormat.h"
#include "JavaProperties.h"
#include "JavaPropertiesFormat.h"
#include "PropertyMessages.h"
#include "PropertySafety.h"
#include "PropertyTextBuffer.h"
#include "PropertyTextReader.h"
#include "support/LineDiff.h"
#include "support/LogRecorder.h"
#include "support/SafetySettings.h"

namespace {

using test_support::KeptLines;
using test_support::LogRecorder;
using test_support::ScopedLongLines;
using test_support::SplitLines;

typedef std::map<std::string, std::map<std::string, std::string> > Table;

// Reads text into store as a rewrite reads its file, without log lines.
template <typename Format>
void Read(const std::string& text, typename Format::Store& store) {
  PropertyMessages::Silence silence;
  PropertyTextBuffer copy;
  char* data = copy.Reserve(text.size() + 1, 0);
  std::memcpy(data, text.data(), text.size());
  typename Format::LineParser parser(store);
  PropertyTextReader::ParseText(data, text.size(), parser);
}

// The flat format. Golden texts are written with '#' comments and without
// sections; entries are set by key alone.
struct Flat {
  typedef JavaPropertiesFormat Format;
  typedef JavaProperties Store;
  static constexpr bool kSectioned = false;
  static std::string Text(const std::string& body) { return body; }
  static void Set(Store& store, const std::string&, const std::string& key,
                  const std::string& value) {
    store.SetProperty(key, value);
  }
  static Table TableOf(const Store& store) {
    Table table;
    table[""] = JavaPropertiesFormat::Entries(store);
    return table;
  }
};

// The INI format. The same golden texts stand under "[s]" with ';' comments;
// entries are set in the section s.
struct Ini {
  typedef IniPropertiesFormat Format;
  typedef IniProperties Store;
  static constexpr bool kSectioned = true;
  static std::string Text(const std::string& body) {
    std::string text = body;
    std::replace(text.begin(), text.end(), '#', ';');
    return (body.find("\r\n") == std::string::npos ? "[s]\n" : "[s]\r\n") +
           text;
  }
  static void Set(Store& store, const std::string& section,
                  const std::string& key, const std::string& value) {
    store.SetProperty(section, key, value);
  }
  static Table TableOf(const Store& store) {
    const auto& sections = IniPropertiesFormat::Sections(store);
    return Table(sections.begin(), sections.end());
  }
};

template <typename F>
Table TableOfText(const std::string& text) {
  typename F::Store store;
  Read<typename F::Format>(text, store);
  return F::TableOf(store);
}

template <typename F>
std::string Normalised(const typename F::Store& store,
                       const std::string& header) {
  PropertyTextBuffer text;
  F::Format::Render(store, header, text);
  return std::string(text.Data(), text.Size());
}

// What an edit gave: the text, or "refused: <why>".
struct Outcome {
  bool edited;
  std::string text;
  std::string why;
};

template <typename F>
Outcome EditStore(const std::string& original, const typename F::Store& store,
                  const std::string& header,
                  PropertyLayoutKeeper::Removals removals =
                      PropertyLayoutKeeper::kKeepEntries) {
  PropertyTextBuffer text;
  propstring why;
  const bool edited = PropertyLayoutKeeper::Edit(
      original.data(), original.size(), store, header, text, why, removals);
  return Outcome{edited, std::string(text.Data(), text.Size()), why};
}

// Reads original, sets the entries (section, key, value) into what it read,
// and edits original to that table with the header "h".
template <typename F>
Outcome EditTo(const std::string& original,
               const std::vector<std::vector<std::string> >& sets) {
  typename F::Store store;
  Read<typename F::Format>(original, store);
  for (const auto& set : sets) F::Set(store, set[0], set[1], set[2]);
  return EditStore<F>(original, store, "h");
}

// The edited text, or "refused: <why>".
template <typename F>
std::string Edited(const std::string& original,
                   const std::vector<std::vector<std::string> >& sets) {
  const Outcome outcome = EditTo<F>(original, sets);
  return outcome.edited ? outcome.text : "refused: " + outcome.why;
}

// The edit of original to the table that desired reads as, entries and
// sections it lacks removed, or "refused: <why>".
template <typename F>
std::string EditedTo(const std::string& original, const std::string& desired) {
  typename F::Store store;
  Read<typename F::Format>(desired, store);
  const Outcome outcome =
      EditStore<F>(original, store, "h", PropertyLayoutKeeper::kRemoveEntries);
  return outcome.edited ? outcome.text : "refused: " + outcome.why;
}

template <typename F>
class PropertyLayoutKeeperTest : public testing::Test {
 protected:
  // The text of body in the format (see Flat and Ini).
  static std::string T(const std::string& body) { return F::Text(body); }
  // Edits T(body) with key set to value in the section s.
  static std::string Set(const std::string& body, const std::string& key,
                         const std::string& value) {
    return Edited<F>(T(body), {{"s", key, value}});
  }
};

struct FormatNames {
  template <typename T>
  static std::string GetName(int) {
    return T::kSectioned ? "Ini" : "Flat";
  }
};

typedef testing::Types<Flat, Ini> Formats;
TYPED_TEST_SUITE(PropertyLayoutKeeperTest, Formats, FormatNames);

TYPED_TEST(PropertyLayoutKeeperTest,
           ChangedValueKeepsSpellingBlanksAndComment) {
  EXPECT_EQ(this->T("# top\n  a b = 7   # one\nc=2\n"),
            this->Set("# top\n  a b = 1   # one\nc=2\n", "a b", "7"));
}

TYPED_TEST(PropertyLayoutKeeperTest, ChangedValueGoesOnTheLastLineOfItsKey) {
  EXPECT_EQ(this->T("a=1\nb=0\na=3\n"), this->Set("a=1\nb=0\na=2\n", "a", "3"));
}

TYPED_TEST(PropertyLayoutKeeperTest, ChangedValueKeepsCarriageReturns) {
  EXPECT_EQ(this->T("a=5\r\nb=2\r\n"), this->Set("a=1\r\nb=2\r\n", "a", "5"));
  EXPECT_EQ(this->T("a=5 # c\r\n"), this->Set("a=1 # c\r\n", "a", "5"));
}

TYPED_TEST(PropertyLayoutKeeperTest, QuotedOldValueIsReplacedInQuotes) {
  EXPECT_EQ(this->T("a = \"new\"  # c\n"),
            this->Set("a = \"o l\"  # c\n", "a", "new"));
  EXPECT_EQ(this->T("a=\"\"\n"), this->Set("a=\"x\"\n", "a", ""));
}

TYPED_TEST(PropertyLayoutKeeperTest, HalfQuotedOldValueIsReplacedWhole) {
  EXPECT_EQ(this->T("a=new\n"), this->Set("a=\"x\n", "a", "new"));
}

TYPED_TEST(PropertyLayoutKeeperTest, ValueThatWouldBeCleanedIsQuoted) {
  // The normalised text reads these with their quotes.
  EXPECT_EQ(this->T("a=\"\"q\"\n"), this->Set("a=1\n", "a", "\"q"));
  EXPECT_EQ(this->T("a=\"\"\"\n"), this->Set("a=1\n", "a", "\""));
  EXPECT_EQ(this->T("a=q\"\n"), this->Set("a=1\n", "a", "q\""));
}

TYPED_TEST(PropertyLayoutKeeperTest, EdgeBlanksTheNormalisedTextLosesAreLost) {
  // Both rewrites give the same table: the blanks go, the quotes stay.
  EXPECT_EQ(this->T("a=x\nb = \"v\"\n"),
            this->Set("a=1\nb = \" v \"\n", "a", " x "));
}

TYPED_TEST(PropertyLayoutKeeperTest,
           EmptyValueIsReplacedBeforeLineEndAndComment) {
  EXPECT_EQ(this->T("a= 9\r\n"), this->Set("a= \r\n", "a", "9"));
  EXPECT_EQ(this->T("a= 9 # c\n"), this->Set("a=  # c\n", "a", "9"));
  EXPECT_EQ(this->T("a=9# c\n"), this->Set("a=# c\n", "a", "9"));
}

TYPED_TEST(PropertyLayoutKeeperTest, NewValueMayBeEmpty) {
  EXPECT_EQ(this->T("a =  # c\n"), this->Set("a = 1 # c\n", "a", ""));
}

TYPED_TEST(PropertyLayoutKeeperTest, UnchangedTableKeepsEveryByte) {
  const std::string bodies[] = {
      "\xEF\xBB\xBF# bom\n\n  \t\njunk line\nx\ry=1\r\n",
      std::string("a=1\0 tail=2\nb = 2 # two\n\r\n=\n", 28),
      "a=1\na=2\n  \"q\"= \"\"v\"\nlast=1",
  };
  for (const std::string& body : bodies) {
    EXPECT_EQ(this->T(body), Edited<TypeParam>(this->T(body), {}));
  }
}

TYPED_TEST(PropertyLayoutKeeperTest, EmptyFileGetsTheNormalisedText) {
  typename TypeParam::Store store;
  TypeParam::Set(store, "s", "b", "2");
  TypeParam::Set(store, "s", "a", " 1");
  const Outcome outcome = EditStore<TypeParam>("", store, "made by x");
  ASSERT_TRUE(outcome.edited);
  EXPECT_EQ(Normalised<TypeParam>(store, "made by x"), outcome.text);
}

TYPED_TEST(PropertyLayoutKeeperTest, HeaderIsNotAddedToAnExistingFile) {
  EXPECT_EQ(this->T("a=2\n"), this->Set("a=1\n", "a", "2"));
}

TYPED_TEST(PropertyLayoutKeeperTest, HeaderLineTheFileStartsWithStays) {
  const std::string text =
      TypeParam::kSectioned ? ";h\n[s]\na=1\n" : "#h\na=1\n";
  const std::string edited =
      TypeParam::kSectioned ? ";h\n[s]\na=2\n" : "#h\na=2\n";
  EXPECT_EQ(edited, (Edited<TypeParam>(text, {{"s", "a", "2"}})));
}

TYPED_TEST(PropertyLayoutKeeperTest,
           MissingFinalLineFeedIsAddedBeforeAppending) {
  EXPECT_EQ(this->T("a=1\nb=2\n"), this->Set("a=1", "b", "2"));
}

TYPED_TEST(PropertyLayoutKeeperTest, AppendedLinesEndAsTheFileLinesDo) {
  EXPECT_EQ(this->T("a=1\r\nb=2\r\n"), this->Set("a=1\r\n", "b", "2"));
  EXPECT_EQ(this->T("a=1\r\nc=1\r\nb=2\r\n"),
            this->Set("a=1\r\nc=1\r", "b", "2"));
  // Mixed line ends: a line feed alone.
  EXPECT_EQ(this->T("a=1\r\nc=1\nb=2\n"), this->Set("a=1\r\nc=1\n", "b", "2"));
}

TYPED_TEST(PropertyLayoutKeeperTest, AppendedKeyAndValueAreQuotedIfCleaned) {
  // The normalised text reads the key and the value with their quotes.
  EXPECT_EQ(this->T("a=1\n\"\"q\"=\"\"v\"\n"),
            this->Set("a=1\n", "\"q", "\"v"));
}

TYPED_TEST(PropertyLayoutKeeperTest, ValueWithLineBreakFallsBack) {
  EXPECT_EQ("refused: a value holds a line break",
            this->Set("a=1\n", "a", "x\ny"));
  EXPECT_EQ("refused: a value holds a line break",
            this->Set("a=1\n", "b", "x\ry"));
}

TYPED_TEST(PropertyLayoutKeeperTest, ValueWithNulByteFallsBack) {
  EXPECT_EQ("refused: a value holds a NUL byte",
            this->Set("a=1\n", "a", std::string("x\0y", 3)));
}

TYPED_TEST(PropertyLayoutKeeperTest, ValueWithCommentMarkFallsBack) {
  const char* mark = TypeParam::kSectioned ? ";" : "#";
  EXPECT_EQ(std::string("refused: a value holds '") + mark + "'",
            this->Set("a=1\n", "a", std::string("x") + mark + "y"));
}

TYPED_TEST(PropertyLayoutKeeperTest, OtherFormatsCommentMarkIsAnOrdinaryByte) {
  const char* other = TypeParam::kSectioned ? "x#y" : "x;y";
  const std::string section = TypeParam::kSectioned ? "[s]\n" : "";
  EXPECT_EQ(section + "a=" + other + "\n", this->Set("a=1\n", "a", other));
}

TYPED_TEST(PropertyLayoutKeeperTest, NewKeyWithEqualsFallsBack) {
  EXPECT_EQ("refused: a key holds '='", this->Set("a=1\n", "k=x", "1"));
}

TYPED_TEST(PropertyLayoutKeeperTest, LongLineFallsBackUnlessLongLinesAreOn) {
  const std::string longValue(600, 'v');
  {
    ScopedLongLines off(false);
    EXPECT_EQ("refused: a line of the table is 512 characters or longer",
              this->Set("a=1\n", "a", longValue));
    EXPECT_EQ("refused: a line of the file is 512 characters or longer",
              this->Set("a=" + longValue + "\n", "b", "1"));
    // A line of 511 characters and its line feed is read whole.
    const std::string longest(509, 'v');
    EXPECT_EQ(this->T("a=" + longest + "\n"), this->Set("a=1\n", "a", longest));
  }
  ScopedLongLines on(true);
  EXPECT_EQ(this->T("a=" + longValue + "\n"),
            this->Set("a=1\n", "a", longValue));
}

TYPED_TEST(PropertyLayoutKeeperTest, EditLogsNothing) {
  const std::string original = this->T("a=1\na=2\nb\n[t]\n");
  typename TypeParam::Store store;
  Read<typename TypeParam::Format>(original, store);
  TypeParam::Set(store, "s", "a", "3");
  TypeParam::Set(store, "u", "c", "4");
  LogRecorder log;
  EXPECT_TRUE(EditStore<TypeParam>(original, store, "h").edited);
  TypeParam::Set(store, "s", "a", "x\ny");
  log.Clear();
  EXPECT_FALSE(EditStore<TypeParam>(original, store, "h").edited);
  EXPECT_TRUE(log.Messages().empty());
}

TEST(PropertyLayoutKeeperFlatTest, NewKeysGoToTheEndOfTheFileInByteOrder) {
  EXPECT_EQ(
      "# c\nb=1\n\n# end\na=0\nc=3\n",
      Edited<Flat>("# c\nb=1\n\n# end\n", {{"", "c", "3"}, {"", "a", "0"}}));
}

TEST(PropertyLayoutKeeperFlatTest, HashCutsTheValueEvenInQuotes) {
  // The line reads as "a" = "\"x", which is replaced whole.
  EXPECT_EQ("a=2# y\"\n", Edited<Flat>("a=\"x# y\"\n", {{"", "a", "2"}}));
}

TEST(PropertyLayoutKeeperIniTest, NewKeyFollowsTheLastEntryOfItsSection) {
  EXPECT_EQ("[s]\na=1\nb=2\n; note\n\n[t]\nx=1\n",
            Edited<Ini>("[s]\na=1\n; note\n\n[t]\nx=1\n", {{"s", "b", "2"}}));
}

TEST(PropertyLayoutKeeperIniTest, NewKeyInSectionWithoutEntriesFollowsHeader) {
  EXPECT_EQ("[s]\nb=2\n\n[t]\n",
            Edited<Ini>("[s]\n\n[t]\n", {{"s", "b", "2"}}));
}

TEST(PropertyLayoutKeeperIniTest, RepeatedSectionIsEditedInItsLastOccurrence) {
  EXPECT_EQ("[s]\na=1\nc=1\n[t]\n[s]\na=5\nb=2\n; end\n",
            Edited<Ini>("[s]\na=1\nc=1\n[t]\n[s]\na=2\n; end\n",
                        {{"s", "a", "5"}, {"s", "b", "2"}}));
}

TEST(PropertyLayoutKeeperIniTest, NewSectionsGoToTheEndInByteOrder) {
  EXPECT_EQ("[s]\na=1\n[t]\ny=2\n[u]\nx=1\nz=3\n",
            Edited<Ini>("[s]\na=1",
                        {{"u", "z", "3"}, {"u", "x", "1"}, {"t", "y", "2"}}));
  EXPECT_EQ("[s]\r\n\r\n[t]\r\ny=2\r\n",
            Edited<Ini>("[s]\r\n\r\n", {{"t", "y", "2"}}));
}

TEST(PropertyLayoutKeeperIniTest, EntriesBeforeTheFirstHeaderStay) {
  EXPECT_EQ("a=1\n[]\nb=1\n[s]\na=2\n",
            Edited<Ini>("a=1\n[]\nb=1\n[s]\na=1\n", {{"s", "a", "2"}}));
}

TEST(PropertyLayoutKeeperIniTest, NewKeyStartingWithBracketFallsBack) {
  EXPECT_EQ("refused: a key starts with '['",
            Edited<Ini>("[s]\na=1\n", {{"s", "[k", "1"}}));
}

TEST(PropertyLayoutKeeperIniTest, HeaderInBlanksAndQuotesIsFound) {
  EXPECT_EQ("  \"[s]\" ; c\na=2\n",
            Edited<Ini>("  \"[s]\" ; c\na=1\n", {{"s", "a", "2"}}));
}

TYPED_TEST(PropertyLayoutKeeperTest,
           MergingEditOfTableThatLacksEntryIsRefused) {
  typename TypeParam::Store store;
  Read<typename TypeParam::Format>(this->T("b=2\n"), store);
  EXPECT_EQ("the table lacks an entry of the file",
            EditStore<TypeParam>(this->T("a=1\nb=2\n"), store, "h").why);
}

TYPED_TEST(PropertyLayoutKeeperTest, RemovedEntryTakesEveryLineOfItsKey) {
  EXPECT_EQ(this->T("# c\nb=2\n"),
            EditedTo<TypeParam>(this->T("a=1\n# c\nb=2\n a = 3\n"),
                                this->T("b=2\n")));
}

TYPED_TEST(PropertyLayoutKeeperTest, RemovedLastLineWithoutLineFeedGoesWhole) {
  EXPECT_EQ(this->T("b=2\n"),
            EditedTo<TypeParam>(this->T("b=2\na=1"), this->T("b=2\n")));
}

TEST(PropertyLayoutKeeperIniTest, RemovedEntryGoesFromLastOccurrenceOnly) {
  EXPECT_EQ("[s]\na=1\n[s]\nb=1\n",
            EditedTo<Ini>("[s]\na=1\n[s]\na=2\nb=1\n", "[s]\nb=1\n"));
}

TEST(PropertyLayoutKeeperIniTest, RemovedSectionTakesEveryOccurrence) {
  EXPECT_EQ("; about t\n[t]\nx=1\n\n; end\n",
            EditedTo<Ini>("[s]\na=1\n; about t\n[t]\nx=1\n[s]\nb=2\n\n; end\n",
                          "[t]\nx=1\n"));
}

TEST(PropertyLayoutKeeperIniTest, RemovedSectionWithoutEntriesTakesItsHeader) {
  EXPECT_EQ("[t]\nx=1\n", EditedTo<Ini>("[s]\n[t]\nx=1\n", "[t]\nx=1\n"));
}

// Randomized files and tables.

// The pieces random files are made of.
const char* const kKeys[] = {"a", "b", "c", "k 1", "\"q", "[x", "", "d=e"};
const char* const kValues[] = {"1", "two", " sp ", "\"q\"", "x#y", "x;y",
                               "",  "=",   "[v]",  "\"",    "a\rb"};
const char* const kSections[] = {"s", "t", "u", " s ", ""};

template <typename Random>
std::string Pick(Random& random, const char* const* items, size_t count) {
  return items[std::uniform_int_distribution<size_t>(0, count - 1)(random)];
}

template <typename F, typename Random>
std::string RandomLine(Random& random) {
  const char mark = F::kSectioned ? ';' : '#';
  switch (std::uniform_int_distribution<int>(0, 13)(random)) {
    case 0:
      return "";
    case 1:
      return std::string(1, mark) + " comment";
    case 2:
      return "  \t ";
    case 3:
      return "junk without equals";
    case 4:
      return "[" + Pick(random, kSections, 5) + "]";
    case 5:
      return "  \"[t]\"  ";
    case 6:
      return std::string("a=1\0hidden=2", 12);
    case 7:
      return "x\ry = 3";
    case 8:
      return std::string(
          std::uniform_int_distribution<int>(0, 1)(random) ? 520 : 30, 'L');
    case 9: {
      std::string bytes;
      const int length = std::uniform_int_distribution<int>(0, 12)(random);
      for (int i = 0; i < length; ++i) {
        bytes += static_cast<char>(
            std::uniform_int_distribution<int>(0, 255)(random));
      }
      return bytes;
    }
    default: {
      std::string line = Pick(random, kKeys, 8);
      line += std::uniform_int_distribution<int>(0, 1)(random) ? " = " : "=";
      line += Pick(random, kValues, 11);
      if (std::uniform_int_distribution<int>(0, 3)(random) == 0) {
        line += std::string(" ") + mark + " note";
      }
      return line;
    }
  }
}

template <typename F, typename Random>
std::string RandomFile(Random& random) {
  std::string text;
  if (std::uniform_int_distribution<int>(0, 9)(random) == 0) {
    text = "\xEF\xBB\xBF";
  }
  const bool crlf = std::uniform_int_distribution<int>(0, 3)(random) == 0;
  const int lines = std::uniform_int_distribution<int>(0, 12)(random);
  for (int i = 0; i < lines; ++i) {
    text += RandomLine<F>(random);
    if (i + 1 < lines || std::uniform_int_distribution<int>(0, 2)(random)) {
      text += crlf ? "\r\n" : "\n";
    }
  }
  return text;
}

// Up to 700 bytes, mostly those that mean something to a reader.
template <typename Random>
std::string RandomBytes(Random& random) {
  static const char kMeaningful[] = "\n\r\0=[]\";# \tab";
  std::string bytes;
  const int length = std::uniform_int_distribution<int>(0, 700)(random);
  for (int i = 0; i < length; ++i) {
    const int pick = std::uniform_int_distribution<int>(0, 299)(random);
    bytes += pick < 256 ? kMeaningful[pick % (sizeof kMeaningful - 1)]
                        : static_cast<char>(pick - 44);
  }
  return bytes;
}

// The number of entries whose value differs between the tables (entries of
// after that before lacks are not counted).
size_t ChangedEntries(const Table& before, const Table& after) {
  size_t changed = 0;
  for (const auto& section : after) {
    auto was = before.find(section.first);
    if (was == before.end()) continue;
    for (const auto& entry : section.second) {
      auto old = was->second.find(entry.first);
      if (old != was->second.end() && old->second != entry.second) ++changed;
    }
  }
  return changed;
}

TYPED_TEST(PropertyLayoutKeeperTest, RandomEditsReadAsTheNormalisedText) {
  typedef TypeParam F;
  int edited = 0;
  int changed = 0;
  int refused = 0;
  // Seeds above 3000 edit texts of arbitrary bytes.
  for (unsigned seed = 1; seed <= 4500; ++seed) {
    std::mt19937 random(seed);
    ScopedLongLines longLines(seed % 5 == 0);
    const std::string original =
        seed > 3000 ? RandomBytes(random) : RandomFile<F>(random);
    typename F::Store store;
    if (PropertySafety::LongLines() || !PropertyTextReader::HasOverlongLine(
                                           original.data(), original.size())) {
      Read<typename F::Format>(original, store);
    }
    const int sets = std::uniform_int_distribution<int>(0, 4)(random);
    for (int i = 0; i < sets; ++i) {
      std::string value = Pick(random, kValues, 11);
      const int odd = std::uniform_int_distribution<int>(0, 19)(random);
      if (odd == 0) value = "x\ny";
      if (odd == 1) value = std::string(530, 'w');
      if (odd == 2) value = std::string("n\0ul", 4);
      F::Set(store, Pick(random, kSections, 5), Pick(random, kKeys, 8), value);
    }
    const std::string header = seed % 3 == 0 ? "" : "hdr";
    LogRecorder log;
    const Outcome outcome = EditStore<F>(original, store, header);
    EXPECT_TRUE(log.Messages().empty()) << "seed " << seed;
    if (!outcome.edited) {
      ++refused;
      EXPECT_FALSE(outcome.why.empty()) << "seed " << seed;
      continue;
    }
    ++edited;
    const std::string normalised = Normalised<F>(store, header);
    const Table target = TableOfText<F>(normalised);
    ASSERT_EQ(target, TableOfText<F>(outcome.text)) << "seed " << seed << "\n"
                                                    << original << "\n---\n"
                                                    << outcome.text;
    if (original.empty()) {
      EXPECT_EQ(normalised, outcome.text) << "seed " << seed;
      continue;
    }
    if (outcome.text != original) ++changed;
    const Table before = TableOfText<F>(original);
    if (before == target) {
      EXPECT_EQ(original, outcome.text) << "seed " << seed;
    }
    // Only the lines of changed entries differ; other new lines are added
    // entries, section headers or empty lines.
    const std::vector<std::string> from = SplitLines(original);
    const std::vector<std::string> to = SplitLines(outcome.text);
    std::vector<bool> keptOfTo;
    const std::vector<bool> keptOfFrom = KeptLines(from, to, keptOfTo);
    // A last line without a line feed gets one when lines follow it.
    const bool unfed = original.back() != '\n';
    size_t changedLines = 0;
    for (size_t i = 0; i < from.size(); ++i) {
      if (keptOfFrom[i] || (unfed && i + 1 == from.size())) continue;
      ++changedLines;
      EXPECT_NE(std::string::npos, from[i].find('=')) << "seed " << seed;
    }
    EXPECT_LE(changedLines, ChangedEntries(before, target)) << "seed " << seed;
    for (size_t j = 0; j < to.size(); ++j) {
      if (keptOfTo[j]) continue;
      const std::string& line = to[j];
      EXPECT_TRUE(
          line.find('=') != std::string::npos || line.empty() || line == "\r" ||
          line[0] == '[' ||
          (unfed && line.compare(0, from.back().size(), from.back()) == 0))
          << "seed " << seed << ": " << line;
    }
  }
  // The cases are mixed enough to exercise both outcomes.
  EXPECT_GT(edited, 1000);
  EXPECT_GT(changed, 300);
  EXPECT_GT(refused, 100);
}

}  // namespace
