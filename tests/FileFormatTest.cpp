// FileFormatTest.cpp - the golden cases of tests/format (see its README.md):
// every case file is read through Load(std::istream&) and Load(fileName) of
// its flavour's store, and by the reference reader, and each reading must
// give the table and the log lines that the case's .expected and .log files
// hold.

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "IniProperties.h"
#include "JavaProperties.h"
#include "support/LogRecorder.h"
#include "support/ReferenceReader.h"
#include "support/TempDir.h"

namespace {

using test_support::FileExists;
using test_support::LogRecorder;
using test_support::Messages;
using test_support::ReadFile;
using test_support::ReferenceSection;
using test_support::ReferenceSections;

const char kFlatExtension[] = ".properties";
const char kIniExtension[] = ".ini";

struct FormatCase {
  std::string name;  // The file name without its extension.
  std::string path;
  bool sectioned;  // An INI file.
};

// Keeps test output readable: the case's path instead of its fields.
void PrintTo(const FormatCase& formatCase, std::ostream* out) {
  *out << formatCase.path;
}

bool EndsWith(const std::string& text, const std::string& end) {
  return text.size() >= end.size() &&
         text.compare(text.size() - end.size(), end.size(), end) == 0;
}

// The names of the files of tests/format, sorted.
std::vector<std::string> FormatFiles() {
  std::vector<std::string> names;
  for (const auto& entry :
       std::filesystem::directory_iterator(PROPERTIES_FORMAT_DIR)) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

// Every case of tests/format whose file ends with extension.
std::vector<FormatCase> CasesWith(const std::string& extension) {
  std::vector<FormatCase> cases;
  for (const std::string& file : FormatFiles()) {
    if (!EndsWith(file, extension)) continue;
    cases.push_back({file.substr(0, file.size() - extension.size()),
                     std::string(PROPERTIES_FORMAT_DIR) + "/" + file,
                     extension == kIniExtension});
  }
  return cases;
}

// A line of an expectation file with its escapes decoded into *bytes: \\,
// \", \n, \r, \t, \v, \f and \xHH (two hex digits). False on another
// escape.
bool Unescape(const std::string& line, std::string* bytes) {
  bytes->clear();
  for (size_t i = 0; i < line.size(); ++i) {
    if (line[i] != '\\') {
      *bytes += line[i];
      continue;
    }
    if (++i == line.size()) return false;
    const char escape = line[i];
    const std::string simple = "\\\"nrtvf";
    const std::string meaning = "\\\"\n\r\t\v\f";
    if (simple.find(escape) != std::string::npos) {
      *bytes += meaning[simple.find(escape)];
    } else if (escape == 'x' && i + 2 < line.size() &&
               std::isxdigit(static_cast<unsigned char>(line[i + 1])) &&
               std::isxdigit(static_cast<unsigned char>(line[i + 2]))) {
      *bytes +=
          static_cast<char>(std::stoi(line.substr(i + 1, 2), nullptr, 16));
      i += 2;
    } else {
      return false;
    }
  }
  return true;
}

// Takes the quoted field that starts at *at in line, escapes decoded, and
// moves *at past its closing quote. False if there is none.
bool TakeQuoted(const std::string& line, size_t* at, std::string* field) {
  if (*at >= line.size() || line[*at] != '"') return false;
  size_t end = *at + 1;
  while (end < line.size() && line[end] != '"')
    end += line[end] == '\\' ? 2 : 1;
  if (end >= line.size()) return false;
  const bool decoded = Unescape(line.substr(*at + 1, end - *at - 1), field);
  *at = end + 1;
  return decoded;
}

// The lines of the file at path, each without its line feed.
std::vector<std::string> LinesOf(const std::string& path) {
  std::vector<std::string> lines;
  std::istringstream in(ReadFile(path));
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

// What a case expects: the table (a flat file's entries are in the section
// "") and the log lines.
struct Expectation {
  ReferenceSections table;
  Messages log;
};

// Reads the .expected and .log files of the case; a line that does not
// follow the format fails the test.
Expectation ExpectationOf(const FormatCase& formatCase) {
  Expectation expected;
  const std::string tablePath = formatCase.path + ".expected";
  const std::string logPath = formatCase.path + ".log";
  EXPECT_TRUE(FileExists(tablePath)) << tablePath;
  EXPECT_TRUE(FileExists(logPath)) << logPath;
  const std::vector<std::string> tableLines = LinesOf(tablePath);
  const std::string* section = nullptr;
  for (size_t n = 0; n < tableLines.size(); ++n) {
    const std::string& line = tableLines[n];
    const std::string where = tablePath + ":" + std::to_string(n + 1);
    if (line.empty()) continue;
    std::string name;
    if (line[0] == '[' && line.back() == ']' && formatCase.sectioned) {
      EXPECT_TRUE(Unescape(line.substr(1, line.size() - 2), &name)) << where;
      section = &expected.table.emplace(name, ReferenceSection()).first->first;
      continue;
    }
    std::string key, value;
    size_t at = 0;
    const bool read = TakeQuoted(line, &at, &key) &&
                      line.compare(at, 3, " = ") == 0 &&
                      TakeQuoted(line, &(at += 3), &value) && at == line.size();
    EXPECT_TRUE(read) << where << ": not \"key\" = \"value\"";
    EXPECT_TRUE(section != nullptr || !formatCase.sectioned)
        << where << ": an entry before the first section";
    if (read) expected.table[section ? *section : ""][key] = value;
  }
  for (const std::string& line : LinesOf(logPath)) {
    std::string message;
    EXPECT_TRUE(Unescape(line, &message)) << logPath << ": " << line;
    expected.log.push_back(message);
  }
  return expected;
}

// The entries of a flat table.
ReferenceSection EntriesOf(const ReferenceSections& table) {
  const auto entries = table.find("");
  return entries == table.end() ? ReferenceSection() : entries->second;
}

// Expects store to hold exactly table: every value is found where the table
// has it, and the store writes what the table makes.
void ExpectTable(JavaProperties& store, const ReferenceSections& table) {
  for (const auto& entry : EntriesOf(table)) {
    std::string value;
    EXPECT_TRUE(store.GetProperty(entry.first, value)) << entry.first;
    EXPECT_EQ(value, entry.second) << entry.first;
  }
  std::ostringstream out;
  EXPECT_TRUE(store.Store(out, ""));
  EXPECT_EQ(out.str(), test_support::FlatText(EntriesOf(table), ""));
}

void ExpectTable(IniProperties& store, const ReferenceSections& table) {
  for (const auto& section : table) {
    for (const auto& entry : section.second) {
      std::string value;
      EXPECT_TRUE(store.GetProperty(section.first, entry.first, value))
          << section.first << " " << entry.first;
      EXPECT_EQ(value, entry.second) << section.first << " " << entry.first;
    }
  }
  std::ostringstream out;
  EXPECT_TRUE(store.Store(out, ""));
  EXPECT_EQ(out.str(), test_support::IniText(table, ""));
}

// Reads the case's text with the reference reader.
Expectation ReferenceReading(const FormatCase& formatCase,
                             const std::string& text) {
  if (formatCase.sectioned) {
    test_support::IniReading reading = test_support::ReadIni(text);
    return {reading.sections, reading.log};
  }
  test_support::FlatReading reading = test_support::ReadFlat(text);
  Expectation table;
  if (!reading.entries.empty()) table.table[""] = reading.entries;
  table.log = reading.log;
  return table;
}

// Loads the case through both of Store's readers and expects what the case
// expects of each.
template <typename Store>
void ExpectLibraryReadings(const FormatCase& formatCase,
                           const std::string& text,
                           const Expectation& expected) {
  {
    SCOPED_TRACE("Load(std::istream&)");
    Store store;
    LogRecorder log;
    std::istringstream in(text);
    EXPECT_TRUE(store.Load(in));
    EXPECT_EQ(test_support::MessagesAllAtLevel(log, 1), expected.log);
    ExpectTable(store, expected.table);
  }
  {
    SCOPED_TRACE("Load(fileName)");
    Store store;
    LogRecorder log;
    EXPECT_TRUE(store.Load(formatCase.path));
    EXPECT_EQ(test_support::MessagesAllAtLevel(log, 1), expected.log);
    ExpectTable(store, expected.table);
  }
}

class FileFormatTest : public testing::TestWithParam<FormatCase> {};

TEST_P(FileFormatTest, ReadsAsExpected) {
  const FormatCase& formatCase = GetParam();
  const std::string text = ReadFile(formatCase.path);
  const Expectation expected = ExpectationOf(formatCase);
  if (formatCase.sectioned) {
    ExpectLibraryReadings<IniProperties>(formatCase, text, expected);
  } else {
    ExpectLibraryReadings<JavaProperties>(formatCase, text, expected);
  }
  SCOPED_TRACE("reference reader");
  const Expectation reference = ReferenceReading(formatCase, text);
  EXPECT_EQ(reference.table, expected.table);
  EXPECT_EQ(reference.log, expected.log);
}

std::string CaseName(const testing::TestParamInfo<FormatCase>& info) {
  return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(Flat, FileFormatTest,
                         testing::ValuesIn(CasesWith(kFlatExtension)),
                         CaseName);
INSTANTIATE_TEST_SUITE_P(Ini, FileFormatTest,
                         testing::ValuesIn(CasesWith(kIniExtension)), CaseName);

// Every expectation file belongs to a case, so that none is forgotten when
// a case is renamed or removed.
TEST(FileFormatCorpusTest, EveryExpectationFileHasItsCase) {
  for (const std::string& file : FormatFiles()) {
    for (const char* sibling : {".expected", ".log"}) {
      if (!EndsWith(file, sibling)) continue;
      const std::string caseFile =
          file.substr(0, file.size() - std::string(sibling).size());
      EXPECT_TRUE(EndsWith(caseFile, kFlatExtension) ||
                  EndsWith(caseFile, kIniExtension))
          << file;
      EXPECT_TRUE(
          FileExists(std::string(PROPERTIES_FORMAT_DIR) + "/" + caseFile))
          << file;
    }
  }
}

}  // namespace
