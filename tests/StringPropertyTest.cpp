// StringPropertyTest.cpp - checks, stored text, locking and notifications of
// StringProperty.

#include "StringProperty.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <memory>
#include <string>
#include <thread>

#include "PropertyChangeListener.h"
#include "support/Recorders.h"

namespace {

const char kHashMessage[] = "Property values can not contain character \"#\"";

// True if a thread other than the caller could lock mutex right now.
bool IsFreeForOtherThreads(pthread_mutex_t* mutex) {
  bool free = false;
  std::thread other([mutex, &free] {
    if (pthread_mutex_trylock(mutex) == 0) {
      free = true;
      pthread_mutex_unlock(mutex);
    }
  });
  other.join();
  return free;
}

// Gives the tests the property's own mutex.
class ExposedStringProperty : public StringProperty {
 public:
  using StringProperty::StringProperty;
  pthread_mutex_t* Mutex() const { return m_mutex; }
};

// Records whether the property's mutex was held while it was being told.
class LockProbe : public PropertyChangeListener {
 public:
  explicit LockProbe(pthread_mutex_t* mutex) : m_mutex(mutex) {}
  void PropertyChanged(Property*) override {
    ++calls;
    heldDuringCall = !IsFreeForOtherThreads(m_mutex);
  }

  int calls = 0;
  bool heldDuringCall = false;

 private:
  pthread_mutex_t* m_mutex;
};

// A property "k" with the value "initial", bound to a manager (which does not
// own it) with one counting change listener.
class StringPropertyTest : public testing::Test {
 protected:
  StringPropertyTest()
      : m_property(new ExposedStringProperty("k", "initial", "")) {
    m_property->RegisterPropertyManager(&m_manager);
    m_manager.AddChangeListener(&m_listener);
  }

  // The message of the exception SetValue throws, or "<accepted>".
  std::string SetValueError(const propstring& value) {
    try {
      m_property->SetValue(value);
    } catch (Property::WrongValue& e) {
      return e.m_message;
    }
    return "<accepted>";
  }

  test_support::TestManager m_manager;
  test_support::CountingChangeListener m_listener;
  std::unique_ptr<ExposedStringProperty> m_property;
};

TEST_F(StringPropertyTest, KeepsUncheckedInitialValueWithHash) {
  StringProperty property("k", "a#b", "");
  EXPECT_EQ("a#b", property.GetValue());
}

TEST_F(StringPropertyTest, KeepsKeyAndSection) {
  StringProperty property("k", "v", "s");
  EXPECT_EQ("k", property.GetKey());
  EXPECT_EQ("s", property.GetSection());
}

TEST_F(StringPropertyTest, ReportsTypeNameAndHumanName) {
  StringProperty property("k", "v", "");
  EXPECT_EQ("PROPERTY_TYPE_STRING", property.GetPropertyType());
  EXPECT_EQ("String Property", property.GetPropertyName());
}

TEST_F(StringPropertyTest, SetValueWithHashThrowsFixedMessage) {
  EXPECT_EQ(kHashMessage, SetValueError("a#b"));
}

TEST_F(StringPropertyTest, SetValueWithLoneHashThrowsFixedMessage) {
  EXPECT_EQ(kHashMessage, SetValueError("#"));
}

TEST_F(StringPropertyTest, RejectedValueKeepsInitialHashValue) {
  StringProperty property("k", "a#b", "");
  EXPECT_THROW(property.SetValue("a#b"), Property::WrongValue);
  EXPECT_EQ("a#b", property.GetValue());
}

TEST_F(StringPropertyTest, RejectedValueKeepsValueAndNotifiesNobody) {
  SetValueError("x#");
  EXPECT_EQ("initial", m_property->GetValue());
  EXPECT_EQ(0, m_listener.count);
}

TEST_F(StringPropertyTest, SetValueAcceptsEmptyTextAndNotifies) {
  EXPECT_EQ("<accepted>", SetValueError(""));
  EXPECT_EQ("", m_property->GetValue());
  EXPECT_EQ(1, m_listener.count);
  EXPECT_EQ("", m_listener.lastValue);
}

TEST_F(StringPropertyTest, SetValueAcceptsEqualsSign) {
  EXPECT_EQ("<accepted>", SetValueError("="));
  EXPECT_EQ("=", m_property->GetValue());
}

TEST_F(StringPropertyTest, SetValueAcceptsLineFeed) {
  EXPECT_EQ("<accepted>", SetValueError("a\nb"));
  EXPECT_EQ("a\nb", m_property->GetValue());
}

TEST_F(StringPropertyTest, SetValueKeepsBlanksAndCase) {
  m_property->SetValue("  Mixed Case  ");
  EXPECT_EQ("  Mixed Case  ", m_property->GetValue());
}

TEST_F(StringPropertyTest, ListenerSeesNewValue) {
  m_property->SetValue("new");
  EXPECT_EQ(1, m_listener.count);
  EXPECT_EQ(m_property.get(), m_listener.lastProperty);
  EXPECT_EQ("new", m_listener.lastValue);
}

TEST_F(StringPropertyTest, SettingCurrentValueNotifiesAgain) {
  m_property->SetValue("initial");
  m_property->SetValue("initial");
  EXPECT_EQ(2, m_listener.count);
}

TEST_F(StringPropertyTest, IsValueValidNeitherStoresNorNotifies) {
  m_property->IsValueValid("other");
  EXPECT_EQ("initial", m_property->GetValue());
  EXPECT_EQ(0, m_listener.count);
}

TEST_F(StringPropertyTest, IsValueValidRejectsHash) {
  try {
    m_property->IsValueValid("a#");
    FAIL() << "a# was accepted";
  } catch (Property::WrongValue& e) {
    EXPECT_EQ(kHashMessage, e.m_message);
  }
}

TEST_F(StringPropertyTest, SetValueWithoutManagerStoresValue) {
  StringProperty property("k", "v", "");
  property.SetValue("w");
  EXPECT_EQ("w", property.GetValue());
}

TEST_F(StringPropertyTest, SetValueHoldsPropertyMutexWhileNotifying) {
  LockProbe probe(m_property->Mutex());
  m_manager.AddChangeListener(&probe);
  m_property->SetValue("new");
  EXPECT_EQ(1, probe.calls);
  EXPECT_TRUE(probe.heldDuringCall);
  EXPECT_TRUE(IsFreeForOtherThreads(m_property->Mutex()));
}

TEST_F(StringPropertyTest, RejectedSetValueReleasesPropertyMutex) {
  SetValueError("#");
  EXPECT_TRUE(IsFreeForOtherThreads(m_property->Mutex()));
}

}  // namespace
