// FileCheck.cpp - see FileCheck.h.

#include "propctl/FileCheck.h"

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "JavaProperties.h"

namespace {

// The blanks of the library's field cleaning, in every locale.
const char kBlanks[] = " \t\n\v\f\r";
const char kByteOrderMark[] = "\xEF\xBB\xBF";
// The longest line the reader takes whole; one more and it never returns,
// unless long lines are on.
const size_t kLongestLine = 511;
// Past this many places, a grouped warning only counts the rest.
const size_t kMostPlacesNamed = 8;

// The lines of text without their line feeds. A text that ends in a line
// feed has no further line (the reader's last, empty read adds nothing).
std::vector<std::string> SplitLines(const std::string& text) {
  std::vector<std::string> lines;
  size_t start = 0;
  while (start < text.size()) {
    size_t end = text.find('\n', start);
    if (end == std::string::npos) end = text.size();
    lines.push_back(text.substr(start, end - start));
    start = end + 1;
  }
  return lines;
}

std::string Quoted(const std::string& text) { return "'" + text + "'"; }

bool IsBlank(char c) {
  return c != '\0' && std::string(kBlanks).find(c) != std::string::npos;
}

std::string TrimmedEnd(const std::string& text) {
  const size_t last = text.find_last_not_of(kBlanks);
  return last == std::string::npos ? "" : text.substr(0, last + 1);
}

// "line 4", "lines 4-6", "lines 4, 7-9 and 12": numbers ascending.
std::string LineList(const std::vector<int>& numbers) {
  std::vector<std::string> runs;
  for (size_t i = 0; i < numbers.size();) {
    size_t j = i;
    while (j + 1 < numbers.size() && numbers[j + 1] == numbers[j] + 1) ++j;
    runs.push_back(j == i ? std::to_string(numbers[i])
                          : std::to_string(numbers[i]) + "-" +
                                std::to_string(numbers[j]));
    i = j + 1;
  }
  std::string list = numbers.size() == 1 ? "line " : "lines ";
  const size_t named = std::min(runs.size(), kMostPlacesNamed);
  for (size_t i = 0; i < named; ++i) {
    if (i > 0) list += i + 1 == runs.size() ? " and " : ", ";
    list += runs[i];
  }
  if (named < runs.size()) {
    list += " and " + std::to_string(runs.size() - named) + " more";
  }
  return list;
}

// Reads a file line by line the way the library's reader does, and notes
// where that differs from what the line seems to say, or where the
// library's rewrite of the file would change what it says.
class Checker {
 public:
  Checker(FileFormat format, const std::vector<std::string>& lines)
      : m_format(format),
        m_comment(format == FileFormat::kIni ? ';' : '#'),
        m_lines(lines) {}

  // Every finding; those with the same text as one before are folded into
  // the first, which names their lines.
  std::vector<FileFinding> Run();

 private:
  bool Ini() const { return m_format == FileFormat::kIni; }
  void Check(size_t index);
  void Warn(int number, const std::string& message);
  // False if the reader cannot take the line at all.
  bool CheckLength(int number, const std::string& raw);
  // The text the reader sees: a NUL ends the line's text.
  std::string VisibleText(int number, const std::string& raw);
  // True (after a warning) if the line starts with a byte-order mark; the
  // line is then fully reported.
  bool CheckByteOrderMark(int number, const std::string& text);
  // True if a comment character falls inside a quoted field.
  bool CheckQuotedComment(int number, const std::string& text);
  // A comment character right after other text, which reads as part of it.
  // True (after a warning) if it leaves the line no '='.
  bool CheckCommentCut(int number, const std::string& text, size_t cut);
  // True if text is a section header. Otherwise leaves in text what the
  // entry reader sees (a line with '[' is cleaned as a whole first).
  bool TakeHeader(int number, std::string& text);
  // False if the entry of key is dropped by the reader.
  bool TakeEntry(int number, const std::string& key);
  // What happens to the entry of line index, split at equals.
  void CheckEntry(size_t index, const std::string& text, size_t equals);
  // Quotes around the field that a rewrite drops.
  void CheckQuotes(int number, const std::string& field, const char* what);
  // A trailing '\' that does not join the next line.
  void CheckContinuation(size_t index, const std::string& text);
  // Text that is neither an entry, a header nor a comment.
  void CheckIgnored(int number, const std::string& text);
  // INI: whether text is indented deeper than the entry before it.
  bool Continues(const std::string& text) const;
  // The library's own field cleaning, on a copy.
  std::string Cleaned(const std::string& field);

  const FileFormat m_format;
  const char m_comment;
  const std::vector<std::string>& m_lines;
  JavaProperties m_cleaner;
  // INI: whether a header was read, and the name of the latest one.
  bool m_inSection = false;
  std::string m_section;
  std::map<std::string, int> m_sectionLines;  // Name to its latest header.
  // Key to its line, in the current section occurrence (flat: the file).
  std::map<std::string, int> m_keyLines;
  // Lines up to (not including) this index continue an entry's '\'.
  size_t m_continuedUntil = 0;
  // INI: the indentation of the entry that lines indented deeper seem to
  // continue; npos when no entry came last.
  size_t m_entryIndent = std::string::npos;
  std::vector<FileFinding> m_findings;
};

std::vector<FileFinding> Checker::Run() {
  for (size_t i = 0; i < m_lines.size(); ++i) Check(i);
  // Fold repeated texts into their first finding, which keeps its place.
  std::map<std::string, std::vector<int>> repeats;
  std::vector<FileFinding> firsts;
  for (const FileFinding& finding : m_findings) {
    std::vector<int>& lines = repeats[finding.message];
    if (lines.empty()) firsts.push_back(finding);
    lines.push_back(finding.line);
  }
  for (FileFinding& finding : firsts) {
    const std::vector<int>& lines = repeats[finding.message];
    if (lines.size() > 1) {
      finding.message +=
          " (also " +
          LineList(std::vector<int>(lines.begin() + 1, lines.end())) + ")";
    }
  }
  return firsts;
}

void Checker::Check(size_t index) {
  const int number = static_cast<int>(index + 1);
  const std::string& raw = m_lines[index];
  if (!CheckLength(number, raw)) return;
  std::string text = VisibleText(number, raw);
  if (!text.empty() && text.back() == '\r') {
    // Read alike (the carriage return is a trailing blank), written without.
    Warn(number, "CR LF line end: a rewrite ends lines with LF alone");
  }
  if (CheckByteOrderMark(number, text)) return;
  const size_t cut = text.find(m_comment);
  const size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string::npos || first == cut) return;  // Blank, comment.
  // A line already reported as cut is not reported again as ignored.
  bool reported = CheckQuotedComment(number, text);
  if (!reported && cut != std::string::npos) {
    reported = CheckCommentCut(number, text, cut);
  }
  text = text.substr(0, cut);
  const bool continued = index < m_continuedUntil;
  if (Ini() && TakeHeader(number, text)) return;
  const size_t equals = text.find('=');
  if (equals != std::string::npos) {
    CheckEntry(index, text, equals);
  } else if (!reported && !continued) {
    // A continuation is reported with the entry it continues.
    CheckIgnored(number, text);
  }
}

void Checker::Warn(int number, const std::string& message) {
  m_findings.push_back(FileFinding{number, message});
}

bool Checker::CheckLength(int number, const std::string& raw) {
  const std::string length = std::to_string(raw.size());
  // Reported whatever this process reads: the file may be read by programs
  // that keep the limit.
  if (raw.size() > kLongestLine) {
    Warn(number,
         "line of " + length +
             " characters: the library's reader never returns on a "
             "line of 512 or more unless LIBPROPERTIES_LONG_LINES=read");
    return false;
  }
  if (raw.size() == kLongestLine) {
    Warn(number, "line of " + length +
                     " characters: the longest the reader takes; one more "
                     "and the file cannot be read");
  }
  return true;
}

std::string Checker::VisibleText(int number, const std::string& raw) {
  const size_t nul = raw.find('\0');
  if (nul == std::string::npos) return raw;
  Warn(number, "NUL byte: the reader ignores the rest of the line");
  return raw.substr(0, nul);
}

bool Checker::CheckByteOrderMark(int number, const std::string& text) {
  if (number != 1 || text.compare(0, 3, kByteOrderMark) != 0) return false;
  // The mark is no blank to the reader: it stays in front of whatever the
  // line holds.
  const std::string rest = text.substr(3);
  const std::string content = rest.substr(0, rest.find(m_comment));
  if (Ini() && Cleaned(content).compare(0, 1, "[") == 0) {
    Warn(number,
         "UTF-8 byte-order mark: this section header is not read as one");
    return true;
  }
  if (content.find('=') != std::string::npos) {
    Warn(number, "UTF-8 byte-order mark: read as the start of the key " +
                     Quoted(Cleaned(content.substr(0, content.find('=')))));
    return false;
  }
  Warn(number, "UTF-8 byte-order mark: read as part of the first line");
  return true;
}

bool Checker::CheckQuotedComment(int number, const std::string& text) {
  const size_t cut = text.find(m_comment);
  if (cut == std::string::npos) return false;
  // Only the field that the cut falls into can have an open quote there.
  const size_t equals = text.find('=');
  const size_t field = equals < cut ? equals + 1 : 0;
  const size_t open = text.find_first_not_of(kBlanks, field);
  if (open >= cut || text[open] != '"') return false;
  if (text.find('"', open + 1) < cut) return false;  // Closed before it.
  if (text.find('"', cut + 1) == std::string::npos) return false;
  Warn(number, Quoted(std::string(1, m_comment)) +
                   " inside quotes starts a comment: the rest of the line "
                   "is ignored");
  return true;
}

bool Checker::CheckCommentCut(int number, const std::string& text, size_t cut) {
  // After a blank the comment character is taken as meant: a trailing
  // comment, as people write them.
  if (IsBlank(text[cut - 1])) return false;
  const size_t equals = text.find('=');
  const std::string mark = Quoted(std::string(1, m_comment));
  if (equals < cut) {
    if (Ini() && (!m_inSection || m_section.empty())) return false;
    Warn(number,
         mark + " starts a comment here: the value is read as " +
             Quoted(Cleaned(text.substr(equals + 1, cut - equals - 1))));
    return false;
  }
  if (equals == std::string::npos) return false;
  Warn(number, mark +
                   " starts a comment before the '=': the line is "
                   "ignored");
  return true;
}

bool Checker::TakeHeader(int number, std::string& text) {
  if (text.find('[') == std::string::npos) return false;
  text = Cleaned(text);
  if (text.empty() || text[0] != '[') return false;
  const size_t close = text.rfind(']');
  const std::string name = text.substr(
      1, close == std::string::npos ? std::string::npos : close - 1);
  if (close == std::string::npos) {
    Warn(number, "section header without ']': read as section " + Quoted(name));
  } else if (text.find_first_not_of(kBlanks, close + 1) != std::string::npos) {
    Warn(number, "text after ']' is ignored");
  }
  // An empty name is never stored, so it cannot repeat.
  if (!name.empty()) {
    const auto seen = m_sectionLines.find(name);
    if (seen != m_sectionLines.end()) {
      Warn(number, "section " + Quoted(name) + " repeats line " +
                       std::to_string(seen->second) +
                       ": the earlier entries are dropped");
    }
    m_sectionLines[name] = number;
  }
  m_inSection = true;
  m_section = name;
  m_keyLines.clear();
  m_entryIndent = std::string::npos;
  return true;
}

bool Checker::TakeEntry(int number, const std::string& key) {
  if (Ini() && !m_inSection) {
    Warn(number, "entry before the first section: dropped");
    return false;
  }
  if (Ini() && m_section.empty()) {
    Warn(number, "entry under an empty section name: dropped");
    return false;
  }
  const auto seen = m_keyLines.find(key);
  if (seen != m_keyLines.end()) {
    const std::string where = Ini() ? " in section " + Quoted(m_section) : "";
    Warn(number, "key " + Quoted(key) + " repeats line " +
                     std::to_string(seen->second) + where +
                     ": the last value wins");
  }
  m_keyLines[key] = number;
  return true;
}

void Checker::CheckEntry(size_t index, const std::string& text, size_t equals) {
  const int number = static_cast<int>(index + 1);
  const size_t first = text.find_first_not_of(kBlanks);
  // A comment line of the other format, or of peers' formats, that holds
  // an '=': what looks like a commented-out setting is a setting here.
  const std::string foreign = Ini() ? "#" : ";!";
  const bool commentLike = foreign.find(text[first]) != std::string::npos;
  // Before the first INI section it is dropped, as a comment would be.
  if (commentLike && Ini() && (!m_inSection || m_section.empty())) return;
  const std::string key = Cleaned(text.substr(0, equals));
  if (!TakeEntry(number, key)) return;
  if (Ini() && Continues(text)) {
    Warn(number,
         "indented line: not joined to the entry above, read as the "
         "key " +
             Quoted(key));
  } else if (Ini()) {
    m_entryIndent = first;
  }
  if (!Ini() && key.compare(0, 6, "export") == 0 && key.size() > 6 &&
      IsBlank(key[6])) {
    Warn(number, "'export' is read as part of the key");
  }
  if (commentLike) {
    Warn(number, Quoted(std::string(1, text[first])) +
                     " starts no comment in " + (Ini() ? "INI" : "flat") +
                     " files: read as the key " + Quoted(key));
  }
  const size_t colon = key.find(':');
  if (colon != std::string::npos &&
      (colon + 1 == key.size() || IsBlank(key[colon + 1]))) {
    Warn(number, "':' is no separator (only '=' is): the key is read as " +
                     Quoted(key));
  }
  CheckQuotes(number, text.substr(0, equals), "key");
  CheckQuotes(number, text.substr(equals + 1), "value");
  if (index >= m_continuedUntil) CheckContinuation(index, text);
}

void Checker::CheckQuotes(int number, const std::string& field,
                          const char* what) {
  const size_t open = field.find_first_not_of(kBlanks);
  const size_t close = field.find_last_not_of(kBlanks);
  // The cleaning drops a pair only when the field both starts and ends with
  // a quote.
  if (open == std::string::npos || close <= open || field[open] != '"' ||
      field[close] != '"') {
    return;
  }
  const std::string read = Cleaned(field);
  const std::string readBack = Cleaned(read);
  if (readBack == read) {
    // Same text, but a program that reads the file otherwise (a shell that
    // sources it) may need the quotes.
    Warn(number, std::string("a rewrite drops the quotes around the ") + what);
  } else {
    Warn(number, std::string("a rewrite drops the quotes around the ") + what +
                     " " + Quoted(read) + ", which then reads back as " +
                     Quoted(readBack));
  }
}

void Checker::CheckContinuation(size_t index, const std::string& text) {
  // An odd run of backslashes continues a line where peers join lines; an
  // even one ends in an escaped backslash.
  const auto continues = [](const std::string& line) {
    const std::string end = TrimmedEnd(line);
    const size_t last = end.find_last_not_of('\\');
    const size_t run = end.size() - (last == std::string::npos ? 0 : last + 1);
    return run % 2 == 1;
  };
  // A line that reads as an entry of its own is taken as meant to be one
  // (as after a path that ends in '\\'); so is the end of the file.
  const auto joined = [this](const std::string& line) {
    const std::string content = line.substr(0, line.find(m_comment));
    return IsBlank(line[0]) || content.find('=') == std::string::npos;
  };
  if (!continues(text) || index + 1 >= m_lines.size() ||
      !joined(m_lines[index + 1])) {
    return;
  }
  size_t end = index + 1;
  while (end < m_lines.size() && continues(m_lines[end])) ++end;
  if (end == m_lines.size()) --end;
  bool allIgnored = true;
  std::vector<int> numbers;
  for (size_t i = index + 1; i <= end; ++i) {
    numbers.push_back(static_cast<int>(i + 1));
    const std::string content =
        m_lines[i].substr(0, m_lines[i].find(m_comment));
    if (content.find('=') != std::string::npos) allIgnored = false;
  }
  m_continuedUntil = end + 1;
  const std::string which = LineList(numbers);
  const bool one = numbers.size() == 1;
  Warn(static_cast<int>(index + 1),
       "'\\' at the end joins no line: the value keeps the '\\', and " + which +
           (allIgnored
                ? std::string(one ? " is" : " are") +
                      " ignored (a rewrite drops " + (one ? "it" : "them") + ")"
                : std::string(one ? " is" : " are") + " read on " +
                      (one ? "its" : "their") + " own"));
}

void Checker::CheckIgnored(int number, const std::string& text) {
  const std::string cleaned = Cleaned(text);
  if (cleaned.empty()) return;
  const size_t first = text.find_first_not_of(kBlanks);
  const std::string foreign = Ini() ? "#" : ";!";
  if (foreign.find(text[first]) != std::string::npos) return;  // A comment.
  if (Ini() && Continues(text)) {
    // Still after the entry: the next line indented alike continues it too.
    Warn(number,
         "indented line: not joined to the entry above, the line is "
         "ignored");
    return;
  }
  m_entryIndent = std::string::npos;
  if (!Ini() && cleaned[0] == '[' && cleaned.find(']') != std::string::npos) {
    Warn(number,
         "section header in a flat file: ignored, so the keys of all "
         "sections are read as one (--ini reads it as INI)");
  } else if (cleaned.find(':') != std::string::npos && cleaned[0] != ':') {
    Warn(number, "':' is no separator (only '=' is): the line is ignored");
  } else {
    Warn(number, "no '=': the line is ignored");
  }
}

bool Checker::Continues(const std::string& text) const {
  // Other INI readers join a line indented deeper than the entry before it
  // to that entry's value.
  return m_entryIndent != std::string::npos &&
         text.find_first_not_of(kBlanks) > m_entryIndent;
}

std::string Checker::Cleaned(const std::string& field) {
  std::vector<char> buffer(field.begin(), field.end());
  buffer.push_back('\0');
  return m_cleaner.Extract(buffer.data());
}

}  // namespace

std::vector<FileFinding> CheckFileText(const std::string& text,
                                       FileFormat format) {
  const std::vector<std::string> lines = SplitLines(text);
  return Checker(format, lines).Run();
}

int FindUnreadableLine(const std::string& text, size_t& length) {
  const std::vector<std::string> lines = SplitLines(text);
  for (size_t i = 0; i < lines.size(); ++i) {
    if (lines[i].size() > kLongestLine) {
      length = lines[i].size();
      return static_cast<int>(i + 1);
    }
  }
  return 0;
}

bool StartsWithSectionHeader(const std::string& text) {
  for (const std::string& line : SplitLines(text)) {
    const size_t first = line.find_first_not_of(kBlanks);
    if (first == std::string::npos) continue;
    if (line[first] == '#' || line[first] == ';') continue;
    if (line[first] != '[') return false;
    const size_t close = line.rfind(']');
    if (close == std::string::npos) return false;
    const size_t after = line.find_first_not_of(kBlanks, close + 1);
    return after == std::string::npos || line[after] == ';' ||
           line[after] == '#';
  }
  return false;
}
