// EndToEndTest.cpp - values of all six types written to files by one process
// and picked up by the next, through both flavours of manager.

#include <gtest/gtest.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <functional>
#include <string>

#include "Properties.h"
#include "support/TempDir.h"

namespace {

using test_support::ReadFile;
using test_support::TempDir;
using test_support::WriteFile;

const char kHeader[] = "end to end";

// One property as both processes register it. The first process registers it
// with firstDefault and sets it to value; the second registers it with
// secondDefault and must find stored, the text form of value.
struct Setting {
  const char* type;
  const char* section;  // In the INI file.
  const char* key;
  const char* firstDefault;
  const char* value;
  const char* secondDefault;
  const char* stored;
};

const Setting kSettings[] = {
    {"PROPERTY_TYPE_INTEGER", "network", "port", "1", "8080", "2", "8080"},
    {"PROPERTY_TYPE_IP_ADDR", "network", "server", "127.0.0.1", "10.1",
     "127.0.0.2", "10.0.0.1"},
    {"PROPERTY_TYPE_DOUBLE", "network", "timeout", "0.5", "2.25", "1.5",
     "2.25"},
    {"PROPERTY_TYPE_BOOLEAN", "display", "verbose", "false", "true", "false",
     "true"},
    {"PROPERTY_TYPE_STRING", "display", "greeting", "hi", "hello world", "hey",
     "hello world"},
    {"PROPERTY_TYPE_LIST", "display", "color", "red|green|blue", "blue",
     "green|red|blue", "blue"},
};
const int kSettingCount = sizeof(kSettings) / sizeof(kSettings[0]);

const char kFlatText[] =
    "#end to end\n"
    "color=blue\n"
    "greeting=hello world\n"
    "port=8080\n"
    "server=10.0.0.1\n"
    "timeout=2.25\n"
    "verbose=true\n";

const char kIniText[] =
    ";end to end\n"
    "[display]\n"
    "color=blue\n"
    "greeting=hello world\n"
    "verbose=true\n"
    "\n"
    "[network]\n"
    "port=8080\n"
    "server=10.0.0.1\n"
    "timeout=2.25\n"
    "\n";

// Exit codes of the second process: 0, or the first check that failed.
const int kFlatMismatch = 10;  // + index into kSettings
const int kIniMismatch = 20;   // + index into kSettings
const int kUncaughtException = 99;

// Runs body in a child forked from the test process and returns its exit
// code (128 + the signal number if it was killed).
int RunInChild(const std::function<int()>& body) {
  std::fflush(nullptr);
  const pid_t pid = fork();
  if (pid == 0) {
    int code = kUncaughtException;
    try {
      code = body();
    } catch (...) {
    }
    _exit(code);
  }
  if (pid < 0) return -1;
  int status = 0;
  if (waitpid(pid, &status, 0) != pid) return -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

// What an exit code of the second process says, for failure messages.
std::string Describe(int code) {
  if (code >= kFlatMismatch && code < kFlatMismatch + kSettingCount) {
    return std::string("flat value of ") + kSettings[code - kFlatMismatch].key +
           " was not picked up";
  }
  if (code >= kIniMismatch && code < kIniMismatch + kSettingCount) {
    return std::string("INI value of ") + kSettings[code - kIniMismatch].key +
           " was not picked up";
  }
  return "exit code " + std::to_string(code);
}

class EndToEndTest : public testing::Test {
 protected:
  EndToEndTest()
      : m_flatPath(m_dir.File("app.properties")),
        m_iniPath(m_dir.File("app.ini")) {
    // The test process itself never asks for these names, so every child
    // starts without them.
    const testing::TestInfo* test =
        testing::UnitTest::GetInstance()->current_test_info();
    m_flatName = std::string("EndToEndTest.") + test->name() + ".flat";
    m_iniName = std::string("EndToEndTest.") + test->name() + ".ini";
  }

  // Binds both managers read-write, as both processes do.
  void Bind(JavaPropertyManager** flat, IniPropertyManager** ini) {
    *flat = Properties::GetInstance()->GetJavaPropertyManager(m_flatName);
    *ini = Properties::GetInstance()->GetIniPropertyManager(m_iniName);
    (*flat)->RegisterPersistence(m_flatPath, kHeader);
    (*ini)->RegisterPersistence(m_iniPath, kHeader);
  }

  // The first process: registers every setting and sets its value.
  int WriteValues() {
    JavaPropertyManager* flat = nullptr;
    IniPropertyManager* ini = nullptr;
    Bind(&flat, &ini);
    for (const Setting& s : kSettings) {
      flat->RegisterProperty(s.type, s.key, s.firstDefault);
      ini->RegisterProperty(s.type, s.section, s.key, s.firstDefault);
    }
    for (const Setting& s : kSettings) {
      flat->SetValue(s.key, s.value);
      ini->SetValue(s.section, s.key, s.value);
    }
    return 0;
  }

  // The second process: registers every setting with another default and
  // checks that the stored value replaced it.
  int CheckValues() {
    JavaPropertyManager* flat = nullptr;
    IniPropertyManager* ini = nullptr;
    Bind(&flat, &ini);
    for (int i = 0; i < kSettingCount; ++i) {
      const Setting& s = kSettings[i];
      Property* property =
          flat->RegisterProperty(s.type, s.key, s.secondDefault);
      if (property == nullptr || property->GetValue() != s.stored) {
        return kFlatMismatch + i;
      }
      property =
          ini->RegisterProperty(s.type, s.section, s.key, s.secondDefault);
      if (property == nullptr || property->GetValue() != s.stored) {
        return kIniMismatch + i;
      }
    }
    return 0;
  }

  // Runs the first and then the second process.
  void RunBothProcesses() {
    const int written = RunInChild([this] { return WriteValues(); });
    ASSERT_EQ(0, written) << Describe(written);
    const int checked = RunInChild([this] { return CheckValues(); });
    ASSERT_EQ(0, checked) << Describe(checked);
  }

  TempDir m_dir;
  std::string m_flatPath;
  std::string m_iniPath;
  std::string m_flatName;
  std::string m_iniName;
};

TEST_F(EndToEndTest, FirstProcessWritesEveryValueToBothFiles) {
  const int written = RunInChild([this] { return WriteValues(); });
  ASSERT_EQ(0, written) << Describe(written);
  EXPECT_EQ(kFlatText, ReadFile(m_flatPath));
  EXPECT_EQ(kIniText, ReadFile(m_iniPath));
}

TEST_F(EndToEndTest, NextProcessPicksUpEveryStoredValue) {
  RunBothProcesses();
  EXPECT_EQ(kFlatText, ReadFile(m_flatPath));
  EXPECT_EQ(kIniText, ReadFile(m_iniPath));
}

TEST_F(EndToEndTest, KeysWrittenByHandSurviveEveryRewrite) {
  WriteFile(m_flatPath, "# edited by hand\nhandmade = yes\n");
  WriteFile(
      m_iniPath,
      "; edited by hand\n[network]\nhandmade = yes\n[legacy]\nkey=kept\n");
  RunBothProcesses();
  EXPECT_EQ(
      "#end to end\n"
      "color=blue\n"
      "greeting=hello world\n"
      "handmade=yes\n"
      "port=8080\n"
      "server=10.0.0.1\n"
      "timeout=2.25\n"
      "verbose=true\n",
      ReadFile(m_flatPath));
  EXPECT_EQ(
      ";end to end\n"
      "[display]\n"
      "color=blue\n"
      "greeting=hello world\n"
      "verbose=true\n"
      "\n"
      "[legacy]\n"
      "key=kept\n"
      "\n"
      "[network]\n"
      "handmade=yes\n"
      "port=8080\n"
      "server=10.0.0.1\n"
      "timeout=2.25\n"
      "\n",
      ReadFile(m_iniPath));
}

}  // namespace
