// FileTroublesTest.cpp - PropertySafety::FileTroubles: the last failure each
// file binding of a manager met (reading, writing, locking), with the bound
// path, the errno value and its text; one entry per binding in the order
// they were made; forgotten on request and with the binding; reported
// without throwing. Tested once over the traits of both flavours.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "Property.h"
#include "PropertyChangeListener.h"
#include "PropertyManager.h"
#include "PropertySafety.h"
#include "support/AssertionMessage.h"
#include "support/FlavourFixtures.h"
#include "support/Flavours.h"
#include "support/TempDir.h"

namespace {

using test_support::EscapeRegex;
using test_support::FlavourNames;
using test_support::Flavours;
using test_support::kHeader;
using test_support::WriteFile;

typedef PropertySafety::FileTrouble FileTrouble;

// One trouble as a text, so that a failed expectation shows all of it.
std::string Describe(const FileTrouble& trouble) {
  return trouble.path + ": operation " + std::to_string(trouble.operation) +
         ", error " + std::to_string(trouble.error) + " (" + trouble.errorText +
         ")";
}

std::vector<std::string> Describe(const std::vector<FileTrouble>& troubles) {
  std::vector<std::string> described;
  for (const FileTrouble& trouble : troubles) {
    described.push_back(Describe(trouble));
  }
  return described;
}

FileTrouble Trouble(const std::string& path, FileTrouble::Operation operation,
                    int error, const std::string& errorText) {
  return FileTrouble{path, operation, error, errorText};
}

FileTrouble NoTrouble(const std::string& path) {
  return Trouble(path, FileTrouble::kNone, 0, "");
}

template <typename F>
class FileTroublesTest : public test_support::ManagerFixture<F> {
 protected:
  std::vector<std::string> Troubles() {
    return Describe(PropertySafety::FileTroubles(&this->m_manager));
  }

  // A path in a directory that does not exist.
  std::string InMissingDirectory() const {
    return this->m_dir.File(std::string("missing/app") + F::kExtension);
  }
};

TYPED_TEST_SUITE(FileTroublesTest, Flavours, FlavourNames);

TYPED_TEST(FileTroublesTest, ManagerWithoutBindingsHasNoEntries) {
  EXPECT_TRUE(PropertySafety::FileTroubles(&this->m_manager).empty());
}

TYPED_TEST(FileTroublesTest, MissingFileInExistingDirectoryIsNoTrouble) {
  this->m_manager.RegisterPersistence(this->m_path, kHeader);
  this->RegisterPort();
  EXPECT_EQ(this->Troubles(),
            Describe(std::vector<FileTrouble>{NoTrouble(this->m_path)}));
}

TYPED_TEST(FileTroublesTest, FileWrittenAndReadWithoutFailureIsNoTrouble) {
  this->m_manager.RegisterPersistence(this->m_path, kHeader);
  this->RegisterPort();
  this->Set("port", "81");
  this->Set("port", "82");
  EXPECT_EQ(this->Troubles(),
            Describe(std::vector<FileTrouble>{NoTrouble(this->m_path)}));
}

TYPED_TEST(FileTroublesTest, MissingDirectoryIsReadTroubleOnceRegistered) {
  const std::string path = this->InMissingDirectory();
  this->m_manager.RegisterPersistence(path, kHeader);
  this->RegisterPort();
  EXPECT_EQ(
      this->Troubles(),
      Describe(std::vector<FileTrouble>{Trouble(
          path, FileTrouble::kRead, ENOENT, "No such file or directory")}));
}

TYPED_TEST(FileTroublesTest, MissingDirectoryIsWriteTroubleAfterSet) {
  const std::string path = this->InMissingDirectory();
  this->m_manager.RegisterPersistence(path, kHeader);
  this->RegisterPort();
  this->Set("port", "81");
  EXPECT_EQ(
      this->Troubles(),
      Describe(std::vector<FileTrouble>{Trouble(
          path, FileTrouble::kWrite, ENOENT, "No such file or directory")}));
}

TYPED_TEST(FileTroublesTest, DirectoryAsBoundPathIsWriteTroubleAfterSet) {
  const std::string path = this->m_dir.File("folder");
  ASSERT_EQ(::mkdir(path.c_str(), 0755), 0);
  this->m_manager.RegisterPersistence(path, kHeader);
  this->RegisterPort();
  this->Set("port", "81");
  EXPECT_EQ(this->Troubles(),
            Describe(std::vector<FileTrouble>{
                Trouble(path, FileTrouble::kWrite, EISDIR, "Is a directory")}));
}

TYPED_TEST(FileTroublesTest, PathBelowRegularFileIsReadTroubleOnceRegistered) {
  WriteFile(this->m_dir.File("plain"), "not a directory\n");
  const std::string path =
      this->m_dir.File(std::string("plain/app") + TypeParam::kExtension);
  this->m_manager.RegisterPersistence(path, kHeader);
  this->RegisterPort();
  EXPECT_EQ(this->Troubles(),
            Describe(std::vector<FileTrouble>{Trouble(
                path, FileTrouble::kRead, ENOTDIR, "Not a directory")}));
}

TYPED_TEST(FileTroublesTest, PathBelowRegularFileIsWriteTroubleAfterSet) {
  WriteFile(this->m_dir.File("plain"), "not a directory\n");
  const std::string path =
      this->m_dir.File(std::string("plain/app") + TypeParam::kExtension);
  this->m_manager.RegisterPersistence(path, kHeader);
  this->RegisterPort();
  this->Set("port", "81");
  EXPECT_EQ(this->Troubles(),
            Describe(std::vector<FileTrouble>{Trouble(
                path, FileTrouble::kWrite, ENOTDIR, "Not a directory")}));
}

// A directory opens but does not read: the reason is the system's, EISDIR,
// although the reader that a directory falls back to reads through a stream.
TYPED_TEST(FileTroublesTest, DirectoryAsBoundPathIsReadTroubleOnceRegistered) {
  const std::string path = this->m_dir.File("folder");
  ASSERT_EQ(::mkdir(path.c_str(), 0755), 0);
  this->m_manager.RegisterPersistence(path, kHeader);
  this->RegisterPort();
  EXPECT_EQ(this->Troubles(),
            Describe(std::vector<FileTrouble>{
                Trouble(path, FileTrouble::kRead, EISDIR, "Is a directory")}));
}

TYPED_TEST(FileTroublesTest, UnreadableFileIsReadTrouble) {
  if (::geteuid() == 0) {
    GTEST_SKIP() << "root reads a file whatever its mode";
  }
  WriteFile(this->m_path, TypeParam::Body("port=8080\n"));
  ASSERT_EQ(::chmod(this->m_path.c_str(), 0), 0);
  this->m_manager.RegisterNonPersistence(this->m_path);
  this->RegisterPort();
  EXPECT_EQ(
      this->Troubles(),
      Describe(std::vector<FileTrouble>{Trouble(
          this->m_path, FileTrouble::kRead, EACCES, "Permission denied")}));
}

TYPED_TEST(FileTroublesTest, ReadOnlyBindingOfMissingDirectoryIsReadTrouble) {
  const std::string path = this->InMissingDirectory();
  this->m_manager.RegisterNonPersistence(path);
  this->RegisterPort();
  this->Set("port", "81");
  EXPECT_EQ(
      this->Troubles(),
      Describe(std::vector<FileTrouble>{Trouble(
          path, FileTrouble::kRead, ENOENT, "No such file or directory")}));
}

TYPED_TEST(FileTroublesTest, TroublesDoNotThrow) {
  const std::string path = this->InMissingDirectory();
  this->m_manager.RegisterPersistence(path, kHeader);
  EXPECT_NO_THROW(this->RegisterPort());
  EXPECT_NO_THROW(this->Set("port", "81"));
  EXPECT_NO_THROW(PropertySafety::FileTroubles(&this->m_manager));
  EXPECT_NO_THROW(PropertySafety::ForgetFileTroubles(&this->m_manager));
  EXPECT_EQ(this->Get("port"), "81");
}

// A program's change listener, told after the binding's rewrite, can see
// whether that rewrite failed.
class TroubleWatcher : public PropertyChangeListener {
 public:
  explicit TroubleWatcher(PropertyManager* manager) : m_manager(manager) {}
  void PropertyChanged(Property*) override {
    seen.push_back(Describe(PropertySafety::FileTroubles(m_manager)));
  }

  std::vector<std::vector<std::string>> seen;

 private:
  PropertyManager* m_manager;
};

TYPED_TEST(FileTroublesTest, ChangeListenerSeesTheTroubleOfTheRewrite) {
  const std::string path = this->InMissingDirectory();
  this->m_manager.RegisterPersistence(path, kHeader);
  this->RegisterPort();
  TroubleWatcher watcher(&this->m_manager);
  this->m_manager.AddChangeListener(&watcher);
  PropertySafety::ForgetFileTroubles(&this->m_manager);
  this->Set("port", "81");
  this->m_manager.RemoveChangeListener(&watcher);
  EXPECT_EQ(
      watcher.seen,
      std::vector<std::vector<std::string>>{Describe(
          std::vector<FileTrouble>{Trouble(path, FileTrouble::kWrite, ENOENT,
                                           "No such file or directory")})});
}

// Entries.

TYPED_TEST(FileTroublesTest, EntriesComeOnePerBindingInBindingOrder) {
  const std::string missing = this->InMissingDirectory();
  const std::string readOnly = this->File("read-only");
  const std::string last = this->File("last");
  this->m_manager.RegisterPersistence(this->m_path, kHeader);
  this->m_manager.RegisterNonPersistence(readOnly);
  this->m_manager.RegisterPersistence(missing, kHeader);
  this->m_manager.RegisterPersistence(last, kHeader);
  this->RegisterPort();
  this->Set("port", "81");
  EXPECT_EQ(this->Troubles(), Describe(std::vector<FileTrouble>{
                                  NoTrouble(this->m_path), NoTrouble(readOnly),
                                  Trouble(missing, FileTrouble::kWrite, ENOENT,
                                          "No such file or directory"),
                                  NoTrouble(last)}));
}

TYPED_TEST(FileTroublesTest, EntryKeepsThePathAsGivenToTheManager) {
  const std::string path =
      this->m_dir.path() + "/./missing/../missing/app" + TypeParam::kExtension;
  this->m_manager.RegisterPersistence(path, kHeader);
  this->RegisterPort();
  const std::vector<FileTrouble> troubles =
      PropertySafety::FileTroubles(&this->m_manager);
  ASSERT_EQ(troubles.size(), 1u);
  EXPECT_EQ(troubles[0].path, path);
}

TYPED_TEST(FileTroublesTest, LaterSuccessDoesNotClearTheLastTrouble) {
  const std::string path = this->InMissingDirectory();
  this->m_manager.RegisterPersistence(path, kHeader);
  this->RegisterPort();
  this->Set("port", "81");
  ASSERT_EQ(::mkdir(this->m_dir.File("missing").c_str(), 0755), 0);
  this->Set("port", "82");
  EXPECT_EQ(
      this->Troubles(),
      Describe(std::vector<FileTrouble>{Trouble(
          path, FileTrouble::kWrite, ENOENT, "No such file or directory")}));
}

TYPED_TEST(FileTroublesTest, ForgetFileTroublesClearsEveryEntry) {
  const std::string missing = this->InMissingDirectory();
  this->m_manager.RegisterPersistence(missing, kHeader);
  this->m_manager.RegisterNonPersistence(missing + ".other");
  this->RegisterPort();
  this->Set("port", "81");
  PropertySafety::ForgetFileTroubles(&this->m_manager);
  EXPECT_EQ(this->Troubles(),
            Describe(std::vector<FileTrouble>{NoTrouble(missing),
                                              NoTrouble(missing + ".other")}));
}

TYPED_TEST(FileTroublesTest, TroubleAfterForgettingIsReportedAgain) {
  const std::string path = this->InMissingDirectory();
  this->m_manager.RegisterPersistence(path, kHeader);
  this->RegisterPort();
  PropertySafety::ForgetFileTroubles(&this->m_manager);
  this->Set("port", "81");
  EXPECT_EQ(
      this->Troubles(),
      Describe(std::vector<FileTrouble>{Trouble(
          path, FileTrouble::kWrite, ENOENT, "No such file or directory")}));
}

TYPED_TEST(FileTroublesTest, ForgettingLeavesOtherManagersTroubles) {
  typedef TypeParam F;
  const std::string path = this->InMissingDirectory();
  auto other = this->NewManager();
  other->RegisterPersistence(path, kHeader);
  F::Register(other.get(), test_support::kIntegerType, "port", "80");
  this->m_manager.RegisterPersistence(path, kHeader);
  this->RegisterPort();
  PropertySafety::ForgetFileTroubles(&this->m_manager);
  EXPECT_EQ(
      Describe(PropertySafety::FileTroubles(other.get())),
      Describe(std::vector<FileTrouble>{Trouble(
          path, FileTrouble::kRead, ENOENT, "No such file or directory")}));
}

TYPED_TEST(FileTroublesTest, UnRegisterPersistenceDropsTheEntry) {
  const std::string missing = this->InMissingDirectory();
  this->m_manager.RegisterPersistence(missing, kHeader);
  this->m_manager.RegisterPersistence(this->m_path, kHeader);
  this->RegisterPort();
  this->m_manager.UnRegisterPersistence(missing);
  EXPECT_EQ(this->Troubles(),
            Describe(std::vector<FileTrouble>{NoTrouble(this->m_path)}));
}

// A binding made anew for a path starts without the old one's trouble.
TYPED_TEST(FileTroublesTest, BindingAgainStartsWithoutTrouble) {
  const std::string missing = this->InMissingDirectory();
  this->m_manager.RegisterPersistence(missing, kHeader);
  this->RegisterPort();
  this->Set("port", "81");
  this->m_manager.UnRegisterPersistence(missing);
  ASSERT_EQ(::mkdir(this->m_dir.File("missing").c_str(), 0755), 0);
  this->m_manager.RegisterPersistence(missing, kHeader);
  EXPECT_EQ(this->Troubles(),
            Describe(std::vector<FileTrouble>{NoTrouble(missing)}));
}

// Locks.

// The lock timeout is read once per process, so the bounded wait runs in a
// process of its own, started afresh ("threadsafe" death tests run the test
// again in a new program) with a short timeout in its environment. That
// process holds the file's lock through a descriptor of its own, as another
// program would, and reports what FileTroubles() says.
class LockTimeoutGuard {
 public:
  LockTimeoutGuard()
      : m_style(testing::FLAGS_gtest_death_test_style),
        m_hadTimeout(std::getenv(kTimeout) != nullptr),
        m_timeout(m_hadTimeout ? std::getenv(kTimeout) : "") {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    ::setenv(kTimeout, "50", 1);
  }
  ~LockTimeoutGuard() {
    testing::FLAGS_gtest_death_test_style = m_style;
    if (m_hadTimeout) {
      ::setenv(kTimeout, m_timeout.c_str(), 1);
    } else {
      ::unsetenv(kTimeout);
    }
  }

  LockTimeoutGuard(const LockTimeoutGuard&) = delete;
  LockTimeoutGuard& operator=(const LockTimeoutGuard&) = delete;

 private:
  static constexpr const char* kTimeout = "LIBPROPERTIES_LOCK_TIMEOUT_MS";

  std::string m_style;
  bool m_hadTimeout;
  std::string m_timeout;
};

// Holds the lock of a file of flavour F, binds it read-write, registers a
// property (whose load and rewrite wait for the lock in vain) and exits
// after printing the troubles ("bound path" for the path of the binding)
// and the property's value. Everything it made is gone before it exits.
template <typename F>
[[noreturn]] void ReportTroublesWhileLocked() {
  std::string report;
  {
    test_support::TempDir dir;
    const std::string path = dir.File(std::string("app") + F::kExtension);
    WriteFile(path, F::Body("port=8080\n"));
    const int fd = ::open(path.c_str(), O_RDONLY);
    if (fd < 0 || ::flock(fd, LOCK_EX) != 0) {
      std::fprintf(stderr, "cannot lock\n");
      std::_Exit(2);
    }
    typename F::Factory factory;
    test_support::AddAllCreators(&factory);
    typename F::Manager manager("app", &factory);
    manager.RegisterPersistence(path, kHeader);
    F::Register(&manager, test_support::kIntegerType, "port", "80");
    for (FileTrouble trouble : PropertySafety::FileTroubles(&manager)) {
      if (trouble.path == path) trouble.path = "bound path";
      report += "[" + Describe(trouble) + "]\n";
    }
    report += "value " + F::Get(manager, "port") + "\n";
    ::close(fd);
  }
  std::fputs(report.c_str(), stderr);
  std::fflush(stderr);
  std::_Exit(0);
}

template <typename F>
class FileTroublesDeathTest : public testing::Test {
 protected:
  LockTimeoutGuard m_timeout;
};

TYPED_TEST_SUITE(FileTroublesDeathTest, Flavours, FlavourNames);

TYPED_TEST(FileTroublesDeathTest, LockHeldPastTheTimeoutIsLockTrouble) {
#ifdef PROPERTIES_TEST_NO_FILE_LOCKS
  GTEST_SKIP() << "the library is built without file locks";
#endif
  const std::string expected =
      "\\[" +
      EscapeRegex(
          Describe(Trouble("bound path", FileTrouble::kLock, EWOULDBLOCK,
                           "Resource temporarily unavailable"))) +
      "\\]\nvalue 8080\n";
  EXPECT_EXIT(ReportTroublesWhileLocked<TypeParam>(),
              testing::ExitedWithCode(0), expected);
}

}  // namespace
