// IniPropertiesFormat.h - the sectioned INI format as the library reads and
// writes it: the line parser that fills an IniProperties store, the text a
// store is written as, and where a bound property's value lives in a store.
// Internal to the library: not installed.
//
// A line: the comment is cut at the first ';' ('#' is an ordinary byte). A
// line holding a '[' is cleaned as a whole; if it then starts with '[', it
// is a section header whose name runs to the last ']' (or, without one, to
// the end of the line). Other lines are entries as in the flat format,
// collected for the current section. A section read replaces the whole
// section of that name in the store; entries before the first header, or
// under "[]", are dropped. The text: an optional ";<header>" line, then per
// section in byte order "[name]", its entries, and an empty line.

#ifndef SRC_INIPROPERTIESFORMAT_H_
#define SRC_INIPROPERTIESFORMAT_H_

#include <map>

#include "IniProperties.h"
#include "Property.h"
#include "PropertyMessages.h"
#include "PropertyTextBuffer.h"
#include "PropertyTextWriter.h"
#include "PropertyThreadGuard.h"

class IniPropertiesFormat {
 public:
  // Whether a property's section is part of where it is kept.
  static const bool kSectioned = true;
  typedef IniProperties Store;

  // Takes the lines of one read into a store, section by section.
  class LineParser {
   public:
    static const char kCommentMark = ';';

    explicit LineParser(IniProperties& store);
    // Takes the line [line, end), which holds no NUL byte and no comment,
    // and whose first '=' is equals (null if none). Leaves the text as it
    // is.
    void Line(char* line, char* equals, char* end, int lineNumber);
    // Stores the entries of the last section.
    void Finish();

   private:
    typedef std::map<propstring, propstring> Section;

    // Makes m_pending the whole content of section m_current, unless no
    // named section has begun (then it is dropped). Leaves m_pending empty.
    void EndSection();

    std::map<propstring, Section>& m_sections;
    propstring m_current;  // Empty while no named section has begun.
    Section m_pending;     // The entries read under m_current.
    PropertyMessages::LoadingLines m_loading;
  };

  // Reads the line [line, end), its comment cut, as a header if it is one:
  // returns true with [line, end) moved to the cleaned header text (which
  // starts with '['). Otherwise returns false with [line, end) moved to the
  // text the line's entry is read from.
  static bool FindHeader(char*& line, char*& end);
  // The section name of the cleaned header text [text, end): up to the last
  // ']', or, for a header without one, the rest of the line.
  static void TakeSectionName(const char* text, const char* end,
                              propstring& name);

  // The sections of store, each with its entries, in byte order.
  typedef std::map<propstring, std::map<propstring, propstring> > Table;
  static const Table& Sections(const IniProperties& store);
  static Table& TableOf(IniProperties& store);

  // True if reading the text Render() makes of store and header gives store
  // itself and logs nothing but each entry's "Loading" line.
  static bool ReadsBackAlone(const IniProperties& store,
                             const propstring& header);
  // The same for one entry and its section's line.
  static bool EntryReadsBackAlone(const propstring& section,
                                  const propstring& key,
                                  const propstring& value);
  // Writes the messages that reading such a text logs, in order.
  static void WriteLoadingMessages(const IniProperties& store);

  // Entries given a new value, by section and key.
  typedef std::map<propstring, PropertyTextWriter::NewValues> Changes;
  // The value store holds for property, or null; logs nothing.
  static const propstring* Peek(const IniProperties& store, Property& property);
  // Appends to out what Render() makes of a store whose text was
  // text[0, size), written with header, once changes are made to it; false
  // if it cannot tell (out is then unspecified), as for a new section.
  static bool RenderChanged(const char* text, size_t size,
                            const propstring& header, const Changes& changes,
                            PropertyTextBuffer& out);

  // Appends the text that store is written as to text.
  static void Render(const IniProperties& store, const propstring& header,
                     PropertyTextBuffer& text);
  // Copies the value store holds for property (by section, then key) into
  // value and returns true; returns false (after the store's not-found log
  // line) if there is none.
  static bool Find(const IniProperties& store, Property& property,
                   propstring& value);
  // Puts the current value of property into store, under its section.
  static void Put(IniProperties& store, Property& property);

  // Why the entry of key and value would not be read back from a file of
  // this format exactly as given, as "the <part> <reason>" (or "its line
  // ..."), or "" if it would. section is the section it is written under.
  static propstring Unreadable(const propstring& section, const propstring& key,
                               const propstring& value);
};

#endif  // SRC_INIPROPERTIESFORMAT_H_
