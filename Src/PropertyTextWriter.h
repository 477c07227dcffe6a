// PropertyTextWriter.h - what writing a property file means for both
// formats: lines of "<key>=<value>" with nothing quoted or escaped, and an
// optional header comment line. Internal to the library: not installed.
//
// A rewrite assembles the whole text in a PropertyTextBuffer and writes it
// in one go; a store written to a stream writes it line by line, each line
// ended by a line feed and a flush.

#ifndef SRC_PROPERTYTEXTWRITER_H_
#define SRC_PROPERTYTEXTWRITER_H_

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

  // Writes the line "<mark><header>", unless header is empty.
  static void WriteHeader(std::ostream& out, char mark,
                          const propstring& header);
  // Writes the line "<key>=<value>".
  static void WriteEntry(std::ostream& out, const propstring& key,
                         const propstring& value);
  // Writes text and ends the line: a line feed and a flush.
  static void WriteLine(std::ostream& out, const propstring& text);
};

#endif  // SRC_PROPERTYTEXTWRITER_H_
