// IniProperties.h - text values addressed by section and key, read from and
// written to sectioned INI files.
//
// File format (see also the README):
//   ; comment: from the first ';' to the end of the line, anywhere
//   [section]         the name runs to the last ']' of the line; blanks and
//                     quotes inside the brackets belong to it
//   key = value       cleaned like the flat format; '#' is an ordinary byte
// Entries before the first header, or under "[]", are dropped. A section read
// from a file replaces the whole section of that name in the store; sections
// the file does not name stay as they were. A header line without ']' takes
// the rest of the line as the name ("[abc" is the section "abc"). Lines may
// hold at most 511 characters: on a longer line, Load never returns.
// Store writes an optional ";<header>" line, then every section in byte
// order: "[name]", its entries as key=value in byte order, an empty line.
//
// The flat table of the base class is not used; the base class lends its
// field cleaning (Extract).
//
// Not thread-safe: callers serialise access to one object.
//
// ABI: the virtual destructor is the only virtual function; the member order
// is part of the binary interface. Do not reorder, insert or remove.

#ifndef SRC_INIPROPERTIES_H_
#define SRC_INIPROPERTIES_H_

#include <istream>
#include <map>
#include <ostream>

#include "JavaProperties.h"
#include "PropertyThreadGuard.h"

class IniProperties : public JavaProperties {
 public:
  IniProperties();  // An empty store.
  virtual ~IniProperties();

  // Reads fileName into the store (section by section). Returns false if the
  // file cannot be opened. REQUIRES: fileName is not empty (asserted).
  bool Load(const propstring& fileName);
  // Reads in until its end into the store, section by section. Returns false
  // if in was not good at entry or a read error occurred; what was read
  // stays. Never returns if a line holds 512 or more characters.
  bool Load(std::istream& in);

  // Writes the store to fileName, replacing its content in one write (the
  // way every rewrite of the library does it). Returns false if the file
  // cannot be opened or the write fails. REQUIRES: fileName is not empty
  // (asserted).
  bool Store(const propstring& fileName, const propstring& header);
  // Writes ";<header>" (if header is not empty) and every section. Returns
  // true iff out is good afterwards; writes nothing and returns false if out
  // is bad at entry.
  bool Store(std::ostream& out, const propstring& header);

  // The exact text that Store writes for header.
  propstring ToText(const propstring& header) const;

  // Inserts or overwrites, creating the section as needed. Nothing is
  // checked; the empty section name is accepted (but never read back).
  void SetProperty(const propstring& section, const propstring& key,
                   const propstring& value);
  // Copies the value into value and returns true; returns false and leaves
  // value untouched if the section or the key is absent.
  bool GetProperty(const propstring& section, const propstring& key,
                   propstring& value) const;
  // The value, or "" if the section or the key is absent.
  propstring GetProperty(const propstring& section,
                         const propstring& key) const;
  void Clear();

 protected:
  // Not client interface: the library's reader and writer of the format.
  friend class IniPropertiesFormat;

  std::map<propstring, std::map<propstring, propstring> > m_sections;
};

#endif  // SRC_INIPROPERTIES_H_
