// PropertyTextWriterTest.cpp - header and entry lines, in a text and on a
// stream.

#include "PropertyTextWriter.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "PropertyTextBuffer.h"

namespace {

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

}  // namespace
