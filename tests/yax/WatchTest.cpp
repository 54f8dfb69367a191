#include <gtest/gtest.h>
#include <poll.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "tests/platform/TestFiles.h"
#include "yax/Transaction.h"
#include "yax/Watch.h"

namespace yax {
namespace {

using std::chrono::milliseconds;

class WatchTest : public ::testing::Test {
 protected:
  // "3 network mtu" for each change that is there.
  static std::vector<std::string> All(Watch& watch) {
    std::vector<std::string> all;
    while (const auto change = watch.Next(milliseconds(0))) {
      all.push_back(std::to_string(static_cast<unsigned>(change->kind)) + " " +
                    std::string(change->path) + " " + std::string(change->name));
    }
    return all;
  }
  static Status NextStatus(Watch& watch, milliseconds timeout) {
    return watch.Next(timeout).status();
  }

  TempDir folder;
  Registry registry{folder / "a.rce"};
};

TEST_F(WatchTest, TellsWhatHappensToAKeyAndBelowIt) {
  ASSERT_TRUE(registry["a"].Set("before", 1));
  Watch watch(registry["a"]);
  ASSERT_TRUE(watch.status());
  EXPECT_TRUE(All(watch).empty());
  ASSERT_TRUE(registry["a"].Set("n", 1));
  ASSERT_TRUE(registry["ab"].Set("n", 1));
  ASSERT_TRUE(registry[""].Set("n", 1));
  ASSERT_TRUE(registry["a/b"].Set("t", "text"));
  ASSERT_TRUE(registry["a"].Set("n", 2));
  ASSERT_TRUE(registry["a"].Remove("n"));
  EXPECT_EQ((std::vector<std::string>{"3 a n", "0 a/b ", "3 a/b t", "4 a n", "5 a n"}), All(watch));
}

TEST_F(WatchTest, TellsWhatTakesAKeyAwayOrBringsIt) {
  Watch watch(registry["a/b"]);
  ASSERT_TRUE(registry["a/b"].Make());
  ASSERT_TRUE(registry["a"].Set("n", 1));
  ASSERT_TRUE(registry["a"].BackUp(folder / "backup"));
  ASSERT_TRUE(registry["a"].Remove());
  ASSERT_TRUE(registry["a"].Make());
  ASSERT_TRUE(registry["a"].Restore(folder / "backup"));
  EXPECT_EQ((std::vector<std::string>{"0 a/b ", "1 a ", "0 a ", "2 a "}), All(watch));
}

TEST_F(WatchTest, TheRootIsEverything) {
  Watch watch(registry.root());
  ASSERT_TRUE(registry["x"].Make());
  ASSERT_TRUE(registry["x/y"].Set("n", 1));
  EXPECT_EQ((std::vector<std::string>{"0 x ", "0 x/y ", "3 x/y n"}), All(watch));
}

TEST_F(WatchTest, WaitsForOtherThreads) {
  Watch watch(registry["a"]);
  std::thread other([&] { EXPECT_TRUE(registry["a"].Set("n", 1)); });
  const auto made = watch.Next();
  ASSERT_TRUE(made);
  EXPECT_EQ(ChangeKind::kKeyCreated, made->kind);
  const auto set = watch.Next(std::chrono::seconds(60));
  ASSERT_TRUE(set);
  EXPECT_EQ("n", set->name);
  other.join();
}

TEST_F(WatchTest, WhatHappensElsewhereIsNoReasonToWaitLonger) {
  Watch watch(registry["a"]);
  ASSERT_TRUE(registry["b"].Set("n", 1));
  EXPECT_EQ(Status(YAX_NO_DATA), NextStatus(watch, milliseconds(20)));
  EXPECT_EQ(Status(YAX_NO_DATA), NextStatus(watch, milliseconds(-1)));
}

TEST_F(WatchTest, TooMuchIsToldOnce) {
  ASSERT_TRUE(registry["a"].Set("n", 1));
  Watch watch(registry["a"]);
  for (int i = 0; i < 20000; ++i) ASSERT_TRUE(registry["a"].Set("n", i));
  EXPECT_EQ(Status(YAX_LIMIT), NextStatus(watch, milliseconds(0)));
  EXPECT_EQ(Status(YAX_NO_DATA), NextStatus(watch, milliseconds(0)));
  ASSERT_TRUE(registry["a"].Set("n", 1));
  EXPECT_EQ(std::vector<std::string>{"4 a n"}, All(watch));
}

TEST_F(WatchTest, AThreadDoesNotWaitForItself) {
  Watch watch(registry["a"]);
  Transaction transaction(registry);
  EXPECT_EQ(Status(YAX_BUSY), NextStatus(watch, Watch::kForever));
}

TEST_F(WatchTest, ADescriptorTellsWhenToAsk) {
  Watch watch(registry["a"]);
  pollfd poller = {registry.ChangeDescriptor(), POLLIN, 0};
  ASSERT_LE(0, poller.fd);
  EXPECT_EQ(0, poll(&poller, 1, 0));
  ASSERT_TRUE(registry["a"].Set("n", 1));
  ASSERT_EQ(1, poll(&poller, 1, 60000));
  EXPECT_EQ((std::vector<std::string>{"0 a ", "3 a n"}), All(watch));
}

TEST_F(WatchTest, WhoWaitsLeavesTheDescriptorToTheLoop) {
  Watch polled(registry["a"]);
  Watch waiting(registry["a"]);
  pollfd poller = {registry.ChangeDescriptor(), POLLIN, 0};
  ASSERT_TRUE(registry["a"].Set("n", 1));
  ASSERT_EQ(1, poll(&poller, 1, 60000));
  EXPECT_EQ(Status(YAX_OK), NextStatus(waiting, std::chrono::seconds(60)));
  const Watch another(registry["a"]);
  EXPECT_EQ(1, poll(&poller, 1, 0));
  EXPECT_EQ((std::vector<std::string>{"0 a ", "3 a n"}), All(polled));
  EXPECT_EQ(0, poll(&poller, 1, 0));
}

TEST_F(WatchTest, AFunctionIsToldAllThatThereIs) {
  Watch watch(registry["a"]);
  std::vector<std::string> told;
  const auto hear = [&](const Change& change) {
    told.push_back(std::string(change.path) + ":" + std::string(change.name));
  };
  EXPECT_TRUE(watch.Tell(hear));
  EXPECT_TRUE(told.empty());
  ASSERT_TRUE(registry["a/b"].Set("n", 1));
  ASSERT_TRUE(registry["c"].Set("n", 1));
  EXPECT_TRUE(watch.Tell(hear));
  EXPECT_EQ((std::vector<std::string>{"a/b:", "a/b:n"}), told);
  Watch none{Key()};
  EXPECT_EQ(Status(YAX_BAD_ARGUMENT), none.Tell(hear));
}

TEST_F(WatchTest, AFunctionIsToldOfTooMuchAsAnythingAtTheKey) {
  ASSERT_TRUE(registry["a"].Set("n", 1));
  Watch watch(registry["a"]);
  for (int i = 0; i < 5000; ++i) ASSERT_TRUE(registry["a"].Set("n", i));
  std::vector<std::string> told;
  EXPECT_TRUE(watch.Tell([&](const Change& change) {
    EXPECT_EQ(ChangeKind::kKeyRestored, change.kind);
    told.push_back(std::string(change.path) + ":" + std::string(change.name));
  }));
  EXPECT_EQ(std::vector<std::string>{"a:"}, told);
}

TEST_F(WatchTest, AThreadIsToldUntilItsEnd) {
  std::atomic<int> latest{0};
  {
    const WatchThread thread(registry["a"], [&](const Change& change) {
      if (!change.name.empty()) latest = registry["a"].Get("n", 0);
    });
    ASSERT_TRUE(thread.status());
    for (int i = 1; i <= 3; ++i) {
      ASSERT_TRUE(registry["a"].Set("n", i));
      while (latest != i) std::this_thread::yield();
    }
  }
  ASSERT_TRUE(registry["a"].Set("n", 4));
  EXPECT_EQ(3, latest);
  EXPECT_EQ(Status(YAX_BAD_ARGUMENT), WatchThread(Key(), [](const Change&) {}).status());
}

TEST_F(WatchTest, OutlivesItsRegistry) {
  auto other = std::make_unique<Watch>(registry["a"]);
  registry = Registry(folder / "b.rce");
  EXPECT_EQ(Status(YAX_NO_RIGHT), NextStatus(*other, Watch::kForever));
  other.reset();
  EXPECT_EQ(Status(YAX_BAD_ARGUMENT), Watch(Registry(folder / "").root()).status());
}

}  // namespace
}  // namespace yax
