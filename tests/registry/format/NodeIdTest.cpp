#include <gtest/gtest.h>

#include "registry/format/NodeId.h"

namespace tamu::registry {

namespace {

template <class A, class B, class = void>
constexpr bool kAreComparable = false;
template <class A, class B>
constexpr bool kAreComparable<A, B, std::void_t<decltype(A() == B())>> = true;

}  // namespace

TEST(NodeIdTest, IsTheTableAndTheSlot) {
  EXPECT_EQ(0x1203u, MakeNodeId(3, 0x12));
  EXPECT_EQ(3u, TableOf(0x1203));
  EXPECT_EQ(0x12u, SlotOf(0x1203));
}

TEST(NodeIdTest, IsAPlainNumberWhereThatIsWanted) {
  const StringId id = 0x1203u;
  EXPECT_EQ(0x1203u, id);
  EXPECT_EQ(3u, TableOf(id));
  EXPECT_EQ(0u, StringId());
  EXPECT_EQ(sizeof(unsigned int), sizeof(StringId));
}

TEST(NodeIdTest, NeverStandsForOneOfAnotherKind) {
  EXPECT_TRUE((std::is_convertible_v<StringId, unsigned int>));
  EXPECT_FALSE((std::is_convertible_v<StringId, KeyId>));
  EXPECT_FALSE((std::is_constructible_v<KeyId, ValueId>));
  EXPECT_FALSE((std::is_assignable_v<DataId&, ValueId>));
  EXPECT_TRUE((kAreComparable<KeyId, KeyId>));
  EXPECT_FALSE((kAreComparable<KeyId, ValueId>));
}

}  // namespace tamu::registry
