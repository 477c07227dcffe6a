// IniPropertiesFuzzer.cpp - reads any text as an INI file and checks the
// sections read, the text written, and that writing and reading again
// settles.
//
// Checked for every input whose lines are readable (at most 511 characters):
// - Load of a good stream returns true; Store returns true;
// - the written text is what the format rules make of the input (compared
//   with the plain reference reader and writer of FuzzSupport.h);
// - a header is one ";" line in front of the sections, skipped on reading;
// - loading twice gives the same store, and loading the same text twice into
//   one store changes nothing (each section is replaced by itself);
// - loading the input in two pieces into one store gives the same store as
//   loading it whole, when the second piece starts with a section header;
// - every section written reads back as a section (entries may turn into
//   headers, e.g. a key "[k", but headers never disappear);
// - store -> load -> store changes nothing when every header and entry line
//   reads back as itself, and otherwise settles after finitely many rounds.

#include "IniProperties.h"

#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>

#include "FuzzSupport.h"

namespace {

using fuzz_support::IniLineText;
using fuzz_support::IsIniHeader;
using fuzz_support::LinesOf;
using fuzz_support::LongestLine;
using fuzz_support::Quote;
using fuzz_support::ReferenceExtract;
using fuzz_support::ReferenceIniLoad;
using fuzz_support::ReferenceIniText;
using fuzz_support::SectionTable;

// A line of 512 or more characters makes Load run for ever, on purpose.
const size_t kLongestReadableLine = 511;

bool IsReadable(const std::string& text) {
  return LongestLine(text) <= kLongestReadableLine;
}

void LoadText(IniProperties& properties, const std::string& text) {
  std::istringstream in(text);
  FUZZ_CHECK(properties.Load(in),
             "Load failed on a good stream holding " << Quote(text));
}

std::string StoreText(IniProperties& properties, const std::string& header) {
  std::ostringstream out;
  FUZZ_CHECK(properties.Store(out, header), "Store failed on a good stream");
  return out.str();
}

// What a fresh store that loads text writes (without a header).
std::string Reread(const std::string& text) {
  IniProperties properties;
  LoadText(properties, text);
  return StoreText(properties, "");
}

SectionTable ReferenceSections(const std::string& text) {
  SectionTable sections;
  ReferenceIniLoad(text, sections);
  return sections;
}

// The reader and writer agree with the reference rules on text, whose
// written form is stored.
void CheckAgainstReference(const std::string& text, const std::string& stored) {
  const std::string expected = ReferenceIniText(ReferenceSections(text), "");
  FUZZ_CHECK(stored == expected, "input " << Quote(text) << "\nstored "
                                          << Quote(stored) << "\nexpected "
                                          << Quote(expected));
}

// True if the line key=value, read inside a section, is that same entry.
bool EntryReadsBack(const std::string& key, const std::string& value) {
  const std::string line = key + "=" + value;
  if (LinesOf(line).size() != 1 || LinesOf(line)[0] != line) return false;
  const std::string cleaned = IniLineText(line);
  std::string name;
  if (IsIniHeader(cleaned, name)) return false;
  const size_t equals = cleaned.find('=');
  return equals != std::string::npos &&
         ReferenceExtract(cleaned.substr(0, equals)) == key &&
         ReferenceExtract(cleaned.substr(equals + 1)) == value;
}

// True if every header and entry line of the sections reads back as itself.
bool ReadsBackUnchanged(const SectionTable& sections) {
  for (const auto& section : sections) {
    std::string name;
    if (!IsIniHeader(IniLineText("[" + section.first + "]"), name) ||
        name != section.first) {
      return false;
    }
    for (const auto& entry : section.second) {
      if (!EntryReadsBack(entry.first, entry.second)) return false;
    }
  }
  return true;
}

void CheckHeader(IniProperties& properties, const std::string& stored) {
  const std::string withHeader = StoreText(properties, "fuzz header");
  FUZZ_CHECK(withHeader == ";fuzz header\n" + stored,
             "with header " << Quote(withHeader));
  FUZZ_CHECK(Reread(withHeader) == Reread(stored),
             "the header line was read: " << Quote(withHeader));
}

void CheckLoadingIsRepeatable(IniProperties& properties,
                              const std::string& input,
                              const std::string& stored) {
  FUZZ_CHECK(Reread(input) == stored, "a second reading differs");
  LoadText(properties, input);
  const std::string merged = StoreText(properties, "");
  FUZZ_CHECK(merged == stored,
             "loading the same input again changed " << Quote(merged));
}

// Cuts the input before the first header line in its second half.
void CheckLoadingInPieces(const std::string& input, const std::string& stored) {
  size_t cut = input.find('\n', input.size() / 2);
  while (cut != std::string::npos) {
    const std::string rest = input.substr(cut + 1);
    std::string name;
    if (IsIniHeader(IniLineText(LinesOf(rest)[0]), name)) {
      IniProperties properties;
      LoadText(properties, input.substr(0, cut + 1));
      LoadText(properties, rest);
      const std::string merged = StoreText(properties, "");
      FUZZ_CHECK(merged == stored,
                 "cut after byte " << cut << ", got " << Quote(merged));
      return;
    }
    cut = input.find('\n', cut + 1);
  }
}

// input is what was loaded, stored what was written then.
void CheckRewritesSettle(const std::string& input, const std::string& stored) {
  const SectionTable sections = ReferenceSections(input);
  const std::string first = Reread(stored);
  FUZZ_CHECK(!ReadsBackUnchanged(sections) || first == stored,
             "sections of stable lines changed on rewrite: "
                 << Quote(stored) << " became " << Quote(first));
  const SectionTable reread = ReferenceSections(stored);
  for (const auto& section : sections) {
    FUZZ_CHECK(reread.count(section.first) == 1,
               "section " << Quote(section.first) << " of " << Quote(stored)
                          << " was lost in " << Quote(first));
  }
  // Headers stay headers and entry lines only shrink or become headers, so
  // the text settles; a round per byte is more than enough.
  std::string current = stored;
  std::string next = first;
  for (size_t round = 0; next != current; ++round) {
    FUZZ_CHECK(round <= stored.size(),
               "rewriting " << Quote(stored) << " does not settle");
    CheckAgainstReference(current, next);
    // An entry line that became a header is written one "]" longer.
    if (!IsReadable(next)) return;
    current = next;
    next = Reread(current);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string input = fuzz_support::ToString(data, size);
  if (!IsReadable(input)) return 0;

  IniProperties properties;
  LoadText(properties, input);
  const std::string stored = StoreText(properties, "");

  CheckAgainstReference(input, stored);
  CheckLoadingIsRepeatable(properties, input, stored);
  CheckLoadingInPieces(input, stored);
  // A header line without "]" is written one byte longer than it was read.
  if (!IsReadable(stored)) return 0;
  CheckHeader(properties, stored);
  CheckRewritesSettle(input, stored);
  return 0;
}
