// PropertyTextWriterTest.cpp - header and entry lines, in a text and on a
// stream; and the library's own rewrites (the text assembled in memory and
// written in one go) against the stream writer: the same bytes at every
// size, around and far beyond the buffer a thread keeps.

#include "PropertyTextWriter.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <type_traits>

#include "IniProperties.h"
#include "JavaProperties.h"
#include "PropertyTextBuffer.h"
#include "support/TempDir.h"

namespace {

using test_support::ReadFile;
using test_support::TempDir;

std::string Text(const PropertyTextBuffer& text) {
  return std::string(text.Data(), text.Size());
}

// Counts the flushes of the stream it is attached to.
class FlushCounter : public std::stringbuf {
 public:
  int flushes = 0;

 protected:
  int sync() override {
    ++flushes;
    return 0;
  }
};

TEST(PropertyTextWriterTest, AppendHeaderWritesAMarkedLineUnlessEmpty) {
  PropertyTextBuffer text;
  PropertyTextWriter::AppendHeader('#', "", text);
  EXPECT_EQ("", Text(text));
  PropertyTextWriter::AppendHeader(';', "made by x", text);
  EXPECT_EQ(";made by x\n", Text(text));
}

TEST(PropertyTextWriterTest, AppendEntryWritesKeyEqualsValueAsItStands) {
  PropertyTextBuffer text;
  PropertyTextWriter::AppendEntry(" k ", "\"v#\"", text);
  PropertyTextWriter::AppendEntry("", "", text);
  EXPECT_EQ(" k =\"v#\"\n=\n", Text(text));
}

TEST(PropertyTextWriterTest, StreamLinesEndWithALineFeedAndAFlush) {
  FlushCounter buffer;
  std::ostream out(&buffer);
  PropertyTextWriter::WriteHeader(out, '#', "");
  EXPECT_EQ(0, buffer.flushes);
  PropertyTextWriter::WriteHeader(out, '#', "h");
  PropertyTextWriter::WriteEntry(out, "a", "b=c");
  PropertyTextWriter::WriteLine(out, "");
  EXPECT_EQ("#h\na=b=c\n\n", buffer.str());
  EXPECT_EQ(3, buffer.flushes);
}

const char kHeader[] = "written by PropertyTextWriterTest";

// Fills store with entries until its text is at least size bytes long.
void FillTo(size_t size, JavaProperties& store) {
  size_t written = 0;
  for (int i = 0; written < size; ++i) {
    const std::string key = "key" + std::to_string(1000000 + i);
    // Now and then a long line, so that a line may straddle a growth.
    const std::string value(i % 256 == 255 ? 400 : static_cast<size_t>(i % 97),
                            'v');
    store.SetProperty(key, value);
    written += key.size() + value.size() + 2;
  }
}

void FillTo(size_t size, IniProperties& store) {
  size_t written = 0;
  for (int i = 0; written < size; ++i) {
    const std::string section = "section" + std::to_string(i / 20);
    const std::string key = "key" + std::to_string(i);
    const std::string value(static_cast<size_t>(i % 89), 'v');
    store.SetProperty(section, key, value);
    written += key.size() + value.size() + 2;
    if (i % 20 == 0) written += section.size() + 4;
  }
}

template <typename Store>
std::string StreamText(Store& store) {
  std::ostringstream out;
  EXPECT_TRUE(store.Store(out, kHeader));
  return out.str();
}

template <typename Store>
class PropertyTextWriterRewriteTest : public testing::Test {
 protected:
  // The file text and the stream text of a table of about size bytes.
  void ExpectSameBytesAt(size_t size) {
    Store store;
    FillTo(size, store);
    const std::string path = m_dir.File("out" + std::to_string(size));
    ASSERT_TRUE(store.Store(path, kHeader));
    const std::string expected = StreamText(store);
    EXPECT_EQ(expected, ReadFile(path)) << "at about " << size << " bytes";
    EXPECT_EQ(expected, store.ToText(kHeader));
  }

  TempDir m_dir;
};

typedef testing::Types<JavaProperties, IniProperties> Stores;
class StoreNames {
 public:
  template <typename Store>
  static std::string GetName(int) {
    return std::is_same<Store, IniProperties>::value ? "Ini" : "Flat";
  }
};
TYPED_TEST_SUITE(PropertyTextWriterRewriteTest, Stores, StoreNames);

TYPED_TEST(PropertyTextWriterRewriteTest, EmptyTableWritesTheHeaderOnly) {
  TypeParam store;
  const std::string path = this->m_dir.File("empty");
  ASSERT_TRUE(store.Store(path, kHeader));
  EXPECT_EQ(StreamText(store), ReadFile(path));
}

TYPED_TEST(PropertyTextWriterRewriteTest, SmallTableWritesTheStreamBytes) {
  this->ExpectSameBytesAt(100);
}

TYPED_TEST(PropertyTextWriterRewriteTest,
           TextAroundTheKeptBufferWritesTheStreamBytes) {
  // Around the 64 KiB buffer a thread keeps for rewrites.
  for (size_t size : {65536u - 64u, 65536u, 65536u + 64u}) {
    this->ExpectSameBytesAt(size);
  }
}

TYPED_TEST(PropertyTextWriterRewriteTest, LargeTextWritesTheStreamBytes) {
  this->ExpectSameBytesAt(3000000);
}

}  // namespace
