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

class PropertyTextBuffer;

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
  // Load(fileName) without the assertion, for the library's own reads: sets
  // opened to false, and returns false, if the file cannot be opened. Reads a
  // regular file in one go and parses it in memory, with the same table, the
  // same result and the same log lines as Load(std::istream&) on it.
  bool LoadFile(const propstring& fileName, bool& opened);

  // Writes the table to fileName, replacing its content, in one write (see
  // PropertyFile.h). Returns false if the file cannot be opened or the
  // write fails. REQUIRES: fileName is not empty (asserted).
  bool Store(const propstring& fileName, const propstring& header);
  // Writes "#<header>" (if header is not empty) and every entry, each line
  // ended by a line feed and a flush. Returns true iff out is good afterwards;
  // writes nothing and returns false if out is bad at entry.
  bool Store(std::ostream& out, const propstring& header);

  // The exact text that Store writes for header.
  propstring ToText(const propstring& header) const;
  // The same text, appended to text, for the library's own rewrites.
  void ToText(const propstring& header, PropertyTextBuffer& text) const;

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
  // The longest line a reader takes whole, and the buffer that holds it.
  enum { kLineBufferSize = 512 };
  typedef std::map<propstring, propstring> Table;

  // Takes one line (at most 511 characters, NUL-terminated, changed in
  // place) into the table: comment cut, split at the first '=', both fields
  // cleaned, logged.
  void ParseLine(char* line, int lineNumber);
  // ParseLine() on the line [line, end), which holds no NUL byte; the text
  // is not changed.
  void ParseLine(char* line, char* end, int lineNumber);
  // Parses text[0, size) line by line as the stream reader would; text[size]
  // must be writable. REQUIRES: no line is longer than 511 characters.
  void ParseText(char* text, size_t size);
  // Sets table[key] = value for a line of the file; logs a redefinition.
  // Constant time when keys arrive in order, as in files the library wrote.
  static Table::iterator Insert(Table& table, const char* key,
                                const char* value, int lineNumber);
  // Insert() of the fields [key, keyEnd) and [value, valueEnd).
  static Table::iterator Insert(Table& table, const char* key,
                                const char* keyEnd, const char* value,
                                const char* valueEnd, int lineNumber);
  // Extract() on the field [begin, end) without writing to it: returns the
  // start of the cleaned field and moves end to its end.
  static char* ExtractField(char* begin, char*& end);
  // The first byte of [begin, end) that is not a blank, or end.
  static char* SkipBlanks(char* begin, char* end);
  // Cuts the next line out of [cursor, end) in place and logs it if it is
  // 511 characters long with a line feed after it (as the stream reader
  // does). Sets more to false at the last line, which ends at end.
  static char* TakeLine(char*& cursor, char* end, int lineNumber, bool& more);
  // The end of the line that TakeLine() just returned, as the stream reader
  // sees it: its first NUL byte if nulInside (the text holds one somewhere),
  // else where TakeLine() cut it.
  static char* LineEnd(char* line, const char* cursor, char* end, bool more,
                       bool nulInside);
  // True if some line of text is longer than 511 characters.
  static bool HasOverlongLine(const propstring& text);
  static bool HasOverlongLine(const char* text, size_t size);
  // Reads fileName whole into text and returns true if it may be parsed in
  // memory. Otherwise the stream reader must take it (if opened): a device,
  // a read error, or a line the stream reader would never get past.
  static bool ReadForParsing(const propstring& fileName, propstring& text,
                             bool& opened);
  static bool ReadForParsing(const propstring& fileName,
                             PropertyTextBuffer& text, bool& opened);

  // Reads one line of at most kLineBufferSize - 1 characters into buffer
  // (NUL-terminated) and logs a read error or an over-long line under
  // lineNumber. Returns false after a read error (the line is still valid).
  static bool ReadLine(std::istream& in, char* buffer, int lineNumber);
  // Writes "<key>=<value>" as it stands (nothing quoted or escaped).
  static void WriteEntry(std::ostream& out, const propstring& key,
                         const propstring& value);
  // Appends the line "<key>=<value>\n" to text.
  static void AppendEntry(const propstring& key, const propstring& value,
                          PropertyTextBuffer& text);
  // Writes text and ends the line: a line feed and a flush.
  static void WriteLine(std::ostream& out, const propstring& text);

  std::map<propstring, propstring> m_entries;
};

#endif  // SRC_JAVAPROPERTIES_H_
