// PropertyLayout.h - rewrites that keep what people wrote in a file. By
// default every rewrite of a bound file writes it anew from the table of
// its entries: a header comment line, then every entry in byte order (and
// in INI files every section in byte order), so comments, blank lines,
// order and quotes are gone after the first change. With layout keeping on,
// a rewrite edits the text the file holds instead:
//  - an entry whose value changed gets the new value on the line the
//    library reads it from (the last line of its key; in INI files within
//    the last occurrence of its section), with the key's spelling, the
//    blanks around '=', a trailing comment and the line end kept; a value
//    that would not read back as written (leading or trailing blanks, a
//    leading '"') is written in double quotes;
//  - an entry the file lacks is added: at the end of a flat file, after the
//    last entry of its section in an INI file, or with a new "[section]"
//    line at the end of the file;
//  - every other byte stays: comments, blank lines, order, other keys,
//    repeated keys, CR LF line ends, a byte-order mark.
// A missing or empty file is written as it is without layout keeping,
// header line included; an existing file gets no header line it does not
// start with.
//
// Reading the edited file gives exactly the table that reading the file
// written anew would give. Where no edit can (a value with a line break, a
// NUL byte or the format's comment character, a key that would read back
// otherwise, a line of 512 characters or more unless long lines are on),
// that rewrite writes the file anew and logs "File '<path>' is written
// anew, not in its own layout: <reason>".
//
// Operators choose without a rebuild: LIBPROPERTIES_KEEP_LAYOUT=1 turns it
// on for the process, read once when first needed. A program's own calls
// below take precedence: a binding's choice over its manager's, a
// manager's over the process-wide one.
//
// Thread safety: every function may be called from any thread; a choice
// applies to rewrites that start after the call.

#ifndef SRC_PROPERTYLAYOUT_H_
#define SRC_PROPERTYLAYOUT_H_

#include "PropertyManager.h"
#include "PropertyThreadGuard.h"

class PropertyLayout {
 public:
  // The process-wide choice, for every binding whose manager has no choice
  // of its own. Starts as LIBPROPERTIES_KEEP_LAYOUT=1 says, else off.
  static void SetKeepLayout(bool on);
  static bool KeepLayout();

  // The choice for every binding of manager (read-write bindings are the
  // ones that rewrite) without a choice of its own; it then ignores the
  // process-wide one. Dropped when the manager is deleted. manager must not
  // be null.
  static void SetKeepLayout(PropertyManager* manager, bool on);
  static bool KeepLayout(const PropertyManager* manager);

  // The choice for the binding of manager to filePath (the path as given
  // when it was bound). Returns false, choosing nothing, if manager has no
  // such binding. Dropped when the binding is. Takes the manager's mutex.
  static bool SetKeepLayout(PropertyManager* manager,
                            const propstring& filePath, bool on);
  // What the binding of manager to filePath does: its choice, else the
  // manager's, else the process-wide one; false if there is no such
  // binding. Takes the manager's mutex.
  static bool KeepLayout(PropertyManager* manager, const propstring& filePath);
};

#endif  // SRC_PROPERTYLAYOUT_H_
