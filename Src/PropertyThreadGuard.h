// PropertyThreadGuard.h - the library frame: the string type of every
// signature, the scoped lock for the library's recursive mutexes, the
// functions that make and free those mutexes, and the Log entry point.
//
// Every mutex of the library comes from PropertyCreateNewMutex() and is only
// locked through a PropertyThreadGuard on the stack:
//
//   void SomeManager::DoSomething() {
//     PropertyThreadGuard guard(m_mutex);
//     ... any number of returns or throws ...
//   }
//
// ABI: member order and virtual-function order below are part of the binary
// interface. Do not reorder, insert or remove.

#ifndef SRC_PROPERTYTHREADGUARD_H_
#define SRC_PROPERTYTHREADGUARD_H_

#include <pthread.h>

#include <string>

// The library's string type: a byte string. Every comparison of keys,
// sections, names and values is exact and byte by byte.
typedef std::string propstring;

// Returns a new, unlocked, recursive mutex. The caller owns it and must give
// it back with PropertyDeleteMutex(). Never returns null; throws
// std::bad_alloc.
pthread_mutex_t* PropertyCreateNewMutex();

// Destroys and frees a mutex made by PropertyCreateNewMutex().
// REQUIRES: mutex is not null and not locked.
void PropertyDeleteMutex(pthread_mutex_t* mutex);

// printf-style logging entry point. The library logs at level 1 only.
// By default it discards everything and never reads its arguments. A library
// built with -DPROPERTIES_LOG=stderr writes each message to standard error
// as one line: "libproperties[<level>]: <formatted text>".
void Log(int level, char* format, ...);

// Locks a mutex for the lifetime of the guard, also when an exception leaves
// the guarded scope. The mutexes are recursive: a thread may nest guards on a
// mutex it already holds.
class PropertyThreadGuard {
 public:
  // Locks mutex. Not owned. REQUIRES: mutex is not null.
  explicit PropertyThreadGuard(pthread_mutex_t* mutex);
  virtual ~PropertyThreadGuard();  // Unlocks the mutex.

  PropertyThreadGuard(const PropertyThreadGuard&) = delete;
  PropertyThreadGuard& operator=(const PropertyThreadGuard&) = delete;

 private:
  pthread_mutex_t* m_mutex;  // Not owned.
};

#endif  // SRC_PROPERTYTHREADGUARD_H_
