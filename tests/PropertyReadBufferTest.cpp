// PropertyReadBufferTest.cpp - the memory behind whole-file reads: a thread
// reuses its kept buffer, a buffer in use is never shared, and growing keeps
// the content.

#include "PropertyReadBuffer.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <thread>

#include "PropertyFile.h"
#include "support/TempDir.h"

namespace {

using test_support::TempDir;
using test_support::WriteFile;

const size_t kKept = PropertyReadBuffer::kKeptSize;

char* KeptBufferOfThisThread() {
  PropertyReadBuffer buffer;
  return buffer.Reserve(1, 0);
}

TEST(PropertyReadBufferTest, HoldsNothingBeforeTheFirstReserve) {
  PropertyReadBuffer buffer;
  EXPECT_EQ(nullptr, buffer.Data());
  EXPECT_EQ(0u, buffer.Capacity());
  EXPECT_EQ(0u, buffer.Size());
}

TEST(PropertyReadBufferTest, SmallReadGetsTheWholeKeptSize) {
  PropertyReadBuffer buffer;
  buffer.Reserve(10, 0);
  EXPECT_EQ(kKept, buffer.Capacity());
}

TEST(PropertyReadBufferTest, NextSmallReadOfTheThreadReusesTheSameMemory) {
  char* first = KeptBufferOfThisThread();
  EXPECT_EQ(first, KeptBufferOfThisThread());
}

TEST(PropertyReadBufferTest, BufferInUseIsNotLentToASecondReader) {
  PropertyReadBuffer outer;
  PropertyReadBuffer inner;
  char* outerData = outer.Reserve(100, 0);
  std::memset(outerData, 'o', 100);
  char* innerData = inner.Reserve(100, 0);
  EXPECT_NE(outerData, innerData);
  std::memset(innerData, 'i', 100);
  EXPECT_EQ(std::string(100, 'o'), std::string(outerData, 100));
}

TEST(PropertyReadBufferTest, LargeReadGetsMemoryOfItsOwnAndLeavesTheKeptOne) {
  char* kept = KeptBufferOfThisThread();
  {
    PropertyReadBuffer large;
    EXPECT_NE(kept, large.Reserve(kKept + 1, 0));
    EXPECT_EQ(kKept + 1, large.Capacity());
  }
  EXPECT_EQ(kept, KeptBufferOfThisThread());
}

TEST(PropertyReadBufferTest, GrowingKeepsTheRequestedPrefix) {
  PropertyReadBuffer buffer;
  char* data = buffer.Reserve(kKept, 0);
  for (size_t i = 0; i < kKept; ++i) data[i] = static_cast<char>(i * 7);
  data = buffer.Reserve(3 * kKept, kKept);
  ASSERT_GE(buffer.Capacity(), 3 * kKept);
  for (size_t i = 0; i < kKept; ++i) {
    ASSERT_EQ(static_cast<char>(i * 7), data[i]) << "at " << i;
  }
}

TEST(PropertyReadBufferTest, ReserveWithinCapacityChangesNothing) {
  PropertyReadBuffer buffer;
  char* data = buffer.Reserve(kKept, 0);
  EXPECT_EQ(data, buffer.Reserve(kKept / 2, 0));
  EXPECT_EQ(kKept, buffer.Capacity());
}

TEST(PropertyReadBufferTest, EveryThreadKeepsABufferOfItsOwn) {
  PropertyReadBuffer mine;
  char* myData = mine.Reserve(1, 0);
  char* otherData = nullptr;
  std::thread other([&otherData] {
    PropertyReadBuffer theirs;
    otherData = theirs.Reserve(1, 0);
    std::memset(otherData, 't', kKept);
  });
  other.join();
  EXPECT_NE(myData, otherData);
}

TEST(PropertyReadBufferTest, ReadWholeFillsTheBufferAndSetsItsSize) {
  TempDir dir;
  const std::string path = dir.File("text");
  const std::string text(kKept + 123, 'x');
  WriteFile(path, text);
  PropertyReadBuffer buffer;
  ASSERT_EQ(PropertyFile::kReadWhole, PropertyFile::ReadWhole(path, buffer));
  EXPECT_EQ(text, std::string(buffer.Data(), buffer.Size()));
  EXPECT_GT(buffer.Capacity(), buffer.Size());
}

TEST(PropertyReadBufferTest, ReadWholeOfAnEmptyFileGivesAnEmptyText) {
  TempDir dir;
  const std::string path = dir.File("empty");
  WriteFile(path, "");
  PropertyReadBuffer buffer;
  ASSERT_EQ(PropertyFile::kReadWhole, PropertyFile::ReadWhole(path, buffer));
  EXPECT_EQ(0u, buffer.Size());
}

// A file whose size is not known beforehand (the kernel reports 0) is still
// read whole.
TEST(PropertyReadBufferTest, ReadWholeReadsPastTheReportedSize) {
  PropertyReadBuffer buffer;
  ASSERT_EQ(PropertyFile::kReadWhole,
            PropertyFile::ReadWhole("/proc/self/status", buffer));
  EXPECT_GT(buffer.Size(), 0u);
  EXPECT_NE(nullptr, std::strstr(std::string(buffer.Data(), buffer.Size())
                                     .c_str(),
                                 "Umask:"));
}

}  // namespace
