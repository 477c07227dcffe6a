// FileCheck.cpp - see FileCheck.h.

#include "propctl/FileCheck.h"

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

// Reads a file line by line the way the library's reader does, and notes
// where that differs from what the line seems to say.
class Checker {
 public:
  explicit Checker(FileFormat format)
      : m_format(format), m_comment(format == FileFormat::kIni ? ';' : '#') {}

  void Check(int number, const std::string& raw);
  std::vector<FileFinding> Findings() const { return m_findings; }

 private:
  void Warn(int number, const std::string& message);
  // False if the reader cannot take the line at all.
  bool CheckLength(int number, const std::string& raw);
  // The text the reader sees: a NUL ends the line's text.
  std::string VisibleText(int number, const std::string& raw);
  // True if a comment character falls inside a quoted field.
  bool CheckQuotedComment(int number, const std::string& text);
  // True if text is a section header. Otherwise leaves in text what the
  // entry reader sees (a line with '[' is cleaned as a whole first).
  bool TakeHeader(int number, std::string& text);
  void TakeEntry(int number, const std::string& key);
  // The library's own field cleaning, on a copy.
  std::string Cleaned(const std::string& field);

  const FileFormat m_format;
  const char m_comment;
  JavaProperties m_cleaner;
  // INI: whether a header was read, and the name of the latest one.
  bool m_inSection = false;
  std::string m_section;
  std::map<std::string, int> m_sectionLines;  // Name to its latest header.
  // Key to its line, in the current section occurrence (flat: the file).
  std::map<std::string, int> m_keyLines;
  std::vector<FileFinding> m_findings;
};

void Checker::Check(int number, const std::string& raw) {
  if (!CheckLength(number, raw)) return;
  std::string text = VisibleText(number, raw);
  const bool quotedComment = CheckQuotedComment(number, text);
  text = text.substr(0, text.find(m_comment));
  if (m_format == FileFormat::kIni && TakeHeader(number, text)) return;
  const size_t equals = text.find('=');
  if (equals != std::string::npos) {
    TakeEntry(number, Cleaned(text.substr(0, equals)));
  } else if (!quotedComment && !Cleaned(text).empty()) {
    // Not reported again for a line already reported as cut inside quotes.
    Warn(number, "no '=': the line is ignored");
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
  if (number == 1 && raw.compare(0, 3, kByteOrderMark) == 0) {
    Warn(number, "UTF-8 byte-order mark: read as part of the first line");
  }
  const size_t nul = raw.find('\0');
  if (nul == std::string::npos) return raw;
  Warn(number, "NUL byte: the reader ignores the rest of the line");
  return raw.substr(0, nul);
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
  return true;
}

void Checker::TakeEntry(int number, const std::string& key) {
  if (m_format == FileFormat::kIni && !m_inSection) {
    Warn(number, "entry before the first section: dropped");
    return;
  }
  if (m_format == FileFormat::kIni && m_section.empty()) {
    Warn(number, "entry under an empty section name: dropped");
    return;
  }
  const auto seen = m_keyLines.find(key);
  if (seen != m_keyLines.end()) {
    const std::string where =
        m_format == FileFormat::kIni ? " in section " + Quoted(m_section) : "";
    Warn(number, "key " + Quoted(key) + " repeats line " +
                     std::to_string(seen->second) + where +
                     ": the last value wins");
  }
  m_keyLines[key] = number;
}

std::string Checker::Cleaned(const std::string& field) {
  std::vector<char> buffer(field.begin(), field.end());
  buffer.push_back('\0');
  return m_cleaner.Extract(buffer.data());
}

}  // namespace

std::vector<FileFinding> CheckFileText(const std::string& text,
                                       FileFormat format) {
  Checker checker(format);
  const std::vector<std::string> lines = SplitLines(text);
  for (size_t i = 0; i < lines.size(); ++i) {
    checker.Check(static_cast<int>(i + 1), lines[i]);
  }
  return checker.Findings();
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
