#include <gtest/gtest.h>

#include "registry/base/ShortStack.h"

namespace tamu::registry {
namespace {

using StackOfFour = ShortStack<unsigned int, 4>;

// True when the element lies in the stack itself.
bool IsInside(const StackOfFour& stack, const unsigned int& element) {
  const char* start = reinterpret_cast<const char*>(&stack);
  const char* place = reinterpret_cast<const char*>(&element);
  return place >= start && place < start + sizeof stack;
}

void PushMany(StackOfFour& stack, unsigned int count) {
  for (unsigned int i = 0; i < count; ++i) ASSERT_EQ(status::kOk, stack.Push(100 + i));
}

TEST(ShortStackTest, IsEmptyAtFirst) {
  StackOfFour stack;
  EXPECT_TRUE(stack.IsEmpty());
  EXPECT_EQ(0u, stack.Count());
}

TEST(ShortStackTest, TheTopIsWhatWasPushedLast) {
  StackOfFour stack;
  PushMany(stack, 3);
  EXPECT_FALSE(stack.IsEmpty());
  EXPECT_EQ(3u, stack.Count());
  EXPECT_EQ(102u, stack.Top());
  EXPECT_EQ(100u, stack[0]);
}

TEST(ShortStackTest, AsManyAsAreShortLieInTheObjectItself) {
  StackOfFour stack;
  PushMany(stack, 4);
  EXPECT_TRUE(IsInside(stack, stack.Top()));
  ASSERT_EQ(status::kOk, stack.Push(104));
  EXPECT_FALSE(IsInside(stack, stack.Top()));
  EXPECT_FALSE(IsInside(stack, stack[0]));
}

TEST(ShortStackTest, GrowsOverAndOverWithoutLosingAnything) {
  StackOfFour stack;
  PushMany(stack, 1000);
  ASSERT_EQ(1000u, stack.Count());
  for (unsigned int i = 0; i < 1000; ++i) ASSERT_EQ(100 + i, stack[i]);
}

TEST(ShortStackTest, ExtendsByManyAtOnce) {
  StackOfFour stack;
  PushMany(stack, 3);
  ASSERT_EQ(status::kOk, stack.Extend(1));
  EXPECT_TRUE(IsInside(stack, stack.Top()));
  ASSERT_EQ(status::kOk, stack.Extend(200));  // more than twice what it has
  EXPECT_EQ(204u, stack.Count());
  stack[203] = 7;
  EXPECT_EQ(7u, stack.Top());
  for (unsigned int i = 0; i < 3; ++i) EXPECT_EQ(100 + i, stack[i]);
}

TEST(ShortStackTest, CutKeepsWhatIsAtTheBottom) {
  StackOfFour stack;
  PushMany(stack, 9);
  stack.CutTo(2);
  EXPECT_EQ(2u, stack.Count());
  EXPECT_EQ(101u, stack.Top());
  ASSERT_EQ(status::kOk, stack.Push(7));
  EXPECT_EQ(7u, stack[2]);
  stack.CutTo(0);
  EXPECT_TRUE(stack.IsEmpty());
}

TEST(ShortStackTest, OnTheHeapElementsStayWhatTheyAreUntilItIsCleared) {
  StackOfFour stack;
  PushMany(stack, 3);
  ASSERT_EQ(status::kOk, stack.MoveToHeap());
  EXPECT_FALSE(IsInside(stack, stack[0]));
  EXPECT_EQ(3u, stack.Count());
  EXPECT_EQ(102u, stack.Top());
  ASSERT_EQ(status::kOk, stack.MoveToHeap()) << "again";
  PushMany(stack, 1);
  EXPECT_EQ(100u, stack[0]);
  EXPECT_EQ(100u, stack.Top());
  stack.Clear();
  PushMany(stack, 1);
  EXPECT_TRUE(IsInside(stack, stack.Top()));
}

TEST(ShortStackTest, SwappedOnTheHeapItHasTheOthersElements) {
  StackOfFour heap;
  StackOfFour other;
  ASSERT_EQ(status::kOk, heap.MoveToHeap());
  PushMany(heap, 2);
  other.Swap(heap);
  EXPECT_EQ(2u, other.Count());
  EXPECT_EQ(101u, other.Top());
  EXPECT_FALSE(IsInside(other, other.Top()));
  EXPECT_TRUE(heap.IsEmpty());
}

TEST(ShortStackTest, SwappedBothHaveTheOthersElementsInThemselves) {
  StackOfFour longer;
  StackOfFour shorter;
  PushMany(longer, 3);
  shorter.Push(7).Ignore();
  shorter.Swap(longer);
  ASSERT_EQ(3u, shorter.Count());
  for (unsigned int i = 0; i < 3; ++i) EXPECT_EQ(100 + i, shorter[i]);
  EXPECT_TRUE(IsInside(shorter, shorter.Top()));
  ASSERT_EQ(1u, longer.Count());
  EXPECT_EQ(7u, longer.Top());
  EXPECT_TRUE(IsInside(longer, longer.Top()));
}

TEST(ShortStackTest, SwapsElementsOfManyBytes) {
  struct Large {
    unsigned int words[100];
  };
  ShortStack<Large, 2> one;
  ShortStack<Large, 2> other;
  Large large;
  for (unsigned int i = 0; i < 100; ++i) large.words[i] = i;
  ASSERT_EQ(status::kOk, one.Push(large));
  for (unsigned int i = 0; i < 100; ++i) large.words[i] = 1000 + i;
  ASSERT_EQ(status::kOk, other.Push(large));
  one.Swap(other);
  for (unsigned int i = 0; i < 100; ++i) {
    EXPECT_EQ(1000 + i, one[0].words[i]);
    EXPECT_EQ(i, other[0].words[i]);
  }
}

TEST(ShortStackTest, ClearedIsAsNew) {
  StackOfFour stack;
  PushMany(stack, 9);
  stack.Clear();
  EXPECT_TRUE(stack.IsEmpty());
  PushMany(stack, 4);
  EXPECT_TRUE(IsInside(stack, stack.Top()));
  PushMany(stack, 5);
  EXPECT_EQ(9u, stack.Count());
  EXPECT_EQ(104u, stack.Top());
}

TEST(ShortStackTest, WhatNoAllocationCanHoldIsRefused) {
  StackOfFour stack;
  PushMany(stack, 3);
  EXPECT_EQ(status::kNoMemory, stack.Extend(0x10000000));
  EXPECT_EQ(status::kNoMemory, stack.Extend(0xFFFFFFF0));
  EXPECT_EQ(3u, stack.Count());
  EXPECT_EQ(102u, stack.Top());
}

}  // namespace
}  // namespace tamu::registry
