// ReferenceReader.cpp - see ReferenceReader.h.

#include "support/ReferenceReader.h"

#include <cstring>

namespace test_support {
namespace {

bool IsBlank(char c) { return c != '\0' && std::strchr(" \t\n\v\f\r", c); }

// Drops blanks around text; a leading quote goes, and so does a trailing one
// if there is one, else the leading quote stays.
std::string Clean(std::string text) {
  size_t begin = 0;
  while (begin < text.size() && IsBlank(text[begin])) ++begin;
  size_t end = text.size();
  while (end > begin && IsBlank(text[end - 1])) --end;
  text = text.substr(begin, end - begin);
  if (text.empty() || text[0] != '"') return text;
  if (text.size() > 1 && text.back() == '"') {
    return text.substr(1, text.size() - 2);
  }
  return text;
}

// The lines as the stream reader takes them: cut at every line feed, each
// cut again at its first NUL byte, and one empty line after a final feed.
std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  size_t start = 0;
  for (;;) {
    const size_t feed = text.find('\n', start);
    std::string line = text.substr(
        start, feed == std::string::npos ? std::string::npos : feed - start);
    lines.push_back(line.c_str());
    if (feed == std::string::npos) return lines;
    start = feed + 1;
  }
}

// True if the line that starts at lineStart is 511 characters long and
// followed by a line feed: the stream reader logs such a line as too long.
bool LogsTooLong(const std::string& text, size_t lineStart) {
  const size_t feed = text.find('\n', lineStart);
  return feed != std::string::npos && feed - lineStart == 511;
}

// Splits line at its first '=' into cleaned key and value; false without '='.
bool Split(const std::string& line, std::string* key, std::string* value) {
  const size_t equals = line.find('=');
  if (equals == std::string::npos) return false;
  *key = Clean(line.substr(0, equals));
  *value = Clean(line.substr(equals + 1));
  return true;
}

void Put(ReferenceSection& table, const std::string& key,
         const std::string& value, int number, std::vector<std::string>& log) {
  if (table.count(key) != 0) {
    log.push_back("Line " + std::to_string(number) + " redefines a property");
  }
  table[key] = value;
}

template <typename Handle>
void ForEachLine(const std::string& text, std::vector<std::string>& log,
                 Handle handle) {
  size_t lineStart = 0;
  int number = 0;
  for (const std::string& line : Lines(text)) {
    ++number;
    if (LogsTooLong(text, lineStart)) {
      log.push_back("Line " + std::to_string(number) + " is too long");
    }
    handle(line, number);
    const size_t feed = text.find('\n', lineStart);
    lineStart = feed == std::string::npos ? text.size() : feed + 1;
  }
}

}  // namespace

ReferenceOutcome ReadFlatReference(const std::string& text,
                                   ReferenceSection entries) {
  ReferenceOutcome outcome;
  ForEachLine(text, outcome.log, [&](std::string line, int number) {
    line = line.substr(0, line.find('#'));
    std::string key, value;
    if (!Split(line, &key, &value)) return;
    Put(entries, key, value, number, outcome.log);
    outcome.log.push_back("Loading '" + key + "' to '" + value + "'");
  });
  outcome.table = "#header\n";
  for (const auto& entry : entries) {
    outcome.table += entry.first + "=" + entry.second + "\n";
  }
  return outcome;
}

ReferenceOutcome ReadIniReference(const std::string& text,
                                  ReferenceSections sections) {
  ReferenceOutcome outcome;
  std::string current;
  ReferenceSection pending;
  auto endSection = [&] {
    if (!current.empty()) sections[current] = pending;
    pending.clear();
  };
  ForEachLine(text, outcome.log, [&](std::string line, int number) {
    line = line.substr(0, line.find(';'));
    if (line.find('[') != std::string::npos) {
      line = Clean(line);
      if (!line.empty() && line[0] == '[') {
        endSection();
        const size_t close = line.rfind(']');
        current = close == std::string::npos ? line.substr(1)
                                             : line.substr(1, close - 1);
        if (sections.count(current) != 0) {
          outcome.log.push_back("Line " + std::to_string(number) +
                                " redefines a section");
        }
        return;
      }
    }
    std::string key, value;
    if (!Split(line, &key, &value)) return;
    Put(pending, key, value, number, outcome.log);
    outcome.log.push_back("Loading '" + key + "' of '" + current + "' to '" +
                          value + "'");
  });
  endSection();
  outcome.table = ";header\n";
  for (const auto& section : sections) {
    outcome.table += "[" + section.first + "]\n";
    for (const auto& entry : section.second) {
      outcome.table += entry.first + "=" + entry.second + "\n";
    }
    outcome.table += "\n";
  }
  return outcome;
}

}  // namespace test_support
