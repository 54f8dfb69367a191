#include <gtest/gtest.h>

#include <new>

#include "registry/base/List.h"

namespace tamu::registry {
namespace {

class ListTest : public ::testing::Test {
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

TEST_F(ListTest, IsEmptyAtFirst) {
  EXPECT_EQ(0u, mList.count);
  EXPECT_EQ(0u, mList.capacity);
  EXPECT_EQ(0u, mList.lastIndex);
  EXPECT_TRUE(mList.isInvalidIndex(0));
  EXPECT_EQ(status::kBadArgument, mList.RemoveByIndex(0));
  EXPECT_EQ(status::kOk, mList.RemoveAll());
}

TEST_F(ListTest, OfFiftySlotsHandsOutFortyNineThenDoubles) {
  ASSERT_EQ(status::kOk, mList.EnsureCapacity(50));
  AddFrom(1, 49);
  EXPECT_EQ(50u, mList.capacity);
  EXPECT_EQ(50u, Add());
  EXPECT_EQ(100u, mList.capacity);
  EXPECT_EQ(100u, mList.items.capacity);
  EXPECT_EQ(100u, mList.used.capacity);
  EXPECT_EQ(50u, mList.count);
  EXPECT_EQ(50u, mList.lastIndex);
}

TEST_F(ListTest, ReusesAFreedSlotOnlyWhenNoneIsFreeAboveTheLast) {
  ASSERT_EQ(status::kOk, mList.EnsureCapacity(100));
  AddFrom(1, 49);
  EXPECT_EQ(status::kOk, mList.RemoveByIndex(3));
  AddFrom(50, 50);
  EXPECT_EQ(100u, mList.capacity);
  EXPECT_EQ(3u, Add());
  EXPECT_EQ(3u, mList.lastIndex);
}

TEST_F(ListTest, ReusesAFreedSlotBeforeItDoubles) {
  ASSERT_EQ(status::kOk, mList.EnsureCapacity(50));
  AddFrom(1, 49);
  EXPECT_EQ(status::kOk, mList.RemoveByIndex(3));
  EXPECT_EQ(3u, Add());
  EXPECT_EQ(50u, mList.capacity);
  EXPECT_EQ(50u, Add());
  EXPECT_EQ(100u, mList.capacity);
}

TEST_F(ListTest, HandsTheSlotOutAgainThatWasHandedOutLast) {
  ASSERT_EQ(status::kOk, mList.EnsureCapacity(50));
  AddFrom(1, 49);
  EXPECT_EQ(status::kOk, mList.RemoveByIndex(49));
  EXPECT_EQ(49u, Add());
  EXPECT_EQ(50u, mList.capacity);
}

TEST_F(ListTest, SearchesOnFromTheSlotHandedOutLast) {
  ASSERT_EQ(status::kOk, mList.EnsureCapacity(10));
  AddFrom(1, 4);
  EXPECT_EQ(status::kOk, mList.RemoveByIndex(4));
  EXPECT_EQ(5u, Add());
}

TEST_F(ListTest, StartsWithoutAnyCapacity) {
  EXPECT_EQ(1u, mList.AllocateSpace());
  EXPECT_EQ(2u, mList.capacity);
  AddFrom(2, 100);
  EXPECT_EQ(101u, mList.count);
}

TEST_F(ListTest, StartsWithOneSlotWhichIsNeverHandedOut) {
  ASSERT_EQ(status::kOk, mList.EnsureCapacity(1));
  EXPECT_EQ(1u, Add());
  EXPECT_EQ(2u, mList.capacity);
}

TEST_F(ListTest, NeverHandsOutSlotZero) {
  ASSERT_EQ(status::kOk, mList.EnsureCapacity(4));
  for (unsigned int round = 0; round < 20; ++round) {
    const unsigned int index = Add();
    EXPECT_NE(0u, index);
    EXPECT_TRUE(mList.isInvalidIndex(0));
    EXPECT_EQ(status::kOk, mList.RemoveByIndex(index));
  }
  EXPECT_EQ(4u, mList.capacity);
}

TEST_F(ListTest, StoresTheItems) {
  int other = 0;
  unsigned int first = 0;
  unsigned int second = 0;
  ASSERT_EQ(status::kOk, mList.Add(&mItem, &first));
  ASSERT_EQ(status::kOk, mList.Add(&other, &second));
  EXPECT_EQ(*mList.Get(first), &mItem);
  EXPECT_EQ(*mList.Get(second), &other);
}

TEST_F(ListTest, KeepsIndexesAndItemsWhenItGrows) {
  ASSERT_EQ(status::kOk, mList.EnsureCapacity(3));
  int items[60] = {};
  unsigned int indexes[60] = {};
  for (int i = 0; i < 60; ++i) ASSERT_EQ(status::kOk, mList.Add(&items[i], &indexes[i]));
  for (int i = 0; i < 60; ++i) EXPECT_EQ(*mList.Get(indexes[i]), &items[i]);
}

TEST_F(ListTest, KnowsInvalidIndexes) {
  ASSERT_EQ(status::kOk, mList.EnsureCapacity(5));
  AddFrom(1, 2);
  EXPECT_FALSE(mList.isInvalidIndex(1));
  EXPECT_FALSE(mList.isInvalidIndex(2));
  for (unsigned int i : {0u, 3u, 4u, 5u, 6u, 0xFFFFFFFFu})
    EXPECT_TRUE(mList.isInvalidIndex(i)) << i;
}

TEST_F(ListTest, RefusesToFreeASlotTwice) {
  AddFrom(1, 2);
  EXPECT_EQ(status::kOk, mList.RemoveByIndex(1));
  EXPECT_EQ(1u, mList.count);
  EXPECT_TRUE(mList.isInvalidIndex(1));
  EXPECT_EQ(status::kBadArgument, mList.RemoveByIndex(1));
  EXPECT_EQ(status::kBadArgument, mList.RemoveByIndex(0));
  EXPECT_EQ(status::kBadArgument, mList.RemoveByIndex(1000));
  EXPECT_EQ(1u, mList.count);
}

TEST_F(ListTest, GrowingReportsExhaustedMemory) {
  AddFrom(1, 1);
  EXPECT_EQ(status::kNoMemory, mList.EnsureCapacity(0xFFFFFFFF));
  EXPECT_EQ(2u, mList.capacity);
  EXPECT_FALSE(mList.isInvalidIndex(1));
  EXPECT_EQ(2u, Add());
}

TEST_F(ListTest, EnsureCapacityNeverShrinks) {
  ASSERT_EQ(status::kOk, mList.EnsureCapacity(20));
  EXPECT_EQ(status::kOk, mList.EnsureCapacity(10));
  EXPECT_EQ(20u, mList.capacity);
}

TEST_F(ListTest, RemoveAllFreesTheItemsAndStartsAgainAtOne) {
  ASSERT_EQ(status::kOk, mList.EnsureCapacity(10));
  for (unsigned int i = 1; i <= 5; ++i) {
    unsigned int index = 0;
    ASSERT_EQ(status::kOk, mList.Add(::operator new(8), &index));
  }
  ::operator delete(*mList.Get(2));
  ASSERT_EQ(status::kOk, mList.RemoveByIndex(2));
  EXPECT_EQ(status::kOk, mList.RemoveAll());
  EXPECT_EQ(0u, mList.count);
  EXPECT_EQ(0u, mList.lastIndex);
  EXPECT_EQ(10u, mList.capacity);
  for (unsigned int i = 0; i < 10; ++i) EXPECT_TRUE(mList.isInvalidIndex(i)) << i;
  EXPECT_EQ(1u, Add());
}

}  // namespace
}  // namespace tamu::registry
