#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "tests/platform/TestFiles.h"
#include "yax/Transaction.h"

namespace yax {
namespace {

class TransactionTest : public ::testing::Test {
 protected:
  int InAnotherThread(const char* name) {
    int number = -1;
    std::thread([&] { number = registry["k"].Get(name, 0); }).join();
    return number;
  }

  TempDir folder;
  Registry registry{folder / "a.rce"};
  Key key = registry["k"];
};

TEST_F(TransactionTest, WhatIsCommittedHappensAtOnce) {
  Transaction transaction(registry);
  ASSERT_TRUE(transaction.status()) << transaction.status().text();
  ASSERT_TRUE(key.Set("a", 1));
  ASSERT_TRUE(registry["other/key"].Set("b", "text"));
  EXPECT_EQ(1, key.Get("a", 0));
  EXPECT_EQ(0, InAnotherThread("a"));
  ASSERT_TRUE(transaction.Commit());
  EXPECT_EQ(1, InAnotherThread("a"));
  EXPECT_EQ("text", registry["other/key"].Get("b", ""));
}

TEST_F(TransactionTest, WhatIsNotCommittedIsTakenBack) {
  ASSERT_TRUE(key.Set("a", 1));
  {
    Transaction transaction(registry);
    ASSERT_TRUE(key.Set("a", 2));
    ASSERT_TRUE(key["below"].Make());
    ASSERT_TRUE(registry["other"].Set("n", 1));
    ASSERT_TRUE(key.MoveTo("moved"));
  }
  EXPECT_EQ(1, key.Get("a", 0));
  EXPECT_FALSE(key["below"].Exists());
  EXPECT_FALSE(registry["moved"].Exists());
  EXPECT_EQ(1u, registry.root().Children().size());
}

TEST_F(TransactionTest, AFunctionIsDoneWholeOrNotAtAll) {
  EXPECT_TRUE(Atomically(registry, [&] { return key.Set("a", 1); }));
  const Status failed = Atomically(registry, [&]() -> Status {
    const Status set = key.Set("a", 2);
    return set ? key.Set("b", std::string(2000, 'x')) : set;
  });
  EXPECT_EQ(failed, Status(YAX_LIMIT));
  EXPECT_EQ(1, key.Get("a", 0));
}

TEST_F(TransactionTest, TheOutermostDecides) {
  {
    Transaction outer(registry);
    ASSERT_TRUE(Atomically(registry, [&] { return key.Set("a", 1); }));
    EXPECT_EQ(1, key.Get("a", 0));
  }
  EXPECT_FALSE(key.Has("a"));
}

TEST_F(TransactionTest, AClosedRegistryHasNone) {
  Registry none(folder / "missing/a.rce");
  Transaction transaction(none);
  EXPECT_EQ(transaction.status(), Status(YAX_BAD_ARGUMENT));
  EXPECT_EQ(transaction.Commit(), Status(YAX_BAD_ARGUMENT));
  bool isCalled = false;
  const auto change = [&]() -> Status {
    isCalled = true;
    return YAX_OK;
  };
  EXPECT_EQ(Status(YAX_BAD_ARGUMENT), Atomically(none, change));
  EXPECT_FALSE(isCalled);
}

TEST_F(TransactionTest, EachStepOfAMigrationIsDoneOnce) {
  std::vector<int> done;
  const auto first = [&](Key& k) {
    done.push_back(1);
    return k.Set("speed", 100);
  };
  const auto second = [&](Key& k) -> Status {
    done.push_back(2);
    const Status set = k.Set("rate", k.Get("speed", 0) * 1000);
    return set ? k.Remove("speed") : set;
  };
  EXPECT_TRUE(Migrate(registry, key, {first}));
  EXPECT_TRUE(Migrate(registry, key, {first, second}));
  EXPECT_TRUE(Migrate(registry, key, {first, second}));
  EXPECT_EQ(done, (std::vector<int>{1, 2}));
  EXPECT_EQ(100000, key.Get("rate", 0));
  EXPECT_FALSE(key.Has("speed"));
  EXPECT_EQ(Migrate(registry, key, {first}), Status(YAX_RANGE));
}

TEST_F(TransactionTest, AStepThatAnotherDoesMeanwhileIsNotDoneAgain) {
  int done = 0;
  std::thread other;
  const auto second = [&](Key& k) { return k.Set("second", ++done); };
  const auto first = [&](Key& k) {
    other = std::thread([&] {
      const auto again = [&](Key& mine) { return mine.Set("first", ++done); };
      Key of = registry["k"];
      EXPECT_TRUE(Migrate(registry, of, {again, second}));
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));  // it has looked, and waits
    return k.Set("first", ++done);
  };
  EXPECT_TRUE(Migrate(registry, key, {first, second}));
  other.join();
  EXPECT_EQ(2, done);
  EXPECT_EQ(1, key.Get("first", 0));
  EXPECT_EQ(2, key.Get("second", 0));
}

TEST_F(TransactionTest, AVersionThatIsNoNumberStopsAMigration) {
  ASSERT_TRUE(key.Set(kVersionName, "one"));
  const auto step = [](Key& k) { return k.Set("speed", 100); };
  EXPECT_EQ(Status(YAX_WRONG_TYPE), Migrate(registry, key, {step}));
  EXPECT_FALSE(key.Has("speed"));
}

TEST_F(TransactionTest, AStepThatFailsLeavesNothingAndIsDoneNextTime) {
  bool fails = true;
  const auto step = [&](Key& k) -> Status {
    const Status set = k.Set("half", 1);
    return set && fails ? Status(YAX_LIMIT) : set;
  };
  EXPECT_EQ(Migrate(registry, key, {step}), Status(YAX_LIMIT));
  EXPECT_FALSE(key.Exists());
  fails = false;
  EXPECT_TRUE(Migrate(registry, key, {step}));
  EXPECT_EQ(1, key.Get("half", 0));
}

}  // namespace
}  // namespace yax
