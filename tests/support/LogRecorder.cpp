// LogRecorder.cpp - see LogRecorder.h.

#include "support/LogRecorder.h"

#include <gtest/gtest.h>

#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <utility>

#include "PropertyThreadGuard.h"

namespace test_support {
namespace {

std::mutex g_mutex;
bool g_recording = false;
std::vector<LogEntry> g_entries;
std::function<void(const std::string&)> g_hook;

}  // namespace

LogRecorder::LogRecorder() {
  std::lock_guard<std::mutex> lock(g_mutex);
  g_entries.clear();
  g_recording = true;
}

LogRecorder::~LogRecorder() {
  std::lock_guard<std::mutex> lock(g_mutex);
  g_recording = false;
  g_entries.clear();
  g_hook = nullptr;
}

std::vector<LogEntry> LogRecorder::Entries() const {
  std::lock_guard<std::mutex> lock(g_mutex);
  return g_entries;
}

std::vector<std::string> LogRecorder::Messages() const {
  std::vector<std::string> messages;
  for (const LogEntry& entry : Entries()) messages.push_back(entry.message);
  return messages;
}

void LogRecorder::Clear() {
  std::lock_guard<std::mutex> lock(g_mutex);
  g_entries.clear();
}

void LogRecorder::OnMessage(std::function<void(const std::string&)> hook) {
  std::lock_guard<std::mutex> lock(g_mutex);
  g_hook = std::move(hook);
}

std::vector<std::string> MessagesAllAtLevel(const LogRecorder& log, int level) {
  for (const LogEntry& entry : log.Entries()) {
    EXPECT_EQ(entry.level, level) << entry.message;
  }
  return log.Messages();
}

}  // namespace test_support

// Takes the place of the library's Log in this test binary.
void Log(int level, char* format, ...) {
  std::unique_lock<std::mutex> lock(test_support::g_mutex);
  if (!test_support::g_recording) return;
  va_list args;
  va_start(args, format);
  va_list copy;
  va_copy(copy, args);
  const int length = std::vsnprintf(nullptr, 0, format, copy);
  va_end(copy);
  std::string message(length > 0 ? static_cast<size_t>(length) : 0, '\0');
  std::vsnprintf(&message[0], message.size() + 1, format, args);
  va_end(args);
  test_support::g_entries.push_back({level, message});
  const std::function<void(const std::string&)> hook = test_support::g_hook;
  lock.unlock();
  if (hook) hook(message);
}
