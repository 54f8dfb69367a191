// Deleting keys: which slots come back, and in which order.
#include "tests/registry/filetree/KeyTesting.h"
#include "tests/registry/filetree/SharedStore.h"

namespace tamu::registry {

namespace {

TEST(TernaryRegistryDeletionSlots, DeletingAKeyKeepsTheBlocksOfItsValuesInUse) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("a"));
  ASSERT_EQ(status::kOk, rig.Create("a/b"));
  ASSERT_EQ(status::kOk, rig.CreateData("a", "v", 1, Pattern(100)));  // blocks 1 and 2
  ASSERT_EQ(status::kOk, rig.CreateData("a/b", "v", 1, "x"));         // block 3
  const std::string table = rig.Hex(kDataTable, 32 + 4 * 365);
  const std::string blocks = rig.DataBlock(1) + rig.DataBlock(2) + rig.DataBlock(3);
  EXPECT_EQ(status::kOk, DeleteKey(rig, "a"));
  EXPECT_EQ("362 363 364 361", FreeSlots(rig));
  EXPECT_EQ(rig.Hex(kDataTable, 32 + 4 * 365), table);
  EXPECT_EQ(rig.DataBlock(1) + rig.DataBlock(2) + rig.DataBlock(3), blocks);
  ASSERT_EQ(status::kOk, rig.CreateData("", "new", 1, "y"));
  EXPECT_EQ("79", rig.DataBlock(4).substr(0, 2));
}

// What the links of a node lead to comes back before it, lo, hi, equal and child in this order; a
// key's values from the newest on. The slot given back last is handed out first.
TEST(TernaryRegistryDeletionSlots, SlotsComeBackInTheOrderOfTheTree) {
  FileTreeRig rig;
  CreateSixKeys(rig);
  for (const char* name : {"1", "2", "3"}) ASSERT_EQ(status::kOk, rig.CreateNumber("a/m", name, 1));
  ASSERT_EQ(status::kOk, rig.CreateNumber("a/f", "4", 1));
  for (const char* name : {"5", "6"}) ASSERT_EQ(status::kOk, rig.CreateNumber("a", name, 1));
  EXPECT_EQ(status::kOk, DeleteKey(rig, "a"));
  // Nodes f, t, mn, x, m, which are 4, 5, 6, 7, 3.
  EXPECT_EQ("03000000 00000000 00000000 07000000 08000000 04000000 05000000 06000000 09000000",
            Entries(rig, kStringTable, 9));
  // Their keys, and then that of "a": 4, 5, 6, 7, 3, 2.
  EXPECT_EQ("02000000 00000000 03000000 07000000 08000000 04000000 05000000 06000000 09000000",
            Entries(rig, kKeyTable, 9));
  // The values of f: 4; of m: 3, 2, 1; of "a": 6, 5.
  EXPECT_EQ("05000000 02000000 03000000 04000000 07000000 06000000 01000000 08000000",
            Entries(rig, kValueTable, 8));
  EXPECT_EQ("362 363 364 364", FreeSlots(rig));

  ASSERT_EQ(status::kOk, rig.Create("b"));
  EXPECT_EQ(0x200u, rig.KeyOf("b"));
  ASSERT_EQ(status::kOk, rig.Create("c"));
  EXPECT_EQ(0x300u, rig.KeyOf("c"));
  ASSERT_EQ(status::kOk, rig.CreateNumber("c", "n", 1));
  EXPECT_EQ("000500000100", rig.Hex(kKeyArea + 24 * 3, 6));
  EXPECT_EQ("", StructureFindings(rig.path));
}

TEST(TernaryRegistryDeletionSlots, ADeepTreeComesBackFromItsLeaves) {
  FileTreeRig rig;
  // 3 is "m", its lo 4 is "f" with a lo 5, an equal 6 and a child 7; its hi 8 is "t" with a
  // child 9.
  for (const char* key : {"a", "a/m", "a/f", "a/b", "a/fg", "a/f/x", "a/t", "a/t/y"}) {
    ASSERT_EQ(status::kOk, rig.Create(key)) << key;
  }
  EXPECT_EQ(status::kOk, DeleteKey(rig, "a"));
  // 5, 6, 7, 4, 9, 8, 3
  EXPECT_EQ(
      "03000000 00000000 00000000 08000000 07000000 0a000000 05000000 06000000 09000000 "
      "04000000 0b000000",
      Entries(rig, kStringTable, 11));
  EXPECT_EQ(
      "02000000 00000000 03000000 08000000 07000000 0a000000 05000000 06000000 09000000 "
      "04000000 0b000000",
      Entries(rig, kKeyTable, 11));
}

TEST(TernaryRegistryDeletionSlots, ALongNameOfASubKeyComesBackWhole) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("a"));
  ASSERT_EQ(status::kOk, rig.Create("a/" + std::string(200, 'x')));  // 12 nodes
  ASSERT_EQ(status::kOk, rig.Create("a/" + std::string(50, 'x') + "y"));
  EXPECT_LE(rig.FreeStrings(), 350u);
  EXPECT_EQ(status::kOk, DeleteKey(rig, "a"));
  EXPECT_EQ("362 363 364 364", FreeSlots(rig));
  EXPECT_EQ("", StructureFindings(rig.path));
}

TEST(TernaryRegistryDeletionSlots, KeysBelowAreDeletedInEveryTable) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("a"));
  for (char first = 'A'; first < 'A' + 20; ++first) {
    for (char second = 'A'; second < 'A' + 20; ++second) {
      const std::string key = std::string("a/") + first + "/" + second;
      if (second == 'A') {
        ASSERT_EQ(status::kOk, rig.Create(std::string("a/") + first));
      }
      ASSERT_EQ(status::kOk, rig.Create(key));
      ASSERT_EQ(status::kOk, rig.CreateNumber(key, "n", 1));
    }
  }
  EXPECT_EQ(2u, CountSlots(rig.path).values.tables);
  EXPECT_EQ(status::kOk, DeleteKey(rig, "a"));
  const SlotCounts counts = CountSlots(rig.path);
  EXPECT_EQ(2u, counts.strings.used);
  EXPECT_EQ(counts.strings.free, 364u + 499 - 2);
  EXPECT_EQ(1u, counts.keys.used);
  EXPECT_EQ(counts.keys.free, 364u + 499 - 1);
  EXPECT_EQ(0u, counts.values.used);
  EXPECT_EQ(counts.values.free, 364u + 499);
  EXPECT_EQ("", StructureFindings(rig.path));
}

TEST(TernaryRegistryDeletionSlots, SlotsOfOlderTablesAreNotUsedAgain) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("a"));
  for (unsigned int i = 0; i < 364; ++i) ASSERT_EQ(status::kOk, rig.CreateNumber("a", "n", i));
  ASSERT_EQ(status::kOk, rig.CreateNumber("", "n", 1));  // the first of a new table
  EXPECT_EQ(status::kOk, DeleteKey(rig, "a"));
  EXPECT_EQ(364u, rig.FreeValues());
  ASSERT_EQ(status::kOk, rig.CreateNumber("", "o", 1));
  EXPECT_EQ("01020000", rig.Hex(kKeyArea + 24, 4));  // slot 2 of table 1
  EXPECT_EQ(364u, rig.FreeValues());
  EXPECT_EQ("", StructureFindings(rig.path));
}

TEST(TernaryRegistryDeletionSlots, KeysComeAndGoWithoutLoss) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("z"));
  for (unsigned int round = 0; round < 50; ++round) {
    CreateSixKeys(rig);
    ASSERT_EQ(status::kOk, rig.CreateNumber("a/m/x", "n", round));
    ASSERT_EQ(status::kOk, DeleteKey(rig, "a"));
    EXPECT_EQ("361 362 364 364", FreeSlots(rig));
  }
  EXPECT_EQ("", StructureFindings(rig.path));
}

TEST(TernaryRegistryDeletionSlots, TheValuesOfAKeyComeBackFromTheNewestOn) {
  FileTreeRig rig;
  for (const char* name : {"1", "2", "3"}) ASSERT_EQ(status::kOk, rig.CreateNumber("", name, 1));
  const std::string key = rig.KeyNode(1);
  EXPECT_EQ(status::kOk, rig.tree.DeleteAllValues(0, 0x100));
  EXPECT_EQ("01000000 02000000 03000000 04000000 05000000", Entries(rig, kValueTable, 5));
  EXPECT_EQ(364u, rig.FreeValues());
  EXPECT_EQ(rig.KeyNode(1), key);  // the caller's to change
  EXPECT_EQ(363u, rig.FreeKeys());
}

TEST(TernaryRegistryDeletionSlots, ASingleKeyComesBackWithItsValues) {
  FileTreeRig rig;
  unsigned int key = 0;
  ASSERT_EQ(status::kOk, rig.tree.CreateKeyNode(0, kUser, 0x0F, 0, &key, false, false));
  ASSERT_EQ(0x200u, key);
  for (const char* name : {"1", "2"}) ASSERT_EQ(status::kOk, rig.CreateNumber("", name, 1));
  rig.PatchWord(kKeyArea + 24 * 2, 0x200);  // the root's values are this key's
  rig.PatchWord(kKeyArea + 24, 0);
  EXPECT_EQ(status::kOk, rig.tree.DeleteSingleKey(0, key));
  EXPECT_EQ("363 363 364 364", FreeSlots(rig));
  EXPECT_EQ("02000000 00000000 03000000 04000000", Entries(rig, kKeyTable, 4));
  EXPECT_EQ("01000000 02000000 03000000 04000000", Entries(rig, kValueTable, 4));
  const std::string before = rig.Contents();
  EXPECT_EQ(status::kInvalidFile, rig.tree.DeleteSingleKey(0, key));  // free already
  EXPECT_EQ(rig.Contents(), before);
}

// The record of a free slot still names what the key had, which others have by now.
TEST(TernaryRegistryDeletionSlots, AFreeKeyGivesNothingBack) {
  FileTreeRig rig;
  Create(rig, {"a", "a/b"});
  for (const char* name : {"1", "2"}) ASSERT_EQ(status::kOk, rig.CreateNumber("a/b", name, 1));
  ASSERT_EQ(status::kOk, DeleteKey(rig, "a/b"));
  for (const char* name : {"3", "4"}) ASSERT_EQ(status::kOk, rig.CreateNumber("", name, 1));
  ASSERT_EQ("00020000", rig.Hex(kKeyArea + 24 * 3, 4));
  ASSERT_EQ("361 362 362 364", FreeSlots(rig));
  const std::string before = rig.Contents();
  EXPECT_EQ(status::kInvalidFile, rig.tree.DeleteSingleKey(0, 0x300));
  EXPECT_TRUE(rig.Contents() == before);
  EXPECT_EQ(status::kInvalidFile, rig.tree.DeleteAllValues(0, 0x300));
  EXPECT_TRUE(rig.Contents() == before);
  EXPECT_EQ("0: 4 3", ListedValues(rig, ""));
  EXPECT_EQ("", StructureFindings(rig.path));
}

TEST(TernaryRegistryDeletionSlots, ASubtreeComesBackWithTheStatusOfItsFirstNode) {
  SharedStore shared;
  unsigned int first = 0;
  unsigned int key = 0;
  ASSERT_EQ(status::kOk, shared.tree.CreateKeyNode(0, kUser, 0x0F, 0, &key, false, false));
  ASSERT_EQ(status::kOk,
            shared.tree.CreateStringNode(0, std::string(40, 'x').c_str(), &first, key));
  ASSERT_EQ(0x200u, first);  // and 300, 400
  EXPECT_EQ(status::kOk, shared.tree.RecursiveDeleteKeyTree(0, first));
  const auto word = [&](unsigned int offset) {
    return storetests::U32At(FileBytes(shared.path, offset, 4), 0);
  };
  EXPECT_EQ(363u, word(kStringTable + 28));
  EXPECT_EQ(2u, word(kStringTable + 32));
  EXPECT_EQ(3u, word(kStringTable + 32 + 4 * 2));
  EXPECT_EQ(4u, word(kStringTable + 32 + 4 * 3));
  EXPECT_EQ(5u, word(kStringTable + 32 + 4 * 4));
  EXPECT_EQ(363u, word(kKeyTable + 28));

  ASSERT_EQ(status::kOk, shared.tree.CreateStringNode(0, std::string(40, 'x').c_str(), &first, 0));
  ASSERT_EQ(0x200u, first);
  ASSERT_EQ(0u, shared.store.ReleaseNode(0, first, nullptr));
  EXPECT_EQ(status::kInvalidFile, shared.tree.RecursiveDeleteKeyTree(0, first));
  EXPECT_EQ(361u, word(kStringTable + 28));  // the links of a free node are not followed
  EXPECT_EQ("", storetests::FreeListFindings(FileBytes(shared.path, 0, 100000)));
}

TEST(TernaryRegistryDeletionSlots, NothingIsGivenBackForTheIdZero) {
  FileTreeRig rig;
  const std::string before = rig.Contents();
  EXPECT_EQ(status::kOk, rig.tree.DeleteAllValues(0, 0));
  EXPECT_EQ(status::kBadArgument, rig.tree.DeleteSingleKey(0, 0));
  EXPECT_EQ(status::kBadArgument, rig.tree.RecursiveDeleteKeyTree(0, 0));
  EXPECT_EQ(rig.Contents(), before);
}

}  // namespace

}  // namespace tamu::registry
