#include <thread>

#include "registry/memtree/StringLock.h"
#include "tests/registry/memtree/LoadedTreeRig.h"

namespace tamu::registry {
namespace {

class StringLockTest : public ::testing::Test {
 protected:
  void SetUp() override {
    rig.Create({"a", "a/b"});
    handle = rig.Load("a");
    other = rig.Load("a");
    a = handle->start;
    b = a->directory;
  }
  // Waits until `count` threads wait for strings that are locked through the handle.
  void AwaitWaiters(int count) {
    for (bool there = false; !there; std::this_thread::yield()) {
      PCMutexGuard guard(*handle->treeLock);
      there = handle->waiterCount == count;
    }
  }

  LoadedTreeRig rig;
  TernaryHandle* handle = nullptr;
  TernaryHandle* other = nullptr;
  TernaryString* a = nullptr;
  TernaryString* b = nullptr;
};

TEST_F(StringLockTest, LocksAStringForItsScope) {
  PCMutexGuard guard(*handle->treeLock);
  {
    StringLock lock;
    ASSERT_TRUE(lock.Take(a, handle));
    EXPECT_TRUE(a->isLocked());
    EXPECT_EQ(a->lockHandle, handle);
    EXPECT_EQ(1u, handle->lockedStrings);
    EXPECT_EQ(nullptr, a->directory);
  }
  EXPECT_FALSE(a->isLocked());
  EXPECT_EQ(nullptr, a->lockHandle);
  EXPECT_EQ(0u, handle->lockedStrings);
  EXPECT_EQ(a->directory, b);
  EXPECT_EQ(1, handle->treeLock->Depth());
}

TEST_F(StringLockTest, LocksNothingUntilItIsTold) {
  {
    const StringLock lock;
    EXPECT_FALSE(a->isLocked());
  }
  EXPECT_FALSE(a->isLocked());
  EXPECT_EQ(a->directory, b);
}

TEST_F(StringLockTest, LocksOfTwoStringsNest) {
  PCMutexGuard guard(*handle->treeLock);
  {
    StringLock outer;
    ASSERT_TRUE(outer.Take(a, handle));
    {
      StringLock inner;
      ASSERT_TRUE(inner.Take(b, handle));
      EXPECT_EQ(2u, handle->lockedStrings);
    }
    EXPECT_FALSE(b->isLocked());
    EXPECT_TRUE(a->isLocked());
  }
  EXPECT_EQ(a->directory, b);
}

// Through the same handle or another: after the wait nothing is locked, and it can be taken again.
TEST_F(StringLockTest, AfterAWaitNothingIsLocked) {
  for (TernaryHandle* second : {handle, other}) {
    ASSERT_EQ(status::kOk, a->Lock(handle));
    bool taken = true;
    bool lockedAfterwards = true;
    bool takenAgain = false;
    int levels = 0;
    std::thread thread([&] {
      PCMutexGuard guard(*second->treeLock);
      StringLock lock;
      taken = lock.Take(a, second);
      lockedAfterwards = a->isLocked();
      levels = second->treeLock->Depth();
      takenAgain = lock.Take(a, second);
    });
    AwaitWaiters(1);
    ASSERT_EQ(status::kOk, a->Unlock());
    thread.join();
    EXPECT_FALSE(taken);
    EXPECT_FALSE(lockedAfterwards);
    EXPECT_EQ(1, levels);
    EXPECT_TRUE(takenAgain);
    EXPECT_FALSE(a->isBusy());
    EXPECT_EQ(0u, second->lockedStrings);
    EXPECT_EQ(0u, second->lockers);
    EXPECT_EQ(a->directory, b);
  }
}

// Each of them finds the string locked or free; all have it in the end, one at a time.
TEST_F(StringLockTest, ManyWhoWaitGetItInTheEnd) {
  ASSERT_EQ(status::kOk, a->Lock(handle));
  int had = 0;
  std::vector<std::thread> threads;
  for (int i = 0; i < 3; ++i) {
    TernaryHandle* through = i % 2 == 0 ? handle : other;
    threads.emplace_back([&, through] {
      PCMutexGuard guard(*through->treeLock);
      StringLock lock;
      while (!lock.Take(a, through)) {
      }
      ++had;
    });
  }
  AwaitWaiters(3);
  ASSERT_EQ(status::kOk, a->Unlock());
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(3, had);
  EXPECT_FALSE(a->isBusy());
  EXPECT_EQ(status::kOk, rig.Unload(handle));
  EXPECT_EQ(status::kOk, rig.Unload(other));
}

}  // namespace
}  // namespace tamu::registry
