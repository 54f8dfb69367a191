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

class CreatedMutex : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(mLock.Create(), 1); }

  PCMutex mLock;
};

TEST(PCMutex, NeedsNoInitialisationAtRunTime) {
  EXPECT_FALSE(gStaticMutex.IsCreated());
}

TEST(PCMutex, DoesNothingWhileNotCreated) {
  PCMutex lock;
  lock.Take();
  EXPECT_FALSE(lock.IsMine());
  EXPECT_EQ(lock.TryTake(), 1) << "as Take";
  EXPECT_FALSE(lock.IsMine());
  EXPECT_EQ(lock.Depth(), 0);
  lock.Give();
  lock.Retake(3);
  EXPECT_FALSE(lock.IsMine());
  EXPECT_EQ(lock.Depth(), 0);
  EXPECT_EQ(lock.ReleaseAll(), 0);
  lock.Destroy();
  EXPECT_FALSE(lock.IsCreated());
}

TEST_F(CreatedMutex, TryTakeAddsALevelUnlessAnotherThreadOwnsTheLock) {
  EXPECT_EQ(mLock.TryTake(), 1);
  EXPECT_EQ(mLock.TryTake(), 1);
  EXPECT_TRUE(mLock.IsMine());
  EXPECT_EQ(mLock.Depth(), 2);
  Elsewhere([this] {
    EXPECT_EQ(mLock.TryTake(), 0);
    EXPECT_FALSE(mLock.IsMine());
  });
  mLock.Give();
  mLock.Give();
  Elsewhere([this] {
    EXPECT_EQ(mLock.TryTake(), 1);
    EXPECT_TRUE(mLock.IsMine());
    mLock.Give();
  });
  EXPECT_FALSE(mLock.IsMine());
}

TEST_F(CreatedMutex, IsFreeAtFirst) {
  EXPECT_TRUE(mLock.IsCreated());
  EXPECT_FALSE(mLock.IsMine());
  EXPECT_EQ(mLock.Depth(), 0);
}

TEST_F(CreatedMutex, CountsTheLevelsOfItsOwner) {
  mLock.Take();
  mLock.Take();
  mLock.Take();
  EXPECT_TRUE(mLock.IsMine());
  EXPECT_EQ(mLock.Depth(), 3);
  mLock.Give();
  mLock.Give();
  EXPECT_TRUE(mLock.IsMine());
  EXPECT_EQ(mLock.Depth(), 1);
  mLock.Give();
  EXPECT_FALSE(mLock.IsMine());
  EXPECT_EQ(mLock.Depth(), 0);
}

TEST_F(CreatedMutex, MoreGivesThanTakesDoNothing) {
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
  EXPECT_EQ(inside.load(), 0) << "the lock still lets one thread in at a time";
  mLock.Give();
  other.join();
  EXPECT_EQ(inside.load(), 1);
}

TEST_F(CreatedMutex, OtherThreadsNeitherOwnItNorFreeIt) {
  mLock.Take();
  mLock.Take();
  Elsewhere([&] {
    EXPECT_FALSE(mLock.IsMine());
    mLock.Give();
    EXPECT_EQ(mLock.ReleaseAll(), 0);
  });
  EXPECT_TRUE(mLock.IsMine());
  EXPECT_EQ(mLock.Depth(), 2);
}

TEST_F(CreatedMutex, KeepsThreadsApart) {
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

TEST_F(CreatedMutex, ReleaseAllFreesItAndRetakeRestoresTheLevels) {
  mLock.Take();
  mLock.Take();
  mLock.Take();
  EXPECT_EQ(mLock.ReleaseAll(), 3);
  EXPECT_FALSE(mLock.IsMine());
  EXPECT_EQ(mLock.ReleaseAll(), 0);
  Elsewhere([&] {
    mLock.Take();
    EXPECT_EQ(mLock.Depth(), 1);
    mLock.Give();
  });
  mLock.Retake(3);
  EXPECT_TRUE(mLock.IsMine());
  EXPECT_EQ(mLock.Depth(), 3);
  for (int i = 0; i < 3; ++i) mLock.Give();
  EXPECT_FALSE(mLock.IsMine());
}

TEST_F(CreatedMutex, RetakeOfNoLevelsDoesNothing) {
  mLock.Retake(0);
  mLock.Retake(-1);
  EXPECT_FALSE(mLock.IsMine());
}

TEST_F(CreatedMutex, RetakeByTheOwnerAddsTheLevels) {
  mLock.Take();
  mLock.Retake(2);
  EXPECT_EQ(mLock.Depth(), 3);
}

TEST_F(CreatedMutex, RetakeWaitsForTheOwner) {
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
  EXPECT_EQ(value, 2);
}

TEST_F(CreatedMutex, CreateMakesAHeldLockFree) {
  mLock.Take();
  mLock.Take();
  EXPECT_EQ(mLock.Create(), 1);
  EXPECT_FALSE(mLock.IsMine());
  EXPECT_EQ(mLock.Depth(), 0);
  Elsewhere([&] { PCMutexGuard guard(mLock); });
}

TEST_F(CreatedMutex, WorksAgainWhenCreatedAfterDestroy) {
  mLock.Take();
  mLock.Destroy();
  EXPECT_FALSE(mLock.IsCreated());
  EXPECT_FALSE(mLock.IsMine());
  mLock.Destroy();
  EXPECT_EQ(mLock.Create(), 1);
  EXPECT_FALSE(mLock.IsMine());
  mLock.Take();
  EXPECT_EQ(mLock.Depth(), 1);
  mLock.Give();
}

TEST(PCMutex, MayEndWhileHeld) {
  PCMutex lock;
  ASSERT_EQ(lock.Create(), 1);
  lock.Take();
}

TEST_F(CreatedMutex, GuardHoldsOneLevelForItsScope) {
  {
    PCMutexGuard outer(mLock);
    EXPECT_EQ(mLock.Depth(), 1);
    {
      PCMutexGuard inner(mLock);
      EXPECT_EQ(mLock.Depth(), 2);
    }
    EXPECT_EQ(mLock.Depth(), 1);
  }
  EXPECT_FALSE(mLock.IsMine());
}

TEST_F(CreatedMutex, GuardCanLeaveItsLevelWithTheThread) {
  {
    PCMutexGuard guard(mLock);
    guard.Keep();
  }
  EXPECT_TRUE(mLock.IsMine());
  EXPECT_EQ(mLock.Depth(), 1);
  mLock.Give();
}

}  // namespace
