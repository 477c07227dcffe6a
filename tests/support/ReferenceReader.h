// ReferenceReader.h - the file formats read the plainest possible way, as an
// independent oracle for the library's readers: every line is handled as a
// C string with strchr() and a copy per field, exactly by the rules written
// in the README, with the same log messages. The tests and the fuzz targets
// share it; it uses nothing of the library.

#ifndef TESTS_SUPPORT_REFERENCEREADER_H_
#define TESTS_SUPPORT_REFERENCEREADER_H_

#include <map>
#include <string>
#include <vector>

namespace test_support {

typedef std::map<std::string, std::string> ReferenceSection;
typedef std::map<std::string, ReferenceSection> ReferenceSections;

// What reading a flat text into a table gave: the table and the messages
// logged, in order.
struct FlatReading {
  ReferenceSection entries;
  std::vector<std::string> log;
};

// The same for an INI text.
struct IniReading {
  ReferenceSections sections;
  std::vector<std::string> log;
};

// Reads text into entries (loads merge) as a flat file, every line whole:
// as the library reads it by default if no line is longer than 511
// characters (the stream reader never returns on one), and as it reads any
// text with long lines on.
FlatReading ReadFlat(const std::string& text, ReferenceSection entries = {});
// Reads text into sections as an INI file: every section the text names
// replaces the one of that name. Lines are read as ReadFlat() reads them.
IniReading ReadIni(const std::string& text, ReferenceSections sections = {});

// The text the flat store writes for entries with header ("" writes none).
std::string FlatText(const ReferenceSection& entries,
                     const std::string& header);
// The text the INI store writes for sections with header.
std::string IniText(const ReferenceSections& sections,
                    const std::string& header);

// What reading a text gave: the table as the library writes it (with the
// header "header") and the messages logged, in order.
struct ReferenceOutcome {
  std::string table;
  std::vector<std::string> log;
};

// ReadFlat() with the table as text.
ReferenceOutcome ReadFlatReference(const std::string& text,
                                   ReferenceSection entries);
// ReadIni() with the table as text.
ReferenceOutcome ReadIniReference(const std::string& text,
                                  ReferenceSections sections);

// The pieces of the rules, for checks that reason about single lines.

// True for the six blanks of the files (" \t\n\v\f\r"), in every locale.
bool IsBlank(char c);
// A key, a value or an INI line cleaned as the readers clean them: without
// the blanks around it; then a leading quote goes, and so does a trailing
// one if there is one, else the leading quote stays. field holds no NUL.
std::string CleanField(const std::string& field);
// The lines as the stream reader takes them: cut at every line feed, each
// cut again at its first NUL byte, and one empty line after a final feed (so
// the empty text is one empty line).
std::vector<std::string> ReaderLines(const std::string& text);
// An INI line as it is then read as a header or an entry: without its
// comment and, if it holds '[', cleaned.
std::string IniLineText(const std::string& line);
// True if lineText (made by IniLineText()) is a section header; then *name
// is the section's name: up to the last ']', or the rest of the line.
bool IsIniHeader(const std::string& lineText, std::string* name);

}  // namespace test_support

#endif  // TESTS_SUPPORT_REFERENCEREADER_H_
