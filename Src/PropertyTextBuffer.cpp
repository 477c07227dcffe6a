// PropertyTextBuffer.cpp - see PropertyTextBuffer.h.

#include "PropertyTextBuffer.h"

#include <pthread.h>

#include <cstdlib>
#include <cstring>
#include <new>

namespace {

// Every buffer is one block from malloc(): its capacity, then the text, so
// that a kept block knows its size.
const size_t kHeader = 16;  // Keeps the text as aligned as malloc() is.

char* TextOf(void* block) { return static_cast<char*>(block) + kHeader; }
void* BlockOf(char* text) { return text - kHeader; }
size_t CapacityOf(void* block) { return *static_cast<size_t*>(block); }

// The thread's kept block lives in a thread-specific slot whose destructor
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

// The thread's kept block, now lent to the caller, if it holds capacity
// bytes; null if the thread has none that large (or has lent it already).
void* BorrowKept(size_t capacity) {
  if (!HaveKeptKey()) return nullptr;
  void* kept = ::pthread_getspecific(g_keptKey);
  if (kept == nullptr || CapacityOf(kept) < capacity) return nullptr;
  ::pthread_setspecific(g_keptKey, nullptr);
  return kept;
}

// Keeps block for the thread's next text if it is no larger than
// kKeptLimit and larger than the kept one; frees whichever is not kept.
void ReturnKept(void* block) {
  if (CapacityOf(block) <= PropertyTextBuffer::kKeptLimit && HaveKeptKey()) {
    void* kept = ::pthread_getspecific(g_keptKey);
    if ((kept == nullptr || CapacityOf(kept) < CapacityOf(block)) &&
        ::pthread_setspecific(g_keptKey, block) == 0) {
      std::free(kept);
      return;
    }
  }
  std::free(block);
}

void* Allocate(size_t capacity) {
  if (capacity > static_cast<size_t>(-1) - kHeader) throw std::bad_alloc();
  void* block = std::malloc(kHeader + capacity);
  if (block == nullptr) throw std::bad_alloc();
  *static_cast<size_t*>(block) = capacity;
  return block;
}

}  // namespace

PropertyTextBuffer::PropertyTextBuffer()
    : m_data(nullptr), m_capacity(0), m_size(0) {}

PropertyTextBuffer::~PropertyTextBuffer() { Release(); }

char* PropertyTextBuffer::Reserve(size_t capacity, size_t keep) {
  if (capacity <= m_capacity) return m_data;
  if (capacity < kKeptSize) capacity = kKeptSize;
  void* block = BorrowKept(capacity);
  if (block == nullptr) block = Allocate(capacity);
  char* data = TextOf(block);
  capacity = CapacityOf(block);
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
  ReturnKept(BlockOf(m_data));
  m_data = nullptr;
  m_capacity = 0;
}
