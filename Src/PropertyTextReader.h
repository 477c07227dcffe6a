// PropertyTextReader.h - what reading a property file means for both
// formats: lines of at most 511 characters (of any length when
// PropertySafety::LongLines() is on), cut at line feeds, fields cleaned of
// blanks and quotes, and the choice between parsing a whole file in memory
// and reading it line by line. Internal to the library: not installed.
//
// A format supplies a line parser with its comment mark and two members:
//   static const char kCommentMark;  // a comment runs from it to line end
//   void Line(char* line, char* equals, char* end, int lineNumber);
//   void Finish();                   // after the last line
// and these functions feed it every line, in order, with the line numbers
// and log lines ("Error reading Line %d", "Line %d is too long") that the
// stream reader has always produced. Line() gets the line [line, end) as
// far as its first NUL byte and without its comment, and equals, its first
// '=' (null if it has none); it leaves the text as it is.
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
      char* equals;
      char* end = CutComment(line, line + std::strlen(line),
                             Parser::kCommentMark, equals);
      parser.Line(line, equals, end, lineNumber);
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

  // Feeds parser text[0, size) line by line as ReadStream() would, and
  // leaves the text as it was. REQUIRES: no line is longer than 511
  // characters, unless long lines are on.
  template <typename Parser>
  static void ParseText(char* text, size_t size, Parser& parser) {
    LineCutter lines(text, size, Parser::kCommentMark);
    LineCutter::Line line;
    for (int lineNumber = 1; lines.Next(line); ++lineNumber) {
      if (line.consumed > kLineBufferSize - 1) NoteLineTooLong(lineNumber);
      parser.Line(line.begin, line.equals, line.end, lineNumber);
    }
    parser.Finish();
  }

  // The end of the line [line, end) once its comment, from the first
  // mark on, is cut; equals is set to the first '=' of what is left, or to
  // null if there is none.
  static char* CutComment(char* line, char* end, char mark, char*& equals);
  // Takes the entry line [line, end) (its comment cut), whose first '=' is
  // equals, into table: split there, both fields cleaned, a redefinition
  // logged. Returns the entry, or null if equals is null (a line without
  // '=' is ignored). Constant time when keys arrive in order, as in files
  // the library wrote.
  static Table::value_type* ReadEntry(Table& table, char* line, char* equals,
                                      char* end, int lineNumber);

  // Cleans one NUL-terminated field in place and returns a pointer into it:
  // drops leading and trailing blanks; a field that starts with '"' loses
  // that quote and, if its last byte is '"', that one too (otherwise the
  // opening quote is kept).
  static char* Extract(char* text);
  // Extract() on the field [begin, end) without writing to it: returns the
  // start of the cleaned field and moves end to its end.
  static char* ExtractField(char* begin, char*& end) {
    begin = SkipBlanks(begin, end);
    const bool quoted = begin < end && *begin == '"';
    if (quoted) ++begin;
    char* start = begin;
    while (end > start && IsBlank(end[-1])) --end;
    if (quoted) {
      // Only the last byte is looked at: "a" b keeps both of its quotes.
      if (end > start && end[-1] == '"') {
        --end;
      } else {
        --start;  // An unmatched opening quote belongs to the text.
      }
    }
    return start;
  }
  // True if c is a blank: space, tab, line feed, vertical tab, form feed or
  // carriage return (the C locale's isspace(), whatever the process locale
  // is, so that a file reads the same in every program).
  static bool IsBlank(char c) {
    const unsigned char u = static_cast<unsigned char>(c);
    return u <= ' ' && ((kBlanks >> u) & 1) != 0;
  }
  // The first byte of [begin, end) that is not a blank, or end.
  static char* SkipBlanks(char* begin, char* end) {
    while (begin < end && IsBlank(*begin)) ++begin;
    return begin;
  }

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
  // Cuts a text held in memory into the lines the stream reader sees, and
  // finds in the same pass each line's first NUL byte, comment mark and
  // '=': the text is looked at 64 bytes at a time, as bit masks of those
  // bytes, and never read beyond its end.
  class LineCutter {
   public:
    struct Line {
      char* begin;
      char* equals;     // The first '=' before end, or null.
      char* end;        // Its first NUL byte or comment mark, or its end.
      size_t consumed;  // Its bytes with its line feed, if it has one.
    };

    LineCutter(char* text, size_t size, char mark);
    // Cuts the next line into line; false after the last one (a text
    // ending in a line feed ends with an empty line).
    bool Next(Line& line);

   private:
    static const size_t kChunk = 64;
    typedef unsigned long long Mask;  // Bit i: byte m_chunk[i].

    // Notes in line, unless its end is known already, the first NUL byte
    // or comment mark and the first '=' before it among the chunk's bytes
    // that inLine marks.
    void Find(Mask inLine, Line& line) const;
    // The bits below the lowest bit of bits (all if there is none).
    static Mask Below(Mask bits);
    // Sets the masks to the bytes of the chunk at m_chunk.
    void Look();
    // The byte of the chunk that the lowest bit of bits stands for.
    char* At(Mask bits) const;

    char* const m_text;
    const size_t m_size;
    const char m_mark;
    size_t m_chunk;  // The 64 bytes looked at start here.
    size_t m_next;   // Where the next line starts; past m_size after the last.
    Mask m_feeds;
    Mask m_stops;  // NUL bytes and comment marks: where content ends.
    Mask m_equals;
  };

  // The blanks, as bits numbered by their codes (all below 64).
  static const unsigned long long kBlanks = (1ULL << ' ') | (1ULL << '\t') |
                                            (1ULL << '\n') | (1ULL << '\v') |
                                            (1ULL << '\f') | (1ULL << '\r');

  // Reads one line of at most kLineBufferSize - 1 characters into buffer
  // or, if longLines and the line is longer, the whole line into longer,
  // and returns it (NUL-terminated). Logs a read error or an over-long line
  // under lineNumber; sets ok to false after a read error (the line is
  // still valid).
  static char* ReadLine(std::istream& in, char* buffer, bool longLines,
                        std::string& longer, int lineNumber, bool& ok);
  // Logs "Line %d is too long" for lineNumber.
  static void NoteLineTooLong(int lineNumber);
};

#endif  // SRC_PROPERTYTEXTREADER_H_
