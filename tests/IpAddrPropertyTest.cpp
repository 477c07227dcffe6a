// IpAddrPropertyTest.cpp - accepted address forms, text form, checks, locking
// and notifications of IpAddrProperty.

#include "IpAddrProperty.h"

#include <gtest/gtest.h>

#include <string>

#include "support/MutexProbe.h"
#include "support/PropertyTesting.h"

namespace {

using test_support::IsFreeForOtherThreads;
using test_support::LockProbe;

const char kRejected[] = "Property 'k' can only contain 'an ip address'";

// Gives the tests the property's own mutex.
typedef test_support::WithVisibleMutex<IpAddrProperty> ExposedIpAddrProperty;

// The message of the WrongValue that action throws, or
// test_support::kAccepted.
constexpr auto& ErrorOf = test_support::WrongValueMessage;

// A property "k" holding 127.0.0.1, bound to a manager (which does not own it)
// with one counting change listener.
class IpAddrPropertyTest
    : public test_support::LinkedPropertyFixture<ExposedIpAddrProperty> {
 protected:
  IpAddrPropertyTest() { Make("127.0.0.1"); }

  // Sets value and returns what the property reads back.
  propstring SetAndGet(const propstring& value) {
    m_property->SetValue(value);
    return m_property->GetValue();
  }
};

TEST_F(IpAddrPropertyTest, ReportsTypeNameAndHumanName) {
  EXPECT_EQ("PROPERTY_TYPE_IP_ADDR", m_property->GetPropertyType());
  EXPECT_EQ("IP Address Property", m_property->GetPropertyName());
}

TEST_F(IpAddrPropertyTest, KeepsKeyAndSection) {
  IpAddrProperty property("k", "1.2.3.4", "s");
  EXPECT_EQ("k", property.GetKey());
  EXPECT_EQ("s", property.GetSection());
}

TEST_F(IpAddrPropertyTest, ConstructorNormalisesInitialAddress) {
  IpAddrProperty property("k", "10.1", "");
  EXPECT_EQ("10.0.0.1", property.GetValue());
}

TEST_F(IpAddrPropertyTest, ConstructorRejectsBadInitialAddress) {
  EXPECT_EQ(kRejected,
            ErrorOf([] { IpAddrProperty property("k", "abc", ""); }));
}

TEST_F(IpAddrPropertyTest, DottedQuadReadsBackUnchanged) {
  EXPECT_EQ("192.168.1.1", SetAndGet("192.168.1.1"));
}

TEST_F(IpAddrPropertyTest, TwoPartAddressFillsLastThreeBytes) {
  EXPECT_EQ("10.0.0.1", SetAndGet("10.1"));
}

TEST_F(IpAddrPropertyTest, HexadecimalPartIsAccepted) {
  EXPECT_EQ("127.0.0.1", SetAndGet("0x7f.1"));
}

TEST_F(IpAddrPropertyTest, OctalPartIsAccepted) {
  EXPECT_EQ("8.0.0.1", SetAndGet("010.0.0.1"));
}

TEST_F(IpAddrPropertyTest, HighestAddressIsAccepted) {
  EXPECT_EQ("255.255.255.255", SetAndGet("255.255.255.255"));
}

TEST_F(IpAddrPropertyTest, RejectsPartAbove255) {
  EXPECT_EQ(kRejected, SetValueError("256.1.1.1"));
}

TEST_F(IpAddrPropertyTest, RejectsLetters) {
  EXPECT_EQ(kRejected, SetValueError("abc"));
}

TEST_F(IpAddrPropertyTest, RejectsEmptyText) {
  EXPECT_EQ(kRejected, SetValueError(""));
}

TEST_F(IpAddrPropertyTest, RejectionMessageNamesThePropertyKey) {
  IpAddrProperty property("server.address", "1.2.3.4", "");
  EXPECT_EQ("Property 'server.address' can only contain 'an ip address'",
            ErrorOf([&property] { property.SetValue("x"); }));
}

TEST_F(IpAddrPropertyTest, RejectedValueKeepsAddressAndNotifiesNobody) {
  SetValueError("256.1.1.1");
  EXPECT_EQ("127.0.0.1", m_property->GetValue());
  EXPECT_EQ(0, m_listener.count);
}

TEST_F(IpAddrPropertyTest, ListenerSeesNewAddress) {
  m_property->SetValue("10.1");
  EXPECT_EQ(1, m_listener.count);
  EXPECT_EQ(m_property.get(), m_listener.lastProperty);
  EXPECT_EQ("10.0.0.1", m_listener.lastValue);
}

TEST_F(IpAddrPropertyTest, SettingSameAddressTwiceNotifiesTwice) {
  m_property->SetValue("1.2.3.4");
  m_property->SetValue("1.2.3.4");
  EXPECT_EQ(2, m_listener.count);
}

TEST_F(IpAddrPropertyTest, AcceptingIsValueValidStoresAddressSilently) {
  m_property->IsValueValid("1.2.3.4");
  EXPECT_EQ("1.2.3.4", m_property->GetValue());
  EXPECT_EQ(0, m_listener.count);
}

TEST_F(IpAddrPropertyTest, RejectingIsValueValidKeepsAddress) {
  EXPECT_EQ(kRejected, ErrorOf([this] { m_property->IsValueValid("abc"); }));
  EXPECT_EQ("127.0.0.1", m_property->GetValue());
}

TEST_F(IpAddrPropertyTest, SetValueWithoutManagerStoresAddress) {
  IpAddrProperty property("k", "1.2.3.4", "");
  property.SetValue("5.6.7.8");
  EXPECT_EQ("5.6.7.8", property.GetValue());
}

TEST_F(IpAddrPropertyTest, SetValueHoldsPropertyMutexWhileNotifying) {
  LockProbe probe(m_property->Mutex());
  m_manager.AddChangeListener(&probe);
  m_property->SetValue("1.2.3.4");
  EXPECT_EQ(1, probe.calls);
  EXPECT_TRUE(probe.heldDuringCall);
  EXPECT_TRUE(IsFreeForOtherThreads(m_property->Mutex()));
}

TEST_F(IpAddrPropertyTest, RejectedSetValueReleasesPropertyMutex) {
  SetValueError("abc");
  EXPECT_TRUE(IsFreeForOtherThreads(m_property->Mutex()));
}

}  // namespace
