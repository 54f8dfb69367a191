#include <gtest/gtest.h>

#include "registry/base/Stack.h"

namespace tamu::registry {
namespace {

TEST(Stack, GivesBackWhatCameLastFirst) {
  Stack<int> stack;
  EXPECT_TRUE(stack.IsEmpty());
  for (int i = 0; i < 100; ++i) ASSERT_EQ(status::kOk, stack.Push(i));
  EXPECT_EQ(100u, stack.Count());
  EXPECT_EQ(99, stack.Top());
  EXPECT_EQ(99, stack.Below(0));
  EXPECT_EQ(0, stack.Below(99));
  EXPECT_EQ(0, stack[0]);
  EXPECT_EQ(98, stack[98]);
  stack.Top() = 7;
  stack[98] = 8;
  EXPECT_EQ(7, stack.Pop());
  EXPECT_EQ(8, stack.Pop());
  for (int i = 97; i >= 0; --i) EXPECT_EQ(stack.Pop(), i);
  EXPECT_TRUE(stack.IsEmpty());
}

TEST(Stack, NeedsNoMemoryForWhatWasReserved) {
  Stack<int> stack;
  EXPECT_FALSE(stack.HasRoom());
  ASSERT_EQ(status::kOk, stack.Reserve(2));
  EXPECT_TRUE(stack.HasRoom());
  ASSERT_EQ(status::kOk, stack.Push(1));
  ASSERT_EQ(status::kOk, stack.Push(2));
  EXPECT_FALSE(stack.HasRoom());
  stack.Clear();
  EXPECT_TRUE(stack.IsEmpty());
  EXPECT_TRUE(stack.HasRoom());
  EXPECT_EQ(status::kNoMemory, stack.Reserve(0xFFFFFFFF));
  EXPECT_TRUE(stack.HasRoom());
}

}  // namespace
}  // namespace tamu::registry
