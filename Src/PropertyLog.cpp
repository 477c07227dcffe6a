// PropertyLog.cpp - see PropertyLog.h.

#include "PropertyLog.h"

#include <cstdarg>
#include <cstdio>
#include <string>

#include "PropertyThreadGuard.h"

void PropertyLog::WriteToStderr(int level, const char* format, va_list args) {
  va_list measure;
  va_copy(measure, args);
  const int length = std::vsnprintf(nullptr, 0, format, measure);
  va_end(measure);
  std::string line = "libproperties[" + std::to_string(level) + "]: ";
  const size_t prefix = line.size();
  line.resize(prefix + static_cast<size_t>(length > 0 ? length : 0) + 1);
  std::vsnprintf(&line[prefix], line.size() - prefix, format, args);
  line.back() = '\n';
  std::fwrite(line.data(), 1, line.size(), stderr);
}

#ifdef PROPERTIES_LOG_STDERR

void Log(int level, char* format, ...) {
  va_list args;
  va_start(args, format);
  PropertyLog::WriteToStderr(level, format, args);
  va_end(args);
}

#else

void Log(int, char*, ...) {
  // Deliberately empty: existing programs expect a silent library, and the
  // arguments are not read, so a mismatched format cannot do harm.
}

#endif
