// FileReadTest.cpp - the library's own file reads (one read of the whole
// file, parsed in memory) against the stream reader: same table, same result,
// same log lines, for edge cases and for every file of the fuzz corpora.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "IniProperties.h"
#include "JavaProperties.h"
#include "support/LogRecorder.h"
#include "support/TempDir.h"

namespace {

using test_support::LogRecorder;
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
    result = store.LoadFile(path, opened);
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
          "#c\n k = \" v \" \n=x\nk=\n"};
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
// defined never to finish loading, so neither path may be run on them here.
bool HasOverlongLine(const std::string& path) {
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

class FileReadTest : public testing::Test {
 protected:
  std::vector<std::string> EdgeCaseFiles() {
    std::vector<std::string> paths;
    for (const std::string& text : EdgeCases()) {
      paths.push_back(m_dir.File("case" + std::to_string(paths.size())));
      WriteFile(paths.back(), text);
    }
    return paths;
  }

  TempDir m_dir;
};

TEST_F(FileReadTest, FlatWholeFileReadEqualsStreamReadOnEdgeCases) {
  ExpectSameOnEveryFile<JavaProperties>(EdgeCaseFiles());
}

TEST_F(FileReadTest, IniWholeFileReadEqualsStreamReadOnEdgeCases) {
  ExpectSameOnEveryFile<IniProperties>(EdgeCaseFiles());
}

TEST_F(FileReadTest, FlatWholeFileReadEqualsStreamReadOnFuzzCorpus) {
  ExpectSameOnEveryFile<JavaProperties>(CorpusFiles("JavaPropertiesFuzzer"));
}

TEST_F(FileReadTest, IniWholeFileReadEqualsStreamReadOnFuzzCorpus) {
  ExpectSameOnEveryFile<IniProperties>(CorpusFiles("IniPropertiesFuzzer"));
}

TEST_F(FileReadTest, MissingFileIsNotOpenedAndLeavesTableUnchanged) {
  JavaProperties store;
  store.SetProperty("a", "1");
  bool opened = true;
  EXPECT_FALSE(store.LoadFile(m_dir.File("missing"), opened));
  EXPECT_FALSE(opened);
  EXPECT_EQ("a=1\n", store.ToText(""));
}

TEST_F(FileReadTest, DirectoryIsReadLikeTheStreamReaderDoes) {
  LogRecorder log;
  IniProperties store;
  bool opened = false;
  EXPECT_FALSE(store.LoadFile(m_dir.path(), opened));
  EXPECT_TRUE(opened);
  EXPECT_EQ(std::vector<std::string>{"Error reading Line 1"}, log.Messages());
}

}  // namespace
