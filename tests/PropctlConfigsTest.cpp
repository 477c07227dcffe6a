// PropctlConfigsTest.cpp - propctl on the hand-written configuration files
// of configs/, shaped like those found on real machines: "check" warns about
// exactly the lines listed in each file's .check expectation, and "set"
// changes one line for an existing key, adds one for a new key and two for a
// new section, while the file reads as it does when written anew.

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "support/ChildProcess.h"
#include "support/TempDir.h"

namespace {

const char kExpectation[] = ".check";

bool EndsWith(const std::string& text, const std::string& end) {
  return text.size() >= end.size() &&
         text.compare(text.size() - end.size(), end.size(), end) == 0;
}

// The configuration files of configs/, sorted: every file but the
// expectations and the README.
std::vector<std::string> ConfigFiles() {
  std::vector<std::string> names;
  for (const auto& entry :
       std::filesystem::directory_iterator(PROPERTIES_CONFIGS_DIR)) {
    const std::string name = entry.path().filename().string();
    if (EndsWith(name, kExpectation) || name == "README.md") continue;
    names.push_back(name);
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::string Path(const std::string& name) {
  return std::string(PROPERTIES_CONFIGS_DIR) + "/" + name;
}

// Each line of text with from at its start replaced by to.
std::string ReplaceLineStarts(const std::string& text, const std::string& from,
                              const std::string& to) {
  std::string result;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    if (line.compare(0, from.size(), from) == 0) {
      line = to + line.substr(from.size());
    }
    result += line + "\n";
  }
  return result;
}

class PropctlConfigsTest : public testing::TestWithParam<std::string> {};

TEST_P(PropctlConfigsTest, CheckWarnsAboutExactlyTheExpectedLines) {
  const std::string name = GetParam();
  const std::string expected =
      test_support::ReadFile(Path(name + kExpectation));
  const test_support::ProgramResult result =
      test_support::RunProgram({PROPERTIES_PROPCTL, "check", Path(name)},
                               {"LIBPROPERTIES_LONG_LINES=limit"});
  // The expectation names the file without its directory.
  EXPECT_EQ(expected,
            ReplaceLineStarts(result.out, Path(name) + ":", name + ":"));
  EXPECT_EQ(expected.empty() ? 0 : 1, result.status) << result.err;
}

// The lines of text, each with its line end.
std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  for (size_t start = 0; start < text.size();) {
    size_t end = text.find('\n', start);
    end = end == std::string::npos ? text.size() : end + 1;
    lines.push_back(text.substr(start, end - start));
    start = end;
  }
  return lines;
}

// One entry as "propctl list" prints it: its section ("" in flat files) and
// key.
struct Entry {
  std::string section;
  std::string key;
};

test_support::ProgramResult Propctl(const std::vector<std::string>& args) {
  std::vector<std::string> argv = {PROPERTIES_PROPCTL};
  argv.insert(argv.end(), args.begin(), args.end());
  return test_support::RunProgram(argv, {"LIBPROPERTIES_LONG_LINES=limit"});
}

// The entries of the file at path, as the library reads them.
std::vector<Entry> ListedEntries(const std::string& path) {
  std::vector<Entry> entries;
  std::string section;
  std::istringstream lines(Propctl({"list", path}).out);
  for (std::string line; std::getline(lines, line);) {
    if (line.empty()) continue;
    const size_t equals = line.find('=');
    if (line[0] == '[' && line.back() == ']') {
      section = line.substr(1, line.size() - 2);
    } else if (equals != std::string::npos) {
      entries.push_back(Entry{section, line.substr(0, equals)});
    }
  }
  return entries;
}

// A copy of a corpus file in a fresh directory, changed by propctl set.
class SetCopy {
 public:
  explicit SetCopy(const std::string& name)
      : m_name(name), m_original(test_support::ReadFile(Path(name))) {}

  // Runs "propctl set [options] -- FILE [section] key value" on a fresh copy
  // named after the corpus file (so that its format is told as for the
  // original) and returns the copy's text; the other copy gets the same
  // set with --normalize. Fails the test if either set fails or says that
  // the file was written anew.
  std::string Set(const std::string& section, const std::string& key,
                  const std::string& value) {
    Run(m_kept.File(m_name), {}, section, key, value);
    Run(m_normalized.File(m_name), {"--normalize"}, section, key, value);
    return test_support::ReadFile(m_kept.File(m_name));
  }
  // What the library reads from the two copies.
  std::string KeptTable() const { return List(m_kept.File(m_name)); }
  std::string NormalizedTable() const {
    return List(m_normalized.File(m_name));
  }
  const std::string& Original() const { return m_original; }

 private:
  void Run(const std::string& path, std::vector<std::string> args,
           const std::string& section, const std::string& key,
           const std::string& value) {
    test_support::WriteFile(path, m_original);
    args.insert(args.begin(), "set");
    args.insert(args.end(), {"--", path});
    if (!section.empty()) args.push_back(section);
    args.insert(args.end(), {key, value});
    const test_support::ProgramResult result = Propctl(args);
    EXPECT_EQ(0, result.status) << result.err;
    EXPECT_EQ(std::string::npos, result.err.find("written anew")) << result.err;
  }
  static std::string List(const std::string& path) {
    return Propctl({"list", path}).out;
  }

  std::string m_name;
  std::string m_original;
  test_support::TempDir m_kept;
  test_support::TempDir m_normalized;
};

// The number of lines of to that are not lines of from, if from is to with
// lines taken out in order; -1 otherwise.
int AddedLines(const std::vector<std::string>& from,
               const std::vector<std::string>& to) {
  size_t i = 0;
  for (const std::string& line : to) {
    if (i < from.size() && line == from[i]) ++i;
  }
  return i == from.size() ? static_cast<int>(to.size() - from.size()) : -1;
}

// The number of lines that differ between two texts of as many lines, or -1.
int ChangedLines(const std::vector<std::string>& from,
                 const std::vector<std::string>& to) {
  if (from.size() != to.size()) return -1;
  int changed = 0;
  for (size_t i = 0; i < from.size(); ++i) changed += from[i] != to[i];
  return changed;
}

TEST_P(PropctlConfigsTest, SetOfExistingKeyChangesOneLine) {
  const std::vector<Entry> entries = ListedEntries(Path(GetParam()));
  ASSERT_FALSE(entries.empty());
  // The first, a middle and the last entry.
  for (size_t i : {size_t(0), entries.size() / 2, entries.size() - 1}) {
    SetCopy copy(GetParam());
    const std::string text =
        copy.Set(entries[i].section, entries[i].key, "set by test");
    EXPECT_EQ(1, ChangedLines(Lines(copy.Original()), Lines(text)))
        << entries[i].key << ":\n"
        << text;
    EXPECT_EQ(copy.NormalizedTable(), copy.KeptTable()) << entries[i].key;
  }
}

TEST_P(PropctlConfigsTest, SetOfNewKeyAddsOneLine) {
  const std::vector<Entry> entries = ListedEntries(Path(GetParam()));
  ASSERT_FALSE(entries.empty());
  SetCopy copy(GetParam());
  const std::string text =
      copy.Set(entries.back().section, "added.by.test", "1");
  EXPECT_EQ(1, AddedLines(Lines(copy.Original()), Lines(text))) << text;
  EXPECT_EQ(copy.NormalizedTable(), copy.KeptTable());
}

TEST_P(PropctlConfigsTest, SetInNewSectionAddsTwoLines) {
  if (ListedEntries(Path(GetParam())).front().section.empty()) {
    GTEST_SKIP() << "a flat file";
  }
  SetCopy copy(GetParam());
  const std::string text = copy.Set("added by test", "key", "1");
  EXPECT_EQ(2, AddedLines(Lines(copy.Original()), Lines(text))) << text;
  EXPECT_EQ(copy.NormalizedTable(), copy.KeptTable());
}

TEST(PropctlConfigsCorpusTest, EveryFileHasAnExpectation) {
  ASSERT_FALSE(ConfigFiles().empty());
  for (const std::string& name : ConfigFiles()) {
    EXPECT_TRUE(std::filesystem::exists(Path(name + kExpectation))) << name;
  }
}

INSTANTIATE_TEST_SUITE_P(Configs, PropctlConfigsTest,
                         testing::ValuesIn(ConfigFiles()),
                         [](const testing::TestParamInfo<std::string>& info) {
                           // "os-release" is OsRelease: letters and digits
                           // only.
                           std::string name;
                           bool upper = true;
                           for (char c : info.param) {
                             if (!std::isalnum(static_cast<unsigned char>(c))) {
                               upper = true;
                               continue;
                             }
                             name +=
                                 upper ? static_cast<char>(std::toupper(c)) : c;
                             upper = false;
                           }
                           return name;
                         });

}  // namespace
