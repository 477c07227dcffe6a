// PropertyTextReader.cpp - see PropertyTextReader.h.

#include "PropertyTextReader.h"

#include <cerrno>
#include <cstring>
#include <tuple>
#include <utility>

#include "PropertyFileTroubles.h"
#include "PropertyMessages.h"

bool PropertyTextReader::IsBlank(char c) {
  // The C locale's isspace(), whatever the process locale is, so that a
  // file reads the same in every program.
  return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' ||
         c == '\r';
}

char* PropertyTextReader::CutComment(char* line, char* end, char mark) {
  char* comment = static_cast<char*>(
      std::memchr(line, mark, static_cast<size_t>(end - line)));
  return comment == nullptr ? end : comment;
}

PropertyTextReader::Table::value_type* PropertyTextReader::ReadEntry(
    Table& table, char* line, char* end, int lineNumber) {
  char* equals = static_cast<char*>(
      std::memchr(line, '=', static_cast<size_t>(end - line)));
  if (equals == nullptr) return nullptr;
  char* keyEnd = equals;
  const char* key = ExtractField(line, keyEnd);
  const char* value = ExtractField(equals + 1, end);
  // Hinted at the end: files in key order, as the library writes them, take
  // constant time per line; any other order falls back to a search.
  const size_t before = table.size();
  Table::iterator it = table.emplace_hint(
      table.end(), std::piecewise_construct,
      std::forward_as_tuple(key, static_cast<size_t>(keyEnd - key)),
      std::forward_as_tuple(value, static_cast<size_t>(end - value)));
  if (table.size() == before) {
    PropertyMessages::Write(PropertyMessages::kRedefinesProperty, lineNumber);
    it->second.assign(value, static_cast<size_t>(end - value));
  }
  return &*it;
}

char* PropertyTextReader::Extract(char* text) {
  char* end = text + std::strlen(text);
  char* start = ExtractField(text, end);
  *end = '\0';
  return start;
}

char* PropertyTextReader::ExtractField(char* begin, char*& end) {
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

char* PropertyTextReader::SkipBlanks(char* begin, char* end) {
  while (begin < end && IsBlank(*begin)) ++begin;
  return begin;
}

bool PropertyTextReader::HasOverlongLine(const char* text, size_t size) {
  // A line is too long exactly when 512 bytes from its start hold no line
  // feed; the last line feed of such a window starts the next line to look
  // at. One search per window instead of one per line.
  const size_t window = kLineBufferSize;
  const char* const end = text + size;
  while (static_cast<size_t>(end - text) > window - 1) {
    const void* feed = ::memrchr(text, '\n', window);
    if (feed == nullptr) return true;
    text = static_cast<const char*>(feed) + 1;
  }
  return false;
}

bool PropertyTextReader::ReadForParsing(const propstring& path,
                                        PropertyTextBuffer& text, bool& opened,
                                        PropertyFile::Contents* seen) {
  const PropertyFile::ReadResult read =
      PropertyFile::ReadWhole(path, text, seen);
  opened = read != PropertyFile::kCannotOpen;
  return read == PropertyFile::kReadWhole &&
         ParsesInMemory(text.Data(), text.Size());
}

bool PropertyTextReader::ParsesInMemory(const char* text, size_t size) {
  return PropertySafety::LongLines() || !HasOverlongLine(text, size);
}

char* PropertyTextReader::ReadLine(std::istream& in, char* buffer,
                                   bool longLines, std::string& longer,
                                   int lineNumber, bool& ok) {
  errno = 0;  // So that a failed read leaves its own reason.
  in.getline(buffer, kLineBufferSize, in.widen('\n'));
  std::streamsize consumed = in.gcount();
  char* line = buffer;
  // A full buffer with more of the line to come: the read failed without
  // reaching the end, which is where the 511-character reader stops.
  if (longLines && in.rdstate() == std::ios::failbit &&
      consumed == kLineBufferSize - 1) {
    longer.assign(buffer, static_cast<size_t>(consumed));
    do {
      in.clear();
      in.getline(buffer, kLineBufferSize, in.widen('\n'));
      consumed += in.gcount();
      // The line feed, if this read reached it, is counted but not stored.
      longer.append(buffer, static_cast<size_t>(in.gcount()) -
                                (in.rdstate() == std::ios::goodbit ? 1 : 0));
    } while (in.rdstate() == std::ios::failbit &&
             in.gcount() == kLineBufferSize - 1);
    line = &longer[0];
  }
  if (in.bad()) {
    // A stream keeps no reason of its own; failing that, an input/output
    // error is the likely one.
    PropertyFileTroubles::Note(PropertyFileTroubles::FileTrouble::kRead,
                               errno != 0 ? errno : EIO);
    PropertyMessages::Write(PropertyMessages::kErrorReading, lineNumber);
    ok = false;
  }
  // gcount() counts the consumed line feed too, so this fires exactly for a
  // line of 511 characters, which is still stored whole (or for a longer
  // one, read whole on demand). Kept as it always was: existing tools look
  // for this message.
  if (consumed > kLineBufferSize - 1) {
    PropertyMessages::Write(PropertyMessages::kLineTooLong, lineNumber);
  }
  return line;
}

char* PropertyTextReader::TakeLine(char*& cursor, char* end, int lineNumber,
                                   bool& more) {
  char* line = cursor;
  char* feed = static_cast<char*>(
      std::memchr(line, '\n', static_cast<size_t>(end - line)));
  more = feed != nullptr;
  // What the stream reader consumes: the line and its line feed, if any.
  const ptrdiff_t consumed = more ? feed + 1 - line : end - line;
  if (consumed > kLineBufferSize - 1) {
    PropertyMessages::Write(PropertyMessages::kLineTooLong, lineNumber);
  }
  if (!more) {
    *end = '\0';
    return line;
  }
  *feed = '\0';
  cursor = feed + 1;
  return line;
}

char* PropertyTextReader::LineEnd(char* line, const char* cursor, char* end,
                                  bool more, bool nulInside) {
  // Only a text with a NUL byte needs every line measured again.
  if (nulInside) return line + std::strlen(line);
  return more ? line + (cursor - line - 1) : end;
}
