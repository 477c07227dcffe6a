// JavaPropertiesFormat.h - the flat key=value format as the library reads
// and writes it: the line parser that fills a JavaProperties table, the text
// a table is written as, and where a bound property's value lives in a
// table. Internal to the library: not installed.
//
// A line: the comment is cut at the first '#' (anywhere, also inside
// quotes), the rest is split at the first '=', and both fields are cleaned
// (PropertyTextReader::ExtractField). Lines without '=' are ignored. The
// text: an optional "#<header>" line, then "<key>=<value>" lines in byte
// order of the keys.

#ifndef SRC_JAVAPROPERTIESFORMAT_H_
#define SRC_JAVAPROPERTIESFORMAT_H_

#include <map>

#include "JavaProperties.h"
#include "Property.h"
#include "PropertyMessages.h"
#include "PropertyTextBuffer.h"
#include "PropertyTextWriter.h"
#include "PropertyThreadGuard.h"

class JavaPropertiesFormat {
 public:
  // Whether a property's section is part of where it is kept.
  static const bool kSectioned = false;
  typedef JavaProperties Store;

  // Takes the lines of one read into a table (merging: existing keys are
  // overwritten, and a repeated key is logged).
  class LineParser {
   public:
    static const char kCommentMark = '#';

    explicit LineParser(JavaProperties& store);
    // Takes the line [line, end), which holds no NUL byte and no comment,
    // and whose first '=' is equals (null if none). Leaves the text as it
    // is.
    void Line(char* line, char* equals, char* end, int lineNumber);
    void Finish();

   private:
    std::map<propstring, propstring>& m_table;
    PropertyMessages::LoadingLines m_loading;
  };

  // The entries of store, in byte order of the keys.
  typedef std::map<propstring, propstring> Table;
  static const Table& Entries(const JavaProperties& store);
  static Table& TableOf(JavaProperties& store);

  // True if reading the text Render() makes of store and header gives store
  // itself and logs nothing but each entry's "Loading" line.
  static bool ReadsBackAlone(const JavaProperties& store,
                             const propstring& header);
  // The same for one entry (section is not used).
  static bool EntryReadsBackAlone(const propstring& section,
                                  const propstring& key,
                                  const propstring& value);
  // Writes the messages that reading such a text logs, in order.
  static void WriteLoadingMessages(const JavaProperties& store);

  // Entries given a new value, by section ("" here) and key.
  typedef std::map<propstring, PropertyTextWriter::NewValues> Changes;
  // The value store holds for property, or null; logs nothing.
  static const propstring* Peek(const JavaProperties& store,
                                Property& property);
  // Appends to out what Render() makes of a store whose text was
  // text[0, size), written with header, once changes are made to it; false
  // if it cannot tell (out is then unspecified).
  static bool RenderChanged(const char* text, size_t size,
                            const propstring& header, const Changes& changes,
                            PropertyTextBuffer& out);

  // Appends the text that store is written as to text.
  static void Render(const JavaProperties& store, const propstring& header,
                     PropertyTextBuffer& text);
  // Copies the value store holds for property into value and returns true;
  // returns false (after the store's not-found log line) if there is none.
  static bool Find(const JavaProperties& store, Property& property,
                   propstring& value);
  // Puts the current value of property into store.
  static void Put(JavaProperties& store, Property& property);

  // Why the entry of key and value would not be read back from a file of
  // this format exactly as given, as "the <part> <reason>" (or "its line
  // ..."), or "" if it would. section is not used: the format has none.
  static propstring Unreadable(const propstring& section, const propstring& key,
                               const propstring& value);
};

#endif  // SRC_JAVAPROPERTIESFORMAT_H_
