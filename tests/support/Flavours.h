// Flavours.h - the flat and the INI flavour of the library as traits for
// typed tests, so that a behaviour both flavours share is tested once:
//
//   template <typename F>
//   class StoreFlavoursTest : public testing::Test {};
//   TYPED_TEST_SUITE(StoreFlavoursTest, test_support::Flavours,
//                    test_support::FlavourNames);
//
//   TYPED_TEST(StoreFlavoursTest, StoreWritesEntry) {
//     typedef TypeParam F;
//     typename F::Store store;
//     F::Put(&store, "port", "81");
//     EXPECT_EQ(store.ToText(""), F::Written("", "port=81\n"));
//   }
//
// The traits hide what differs: the classes, how a property is addressed (by
// its key; in the INI flavour always in the section "net"), the comment
// character, the texts the flavour logs and writes, and the texts of its
// assertions. FlavourFixtures.h has fixtures over the traits.

#ifndef TESTS_SUPPORT_FLAVOURS_H_
#define TESTS_SUPPORT_FLAVOURS_H_

#include <gtest/gtest.h>

#include <string>

#include "IniProperties.h"
#include "IniPropertiesPersistence.h"
#include "IniPropertyFactory.h"
#include "IniPropertyManager.h"
#include "JavaProperties.h"
#include "JavaPropertiesPersistence.h"
#include "JavaPropertyFactory.h"
#include "JavaPropertyManager.h"
#include "Properties.h"
#include "Property.h"
#include "support/AssertionMessage.h"

namespace test_support {

// The flat flavour: key=value files; a property is addressed by its key.
struct Flat {
  typedef JavaProperties Store;
  typedef JavaPropertiesPersistence Persistence;
  typedef JavaPropertyFactory Factory;
  typedef JavaPropertyManager Manager;

  static constexpr bool kSectioned = false;
  // The section of every property of the traits: flat properties have none.
  static constexpr const char* kSection = "";
  static constexpr char kComment = '#';
  // The other flavour's comment character, an ordinary byte here.
  static constexpr char kOtherComment = ';';
  static constexpr const char* kExtension = ".properties";
  // The number of the first line of Body()'s text in the file.
  static constexpr int kFirstBodyLine = 1;

  // The assertions of the flavour's classes.
  static constexpr AssertionText kLoadWithoutFileName = {
      "Src/JavaProperties.cpp", 34,
      "bool JavaProperties::Load(const propstring&)", "!fileName.empty()"};
  static constexpr AssertionText kStoreWithoutFileName = {
      "Src/JavaProperties.cpp", 99,
      "bool JavaProperties::Store(const propstring&, const propstring&)",
      "!fileName.empty()"};
  static constexpr AssertionText kRegisterWithoutFactory = {
      "Src/JavaPropertyManager.cpp", 40,
      "Property* JavaPropertyManager::RegisterProperty(const propstring&, "
      "const propstring&, const propstring&)",
      "m_propertyFactory"};
  static constexpr AssertionText kNullRegisteredProperty = {
      "Src/JavaPropertiesPersistence.cpp", 41,
      "virtual void JavaPropertiesPersistence::RegisteredProperty(Property*)",
      "property != __null"};
  static constexpr AssertionText kNullUnregisterProperty = {
      "Src/JavaPropertiesPersistence.cpp", 57,
      "void JavaPropertiesPersistence::UnregisterProperty(Property*)",
      "property != __null"};
  static constexpr AssertionText kNullAddingProperty = {
      "Src/JavaPropertiesPersistence.cpp", 76,
      "virtual void JavaPropertiesPersistence::AddingProperty(Property*)",
      "property"};
  static constexpr AssertionText kNullRemovingProperty = {
      "Src/JavaPropertiesPersistence.cpp", 87,
      "virtual void JavaPropertiesPersistence::RemovingProperty(Property*)",
      "property"};
  static constexpr AssertionText kNullPropertyChanged = {
      "Src/JavaPropertiesPersistence.cpp", 98,
      "virtual void JavaPropertiesPersistence::PropertyChanged(Property*)",
      "property"};
  static constexpr AssertionText kNullSetValue = {
      "Src/JavaPropertiesPersistence.cpp", 163,
      "void JavaPropertiesPersistence::SetValue(Property*, JavaProperties&)",
      "property"};

  // A file whose entries are lines (key=value lines, each ended by a line
  // feed).
  static std::string Body(const std::string& lines) { return lines; }
  // What the flavour writes for entries (key=value lines in byte order of
  // the keys, as the store writes them) with header; "" writes no header.
  static std::string Written(const std::string& header,
                             const std::string& entries) {
    return (header.empty() ? "" : "#" + header + "\n") + entries;
  }

  // What the flavour logs.
  static std::string Loading(const std::string& key, const std::string& value) {
    return "Loading '" + key + "' to '" + value + "'";
  }
  static std::string Setting(const std::string& key, const std::string& value) {
    return "Setting '" + key + "' to '" + value + "'";
  }
  static std::string NotFound(const std::string& key) {
    return "Property '" + key + "' was not found";
  }

  // The store.
  static void Put(Store* store, const std::string& key,
                  const std::string& value) {
    store->SetProperty(key, value);
  }
  static std::string Value(const Store& store, const std::string& key) {
    return store.GetProperty(key);
  }
  // Store::GetProperty(..., value).
  static bool Lookup(const Store& store, const std::string& key,
                     std::string& value) {
    return store.GetProperty(key, value);
  }

  // New properties of the flavour, owned by the caller.
  static Property* NewInteger(const std::string& key,
                              const std::string& value) {
    return JCreateIntegerProperty(key, value);
  }
  static Property* NewString(const std::string& key, const std::string& value) {
    return JCreateStringProperty(key, value);
  }

  // The manager.
  static Factory* LibraryFactory() {
    return Properties::GetInstance()->GetJavaPropertyFactory();
  }
  static Property* Register(Manager* manager, const std::string& type,
                            const std::string& key,
                            const std::string& initial) {
    return manager->RegisterProperty(type, key, initial);
  }
  static Property* Find(const Manager& manager, const std::string& key) {
    return manager.GetProperty(key);
  }
  static void Set(Manager* manager, const std::string& key,
                  const std::string& value) {
    manager->SetValue(key, value);
  }
  static std::string Get(const Manager& manager, const std::string& key) {
    return manager.GetValue(key);
  }
  static Property* Unregister(Manager* manager, const std::string& key) {
    return manager->UnregisterProperty(key);
  }
};

// The INI flavour: sectioned files; every property of the traits is in the
// section "net".
struct Ini {
  typedef IniProperties Store;
  typedef IniPropertiesPersistence Persistence;
  typedef IniPropertyFactory Factory;
  typedef IniPropertyManager Manager;

  static constexpr bool kSectioned = true;
  static constexpr const char* kSection = "net";
  static constexpr char kComment = ';';
  static constexpr char kOtherComment = '#';
  static constexpr const char* kExtension = ".ini";
  // Body() puts the header "[net]" on the first line.
  static constexpr int kFirstBodyLine = 2;

  static constexpr AssertionText kLoadWithoutFileName = {
      "Src/IniProperties.cpp", 34,
      "bool IniProperties::Load(const propstring&)", "!fileName.empty()"};
  static constexpr AssertionText kStoreWithoutFileName = {
      "Src/IniProperties.cpp", 124,
      "bool IniProperties::Store(const propstring&, const propstring&)",
      "!fileName.empty()"};
  static constexpr AssertionText kRegisterWithoutFactory = {
      "Src/IniPropertyManager.cpp", 41,
      "Property* IniPropertyManager::RegisterProperty(const propstring&, "
      "const propstring&, const propstring&, const propstring&)",
      "m_propertyFactory"};
  static constexpr AssertionText kNullRegisteredProperty = {
      "Src/IniPropertiesPersistence.cpp", 41,
      "virtual void IniPropertiesPersistence::RegisteredProperty(Property*)",
      "property != __null"};
  static constexpr AssertionText kNullUnregisterProperty = {
      "Src/IniPropertiesPersistence.cpp", 57,
      "void IniPropertiesPersistence::UnregisterProperty(Property*)",
      "property != __null"};
  static constexpr AssertionText kNullAddingProperty = {
      "Src/IniPropertiesPersistence.cpp", 76,
      "virtual void IniPropertiesPersistence::AddingProperty(Property*)",
      "property"};
  static constexpr AssertionText kNullRemovingProperty = {
      "Src/IniPropertiesPersistence.cpp", 87,
      "virtual void IniPropertiesPersistence::RemovingProperty(Property*)",
      "property"};
  static constexpr AssertionText kNullPropertyChanged = {
      "Src/IniPropertiesPersistence.cpp", 98,
      "virtual void IniPropertiesPersistence::PropertyChanged(Property*)",
      "property"};
  static constexpr AssertionText kNullSetValue = {
      "Src/IniPropertiesPersistence.cpp", 164,
      "void IniPropertiesPersistence::SetValue(Property*, IniProperties&)",
      "property"};

  // "[net]" and the lines.
  static std::string Body(const std::string& lines) {
    return "[net]\n" + lines;
  }
  // The section "net" holding entries, unless entries is "".
  static std::string Written(const std::string& header,
                             const std::string& entries) {
    return (header.empty() ? "" : ";" + header + "\n") +
           (entries.empty() ? "" : "[net]\n" + entries + "\n");
  }

  static std::string Loading(const std::string& key, const std::string& value) {
    return "Loading '" + key + "' of 'net' to '" + value + "'";
  }
  static std::string Setting(const std::string& key, const std::string& value) {
    return "Setting '" + key + "' of 'net' to '" + value + "'";
  }
  static std::string NotFound(const std::string& key) {
    return "Property '" + key + "' at Section 'net' was not found";
  }

  static void Put(Store* store, const std::string& key,
                  const std::string& value) {
    store->SetProperty(kSection, key, value);
  }
  static std::string Value(const Store& store, const std::string& key) {
    return store.GetProperty(kSection, key);
  }
  static bool Lookup(const Store& store, const std::string& key,
                     std::string& value) {
    return store.GetProperty(kSection, key, value);
  }

  static Property* NewInteger(const std::string& key,
                              const std::string& value) {
    return ICreateIntegerProperty(key, value, kSection);
  }
  static Property* NewString(const std::string& key, const std::string& value) {
    return ICreateStringProperty(key, value, kSection);
  }

  static Factory* LibraryFactory() {
    return Properties::GetInstance()->GetIniPropertyFactory();
  }
  static Property* Register(Manager* manager, const std::string& type,
                            const std::string& key,
                            const std::string& initial) {
    return manager->RegisterProperty(type, kSection, key, initial);
  }
  static Property* Find(const Manager& manager, const std::string& key) {
    return manager.GetProperty(kSection, key);
  }
  static void Set(Manager* manager, const std::string& key,
                  const std::string& value) {
    manager->SetValue(kSection, key, value);
  }
  static std::string Get(const Manager& manager, const std::string& key) {
    return manager.GetValue(kSection, key);
  }
  static Property* Unregister(Manager* manager, const std::string& key) {
    return manager->UnregisterProperty(kSection, key);
  }
};

typedef testing::Types<Flat, Ini> Flavours;

// Names the typed tests of each flavour "Flat" or "Ini".
class FlavourNames {
 public:
  template <typename F>
  static std::string GetName(int) {
    return F::kSectioned ? "Ini" : "Flat";
  }
};

}  // namespace test_support

#endif  // TESTS_SUPPORT_FLAVOURS_H_
