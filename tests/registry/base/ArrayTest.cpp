#include <gtest/gtest.h>

#include "registry/base/Array.h"

namespace tamu::registry {
namespace {

TEST(Array, HasNoElementsAtFirst) {
  Array<void*> array;
  EXPECT_EQ(0u, array.capacity);
  EXPECT_EQ(nullptr, array.data);
  EXPECT_EQ(status::kOk, array.MemsetZero());
  EXPECT_EQ(status::kOk, array.EnsureCapacity(0));
  EXPECT_EQ(nullptr, array.data);
}

TEST(Array, GrowsToExactlyTheSizeAskedFor) {
  Array<void*> array;
  EXPECT_EQ(status::kOk, array.EnsureCapacity(3));
  EXPECT_EQ(3u, array.capacity);
  EXPECT_EQ(status::kOk, array.EnsureCapacity(7));
  EXPECT_EQ(7u, array.capacity);
}

TEST(Array, DoublesWhenItIsFilledStepByStep) {
  Array<int> array;
  EXPECT_EQ(status::kOk, array.GrowTo(1));
  EXPECT_EQ(32u, array.capacity);
  *array[31] = 7;
  EXPECT_EQ(status::kOk, array.GrowTo(32));
  EXPECT_EQ(32u, array.capacity);
  EXPECT_EQ(status::kOk, array.GrowTo(33));
  EXPECT_EQ(64u, array.capacity);
  EXPECT_EQ(7, *array[31]);
  EXPECT_EQ(status::kOk, array.GrowTo(1000)) << "further than twice as far";
  EXPECT_EQ(1000u, array.capacity);
  EXPECT_EQ(status::kNoMemory, array.GrowTo(0xFFFFFFFF));
  EXPECT_EQ(1000u, array.capacity);
}

TEST(Array, NeverShrinks) {
  Array<void*> array;
  ASSERT_EQ(status::kOk, array.EnsureCapacity(5));
  void** before = array.data;
  EXPECT_EQ(status::kOk, array.EnsureCapacity(5));
  EXPECT_EQ(status::kOk, array.EnsureCapacity(2));
  EXPECT_EQ(5u, array.capacity);
  EXPECT_EQ(array.data, before);
}

TEST(Array, KeepsItsElementsWhenItGrowsAndTheNewOnesAreZero) {
  int things[2] = {};
  Array<void*> array;
  ASSERT_EQ(status::kOk, array.EnsureCapacity(2));
  *array[0] = &things[0];
  *array[1] = &things[1];
  ASSERT_EQ(status::kOk, array.EnsureCapacity(4));
  EXPECT_EQ(*array[0], &things[0]);
  EXPECT_EQ(*array[1], &things[1]);
  EXPECT_EQ(nullptr, *array[2]);
  EXPECT_EQ(nullptr, *array[3]);
}

TEST(Array, FillsOnlyTheNewElements) {
  Array<bool> array;
  ASSERT_EQ(status::kOk, array.EnsureCapacity(2, true));
  EXPECT_TRUE(*array[0]);
  EXPECT_TRUE(*array[1]);
  ASSERT_EQ(status::kOk, array.EnsureCapacity(4, false));
  EXPECT_TRUE(*array[1]);
  EXPECT_FALSE(*array[2]);
  EXPECT_FALSE(*array[3]);
  ASSERT_EQ(status::kOk, array.EnsureCapacity(3, true));
  EXPECT_FALSE(*array[3]) << "nothing is new";
}

TEST(Array, MemsetZeroClearsEveryElement) {
  Array<bool> array;
  ASSERT_EQ(status::kOk, array.EnsureCapacity(3, true));
  EXPECT_EQ(status::kOk, array.MemsetZero());
  for (unsigned int i = 0; i < 3; ++i) EXPECT_FALSE(*array[i]) << i;
  EXPECT_EQ(3u, array.capacity);
}

TEST(Array, ChangesNothingWhenTheMemoryCannotBeHad) {
  int thing = 0;
  Array<void*> array;
  ASSERT_EQ(status::kOk, array.EnsureCapacity(1));
  *array[0] = &thing;
  EXPECT_EQ(status::kNoMemory, array.EnsureCapacity(0xFFFFFFFF));
  EXPECT_EQ(1u, array.capacity);
  EXPECT_EQ(*array[0], &thing);
  Array<bool> flags;
  EXPECT_EQ(status::kNoMemory, flags.EnsureCapacity(0x80000000, true));
  EXPECT_EQ(0u, flags.capacity);
  EXPECT_EQ(nullptr, flags.data);
}

TEST(Array, ElementsHaveTheirAddresses) {
  Array<bool> array;
  ASSERT_EQ(status::kOk, array.EnsureCapacity(3, false));
  *array[1] = true;
  const Array<bool>& same = array;
  EXPECT_EQ(same[1], &array.data[1]);
  EXPECT_TRUE(*same[1]);
  EXPECT_FALSE(*same[2]);
}

}  // namespace
}  // namespace tamu::registry
