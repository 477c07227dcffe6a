// PropertyFileWatcherTest.cpp - a program following outside changes of its
// bound files: edits in place, renames, deletion and a new file reach its
// listeners; unchanged values and its own rewrites notify nobody; read-only
// bindings (also the INI ones the manager does not record) are followed.
// Waits are poll(2) on the watcher's descriptor, bounded by kWaitMs.

#include "PropertyFileWatcher.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <stdio.h>

#include <chrono>
#include <memory>
#include <string>

#include "Properties.h"
#include "support/Flavours.h"
#include "support/Recorders.h"
#include "support/TempDir.h"

namespace {

using test_support::CountingChangeListener;
using test_support::FlavourNames;
using test_support::Flavours;
using test_support::ReadFile;
using test_support::TempDir;
using test_support::WriteFile;

const int kWaitMs = 5000;

template <typename F>
class PropertyFileWatcherTest : public testing::Test {
 protected:
  typedef typename F::Manager Manager;

  PropertyFileWatcherTest()
      : m_path(m_dir.File(std::string("watched") + F::kExtension)),
        m_manager(new Manager("watched", F::LibraryFactory())) {
    m_manager->AddChangeListener(&m_listener);
  }

  std::string Text(const std::string& entries) const {
    return F::Written("", entries);
  }
  // Binds the file holding port=1 and makes the watcher.
  void BindAndWatch(bool readWrite) {
    WriteFile(m_path, Text("port=1\n"));
    if (readWrite) {
      m_manager->RegisterPersistence(m_path, "");
    } else {
      m_manager->RegisterNonPersistence(m_path);
    }
    F::Register(m_manager.get(), "PROPERTY_TYPE_INTEGER", "port", "0");
    m_watcher.reset(new PropertyFileWatcher(m_manager.get()));
    m_listener.count = 0;
  }
  // Gives the file entries in one step, as editors and crash-safe
  // rewrites do: a new file renamed into place.
  void Replace(const std::string& entries) {
    const std::string next = m_dir.File("next");
    WriteFile(next, Text(entries));
    ASSERT_EQ(0, ::rename(next.c_str(), m_path.c_str()));
  }
  // Processes changes as they come until done() holds; false if it does
  // not within kWaitMs. A write in place comes as several notices, and an
  // early one may find the text half written: hence the loop.
  template <typename Done>
  bool ProcessUntil(Done done) {
    const auto deadline =
        std::chrono::steady_clock::now() + std::chrono::milliseconds(kWaitMs);
    while (!done()) {
      const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
          deadline - std::chrono::steady_clock::now());
      struct pollfd ready = {m_watcher->FileDescriptor(), POLLIN, 0};
      if (left.count() <= 0 ||
          ::poll(&ready, 1, static_cast<int>(left.count())) != 1) {
        return false;
      }
      m_watcher->ProcessChanges();
    }
    return true;
  }
  // Processes the notices of one step (a rename: all of them at once).
  bool ProcessOneChange() {
    struct pollfd ready = {m_watcher->FileDescriptor(), POLLIN, 0};
    return ::poll(&ready, 1, kWaitMs) == 1 && m_watcher->ProcessChanges();
  }
  std::string Port() const { return F::Get(*m_manager, "port"); }

  TempDir m_dir;
  std::string m_path;
  CountingChangeListener m_listener;
  std::unique_ptr<Manager> m_manager;
  std::unique_ptr<PropertyFileWatcher> m_watcher;
};

TYPED_TEST_SUITE(PropertyFileWatcherTest, Flavours, FlavourNames);

TYPED_TEST(PropertyFileWatcherTest, OutsideEditInPlaceReachesTheListener) {
  this->BindAndWatch(true);
  WriteFile(this->m_path, this->Text("port=2\n"));
  ASSERT_TRUE(this->ProcessUntil([this] { return this->Port() == "2"; }));
  EXPECT_EQ(1, this->m_listener.count);
  EXPECT_EQ("2", this->m_listener.lastValue);
}

TYPED_TEST(PropertyFileWatcherTest, OutsideEditSurvivesTheNextOwnChange) {
  this->BindAndWatch(true);
  TypeParam::Register(this->m_manager.get(), "PROPERTY_TYPE_INTEGER", "other",
                      "5");
  this->Replace("other=5\nport=7\n");
  ASSERT_TRUE(this->ProcessOneChange());
  TypeParam::Set(this->m_manager.get(), "other", "6");
  EXPECT_EQ(this->Text("other=6\nport=7\n"), ReadFile(this->m_path));
}

TYPED_TEST(PropertyFileWatcherTest, UnchangedValueNotifiesNobody) {
  this->BindAndWatch(true);
  this->Replace("port=1\nunbound=3\n");
  ASSERT_TRUE(this->ProcessOneChange());
  EXPECT_EQ(0, this->m_listener.count);
}

TYPED_TEST(PropertyFileWatcherTest, OwnRewriteNotifiesNobodyAndWritesNothing) {
  this->BindAndWatch(true);
  TypeParam::Set(this->m_manager.get(), "port", "3");
  EXPECT_EQ(1, this->m_listener.count);
  const std::string written = ReadFile(this->m_path);
  // The rewrite is done: all its notices are waiting.
  ASSERT_TRUE(this->ProcessOneChange());
  EXPECT_EQ(1, this->m_listener.count);
  EXPECT_EQ(written, ReadFile(this->m_path));
}

TYPED_TEST(PropertyFileWatcherTest, FileRenamedIntoPlaceIsFollowed) {
  this->BindAndWatch(true);
  this->Replace("port=4\n");
  ASSERT_TRUE(this->ProcessOneChange());
  EXPECT_EQ("4", this->Port());
  // And the new file is followed in its turn.
  this->Replace("port=5\n");
  ASSERT_TRUE(this->ProcessOneChange());
  EXPECT_EQ("5", this->Port());
}

TYPED_TEST(PropertyFileWatcherTest, FileDeletedAndMadeAgainIsFollowed) {
  this->BindAndWatch(false);
  ASSERT_EQ(0, ::remove(this->m_path.c_str()));
  ASSERT_TRUE(this->ProcessOneChange());
  EXPECT_EQ("1", this->Port());
  EXPECT_EQ(0, this->m_listener.count);
  WriteFile(this->m_path, this->Text("port=6\n"));
  ASSERT_TRUE(this->ProcessUntil([this] { return this->Port() == "6"; }));
}

TYPED_TEST(PropertyFileWatcherTest, ReadOnlyBindingIsFollowed) {
  this->BindAndWatch(false);
  this->Replace("port=8\n");
  ASSERT_TRUE(this->ProcessOneChange());
  EXPECT_EQ("8", this->Port());
  EXPECT_EQ(this->Text("port=8\n"), ReadFile(this->m_path));
}

TYPED_TEST(PropertyFileWatcherTest,
           ChangeOfAnotherFileInTheDirectoryIsIgnored) {
  this->BindAndWatch(true);
  WriteFile(this->m_dir.File("other"), "x=1\n");
  struct pollfd ready = {this->m_watcher->FileDescriptor(), POLLIN, 0};
  ASSERT_EQ(1, ::poll(&ready, 1, kWaitMs));
  EXPECT_FALSE(this->m_watcher->ProcessChanges());
}

TYPED_TEST(PropertyFileWatcherTest, ReloadLoadsChangedValuesNow) {
  this->BindAndWatch(true);
  WriteFile(this->m_path, this->Text("port=9\n"));
  PropertyFileWatcher::Reload(this->m_manager.get());
  EXPECT_EQ(1, this->m_listener.count);
  EXPECT_EQ("9", this->Port());
}

}  // namespace
