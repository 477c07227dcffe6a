// PropertyParseCacheTest.cpp - a binding that reads the bytes it read or
// wrote last takes their table instead of parsing them again, and nothing a
// program sees changes: the same operation sequences, run with reuse on and
// off, give the same file bytes, values, notifications (in order) and log
// messages (in order, with the same arguments), for both formats. The
// cache's own rules are tested directly first.

#include "PropertyParseCache.h"

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "IniProperties.h"
#include "IniPropertiesFormat.h"
#include "JavaProperties.h"
#include "JavaPropertiesFormat.h"
#include "PropertyChangeListener.h"
#include "PropertyFileBinding.h"
#include "PropertyFileWatcher.h"
#include "PropertyMessages.h"
#include "PropertySafety.h"
#include "PropertyTextBuffer.h"
#include "PropertyTextReader.h"
#include "support/Flavours.h"
#include "support/LogRecorder.h"
#include "support/SafetySettings.h"
#include "support/TempDir.h"

namespace {

using test_support::LogRecorder;
using test_support::Messages;
using test_support::ReadFile;
using test_support::ScopedLongLines;
using test_support::TempDir;
using test_support::WriteFile;

typedef PropertyParseCache<JavaPropertiesFormat> FlatCache;

// The two formats, as the patch test sets entries.
struct FlatShape {
  typedef JavaPropertiesFormat Format;
  static constexpr bool kSectioned = false;
  static void Set(JavaProperties& store, const std::string&,
                  const std::string& key, const std::string& value) {
    store.SetProperty(key, value);
  }
};
struct IniShape {
  typedef IniPropertiesFormat Format;
  static constexpr bool kSectioned = true;
  static void Set(IniProperties& store, const std::string& section,
                  const std::string& key, const std::string& value) {
    store.SetProperty(section, key, value);
  }
};

// A binding's address, as the cache knows bindings.
const int kBinding = 0;

// Parses text into store as a binding does, keeping it for kBinding.
void ReadAndKeep(const std::string& text, JavaProperties& store) {
  PropertyTextBuffer buffer;
  char* data = buffer.Reserve(text.size() + 1, 0);
  text.copy(data, text.size());
  PropertyMessages::Recording messages;
  JavaPropertiesFormat::LineParser parser(store);
  {
    PropertyMessages::Recording::Scope recording(messages);
    PropertyTextReader::ParseText(data, text.size(), parser);
  }
  FlatCache::KeepRead(&kBinding, text.data(), text.size(), store, messages);
}

bool Reuse(const std::string& text, JavaProperties& store) {
  return FlatCache::Reuse(&kBinding, text.data(), text.size(), store, false);
}

class PropertyParseCacheTest : public testing::Test {
 protected:
  ~PropertyParseCacheTest() override { FlatCache::Forget(&kBinding); }
  LogRecorder m_log;
};

TEST_F(PropertyParseCacheTest, SameBytesGiveTheTableAndTheMessagesAgain) {
  const std::string text = "b=2\na=1\nb=3\n";
  JavaProperties read;
  ReadAndKeep(text, read);
  const Messages logged = m_log.Messages();
  m_log.Clear();
  JavaProperties reused;
  ASSERT_TRUE(Reuse(text, reused));
  EXPECT_EQ(JavaPropertiesFormat::Entries(read),
            JavaPropertiesFormat::Entries(reused));
  EXPECT_EQ(logged, m_log.Messages());
  EXPECT_EQ((Messages{"Loading 'b' to '2'", "Loading 'a' to '1'",
                      "Line 3 redefines a property", "Loading 'b' to '3'"}),
            logged);
}

TEST_F(PropertyParseCacheTest, OtherBytesAreNotReused) {
  JavaProperties read;
  ReadAndKeep("a=1\n", read);
  JavaProperties other;
  EXPECT_FALSE(Reuse("a=2\n", other));
  EXPECT_FALSE(Reuse("a=1\n\n", other));
  EXPECT_TRUE(JavaPropertiesFormat::Entries(other).empty());
}

TEST_F(PropertyParseCacheTest, ChangedLongLinesChoiceParsesAnew) {
  JavaProperties read;
  {
    ScopedLongLines longLines(false);
    ReadAndKeep("a=1\n", read);
  }
  ScopedLongLines longLines(true);
  JavaProperties again;
  EXPECT_FALSE(Reuse("a=1\n", again));
}

TEST_F(PropertyParseCacheTest, WrittenTableGivesItsLoadingLines) {
  JavaProperties store;
  store.SetProperty("b", "2");
  store.SetProperty("a", "1");
  const std::string text = "#h\na=1\nb=2\n";
  FlatCache::KeepWritten(&kBinding, text.data(), text.size(), store, "h");
  m_log.Clear();
  JavaProperties reused;
  ASSERT_TRUE(Reuse(text, reused));
  EXPECT_EQ((Messages{"Loading 'a' to '1'", "Loading 'b' to '2'"}),
            m_log.Messages());
  EXPECT_EQ("2", reused.GetProperty("b"));
}

TEST_F(PropertyParseCacheTest, WrittenTableThatReadsBackOtherwiseIsNotKept) {
  for (const std::string& value :
       std::vector<std::string>{" 1", "a#b", "\"q", std::string(509, 'v')}) {
    JavaProperties store;
    store.SetProperty("a", value);
    const std::string text = "a=" + value + "\n";
    FlatCache::KeepWritten(&kBinding, text.data(), text.size(), store, "");
    JavaProperties reused;
    EXPECT_FALSE(Reuse(text, reused)) << value;
  }
}

TEST_F(PropertyParseCacheTest, HeaderThatAddsLinesIsNotKept) {
  JavaProperties store;
  store.SetProperty("a", "1");
  const std::string text = "#x\nb=2\na=1\n";
  FlatCache::KeepWritten(&kBinding, text.data(), text.size(), store, "x\nb=2");
  JavaProperties reused;
  EXPECT_FALSE(Reuse(text, reused));
}

TEST_F(PropertyParseCacheTest, TakenTableIsGoneUntilKeptAgain) {
  JavaProperties read;
  ReadAndKeep("a=1\n", read);
  JavaProperties taken;
  ASSERT_TRUE(FlatCache::Reuse(&kBinding, "a=1\n", 4, taken, true));
  EXPECT_EQ("1", taken.GetProperty("a"));
  JavaProperties again;
  EXPECT_FALSE(Reuse("a=1\n", again));
}

TEST_F(PropertyParseCacheTest, TableGivenBackIsReusedAgain) {
  JavaProperties read;
  ReadAndKeep("a=1\n", read);
  JavaProperties lent;
  ASSERT_TRUE(FlatCache::Reuse(&kBinding, "a=1\n", 4, lent, true));
  FlatCache::GiveBack(&kBinding, lent);
  JavaProperties again;
  ASSERT_TRUE(Reuse("a=1\n", again));
  EXPECT_EQ("1", again.GetProperty("a"));
}

// A table taken with its bytes belongs to a rewrite that keeps or forgets
// it; given back (after a rewrite that did not end), nothing stays kept,
// not even under the bytes now moved out (which an empty file would match).
TEST_F(PropertyParseCacheTest, TableTakenWithItsBytesIsForgottenWhenGivenBack) {
  JavaProperties read;
  ReadAndKeep("a=1\n", read);
  JavaProperties taken;
  std::string bytes;
  ASSERT_TRUE(
      FlatCache::Reuse(&kBinding, "a=1\n", 4, taken, true, nullptr, &bytes));
  EXPECT_EQ("a=1\n", bytes);
  FlatCache::GiveBack(&kBinding, taken);
  JavaProperties again;
  EXPECT_FALSE(Reuse("a=1\n", again));
  EXPECT_FALSE(Reuse("", again));
}

// The bytes kept from a write take spare memory only if it is not much more
// than they need: a large file rewritten small keeps no large buffer.
TEST_F(PropertyParseCacheTest, KeptBytesTakeSpareMemoryOnlyOfAboutTheirSize) {
  // Longer than a string holds without memory of its own.
  const std::string key = "server.connection.timeout";
  const std::string value = "1500 milliseconds";
  const std::string text = key + "=" + value + "\n";
  std::string large;
  large.reserve(1 << 20);
  JavaProperties store;
  store.SetProperty(key, value);
  FlatCache::KeepWritten(&kBinding, text.data(), text.size(), store, "",
                         nullptr, &large);
  EXPECT_GE(large.capacity(), 1u << 20);
  std::string fitting;
  fitting.reserve(text.size());
  const char* const memory = fitting.data();
  JavaProperties again;
  again.SetProperty(key, value);
  FlatCache::KeepWritten(&kBinding, text.data(), text.size(), again, "",
                         nullptr, &fitting);
  EXPECT_NE(memory, fitting.data());
  JavaProperties reused;
  EXPECT_TRUE(Reuse(text, reused));
}

// The text of a table a binding wrote, patched where entries change, is the
// text of the changed table: random tables and changes, both formats.
template <typename Format>
std::string Rendered(const typename Format::Store& store,
                     const std::string& header) {
  PropertyTextBuffer text;
  Format::Render(store, header, text);
  return std::string(text.Data(), text.Size());
}

template <typename Shape>
void ExpectPatchedTextIsTheTablesText(unsigned seed) {
  typedef typename Shape::Format Format;
  std::mt19937 random(seed);
  const auto pick = [&random](int n) {
    return std::uniform_int_distribution<int>(0, n - 1)(random);
  };
  const char* const keys[] = {"", "a", "ab", "b", "B", "a.b", "\xc3\xa4", "z"};
  const char* const sections[] = {"s", "t", "u v"};
  const auto key = [&] { return std::string(keys[pick(8)]); };
  const auto section = [&] {
    return Shape::kSectioned ? std::string(sections[pick(3)]) : std::string();
  };
  typename Format::Store store;
  for (int i = pick(12); i > 0; --i) {
    Shape::Set(store, section(), key(), std::to_string(pick(100)));
  }
  const std::string header = pick(2) ? "h" : "";
  const std::string before = Rendered<Format>(store, header);
  typename Format::Changes changes;
  for (int i = pick(5); i > 0; --i) {
    const std::string s = section(), k = key(), v = std::to_string(pick(100));
    changes[s][k] = v;
    Shape::Set(store, s, k, v);
  }
  PropertyTextBuffer patched;
  if (Format::RenderChanged(before.data(), before.size(), header, changes,
                            patched)) {
    EXPECT_EQ(Rendered<Format>(store, header),
              std::string(patched.Data(), patched.Size()))
        << "seed " << seed;
  } else {
    // Only a section the text lacks is left to the whole rendering.
    EXPECT_TRUE(Shape::kSectioned) << "seed " << seed;
  }
}

TEST(PropertyParseCachePatchTest, PatchedTextIsTheChangedTablesText) {
  for (unsigned seed = 1; seed <= 2000; ++seed) {
    ExpectPatchedTextIsTheTablesText<FlatShape>(seed);
    ExpectPatchedTextIsTheTablesText<IniShape>(seed);
  }
}

// Differential runs --------------------------------------------------------

// Records every change it is told of, with the value, in order.
class ChangeLog : public PropertyChangeListener {
 public:
  explicit ChangeLog(std::vector<std::string>* events) : m_events(events) {}
  void PropertyChanged(Property* property) override {
    m_events->push_back("changed " + property->GetSection() + "/" +
                        property->GetKey() + "=" + property->GetValue());
  }

 private:
  std::vector<std::string>* m_events;
};

// The texts hand edits write: few, so that the same bytes come back, and
// shaped to make every message of the readers.
std::vector<std::string> HandTexts(bool ini) {
  // The INI flavour's properties live in the section "net".
  const std::string section = ini ? "[net]\n" : "";
  return {
      section + "a=1\nb=2\n",
      section + "# note\n a = 7 \nc=x\na=8\n",
      section + "b=\"q\"\nc=3\n" + std::string(511, 'z') + "\n",
      // The key " a" is written bare and reads back as "a".
      section + "\" a\"=5\nb=1\n",
      ini ? "x=0\n[net]\na=4\n[t]\nk=v\n[net]\nb=5\n" : "a=4\n\nb=\"5\n",
      "",
  };
}

// Runs the operations that seed picks on a manager of flavour F bound to
// path and returns everything observable: after each operation the file's
// bytes and every value, and every notification and log message, in order.
template <typename F>
std::vector<std::string> Observe(unsigned seed, const std::string& path) {
  std::vector<std::string> events;
  LogRecorder log;
  log.OnMessage([&events](const std::string& message) {
    events.push_back("log " + message);
  });
  std::mt19937 random(seed);
  const auto pick = [&random](int n) {
    return std::uniform_int_distribution<int>(0, n - 1)(random);
  };
  const std::vector<std::string> texts = HandTexts(F::kSectioned);
  const char* const keys[] = {"a", "b", "c", "d"};
  // " 3" and "\"q" are written bare and read back otherwise.
  const char* const values[] = {"1", "2", "x", "10", "#", " 3", "\"q"};
  WriteFile(path, texts[pick(static_cast<int>(texts.size()))]);
  ChangeLog changes(&events);
  {
    typename F::Manager manager("observed", F::LibraryFactory());
    manager.AddChangeListener(&changes);
    manager.RegisterPersistence(path, "h");
    std::vector<std::string> registered;
    for (int step = 0; step < 40; ++step) {
      const std::string key = keys[pick(4)];
      switch (pick(7)) {
        case 0:
        case 1:
          if (F::Find(manager, key) == nullptr) {
            F::Register(
                &manager,
                pick(2) ? "PROPERTY_TYPE_INTEGER" : "PROPERTY_TYPE_STRING", key,
                "0");
            registered.push_back(key);
          }
          break;
        case 2:
        case 3:
          if (F::Find(manager, key) != nullptr) {
            try {
              F::Set(&manager, key, values[pick(7)]);
            } catch (Property::WrongValue& e) {
              events.push_back("rejected " + e.m_message);
            }
          }
          break;
        case 4:
          WriteFile(path, texts[pick(static_cast<int>(texts.size()))]);
          break;
        case 5:
          PropertyFileWatcher::Reload(&manager);
          break;
        case 6:
          manager.UnRegisterPersistence(path);
          manager.RegisterPersistence(path, pick(2) ? "h" : "");
          break;
      }
      events.push_back("file " + ReadFile(path));
      for (const std::string& known : registered) {
        if (F::Find(manager, known) != nullptr) {
          events.push_back("value " + known + "=" + F::Get(manager, known));
        }
      }
    }
  }
  return events;
}

template <typename F>
class ReuseDifferentialTest : public testing::Test {
 protected:
  typedef PropertyFileBinding<JavaPropertiesFormat> Binding;
  ~ReuseDifferentialTest() override {
    PropertyParseCache<JavaPropertiesFormat>::SetEnabled(true);
    Binding::SetHeldPasses(Binding::kWhereOnlyOwnCodeRuns);
  }
  // Every run uses one path: it stands in messages. Held: every rewrite
  // holds the file's lock through its pass (this Log() only records).
  std::vector<std::string> Run(unsigned seed, bool reuse, bool held) {
    PropertyParseCache<JavaPropertiesFormat>::SetEnabled(reuse);
    Binding::SetHeldPasses(held ? Binding::kEvery : Binding::kNone);
    return Observe<F>(seed, m_dir.File("shared"));
  }
  TempDir m_dir;
  ScopedLongLines m_longLines{true};  // The 511-character line is read.
};

TYPED_TEST_SUITE(ReuseDifferentialTest, test_support::Flavours,
                 test_support::FlavourNames);

TYPED_TEST(ReuseDifferentialTest, ReuseChangesNothingAProgramSees) {
  for (unsigned seed = 1; seed <= 60; ++seed) {
    const std::vector<std::string> without = this->Run(seed, false, false);
    ASSERT_EQ(without, this->Run(seed, true, false)) << "seed " << seed;
  }
}

// A rewrite that holds the file's lock from its read to its write reads
// and writes the file it opened for the lock, with reuse on and off.
TYPED_TEST(ReuseDifferentialTest, HeldPassChangesNothingAProgramSees) {
  for (unsigned seed = 1; seed <= 60; ++seed) {
    const std::vector<std::string> unheld = this->Run(seed, false, false);
    ASSERT_EQ(unheld, this->Run(seed, false, true)) << "seed " << seed;
    ASSERT_EQ(unheld, this->Run(seed, true, true)) << "seed " << seed;
  }
}

}  // namespace
