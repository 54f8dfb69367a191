#include <gtest/gtest.h>

#include <cstring>

#include "registry/format/TernaryValueNode.h"
#include "tests/registry/store/RecordTesting.h"

namespace tamu::registry::storetests {
namespace {

TEST(TernaryValueNode, IsZeroWhenMade) {
  static_assert(sizeof(TernaryValueNode) == 52);
  EXPECT_EQ(Hex(TernaryValueNode()),
            "00000000 00000000 00000000 00000000 00000000 00000000 00000000 "
            "00000000 00000000 00000000 00000000 00000000 00000000");
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
  EXPECT_EQ(Hex(value),
            "016C0100 00000000 01040065 61626364 65666768 696A6B6C 6D6E6F70 "
            "71727374 75767778 797A3031 32333400 11223344 55667788");
}

TEST(TernaryValueNode, GetsEveryFieldFromItsPlace) {
  const TernaryValueNode value = Numbered<TernaryValueNode>();
  EXPECT_EQ(value.nextValue(), 0x84838281u);
  EXPECT_EQ(value.dataSize(), 0x8A89u);
  EXPECT_EQ(value.valueFlags(), 0x8Cu);
  EXPECT_EQ(static_cast<const void*>(value.name()), value.bytes() + 12);
  EXPECT_EQ(static_cast<const void*>(value.data()), value.bytes() + 44);
  EXPECT_EQ(value.number(), 0xB4B3B2B1B0AFAEADu);
  EXPECT_EQ(value.dataWord(), 0xB0AFAEADu);
}

TEST(TernaryValueNode, TypeAndFlagsShareAByte) {
  TernaryValueNode value;
  value.setValueFlags(0x80);
  value.setType(3);
  EXPECT_EQ(value.valueFlags(), 0x83);
  value.setInBlocks(true);
  EXPECT_EQ(value.valueFlags(), 0xA3);
  value.setSet(true);
  EXPECT_EQ(value.valueFlags(), 0xE3);
  value.setType(0);
  EXPECT_EQ(value.valueFlags(), 0xE0);
  value.setInBlocks(false);
  EXPECT_EQ(value.valueFlags(), 0xC0);
  EXPECT_TRUE(value.isSet());
  EXPECT_FALSE(value.isInBlocks());
  value.setValueFlags(0x7F);
  EXPECT_EQ(value.type(), 31u);
}

TEST(TernaryValueNode, TheDataWordIsTheLowHalfOfTheNumber) {
  TernaryValueNode value;
  value.setNumber(0x8877665544332211u);
  value.setDataWord(0xAABBCCDD);
  EXPECT_EQ(value.number(), 0x88776655AABBCCDDu);
}

TEST(TernaryValueNode, KeepsTheFirst31CharactersOfAName) {
  TernaryValueNode value;
  value.setName("0123456789012345678901234567890123456789");
  EXPECT_EQ(std::memcmp(value.bytes() + 12, "0123456789012345678901234567890\0", 32), 0);
  EXPECT_EQ(Hex(value).substr(99), "00000000 00000000");  // what follows is not touched
  EXPECT_TRUE(value.hasName("0123456789012345678901234567890"));
  EXPECT_FALSE(value.hasName("0123456789012345678901234567890123456789"));
  EXPECT_FALSE(value.hasName("012345678901234567890123456789"));
}

TEST(TernaryValueNode, BytesBehindAShorterNameStayAsTheyWere) {
  TernaryValueNode value;
  value.setName("abcdefghijklmnopqrstuvwxyz01234");
  value.setName("xy");
  EXPECT_EQ(std::memcmp(value.bytes() + 12, "xy\0defghijklmnopqrstuvwxyz01234\0", 32), 0);
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
