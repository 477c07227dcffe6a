// SafetyEnvironmentTest.cpp - what the library's environment variables
// change in a program that runs on it: LIBPROPERTIES_LONG_LINES (lines of
// 512 or more characters read whole, or the 511-character limit on which a
// load never returns), LIBPROPERTIES_STRICT (managers refuse values that
// would not read back) and LIBPROPERTIES_LOG (where the library's own Log()
// writes). The variables are read once per process, so every case runs
// SafetyDriver as a program of its own; runs that are meant to end are
// bounded too.

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "support/ChildProcess.h"
#include "support/StoreTesting.h"
#include "support/TempDir.h"

namespace {

using test_support::LineOfLength;
using test_support::ProgramResult;
using test_support::Ran;
using test_support::StartedProgram;

// For the runs whose standard error must stay empty whatever the library's
// build logs by default.
const char kQuiet[] = "LIBPROPERTIES_LOG=none";

// How long a load is given before it counts as one that never returns. A
// load of these small files takes a few milliseconds.
const int kNeverReturnsMs = 1500;
// The bound for runs that are meant to end: far beyond what they need.
const int kEndsWithinMs = 20000;

// The status of a program that Finish() had to kill.
const int kKilled = 128 + SIGKILL;

// A 600-character entry line "k=xx...x" and its value.
const std::string kLongLine = LineOfLength(600);
const std::string kLongValue = kLongLine.substr(2);

// A long line between two short ones: line 2 of the flat file, line 3 of the
// INI file.
const std::string kFlatText = "first=1\n" + kLongLine + "\nlast=3\n";
const std::string kIniText = "[s]\nfirst=1\n" + kLongLine + "\nlast=3\n";

// What the load roles print for those files.
const std::string kFlatLoaded = "loading\nfirst=1\n" + kLongLine + "\nlast=3\n";
const std::string kIniLoaded =
    "loading\n[s]first=1\n[s]" + kLongLine + "\n[s]last=3\n";

// The library's variables are removed from the test's own environment
// first, so that only those a case names are set.
std::vector<std::string> Environment(const std::vector<std::string>& set) {
  std::vector<std::string> environment = {
      "LIBPROPERTIES_LONG_LINES", "LIBPROPERTIES_STRICT", "LIBPROPERTIES_LOG"};
  environment.insert(environment.end(), set.begin(), set.end());
  return environment;
}

// One run of a driver: its program, arguments and variables.
struct DriverRun {
  std::string driver;
  std::vector<std::string> args;
  std::vector<std::string> variables;
};

// Starts every run at once, gives them timeoutMs together, kills those that
// are still running then, and returns how each ended, in order.
std::vector<ProgramResult> RunTogether(const std::vector<DriverRun>& runs,
                                       int timeoutMs) {
  std::vector<std::unique_ptr<StartedProgram>> started;
  for (const DriverRun& run : runs) {
    std::vector<std::string> argv = {run.driver};
    argv.insert(argv.end(), run.args.begin(), run.args.end());
    started.emplace_back(new StartedProgram(argv, Environment(run.variables)));
    EXPECT_TRUE(started.back()->Started()) << run.driver;
  }
  const auto deadline =
      std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
  std::vector<ProgramResult> results;
  for (const std::unique_ptr<StartedProgram>& program : started) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
        deadline - std::chrono::steady_clock::now());
    results.push_back(
        program->Finish(left.count() > 0 ? static_cast<int>(left.count()) : 0));
  }
  return results;
}

ProgramResult RunDriver(const std::string& driver,
                        const std::vector<std::string>& args,
                        const std::vector<std::string>& variables) {
  return RunTogether({DriverRun{driver, args, variables}}, kEndsWithinMs)[0];
}

// Success if the run got to its load and was killed there.
testing::AssertionResult NeverReturned(const ProgramResult& result) {
  if (result.status == kKilled && result.out == "loading\n") {
    return testing::AssertionSuccess();
  }
  return testing::AssertionFailure()
         << "status " << result.status << ", out \"" << result.out
         << "\", err \"" << result.err << "\"";
}

class SafetyEnvironmentTest : public testing::Test {
 protected:
  SafetyEnvironmentTest()
      : m_flat(m_dir.File("app.properties")), m_ini(m_dir.File("app.ini")) {
    test_support::WriteFile(m_flat, kFlatText);
    test_support::WriteFile(m_ini, kIniText);
  }

  // The runs of every reader of the library on the files with a long line:
  // both stores (from a file and from a stream) and both bindings.
  std::vector<DriverRun> EveryReader(
      const std::string& driver,
      const std::vector<std::string>& variables) const {
    return {
        DriverRun{driver, {"load-flat-store", m_flat}, variables},
        DriverRun{driver, {"load-flat-stream", m_flat}, variables},
        DriverRun{driver, {"load-ini-store", m_ini}, variables},
        DriverRun{driver, {"load-ini-stream", m_ini}, variables},
        DriverRun{driver, {"bind-flat", m_flat, "k"}, variables},
        DriverRun{driver, {"bind-ini", m_ini, "s", "k"}, variables},
    };
  }
  // What each of EveryReader()'s runs prints when it reads the files whole.
  static std::vector<std::string> EveryReaderPrints() {
    const std::string bound = "loading\n" + kLongValue + "\n";
    return {kFlatLoaded, kFlatLoaded, kIniLoaded, kIniLoaded, bound, bound};
  }

  // Expects every reader to take the long line whole, and both bindings to
  // write it back whole.
  void ExpectEveryReaderReadsTheLongLine(
      const std::string& driver, const std::vector<std::string>& variables) {
    const std::vector<ProgramResult> results =
        RunTogether(EveryReader(driver, variables), kEndsWithinMs);
    const std::vector<std::string> prints = EveryReaderPrints();
    for (size_t i = 0; i < results.size(); ++i) {
      EXPECT_EQ(0, results[i].status) << "run " << i << ": " << results[i].err;
      EXPECT_EQ(prints[i], results[i].out) << "run " << i;
    }
    // Both bindings rewrote their files (in the writer's form) with the long
    // entry whole.
    EXPECT_EQ(kFlatText, test_support::ReadFile(m_flat));
    EXPECT_EQ(kIniText + "\n", test_support::ReadFile(m_ini));
  }

  // Expects every reader to get to its load and never return from it.
  void ExpectEveryReaderNeverReturns(
      const std::string& driver, const std::vector<std::string>& variables) {
    const std::vector<ProgramResult> results =
        RunTogether(EveryReader(driver, variables), kNeverReturnsMs);
    for (size_t i = 0; i < results.size(); ++i) {
      EXPECT_TRUE(NeverReturned(results[i])) << "run " << i;
    }
    // Nothing was written: the bindings never got past their first load.
    EXPECT_EQ(kFlatText, test_support::ReadFile(m_flat));
    EXPECT_EQ(kIniText, test_support::ReadFile(m_ini));
  }

  test_support::TempDir m_dir;
  const std::string m_flat;
  const std::string m_ini;
};

const std::string kDriver = PROPERTIES_SAFETY_DRIVER;
const std::string kReadingDriver = PROPERTIES_SAFETY_DRIVER_READING_LONG_LINES;

// LIBPROPERTIES_LONG_LINES --------------------------------------------------

TEST_F(SafetyEnvironmentTest, LongLinesReadTakesALongLineWholeInEveryReader) {
  ExpectEveryReaderReadsTheLongLine(kDriver, {"LIBPROPERTIES_LONG_LINES=read"});
}

TEST_F(SafetyEnvironmentTest, LongLinesReadLogsTheLongLineWithItsNumber) {
  const std::vector<ProgramResult> results =
      RunTogether(EveryReader(kDriver, {"LIBPROPERTIES_LONG_LINES=read",
                                        "LIBPROPERTIES_LOG=stderr"}),
                  kEndsWithinMs);
  const std::vector<std::string> prints = EveryReaderPrints();
  const std::string flatLoad =
      "libproperties[1]: Loading 'first' to '1'\n"
      "libproperties[1]: Line 2 is too long\n"
      "libproperties[1]: Loading 'k' to '" +
      kLongValue +
      "'\n"
      "libproperties[1]: Loading 'last' to '3'\n";
  const std::string iniLoad =
      "libproperties[1]: Loading 'first' of 's' to '1'\n"
      "libproperties[1]: Line 3 is too long\n"
      "libproperties[1]: Loading 'k' of 's' to '" +
      kLongValue +
      "'\n"
      "libproperties[1]: Loading 'last' of 's' to '3'\n";
  // The stores load once; a binding loads for its property and again to
  // merge its rewrite, and may log more around that.
  const std::vector<std::string> loads = {flatLoad, flatLoad, iniLoad,
                                          iniLoad,  flatLoad, iniLoad};
  for (size_t i = 0; i < results.size(); ++i) {
    EXPECT_EQ(0, results[i].status) << "run " << i;
    EXPECT_EQ(prints[i], results[i].out) << "run " << i;
    if (i < 4) {
      EXPECT_EQ(loads[i], results[i].err) << "run " << i;
    } else {
      EXPECT_EQ(0u, results[i].err.find(loads[i])) << "run " << i;
    }
  }
}

#ifndef PROPERTIES_TEST_READS_LONG_LINES

TEST_F(SafetyEnvironmentTest,
       WithoutLongLinesEveryReaderNeverReturnsOnALongLine) {
  ExpectEveryReaderNeverReturns(kDriver, {});
}

#else

TEST_F(SafetyEnvironmentTest, LibraryBuiltToReadLongLinesReadsThemUnasked) {
  ExpectEveryReaderReadsTheLongLine(kDriver, {});
}

#endif

TEST_F(SafetyEnvironmentTest, LongLinesLimitMakesEveryReaderNeverReturn) {
  ExpectEveryReaderNeverReturns(kDriver, {"LIBPROPERTIES_LONG_LINES=limit"});
}

TEST_F(SafetyEnvironmentTest, UnderTheLimitALineOf511CharactersIsReadWhole) {
  test_support::WriteFile(m_flat, LineOfLength(511) + "\nlast=3\n");
  EXPECT_TRUE(Ran(
      RunDriver(kDriver, {"load-flat-stream", m_flat},
                {"LIBPROPERTIES_LONG_LINES=limit", "LIBPROPERTIES_LOG=stderr"}),
      0, "loading\n" + LineOfLength(511) + "\nlast=3\n",
      "libproperties[1]: Line 1 is too long\n"
      "libproperties[1]: Loading 'k' to '" +
          LineOfLength(511).substr(2) +
          "'\n"
          "libproperties[1]: Loading 'last' to '3'\n"));
}

TEST_F(SafetyEnvironmentTest, AValueOtherThanReadOrLimitCountsAsUnset) {
  // The library built to read long lines keeps doing so.
  const ProgramResult result =
      RunDriver(kReadingDriver, {"load-ini-store", m_ini},
                {"LIBPROPERTIES_LONG_LINES=READ", kQuiet});
  EXPECT_TRUE(Ran(result, 0, kIniLoaded, ""));
}

// The library built with -DPROPERTIES_LONG_LINES=read ----------------------

TEST_F(SafetyEnvironmentTest,
       LibraryBuiltToReadLongLinesReadsThemWithoutTheVariable) {
  ExpectEveryReaderReadsTheLongLine(kReadingDriver, {});
}

TEST_F(SafetyEnvironmentTest,
       LongLinesLimitOverridesTheLibraryBuiltToReadThem) {
  const std::vector<ProgramResult> results =
      RunTogether({DriverRun{kReadingDriver,
                             {"load-flat-store", m_flat},
                             {"LIBPROPERTIES_LONG_LINES=limit"}},
                   DriverRun{kReadingDriver,
                             {"bind-ini", m_ini, "s", "k"},
                             {"LIBPROPERTIES_LONG_LINES=limit"}}},
                  kNeverReturnsMs);
  EXPECT_TRUE(NeverReturned(results[0]));
  EXPECT_TRUE(NeverReturned(results[1]));
  EXPECT_EQ(kIniText, test_support::ReadFile(m_ini));
}

// LIBPROPERTIES_STRICT ------------------------------------------------------

const char kInjected[] = "eve\nadmin=true";

TEST_F(SafetyEnvironmentTest, StrictRefusesAValueWithALineBreak) {
  const std::string file = m_dir.File("users.properties");
  test_support::WriteFile(file, "user=bob\n");
  EXPECT_TRUE(Ran(RunDriver(kDriver, {"set-flat", file, "user", kInjected},
                            {"LIBPROPERTIES_STRICT=1", kQuiet}),
                  0,
                  "refused: Property 'user' can not be kept in its file: the "
                  "value holds a line break\n",
                  ""));
  EXPECT_EQ("user=bob\n", test_support::ReadFile(file));
}

TEST_F(SafetyEnvironmentTest, StrictRefusesAValueWithALineBreakInASection) {
  const std::string file = m_dir.File("users.ini");
  test_support::WriteFile(file, "[s]\nuser=bob\n\n");
  EXPECT_TRUE(
      Ran(RunDriver(kDriver, {"set-ini", file, "s", "user", kInjected},
                    {"LIBPROPERTIES_STRICT=1", kQuiet}),
          0,
          "refused: Property 'user' of section 's' can not be kept in its "
          "file: the value holds a line break\n",
          ""));
  EXPECT_EQ("[s]\nuser=bob\n\n", test_support::ReadFile(file));
}

TEST_F(SafetyEnvironmentTest, WithoutStrictAValueWithALineBreakAddsALine) {
  const std::string file = m_dir.File("users.properties");
  test_support::WriteFile(file, "user=bob\n");
  EXPECT_TRUE(
      Ran(RunDriver(kDriver, {"set-flat", file, "user", kInjected}, {kQuiet}),
          0, "set\n", ""));
  EXPECT_EQ("user=eve\nadmin=true\n", test_support::ReadFile(file));
}

TEST_F(SafetyEnvironmentTest, StrictOtherThanOneCountsAsUnset) {
  const std::string file = m_dir.File("users.properties");
  test_support::WriteFile(file, "user=bob\n");
  EXPECT_TRUE(Ran(RunDriver(kDriver, {"set-flat", file, "user", kInjected},
                            {"LIBPROPERTIES_STRICT=yes", kQuiet}),
                  0, "set\n", ""));
  EXPECT_EQ("user=eve\nadmin=true\n", test_support::ReadFile(file));
}

// LIBPROPERTIES_LOG ---------------------------------------------------------

// A file bound in a directory that does not exist, and a value set in it.
class SafetyLogTest : public SafetyEnvironmentTest {
 protected:
  SafetyLogTest() : m_unwritable(m_dir.File("missing/app.properties")) {}

  ProgramResult SetInMissingDirectory(
      const std::vector<std::string>& variables) const {
    return RunDriver(kDriver, {"set-flat", m_unwritable, "k", "v"}, variables);
  }
  // What the library logs for it.
  std::string Logged() const {
    const std::string file = "File '" + m_unwritable + "'\n";
    return "libproperties[1]: Can not read " + file +
           "libproperties[1]: Property 'k' was not found\n"
           "libproperties[1]: Can not read " +
           file +
           "libproperties[1]: Setting 'k' to 'v'\n"
           "libproperties[1]: Can not write " +
           file;
  }

  const std::string m_unwritable;
};

TEST_F(SafetyLogTest, StderrGetsTheLineOfAFileThatCanNotBeWritten) {
  EXPECT_TRUE(Ran(SetInMissingDirectory({"LIBPROPERTIES_LOG=stderr"}), 0,
                  "set\n", Logged()));
}

#ifndef PROPERTIES_TEST_LOG_STDERR

TEST_F(SafetyLogTest, UnsetLogsNothing) {
  EXPECT_TRUE(Ran(SetInMissingDirectory({}), 0, "set\n", ""));
}

TEST_F(SafetyLogTest, AWordThatIsNoPathCountsAsUnset) {
  EXPECT_TRUE(Ran(SetInMissingDirectory({"LIBPROPERTIES_LOG=app.log"}), 0,
                  "set\n", ""));
  EXPECT_FALSE(test_support::FileExists("app.log"));
}

#else

TEST_F(SafetyLogTest, UnsetLogsToStderrAsTheLibraryWasBuilt) {
  EXPECT_TRUE(Ran(SetInMissingDirectory({}), 0, "set\n", Logged()));
}

#endif

TEST_F(SafetyLogTest, NoneLogsNothing) {
  EXPECT_TRUE(
      Ran(SetInMissingDirectory({"LIBPROPERTIES_LOG=none"}), 0, "set\n", ""));
}

TEST_F(SafetyLogTest, APathGetsTheLinesAppendedToAFileOfMode0600) {
  const std::string log = m_dir.File("libproperties.log");
  EXPECT_TRUE(
      Ran(SetInMissingDirectory({"LIBPROPERTIES_LOG=" + log}), 0, "set\n", ""));
  EXPECT_EQ(Logged(), test_support::ReadFile(log));
  struct stat status;
  ASSERT_EQ(0, ::stat(log.c_str(), &status));
  EXPECT_EQ(0600u, status.st_mode & 07777);
  // A later program adds its lines after those there.
  EXPECT_TRUE(
      Ran(SetInMissingDirectory({"LIBPROPERTIES_LOG=" + log}), 0, "set\n", ""));
  EXPECT_EQ(Logged() + Logged(), test_support::ReadFile(log));
}

TEST_F(SafetyLogTest, SyslogWritesNothingOnStderr) {
  EXPECT_TRUE(
      Ran(SetInMissingDirectory({"LIBPROPERTIES_LOG=syslog"}), 0, "set\n", ""));
}

}  // namespace

// LIBPROPERTIES_REUSE --------------------------------------------------------

// A program that binds a file sees the same with its bindings reusing what
// they read or wrote as with LIBPROPERTIES_REUSE=0: files, values, changes
// and messages (here the library's own Log(), silent or on standard error).
class SafetyReuseTest : public testing::Test {
 protected:
  ProgramResult Scenario(const std::string& role, unsigned seed,
                         std::vector<std::string> variables) {
    // One path for both runs: it stands in messages.
    return RunDriver(kDriver,
                     {role, m_dir.File("scenario"), std::to_string(seed)},
                     variables);
  }
  test_support::TempDir m_dir;
};

TEST_F(SafetyReuseTest, ReuseChangesNothingAProgramSees) {
  for (const std::string role : {"scenario-flat", "scenario-ini"}) {
    for (const std::string log :
         {"LIBPROPERTIES_LOG=none", "LIBPROPERTIES_LOG=stderr"}) {
      for (unsigned seed = 1; seed <= 8; ++seed) {
        const ProgramResult anew =
            Scenario(role, seed, {log, "LIBPROPERTIES_REUSE=0"});
        const ProgramResult reused = Scenario(role, seed, {log});
        ASSERT_EQ(0, anew.status) << anew.err;
        EXPECT_EQ(anew.out, reused.out) << role << " " << log << " " << seed;
        EXPECT_EQ(anew.err, reused.err) << role << " " << log << " " << seed;
      }
    }
  }
}

// A rewrite may hold the file's lock from its read to its write only while
// nothing but the library's code runs: a property of a class of the program
// always finds the lock free, even with the library's own Log().
TEST(SafetyLockTest, LockIsFreeWhileAPropertyOfTheProgramRuns) {
#ifdef PROPERTIES_TEST_NO_FILE_LOCKS
  GTEST_SKIP() << "the library is built without file locks";
#endif
  test_support::TempDir dir;
  const std::string file = dir.File("probed");
  test_support::WriteFile(file, "probe=old\nother=kept\n");
  const ProgramResult result =
      RunDriver(kDriver, {"probe-lock", file}, {"LIBPROPERTIES_LOG=none"});
  ASSERT_EQ(0, result.status) << result.err;
  EXPECT_NE(std::string::npos, result.out.find("lock free")) << result.out;
  EXPECT_EQ(std::string::npos, result.out.find("lock held")) << result.out;
  EXPECT_EQ("other=kept\nprobe=set\n", test_support::ReadFile(file));
}
