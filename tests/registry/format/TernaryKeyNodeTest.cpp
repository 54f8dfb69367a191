#include <gtest/gtest.h>

#include "registry/format/TernaryKeyNode.h"
#include "tests/registry/store/RecordTesting.h"

namespace tamu::registry::storetests {
namespace {

TEST(TernaryKeyNode, IsZeroWhenMade) {
  static_assert(sizeof(TernaryKeyNode) == 24);
  EXPECT_EQ("00000000 00000000 00000000 00000000 00000000 00000000", Hex(TernaryKeyNode()));
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
  EXPECT_EQ("016C0100 DCFE5F03 DD5A29AC 00000000 11223344 55667788", Hex(key));
}

TEST(TernaryKeyNode, GetsEveryFieldFromItsPlace) {
  const TernaryKeyNode key = Numbered<TernaryKeyNode>();
  EXPECT_EQ(0x84838281u, key.firstValue());
  EXPECT_EQ(0x8685u, key.valueCount());
  EXPECT_EQ(0x87u, key.permission());
  EXPECT_EQ(0x88u, key.keyFlags());
  EXPECT_EQ(0x8C8B8A89u, key.owner());
  EXPECT_EQ(0x9897969594939291u, key.defaultValue());
}

TEST(TernaryKeyNode, FlagsAreBitsOfTheirOwn) {
  TernaryKeyNode key;
  key.setKeyFlags(0xFC);
  EXPECT_FALSE(key.isDefaultSet());
  EXPECT_FALSE(key.isRoot());
  key.setDefaultSet(true);
  EXPECT_EQ(0xFD, key.keyFlags());
  EXPECT_TRUE(key.isDefaultSet());
  EXPECT_FALSE(key.isRoot());
  key.setRoot(true);
  EXPECT_EQ(0xFF, key.keyFlags());
  key.setDefaultSet(false);
  EXPECT_EQ(0xFE, key.keyFlags());
  EXPECT_TRUE(key.isRoot());
  key.setRoot(false);
  EXPECT_EQ(0xFC, key.keyFlags());
}

TEST(TernaryKeyNode, TheRootBelongsToTheAdministrator) {
  EXPECT_EQ(0xFFFFu, TernaryKeyNode::kRootOwner);
  EXPECT_EQ(0x5F, TernaryKeyNode::kRootPermission);
  EXPECT_EQ(0x0F, TernaryKeyNode::kTopPermission);
}

}  // namespace
}  // namespace tamu::registry::storetests
