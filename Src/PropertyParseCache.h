// PropertyParseCache.h - what each file binding last read or wrote, so that
// a load or rewrite that reads exactly the same bytes again takes the table
// they read as instead of parsing them anew. Internal to the library: not
// installed.
//
// Every load and rewrite still reads the file: the merge with what the file
// holds now is the point of a rewrite. Only the parse is spared, and only
// for the very bytes the binding parsed or wrote last. Nothing a program can
// observe changes: the table is the one those bytes read as, and the
// messages reading them logs (Log() may be the program's own) are written
// again, in the same order, with the same arguments.
//
// Kept per binding: the bytes, the table, and the messages (or, for bytes
// the binding wrote from a table that reads back as itself, nothing more:
// their messages are the table's "Loading" lines). Files larger than
// kMaxBytes are not kept, so a binding holds at most about three times that
// (bytes, table and messages). Forgotten when the binding goes.
//
// Thread-safe for different bindings; one binding is used under its
// manager's lock, as the bindings always are.

#ifndef SRC_PROPERTYPARSECACHE_H_
#define SRC_PROPERTYPARSECACHE_H_

#include <cstddef>
#include <vector>

#include "Property.h"
#include "PropertyMessages.h"
#include "PropertyThreadGuard.h"

template <typename Format>
class PropertyParseCache {
 public:
  typedef typename Format::Store Store;

  // Files of more bytes are parsed every time.
  static const size_t kMaxBytes = 16u << 20;

  // If what binding last read or wrote is text[0, size), read with the long
  // lines choice in force now: writes the messages reading it logs again,
  // sets store (an empty one) to its table and returns true. take moves the
  // table out: the caller gives it back unchanged (GiveBack()) or keeps
  // what it writes from it (KeepWritten()); until then nothing is reused.
  // Otherwise the table is copied. Returns false, changing nothing, if the
  // bytes are others.
  // If written is not null, it tells whether the table is one the binding
  // wrote (so that every entry reads back alone). If bytes is not null (with
  // take only), it gets the kept bytes, the same as text, saving a copy;
  // then only KeepWritten() or Forget() may follow (GiveBack() forgets).
  static bool Reuse(const void* binding, const char* text, size_t size,
                    Store& store, bool take, bool* written = nullptr,
                    propstring* bytes = nullptr);
  // Puts back the table Reuse() gave store with take, unchanged; nothing if
  // it did not.
  static void GiveBack(const void* binding, Store& store);
  // Keeps for binding the bytes it read, the table they read as and the
  // messages reading them logged (unless the messages are not complete or
  // the bytes too many: then it forgets).
  static void KeepRead(const void* binding, const char* text, size_t size,
                       Store& store, PropertyMessages::Recording& messages);
  // Keeps for binding the text it wrote from store and header (the text
  // Format::Render() made), if reading that text gives store itself and
  // logs only its "Loading" lines; otherwise forgets. If changed is not
  // null, store is a table the binding wrote with the values of the
  // properties of changed put into it, and only their entries are checked.
  // The memory of spare, if not null, may hold the kept bytes if it is not
  // much larger than they need (spare is left empty or with other text).
  static void KeepWritten(const void* binding, const char* text, size_t size,
                          Store& store, const propstring& header,
                          const std::vector<Property*>* changed = nullptr,
                          propstring* spare = nullptr);
  static void Forget(const void* binding);

  // Whether bindings reuse at all: on unless turned off here (for tests that
  // compare both ways) or by LIBPROPERTIES_REUSE=0.
  static void SetEnabled(bool on);
  static bool Enabled();

 private:
  // Format::ReadsBackAlone(), or with changed only the header and the
  // entries of those properties.
  static bool ReadsBackAlone(const Store& store, const propstring& header,
                             const std::vector<Property*>* changed);
};

#endif  // SRC_PROPERTYPARSECACHE_H_
