// ChildProcess.h - runs another program to its end and collects what it
// printed, for tests of whole programs (and of programs run under tools such
// as valgrind or with a library preloaded).

#ifndef TESTS_SUPPORT_CHILDPROCESS_H_
#define TESTS_SUPPORT_CHILDPROCESS_H_

#include <gtest/gtest.h>
#include <sys/types.h>

#include <string>
#include <vector>

namespace test_support {

struct ProgramResult {
  // The exit status, or 128 plus the signal number if a signal ended it, or
  // -1 if the program could not be started.
  int status = -1;
  std::string out;  // Everything written to its standard output.
  std::string err;  // Everything written to its standard error.
};

// Runs argv[0] (searched in PATH if it holds no '/') with the arguments
// argv[1...] in this process's environment, changed by environment: each
// "NAME=value" replaces or adds NAME, each "NAME" alone removes it. Waits for
// the program to end.
ProgramResult RunProgram(const std::vector<std::string>& argv,
                         const std::vector<std::string>& environment = {});

// A program started to run beside the test, for programs that run until
// something happens (propctl watch): the test waits for a sign on its
// standard error, acts, and then collects its end.
class StartedProgram {
 public:
  // Starts argv as RunProgram does, in this process's environment changed
  // by environment. Started() tells whether it ran.
  explicit StartedProgram(const std::vector<std::string>& argv,
                          const std::vector<std::string>& environment = {});
  // Kills the program if it still runs, and waits for it.
  ~StartedProgram();

  bool Started() const { return m_pid > 0; }
  // Reads its standard error until text stands in it; false if the program
  // ends, or text does not come, within timeoutMs.
  bool WaitForError(const std::string& text, int timeoutMs);
  // Waits at most timeoutMs for the program to end (then kills it) and
  // returns all it printed and its status.
  ProgramResult Finish(int timeoutMs);

  StartedProgram(const StartedProgram&) = delete;
  StartedProgram& operator=(const StartedProgram&) = delete;

 private:
  pid_t m_pid = -1;
  int m_out = -1;
  int m_err = -1;
  ProgramResult m_result;
};

// Success if the program ended with status and printed exactly out (on
// standard output) and err (on standard error).
testing::AssertionResult Ran(const ProgramResult& result, int status,
                             const std::string& out, const std::string& err);

// The full path of the program name found in PATH, or "" if there is none.
std::string FindInPath(const std::string& name);

}  // namespace test_support

#endif  // TESTS_SUPPORT_CHILDPROCESS_H_
