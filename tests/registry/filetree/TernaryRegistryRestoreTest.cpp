// Restoring keys: what is replaced, what stays, and who may do it.
#include "tests/registry/filetree/BackupTesting.h"
#include "tests/registry/filetree/SmallStack.h"

namespace tamu::registry {

namespace {

// ---- over the key that was backed up

TEST(FileTreeRestore, OverItselfAKeyIsAsItWasBackedUp) {
  FileTreeRig rig;
  CreateTree(rig, "a");
  CreateTree(rig, "z");
  const std::string all = SubtreeText(rig, "");
  const std::string file = rig.dir / "b";
  ASSERT_EQ(Backup(rig, "a", file), 0u);
  ASSERT_EQ(DeleteKey(rig, "a/m"), 0u);
  ASSERT_EQ(rig.Create("a/new"), 0u);
  ASSERT_EQ(rig.CreateNumber("a/t", "new", 1), 0u);
  ASSERT_EQ(rig.SetData("a/f", "number", 1, Pattern(1000)), 0u);
  ASSERT_EQ(rig.Delete("a", "data"), 0u);
  ASSERT_EQ(rig.tree.SetKeyPermission(kAdmin, nullptr, "a", 0x77), 0u);
  EXPECT_NE(SubtreeText(rig, ""), all);
  EXPECT_EQ(Restore(rig, "a", file), 0u);
  EXPECT_EQ(SubtreeText(rig, ""), all);
  ExpectSound(rig);
  rig.Reopen();
  EXPECT_EQ(SubtreeText(rig, ""), all);
  EXPECT_EQ(rig.Get("a", "data"), "0 type 2: " + HexOf(Pattern(140)));
  EXPECT_EQ(rig.Get("a/m/x/0123456789abcdefghijk", "text"), "0 type 1: 7465787400");
}

TEST(FileTreeRestore, AgainAndAgainNothingIsLostButBlocks) {
  FileTreeRig rig;
  CreateTree(rig, "a");
  const std::string all = SubtreeText(rig, "");
  const std::string freeSlots = FreeSlots(rig);
  const SlotCounts::Kind blocks = CountSlots(rig.path).blocks;
  const std::string file = rig.dir / "b";
  ASSERT_EQ(Backup(rig, "a", file), 0u);
  for (unsigned int round = 1; round <= 5; ++round) {
    ASSERT_EQ(Restore(rig, "a", file), 0u);
    EXPECT_EQ(SubtreeText(rig, ""), all);
    ExpectSound(rig);
    const SlotCounts counts = CountSlots(rig.path);
    EXPECT_EQ(counts.blocks.reachable, blocks.used);
    EXPECT_EQ(counts.blocks.used, blocks.used * (1 + round));
    EXPECT_EQ(FreeSlots(rig).substr(0, 11), freeSlots.substr(0, 11));
  }
}

TEST(FileTreeRestore, ADeletedSubtreeComesBack) {
  FileTreeRig rig;
  CreateTree(rig, "a");
  const std::string all = SubtreeText(rig, "");
  const std::string file = rig.dir / "b";
  ASSERT_EQ(Backup(rig, "a", file), 0u);
  ASSERT_EQ(DeleteKey(rig, "a"), 0u);
  EXPECT_EQ(Restore(rig, "a", file), 2u);
  ASSERT_EQ(rig.Create("a"), 0u);
  EXPECT_EQ(Restore(rig, "a", file), 0u);
  EXPECT_EQ(SubtreeText(rig, ""), all);
  ExpectSound(rig);
}

// ---- over another key

TEST(FileTreeRestore, EverythingButTheNameComesFromTheBackup) {
  FileTreeRig rig;
  CreateTree(rig, "a");
  for (const char* key : {"z", "z/m", "z/b", "z/y", "z/mm", "z/m/1", "z/m/1/2", "z/m/3"}) {
    ASSERT_EQ(rig.Create(key), 0u);
    ASSERT_EQ(rig.CreateData(key, key, 3, key), 0u);
  }
  std::string others;
  for (const char* key : {"a", "z/b", "z/y", "z/mm"}) others += SubtreeText(rig, key);
  const std::string file = rig.dir / "b";
  ASSERT_EQ(Backup(rig, "a", file), 0u);
  EXPECT_EQ(Restore(rig, "z/m", file), 0u);
  EXPECT_EQ(SubtreeText(rig, "z/m"), SubtreeText(rig, "a"));
  EXPECT_EQ(rig.Find("z/m/1"), 2u);
  EXPECT_EQ(rig.Find("z/m/m/x"), 0u);
  EXPECT_EQ(ListedValues(rig, "z/m"), "0: text nothing data number");
  EXPECT_EQ(ListedValues(rig, "z"), "0: z");
  std::string now;
  for (const char* key : {"a", "z/b", "z/y", "z/mm"}) now += SubtreeText(rig, key);
  EXPECT_EQ(now, others);
  ExpectSound(rig);
}

TEST(FileTreeRestore, TheNodeOfTheNameKeepsItsLinksToOthers) {
  FileTreeRig rig;
  for (const char* key : {"m", "f", "t", "mn", "m/x"}) ASSERT_EQ(rig.Create(key), 0u);
  ASSERT_EQ(rig.StringNode(2), Packed("0000106d 00030000 00040000 00050000 00060000 00020000"));
  EXPECT_EQ(
      RestoreBytes(rig, "m", kComplete + NameRecord("y", kSome) + KeyRecord(0) + KeyRecord(0)), 0u);
  EXPECT_EQ(rig.StringNode(2), Packed("0000106d 00030000 00040000 00050000 00070000 00080000"));
  EXPECT_EQ(Listed(rig, ""), "0: t f mn m/y m");
  ExpectSound(rig);
}

TEST(FileTreeRestore, ABackupWithoutSubKeysLeavesNone) {
  FileTreeRig rig;
  CreateTree(rig, "a");
  ASSERT_EQ(rig.Create("b"), 0u);
  ASSERT_EQ(rig.CreateNumber("b", "only", 7), 0u);
  const std::string file = rig.dir / "b.bak";
  ASSERT_EQ(Backup(rig, "b", file), 0u);
  EXPECT_EQ(Restore(rig, "a", file), 0u);
  EXPECT_EQ(Listed(rig, ""), "0: b a");
  EXPECT_EQ(SubtreeText(rig, "a"), SubtreeText(rig, "b"));
  EXPECT_EQ(FreeSlots(rig).substr(0, 11), "361 361 362");
  ExpectSound(rig);
}

TEST(FileTreeRestore, AKeyIsRestoredBelowItself) {
  FileTreeRig rig;
  CreateTree(rig, "a");
  const std::string before = SubtreeText(rig, "a");
  const std::string file = rig.dir / "b";
  ASSERT_EQ(Backup(rig, "a", file), 0u);
  EXPECT_EQ(Restore(rig, "a/m/x", file), 0u);
  EXPECT_EQ(SubtreeText(rig, "a/m/x"), before);
  EXPECT_EQ(rig.Find("a/m/x/m/x/0123456789abcdefghijk"), 0u);
  ExpectSound(rig);
  EXPECT_EQ(Restore(rig, "a", file), 0u);
  EXPECT_EQ(SubtreeText(rig, "a"), before);
  ExpectSound(rig);
}

TEST(FileTreeRestore, SlashesAroundAPathMeanTheSameKey) {
  for (const char* path : {"a", "/a", "a/", "/a/"}) {
    FileTreeRig rig;
    ASSERT_EQ(rig.Create("a"), 0u);
    EXPECT_EQ(RestoreBytes(rig, path, kComplete + KeyRecord(kSome) + NumberRecord(0, "n", 5)), 0u);
    EXPECT_EQ(rig.Get("a", "n"), "0 type 0: 0500000000000000") << path;
    ExpectSound(rig);
  }
}

TEST(FileTreeRestore, ABackupIsCarriedToAnotherRegistry) {
  std::string text;
  TempDir folder;
  const std::string file = folder / "b";
  {
    FileTreeRig from;
    CreateTree(from, "a");
    ASSERT_EQ(Backup(from, "a", file), 0u);
    text = SubtreeText(from, "a");
  }
  FileTreeRig to;
  ASSERT_EQ(to.Create("other"), 0u);
  ASSERT_EQ(to.Create("other/key"), 0u);
  EXPECT_EQ(Restore(to, "other/key", file), 0u);
  EXPECT_EQ(SubtreeText(to, "other/key"), text);
  ExpectSound(to);
}

// What cannot be reached below the key stays in use.
TEST(FileTreeRestore, DamageBelowAKeyDoesNotKeepItFromBeingReplaced) {
  for (unsigned int link : {4u, 8u, 12u, 16u, 20u}) {
    for (unsigned int id : {0x300u, 0x200u, 0x100u, 0x1FFu, 0xEEEE00u, 0x5000u}) {
      SCOPED_TRACE(std::to_string(link) + " to " + std::to_string(id));
      FileTreeRig rig;
      for (const char* key : {"a", "a/b", "z"}) ASSERT_EQ(rig.Create(key), 0u);
      ASSERT_EQ(rig.CreateNumber("z", "n", 5), 0u);
      const std::string z = SubtreeText(rig, "z");
      rig.PatchWord(kStringArea + 40 * 3 + link, id);
      OnSmallStack([&] {
        EXPECT_EQ(RestoreBytes(rig, "a",
                               kComplete + NameRecord("y", kSome) + KeyRecord(0) + KeyRecord(0)),
                  0u);
      });
      EXPECT_EQ(SubtreeText(rig, "z"), z);
      EXPECT_EQ(Listed(rig, ""), "0: z a/y a");
      EXPECT_EQ(FreeLists(rig), "");
    }
  }
}

// ---- the root

TEST(FileTreeRestore, TheRootIsRestoredWithAllKeys) {
  FileTreeRig rig;
  CreateTree(rig, "");
  ASSERT_EQ(rig.tree.SetDefaultValue(kAdmin, nullptr, "", 77, false), 0u);
  const std::string all = SubtreeText(rig, "");
  const std::string file = rig.dir / "b";
  for (const char* path : {"", "/"}) {
    ASSERT_EQ(Backup(rig, path, file), 0u);
    ASSERT_EQ(DeleteKey(rig, "m"), 0u);
    ASSERT_EQ(rig.Create("new"), 0u);
    ASSERT_EQ(rig.Delete("", "data"), 0u);
    EXPECT_EQ(Restore(rig, path, file), 0u);
    EXPECT_EQ(SubtreeText(rig, ""), all);
    EXPECT_EQ(rig.Word(4180 + 28), 0x100u);  // still the start node
    ExpectSound(rig);
    rig.Reopen();
    EXPECT_EQ(SubtreeText(rig, ""), all);
  }
}

// The root is found without looking at the flag of its node.
TEST(FileTreeRestore, TheNodeOfTheNameTellsThatAKeyEndsThere) {
  FileTreeRig rig;
  rig.Patch(kStringArea + 40 + 2, "00");
  EXPECT_EQ(RestoreBytes(rig, "", kComplete + KeyRecord(0)), 0u);
  EXPECT_EQ(rig.StringNode(1), Packed("00001000 16*0 00020000"));
  ExpectSound(rig);
}

TEST(FileTreeRestore, ABackupOfTheRootBecomesAnOrdinaryKey) {
  FileTreeRig rig;
  ASSERT_EQ(rig.Create("a"), 0u);
  ASSERT_EQ(rig.Create("b"), 0u);
  ASSERT_EQ(rig.tree.SetKeyWatch(kAdmin, nullptr, "", 0x2A), 0u);
  const std::string file = rig.dir / "b.bak";
  ASSERT_EQ(Backup(rig, "", file), 0u);
  ASSERT_EQ(rig.KeyNode(1), Packed("00000000 0000 5f aa ffff0000 00000000 0000000000000000"));
  EXPECT_EQ(Restore(rig, "b", file), 0u);
  EXPECT_EQ(rig.StringNode(3), Packed("00001062 00000000 00000000 00000000 00040000 00060000"));
  EXPECT_EQ(rig.KeyNode(6), Packed("00000000 0000 5f a8 ffff0000 00000000 0000000000000000"));
  EXPECT_EQ(Listed(rig, ""), "0: b/b b/a b a");
  ExpectSound(rig);
  // A key below it takes over its rights, as below any key but the root.
  ASSERT_EQ(rig.Create("b/c"), 0u);
  unsigned char permission = 0;
  ASSERT_EQ(rig.tree.GetKeyPermission(kAdmin, nullptr, "b/c", &permission), 0u);
  EXPECT_EQ(permission, 0x5F);
}

TEST(FileTreeRestore, ABackupOfAnOrdinaryKeyBecomesTheRoot) {
  FileTreeRig rig;
  ASSERT_EQ(rig.tree.CreateKey(kUser, nullptr, "a", 0x1234, true), 0u);
  ASSERT_EQ(rig.tree.CreateKey(kUser, nullptr, "a/b", 0, false), 0u);
  ASSERT_EQ(rig.tree.SetKeyWatch(kUser, nullptr, "a", 0x3F), 0u);
  ASSERT_EQ(rig.CreateNumber("a", "n", 5), 0u);
  const std::string file = rig.dir / "b.bak";
  ASSERT_EQ(Backup(rig, "a", file), 0u);
  EXPECT_EQ(Restore(rig, "", file), 0u);
  EXPECT_EQ(rig.StringNode(1), Packed("00001000 00000000 00000000 00000000 00040000 00050000"));
  EXPECT_EQ(rig.KeyNode(5), Packed("00020000 0100 0f ff e8030000 00000000 3412000000000000"));
  EXPECT_EQ(Listed(rig, ""), "0: b");
  ExpectSound(rig);
  rig.Reopen();
  EXPECT_EQ(rig.tree.CreateRootKey(), 17u);
  EXPECT_EQ(rig.Get("", "n"), "0 type 0: 0500000000000000");
  EXPECT_EQ(rig.tree.CreateKey(kUser, nullptr, "c", 0, false), 0u);
  EXPECT_EQ(rig.tree.CreateKey(kOther, nullptr, "d", 0, false), 1u);
  ExpectSound(rig);
}

// ---- rights

TEST(FileTreeRestore, NeedsTheRightToCreate) {
  TempDir folder;
  const std::string file = folder / "b";
  PutFile(file, kComplete + NameRecord("x", kSome) + KeyRecord(0) + KeyRecord(0));
  ExpectToNeedTheRight(
      4, [](FileTreeRig& rig) { ASSERT_EQ(rig.Create("a/b"), 0u); },
      [&](TernaryRegistry& tree, unsigned int user) {
        return tree.RestoreKeyTree(user, nullptr, "a", file.c_str());
      });
}

TEST(FileTreeRestore, TheRightsOfTheKeysBelowDoNotCount) {
  FileTreeRig rig;
  ASSERT_EQ(rig.tree.CreateKey(kUser, nullptr, "a", 0, false), 0u);
  ASSERT_EQ(rig.Create("a/b"), 0u);
  rig.SetPermission(3, "00");
  const std::string file = rig.dir / "b";
  PutFile(file, kComplete + KeyRecord(0));
  EXPECT_EQ(rig.tree.RestoreKeyTree(kUser, nullptr, "a/b", file.c_str()), 1u);
  EXPECT_EQ(rig.tree.RestoreKeyTree(kUser, nullptr, "a", file.c_str()), 0u);
  EXPECT_EQ(rig.Find("a/b"), 2u);
  EXPECT_EQ(rig.KeyNode(4), Packed("00000000 0000 0f 00 ffff0000 00000000 0000000000000000"));
}

TEST(FileTreeRestore, AnybodyMayReplaceTheWholeRegistry) {
  FileTreeRig rig;
  CreateTree(rig, "a");
  std::string key = KeyRecord(0);
  key.replace(6, 1, "\xFF");      // all rights for everybody
  key.replace(8, 2, "\xE8\x03");  // kUser's
  const std::string file = rig.dir / "b";
  PutFile(file, kComplete + key);
  ASSERT_EQ(rig.tree.SetKeyPermission(kAdmin, nullptr, "", 0x1F), 0u);
  EXPECT_EQ(rig.tree.RestoreKeyTree(kUser, nullptr, "", file.c_str()), 1u);
  ASSERT_EQ(rig.tree.SetKeyPermission(kAdmin, nullptr, "", 0x5F), 0u);  // of a new registry
  EXPECT_EQ(rig.tree.RestoreKeyTree(kUser, nullptr, "", file.c_str()), 0u);
  EXPECT_EQ(Listed(rig, ""), "0:");
  EXPECT_EQ(SubtreeText(rig, ""), "[] owner 1000 rights 255 flags 0 default 0\n");
  ExpectSound(rig);
}

}  // namespace

}  // namespace tamu::registry
