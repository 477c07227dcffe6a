// ExtractFuzzer.cpp - cleans any text as a field of a property file and
// checks the result against the field rules.
//
// The input up to its first NUL is the field; the bytes after that NUL stay
// in the buffer behind it. With t the field without its leading and trailing
// blanks, the rules say that the result is t without one pair of enclosing
// quotes (t of at least two bytes that starts and ends with '"'), else t
// itself. Checked:
// - the result lies in the buffer, at the place where that text stands in
//   the field: Extract writes one NUL behind the result and nothing else;
// - the result is that text, and never longer than the field;
// - an unquoted field loses exactly its outer blanks: the result has none;
// - cleaning a result that kept its text (no quotes removed) changes
//   nothing; cleaning is the same with more blanks around the field;
// - any text in quotes comes back as it was.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "FuzzSupport.h"
#include "JavaProperties.h"

namespace {

using fuzz_support::Quote;
using test_support::IsBlank;

// Extract on a writable copy of text (which holds no NUL).
std::string Cleaned(const std::string& text) {
  std::vector<char> buffer(text.begin(), text.end());
  buffer.push_back('\0');
  JavaProperties properties;
  return properties.Extract(buffer.data());
}

std::string Trimmed(const std::string& text) {
  size_t begin = 0;
  size_t end = text.size();
  while (begin < end && IsBlank(text[begin])) ++begin;
  while (end > begin && IsBlank(text[end - 1])) --end;
  return text.substr(begin, end - begin);
}

bool StartsOrEndsWithBlank(const std::string& text) {
  return !text.empty() && (IsBlank(text.front()) || IsBlank(text.back()));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string input = fuzz_support::ToString(data, size);
  const std::string field = input.substr(0, input.find('\0'));

  // The whole input, NUL-terminated: the field, then the rest of the input.
  std::vector<char> buffer(input.begin(), input.end());
  buffer.push_back('\0');
  JavaProperties properties;
  const char* result = properties.Extract(buffer.data());

  FUZZ_CHECK(result >= buffer.data() && result <= buffer.data() + field.size(),
             "the result starts outside the field " << Quote(field));
  const size_t offset = static_cast<size_t>(result - buffer.data());
  const size_t length = std::strlen(result);
  FUZZ_CHECK(offset + length <= field.size(),
             "the result runs past the field " << Quote(field));
  const std::string cleaned(result, length);
  FUZZ_CHECK(cleaned == field.substr(offset, length),
             "the result " << Quote(cleaned) << " is not the text at offset "
                           << offset << " of " << Quote(field));
  for (size_t i = 0; i < input.size(); ++i) {
    FUZZ_CHECK(buffer[i] == input[i] || (i == offset + length && !buffer[i]),
               "byte " << i << " of " << Quote(input) << " was changed");
  }

  const std::string trimmed = Trimmed(field);
  const bool quotesRemoved =
      trimmed.size() >= 2 && trimmed.front() == '"' && trimmed.back() == '"';
  const std::string expected =
      quotesRemoved ? trimmed.substr(1, trimmed.size() - 2) : trimmed;
  FUZZ_CHECK(cleaned == expected, "field " << Quote(field) << " gave "
                                           << Quote(cleaned) << ", expected "
                                           << Quote(expected));
  FUZZ_CHECK(cleaned.size() <= field.size(), "the result grew");

  if (trimmed.empty() || trimmed.front() != '"') {
    FUZZ_CHECK(!StartsOrEndsWithBlank(cleaned),
               "an unquoted field kept a blank: " << Quote(cleaned));
  }
  if (!quotesRemoved) {
    FUZZ_CHECK(Cleaned(cleaned) == cleaned,
               "cleaning " << Quote(cleaned) << " again changed it");
  }
  FUZZ_CHECK(Cleaned(" \t\r" + field + "\v\f\n ") == cleaned,
             "blanks around " << Quote(field) << " changed the result");
  FUZZ_CHECK(Cleaned("\"" + field + "\"") == field,
             "quotes did not protect " << Quote(field));
  return 0;
}
