// ChildProcess.h - runs another program to its end and collects what it
// printed, for tests of whole programs (and of programs run under tools such
// as valgrind or with a library preloaded).

#ifndef TESTS_SUPPORT_CHILDPROCESS_H_
#define TESTS_SUPPORT_CHILDPROCESS_H_

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

// The full path of the program name found in PATH, or "" if there is none.
std::string FindInPath(const std::string& name);

}  // namespace test_support

#endif  // TESTS_SUPPORT_CHILDPROCESS_H_
