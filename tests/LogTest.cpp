// LogTest.cpp - the library's own Log, without the test recorder in front of
// it: silent by default, one line per message on standard error in a library
// built with -DPROPERTIES_LOG=stderr.

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>

#include "JavaProperties.h"
#include "Properties.h"
#include "PropertyThreadGuard.h"

namespace {

char kNumberFormat[] = "x %d";

// Everything written to standard error (file descriptor 2) while action runs.
std::string CapturedStderr(const std::function<void()>& action) {
  char path[] = "/tmp/libproperties-stderr-XXXXXX";
  const int capture = mkstemp(path);
  std::fflush(stderr);
  const int saved = dup(2);
  dup2(capture, 2);
  action();
  std::fflush(stderr);
  dup2(saved, 2);
  close(saved);
  close(capture);
  std::ifstream in(path);
  std::stringstream text;
  text << in.rdbuf();
  unlink(path);
  return text.str();
}

std::string LoadWithRedefinition() {
  return CapturedStderr([] {
    JavaProperties properties;
    std::istringstream in("a=1\na=2\n");
    properties.Load(in);
  });
}

// A bound file whose stored text the property rejects.
std::string LoadRejectedStoredValue() {
  char dir[] = "/tmp/libproperties-log-XXXXXX";
  if (mkdtemp(dir) == nullptr) return "mkdtemp failed";
  const std::string path = std::string(dir) + "/app.properties";
  std::ofstream(path.c_str()) << "port=eighty\n";
  const std::string text = CapturedStderr([&path] {
    JavaPropertyManager* manager =
        Properties::GetInstance()->GetJavaPropertyManager("LogTest");
    manager->RegisterNonPersistence(path);
    manager->RegisterProperty("PROPERTY_TYPE_INTEGER", "port", "80");
  });
  unlink(path.c_str());
  rmdir(dir);
  return text;
}

#ifdef PROPERTIES_LOG_STDERR

TEST(LogTest, WritesEachMessageAsOneLineWithItsLevel) {
  EXPECT_EQ("libproperties[1]: x 5\nlibproperties[3]: x -2\n",
            CapturedStderr([] {
              Log(1, kNumberFormat, 5);
              Log(3, kNumberFormat, -2);
            }));
}

TEST(LogTest, ReaderMessagesAppearWithTheirLineNumbers) {
  EXPECT_EQ(
      "libproperties[1]: Loading 'a' to '1'\n"
      "libproperties[1]: Line 2 redefines a property\n"
      "libproperties[1]: Loading 'a' to '2'\n",
      LoadWithRedefinition());
}

TEST(LogTest, RejectedStoredValueIsReported) {
  EXPECT_EQ(
      "libproperties[1]: Loading 'port' to 'eighty'\n"
      "libproperties[1]: Format of property 'port' seems to be changed: "
      "'Property 'port' can only contain 'an integer value''\n",
      LoadRejectedStoredValue());
}

TEST(LogTest, LoggingSwitchesChangeNothing) {
  Properties::GetInstance()->DisableInternalLogging();
  EXPECT_EQ("libproperties[1]: x 1\n",
            CapturedStderr([] { Log(1, kNumberFormat, 1); }));
  Properties::GetInstance()->EnableInternalLogging("anything");
}

#else

char kMismatchedFormat[] = "%s %s %n %d";

TEST(LogTest, IgnoresFormatWhoseArgumentsDoNotMatch) {
  // Reading these arguments as the format says would dereference an int as a
  // string and write through %n; a discarding Log must do neither.
  EXPECT_EQ("", CapturedStderr([] {
              Log(1, kMismatchedFormat, 42);
              Log(-7, kMismatchedFormat);
              Log(12345, nullptr);
            }));
}

TEST(LogTest, ReaderWritesNothing) { EXPECT_EQ("", LoadWithRedefinition()); }

TEST(LogTest, RejectedStoredValueWritesNothing) {
  EXPECT_EQ("", LoadRejectedStoredValue());
}

TEST(LogTest, LoggingSwitchesChangeNothing) {
  Properties::GetInstance()->EnableInternalLogging("anything");
  EXPECT_EQ("", CapturedStderr([] { Log(1, kNumberFormat, 1); }));
  Properties::GetInstance()->DisableInternalLogging();
}

#endif

}  // namespace
