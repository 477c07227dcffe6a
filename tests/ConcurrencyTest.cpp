// ConcurrencyTest.cpp - managers, properties and bound files used from
// several threads at once.

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "BooleanProperty.h"
#include "DoubleProperty.h"
#include "IntegerProperty.h"
#include "Properties.h"
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
