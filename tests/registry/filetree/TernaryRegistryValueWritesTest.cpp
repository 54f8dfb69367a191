// Creating, changing and deleting values: what is stored, and which slots and blocks it takes.
#include "tests/registry/filetree/FileTreeRig.h"

namespace tamu::registry {

namespace {

// 31 bytes of a name field behind its first byte.
const std::string kNoMoreName(2 * 31, '0');

TEST(TernaryRegistryValueWrites, TheNewestValueIsTheFirstOfItsKey) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.CreateNumber("", "a", 1));
  ASSERT_EQ(status::kOk, rig.CreateData("", "b", 2, "x"));
  ASSERT_EQ(status::kOk, rig.CreateNumber("", "c", 3));
  EXPECT_EQ("000300000300", rig.Hex(kKeyArea + 24, 6));
  EXPECT_EQ(0x200u, rig.Word(kValueArea + 52 * 3));
  EXPECT_EQ(0x100u, rig.Word(kValueArea + 52 * 2));
  EXPECT_EQ(0u, rig.Word(kValueArea + 52 * 1));
}

TEST(TernaryRegistryValueWrites, AValueCreatedWithSizeZeroIsNotSet) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.CreateData("", "n", 1, ""));
  EXPECT_EQ("53", rig.Get("", "n"));
  EXPECT_EQ(rig.ValueNode(1),
            "0000000000000000"
            "00000021"  // type 1, in blocks, not set
            "6e" +
                kNoMoreName + "0000000000000000");
  EXPECT_EQ(kUsableSlots, rig.FreeBlocks());
  EXPECT_EQ(status::kOk, rig.CreateData("", "next", 1, "x"));
  EXPECT_EQ("0 type 1: 78", rig.Get("", "next"));
}

TEST(TernaryRegistryValueWrites, SettingAValueToNothingLeavesItSet) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.CreateData("", "n", 1, Pattern(200)));
  ASSERT_EQ(status::kOk, rig.SetData("", "n", 2, ""));
  EXPECT_EQ("00000062", rig.Hex(kValueArea + 52 + 8, 4));  // type 2, in blocks, set
  EXPECT_EQ(0u, rig.Word(kValueArea + 52 + 44));
  EXPECT_EQ(kUsableSlots, rig.FreeBlocks());
  EXPECT_EQ("0 type 2: ", rig.Get("", "n"));
  EXPECT_EQ(status::kOk, rig.SetData("", "n", 1, "x"));
  EXPECT_EQ("0 type 1: 78", rig.Get("", "n"));
}

TEST(TernaryRegistryValueWrites, TypesAbove5AreRefusedAfterTheRights) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.tree.CreateKey(kUser, nullptr, "a", 0, false));
  ASSERT_EQ(status::kOk, rig.CreateData("a", "n", 5, "x"));
  const std::string before = rig.Contents();
  for (unsigned int type : {6u, 32u, 0xFFFFFFFFu}) {
    EXPECT_EQ(status::kNoData, rig.CreateData("a", "m", type, "x")) << type;
    EXPECT_EQ(status::kNoData, rig.SetData("a", "n", type, "x")) << type;
    EXPECT_EQ(status::kNoData, rig.SetData("a", "missing", type, "x")) << type;
    EXPECT_EQ(status::kNotFound, rig.CreateData("missing", "m", type, "x")) << type;
    EXPECT_EQ(status::kNotFound, rig.SetData("missing", "n", type, "x")) << type;
    char byte = 'x';
    Value value = {type, 1, &byte};
    EXPECT_EQ(status::kNoRight, rig.tree.CreateValue(kOther, nullptr, "a", "m", &value)) << type;
    EXPECT_EQ(status::kNoRight, rig.tree.SetValue(kOther, nullptr, "a", "n", &value)) << type;
  }
  EXPECT_EQ(rig.Contents(), before);
}

TEST(TernaryRegistryValueWrites, ANumberCreatedFromAValueTakesBlocksThatNobodyFrees) {
  FileTreeRig rig;
  const std::string bytes = "\x88\x77\x66\x55\x44\x33\x22\x11";
  ASSERT_EQ(status::kOk, rig.CreateData("", "n", 0, bytes));
  EXPECT_EQ(rig.ValueNode(1),
            "0000000000000000"
            "08000040"
            "6e" +
                kNoMoreName + "8877665544332211");
  EXPECT_EQ(rig.FreeBlocks(), kUsableSlots - 1);
  EXPECT_EQ(rig.DataBlock(1), HexOf(bytes) + std::string(2 * 56, '0'));
  EXPECT_EQ(status::kOk, rig.SetData("", "n", 0, bytes));
  EXPECT_EQ(status::kOk, rig.SetData("", "n", 1, "x"));
  EXPECT_EQ(rig.FreeBlocks(), kUsableSlots - 2);
  EXPECT_EQ(status::kOk, rig.Delete("", "n"));
  EXPECT_EQ(rig.FreeBlocks(), kUsableSlots - 2);
}

TEST(TernaryRegistryValueWrites, ANumberOfFewerBytesIsFilledWithZeros) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.CreateData("", "n", 0, "\x01\x02\x03"));
  EXPECT_EQ("08000040", rig.Hex(kValueArea + 52 + 8, 4));
  EXPECT_EQ("0102030000000000", rig.Hex(kValueArea + 52 + 44, 8));
  ASSERT_EQ(status::kOk, rig.CreateData("", "m", 0, "123456789ab"));  // of more, eight count
  EXPECT_EQ("08000040", rig.Hex(kValueArea + 52 * 2 + 8, 4));
  EXPECT_EQ("3132333435363738", rig.Hex(kValueArea + 52 * 2 + 44, 8));
}

TEST(TernaryRegistryValueWrites, SettingANumberKeepsTheUpperHalfOfTheOldOne) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.CreateNumber("", "n", 0x1122334455667788));
  ASSERT_EQ(status::kOk, rig.SetData("", "n", 0, "\x01\x02\x03\x04\x05\x06\x07\x08"));
  EXPECT_EQ("0102030444332211", rig.Hex(kValueArea + 52 + 44, 8));
  EXPECT_EQ("08000040", rig.Hex(kValueArea + 52 + 8, 4));
  EXPECT_EQ(kUsableSlots, rig.FreeBlocks());
}

TEST(TernaryRegistryValueWrites, ANumberKeepsTheSizeItWasSetWith) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.CreateNumber("", "n", 0x1122334455667788));
  ASSERT_EQ(status::kOk, rig.SetData("", "n", 0, "\x34\x12"));
  EXPECT_EQ("02000040", rig.Hex(kValueArea + 52 + 8, 4));
  EXPECT_EQ("0 type 0: 3412", rig.Get("", "n"));
  ASSERT_EQ(status::kOk, rig.SetData("", "n", 0, Pattern(12)));
  EXPECT_EQ("0 type 0: 01080f160000000000000000", rig.Get("", "n"));
}

TEST(TernaryRegistryValueWrites, SettingAnUnsetValueSetsIt) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.tree.CreateValue(kAdmin, nullptr, "", "n", 0, false));
  ASSERT_EQ(status::kOk, rig.SetData("", "n", 4, "abc"));
  EXPECT_EQ(rig.ValueNode(1),
            "0000000000000000"
            "03000064"
            "6e" +
                kNoMoreName + "0001000000000000");
  EXPECT_EQ("0 type 4: 616263", rig.Get("", "n"));
}

TEST(TernaryRegistryValueWrites, SetValueMissesAMissingName) {
  FileTreeRig rig;
  EXPECT_EQ(status::kNotFound, rig.SetData("", "n", 1, "x"));
  ASSERT_EQ(status::kOk, rig.CreateNumber("", "n", 1));
  EXPECT_EQ(status::kNotFound, rig.SetData("", "m", 1, "x"));
  EXPECT_EQ(kUsableSlots, rig.FreeBlocks());
}

TEST(TernaryRegistryValueWrites, DeletingAValueKeepsItsBlocksInUse) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.CreateData("", "n", 1, Pattern(1024)));
  EXPECT_EQ(status::kOk, rig.Delete("", "n"));
  EXPECT_EQ(rig.FreeBlocks(), kUsableSlots - 16);
  EXPECT_EQ(kUsableSlots, rig.FreeValues());
}

TEST(TernaryRegistryValueWrites, DeletingTakesAValueOutOfTheChainWhereverItStands) {
  FileTreeRig rig;
  for (const char* name : {"a", "b", "c", "d"})
    ASSERT_EQ(status::kOk, rig.CreateNumber("", name, 1));
  EXPECT_EQ(status::kOk, rig.Delete("", "b"));  // in the middle
  EXPECT_EQ(0x100u, rig.Word(kValueArea + 52 * 3));
  EXPECT_EQ("000400000300", rig.Hex(kKeyArea + 24, 6));
  EXPECT_EQ(status::kOk, rig.Delete("", "d"));  // the first
  EXPECT_EQ("000300000200", rig.Hex(kKeyArea + 24, 6));
  EXPECT_EQ(status::kOk, rig.Delete("", "a"));  // the last
  EXPECT_EQ(0u, rig.Word(kValueArea + 52 * 3));
  EXPECT_EQ("000300000100", rig.Hex(kKeyArea + 24, 6));
  EXPECT_EQ("0 type 0: 0100000000000000", rig.Get("", "c"));
  EXPECT_EQ(status::kOk, rig.Delete("", "c"));
  EXPECT_EQ(
      "0000000000005f02"
      "ffff000000000000"
      "0000000000000000",
      rig.KeyNode(1));
  EXPECT_EQ(kUsableSlots, rig.FreeValues());
  ASSERT_EQ(status::kOk, rig.CreateNumber("", "again", 1));
  EXPECT_EQ(0x300u, rig.Word(kKeyArea + 24));  // the slot given back last
}

TEST(TernaryRegistryValueWrites, DeletingMissesWhatIsNotThere) {
  FileTreeRig rig;
  EXPECT_EQ(status::kNotFound, rig.Delete("", "n"));  // no values at all
  ASSERT_EQ(status::kOk, rig.CreateNumber("", "n", 1));
  EXPECT_EQ(status::kNotFound, rig.Delete("", "m"));
  EXPECT_EQ("000100000100", rig.Hex(kKeyArea + 24, 6));
}

TEST(TernaryRegistryValueWrites, ACountThatIsZeroAlreadyIsNotLowered) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.CreateNumber("", "n", 1));
  rig.Patch(kKeyArea + 24 + 4, "0000");
  EXPECT_EQ(status::kOk, rig.Delete("", "n"));
  EXPECT_EQ("000000000000", rig.Hex(kKeyArea + 24, 6));
}

}  // namespace

}  // namespace tamu::registry
