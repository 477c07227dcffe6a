// PropertyTextReader.cpp - see PropertyTextReader.h.

#include "PropertyTextReader.h"

#include <cerrno>
#include <cstring>
#include <tuple>
#include <utility>

#include "PropertyFileTroubles.h"
#include "PropertyMessages.h"

#if defined(__SSE2__)
#include <emmintrin.h>

namespace {

// One bit per byte of a comparison's result.
unsigned long long Bits(__m128i matches) {
  return static_cast<unsigned>(_mm_movemask_epi8(matches));
}

}  // namespace
#endif

char* PropertyTextReader::CutComment(char* line, char* end, char mark,
                                     char*& equals) {
  if (char* comment = static_cast<char*>(
          std::memchr(line, mark, static_cast<size_t>(end - line)))) {
    end = comment;
  }
  equals = static_cast<char*>(
      std::memchr(line, '=', static_cast<size_t>(end - line)));
  return end;
}

PropertyTextReader::Table::value_type* PropertyTextReader::ReadEntry(
    Table& table, char* line, char* equals, char* end, int lineNumber) {
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
  if (consumed > kLineBufferSize - 1) NoteLineTooLong(lineNumber);
  return line;
}

void PropertyTextReader::NoteLineTooLong(int lineNumber) {
  PropertyMessages::Write(PropertyMessages::kLineTooLong, lineNumber);
}

PropertyTextReader::LineCutter::LineCutter(char* text, size_t size, char mark)
    : m_text(text), m_size(size), m_mark(mark), m_chunk(0), m_next(0) {
  Look();
}

bool PropertyTextReader::LineCutter::Next(Line& line) {
  if (m_next > m_size) return false;
  if (m_next == m_chunk + kChunk) {  // The last line ended its chunk.
    m_chunk = m_next;
    Look();
  }
  const size_t begin = m_next;
  line.begin = m_text + begin;
  line.equals = nullptr;
  line.end = nullptr;
  for (Mask live = ~Mask(0) << (begin - m_chunk);; live = ~Mask(0)) {
    const Mask feeds = m_feeds & live;
    if (feeds != 0) {
      char* const feed = At(feeds);
      Find(live & Below(feeds), line);
      if (line.end == nullptr) line.end = feed;
      m_next = static_cast<size_t>(feed + 1 - m_text);
      line.consumed = m_next - begin;
      return true;
    }
    Find(live, line);
    if (m_size - m_chunk <= kChunk) {
      if (line.end == nullptr) line.end = m_text + m_size;
      line.consumed = m_size - begin;
      m_next = m_size + 1;
      return true;
    }
    m_chunk += kChunk;
    Look();
  }
}

inline void PropertyTextReader::LineCutter::Find(Mask inLine,
                                                 Line& line) const {
  if (line.end != nullptr) return;
  const Mask stops = m_stops & inLine;
  Mask equals = m_equals & inLine;
  if (stops != 0) {
    equals &= Below(stops);
    line.end = At(stops);
  }
  if (line.equals == nullptr && equals != 0) line.equals = At(equals);
}

inline PropertyTextReader::LineCutter::Mask
PropertyTextReader::LineCutter::Below(Mask bits) {
  return (bits & (0 - bits)) - 1;
}

inline char* PropertyTextReader::LineCutter::At(Mask bits) const {
  return m_text + m_chunk + static_cast<size_t>(__builtin_ctzll(bits));
}

void PropertyTextReader::LineCutter::Look() {
  const size_t size = m_size - m_chunk < kChunk ? m_size - m_chunk : kChunk;
  const char* bytes = m_text + m_chunk;
  char last[kChunk];
  if (size < kChunk) {
    std::memset(last, 0, sizeof last);
    if (size > 0) std::memcpy(last, bytes, size);
    bytes = last;
  }
#if defined(__SSE2__)
  const __m128i feed = _mm_set1_epi8('\n');
  const __m128i nul = _mm_setzero_si128();
  const __m128i mark = _mm_set1_epi8(m_mark);
  const __m128i equal = _mm_set1_epi8('=');
  m_feeds = m_stops = m_equals = 0;
  for (size_t i = 0; i < kChunk; i += 16) {
    const __m128i block =
        _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + i));
    m_feeds |= Bits(_mm_cmpeq_epi8(block, feed)) << i;
    m_stops |= Bits(_mm_or_si128(_mm_cmpeq_epi8(block, nul),
                                 _mm_cmpeq_epi8(block, mark)))
               << i;
    m_equals |= Bits(_mm_cmpeq_epi8(block, equal)) << i;
  }
#else
  m_feeds = m_stops = m_equals = 0;
  for (size_t i = 0; i < kChunk; ++i) {
    const Mask bit = Mask(1) << i;
    if (bytes[i] == '\n') m_feeds |= bit;
    if (bytes[i] == '\0' || bytes[i] == m_mark) m_stops |= bit;
    if (bytes[i] == '=') m_equals |= bit;
  }
#endif
  if (size < kChunk) m_stops &= (Mask(1) << size) - 1;  // Not the padding.
}
