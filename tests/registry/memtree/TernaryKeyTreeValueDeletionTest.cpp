// Deleting values through a handle, and the names by which they are found.
#include "tests/registry/memtree/LoadedWriting.h"

namespace tamu::registry {

namespace {

using TernaryKeyTreeValueDeletionTest = LoadedWriting;

// The numbers "a" to "d" of the key "k", which are values 1 to 4, the newest first.
void CreateFour(LoadedTreeRig& rig, TernaryHandle* root) {
  for (const char* name : {"a", "b", "c", "d"}) {
    ASSERT_EQ(status::kOk, rig.loaded.CreateValue(kAdmin, root, "k", name, 1, true)) << name;
  }
}

TEST_F(TernaryKeyTreeValueDeletionTest, DeletingTheFirstWritesTheKey) {
  Start({"k"});
  CreateFour(rig, root);
  ASSERT_EQ(status::kOk, DeleteValue("k", "d"));
  EXPECT_EQ(
      "0003000003000f00"
      "ffff000000000000"
      "0000000000000000",
      KeyNode(2));
  EXPECT_EQ("04000000 00000000 00000000 00000000 05000000 06000000 ", Entries(kValueTable, 6));
  EXPECT_EQ("362 362 361 364", FreeSlots());
  EXPECT_EQ("2", GetEverywhere("k", "d"));
  EXPECT_EQ("0: c b a", ListedValues("k"));
  ExpectSound(rig.path);
}

// The value before it, and not the key.
TEST_F(TernaryKeyTreeValueDeletionTest, DeletingAnotherWritesTheValueBeforeIt) {
  Start({"k"});
  CreateFour(rig, root);
  const std::string key = KeyNode(2);
  EXPECT_EQ("000400000400", key.substr(0, 12));
  ASSERT_EQ(status::kOk, DeleteValue("k", "b"));  // in the middle
  EXPECT_EQ(ValueNode(3),
            "0001000000000000"
            "08000040"
            "63" +
                std::string(2 * 31, '0') + "0100000000000000");
  ASSERT_EQ(status::kOk, DeleteValue("k", "a"));  // the last
  EXPECT_EQ(0u, Word(InValue(3, 0)));
  EXPECT_EQ(KeyNode(2), key);
  EXPECT_EQ("01000000 02000000 05000000 00000000 00000000 06000000 ", Entries(kValueTable, 6));
  EXPECT_EQ("362 362 362 364", FreeSlots());
  for (const char* name : {"a", "b"}) EXPECT_EQ("2", GetEverywhere("k", name));
  for (const char* name : {"c", "d"}) {
    EXPECT_EQ("type 0: 0100000000000000", GetEverywhere("k", name));
  }
  ASSERT_EQ(status::kOk, CreateNumber("k", "new", 2));
  EXPECT_EQ(0x100u, Word(InKey(2, 0)));  // the slot given back last
}

TEST_F(TernaryKeyTreeValueDeletionTest, DeletingAllLeavesAnEmptyKey) {
  Start({"k"});
  CreateFour(rig, root);
  for (const char* name : {"d", "c", "b", "a"}) ASSERT_EQ(status::kOk, DeleteValue("k", name));
  EXPECT_EQ(
      "0000000000000f00"
      "ffff000000000000"
      "0000000000000000",
      KeyNode(2));
  EXPECT_EQ("362 362 364 364", FreeSlots());
  EXPECT_EQ("75:", ListedValues("k"));
  EXPECT_EQ(status::kNotFound, DeleteValue("k", "a"));
  ExpectSound(rig.path);
}

TEST_F(TernaryKeyTreeValueDeletionTest, TheStoredCountFollowsTheFirstValueAlone) {
  Start({"k"});
  CreateFour(rig, root);
  ASSERT_EQ(status::kOk, DeleteValue("k", "b"));
  EXPECT_EQ("0400", Hex(InKey(2, 4), 2));
  EXPECT_EQ("75:", ListedValues("k", 3)) << "in memory there are three";
  EXPECT_EQ("key 0x200: counts 4 values, has 3\n", StructureFindings(rig.path));
  Reload();
  EXPECT_EQ("0: d c a", ListedValues("k"));
  EXPECT_EQ("0: a", ListedValues("k", 2));
  EXPECT_EQ("0:", ListedValues("k", 3));
  EXPECT_EQ("75:", ListedValues("k", 4));
  KeyInfo info = {};
  ASSERT_EQ(status::kOk, rig.loaded.GetKeyInfo(kAdmin, root, "k", &info));
  EXPECT_EQ(3u, info.valueCount);
  ASSERT_EQ(status::kOk, CreateNumber("k", "e", 1));
  EXPECT_EQ("0500", Hex(InKey(2, 4), 2));
  ASSERT_EQ(status::kOk, DeleteValue("k", "e"));
  EXPECT_EQ("0400", Hex(InKey(2, 4), 2));
}

TEST_F(TernaryKeyTreeValueDeletionTest, TheCountIsRightWhenTheKeyIsWrittenNext) {
  Start({"k"});
  CreateFour(rig, root);
  ASSERT_EQ(status::kOk, DeleteValue("k", "a"));
  EXPECT_EQ("0400", Hex(InKey(2, 4), 2));
  ASSERT_EQ(status::kOk, rig.loaded.SetDefaultValue(kAdmin, root, "k", 7, false));
  EXPECT_EQ("0300", Hex(InKey(2, 4), 2));
  ExpectSound(rig.path);
}

TEST_F(TernaryKeyTreeValueDeletionTest, DeletingAValueKeepsItsBlocksInUse) {
  Start({"k"});
  ASSERT_EQ(status::kOk, CreateData("k", "n", 1, Pattern(1024)));
  const std::string blocks = Hex(kDataTable, 32 + 4 * 365) + Hex(kDataArea, 64 * 20);
  ASSERT_EQ(status::kOk, DeleteValue("k", "n"));
  EXPECT_EQ("362 362 364 348", FreeSlots());
  EXPECT_EQ(Hex(kDataTable, 32 + 4 * 365) + Hex(kDataArea, 64 * 20), blocks);
  ASSERT_EQ(status::kOk, CreateData("k", "n", 1, "x"));
  EXPECT_EQ(0x1100u, Word(InValue(1, 44)));  // block 17
}

TEST_F(TernaryKeyTreeValueDeletionTest, ANumberCreatedFromAValueTakesBlocksThatNobodyFrees) {
  Start({"k"});
  const std::string bytes = "\x88\x77\x66\x55\x44\x33\x22\x11";
  ASSERT_EQ(status::kOk, CreateData("k", "n", 0, bytes));
  EXPECT_EQ(ValueNode(1),
            "0000000000000000"
            "08000040"
            "6e" +
                std::string(2 * 31, '0') + "8877665544332211");
  EXPECT_EQ("362 362 363 363", FreeSlots());
  EXPECT_EQ(DataBlock(1), HexOf(bytes) + std::string(2 * 56, '0'));
  EXPECT_EQ(status::kOk, SetData("k", "n", 0, bytes));
  EXPECT_EQ("362 362 363 363", FreeSlots());
  EXPECT_EQ(status::kOk, SetData("k", "n", 1, "x"));
  EXPECT_EQ("362 362 363 362", FreeSlots());
  ASSERT_EQ(status::kOk, CreateData("k", "m", 0, Pattern(1000)));
  EXPECT_EQ("362 362 362 346", FreeSlots());
  EXPECT_EQ(status::kOk, DeleteValue("k", "m"));
  EXPECT_EQ("362 362 363 346", FreeSlots());
  EXPECT_EQ(status::kOk, DeleteKey("k"));
  EXPECT_EQ("362 363 364 346", FreeSlots());
}

TEST_F(TernaryKeyTreeValueDeletionTest, ANameIsCutTo31Characters) {
  Start({"k"});
  const std::string name = "0123456789abcdefghijklmnopqrstuvwxyzABCD";  // 40 characters
  const std::string cut = name.substr(0, 31);
  for (unsigned int length : {31u, 32u, 40u}) {
    ASSERT_EQ(status::kOk, CreateNumber("k", name.substr(0, length).c_str(), length));
  }
  for (unsigned int slot : {1u, 2u, 3u}) EXPECT_EQ(Hex(InValue(slot, 12), 32), HexOf(cut) + "00");
  EXPECT_EQ(ListedValues("k"), "0: " + cut + " " + cut + " " + cut);
  EXPECT_EQ("type 0: 2800000000000000", GetEverywhere("k", cut.c_str()));
  // The whole of a name is looked for, so the longer ones are not found.
  for (unsigned int length : {30u, 32u, 40u}) {
    const std::string other = name.substr(0, length);
    EXPECT_EQ("2", GetEverywhere("k", other.c_str())) << length;
    EXPECT_EQ(status::kNotFound, SetData("k", other.c_str(), 1, "x")) << length;
    EXPECT_EQ(status::kNotFound, DeleteValue("k", other.c_str())) << length;
  }
  ASSERT_EQ(status::kOk, SetData("k", cut.c_str(), 1, "x"));
  EXPECT_EQ(Hex(InValue(3, 12), 32), HexOf(cut) + "00");
  EXPECT_EQ("type 1: 78", GetEverywhere("k", cut.c_str()));
  ASSERT_EQ(status::kOk, DeleteValue("k", cut.c_str()));
  EXPECT_EQ("type 0: 2000000000000000", GetEverywhere("k", cut.c_str()));
  ExpectSound(rig.path);
}

TEST_F(TernaryKeyTreeValueDeletionTest, AnEmptyNameIsOneToo) {
  Start({"k"});
  ASSERT_EQ(status::kOk, CreateNumber("k", "", 1));
  EXPECT_EQ(Hex(InValue(1, 12), 32), std::string(2 * 32, '0'));
  ASSERT_EQ(status::kOk, SetData("k", "", 1, "x"));
  EXPECT_EQ("type 1: 78", GetEverywhere("k", ""));
  EXPECT_EQ(status::kNotFound, DeleteValue("k", "\x80"));
  EXPECT_EQ(status::kOk, DeleteValue("k", ""));
  EXPECT_EQ("2", GetEverywhere("k", ""));
}

TEST_F(TernaryKeyTreeValueDeletionTest, NamesOfAnyBytesAreKept) {
  Start({"k"});
  ASSERT_EQ(status::kOk, CreateNumber("k", "\xff\x80/\x01", 1));
  EXPECT_EQ("ff802f010000", Hex(InValue(1, 12), 6));
  EXPECT_EQ("type 0: 0100000000000000", GetEverywhere("k", "\xff\x80/\x01"));
}

// The 365th is the first of an appended table.
TEST_F(TernaryKeyTreeValueDeletionTest, ValuesGoOnInASecondTable) {
  Start({"k"});
  for (unsigned int i = 1; i <= 366; ++i) {
    ASSERT_EQ(status::kOk, CreateNumber("k", std::to_string(i).c_str(), i)) << i;
  }
  EXPECT_EQ(0x201u, Word(InKey(2, 0)));
  EXPECT_EQ("6e01", Hex(InKey(2, 4), 2));
  EXPECT_EQ("type 0: 6e01000000000000", GetEverywhere("k", "366"));
  EXPECT_EQ("type 0: 6d01000000000000", GetEverywhere("k", "365"));
  EXPECT_EQ("type 0: 6c01000000000000", GetEverywhere("k", "364"));
  ASSERT_EQ(status::kOk, DeleteValue("k", "365"));
  ASSERT_EQ(status::kOk, DeleteValue("k", "366"));
  EXPECT_EQ(0x16C00u, Word(InKey(2, 0)));
  EXPECT_EQ("type 0: 0100000000000000", GetEverywhere("k", "1"));
  ExpectSound(rig.path);
}

}  // namespace

}  // namespace tamu::registry
