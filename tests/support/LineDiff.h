// LineDiff.h - which lines of a text another text keeps, for tests that
// check that an edit of a file changed only the lines it may.
//
//   std::vector<bool> keptOfTo;
//   std::vector<bool> keptOfFrom =
//       KeptLines(SplitLines(from), SplitLines(to), keptOfTo);

#ifndef TESTS_SUPPORT_LINEDIFF_H_
#define TESTS_SUPPORT_LINEDIFF_H_

#include <algorithm>
#include <string>
#include <vector>

namespace test_support {

// The lines of text without their line feeds; no empty line after a final
// line feed.
inline std::vector<std::string> SplitLines(const std::string& text) {
  std::vector<std::string> lines;
  size_t begin = 0;
  while (begin < text.size()) {
    size_t feed = text.find('\n', begin);
    if (feed == std::string::npos) feed = text.size();
    lines.push_back(text.substr(begin, feed - begin));
    begin = feed + 1;
  }
  return lines;
}

// Flags the lines of a that b keeps, in order (a longest common
// subsequence); keptOfB gets the same for the lines of b.
inline std::vector<bool> KeptLines(const std::vector<std::string>& a,
                                   const std::vector<std::string>& b,
                                   std::vector<bool>& keptOfB) {
  std::vector<std::vector<int> > length(a.size() + 1,
                                        std::vector<int>(b.size() + 1, 0));
  for (size_t i = a.size(); i-- > 0;) {
    for (size_t j = b.size(); j-- > 0;) {
      length[i][j] = a[i] == b[j]
                         ? length[i + 1][j + 1] + 1
                         : std::max(length[i + 1][j], length[i][j + 1]);
    }
  }
  std::vector<bool> keptOfA(a.size(), false);
  keptOfB.assign(b.size(), false);
  for (size_t i = 0, j = 0; i < a.size() && j < b.size();) {
    if (a[i] == b[j]) {
      keptOfA[i++] = true;
      keptOfB[j++] = true;
    } else if (length[i + 1][j] >= length[i][j + 1]) {
      ++i;
    } else {
      ++j;
    }
  }
  return keptOfA;
}

}  // namespace test_support

#endif  // TESTS_SUPPORT_LINEDIFF_H_
