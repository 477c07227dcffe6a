// PropertyLayoutKeeper.h - rewrites that keep a file's own layout: instead
// of the normalised text of a store (Format::Render(): a header line, then
// every entry in byte order), an edit of the text the file holds that reads
// as exactly the same table. Internal to the library: not installed.
//
// The edit changes only what it must:
// - An entry whose value differs gets the new value on the line the reader
//   takes for it: the last line of its key (in the INI format, within the
//   last occurrence of its section, which is the one the reader keeps). The
//   key as spelt, the blanks around '=' and after the value, a trailing
//   comment and the line end (with a carriage return before the line feed)
//   stay. A value that would not read back as written (leading or trailing
//   blanks, a leading '"') is written in double quotes.
// - An entry the file lacks is added. Flat: at the end of the file. INI: in
//   the last occurrence of its section, right after that occurrence's last
//   entry line (or its header line if it has none), so that comments and
//   blank lines that close the section stay after it; a section the file
//   lacks is added at the end of the file, its "[name]" line and then its
//   entries, new sections in byte order. Nothing else is added (no empty
//   lines), so that one new entry is one new line, or two with its section.
// - Added lines end as the file's lines do (a carriage return and a line
//   feed if every line feed of the file has a carriage return before it,
//   else a line feed); a last line without a line feed gets one before
//   anything is added after it.
// - Everything else stays byte for byte: comments, blank lines, order,
//   entries whose values are kept, repeated keys and sections, lines the
//   reader ignores, NUL bytes, a byte order mark.
//
// The header: an empty original (a missing or empty file) gets exactly the
// normalised text, header line included, so a new file is the same as
// without layout keeping. An existing file keeps its first lines as they
// are: a header line it starts with stays, and none is added to a file that
// does not start with one, since its first lines are its owner's.
//
// Every edit is read back, with nothing logged, and compared with the table
// that reading the normalised text gives; an edit that does not read back so
// is refused. Refused (the caller then writes the normalised text), with a
// short reason: a value or key to write that holds a line break, a NUL byte
// or the comment character, a new key that holds '=' (or, INI, starts with
// '['), a line of 512 characters or longer while long lines are off
// (PropertySafety::LongLines(), in the file, the normalised text or the
// edit), an entry or section of the file that the table lacks (unless
// removals are asked for), and any edit that would not read back as the
// table.
//
// Pure: no file access, no log lines, no state; any thread.

#ifndef SRC_PROPERTYLAYOUTKEEPER_H_
#define SRC_PROPERTYLAYOUTKEEPER_H_

#include <cstddef>

#include "IniProperties.h"
#include "JavaProperties.h"
#include "PropertyTextBuffer.h"
#include "PropertyThreadGuard.h"

class PropertyLayoutKeeper {
 public:
  // What may become of the file's entries.
  enum Removals {
    kKeepEntries,   // A rewrite that merges: the table holds every entry of
                    // the file, else the edit is refused.
    kRemoveEntries  // An entry or section the table lacks goes, with every
                    // line of its key in the section's last occurrence (an
                    // earlier one would be read instead), or every
                    // occurrence of the section from its header to its last
                    // entry line.
  };

  // Sets text to an edit of the file text original[0, size) (any bytes) that
  // reads as the normalised text of store and header (with the flat format's
  // rules) reads, and returns true. Returns false with why set to a short
  // reason if no layout-keeping edit gives that table; text is then
  // unspecified.
  static bool Edit(const char* original, size_t size,
                   const JavaProperties& store, const propstring& header,
                   PropertyTextBuffer& text, propstring& why,
                   Removals removals = kKeepEntries);
  // The same for the INI format.
  static bool Edit(const char* original, size_t size,
                   const IniProperties& store, const propstring& header,
                   PropertyTextBuffer& text, propstring& why,
                   Removals removals = kKeepEntries);
};

#endif  // SRC_PROPERTYLAYOUTKEEPER_H_
