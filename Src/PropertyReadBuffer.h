// PropertyReadBuffer.h - memory for reading a property file whole.
//
// Every load reads its whole file before parsing it. A thread keeps one
// buffer of kKeptSize bytes between its reads, so that loading a typical
// configuration file allocates no read buffer at all; that also spares the
// heap the consolidation that a large allocation causes right after a table
// of small nodes was freed, which is what a load following a load does.
// Larger files get memory of their own, released with the buffer, and so
// does a read started while the thread's buffer is in use (a load from a Log
// hook during a load).
//
// The kept buffer is released when its thread exits; the main thread's stays
// until the process ends. Internal to the library: not installed.

#ifndef SRC_PROPERTYREADBUFFER_H_
#define SRC_PROPERTYREADBUFFER_H_

#include <cstddef>

#include "PropertyThreadGuard.h"

class PropertyReadBuffer {
 public:
  enum { kKeptSize = 64 * 1024 };

  PropertyReadBuffer();  // Holds no memory yet.
  ~PropertyReadBuffer();

  // Makes room for at least capacity bytes, keeping the first keep bytes of
  // the content, and returns the start. Throws std::bad_alloc.
  char* Reserve(size_t capacity, size_t keep);
  char* Data() const { return m_data; }
  size_t Capacity() const { return m_capacity; }
  // The length of the content, as set by the reader.
  size_t Size() const { return m_size; }
  void SetSize(size_t size) { m_size = size; }

 private:
  PropertyReadBuffer(const PropertyReadBuffer&);
  PropertyReadBuffer& operator=(const PropertyReadBuffer&);

  void Release();

  char* m_data;
  size_t m_capacity;
  size_t m_size;
};

#endif  // SRC_PROPERTYREADBUFFER_H_
