// LogRecorder.h - records what the library passes to Log() while a recorder
// is alive, so that tests can check the exact messages and levels.
//
// The test binary defines Log() itself (LogRecorder.cpp); that definition
// takes the place of the library's discarding one.

#ifndef TESTS_SUPPORT_LOGRECORDER_H_
#define TESTS_SUPPORT_LOGRECORDER_H_

#include <functional>
#include <string>
#include <vector>

namespace test_support {

// Logged messages, in order.
typedef std::vector<std::string> Messages;

struct LogEntry {
  int level;
  std::string message;  // The format applied to its arguments.
};

class LogRecorder {
 public:
  LogRecorder();   // Starts recording with an empty log.
  ~LogRecorder();  // Stops recording.

  LogRecorder(const LogRecorder&) = delete;
  LogRecorder& operator=(const LogRecorder&) = delete;

  std::vector<LogEntry> Entries() const;
  // The messages alone, in the order they were logged.
  std::vector<std::string> Messages() const;
  void Clear();

  // Calls hook with every message after recording it, outside the
  // recorder's lock, so that the hook may call into the library (which may
  // log again: the hook is then called again, from inside itself).
  void OnMessage(std::function<void(const std::string&)> hook);
};

// log.Messages(), after checking, as a non-fatal test expectation, that every
// entry was logged at level.
std::vector<std::string> MessagesAllAtLevel(const LogRecorder& log, int level);

}  // namespace test_support

#endif  // TESTS_SUPPORT_LOGRECORDER_H_
