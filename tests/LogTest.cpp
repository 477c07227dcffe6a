// The library's own Log: it discards everything and never reads its
// arguments. Built without the test recorder in front of it.

#include <gtest/gtest.h>

#include "Properties.h"
#include "PropertyThreadGuard.h"

namespace {

char kMismatchedFormat[] = "%s %s %n %d";
char kPlainFormat[] = "plain text";

TEST(LogTest, IgnoresFormatWhoseArgumentsDoNotMatch) {
  // Reading these arguments as the format says would dereference an int as a
  // string and write through %n; a discarding Log must do neither.
  Log(1, kMismatchedFormat, 42);
  Log(-7, kMismatchedFormat);
  SUCCEED();
}

TEST(LogTest, AcceptsAnyLevelAndNullFormat) {
  Log(0, kPlainFormat);
  Log(12345, nullptr);
  SUCCEED();
}

}  // namespace
