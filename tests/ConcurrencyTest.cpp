// ConcurrencyTest.cpp - managers, properties and bound files used from
// several threads at once.

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <functional>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "BooleanProperty.h"
#include "DoubleProperty.h"
#include "IniProperties.h"
#include "IntegerProperty.h"
#include "JavaProperties.h"
#include "Properties.h"
#include "PropertySafety.h"
#include "support/TempDir.h"

namespace {

using test_support::ReadFile;
using test_support::TempDir;

// Starts count threads that each run body(index) as soon as all of them
// exist, and waits for all of them to end.
void RunTogether(int count, const std::function<void(int)>& body) {
  std::promise<void> start;
  std::shared_future<void> started = start.get_future().share();
  std::vector<std::thread> threads;
  for (int i = 0; i < count; ++i) {
    threads.emplace_back([started, &body, i] {
      started.wait();
      body(i);
    });
  }
  start.set_value();
  for (std::thread& thread : threads) thread.join();
}

// Counts the properties of a manager: a client hears of each one once.
class PropertyCounter : public PropertyClient {
 public:
  void RegisteredProperty(Property*) override { ++count; }
  int count = 0;
};

int CountProperties(PropertyManager* manager) {
  PropertyCounter counter;
  manager->RegisterClient(&counter);
  manager->UnregisterClient(&counter);
  return counter.count;
}

class ConcurrencyTest : public testing::Test {
 protected:
  // A manager name no other test uses: the test's name plus suffix.
  static std::string UniqueName(const std::string& suffix) {
    return std::string("ConcurrencyTest.") +
           testing::UnitTest::GetInstance()->current_test_info()->name() + "." +
           suffix;
  }

  static JavaPropertyManager* Manager(const std::string& suffix) {
    return Properties::GetInstance()->GetJavaPropertyManager(
        UniqueName(suffix));
  }
};

TEST_F(ConcurrencyTest, ThreadsAskingForOneNewNameGetOneManager) {
  const int kAskers = 8;
  const int kInserters = 4;
  const std::string name = UniqueName("shared");
  std::vector<JavaPropertyManager*> managers(kAskers, nullptr);
  RunTogether(kAskers + kInserters, [&](int i) {
    if (i < kAskers) {
      managers[i] = Properties::GetInstance()->GetJavaPropertyManager(name);
      return;
    }
    for (int n = 0; n < 25; ++n) {
      Manager("other" + std::to_string(i) + "." + std::to_string(n));
    }
  });
  ASSERT_NE(nullptr, managers[0]);
  EXPECT_EQ(std::vector<JavaPropertyManager*>(kAskers, managers[0]), managers);
  EXPECT_EQ(managers[0],
            Properties::GetInstance()->GetJavaPropertyManager(name));
}

TEST_F(ConcurrencyTest, ThreadsRegisteringOneNewKeyGetOneProperty) {
  const int kThreads = 8;
  JavaPropertyManager* manager = Manager("domain");
  std::vector<Property*> properties(kThreads, nullptr);
  RunTogether(kThreads, [&](int i) {
    properties[i] =
        manager->RegisterProperty("PROPERTY_TYPE_INTEGER", "port", "80");
  });
  ASSERT_NE(nullptr, properties[0]);
  EXPECT_EQ(std::vector<Property*>(kThreads, properties[0]), properties);
  EXPECT_EQ(1, CountProperties(manager));
}

TEST_F(ConcurrencyTest, FileKeepsTheLastValueThatEachThreadSet) {
  const int kThreads = 4;
  const int kSets = 200;
  TempDir dir(test_support::MemoryBackedBase());
  const std::string path = dir.File("counters.properties");
  JavaPropertyManager* manager = Manager("domain");
  manager->RegisterPersistence(path, "counters");
  for (int i = 0; i < kThreads; ++i) {
    manager->RegisterProperty("PROPERTY_TYPE_INTEGER",
                              "counter" + std::to_string(i), "-1");
  }
  RunTogether(kThreads, [&](int i) {
    for (int n = 0; n < kSets; ++n) {
      manager->SetValue("counter" + std::to_string(i), std::to_string(n));
    }
  });
  EXPECT_EQ(
      "#counters\ncounter0=199\ncounter1=199\ncounter2=199\ncounter3=199\n",
      ReadFile(path));
}

// Strict choices and file troubles are kept beside the managers, in tables
// of their own: threads that set values, change choices and ask for
// troubles at once must neither race nor lose a refusal.
TEST_F(ConcurrencyTest, SafetyChoicesAndTroublesHoldUnderThreads) {
  const int kThreads = 4;
  const int kRounds = 100;
  TempDir dir(test_support::MemoryBackedBase());
  JavaPropertyManager* strict = Manager("strict");
  JavaPropertyManager* lost = Manager("lost");
  PropertySafety::SetStrictValues(strict, true);
  strict->RegisterProperty("PROPERTY_TYPE_STRING", "name", "a");
  lost->RegisterPersistence(dir.File("missing/lost.properties"), "");
  lost->RegisterProperty("PROPERTY_TYPE_INTEGER", "port", "80");
  std::atomic<int> refused(0);
  RunTogether(kThreads, [&](int i) {
    for (int n = 0; n < kRounds; ++n) {
      switch (i) {
        case 0:
          try {
            strict->SetValue("name", "eve\nadmin=true");
          } catch (Property::WrongValue&) {
            ++refused;
          }
          break;
        case 1:
          lost->SetValue("port", std::to_string(n));
          break;
        case 2:
          EXPECT_EQ(1u, PropertySafety::FileTroubles(lost).size());
          break;
        default:
          PropertySafety::SetStrictValues(Manager("other"), n % 2 == 0);
          EXPECT_TRUE(PropertySafety::StrictValues(strict));
          break;
      }
    }
  });
  EXPECT_EQ(kRounds, refused.load());
  EXPECT_EQ("a", strict->GetValue("name"));
  const PropertySafety::FileTrouble trouble =
      PropertySafety::FileTroubles(lost).at(0);
  EXPECT_EQ(PropertySafety::FileTrouble::kWrite, trouble.operation);
  EXPECT_EQ(ENOENT, trouble.error);
}

TEST_F(ConcurrencyTest, ReadersSeeStableValuesWhileKeysAreRegistered) {
  const int kReaders = 4;
  const int kNewKeys = 100;
  JavaPropertyManager* manager = Manager("domain");
  manager->RegisterProperty("PROPERTY_TYPE_STRING", "fixed", "stable");
  std::vector<int> wrongReads(kReaders, 0);
  RunTogether(kReaders + 1, [&](int i) {
    if (i == kReaders) {
      for (int n = 0; n < kNewKeys; ++n) {
        manager->RegisterProperty("PROPERTY_TYPE_INTEGER",
                                  "key" + std::to_string(n), std::to_string(n));
      }
      return;
    }
    for (int n = 0; n < kNewKeys; ++n) {
      if (manager->GetValue("fixed") != "stable") ++wrongReads[i];
      const std::string value = manager->GetValue("key" + std::to_string(n));
      if (!value.empty() && value != std::to_string(n)) ++wrongReads[i];
    }
  });
  EXPECT_EQ(std::vector<int>(kReaders, 0), wrongReads);
  EXPECT_EQ(kNewKeys + 1, CountProperties(manager));
}

}  // namespace

// One thread sets a property while another reads it. Under ThreadSanitizer
// this shows that the value types with a native value read and write it
// atomically; everywhere it shows that a reader only ever sees one of the
// values that were set.
class ReaderWriterTest : public testing::TestWithParam<const char*> {};

TEST_P(ReaderWriterTest, ReaderSeesOnlyValuesThatWereSet) {
  struct Case {
    std::string type, initial;
    std::vector<std::string> sets, readBack;
  };
  const std::string type = GetParam();
  Case c;
  if (type == "PROPERTY_TYPE_BOOLEAN") {
    c = {type, "false", {"true", "false"}, {"true", "false"}};
  } else if (type == "PROPERTY_TYPE_INTEGER") {
    c = {type, "0", {"-7", "123456"}, {"-7", "123456", "0"}};
  } else if (type == "PROPERTY_TYPE_DOUBLE") {
    c = {type, "0", {"0.25", "1e+20"}, {"0.25", "1e+20", "0"}};
  } else if (type == "PROPERTY_TYPE_IP_ADDR") {
    c = {type,
         "0.0.0.0",
         {"10.1", "255.255.255.254"},
         {"10.0.0.1", "255.255.255.254", "0.0.0.0"}};
  } else {
    c = {type, "red|green|blue", {"blue", "1"}, {"red", "green", "blue"}};
  }
  std::unique_ptr<Property> property(
      Properties::GetInstance()->GetJavaPropertyFactory()->CreateProperty(
          c.type, "k", c.initial));
  ASSERT_NE(nullptr, property);
  bool onlyKnownValues = true;
  RunTogether(2, [&](int i) {
    for (int n = 0; n < 2000; ++n) {
      if (i == 0) {
        property->SetValue(c.sets[n % 2]);
      } else if (std::find(c.readBack.begin(), c.readBack.end(),
                           property->GetValue()) == c.readBack.end()) {
        onlyKnownValues = false;
      }
    }
  });
  EXPECT_TRUE(onlyKnownValues);
}

INSTANTIATE_TEST_SUITE_P(AtomicValueTypes, ReaderWriterTest,
                         testing::Values("PROPERTY_TYPE_BOOLEAN",
                                         "PROPERTY_TYPE_INTEGER",
                                         "PROPERTY_TYPE_DOUBLE",
                                         "PROPERTY_TYPE_IP_ADDR",
                                         "PROPERTY_TYPE_LIST"));

TEST(NativeValueTest, NativeGettersAndSettersDoNotRace) {
  BooleanProperty flag("flag", "false", "");
  IntegerProperty count("count", "0", "");
  DoubleProperty ratio("ratio", "0", "");
  RunTogether(2, [&](int i) {
    for (int n = 0; n < 2000; ++n) {
      if (i == 0) {
        flag.SetBooleanValue(n % 2 == 0);
        count.SetIntValue(n);
        ratio.SetDoubleValue(n * 0.5);
      } else {
        EXPECT_GE(count.GetIntValue(), 0);
        EXPECT_GE(ratio.GetDoubleValue(), 0.0);
        (void)flag.GetBooleanValue();
      }
    }
  });
  EXPECT_EQ(1999, count.GetIntValue());
  EXPECT_EQ(999.5, ratio.GetDoubleValue());
  EXPECT_FALSE(flag.GetBooleanValue());
}

// Counts change notifications from any thread.
class CountingListener : public PropertyChangeListener {
 public:
  void PropertyChanged(Property*) override { ++count; }
  std::atomic<int> count{0};
};

// Many threads work on two shared managers bound to files, with listeners
// attached: each thread registers, sets and reads keys of its own and reads
// the keys of the others. Nothing may deadlock or race, every thread must see
// its own last value, and both files must end up holding every final value.
TEST_F(ConcurrencyTest, StressOnSharedBoundManagersKeepsEveryFinalValue) {
  const int kThreads = 4;
  const int kRounds = 1250;  // 4 threads x 1250 rounds x 5 operations.
  const int kKeysPerThread = 3;
  TempDir dir(test_support::MemoryBackedBase());
  JavaPropertyManager* flat = Manager("stress-flat");
  IniPropertyManager* ini =
      Properties::GetInstance()->GetIniPropertyManager(UniqueName("stress"));
  CountingListener flatChanges, iniChanges;
  flat->AddChangeListener(&flatChanges);
  ini->AddChangeListener(&iniChanges);
  flat->RegisterPersistence(dir.File("stress.properties"), "stress");
  ini->RegisterPersistence(dir.File("stress.ini"), "stress");

  std::atomic<bool> consistent{true};
  RunTogether(kThreads, [&](int t) {
    const std::string section = "t" + std::to_string(t);
    for (int n = 0; n < kRounds; ++n) {
      const std::string key = "k" + std::to_string(n % kKeysPerThread);
      const std::string own = section + "." + key;
      const std::string value = std::to_string(n);
      flat->RegisterProperty("PROPERTY_TYPE_INTEGER", own, "0");
      ini->RegisterProperty("PROPERTY_TYPE_STRING", section, key, "none");
      if (n % 5 == 0) {
        flat->SetValue(own, value);
        ini->SetValue(section, key, "v" + value);
        if (flat->GetValue(own) != value ||
            ini->GetValue(section, key) != "v" + value) {
          consistent = false;
        }
      }
      // Another thread's integer key: read while that thread may set it.
      flat->GetValue("t" + std::to_string((t + 1) % kThreads) + "." + key);
    }
  });
  EXPECT_TRUE(consistent);
  EXPECT_EQ(kThreads * kKeysPerThread, CountProperties(flat));

  JavaProperties flatFile;
  ASSERT_TRUE(flatFile.Load(dir.File("stress.properties")));
  IniProperties iniFile;
  ASSERT_TRUE(iniFile.Load(dir.File("stress.ini")));
  for (int t = 0; t < kThreads; ++t) {
    const std::string section = "t" + std::to_string(t);
    for (int k = 0; k < kKeysPerThread; ++k) {
      const std::string key = "k" + std::to_string(k);
      EXPECT_EQ(flat->GetValue(section + "." + key),
                flatFile.GetProperty(section + "." + key));
      EXPECT_EQ(ini->GetValue(section, key), iniFile.GetProperty(section, key));
    }
  }
  // Every accepted set notifies once: 250 sets per thread and manager, plus
  // one load per key whose value was already in the file when registered
  // (none here: each key is registered before its first set).
  EXPECT_EQ(kThreads * kRounds / 5, flatChanges.count.load());
  EXPECT_EQ(kThreads * kRounds / 5, iniChanges.count.load());
}
