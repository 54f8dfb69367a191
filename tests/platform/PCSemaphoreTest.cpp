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
  EXPECT_EQ(1, gStaticSemaphore.Create(1));
  EXPECT_EQ(1, gStaticSemaphore.Take());
  EXPECT_EQ(1, gStaticSemaphore.Destroy());
}

TEST(PCSemaphore, NeverWaitsWhileNotCreated) {
  PCSemaphore semaphore;
  EXPECT_EQ(0, semaphore.Take());
  EXPECT_EQ(0, semaphore.Give());
  EXPECT_EQ(1, semaphore.Destroy());
  EXPECT_FALSE(semaphore.IsCreated());
}

TEST(PCSemaphore, IsAsIfNeverCreatedAfterDestroy) {
  PCSemaphore semaphore;
  ASSERT_EQ(1, semaphore.Create(1));
  EXPECT_TRUE(semaphore.IsCreated());
  EXPECT_EQ(1, semaphore.Destroy());
  EXPECT_FALSE(semaphore.IsCreated());
  EXPECT_EQ(0, semaphore.Take());
  EXPECT_EQ(0, semaphore.Give());
  EXPECT_EQ(1, semaphore.Destroy());
  EXPECT_EQ(1, semaphore.Create(1));
  EXPECT_EQ(1, semaphore.Take());
}

TEST(PCSemaphore, LetsAsManyThroughAsItsCount) {
  PCSemaphore semaphore;
  ASSERT_EQ(1, semaphore.Create(2));
  EXPECT_EQ(1, semaphore.Take());
  EXPECT_EQ(1, semaphore.Take());
  EXPECT_EQ(1, semaphore.Give());
  EXPECT_EQ(1, semaphore.Take());
}

TEST(PCSemaphore, TryTakeNeverWaits) {
  PCSemaphore semaphore;
  EXPECT_EQ(0, semaphore.TryTake()) << "not created";
  ASSERT_EQ(1, semaphore.Create(1));
  EXPECT_EQ(1, semaphore.TryTake());
  EXPECT_EQ(0, semaphore.TryTake());
  EXPECT_EQ(1, semaphore.Give());
  EXPECT_EQ(1, semaphore.TryTake());
}

TEST(PCSemaphore, CreateStartsAgainWithTheNewCount) {
  PCSemaphore semaphore;
  ASSERT_EQ(1, semaphore.Create(0));
  ASSERT_EQ(1, semaphore.Create(1));
  EXPECT_EQ(1, semaphore.Take());
}

TEST(PCSemaphore, CreateFailsForACountTheSystemDoesNotHave) {
  PCSemaphore semaphore;
  EXPECT_EQ(0, semaphore.Create(0xFFFFFFFF));
  EXPECT_FALSE(semaphore.IsCreated());
  ASSERT_EQ(1, semaphore.Create(1));
  EXPECT_EQ(0, semaphore.Create(0xFFFFFFFF));
  EXPECT_FALSE(semaphore.IsCreated()) << "the one before is gone in any case";
}

TEST(PCSemaphore, TakeWaitsForGive) {
  PCSemaphore ready;
  PCSemaphore done;
  ASSERT_EQ(1, ready.Create(0));
  ASSERT_EQ(1, done.Create(0));
  int message = 0;
  std::thread reader([&] {
    ready.Take();
    message *= 2;
    done.Give();
  });
  message = 21;
  EXPECT_EQ(1, ready.Give());
  EXPECT_EQ(1, done.Take());
  EXPECT_EQ(42, message);
  reader.join();
}

TEST(PCSemaphore, OneGiveLetsOneWaiterThrough) {
  constexpr int kThreads = 4;
  constexpr int kRounds = 500;
  PCSemaphore semaphore;
  ASSERT_EQ(1, semaphore.Create(0));
  std::atomic<int> through{0};
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&] {
      for (int round = 0; round < kRounds; ++round) through += semaphore.Take();
    });
  }
  for (int i = 0; i < kThreads * kRounds; ++i) EXPECT_EQ(1, semaphore.Give());
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(through.load(), kThreads * kRounds);
}

TEST(PCSemaphore, MayBeDestroyedByTheThreadThatGiveLetsThrough) {
  for (int round = 0; round < 1000; ++round) {
    PCSemaphore* semaphore = new PCSemaphore;
    ASSERT_EQ(1, semaphore->Create(0));
    std::thread giver([semaphore] { semaphore->Give(); });
    EXPECT_EQ(1, semaphore->Take());
    delete semaphore;
    giver.join();
  }
}

TEST(PCSemaphore, KeepsWaitingWhenASignalArrives) {
  struct sigaction action = {};
  action.sa_handler = IgnoreSignal;  // without SA_RESTART: the wait is interrupted
  struct sigaction before = {};
  ASSERT_EQ(0, sigaction(SIGUSR1, &action, &before));
  PCSemaphore semaphore;
  ASSERT_EQ(1, semaphore.Create(0));
  std::atomic<bool> given{false};
  std::atomic<bool> tooEarly{false};
  std::thread waiter([&] { tooEarly = semaphore.Take() != 1 || !given; });
  for (int i = 0; i < 20; ++i) {
    pthread_kill(waiter.native_handle(), SIGUSR1);
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  given = true;
  EXPECT_EQ(1, semaphore.Give());
  waiter.join();
  EXPECT_FALSE(tooEarly);
  sigaction(SIGUSR1, &before, nullptr);
}

}  // namespace
