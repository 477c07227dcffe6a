// PropertyFileTroublesTest.cpp - which binding a failure is charged to, and
// which failures count.

#include "PropertyFileTroubles.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <thread>

#include "support/TempDir.h"

namespace {

typedef PropertySafety::FileTrouble FileTrouble;

class PropertyFileTroublesTest : public testing::Test {
 protected:
  ~PropertyFileTroublesTest() override {
    PropertyFileTroubles::Forget(&m_first);
    PropertyFileTroubles::Forget(&m_second);
  }

  test_support::TempDir m_dir;
  int m_first = 0;   // Its address names a binding.
  int m_second = 0;  // And this one another.
};

TEST_F(PropertyFileTroublesTest, NoteInsideScopeIsTheScopesBindings) {
  const std::string path = m_dir.File("f");
  {
    PropertyFileTroubles::Scope scope(&m_first, path);
    PropertyFileTroubles::Note(FileTrouble::kWrite, EACCES);
  }
  const FileTrouble trouble = PropertyFileTroubles::Last(&m_first, path);
  EXPECT_EQ(path, trouble.path);
  EXPECT_EQ(FileTrouble::kWrite, trouble.operation);
  EXPECT_EQ(EACCES, trouble.error);
  EXPECT_EQ("Permission denied", trouble.errorText);
  EXPECT_EQ(FileTrouble::kNone,
            PropertyFileTroubles::Last(&m_second, path).operation);
}

TEST_F(PropertyFileTroublesTest, NoteOutsideAnyScopeGoesNowhere) {
  PropertyFileTroubles::Note(FileTrouble::kWrite, EACCES);
  const FileTrouble trouble = PropertyFileTroubles::Last(&m_first, "p");
  EXPECT_EQ(FileTrouble::kNone, trouble.operation);
  EXPECT_EQ(0, trouble.error);
  EXPECT_EQ("", trouble.errorText);
}

TEST_F(PropertyFileTroublesTest, InnermostScopeTakesTheNote) {
  const std::string a = m_dir.File("a");
  const std::string b = m_dir.File("b");
  PropertyFileTroubles::Scope outer(&m_first, a);
  {
    PropertyFileTroubles::Scope inner(&m_second, b);
    PropertyFileTroubles::Note(FileTrouble::kLock, EWOULDBLOCK);
  }
  PropertyFileTroubles::Note(FileTrouble::kWrite, ENOSPC);
  EXPECT_EQ(FileTrouble::kLock,
            PropertyFileTroubles::Last(&m_second, "b").operation);
  EXPECT_EQ(ENOSPC, PropertyFileTroubles::Last(&m_first, "a").error);
}

TEST_F(PropertyFileTroublesTest, ScopeBelongsToItsThread) {
  const std::string path = m_dir.File("a");
  PropertyFileTroubles::Scope scope(&m_first, path);
  std::thread([] {
    PropertyFileTroubles::Note(FileTrouble::kWrite, EIO);
  }).join();
  EXPECT_EQ(FileTrouble::kNone,
            PropertyFileTroubles::Last(&m_first, "a").operation);
}

TEST_F(PropertyFileTroublesTest, LaterNoteReplacesEarlierOne) {
  const std::string path = m_dir.File("a");
  PropertyFileTroubles::Scope scope(&m_first, path);
  PropertyFileTroubles::Note(FileTrouble::kRead, EACCES);
  PropertyFileTroubles::Note(FileTrouble::kWrite, EROFS);
  const FileTrouble trouble = PropertyFileTroubles::Last(&m_first, "a");
  EXPECT_EQ(FileTrouble::kWrite, trouble.operation);
  EXPECT_EQ(EROFS, trouble.error);
}

TEST_F(PropertyFileTroublesTest, MissingFileInExistingDirectoryIsNoTrouble) {
  const std::string path = m_dir.File("new");
  PropertyFileTroubles::Scope scope(&m_first, path);
  PropertyFileTroubles::Note(FileTrouble::kRead, ENOENT);
  EXPECT_EQ(FileTrouble::kNone,
            PropertyFileTroubles::Last(&m_first, "new").operation);
}

TEST_F(PropertyFileTroublesTest, MissingDirectoryIsReadTrouble) {
  const std::string path = m_dir.File("gone/new");
  PropertyFileTroubles::Scope scope(&m_first, path);
  PropertyFileTroubles::Note(FileTrouble::kRead, ENOENT);
  const FileTrouble trouble = PropertyFileTroubles::Last(&m_first, "new");
  EXPECT_EQ(FileTrouble::kRead, trouble.operation);
  EXPECT_EQ("No such file or directory", trouble.errorText);
}

TEST_F(PropertyFileTroublesTest, NoteKeepsErrno) {
  const std::string path = m_dir.File("gone/new");
  PropertyFileTroubles::Scope scope(&m_first, path);
  errno = EINTR;
  PropertyFileTroubles::Note(FileTrouble::kRead, ENOENT);
  EXPECT_EQ(EINTR, errno);
}

TEST_F(PropertyFileTroublesTest, ForgetDropsTheTrouble) {
  {
    const std::string path = "p";
    PropertyFileTroubles::Scope scope(&m_first, path);
    PropertyFileTroubles::Note(FileTrouble::kWrite, EIO);
  }
  PropertyFileTroubles::Forget(&m_first);
  EXPECT_EQ(FileTrouble::kNone,
            PropertyFileTroubles::Last(&m_first, "p").operation);
}

}  // namespace
