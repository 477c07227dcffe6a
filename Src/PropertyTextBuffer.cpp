// PropertyTextBuffer.cpp - see PropertyTextBuffer.h.

#include "PropertyTextBuffer.h"

#include <pthread.h>

#include <cstdlib>
#include <cstring>
#include <new>

namespace {

// The thread's kept buffer lives in a thread-specific slot whose destructor
// is free() itself: nothing of this library needs to be loaded when a thread
// exits.
pthread_key_t g_keptKey;
bool g_haveKeptKey = false;

void CreateKeptKey() {
  g_haveKeptKey = ::pthread_key_create(&g_keptKey, std::free) == 0;
}

bool HaveKeptKey() {
  static pthread_once_t once = PTHREAD_ONCE_INIT;
  ::pthread_once(&once, CreateKeptKey);
  return g_haveKeptKey;
}

// The thread's kept buffer, now lent to the caller, or null if the thread
// has none or has lent it already.
char* BorrowKept() {
  if (!HaveKeptKey()) return nullptr;
  char* kept = static_cast<char*>(::pthread_getspecific(g_keptKey));
  if (kept != nullptr) ::pthread_setspecific(g_keptKey, nullptr);
  return kept;
}

// Makes data (kKeptSize bytes from malloc) the thread's kept buffer. False
// if the thread keeps one already or the slot cannot be set.
bool ReturnKept(char* data) {
  return HaveKeptKey() && ::pthread_getspecific(g_keptKey) == nullptr &&
         ::pthread_setspecific(g_keptKey, data) == 0;
}

char* Allocate(size_t size) {
  void* data = std::malloc(size);
  if (data == nullptr) throw std::bad_alloc();
  return static_cast<char*>(data);
}

}  // namespace

PropertyTextBuffer::PropertyTextBuffer()
    : m_data(nullptr), m_capacity(0), m_size(0) {}

PropertyTextBuffer::~PropertyTextBuffer() { Release(); }

char* PropertyTextBuffer::Reserve(size_t capacity, size_t keep) {
  if (capacity <= m_capacity) return m_data;
  char* data = nullptr;
  if (capacity <= kKeptSize) {
    data = BorrowKept();
    if (data == nullptr) data = Allocate(kKeptSize);
    capacity = kKeptSize;
  } else {
    data = Allocate(capacity);
  }
  if (keep > 0) std::memcpy(data, m_data, keep);
  Release();
  m_data = data;
  m_capacity = capacity;
  return data;
}

void PropertyTextBuffer::Grow(size_t size) {
  // Doubling keeps assembling a large text linear.
  const size_t needed = m_size + size;
  Reserve(needed > 2 * m_capacity ? needed : 2 * m_capacity, m_size);
}

void PropertyTextBuffer::Release() {
  if (m_data == nullptr) return;
  if (m_capacity != kKeptSize || !ReturnKept(m_data)) std::free(m_data);
  m_data = nullptr;
  m_capacity = 0;
}
