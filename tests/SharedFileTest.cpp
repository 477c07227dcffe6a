// SharedFileTest.cpp - several programs bound to one file: no update is lost
// and no reader sees a rewrite half done, for both flavours; a lock holder
// that dies releases the file, and one that holds it too long delays the
// others only for the lock timeout. The programs are SharingDriver runs
// that this test starts and waits for (each ends within a minute).

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <thread>
#include <vector>

#include "PropertyLayout.h"
#include "support/ChildProcess.h"
#include "support/Flavours.h"
#include "support/TempDir.h"

namespace {

using test_support::FlavourNames;
using test_support::Flavours;
using test_support::ProgramResult;
using test_support::ReadFile;
using test_support::RunProgram;
using test_support::TempDir;
using test_support::WriteFile;

// A process that holds the exclusive lock of a file until it is killed.
class LockHolder {
 public:
  explicit LockHolder(const std::string& path) {
    int ready[2];
    if (::pipe(ready) != 0) return;
    m_pid = ::fork();
    if (m_pid == 0) {
      // Only async-signal-safe calls between fork and the end.
      const int fd = ::open(path.c_str(), O_RDONLY);
      const char done = fd >= 0 && ::flock(fd, LOCK_EX) == 0 ? 'y' : 'n';
      if (::write(ready[1], &done, 1) != 1) ::_exit(1);
      ::alarm(60);
      for (;;) ::pause();
    }
    ::close(ready[1]);
    char done = 'n';
    m_locked = ::read(ready[0], &done, 1) == 1 && done == 'y';
    ::close(ready[0]);
  }
  ~LockHolder() { Kill(); }

  bool Locked() const { return m_locked; }
  // SIGKILL, as a crash would end it; waits until it is gone.
  void Kill() {
    if (m_pid <= 0) return;
    ::kill(m_pid, SIGKILL);
    ::waitpid(m_pid, nullptr, 0);
    m_pid = -1;
  }

 private:
  pid_t m_pid = -1;
  bool m_locked = false;
};

// Runs every program at the same time, with the environment changed by
// environment (as RunProgram() takes it), and expects each to succeed.
void RunAllAtOnce(const std::vector<std::vector<std::string>>& programs,
                  const std::vector<std::string>& environment = {}) {
  std::vector<ProgramResult> results(programs.size());
  std::vector<std::thread> threads;
  for (size_t i = 0; i < programs.size(); ++i) {
    threads.emplace_back(
        [&, i] { results[i] = RunProgram(programs[i], environment); });
  }
  for (std::thread& thread : threads) thread.join();
  for (const ProgramResult& result : results) {
    EXPECT_EQ(0, result.status) << result.err;
  }
}

template <typename F>
class SharedFileTest : public testing::Test {
 protected:
  SharedFileTest() : m_path(m_dir.File(std::string("shared.") + Kind())) {}

  void SetUp() override {
#ifdef PROPERTIES_TEST_NO_FILE_LOCKS
    GTEST_SKIP() << "the library is built without file locks";
#endif
  }

  static const char* Kind() { return F::kSectioned ? "ini" : "flat"; }
  // The file with the entry keep=1 that no program binds.
  void WriteKeepFile() {
    WriteFile(m_path, F::kSectioned ? "[s]\nkeep=1\n" : "keep=1\n");
  }
  // The same with a comment line, which only rewrites that keep the
  // layout keep.
  void WriteCommentedKeepFile() {
    WriteFile(m_path,
              Comment() + (F::kSectioned ? "[s]\nkeep=1\n" : "keep=1\n"));
  }
  static std::string Comment() {
    return std::string(1, F::kComment) + " written by hand\n";
  }
  // Four writers of 150 sets each and a reader of 400 reads at the same
  // time, in the environment changed by environment; returns the file.
  std::string RunWritersAndReader(const std::vector<std::string>& environment) {
    const int kWriters = 4;
    const int kSets = 150;
    std::vector<std::vector<std::string>> programs;
    for (int i = 0; i < kWriters; ++i) {
      programs.push_back(Writer("w" + std::to_string(i), kSets));
    }
    programs.push_back(
        {PROPERTIES_SHARING_DRIVER, Kind(), m_path, "reader", "400", "keep"});
    RunAllAtOnce(programs, environment);
    const std::string text = ReadFile(m_path);
    EXPECT_NE(std::string::npos, text.find(Entry("keep", "1"))) << text;
    for (int i = 0; i < kWriters; ++i) {
      EXPECT_NE(std::string::npos, text.find(Entry("w" + std::to_string(i),
                                                   std::to_string(kSets))))
          << text;
    }
    return text;
  }
  // Two managers of this process set their own key 200 times each, at the
  // same time, keeping the layout if keepLayout; returns the file.
  std::string RunTwoManagers(bool keepLayout) {
    typedef typename F::Manager Manager;
    const int kSets = 200;
    std::vector<std::thread> threads;
    for (const std::string key : {"w0", "w1"}) {
      threads.emplace_back([this, key, keepLayout] {
        Manager manager("shared-" + key, F::LibraryFactory());
        PropertyLayout::SetKeepLayout(&manager, keepLayout);
        manager.RegisterPersistence(m_path, "");
        F::Register(&manager, "PROPERTY_TYPE_INTEGER", key, "0");
        for (int i = 1; i <= kSets; ++i)
          F::Set(&manager, key, std::to_string(i));
      });
    }
    for (std::thread& thread : threads) thread.join();
    const std::string text = ReadFile(m_path);
    EXPECT_NE(std::string::npos, text.find(Entry("keep", "1"))) << text;
    EXPECT_NE(std::string::npos, text.find(Entry("w0", "200"))) << text;
    EXPECT_NE(std::string::npos, text.find(Entry("w1", "200"))) << text;
    return text;
  }
  std::string Entry(const std::string& key, const std::string& value) const {
    return key + "=" + value + "\n";
  }
  std::vector<std::string> Writer(const std::string& key, int count) const {
    return {PROPERTIES_SHARING_DRIVER, Kind(), m_path, "writer", key,
            std::to_string(count)};
  }

  TempDir m_dir;
  std::string m_path;
};

TYPED_TEST_SUITE(SharedFileTest, Flavours, FlavourNames);

TYPED_TEST(SharedFileTest, WritersLoseNoUpdateAndReadersSeeWholeFiles) {
  this->WriteKeepFile();
  this->RunWritersAndReader({"LIBPROPERTIES_KEEP_LAYOUT=0"});
}

TYPED_TEST(SharedFileTest, WritersThatKeepTheLayoutLoseNoUpdateNorComment) {
  this->WriteCommentedKeepFile();
  const std::string text =
      this->RunWritersAndReader({"LIBPROPERTIES_KEEP_LAYOUT=1"});
  EXPECT_EQ(0u, text.find(this->Comment())) << text;
}

TYPED_TEST(SharedFileTest, ParallelPropctlSetsAllLandBesideAWritingProgram) {
  this->WriteKeepFile();
  const int kSets = 20;
  std::vector<std::vector<std::string>> programs;
  programs.push_back(this->Writer("w0", 100));
  for (int i = 0; i < kSets; ++i) {
    std::vector<std::string> set = {PROPERTIES_PROPCTL, "set", this->m_path};
    if (TypeParam::kSectioned) set.push_back("s");
    set.push_back("k" + std::to_string(i));
    set.push_back("v" + std::to_string(i));
    programs.push_back(set);
  }
  RunAllAtOnce(programs);
  const std::string text = ReadFile(this->m_path);
  EXPECT_NE(std::string::npos, text.find(this->Entry("keep", "1"))) << text;
  EXPECT_NE(std::string::npos, text.find(this->Entry("w0", "100"))) << text;
  for (int i = 0; i < kSets; ++i) {
    EXPECT_NE(std::string::npos,
              text.find(this->Entry("k" + std::to_string(i),
                                    "v" + std::to_string(i))))
        << text;
  }
}

TYPED_TEST(SharedFileTest, TwoManagersOfOneProcessLoseNoUpdate) {
  this->WriteKeepFile();
  this->RunTwoManagers(false);
}

TYPED_TEST(SharedFileTest, TwoManagersThatKeepTheLayoutLoseNoUpdateNorComment) {
  this->WriteCommentedKeepFile();
  EXPECT_EQ(0u, this->RunTwoManagers(true).find(this->Comment()));
}

TYPED_TEST(SharedFileTest, KilledLockHolderDoesNotBlockOthers) {
  this->WriteKeepFile();
  LockHolder holder(this->m_path);
  ASSERT_TRUE(holder.Locked());
  holder.Kill();
  const ProgramResult result = RunProgram(this->Writer("w0", 3));
  EXPECT_EQ(0, result.status) << result.err;
  EXPECT_EQ(std::string::npos, result.err.find("stayed locked")) << result.err;
  EXPECT_NE(std::string::npos,
            ReadFile(this->m_path).find(this->Entry("w0", "3")));
}

TYPED_TEST(SharedFileTest,
           HolderThatKeepsTheLockDelaysOthersOnlyForTheTimeout) {
  this->WriteKeepFile();
  LockHolder holder(this->m_path);
  ASSERT_TRUE(holder.Locked());
  const ProgramResult result =
      RunProgram(this->Writer("w0", 1), {"LIBPROPERTIES_LOCK_TIMEOUT_MS=50"});
  EXPECT_EQ(0, result.status) << result.err;
  EXPECT_NE(std::string::npos,
            ReadFile(this->m_path).find(this->Entry("w0", "1")));
  EXPECT_NE(std::string::npos,
            result.err.find("File '" + this->m_path +
                            "' stayed locked; going on without the lock"))
      << result.err;
}

}  // namespace
