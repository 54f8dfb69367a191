#include <gtest/gtest.h>

#include "registry/base/Array.h"

namespace tamu::registry {
namespace {

TEST(Array, HasNoElementsAtFirst) {
  Array<void*> array;
  EXPECT_EQ(array.capacity, 0u);
  EXPECT_EQ(array.data, nullptr);
  EXPECT_EQ(array.MemsetZero(), status::kOk);
  EXPECT_EQ(array.EnsureCapacity(0), status::kOk);
  EXPECT_EQ(array.data, nullptr);
}

TEST(Array, GrowsToExactlyTheSizeAskedFor) {
  Array<void*> array;
  EXPECT_EQ(array.EnsureCapacity(3), status::kOk);
  EXPECT_EQ(array.capacity, 3u);
  EXPECT_EQ(array.EnsureCapacity(7), status::kOk);
  EXPECT_EQ(array.capacity, 7u);
}

TEST(Array, DoublesWhenItIsFilledStepByStep) {
  Array<int> array;
  EXPECT_EQ(array.GrowTo(1), status::kOk);
  EXPECT_EQ(array.capacity, 32u);
  *array[31] = 7;
  EXPECT_EQ(array.GrowTo(32), status::kOk);
  EXPECT_EQ(array.capacity, 32u);
  EXPECT_EQ(array.GrowTo(33), status::kOk);
  EXPECT_EQ(array.capacity, 64u);
  EXPECT_EQ(*array[31], 7);
  EXPECT_EQ(array.GrowTo(1000), status::kOk) << "further than twice as far";
  EXPECT_EQ(array.capacity, 1000u);
  EXPECT_EQ(array.GrowTo(0xFFFFFFFF), status::kNoMemory);
  EXPECT_EQ(array.capacity, 1000u);
}

TEST(Array, NeverShrinks) {
  Array<void*> array;
  ASSERT_EQ(array.EnsureCapacity(5), status::kOk);
  void** before = array.data;
  EXPECT_EQ(array.EnsureCapacity(5), status::kOk);
  EXPECT_EQ(array.EnsureCapacity(2), status::kOk);
  EXPECT_EQ(array.capacity, 5u);
  EXPECT_EQ(array.data, before);
}

TEST(Array, KeepsItsElementsWhenItGrowsAndTheNewOnesAreZero) {
  int things[2] = {};
  Array<void*> array;
  ASSERT_EQ(array.EnsureCapacity(2), status::kOk);
  *array[0] = &things[0];
  *array[1] = &things[1];
  ASSERT_EQ(array.EnsureCapacity(4), status::kOk);
  EXPECT_EQ(*array[0], &things[0]);
  EXPECT_EQ(*array[1], &things[1]);
  EXPECT_EQ(*array[2], nullptr);
  EXPECT_EQ(*array[3], nullptr);
}

TEST(Array, FillsOnlyTheNewElements) {
  Array<bool> array;
  ASSERT_EQ(array.EnsureCapacity(2, true), status::kOk);
  EXPECT_TRUE(*array[0]);
  EXPECT_TRUE(*array[1]);
  ASSERT_EQ(array.EnsureCapacity(4, false), status::kOk);
  EXPECT_TRUE(*array[1]);
  EXPECT_FALSE(*array[2]);
  EXPECT_FALSE(*array[3]);
  ASSERT_EQ(array.EnsureCapacity(3, true), status::kOk);
  EXPECT_FALSE(*array[3]) << "nothing is new";
}

TEST(Array, MemsetZeroClearsEveryElement) {
  Array<bool> array;
  ASSERT_EQ(array.EnsureCapacity(3, true), status::kOk);
  EXPECT_EQ(array.MemsetZero(), status::kOk);
  for (unsigned int i = 0; i < 3; ++i) EXPECT_FALSE(*array[i]) << i;
  EXPECT_EQ(array.capacity, 3u);
}

TEST(Array, ChangesNothingWhenTheMemoryCannotBeHad) {
  int thing = 0;
  Array<void*> array;
  ASSERT_EQ(array.EnsureCapacity(1), status::kOk);
  *array[0] = &thing;
  EXPECT_EQ(array.EnsureCapacity(0xFFFFFFFF), status::kNoMemory);
  EXPECT_EQ(array.capacity, 1u);
  EXPECT_EQ(*array[0], &thing);
  Array<bool> flags;
  EXPECT_EQ(flags.EnsureCapacity(0x80000000, true), status::kNoMemory);
  EXPECT_EQ(flags.capacity, 0u);
  EXPECT_EQ(flags.data, nullptr);
}

TEST(Array, ElementsHaveTheirAddresses) {
  Array<bool> array;
  ASSERT_EQ(array.EnsureCapacity(3, false), status::kOk);
  *array[1] = true;
  const Array<bool>& same = array;
  EXPECT_EQ(same[1], &array.data[1]);
  EXPECT_TRUE(*same[1]);
  EXPECT_FALSE(*same[2]);
}

}  // namespace
}  // namespace tamu::registry
