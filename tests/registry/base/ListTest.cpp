#include <gtest/gtest.h>

#include <new>

#include "registry/base/List.h"

namespace tamu::registry {
namespace {

class HandleTable : public ::testing::Test {
 protected:
  // Adds an item and returns its index, 0 when that failed.
  unsigned int Add() {
    unsigned int index = 0;
    return mList.Add(&mItem, &index) == status::kOk ? index : 0;
  }
  // Adds `n` items, which must get the indexes from `first` on.
  void AddFrom(unsigned int first, unsigned int n) {
    for (unsigned int i = 0; i < n; ++i) ASSERT_EQ(Add(), first + i);
  }

  List<void*> mList;
  int mItem = 0;
};

TEST_F(HandleTable, IsEmptyAtFirst) {
  EXPECT_EQ(mList.count, 0u);
  EXPECT_EQ(mList.capacity, 0u);
  EXPECT_EQ(mList.lastIndex, 0u);
  EXPECT_TRUE(mList.isInvalidIndex(0));
  EXPECT_EQ(mList.RemoveByIndex(0), status::kBadArgument);
  EXPECT_EQ(mList.RemoveAll(), status::kOk);
}

TEST_F(HandleTable, OfFiftySlotsHandsOutFortyNineThenDoubles) {
  ASSERT_EQ(mList.EnsureCapacity(50), status::kOk);
  AddFrom(1, 49);
  EXPECT_EQ(mList.capacity, 50u);
  EXPECT_EQ(Add(), 50u);
  EXPECT_EQ(mList.capacity, 100u);
  EXPECT_EQ(mList.items.capacity, 100u);
  EXPECT_EQ(mList.used.capacity, 100u);
  EXPECT_EQ(mList.count, 50u);
  EXPECT_EQ(mList.lastIndex, 50u);
}

TEST_F(HandleTable, ReusesAFreedSlotOnlyWhenNoneIsFreeAboveTheLast) {
  ASSERT_EQ(mList.EnsureCapacity(100), status::kOk);
  AddFrom(1, 49);
  EXPECT_EQ(mList.RemoveByIndex(3), status::kOk);
  AddFrom(50, 50);
  EXPECT_EQ(mList.capacity, 100u);
  EXPECT_EQ(Add(), 3u);
  EXPECT_EQ(mList.lastIndex, 3u);
}

TEST_F(HandleTable, ReusesAFreedSlotBeforeItDoubles) {
  ASSERT_EQ(mList.EnsureCapacity(50), status::kOk);
  AddFrom(1, 49);
  EXPECT_EQ(mList.RemoveByIndex(3), status::kOk);
  EXPECT_EQ(Add(), 3u);
  EXPECT_EQ(mList.capacity, 50u);
  EXPECT_EQ(Add(), 50u);
  EXPECT_EQ(mList.capacity, 100u);
}

TEST_F(HandleTable, HandsTheSlotOutAgainThatWasHandedOutLast) {
  ASSERT_EQ(mList.EnsureCapacity(50), status::kOk);
  AddFrom(1, 49);
  EXPECT_EQ(mList.RemoveByIndex(49), status::kOk);
  EXPECT_EQ(Add(), 49u);
  EXPECT_EQ(mList.capacity, 50u);
}

TEST_F(HandleTable, SearchesOnFromTheSlotHandedOutLast) {
  ASSERT_EQ(mList.EnsureCapacity(10), status::kOk);
  AddFrom(1, 4);
  EXPECT_EQ(mList.RemoveByIndex(4), status::kOk);
  EXPECT_EQ(Add(), 5u);
}

TEST_F(HandleTable, StartsWithoutAnyCapacity) {
  EXPECT_EQ(mList.AllocateSpace(), 1u);
  EXPECT_EQ(mList.capacity, 2u);
  AddFrom(2, 100);
  EXPECT_EQ(mList.count, 101u);
}

TEST_F(HandleTable, StartsWithOneSlotWhichIsNeverHandedOut) {
  ASSERT_EQ(mList.EnsureCapacity(1), status::kOk);
  EXPECT_EQ(Add(), 1u);
  EXPECT_EQ(mList.capacity, 2u);
}

TEST_F(HandleTable, NeverHandsOutSlotZero) {
  ASSERT_EQ(mList.EnsureCapacity(4), status::kOk);
  for (unsigned int round = 0; round < 20; ++round) {
    const unsigned int index = Add();
    EXPECT_NE(index, 0u);
    EXPECT_TRUE(mList.isInvalidIndex(0));
    EXPECT_EQ(mList.RemoveByIndex(index), status::kOk);
  }
  EXPECT_EQ(mList.capacity, 4u);
}

TEST_F(HandleTable, StoresTheItems) {
  int other = 0;
  unsigned int first = 0;
  unsigned int second = 0;
  ASSERT_EQ(mList.Add(&mItem, &first), status::kOk);
  ASSERT_EQ(mList.Add(&other, &second), status::kOk);
  EXPECT_EQ(*mList.Get(first), &mItem);
  EXPECT_EQ(*mList.Get(second), &other);
}

TEST_F(HandleTable, KeepsIndexesAndItemsWhenItGrows) {
  ASSERT_EQ(mList.EnsureCapacity(3), status::kOk);
  int items[60] = {};
  unsigned int indexes[60] = {};
  for (int i = 0; i < 60; ++i) ASSERT_EQ(mList.Add(&items[i], &indexes[i]), status::kOk);
  for (int i = 0; i < 60; ++i) EXPECT_EQ(*mList.Get(indexes[i]), &items[i]);
}

TEST_F(HandleTable, KnowsInvalidIndexes) {
  ASSERT_EQ(mList.EnsureCapacity(5), status::kOk);
  AddFrom(1, 2);
  EXPECT_FALSE(mList.isInvalidIndex(1));
  EXPECT_FALSE(mList.isInvalidIndex(2));
  for (unsigned int i : {0u, 3u, 4u, 5u, 6u, 0xFFFFFFFFu})
    EXPECT_TRUE(mList.isInvalidIndex(i)) << i;
}

TEST_F(HandleTable, RefusesToFreeASlotTwice) {
  AddFrom(1, 2);
  EXPECT_EQ(mList.RemoveByIndex(1), status::kOk);
  EXPECT_EQ(mList.count, 1u);
  EXPECT_TRUE(mList.isInvalidIndex(1));
  EXPECT_EQ(mList.RemoveByIndex(1), status::kBadArgument);
  EXPECT_EQ(mList.RemoveByIndex(0), status::kBadArgument);
  EXPECT_EQ(mList.RemoveByIndex(1000), status::kBadArgument);
  EXPECT_EQ(mList.count, 1u);
}

TEST_F(HandleTable, GrowingReportsExhaustedMemory) {
  AddFrom(1, 1);
  EXPECT_EQ(mList.EnsureCapacity(0xFFFFFFFF), status::kNoMemory);
  EXPECT_EQ(mList.capacity, 2u);
  EXPECT_FALSE(mList.isInvalidIndex(1));
  EXPECT_EQ(Add(), 2u);
}

TEST_F(HandleTable, EnsureCapacityNeverShrinks) {
  ASSERT_EQ(mList.EnsureCapacity(20), status::kOk);
  EXPECT_EQ(mList.EnsureCapacity(10), status::kOk);
  EXPECT_EQ(mList.capacity, 20u);
}

TEST_F(HandleTable, RemoveAllFreesTheItemsAndStartsAgainAtOne) {
  ASSERT_EQ(mList.EnsureCapacity(10), status::kOk);
  for (unsigned int i = 1; i <= 5; ++i) {
    unsigned int index = 0;
    ASSERT_EQ(mList.Add(::operator new(8), &index), status::kOk);
  }
  ::operator delete(*mList.Get(2));
  ASSERT_EQ(mList.RemoveByIndex(2), status::kOk);
  EXPECT_EQ(mList.RemoveAll(), status::kOk);
  EXPECT_EQ(mList.count, 0u);
  EXPECT_EQ(mList.lastIndex, 0u);
  EXPECT_EQ(mList.capacity, 10u);
  for (unsigned int i = 0; i < 10; ++i) EXPECT_TRUE(mList.isInvalidIndex(i)) << i;
  EXPECT_EQ(Add(), 1u);
}

}  // namespace
}  // namespace tamu::registry
