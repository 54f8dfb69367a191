#include <gtest/gtest.h>

#include "registry/format/TernaryStringNode.h"
#include "tests/registry/store/RecordTesting.h"

namespace tamu::registry::storetests {
namespace {

TEST(TernaryStringNode, IsZeroWhenMade) {
  static_assert(sizeof(TernaryStringNode) == 40);
  EXPECT_EQ(
      "00000000 00000000 00000000 00000000 00000000 "
      "00000000 00000000 00000000 00000000 00000000",
      Hex(TernaryStringNode()));
}

TEST(TernaryStringNode, PutsEveryFieldAtItsPlace) {
  TernaryStringNode node;
  node.setSegmentLength(16);
  node.setHasKey(true);
  node.setSplitChar(static_cast<signed char>(0x80));
  node.setLo(0x00000100);
  node.setHi(0x00016C01);
  node.setEqual(0xFFFFFF14);
  node.setChild(0x00000302);
  node.setKeyNode(0x89ABCDEF);
  for (unsigned int i = 0; i < 16; ++i) node.setSegment(i, static_cast<signed char>(0xF0 + i));
  EXPECT_EQ(
      "00101080 00010000 016C0100 14FFFFFF 02030000 "
      "EFCDAB89 F0F1F2F3 F4F5F6F7 F8F9FAFB FCFDFEFF",
      Hex(node));
}

TEST(TernaryStringNode, GetsEveryFieldFromItsPlace) {
  const TernaryStringNode node = Numbered<TernaryStringNode>();
  EXPECT_EQ(0x82u, node.segmentLength());
  EXPECT_EQ(0x83u, node.flags());
  EXPECT_EQ(-124, node.splitChar());
  EXPECT_EQ(0x88878685u, node.lo());
  EXPECT_EQ(0x8C8B8A89u, node.hi());
  EXPECT_EQ(0x908F8E8Du, node.equal());
  EXPECT_EQ(0x94939291u, node.child());
  EXPECT_EQ(node.lo(), node.link(0));
  EXPECT_EQ(node.hi(), node.link(1));
  EXPECT_EQ(node.equal(), node.link(2));
  EXPECT_EQ(node.child(), node.link(3));
  EXPECT_EQ(0x98979695u, node.keyNode());
  for (unsigned int i = 0; i < 16; ++i) EXPECT_EQ(node.segment(i), -103 + static_cast<int>(i));
}

// On machines whose plain char has no sign the order of names must be the same.
TEST(TernaryStringNode, CharactersAreSignedEverywhere) {
  TernaryStringNode node;
  node.setSplitChar(static_cast<signed char>(0xFF));
  node.setSegment(0, static_cast<signed char>(0x80));
  EXPECT_EQ(-1, node.splitChar());
  EXPECT_EQ(-128, node.segment(0));
  EXPECT_LT(node.segment(0), node.splitChar());
  EXPECT_LT(node.splitChar(), static_cast<signed char>('a'));
}

TEST(TernaryStringNode, TheKeyFlagIsOneBit) {
  TernaryStringNode node;
  node.setFlags(0x21);
  EXPECT_FALSE(node.hasKey());
  node.setHasKey(true);
  EXPECT_EQ(0x31, node.flags());
  EXPECT_TRUE(node.hasKey());
  node.setHasKey(false);
  EXPECT_EQ(0x21, node.flags());
}

TEST(TernaryStringNode, ASegmentHasAtMostSixteenCharacters) {
  TernaryStringNode node;
  EXPECT_TRUE(node.HasValidSegment());
  node.setSegmentLength(16);
  EXPECT_TRUE(node.HasValidSegment());
  node.setSegmentLength(17);
  EXPECT_FALSE(node.HasValidSegment());
  node.setSegmentLength(255);
  EXPECT_FALSE(node.HasValidSegment());
}

}  // namespace
}  // namespace tamu::registry::storetests
