// JavaPropertiesFuzzer.cpp - reads any text as a flat property file and
// checks the table read, the text written, and that writing and reading
// again settles.
//
// Checked for every input whose lines are readable (at most 511 characters):
// - Load of a good stream returns true; Store returns true;
// - the written text is what the format rules make of the input (compared
//   with the plain reference reader and writer of FuzzSupport.h);
// - a header is one "#" line in front of the entries, skipped on reading;
// - the written text is never longer than the input plus one line feed;
// - loading twice gives the same table, and loading the same text twice into
//   one table changes nothing;
// - loading the input in two pieces cut after a line feed into one table
//   gives the same table as loading it whole;
// - store -> load -> store never makes the text longer, settles after
//   finitely many rounds, and changes nothing at all when every key and
//   value reads back as itself.

#include "JavaProperties.h"

#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>

#include "FuzzSupport.h"

namespace {

using fuzz_support::IsStableField;
using fuzz_support::LongestLine;
using fuzz_support::Quote;
using fuzz_support::ReferenceFlatLoad;
using fuzz_support::ReferenceFlatText;
using fuzz_support::Table;

// A line of 512 or more characters makes Load run for ever, on purpose.
const size_t kLongestReadableLine = 511;

void LoadText(JavaProperties& properties, const std::string& text) {
  std::istringstream in(text);
  FUZZ_CHECK(properties.Load(in),
             "Load failed on a good stream holding " << Quote(text));
}

std::string StoreText(JavaProperties& properties, const std::string& header) {
  std::ostringstream out;
  FUZZ_CHECK(properties.Store(out, header), "Store failed on a good stream");
  return out.str();
}

// What a fresh table that loads text writes (without a header).
std::string Reread(const std::string& text) {
  JavaProperties properties;
  LoadText(properties, text);
  return StoreText(properties, "");
}

// The reader and writer agree with the reference rules on text, whose
// written form is stored.
void CheckAgainstReference(const std::string& text, const std::string& stored) {
  Table expected;
  ReferenceFlatLoad(text, expected);
  const std::string expectedText = ReferenceFlatText(expected, "");
  FUZZ_CHECK(stored == expectedText, "input " << Quote(text) << "\nstored "
                                              << Quote(stored) << "\nexpected "
                                              << Quote(expectedText));
}

// True if every key and value of the table that input loads reads back as
// itself once written. (Keys read from a file never hold '=' or '#', values
// never '#'.)
bool ReadsBackUnchanged(const std::string& input) {
  Table table;
  ReferenceFlatLoad(input, table);
  for (const auto& entry : table) {
    if (!IsStableField(entry.first) || !IsStableField(entry.second)) {
      return false;
    }
  }
  return true;
}

void CheckHeader(JavaProperties& properties, const std::string& stored) {
  const std::string withHeader = StoreText(properties, "fuzz header");
  FUZZ_CHECK(withHeader == "#fuzz header\n" + stored,
             "with header " << Quote(withHeader));
  FUZZ_CHECK(Reread(withHeader) == Reread(stored),
             "the header line was read as an entry: " << Quote(withHeader));
}

void CheckLoadingIsRepeatable(JavaProperties& properties,
                              const std::string& input,
                              const std::string& stored) {
  FUZZ_CHECK(Reread(input) == stored, "a second reading differs");
  LoadText(properties, input);
  const std::string merged = StoreText(properties, "");
  FUZZ_CHECK(merged == stored,
             "loading the same input again changed " << Quote(merged));
}

void CheckLoadingInPieces(const std::string& input, const std::string& stored) {
  const size_t cut = input.find('\n', input.size() / 2);
  if (cut == std::string::npos) return;
  JavaProperties properties;
  LoadText(properties, input.substr(0, cut + 1));
  LoadText(properties, input.substr(cut + 1));
  const std::string merged = StoreText(properties, "");
  FUZZ_CHECK(merged == stored,
             "cut after byte " << cut << ", got " << Quote(merged));
}

void CheckRewritesSettle(const std::string& input, const std::string& stored) {
  const std::string first = Reread(stored);
  FUZZ_CHECK(!ReadsBackUnchanged(input) || first == stored,
             "a table of stable texts changed on rewrite: "
                 << Quote(stored) << " became " << Quote(first));
  std::string current = stored;
  std::string next = first;
  // Each round either changes nothing or makes the text shorter.
  while (next != current) {
    FUZZ_CHECK(next.size() < current.size(),
               Quote(current)
                   << " was rewritten as the longer " << Quote(next));
    CheckAgainstReference(current, next);
    current = next;
    next = Reread(current);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string input = fuzz_support::ToString(data, size);
  if (LongestLine(input) > kLongestReadableLine) return 0;

  JavaProperties properties;
  LoadText(properties, input);
  const std::string stored = StoreText(properties, "");

  CheckAgainstReference(input, stored);
  FUZZ_CHECK(stored.size() <= input.size() + 1,
             "stored " << Quote(stored) << " is longer than the input");
  CheckHeader(properties, stored);
  CheckLoadingIsRepeatable(properties, input, stored);
  CheckLoadingInPieces(input, stored);
  CheckRewritesSettle(input, stored);
  return 0;
}
