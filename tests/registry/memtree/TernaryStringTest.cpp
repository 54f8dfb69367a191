#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

#include "registry/memtree/TernaryString.h"

namespace tamu::registry {
namespace {

using std::chrono::milliseconds;

// A handle that waiters can wait at.
struct ReadyHandle : TernaryHandle {
  explicit ReadyHandle(PCMutex* lock) : TernaryHandle("", lock) {
    EXPECT_TRUE(wake.Create(0));
    EXPECT_TRUE(ack.Create(0));
  }
};

class LoadedString : public ::testing::Test {
 protected:
  LoadedString() {
    EXPECT_TRUE(treeLock.Create());
    for (unsigned int slot = 1; slot <= 4; ++slot) {
      strings.push_back(std::make_unique<TernaryString>(slot << 8, new TernaryStringNode));
    }
  }
  // Runs `body` in a thread until it waits: it has begun, and is not done some time later.
  static std::thread Waiting(const std::function<void()>& body, const std::atomic<bool>& done) {
    std::atomic<bool> begun{false};
    std::thread thread([&body, &begun] {
      const std::function<void()> own = body;
      begun = true;
      own();
    });
    while (!begun) std::this_thread::yield();
    std::this_thread::sleep_for(milliseconds(50));
    EXPECT_FALSE(done);
    return thread;
  }
  bool HasWaiters(const TernaryString& string) const { return (string.node->flags() & 0x20) != 0; }

  PCMutex treeLock;
  std::vector<std::unique_ptr<TernaryString>> strings;
};

TEST_F(LoadedString, ForgetsTheLockThatItsRecordTellsOf) {
  TernaryStringNode* record = new TernaryStringNode;
  record->setFlags(0x31);
  const TernaryString string(0x500, record);
  EXPECT_EQ(record->flags(), 0x10);
  EXPECT_FALSE(string.isLocked());
  EXPECT_EQ(string.id, 0x500u);
  EXPECT_EQ(string.loadCount, 0u);
  EXPECT_EQ(string.lockHandle, nullptr);
  for (const TernaryString* link : {string.lower, string.higher, string.equal, string.directory}) {
    EXPECT_EQ(link, nullptr);
  }
  EXPECT_EQ(string.key, nullptr);
}

TEST_F(LoadedString, ItsDirectoryIsSetWithTheIdInTheRecord) {
  TernaryString& s = *strings[0];
  TernaryString* found = &s;
  EXPECT_EQ(s.GetDirectory(found), 0u);
  EXPECT_EQ(found, nullptr);
  EXPECT_EQ(s.SetDirectory(strings[1].get()), 0u);
  EXPECT_EQ(s.GetDirectory(found), 0u);
  EXPECT_EQ(found, strings[1].get());
  EXPECT_EQ(s.node->child(), 0x200u);
  EXPECT_EQ(s.SetDirectory(nullptr), 0u);
  EXPECT_EQ(s.node->child(), 0u);
  EXPECT_EQ(s.directory, nullptr);
}

TEST_F(LoadedString, WhileItIsLockedItsDirectoryIsAway) {
  ReadyHandle handle(&treeLock);
  TernaryString& s = *strings[0];
  s.SetDirectory(strings[1].get());
  ASSERT_EQ(s.Lock(&handle), 0u);
  EXPECT_TRUE(s.isLocked());
  EXPECT_EQ(s.node->flags(), 0x01);
  EXPECT_EQ(s.lockHandle, &handle);
  EXPECT_EQ(s.directory, nullptr);
  EXPECT_EQ(handle.parkedDirectory, strings[1].get());
  EXPECT_EQ(s.node->child(), 0x200u);
  TernaryString* found = &s;
  EXPECT_EQ(s.GetDirectory(found), 16u);
  EXPECT_EQ(found, nullptr);
  ASSERT_EQ(s.Unlock(), 0u);
  EXPECT_FALSE(s.isLocked());
  EXPECT_EQ(s.directory, strings[1].get());
  EXPECT_EQ(s.node->child(), 0x200u);
  EXPECT_EQ(s.lockHandle, nullptr);
  EXPECT_EQ(handle.parkedDirectory, nullptr);
  EXPECT_FALSE(treeLock.IsMine());
  EXPECT_EQ(s.Unlock(), 22u);
}

TEST_F(LoadedString, ADirectorySetWhileItIsLockedAppearsAfterwards) {
  ReadyHandle handle(&treeLock);
  TernaryString& s = *strings[0];
  ASSERT_EQ(s.Lock(&handle), 0u);
  EXPECT_EQ(s.SetDirectory(strings[2].get()), 0u);
  EXPECT_EQ(s.directory, nullptr);
  EXPECT_EQ(handle.parkedDirectory, strings[2].get());
  EXPECT_EQ(s.node->child(), 0x300u);
  ASSERT_EQ(s.Unlock(), 0u);
  EXPECT_EQ(s.directory, strings[2].get());
  EXPECT_EQ(s.node->child(), 0x300u);
}

// The directory is in the file and was not loaded.
TEST_F(LoadedString, TheIdOfADirectoryThatWasNeverLoadedStays) {
  ReadyHandle handle(&treeLock);
  TernaryString& s = *strings[0];
  s.node->setChild(0x1234);
  ASSERT_EQ(s.Lock(&handle), 0u);
  ASSERT_EQ(s.Unlock(), 0u);
  EXPECT_EQ(s.node->child(), 0x1234u);
}

TEST_F(LoadedString, TwoStringsLockedThroughOneHandleKeepTheirDirectories) {
  for (bool sameOrder : {true, false}) {
    ReadyHandle handle(&treeLock);
    TernaryString& a = *strings[0];
    TernaryString& b = *strings[1];
    a.SetDirectory(strings[2].get());
    b.SetDirectory(strings[3].get());
    ASSERT_EQ(a.Lock(&handle), 0u);
    ASSERT_EQ(b.Lock(&handle), 0u);
    EXPECT_EQ(handle.lockedStrings, 2u);
    ASSERT_EQ((sameOrder ? a : b).Unlock(), 0u);
    ASSERT_EQ((sameOrder ? b : a).Unlock(), 0u);
    EXPECT_EQ(a.directory, strings[2].get());
    EXPECT_EQ(b.directory, strings[3].get());
    EXPECT_EQ(a.node->child(), 0x300u);
    EXPECT_EQ(b.node->child(), 0x400u);
    EXPECT_EQ(handle.lockedStrings, 0u);
    EXPECT_EQ(handle.parkedDirectory, nullptr);
  }
}

TEST_F(LoadedString, ASecondThreadWaitsUntilTheStringIsUnlocked) {
  ReadyHandle one(&treeLock);
  ReadyHandle two(&treeLock);
  for (TernaryHandle* second :
       {static_cast<TernaryHandle*>(&one), static_cast<TernaryHandle*>(&two)}) {
    TernaryString& s = *strings[0];
    ASSERT_EQ(s.Lock(&one), 0u);
    std::atomic<bool> done{false};
    std::thread other = Waiting(
        [&] {
          s.Lock(second);
          done = true;
        },
        done);
    treeLock.Take();
    EXPECT_TRUE(HasWaiters(s));
    EXPECT_EQ(one.waiterCount, 1);
    treeLock.Give();
    ASSERT_EQ(s.Unlock(), 0u);
    other.join();
    EXPECT_TRUE(s.isLocked());
    EXPECT_EQ(s.lockHandle, second);
    EXPECT_EQ(one.waiterCount, 0);
    ASSERT_EQ(s.Unlock(), 0u);
  }
}

TEST_F(LoadedString, ThreeWaitersGetItOneAfterTheOther) {
  ReadyHandle handle(&treeLock);
  TernaryString& s = *strings[0];
  ASSERT_EQ(s.Lock(&handle), 0u);
  std::atomic<bool> done{false};
  std::atomic<int> inside{0};
  std::atomic<int> rounds{0};
  const std::function<void()> lockOnce = [&] {
    s.Lock(&handle);
    done = true;
    EXPECT_EQ(++inside, 1);
    std::this_thread::sleep_for(milliseconds(5));
    --inside;
    ++rounds;
    s.Unlock();
  };
  std::vector<std::thread> others;
  for (int i = 0; i < 3; ++i) others.push_back(Waiting(lockOnce, done));
  ASSERT_EQ(s.Unlock(), 0u);
  for (std::thread& other : others) other.join();
  EXPECT_EQ(rounds, 3);
  EXPECT_FALSE(s.isLocked());
  EXPECT_EQ(handle.waiterCount, 0);
}

// Who waits gives up the tree's lock, whatever levels it has, and has them again afterwards.
TEST_F(LoadedString, AWaiterThatHoldsTheTreesLockDoesNotBlockIt) {
  ReadyHandle handle(&treeLock);
  TernaryString& s = *strings[0];
  ASSERT_EQ(s.Lock(&handle), 0u);
  std::atomic<bool> done{false};
  std::thread other = Waiting(
      [&] {
        treeLock.Take();
        treeLock.Take();
        s.Lock(&handle);
        EXPECT_EQ(treeLock.Depth(), 2);
        done = true;
        s.Unlock();
        treeLock.Give();
        treeLock.Give();
      },
      done);
  treeLock.Take();
  ASSERT_EQ(s.Unlock(), 0u);
  treeLock.Give();
  other.join();
  EXPECT_TRUE(done);
  EXPECT_FALSE(s.isLocked());
}

}  // namespace
}  // namespace tamu::registry
