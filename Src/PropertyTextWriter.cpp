// PropertyTextWriter.cpp - see PropertyTextWriter.h.

#include "PropertyTextWriter.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "PropertyTextReader.h"

void PropertyTextWriter::AppendHeader(char mark, const propstring& header,
                                      PropertyTextBuffer& text) {
  if (header.empty()) return;
  text.Append(mark);
  text.Append(header);
  text.Append('\n');
}

void PropertyTextWriter::AppendEntry(const propstring& key,
                                     const propstring& value,
                                     PropertyTextBuffer& text) {
  // One reservation per line: the copies are then plain moves.
  char* line = text.Extend(key.size() + value.size() + 2);
  PropertyTextBuffer::Copy(line, key.data(), key.size());
  line += key.size();
  *line++ = '=';
  PropertyTextBuffer::Copy(line, value.data(), value.size());
  line[value.size()] = '\n';
}

void PropertyTextWriter::AppendEntries(const Entries& entries,
                                       PropertyTextBuffer& text) {
  for (Entries::const_iterator entry = entries.begin();
       entry != entries.end();) {
    // The walk of the tree waits on memory: the next entry's key and value
    // are fetched while this one is copied.
    const Entries::const_iterator next = std::next(entry);
    if (next != entries.end()) {
      __builtin_prefetch(next->first.data());
      __builtin_prefetch(next->second.data());
    }
    AppendEntry(entry->first, entry->second, text);
    entry = next;
  }
}

namespace {

// The first line of the AppendEntry() lines [begin, end) whose key is not
// less than key (or end): a binary search on byte positions.
const char* FirstLineNotBefore(const char* begin, const char* end,
                               const propstring& key) {
  const char* low = begin;
  const char* high = end;
  while (low < high) {
    const char* middle = low + (high - low) / 2;
    const void* feed = ::memrchr(low, '\n', static_cast<size_t>(middle - low));
    const char* line =
        feed == nullptr ? low : static_cast<const char*>(feed) + 1;
    const char* next = static_cast<const char*>(
        std::memchr(line, '\n', static_cast<size_t>(end - line)));
    next = next == nullptr ? end : next + 1;
    const char* equals = static_cast<const char*>(
        std::memchr(line, '=', static_cast<size_t>(next - line)));
    const size_t length = static_cast<size_t>(equals - line);
    // Bytes compared as unsigned, the shorter first on a tie: the order of
    // the tables the lines were written from.
    const int order =
        std::memcmp(line, key.data(), std::min(length, key.size()));
    if (order < 0 || (order == 0 && length < key.size())) {
      low = next;
    } else {
      high = line;
    }
  }
  return low;
}

}  // namespace

void PropertyTextWriter::AppendChangedEntries(const char* begin,
                                              const char* end,
                                              const NewValues& values,
                                              PropertyTextBuffer& text) {
  const char* copied = begin;
  for (const auto& value : values) {
    const char* line = FirstLineNotBefore(copied, end, value.first);
    text.Append(copied, static_cast<size_t>(line - copied));
    copied = line;
    const size_t keyLength = value.first.size();
    if (static_cast<size_t>(end - line) > keyLength && line[keyLength] == '=' &&
        std::memcmp(line, value.first.data(), keyLength) == 0) {
      // The key's own line goes; its new one takes its place.
      const char* feed = static_cast<const char*>(
          std::memchr(line, '\n', static_cast<size_t>(end - line)));
      copied = feed == nullptr ? end : feed + 1;
    }
    AppendEntry(value.first, value.second, text);
  }
  text.Append(copied, static_cast<size_t>(end - copied));
}

void PropertyTextWriter::WriteHeader(std::ostream& out, char mark,
                                     const propstring& header) {
  if (!header.empty()) WriteLine(out, mark + header);
}

void PropertyTextWriter::WriteEntry(std::ostream& out, const propstring& key,
                                    const propstring& value) {
  out.write(key.data(), static_cast<std::streamsize>(key.size()));
  out.put('=');
  WriteLine(out, value);
}

void PropertyTextWriter::WriteLine(std::ostream& out, const propstring& text) {
  out.write(text.data(), static_cast<std::streamsize>(text.size()));
  out.put('\n');
  out.flush();
}

const char* PropertyTextWriter::FieldTrouble(const propstring& field, char mark,
                                             bool keepsEdges) {
  if (field.find_first_of("\n\r") != propstring::npos) {
    // A carriage return alone reads back here, but other programs take it
    // for a line end.
    return "holds a line break";
  }
  if (field.find('\0') != propstring::npos) return "holds a NUL byte";
  if (field.find(mark) != propstring::npos) {
    return mark == '#' ? "holds '#'" : "holds ';'";
  }
  if (keepsEdges || field.empty()) return nullptr;
  if (PropertyTextReader::IsBlank(field[0]) ||
      PropertyTextReader::IsBlank(field[field.size() - 1])) {
    return "starts or ends with a blank";
  }
  if (field[0] == '"') return "starts with '\"'";
  return nullptr;
}

bool PropertyTextWriter::TooLong(size_t length) {
  return length > PropertyTextReader::kLineBufferSize - 1;
}

bool PropertyTextWriter::ReadsWithoutNote(size_t length) {
  return length < PropertyTextReader::kLineBufferSize - 1;
}

bool PropertyTextWriter::HeaderReadsAlone(const propstring& header) {
  // Further lines of a header are read as entries; a NUL byte ends what the
  // reader sees of its line.
  return header.find_first_of(propstring("\n\0", 2)) == propstring::npos &&
         (header.empty() || ReadsWithoutNote(header.size() + 1));
}
