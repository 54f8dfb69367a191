#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "platform/PCMutex.h"
#include "platform/PCReaders.h"

namespace {

class PCReadersTest : public ::testing::Test {
 protected:
  PCReadersTest() {
    mLock.Admit(&mReaders);
    mLock.Create();
  }
  // What another thread is told.
  bool CanEnter() {
    bool isInside = false;
    std::thread([&] { isInside = PCReaders::Scope(mReaders, mLock).IsInside(); }).join();
    return isInside;
  }

  PCReaders mReaders;
  PCMutex mLock;
};

TEST_F(PCReadersTest, ReadersAreInsideTogether) {
  const PCReaders::Scope scope(mReaders, mLock);
  EXPECT_TRUE(scope.IsInside());
  EXPECT_TRUE(mReaders.IsInside());
  EXPECT_TRUE(CanEnter());
}

TEST_F(PCReadersTest, NobodyEntersWhileTheLockIsHeld) {
  mLock.Take();
  mLock.Take();
  EXPECT_FALSE(CanEnter());
  EXPECT_FALSE(PCReaders::Scope(mReaders, mLock).IsInside()) << "nor its owner";
  mLock.Give();
  EXPECT_FALSE(CanEnter());
  mLock.Give();
  EXPECT_TRUE(CanEnter());
}

TEST_F(PCReadersTest, NobodyEntersBesideALockThatWasNotCreated) {
  PCMutex lock;
  EXPECT_FALSE(PCReaders::Scope(mReaders, lock).IsInside());
}

TEST_F(PCReadersTest, AThreadIsInsideOfOneAtATime) {
  PCReaders others;
  const PCReaders::Scope scope(mReaders, mLock);
  EXPECT_FALSE(PCReaders::Scope(others, mLock).IsInside());
  EXPECT_FALSE(PCReaders::Scope(mReaders, mLock).IsInside());
  EXPECT_TRUE(mReaders.IsInside()) << "what was refused leaves the thread where it is";
  EXPECT_FALSE(others.IsInside());
}

TEST_F(PCReadersTest, WhoTakesTheLockWaitsUntilNobodyIsInside) {
  std::atomic<bool> isTaken{false};
  std::thread taker;
  {
    const PCReaders::Scope scope(mReaders, mLock);
    taker = std::thread([&] {
      mLock.Take();
      isTaken = true;
      mLock.Give();
    });
    while (CanEnter()) std::this_thread::yield();  // until it has got as far as that
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_FALSE(isTaken);
  }
  taker.join();
  EXPECT_TRUE(isTaken);
}

TEST_F(PCReadersTest, WhoeverWasInsideInAnotherProcessIsForgotten) {
  const PCReaders::Scope scope(mReaders, mLock);
  std::thread([this] {
    mReaders.StartAnew();
    mLock.Take();  // waits for nobody
    mLock.Give();
  }).join();
}

// Two numbers that are equal whenever nobody has the lock.
TEST_F(PCReadersTest, ReadersNeverSeeHalfOfAChange) {
  unsigned int first = 0;
  unsigned int second = 0;
  std::atomic<bool> isOver{false};
  std::atomic<unsigned int> wrong{0};
  std::vector<std::thread> readers;
  for (int i = 0; i < 4; ++i) {
    readers.emplace_back([&] {
      while (!isOver) {
        const PCReaders::Scope scope(mReaders, mLock);
        if (scope.IsInside() && first != second) ++wrong;
      }
    });
  }
  for (unsigned int i = 0; i < 20000; ++i) {
    mLock.Take();
    ++first;
    ++second;
    mLock.Give();
  }
  isOver = true;
  for (std::thread& each : readers) each.join();
  EXPECT_EQ(0u, wrong);
  EXPECT_EQ(20000u, second);
}

}  // namespace
