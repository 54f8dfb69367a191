#include <gtest/gtest.h>

#include "registry/format/TernaryStringNode.h"
#include "tests/registry/store/RecordTesting.h"

namespace tamu::registry::storetests {
namespace {

TEST(TernaryStringNode, IsZeroWhenMade) {
  static_assert(sizeof(TernaryStringNode) == 40);
  EXPECT_EQ(Hex(TernaryStringNode()),
            "00000000 00000000 00000000 00000000 00000000 "
            "00000000 00000000 00000000 00000000 00000000");
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
  EXPECT_EQ(Hex(node),
            "00101080 00010000 016C0100 14FFFFFF 02030000 "
            "EFCDAB89 F0F1F2F3 F4F5F6F7 F8F9FAFB FCFDFEFF");
}

TEST(TernaryStringNode, GetsEveryFieldFromItsPlace) {
  const TernaryStringNode node = Numbered<TernaryStringNode>();
  EXPECT_EQ(node.segmentLength(), 0x82u);
  EXPECT_EQ(node.flags(), 0x83u);
  EXPECT_EQ(node.splitChar(), -124);
  EXPECT_EQ(node.lo(), 0x88878685u);
  EXPECT_EQ(node.hi(), 0x8C8B8A89u);
  EXPECT_EQ(node.equal(), 0x908F8E8Du);
  EXPECT_EQ(node.child(), 0x94939291u);
  EXPECT_EQ(node.keyNode(), 0x98979695u);
  for (unsigned int i = 0; i < 16; ++i) EXPECT_EQ(node.segment(i), -103 + static_cast<int>(i));
}

// On machines whose plain char has no sign the order of names must be the same.
TEST(TernaryStringNode, CharactersAreSignedEverywhere) {
  TernaryStringNode node;
  node.setSplitChar(static_cast<signed char>(0xFF));
  node.setSegment(0, static_cast<signed char>(0x80));
  EXPECT_EQ(node.splitChar(), -1);
  EXPECT_EQ(node.segment(0), -128);
  EXPECT_LT(node.segment(0), node.splitChar());
  EXPECT_LT(node.splitChar(), static_cast<signed char>('a'));
}

TEST(TernaryStringNode, TheKeyFlagIsOneBit) {
  TernaryStringNode node;
  node.setFlags(0x21);
  EXPECT_FALSE(node.hasKey());
  node.setHasKey(true);
  EXPECT_EQ(node.flags(), 0x31);
  EXPECT_TRUE(node.hasKey());
  node.setHasKey(false);
  EXPECT_EQ(node.flags(), 0x21);
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
