// Deleting keys through a handle: which slots come back, and in which order.
#include "tests/registry/memtree/LoadedWriting.h"

namespace tamu::registry {

namespace {

class TernaryKeyTreeDeletionSlotsTest : public LoadedWriting {
 protected:
  // "a" with a sub-key on each side of "m": slots 2 to 7 of the string nodes and of the keys. The
  // values of "a/m" are 1 to 3, that of "a/f" 4, those of "a" 5 and 6.
  void StartWithSixKeys() {
    Start({"a", "a/m", "a/f", "a/t", "a/mn", "a/m/x"});
    for (const char* name : {"1", "2", "3"}) ASSERT_EQ(status::kOk, CreateNumber("a/m", name, 1));
    ASSERT_EQ(status::kOk, CreateNumber("a/f", "4", 1));
    for (const char* name : {"5", "6"}) ASSERT_EQ(status::kOk, CreateNumber("a", name, 1));
  }
  // Nodes f, t, mn, x, m, which are 4, 5, 6, 7, 3; their keys, then that of "a"; the values of f:
  // 4, of m: 3, 2, 1, of "a": 6, 5. The slot given back last is handed out first.
  void ExpectSixKeysGivenBack() {
    EXPECT_EQ("03000000 00000000 00000000 07000000 08000000 04000000 05000000 06000000 09000000 ",
              Entries(kStringTable, 9));
    EXPECT_EQ("02000000 00000000 03000000 07000000 08000000 04000000 05000000 06000000 09000000 ",
              Entries(kKeyTable, 9));
    EXPECT_EQ("05000000 02000000 03000000 04000000 07000000 06000000 01000000 08000000 ",
              Entries(kValueTable, 8));
    EXPECT_EQ("362 363 364 364", FreeSlots());
  }
};

TEST_F(TernaryKeyTreeDeletionSlotsTest, SlotsComeBackInTheOrderOfTheTree) {
  StartWithSixKeys();
  ASSERT_EQ(status::kOk, DeleteKey("a"));
  ExpectSixKeysGivenBack();
  EXPECT_EQ("2 strings, 1 keys", rig.Loaded());
  EXPECT_EQ("0:", ListedKeys(root));
  EXPECT_EQ("0:", ListedStoredKeys(""));
  EXPECT_FALSE(root->start->isLocked());
  Reload();
  EXPECT_EQ("2 strings, 1 keys", rig.Loaded());
  ExpectSound(rig.path);
}

TEST_F(TernaryKeyTreeDeletionSlotsTest, ADeepTreeComesBackFromItsLeaves) {
  // 3 is "m", its lo 4 is "f" with a lo 5, an equal 6 and a child 7; its hi 8 is "t" with a
  // child 9.
  Start({"a", "a/m", "a/f", "a/b", "a/fg", "a/f/x", "a/t", "a/t/y"});
  ASSERT_EQ(status::kOk, DeleteKey("a"));
  // 5, 6, 7, 4, 9, 8, 3
  EXPECT_EQ(
      "03000000 00000000 00000000 08000000 07000000 0a000000 05000000 06000000 09000000 "
      "04000000 0b000000 ",
      Entries(kStringTable, 11));
  EXPECT_EQ(
      "02000000 00000000 03000000 08000000 07000000 0a000000 05000000 06000000 09000000 "
      "04000000 0b000000 ",
      Entries(kKeyTable, 11));
  ExpectSound(rig.path);
}

// The handle's own key too, whose sub-keys are put away meanwhile. The node was written while it
// was locked, and says so; nobody asks for that in a file.
TEST_F(TernaryKeyTreeDeletionSlotsTest, TheHandlesOwnKeyTakesItsSubKeysAlong) {
  StartWithSixKeys();
  TernaryHandle* handle = rig.Load("a");
  ASSERT_EQ(status::kOk, rig.loaded.DeleteKey(kAdmin, handle, ""));
  ExpectSixKeysGivenBack();
  EXPECT_EQ(StringNode(2), "00000161" + std::string(2 * 20, '0'));
  EXPECT_EQ(nullptr, handle->start->directory);
  EXPECT_EQ(0u, handle->start->node.child());
  EXPECT_FALSE(handle->start->isLocked());
  EXPECT_EQ("2 strings, 1 keys", rig.Loaded());
  EXPECT_EQ("0:", ListedStoredKeys(""));
  EXPECT_EQ(status::kOk, rig.Unload(handle));
  ASSERT_EQ(status::kOk, CreateKey("a"));
  EXPECT_EQ(StringNode(2), "00001061" + std::string(2 * 16, '0') + "00020000");
  EXPECT_EQ("0: a", ListedKeys(root));
  rig.Close();
  ASSERT_EQ(status::kOk, rig.loaded.Initialize(rig.path.c_str()));
  root = rig.Load("");
  EXPECT_EQ("0: a", ListedKeys(root));
  EXPECT_EQ("362 362 364 364", FreeSlots());
  ExpectSound(rig.path);
}

TEST_F(TernaryKeyTreeDeletionSlotsTest, AKeyWithoutSubKeysAndValuesIsDeleted) {
  Start({"a", "b"});
  ASSERT_EQ(status::kOk, DeleteKey("b"));
  EXPECT_EQ("0: a", ListedKeys(root));
  EXPECT_EQ("0: a", ListedStoredKeys(""));
  EXPECT_EQ("361 362 364 364", FreeSlots());
  EXPECT_EQ("03000000 00000000 00000000 04000000 05000000 ", Entries(kKeyTable, 5));
  ExpectSound(rig.path);
}

TEST_F(TernaryKeyTreeDeletionSlotsTest, ALongNameOfASubKeyComesBackWhole) {
  Start({"a"});
  ASSERT_EQ(status::kOk, CreateKey(("a/" + std::string(200, 'x')).c_str()));  // 12 nodes
  ASSERT_EQ(status::kOk, CreateKey(("a/" + std::string(50, 'x') + "y").c_str()));
  EXPECT_LE(Word(kStringTable + 28), 350u);
  EXPECT_EQ(status::kOk, DeleteKey("a"));
  EXPECT_EQ("362 363 364 364", FreeSlots());
  ExpectSound(rig.path);
}

TEST_F(TernaryKeyTreeDeletionSlotsTest, KeysComeAndGoWithoutLoss) {
  Start({"z"});
  for (unsigned int round = 0; round < 50; ++round) {
    for (const char* key : {"a", "a/m", "a/f", "a/t", "a/mn", "a/m/x"}) {
      ASSERT_EQ(status::kOk, CreateKey(key)) << key;
    }
    ASSERT_EQ(status::kOk, CreateNumber("a/m/x", "n", round));
    ASSERT_EQ(status::kOk, DeleteKey("a"));
    ASSERT_EQ("361 362 364 364", FreeSlots());
  }
  ExpectSound(rig.path);
}

TEST_F(TernaryKeyTreeDeletionSlotsTest, KeysBelowComeBackInEveryTable) {
  Start({"a"});
  for (char first = 'A'; first < 'A' + 20; ++first) {
    const std::string parent = std::string("a/") + first;
    ASSERT_EQ(status::kOk, CreateKey(parent.c_str()));
    for (char second = 'A'; second < 'A' + 20; ++second) {
      const std::string key = parent + "/" + second;
      ASSERT_EQ(status::kOk, CreateKey(key.c_str()));
      ASSERT_EQ(status::kOk, CreateNumber(key.c_str(), "n", 1));
    }
  }
  EXPECT_EQ(status::kOk, DeleteKey("a"));
  const SlotCounts counts = CountSlots(rig.path);
  EXPECT_EQ(2u, counts.values.tables);
  EXPECT_EQ("2 1 0 0", UsedSlots(rig.path));
  ExpectSound(rig.path);
}

TEST_F(TernaryKeyTreeDeletionSlotsTest, AChainOf10000KeysIsDeletedOnASmallStack) {
  rig.Create({"top"});
  constexpr unsigned int kLevels = 10000;
  std::string backup(1, '\x01');
  NameLinks below;
  below.child = kSome;
  for (unsigned int i = 1; i < kLevels; ++i) backup += NameRecord("a", kSome, below);
  backup += NameRecord("a", kSome);
  for (unsigned int i = 0; i <= kLevels; ++i) backup += KeyRecord(0);
  PutFile(rig.dir / "backup", backup);
  ASSERT_EQ(status::kOk,
            rig.file->RestoreKeyTree(kAdmin, nullptr, "top", (rig.dir / "backup").c_str()));
  root = rig.Load("");
  const unsigned int keys = CountSlots(rig.path).keys.used;
  EXPECT_GE(keys, kLevels);
  OnSmallStack([&] { EXPECT_EQ(status::kOk, DeleteKey("top")); });
  EXPECT_EQ(1u, CountSlots(rig.path).keys.used);
  EXPECT_EQ(status::kNotFound, rig.Find(root, "top"));
  ExpectSound(rig.path);
}

}  // namespace

}  // namespace tamu::registry
