// PropertyTextReaderTest.cpp - the library's own file reads (one read of the
// whole file, parsed in memory) against the stream reader: same table, same
// result, same log lines, for edge cases, files of every size and every file of
// the fuzz corpora; and the library's reads against a plain reference reader
// that shares no code with it.

#include "PropertyTextReader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "IniProperties.h"
#include "IniPropertiesFormat.h"
#include "JavaProperties.h"
#include "JavaPropertiesFormat.h"
#include "PropertySafety.h"
#include "support/LogRecorder.h"
#include "support/ReferenceReader.h"
#include "support/SafetySettings.h"
#include "support/TempDir.h"

namespace {

using test_support::LogRecorder;
using test_support::ReadFile;
using test_support::ReferenceOutcome;
using test_support::ScopedLongLines;
using test_support::TempDir;
using test_support::WriteFile;

// What one load did: the result, the table as text, and the log.
struct Outcome {
  bool result;
  std::string table;
  std::vector<std::string> log;
};

bool operator==(const Outcome& a, const Outcome& b) {
  return a.result == b.result && a.table == b.table && a.log == b.log;
}

void PrintTo(const Outcome& o, std::ostream* out) {
  *out << "result " << o.result << ", " << o.log.size()
       << " log lines, table:\n"
       << o.table;
}

void Preset(JavaProperties& store) { store.SetProperty("b", "before"); }
void Preset(IniProperties& store) { store.SetProperty("s", "b", "before"); }

// The library's own read of a file, as a binding does it.
bool ReadWhole(JavaProperties& store, const std::string& path, bool& opened) {
  JavaPropertiesFormat::LineParser parser(store);
  return PropertyTextReader::ReadFile(path, opened, parser);
}
bool ReadWhole(IniProperties& store, const std::string& path, bool& opened) {
  IniPropertiesFormat::LineParser parser(store);
  return PropertyTextReader::ReadFile(path, opened, parser);
}

// Loads path into a store that already holds one entry (loads merge), either
// through the whole-file path or through a stream on the same file.
template <typename Store>
Outcome LoadWith(const std::string& path, bool wholeFile) {
  Store store;
  Preset(store);
  LogRecorder log;
  bool result;
  if (wholeFile) {
    bool opened = false;
    result = ReadWhole(store, path, opened);
    EXPECT_TRUE(opened);
  } else {
    std::ifstream in(path.c_str());
    result = store.Load(in);
  }
  return {result, store.ToText("header"), log.Messages()};
}

// The inputs where a whole-file parse could most easily differ from the
// line-by-line reader.
std::vector<std::string> EdgeCases() {
  const std::string line510(510, 'x');
  const std::string line511 = "k=" + std::string(509, 'v');
  return {"",
          "\n",
          "a=1",
          "a=1\n",
          "a=1\n\n",
          "a=1\nb=2\na=3\n",
          "z=1\na=2\nm=3\n",
          "k=" + line510.substr(2) + "\nnext=1\n",
          line511 + "\nnext=1\n",
          line511,
          line511 + "\n",
          "a=1\r\nb=2\r\n",
          std::string("a=1\0b=2\nc=3\n", 13),
          "\xEF\xBB\xBF"
          "a=1\n",
          "[s]\na=1\n[t]\nb=2\n[s]\nc=3\n",
          "x=1\n[s]\ny=2\n;c\n[]\nz=3\n",
          "  [ s ]  ;note\n\"k=[v]\"\n[abc\nq=1\n",
          "#c\n k = \" v \" \n=x\nk=\n",
          "\"[q]\"\nk=1\n\"[r\nk=2\n",
          "[s]]x]\nk=1\n[\nk=2\n[]]\nk=3\n",
          "\"a\" b=c\n\"k=v\nk2=\"\n\"\"=\"\"\n",
          " \t\v\f\r\n=\n==\n#=\n;=\n[s];x\n a = b # c ; d\n",
          std::string("[s\0]\nk\0=1\nk=\0v\n", 15),
          std::string("k=1\0", 4) + std::string(500, 'x') + "\nn=2\n",
          "z=1\ny=2\nz=3\nx=4\n",
          "[s]\n k = [v] \nk2=\"[x]\"\n \"q\" = [r]\n\t\"[t]\" \nk3=v\n"};
}

// A file of the given size, made of entries in key order, so that a file of
// any size from a few bytes to megabytes can be compared.
std::string EntriesOfSize(size_t size) {
  std::string text;
  for (int i = 0; text.size() + 40 < size; ++i) {
    char line[64];
    std::snprintf(line, sizeof line, "section.key%07d = value number %d\n", i,
                  i);
    text += line;
  }
  text += "last=";
  text.append(size - text.size() - 1, 'v');
  text += '\n';
  return text;
}

// Sizes around the buffer a thread keeps between reads (64 KiB), and far
// beyond it.
std::vector<std::string> SizedCases() {
  std::vector<std::string> cases;
  for (size_t size : {65535u, 65536u, 65537u, 1000000u}) {
    cases.push_back(EntriesOfSize(size));
    cases.push_back("[s]\n" + EntriesOfSize(size - 4));
  }
  return cases;
}

std::vector<std::string> CorpusFiles(const std::string& target) {
  std::vector<std::string> files;
  const std::filesystem::path dir =
      std::filesystem::path(PROPERTIES_FUZZ_CORPUS_DIR) / target;
  for (const auto& entry : std::filesystem::directory_iterator(dir)) {
    if (entry.is_regular_file()) files.push_back(entry.path().string());
  }
  return files;
}

// True if some line of the file is too long for the readers: such files are
// defined never to finish loading unless long lines are read whole, so
// neither path may be run on them then.
bool HasOverlongLine(const std::string& path) {
  if (PropertySafety::LongLines()) return false;
  std::ifstream in(path.c_str(), std::ios::binary);
  std::string line;
  while (std::getline(in, line)) {
    if (line.size() > 511) return true;
  }
  return false;
}

template <typename Store>
void ExpectSameOnEveryFile(const std::vector<std::string>& paths) {
  int compared = 0;
  for (const std::string& path : paths) {
    if (HasOverlongLine(path)) continue;
    EXPECT_EQ(LoadWith<Store>(path, false), LoadWith<Store>(path, true))
        << path;
    ++compared;
  }
  EXPECT_GT(compared, 0);
}

bool Overlong(const std::string& text) {
  return PropertyTextReader::HasOverlongLine(text.data(), text.size());
}

// The plain definition: some line, the last one included, holds more than
// 511 characters.
bool NaiveOverlong(const std::string& text) {
  size_t start = 0;
  for (;;) {
    const size_t feed = text.find('\n', start);
    const size_t end = feed == std::string::npos ? text.size() : feed;
    if (end - start > 511) return true;
    if (feed == std::string::npos) return false;
    start = feed + 1;
  }
}

TEST(PropertyTextReaderTest,
     OverlongCheckFindsALineOf512CharactersWhereverItIs) {
  for (size_t before : {0u, 1u, 100u, 511u, 512u, 513u, 3000u}) {
    // Short lines of before bytes in all.
    std::string head;
    while (head.size() < before) {
      const size_t left = before - head.size();
      head += std::string(std::min<size_t>(left, 100) - 1, 'a') + "\n";
    }
    EXPECT_TRUE(Overlong(head + std::string(512, 'x'))) << before;
    EXPECT_TRUE(Overlong(head + std::string(512, 'x') + "\n")) << before;
    EXPECT_FALSE(Overlong(head + std::string(511, 'x'))) << before;
    EXPECT_FALSE(Overlong(head + std::string(511, 'x') + "\n")) << before;
  }
}

TEST(PropertyTextReaderTest,
     OverlongCheckAgreesWithTheLineByLineDefinitionOnRandomTexts) {
  std::mt19937 random(20261121);
  for (int round = 0; round < 3000; ++round) {
    std::string text;
    const int lines = static_cast<int>(random() % 12);
    for (int i = 0; i < lines; ++i) {
      // Mostly short lines, now and then one near the limit.
      const size_t length =
          random() % 4 == 0 ? 500 + random() % 24 : random() % 80;
      text.append(length, 'k');
      if (i + 1 < lines || random() % 2 == 0) text += '\n';
    }
    ASSERT_EQ(NaiveOverlong(text), Overlong(text)) << text.size();
  }
}

// What the plain reference reader gives for the file, from the same preset.
ReferenceOutcome Reference(JavaProperties*, const std::string& text) {
  return test_support::ReadFlatReference(text, {{"b", "before"}});
}
ReferenceOutcome Reference(IniProperties*, const std::string& text) {
  return test_support::ReadIniReference(text, {{"s", {{"b", "before"}}}});
}

// The library's reader against the reference reader, which shares no code
// with it: the same table and the same log on every file.
template <typename Store>
void ExpectReferenceOnEveryFile(const std::vector<std::string>& paths) {
  int compared = 0;
  for (const std::string& path : paths) {
    if (HasOverlongLine(path)) continue;
    const Outcome ours = LoadWith<Store>(path, true);
    const ReferenceOutcome reference =
        Reference(static_cast<Store*>(nullptr), ReadFile(path));
    EXPECT_EQ(reference.table, ours.table) << path;
    EXPECT_EQ(reference.log, ours.log) << path;
    ++compared;
  }
  EXPECT_GT(compared, 0);
}

class PropertyTextReaderFileTest : public testing::Test {
 protected:
  std::vector<std::string> Files(const std::vector<std::string>& texts) {
    std::vector<std::string> paths;
    for (const std::string& text : texts) {
      paths.push_back(m_dir.File("case" + std::to_string(paths.size())));
      WriteFile(paths.back(), text);
    }
    return paths;
  }
  std::vector<std::string> EdgeCaseFiles() { return Files(EdgeCases()); }

  TempDir m_dir;
};

TEST_F(PropertyTextReaderFileTest,
       FlatWholeFileReadEqualsStreamReadOnEdgeCases) {
  ExpectSameOnEveryFile<JavaProperties>(EdgeCaseFiles());
}

TEST_F(PropertyTextReaderFileTest,
       IniWholeFileReadEqualsStreamReadOnEdgeCases) {
  ExpectSameOnEveryFile<IniProperties>(EdgeCaseFiles());
}

TEST_F(PropertyTextReaderFileTest,
       FlatWholeFileReadEqualsStreamReadAtEverySize) {
  ExpectSameOnEveryFile<JavaProperties>(Files(SizedCases()));
}

TEST_F(PropertyTextReaderFileTest,
       IniWholeFileReadEqualsStreamReadAtEverySize) {
  ExpectSameOnEveryFile<IniProperties>(Files(SizedCases()));
}

TEST_F(PropertyTextReaderFileTest, FlatReadEqualsReferenceReaderOnEdgeCases) {
  ExpectReferenceOnEveryFile<JavaProperties>(EdgeCaseFiles());
}

TEST_F(PropertyTextReaderFileTest, IniReadEqualsReferenceReaderOnEdgeCases) {
  ExpectReferenceOnEveryFile<IniProperties>(EdgeCaseFiles());
}

TEST_F(PropertyTextReaderFileTest, FlatReadEqualsReferenceReaderOnFuzzCorpus) {
  ExpectReferenceOnEveryFile<JavaProperties>(
      CorpusFiles("JavaPropertiesFuzzer"));
}

TEST_F(PropertyTextReaderFileTest, IniReadEqualsReferenceReaderOnFuzzCorpus) {
  ExpectReferenceOnEveryFile<IniProperties>(CorpusFiles("IniPropertiesFuzzer"));
}

TEST_F(PropertyTextReaderFileTest,
       FlatWholeFileReadEqualsStreamReadOnFuzzCorpus) {
  ExpectSameOnEveryFile<JavaProperties>(CorpusFiles("JavaPropertiesFuzzer"));
}

TEST_F(PropertyTextReaderFileTest,
       IniWholeFileReadEqualsStreamReadOnFuzzCorpus) {
  ExpectSameOnEveryFile<IniProperties>(CorpusFiles("IniPropertiesFuzzer"));
}

// Lines around and far beyond the 511 characters a line read takes, where
// they end, hold a NUL or a section, or end the file without a line feed.
std::vector<std::string> LongLineCases() {
  const std::string x600(600, 'x');
  return {"a=" + x600 + "\nb=2\n",
          "a=" + x600,
          "a=" + std::string(509, 'v') + "\nb=" + std::string(510, 'w'),
          "a=" + std::string(510, 'v') + "\nb=" + std::string(511, 'w') + "\n",
          std::string(1021, 'k') + "=" + std::string(1022, 'v') + "\n",
          "#" + x600 + "\nk = \" v \" \n" + x600 + "\n",
          std::string("a=1\0", 4) + x600 + "\nb=2\n",
          "a=" + x600 + std::string("\0tail\nb=2\n", 10),
          "[" + x600 + "]\nk=1\n[s]\nk=" + x600 + "\r\n",
          "[s]\n" + x600 + ";" + x600 + "\n=" + x600 + "\n[s]\nk=2\n",
          std::string(5000, '\n') + "a=" + std::string(70000, 'z') + "\n"};
}

TEST_F(PropertyTextReaderFileTest,
       FlatWholeFileReadEqualsStreamReadWithLongLines) {
  ScopedLongLines longLines(true);
  ExpectSameOnEveryFile<JavaProperties>(Files(LongLineCases()));
}

TEST_F(PropertyTextReaderFileTest,
       IniWholeFileReadEqualsStreamReadWithLongLines) {
  ScopedLongLines longLines(true);
  ExpectSameOnEveryFile<IniProperties>(Files(LongLineCases()));
}

TEST_F(PropertyTextReaderFileTest, FlatReadEqualsReferenceReaderWithLongLines) {
  ScopedLongLines longLines(true);
  ExpectReferenceOnEveryFile<JavaProperties>(Files(LongLineCases()));
}

TEST_F(PropertyTextReaderFileTest, IniReadEqualsReferenceReaderWithLongLines) {
  ScopedLongLines longLines(true);
  ExpectReferenceOnEveryFile<IniProperties>(Files(LongLineCases()));
}

TEST_F(PropertyTextReaderFileTest,
       ReadsWithLongLinesEqualTheStreamReadOnRandomTexts) {
  ScopedLongLines longLines(true);
  std::mt19937 random(20261123);
  std::vector<std::string> texts;
  for (int round = 0; round < 200; ++round) {
    std::string text;
    const int lines = static_cast<int>(random() % 8);
    for (int i = 0; i < lines; ++i) {
      // Around each multiple of the 511 characters a line read takes.
      const size_t length = random() % 3 == 0
                                ? 511 * (1 + random() % 3) - 2 + random() % 5
                                : random() % 40;
      std::string line(length, 'v');
      line[0] = "k[;#"[random() % 4];
      if (length > 3) line[length / 2] = "=\0]\r"[random() % 4];
      text += line;
      if (i + 1 < lines || random() % 2 == 0) text += '\n';
    }
    texts.push_back(text);
  }
  ExpectSameOnEveryFile<JavaProperties>(Files(texts));
  ExpectSameOnEveryFile<IniProperties>(Files(texts));
}

// Texts of the bytes a reader looks for (line feeds, both comment marks,
// '=', NUL, blanks, quotes, brackets) at every offset, lines of every length
// up to a few hundred bytes, and texts ending with and without a line feed
// at and around multiples of 16 and 64 bytes.
TEST_F(PropertyTextReaderFileTest,
       WholeFileReadEqualsTheStreamReadOnRandomTextsOfSpecialBytes) {
  std::mt19937 random(20261124);
  const char special[] = {'\n', '=', '#', ';',  '\0', ' ', '\t',
                          '"',  '[', ']', '\r', 'k',  'v', 'x'};
  std::vector<std::string> texts;
  for (int round = 0; round < 400; ++round) {
    std::string text;
    const size_t size = round < 200
                            ? static_cast<size_t>(round)
                            : 64 * (1 + random() % 6) + random() % 3 - 1;
    const unsigned feedEvery = 2 + random() % 120;
    while (text.size() < size) {
      text +=
          random() % feedEvery == 0 ? '\n' : special[random() % sizeof special];
    }
    texts.push_back(text);
  }
  ExpectSameOnEveryFile<JavaProperties>(Files(texts));
  ExpectSameOnEveryFile<IniProperties>(Files(texts));
}

// A binding keeps the bytes it parsed for the next read to compare with.
TEST(PropertyTextReaderTest, ParsedTextIsLeftAsItWas) {
  for (const std::string& original : EdgeCases()) {
    std::string flat = original;
    std::string ini = original;
    JavaProperties flatStore;
    JavaPropertiesFormat::LineParser flatParser(flatStore);
    PropertyTextReader::ParseText(&flat[0], flat.size(), flatParser);
    IniProperties iniStore;
    IniPropertiesFormat::LineParser iniParser(iniStore);
    PropertyTextReader::ParseText(&ini[0], ini.size(), iniParser);
    EXPECT_EQ(original, flat);
    EXPECT_EQ(original, ini);
  }
}

TEST_F(PropertyTextReaderFileTest, LongLineIsLoggedAsTooLongWithItsNumber) {
  ScopedLongLines longLines(true);
  const std::vector<std::string> paths =
      Files({"a=1\nl=" + std::string(600, 'x') +
             "\nc=" + std::string(509, 'y') + "\nd=" + std::string(700, 'z')});
  for (bool wholeFile : {false, true}) {
    const Outcome outcome = LoadWith<JavaProperties>(paths[0], wholeFile);
    EXPECT_EQ((std::vector<std::string>{
                  "Loading 'a' to '1'", "Line 2 is too long",
                  "Loading 'l' to '" + std::string(600, 'x') + "'",
                  "Line 3 is too long",
                  "Loading 'c' to '" + std::string(509, 'y') + "'",
                  "Line 4 is too long",
                  "Loading 'd' to '" + std::string(700, 'z') + "'"}),
              outcome.log)
        << (wholeFile ? "whole file" : "stream");
  }
}

TEST(PropertyTextReaderTest, StreamReadStopsAtReadErrorInsideLongLine) {
  ScopedLongLines longLines(true);
  // A stream whose source fails after the first 700 bytes of one line.
  class FailingAfter : public std::streambuf {
   public:
    explicit FailingAfter(std::string text) : m_text(std::move(text)) {
      setg(&m_text[0], &m_text[0], &m_text[0] + m_text.size());
    }

   protected:
    int_type underflow() override { throw std::ios::failure("gone"); }

   private:
    std::string m_text;
  } source("k=" + std::string(698, 'v'));
  std::istream in(&source);
  JavaProperties store;
  LogRecorder log;
  EXPECT_FALSE(store.Load(in));
  EXPECT_EQ((std::vector<std::string>{
                "Error reading Line 1", "Line 1 is too long",
                "Loading 'k' to '" + std::string(698, 'v') + "'"}),
            log.Messages());
}

TEST_F(PropertyTextReaderFileTest,
       MissingFileIsNotOpenedAndLeavesTableUnchanged) {
  JavaProperties store;
  store.SetProperty("a", "1");
  bool opened = true;
  EXPECT_FALSE(ReadWhole(store, m_dir.File("missing"), opened));
  EXPECT_FALSE(opened);
  EXPECT_EQ("a=1\n", store.ToText(""));
}

TEST_F(PropertyTextReaderFileTest, DirectoryIsReadLikeTheStreamReaderDoes) {
  LogRecorder log;
  IniProperties store;
  bool opened = false;
  EXPECT_FALSE(ReadWhole(store, m_dir.path(), opened));
  EXPECT_TRUE(opened);
  EXPECT_EQ(std::vector<std::string>{"Error reading Line 1"}, log.Messages());
}

// A load started from inside a load (here from a Log hook, on the same
// thread) must not share the outer load's read buffer.
TEST_F(PropertyTextReaderFileTest, LoadDuringLoadReadsBothFilesWhole) {
  const std::string outer = m_dir.File("outer");
  const std::string inner = m_dir.File("inner");
  WriteFile(outer, "a=1\nb=2\nc=3\n");
  WriteFile(inner, EntriesOfSize(4000));
  JavaProperties expectedInner;
  ASSERT_TRUE(expectedInner.Load(inner));

  JavaProperties outerStore;
  JavaProperties innerStore;
  LogRecorder log;
  bool loadedInner = false;
  log.OnMessage([&](const std::string& message) {
    if (loadedInner || message != "Loading 'a' to '1'") return;
    loadedInner = true;
    bool opened = false;
    EXPECT_TRUE(ReadWhole(innerStore, inner, opened));
  });
  bool opened = false;
  EXPECT_TRUE(ReadWhole(outerStore, outer, opened));

  EXPECT_TRUE(loadedInner);
  EXPECT_EQ("a=1\nb=2\nc=3\n", outerStore.ToText(""));
  EXPECT_EQ(expectedInner.ToText(""), innerStore.ToText(""));
}

}  // namespace
