// PropctlConfigsTest.cpp - propctl on the hand-written configuration files
// of configs/, shaped like those found on real machines: "check" warns about
// exactly the lines listed in each file's .check expectation.

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "support/ChildProcess.h"

namespace {

const char kExpectation[] = ".check";

std::string ReadAll(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

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
  const std::string expected = ReadAll(Path(name + kExpectation));
  const test_support::ProgramResult result =
      test_support::RunProgram({PROPERTIES_PROPCTL, "check", Path(name)},
                               {"LIBPROPERTIES_LONG_LINES=limit"});
  // The expectation names the file without its directory.
  EXPECT_EQ(expected,
            ReplaceLineStarts(result.out, Path(name) + ":", name + ":"));
  EXPECT_EQ(expected.empty() ? 0 : 1, result.status) << result.err;
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
