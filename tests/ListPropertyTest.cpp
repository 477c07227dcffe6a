// ListPropertyTest.cpp - splitting of the list text, choosing by element or
// position, checks and notifications of ListProperty.

#include "ListProperty.h"

#include <gtest/gtest.h>

#include <string>

#include "support/MutexProbe.h"
#include "support/PropertyTesting.h"

namespace {

using test_support::LockProbe;

const char kRejected[] =
    "Property 'k' can only contain 'a value of the list or a number of the "
    "selected element'";

// Gives the tests the elements, the selected position and the mutex.
class ExposedListProperty
    : public test_support::WithVisibleMutex<ListProperty> {
 public:
  using WithVisibleMutex::WithVisibleMutex;
  size_t Count() const { return m_list.size(); }
  unsigned int Selected() const { return m_selected; }
};

// A property "k" over red|green|blue, bound to a manager (which does not own
// it) with one counting change listener. Make() replaces it by a property
// over another list text.
class ListPropertyTest
    : public test_support::LinkedPropertyFixture<ExposedListProperty> {
 protected:
  ListPropertyTest() { Make("red|green|blue"); }
};

// Construction and splitting.

TEST_F(ListPropertyTest, ReportsTypeNameAndHumanName) {
  EXPECT_EQ("PROPERTY_TYPE_LIST", m_property->GetPropertyType());
  EXPECT_EQ("List Property", m_property->GetPropertyName());
}

TEST_F(ListPropertyTest, KeepsKeyAndSection) {
  ListProperty property("k", "a", "s");
  EXPECT_EQ("k", property.GetKey());
  EXPECT_EQ("s", property.GetSection());
}

TEST_F(ListPropertyTest, NewPropertySelectsFirstElement) {
  EXPECT_EQ(0u, m_property->Selected());
  EXPECT_EQ("red", m_property->GetValue());
}

TEST_F(ListPropertyTest, ListValueJoinsElementsWithBars) {
  EXPECT_EQ("red|green|blue", m_property->GetListValue());
}

TEST_F(ListPropertyTest, EmptyPiecesAreDropped) {
  Make("a||b|");
  EXPECT_EQ(2u, m_property->Count());
  EXPECT_EQ("a|b", m_property->GetListValue());
  EXPECT_EQ("a", m_property->GetValue());
}

TEST_F(ListPropertyTest, LeadingBarIsDropped) {
  Make("|a|b");
  EXPECT_EQ(2u, m_property->Count());
  EXPECT_EQ("a", m_property->GetValue());
}

TEST_F(ListPropertyTest, ElementsKeepBlanksAndCase) {
  Make(" a |B");
  EXPECT_EQ(" a |B", m_property->GetListValue());
  EXPECT_EQ(" a ", m_property->GetValue());
}

TEST_F(ListPropertyTest, DuplicateElementsAreKept) {
  Make("x|x");
  EXPECT_EQ(2u, m_property->Count());
  EXPECT_EQ("x|x", m_property->GetListValue());
}

TEST_F(ListPropertyTest, EmptyListTextGivesEmptyList) {
  Make("");
  EXPECT_EQ(0u, m_property->Count());
  EXPECT_EQ("", m_property->GetListValue());
}

TEST_F(ListPropertyTest, OnlyBarsGiveEmptyList) {
  Make("|||");
  EXPECT_EQ(0u, m_property->Count());
  EXPECT_EQ("", m_property->GetListValue());
}

// Choosing by element or by position.

TEST_F(ListPropertyTest, ElementTextSelectsElement) {
  m_property->SetValue("green");
  EXPECT_EQ(1u, m_property->Selected());
  EXPECT_EQ("green", m_property->GetValue());
}

TEST_F(ListPropertyTest, PositionSelectsElementAndReadsBackAsText) {
  m_property->SetValue("1");
  EXPECT_EQ(1u, m_property->Selected());
  EXPECT_EQ("green", m_property->GetValue());
}

TEST_F(ListPropertyTest, LastPositionIsAccepted) {
  m_property->SetValue("2");
  EXPECT_EQ("blue", m_property->GetValue());
}

TEST_F(ListPropertyTest, PositionWithLeadingZeroIsAccepted) {
  m_property->SetValue("01");
  EXPECT_EQ("green", m_property->GetValue());
}

TEST_F(ListPropertyTest, NumericElementWinsOverPosition) {
  Make("10|0|5");
  m_property->SetValue("0");
  EXPECT_EQ(1u, m_property->Selected());
  EXPECT_EQ("0", m_property->GetValue());
}

TEST_F(ListPropertyTest, NumberThatIsNoElementSelectsPosition) {
  Make("10|0|5");
  m_property->SetValue("2");
  EXPECT_EQ(2u, m_property->Selected());
  EXPECT_EQ("5", m_property->GetValue());
}

TEST_F(ListPropertyTest, DuplicateTextSelectsFirstOccurrence) {
  Make("x|x");
  m_property->SetValue("1");
  m_property->SetValue("x");
  EXPECT_EQ(0u, m_property->Selected());
}

TEST_F(ListPropertyTest, PositionSelectsSecondOfDuplicates) {
  Make("x|x");
  m_property->SetValue("1");
  EXPECT_EQ(1u, m_property->Selected());
  EXPECT_EQ("x", m_property->GetValue());
}

// Rejected texts.

TEST_F(ListPropertyTest, RejectsPositionEqualToElementCount) {
  EXPECT_EQ(kRejected, SetValueError("3"));
}

TEST_F(ListPropertyTest, RejectsNegativePosition) {
  EXPECT_EQ(kRejected, SetValueError("-1"));
}

TEST_F(ListPropertyTest, RejectsPositionWithPlusSign) {
  EXPECT_EQ(kRejected, SetValueError("+1"));
}

TEST_F(ListPropertyTest, RejectsPositionWithLeadingBlank) {
  EXPECT_EQ(kRejected, SetValueError(" 1"));
}

TEST_F(ListPropertyTest, RejectsElementInOtherCase) {
  EXPECT_EQ(kRejected, SetValueError("Green"));
}

TEST_F(ListPropertyTest, RejectsEmptyValueText) {
  EXPECT_EQ(kRejected, SetValueError(""));
}

TEST_F(ListPropertyTest, RejectsDigitsBeyondIntRange) {
  EXPECT_EQ(kRejected, SetValueError("99999999999"));
}

TEST_F(ListPropertyTest, EmptyListRejectsEveryValue) {
  Make("");
  EXPECT_EQ(kRejected, SetValueError("0"));
  EXPECT_EQ(kRejected, SetValueError(""));
}

TEST_F(ListPropertyTest, RejectionMessageNamesThePropertyKey) {
  ListProperty property("colour", "red", "");
  try {
    property.SetValue("x");
    FAIL() << "x was accepted";
  } catch (Property::WrongValue& e) {
    EXPECT_EQ(
        "Property 'colour' can only contain 'a value of the list or a number "
        "of the selected element'",
        e.m_message);
  }
}

TEST_F(ListPropertyTest, RejectedValueKeepsSelectionAndNotifiesNobody) {
  m_property->SetValue("blue");
  SetValueError("3");
  EXPECT_EQ("blue", m_property->GetValue());
  EXPECT_EQ(1, m_listener.count);
}

// Notifications and locking.

TEST_F(ListPropertyTest, ListenerSeesNewElement) {
  m_property->SetValue("1");
  EXPECT_EQ(1, m_listener.count);
  EXPECT_EQ(m_property.get(), m_listener.lastProperty);
  EXPECT_EQ("green", m_listener.lastValue);
}

TEST_F(ListPropertyTest, SettingCurrentValueNotifiesAgain) {
  m_property->SetValue("red");
  m_property->SetValue("0");
  EXPECT_EQ(2, m_listener.count);
  EXPECT_EQ("red", m_property->GetValue());
}

TEST_F(ListPropertyTest, SetValueWithoutManagerSelectsElement) {
  ListProperty property("k", "a|b", "");
  property.SetValue("b");
  EXPECT_EQ("b", property.GetValue());
}

TEST_F(ListPropertyTest, SetValueTakesNoPropertyLock) {
  LockProbe probe(m_property->Mutex());
  m_manager.AddChangeListener(&probe);
  m_property->SetValue("green");
  EXPECT_EQ(1, probe.calls);
  EXPECT_FALSE(probe.heldDuringCall);
}

// The checks on their own.

TEST_F(ListPropertyTest, IsValueAtListMatchesWholeElementsExactly) {
  EXPECT_TRUE(m_property->IsValueAtList("green"));
  EXPECT_FALSE(m_property->IsValueAtList("Green"));
  EXPECT_FALSE(m_property->IsValueAtList("green "));
  EXPECT_FALSE(m_property->IsValueAtList("gree"));
  EXPECT_FALSE(m_property->IsValueAtList("1"));
}

TEST_F(ListPropertyTest, IsValueANumberAcceptsPositionsBelowCount) {
  EXPECT_TRUE(m_property->IsValueANumber("0"));
  EXPECT_TRUE(m_property->IsValueANumber("2"));
  EXPECT_FALSE(m_property->IsValueANumber("3"));
}

TEST_F(ListPropertyTest, IsValueANumberRefusesSignsBlanksAndEmptyText) {
  EXPECT_FALSE(m_property->IsValueANumber("-1"));
  EXPECT_FALSE(m_property->IsValueANumber("+1"));
  EXPECT_FALSE(m_property->IsValueANumber(" 1"));
  EXPECT_FALSE(m_property->IsValueANumber("1 "));
  EXPECT_FALSE(m_property->IsValueANumber(""));
}

TEST_F(ListPropertyTest, IsValueANumberRefusesElementText) {
  EXPECT_FALSE(m_property->IsValueANumber("red"));
}

TEST_F(ListPropertyTest, IsValueANumberRefusesDigitsBeyondIntRange) {
  EXPECT_FALSE(m_property->IsValueANumber("99999999999"));
}

TEST_F(ListPropertyTest, IsValueValidNeitherSelectsNorNotifies) {
  m_property->IsValueValid("blue");
  EXPECT_EQ("red", m_property->GetValue());
  EXPECT_EQ(0, m_listener.count);
}

TEST_F(ListPropertyTest, IsValueValidRejectsUnknownText) {
  EXPECT_THROW(m_property->IsValueValid("purple"), Property::WrongValue);
}

}  // namespace
