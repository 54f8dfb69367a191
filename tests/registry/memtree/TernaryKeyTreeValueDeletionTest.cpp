// Deleting values through a handle, and the names by which they are found.
#include "tests/registry/memtree/LoadedWriting.h"

namespace tamu::registry {

namespace {

using LoadedValueWrites = LoadedWriting;

// The numbers "a" to "d" of the key "k", which are values 1 to 4, the newest first.
void CreateFour(LoadedTreeRig& rig, TernaryHandle* root) {
  for (const char* name : {"a", "b", "c", "d"}) {
    ASSERT_EQ(rig.loaded.CreateValue(kAdmin, root, "k", name, 1, true), 0u) << name;
  }
}

TEST_F(LoadedValueWrites, DeletingTheFirstWritesTheKey) {
  Start({"k"});
  CreateFour(rig, root);
  ASSERT_EQ(DeleteValue("k", "d"), 0u);
  EXPECT_EQ(KeyNode(2),
            "0003000003000f00"
            "ffff000000000000"
            "0000000000000000");
  EXPECT_EQ(Entries(kValueTable, 6), "04000000 00000000 00000000 00000000 05000000 06000000 ");
  EXPECT_EQ(FreeSlots(), "362 362 361 364");
  EXPECT_EQ(GetEverywhere("k", "d"), "2");
  EXPECT_EQ(ListedValues("k"), "0: c b a");
  ExpectSound(rig.path);
}

// The value before it, and not the key.
TEST_F(LoadedValueWrites, DeletingAnotherWritesTheValueBeforeIt) {
  Start({"k"});
  CreateFour(rig, root);
  const std::string key = KeyNode(2);
  EXPECT_EQ(key.substr(0, 12), "000400000400");
  ASSERT_EQ(DeleteValue("k", "b"), 0u);  // in the middle
  EXPECT_EQ(ValueNode(3),
            "0001000000000000"
            "08000040"
            "63" +
                std::string(2 * 31, '0') + "0100000000000000");
  ASSERT_EQ(DeleteValue("k", "a"), 0u);  // the last
  EXPECT_EQ(Word(InValue(3, 0)), 0u);
  EXPECT_EQ(KeyNode(2), key);
  EXPECT_EQ(Entries(kValueTable, 6), "01000000 02000000 05000000 00000000 00000000 06000000 ");
  EXPECT_EQ(FreeSlots(), "362 362 362 364");
  for (const char* name : {"a", "b"}) EXPECT_EQ(GetEverywhere("k", name), "2");
  for (const char* name : {"c", "d"}) {
    EXPECT_EQ(GetEverywhere("k", name), "type 0: 0100000000000000");
  }
  ASSERT_EQ(CreateNumber("k", "new", 2), 0u);
  EXPECT_EQ(Word(InKey(2, 0)), 0x100u);  // the slot given back last
}

TEST_F(LoadedValueWrites, DeletingAllLeavesAnEmptyKey) {
  Start({"k"});
  CreateFour(rig, root);
  for (const char* name : {"d", "c", "b", "a"}) ASSERT_EQ(DeleteValue("k", name), 0u);
  EXPECT_EQ(KeyNode(2),
            "0000000000000f00"
            "ffff000000000000"
            "0000000000000000");
  EXPECT_EQ(FreeSlots(), "362 362 364 364");
  EXPECT_EQ(ListedValues("k"), "75:");
  EXPECT_EQ(DeleteValue("k", "a"), 2u);
  ExpectSound(rig.path);
}

TEST_F(LoadedValueWrites, TheStoredCountFollowsTheFirstValueAlone) {
  Start({"k"});
  CreateFour(rig, root);
  ASSERT_EQ(DeleteValue("k", "b"), 0u);
  EXPECT_EQ(Hex(InKey(2, 4), 2), "0400");
  EXPECT_EQ(ListedValues("k", 3), "75:") << "in memory there are three";
  EXPECT_EQ(StructureFindings(rig.path), "key 0x200: counts 4 values, has 3\n");
  Reload();
  EXPECT_EQ(ListedValues("k"), "0: d c a");
  EXPECT_EQ(ListedValues("k", 2), "0: a");
  EXPECT_EQ(ListedValues("k", 3), "0:");
  EXPECT_EQ(ListedValues("k", 4), "75:");
  KeyInfo info = {};
  ASSERT_EQ(rig.loaded.GetKeyInfo(kAdmin, root, "k", &info), 0u);
  EXPECT_EQ(info.valueCount, 3u);
  ASSERT_EQ(CreateNumber("k", "e", 1), 0u);
  EXPECT_EQ(Hex(InKey(2, 4), 2), "0500");
  ASSERT_EQ(DeleteValue("k", "e"), 0u);
  EXPECT_EQ(Hex(InKey(2, 4), 2), "0400");
}

TEST_F(LoadedValueWrites, TheCountIsRightWhenTheKeyIsWrittenNext) {
  Start({"k"});
  CreateFour(rig, root);
  ASSERT_EQ(DeleteValue("k", "a"), 0u);
  EXPECT_EQ(Hex(InKey(2, 4), 2), "0400");
  ASSERT_EQ(rig.loaded.SetDefaultValue(kAdmin, root, "k", 7, false), 0u);
  EXPECT_EQ(Hex(InKey(2, 4), 2), "0300");
  ExpectSound(rig.path);
}

TEST_F(LoadedValueWrites, DeletingAValueKeepsItsBlocksInUse) {
  Start({"k"});
  ASSERT_EQ(CreateData("k", "n", 1, Pattern(1024)), 0u);
  const std::string blocks = Hex(kDataTable, 32 + 4 * 365) + Hex(kDataArea, 64 * 20);
  ASSERT_EQ(DeleteValue("k", "n"), 0u);
  EXPECT_EQ(FreeSlots(), "362 362 364 348");
  EXPECT_EQ(Hex(kDataTable, 32 + 4 * 365) + Hex(kDataArea, 64 * 20), blocks);
  ASSERT_EQ(CreateData("k", "n", 1, "x"), 0u);
  EXPECT_EQ(Word(InValue(1, 44)), 0x1100u);  // block 17
}

TEST_F(LoadedValueWrites, ANumberCreatedFromAValueTakesBlocksThatNobodyFrees) {
  Start({"k"});
  const std::string bytes = "\x88\x77\x66\x55\x44\x33\x22\x11";
  ASSERT_EQ(CreateData("k", "n", 0, bytes), 0u);
  EXPECT_EQ(ValueNode(1),
            "0000000000000000"
            "08000040"
            "6e" +
                std::string(2 * 31, '0') + "8877665544332211");
  EXPECT_EQ(FreeSlots(), "362 362 363 363");
  EXPECT_EQ(DataBlock(1), HexOf(bytes) + std::string(2 * 56, '0'));
  EXPECT_EQ(SetData("k", "n", 0, bytes), 0u);
  EXPECT_EQ(FreeSlots(), "362 362 363 363");
  EXPECT_EQ(SetData("k", "n", 1, "x"), 0u);
  EXPECT_EQ(FreeSlots(), "362 362 363 362");
  ASSERT_EQ(CreateData("k", "m", 0, Pattern(1000)), 0u);
  EXPECT_EQ(FreeSlots(), "362 362 362 346");
  EXPECT_EQ(DeleteValue("k", "m"), 0u);
  EXPECT_EQ(FreeSlots(), "362 362 363 346");
  EXPECT_EQ(DeleteKey("k"), 0u);
  EXPECT_EQ(FreeSlots(), "362 363 364 346");
}

TEST_F(LoadedValueWrites, ANameIsCutTo31Characters) {
  Start({"k"});
  const std::string name = "0123456789abcdefghijklmnopqrstuvwxyzABCD";  // 40 characters
  const std::string cut = name.substr(0, 31);
  for (unsigned int length : {31u, 32u, 40u}) {
    ASSERT_EQ(CreateNumber("k", name.substr(0, length).c_str(), length), 0u);
  }
  for (unsigned int slot : {1u, 2u, 3u}) EXPECT_EQ(Hex(InValue(slot, 12), 32), HexOf(cut) + "00");
  EXPECT_EQ(ListedValues("k"), "0: " + cut + " " + cut + " " + cut);
  EXPECT_EQ(GetEverywhere("k", cut.c_str()), "type 0: 2800000000000000");
  // The whole of a name is looked for, so the longer ones are not found.
  for (unsigned int length : {30u, 32u, 40u}) {
    const std::string other = name.substr(0, length);
    EXPECT_EQ(GetEverywhere("k", other.c_str()), "2") << length;
    EXPECT_EQ(SetData("k", other.c_str(), 1, "x"), 2u) << length;
    EXPECT_EQ(DeleteValue("k", other.c_str()), 2u) << length;
  }
  ASSERT_EQ(SetData("k", cut.c_str(), 1, "x"), 0u);
  EXPECT_EQ(Hex(InValue(3, 12), 32), HexOf(cut) + "00");
  EXPECT_EQ(GetEverywhere("k", cut.c_str()), "type 1: 78");
  ASSERT_EQ(DeleteValue("k", cut.c_str()), 0u);
  EXPECT_EQ(GetEverywhere("k", cut.c_str()), "type 0: 2000000000000000");
  ExpectSound(rig.path);
}

TEST_F(LoadedValueWrites, AnEmptyNameIsOneToo) {
  Start({"k"});
  ASSERT_EQ(CreateNumber("k", "", 1), 0u);
  EXPECT_EQ(Hex(InValue(1, 12), 32), std::string(2 * 32, '0'));
  ASSERT_EQ(SetData("k", "", 1, "x"), 0u);
  EXPECT_EQ(GetEverywhere("k", ""), "type 1: 78");
  EXPECT_EQ(DeleteValue("k", "\x80"), 2u);
  EXPECT_EQ(DeleteValue("k", ""), 0u);
  EXPECT_EQ(GetEverywhere("k", ""), "2");
}

TEST_F(LoadedValueWrites, NamesOfAnyBytesAreKept) {
  Start({"k"});
  ASSERT_EQ(CreateNumber("k", "\xff\x80/\x01", 1), 0u);
  EXPECT_EQ(Hex(InValue(1, 12), 6), "ff802f010000");
  EXPECT_EQ(GetEverywhere("k", "\xff\x80/\x01"), "type 0: 0100000000000000");
}

// The 365th is the first of an appended table.
TEST_F(LoadedValueWrites, ValuesGoOnInASecondTable) {
  Start({"k"});
  for (unsigned int i = 1; i <= 366; ++i) {
    ASSERT_EQ(CreateNumber("k", std::to_string(i).c_str(), i), 0u) << i;
  }
  EXPECT_EQ(Word(InKey(2, 0)), 0x201u);
  EXPECT_EQ(Hex(InKey(2, 4), 2), "6e01");
  EXPECT_EQ(GetEverywhere("k", "366"), "type 0: 6e01000000000000");
  EXPECT_EQ(GetEverywhere("k", "365"), "type 0: 6d01000000000000");
  EXPECT_EQ(GetEverywhere("k", "364"), "type 0: 6c01000000000000");
  ASSERT_EQ(DeleteValue("k", "365"), 0u);
  ASSERT_EQ(DeleteValue("k", "366"), 0u);
  EXPECT_EQ(Word(InKey(2, 0)), 0x16C00u);
  EXPECT_EQ(GetEverywhere("k", "1"), "type 0: 0100000000000000");
  ExpectSound(rig.path);
}

}  // namespace

}  // namespace tamu::registry
