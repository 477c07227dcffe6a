// JavaProperties.h - an ordered table of text keys and values, read from and
// written to flat "key=value" files.
//
// File format (see also the README):
//   # comment: from the first '#' to the end of the line, anywhere
//   key = value       blanks around key and value are dropped
//   key=" value "     quotes keep blanks; an unmatched opening quote is kept
//   a=b=c             the first '=' splits: key "a", value "b=c"
// Lines without '=' are ignored; a repeated key keeps its last value. Lines
// may hold at most 511 characters: on a longer line, Load never returns.
// Store writes an optional "#<header>" line, then every entry as key=value
// in byte order of the keys, with no quoting or escaping.
//
// Not thread-safe: callers serialise access to one object.
//
// ABI: the virtual destructor is the only virtual function; the member order
// is part of the binary interface. Do not reorder, insert or remove.

#ifndef SRC_JAVAPROPERTIES_H_
#define SRC_JAVAPROPERTIES_H_

#include <istream>
#include <map>
#include <ostream>

#include "PropertyThreadGuard.h"

class JavaProperties {
 public:
  JavaProperties();  // An empty table.
  virtual ~JavaProperties();

  // Reads fileName into the table (merging: existing keys are overwritten).
  // Returns false if the file cannot be opened. REQUIRES: fileName is not
  // empty (asserted).
  bool Load(const propstring& fileName);
  // Reads in until its end into the table (merging). Returns false if in was
  // not good at entry or a read error occurred; what was read stays. Never
  // returns if a line holds 512 or more characters.
  bool Load(std::istream& in);

  // Writes the table to fileName, replacing its content in one write (the
  // way every rewrite of the library does it). Returns false if the file
  // cannot be opened or the write fails. REQUIRES: fileName is not empty
  // (asserted).
  bool Store(const propstring& fileName, const propstring& header);
  // Writes "#<header>" (if header is not empty) and every entry, each line
  // ended by a line feed and a flush. Returns true iff out is good afterwards;
  // writes nothing and returns false if out is bad at entry.
  bool Store(std::ostream& out, const propstring& header);

  // The exact text that Store writes for header.
  propstring ToText(const propstring& header) const;

  // Inserts or overwrites. Nothing is checked.
  void SetProperty(const propstring& key, const propstring& value);
  // Copies the value of key into value and returns true; returns false and
  // leaves value untouched if key is absent.
  bool GetProperty(const propstring& key, propstring& value) const;
  // The value of key, or "" if key is absent.
  propstring GetProperty(const propstring& key) const;
  void Clear();

  // Cleans one field in place and returns a pointer into text: drops leading
  // and trailing blanks; a field that starts with '"' loses that quote and,
  // if its last byte is '"', that one too (otherwise the opening quote is
  // kept). REQUIRES: text is NUL-terminated and writable.
  char* Extract(char* text);

 protected:
  // Not client interface: the library's reader and writer of the format.
  friend class JavaPropertiesFormat;

  std::map<propstring, propstring> m_entries;  // In byte order of the keys.
};

#endif  // SRC_JAVAPROPERTIES_H_
