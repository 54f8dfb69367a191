#include <gtest/gtest.h>

#include "registry/format/TernaryKeyNode.h"
#include "tests/registry/store/RecordTesting.h"

namespace tamu::registry::storetests {
namespace {

TEST(TernaryKeyNode, IsZeroWhenMade) {
  static_assert(sizeof(TernaryKeyNode) == 24);
  EXPECT_EQ(Hex(TernaryKeyNode()), "00000000 00000000 00000000 00000000 00000000 00000000");
}

TEST(TernaryKeyNode, PutsEveryFieldAtItsPlace) {
  TernaryKeyNode key;
  key.setFirstValue(0x00016C01);
  key.setValueCount(0xFEDC);
  key.setPermission(0x5F);
  key.setDefaultSet(true);
  key.setRoot(true);
  key.setOwner(0xAC295ADD);
  key.setDefaultValue(0x8877665544332211u);
  EXPECT_EQ(Hex(key), "016C0100 DCFE5F03 DD5A29AC 00000000 11223344 55667788");
}

TEST(TernaryKeyNode, GetsEveryFieldFromItsPlace) {
  const TernaryKeyNode key = Numbered<TernaryKeyNode>();
  EXPECT_EQ(key.firstValue(), 0x84838281u);
  EXPECT_EQ(key.valueCount(), 0x8685u);
  EXPECT_EQ(key.permission(), 0x87u);
  EXPECT_EQ(key.keyFlags(), 0x88u);
  EXPECT_EQ(key.owner(), 0x8C8B8A89u);
  EXPECT_EQ(key.defaultValue(), 0x9897969594939291u);
}

TEST(TernaryKeyNode, FlagsAreBitsOfTheirOwn) {
  TernaryKeyNode key;
  key.setKeyFlags(0xFC);
  EXPECT_FALSE(key.isDefaultSet());
  EXPECT_FALSE(key.isRoot());
  key.setDefaultSet(true);
  EXPECT_EQ(key.keyFlags(), 0xFD);
  EXPECT_TRUE(key.isDefaultSet());
  EXPECT_FALSE(key.isRoot());
  key.setRoot(true);
  EXPECT_EQ(key.keyFlags(), 0xFF);
  key.setDefaultSet(false);
  EXPECT_EQ(key.keyFlags(), 0xFE);
  EXPECT_TRUE(key.isRoot());
  key.setRoot(false);
  EXPECT_EQ(key.keyFlags(), 0xFC);
}

TEST(TernaryKeyNode, TheRootBelongsToTheAdministrator) {
  EXPECT_EQ(TernaryKeyNode::kRootOwner, 0xFFFFu);
  EXPECT_EQ(TernaryKeyNode::kRootPermission, 0x5F);
  EXPECT_EQ(TernaryKeyNode::kTopPermission, 0x0F);
}

}  // namespace
}  // namespace tamu::registry::storetests
