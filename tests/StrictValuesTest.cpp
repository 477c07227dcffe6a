// StrictValuesTest.cpp - strict values (PropertySafety::SetStrictValues): a
// manager that keeps them refuses every key, section, value and header that
// its file would not give back as given, and changes nothing when it does;
// without them the same calls are accepted as they always were. What both
// flavours do is tested once over the traits; sections are the INI
// flavour's alone.

#include <gtest/gtest.h>

#include <new>
#include <string>
#include <vector>

#include "IniProperties.h"
#include "Property.h"
#include "PropertySafety.h"
#include "support/FlavourFixtures.h"
#include "support/Flavours.h"
#include "support/MutexProbe.h"
#include "support/PropertyTesting.h"
#include "support/Recorders.h"
#include "support/SafetySettings.h"
#include "support/TempDir.h"

namespace {

using namespace std::string_literals;

using test_support::EventList;
using test_support::FileExists;
using test_support::FlavourNames;
using test_support::Flavours;
using test_support::Ini;
using test_support::IsFreeForOtherThreads;
using test_support::kAccepted;
using test_support::kHeader;
using test_support::kStringType;
using test_support::Messages;
using test_support::ReadFile;
using test_support::ScopedStrictValues;
using test_support::WriteFile;
using test_support::WrongValueMessage;

const char kListType[] = "PROPERTY_TYPE_LIST";

// A text with a line feed in it that, stored verbatim, makes a second entry.
const char kInjected[] = "eve\nadmin=true";

// A text a strict manager is expected to refuse, and why.
struct Refused {
  std::string text;
  std::string shown;  // The text as the message shows it (keys, sections).
  std::string reason;
};

// The test's fixture keeps strict values on for every manager without a
// choice of its own; tests of the lenient behaviour turn them off inside.
template <typename F>
class StrictValuesTest : public test_support::ManagerFixture<F> {
 protected:
  StrictValuesTest() : m_strict(true) {}

  // The message of a refused key (shown as the message shows it) of the
  // traits' section, with reason.
  static std::string Refusal(const std::string& shownKey,
                             const std::string& reason) {
    return F::kSectioned
               ? "Property '" + shownKey + "' of section '" + F::kSection +
                     "' can not be kept in its file: " + reason
               : "Property '" + shownKey +
                     "' can not be kept in its file: " + reason;
  }

  // "holds '#'" or "holds ';'": the reason for the flavour's comment
  // character in a field.
  static std::string HoldsComment() { return "holds '"s + F::kComment + "'"; }

  // Writes a file with one entry of an unregistered key, binds it read-write
  // and starts listening and logging afresh. Returns the file's text.
  std::string BindFile() {
    const std::string text = F::Written(kHeader, "other=1\n");
    WriteFile(this->m_path, text);
    this->m_manager.RegisterPersistence(this->m_path, kHeader);
    StartWatching();
    return text;
  }

  // BindFile() with "nickname" stored as "eve" and registered as a string.
  // Returns the file's text after the registration.
  std::string BindNickname() {
    WriteFile(this->m_path, F::Written(kHeader, "nickname=eve\n"));
    this->m_manager.RegisterPersistence(this->m_path, kHeader);
    this->Register(kStringType, "nickname", "none");
    StartWatching();
    return ReadFile(this->m_path);
  }

  void StartWatching() {
    this->m_manager.AddChangeListener(&this->m_changes);
    this->m_manager.AddRegistryListener(&this->m_listener);
    this->m_log.Clear();
  }

  // What a fresh store of the flavour reads from the bound file for key.
  std::string StoredValue(const std::string& key) {
    typename F::Store store;
    EXPECT_TRUE(store.Load(this->m_path));
    return F::Value(store, key);
  }

  ScopedStrictValues m_strict;
};

TYPED_TEST_SUITE(StrictValuesTest, Flavours, FlavourNames);

// Setting values.

TYPED_TEST(StrictValuesTest, ValueWithLineBreakIsRefusedWithKeyAndReason) {
  this->BindNickname();
  EXPECT_EQ(WrongValueMessage([this] { this->Set("nickname", kInjected); }),
            this->Refusal("nickname", "the value holds a line break"));
}

TYPED_TEST(StrictValuesTest, RefusedValueIsLoggedOnceWithTheSameText) {
  this->BindNickname();
  EXPECT_THROW(this->Set("nickname", kInjected), Property::WrongValue);
  EXPECT_EQ(this->Logged(), Messages{this->Refusal(
                                "nickname", "the value holds a line break")});
}

TYPED_TEST(StrictValuesTest, RefusedValueChangesNothing) {
  const std::string text = this->BindNickname();
  EXPECT_THROW(this->Set("nickname", kInjected), Property::WrongValue);
  EXPECT_EQ(this->Get("nickname"), "eve");
  EXPECT_EQ(this->m_changes.count, 0);
  EXPECT_EQ(ReadFile(this->m_path), text);
}

TYPED_TEST(StrictValuesTest, EveryValueThatWouldNotReadBackIsRefused) {
  typedef TypeParam F;
  const std::string comment(1, F::kComment);
  // "nickname=" takes 9 of the 511 characters an entry line may have.
  const std::vector<Refused> cases = {
      {"a\nb", "", "the value holds a line break"},
      {"a\rb", "", "the value holds a line break"},
      {"a\r\nb", "", "the value holds a line break"},
      {"\n", "", "the value holds a line break"},
      {"a\0b"s, "", "the value holds a NUL byte"},
      {"a" + comment + "b", "", "the value " + this->HoldsComment()},
      {comment, "", "the value " + this->HoldsComment()},
      {" a", "", "the value starts or ends with a blank"},
      {"a ", "", "the value starts or ends with a blank"},
      {"\ta", "", "the value starts or ends with a blank"},
      {"a\t", "", "the value starts or ends with a blank"},
      {" ", "", "the value starts or ends with a blank"},
      {"\"a", "", "the value starts with '\"'"},
      {"\"a\"", "", "the value starts with '\"'"},
      {std::string(503, 'v'), "", "its line would be 512 characters or longer"},
      {std::string(600, 'v'), "", "its line would be 512 characters or longer"},
  };
  const std::string text = this->BindNickname();
  for (const Refused& c : cases) {
    SCOPED_TRACE("value of " + std::to_string(c.text.size()) +
                 " bytes: " + c.text.substr(0, 20));
    this->m_log.Clear();
    const std::string message = this->Refusal("nickname", c.reason);
    EXPECT_EQ(WrongValueMessage([&] { this->Set("nickname", c.text); }),
              message);
    EXPECT_EQ(this->Logged(), Messages{message});
    EXPECT_EQ(this->Get("nickname"), "eve");
    EXPECT_EQ(ReadFile(this->m_path), text);
  }
  EXPECT_EQ(this->m_changes.count, 0);
}

TYPED_TEST(StrictValuesTest, EveryValueThatReadsBackIsAccepted) {
  const std::vector<std::string> cases = {
      "", "a b", "a=b", "a\"", "a\"b\"", "[a]", std::string(502, 'v')};
  this->BindNickname();
  for (const std::string& value : cases) {
    SCOPED_TRACE("value of " + std::to_string(value.size()) +
                 " bytes: " + value.substr(0, 20));
    EXPECT_EQ(WrongValueMessage([&] { this->Set("nickname", value); }),
              kAccepted);
    EXPECT_EQ(this->Get("nickname"), value);
    EXPECT_EQ(this->StoredValue("nickname"), value);
  }
}

TYPED_TEST(StrictValuesTest, EntryLineOf511CharactersIsWrittenWhole) {
  typedef TypeParam F;
  const std::string value(502, 'v');
  this->BindNickname();
  this->Set("nickname", value);
  EXPECT_EQ(ReadFile(this->m_path),
            F::Written(kHeader, "nickname=" + value + "\n"));
}

// The manager looks before the property does: the file's rule comes first.
TYPED_TEST(StrictValuesTest, RefusalComesBeforeThePropertysOwnCheck) {
  this->RegisterPort();
  this->m_log.Clear();
  EXPECT_EQ(WrongValueMessage([this] { this->Set("port", " 81"); }),
            this->Refusal("port", "the value starts or ends with a blank"));
  EXPECT_EQ(this->Logged(),
            Messages{this->Refusal("port",
                                   "the value starts or ends with a "
                                   "blank")});
  EXPECT_EQ(this->Get("port"), "80");
}

TYPED_TEST(StrictValuesTest, SetValueOfUnknownKeyIsNotFoundAsBefore) {
  this->StartWatching();
  this->Set("nickname", kInjected);
  EXPECT_EQ(this->Logged(), Messages{"Property 'nickname' was not found"});
}

TYPED_TEST(StrictValuesTest, MutexIsReleasedAfterRefusedValue) {
  this->BindNickname();
  EXPECT_THROW(this->Set("nickname", kInjected), Property::WrongValue);
  EXPECT_TRUE(IsFreeForOtherThreads(this->m_manager.Mutex()));
}

// Only the manager knows the file's format.
TYPED_TEST(StrictValuesTest, PropertysOwnSetValueIsNotChecked) {
  typedef TypeParam F;
  this->BindNickname();
  Property* nickname = this->Find("nickname");
  ASSERT_NE(nickname, nullptr);
  nickname->SetValue(kInjected);
  EXPECT_EQ(nickname->GetValue(), kInjected);
  EXPECT_EQ(this->m_changes.count, 1);
  EXPECT_EQ(ReadFile(this->m_path),
            F::Written(kHeader, "nickname=eve\nadmin=true\n"));
}

// Registering properties.

TYPED_TEST(StrictValuesTest, EveryKeyThatWouldNotReadBackIsRefused) {
  typedef TypeParam F;
  const std::string comment(1, F::kComment);
  const std::vector<Refused> cases = {
      {"nick\nname", "nick\\nname", "the key holds a line break"},
      {"nick\rname", "nick\\rname", "the key holds a line break"},
      {"nick\0name"s, "nick\\0name", "the key holds a NUL byte"},
      {"nick" + comment + "name", "nick" + comment + "name",
       "the key " + this->HoldsComment()},
      {"nick=name", "nick=name", "the key holds '='"},
      {"nick=", "nick=", "the key holds '='"},
      {" nick", " nick", "the key starts or ends with a blank"},
      {"nick ", "nick ", "the key starts or ends with a blank"},
      {"\tnick", "\\tnick", "the key starts or ends with a blank"},
      {"nick\t", "nick\\t", "the key starts or ends with a blank"},
      {"\"nick", "\"nick", "the key starts with '\"'"},
      {std::string(511, 'k'), std::string(511, 'k'),
       "its line would be 512 characters or longer"},
  };
  const std::string text = this->BindFile();
  for (const Refused& c : cases) {
    SCOPED_TRACE("key " + c.shown.substr(0, 20));
    this->m_log.Clear();
    const std::string message = this->Refusal(c.shown, c.reason);
    EXPECT_EQ(
        WrongValueMessage([&] { this->Register(kStringType, c.text, "x"); }),
        message);
    EXPECT_EQ(this->Logged(), Messages{message});
    EXPECT_EQ(this->Find(c.text), nullptr);
    EXPECT_EQ(ReadFile(this->m_path), text);
  }
  EXPECT_EQ(this->m_events, EventList{});
  EXPECT_EQ(this->m_changes.count, 0);
}

// A refused text cannot break the message (or the log line) that names it.
TYPED_TEST(StrictValuesTest, ControlCharactersOfRefusedKeyAreShownEscaped) {
  const std::vector<Refused> cases = {
      {"a\n\r\t\0b="s, "a\\n\\r\\t\\0b=", "the key holds a line break"},
      {"\x01nick=", "\\x01nick=", "the key holds '='"},
      {"nick\x1f=", "nick\\x1f=", "the key holds '='"},
      {"nick\x7f=", "nick\\x7f=", "the key holds '='"},
      {"nick\x0b", "nick\\x0b", "the key starts or ends with a blank"},
      {"nick\x0c", "nick\\x0c", "the key starts or ends with a blank"},
  };
  this->BindFile();
  for (const Refused& c : cases) {
    SCOPED_TRACE("key " + c.shown);
    EXPECT_EQ(
        WrongValueMessage([&] { this->Register(kStringType, c.text, "x"); }),
        this->Refusal(c.shown, c.reason));
  }
}

// Bytes that are no control characters are shown as they are.
TYPED_TEST(StrictValuesTest, RefusedKeyKeepsItsOtherBytesInTheMessage) {
  this->BindFile();
  EXPECT_EQ(WrongValueMessage([this] {
              this->Register(kStringType, "gr\xc3\xbc\xc3\x9f=", "x");
            }),
            this->Refusal("gr\xc3\xbc\xc3\x9f=", "the key holds '='"));
}

TYPED_TEST(StrictValuesTest, EveryKeyThatReadsBackIsAccepted) {
  typedef TypeParam F;
  const std::vector<std::string> cases = {
      "nick name", "nick\"", "a" + std::string(1, F::kOtherComment) + "b",
      std::string(510, 'k')};
  this->BindFile();
  for (const std::string& key : cases) {
    SCOPED_TRACE("key " + key.substr(0, 20));
    Property* property = nullptr;
    EXPECT_EQ(WrongValueMessage(
                  [&] { property = this->Register(kStringType, key, ""); }),
              kAccepted);
    EXPECT_NE(property, nullptr);
    this->Set(key, "");
    EXPECT_EQ(this->StoredValue(key), "");
  }
}

TYPED_TEST(StrictValuesTest, RefusedInitialValueRegistersNothing) {
  const std::string text = this->BindFile();
  const std::string message =
      this->Refusal("nickname", "the value holds a line break");
  EXPECT_EQ(WrongValueMessage(
                [this] { this->Register(kStringType, "nickname", kInjected); }),
            message);
  EXPECT_EQ(this->Find("nickname"), nullptr);
  EXPECT_EQ(this->m_events, EventList{});
  EXPECT_EQ(this->Logged(), Messages{message});
  EXPECT_EQ(ReadFile(this->m_path), text);
}

TYPED_TEST(StrictValuesTest, InitialValueThatMakesTheLineTooLongIsRefused) {
  this->BindFile();
  // "nickname=" and 503 characters: a line of 512.
  EXPECT_EQ(
      WrongValueMessage([this] {
        this->Register(kStringType, "nickname", std::string(503, 'v'));
      }),
      this->Refusal("nickname", "its line would be 512 characters or longer"));
  EXPECT_EQ(this->Find("nickname"), nullptr);
}

TYPED_TEST(StrictValuesTest, RegisteredKeyIsReturnedWithoutAnyCheck) {
  Property* nickname = this->Register(kStringType, "nickname", "eve");
  EXPECT_EQ(this->Register(kStringType, "nickname", kInjected), nickname);
  EXPECT_EQ(nickname->GetValue(), "eve");
}

TYPED_TEST(StrictValuesTest, ListWithElementThatWouldNotReadBackIsRefused) {
  const std::vector<Refused> cases = {
      {"red|green\nblue", "", "the value holds a line break"},
      {"red| green", "", "the value starts or ends with a blank"},
      {"red|\"green", "", "the value starts with '\"'"},
      {"red|green" + std::string(1, TypeParam::kComment), "",
       "the value " + this->HoldsComment()},
      // "colour=" and 505 characters: a line of 512.
      {"red|" + std::string(505, 'g'), "",
       "its line would be 512 characters or longer"},
  };
  const std::string text = this->BindFile();
  for (const Refused& c : cases) {
    SCOPED_TRACE("list " + c.text.substr(0, 20));
    EXPECT_EQ(
        WrongValueMessage([&] { this->Register(kListType, "colour", c.text); }),
        this->Refusal("colour", c.reason));
    EXPECT_EQ(this->Find("colour"), nullptr);
    EXPECT_EQ(ReadFile(this->m_path), text);
  }
  EXPECT_EQ(this->m_events, EventList{});
}

TYPED_TEST(StrictValuesTest, ListWhoseElementsReadBackIsRegistered) {
  Property* colour =
      this->Register(kListType, "colour", "red|" + std::string(504, 'g'));
  ASSERT_NE(colour, nullptr);
  EXPECT_EQ(colour->GetValue(), "red");
}

TYPED_TEST(StrictValuesTest, MutexIsReleasedAfterRefusedRegistration) {
  EXPECT_THROW(this->Register(kStringType, "nick\nname", "x"),
               Property::WrongValue);
  EXPECT_TRUE(IsFreeForOtherThreads(this->m_manager.Mutex()));
}

// Headers.

TYPED_TEST(StrictValuesTest, HeaderThatWouldNotStayOneCommentLineIsRefused) {
  const std::vector<Refused> cases = {
      {"app\nsettings", "app\\nsettings", "it holds a line break"},
      {"app\rsettings", "app\\rsettings", "it holds a line break"},
      {"app\0settings"s, "app\\0settings", "it holds a NUL byte"},
      {std::string(511, 'h'), std::string(511, 'h'),
       "its line would be 512 characters or longer"},
  };
  this->StartWatching();
  for (const Refused& c : cases) {
    SCOPED_TRACE("header " + c.shown.substr(0, 20));
    this->m_log.Clear();
    const std::string message =
        "Header '" + c.shown + "' can not be kept in the file: " + c.reason;
    EXPECT_EQ(WrongValueMessage([&] {
                this->m_manager.RegisterPersistence(this->m_path, c.text);
              }),
              message);
    EXPECT_EQ(this->Logged(), Messages{message});
  }
}

TYPED_TEST(StrictValuesTest, RefusedHeaderBindsNothing) {
  EXPECT_THROW(this->m_manager.RegisterPersistence(this->m_path, "app\nx"),
               Property::WrongValue);
  EXPECT_TRUE(PropertySafety::FileTroubles(&this->m_manager).empty());
  this->RegisterPort();
  this->Set("port", "81");
  EXPECT_FALSE(FileExists(this->m_path));
}

// After a refused header the path is free: a good one binds it.
TYPED_TEST(StrictValuesTest, PathOfRefusedHeaderCanBeBoundWithAnother) {
  EXPECT_THROW(this->m_manager.RegisterPersistence(this->m_path, "app\nx"),
               Property::WrongValue);
  this->m_manager.RegisterPersistence(this->m_path, kHeader);
  this->RegisterPort();
  this->Set("port", "81");
  EXPECT_EQ(ReadFile(this->m_path), TypeParam::Written(kHeader, "port=81\n"));
}

TYPED_TEST(StrictValuesTest, HeaderLineOf511CharactersIsAccepted) {
  const std::string header(510, 'h');
  this->m_manager.RegisterPersistence(this->m_path, header);
  this->RegisterPort();
  this->Set("port", "81");
  EXPECT_EQ(ReadFile(this->m_path), TypeParam::Written(header, "port=81\n"));
}

// A read-only binding writes no header.
TYPED_TEST(StrictValuesTest, ReadOnlyBindingIsNotRefused) {
  WriteFile(this->m_path, TypeParam::Body("port=8080\n"));
  this->m_manager.RegisterNonPersistence(this->m_path);
  EXPECT_EQ(this->RegisterPort()->GetValue(), "8080");
}

// Without strict values.

TYPED_TEST(StrictValuesTest, LenientManagerWritesValueWithLineBreakVerbatim) {
  typedef TypeParam F;
  ScopedStrictValues lenient(false);
  this->BindNickname();
  this->Set("nickname", kInjected);
  EXPECT_EQ(this->Get("nickname"), kInjected);
  EXPECT_EQ(this->m_changes.count, 1);
  EXPECT_EQ(ReadFile(this->m_path),
            F::Written(kHeader, "nickname=eve\nadmin=true\n"));
}

// What strict values guard against: the value's line feed made a second
// entry, which a fresh load reads as a setting of its own.
TYPED_TEST(StrictValuesTest, LenientManagersInjectedLineReadsAsOwnEntry) {
  ScopedStrictValues lenient(false);
  this->BindNickname();
  this->Set("nickname", kInjected);
  EXPECT_EQ(this->StoredValue("nickname"), "eve");
  EXPECT_EQ(this->StoredValue("admin"), "true");
}

// No file is bound: a line of 512 characters or more would stop the next
// load unless long lines are on.
TYPED_TEST(StrictValuesTest, LenientManagerAcceptsWhatStrictOneRefuses) {
  ScopedStrictValues lenient(false);
  const std::vector<std::string> keys = {"nick\nname", "nick=name", " nick",
                                         std::string(511, 'k')};
  for (const std::string& key : keys) {
    SCOPED_TRACE("key " + key.substr(0, 20));
    EXPECT_EQ(
        WrongValueMessage([&] { this->Register(kStringType, key, "x\ty "); }),
        kAccepted);
    EXPECT_EQ(this->Get(key), "x\ty ");
  }
  EXPECT_EQ(WrongValueMessage(
                [this] { this->Set("nick=name", std::string(600, 'v')); }),
            kAccepted);
}

TYPED_TEST(StrictValuesTest, LenientManagerWritesHeaderWithLineBreakVerbatim) {
  ScopedStrictValues lenient(false);
  this->m_manager.RegisterPersistence(this->m_path, "app\nsettings");
  this->RegisterPort();
  this->Set("port", "81");
  EXPECT_EQ(ReadFile(this->m_path),
            TypeParam::Written("app\nsettings", "port=81\n"));
}

// The choice of one manager.

TYPED_TEST(StrictValuesTest, ManagersOwnChoiceFollowsTheProcessWideOne) {
  EXPECT_TRUE(PropertySafety::StrictValues());
  EXPECT_TRUE(PropertySafety::StrictValues(&this->m_manager));
  ScopedStrictValues lenient(false);
  EXPECT_FALSE(PropertySafety::StrictValues(&this->m_manager));
}

TYPED_TEST(StrictValuesTest, ManagersOwnChoiceOffOverridesProcessWideOn) {
  PropertySafety::SetStrictValues(&this->m_manager, false);
  EXPECT_FALSE(PropertySafety::StrictValues(&this->m_manager));
  this->BindNickname();
  EXPECT_EQ(WrongValueMessage([this] { this->Set("nickname", kInjected); }),
            kAccepted);
  EXPECT_EQ(this->Get("nickname"), kInjected);
  EXPECT_TRUE(PropertySafety::StrictValues());
}

TYPED_TEST(StrictValuesTest, ManagersOwnChoiceOnOverridesProcessWideOff) {
  ScopedStrictValues lenient(false);
  PropertySafety::SetStrictValues(&this->m_manager, true);
  EXPECT_TRUE(PropertySafety::StrictValues(&this->m_manager));
  this->BindNickname();
  EXPECT_EQ(WrongValueMessage([this] { this->Set("nickname", kInjected); }),
            this->Refusal("nickname", "the value holds a line break"));
  EXPECT_FALSE(PropertySafety::StrictValues());
}

TYPED_TEST(StrictValuesTest, ManagersOwnChoiceCanBeChangedAgain) {
  PropertySafety::SetStrictValues(&this->m_manager, false);
  PropertySafety::SetStrictValues(&this->m_manager, true);
  EXPECT_TRUE(PropertySafety::StrictValues(&this->m_manager));
  ScopedStrictValues lenient(false);
  EXPECT_TRUE(PropertySafety::StrictValues(&this->m_manager));
  EXPECT_THROW(this->Register(kStringType, "nick\nname", "x"),
               Property::WrongValue);
}

TYPED_TEST(StrictValuesTest, ManagersOwnChoiceLeavesOtherManagersAlone) {
  typedef TypeParam F;
  ScopedStrictValues lenient(false);
  auto other = this->NewManager();
  PropertySafety::SetStrictValues(&this->m_manager, true);
  EXPECT_FALSE(PropertySafety::StrictValues(other.get()));
  EXPECT_NE(F::Register(other.get(), kStringType, "nick\nname", "x"), nullptr);
  EXPECT_THROW(this->Register(kStringType, "nick\nname", "x"),
               Property::WrongValue);
}

// A manager made where a destroyed one was does not inherit its choice.
TYPED_TEST(StrictValuesTest, ManagersOwnChoiceDiesWithIt) {
  typedef typename TypeParam::Manager Manager;
  ScopedStrictValues lenient(false);
  alignas(Manager) unsigned char storage[sizeof(Manager)];
  Manager* first = new (storage) Manager("first", &this->m_factory);
  PropertySafety::SetStrictValues(first, true);
  first->~Manager();
  Manager* second = new (storage) Manager("second", &this->m_factory);
  EXPECT_FALSE(PropertySafety::StrictValues(second));
  second->~Manager();
}

// Sections, which only the INI flavour has.

class IniStrictValuesTest : public test_support::ManagerFixture<Ini> {
 protected:
  IniStrictValuesTest() : m_strict(true) {}

  Property* RegisterIn(const std::string& section, const std::string& key,
                       const std::string& initial) {
    return m_manager.RegisterProperty(kStringType, section, key, initial);
  }

  ScopedStrictValues m_strict;
};

TEST_F(IniStrictValuesTest, EverySectionThatWouldNotReadBackIsRefused) {
  const std::vector<Refused> cases = {
      {"", "", "the section is empty"},
      {"n\net", "n\\net", "the section holds a line break"},
      {"n\ret", "n\\ret", "the section holds a line break"},
      {"n\0et"s, "n\\0et", "the section holds a NUL byte"},
      {"n;et", "n;et", "the section holds ';'"},
      {std::string(510, 's'), std::string(510, 's'),
       "its section line would be 512 characters or longer"},
  };
  const std::string text = Ini::Written(kHeader, "other=1\n");
  WriteFile(m_path, text);
  m_manager.RegisterPersistence(m_path, kHeader);
  m_manager.AddRegistryListener(&m_listener);
  for (const Refused& c : cases) {
    SCOPED_TRACE("section " + c.shown.substr(0, 20));
    m_log.Clear();
    const std::string message = "Property 'nickname' of section '" + c.shown +
                                "' can not be kept in its file: " + c.reason;
    EXPECT_EQ(WrongValueMessage([&] { RegisterIn(c.text, "nickname", "x"); }),
              message);
    EXPECT_EQ(Logged(), Messages{message});
    EXPECT_EQ(m_manager.GetProperty(c.text, "nickname"), nullptr);
    EXPECT_EQ(ReadFile(m_path), text);
  }
  EXPECT_EQ(m_events, EventList{});
}

TEST_F(IniStrictValuesTest, KeyStartingWithBracketIsRefused) {
  EXPECT_EQ(WrongValueMessage([this] { RegisterIn("net", "[nick", "x"); }),
            "Property '[nick' of section 'net' can not be kept in its file: "
            "the key starts with '['");
  EXPECT_EQ(m_manager.GetProperty("net", "[nick"), nullptr);
}

TEST_F(IniStrictValuesTest, KeyWithBracketElsewhereIsAccepted) {
  EXPECT_NE(RegisterIn("net", "nick[0]", "x"), nullptr);
}

// Between its brackets a section name keeps blanks and quotes.
TEST_F(IniStrictValuesTest, SectionsThatReadBackAreAcceptedAndReadBack) {
  const std::vector<std::string> cases = {" net",
                                          "net ",
                                          "\"net\"",
                                          "n=et",
                                          "[net]",
                                          "n#et",
                                          std::string(509, 's')};
  m_manager.RegisterPersistence(m_path, kHeader);
  for (const std::string& section : cases) {
    SCOPED_TRACE("section " + section.substr(0, 20));
    EXPECT_EQ(WrongValueMessage([&] { RegisterIn(section, "nickname", "a"); }),
              kAccepted);
    m_manager.SetValue(section, "nickname", "b");
    IniProperties store;
    EXPECT_TRUE(store.Load(m_path));
    EXPECT_EQ(store.GetProperty(section, "nickname"), "b");
  }
}

// The section of a property registered without a check is checked when the
// manager sets it.
TEST_F(IniStrictValuesTest, SetValueChecksTheSectionToo) {
  Property* property = ICreateStringProperty("nickname", "eve", "n;et");
  static_cast<PropertyManager&>(m_manager).RegisterProperty(property);
  EXPECT_EQ(WrongValueMessage(
                [this] { m_manager.SetValue("n;et", "nickname", "mallory"); }),
            "Property 'nickname' of section 'n;et' can not be kept in its "
            "file: the section holds ';'");
  EXPECT_EQ(property->GetValue(), "eve");
}

TEST_F(IniStrictValuesTest, LenientManagerAcceptsEmptySection) {
  ScopedStrictValues lenient(false);
  EXPECT_NE(RegisterIn("", "nickname", "x"), nullptr);
}

}  // namespace
