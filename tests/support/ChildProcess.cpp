// ChildProcess.cpp - see ChildProcess.h.

#include "support/ChildProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
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

// Reads both pipes of the program pid until both are at their end. If that
// takes longer than timeoutMs (unless it is negative), kills the program:
// its pipes end then.
void Drain(int outFd, int errFd, std::string* out, std::string* err, pid_t pid,
           int timeoutMs) {
  const auto deadline =
      std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
  struct pollfd fds[2] = {{outFd, POLLIN, 0}, {errFd, POLLIN, 0}};
  std::string* sinks[2] = {out, err};
  int open = 2;
  while (open > 0) {
    int wait = -1;
    if (timeoutMs >= 0) {
      const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
          deadline - std::chrono::steady_clock::now());
      wait = left.count() > 0 ? static_cast<int>(left.count()) : 0;
    }
    const int ready = ::poll(fds, 2, wait);
    if (ready < 0) continue;  // Interrupted: try again.
    if (ready == 0) {
      ::kill(pid, SIGKILL);
      timeoutMs = -1;
      continue;
    }
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

// Starts argv with its standard output and error on new pipes, whose read
// ends go to *out and *err. Returns the process id, or -1.
pid_t Spawn(const std::vector<std::string>& argv,
            const std::vector<std::string>& environment, int* out, int* err) {
  int outPipe[2];
  int errPipe[2];
  if (::pipe2(outPipe, O_CLOEXEC) != 0) return -1;
  if (::pipe2(errPipe, O_CLOEXEC) != 0) {
    ::close(outPipe[0]);
    ::close(outPipe[1]);
    return -1;
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
  if (spawned != 0) {
    ::close(outPipe[0]);
    ::close(errPipe[0]);
    return -1;
  }
  *out = outPipe[0];
  *err = errPipe[0];
  return pid;
}

// The exit status as ProgramResult has it.
int StatusOf(pid_t pid) {
  int status = 0;
  while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
  }
  if (WIFSIGNALED(status)) return 128 + WTERMSIG(status);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace

ProgramResult RunProgram(const std::vector<std::string>& argv,
                         const std::vector<std::string>& environment) {
  ProgramResult result;
  int out = -1;
  int err = -1;
  const pid_t pid = Spawn(argv, environment, &out, &err);
  if (pid < 0) return result;
  Drain(out, err, &result.out, &result.err, pid, -1);
  ::close(out);
  ::close(err);
  result.status = StatusOf(pid);
  return result;
}

StartedProgram::StartedProgram(const std::vector<std::string>& argv,
                               const std::vector<std::string>& environment) {
  m_pid = Spawn(argv, environment, &m_out, &m_err);
}

StartedProgram::~StartedProgram() { Finish(0); }

bool StartedProgram::WaitForError(const std::string& text, int timeoutMs) {
  if (m_pid <= 0) return false;
  while (m_result.err.find(text) == std::string::npos) {
    struct pollfd ready = {m_err, POLLIN, 0};
    if (::poll(&ready, 1, timeoutMs) != 1) return false;
    char buffer[4096];
    const ssize_t got = ::read(m_err, buffer, sizeof buffer);
    if (got <= 0) return false;
    m_result.err.append(buffer, static_cast<size_t>(got));
  }
  return true;
}

ProgramResult StartedProgram::Finish(int timeoutMs) {
  if (m_pid <= 0) return m_result;
  Drain(m_out, m_err, &m_result.out, &m_result.err, m_pid, timeoutMs);
  ::close(m_out);
  ::close(m_err);
  m_result.status = StatusOf(m_pid);
  m_pid = -1;
  return m_result;
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

testing::AssertionResult Ran(const ProgramResult& result, int status,
                             const std::string& out, const std::string& err) {
  if (result.status == status && result.out == out && result.err == err) {
    return testing::AssertionSuccess();
  }
  return testing::AssertionFailure()
         << "status " << result.status << ", out \"" << result.out
         << "\", err \"" << result.err << "\"";
}

}  // namespace test_support
