// StoreFuzzer.h - the body of the two store fuzz targets: reads any text as a
// file of one flavour and checks the table read, the text written, and that
// writing and reading again settles. JavaPropertiesFuzzer.cpp and
// IniPropertiesFuzzer.cpp give the flavour.
//
// Checked for every input: inputs whose lines are at most 511 characters
// long as the library reads by default, the others with long lines read
// whole (PropertySafety::SetLongLines):
// - Load of a good stream returns true; Store returns true;
// - the written text is what the format rules make of the input (compared
//   with the reference reader and writer of tests/support/ReferenceReader.h);
// - loading twice gives the same store, and loading the same text twice into
//   one store changes nothing;
// - loading the input in two pieces into one store gives the same store as
//   loading it whole, cut after the first line feed in its second half in
//   front of a line that may start a piece (Flavour::StartsPiece);
// - a header is one comment line in front of the rest, skipped on reading;
// - store -> load -> store changes nothing when every line written reads back
//   as itself (Flavour::ReadsBackUnchanged), and otherwise settles after
//   finitely many rounds, each of them shorter if Flavour::kRewritesShrink;
// - what the flavour adds: Flavour::CheckStored on the first text written,
//   Flavour::CheckRewrite on its first rewrite.
//
// A flavour is a struct with
//   typedef ... Store;                        the store class
//   static constexpr char kComment;           its comment character
//   static constexpr bool kRewritesShrink;
//   static std::string ReferenceText(const std::string& text);
//       what the reference writer writes (without a header) for the table
//       that the reference reader reads from text
//   static bool ReadsBackUnchanged(const std::string& input);
//   static bool StartsPiece(const std::string& rest);
//   static void CheckStored(const std::string& input,
//                           const std::string& stored);
//   static void CheckRewrite(const std::string& input,
//                            const std::string& stored,
//                            const std::string& first);

#ifndef FUZZ_STOREFUZZER_H_
#define FUZZ_STOREFUZZER_H_

#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>

#include "FuzzSupport.h"
#include "PropertySafety.h"
#include "support/SafetySettings.h"

namespace fuzz_support {

// A line of 512 or more characters makes Load run for ever, on purpose,
// unless long lines are read whole.
const size_t kLongestReadableLine = 511;

inline bool IsReadable(const std::string& text) {
  return PropertySafety::LongLines() ||
         LongestLine(text) <= kLongestReadableLine;
}

template <typename Store>
void LoadText(Store& properties, const std::string& text) {
  std::istringstream in(text);
  FUZZ_CHECK(properties.Load(in),
             "Load failed on a good stream holding " << Quote(text));
}

template <typename Store>
std::string StoreText(Store& properties, const std::string& header) {
  std::ostringstream out;
  FUZZ_CHECK(properties.Store(out, header), "Store failed on a good stream");
  return out.str();
}

// What a fresh store that loads text writes (without a header).
template <typename Flavour>
std::string Reread(const std::string& text) {
  typename Flavour::Store properties;
  LoadText(properties, text);
  return StoreText(properties, "");
}

// The reader and writer agree with the reference rules on text, whose
// written form is stored.
template <typename Flavour>
void CheckAgainstReference(const std::string& text, const std::string& stored) {
  const std::string expected = Flavour::ReferenceText(text);
  FUZZ_CHECK(stored == expected, "input " << Quote(text) << "\nstored "
                                          << Quote(stored) << "\nexpected "
                                          << Quote(expected));
}

template <typename Flavour>
void CheckHeader(typename Flavour::Store& properties,
                 const std::string& stored) {
  const std::string withHeader = StoreText(properties, "fuzz header");
  FUZZ_CHECK(withHeader == Flavour::kComment + ("fuzz header\n" + stored),
             "with header " << Quote(withHeader));
  FUZZ_CHECK(Reread<Flavour>(withHeader) == Reread<Flavour>(stored),
             "the header line was read: " << Quote(withHeader));
}

template <typename Flavour>
void CheckLoadingIsRepeatable(typename Flavour::Store& properties,
                              const std::string& input,
                              const std::string& stored) {
  FUZZ_CHECK(Reread<Flavour>(input) == stored, "a second reading differs");
  LoadText(properties, input);
  const std::string merged = StoreText(properties, "");
  FUZZ_CHECK(merged == stored,
             "loading the same input again changed " << Quote(merged));
}

template <typename Flavour>
void CheckLoadingInPieces(const std::string& input, const std::string& stored) {
  for (size_t cut = input.find('\n', input.size() / 2);
       cut != std::string::npos; cut = input.find('\n', cut + 1)) {
    const std::string rest = input.substr(cut + 1);
    if (!Flavour::StartsPiece(rest)) continue;
    typename Flavour::Store properties;
    LoadText(properties, input.substr(0, cut + 1));
    LoadText(properties, rest);
    const std::string merged = StoreText(properties, "");
    FUZZ_CHECK(merged == stored,
               "cut after byte " << cut << ", got " << Quote(merged));
    return;
  }
}

// input is what was loaded, stored what was written then.
template <typename Flavour>
void CheckRewritesSettle(const std::string& input, const std::string& stored) {
  const std::string first = Reread<Flavour>(stored);
  FUZZ_CHECK(!Flavour::ReadsBackUnchanged(input) || first == stored,
             "a store of stable lines changed on rewrite: "
                 << Quote(stored) << " became " << Quote(first));
  Flavour::CheckRewrite(input, stored, first);
  // A round per byte is more than enough for any text to settle.
  std::string current = stored;
  std::string next = first;
  for (size_t round = 0; next != current; ++round) {
    FUZZ_CHECK(round <= stored.size(),
               "rewriting " << Quote(stored) << " does not settle");
    FUZZ_CHECK(!Flavour::kRewritesShrink || next.size() < current.size(),
               Quote(current)
                   << " was rewritten as the longer " << Quote(next));
    CheckAgainstReference<Flavour>(current, next);
    // A rewrite that grows may make a line too long to read again.
    if (!IsReadable(next)) return;
    current = next;
    next = Reread<Flavour>(current);
  }
}

// The whole body of a store fuzz target.
template <typename Flavour>
int FuzzStore(const uint8_t* data, size_t size) {
  const std::string input = ToString(data, size);
  const test_support::ScopedLongLines longLines(LongestLine(input) >
                                                kLongestReadableLine);

  typename Flavour::Store properties;
  LoadText(properties, input);
  const std::string stored = StoreText(properties, "");

  CheckAgainstReference<Flavour>(input, stored);
  Flavour::CheckStored(input, stored);
  CheckLoadingIsRepeatable<Flavour>(properties, input, stored);
  CheckLoadingInPieces<Flavour>(input, stored);
  if (!IsReadable(stored)) return 0;
  CheckHeader<Flavour>(properties, stored);
  CheckRewritesSettle<Flavour>(input, stored);
  return 0;
}

}  // namespace fuzz_support

#endif  // FUZZ_STOREFUZZER_H_
