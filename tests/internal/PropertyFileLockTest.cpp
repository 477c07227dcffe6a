// PropertyFileLockTest.cpp - the advisory lock of a property file, and the
// compare-and-write of a rewrite that keeps another program's update.

#include "PropertyFileLock.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <string>

#include "PropertyFile.h"
#include "PropertyTextBuffer.h"
#include "support/TempDir.h"

namespace {

using test_support::FileExists;
using test_support::ReadFile;
using test_support::TempDir;
using test_support::WriteFile;

// True if another open file description can take the lock in mode now.
bool OthersCanLock(const std::string& path, int mode) {
  const int fd = ::open(path.c_str(), O_RDONLY);
  const bool free = fd >= 0 && ::flock(fd, mode | LOCK_NB) == 0;
  if (fd >= 0) ::close(fd);
  return free;
}

class PropertyFileLockTest : public testing::Test {
 protected:
  PropertyFileLockTest() : m_path(m_dir.File("settings.properties")) {}

  void SetUp() override {
    if (!PropertyFileLock::Enabled()) {
      GTEST_SKIP() << "the library is built without file locks";
    }
  }

  // What a whole read of the file finds now.
  PropertyFile::Contents Seen() {
    PropertyTextBuffer text;
    PropertyFile::Contents seen;
    PropertyFile::ReadWhole(m_path, text, &seen);
    return seen;
  }
  PropertyFile::Result Rewrite(const PropertyFile::Contents& seen,
                               const std::string& text) {
    return PropertyFile::ReplaceIfUnchanged(m_path, seen, text.data(),
                                            text.size());
  }

  TempDir m_dir;
  std::string m_path;
};

TEST_F(PropertyFileLockTest, MissingFileIsNeitherLockedNorCreated) {
  PropertyFileLock lock;
  EXPECT_FALSE(lock.Acquire(m_path, PropertyFileLock::kShared, O_RDONLY));
  EXPECT_EQ(ENOENT, errno);
  EXPECT_FALSE(FileExists(m_path));
  PropertyTextBuffer text;
  EXPECT_EQ(PropertyFile::kCannotOpen, PropertyFile::ReadWhole(m_path, text));
  EXPECT_FALSE(FileExists(m_path));
}

TEST_F(PropertyFileLockTest, SharedLockAdmitsReadersAndHoldsOffWriters) {
  WriteFile(m_path, "a=1\n");
  PropertyFileLock lock;
  ASSERT_TRUE(lock.Acquire(m_path, PropertyFileLock::kShared, O_RDONLY));
  EXPECT_TRUE(lock.Locked());
  EXPECT_FALSE(lock.Created());
  EXPECT_TRUE(OthersCanLock(m_path, LOCK_SH));
  EXPECT_FALSE(OthersCanLock(m_path, LOCK_EX));
  lock.Release();
  EXPECT_TRUE(OthersCanLock(m_path, LOCK_EX));
}

TEST_F(PropertyFileLockTest, ExclusiveLockHoldsOffEveryone) {
  WriteFile(m_path, "a=1\n");
  {
    PropertyFileLock lock;
    ASSERT_TRUE(lock.Acquire(m_path, PropertyFileLock::kExclusive, O_RDONLY));
    EXPECT_FALSE(OthersCanLock(m_path, LOCK_SH));
  }
  EXPECT_TRUE(OthersCanLock(m_path, LOCK_SH));
}

TEST_F(PropertyFileLockTest, DevicesAreOpenedButNotLocked) {
  PropertyFileLock lock;
  ASSERT_TRUE(lock.Acquire("/dev/null", PropertyFileLock::kShared, O_RDONLY));
  EXPECT_FALSE(lock.Locked());
}

TEST_F(PropertyFileLockTest, HoldTakesTheExclusiveLockOfTheFileOpened) {
  WriteFile(m_path, "a=1\n");
  PropertyFileLock lock;
  ASSERT_TRUE(lock.Hold(m_path, O_RDWR));
  EXPECT_TRUE(lock.Locked());
  EXPECT_TRUE(lock.Regular());
  EXPECT_TRUE(lock.Writable());
  EXPECT_EQ(4u, lock.Size());
  EXPECT_FALSE(OthersCanLock(m_path, LOCK_SH));
  lock.Release();
  ASSERT_TRUE(lock.Hold(m_path, O_RDONLY));
  EXPECT_FALSE(lock.Writable());
}

TEST_F(PropertyFileLockTest, HoldTakesNeitherMissingFilesNorDevices) {
  PropertyFileLock lock;
  EXPECT_FALSE(lock.Hold(m_path, O_RDWR));
  EXPECT_FALSE(FileExists(m_path));
  EXPECT_FALSE(lock.Hold("/dev/null", O_RDWR));
  EXPECT_EQ(-1, lock.Fd());
}

// Hold() does not look the path up again after the lock is had; NamedBy()
// tells whether another file was renamed over it since.
TEST_F(PropertyFileLockTest,
       HeldFileIsNoLongerNamedOnceAnotherIsRenamedOverIt) {
  WriteFile(m_path, "a=1\n");
  PropertyFileLock lock;
  ASSERT_TRUE(lock.Hold(m_path, O_RDWR));
  EXPECT_TRUE(lock.NamedBy(m_path));
  const std::string other = m_dir.File("other");
  WriteFile(other, "b=2\n");
  ASSERT_EQ(0, std::rename(other.c_str(), m_path.c_str()));
  EXPECT_FALSE(lock.NamedBy(m_path));
}

// A rewrite that holds the lock reads and writes through the file it
// opened for it: a shorter text leaves nothing of the longer one.
TEST_F(PropertyFileLockTest, HeldFileIsReadWholeAndReplacedInPlace) {
  WriteFile(m_path, "a=1\nb=2\n");
  PropertyFileLock lock;
  ASSERT_TRUE(lock.Hold(m_path, O_RDWR));
  PropertyTextBuffer text;
  PropertyFile::Contents seen;
  ASSERT_EQ(PropertyFile::kReadWhole,
            PropertyFile::ReadHeld(lock, text, &seen));
  EXPECT_EQ("a=1\nb=2\n", std::string(text.Data(), text.Size()));
  EXPECT_EQ(PropertyFile::Contents::kBytes, seen.state);
  EXPECT_EQ("a=1\nb=2\n", seen.bytes);
  EXPECT_EQ(PropertyFile::kWritten,
            PropertyFile::ReplaceHeld(m_path, lock, "a=3\n", 4));
  EXPECT_EQ("a=3\n", ReadFile(m_path));
}

TEST_F(PropertyFileLockTest, RewriteOfAnUnchangedFileWrites) {
  WriteFile(m_path, "a=1\n");
  const PropertyFile::Contents seen = Seen();
  EXPECT_EQ(PropertyFile::Contents::kBytes, seen.state);
  EXPECT_EQ(PropertyFile::kWritten, Rewrite(seen, "a=2\n"));
  EXPECT_EQ("a=2\n", ReadFile(m_path));
}

TEST_F(PropertyFileLockTest, RewriteOfAFileChangedSinceItWasReadWritesNothing) {
  WriteFile(m_path, "a=1\n");
  const PropertyFile::Contents seen = Seen();
  WriteFile(m_path, "a=1\nb=2\n");  // Another program's rewrite.
  EXPECT_EQ(PropertyFile::kChanged, Rewrite(seen, "a=2\n"));
  EXPECT_EQ("a=1\nb=2\n", ReadFile(m_path));
  // Same size, other bytes: changed too.
  WriteFile(m_path, "a=1\n");
  const PropertyFile::Contents again = Seen();
  WriteFile(m_path, "a=3\n");
  EXPECT_EQ(PropertyFile::kChanged, Rewrite(again, "a=2\n"));
}

TEST_F(PropertyFileLockTest, RewriteOfAFileThatWasAbsentCreatesIt) {
  const PropertyFile::Contents seen = Seen();
  EXPECT_EQ(PropertyFile::Contents::kAbsent, seen.state);
  EXPECT_EQ(PropertyFile::kWritten, Rewrite(seen, "a=2\n"));
  EXPECT_EQ("a=2\n", ReadFile(m_path));
}

TEST_F(PropertyFileLockTest, RewriteOfAFileMadeSinceItWasAbsentWritesNothing) {
  const PropertyFile::Contents seen = Seen();
  WriteFile(m_path, "b=1\n");
  EXPECT_EQ(PropertyFile::kChanged, Rewrite(seen, "a=2\n"));
  EXPECT_EQ("b=1\n", ReadFile(m_path));
}

TEST_F(PropertyFileLockTest, RewriteWithNothingToCompareWrites) {
  WriteFile(m_path, "b=1\n");
  EXPECT_EQ(PropertyFile::kWritten, Rewrite(PropertyFile::Contents(), "a=2\n"));
  EXPECT_EQ("a=2\n", ReadFile(m_path));
}

TEST_F(PropertyFileLockTest, RewriteIntoAMissingDirectoryIsNotOpened) {
  m_path = m_dir.File("missing/settings.properties");
  EXPECT_EQ(PropertyFile::kNotOpened, Rewrite(Seen(), "a=2\n"));
}

}  // namespace
