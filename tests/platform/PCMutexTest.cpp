#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "platform/PCMutex.h"
#include "tests/support/Constinit.h"

namespace {

YAX_TEST_CONSTINIT PCMutex gStaticMutex;

// Runs `body` in another thread, to its end.
template <class Body>
void Elsewhere(Body body) {
  std::thread(body).join();
}

class PCMutexTest : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(1, mLock.Create()); }

  PCMutex mLock;
};

TEST(PCMutex, NeedsNoInitialisationAtRunTime) {
  EXPECT_FALSE(gStaticMutex.IsCreated());
}

TEST(PCMutex, DoesNothingWhileNotCreated) {
  PCMutex lock;
  lock.Take();
  EXPECT_FALSE(lock.IsMine());
  EXPECT_EQ(1, lock.TryTake()) << "as Take";
  EXPECT_FALSE(lock.IsMine());
  EXPECT_EQ(0, lock.Depth());
  lock.Give();
  lock.Retake(3);
  EXPECT_FALSE(lock.IsMine());
  EXPECT_EQ(0, lock.Depth());
  EXPECT_EQ(0, lock.ReleaseAll());
  lock.Destroy();
  EXPECT_FALSE(lock.IsCreated());
}

TEST_F(PCMutexTest, TryTakeAddsALevelUnlessAnotherThreadOwnsTheLock) {
  EXPECT_EQ(1, mLock.TryTake());
  EXPECT_EQ(1, mLock.TryTake());
  EXPECT_TRUE(mLock.IsMine());
  EXPECT_EQ(2, mLock.Depth());
  Elsewhere([this] {
    EXPECT_EQ(0, mLock.TryTake());
    EXPECT_FALSE(mLock.IsMine());
  });
  mLock.Give();
  mLock.Give();
  Elsewhere([this] {
    EXPECT_EQ(1, mLock.TryTake());
    EXPECT_TRUE(mLock.IsMine());
    mLock.Give();
  });
  EXPECT_FALSE(mLock.IsMine());
}

TEST_F(PCMutexTest, IsFreeAtFirst) {
  EXPECT_TRUE(mLock.IsCreated());
  EXPECT_FALSE(mLock.IsMine());
  EXPECT_EQ(0, mLock.Depth());
}

TEST_F(PCMutexTest, CountsTheLevelsOfItsOwner) {
  mLock.Take();
  mLock.Take();
  mLock.Take();
  EXPECT_TRUE(mLock.IsMine());
  EXPECT_EQ(3, mLock.Depth());
  mLock.Give();
  mLock.Give();
  EXPECT_TRUE(mLock.IsMine());
  EXPECT_EQ(1, mLock.Depth());
  mLock.Give();
  EXPECT_FALSE(mLock.IsMine());
  EXPECT_EQ(0, mLock.Depth());
}

TEST_F(PCMutexTest, MoreGivesThanTakesDoNothing) {
  mLock.Give();
  mLock.Take();
  mLock.Give();
  mLock.Give();
  std::atomic<int> inside{0};
  mLock.Take();
  std::thread other([&] {
    mLock.Take();
    ++inside;
    mLock.Give();
  });
  EXPECT_EQ(0, inside.load()) << "the lock still lets one thread in at a time";
  mLock.Give();
  other.join();
  EXPECT_EQ(1, inside.load());
}

TEST_F(PCMutexTest, OtherThreadsNeitherOwnItNorFreeIt) {
  mLock.Take();
  mLock.Take();
  Elsewhere([&] {
    EXPECT_FALSE(mLock.IsMine());
    mLock.Give();
    EXPECT_EQ(0, mLock.ReleaseAll());
  });
  EXPECT_TRUE(mLock.IsMine());
  EXPECT_EQ(2, mLock.Depth());
}

TEST_F(PCMutexTest, KeepsThreadsApart) {
  constexpr int kThreads = 8;
  constexpr int kRounds = 2000;
  long counter = 0;
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&] {
      for (int round = 0; round < kRounds; ++round) {
        PCMutexGuard outer(mLock);
        PCMutexGuard inner(mLock);
        ++counter;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(counter, static_cast<long>(kThreads) * kRounds);
}

TEST_F(PCMutexTest, ReleaseAllFreesItAndRetakeRestoresTheLevels) {
  mLock.Take();
  mLock.Take();
  mLock.Take();
  EXPECT_EQ(3, mLock.ReleaseAll());
  EXPECT_FALSE(mLock.IsMine());
  EXPECT_EQ(0, mLock.ReleaseAll());
  Elsewhere([&] {
    mLock.Take();
    EXPECT_EQ(1, mLock.Depth());
    mLock.Give();
  });
  mLock.Retake(3);
  EXPECT_TRUE(mLock.IsMine());
  EXPECT_EQ(3, mLock.Depth());
  for (int i = 0; i < 3; ++i) mLock.Give();
  EXPECT_FALSE(mLock.IsMine());
}

TEST_F(PCMutexTest, RetakeOfNoLevelsDoesNothing) {
  mLock.Retake(0);
  mLock.Retake(-1);
  EXPECT_FALSE(mLock.IsMine());
}

TEST_F(PCMutexTest, RetakeByTheOwnerAddsTheLevels) {
  mLock.Take();
  mLock.Retake(2);
  EXPECT_EQ(3, mLock.Depth());
}

TEST_F(PCMutexTest, RetakeWaitsForTheOwner) {
  int value = 0;
  mLock.Take();
  const int depth = mLock.ReleaseAll();
  std::thread other([&] {
    PCMutexGuard guard(mLock);
    ++value;
  });
  mLock.Retake(depth);
  ++value;
  mLock.Give();
  other.join();
  EXPECT_EQ(2, value);
}

TEST_F(PCMutexTest, CreateMakesAHeldLockFree) {
  mLock.Take();
  mLock.Take();
  EXPECT_EQ(1, mLock.Create());
  EXPECT_FALSE(mLock.IsMine());
  EXPECT_EQ(0, mLock.Depth());
  Elsewhere([&] { PCMutexGuard guard(mLock); });
}

TEST_F(PCMutexTest, WorksAgainWhenCreatedAfterDestroy) {
  mLock.Take();
  mLock.Destroy();
  EXPECT_FALSE(mLock.IsCreated());
  EXPECT_FALSE(mLock.IsMine());
  mLock.Destroy();
  EXPECT_EQ(1, mLock.Create());
  EXPECT_FALSE(mLock.IsMine());
  mLock.Take();
  EXPECT_EQ(1, mLock.Depth());
  mLock.Give();
}

TEST(PCMutex, MayEndWhileHeld) {
  PCMutex lock;
  ASSERT_EQ(1, lock.Create());
  lock.Take();
}

TEST_F(PCMutexTest, GuardHoldsOneLevelForItsScope) {
  {
    PCMutexGuard outer(mLock);
    EXPECT_EQ(1, mLock.Depth());
    {
      PCMutexGuard inner(mLock);
      EXPECT_EQ(2, mLock.Depth());
    }
    EXPECT_EQ(1, mLock.Depth());
  }
  EXPECT_FALSE(mLock.IsMine());
}

TEST_F(PCMutexTest, GuardCanLeaveItsLevelWithTheThread) {
  {
    PCMutexGuard guard(mLock);
    guard.Keep();
  }
  EXPECT_TRUE(mLock.IsMine());
  EXPECT_EQ(1, mLock.Depth());
  mLock.Give();
}

}  // namespace
