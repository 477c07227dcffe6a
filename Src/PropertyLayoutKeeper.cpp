// PropertyLayoutKeeper.cpp - see PropertyLayoutKeeper.h.

#include "PropertyLayoutKeeper.h"

#include <cstring>
#include <map>
#include <set>
#include <utility>
#include <vector>

#include "IniPropertiesFormat.h"
#include "JavaPropertiesFormat.h"
#include "PropertyMessages.h"
#include "PropertySafety.h"
#include "PropertyTextReader.h"
#include "PropertyTextWriter.h"

namespace {

typedef std::map<propstring, propstring> Entries;
// The table of either format by section; the flat format's is the one
// section "".
typedef std::map<propstring, Entries> Table;

// The line after which entries go at the end of the text.
const size_t kEndOfText = static_cast<size_t>(-1);

// What the edit needs of a format beyond its Format class.
template <typename Format>
struct Traits;

template <>
struct Traits<JavaPropertiesFormat> {
  static bool FindHeader(char*&, char*&) { return false; }
  static void TakeSectionName(const char*, const char*, propstring&) {}
  static void Take(const JavaProperties& store, Table& table) {
    table[propstring()] = JavaPropertiesFormat::Entries(store);
  }
};

template <>
struct Traits<IniPropertiesFormat> {
  static bool FindHeader(char*& line, char*& end) {
    return IniPropertiesFormat::FindHeader(line, end);
  }
  static void TakeSectionName(const char* text, const char* end,
                              propstring& name) {
    IniPropertiesFormat::TakeSectionName(text, end, name);
  }
  static void Take(const IniProperties& store, Table& table) {
    table = IniPropertiesFormat::Sections(store);
  }
};

// Reads text[0, size) as a load of the format would, without a log line:
// these reads only check the edit, and a program's Log() must not take them
// for loads. REQUIRES: no line of 512 or more characters unless long lines
// are on.
template <typename Format>
void ReadSilently(const char* text, size_t size, Table& table) {
  PropertyMessages::Silence silence;
  PropertyTextBuffer copy;
  char* data = copy.Reserve(size + 1, 0);  // The parsers take writable text.
  if (size > 0) std::memcpy(data, text, size);
  typename Format::Store store;
  typename Format::LineParser parser(store);
  PropertyTextReader::ParseText(data, size, parser);
  Traits<Format>::Take(store, table);
}

struct Line {
  size_t begin;  // Its first byte.
  size_t end;    // Its line feed, or the end of the text.
  bool fed;      // Whether a line feed ends it.
};

// The lines of text[0, size); no empty line after a final line feed.
std::vector<Line> SplitLines(const char* text, size_t size) {
  std::vector<Line> lines;
  size_t begin = 0;
  while (begin < size) {
    const void* feed = std::memchr(text + begin, '\n', size - begin);
    const size_t end =
        feed == nullptr
            ? size
            : static_cast<size_t>(static_cast<const char*>(feed) - text);
    lines.push_back(Line{begin, end, feed != nullptr});
    begin = end + 1;
  }
  return lines;
}

// Where a value stands on its line: text[begin, end), on line number line.
struct ValueSpot {
  size_t line;
  size_t begin;
  size_t end;
  bool quoted;  // The value stands in double quotes that reading drops.
};

// What the reader keeps of one section: the last occurrence of its header
// and the entries under it. The flat format's whole file is one.
struct Occurrence {
  size_t after = kEndOfText;  // The line after which entries are added.
  std::map<propstring, ValueSpot> spots;  // The last line of each key.
  std::map<propstring, std::vector<size_t> > keyLines;  // Every line of each.
  // INI: every occurrence of the section in the file, from its header line
  // to its last entry line, the earlier ones (which the reader drops)
  // included.
  std::vector<std::pair<size_t, size_t> > ranges;
};
typedef std::map<propstring, Occurrence> Layout;

// Finds, for every section the reader keeps, the line of each key and where
// new entries go. The lines are taken apart with the reader's own pieces
// (the comment cut, the header test, the split at the first '=', the field
// cleaning); the read-back check catches any line it would see otherwise.
template <typename Format>
void ScanLayout(char* text, const std::vector<Line>& lines, Layout& layout) {
  Occurrence* current = Format::kSectioned ? nullptr : &layout[propstring()];
  propstring name;
  for (size_t i = 0; i < lines.size(); ++i) {
    char* line = text + lines[i].begin;
    char* end = text + lines[i].end;
    // The reader's line ends at its first NUL byte.
    if (void* nul = std::memchr(line, '\0', static_cast<size_t>(end - line))) {
      end = static_cast<char*>(nul);
    }
    char* const lineEnd = end;
    char* equals;
    end = PropertyTextReader::CutComment(
        line, end, Format::LineParser::kCommentMark, equals);
    if (Traits<Format>::FindHeader(line, end)) {
      Traits<Format>::TakeSectionName(line, end, name);
      // Entries under "[]" are read and dropped, as before any header.
      current = name.empty() ? nullptr : &layout[name];
      if (current != nullptr) {
        std::vector<std::pair<size_t, size_t> > ranges;
        ranges.swap(current->ranges);
        *current = Occurrence();
        current->ranges.swap(ranges);
        current->ranges.push_back(std::make_pair(i, i));
        current->after = i;
      }
      continue;
    }
    if (current == nullptr) continue;
    if (equals == nullptr) continue;
    char* keyEnd = equals;
    const char* key = PropertyTextReader::ExtractField(line, keyEnd);
    char* value = PropertyTextReader::SkipBlanks(equals + 1, end);
    char* valueEnd = end;
    while (valueEnd > value && PropertyTextReader::IsBlank(valueEnd[-1])) {
      --valueEnd;
    }
    if (value == valueEnd) {
      // An empty value: a new one goes after the spaces and tabs that follow
      // '=' (before a carriage return, which stays at the end of the line),
      // or, before a comment, after the first of them, so that the value
      // stays apart from the comment.
      char* blanks = equals + 1;
      value = blanks;
      while (value < end && (*value == ' ' || *value == '\t')) ++value;
      if (end < lineEnd && value > blanks) value = blanks + 1;
      valueEnd = value;
    }
    if (Format::kSectioned) current->after = current->ranges.back().second = i;
    current->keyLines[propstring(key, static_cast<size_t>(keyEnd - key))]
        .push_back(i);
    current->spots[propstring(key, static_cast<size_t>(keyEnd - key))] =
        ValueSpot{
            i, static_cast<size_t>(value - text),
            static_cast<size_t>(valueEnd - text),
            valueEnd - value >= 2 && value[0] == '"' && valueEnd[-1] == '"'};
  }
}

// Appends field so that the field cleaning gives it back: in double quotes
// if its edges would be cleaned away, or if quoted (a value that stood in
// quotes stays in them: programs that read the file otherwise, such as a
// shell that sources it, may need them).
void AppendField(const propstring& field, PropertyTextBuffer& text,
                 bool quoted = false) {
  quoted = quoted || (!field.empty() &&
                      (PropertyTextReader::IsBlank(field[0]) ||
                       PropertyTextReader::IsBlank(field[field.size() - 1]) ||
                       field[0] == '"'));
  if (quoted) text.Append('"');
  text.Append(field);
  if (quoted) text.Append('"');
}

// Ends the last line of text with the file's line end, unless text is empty
// or ends with a line feed; a carriage return already there is kept as part
// of it.
void EndLine(const propstring& lineEnd, PropertyTextBuffer& text) {
  if (text.Size() == 0 || text.Data()[text.Size() - 1] == '\n') return;
  if (lineEnd.size() == 2 && text.Data()[text.Size() - 1] == '\r') {
    text.Append('\n');
  } else {
    text.Append(lineEnd);
  }
}

void AppendEntry(const Entries::value_type& entry, const propstring& lineEnd,
                 PropertyTextBuffer& text) {
  AppendField(entry.first, text);
  text.Append('=');
  AppendField(entry.second, text);
  text.Append(lineEnd);
}

// "\r\n" if every line feed of the file has a carriage return before it,
// else "\n".
propstring FileLineEnd(const char* text, const std::vector<Line>& lines) {
  bool any = false;
  for (const Line& line : lines) {
    if (!line.fed) continue;
    if (line.end == line.begin || text[line.end - 1] != '\r') return "\n";
    any = true;
  }
  return any ? "\r\n" : "\n";
}

bool Refuse(const char* reason, propstring& why) {
  why = reason;
  return false;
}

bool Refuse(const char* part, const char* trouble, propstring& why) {
  why = propstring(part) + " " + trouble;
  return false;
}

// Why an entry to be added under a section of a Format file could not be
// written so that it reads back, or null.
template <typename Format>
const char* NewKeyTrouble(const propstring& key) {
  if (const char* trouble = PropertyTextWriter::FieldTrouble(
          key, Format::LineParser::kCommentMark, true)) {
    return trouble;
  }
  if (key.find('=') != propstring::npos) return "holds '='";
  // Such a line would be a section header.
  if (Format::kSectioned && !key.empty() && key[0] == '[') {
    return "starts with '['";
  }
  return nullptr;
}

// Why a value to be written in a Format file would not read back, or null.
template <typename Format>
const char* ValueTrouble(const propstring& value) {
  return PropertyTextWriter::FieldTrouble(
      value, Format::LineParser::kCommentMark, true);
}

// True if every entry of store that differs from before can be written so
// that it reads back as itself; otherwise false, with the reason in why.
// The normalised text would write such an entry as it stands and read back
// something else, or more; a layout-keeping edit leaves it to that text.
template <typename Format>
bool Writable(const typename Format::Store& store, const Table& before,
              propstring& why) {
  Table merged;
  Traits<Format>::Take(store, merged);
  for (const Table::value_type& section : merged) {
    Table::const_iterator was = before.find(section.first);
    if (was == before.end() && Format::kSectioned) {
      if (const char* trouble = PropertyTextWriter::FieldTrouble(
              section.first, Format::LineParser::kCommentMark, true)) {
        return Refuse("a section name", trouble, why);
      }
    }
    for (const Entries::value_type& entry : section.second) {
      Entries::const_iterator old;
      const bool known =
          was != before.end() &&
          (old = was->second.find(entry.first)) != was->second.end();
      if (known && old->second == entry.second) continue;
      if (const char* trouble =
              known ? nullptr : NewKeyTrouble<Format>(entry.first)) {
        return Refuse("a key", trouble, why);
      }
      if (const char* trouble = ValueTrouble<Format>(entry.second)) {
        return Refuse("a value", trouble, why);
      }
    }
  }
  return true;
}

template <typename Format>
bool EditText(const char* original, size_t size,
              const typename Format::Store& store, const propstring& header,
              PropertyTextBuffer& text, propstring& why,
              PropertyLayoutKeeper::Removals removals) {
  text.SetSize(0);
  why.clear();
  // A new file is written as it always has been, header line included.
  if (size == 0) {
    Format::Render(store, header, text);
    return true;
  }
  const bool longLines = PropertySafety::LongLines();
  if (!longLines && PropertyTextReader::HasOverlongLine(original, size)) {
    return Refuse("a line of the file is 512 characters or longer", why);
  }
  PropertyTextBuffer normalised;
  Format::Render(store, header, normalised);
  if (!longLines && PropertyTextReader::HasOverlongLine(normalised.Data(),
                                                        normalised.Size())) {
    return Refuse("a line of the table is 512 characters or longer", why);
  }
  Table before;
  ReadSilently<Format>(original, size, before);
  if (!Writable<Format>(store, before, why)) return false;
  Table target;
  ReadSilently<Format>(normalised.Data(), normalised.Size(), target);

  propstring work(original, size);
  const std::vector<Line> lines = SplitLines(work.data(), size);
  Layout layout;
  ScanLayout<Format>(&work[0], lines, layout);

  // New values by line, entries to add by the line they follow, sections to
  // add at the end.
  std::map<size_t, std::pair<const ValueSpot*, const propstring*> > changes;
  std::map<size_t, std::vector<const Entries::value_type*> > additions;
  std::vector<const Table::value_type*> newSections;
  std::set<size_t> removed;  // Lines of entries and sections removed.
  for (const Table::value_type& section : target) {
    Table::const_iterator was = before.find(section.first);
    if (was == before.end()) {
      if (const char* trouble = PropertyTextWriter::FieldTrouble(
              section.first, Format::LineParser::kCommentMark, true)) {
        return Refuse("a section name", trouble, why);
      }
      for (const Entries::value_type& entry : section.second) {
        if (const char* trouble = NewKeyTrouble<Format>(entry.first)) {
          return Refuse("a key", trouble, why);
        }
        if (const char* trouble = ValueTrouble<Format>(entry.second)) {
          return Refuse("a value", trouble, why);
        }
      }
      newSections.push_back(&section);
      continue;
    }
    Layout::const_iterator occurrence = layout.find(section.first);
    if (occurrence == layout.end()) {
      return Refuse("a section of the file could not be found", why);
    }
    for (const Entries::value_type& entry : section.second) {
      Entries::const_iterator old = was->second.find(entry.first);
      if (old == was->second.end()) {
        if (const char* trouble = NewKeyTrouble<Format>(entry.first)) {
          return Refuse("a key", trouble, why);
        }
        if (const char* trouble = ValueTrouble<Format>(entry.second)) {
          return Refuse("a value", trouble, why);
        }
        additions[occurrence->second.after].push_back(&entry);
      } else if (old->second != entry.second) {
        if (const char* trouble = ValueTrouble<Format>(entry.second)) {
          return Refuse("a value", trouble, why);
        }
        std::map<propstring, ValueSpot>::const_iterator spot =
            occurrence->second.spots.find(entry.first);
        if (spot == occurrence->second.spots.end()) {
          return Refuse("an entry's line could not be found", why);
        }
        changes[spot->second.line] =
            std::make_pair(&spot->second, &entry.second);
      }
    }
    // An entry the table lacks goes with every line of its key in the
    // section's last occurrence: an earlier line would be read otherwise.
    for (const Entries::value_type& entry : was->second) {
      if (section.second.count(entry.first) != 0) continue;
      if (removals == PropertyLayoutKeeper::kKeepEntries) {
        return Refuse("the table lacks an entry of the file", why);
      }
      const auto lines = occurrence->second.keyLines.find(entry.first);
      if (lines == occurrence->second.keyLines.end()) {
        return Refuse("an entry's line could not be found", why);
      }
      removed.insert(lines->second.begin(), lines->second.end());
    }
  }
  // A section the table lacks goes with every occurrence, header to last
  // entry, for the same reason; what follows its last entry stays.
  for (const Table::value_type& section : before) {
    if (target.count(section.first) != 0) continue;
    if (removals == PropertyLayoutKeeper::kKeepEntries) {
      return Refuse("the table lacks a section of the file", why);
    }
    Layout::const_iterator occurrence = layout.find(section.first);
    if (occurrence == layout.end()) {
      return Refuse("a section of the file could not be found", why);
    }
    for (const std::pair<size_t, size_t>& range : occurrence->second.ranges) {
      for (size_t i = range.first; i <= range.second; ++i) removed.insert(i);
    }
  }

  const propstring lineEnd = FileLineEnd(original, lines);
  for (size_t i = 0; i < lines.size(); ++i) {
    const Line& line = lines[i];
    auto change = changes.find(i);
    if (removed.count(i) != 0) {
      // Gone, line end and all; entries added after it still come here.
    } else if (change == changes.end()) {
      text.Append(original + line.begin, line.end - line.begin);
    } else {
      const ValueSpot& spot = *change->second.first;
      text.Append(original + line.begin, spot.begin - line.begin);
      AppendField(*change->second.second, text, spot.quoted);
      text.Append(original + spot.end, line.end - spot.end);
    }
    if (line.fed && removed.count(i) == 0) text.Append('\n');
    auto added = additions.find(i);
    if (added == additions.end()) continue;
    EndLine(lineEnd, text);
    for (const Entries::value_type* entry : added->second) {
      AppendEntry(*entry, lineEnd, text);
    }
  }
  auto atEnd = additions.find(kEndOfText);
  if (atEnd != additions.end() || !newSections.empty()) EndLine(lineEnd, text);
  if (atEnd != additions.end()) {
    for (const Entries::value_type* entry : atEnd->second) {
      AppendEntry(*entry, lineEnd, text);
    }
  }
  for (const Table::value_type* section : newSections) {
    text.Append('[');
    text.Append(section->first);
    text.Append(']');
    text.Append(lineEnd);
    for (const Entries::value_type& entry : section->second) {
      AppendEntry(entry, lineEnd, text);
    }
  }

  // The guarantee: the edit reads as the normalised text does, or it is
  // not used.
  if (!longLines &&
      PropertyTextReader::HasOverlongLine(text.Data(), text.Size())) {
    return Refuse("a line would be 512 characters or longer", why);
  }
  Table edited;
  ReadSilently<Format>(text.Data(), text.Size(), edited);
  if (edited != target) {
    return Refuse("the edit would not read back as the table", why);
  }
  return true;
}

}  // namespace

bool PropertyLayoutKeeper::Edit(const char* original, size_t size,
                                const JavaProperties& store,
                                const propstring& header,
                                PropertyTextBuffer& text, propstring& why,
                                Removals removals) {
  return EditText<JavaPropertiesFormat>(original, size, store, header, text,
                                        why, removals);
}

bool PropertyLayoutKeeper::Edit(const char* original, size_t size,
                                const IniProperties& store,
                                const propstring& header,
                                PropertyTextBuffer& text, propstring& why,
                                Removals removals) {
  return EditText<IniPropertiesFormat>(original, size, store, header, text, why,
                                       removals);
}
