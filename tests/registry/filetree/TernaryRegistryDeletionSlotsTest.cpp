// Deleting keys: which slots come back, and in which order.
#include "tests/registry/filetree/KeyTesting.h"

namespace tamu::registry {

namespace {

TEST(FileTreeDeletion, DeletingAKeyKeepsTheBlocksOfItsValuesInUse) {
  FileTreeRig rig;
  ASSERT_EQ(rig.Create("a"), 0u);
  ASSERT_EQ(rig.Create("a/b"), 0u);
  ASSERT_EQ(rig.CreateData("a", "v", 1, Pattern(100)), 0u);  // blocks 1 and 2
  ASSERT_EQ(rig.CreateData("a/b", "v", 1, "x"), 0u);         // block 3
  const std::string table = rig.Hex(kDataTable, 32 + 4 * 365);
  const std::string blocks = rig.DataBlock(1) + rig.DataBlock(2) + rig.DataBlock(3);
  EXPECT_EQ(DeleteKey(rig, "a"), 0u);
  EXPECT_EQ(FreeSlots(rig), "362 363 364 361");
  EXPECT_EQ(rig.Hex(kDataTable, 32 + 4 * 365), table);
  EXPECT_EQ(rig.DataBlock(1) + rig.DataBlock(2) + rig.DataBlock(3), blocks);
  ASSERT_EQ(rig.CreateData("", "new", 1, "y"), 0u);
  EXPECT_EQ(rig.DataBlock(4).substr(0, 2), "79");
}

// What the links of a node lead to comes back before it, lo, hi, equal and child in this order; a
// key's values from the newest on. The slot given back last is handed out first.
TEST(FileTreeDeletion, SlotsComeBackInTheOrderOfTheTree) {
  FileTreeRig rig;
  CreateSixKeys(rig);
  for (const char* name : {"1", "2", "3"}) ASSERT_EQ(rig.CreateNumber("a/m", name, 1), 0u);
  ASSERT_EQ(rig.CreateNumber("a/f", "4", 1), 0u);
  for (const char* name : {"5", "6"}) ASSERT_EQ(rig.CreateNumber("a", name, 1), 0u);
  EXPECT_EQ(DeleteKey(rig, "a"), 0u);
  // Nodes f, t, mn, x, m, which are 4, 5, 6, 7, 3.
  EXPECT_EQ(Entries(rig, kStringTable, 9),
            "03000000 00000000 00000000 07000000 08000000 04000000 05000000 06000000 09000000");
  // Their keys, and then that of "a": 4, 5, 6, 7, 3, 2.
  EXPECT_EQ(Entries(rig, kKeyTable, 9),
            "02000000 00000000 03000000 07000000 08000000 04000000 05000000 06000000 09000000");
  // The values of f: 4; of m: 3, 2, 1; of "a": 6, 5.
  EXPECT_EQ(Entries(rig, kValueTable, 8),
            "05000000 02000000 03000000 04000000 07000000 06000000 01000000 08000000");
  EXPECT_EQ(FreeSlots(rig), "362 363 364 364");

  ASSERT_EQ(rig.Create("b"), 0u);
  EXPECT_EQ(rig.KeyOf("b"), 0x200u);
  ASSERT_EQ(rig.Create("c"), 0u);
  EXPECT_EQ(rig.KeyOf("c"), 0x300u);
  ASSERT_EQ(rig.CreateNumber("c", "n", 1), 0u);
  EXPECT_EQ(rig.Hex(kKeyArea + 24 * 3, 6), "000500000100");
  EXPECT_EQ(StructureFindings(rig.path), "");
}

TEST(FileTreeDeletion, ADeepTreeComesBackFromItsLeaves) {
  FileTreeRig rig;
  // 3 is "m", its lo 4 is "f" with a lo 5, an equal 6 and a child 7; its hi 8 is "t" with a
  // child 9.
  for (const char* key : {"a", "a/m", "a/f", "a/b", "a/fg", "a/f/x", "a/t", "a/t/y"}) {
    ASSERT_EQ(rig.Create(key), 0u) << key;
  }
  EXPECT_EQ(DeleteKey(rig, "a"), 0u);
  // 5, 6, 7, 4, 9, 8, 3
  EXPECT_EQ(Entries(rig, kStringTable, 11),
            "03000000 00000000 00000000 08000000 07000000 0a000000 05000000 06000000 09000000 "
            "04000000 0b000000");
  EXPECT_EQ(Entries(rig, kKeyTable, 11),
            "02000000 00000000 03000000 08000000 07000000 0a000000 05000000 06000000 09000000 "
            "04000000 0b000000");
}

TEST(FileTreeDeletion, ALongNameOfASubKeyComesBackWhole) {
  FileTreeRig rig;
  ASSERT_EQ(rig.Create("a"), 0u);
  ASSERT_EQ(rig.Create("a/" + std::string(200, 'x')), 0u);  // 12 nodes
  ASSERT_EQ(rig.Create("a/" + std::string(50, 'x') + "y"), 0u);
  EXPECT_LE(rig.FreeStrings(), 350u);
  EXPECT_EQ(DeleteKey(rig, "a"), 0u);
  EXPECT_EQ(FreeSlots(rig), "362 363 364 364");
  EXPECT_EQ(StructureFindings(rig.path), "");
}

TEST(FileTreeDeletion, KeysBelowAreDeletedInEveryTable) {
  FileTreeRig rig;
  ASSERT_EQ(rig.Create("a"), 0u);
  for (char first = 'A'; first < 'A' + 20; ++first) {
    for (char second = 'A'; second < 'A' + 20; ++second) {
      const std::string key = std::string("a/") + first + "/" + second;
      if (second == 'A') {
        ASSERT_EQ(rig.Create(std::string("a/") + first), 0u);
      }
      ASSERT_EQ(rig.Create(key), 0u);
      ASSERT_EQ(rig.CreateNumber(key, "n", 1), 0u);
    }
  }
  EXPECT_EQ(CountSlots(rig.path).values.tables, 2u);
  EXPECT_EQ(DeleteKey(rig, "a"), 0u);
  const SlotCounts counts = CountSlots(rig.path);
  EXPECT_EQ(counts.strings.used, 2u);
  EXPECT_EQ(counts.strings.free, 364u + 499 - 2);
  EXPECT_EQ(counts.keys.used, 1u);
  EXPECT_EQ(counts.keys.free, 364u + 499 - 1);
  EXPECT_EQ(counts.values.used, 0u);
  EXPECT_EQ(counts.values.free, 364u + 499);
  EXPECT_EQ(StructureFindings(rig.path), "");
}

TEST(FileTreeDeletion, SlotsOfOlderTablesAreNotUsedAgain) {
  FileTreeRig rig;
  ASSERT_EQ(rig.Create("a"), 0u);
  for (unsigned int i = 0; i < 364; ++i) ASSERT_EQ(rig.CreateNumber("a", "n", i), 0u);
  ASSERT_EQ(rig.CreateNumber("", "n", 1), 0u);  // the first of a new table
  EXPECT_EQ(DeleteKey(rig, "a"), 0u);
  EXPECT_EQ(rig.FreeValues(), 364u);
  ASSERT_EQ(rig.CreateNumber("", "o", 1), 0u);
  EXPECT_EQ(rig.Hex(kKeyArea + 24, 4), "01020000");  // slot 2 of table 1
  EXPECT_EQ(rig.FreeValues(), 364u);
  EXPECT_EQ(StructureFindings(rig.path), "");
}

TEST(FileTreeDeletion, KeysComeAndGoWithoutLoss) {
  FileTreeRig rig;
  ASSERT_EQ(rig.Create("z"), 0u);
  for (unsigned int round = 0; round < 50; ++round) {
    CreateSixKeys(rig);
    ASSERT_EQ(rig.CreateNumber("a/m/x", "n", round), 0u);
    ASSERT_EQ(DeleteKey(rig, "a"), 0u);
    EXPECT_EQ(FreeSlots(rig), "361 362 364 364");
  }
  EXPECT_EQ(StructureFindings(rig.path), "");
}

TEST(FileTreeDeletion, TheValuesOfAKeyComeBackFromTheNewestOn) {
  FileTreeRig rig;
  for (const char* name : {"1", "2", "3"}) ASSERT_EQ(rig.CreateNumber("", name, 1), 0u);
  const std::string key = rig.KeyNode(1);
  EXPECT_EQ(rig.tree.DeleteAllValues(0, 0x100), 0u);
  EXPECT_EQ(Entries(rig, kValueTable, 5), "01000000 02000000 03000000 04000000 05000000");
  EXPECT_EQ(rig.FreeValues(), 364u);
  EXPECT_EQ(rig.KeyNode(1), key);  // the caller's to change
  EXPECT_EQ(rig.FreeKeys(), 363u);
}

TEST(FileTreeDeletion, ASingleKeyComesBackWithItsValues) {
  FileTreeRig rig;
  unsigned int key = 0;
  ASSERT_EQ(rig.tree.CreateKeyNode(0, kUser, 0x0F, 0, &key, false, false), 0u);
  ASSERT_EQ(key, 0x200u);
  for (const char* name : {"1", "2"}) ASSERT_EQ(rig.CreateNumber("", name, 1), 0u);
  rig.PatchWord(kKeyArea + 24 * 2, 0x200);  // the root's values are this key's
  rig.PatchWord(kKeyArea + 24, 0);
  EXPECT_EQ(rig.tree.DeleteSingleKey(0, key), 0u);
  EXPECT_EQ(FreeSlots(rig), "363 363 364 364");
  EXPECT_EQ(Entries(rig, kKeyTable, 4), "02000000 00000000 03000000 04000000");
  EXPECT_EQ(Entries(rig, kValueTable, 4), "01000000 02000000 03000000 04000000");
  const std::string before = rig.Contents();
  EXPECT_EQ(rig.tree.DeleteSingleKey(0, key), 59u);  // free already
  EXPECT_EQ(rig.Contents(), before);
}

// The record of a free slot still names what the key had, which others have by now.
TEST(FileTreeDeletion, AFreeKeyGivesNothingBack) {
  FileTreeRig rig;
  Create(rig, {"a", "a/b"});
  for (const char* name : {"1", "2"}) ASSERT_EQ(rig.CreateNumber("a/b", name, 1), 0u);
  ASSERT_EQ(DeleteKey(rig, "a/b"), 0u);
  for (const char* name : {"3", "4"}) ASSERT_EQ(rig.CreateNumber("", name, 1), 0u);
  ASSERT_EQ(rig.Hex(kKeyArea + 24 * 3, 4), "00020000");
  ASSERT_EQ(FreeSlots(rig), "361 362 362 364");
  const std::string before = rig.Contents();
  EXPECT_EQ(rig.tree.DeleteSingleKey(0, 0x300), 59u);
  EXPECT_TRUE(rig.Contents() == before);
  EXPECT_EQ(rig.tree.DeleteAllValues(0, 0x300), 59u);
  EXPECT_TRUE(rig.Contents() == before);
  EXPECT_EQ(ListedValues(rig, ""), "0: 4 3");
  EXPECT_EQ(StructureFindings(rig.path), "");
}

TEST(FileTreeDeletion, ASubtreeComesBackWithTheStatusOfItsFirstNode) {
  SharedStore shared;
  unsigned int first = 0;
  unsigned int key = 0;
  ASSERT_EQ(shared.tree.CreateKeyNode(0, kUser, 0x0F, 0, &key, false, false), 0u);
  ASSERT_EQ(shared.tree.CreateStringNode(0, std::string(40, 'x').c_str(), &first, key), 0u);
  ASSERT_EQ(first, 0x200u);  // and 300, 400
  EXPECT_EQ(shared.tree.RecursiveDeleteKeyTree(0, first), 0u);
  const auto word = [&](unsigned int offset) {
    return storetests::U32At(FileBytes(shared.path, offset, 4), 0);
  };
  EXPECT_EQ(word(kStringTable + 28), 363u);
  EXPECT_EQ(word(kStringTable + 32), 2u);
  EXPECT_EQ(word(kStringTable + 32 + 4 * 2), 3u);
  EXPECT_EQ(word(kStringTable + 32 + 4 * 3), 4u);
  EXPECT_EQ(word(kStringTable + 32 + 4 * 4), 5u);
  EXPECT_EQ(word(kKeyTable + 28), 363u);

  ASSERT_EQ(shared.tree.CreateStringNode(0, std::string(40, 'x').c_str(), &first, 0), 0u);
  ASSERT_EQ(first, 0x200u);
  ASSERT_EQ(shared.store.ReleaseNode(0, first, nullptr), 0u);
  EXPECT_EQ(shared.tree.RecursiveDeleteKeyTree(0, first), 59u);
  EXPECT_EQ(word(kStringTable + 28), 361u);  // the links of a free node are not followed
  EXPECT_EQ(storetests::FreeListFindings(FileBytes(shared.path, 0, 100000)), "");
}

TEST(FileTreeDeletion, NothingIsGivenBackForTheIdZero) {
  FileTreeRig rig;
  const std::string before = rig.Contents();
  EXPECT_EQ(rig.tree.DeleteAllValues(0, 0), 0u);
  EXPECT_EQ(rig.tree.DeleteSingleKey(0, 0), 22u);
  EXPECT_EQ(rig.tree.RecursiveDeleteKeyTree(0, 0), 22u);
  EXPECT_EQ(rig.Contents(), before);
}

}  // namespace

}  // namespace tamu::registry
