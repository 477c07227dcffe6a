// PropertyTextBufferTest.cpp - the memory behind whole-file reads: a thread
// reuses its kept buffer, the largest it needed up to a limit, a buffer in
// use is never shared, and growing keeps the content.

#include "PropertyTextBuffer.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <thread>

#include "PropertyFile.h"
#include "support/TempDir.h"

namespace {

using test_support::TempDir;
using test_support::WriteFile;

const size_t kKept = PropertyTextBuffer::kKeptSize;
const size_t kLimit = PropertyTextBuffer::kKeptLimit;

// Runs test in a thread of its own, which starts without a kept buffer.
template <typename Test>
void InFreshThread(Test test) {
  std::thread thread(test);
  thread.join();
}

char* KeptBufferOfThisThread() {
  PropertyTextBuffer buffer;
  return buffer.Reserve(1, 0);
}

TEST(PropertyTextBufferTest, HoldsNothingBeforeTheFirstReserve) {
  PropertyTextBuffer buffer;
  EXPECT_EQ(nullptr, buffer.Data());
  EXPECT_EQ(0u, buffer.Capacity());
  EXPECT_EQ(0u, buffer.Size());
}

TEST(PropertyTextBufferTest, SmallReadGetsTheWholeKeptSize) {
  InFreshThread([] {
    PropertyTextBuffer buffer;
    buffer.Reserve(10, 0);
    EXPECT_EQ(kKept, buffer.Capacity());
  });
}

TEST(PropertyTextBufferTest, NextSmallReadOfTheThreadReusesTheSameMemory) {
  char* first = KeptBufferOfThisThread();
  EXPECT_EQ(first, KeptBufferOfThisThread());
}

TEST(PropertyTextBufferTest, BufferInUseIsNotLentToASecondReader) {
  PropertyTextBuffer outer;
  PropertyTextBuffer inner;
  char* outerData = outer.Reserve(100, 0);
  std::memset(outerData, 'o', 100);
  char* innerData = inner.Reserve(100, 0);
  EXPECT_NE(outerData, innerData);
  std::memset(innerData, 'i', 100);
  EXPECT_EQ(std::string(100, 'o'), std::string(outerData, 100));
}

TEST(PropertyTextBufferTest,
     TextOverTheLimitGetsMemoryOfItsOwnAndLeavesTheKeptOne) {
  InFreshThread([] {
    char* kept = KeptBufferOfThisThread();
    {
      PropertyTextBuffer large;
      EXPECT_NE(kept, large.Reserve(kLimit + 1, 0));
      EXPECT_EQ(kLimit + 1, large.Capacity());
    }
    EXPECT_EQ(kept, KeptBufferOfThisThread());
  });
}

TEST(PropertyTextBufferTest, LargerTextWithinTheLimitBecomesTheKeptBuffer) {
  InFreshThread([] {
    KeptBufferOfThisThread();
    char* large = nullptr;
    {
      PropertyTextBuffer buffer;
      large = buffer.Reserve(kLimit, 0);
    }
    PropertyTextBuffer next;
    EXPECT_EQ(large, next.Reserve(1, 0));
    EXPECT_EQ(kLimit, next.Capacity());
  });
}

TEST(PropertyTextBufferTest,
     SmallerBufferGivenBackLastDoesNotReplaceTheKeptOne) {
  InFreshThread([] {
    char* large = nullptr;
    {
      PropertyTextBuffer buffer;
      large = buffer.Reserve(2 * kKept, 0);
    }
    {
      PropertyTextBuffer outer;
      EXPECT_EQ(large, outer.Reserve(1, 0));
      PropertyTextBuffer inner;  // Given back first, while outer is in use.
      EXPECT_NE(large, inner.Reserve(1, 0));
      EXPECT_EQ(kKept, inner.Capacity());
    }
    PropertyTextBuffer next;
    EXPECT_EQ(large, next.Reserve(1, 0));
    EXPECT_EQ(2 * kKept, next.Capacity());
  });
}

TEST(PropertyTextBufferTest, GrowingKeepsTheRequestedPrefix) {
  PropertyTextBuffer buffer;
  char* data = buffer.Reserve(kKept, 0);
  for (size_t i = 0; i < kKept; ++i) data[i] = static_cast<char>(i * 7);
  data = buffer.Reserve(3 * kKept, kKept);
  ASSERT_GE(buffer.Capacity(), 3 * kKept);
  for (size_t i = 0; i < kKept; ++i) {
    ASSERT_EQ(static_cast<char>(i * 7), data[i]) << "at " << i;
  }
}

TEST(PropertyTextBufferTest, ReserveWithinCapacityChangesNothing) {
  InFreshThread([] {
    PropertyTextBuffer buffer;
    char* data = buffer.Reserve(kKept, 0);
    EXPECT_EQ(data, buffer.Reserve(kKept / 2, 0));
    EXPECT_EQ(kKept, buffer.Capacity());
  });
}

TEST(PropertyTextBufferTest, EveryThreadKeepsABufferOfItsOwn) {
  PropertyTextBuffer mine;
  char* myData = mine.Reserve(1, 0);
  char* otherData = nullptr;
  std::thread other([&otherData] {
    PropertyTextBuffer theirs;
    otherData = theirs.Reserve(1, 0);
    std::memset(otherData, 't', kKept);
  });
  other.join();
  EXPECT_NE(myData, otherData);
}

TEST(PropertyTextBufferTest, ReadWholeFillsTheBufferAndSetsItsSize) {
  TempDir dir;
  const std::string path = dir.File("text");
  const std::string text(kKept + 123, 'x');
  WriteFile(path, text);
  PropertyTextBuffer buffer;
  ASSERT_EQ(PropertyFile::kReadWhole, PropertyFile::ReadWhole(path, buffer));
  EXPECT_EQ(text, std::string(buffer.Data(), buffer.Size()));
  EXPECT_GT(buffer.Capacity(), buffer.Size());
}

TEST(PropertyTextBufferTest, ReadWholeOfAnEmptyFileGivesAnEmptyText) {
  TempDir dir;
  const std::string path = dir.File("empty");
  WriteFile(path, "");
  PropertyTextBuffer buffer;
  ASSERT_EQ(PropertyFile::kReadWhole, PropertyFile::ReadWhole(path, buffer));
  EXPECT_EQ(0u, buffer.Size());
}

// A file whose size is not known beforehand (the kernel reports 0) is still
// read whole.
TEST(PropertyTextBufferTest, ReadWholeReadsPastTheReportedSize) {
  PropertyTextBuffer buffer;
  ASSERT_EQ(PropertyFile::kReadWhole,
            PropertyFile::ReadWhole("/proc/self/status", buffer));
  EXPECT_GT(buffer.Size(), 0u);
  EXPECT_NE(
      nullptr,
      std::strstr(std::string(buffer.Data(), buffer.Size()).c_str(), "Umask:"));
}

TEST(PropertyTextBufferTest, AppendExtendGrowsAndKeepsEverything) {
  PropertyTextBuffer text;
  std::string expected;
  for (int i = 0; i < 20000; ++i) {
    const std::string piece = std::to_string(i) + ",";
    text.Append(piece);
    expected += piece;
  }
  text.Append('!');
  text.Append("", 0);
  expected += '!';
  ASSERT_EQ(expected.size(), text.Size());
  EXPECT_EQ(expected, std::string(text.Data(), text.Size()));
}

TEST(PropertyTextBufferTest, AppendExtendReturnsTheEndOfTheContent) {
  PropertyTextBuffer text;
  text.Append("abc", 3);
  char* end = text.Extend(2);
  EXPECT_EQ(text.Data() + 3, end);
  EXPECT_EQ(5u, text.Size());
}

TEST(PropertyTextBufferTest, AppendCopyCopiesEverySizeExactly) {
  std::string source;
  for (int i = 0; i < 100; ++i) source += static_cast<char>('A' + i % 50);
  for (size_t size = 0; size <= source.size(); ++size) {
    std::string target(source.size() + 8, '.');
    PropertyTextBuffer::Copy(&target[0], source.data(), size);
    EXPECT_EQ(source.substr(0, size), target.substr(0, size)) << size;
    EXPECT_EQ(std::string(target.size() - size, '.'), target.substr(size))
        << size;
  }
}

}  // namespace
