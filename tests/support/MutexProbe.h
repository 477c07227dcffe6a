// MutexProbe.h - tells whether a mutex is held, as seen from another thread,
// for tests that check when the library locks and unlocks.
//
// The library's mutexes are recursive, so the thread that holds one can lock
// it again; only another thread can tell whether it is held.

#ifndef TESTS_SUPPORT_MUTEXPROBE_H_
#define TESTS_SUPPORT_MUTEXPROBE_H_

#include <pthread.h>

#include <vector>

#include "Property.h"
#include "PropertyChangeListener.h"

namespace test_support {

// True if a thread other than the caller can lock mutex right now. The probing
// thread unlocks it again at once and is joined before this returns.
bool IsFreeForOtherThreads(pthread_mutex_t* mutex);

// T (a property or manager class of the library) with its own mutex made
// visible, e.g. WithVisibleMutex<IntegerProperty>("k", "5", "").Mutex().
template <typename T>
class WithVisibleMutex : public T {
 public:
  using T::T;
  pthread_mutex_t* Mutex() const { return this->m_mutex; }
};

// A change listener that notes, at every notification, whether mutex was
// held at that moment (by the notifying thread: no other thread locks it).
// The mutex must outlive the probe.
class LockProbe : public PropertyChangeListener {
 public:
  explicit LockProbe(pthread_mutex_t* mutex);
  void PropertyChanged(Property* property) override;

  int calls = 0;                      // Notifications so far.
  bool heldDuringCall = false;        // Held at the latest notification.
  std::vector<bool> heldDuringCalls;  // Held at each notification, in order.

 private:
  pthread_mutex_t* m_mutex;
};

}  // namespace test_support

#endif  // TESTS_SUPPORT_MUTEXPROBE_H_
