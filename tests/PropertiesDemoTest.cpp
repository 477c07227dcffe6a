// PropertiesDemoTest.cpp - the demo that `make demo` runs: it explains what
// may surprise a newcomer, and cleans up after itself unless asked not to.

#include <dirent.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <string>
#include <vector>

#include "support/ChildProcess.h"
#include "support/TempDir.h"

#ifdef PROPERTIES_DEMO

namespace {

using test_support::ProgramResult;
using test_support::ReadFile;
using test_support::RunProgram;
using test_support::TempDir;

// The names in dir, "." and ".." left out.
std::vector<std::string> Entries(const std::string& dir) {
  std::vector<std::string> names;
  DIR* handle = opendir(dir.c_str());
  if (handle == nullptr) return names;
  while (dirent* entry = readdir(handle)) {
    const std::string name = entry->d_name;
    if (name != "." && name != "..") names.push_back(name);
  }
  closedir(handle);
  return names;
}

bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

class PropertiesDemoTest : public testing::Test {
 protected:
  ProgramResult Run(const std::vector<std::string>& arguments) {
    std::vector<std::string> argv = {PROPERTIES_DEMO};
    argv.insert(argv.end(), arguments.begin(), arguments.end());
    return RunProgram(argv,
                      {"TMPDIR=" + m_tmp.path(), "LIBPROPERTIES_LOG",
                       "LIBPROPERTIES_STRICT", "LIBPROPERTIES_LONG_LINES"});
  }

  TempDir m_tmp;
};

TEST_F(PropertiesDemoTest, ExplainsEachSurpriseInOneLine) {
  const ProgramResult result = Run({});
  ASSERT_EQ(0, result.status) << result.err;
  for (const char* line :
       {"  (the file's port replaced the default 8080; loading a stored value "
        "counts as a change)\n",
        "  (loading port changed it, so the file was rewritten: unknown keys "
        "stay, comments and spacing go)\n",
        "  (an integer is digits with an optional leading '-', no '+')\n",
        "  (a list takes an element or its position from 0: 3 is 'error')\n",
        "  (every stored value loaded counts as a change)\n"}) {
    EXPECT_TRUE(Contains(result.out, line)) << line << "\nin\n" << result.out;
  }
}

TEST_F(PropertiesDemoTest, RemovesItsDirectoryAfterTheSecondRun) {
  const ProgramResult result = Run({});
  ASSERT_EQ(0, result.status) << result.err;
  EXPECT_TRUE(Contains(result.out, "=== later run in ")) << result.out;
  EXPECT_TRUE(Contains(result.out, "\nremoved ")) << result.out;
  EXPECT_EQ(std::vector<std::string>(), Entries(m_tmp.path()));
}

TEST_F(PropertiesDemoTest, KeepLeavesTheDirectoryWithWhatTheRunsStored) {
  const ProgramResult result = Run({"--keep"});
  ASSERT_EQ(0, result.status) << result.err;
  const std::vector<std::string> made = Entries(m_tmp.path());
  ASSERT_EQ(1u, made.size());
  const std::string dir = m_tmp.File(made[0]);
  EXPECT_EQ(
      "#server settings\nbanner=hello\nlevel=error\nlisten=127.0.0.1\n"
      "log.retention.days=30\nport=8081\ntimeout=0.25\ntls=true\n",
      ReadFile(dir + "/server.properties"));
  EXPECT_EQ(
      ";user interface\n[panel]\nwidth=240\n\n[window]\ntitle=Demo\n"
      "width=1024\n\n",
      ReadFile(dir + "/ui.ini"));
  std::remove((dir + "/server.properties").c_str());
  std::remove((dir + "/ui.ini").c_str());
  rmdir(dir.c_str());
}

TEST_F(PropertiesDemoTest, GivenDirectoryIsKept) {
  const std::string dir = m_tmp.File("mine");
  const ProgramResult result = Run({dir});
  ASSERT_EQ(0, result.status) << result.err;
  EXPECT_TRUE(Contains(result.out, "=== first run in " + dir)) << result.out;
  EXPECT_FALSE(Contains(result.out, "removed")) << result.out;
  EXPECT_EQ(2u, Entries(dir).size());
  std::remove((dir + "/server.properties").c_str());
  std::remove((dir + "/ui.ini").c_str());
  rmdir(dir.c_str());
}

}  // namespace

#endif  // PROPERTIES_DEMO
