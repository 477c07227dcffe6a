// StoreTesting.h - stream doubles and texts for the tests of the key=value
// and INI stores: a source whose read fails midway, a sink that records every
// flush, a sink that takes nothing, and lines of a chosen length.

#ifndef TESTS_SUPPORT_STORETESTING_H_
#define TESTS_SUPPORT_STORETESTING_H_

#include <cstddef>
#include <sstream>
#include <streambuf>
#include <string>
#include <vector>

namespace test_support {

// Serves before, then fails the next read by throwing (which turns the
// reading stream bad), and serves after from then on.
class FailingSource : public std::streambuf {
 public:
  explicit FailingSource(const std::string& before,
                         const std::string& after = "");

 protected:
  int_type underflow() override;

 private:
  std::string m_before;
  std::string m_after;
  bool m_failed = false;
};

// Keeps the text written so far at every flush.
class FlushRecorder : public std::stringbuf {
 public:
  std::vector<std::string> flushed;

 protected:
  int sync() override;
};

// Takes no byte: every write to a stream on it fails.
class RefusingSink : public std::streambuf {
 protected:
  int_type overflow(int_type) override;
};

// A line of length characters: "k=" and then x's. REQUIRES: length >= 2.
std::string LineOfLength(size_t length);

}  // namespace test_support

#endif  // TESTS_SUPPORT_STORETESTING_H_
