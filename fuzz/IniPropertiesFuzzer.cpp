// IniPropertiesFuzzer.cpp - reads any text as an INI file and checks the
// sections read, the text written, and that writing and reading again
// settles (the checks are listed in StoreFuzzer.h). Particular to the INI
// format:
// - the second piece of an input loaded in two pieces starts with a section
//   header (each section read replaces the one of that name);
// - every section written reads back as a section (entries may turn into
//   headers, e.g. a key "[k", but headers never disappear);
// - the text reads back unchanged when every header and entry line does;
// - a rewrite may grow: a header line without "]" is written one byte
//   longer than it was read.

#include "IniProperties.h"

#include <cstddef>
#include <cstdint>
#include <string>

#include "FuzzSupport.h"
#include "StoreFuzzer.h"
#include "support/ReferenceReader.h"

namespace {

using fuzz_support::Quote;
using test_support::CleanField;
using test_support::IniLineText;
using test_support::IsIniHeader;
using test_support::ReaderLines;
using test_support::ReferenceSections;

ReferenceSections SectionsOf(const std::string& text) {
  return test_support::ReadIni(text).sections;
}

// True if the line key=value, read inside a section, is that same entry.
bool EntryReadsBack(const std::string& key, const std::string& value) {
  const std::string line = key + "=" + value;
  if (ReaderLines(line).size() != 1 || ReaderLines(line)[0] != line) {
    return false;
  }
  const std::string lineText = IniLineText(line);
  std::string name;
  if (IsIniHeader(lineText, &name)) return false;
  const size_t equals = lineText.find('=');
  return equals != std::string::npos &&
         CleanField(lineText.substr(0, equals)) == key &&
         CleanField(lineText.substr(equals + 1)) == value;
}

struct IniFile {
  typedef IniProperties Store;
  static constexpr char kComment = ';';
  static constexpr bool kRewritesShrink = false;

  static std::string ReferenceText(const std::string& text) {
    return test_support::IniText(SectionsOf(text), "");
  }

  static bool ReadsBackUnchanged(const std::string& input) {
    for (const auto& section : SectionsOf(input)) {
      std::string name;
      if (!IsIniHeader(IniLineText("[" + section.first + "]"), &name) ||
          name != section.first) {
        return false;
      }
      for (const auto& entry : section.second) {
        if (!EntryReadsBack(entry.first, entry.second)) return false;
      }
    }
    return true;
  }

  static bool StartsPiece(const std::string& rest) {
    std::string name;
    return IsIniHeader(IniLineText(ReaderLines(rest)[0]), &name);
  }

  static void CheckStored(const std::string&, const std::string&) {}

  static void CheckRewrite(const std::string& input, const std::string& stored,
                           const std::string& first) {
    const ReferenceSections reread = SectionsOf(stored);
    for (const auto& section : SectionsOf(input)) {
      FUZZ_CHECK(reread.count(section.first) == 1,
                 "section " << Quote(section.first) << " of " << Quote(stored)
                            << " was lost in " << Quote(first));
    }
  }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  return fuzz_support::FuzzStore<IniFile>(data, size);
}
