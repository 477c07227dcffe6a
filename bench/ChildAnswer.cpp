// ChildAnswer.cpp - see ChildAnswer.h.

#include "ChildAnswer.h"

#include <sys/wait.h>
#include <unistd.h>

namespace bench {

bool RunForAnswer(const std::string& program, std::vector<std::string> argv,
                  std::string* answer) {
  int fds[2];
  if (::pipe(fds) != 0) return false;
  argv.push_back(std::to_string(fds[1]));
  // Made before the fork: the child only calls async-signal-safe functions.
  std::vector<char*> args;
  for (std::string& arg : argv) args.push_back(&arg[0]);
  args.push_back(nullptr);
  const pid_t child = ::fork();
  if (child < 0) {
    ::close(fds[0]);
    ::close(fds[1]);
    return false;
  }
  if (child == 0) {
    ::close(fds[0]);
    ::execv(program.c_str(), args.data());
    ::_exit(127);
  }
  ::close(fds[1]);
  answer->clear();
  char buffer[64];
  ssize_t got;
  while ((got = ::read(fds[0], buffer, sizeof buffer)) > 0) {
    answer->append(buffer, static_cast<size_t>(got));
  }
  ::close(fds[0]);
  int status = 0;
  ::waitpid(child, &status, 0);
  return WIFEXITED(status) && WEXITSTATUS(status) == 0 && !answer->empty();
}

}  // namespace bench
