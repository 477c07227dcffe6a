// PropertyTextReader.h - what reading a property file means for both
// formats: lines of at most 511 characters (of any length when
// PropertySafety::LongLines() is on), cut at line feeds, fields cleaned of
// blanks and quotes, and the choice between parsing a whole file in memory
// and reading it line by line. Internal to the library: not installed.
//
// A format supplies a line parser with two members:
//   void Line(char* line, char* end, int lineNumber);  // [line, end), no NUL
//   void Finish();                                     // after the last line
// and these functions feed it every line, in order, with the line numbers
// and log lines ("Error reading Line %d", "Line %d is too long") that the
// stream reader has always produced.
//
// Not thread-safe for one parser; the functions keep no state of their own.

#ifndef SRC_PROPERTYTEXTREADER_H_
#define SRC_PROPERTYTEXTREADER_H_

#include <cstddef>
#include <cstring>
#include <fstream>
#include <istream>
#include <map>
#include <string>

#include "PropertyFile.h"
#include "PropertySafety.h"
#include "PropertyTextBuffer.h"
#include "PropertyThreadGuard.h"

class PropertyTextReader {
 public:
  // The longest line a reader takes whole, and the buffer that holds it.
  enum { kLineBufferSize = 512 };
  typedef std::map<propstring, propstring> Table;

  // Feeds parser the lines of in until its end or a read error. Returns
  // false if in was not good at entry or a read error occurred. Unless long
  // lines are on, never returns if a line holds 512 or more characters: the
  // line read then fails without reaching the end, and the loop reads empty
  // lines for ever; kept as it always was, files rely on the 511-character
  // limit.
  template <typename Parser>
  static bool ReadStream(std::istream& in, Parser& parser) {
    bool result = in.rdstate() == std::ios::goodbit;
    const bool longLines = PropertySafety::LongLines();
    char buffer[kLineBufferSize];
    std::string longer;
    for (int lineNumber = 1; !in.eof() && result; ++lineNumber) {
      char* line = ReadLine(in, buffer, longLines, longer, lineNumber, result);
      parser.Line(line, line + std::strlen(line), lineNumber);
    }
    parser.Finish();
    return result;
  }

  // Feeds parser the lines of the file at path. Sets opened to false, and
  // returns false, if the file cannot be opened. A regular file is read in
  // one go and parsed in memory, with the same lines, result and log lines
  // as ReadStream() on it; anything else (a device, a read error, a line the
  // stream reader never gets past) is left to ReadStream(), so that such
  // files end as they always have. If seen is not null, it records what the
  // read found, for a rewrite that must not lose another program's update.
  template <typename Parser>
  static bool ReadFile(const propstring& path, bool& opened, Parser& parser,
                       PropertyFile::Contents* seen = nullptr) {
    PropertyTextBuffer text;
    if (ReadForParsing(path, text, opened, seen)) {
      ParseText(text.Data(), text.Size(), parser);
      return true;
    }
    if (!opened) return false;
    std::ifstream in;
    opened = PropertyFile::OpenForLines(path, in);
    return opened && ReadStream(in, parser);
  }

  // Feeds parser text[0, size) line by line as ReadStream() would; text is
  // changed and text[size] must be writable. REQUIRES: no line is longer
  // than 511 characters, unless long lines are on.
  template <typename Parser>
  static void ParseText(char* text, size_t size, Parser& parser) {
    char* const end = text + size;
    const bool nulInside = std::memchr(text, '\0', size) != nullptr;
    char* cursor = text;
    bool more = true;
    for (int lineNumber = 1; more; ++lineNumber) {
      char* line = TakeLine(cursor, end, lineNumber, more);
      parser.Line(line, LineEnd(line, cursor, end, more, nulInside),
                  lineNumber);
    }
    parser.Finish();
  }

  // The end of the line [line, end) once its comment, from the first
  // mark on, is cut.
  static char* CutComment(char* line, char* end, char mark);
  // Takes the entry line [line, end) (its comment cut) into table: split at
  // the first '=', both fields cleaned, a redefinition logged. Returns the
  // entry, or null for a line without '=' (which is ignored). Constant time
  // when keys arrive in order, as in files the library wrote.
  static Table::value_type* ReadEntry(Table& table, char* line, char* end,
                                      int lineNumber);

  // Cleans one NUL-terminated field in place and returns a pointer into it:
  // drops leading and trailing blanks; a field that starts with '"' loses
  // that quote and, if its last byte is '"', that one too (otherwise the
  // opening quote is kept).
  static char* Extract(char* text);
  // Extract() on the field [begin, end) without writing to it: returns the
  // start of the cleaned field and moves end to its end.
  static char* ExtractField(char* begin, char*& end);
  // True if c is a blank: space, tab, line feed, vertical tab, form feed or
  // carriage return.
  static bool IsBlank(char c);
  // The first byte of [begin, end) that is not a blank, or end.
  static char* SkipBlanks(char* begin, char* end);

  // True if some line of text[0, size) is longer than 511 characters.
  static bool HasOverlongLine(const char* text, size_t size);

  // Reads the file at path whole into text and returns true if it may be
  // parsed in memory (ParseText()); otherwise opened tells whether it could
  // be opened, and ReadStream() on it does what ReadFile() does.
  static bool ReadForParsing(const propstring& path, PropertyTextBuffer& text,
                             bool& opened, PropertyFile::Contents* seen);
  // True if text[0, size), read whole, may be parsed in memory: no line is
  // too long for the stream reader, or long lines are on.
  static bool ParsesInMemory(const char* text, size_t size);

 private:
  // Reads one line of at most kLineBufferSize - 1 characters into buffer
  // or, if longLines and the line is longer, the whole line into longer,
  // and returns it (NUL-terminated). Logs a read error or an over-long line
  // under lineNumber; sets ok to false after a read error (the line is
  // still valid).
  static char* ReadLine(std::istream& in, char* buffer, bool longLines,
                        std::string& longer, int lineNumber, bool& ok);
  // Cuts the next line out of [cursor, end) in place and logs it if it
  // holds more than 511 characters with its line feed (as the stream reader
  // does). Sets more to false at the last line, which ends at end.
  static char* TakeLine(char*& cursor, char* end, int lineNumber, bool& more);
  // The end of the line that TakeLine() just returned, as the stream reader
  // sees it: its first NUL byte if nulInside (the text holds one somewhere),
  // else where TakeLine() cut it.
  static char* LineEnd(char* line, const char* cursor, char* end, bool more,
                       bool nulInside);
};

#endif  // SRC_PROPERTYTEXTREADER_H_
