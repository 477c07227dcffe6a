// PropertyTextBuffer.h - memory for the whole text of a property file, as
// it is read before parsing or assembled before a rewrite.
//
// A thread keeps one buffer between its uses, the largest it needed (at
// least kKeptSize, at most kKeptLimit bytes), so that reading or writing
// the same file again allocates no text buffer at all; for reads, that also
// spares the heap the consolidation that a large allocation causes right
// after a table of small nodes was freed, which is what a load following a
// load does. Texts over kKeptLimit get memory of their own, released with
// the buffer, and so does a buffer taken while the thread's one is in use
// (a load from a Log hook during a load).
//
// The kept buffer is released when its thread exits; the main thread's stays
// until the process ends. Internal to the library: not installed.

#ifndef SRC_PROPERTYTEXTBUFFER_H_
#define SRC_PROPERTYTEXTBUFFER_H_

#include <cstddef>
#include <cstring>

#include "PropertyThreadGuard.h"

class PropertyTextBuffer {
 public:
  enum { kKeptSize = 64 * 1024, kKeptLimit = 1024 * 1024 };

  PropertyTextBuffer();  // Empty, and holding no memory yet.
  ~PropertyTextBuffer();

  // Makes room for at least capacity bytes, keeping the first keep bytes of
  // the content, and returns the start. Throws std::bad_alloc.
  char* Reserve(size_t capacity, size_t keep);
  char* Data() const { return m_data; }
  size_t Capacity() const { return m_capacity; }
  // The length of the content.
  size_t Size() const { return m_size; }
  void SetSize(size_t size) { m_size = size; }

  // Lengthens the content by size bytes and returns where they start, for
  // the caller to fill. Throws std::bad_alloc.
  char* Extend(size_t size) {
    if (m_capacity - m_size < size) Grow(size);
    char* start = m_data + m_size;
    m_size += size;
    return start;
  }
  void Append(const char* text, size_t size) { Copy(Extend(size), text, size); }
  void Append(const propstring& text) { Append(text.data(), text.size()); }
  void Append(char c) { *Extend(1) = c; }

  // memcpy() for the short pieces a property file is made of: up to 32
  // bytes are copied inline as two overlapping moves of a power of two,
  // longer ones by memcpy().
  static void Copy(char* to, const char* from, size_t size) {
    if (size > 32) {
      std::memcpy(to, from, size);
    } else if (size >= 16) {
      std::memcpy(to, from, 16);
      std::memcpy(to + size - 16, from + size - 16, 16);
    } else if (size >= 8) {
      std::memcpy(to, from, 8);
      std::memcpy(to + size - 8, from + size - 8, 8);
    } else if (size >= 4) {
      std::memcpy(to, from, 4);
      std::memcpy(to + size - 4, from + size - 4, 4);
    } else if (size > 0) {
      to[0] = from[0];
      to[size / 2] = from[size / 2];
      to[size - 1] = from[size - 1];
    }
  }

 private:
  PropertyTextBuffer(const PropertyTextBuffer&);
  PropertyTextBuffer& operator=(const PropertyTextBuffer&);

  // Makes room for size more bytes after the content.
  void Grow(size_t size);
  void Release();

  char* m_data;
  size_t m_capacity;
  size_t m_size;
};

#endif  // SRC_PROPERTYTEXTBUFFER_H_
