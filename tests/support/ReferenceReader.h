// ReferenceReader.h - the file formats read the plainest possible way, as an
// independent oracle for the library's readers: every line is handled as a
// C string with strchr() and a copy per field, exactly by the rules written
// in the README, with the same log messages.

#ifndef TESTS_SUPPORT_REFERENCEREADER_H_
#define TESTS_SUPPORT_REFERENCEREADER_H_

#include <map>
#include <string>
#include <vector>

namespace test_support {

typedef std::map<std::string, std::string> ReferenceSection;
typedef std::map<std::string, ReferenceSection> ReferenceSections;

// What reading a text gave: the table as the library writes it (with the
// header "header") and the messages logged, in order.
struct ReferenceOutcome {
  std::string table;
  std::vector<std::string> log;
};

// Reads text into entries (loads merge) as a flat file. REQUIRES: no line of
// text is longer than 511 characters.
ReferenceOutcome ReadFlatReference(const std::string& text,
                                   ReferenceSection entries);
// The same for an INI file.
ReferenceOutcome ReadIniReference(const std::string& text,
                                  ReferenceSections sections);

}  // namespace test_support

#endif  // TESTS_SUPPORT_REFERENCEREADER_H_
