// Deleting keys: what goes, what stays, and who may.
#include "tests/registry/filetree/KeyTesting.h"

namespace tamu::registry {

namespace {

TEST(FileTreeDeletion, AKeyGoesWithAllBelowItAndAllTheirValues) {
  FileTreeRig rig;
  for (const char* key : {"a", "a/b", "a/b/c", "ab", "b", "b/b"}) {
    ASSERT_EQ(rig.Create(key), 0u);
    ASSERT_EQ(rig.CreateNumber(key, "n", 5), 0u);
    ASSERT_EQ(rig.CreateNumber(key, "o", 6), 0u);
  }
  EXPECT_EQ(FreeSlots(rig), "357 357 352 364");
  EXPECT_EQ(DeleteKey(rig, "a"), 0u);
  for (const char* key : {"a", "a/b", "a/b/c"}) EXPECT_EQ(rig.Find(key), 2u) << key;
  for (const char* key : {"ab", "b", "b/b"}) {
    EXPECT_EQ(rig.Find(key), 0u) << key;
    EXPECT_EQ(rig.Get(key, "n"), "0 type 0: 0500000000000000") << key;
    EXPECT_EQ(rig.Get(key, "o"), "0 type 0: 0600000000000000") << key;
  }
  EXPECT_EQ(FreeSlots(rig), "359 360 358 364");  // the node of "a" stays
  EXPECT_EQ(StructureFindings(rig.path), "");
  EXPECT_EQ(Listed(rig, ""), "0: b/b b ab");
}

TEST(FileTreeDeletion, AKeyBelowGoesAloneAndOthersStay) {
  FileTreeRig rig;
  CreateSixKeys(rig);
  EXPECT_EQ(DeleteKey(rig, "a/m"), 0u);
  EXPECT_EQ(Listed(rig, ""), "0: a/t a/f a/mn a");
  EXPECT_EQ(DeleteKey(rig, "/a/f"), 0u);
  EXPECT_EQ(DeleteKey(rig, "a/mn/"), 0u);
  EXPECT_EQ(Listed(rig, ""), "0: a/t a");
  EXPECT_EQ(StructureFindings(rig.path), "");
}

TEST(FileTreeDeletion, ANameThatBeginsOrContinuesAnotherLeavesItAlone) {
  FileTreeRig rig;
  for (const char* key : {"n", "net", "network"}) ASSERT_EQ(rig.Create(key), 0u);
  EXPECT_EQ(DeleteKey(rig, "net"), 0u);
  EXPECT_EQ(Listed(rig, ""), "0: network n");
  EXPECT_EQ(DeleteKey(rig, "network"), 0u);
  EXPECT_EQ(Listed(rig, ""), "0: n");
  EXPECT_EQ(DeleteKey(rig, "n"), 0u);
  EXPECT_EQ(Listed(rig, ""), "0:");
  EXPECT_EQ(StructureFindings(rig.path), "");
}

TEST(FileTreeDeletion, TheNodeLeftBehindKeepsItsNameAndItsNeighbours) {
  FileTreeRig rig;
  for (const char* key : {"ab", "abc", "aa", "az", "ab/x"}) ASSERT_EQ(rig.Create(key), 0u);
  EXPECT_EQ(rig.StringNode(2),
            "00011062"
            "00040000000500000003000000060000"
            "00020000"
            "61");
  rig.Patch(kStringArea + 40 * 2 + 2, "31");  // all flags of a node
  EXPECT_EQ(DeleteKey(rig, "ab"), 0u);
  EXPECT_EQ(rig.StringNode(2),
            "00012162"
            "00040000000500000003000000000000"
            "00000000"
            "61");
  for (const char* key : {"abc", "aa", "az"}) EXPECT_EQ(rig.Find(key), 0u);
  EXPECT_EQ(rig.Find("ab/x"), 2u);
}

TEST(FileTreeDeletion, AKeyThatIsCreatedAgainKeepsTheLock) {
  FileTreeRig rig;
  ASSERT_EQ(rig.Create("a"), 0u);
  ASSERT_EQ(DeleteKey(rig, "a"), 0u);
  EXPECT_FALSE(rig.tree.ObjectLock().IsMine());
  ASSERT_EQ(rig.Create("a"), 0u);
  EXPECT_EQ(rig.tree.ObjectLock().Depth(), 1);
  ASSERT_EQ(DeleteKey(rig, "a"), 0u);
  EXPECT_EQ(rig.tree.ObjectLock().Depth(), 1);
}

TEST(FileTreeDeletion, TheNameOfADeletedKeyStaysAndIsUsedAgain) {
  FileTreeRig rig;
  ASSERT_EQ(rig.Create("a"), 0u);
  ASSERT_EQ(rig.tree.CreateKey(kAdmin, nullptr, "a/0123456789abcdefg", 5, true), 0u);
  ASSERT_EQ(rig.Create("a/0123456789abcdefg/x"), 0u);
  ASSERT_EQ(rig.CreateNumber("a/0123456789abcdefg", "n", 5), 0u);
  const std::string first = rig.StringNode(3);
  EXPECT_EQ(DeleteKey(rig, "a/0123456789abcdefg"), 0u);
  EXPECT_EQ(FreeSlots(rig), "361 362 364 364");
  EXPECT_EQ(rig.Find("a/0123456789abcdefg"), 2u);
  EXPECT_EQ(rig.StringNode(3), "00100067" + std::string(40, '0') + HexOf("0123456789abcdef"));

  EXPECT_EQ(rig.Create("a/0123456789abcdefg"), 0u);
  EXPECT_EQ(FreeSlots(rig), "361 361 364 364");
  EXPECT_EQ(rig.KeyOf("a/0123456789abcdefg"), 0x300u);
  EXPECT_EQ(rig.StringNode(3),
            "00101067" + std::string(32, '0') + "00030000" + HexOf("0123456789abcdef"));
  EXPECT_NE(rig.StringNode(3), first);  // which had a child
  EXPECT_EQ(ListedValues(rig, "a/0123456789abcdefg"), "75:");
  EXPECT_EQ(Listed(rig, "a/0123456789abcdefg"), "0:");
  unsigned long long number = 0;
  EXPECT_EQ(rig.tree.GetDefaultValue(kAdmin, nullptr, "a/0123456789abcdefg", &number), 53u);
  EXPECT_EQ(StructureFindings(rig.path), "");
}

TEST(FileTreeDeletion, NeedsTheRightToDelete) {
  ExpectToNeedTheRight(
      8,
      [](FileTreeRig& rig) {
        ASSERT_EQ(rig.Create("ab"), 0u);
        rig.SetPermission(3, "ff");
      },
      [](TernaryRegistry& tree, unsigned int user) { return tree.DeleteKey(user, nullptr, "a"); });
}

TEST(FileTreeDeletion, TheRightsOfTheKeysBelowDoNotCount) {
  FileTreeRig rig;
  ASSERT_EQ(rig.tree.CreateKey(kUser, nullptr, "a", 0, false), 0u);
  ASSERT_EQ(rig.Create("a/b"), 0u);
  rig.SetPermission(3, "00");
  EXPECT_EQ(rig.tree.DeleteKey(kUser, nullptr, "a/b"), 1u);
  EXPECT_EQ(rig.tree.DeleteKey(kUser, nullptr, "a"), 0u);
  EXPECT_EQ(rig.Find("a/b"), 2u);
}

TEST(FileTreeDeletion, AMissingKeyIsMissed) {
  FileTreeRig rig;
  ASSERT_EQ(rig.Create("a"), 0u);
  ASSERT_EQ(rig.Create("bcd"), 0u);
  const std::string before = rig.Contents();
  int anything = 0;
  for (const char* key : {"b", "bc", "bcde", "a/b", "c", "a//", "//"}) {
    EXPECT_EQ(DeleteKey(rig, key), 2u) << key;
    EXPECT_EQ(rig.tree.DeleteKey(kUser, nullptr, key), 2u) << key;
  }
  EXPECT_EQ(rig.tree.DeleteKey(kAdmin, &anything, "a"), 2u);
  EXPECT_EQ(rig.tree.DeleteKey(kAdmin, &anything, ""), 1u);
  EXPECT_EQ(rig.Contents(), before);
}

TEST(FileTreeDeletion, ANameWithoutAKeyCannotBeDeleted) {
  FileTreeRig rig;
  ASSERT_EQ(rig.Create("ab"), 0u);
  ASSERT_EQ(rig.Create("bc"), 0u);  // the name "a" exists now, as a branch
  ASSERT_EQ(rig.Create("de"), 0u);
  ASSERT_EQ(DeleteKey(rig, "de"), 0u);
  const std::string before = rig.Contents();
  for (const char* key : {"a", "de"}) {
    EXPECT_EQ(DeleteKey(rig, key), 2u) << key;
    EXPECT_EQ(DeleteKey(rig, std::string(key) + "/"), 1u) << key;
    EXPECT_EQ(rig.tree.DeleteKey(0, nullptr, (std::string(key) + "/").c_str()), 1u) << key;
  }
  EXPECT_EQ(rig.Contents(), before);
}

TEST(FileTreeDeletion, ATrailingSlashNamesTheSameKey) {
  FileTreeRig rig;
  ASSERT_EQ(rig.Create("a"), 0u);
  ASSERT_EQ(rig.Create("a/b"), 0u);
  EXPECT_EQ(DeleteKey(rig, "/a/"), 0u);
  EXPECT_EQ(rig.Find("a"), 2u);
  EXPECT_EQ(rig.StringNode(2), "00000061" + std::string(40, '0'));
}

TEST(FileTreeDeletion, ADeletedKeyIsNoParent) {
  FileTreeRig rig;
  ASSERT_EQ(rig.Create("a"), 0u);
  ASSERT_EQ(rig.Create("a/b"), 0u);
  ASSERT_EQ(DeleteKey(rig, "a"), 0u);
  EXPECT_EQ(rig.Create("a/b"), 1u);
  EXPECT_EQ(rig.Find("a/b"), 2u);
  EXPECT_EQ(rig.Create("a"), 0u);
  EXPECT_EQ(Listed(rig, ""), "0: a");
  EXPECT_EQ(rig.Create("a/b"), 0u);
  EXPECT_EQ(FreeSlots(rig), "361 361 364 364");
}

TEST(FileTreeDeletion, AKeyIsGoneAfterReopening) {
  FileTreeRig rig;
  CreateSixKeys(rig);
  ASSERT_EQ(DeleteKey(rig, "a/m"), 0u);
  rig.Reopen();
  EXPECT_EQ(Listed(rig, ""), "0: a/t a/f a/mn a");
  EXPECT_EQ(rig.Create("a/m"), 0u);
  EXPECT_EQ(rig.KeyOf("a/m"), 0x300u);
}

// ---- the root

TEST(FileTreeDeletion, OnlyTheAdministratorDeletesTheRoot) {
  FileTreeRig rig;
  ASSERT_EQ(rig.tree.CreateKey(kUser, nullptr, "a", 0, false), 0u);
  const std::string before = rig.Contents();
  EXPECT_EQ(rig.tree.DeleteKey(kUser, nullptr, ""), 1u);
  EXPECT_EQ(rig.Contents(), before);
  rig.SetPermission(1, "f7");  // right 8 for everybody but the administrator
  EXPECT_EQ(rig.tree.DeleteKey(kAdmin, nullptr, "/"), 1u);
  EXPECT_EQ(rig.tree.DeleteKey(kUser, nullptr, nullptr), 0u);
  EXPECT_EQ(rig.Find("a"), 2u);
}

TEST(FileTreeDeletion, WithoutItsRootKeyARegistryStaysEmpty) {
  FileTreeRig rig;
  CreateSixKeys(rig);
  ASSERT_EQ(rig.CreateNumber("", "n", 1), 0u);
  ASSERT_EQ(rig.CreateNumber("a/m", "n", 1), 0u);
  EXPECT_EQ(DeleteKey(rig, ""), 0u);
  EXPECT_EQ(rig.StringNode(1), std::string(48, '0'));
  EXPECT_EQ(rig.Word(4180 + 28), 0x100u);  // still the start node
  EXPECT_EQ(FreeSlots(rig), "363 364 364 364");
  EXPECT_EQ(StructureFindings(rig.path), "");
  const std::string before = rig.Contents();
  for (bool again : {false, true}) {
    if (again) rig.Reopen();
    unsigned char permission = 77;
    EXPECT_EQ(rig.KeyOf(""), 0u);
    EXPECT_EQ(rig.Find(""), 0u);
    EXPECT_EQ(rig.Find("a"), 2u);
    EXPECT_EQ(rig.Create("a"), 1u);
    EXPECT_EQ(rig.Create(""), 17u);
    EXPECT_EQ(DeleteKey(rig, ""), 1u);
    EXPECT_EQ(DeleteKey(rig, "a"), 2u);
    EXPECT_EQ(Listed(rig, ""), "1:");
    EXPECT_EQ(ListedValues(rig, ""), "1:");
    EXPECT_EQ(Counted(rig, ""), "1");
    EXPECT_EQ(rig.CreateNumber("", "n", 1), 1u);
    EXPECT_EQ(rig.Get("", "n"), "1");
    EXPECT_EQ(rig.tree.GetKeyPermission(kAdmin, nullptr, "", &permission), 0u);
    EXPECT_EQ(permission, 0u);
    EXPECT_EQ(rig.tree.SetKeyPermission(kAdmin, nullptr, "", 0xFF), 2u);
    EXPECT_EQ(rig.tree.SetKeyWatch(kAdmin, nullptr, "", 0xFF), 1u);
    EXPECT_EQ(rig.tree.CreateRootKey(), 17u);
    EXPECT_EQ(rig.Contents(), before);
  }
}

TEST(FileTreeDeletion, WithoutAFileThereIsNoRight) {
  FileTreeRig rig;
  ASSERT_EQ(rig.tree.Finalize(), 0u);
  EXPECT_EQ(DeleteKey(rig, ""), 1u);
  EXPECT_EQ(rig.tree.DeleteAllValues(0, 0x100), 1u);
  EXPECT_EQ(rig.tree.DeleteSingleKey(0, 0x100), 1u);
  EXPECT_EQ(rig.tree.RecursiveDeleteKeyTree(0, 0x100), 1u);
}

}  // namespace

}  // namespace tamu::registry
