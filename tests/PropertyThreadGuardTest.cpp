// PropertyThreadGuardTest.cpp - recursive mutexes from PropertyCreateNewMutex
// and the scoped lock PropertyThreadGuard.

#include "PropertyThreadGuard.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <stdexcept>

#include "support/MutexProbe.h"

namespace {

using test_support::IsFreeForOtherThreads;

class PropertyThreadGuardTest : public testing::Test {
 protected:
  PropertyThreadGuardTest() : m_mutex(PropertyCreateNewMutex()) {}
  ~PropertyThreadGuardTest() override { PropertyDeleteMutex(m_mutex); }

  pthread_mutex_t* m_mutex;
};

TEST_F(PropertyThreadGuardTest, NewMutexIsUnlocked) {
  ASSERT_NE(m_mutex, nullptr);
  EXPECT_TRUE(IsFreeForOtherThreads(m_mutex));
}

TEST_F(PropertyThreadGuardTest, EachNewMutexIsSeparate) {
  pthread_mutex_t* other = PropertyCreateNewMutex();
  EXPECT_NE(other, m_mutex);
  {
    PropertyThreadGuard guard(m_mutex);
    EXPECT_TRUE(IsFreeForOtherThreads(other));
  }
  PropertyDeleteMutex(other);
}

TEST_F(PropertyThreadGuardTest, GuardHoldsMutexUntilItIsDestroyed) {
  {
    PropertyThreadGuard guard(m_mutex);
    EXPECT_FALSE(IsFreeForOtherThreads(m_mutex));
  }
  EXPECT_TRUE(IsFreeForOtherThreads(m_mutex));
}

TEST_F(PropertyThreadGuardTest, NestedGuardsOnOneThreadDoNotDeadlock) {
  {
    PropertyThreadGuard outer(m_mutex);
    PropertyThreadGuard inner(m_mutex);
    EXPECT_FALSE(IsFreeForOtherThreads(m_mutex));
  }
  EXPECT_TRUE(IsFreeForOtherThreads(m_mutex));
}

TEST_F(PropertyThreadGuardTest, OuterGuardStillHoldsMutexAfterInnerEnds) {
  PropertyThreadGuard outer(m_mutex);
  { PropertyThreadGuard inner(m_mutex); }
  EXPECT_FALSE(IsFreeForOtherThreads(m_mutex));
}

TEST_F(PropertyThreadGuardTest, GuardReleasesMutexWhenExceptionLeavesScope) {
  try {
    PropertyThreadGuard guard(m_mutex);
    throw std::runtime_error("leaving the guarded scope");
  } catch (const std::runtime_error&) {
  }
  EXPECT_TRUE(IsFreeForOtherThreads(m_mutex));
}

TEST_F(PropertyThreadGuardTest, MutexLockedTwiceNeedsTwoUnlocks) {
  ASSERT_EQ(pthread_mutex_lock(m_mutex), 0);
  ASSERT_EQ(pthread_mutex_lock(m_mutex), 0);
  ASSERT_EQ(pthread_mutex_unlock(m_mutex), 0);
  EXPECT_FALSE(IsFreeForOtherThreads(m_mutex));
  ASSERT_EQ(pthread_mutex_unlock(m_mutex), 0);
  EXPECT_TRUE(IsFreeForOtherThreads(m_mutex));
}

TEST_F(PropertyThreadGuardTest, HeldMutexCanBeTriedAgainByItsOwner) {
  PropertyThreadGuard guard(m_mutex);
  ASSERT_EQ(pthread_mutex_trylock(m_mutex), 0);
  EXPECT_EQ(pthread_mutex_unlock(m_mutex), 0);
}

}  // namespace
