// JavaPropertiesFuzzer.cpp - reads any text as a flat property file and
// checks the table read, the text written, and that writing and reading
// again settles (the checks are listed in StoreFuzzer.h). Particular to the
// flat format:
// - any line may start the second piece of an input loaded in two pieces;
// - the written text is never longer than the input plus one line feed;
// - every rewrite that changes the text makes it shorter;
// - the text reads back unchanged when every key and value does.

#include "JavaProperties.h"

#include <cstddef>
#include <cstdint>
#include <string>

#include "FuzzSupport.h"
#include "StoreFuzzer.h"
#include "support/ReferenceReader.h"

namespace {

using fuzz_support::IsStableField;
using fuzz_support::Quote;

struct FlatFile {
  typedef JavaProperties Store;
  static constexpr char kComment = '#';
  static constexpr bool kRewritesShrink = true;

  static std::string ReferenceText(const std::string& text) {
    return test_support::FlatText(test_support::ReadFlat(text).entries, "");
  }

  // Keys read from a file never hold '=' or '#', values never '#'; so a
  // key or value reads back as itself unless cleaning would change it.
  static bool ReadsBackUnchanged(const std::string& input) {
    for (const auto& entry : test_support::ReadFlat(input).entries) {
      if (!IsStableField(entry.first) || !IsStableField(entry.second)) {
        return false;
      }
    }
    return true;
  }

  // An entry does not depend on the lines before it.
  static bool StartsPiece(const std::string&) { return true; }

  static void CheckStored(const std::string& input, const std::string& stored) {
    FUZZ_CHECK(stored.size() <= input.size() + 1,
               "stored " << Quote(stored) << " is longer than the input");
  }

  static void CheckRewrite(const std::string&, const std::string&,
                           const std::string&) {}
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  return fuzz_support::FuzzStore<FlatFile>(data, size);
}
