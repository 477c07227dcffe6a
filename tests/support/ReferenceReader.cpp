// ReferenceReader.cpp - see ReferenceReader.h.

#include "support/ReferenceReader.h"

#include <cstring>
#include <utility>

namespace test_support {
namespace {

// True if the reader logs the line that starts at lineStart as too long: it
// takes more than 511 characters, its line feed included (so a line of 511
// and a line feed, or, when long lines are read whole, any longer line).
bool LogsTooLong(const std::string& text, size_t lineStart) {
  const size_t feed = text.find('\n', lineStart);
  const size_t taken = feed == std::string::npos ? text.size() - lineStart
                                                 : feed + 1 - lineStart;
  return taken > 511;
}

// Splits line at its first '=' into cleaned key and value; false without '='.
bool Split(const std::string& line, std::string* key, std::string* value) {
  const size_t equals = line.find('=');
  if (equals == std::string::npos) return false;
  *key = CleanField(line.substr(0, equals));
  *value = CleanField(line.substr(equals + 1));
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
  for (const std::string& line : ReaderLines(text)) {
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

bool IsBlank(char c) { return c != '\0' && std::strchr(" \t\n\v\f\r", c); }

std::string CleanField(const std::string& field) {
  size_t begin = 0;
  while (begin < field.size() && IsBlank(field[begin])) ++begin;
  size_t end = field.size();
  while (end > begin && IsBlank(field[end - 1])) --end;
  const std::string text = field.substr(begin, end - begin);
  if (text.empty() || text[0] != '"') return text;
  if (text.size() > 1 && text.back() == '"') {
    return text.substr(1, text.size() - 2);
  }
  return text;
}

std::vector<std::string> ReaderLines(const std::string& text) {
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

std::string IniLineText(const std::string& line) {
  const std::string text = line.substr(0, line.find(';'));
  return text.find('[') == std::string::npos ? text : CleanField(text);
}

bool IsIniHeader(const std::string& lineText, std::string* name) {
  if (lineText.empty() || lineText[0] != '[') return false;
  const size_t close = lineText.rfind(']');
  *name = close == std::string::npos ? lineText.substr(1)
                                     : lineText.substr(1, close - 1);
  return true;
}

FlatReading ReadFlat(const std::string& text, ReferenceSection entries) {
  FlatReading reading;
  reading.entries = std::move(entries);
  ForEachLine(text, reading.log, [&](const std::string& line, int number) {
    std::string key, value;
    if (!Split(line.substr(0, line.find('#')), &key, &value)) return;
    Put(reading.entries, key, value, number, reading.log);
    reading.log.push_back("Loading '" + key + "' to '" + value + "'");
  });
  return reading;
}

IniReading ReadIni(const std::string& text, ReferenceSections sections) {
  IniReading reading;
  reading.sections = std::move(sections);
  std::string current;
  ReferenceSection pending;
  auto endSection = [&] {
    if (!current.empty()) reading.sections[current] = pending;
    pending.clear();
  };
  ForEachLine(text, reading.log, [&](const std::string& line, int number) {
    const std::string lineText = IniLineText(line);
    std::string name;
    if (IsIniHeader(lineText, &name)) {
      endSection();
      current = name;
      if (reading.sections.count(current) != 0) {
        reading.log.push_back("Line " + std::to_string(number) +
                              " redefines a section");
      }
      return;
    }
    std::string key, value;
    if (!Split(lineText, &key, &value)) return;
    Put(pending, key, value, number, reading.log);
    reading.log.push_back("Loading '" + key + "' of '" + current + "' to '" +
                          value + "'");
  });
  endSection();
  return reading;
}

std::string FlatText(const ReferenceSection& entries,
                     const std::string& header) {
  std::string text = header.empty() ? "" : "#" + header + "\n";
  for (const auto& entry : entries) {
    text += entry.first + "=" + entry.second + "\n";
  }
  return text;
}

std::string IniText(const ReferenceSections& sections,
                    const std::string& header) {
  std::string text = header.empty() ? "" : ";" + header + "\n";
  for (const auto& section : sections) {
    text += "[" + section.first + "]\n";
    for (const auto& entry : section.second) {
      text += entry.first + "=" + entry.second + "\n";
    }
    text += "\n";
  }
  return text;
}

ReferenceOutcome ReadFlatReference(const std::string& text,
                                   ReferenceSection entries) {
  FlatReading reading = ReadFlat(text, std::move(entries));
  return {FlatText(reading.entries, "header"), reading.log};
}

ReferenceOutcome ReadIniReference(const std::string& text,
                                  ReferenceSections sections) {
  IniReading reading = ReadIni(text, std::move(sections));
  return {IniText(reading.sections, "header"), reading.log};
}

}  // namespace test_support
