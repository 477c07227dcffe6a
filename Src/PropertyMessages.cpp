// PropertyMessages.cpp - see PropertyMessages.h.

#include "PropertyMessages.h"

#include <cstdarg>
#include <cstdio>

// The C library's assertion handler. Declared here rather than taken from
// <assert.h>, which declares it only when NDEBUG is not defined: the
// library's assertions fire in every build type.
extern "C" void __assert_fail(const char* expression, const char* file,
                              unsigned int line, const char* function) noexcept
    __attribute__((__noreturn__));

// Message texts that existing log readers match; keep every byte.
char PropertyMessages::kErrorReading[] = "Error reading Line %d";
char PropertyMessages::kLineTooLong[] = "Line %d is too long";
char PropertyMessages::kRedefinesProperty[] = "Line %d redefines a property";
char PropertyMessages::kRedefinesSection[] = "Line %d redefines a section";
char PropertyMessages::kLoadingEntry[] = "Loading '%s' to '%s'";
char PropertyMessages::kLoadingSectionEntry[] = "Loading '%s' of '%s' to '%s'";
char PropertyMessages::kSettingEntry[] = "Setting '%s' to '%s'";
char PropertyMessages::kSettingSectionEntry[] = "Setting '%s' of '%s' to '%s'";
// One text for a key missing from a store and from a manager: log readers
// match one message for both.
char PropertyMessages::kNotFound[] = "Property '%s' was not found";
char PropertyMessages::kSectionEntryNotFound[] =
    "Property '%s' at Section '%s' was not found";
// One text for a value rejected on set and for a stored value rejected on
// load, on purpose: log readers match one message for both.
char PropertyMessages::kFormatChanged[] =
    "Format of property '%s' seems to be changed: '%s'";
char PropertyMessages::kCanNotRead[] = "Can not read File '%s'";
char PropertyMessages::kCanNotWrite[] = "Can not write File '%s'";
// Only ever logged when another program holds a file's lock too long.
char PropertyMessages::kStayedLocked[] =
    "File '%s' stayed locked; going on without the lock";
// Only ever logged where a program keeps its files' layout (PropertyLayout).
char PropertyMessages::kLayoutNotKept[] =
    "File '%s' is written anew, not in its own layout: %s";
char PropertyMessages::kRefused[] =
    "Property '%s' can not be kept in its file: %s";
char PropertyMessages::kRefusedInSection[] =
    "Property '%s' of section '%s' can not be kept in its file: %s";
char PropertyMessages::kRefusedHeader[] =
    "Header '%s' can not be kept in the file: %s";

namespace {

struct AssertionText {
  const char* expression;
  const char* file;
  unsigned int line;
  const char* function;
};

// Message texts that existing crash tooling matches, not source positions:
// the file, line and function text of each assertion stay exactly as they
// are, wherever the check itself lives. In the order of the enumeration.
const AssertionText kAssertions[PropertyMessages::kAssertionCount] = {
    {"!fileName.empty()", "Src/JavaProperties.cpp", 34,
     "bool JavaProperties::Load(const propstring&)"},
    {"!fileName.empty()", "Src/JavaProperties.cpp", 99,
     "bool JavaProperties::Store(const propstring&, const propstring&)"},
    {"!fileName.empty()", "Src/IniProperties.cpp", 34,
     "bool IniProperties::Load(const propstring&)"},
    {"!fileName.empty()", "Src/IniProperties.cpp", 124,
     "bool IniProperties::Store(const propstring&, const propstring&)"},
    {"property", "Src/PropertyManager.cpp", 53,
     "void PropertyManager::RegisterProperty(Property*)"},
    {"property", "Src/PropertyManager.cpp", 79,
     "void PropertyManager::UnregisterProperty(Property*)"},
    {"client", "Src/PropertyManager.cpp", 102,
     "void PropertyManager::RegisterClient(PropertyClient*)"},
    {"client", "Src/PropertyManager.cpp", 126,
     "void PropertyManager::UnregisterClient(PropertyClient*)"},
    {"listener", "Src/PropertyManager.cpp", 145,
     "void PropertyManager::AddRegistryListener(PropertyRegistryListener*)"},
    {"listener", "Src/PropertyManager.cpp", 161,
     "void PropertyManager::RemoveRegistryListener("
     "PropertyRegistryListener*)"},
    {"listener", "Src/PropertyManager.cpp", 180,
     "void PropertyManager::AddChangeListener(PropertyChangeListener*)"},
    {"listener", "Src/PropertyManager.cpp", 196,
     "void PropertyManager::RemoveChangeListener(PropertyChangeListener*)"},
    {"property", "Src/PropertyManager.cpp", 215,
     "void PropertyManager::NotifyChangeListeners(Property*)"},
    {"m_propertyFactory", "Src/JavaPropertyManager.cpp", 40,
     "Property* JavaPropertyManager::RegisterProperty(const propstring&, "
     "const propstring&, const propstring&)"},
    {"m_propertyFactory", "Src/IniPropertyManager.cpp", 41,
     "Property* IniPropertyManager::RegisterProperty(const propstring&, "
     "const propstring&, const propstring&, const propstring&)"},
    {"property != __null", "Src/JavaPropertiesPersistence.cpp", 41,
     "virtual void JavaPropertiesPersistence::RegisteredProperty(Property*)"},
    {"property != __null", "Src/JavaPropertiesPersistence.cpp", 57,
     "void JavaPropertiesPersistence::UnregisterProperty(Property*)"},
    {"property", "Src/JavaPropertiesPersistence.cpp", 76,
     "virtual void JavaPropertiesPersistence::AddingProperty(Property*)"},
    {"property", "Src/JavaPropertiesPersistence.cpp", 87,
     "virtual void JavaPropertiesPersistence::RemovingProperty(Property*)"},
    {"property", "Src/JavaPropertiesPersistence.cpp", 98,
     "virtual void JavaPropertiesPersistence::PropertyChanged(Property*)"},
    {"property", "Src/JavaPropertiesPersistence.cpp", 163,
     "void JavaPropertiesPersistence::SetValue(Property*, JavaProperties&)"},
    {"property != __null", "Src/IniPropertiesPersistence.cpp", 41,
     "virtual void IniPropertiesPersistence::RegisteredProperty(Property*)"},
    {"property != __null", "Src/IniPropertiesPersistence.cpp", 57,
     "void IniPropertiesPersistence::UnregisterProperty(Property*)"},
    {"property", "Src/IniPropertiesPersistence.cpp", 76,
     "virtual void IniPropertiesPersistence::AddingProperty(Property*)"},
    {"property", "Src/IniPropertiesPersistence.cpp", 87,
     "virtual void IniPropertiesPersistence::RemovingProperty(Property*)"},
    {"property", "Src/IniPropertiesPersistence.cpp", 98,
     "virtual void IniPropertiesPersistence::PropertyChanged(Property*)"},
    {"property", "Src/IniPropertiesPersistence.cpp", 164,
     "void IniPropertiesPersistence::SetValue(Property*, IniProperties&)"},
};

}  // namespace

thread_local int PropertyMessages::m_silences = 0;

PropertyMessages::Silence::Silence() { ++m_silences; }

PropertyMessages::Silence::~Silence() { --m_silences; }

thread_local PropertyMessages::Recording* PropertyMessages::m_recording =
    nullptr;

// Weak: a program that links the library's objects with its own Log() has
// neither.
extern void PropertyOwnLog(int level, char* format, ...)
    __attribute__((weak, visibility("hidden")));
extern bool PropertyOwnLogWritesNowhere()
    __attribute__((weak, visibility("hidden")));

bool PropertyMessages::LogDiscardsAll() {
  // &Log is taken here, away from its definition, so that it is the Log()
  // the program runs with, which may be its own.
  static const bool discards =
      &PropertyOwnLog != nullptr && &PropertyOwnLogWritesNowhere != nullptr &&
      &Log == &PropertyOwnLog && PropertyOwnLogWritesNowhere();
  return discards;
}

PropertyMessages::Recording::Scope::Scope(Recording& recording)
    : m_outer(m_recording) {
  m_recording = &recording;
}

PropertyMessages::Recording::Scope::~Scope() { m_recording = m_outer; }

bool PropertyMessages::Taken() {
  const Audience audience = ThisThreadsAudience();
  return audience.recording != nullptr || audience.log;
}

PropertyMessages::Audience PropertyMessages::ThisThreadsAudience() {
  // Where the library's own Log() writes nowhere, calling it changes nothing.
  return Audience{m_recording, m_silences == 0 && !LogDiscardsAll()};
}

void PropertyMessages::Recording::Add(char* format, int number) {
  m_messages.push_back(Message{format, number, 0, {0, 0, 0}});
}

void PropertyMessages::Recording::Add(char* format, const char* a,
                                      const char* b) {
  m_messages.push_back(Message{format, 0, 2, {Keep(a), Keep(b), 0}});
}

void PropertyMessages::Recording::Add(char* format, const char* a,
                                      const char* b, const char* c) {
  m_messages.push_back(Message{format, 0, 3, {Keep(a), Keep(b), Keep(c)}});
}

size_t PropertyMessages::Recording::Keep(const char* text) {
  const size_t at = m_texts.size();
  m_texts.append(text);
  m_texts.push_back('\0');
  return at;
}

void PropertyMessages::Recording::Replay() const {
  const char* texts = m_texts.data();
  for (const Message& message : m_messages) {
    if (message.texts == 0) {
      Write(message.format, message.number);
    } else if (message.texts == 2) {
      Write(message.format, texts + message.at[0], texts + message.at[1]);
    } else {
      Write(message.format, texts + message.at[0], texts + message.at[1],
            texts + message.at[2]);
    }
  }
}

size_t PropertyMessages::Recording::Bytes() const {
  return m_messages.capacity() * sizeof(Message) + m_texts.capacity();
}

void PropertyMessages::Fail(Assertion assertion) {
  const AssertionText& text = kAssertions[assertion];
  __assert_fail(text.expression, text.file, text.line, text.function);
}

propstring PropertyMessages::Format(const char* format, ...) {
  va_list args;
  va_start(args, format);
  const propstring text = FormatList(format, args);
  va_end(args);
  return text;
}

propstring PropertyMessages::FormatList(const char* format, va_list args) {
  va_list measure;
  va_copy(measure, args);
  const int length = std::vsnprintf(nullptr, 0, format, measure);
  va_end(measure);
  propstring text(static_cast<size_t>(length > 0 ? length : 0) + 1, '\0');
  std::vsnprintf(&text[0], text.size(), format, args);
  text.resize(text.size() - 1);
  return text;
}
