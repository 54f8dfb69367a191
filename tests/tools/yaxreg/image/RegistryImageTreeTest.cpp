// Damage of the names, the keys, the values and their data.
#include <gtest/gtest.h>

#include "tests/tools/yaxreg/DamageCase.h"

namespace {

class RegistryImageTree : public ::testing::TestWithParam<DamageCase> {};

const std::string kMac = "  mac 2 130 " + std::string(64, 'a') + std::string(64, 'b') + "cc\n";
const std::string kEth = "/net/eth 3e8:0f\n" + kMac;
const std::string kPort = "  port 1 5 eth0\\x00\n";
const std::string kMtu = "  mtu 0 8 1500\n";
const std::string kNfs = "/nfs 3e8:1f watch 3\n";
const std::string kStrays =
    "loss: /lost+found: keys or values that nothing leads to; where they were is not known\n";

TEST_P(RegistryImageTree, OfTheTreeIsToldWithThePathsThatItTouches) {
  ExpectFindings(GetParam());
}

// One link that leads nowhere and one subtree without a place belong together.
const DamageCase kLinks[] = {
    {"OutsideOfItsTable",
     {{S(2) + 8, 0x16D00}},
     "loss: /n: a link to names below it is broken; those that nothing leads to are taken for "
     "them\n",
     "",
     ""},
    {"OfNoTable",
     {{S(2) + 8, 0x401}},
     "loss: /n: a link to names below it is broken; those that nothing leads to are taken for "
     "them\n",
     "",
     ""},
    {"ToAFreeSlot",
     {{S(2) + 8, 0x700}},
     "loss: /n: a link to names below it is broken; those that nothing leads to are taken for "
     "them\n",
     "",
     ""},
    {"Circle",
     {{S(3) + 16, 0x200}},
     "loss: /net: the link to its sub-keys is broken; those that nothing leads to are taken for "
     "them\n",
     "",
     ""},
    {"ToItself",
     {{S(3) + 12, 0x300}},
     "loss: /net: names below it are lost: a link leads nowhere\n",
     "",
     ""},
    {"OfTheRootLeadsNowhere",
     {{S(1) + 16, 0x9900}},
     "loss: /: the link to its sub-keys is broken; those that nothing leads to are taken for "
     "them\n",
     "",
     ""},
    {"OfTheRootHasNeighbours",
     {{S(1) + 4, 0x400}},
     "damage: the root's string node has neighbours\n",
     "",
     ""},
    {"ToTheNodeOfAnother",
     {{S(4) + 16, 0x500}},
     "loss: /net: names below it may be those of another place: two links lead to string node "
     "0x500\n"
     "loss: /nfs: names below it may be those of another place: two links lead to string node "
     "0x500\n",
     kNfs,
     kNfs + "/nfs/eth 3e8:0f\n" + kMac},
    {"OfANameWithoutKeyToAFreeSlot",
     {{S(2) + 16, 0x700}},
     "damage: /ne: it is no key, but a link leads from it to a free slot\n",
     "",
     ""},
    {"OutOfOrder",
     {{S(2) + 4, 0x400}, {S(2) + 8, 0}},
     "loss: /n: names below it are out of order in string node 0x400, programs do not find them\n",
     "",
     ""},
};
INSTANTIATE_TEST_SUITE_P(Links, RegistryImageTree, ::testing::ValuesIn(kLinks), DamageName);

const DamageCase kNames[] = {
    {"SegmentTooLong",
     {{S(5), 0x68101100}},
     "loss: /net: a part of names below it cannot be read, it is shown as (0x500)\n",
     "/net/eth ",
     "/net/(0x500)h "},
    {"SlashInASegment",
     {{S(5) + 24, 0x00002F65}},
     "loss: /net: a part of names below it cannot be read, it is shown as (0x500)\n",
     "/net/eth ",
     "/net/(0x500)h "},
    {"ZeroInASegment",
     {{S(5) + 24, 0x00007400}},
     "loss: /net: a part of names below it cannot be read, it is shown as (0x500)\n",
     "/net/eth ",
     "/net/(0x500)h "},
    {"ZeroAsSplitCharacter",
     {{S(5), 0x00100200}},
     "loss: /net: a character of names below it cannot be read, it is shown as (0x500)\n",
     "/net/eth ",
     "/net/et(0x500) "},
    {"SlashAsSplitCharacter",
     {{S(5), 0x2F100200}},
     "loss: /net: a character of names below it cannot be read, it is shown as (0x500)\n",
     "/net/eth ",
     "/net/et(0x500) "},
    {"ReservedByte",
     {{S(5), 0x68100201}},
     "damage: /net: reserved bits or bytes of string node 0x500 are not 0\n",
     "",
     ""},
    {"ReservedFlag",
     {{S(5), 0x68180200}},
     "damage: /net: reserved bits or bytes of string node 0x500 are not 0\n",
     "",
     ""},
    {"KeyWithoutFlag",
     {{S(5), 0x68000200}},
     "damage: /net: flag and key of string node 0x500 disagree\n",
     "",
     ""},
    {"FlagWithoutKey",
     {{S(2), 0x65100100}},
     "damage: /: flag and key of string node 0x200 disagree\n"
     "loss: /ne: its key record is lost\n",
     "",
     ""},
};
INSTANTIATE_TEST_SUITE_P(Names, RegistryImageTree, ::testing::ValuesIn(kNames), DamageName);

const DamageCase kKeyRecords[] = {
    {"OutsideOfItsTable",
     {{S(5) + 20, 0x16D00}},
     "loss: /net/eth: its key record cannot be read\n" + kStrays,
     kEth,
     "",
     "/lost+found/(key 0x400) 3e8:0f\n" + kMac},
    {"OutsideWithKeysBelow",
     {{S(3) + 20, 0x16D00}},
     "loss: /net: its key record cannot be read\n"
     "damage: /net: it is no key, but there are keys below it\n" +
         kStrays,
     "/net e7886b13:0f default 7\n" + kPort + kMtu,
     "/net ffff:0f made up\n",
     "/lost+found/(key 0x200) e7886b13:0f default 7\n" + kPort + kMtu},
    {"OnTheFreeList",
     {{S(5) + 20, 0x500}, {K(5) + 4, 0x000F0000}, {K(5) + 8, 1001}},
     "loss: /net/eth: its key record is on the free list, it may be a deleted one\n" + kStrays,
     kEth,
     "/net/eth 3e9:0f\n",
     "/lost+found/(key 0x400) 3e8:0f\n" + kMac},
    {"OfASlotThatWasNeverUsed",
     {{S(5) + 20, 0x500}},
     "loss: /net/eth: its key record is empty: its rights and values are lost\n" + kStrays,
     kEth,
     "/net/eth ffff:0f made up\n",
     "/lost+found/(key 0x400) 3e8:0f\n" + kMac},
    {"OfAnotherKey",
     {{S(4) + 20, 0x400}},
     "loss: /nfs: its key record belongs to another key, too; both have its values now\n"
     "loss: /net/eth: its key record belongs to another key, too; both have its values now\n" +
         kStrays,
     kNfs,
     "/nfs 3e8:0f\n" + kMac,
     "/lost+found/(key 0x300) " + kNfs.substr(5)},
    {"RootWithoutKey",
     {{S(1), 0}, {S(1) + 20, 0}, {K(1) + 4, 0}, {K(1) + 8, 0}},
     "damage: /: the registry has no root key, no key can be created\n",
     "/ ffff:5f\n",
     "/ ffff:5f made up\n"},
    {"RootWithoutLinkToItsKey",
     {{S(1), 0}, {S(1) + 20, 0}},
     "damage: /: the root's link to its key is broken\n",
     "",
     ""},
    {"RootWithoutRootFlag",
     {{K(1) + 4, 0x005F0000}},
     "damage: /: the root key is not marked as such\n",
     "",
     ""},
    {"RootFlagOfAnotherKey",
     {{K(2) + 4, 0x030F0002}},
     "damage: /net: it is marked as the root key\n",
     "",
     ""},
    {"ReservedWord",
     {{K(2) + 12, 1}},
     "damage: /net: reserved bytes of its key record are not 0\n",
     "",
     ""},
    {"CountTooLow",
     {{K(2) + 4, 0x010F0001}},
     "damage: /net: it counts 1 values, but has 2\n",
     "",
     ""},
};
INSTANTIATE_TEST_SUITE_P(Keys, RegistryImageTree, ::testing::ValuesIn(kKeyRecords), DamageName);

const DamageCase kValueRecords[] = {
    {"ChainEndsTooEarly",
     {{V(2), 0}},
     "loss: /net: it counts 2 values, but has 1; there are values that nothing leads to\n" +
         kStrays,
     kMtu,
     "",
     "/lost+found/(value 0x100) ffff:0f made up\n" + kMtu},
    {"ChainDoesNotBegin",
     {{K(4), 0}},
     "loss: /net/eth: it counts 1 values, but has 0; there are values that nothing leads to\n" +
         kStrays,
     kMac,
     "",
     "/lost+found/(value 0x300) ffff:0f made up\n" + kMac},
    {"ChainLeadsOutside",
     {{V(2), 0x16D00}},
     "loss: /net: a value cannot be read, and those behind it\n" + kStrays,
     kMtu,
     "",
     "/lost+found/(value 0x100) ffff:0f made up\n" + kMtu},
    {"ChainIsACircle", {{V(1), 0x200}}, "loss: /net: its values are linked in a circle\n", "", ""},
    {"ChainLeadsToAnotherKeys",
     {{V(1), 0x300}},
     "loss: /net: its values lead to those of another key\n"
     "loss: /net/eth: some of its values belong to another key, too; both have them now\n",
     "",
     ""},
    {"UnknownType",
     {{V(2) + 8, 0x66000005}},
     "loss: /net: value \"port\" has an unknown type\n",
     kPort,
     ""},
    {"NumberInBlocks",
     {{V(2) + 8, 0x60000005}},
     "loss: /net: value \"port\" has data where its type has none\n",
     kPort,
     ""},
    {"SizeImpossible",
     {{V(2) + 8, 0x61000401}},
     "loss: /net: value \"port\" has an impossible size\n",
     kPort,
     ""},
    {"SizeBeyondItsBlocks",
     {{V(2) + 8, 0x61000041}},
     "loss: /net: the data of value \"port\" cannot be read\n",
     kPort,
     ""},
    {"SizeOfFewerBlocks",
     {{V(3) + 8, 0x62000080}},
     "loss: /net/eth: the data of value \"mac\" leads on to more than its size tells\n",
     kMac,
     "  mac 2 128 " + std::string(64, 'a') + std::string(64, 'b') + "\n"},
    {"ReservedWord",
     {{V(1) + 4, 1}},
     "damage: /net: value \"mtu\": reserved bits or bytes are not 0\n",
     "",
     ""},
    {"ReservedByte",
     {{V(1) + 8, 0x40010008}},
     "damage: /net: value \"mtu\": reserved bits or bytes are not 0\n",
     "",
     ""},
    {"ReservedFlag",
     {{V(1) + 8, 0xC0000008}},
     "damage: /net: value \"mtu\": reserved bits or bytes are not 0\n",
     "",
     ""},
    {"NameWithoutEnd",
     {{V(1) + 12, 0x2F2F2F2F},
      {V(1) + 16, 0x2F2F2F2F},
      {V(1) + 20, 0x2F2F2F2F},
      {V(1) + 24, 0x2F2F2F2F},
      {V(1) + 28, 0x2F2F2F2F},
      {V(1) + 32, 0x2F2F2F2F},
      {V(1) + 36, 0x2F2F2F2F},
      {V(1) + 40, 0x2F2F2F2F}},
     "damage: /net: value \"" + std::string(31, '/') + "\": reserved bits or bytes are not 0\n",
     "  mtu ",
     "  " + std::string(31, '/') + " "},
};
INSTANTIATE_TEST_SUITE_P(Values, RegistryImageTree, ::testing::ValuesIn(kValueRecords), DamageName);

const DamageCase kData[] = {
    {"FirstBlockOutside",
     {{V(2) + 44, 0x16D00}},
     "loss: /net: the data of value \"port\" cannot be read\n",
     kPort,
     ""},
    {"NoFirstBlock",
     {{V(2) + 44, 0}},
     "loss: /net: the data of value \"port\" is lost or found no room, it is not set now\n",
     kPort,
     "  port 1 0  unset\n"},
    {"FirstBlockOnTheFreeList",
     {{V(2) + 44, 0x16C00}},
     "loss: /net: the data of value \"port\" leads on to more than its size tells\n"
     "loss: /net: the data of value \"port\" is on the free list\n",
     kPort,
     "  port 1 5 \\x00\\x00\\x00\\x00\\x00\n"},
    {"ChainTooShort",
     {{B(2), 0}},
     "loss: /net/eth: the data of value \"mac\" cannot be read\n",
     kMac,
     ""},
    {"ChainIsACircle",
     {{B(4), 2}},
     "loss: /net/eth: the data of value \"mac\" leads on to more than its size tells\n",
     "",
     ""},
    {"ChainIsACircleOfTooFew",
     {{B(3), 2}},
     "loss: /net/eth: the data of value \"mac\" cannot be read\n",
     kMac,
     ""},
    {"ChainLeadsOutside",
     {{B(3), 365}},
     "damage: table 0 of data blocks has 1 used slot with the entry of a free one: its free list "
     "is longer than it counts\n"
     "loss: /net/eth: the data of value \"mac\" cannot be read\n",
     kMac,
     ""},
    {"ChainLeadsIntoAnother",
     {{B(1), 4}},
     "loss: /net: the data of value \"port\" leads on to more than its size tells\n"
     "loss: /net/eth: the data of value \"mac\" may be that of another value, which leads to it, "
     "too\n",
     "",
     ""},
    {"LeadsToTheDataOfAnother",
     {{V(2) + 44, 0x400}},
     "loss: /net: the data of value \"port\" may be that of another value, which leads to it, "
     "too\n"
     "loss: /net/eth: the data of value \"mac\" may be that of another value, which leads to it, "
     "too\n",
     kPort,
     "  port 1 5 cc\\x00\\x00\\x00\n"},
};
INSTANTIATE_TEST_SUITE_P(Data, RegistryImageTree, ::testing::ValuesIn(kData), DamageName);

// Two broken links: nobody knows which of the two lost subtrees belongs where.
TEST(RegistryImageTree, OrphansAreBelowLostAndFound) {
  HandMadeFile file = SmallTree();
  file.PutWord(S(2) + 8, 0x16D00);   // "nfs"
  file.PutWord(S(3) + 16, 0x16D00);  // "net/eth"
  const yaxreg::RegistryImage image(file.bytes);
  EXPECT_EQ(
      "/ ffff:5f\n"
      "/lost+found ffff:0f made up\n"
      "/lost+found/(0x400) ffff:0f made up\n"
      "/lost+found/(0x400)/fs 3e8:1f watch 3\n"
      "/lost+found/(0x500) ffff:0f made up\n"
      "/lost+found/(0x500)/eth 3e8:0f\n" +
          kMac + "/net e7886b13:0f default 7\n" + kPort + kMtu,
      ContentText(image.content()));
  EXPECT_EQ(
      "loss: /n: names below it are lost: a link leads nowhere\n"
      "loss: /net: its sub-keys cannot be read\n" +
          kStrays,
      FindingsText(image));
}

// The library leaves such when a key is deleted while it is open. They are content when asked for.
TEST(RegistryImageTree, OrphansOfASoundTreeAreLeftOutUnlessAskedFor) {
  HandMadeFile file = SmallTree();
  file.PutWord(S(3) + 16, 0);
  const yaxreg::RegistryImage image(file.bytes);
  EXPECT_EQ(
      "note: there are keys or values in use that nothing leads to: deleted while they were open, "
      "or "
      "lost; yaxreg repair saves them, too\n",
      FindingsText(image));
  EXPECT_EQ(yaxreg::Content::kNone, image.content().Find("net/eth"));
  EXPECT_EQ(1u, image.UseOf(yaxreg::NodeKind::kKey).leaked);
  const yaxreg::RegistryImage asked(file.bytes, yaxreg::Orphans::kAlways);
  EXPECT_NE(yaxreg::Content::kNone, asked.content().Find("lost+found/(0x500)/eth"));
  EXPECT_EQ(0u, asked.UseOf(yaxreg::NodeKind::kKey).leaked);
}

}  // namespace
