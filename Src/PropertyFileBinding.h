// PropertyFileBinding.h - the cycle that ties the properties of a manager to
// one file, for both formats: load one property, load all, rewrite (read,
// merge, write), and the log line of a stored value a property rejects.
// Internal to the library: not installed.
//
// JavaPropertiesPersistence and IniPropertiesPersistence keep their state
// (the bound properties, the path, the header) in their own members, whose
// layout programs depend on; a binding is a view of those members and keeps
// nothing of its own. Format is JavaPropertiesFormat or IniPropertiesFormat.
//
// Nothing is kept between calls: every load and every rewrite reads the file
// afresh, so that a rewrite keeps what other programs wrote meanwhile.
// File trouble is logged and never reported to the caller.
//
// Thread safety: no lock of its own; runs under the lock of whoever changes
// or registers a property.

#ifndef SRC_PROPERTYFILEBINDING_H_
#define SRC_PROPERTYFILEBINDING_H_

#include <vector>

#include "Property.h"
#include "PropertyFile.h"
#include "PropertyThreadGuard.h"

template <typename Format>
class PropertyFileBinding {
 public:
  typedef typename Format::Store Store;

  // Works on the members of one persistence object; none is owned.
  PropertyFileBinding(std::vector<Property*>& bound, const propstring& path,
                      const propstring& header);

  // Binds property and gives it the value stored for it, if any.
  void Bind(Property* property);
  // Forgets the first binding of property, if any.
  void Unbind(Property* property);
  // Reads the file afresh, merges the value of every bound property into it
  // and rewrites it. Logs "Can not write File '<path>'" if it cannot be
  // opened. No other program's rewrite between the read and the write is
  // lost: the file stays locked throughout, or the rewrite starts again
  // from the read.
  void Rewrite();
  // What a load does with the table it finds kept (PropertyParseCache).
  enum Use {
    kCopy,  // Copies it; a table parsed anew is kept.
    kLend,  // Takes it, to be given back unchanged; a table parsed anew is
            // kept.
    kTake   // Takes it, for a rewrite that keeps what it writes.
  };
  // Reads the file into store. Logs "Can not read File '<path>'" and leaves
  // store as it was if it cannot be opened. If seen is not null, it records
  // what the read found. Bytes the binding read or wrote last are not
  // parsed again: store (an empty one) gets their table, as use says, and
  // written (if not null) whether it is a table the binding wrote. With
  // held, the file it holds is read instead of opening the path.
  void Load(Store& store, PropertyFile::Contents* seen = nullptr,
            Use use = kCopy, bool* written = nullptr,
            const PropertyFileLock* held = nullptr);
  // Which rewrites hold the file's exclusive lock for their whole pass.
  enum HeldPasses {
    kWhereOnlyOwnCodeRuns,  // The default (see MayHoldLock()).
    kEvery,                 // For tests whose Log() only records.
    kNone                   // For tests that compare the two ways.
  };
  // Chooses for the bindings of both formats.
  static void SetHeldPasses(HeldPasses which);
  // Reads the file once and gives every bound property its stored value.
  void LoadAll();
  // Reads the file once and gives each bound property whose stored value
  // text differs from its own that value: only those are set (and their
  // change listeners told). A file that cannot be read changes nothing.
  void Reload();
  // Gives property the value store holds for it, if any. A value the
  // property rejects is logged; the property keeps its value.
  void SetFromStore(Property* property, Store& store);
  // Gives property value, a text the file holds for it; a value the
  // property rejects is logged, and the property keeps its value.
  void SetStoredValue(Property* property, const propstring& value);

 private:
  // After this many passes lost to other writers, a rewrite writes without
  // comparing.
  enum { kMaxPasses = 100 };

  // Sets text to what the file is rewritten to from store: an edit of the
  // bytes seen, if keepLayout and one reads as store's text would, else
  // store's text (logging why, if keepLayout).
  void Render(const Store& store, const PropertyFile::Contents& seen,
              bool keepLayout, PropertyTextBuffer& text);
  // True if a rewrite may hold the file's lock through its whole pass: no
  // code of the program can run meanwhile and nothing is written to a log
  // (Log() is the library's own and writes nowhere, every bound property is
  // of a class of the library), or SetHeldPasses() says so.
  bool MayHoldLock() const;
  // Format::Put() of property into store; if noteChange, an entry it
  // changes or adds goes into changes.
  void Put(Store& store, Property& property, bool noteChange,
           typename Format::Changes& changes);

  std::vector<Property*>& m_bound;
  const propstring& m_path;
  const propstring& m_header;
};

#endif  // SRC_PROPERTYFILEBINDING_H_
