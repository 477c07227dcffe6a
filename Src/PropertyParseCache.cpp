// PropertyParseCache.cpp - see PropertyParseCache.h.

#include "PropertyParseCache.h"

#include <atomic>
#include <cstring>
#include <map>
#include <mutex>
#include <utility>

#include "IniPropertiesFormat.h"
#include "JavaPropertiesFormat.h"
#include "PropertyDefaults.h"
#include "PropertySafety.h"
#include "PropertyTextWriter.h"

namespace {

std::atomic<bool> g_enabled(true);

template <typename Format>
struct Kept {
  propstring bytes;
  typename Format::Table table;
  // What reading the bytes logged; unused when written.
  PropertyMessages::Recording messages;
  // The bytes were written from the table, and reading them logs only its
  // "Loading" lines.
  bool written = false;
  bool longLines = false;   // The choice the bytes were read with.
  bool taken = false;       // The table is with the binding (Reuse()).
  bool bytesTaken = false;  // So are the bytes: only a keep or a forget
                            // may follow.
};

// Never destroyed: bindings may go after static destruction began.
template <typename Format>
struct Table {
  std::mutex mutex;
  std::map<const void*, Kept<Format> > kept;
};

template <typename Format>
Table<Format>& TheTable() {
  static Table<Format>* table = new Table<Format>;
  return *table;
}

}  // namespace

template <typename Format>
bool PropertyParseCache<Format>::Reuse(const void* binding, const char* text,
                                       size_t size, Store& store, bool take,
                                       bool* written, propstring* bytes) {
  if (!Enabled()) return false;
  Table<Format>& table = TheTable<Format>();
  std::unique_lock<std::mutex> lock(table.mutex);
  auto found = table.kept.find(binding);
  if (found == table.kept.end()) return false;
  Kept<Format>& kept = found->second;
  // The long lines choice decides how lines of 511 characters or more read.
  if (kept.taken || kept.bytes.size() != size ||
      (!kept.written && kept.longLines != PropertySafety::LongLines()) ||
      std::memcmp(kept.bytes.data(), text, size) != 0) {
    return false;
  }
  if (written != nullptr) *written = kept.written;
  typename Format::Table& into = Format::TableOf(store);
  if (take) {
    into.swap(kept.table);
    if (bytes != nullptr) {
      bytes->swap(kept.bytes);
      kept.bytesTaken = true;
    }
    kept.taken = true;
  } else {
    into = kept.table;
  }
  // The messages go out unlocked, as Log() is the program's: the entry
  // stays, as only this binding, under its manager's lock, changes it.
  lock.unlock();
  if (PropertyMessages::LogDiscardsAll()) {
    // Nothing to see: the library's own Log() reads no argument.
  } else if (kept.written) {
    Format::WriteLoadingMessages(store);
  } else {
    kept.messages.Replay();
  }
  return true;
}

template <typename Format>
void PropertyParseCache<Format>::GiveBack(const void* binding, Store& store) {
  Table<Format>& table = TheTable<Format>();
  std::lock_guard<std::mutex> lock(table.mutex);
  auto found = table.kept.find(binding);
  if (found == table.kept.end() || !found->second.taken) return;
  // A table taken with its bytes (by a rewrite that did not end) is not the
  // one given back: nothing is kept.
  if (found->second.bytesTaken) {
    table.kept.erase(found);
    return;
  }
  found->second.table.swap(Format::TableOf(store));
  found->second.taken = false;
}

template <typename Format>
void PropertyParseCache<Format>::KeepRead(
    const void* binding, const char* text, size_t size, Store& store,
    PropertyMessages::Recording& messages) {
  if (!Enabled() || size > kMaxBytes || !messages.Complete()) {
    Forget(binding);
    return;
  }
  Kept<Format> kept;
  kept.bytes.assign(text, size);
  kept.table = Format::TableOf(store);
  kept.messages = std::move(messages);
  kept.longLines = PropertySafety::LongLines();
  Table<Format>& table = TheTable<Format>();
  std::lock_guard<std::mutex> lock(table.mutex);
  table.kept[binding] = std::move(kept);
}

template <typename Format>
void PropertyParseCache<Format>::KeepWritten(
    const void* binding, const char* text, size_t size, Store& store,
    const propstring& header, const std::vector<Property*>* changed,
    propstring* spare) {
  if (!Enabled() || size > kMaxBytes ||
      !ReadsBackAlone(store, header, changed)) {
    Forget(binding);
    return;
  }
  Kept<Format> kept;
  // Memory already in use takes the bytes without a fresh allocation, unless
  // it is much more than they need.
  if (spare != nullptr && spare->capacity() / 2 <= size) {
    kept.bytes.swap(*spare);
  }
  kept.bytes.assign(text, size);
  kept.table.swap(Format::TableOf(store));
  kept.written = true;
  Table<Format>& table = TheTable<Format>();
  std::lock_guard<std::mutex> lock(table.mutex);
  table.kept[binding] = std::move(kept);
}

template <typename Format>
bool PropertyParseCache<Format>::ReadsBackAlone(
    const Store& store, const propstring& header,
    const std::vector<Property*>* changed) {
  if (changed == nullptr) return Format::ReadsBackAlone(store, header);
  if (!PropertyTextWriter::HeaderReadsAlone(header)) return false;
  for (Property* property : *changed) {
    if (!Format::EntryReadsBackAlone(property->GetSection(), property->GetKey(),
                                     property->GetValue())) {
      return false;
    }
  }
  return true;
}

template <typename Format>
void PropertyParseCache<Format>::Forget(const void* binding) {
  Table<Format>& table = TheTable<Format>();
  std::lock_guard<std::mutex> lock(table.mutex);
  table.kept.erase(binding);
}

template <typename Format>
void PropertyParseCache<Format>::SetEnabled(bool on) {
  g_enabled.store(on);
}

template <typename Format>
bool PropertyParseCache<Format>::Enabled() {
  return g_enabled.load() && PropertyDefaults::ReuseParses();
}

template class PropertyParseCache<JavaPropertiesFormat>;
template class PropertyParseCache<IniPropertiesFormat>;
