// PropertyFileTest.cpp - whole-file rewrites in place and atomically, their
// failure results, and what survives a writer killed mid-write.

#include "PropertyFile.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <random>
#include <string>

#include "support/FileFaults.h"
#include "support/TempDir.h"

namespace {

using test_support::ReadFile;
using test_support::ScopedFullDisk;
using test_support::TempDir;
using test_support::WriteFile;

typedef PropertyFile::Result (*Rewrite)(const propstring&, const propstring&);

ino_t InodeOf(const std::string& path) {
  struct stat info;
  return ::stat(path.c_str(), &info) == 0 ? info.st_ino : 0;
}

mode_t ModeOf(const std::string& path) {
  struct stat info;
  return ::stat(path.c_str(), &info) == 0 ? (info.st_mode & 07777) : 0;
}

// The number of entries in dir: a left-over temporary file shows up here.
int EntryCount(const std::string& dir) {
  int count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(dir)) {
    (void)entry;
    ++count;
  }
  return count;
}

class PropertyFileTest : public testing::Test {
 protected:
  std::string Path() const { return m_dir.File("settings.properties"); }

  TempDir m_dir;
};

TEST_F(PropertyFileTest, InPlaceCreatesFileWithText) {
  EXPECT_EQ(PropertyFile::kWritten,
            PropertyFile::ReplaceInPlace(Path(), "a=1\n"));
  EXPECT_EQ("a=1\n", ReadFile(Path()));
}

TEST_F(PropertyFileTest, InPlaceReplacesLongerContentAndKeepsInode) {
  WriteFile(Path(), "a=1\nb=2\nc=3\n");
  const ino_t before = InodeOf(Path());
  EXPECT_EQ(PropertyFile::kWritten,
            PropertyFile::ReplaceInPlace(Path(), "z\n"));
  EXPECT_EQ("z\n", ReadFile(Path()));
  EXPECT_EQ(before, InodeOf(Path()));
}

TEST_F(PropertyFileTest, InPlaceWritesEmptyText) {
  WriteFile(Path(), "a=1\n");
  EXPECT_EQ(PropertyFile::kWritten, PropertyFile::ReplaceInPlace(Path(), ""));
  EXPECT_EQ("", ReadFile(Path()));
}

TEST_F(PropertyFileTest, InPlaceReportsDirectoryAsNotOpened) {
  EXPECT_EQ(PropertyFile::kNotOpened,
            PropertyFile::ReplaceInPlace(m_dir.path(), "a=1\n"));
}

TEST_F(PropertyFileTest, InPlaceReportsFullDeviceAsWriteFailed) {
  EXPECT_EQ(PropertyFile::kWriteFailed,
            PropertyFile::ReplaceInPlace("/dev/full", "a=1\n"));
}

TEST_F(PropertyFileTest, InPlaceFailedWriteLeavesTruncatedFile) {
  WriteFile(Path(), "a=1\n");
  ScopedFullDisk full;
  EXPECT_EQ(PropertyFile::kWriteFailed,
            PropertyFile::ReplaceInPlace(Path(), "b=2\n"));
  EXPECT_EQ("", ReadFile(Path()));
}

TEST_F(PropertyFileTest, AtomicCreatesFileWithText) {
  EXPECT_EQ(PropertyFile::kWritten,
            PropertyFile::ReplaceAtomically(Path(), "a=1\n"));
  EXPECT_EQ("a=1\n", ReadFile(Path()));
  EXPECT_EQ(1, EntryCount(m_dir.path()));
}

TEST_F(PropertyFileTest, AtomicGivesNewFileTheUsualMode) {
  const mode_t mask = ::umask(022);
  PropertyFile::ReplaceAtomically(Path(), "a=1\n");
  ::umask(mask);
  EXPECT_EQ(0644u, ModeOf(Path()));
}

TEST_F(PropertyFileTest, AtomicReplacesFileByRenameAndKeepsItsMode) {
  WriteFile(Path(), "a=1\n");
  ::chmod(Path().c_str(), 0640);
  const ino_t before = InodeOf(Path());
  EXPECT_EQ(PropertyFile::kWritten,
            PropertyFile::ReplaceAtomically(Path(), "b=2\n"));
  EXPECT_EQ("b=2\n", ReadFile(Path()));
  EXPECT_NE(before, InodeOf(Path()));
  EXPECT_EQ(0640u, ModeOf(Path()));
  EXPECT_EQ(1, EntryCount(m_dir.path()));
}

TEST_F(PropertyFileTest, AtomicFollowsSymbolicLinkToItsTarget) {
  const std::string target = m_dir.File("real.properties");
  WriteFile(target, "a=1\n");
  ASSERT_EQ(0, ::symlink("real.properties", Path().c_str()));
  EXPECT_EQ(PropertyFile::kWritten,
            PropertyFile::ReplaceAtomically(Path(), "b=2\n"));
  struct stat info;
  ASSERT_EQ(0, ::lstat(Path().c_str(), &info));
  EXPECT_TRUE(S_ISLNK(info.st_mode));
  EXPECT_EQ("b=2\n", ReadFile(target));
}

TEST_F(PropertyFileTest, AtomicWritesThroughDanglingLinkInPlace) {
  const std::string target = m_dir.File("missing.properties");
  ASSERT_EQ(0, ::symlink("missing.properties", Path().c_str()));
  EXPECT_EQ(PropertyFile::kWritten,
            PropertyFile::ReplaceAtomically(Path(), "a=1\n"));
  EXPECT_EQ("a=1\n", ReadFile(target));
}

TEST_F(PropertyFileTest, AtomicFallsBackInPlaceForDevice) {
  EXPECT_EQ(PropertyFile::kWriteFailed,
            PropertyFile::ReplaceAtomically("/dev/full", "a=1\n"));
}

TEST_F(PropertyFileTest, AtomicReportsDirectoryAsNotOpened) {
  EXPECT_EQ(PropertyFile::kNotOpened,
            PropertyFile::ReplaceAtomically(m_dir.path(), "a=1\n"));
}

TEST_F(PropertyFileTest, AtomicReportsPathBelowRegularFileAsNotOpened) {
  WriteFile(m_dir.File("plain"), "x");
  EXPECT_EQ(PropertyFile::kNotOpened,
            PropertyFile::ReplaceAtomically(m_dir.File("plain") + "/p", "a"));
}

TEST_F(PropertyFileTest, AtomicFailedWriteKeepsOldTextAndLeavesNoTemporary) {
  WriteFile(Path(), "a=1\n");
  {
    ScopedFullDisk full;
    EXPECT_EQ(PropertyFile::kWriteFailed,
              PropertyFile::ReplaceAtomically(Path(), "b=2\n"));
  }
  EXPECT_EQ("a=1\n", ReadFile(Path()));
  EXPECT_EQ(1, EntryCount(m_dir.path()));
}

TEST_F(PropertyFileTest, ReplaceFollowsTheBuildOption) {
  WriteFile(Path(), "a=1\n");
  const ino_t before = InodeOf(Path());
  EXPECT_EQ(PropertyFile::kWritten, PropertyFile::Replace(Path(), "b=2\n"));
  EXPECT_EQ("b=2\n", ReadFile(Path()));
  EXPECT_EQ(PropertyFile::SafeWrites(), before != InodeOf(Path()));
}

// A writer process rewrites one file with two texts in turn and is killed at
// a random moment; returns how many of the runs left a file that is neither
// text (torn, empty or missing).
int CountTornFilesAfterKills(Rewrite rewrite, const std::string& path,
                             int runs) {
  const std::string oldText(64 * 1024, 'o');
  const std::string newText(96 * 1024, 'n');
  std::mt19937 random(12345);
  std::uniform_int_distribution<int> delayMicros(0, 3000);
  int torn = 0;
  for (int run = 0; run < runs; ++run) {
    rewrite(path, oldText);
    int ready[2];
    if (::pipe(ready) != 0) return -1;
    const pid_t writer = ::fork();
    if (writer == 0) {
      ::close(ready[0]);
      if (::write(ready[1], "r", 1) != 1) _exit(1);
      for (;;) {
        rewrite(path, newText);
        rewrite(path, oldText);
      }
    }
    ::close(ready[1]);
    char byte;
    if (::read(ready[0], &byte, 1) != 1) return -1;
    ::close(ready[0]);
    // The kill lands at a random moment of the writer's loop.
    ::usleep(static_cast<useconds_t>(delayMicros(random)));
    ::kill(writer, SIGKILL);
    ::waitpid(writer, nullptr, 0);
    const std::string survived = ReadFile(path);
    if (survived != oldText && survived != newText) ++torn;
  }
  return torn;
}

TEST_F(PropertyFileTest, KilledAtomicWriterAlwaysLeavesOldOrNewText) {
  const int torn =
      CountTornFilesAfterKills(PropertyFile::ReplaceAtomically, Path(), 300);
  RecordProperty("TornFilesOf300", torn);
  EXPECT_EQ(0, torn);
}

TEST_F(PropertyFileTest, KilledInPlaceWriterCanLeaveTornFile) {
  // The hazard that the atomic way removes. The rate depends on the machine
  // and is printed for the record; that it is not zero is practically
  // certain, since every rewrite passes through a truncated file.
  const int torn =
      CountTornFilesAfterKills(PropertyFile::ReplaceInPlace, Path(), 300);
  RecordProperty("TornFilesOf300", torn);
  std::printf("in-place rewrite: %d of 300 killed writers left a torn file\n",
              torn);
  EXPECT_GT(torn, 0);
}

}  // namespace
