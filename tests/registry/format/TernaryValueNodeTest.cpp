#include <gtest/gtest.h>

#include <cstring>

#include "registry/format/TernaryValueNode.h"
#include "tests/registry/store/RecordTesting.h"

namespace tamu::registry::storetests {
namespace {

TEST(TernaryValueNode, IsZeroWhenMade) {
  static_assert(sizeof(TernaryValueNode) == 52);
  EXPECT_EQ(
      "00000000 00000000 00000000 00000000 00000000 00000000 00000000 "
      "00000000 00000000 00000000 00000000 00000000 00000000",
      Hex(TernaryValueNode()));
}

TEST(TernaryValueNode, PutsEveryFieldAtItsPlace) {
  TernaryValueNode value;
  value.setNextValue(0x00016C01);
  value.setDataSize(0x0401);
  value.setType(5);
  value.setInBlocks(true);
  value.setSet(true);
  value.setName("abcdefghijklmnopqrstuvwxyz01234");
  value.setNumber(0x8877665544332211u);
  EXPECT_EQ(
      "016C0100 00000000 01040065 61626364 65666768 696A6B6C 6D6E6F70 "
      "71727374 75767778 797A3031 32333400 11223344 55667788",
      Hex(value));
}

TEST(TernaryValueNode, GetsEveryFieldFromItsPlace) {
  const TernaryValueNode value = Numbered<TernaryValueNode>();
  EXPECT_EQ(0x84838281u, value.nextValue());
  EXPECT_EQ(0x8A89u, value.dataSize());
  EXPECT_EQ(0x8Cu, value.valueFlags());
  EXPECT_EQ(static_cast<const void*>(value.name()), value.bytes() + 12);
  EXPECT_EQ(static_cast<const void*>(value.data()), value.bytes() + 44);
  EXPECT_EQ(0xB4B3B2B1B0AFAEADu, value.number());
  EXPECT_EQ(0xB0AFAEADu, value.dataWord());
}

TEST(TernaryValueNode, TypeAndFlagsShareAByte) {
  TernaryValueNode value;
  value.setValueFlags(0x80);
  value.setType(3);
  EXPECT_EQ(0x83, value.valueFlags());
  value.setInBlocks(true);
  EXPECT_EQ(0xA3, value.valueFlags());
  value.setSet(true);
  EXPECT_EQ(0xE3, value.valueFlags());
  value.setType(0);
  EXPECT_EQ(0xE0, value.valueFlags());
  value.setInBlocks(false);
  EXPECT_EQ(0xC0, value.valueFlags());
  EXPECT_TRUE(value.isSet());
  EXPECT_FALSE(value.isInBlocks());
  value.setValueFlags(0x7F);
  EXPECT_EQ(31u, value.type());
}

TEST(TernaryValueNode, TheDataWordIsTheLowHalfOfTheNumber) {
  TernaryValueNode value;
  value.setNumber(0x8877665544332211u);
  value.setDataWord(0xAABBCCDD);
  EXPECT_EQ(0x88776655AABBCCDDu, value.number());
}

TEST(TernaryValueNode, KeepsTheFirst31CharactersOfAName) {
  TernaryValueNode value;
  value.setName("0123456789012345678901234567890123456789");
  EXPECT_EQ(0, std::memcmp(value.bytes() + 12, "0123456789012345678901234567890\0", 32));
  EXPECT_EQ("00000000 00000000", Hex(value).substr(99));  // what follows is not touched
  EXPECT_TRUE(value.hasName("0123456789012345678901234567890"));
  EXPECT_FALSE(value.hasName("0123456789012345678901234567890123456789"));
  EXPECT_FALSE(value.hasName("012345678901234567890123456789"));
}

TEST(TernaryValueNode, BytesBehindAShorterNameStayAsTheyWere) {
  TernaryValueNode value;
  value.setName("abcdefghijklmnopqrstuvwxyz01234");
  value.setName("xy");
  EXPECT_EQ(0, std::memcmp(value.bytes() + 12, "xy\0defghijklmnopqrstuvwxyz01234\0", 32));
  EXPECT_TRUE(value.hasName("xy"));
}

TEST(TernaryValueNode, NoNameIsTheEmptyName) {
  TernaryValueNode value;
  value.setName("x");
  value.setName(nullptr);
  EXPECT_STREQ(value.name(), "");
  EXPECT_TRUE(value.hasName(nullptr));
  EXPECT_TRUE(value.hasName(""));
  EXPECT_FALSE(value.hasName("x"));
}

TEST(TernaryValueNode, ADamagedNameWithoutTerminatorIsComparedInsideTheRecord) {
  TernaryValueNode value;
  std::memset(value.bytes() + 12, 'n', 32);
  EXPECT_FALSE(value.hasName("nnn"));
  EXPECT_FALSE(value.hasName("nnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnn"));
  EXPECT_TRUE(value.hasName("nnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnn"));
}

}  // namespace
}  // namespace tamu::registry::storetests
