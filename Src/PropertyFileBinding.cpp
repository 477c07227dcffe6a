// PropertyFileBinding.cpp - see PropertyFileBinding.h.

#include "PropertyFileBinding.h"

#include <algorithm>
#include <atomic>
#include <typeinfo>

#include "BooleanProperty.h"
#include "DoubleProperty.h"
#include "IniPropertiesFormat.h"
#include "IntegerProperty.h"
#include "IpAddrProperty.h"
#include "JavaPropertiesFormat.h"
#include "ListProperty.h"
#include "PropertyChoices.h"
#include "PropertyFile.h"
#include "PropertyFileLock.h"
#include "PropertyFileTroubles.h"
#include "PropertyLayoutKeeper.h"
#include "PropertyMessages.h"
#include "PropertyParseCache.h"
#include "PropertyTextBuffer.h"
#include "PropertyTextReader.h"
#include "StringProperty.h"

namespace {

// One choice for both formats' bindings (a HeldPasses value).
std::atomic<int> g_heldPasses(0);

}  // namespace

template <typename Format>
PropertyFileBinding<Format>::PropertyFileBinding(std::vector<Property*>& bound,
                                                 const propstring& path,
                                                 const propstring& header)
    : m_bound(bound), m_path(path), m_header(header) {}

template <typename Format>
void PropertyFileBinding<Format>::Bind(Property* property) {
  m_bound.push_back(property);
  Store store;
  // Only looked up: the table goes back before the value is set, which may
  // rewrite the file and take it again.
  Load(store, nullptr, kLend);
  propstring value;
  const bool found = Format::Find(store, *property, value);
  PropertyParseCache<Format>::GiveBack(&m_bound, store);
  if (found) SetStoredValue(property, value);
}

template <typename Format>
void PropertyFileBinding<Format>::Unbind(Property* property) {
  std::vector<Property*>::iterator it =
      std::find(m_bound.begin(), m_bound.end(), property);
  if (it != m_bound.end()) m_bound.erase(it);
}

template <typename Format>
void PropertyFileBinding<Format>::Rewrite() {
  PropertyFileTroubles::Scope troubles(&m_bound, m_path);
  const bool keepLayout =
      PropertyChoices::ForBinding(&m_bound, PropertyChoices::kKeepLayout);
  // Where nothing but the library's own code runs between the read and the
  // write and nothing is logged, the one pass holds the file's exclusive
  // lock throughout: no program that takes the lock can write in between,
  // and the file opened for the lock is the one read and written.
  // Otherwise a pass reads, merges and renders with no lock held (a
  // program's Log() or property may run meanwhile, and might read this very
  // file); only the final compare-and-write holds the lock, and another
  // program's rewrite in between starts a new pass. Passes are bounded so
  // that a writer that keeps losing still writes.
  PropertyFileLock held;
  bool holding = MayHoldLock() && PropertyFile::Hold(m_path, held);
  PropertyFile::Result result;
  for (int pass = 1;; ++pass) {
    // Merging into what the file holds now keeps keys that other programs
    // or unregistered properties put there.
    Store store;
    PropertyFile::Contents seen;
    bool written = false;
    Load(store, &seen, kTake, &written, holding ? &held : nullptr);
    // The text of a table the binding wrote changes only in the lines of
    // the entries that change: those are put into it, not the whole table.
    const bool patch = written && !keepLayout;
    typename Format::Changes changes;
    for (Property* property : m_bound) Put(store, *property, patch, changes);
    PropertyTextBuffer text;
    if (!patch || !Format::RenderChanged(seen.bytes.data(), seen.bytes.size(),
                                         m_header, changes, text)) {
      text.SetSize(0);
      Render(store, seen, keepLayout, text);
    }
    // A program that takes no lock may have renamed another file over this
    // one meanwhile: then the pass compares and writes as unheld ones do.
    if (holding && !held.NamedBy(m_path)) {
      holding = false;
      held.Release();
    }
    if (holding) {
      result =
          PropertyFile::ReplaceHeld(m_path, held, text.Data(), text.Size());
      held.Release();
    } else {
      if (pass == kMaxPasses) seen = PropertyFile::Contents();
      result = PropertyFile::ReplaceIfUnchanged(m_path, seen, text.Data(),
                                                text.Size());
    }
    // What the file holds now is what the next read finds, unless another
    // program writes meanwhile; an edit of the layout is read anew.
    if (result == PropertyFile::kWritten && !keepLayout) {
      // A table the binding wrote changes only in its properties' entries.
      PropertyParseCache<Format>::KeepWritten(
          &m_bound, text.Data(), text.Size(), store, m_header,
          written ? &m_bound : nullptr, &seen.bytes);
    } else {
      PropertyParseCache<Format>::Forget(&m_bound);
    }
    if (result != PropertyFile::kChanged) break;
  }
  // A failed write after a successful open goes unreported, as it always
  // has; the in-memory values stay either way.
  if (result == PropertyFile::kNotOpened) {
    PropertyMessages::Write(PropertyMessages::kCanNotWrite, m_path.c_str());
  }
}

template <typename Format>
void PropertyFileBinding<Format>::SetHeldPasses(HeldPasses which) {
  g_heldPasses.store(which);
}

template <typename Format>
bool PropertyFileBinding<Format>::MayHoldLock() const {
  const int held = g_heldPasses.load(std::memory_order_relaxed);
  if (held != kWhereOnlyOwnCodeRuns) return held == kEvery;
  // The library's own Log() runs no code of the program, but one that
  // writes (to a full pipe, say) might keep the lock for long.
  if (!PropertyMessages::LogDiscardsAll()) return false;
  for (const Property* property : m_bound) {
    const std::type_info& type = typeid(*property);
    // The library's own property classes; a class of the program, derived
    // from one of them or not, may do anything in GetValue().
    if (type != typeid(IntegerProperty) && type != typeid(StringProperty) &&
        type != typeid(BooleanProperty) && type != typeid(DoubleProperty) &&
        type != typeid(IpAddrProperty) && type != typeid(ListProperty)) {
      return false;
    }
  }
  return true;
}

template <typename Format>
void PropertyFileBinding<Format>::Put(Store& store, Property& property,
                                      bool noteChange,
                                      typename Format::Changes& changes) {
  if (!noteChange) {
    Format::Put(store, property);
    return;
  }
  const propstring* held = Format::Peek(store, property);
  const bool had = held != nullptr;
  // Putting a value the table holds changes nothing but the "Setting" line
  // it logs, which nobody sees where Log() discards everything.
  if (had && PropertyMessages::LogDiscardsAll() &&
      *held == property.GetValue()) {
    return;
  }
  const propstring before = had ? *held : propstring();
  Format::Put(store, property);
  const propstring& now = *Format::Peek(store, property);
  if (!had || now != before) {
    changes[property.GetSection()][property.GetKey()] = now;
  }
}

template <typename Format>
void PropertyFileBinding<Format>::Render(const Store& store,
                                         const PropertyFile::Contents& seen,
                                         bool keepLayout,
                                         PropertyTextBuffer& text) {
  if (keepLayout) {
    propstring why = "the file was not read whole";
    if (seen.state == PropertyFile::Contents::kAbsent) {
      why.clear();  // A new file: its text is the store's either way.
    } else if (seen.state == PropertyFile::Contents::kBytes &&
               PropertyLayoutKeeper::Edit(seen.bytes.data(), seen.bytes.size(),
                                          store, m_header, text, why)) {
      return;
    }
    if (!why.empty()) {
      PropertyMessages::Write(PropertyMessages::kLayoutNotKept, m_path.c_str(),
                              why.c_str());
    }
    text.SetSize(0);
  }
  Format::Render(store, m_header, text);
}

template <typename Format>
void PropertyFileBinding<Format>::Load(Store& store,
                                       PropertyFile::Contents* seen, Use use,
                                       bool* written,
                                       const PropertyFileLock* held) {
  typedef PropertyParseCache<Format> Cache;
  // The result of the read is not looked at: a read error has been logged,
  // and what was read before it counts.
  PropertyFileTroubles::Scope troubles(&m_bound, m_path);
  bool opened = false;
  typename Format::LineParser parser(store);
  PropertyTextBuffer text;
  const PropertyFile::ReadResult read =
      held != nullptr ? PropertyFile::ReadHeld(*held, text, seen, false)
                      : PropertyFile::ReadWhole(m_path, text, seen, false);
  opened = read != PropertyFile::kCannotOpen;
  // The bytes seen are copied from text, unless the kept ones stand in.
  propstring* keptBytes =
      read == PropertyFile::kReadWhole && seen != nullptr && use == kTake
          ? &seen->bytes
          : nullptr;
  // Bytes the binding kept need no look for over-long lines: those it read
  // were parsed in memory with the long lines choice in force now (a reuse
  // checks that), and no line it writes into a kept table is that long.
  const bool reused = read == PropertyFile::kReadWhole &&
                      Cache::Reuse(&m_bound, text.Data(), text.Size(), store,
                                   use != kCopy, written, keptBytes);
  if (seen != nullptr && seen->state == PropertyFile::Contents::kBytes &&
      !(reused && keptBytes != nullptr)) {
    seen->bytes.assign(text.Data(), text.Size());
  }
  if (reused) return;
  if (read == PropertyFile::kReadWhole &&
      PropertyTextReader::ParsesInMemory(text.Data(), text.Size())) {
    // A rewrite keeps what it writes instead.
    if (!Cache::Enabled() || text.Size() > Cache::kMaxBytes || use == kTake) {
      PropertyTextReader::ParseText(text.Data(), text.Size(), parser);
      return;
    }
    PropertyMessages::Recording messages;
    {
      PropertyMessages::Recording::Scope recording(messages);
      PropertyTextReader::ParseText(text.Data(), text.Size(), parser);
    }
    Cache::KeepRead(&m_bound, text.Data(), text.Size(), store, messages);
    return;
  }
  if (opened) {
    // Not read whole (a device, a read error, an over-long line): read as
    // the stream reader always has, and not kept.
    std::ifstream in;
    opened = PropertyFile::OpenForLines(m_path, in);
    if (opened) PropertyTextReader::ReadStream(in, parser);
  }
  if (!opened) {
    PropertyMessages::Write(PropertyMessages::kCanNotRead, m_path.c_str());
  }
}

template <typename Format>
void PropertyFileBinding<Format>::LoadAll() {
  Store store;
  Load(store);
  // By index: a load notifies listeners, which may bind further properties.
  for (size_t i = 0; i < m_bound.size(); ++i) SetFromStore(m_bound[i], store);
}

template <typename Format>
void PropertyFileBinding<Format>::Reload() {
  Store store;
  Load(store);
  // By index: a set notifies listeners, which may bind further properties.
  for (size_t i = 0; i < m_bound.size(); ++i) {
    Property* property = m_bound[i];
    propstring value;
    if (Format::Find(store, *property, value) &&
        value != property->GetValue()) {
      SetFromStore(property, store);
    }
  }
}

template <typename Format>
void PropertyFileBinding<Format>::SetFromStore(Property* property,
                                               Store& store) {
  propstring value;
  if (Format::Find(store, *property, value)) SetStoredValue(property, value);
}

template <typename Format>
void PropertyFileBinding<Format>::SetStoredValue(Property* property,
                                                 const propstring& value) {
  try {
    property->SetValue(value);
  } catch (Property::WrongValue& e) {
    // The rejected text stays in the file until the next rewrite replaces it.
    PropertyMessages::Write(PropertyMessages::kFormatChanged,
                            property->GetKey().c_str(), e.m_message.c_str());
  }
}

template class PropertyFileBinding<JavaPropertiesFormat>;
template class PropertyFileBinding<IniPropertiesFormat>;
