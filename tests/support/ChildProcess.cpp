// ChildProcess.cpp - see ChildProcess.h.

#include "support/ChildProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

extern char** environ;

namespace test_support {
namespace {

// environ changed as RunProgram describes.
std::vector<std::string> MergedEnvironment(
    const std::vector<std::string>& changes) {
  std::vector<std::string> merged;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    merged.push_back(*entry);
  }
  for (const std::string& change : changes) {
    const size_t equals = change.find('=');
    const std::string prefix = change.substr(0, equals) + "=";
    std::vector<std::string> kept;
    for (const std::string& entry : merged) {
      if (entry.compare(0, prefix.size(), prefix) != 0) kept.push_back(entry);
    }
    if (equals != std::string::npos) kept.push_back(change);
    merged.swap(kept);
  }
  return merged;
}

std::vector<char*> Pointers(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  for (std::string& text : texts) pointers.push_back(&text[0]);
  pointers.push_back(nullptr);
  return pointers;
}

// Reads both pipes until both are at their end.
void Drain(int outFd, int errFd, std::string* out, std::string* err) {
  struct pollfd fds[2] = {{outFd, POLLIN, 0}, {errFd, POLLIN, 0}};
  std::string* sinks[2] = {out, err};
  int open = 2;
  while (open > 0) {
    if (::poll(fds, 2, -1) < 0) continue;  // Interrupted: try again.
    for (int i = 0; i < 2; ++i) {
      if (fds[i].fd < 0 || fds[i].revents == 0) continue;
      char buffer[4096];
      const ssize_t got = ::read(fds[i].fd, buffer, sizeof buffer);
      if (got > 0) {
        sinks[i]->append(buffer, static_cast<size_t>(got));
      } else {
        fds[i].fd = -1;
        --open;
      }
    }
  }
}

}  // namespace

ProgramResult RunProgram(const std::vector<std::string>& argv,
                         const std::vector<std::string>& environment) {
  ProgramResult result;
  int outPipe[2];
  int errPipe[2];
  if (::pipe2(outPipe, O_CLOEXEC) != 0) return result;
  if (::pipe2(errPipe, O_CLOEXEC) != 0) {
    ::close(outPipe[0]);
    ::close(outPipe[1]);
    return result;
  }
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, outPipe[1], STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, errPipe[1], STDERR_FILENO);
  std::vector<std::string> arguments = argv;
  std::vector<std::string> variables = MergedEnvironment(environment);
  pid_t pid = -1;
  const int spawned =
      posix_spawnp(&pid, arguments[0].c_str(), &actions, nullptr,
                   Pointers(arguments).data(), Pointers(variables).data());
  posix_spawn_file_actions_destroy(&actions);
  ::close(outPipe[1]);
  ::close(errPipe[1]);
  if (spawned == 0) Drain(outPipe[0], errPipe[0], &result.out, &result.err);
  ::close(outPipe[0]);
  ::close(errPipe[0]);
  if (spawned != 0) return result;
  int status = 0;
  while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
  }
  if (WIFEXITED(status)) result.status = WEXITSTATUS(status);
  if (WIFSIGNALED(status)) result.status = 128 + WTERMSIG(status);
  return result;
}

std::string FindInPath(const std::string& name) {
  const char* path = std::getenv("PATH");
  std::string rest = path != nullptr ? path : "/usr/bin:/bin";
  while (!rest.empty()) {
    const size_t colon = rest.find(':');
    const std::string directory = rest.substr(0, colon);
    rest = colon == std::string::npos ? "" : rest.substr(colon + 1);
    const std::string candidate = directory + "/" + name;
    if (!directory.empty() && ::access(candidate.c_str(), X_OK) == 0) {
      return candidate;
    }
  }
  return "";
}

}  // namespace test_support
