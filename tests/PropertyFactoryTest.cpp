// PropertyFactoryTest.cpp - type-name look-up of JavaPropertyFactory and
// IniPropertyFactory, and the twelve creator functions they map names to.

#include "PropertyFactory.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "BooleanProperty.h"
#include "DoubleProperty.h"
#include "IniPropertyFactory.h"
#include "IntegerProperty.h"
#include "IpAddrProperty.h"
#include "JavaPropertyFactory.h"
#include "ListProperty.h"
#include "Properties.h"
#include "StringProperty.h"
#include "support/PropertyTesting.h"

namespace {

const char kKeyMessage[] = "Property key can not contain characters: '= #'";
const char kBooleanMessage[] = "Property 'k' can only contain 'true or false'";

// The six type names in byte order, as GetTypeNames lists them.
const std::vector<propstring> kSortedTypeNames = {
    "PROPERTY_TYPE_BOOLEAN", "PROPERTY_TYPE_DOUBLE", "PROPERTY_TYPE_INTEGER",
    "PROPERTY_TYPE_IP_ADDR", "PROPERTY_TYPE_LIST",   "PROPERTY_TYPE_STRING"};

// The message of the WrongValue that action throws, or
// test_support::kAccepted.
constexpr auto& ErrorOf = test_support::WrongValueMessage;

// A flat factory filled with the six type names, in the order in which the
// library entry fills its own.
class JavaPropertyFactoryTest : public testing::Test {
 protected:
  JavaPropertyFactoryTest()
      : m_added(test_support::AddAllCreators(&m_factory)) {}

  std::unique_ptr<Property> Create(const propstring& type,
                                   const propstring& key = "k",
                                   const propstring& value = "1") {
    return std::unique_ptr<Property>(
        m_factory.CreateProperty(type, key, value));
  }

  JavaPropertyFactory m_factory;
  std::vector<bool> m_added;  // What each of its AddCreator calls returned.
};

TEST_F(JavaPropertyFactoryTest, NewFactoryKnowsNoTypeNames) {
  JavaPropertyFactory empty;
  EXPECT_TRUE(empty.GetTypeNames().empty());
  EXPECT_EQ(nullptr, empty.CreateProperty("PROPERTY_TYPE_INTEGER", "k", "1"));
}

TEST_F(JavaPropertyFactoryTest, AddCreatorAcceptsEachNewName) {
  EXPECT_EQ(std::vector<bool>(6, true), m_added);
}

TEST_F(JavaPropertyFactoryTest, GetTypeNamesListsSixNamesInByteOrder) {
  EXPECT_EQ(kSortedTypeNames, m_factory.GetTypeNames());
}

TEST_F(JavaPropertyFactoryTest, IntegerTypeNameCreatesIntegerProperty) {
  std::unique_ptr<Property> property = Create("PROPERTY_TYPE_INTEGER");
  EXPECT_NE(nullptr, dynamic_cast<IntegerProperty*>(property.get()));
}

TEST_F(JavaPropertyFactoryTest, CreatedPropertyHoldsKeyAndValue) {
  std::unique_ptr<Property> property =
      Create("PROPERTY_TYPE_STRING", "name", "value");
  EXPECT_EQ("name", property->GetKey());
  EXPECT_EQ("value", property->GetValue());
}

TEST_F(JavaPropertyFactoryTest, CreatedPropertyHasEmptySection) {
  EXPECT_EQ("", Create("PROPERTY_TYPE_INTEGER")->GetSection());
}

TEST_F(JavaPropertyFactoryTest, LowerCaseTypeNameReturnsNull) {
  EXPECT_EQ(nullptr, Create("property_type_integer").get());
}

TEST_F(JavaPropertyFactoryTest, ShortenedTypeNameReturnsNull) {
  EXPECT_EQ(nullptr, Create("PROPERTY_TYPE_INT").get());
}

TEST_F(JavaPropertyFactoryTest, EmptyTypeNameReturnsNull) {
  EXPECT_EQ(nullptr, Create("").get());
}

TEST_F(JavaPropertyFactoryTest, TypeNameWithTrailingBlankReturnsNull) {
  EXPECT_EQ(nullptr, Create("PROPERTY_TYPE_INTEGER ").get());
}

TEST_F(JavaPropertyFactoryTest, FindCreatorReturnsRegisteredFunction) {
  EXPECT_EQ(&JCreateListProperty, m_factory.FindCreator("PROPERTY_TYPE_LIST"));
  EXPECT_EQ(nullptr, m_factory.FindCreator("PROPERTY_TYPE_LIS"));
}

TEST_F(JavaPropertyFactoryTest, AddCreatorKeepsFirstCreatorOfRepeatedName) {
  EXPECT_FALSE(
      m_factory.AddCreator("PROPERTY_TYPE_INTEGER", JCreateStringProperty));
  std::unique_ptr<Property> property = Create("PROPERTY_TYPE_INTEGER");
  EXPECT_NE(nullptr, dynamic_cast<IntegerProperty*>(property.get()));
  EXPECT_EQ(kSortedTypeNames, m_factory.GetTypeNames());
}

TEST_F(JavaPropertyFactoryTest, KeyWithEqualsAndHashThrowsWrongValue) {
  EXPECT_EQ(kKeyMessage,
            ErrorOf([this] { Create("PROPERTY_TYPE_STRING", "a=#"); }));
}

TEST_F(JavaPropertyFactoryTest, RejectedInitialValueThrowsWrongValue) {
  EXPECT_EQ(kBooleanMessage,
            ErrorOf([this] { Create("PROPERTY_TYPE_BOOLEAN", "k", "yes"); }));
}

// A sectioned factory filled like the flat one, with the I-creators.
class IniPropertyFactoryTest : public testing::Test {
 protected:
  IniPropertyFactoryTest() { test_support::AddAllCreators(&m_factory); }

  std::unique_ptr<Property> Create(const propstring& type,
                                   const propstring& section,
                                   const propstring& key,
                                   const propstring& value) {
    return std::unique_ptr<Property>(
        m_factory.CreateProperty(type, section, key, value));
  }

  IniPropertyFactory m_factory;
};

TEST_F(IniPropertyFactoryTest, NewFactoryKnowsNoTypeNames) {
  IniPropertyFactory empty;
  EXPECT_TRUE(empty.GetTypeNames().empty());
  EXPECT_EQ(nullptr,
            empty.CreateProperty("PROPERTY_TYPE_STRING", "S", "K", "V"));
}

TEST_F(IniPropertyFactoryTest, GetTypeNamesListsSixNamesInByteOrder) {
  EXPECT_EQ(kSortedTypeNames, m_factory.GetTypeNames());
}

TEST_F(IniPropertyFactoryTest, PassesSectionKeyAndValueToTheirPlaces) {
  std::unique_ptr<Property> property =
      Create("PROPERTY_TYPE_STRING", "S", "K", "V");
  ASSERT_NE(nullptr, dynamic_cast<StringProperty*>(property.get()));
  EXPECT_EQ("S", property->GetSection());
  EXPECT_EQ("K", property->GetKey());
  EXPECT_EQ("V", property->GetValue());
}

TEST_F(IniPropertyFactoryTest, UnknownTypeNameReturnsNull) {
  EXPECT_EQ(nullptr, Create("PROPERTY_TYPE_String", "S", "K", "V").get());
}

TEST_F(IniPropertyFactoryTest, AddCreatorKeepsFirstCreatorOfRepeatedName) {
  EXPECT_FALSE(
      m_factory.AddCreator("PROPERTY_TYPE_STRING", ICreateIntegerProperty));
  std::unique_ptr<Property> property =
      Create("PROPERTY_TYPE_STRING", "S", "K", "text");
  EXPECT_NE(nullptr, dynamic_cast<StringProperty*>(property.get()));
}

TEST_F(IniPropertyFactoryTest, KeyWithEqualsAndHashThrowsWrongValue) {
  EXPECT_EQ(kKeyMessage, ErrorOf([this] {
              Create("PROPERTY_TYPE_INTEGER", "S", "#=", "1");
            }));
}

TEST_F(IniPropertyFactoryTest, RejectedInitialValueThrowsWrongValue) {
  EXPECT_EQ(kBooleanMessage, ErrorOf([this] {
              Create("PROPERTY_TYPE_BOOLEAN", "S", "k", "yes");
            }));
}

// One row per value type: its creators, a valid initial value, how to
// recognise its class, and its names.
struct CreatorCase {
  const char* label;
  JavaPropertyCreator javaCreator;
  IniPropertyCreator iniCreator;
  const char* value;
  bool (*isOfClass)(Property*);
  const char* typeNameConstant;  // The class's kTypeName.
  const char* typeName;
  const char* humanName;
};

// Keeps test output readable: the row's label instead of its bytes.
void PrintTo(const CreatorCase& row, std::ostream* out) { *out << row.label; }

template <typename T>
bool IsOf(Property* property) {
  return dynamic_cast<T*>(property) != nullptr;
}

class CreatorFunctionTest : public testing::TestWithParam<CreatorCase> {};

TEST_P(CreatorFunctionTest, JavaCreatorBuildsClassWithEmptySection) {
  std::unique_ptr<Property> property(
      GetParam().javaCreator("k", GetParam().value));
  EXPECT_TRUE(GetParam().isOfClass(property.get()));
  EXPECT_EQ("k", property->GetKey());
  EXPECT_EQ("", property->GetSection());
}

TEST_P(CreatorFunctionTest, IniCreatorBuildsClassWithGivenSection) {
  std::unique_ptr<Property> property(
      GetParam().iniCreator("k", GetParam().value, "s"));
  EXPECT_TRUE(GetParam().isOfClass(property.get()));
  EXPECT_EQ("k", property->GetKey());
  EXPECT_EQ("s", property->GetSection());
}

TEST_P(CreatorFunctionTest, CreatedPropertyReportsTypeAndHumanName) {
  std::unique_ptr<Property> property(
      GetParam().javaCreator("k", GetParam().value));
  EXPECT_EQ(GetParam().typeName, property->GetPropertyType());
  EXPECT_EQ(GetParam().humanName, property->GetPropertyName());
}

TEST_P(CreatorFunctionTest, TypeNameConstantMatchesCreatedProperty) {
  std::unique_ptr<Property> property(
      GetParam().javaCreator("k", GetParam().value));
  EXPECT_EQ(property->GetPropertyType(), GetParam().typeNameConstant);
  EXPECT_EQ(propstring(GetParam().typeName), GetParam().typeNameConstant);
}

TEST_P(CreatorFunctionTest, CreatorsPassKeyRejectionOn) {
  EXPECT_EQ(kKeyMessage, ErrorOf([] {
              delete GetParam().javaCreator("=#", GetParam().value);
            }));
  EXPECT_EQ(kKeyMessage, ErrorOf([] {
              delete GetParam().iniCreator("=#", GetParam().value, "s");
            }));
}

INSTANTIATE_TEST_SUITE_P(
    AllTypes, CreatorFunctionTest,
    testing::Values(
        CreatorCase{"Integer", JCreateIntegerProperty, ICreateIntegerProperty,
                    "1", IsOf<IntegerProperty>, IntegerProperty::kTypeName,
                    "PROPERTY_TYPE_INTEGER", "Integer Property"},
        CreatorCase{"Double", JCreateDoubleProperty, ICreateDoubleProperty,
                    "1.5", IsOf<DoubleProperty>, DoubleProperty::kTypeName,
                    "PROPERTY_TYPE_DOUBLE", "Double Property"},
        CreatorCase{"Boolean", JCreateBooleanProperty, ICreateBooleanProperty,
                    "true", IsOf<BooleanProperty>, BooleanProperty::kTypeName,
                    "PROPERTY_TYPE_BOOLEAN", "Boolean Property"},
        CreatorCase{"String", JCreateStringProperty, ICreateStringProperty,
                    "text", IsOf<StringProperty>, StringProperty::kTypeName,
                    "PROPERTY_TYPE_STRING", "String Property"},
        CreatorCase{"List", JCreateListProperty, ICreateListProperty, "a|b",
                    IsOf<ListProperty>, ListProperty::kTypeName,
                    "PROPERTY_TYPE_LIST", "List Property"},
        CreatorCase{"IpAddr", JCreateIpAddrProperty, ICreateIpAddrProperty,
                    "1.2.3.4", IsOf<IpAddrProperty>, IpAddrProperty::kTypeName,
                    "PROPERTY_TYPE_IP_ADDR", "IP Address Property"}),
    [](const testing::TestParamInfo<CreatorCase>& info) {
      return std::string(info.param.label);
    });

}  // namespace
