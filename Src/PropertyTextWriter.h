// PropertyTextWriter.h - what writing a property file means for both
// formats: lines of "<key>=<value>" with nothing quoted or escaped, and an
// optional header comment line. Internal to the library: not installed.
//
// A rewrite assembles the whole text in a PropertyTextBuffer and writes it
// in one go; a store written to a stream writes it line by line, each line
// ended by a line feed and a flush.

#ifndef SRC_PROPERTYTEXTWRITER_H_
#define SRC_PROPERTYTEXTWRITER_H_

#include <map>
#include <ostream>

#include "PropertyTextBuffer.h"
#include "PropertyThreadGuard.h"

class PropertyTextWriter {
 public:
  // Appends the line "<mark><header>\n" to text, unless header is empty.
  static void AppendHeader(char mark, const propstring& header,
                           PropertyTextBuffer& text);
  // Appends the line "<key>=<value>\n" to text.
  static void AppendEntry(const propstring& key, const propstring& value,
                          PropertyTextBuffer& text);
  typedef std::map<propstring, propstring> Entries;
  // AppendEntry() for every entry, in order.
  static void AppendEntries(const Entries& entries, PropertyTextBuffer& text);
  // Entries given a new value, by key.
  typedef std::map<propstring, propstring> NewValues;
  // Appends to text what AppendEntry() makes of the entries of the lines
  // [begin, end) with values set: the lines as they are, each entry of
  // values in place of its key's line or, for a key they lack, inserted
  // where its byte order puts it. REQUIRES: [begin, end) is AppendEntry()
  // lines in byte order of keys that hold no '=' or line feed.
  static void AppendChangedEntries(const char* begin, const char* end,
                                   const NewValues& values,
                                   PropertyTextBuffer& text);

  // Writes the line "<mark><header>", unless header is empty.
  static void WriteHeader(std::ostream& out, char mark,
                          const propstring& header);
  // Writes the line "<key>=<value>".
  static void WriteEntry(std::ostream& out, const propstring& key,
                         const propstring& value);
  // Writes text and ends the line: a line feed and a flush.
  static void WriteLine(std::ostream& out, const propstring& text);

  // Why field, written as it stands in a file whose comments start with
  // mark, would not be read back as itself ("holds a line break", ...), or
  // null if it would. A field whose edges are kept by the line around it
  // (a section name between brackets) passes keepsEdges: its blanks and
  // quotes are then no trouble.
  static const char* FieldTrouble(const propstring& field, char mark,
                                  bool keepsEdges);
  // True if a line of length characters is too long for a reader that
  // keeps to the 511-character limit.
  static bool TooLong(size_t length);
  // True if a line of length characters is read without a note: shorter
  // than the 511 characters (line feed included: 512) that readers log as
  // too long.
  static bool ReadsWithoutNote(size_t length);
  // True if the header line AppendHeader() writes for header (if any) reads
  // as a comment alone and without a note.
  static bool HeaderReadsAlone(const propstring& header);
};

#endif  // SRC_PROPERTYTEXTWRITER_H_
