// Deleting keys: what goes, what stays, and who may.
#include "tests/registry/filetree/KeyTesting.h"

namespace tamu::registry {

namespace {

TEST(TernaryRegistryDeletion, AKeyGoesWithAllBelowItAndAllTheirValues) {
  FileTreeRig rig;
  for (const char* key : {"a", "a/b", "a/b/c", "ab", "b", "b/b"}) {
    ASSERT_EQ(status::kOk, rig.Create(key));
    ASSERT_EQ(status::kOk, rig.CreateNumber(key, "n", 5));
    ASSERT_EQ(status::kOk, rig.CreateNumber(key, "o", 6));
  }
  EXPECT_EQ("357 357 352 364", FreeSlots(rig));
  EXPECT_EQ(status::kOk, DeleteKey(rig, "a"));
  for (const char* key : {"a", "a/b", "a/b/c"}) EXPECT_EQ(status::kNotFound, rig.Find(key)) << key;
  for (const char* key : {"ab", "b", "b/b"}) {
    EXPECT_EQ(status::kOk, rig.Find(key)) << key;
    EXPECT_EQ("0 type 0: 0500000000000000", rig.Get(key, "n")) << key;
    EXPECT_EQ("0 type 0: 0600000000000000", rig.Get(key, "o")) << key;
  }
  EXPECT_EQ("359 360 358 364", FreeSlots(rig));  // the node of "a" stays
  EXPECT_EQ("", StructureFindings(rig.path));
  EXPECT_EQ("0: b/b b ab", Listed(rig, ""));
}

TEST(TernaryRegistryDeletion, AKeyBelowGoesAloneAndOthersStay) {
  FileTreeRig rig;
  CreateSixKeys(rig);
  EXPECT_EQ(status::kOk, DeleteKey(rig, "a/m"));
  EXPECT_EQ("0: a/t a/f a/mn a", Listed(rig, ""));
  EXPECT_EQ(status::kOk, DeleteKey(rig, "/a/f"));
  EXPECT_EQ(status::kOk, DeleteKey(rig, "a/mn/"));
  EXPECT_EQ("0: a/t a", Listed(rig, ""));
  EXPECT_EQ("", StructureFindings(rig.path));
}

TEST(TernaryRegistryDeletion, ANameThatBeginsOrContinuesAnotherLeavesItAlone) {
  FileTreeRig rig;
  for (const char* key : {"n", "net", "network"}) ASSERT_EQ(status::kOk, rig.Create(key));
  EXPECT_EQ(status::kOk, DeleteKey(rig, "net"));
  EXPECT_EQ("0: network n", Listed(rig, ""));
  EXPECT_EQ(status::kOk, DeleteKey(rig, "network"));
  EXPECT_EQ("0: n", Listed(rig, ""));
  EXPECT_EQ(status::kOk, DeleteKey(rig, "n"));
  EXPECT_EQ("0:", Listed(rig, ""));
  EXPECT_EQ("", StructureFindings(rig.path));
}

TEST(TernaryRegistryDeletion, TheNodeLeftBehindKeepsItsNameAndItsNeighbours) {
  FileTreeRig rig;
  for (const char* key : {"ab", "abc", "aa", "az", "ab/x"}) ASSERT_EQ(status::kOk, rig.Create(key));
  EXPECT_EQ(
      "00011062"
      "00040000000500000003000000060000"
      "00020000"
      "61",
      rig.StringNode(2));
  rig.Patch(kStringArea + 40 * 2 + 2, "31");  // all flags of a node
  EXPECT_EQ(status::kOk, DeleteKey(rig, "ab"));
  EXPECT_EQ(
      "00012162"
      "00040000000500000003000000000000"
      "00000000"
      "61",
      rig.StringNode(2));
  for (const char* key : {"abc", "aa", "az"}) EXPECT_EQ(status::kOk, rig.Find(key));
  EXPECT_EQ(status::kNotFound, rig.Find("ab/x"));
}

TEST(TernaryRegistryDeletion, AKeyThatIsCreatedAgainKeepsTheLock) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("a"));
  ASSERT_EQ(status::kOk, DeleteKey(rig, "a"));
  EXPECT_FALSE(rig.tree.ObjectLock().IsMine());
  ASSERT_EQ(status::kOk, rig.Create("a"));
  EXPECT_EQ(1, rig.tree.ObjectLock().Depth());
  ASSERT_EQ(status::kOk, DeleteKey(rig, "a"));
  EXPECT_EQ(1, rig.tree.ObjectLock().Depth());
}

TEST(TernaryRegistryDeletion, TheNameOfADeletedKeyStaysAndIsUsedAgain) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("a"));
  ASSERT_EQ(status::kOk, rig.tree.CreateKey(kAdmin, nullptr, "a/0123456789abcdefg", 5, true));
  ASSERT_EQ(status::kOk, rig.Create("a/0123456789abcdefg/x"));
  ASSERT_EQ(status::kOk, rig.CreateNumber("a/0123456789abcdefg", "n", 5));
  const std::string first = rig.StringNode(3);
  EXPECT_EQ(status::kOk, DeleteKey(rig, "a/0123456789abcdefg"));
  EXPECT_EQ("361 362 364 364", FreeSlots(rig));
  EXPECT_EQ(status::kNotFound, rig.Find("a/0123456789abcdefg"));
  EXPECT_EQ(rig.StringNode(3), "00100067" + std::string(40, '0') + HexOf("0123456789abcdef"));

  EXPECT_EQ(status::kOk, rig.Create("a/0123456789abcdefg"));
  EXPECT_EQ("361 361 364 364", FreeSlots(rig));
  EXPECT_EQ(0x300u, rig.KeyOf("a/0123456789abcdefg"));
  EXPECT_EQ(rig.StringNode(3),
            "00101067" + std::string(32, '0') + "00030000" + HexOf("0123456789abcdef"));
  EXPECT_NE(rig.StringNode(3), first);  // which had a child
  EXPECT_EQ("75:", ListedValues(rig, "a/0123456789abcdefg"));
  EXPECT_EQ("0:", Listed(rig, "a/0123456789abcdefg"));
  unsigned long long number = 0;
  EXPECT_EQ(status::kNoData,
            rig.tree.GetDefaultValue(kAdmin, nullptr, "a/0123456789abcdefg", &number));
  EXPECT_EQ("", StructureFindings(rig.path));
}

TEST(TernaryRegistryDeletion, NeedsTheRightToDelete) {
  ExpectToNeedTheRight(
      8,
      [](FileTreeRig& rig) {
        ASSERT_EQ(status::kOk, rig.Create("ab"));
        rig.SetPermission(3, "ff");
      },
      [](TernaryRegistry& tree, unsigned int user) { return tree.DeleteKey(user, nullptr, "a"); });
}

TEST(TernaryRegistryDeletion, TheRightsOfTheKeysBelowDoNotCount) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.tree.CreateKey(kUser, nullptr, "a", 0, false));
  ASSERT_EQ(status::kOk, rig.Create("a/b"));
  rig.SetPermission(3, "00");
  EXPECT_EQ(status::kNoRight, rig.tree.DeleteKey(kUser, nullptr, "a/b"));
  EXPECT_EQ(status::kOk, rig.tree.DeleteKey(kUser, nullptr, "a"));
  EXPECT_EQ(status::kNotFound, rig.Find("a/b"));
}

TEST(TernaryRegistryDeletion, AMissingKeyIsMissed) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("a"));
  ASSERT_EQ(status::kOk, rig.Create("bcd"));
  const std::string before = rig.Contents();
  int anything = 0;
  for (const char* key : {"b", "bc", "bcde", "a/b", "c", "a//", "//"}) {
    EXPECT_EQ(status::kNotFound, DeleteKey(rig, key)) << key;
    EXPECT_EQ(status::kNotFound, rig.tree.DeleteKey(kUser, nullptr, key)) << key;
  }
  EXPECT_EQ(status::kNotFound, rig.tree.DeleteKey(kAdmin, &anything, "a"));
  EXPECT_EQ(status::kNoRight, rig.tree.DeleteKey(kAdmin, &anything, ""));
  EXPECT_EQ(rig.Contents(), before);
}

TEST(TernaryRegistryDeletion, ANameWithoutAKeyCannotBeDeleted) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("ab"));
  ASSERT_EQ(status::kOk, rig.Create("bc"));  // the name "a" exists now, as a branch
  ASSERT_EQ(status::kOk, rig.Create("de"));
  ASSERT_EQ(status::kOk, DeleteKey(rig, "de"));
  const std::string before = rig.Contents();
  for (const char* key : {"a", "de"}) {
    EXPECT_EQ(status::kNotFound, DeleteKey(rig, key)) << key;
    EXPECT_EQ(status::kNoRight, DeleteKey(rig, std::string(key) + "/")) << key;
    EXPECT_EQ(status::kNoRight, rig.tree.DeleteKey(0, nullptr, (std::string(key) + "/").c_str()))
        << key;
  }
  EXPECT_EQ(rig.Contents(), before);
}

TEST(TernaryRegistryDeletion, ATrailingSlashNamesTheSameKey) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("a"));
  ASSERT_EQ(status::kOk, rig.Create("a/b"));
  EXPECT_EQ(status::kOk, DeleteKey(rig, "/a/"));
  EXPECT_EQ(status::kNotFound, rig.Find("a"));
  EXPECT_EQ(rig.StringNode(2), "00000061" + std::string(40, '0'));
}

TEST(TernaryRegistryDeletion, ADeletedKeyIsNoParent) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("a"));
  ASSERT_EQ(status::kOk, rig.Create("a/b"));
  ASSERT_EQ(status::kOk, DeleteKey(rig, "a"));
  EXPECT_EQ(status::kNoRight, rig.Create("a/b"));
  EXPECT_EQ(status::kNotFound, rig.Find("a/b"));
  EXPECT_EQ(status::kOk, rig.Create("a"));
  EXPECT_EQ("0: a", Listed(rig, ""));
  EXPECT_EQ(status::kOk, rig.Create("a/b"));
  EXPECT_EQ("361 361 364 364", FreeSlots(rig));
}

TEST(TernaryRegistryDeletion, AKeyIsGoneAfterReopening) {
  FileTreeRig rig;
  CreateSixKeys(rig);
  ASSERT_EQ(status::kOk, DeleteKey(rig, "a/m"));
  rig.Reopen();
  EXPECT_EQ("0: a/t a/f a/mn a", Listed(rig, ""));
  EXPECT_EQ(status::kOk, rig.Create("a/m"));
  EXPECT_EQ(0x300u, rig.KeyOf("a/m"));
}

// ---- the root

TEST(TernaryRegistryDeletion, OnlyTheAdministratorDeletesTheRoot) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.tree.CreateKey(kUser, nullptr, "a", 0, false));
  const std::string before = rig.Contents();
  EXPECT_EQ(status::kNoRight, rig.tree.DeleteKey(kUser, nullptr, ""));
  EXPECT_EQ(rig.Contents(), before);
  rig.SetPermission(1, "f7");  // right 8 for everybody but the administrator
  EXPECT_EQ(status::kNoRight, rig.tree.DeleteKey(kAdmin, nullptr, "/"));
  EXPECT_EQ(status::kOk, rig.tree.DeleteKey(kUser, nullptr, nullptr));
  EXPECT_EQ(status::kNotFound, rig.Find("a"));
}

TEST(TernaryRegistryDeletion, WithoutItsRootKeyARegistryStaysEmpty) {
  FileTreeRig rig;
  CreateSixKeys(rig);
  ASSERT_EQ(status::kOk, rig.CreateNumber("", "n", 1));
  ASSERT_EQ(status::kOk, rig.CreateNumber("a/m", "n", 1));
  EXPECT_EQ(status::kOk, DeleteKey(rig, ""));
  EXPECT_EQ(std::string(48, '0'), rig.StringNode(1));
  EXPECT_EQ(0x100u, rig.Word(4180 + 28));  // still the start node
  EXPECT_EQ("363 364 364 364", FreeSlots(rig));
  EXPECT_EQ("", StructureFindings(rig.path));
  const std::string before = rig.Contents();
  for (bool again : {false, true}) {
    if (again) rig.Reopen();
    unsigned char permission = 77;
    EXPECT_EQ(0u, rig.KeyOf(""));
    EXPECT_EQ(status::kOk, rig.Find(""));
    EXPECT_EQ(status::kNotFound, rig.Find("a"));
    EXPECT_EQ(status::kNoRight, rig.Create("a"));
    EXPECT_EQ(status::kExists, rig.Create(""));
    EXPECT_EQ(status::kNoRight, DeleteKey(rig, ""));
    EXPECT_EQ(status::kNotFound, DeleteKey(rig, "a"));
    EXPECT_EQ("1:", Listed(rig, ""));
    EXPECT_EQ("1:", ListedValues(rig, ""));
    EXPECT_EQ("1", Counted(rig, ""));
    EXPECT_EQ(status::kNoRight, rig.CreateNumber("", "n", 1));
    EXPECT_EQ("1", rig.Get("", "n"));
    EXPECT_EQ(status::kOk, rig.tree.GetKeyPermission(kAdmin, nullptr, "", &permission));
    EXPECT_EQ(0u, permission);
    EXPECT_EQ(status::kNotFound, rig.tree.SetKeyPermission(kAdmin, nullptr, "", 0xFF));
    EXPECT_EQ(status::kNoRight, rig.tree.SetKeyWatch(kAdmin, nullptr, "", 0xFF));
    EXPECT_EQ(status::kExists, rig.tree.CreateRootKey());
    EXPECT_EQ(rig.Contents(), before);
  }
}

TEST(TernaryRegistryDeletion, WithoutAFileThereIsNoRight) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.tree.Finalize());
  EXPECT_EQ(status::kNoRight, DeleteKey(rig, ""));
  EXPECT_EQ(status::kNoRight, rig.tree.DeleteAllValues(0, 0x100));
  EXPECT_EQ(status::kNoRight, rig.tree.DeleteSingleKey(0, 0x100));
  EXPECT_EQ(status::kNoRight, rig.tree.RecursiveDeleteKeyTree(0, 0x100));
}

}  // namespace

}  // namespace tamu::registry
