// Creating, changing and deleting values: what is stored, and which slots and blocks it takes.
#include "tests/registry/filetree/FileTreeRig.h"

namespace tamu::registry {

namespace {

// 31 bytes of a name field behind its first byte.
const std::string kNoMoreName(2 * 31, '0');

TEST(FileTreeValues, TheNewestValueIsTheFirstOfItsKey) {
  FileTreeRig rig;
  ASSERT_EQ(rig.CreateNumber("", "a", 1), 0u);
  ASSERT_EQ(rig.CreateData("", "b", 2, "x"), 0u);
  ASSERT_EQ(rig.CreateNumber("", "c", 3), 0u);
  EXPECT_EQ(rig.Hex(kKeyArea + 24, 6), "000300000300");
  EXPECT_EQ(rig.Word(kValueArea + 52 * 3), 0x200u);
  EXPECT_EQ(rig.Word(kValueArea + 52 * 2), 0x100u);
  EXPECT_EQ(rig.Word(kValueArea + 52 * 1), 0u);
}

TEST(FileTreeValues, AValueCreatedWithSizeZeroIsNotSet) {
  FileTreeRig rig;
  ASSERT_EQ(rig.CreateData("", "n", 1, ""), 0u);
  EXPECT_EQ(rig.Get("", "n"), "53");
  EXPECT_EQ(rig.ValueNode(1),
            "0000000000000000"
            "00000021"  // type 1, in blocks, not set
            "6e" +
                kNoMoreName + "0000000000000000");
  EXPECT_EQ(rig.FreeBlocks(), kUsableSlots);
  EXPECT_EQ(rig.CreateData("", "next", 1, "x"), 0u);
  EXPECT_EQ(rig.Get("", "next"), "0 type 1: 78");
}

TEST(FileTreeValues, SettingAValueToNothingLeavesItSet) {
  FileTreeRig rig;
  ASSERT_EQ(rig.CreateData("", "n", 1, Pattern(200)), 0u);
  ASSERT_EQ(rig.SetData("", "n", 2, ""), 0u);
  EXPECT_EQ(rig.Hex(kValueArea + 52 + 8, 4), "00000062");  // type 2, in blocks, set
  EXPECT_EQ(rig.Word(kValueArea + 52 + 44), 0u);
  EXPECT_EQ(rig.FreeBlocks(), kUsableSlots);
  EXPECT_EQ(rig.Get("", "n"), "0 type 2: ");
  EXPECT_EQ(rig.SetData("", "n", 1, "x"), 0u);
  EXPECT_EQ(rig.Get("", "n"), "0 type 1: 78");
}

TEST(FileTreeValues, TypesAbove5AreRefusedAfterTheRights) {
  FileTreeRig rig;
  ASSERT_EQ(rig.tree.CreateKey(kUser, nullptr, "a", 0, false), 0u);
  ASSERT_EQ(rig.CreateData("a", "n", 5, "x"), 0u);
  const std::string before = rig.Contents();
  for (unsigned int type : {6u, 32u, 0xFFFFFFFFu}) {
    EXPECT_EQ(rig.CreateData("a", "m", type, "x"), 53u) << type;
    EXPECT_EQ(rig.SetData("a", "n", type, "x"), 53u) << type;
    EXPECT_EQ(rig.SetData("a", "missing", type, "x"), 53u) << type;
    EXPECT_EQ(rig.CreateData("missing", "m", type, "x"), 2u) << type;
    EXPECT_EQ(rig.SetData("missing", "n", type, "x"), 2u) << type;
    char byte = 'x';
    Value value = {type, 1, &byte};
    EXPECT_EQ(rig.tree.CreateValue(kOther, nullptr, "a", "m", &value), 1u) << type;
    EXPECT_EQ(rig.tree.SetValue(kOther, nullptr, "a", "n", &value), 1u) << type;
  }
  EXPECT_EQ(rig.Contents(), before);
}

TEST(FileTreeValues, ANumberCreatedFromAValueTakesBlocksThatNobodyFrees) {
  FileTreeRig rig;
  const std::string bytes = "\x88\x77\x66\x55\x44\x33\x22\x11";
  ASSERT_EQ(rig.CreateData("", "n", 0, bytes), 0u);
  EXPECT_EQ(rig.ValueNode(1),
            "0000000000000000"
            "08000040"
            "6e" +
                kNoMoreName + "8877665544332211");
  EXPECT_EQ(rig.FreeBlocks(), kUsableSlots - 1);
  EXPECT_EQ(rig.DataBlock(1), HexOf(bytes) + std::string(2 * 56, '0'));
  EXPECT_EQ(rig.SetData("", "n", 0, bytes), 0u);
  EXPECT_EQ(rig.SetData("", "n", 1, "x"), 0u);
  EXPECT_EQ(rig.FreeBlocks(), kUsableSlots - 2);
  EXPECT_EQ(rig.Delete("", "n"), 0u);
  EXPECT_EQ(rig.FreeBlocks(), kUsableSlots - 2);
}

TEST(FileTreeValues, ANumberOfFewerBytesIsFilledWithZeros) {
  FileTreeRig rig;
  ASSERT_EQ(rig.CreateData("", "n", 0, "\x01\x02\x03"), 0u);
  EXPECT_EQ(rig.Hex(kValueArea + 52 + 8, 4), "08000040");
  EXPECT_EQ(rig.Hex(kValueArea + 52 + 44, 8), "0102030000000000");
  ASSERT_EQ(rig.CreateData("", "m", 0, "123456789ab"), 0u);  // of more, eight count
  EXPECT_EQ(rig.Hex(kValueArea + 52 * 2 + 8, 4), "08000040");
  EXPECT_EQ(rig.Hex(kValueArea + 52 * 2 + 44, 8), "3132333435363738");
}

TEST(FileTreeValues, SettingANumberKeepsTheUpperHalfOfTheOldOne) {
  FileTreeRig rig;
  ASSERT_EQ(rig.CreateNumber("", "n", 0x1122334455667788), 0u);
  ASSERT_EQ(rig.SetData("", "n", 0, "\x01\x02\x03\x04\x05\x06\x07\x08"), 0u);
  EXPECT_EQ(rig.Hex(kValueArea + 52 + 44, 8), "0102030444332211");
  EXPECT_EQ(rig.Hex(kValueArea + 52 + 8, 4), "08000040");
  EXPECT_EQ(rig.FreeBlocks(), kUsableSlots);
}

TEST(FileTreeValues, ANumberKeepsTheSizeItWasSetWith) {
  FileTreeRig rig;
  ASSERT_EQ(rig.CreateNumber("", "n", 0x1122334455667788), 0u);
  ASSERT_EQ(rig.SetData("", "n", 0, "\x34\x12"), 0u);
  EXPECT_EQ(rig.Hex(kValueArea + 52 + 8, 4), "02000040");
  EXPECT_EQ(rig.Get("", "n"), "0 type 0: 3412");
  ASSERT_EQ(rig.SetData("", "n", 0, Pattern(12)), 0u);
  EXPECT_EQ(rig.Get("", "n"), "0 type 0: 01080f160000000000000000");
}

TEST(FileTreeValues, SettingAnUnsetValueSetsIt) {
  FileTreeRig rig;
  ASSERT_EQ(rig.tree.CreateValue(kAdmin, nullptr, "", "n", 0, false), 0u);
  ASSERT_EQ(rig.SetData("", "n", 4, "abc"), 0u);
  EXPECT_EQ(rig.ValueNode(1),
            "0000000000000000"
            "03000064"
            "6e" +
                kNoMoreName + "0001000000000000");
  EXPECT_EQ(rig.Get("", "n"), "0 type 4: 616263");
}

TEST(FileTreeValues, SetValueMissesAMissingName) {
  FileTreeRig rig;
  EXPECT_EQ(rig.SetData("", "n", 1, "x"), 2u);
  ASSERT_EQ(rig.CreateNumber("", "n", 1), 0u);
  EXPECT_EQ(rig.SetData("", "m", 1, "x"), 2u);
  EXPECT_EQ(rig.FreeBlocks(), kUsableSlots);
}

TEST(FileTreeValues, DeletingAValueKeepsItsBlocksInUse) {
  FileTreeRig rig;
  ASSERT_EQ(rig.CreateData("", "n", 1, Pattern(1024)), 0u);
  EXPECT_EQ(rig.Delete("", "n"), 0u);
  EXPECT_EQ(rig.FreeBlocks(), kUsableSlots - 16);
  EXPECT_EQ(rig.FreeValues(), kUsableSlots);
}

TEST(FileTreeValues, DeletingTakesAValueOutOfTheChainWhereverItStands) {
  FileTreeRig rig;
  for (const char* name : {"a", "b", "c", "d"}) ASSERT_EQ(rig.CreateNumber("", name, 1), 0u);
  EXPECT_EQ(rig.Delete("", "b"), 0u);  // in the middle
  EXPECT_EQ(rig.Word(kValueArea + 52 * 3), 0x100u);
  EXPECT_EQ(rig.Hex(kKeyArea + 24, 6), "000400000300");
  EXPECT_EQ(rig.Delete("", "d"), 0u);  // the first
  EXPECT_EQ(rig.Hex(kKeyArea + 24, 6), "000300000200");
  EXPECT_EQ(rig.Delete("", "a"), 0u);  // the last
  EXPECT_EQ(rig.Word(kValueArea + 52 * 3), 0u);
  EXPECT_EQ(rig.Hex(kKeyArea + 24, 6), "000300000100");
  EXPECT_EQ(rig.Get("", "c"), "0 type 0: 0100000000000000");
  EXPECT_EQ(rig.Delete("", "c"), 0u);
  EXPECT_EQ(rig.KeyNode(1),
            "0000000000005f02"
            "ffff000000000000"
            "0000000000000000");
  EXPECT_EQ(rig.FreeValues(), kUsableSlots);
  ASSERT_EQ(rig.CreateNumber("", "again", 1), 0u);
  EXPECT_EQ(rig.Word(kKeyArea + 24), 0x300u);  // the slot given back last
}

TEST(FileTreeValues, DeletingMissesWhatIsNotThere) {
  FileTreeRig rig;
  EXPECT_EQ(rig.Delete("", "n"), 2u);  // no values at all
  ASSERT_EQ(rig.CreateNumber("", "n", 1), 0u);
  EXPECT_EQ(rig.Delete("", "m"), 2u);
  EXPECT_EQ(rig.Hex(kKeyArea + 24, 6), "000100000100");
}

TEST(FileTreeValues, ACountThatIsZeroAlreadyIsNotLowered) {
  FileTreeRig rig;
  ASSERT_EQ(rig.CreateNumber("", "n", 1), 0u);
  rig.Patch(kKeyArea + 24 + 4, "0000");
  EXPECT_EQ(rig.Delete("", "n"), 0u);
  EXPECT_EQ(rig.Hex(kKeyArea + 24, 6), "000000000000");
}

}  // namespace

}  // namespace tamu::registry
