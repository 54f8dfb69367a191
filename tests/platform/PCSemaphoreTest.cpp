#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <thread>
#include <vector>

#include "platform/PCSemaphore.h"
#include "tests/support/Constinit.h"

namespace {

YAX_TEST_CONSTINIT PCSemaphore gStaticSemaphore;

void IgnoreSignal(int) {}

TEST(PCSemaphore, NeedsNoInitialisationAtRunTime) {
  EXPECT_FALSE(gStaticSemaphore.IsCreated());
  EXPECT_EQ(gStaticSemaphore.Create(1), 1);
  EXPECT_EQ(gStaticSemaphore.Take(), 1);
  EXPECT_EQ(gStaticSemaphore.Destroy(), 1);
}

TEST(PCSemaphore, NeverWaitsWhileNotCreated) {
  PCSemaphore semaphore;
  EXPECT_EQ(semaphore.Take(), 0);
  EXPECT_EQ(semaphore.Give(), 0);
  EXPECT_EQ(semaphore.Destroy(), 1);
  EXPECT_FALSE(semaphore.IsCreated());
}

TEST(PCSemaphore, IsAsIfNeverCreatedAfterDestroy) {
  PCSemaphore semaphore;
  ASSERT_EQ(semaphore.Create(1), 1);
  EXPECT_TRUE(semaphore.IsCreated());
  EXPECT_EQ(semaphore.Destroy(), 1);
  EXPECT_FALSE(semaphore.IsCreated());
  EXPECT_EQ(semaphore.Take(), 0);
  EXPECT_EQ(semaphore.Give(), 0);
  EXPECT_EQ(semaphore.Destroy(), 1);
  EXPECT_EQ(semaphore.Create(1), 1);
  EXPECT_EQ(semaphore.Take(), 1);
}

TEST(PCSemaphore, LetsAsManyThroughAsItsCount) {
  PCSemaphore semaphore;
  ASSERT_EQ(semaphore.Create(2), 1);
  EXPECT_EQ(semaphore.Take(), 1);
  EXPECT_EQ(semaphore.Take(), 1);
  EXPECT_EQ(semaphore.Give(), 1);
  EXPECT_EQ(semaphore.Take(), 1);
}

TEST(PCSemaphore, TryTakeNeverWaits) {
  PCSemaphore semaphore;
  EXPECT_EQ(semaphore.TryTake(), 0) << "not created";
  ASSERT_EQ(semaphore.Create(1), 1);
  EXPECT_EQ(semaphore.TryTake(), 1);
  EXPECT_EQ(semaphore.TryTake(), 0);
  EXPECT_EQ(semaphore.Give(), 1);
  EXPECT_EQ(semaphore.TryTake(), 1);
}

TEST(PCSemaphore, CreateStartsAgainWithTheNewCount) {
  PCSemaphore semaphore;
  ASSERT_EQ(semaphore.Create(0), 1);
  ASSERT_EQ(semaphore.Create(1), 1);
  EXPECT_EQ(semaphore.Take(), 1);
}

TEST(PCSemaphore, CreateFailsForACountTheSystemDoesNotHave) {
  PCSemaphore semaphore;
  EXPECT_EQ(semaphore.Create(0xFFFFFFFF), 0);
  EXPECT_FALSE(semaphore.IsCreated());
  ASSERT_EQ(semaphore.Create(1), 1);
  EXPECT_EQ(semaphore.Create(0xFFFFFFFF), 0);
  EXPECT_FALSE(semaphore.IsCreated()) << "the one before is gone in any case";
}

TEST(PCSemaphore, TakeWaitsForGive) {
  PCSemaphore ready;
  PCSemaphore done;
  ASSERT_EQ(ready.Create(0), 1);
  ASSERT_EQ(done.Create(0), 1);
  int message = 0;
  std::thread reader([&] {
    ready.Take();
    message *= 2;
    done.Give();
  });
  message = 21;
  EXPECT_EQ(ready.Give(), 1);
  EXPECT_EQ(done.Take(), 1);
  EXPECT_EQ(message, 42);
  reader.join();
}

TEST(PCSemaphore, OneGiveLetsOneWaiterThrough) {
  constexpr int kThreads = 4;
  constexpr int kRounds = 500;
  PCSemaphore semaphore;
  ASSERT_EQ(semaphore.Create(0), 1);
  std::atomic<int> through{0};
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&] {
      for (int round = 0; round < kRounds; ++round) through += semaphore.Take();
    });
  }
  for (int i = 0; i < kThreads * kRounds; ++i) EXPECT_EQ(semaphore.Give(), 1);
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(through.load(), kThreads * kRounds);
}

TEST(PCSemaphore, MayBeDestroyedByTheThreadThatGiveLetsThrough) {
  for (int round = 0; round < 1000; ++round) {
    PCSemaphore* semaphore = new PCSemaphore;
    ASSERT_EQ(semaphore->Create(0), 1);
    std::thread giver([semaphore] { semaphore->Give(); });
    EXPECT_EQ(semaphore->Take(), 1);
    delete semaphore;
    giver.join();
  }
}

TEST(PCSemaphore, KeepsWaitingWhenASignalArrives) {
  struct sigaction action = {};
  action.sa_handler = IgnoreSignal;  // without SA_RESTART: the wait is interrupted
  struct sigaction before = {};
  ASSERT_EQ(sigaction(SIGUSR1, &action, &before), 0);
  PCSemaphore semaphore;
  ASSERT_EQ(semaphore.Create(0), 1);
  std::atomic<bool> given{false};
  std::atomic<bool> tooEarly{false};
  std::thread waiter([&] { tooEarly = semaphore.Take() != 1 || !given; });
  for (int i = 0; i < 20; ++i) {
    pthread_kill(waiter.native_handle(), SIGUSR1);
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  given = true;
  EXPECT_EQ(semaphore.Give(), 1);
  waiter.join();
  EXPECT_FALSE(tooEarly);
  sigaction(SIGUSR1, &before, nullptr);
}

}  // namespace
