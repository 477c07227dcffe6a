// PropertyLog.cpp - see PropertyLog.h.

#include "PropertyLog.h"

#include <fcntl.h>
#include <syslog.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <string>

#include "PropertyDefaults.h"
#include "PropertyFile.h"
#include "PropertyMessages.h"
#include "PropertyThreadGuard.h"

std::string PropertyLog::Line(int level, const char* format, va_list args) {
  return "libproperties[" + std::to_string(level) +
         "]: " + PropertyMessages::FormatList(format, args) + "\n";
}

void PropertyLog::WriteToStderr(const std::string& line) {
  std::fwrite(line.data(), 1, line.size(), stderr);
}

void PropertyLog::WriteToSyslog(const std::string& line) {
  ::syslog(LOG_USER | LOG_INFO, "%.*s", static_cast<int>(line.size() - 1),
           line.data());
}

void PropertyLog::WriteToFile(const char* path, const std::string& line) {
  static const int fd =
      ::open(path, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0600);
  // A line that cannot be written is dropped, never retried for ever.
  if (fd >= 0) PropertyFile::WriteAll(fd, line.data(), line.size());
}

namespace {

// Where Log() writes, chosen once; for a file, *path is set.
PropertyDefaults::LogSink Sink(const char** path) {
#ifdef PROPERTIES_LOG_STDERR
  const PropertyDefaults::LogSink built = PropertyDefaults::kLogToStderr;
#else
  const PropertyDefaults::LogSink built = PropertyDefaults::kLogNowhere;
#endif
  static const char* chosenPath = nullptr;
  static const PropertyDefaults::LogSink sink =
      PropertyDefaults::Log(built, &chosenPath);
  *path = chosenPath;
  return sink;
}

}  // namespace

void Log(int level, char* format, ...) {
  const char* path = nullptr;
  const PropertyDefaults::LogSink sink = Sink(&path);
  // Nowhere to write: the arguments are not read, so that a mismatched
  // format does no harm, as existing programs expect of a silent library.
  if (sink == PropertyDefaults::kLogNowhere) return;
  // Logging must not change what the caller sees in errno.
  const int savedErrno = errno;
  va_list args;
  va_start(args, format);
  const std::string line = PropertyLog::Line(level, format, args);
  va_end(args);
  switch (sink) {
    case PropertyDefaults::kLogToStderr:
      PropertyLog::WriteToStderr(line);
      break;
    case PropertyDefaults::kLogToSyslog:
      PropertyLog::WriteToSyslog(line);
      break;
    case PropertyDefaults::kLogToFile:
      PropertyLog::WriteToFile(path, line);
      break;
    case PropertyDefaults::kLogNowhere:
      break;
  }
  errno = savedErrno;
}

// This library's own Log() under a name no program defines: a program's
// Log() takes the place of "Log" alone, so PropertyMessages can tell
// whether the Log() that messages go to is this one.
void PropertyOwnLog(int level, char* format, ...)
    __attribute__((alias("_Z3LogiPcz"), visibility("hidden")));

bool PropertyOwnLogWritesNowhere() {
  const char* path = nullptr;
  return Sink(&path) == PropertyDefaults::kLogNowhere;
}
