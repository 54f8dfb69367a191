// Deleting keys through a handle: which slots come back, and in which order.
#include "tests/registry/memtree/LoadedWriting.h"

namespace tamu::registry {

namespace {

class LoadedDeletionSlots : public LoadedWriting {
 protected:
  // "a" with a sub-key on each side of "m": slots 2 to 7 of the string nodes and of the keys. The
  // values of "a/m" are 1 to 3, that of "a/f" 4, those of "a" 5 and 6.
  void StartWithSixKeys() {
    Start({"a", "a/m", "a/f", "a/t", "a/mn", "a/m/x"});
    for (const char* name : {"1", "2", "3"}) ASSERT_EQ(CreateNumber("a/m", name, 1), 0u);
    ASSERT_EQ(CreateNumber("a/f", "4", 1), 0u);
    for (const char* name : {"5", "6"}) ASSERT_EQ(CreateNumber("a", name, 1), 0u);
  }
  // Nodes f, t, mn, x, m, which are 4, 5, 6, 7, 3; their keys, then that of "a"; the values of f:
  // 4, of m: 3, 2, 1, of "a": 6, 5. The slot given back last is handed out first.
  void ExpectSixKeysGivenBack() {
    EXPECT_EQ(Entries(kStringTable, 9),
              "03000000 00000000 00000000 07000000 08000000 04000000 05000000 06000000 09000000 ");
    EXPECT_EQ(Entries(kKeyTable, 9),
              "02000000 00000000 03000000 07000000 08000000 04000000 05000000 06000000 09000000 ");
    EXPECT_EQ(Entries(kValueTable, 8),
              "05000000 02000000 03000000 04000000 07000000 06000000 01000000 08000000 ");
    EXPECT_EQ(FreeSlots(), "362 363 364 364");
  }
};

TEST_F(LoadedDeletionSlots, SlotsComeBackInTheOrderOfTheTree) {
  StartWithSixKeys();
  ASSERT_EQ(DeleteKey("a"), 0u);
  ExpectSixKeysGivenBack();
  EXPECT_EQ(rig.Loaded(), "2 strings, 1 keys");
  EXPECT_EQ(ListedKeys(root), "0:");
  EXPECT_EQ(ListedStoredKeys(""), "0:");
  EXPECT_FALSE(root->start->isLocked());
  Reload();
  EXPECT_EQ(rig.Loaded(), "2 strings, 1 keys");
  ExpectSound(rig.path);
}

TEST_F(LoadedDeletionSlots, ADeepTreeComesBackFromItsLeaves) {
  // 3 is "m", its lo 4 is "f" with a lo 5, an equal 6 and a child 7; its hi 8 is "t" with a
  // child 9.
  Start({"a", "a/m", "a/f", "a/b", "a/fg", "a/f/x", "a/t", "a/t/y"});
  ASSERT_EQ(DeleteKey("a"), 0u);
  // 5, 6, 7, 4, 9, 8, 3
  EXPECT_EQ(Entries(kStringTable, 11),
            "03000000 00000000 00000000 08000000 07000000 0a000000 05000000 06000000 09000000 "
            "04000000 0b000000 ");
  EXPECT_EQ(Entries(kKeyTable, 11),
            "02000000 00000000 03000000 08000000 07000000 0a000000 05000000 06000000 09000000 "
            "04000000 0b000000 ");
  ExpectSound(rig.path);
}

// The handle's own key too, whose sub-keys are put away meanwhile. The node was written while it
// was locked, and says so; nobody asks for that in a file.
TEST_F(LoadedDeletionSlots, TheHandlesOwnKeyTakesItsSubKeysAlong) {
  StartWithSixKeys();
  TernaryHandle* handle = rig.Load("a");
  ASSERT_EQ(rig.loaded.DeleteKey(kAdmin, handle, ""), 0u);
  ExpectSixKeysGivenBack();
  EXPECT_EQ(StringNode(2), "00000161" + std::string(2 * 20, '0'));
  EXPECT_EQ(handle->start->directory, nullptr);
  EXPECT_EQ(handle->start->node->child(), 0u);
  EXPECT_FALSE(handle->start->isLocked());
  EXPECT_EQ(rig.Loaded(), "2 strings, 1 keys");
  EXPECT_EQ(ListedStoredKeys(""), "0:");
  EXPECT_EQ(rig.Unload(handle), 0u);
  ASSERT_EQ(CreateKey("a"), 0u);
  EXPECT_EQ(StringNode(2), "00001061" + std::string(2 * 16, '0') + "00020000");
  EXPECT_EQ(ListedKeys(root), "0: a");
  rig.Close();
  ASSERT_EQ(rig.loaded.Initialize(rig.path.c_str()), 0u);
  root = rig.Load("");
  EXPECT_EQ(ListedKeys(root), "0: a");
  EXPECT_EQ(FreeSlots(), "362 362 364 364");
  ExpectSound(rig.path);
}

TEST_F(LoadedDeletionSlots, AKeyWithoutSubKeysAndValuesIsDeleted) {
  Start({"a", "b"});
  ASSERT_EQ(DeleteKey("b"), 0u);
  EXPECT_EQ(ListedKeys(root), "0: a");
  EXPECT_EQ(ListedStoredKeys(""), "0: a");
  EXPECT_EQ(FreeSlots(), "361 362 364 364");
  EXPECT_EQ(Entries(kKeyTable, 5), "03000000 00000000 00000000 04000000 05000000 ");
  ExpectSound(rig.path);
}

TEST_F(LoadedDeletionSlots, ALongNameOfASubKeyComesBackWhole) {
  Start({"a"});
  ASSERT_EQ(CreateKey(("a/" + std::string(200, 'x')).c_str()), 0u);  // 12 nodes
  ASSERT_EQ(CreateKey(("a/" + std::string(50, 'x') + "y").c_str()), 0u);
  EXPECT_LE(Word(kStringTable + 28), 350u);
  EXPECT_EQ(DeleteKey("a"), 0u);
  EXPECT_EQ(FreeSlots(), "362 363 364 364");
  ExpectSound(rig.path);
}

TEST_F(LoadedDeletionSlots, KeysComeAndGoWithoutLoss) {
  Start({"z"});
  for (unsigned int round = 0; round < 50; ++round) {
    for (const char* key : {"a", "a/m", "a/f", "a/t", "a/mn", "a/m/x"}) {
      ASSERT_EQ(CreateKey(key), 0u) << key;
    }
    ASSERT_EQ(CreateNumber("a/m/x", "n", round), 0u);
    ASSERT_EQ(DeleteKey("a"), 0u);
    ASSERT_EQ(FreeSlots(), "361 362 364 364");
  }
  ExpectSound(rig.path);
}

TEST_F(LoadedDeletionSlots, KeysBelowComeBackInEveryTable) {
  Start({"a"});
  for (char first = 'A'; first < 'A' + 20; ++first) {
    const std::string parent = std::string("a/") + first;
    ASSERT_EQ(CreateKey(parent.c_str()), 0u);
    for (char second = 'A'; second < 'A' + 20; ++second) {
      const std::string key = parent + "/" + second;
      ASSERT_EQ(CreateKey(key.c_str()), 0u);
      ASSERT_EQ(CreateNumber(key.c_str(), "n", 1), 0u);
    }
  }
  EXPECT_EQ(DeleteKey("a"), 0u);
  const SlotCounts counts = CountSlots(rig.path);
  EXPECT_EQ(counts.values.tables, 2u);
  EXPECT_EQ(UsedSlots(rig.path), "2 1 0 0");
  ExpectSound(rig.path);
}

TEST_F(LoadedDeletionSlots, AChainOf10000KeysIsDeletedOnASmallStack) {
  rig.Create({"top"});
  constexpr unsigned int kLevels = 10000;
  std::string backup(1, '\x01');
  NameLinks below;
  below.child = kSome;
  for (unsigned int i = 1; i < kLevels; ++i) backup += NameRecord("a", kSome, below);
  backup += NameRecord("a", kSome);
  for (unsigned int i = 0; i <= kLevels; ++i) backup += KeyRecord(0);
  PutFile(rig.dir / "backup", backup);
  ASSERT_EQ(rig.file->RestoreKeyTree(kAdmin, nullptr, "top", (rig.dir / "backup").c_str()), 0u);
  root = rig.Load("");
  const unsigned int keys = CountSlots(rig.path).keys.used;
  EXPECT_GE(keys, kLevels);
  OnSmallStack([&] { EXPECT_EQ(DeleteKey("top"), 0u); });
  EXPECT_EQ(CountSlots(rig.path).keys.used, 1u);
  EXPECT_EQ(rig.Find(root, "top"), 2u);
  ExpectSound(rig.path);
}

}  // namespace

}  // namespace tamu::registry
