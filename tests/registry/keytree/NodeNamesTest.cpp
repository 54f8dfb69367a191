#include "registry/keytree/NodeNames.h"
#include "tests/registry/store/RecordTesting.h"

namespace tamu::registry::storetests {
namespace {

const char kText[] = "abcdefghijklmnopqrstuvwxyz";

// What is taken from a name, and the record.
std::string Taken(const std::string& name) {
  TernaryStringNode node;
  const unsigned int taken = TakeName(&node, name.c_str());
  return std::to_string(taken) + ": " + Hex(node);
}

// A search that stopped with these flags.
PathMatch Stopped(unsigned char flags) {
  PathMatch match;
  match.flags = flags;
  return match;
}

const char kZeros20[] = "00000000 00000000 00000000 00000000 00000000";

TEST(NodeNames, TheLastCharacterIsTheSplitCharacter) {
  const std::string links = kZeros20;
  EXPECT_EQ(Taken("a"), "1: 00000061 " + links + " 00000000 00000000 00000000 00000000");
  EXPECT_EQ(Taken("ab"), "2: 00010062 " + links + " 61000000 00000000 00000000 00000000");
  EXPECT_EQ(Taken(std::string(kText, 16)),
            "16: 000F0070 " + links + " 61626364 65666768 696A6B6C 6D6E6F00");
  EXPECT_EQ(Taken(std::string(kText, 17)),
            "17: 00100071 " + links + " 61626364 65666768 696A6B6C 6D6E6F70");
}

TEST(NodeNames, WhatGoesBeyond17CharactersIsLeft) {
  const std::string whole = Taken(std::string(kText, 17));
  EXPECT_EQ(Taken(std::string(kText, 18)), whole);
  EXPECT_EQ(Taken(kText), whole);
}

TEST(NodeNames, ANameEndsBeforeASlash) {
  EXPECT_EQ(Taken("ab/cd"), Taken("ab"));
  EXPECT_EQ(Taken(std::string(kText, 16) + "/"), Taken(std::string(kText, 16)));
  EXPECT_EQ(Taken(std::string(kText, 17) + "/"), Taken(std::string(kText, 17)));
  const std::string nothing =
      "0: 00000000 " + std::string(kZeros20) + " 00000000 00000000 00000000 00000000";
  EXPECT_EQ(Taken("/ab"), nothing);
  EXPECT_EQ(Taken(""), nothing);
}

TEST(NodeNames, AllCharactersButTheSlashAreTaken) {
  for (unsigned int c = 1; c < 256; ++c) {
    if (c == '/') continue;
    TernaryStringNode node;
    const char name[] = {static_cast<char>(c), static_cast<char>(c), 0};
    EXPECT_EQ(2u, TakeName(&node, name)) << c;
    EXPECT_EQ(node.bytes()[3], c);
    EXPECT_EQ(node.bytes()[24], c);
  }
}

// The rest of the record belongs to who takes the name.
TEST(NodeNames, ATakenNameLeavesLinksAndFlags) {
  TernaryStringNode node;
  node.setFlags(0x10);
  node.setEqual(0x11223344);
  node.setKeyNode(0x55667788);
  EXPECT_EQ(3u, TakeName(&node, "xyz"));
  EXPECT_EQ(
      "0002107A 00000000 00000000 44332211 00000000 88776655"
      " 78790000 00000000 00000000 00000000",
      Hex(node));
}

// Whatever is not exactly what a cut leaves is somebody else's name.
TEST(NodeNames, APartIsKnownByWhatItWasCutFrom) {
  constexpr StringId kLower = 7;
  TernaryStringNode name;
  ASSERT_EQ(8u, TakeName(&name, "abcdefgh"));
  for (unsigned int cut = 0; cut < 7; ++cut) {
    const TernaryStringNode upper = UpperPart(name, cut, kLower);
    const TernaryStringNode lower = LowerPart(name, cut);
    EXPECT_TRUE(IsCutFrom(upper, lower, kLower)) << cut;
    EXPECT_FALSE(IsCutFrom(upper, lower, kLower + 1)) << cut;
    EXPECT_FALSE(IsCutFrom(upper, name, kLower)) << cut;  // still whole
    TernaryStringNode broken = lower;
    broken.setSegmentLength(TernaryStringNode::kSegmentMax + 1);
    EXPECT_FALSE(IsCutFrom(upper, broken, kLower)) << cut;
    broken.setSegmentLength(TernaryStringNode::kSegmentMax - cut);  // no room for both
    EXPECT_FALSE(IsCutFrom(upper, broken, kLower)) << cut;
    broken = upper;
    broken.setSegmentLength(TernaryStringNode::kSegmentMax + 1);
    EXPECT_FALSE(IsCutFrom(broken, lower, kLower)) << cut;
    broken = upper;
    broken.setFlags(TernaryStringNode::kFlagKey);
    EXPECT_FALSE(IsCutFrom(broken, lower, kLower)) << cut;
    for (const char c : {'\0', '/'}) {
      broken = upper;
      broken.setSplitChar(static_cast<signed char>(c));
      EXPECT_FALSE(IsCutFrom(broken, lower, kLower)) << cut;
    }
  }
}

TEST(NodeNames, TheFirstCharacterIsOfTheSegmentIfThereIsOne) {
  TernaryStringNode node;
  node.setSplitChar('s');
  node.setSegment(0, 'r');
  EXPECT_EQ('s', FirstCharOf(node));
  node.setSegmentLength(1);
  EXPECT_EQ('r', FirstCharOf(node));
  node.setSegment(0, static_cast<signed char>(0x80));
  EXPECT_EQ(-128, FirstCharOf(node));
}

// "abcdef", split character 'g', all links and a key; a lock that somebody has.
TernaryStringNode Whole() {
  TernaryStringNode node;
  TakeName(&node, "abcdefg");
  node.setFlags(0x11);
  node.setLo(0x100);
  node.setHi(0x200);
  node.setEqual(0x300);
  node.setChild(0x400);
  node.setKeyNode(0x500);
  return node;
}

TEST(NodeNames, TheUpperPartLeadsToTheLowerOne) {
  EXPECT_EQ(
      "00000061 00000000 00000000 78563412 00000000 00000000"
      " 00000000 00000000 00000000 00000000",
      Hex(UpperPart(Whole(), 0, 0x12345678)));
  EXPECT_EQ(
      "00020063 00000000 00000000 00090000 00000000 00000000"
      " 61620000 00000000 00000000 00000000",
      Hex(UpperPart(Whole(), 2, 0x900)));
  EXPECT_EQ(
      "00050066 00000000 00000000 00090000 00000000 00000000"
      " 61626364 65000000 00000000 00000000",
      Hex(UpperPart(Whole(), 5, 0x900)));
}

TEST(NodeNames, TheLowerPartKeepsAllButTheBeginning) {
  const std::string links = "00010000 00020000 00030000 00040000 00050000";
  EXPECT_EQ(Hex(LowerPart(Whole(), 0)),
            "00051167 " + links + " 62636465 66000000 00000000 00000000");
  EXPECT_EQ(Hex(LowerPart(Whole(), 2)),
            "00031167 " + links + " 64656600 00000000 00000000 00000000");
  EXPECT_EQ(Hex(LowerPart(Whole(), 5)),
            "00001167 " + links + " 00000000 00000000 00000000 00000000");
}

TEST(NodeNames, AFullSegmentIsCutAtItsEnds) {
  TernaryStringNode node;
  ASSERT_EQ(17u, TakeName(&node, kText));
  const std::string links = kZeros20;
  EXPECT_EQ(Hex(LowerPart(node, 0)), "000F0071 " + links + " 62636465 66676869 6A6B6C6D 6E6F7000");
  EXPECT_EQ(Hex(LowerPart(node, 15)), "00000071 " + links + " 00000000 00000000 00000000 00000000");
  EXPECT_EQ(Hex(UpperPart(node, 15, 0)),
            "000F0070 " + links + " 61626364 65666768 696A6B6C 6D6E6F00");
}

// Bytes behind the segment mean nothing and are not taken over.
TEST(NodeNames, BytesBehindTheSegmentAreDropped) {
  TernaryStringNode node = Numbered<TernaryStringNode>();
  node.setSegmentLength(3);  // 99 9A 9B
  EXPECT_EQ("99000000 00000000 00000000 00000000", Hex(UpperPart(node, 1, 0)).substr(54));
  EXPECT_EQ("9B000000 00000000 00000000 00000000", Hex(LowerPart(node, 1)).substr(54));
}

TEST(NodeNames, ALinkIsLookedForInTheOrderEqualLowerHigherChild) {
  NodeLink link = NodeLink::kChild;
  TernaryStringNode node = Whole();
  EXPECT_FALSE(FindLink(node, 0x500, &link));  // the key's, which is no link
  EXPECT_EQ(link, NodeLink::kChild);
  EXPECT_TRUE(FindLink(node, 0x100, &link));
  EXPECT_EQ(link, NodeLink::kLo);
  EXPECT_TRUE(FindLink(node, 0x200, &link));
  EXPECT_EQ(link, NodeLink::kHi);
  EXPECT_TRUE(FindLink(node, 0x300, &link));
  EXPECT_EQ(link, NodeLink::kEqual);
  EXPECT_TRUE(FindLink(node, 0x400, &link));
  EXPECT_EQ(link, NodeLink::kChild);

  node.setLo(0x700);
  node.setHi(0x700);
  node.setEqual(0x700);
  node.setChild(0x700);
  for (NodeLink expected : {NodeLink::kEqual, NodeLink::kLo, NodeLink::kHi, NodeLink::kChild}) {
    ASSERT_TRUE(FindLink(node, 0x700, &link));
    EXPECT_EQ(link, expected);
    SetLink(&node, expected, 0);
  }
  EXPECT_FALSE(FindLink(node, 0x700, &link));
}

TEST(NodeNames, ANameHangsBesideTheSplitCharacterByItsFirstOne) {
  TernaryStringNode node;
  node.setSplitChar('m');
  TernaryStringNode first;
  struct {
    unsigned char c;
    NodeLink link;
  } const cases[] = {{'l', NodeLink::kLo},  {'m', NodeLink::kLo},  {'n', NodeLink::kHi},
                     {0x7F, NodeLink::kHi}, {0x80, NodeLink::kLo}, {0xFF, NodeLink::kLo}};
  for (const auto& each : cases) {
    first.setSegmentLength(0);
    first.setSplitChar(static_cast<signed char>(each.c));
    EXPECT_EQ(LinkForName(node, Stopped(0), first), each.link) << each.c;
    first.setSplitChar('m');
    first.setSegmentLength(1);
    first.setSegment(0, static_cast<signed char>(each.c));
    EXPECT_EQ(LinkForName(node, Stopped(0), first), each.link) << each.c;
  }
  node.setSplitChar(static_cast<signed char>(0x90));
  first.setSegment(0, static_cast<signed char>(0x8F));
  EXPECT_EQ(LinkForName(node, Stopped(0), first), NodeLink::kLo);
  first.setSegment(0, static_cast<signed char>(0x91));
  EXPECT_EQ(LinkForName(node, Stopped(0), first), NodeLink::kHi);
}

TEST(NodeNames, TheSearchTellsWhetherANameHangsBelowOrBehind) {
  TernaryStringNode node;
  node.setSplitChar('m');
  TernaryStringNode first;
  first.setSplitChar('a');
  EXPECT_EQ(LinkForName(node, Stopped(PathMatch::kMatchChild), first), NodeLink::kChild);
  EXPECT_EQ(LinkForName(node, Stopped(PathMatch::kMatchChild | PathMatch::kMatchEqual), first),
            NodeLink::kChild);
  EXPECT_EQ(LinkForName(node, Stopped(PathMatch::kMatchEqual), first), NodeLink::kEqual);
}

}  // namespace
}  // namespace tamu::registry::storetests
