// PropertyDefaults.cpp - see PropertyDefaults.h.

#include "PropertyDefaults.h"

#include <cstdlib>
#include <cstring>

bool PropertyDefaults::LongLines() {
  static const bool longLines = [] {
#ifdef PROPERTIES_READ_LONG_LINES
    bool built = true;
#else
    bool built = false;
#endif
    const char* text = Variable("LIBPROPERTIES_LONG_LINES");
    if (text == nullptr) return built;
    if (std::strcmp(text, "read") == 0) return true;
    if (std::strcmp(text, "limit") == 0) return false;
    return built;
  }();
  return longLines;
}

bool PropertyDefaults::StrictValues() {
  static const bool strict = Is("LIBPROPERTIES_STRICT", "1");
  return strict;
}

bool PropertyDefaults::KeepLayout() {
  static const bool keep = Is("LIBPROPERTIES_KEEP_LAYOUT", "1");
  return keep;
}

bool PropertyDefaults::ReuseParses() {
  static const bool reuse = !Is("LIBPROPERTIES_REUSE", "0");
  return reuse;
}

long PropertyDefaults::LockTimeoutMilliseconds() {
  static const long timeout = [] {
    const char* text = Variable("LIBPROPERTIES_LOCK_TIMEOUT_MS");
    if (text == nullptr) return 10000L;
    char* end = nullptr;
    const long value = std::strtol(text, &end, 10);
    return *end == '\0' && value >= 0 ? value : 10000L;
  }();
  return timeout;
}

PropertyDefaults::LogSink PropertyDefaults::Log(LogSink buildSink,
                                                const char** path) {
  const char* text = Variable("LIBPROPERTIES_LOG");
  *path = nullptr;
  if (text == nullptr) return buildSink;
  if (std::strcmp(text, "none") == 0) return kLogNowhere;
  if (std::strcmp(text, "stderr") == 0) return kLogToStderr;
  if (std::strcmp(text, "syslog") == 0) return kLogToSyslog;
  // Only a path names a file, so that a mistyped word is not made one.
  if (std::strchr(text, '/') == nullptr) return buildSink;
  *path = text;
  return kLogToFile;
}

bool PropertyDefaults::Is(const char* name, const char* value) {
  const char* text = Variable(name);
  return text != nullptr && std::strcmp(text, value) == 0;
}

const char* PropertyDefaults::Variable(const char* name) {
  const char* text = std::getenv(name);
  return text == nullptr || *text == '\0' ? nullptr : text;
}
