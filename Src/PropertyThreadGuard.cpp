// PropertyThreadGuard.cpp - see PropertyThreadGuard.h.

#include "PropertyThreadGuard.h"

#include <pthread.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <new>
#include <string>

pthread_mutex_t* PropertyCreateNewMutex() {
  void* block = ::operator new(sizeof(pthread_mutex_t));
  std::memset(block, 0, sizeof(pthread_mutex_t));
  pthread_mutex_t* mutex = static_cast<pthread_mutex_t*>(block);

  // The return codes are not examined and attr is not destroyed: both are
  // kept as they have always been (glibc's attribute holds no resources).
  pthread_mutexattr_t attr;
  pthread_mutexattr_init(&attr);
  pthread_mutexattr_settype(&attr, PTHREAD_MUTEX_RECURSIVE);
  pthread_mutex_init(mutex, &attr);
  return mutex;
}

void PropertyDeleteMutex(pthread_mutex_t* mutex) {
  pthread_mutex_destroy(mutex);
  ::operator delete(mutex);
}

#ifdef PROPERTIES_LOG_STDERR

void Log(int level, char* format, ...) {
  va_list args;
  va_start(args, format);
  va_list measure;
  va_copy(measure, args);
  const int length = std::vsnprintf(nullptr, 0, format, measure);
  va_end(measure);
  std::string line = "libproperties[" + std::to_string(level) + "]: ";
  const size_t prefix = line.size();
  line.resize(prefix + static_cast<size_t>(length > 0 ? length : 0) + 1);
  std::vsnprintf(&line[prefix], line.size() - prefix, format, args);
  va_end(args);
  line.back() = '\n';
  // One write per message, so that lines of several threads never mix.
  std::fwrite(line.data(), 1, line.size(), stderr);
}

#else

void Log(int, char*, ...) {
  // Deliberately empty: existing programs expect a silent library, and the
  // arguments are not read, so a mismatched format cannot do harm.
}

#endif

PropertyThreadGuard::PropertyThreadGuard(pthread_mutex_t* mutex)
    : m_mutex(mutex) {
  pthread_mutex_lock(m_mutex);
}

PropertyThreadGuard::~PropertyThreadGuard() { pthread_mutex_unlock(m_mutex); }
