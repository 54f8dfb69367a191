#include <gtest/gtest.h>

#include "registry/base/Stack.h"

namespace tamu::registry {
namespace {

TEST(Stack, GivesBackWhatCameLastFirst) {
  Stack<int> stack;
  EXPECT_TRUE(stack.IsEmpty());
  for (int i = 0; i < 100; ++i) ASSERT_EQ(stack.Push(i), status::kOk);
  EXPECT_EQ(stack.Count(), 100u);
  EXPECT_EQ(stack.Top(), 99);
  EXPECT_EQ(stack.Below(0), 99);
  EXPECT_EQ(stack.Below(99), 0);
  EXPECT_EQ(stack[0], 0);
  EXPECT_EQ(stack[98], 98);
  stack.Top() = 7;
  stack[98] = 8;
  EXPECT_EQ(stack.Pop(), 7);
  EXPECT_EQ(stack.Pop(), 8);
  for (int i = 97; i >= 0; --i) EXPECT_EQ(stack.Pop(), i);
  EXPECT_TRUE(stack.IsEmpty());
}

TEST(Stack, NeedsNoMemoryForWhatWasReserved) {
  Stack<int> stack;
  EXPECT_FALSE(stack.HasRoom());
  ASSERT_EQ(stack.Reserve(2), status::kOk);
  EXPECT_TRUE(stack.HasRoom());
  ASSERT_EQ(stack.Push(1), status::kOk);
  ASSERT_EQ(stack.Push(2), status::kOk);
  EXPECT_FALSE(stack.HasRoom());
  stack.Clear();
  EXPECT_TRUE(stack.IsEmpty());
  EXPECT_TRUE(stack.HasRoom());
  EXPECT_EQ(stack.Reserve(0xFFFFFFFF), status::kNoMemory);
  EXPECT_TRUE(stack.HasRoom());
}

}  // namespace
}  // namespace tamu::registry
