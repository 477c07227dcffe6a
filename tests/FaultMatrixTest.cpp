// FaultMatrixTest.cpp - what both manager flavours do with missing, odd and
// failing files, and with file calls that fail one at a time.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <stdio.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "IniProperties.h"
#include "IniPropertyManager.h"
#include "JavaProperties.h"
#include "JavaPropertyManager.h"
#include "Property.h"
#include "support/ChildProcess.h"
#include "support/FileFaults.h"
#include "support/Flavours.h"
#include "support/LogRecorder.h"
#include "support/PropertyTesting.h"
#include "support/StoreTesting.h"
#include "support/TempDir.h"

namespace {

using namespace std::string_literals;

using test_support::CanNotRead;
using test_support::CanNotWrite;
using test_support::FileExists;
using test_support::LineOfLength;
using test_support::LogRecorder;
using test_support::ProgramResult;
using test_support::ReadFile;
using test_support::RewritesAreCrashSafe;
using test_support::RunProgram;
using test_support::ScopedFullDisk;
using test_support::TempDir;
using test_support::WriteFile;

typedef std::vector<std::string> Messages;

const char kHeader[] = "app settings";
const char kInteger[] = "PROPERTY_TYPE_INTEGER";
const char kString[] = "PROPERTY_TYPE_STRING";
const char kByteOrderMark[] = "\xEF\xBB\xBF";

using test_support::FlavourNames;
using test_support::Flavours;

// A manager of flavour F with a factory of every type, a file path in a
// fresh directory and a log recorder.
template <typename F>
class FaultMatrixTest : public testing::Test {
 protected:
  FaultMatrixTest() : m_path(m_dir.File("app.conf")) {
    test_support::AddAllCreators(&m_factory);
  }

  void Bind(const std::string& path) {
    m_manager.RegisterPersistence(path, kHeader);
  }
  Property* Add(const std::string& key, const std::string& initial,
                const std::string& type = kString) {
    return F::Register(&m_manager, type, key, initial);
  }
  void Set(const std::string& key, const std::string& value) {
    F::Set(&m_manager, key, value);
  }
  std::string Get(const std::string& key) const {
    return F::Get(m_manager, key);
  }

  // A path below a regular file: it can never be opened.
  std::string PathUnderRegularFile() {
    WriteFile(m_dir.File("plain"), "not a directory\n");
    return m_dir.File("plain/app.conf");
  }

  // The messages logged since the last Clear(); each must be at level 1.
  Messages Logged() const { return test_support::MessagesAllAtLevel(m_log, 1); }

  // What registering a property whose key the file holds logs: the entries
  // read (loaded), the same again when the load's change rewrites the file,
  // and the setting of the property's value in that rewrite.
  static Messages LoadedTwice(const Messages& loaded,
                              const std::string& setting) {
    Messages messages = loaded;
    messages.insert(messages.end(), loaded.begin(), loaded.end());
    messages.push_back(setting);
    return messages;
  }

  TempDir m_dir;
  std::string m_path;
  typename F::Factory m_factory;
  typename F::Manager m_manager{"app", &m_factory};
  LogRecorder m_log;
};

TYPED_TEST_SUITE(FaultMatrixTest, Flavours, FlavourNames);

template <typename F>
class FaultMatrixDeathTest : public FaultMatrixTest<F> {};

TYPED_TEST_SUITE(FaultMatrixDeathTest, Flavours, FlavourNames);

// /dev/full reads as NUL bytes without end: one endless line, on which the
// reader never returns. So binding it hangs at the first load; elsewhere it
// is only written to.
TYPED_TEST(FaultMatrixDeathTest, BindingDevFullNeverReturnsFromLoading) {
  EXPECT_EXIT(
      {
        alarm(1);
        this->Bind("/dev/full");
        this->Add("port", "80", kInteger);
      },
      testing::KilledBySignal(SIGALRM), "");
}

// Paths that cannot be read or written.

TYPED_TEST(FaultMatrixTest, MissingFileKeepsDefaultAndCreatesNoFile) {
  typedef TypeParam F;
  this->Bind(this->m_path);
  this->Add("port", "80", kInteger);
  EXPECT_EQ(this->Get("port"), "80");
  EXPECT_EQ(this->Logged(),
            (Messages{CanNotRead(this->m_path), F::NotFound("port")}));
  EXPECT_FALSE(FileExists(this->m_path));
}

TYPED_TEST(FaultMatrixTest, FirstChangeCreatesMissingFileOfBoundProperties) {
  typedef TypeParam F;
  this->Bind(this->m_path);
  this->Add("port", "80", kInteger);
  this->Add("name", "x");
  this->Set("port", "9");
  EXPECT_EQ(ReadFile(this->m_path), F::Written(kHeader, "name=x\nport=9\n"));
}

TYPED_TEST(FaultMatrixTest, FirstChangeCreatesTheTargetOfALinkToNothing) {
  typedef TypeParam F;
  const std::string target = this->m_dir.File("target.conf");
  ASSERT_EQ(0, ::symlink(target.c_str(), this->m_path.c_str()));
  this->Bind(this->m_path);
  this->Add("port", "80", kInteger);
  this->Set("port", "9");
  EXPECT_EQ(ReadFile(target), F::Written(kHeader, "port=9\n"));
}

// A file without a name (made with O_TMPFILE), reached through the
// process's descriptor of it, is rewritten as any other.
TYPED_TEST(FaultMatrixTest, FileWithoutNameIsRewrittenThroughItsDescriptor) {
  typedef TypeParam F;
  const int fd = ::open(this->m_dir.path().c_str(), O_TMPFILE | O_RDWR, 0600);
  if (fd < 0) GTEST_SKIP() << "this file system makes no unnamed files";
  const std::string path = "/proc/self/fd/" + std::to_string(fd);
  this->Bind(path);
  this->Add("port", "80", kInteger);
  this->Set("port", "9");
  EXPECT_EQ(ReadFile(path), F::Written(kHeader, "port=9\n"));
  ::close(fd);
}

TYPED_TEST(FaultMatrixTest, PathUnderRegularFileIsNeitherReadNorWritten) {
  typedef TypeParam F;
  const std::string path = this->PathUnderRegularFile();
  this->Bind(path);
  this->Add("port", "80", kInteger);
  this->m_log.Clear();
  EXPECT_NO_THROW(this->Set("port", "9"));
  EXPECT_EQ(this->Get("port"), "9");
  EXPECT_EQ(this->Logged(), (Messages{CanNotRead(path), F::Setting("port", "9"),
                                      CanNotWrite(path)}));
  EXPECT_FALSE(FileExists(path));
}

TYPED_TEST(FaultMatrixTest, DirectoryAsPathReadsAsErrorAndIsNotWritten) {
  typedef TypeParam F;
  const std::string path = this->m_dir.path();
  this->Bind(path);
  EXPECT_NO_THROW(this->Add("port", "80", kInteger));
  EXPECT_EQ(this->Logged(),
            (Messages{"Error reading Line 1", F::NotFound("port")}));
  this->m_log.Clear();
  EXPECT_NO_THROW(this->Set("port", "9"));
  EXPECT_EQ(this->Get("port"), "9");
  EXPECT_EQ(this->Logged(),
            (Messages{"Error reading Line 1", F::Setting("port", "9"),
                      CanNotWrite(path)}));
}

// Writes that fail after the open.

TYPED_TEST(FaultMatrixTest, StoreToDevFullFailsAndKeepsEntries) {
  typedef TypeParam F;
  typename F::Store store;
  F::Put(&store, "port", "9");
  EXPECT_FALSE(store.Store("/dev/full", kHeader));
  EXPECT_EQ(F::Value(store, "port"), "9");
}

TYPED_TEST(FaultMatrixTest, FullDiskKeepsValuesAndLogsNothing) {
  typedef TypeParam F;
  WriteFile(this->m_path, F::Body("port=1\nextra=x\n"));
  this->Bind(this->m_path);
  this->Add("port", "80", kInteger);
  const std::string before = ReadFile(this->m_path);
  this->m_log.Clear();
  {
    ScopedFullDisk fullDisk;
    EXPECT_NO_THROW(this->Set("port", "9"));
  }
  EXPECT_EQ(this->Get("port"), "9");
  EXPECT_EQ(this->Logged(),
            (Messages{F::Loading("extra", "x"), F::Loading("port", "1"),
                      F::Setting("port", "9")}));
  // In place, the open has truncated the file; a crash-safe rewrite leaves
  // the old text.
  EXPECT_EQ(ReadFile(this->m_path), RewritesAreCrashSafe() ? before : "");
}

// The bound file changed by others between two stores.

TYPED_TEST(FaultMatrixTest, DeletedFileIsRecreatedWithBoundPropertiesOnly) {
  typedef TypeParam F;
  WriteFile(this->m_path, F::Body("extra=kept\n"));
  this->Bind(this->m_path);
  this->Add("port", "80", kInteger);
  this->Set("port", "1");
  ASSERT_EQ(::unlink(this->m_path.c_str()), 0);
  this->m_log.Clear();
  this->Set("port", "2");
  EXPECT_EQ(ReadFile(this->m_path), F::Written(kHeader, "port=2\n"));
  EXPECT_EQ(this->Logged(),
            (Messages{CanNotRead(this->m_path), F::Setting("port", "2")}));
}

TYPED_TEST(FaultMatrixTest, FileRenamedOverBoundFileIsMergedOnNextStore) {
  typedef TypeParam F;
  const std::string other = this->m_dir.File("other.conf");
  this->Bind(this->m_path);
  this->Add("port", "80", kInteger);
  this->Set("port", "1");
  WriteFile(other, F::Body("added=yes\nport=77\n"));
  ASSERT_EQ(::rename(other.c_str(), this->m_path.c_str()), 0);
  this->m_log.Clear();
  this->Set("port", "2");
  EXPECT_EQ(this->Get("port"), "2");
  EXPECT_EQ(this->Logged(),
            (Messages{F::Loading("added", "yes"), F::Loading("port", "77"),
                      F::Setting("port", "2")}));
  EXPECT_EQ(ReadFile(this->m_path), F::Written(kHeader, "added=yes\nport=2\n"));
}

// Odd bytes in the file.

TYPED_TEST(FaultMatrixTest, NulByteEndsTheTextOfItsLine) {
  typedef TypeParam F;
  // The lines "port=12<NUL>3", "name<NUL>=x" and "extra=a<NUL>b=c".
  const std::string lines =
      "port=12\0"s + "3\n" + "name\0"s + "=x\n" + "extra=a\0"s + "b=c\n";
  WriteFile(this->m_path, F::Body(lines));
  this->Bind(this->m_path);
  this->Add("port", "80", kInteger);
  EXPECT_EQ(this->Logged(), this->LoadedTwice({F::Loading("port", "12"),
                                               F::Loading("extra", "a")},
                                              F::Setting("port", "12")));
  this->Add("name", "none");
  EXPECT_EQ(this->Get("port"), "12");
  EXPECT_EQ(this->Get("name"), "none");
  EXPECT_EQ(ReadFile(this->m_path), F::Written(kHeader, "extra=a\nport=12\n"));
}

TYPED_TEST(FaultMatrixTest, CarriageReturnsBeforeLineFeedsAreDropped) {
  typedef TypeParam F;
  std::string text = F::Body("port=7\r\nname=a b\r\n");
  if (F::kSectioned) text = "[net]\r" + text.substr(5);
  WriteFile(this->m_path, text);
  this->Bind(this->m_path);
  this->Add("port", "80", kInteger);
  EXPECT_EQ(this->Logged(), this->LoadedTwice({F::Loading("port", "7"),
                                               F::Loading("name", "a b")},
                                              F::Setting("port", "7")));
  this->Add("name", "none");
  EXPECT_EQ(this->Get("name"), "a b");
  EXPECT_EQ(ReadFile(this->m_path), F::Written(kHeader, "name=a b\nport=7\n"));
}

// A flat file's mark joins its first key; an INI file's mark spoils its
// first header, so the entries under it are dropped like entries before any
// header, and the next rewrite loses them.
TYPED_TEST(FaultMatrixTest, ByteOrderMarkBecomesPartOfTheFirstLine) {
  typedef TypeParam F;
  const std::string markedName = kByteOrderMark + "name"s;
  WriteFile(this->m_path, kByteOrderMark + F::Body("name=ab\n"));
  this->Bind(this->m_path);
  this->Add("name", "none");
  EXPECT_EQ(this->Logged(),
            (Messages{F::kSectioned ? "Loading 'name' of '' to 'ab'"
                                    : F::Loading(markedName, "ab"),
                      F::NotFound("name")}));
  this->Add(markedName, "none");
  EXPECT_EQ(this->Get(markedName), F::kSectioned ? "none" : "ab");
  this->Set("name", "cd");
  EXPECT_EQ(ReadFile(this->m_path),
            F::Written(kHeader, "name=cd\n" + markedName +
                                    (F::kSectioned ? "=none\n" : "=ab\n")));
}

TYPED_TEST(FaultMatrixTest, InvalidUtf8IsKeptByteForByte) {
  typedef TypeParam F;
  const std::string key = "na\xFFme";
  WriteFile(this->m_path, F::Body(key + "=\xC3\x28v\n\xFE\xFE=\xE2\x82\n"));
  this->Bind(this->m_path);
  this->Add(key, "none");
  EXPECT_EQ(this->Logged(),
            this->LoadedTwice({F::Loading(key, "\xC3\x28v"),
                               F::Loading("\xFE\xFE", "\xE2\x82")},
                              F::Setting(key, "\xC3\x28v")));
  this->Set(key, "\xF0\x28\x8C\xBC");
  EXPECT_EQ(this->Get(key), "\xF0\x28\x8C\xBC");
  EXPECT_EQ(
      ReadFile(this->m_path),
      F::Written(kHeader, key + "=\xF0\x28\x8C\xBC\n\xFE\xFE=\xE2\x82\n"));
}

TYPED_TEST(FaultMatrixTest, LineOf511CharactersIsReadWholeAndWrittenBack) {
  typedef TypeParam F;
  const std::string line = LineOfLength(511);  // "k=" and 509 x's.
  const std::string value = line.substr(2);
  WriteFile(this->m_path, F::Body(line + "\n"));
  this->Bind(this->m_path);
  this->Add("k", "none");
  EXPECT_EQ(this->Get("k"), value);
  const std::string tooLong =
      "Line " + std::to_string(F::kFirstBodyLine) + " is too long";
  EXPECT_EQ(this->Logged(), this->LoadedTwice({tooLong, F::Loading("k", value)},
                                              F::Setting("k", value)));
  EXPECT_EQ(ReadFile(this->m_path), F::Written(kHeader, line + "\n"));
}

// File calls failing one at a time, in a separate program: FaultDriver with
// libFailingSyscalls.so preloaded (see support/FailingSyscalls.cpp).

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kSanitized = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
constexpr bool kSanitized = true;
#else
constexpr bool kSanitized = false;
#endif
#else
constexpr bool kSanitized = false;
#endif

// One call to make fail: the n-th call of family, failing with error.
struct Failure {
  std::string family;
  long n;
  std::string error;

  // The PROPERTIES_FAIL text, e.g. "write:3:ENOSPC".
  std::string Setting() const {
    return family + ":" + std::to_string(n) + ":" + error;
  }
  // How the driver names it, e.g. "write #3 (ENOSPC)".
  std::string Name() const {
    return family + " #" + std::to_string(n) + " (" + error + ")";
  }
};

// What the driver prints when all its values were intact.
std::string IntactSummary(const std::string& failed) {
  return "flat 4/4 ini 4/4 values intact; failed: " + failed;
}

// Runs the driver (under tool, if given) in dir with the failing-call
// library preloaded; failure is the PROPERTIES_FAIL text, "" for none. The
// address sanitizer's runtime insists on coming first among the libraries;
// the preloaded one wraps only file calls and may come before it.
ProgramResult RunDriver(const std::string& dir, const std::string& failure,
                        const std::vector<std::string>& tool = {}) {
  std::vector<std::string> argv = tool;
  argv.push_back(PROPERTIES_FAULT_DRIVER);
  argv.push_back(dir);
  // The driver's standard error holds what the matrix checks: the library's
  // own messages stay out of it, also in a library built to log.
  std::vector<std::string> environment = {
      "LD_PRELOAD="s + PROPERTIES_FAULT_SHIM,
      failure.empty() ? "PROPERTIES_FAIL" : "PROPERTIES_FAIL=" + failure,
      "LIBPROPERTIES_LOG=none"};
  if (kSanitized) {
    const char* options = std::getenv("ASAN_OPTIONS");
    const std::string before = options != nullptr ? options : "";
    environment.push_back("ASAN_OPTIONS=" + before +
                          (before.empty() ? "" : ":") +
                          "verify_asan_link_order=0");
  }
  return RunProgram(argv, environment);
}

// The calls of each family that a run of the driver makes, counted once by
// a run without a failure.
const std::map<std::string, long>& DriverCalls() {
  static const std::map<std::string, long> calls = [] {
    TempDir dir;
    const ProgramResult result = RunDriver(dir.path(), "");
    std::map<std::string, long> counted;
    const size_t start = result.out.find("; calls: ");
    if (result.status != 0 || start == std::string::npos) return counted;
    const std::string rest = result.out.substr(start);
    for (const char* family : {"open", "read", "write", "close"}) {
      const size_t at = rest.find(" "s + family + "=");
      if (at == std::string::npos) continue;
      counted[family] = std::atol(rest.c_str() + at + std::strlen(family) + 2);
    }
    return counted;
  }();
  return calls;
}

// Runs the driver once for every call of family that it makes, failing that
// call with error, and once more past the last: every value stays intact.
void ExpectEveryFailureKeepsValues(const std::string& family,
                                   const std::string& error) {
  const long calls = DriverCalls().count(family) ? DriverCalls().at(family) : 0;
  ASSERT_GT(calls, 0) << family;
  for (long n = 1; n <= calls + 1; ++n) {
    const Failure failure{family, n, error};
    TempDir dir;
    const ProgramResult result = RunDriver(dir.path(), failure.Setting());
    EXPECT_EQ(result.status, 0) << failure.Setting();
    EXPECT_EQ(result.out,
              IntactSummary(n <= calls ? failure.Name() : "none") + "\n")
        << failure.Setting();
    EXPECT_EQ(result.err, "") << failure.Setting();
  }
}

// A second run without a failure makes exactly the calls of the first.
TEST(FaultMatrixTest, RunsWithoutFailureCountTheSameCalls) {
  TempDir dir;
  const ProgramResult result = RunDriver(dir.path(), "");
  const std::map<std::string, long>& calls = DriverCalls();
  ASSERT_EQ(calls.size(), 4u);
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.out,
            IntactSummary("none") +
                "; calls: open=" + std::to_string(calls.at("open")) +
                " read=" + std::to_string(calls.at("read")) +
                " write=" + std::to_string(calls.at("write")) +
                " close=" + std::to_string(calls.at("close")) + "\n");
  for (const auto& family : calls) EXPECT_GT(family.second, 0) << family.first;
}

TEST(FaultMatrixTest, EveryFailingOpenKeepsDriverValues) {
  ExpectEveryFailureKeepsValues("open", "EACCES");
}

TEST(FaultMatrixTest, EveryFailingReadKeepsDriverValues) {
  ExpectEveryFailureKeepsValues("read", "EIO");
}

TEST(FaultMatrixTest, EveryFailingWriteKeepsDriverValues) {
  ExpectEveryFailureKeepsValues("write", "ENOSPC");
}

TEST(FaultMatrixTest, EveryFailingCloseKeepsDriverValues) {
  ExpectEveryFailureKeepsValues("close", "EIO");
}

// The driver's flat file after a run: its own values, and the key that no
// property owns if it survived.
std::string DriverFlatFile(bool extraKept) {
  return "#fault driver\n"s + (extraKept ? "extra=kept\n" : "") +
         "level=error\nname=main db\nport=90\nratio=1e+20\n";
}

// The second and third opens are those of the rewrite that loading "port"
// causes (the first one opens the file to read and write it under its
// lock; when that fails, the second one opens it to read it): it reads
// nothing, so that rewrite writes the bound values alone.
TEST(FaultMatrixTest, FailingOpenOfRewriteLosesKeysNoPropertyOwns) {
  TempDir dir;
  ASSERT_EQ(RunDriver(dir.path(), "open:2-3:EACCES").status, 0);
  EXPECT_EQ(ReadFile(dir.File("faults.properties")), DriverFlatFile(false));
}

// The first write is that same rewrite: in place it leaves an empty file,
// which the next rewrite reads; a crash-safe rewrite leaves the old text.
TEST(FaultMatrixTest, FailingFirstWriteLosesKeysOnlyWhenWritingInPlace) {
  TempDir dir;
  ASSERT_EQ(RunDriver(dir.path(), "write:1:ENOSPC").status, 0);
  EXPECT_EQ(ReadFile(dir.File("faults.properties")),
            DriverFlatFile(RewritesAreCrashSafe()));
}

// Leaks: valgrind here, on a few failures; in a sanitizer build the leak
// checker of the address sanitizer checks every run of the matrix instead.
TEST(FaultMatrixTest, DriverLeaksNothingWhenCallsFail) {
  const std::string valgrind = test_support::FindInPath("valgrind");
  if (kSanitized || valgrind.empty()) {
    GTEST_SKIP() << "needs valgrind and a build without sanitizers";
  }
  for (const Failure& failure :
       {Failure{"open", 2, "EACCES"}, Failure{"read", 3, "EIO"},
        Failure{"write", 1, "ENOSPC"}}) {
    TempDir dir;
    const ProgramResult result = RunDriver(
        dir.path(), failure.Setting(),
        {valgrind, "--quiet", "--leak-check=full", "--error-exitcode=9"});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out, IntactSummary(failure.Name()) + "\n");
    EXPECT_EQ(result.err, "");
  }
}

}  // namespace
