// MutexProbe.cpp - see MutexProbe.h.

#include "support/MutexProbe.h"

#include <thread>

namespace test_support {

bool IsFreeForOtherThreads(pthread_mutex_t* mutex) {
  bool free = false;
  std::thread probe([mutex, &free] {
    if (pthread_mutex_trylock(mutex) == 0) {
      free = true;
      pthread_mutex_unlock(mutex);
    }
  });
  probe.join();
  return free;
}

LockProbe::LockProbe(pthread_mutex_t* mutex) : m_mutex(mutex) {}

void LockProbe::PropertyChanged(Property*) {
  ++calls;
  heldDuringCall = !IsFreeForOtherThreads(m_mutex);
  heldDuringCalls.push_back(heldDuringCall);
}

}  // namespace test_support
