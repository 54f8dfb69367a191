// Changes of a store when the heap gives nothing.
#include "registry/base/ShortStack.h"
#include "registry/store/Changes.h"
#include "tests/allocation/CountedHeap.h"
#include "tests/registry/store/RecordTesting.h"
#include "tests/registry/store/StoreTesting.h"

namespace tamu::registry::storetests {
namespace {

class ChangesAllocationTest : public StoreTest {
 protected:
  void TearDown() override {
    heap::sFailing = 0;
    StoreTest::TearDown();
  }

  // Writes `count` records, as long as that goes well.
  static Status WriteMany(Changes& changes, unsigned int count) {
    Status result = status::kOk;
    for (unsigned int i = 0; i < count && result.IsOk(); ++i) {
      result = changes.Write((i % 300 + 1) << 8, Numbered<TernaryValueNode>());
    }
    return result;
  }
};

TEST_F(ChangesAllocationTest, AShortChangeTakesNothing) {
  const unsigned int before = heap::sAllocations;
  {
    Changes changes(store);
    EXPECT_EQ(status::kOk, WriteMany(changes, 39));  // of 52 bytes
    EXPECT_EQ(status::kOk, changes.Keep(status::kOk));
  }
  EXPECT_EQ(before, heap::sAllocations);
}

TEST_F(ChangesAllocationTest, ALongChangeGivesEverythingBack) {
  for (const bool kept : {true, false}) {
    const unsigned int live = heap::sLive;
    {
      Changes changes(store);
      EXPECT_EQ(status::kOk, WriteMany(changes, 3000));
      EXPECT_EQ(live + 2, heap::sLive);
      if (kept) {
        EXPECT_EQ(status::kOk, changes.Keep(status::kOk));
      }
    }
    EXPECT_EQ(live, heap::sLive);
  }
}

TEST_F(ChangesAllocationTest, AGrowthWithoutMemoryLeavesTheFileAsItWas) {
  const std::string bytes = Bytes();
  {
    Changes changes(store);
    unsigned int id = 0;
    while (changes.Descriptor(NodeKind::kKey).lastTable->freeCount() > 0) {
      ASSERT_EQ(status::kOk, changes.Take(NodeKind::kKey, &id));
    }
    heap::sFailing = 1;
    EXPECT_EQ(status::kNoMemory, changes.Take(NodeKind::kKey, &id));
    EXPECT_EQ(0u, heap::sFailing);
  }
  EXPECT_TRUE(bytes == Bytes());
}

TEST_F(ChangesAllocationTest, ALogThatCannotGrowEndsTheChange) {
  const std::string bytes = Bytes();
  const std::string known = Known();
  for (unsigned int nth = 1;; ++nth) {
    SCOPED_TRACE("allocation " + std::to_string(nth));
    const unsigned int live = heap::sLive;
    heap::sFailing = nth;
    bool over = false;
    {
      Changes changes(store);
      unsigned int id = 0;
      Status result = changes.Take(NodeKind::kKey, &id);
      if (result.IsOk()) result = changes.SetStartNode(0x100);
      if (result.IsOk()) result = WriteMany(changes, 3000);
      over = heap::sFailing > 0;
      heap::sFailing = 0;
      EXPECT_EQ(over ? status::kOk : status::kNoMemory, changes.End(result));
    }
    EXPECT_EQ(live, heap::sLive);
    if (over) {
      EXPECT_GT(nth, 10u);
      EXPECT_EQ(0x100u, U32(4208));
      break;
    }
    EXPECT_TRUE(Bytes() == bytes);
    EXPECT_TRUE(Known() == known);
  }
}

// A write that cannot be remembered is not made, and what was before it can be kept.
TEST_F(ChangesAllocationTest, AWriteThatCannotBeRememberedIsNotMade) {
  Changes changes(store);
  ASSERT_EQ(status::kOk, WriteMany(changes, 39));
  const std::string before = Bytes();
  heap::sFailing = 1;
  EXPECT_EQ(status::kNoMemory, changes.Write(0x2800, Numbered<TernaryValueNode>()));
  EXPECT_TRUE(Bytes() == before);
  EXPECT_EQ(status::kOk, changes.Write(0x2800, Numbered<TernaryValueNode>()));
  EXPECT_EQ(status::kOk, changes.Keep(status::kOk));
}

// Whichever allocation of a step fails, the step is undone and what was before it stays.
TEST_F(ChangesAllocationTest, ATakeOrReleaseThatCannotBeRememberedIsUndone) {
  for (unsigned int written = 0; written < 48; ++written) {
    SCOPED_TRACE(std::to_string(written) + " entries before");
    for (const bool release : {false, true}) {
      Changes changes(store);
      unsigned int id = 0;
      ASSERT_EQ(status::kOk, changes.Take(NodeKind::kString, &id));  // three entries
      for (unsigned int i = 3; i < written; ++i) {
        ASSERT_EQ(status::kOk, changes.WriteInteger(kAreas[0] + 40, i));
      }
      const std::string bytes = Bytes();
      const std::string known = Known();
      heap::sFailing = 1;
      const unsigned int result =
          release ? changes.Release(NodeKind::kString, id) : changes.Take(NodeKind::kString, &id);
      const bool failed = heap::sFailing == 0;
      heap::sFailing = 0;
      EXPECT_EQ(failed ? status::kNoMemory : status::kOk, result);
      EXPECT_EQ(written > 45, failed);
      if (failed) {
        EXPECT_TRUE(Bytes() == bytes);
        EXPECT_TRUE(Known() == known);
      }
    }
  }
}

TEST(ShortStackAllocationTest, WithoutMemoryNothingChanges) {
  ShortStack<unsigned int, 4> stack;
  for (unsigned int i = 0; i < 4; ++i) ASSERT_EQ(status::kOk, stack.Push(i));
  heap::sFailing = 1;
  EXPECT_EQ(status::kNoMemory, stack.Push(4));
  EXPECT_EQ(4u, stack.Count());
  EXPECT_EQ(3u, stack.Top());
  heap::sFailing = 1;
  EXPECT_EQ(status::kNoMemory, stack.Extend(9));
  heap::sFailing = 0;
  EXPECT_EQ(4u, stack.Count());
  ASSERT_EQ(status::kOk, stack.Push(4));
  for (unsigned int i = 0; i < 5; ++i) EXPECT_EQ(i, stack[i]);
}

TEST(ShortStackAllocationTest, GivesTheHeapBackWhenCleared) {
  const unsigned int live = heap::sLive;
  ShortStack<unsigned int, 4> stack;
  for (unsigned int i = 0; i < 100; ++i) ASSERT_EQ(status::kOk, stack.Push(i));
  EXPECT_EQ(live + 1, heap::sLive);
  stack.CutTo(0);
  EXPECT_EQ(live + 1, heap::sLive);
  stack.Clear();
  EXPECT_EQ(live, heap::sLive);
}

}  // namespace
}  // namespace tamu::registry::storetests
