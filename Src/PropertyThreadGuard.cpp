// PropertyThreadGuard.cpp - see PropertyThreadGuard.h.

#include "PropertyThreadGuard.h"

#include <pthread.h>

#include <cstring>
#include <new>

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

PropertyThreadGuard::PropertyThreadGuard(pthread_mutex_t* mutex)
    : m_mutex(mutex) {
  pthread_mutex_lock(m_mutex);
}

PropertyThreadGuard::~PropertyThreadGuard() { pthread_mutex_unlock(m_mutex); }
