#include <gtest/gtest.h>

#include "registry/base/NameList.h"
#include "registry/base/RCEString.h"
#include "registry/base/RegistryStatus.h"

namespace tamu::registry {
namespace {

TEST(NameList, HandsOutNamesAndTagsInOrder) {
  NameList list(3);
  ASSERT_EQ(list.AddName(RCEString::Duplicate("one"), 0x1122334455667788u), status::kOk);
  ASSERT_EQ(list.AddName(RCEString::Duplicate("two"), 2), status::kOk);
  EXPECT_EQ(list.Count(), 2u);
  EXPECT_EQ(list.Capacity(), 3u);
  unsigned long long tag = 0;
  EXPECT_STREQ(list.GetName(0, &tag), "one");
  EXPECT_EQ(tag, 0x1122334455667788u);
  EXPECT_STREQ(list.GetName(1, &tag), "two");
  EXPECT_EQ(tag, 2u);
}

TEST(NameList, TakesTheNameItselfAndKeepsIt) {
  NameList list(1);
  char* name = RCEString::Duplicate("name");
  ASSERT_EQ(list.AddName(name, 0), status::kOk);
  EXPECT_EQ(list.GetName(0, nullptr), name);
  EXPECT_EQ(list.GetName(0, nullptr), name);
}

TEST(NameList, AnswersNullBeyondTheLastNameAndLeavesTheTag) {
  NameList list(2);
  ASSERT_EQ(list.AddName(RCEString::Duplicate("name"), 1), status::kOk);
  unsigned long long tag = 77;
  EXPECT_EQ(list.GetName(1, &tag), nullptr);
  EXPECT_EQ(list.GetName(0xFFFFFFFF, &tag), nullptr);
  EXPECT_EQ(list.GetName(1, nullptr), nullptr);
  EXPECT_EQ(tag, 77u);
}

TEST(NameList, LeavesTheNameWithTheCallerWhenFull) {
  NameList list(1);
  ASSERT_EQ(list.AddName(RCEString::Duplicate("first"), 1), status::kOk);
  char* name = RCEString::Duplicate("second");
  EXPECT_EQ(list.AddName(name, 2), status::kLimit);
  EXPECT_EQ(list.Count(), 1u);
  EXPECT_STREQ(name, "second");
  delete[] name;
  EXPECT_STREQ(list.GetName(0, nullptr), "first");
}

TEST(NameList, WithoutCapacityTakesNoName) {
  NameList list(0);
  char* name = RCEString::Duplicate("name");
  EXPECT_EQ(list.AddName(name, 1), status::kNoMemory);
  delete[] name;
  EXPECT_EQ(list.Count(), 0u);
  EXPECT_EQ(list.Capacity(), 0u);
  EXPECT_EQ(list.GetName(0, nullptr), nullptr);
}

TEST(NameList, HasNoCapacityWhenTheMemoryCannotBeHad) {
  NameList list(0xFFFFFFFF);
  char* name = RCEString::Duplicate("name");
  EXPECT_EQ(list.Capacity(), 0u);
  EXPECT_EQ(list.AddName(name, 1), status::kNoMemory);
  delete[] name;
}

}  // namespace
}  // namespace tamu::registry
