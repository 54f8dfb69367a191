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

class TernaryStringTest : public ::testing::Test {
 protected:
  TernaryStringTest() {
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
  bool HasWaiters(const TernaryString& string) const { return (string.node.flags() & 0x20) != 0; }

  PCMutex treeLock;
  std::vector<std::unique_ptr<TernaryString>> strings;
};

TEST_F(TernaryStringTest, ForgetsTheLockThatItsRecordTellsOf) {
  TernaryStringNode* record = new TernaryStringNode;
  record->setFlags(0x31);
  const TernaryString string(0x500, record);
  EXPECT_EQ(0x10, string.node.flags());
  EXPECT_FALSE(string.isLocked());
  EXPECT_EQ(0x500u, string.id);
  EXPECT_EQ(0u, string.loadCount);
  EXPECT_EQ(nullptr, string.lockHandle);
  for (const TernaryString* link : {string.lower, string.higher, string.equal, string.directory}) {
    EXPECT_EQ(nullptr, link);
  }
  EXPECT_EQ(nullptr, string.key);
}

TEST_F(TernaryStringTest, ItsDirectoryIsSetWithTheIdInTheRecord) {
  TernaryString& s = *strings[0];
  TernaryString* found = &s;
  EXPECT_EQ(0u, s.GetDirectory(found));
  EXPECT_EQ(nullptr, found);
  EXPECT_EQ(status::kOk, s.SetDirectory(strings[1].get()));
  EXPECT_EQ(0u, s.GetDirectory(found));
  EXPECT_EQ(found, strings[1].get());
  EXPECT_EQ(0x200u, s.node.child());
  EXPECT_EQ(status::kOk, s.SetDirectory(nullptr));
  EXPECT_EQ(0u, s.node.child());
  EXPECT_EQ(nullptr, s.directory);
}

TEST_F(TernaryStringTest, WhileItIsLockedItsDirectoryIsAway) {
  ReadyHandle handle(&treeLock);
  TernaryString& s = *strings[0];
  s.SetDirectory(strings[1].get());
  ASSERT_EQ(status::kOk, s.Lock(&handle));
  EXPECT_TRUE(s.isLocked());
  EXPECT_EQ(0x01, s.node.flags());
  EXPECT_EQ(s.lockHandle, &handle);
  EXPECT_EQ(nullptr, s.directory);
  EXPECT_EQ(handle.parkedDirectory, strings[1].get());
  EXPECT_EQ(0x200u, s.node.child());
  TernaryString* found = &s;
  EXPECT_EQ(16u, s.GetDirectory(found));
  EXPECT_EQ(nullptr, found);
  ASSERT_EQ(status::kOk, s.Unlock());
  EXPECT_FALSE(s.isLocked());
  EXPECT_EQ(s.directory, strings[1].get());
  EXPECT_EQ(0x200u, s.node.child());
  EXPECT_EQ(nullptr, s.lockHandle);
  EXPECT_EQ(nullptr, handle.parkedDirectory);
  EXPECT_FALSE(treeLock.IsMine());
  EXPECT_EQ(status::kBadArgument, s.Unlock());
}

TEST_F(TernaryStringTest, ADirectorySetWhileItIsLockedAppearsAfterwards) {
  ReadyHandle handle(&treeLock);
  TernaryString& s = *strings[0];
  ASSERT_EQ(status::kOk, s.Lock(&handle));
  EXPECT_EQ(status::kOk, s.SetDirectory(strings[2].get()));
  EXPECT_EQ(nullptr, s.directory);
  EXPECT_EQ(handle.parkedDirectory, strings[2].get());
  EXPECT_EQ(0x300u, s.node.child());
  ASSERT_EQ(status::kOk, s.Unlock());
  EXPECT_EQ(s.directory, strings[2].get());
  EXPECT_EQ(0x300u, s.node.child());
}

// The directory is in the file and was not loaded.
TEST_F(TernaryStringTest, TheIdOfADirectoryThatWasNeverLoadedStays) {
  ReadyHandle handle(&treeLock);
  TernaryString& s = *strings[0];
  s.node.setChild(0x1234);
  ASSERT_EQ(status::kOk, s.Lock(&handle));
  ASSERT_EQ(status::kOk, s.Unlock());
  EXPECT_EQ(0x1234u, s.node.child());
}

TEST_F(TernaryStringTest, TwoStringsLockedThroughOneHandleKeepTheirDirectories) {
  for (bool sameOrder : {true, false}) {
    ReadyHandle handle(&treeLock);
    TernaryString& a = *strings[0];
    TernaryString& b = *strings[1];
    a.SetDirectory(strings[2].get());
    b.SetDirectory(strings[3].get());
    ASSERT_EQ(status::kOk, a.Lock(&handle));
    ASSERT_EQ(status::kOk, b.Lock(&handle));
    EXPECT_EQ(2u, handle.lockedStrings);
    ASSERT_EQ(0u, (sameOrder ? a : b).Unlock());
    ASSERT_EQ(0u, (sameOrder ? b : a).Unlock());
    EXPECT_EQ(a.directory, strings[2].get());
    EXPECT_EQ(b.directory, strings[3].get());
    EXPECT_EQ(0x300u, a.node.child());
    EXPECT_EQ(0x400u, b.node.child());
    EXPECT_EQ(0u, handle.lockedStrings);
    EXPECT_EQ(nullptr, handle.parkedDirectory);
  }
}

TEST_F(TernaryStringTest, ASecondThreadWaitsUntilTheStringIsUnlocked) {
  ReadyHandle one(&treeLock);
  ReadyHandle two(&treeLock);
  for (TernaryHandle* second :
       {static_cast<TernaryHandle*>(&one), static_cast<TernaryHandle*>(&two)}) {
    TernaryString& s = *strings[0];
    ASSERT_EQ(status::kOk, s.Lock(&one));
    std::atomic<bool> done{false};
    std::thread other = Waiting(
        [&] {
          s.Lock(second);
          done = true;
        },
        done);
    treeLock.Take();
    EXPECT_TRUE(HasWaiters(s));
    EXPECT_EQ(1, one.waiterCount);
    treeLock.Give();
    ASSERT_EQ(status::kOk, s.Unlock());
    other.join();
    EXPECT_TRUE(s.isLocked());
    EXPECT_EQ(s.lockHandle, second);
    EXPECT_EQ(0, one.waiterCount);
    ASSERT_EQ(status::kOk, s.Unlock());
  }
}

TEST_F(TernaryStringTest, ThreeWaitersGetItOneAfterTheOther) {
  ReadyHandle handle(&treeLock);
  TernaryString& s = *strings[0];
  ASSERT_EQ(status::kOk, s.Lock(&handle));
  std::atomic<bool> done{false};
  std::atomic<int> inside{0};
  std::atomic<int> rounds{0};
  const std::function<void()> lockOnce = [&] {
    s.Lock(&handle);
    done = true;
    EXPECT_EQ(1, ++inside);
    std::this_thread::sleep_for(milliseconds(5));
    --inside;
    ++rounds;
    s.Unlock();
  };
  std::vector<std::thread> others;
  for (int i = 0; i < 3; ++i) others.push_back(Waiting(lockOnce, done));
  ASSERT_EQ(status::kOk, s.Unlock());
  for (std::thread& other : others) other.join();
  EXPECT_EQ(3, rounds);
  EXPECT_FALSE(s.isLocked());
  EXPECT_EQ(0, handle.waiterCount);
}

// Who waits gives up the tree's lock, whatever levels it has, and has them again afterwards.
TEST_F(TernaryStringTest, AWaiterThatHoldsTheTreesLockDoesNotBlockIt) {
  ReadyHandle handle(&treeLock);
  TernaryString& s = *strings[0];
  ASSERT_EQ(status::kOk, s.Lock(&handle));
  std::atomic<bool> done{false};
  std::thread other = Waiting(
      [&] {
        treeLock.Take();
        treeLock.Take();
        s.Lock(&handle);
        EXPECT_EQ(2, treeLock.Depth());
        done = true;
        s.Unlock();
        treeLock.Give();
        treeLock.Give();
      },
      done);
  treeLock.Take();
  ASSERT_EQ(status::kOk, s.Unlock());
  treeLock.Give();
  other.join();
  EXPECT_TRUE(done);
  EXPECT_FALSE(s.isLocked());
}

}  // namespace
}  // namespace tamu::registry
