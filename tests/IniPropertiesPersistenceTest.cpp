// IniPropertiesPersistenceTest.cpp - what IniPropertiesPersistence alone
// does: loads and merged rewrites section by section. What both file
// bindings do is tested in PersistenceFlavoursTest.cpp.

#include "IniPropertiesPersistence.h"

#include <gtest/gtest.h>

#include <string>

#include "Properties.h"
#include "support/FlavourFixtures.h"
#include "support/Flavours.h"
#include "support/TempDir.h"

namespace {

using test_support::ReadFile;
using test_support::WriteFile;

class IniPropertiesPersistenceTest
    : public test_support::PersistenceFixture<test_support::Ini> {
 protected:
  // Registers a new integer property of section on the manager, which owns
  // it.
  Property* AddIntegerIn(const std::string& section, const std::string& key,
                         const std::string& value) {
    return Add(ICreateIntegerProperty(key, value, section));
  }
};

TEST_F(IniPropertiesPersistenceTest, ChangeWritesSectionsInByteOrder) {
  WriteFile(m_path, "[zeta]\nz=1\n[Alpha]\na=1\n");
  BindReadWrite(m_path);
  Property* port = AddIntegerIn("net", "port", "80");
  AddString("name", "x");
  port->SetValue("9");
  EXPECT_EQ(ReadFile(m_path),
            ";app settings\n[Alpha]\na=1\n\n[net]\nname=x\nport=9\n\n"
            "[zeta]\nz=1\n\n");
}

TEST_F(IniPropertiesPersistenceTest, SectionNoPropertyUsesSurvivesEveryStore) {
  WriteFile(m_path, "[net]\nport=1\n[other]\nx=1\n");
  BindReadWrite(m_path);
  Property* port = AddIntegerIn("net", "port", "80");
  for (const char* value : {"2", "3"}) port->SetValue(value);
  EXPECT_EQ(ReadFile(m_path),
            ";app settings\n[net]\nport=3\n\n[other]\nx=1\n\n");
}

TEST_F(IniPropertiesPersistenceTest, SectionAddedBetweenStoresIsKept) {
  BindReadWrite(m_path);
  Property* port = AddIntegerIn("net", "port", "80");
  port->SetValue("1");
  WriteFile(m_path, "[net]\nport=77\n[more]\nm=1\n");
  port->SetValue("2");
  EXPECT_EQ(ReadFile(m_path),
            ";app settings\n[more]\nm=1\n\n[net]\nport=2\n\n");
}

TEST_F(IniPropertiesPersistenceTest,
       PropertyOfSectionMissingFromFileKeepsDefault) {
  const std::string text = "[other]\nport=1\n";
  WriteFile(m_path, text);
  BindReadWrite(m_path);
  EXPECT_EQ(AddIntegerIn("net", "port", "80")->GetValue(), "80");
  EXPECT_EQ(ReadFile(m_path), text);
}

TEST_F(IniPropertiesPersistenceTest, FirstStoreAddsMissingSectionWithItsKey) {
  WriteFile(m_path, "[other]\nport=1\n");
  BindReadWrite(m_path);
  AddIntegerIn("net", "port", "80")->SetValue("9");
  EXPECT_EQ(ReadFile(m_path),
            ";app settings\n[net]\nport=9\n\n[other]\nport=1\n\n");
}

TEST_F(IniPropertiesPersistenceTest, SameKeyInTwoSectionsIsLoadedSeparately) {
  WriteFile(m_path, "[a]\nport=1\n[b]\nport=2\n");
  BindReadWrite(m_path);
  Property* first = AddIntegerIn("a", "port", "80");
  Property* second = AddIntegerIn("b", "port", "80");
  EXPECT_EQ(first->GetValue(), "1");
  EXPECT_EQ(second->GetValue(), "2");
}

TEST_F(IniPropertiesPersistenceTest, SameKeyInTwoSectionsIsStoredInEach) {
  BindReadWrite(m_path);
  Property* first = AddIntegerIn("a", "port", "1");
  AddIntegerIn("b", "port", "2");
  first->SetValue("3");
  EXPECT_EQ(ReadFile(m_path), ";app settings\n[a]\nport=3\n\n[b]\nport=2\n\n");
}

}  // namespace
