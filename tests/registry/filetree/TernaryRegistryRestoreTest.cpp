// Restoring keys: what is replaced, what stays, and who may do it.
#include "tests/registry/filetree/BackupTesting.h"
#include "tests/registry/filetree/SmallStack.h"

namespace tamu::registry {

namespace {

// ---- over the key that was backed up

TEST(TernaryRegistryRestore, OverItselfAKeyIsAsItWasBackedUp) {
  FileTreeRig rig;
  CreateTree(rig, "a");
  CreateTree(rig, "z");
  const std::string all = SubtreeText(rig, "");
  const std::string file = rig.dir / "b";
  ASSERT_EQ(status::kOk, Backup(rig, "a", file));
  ASSERT_EQ(status::kOk, DeleteKey(rig, "a/m"));
  ASSERT_EQ(status::kOk, rig.Create("a/new"));
  ASSERT_EQ(status::kOk, rig.CreateNumber("a/t", "new", 1));
  ASSERT_EQ(status::kOk, rig.SetData("a/f", "number", 1, Pattern(1000)));
  ASSERT_EQ(status::kOk, rig.Delete("a", "data"));
  ASSERT_EQ(status::kOk, rig.tree.SetKeyPermission(kAdmin, nullptr, "a", 0x77));
  EXPECT_NE(SubtreeText(rig, ""), all);
  EXPECT_EQ(status::kOk, Restore(rig, "a", file));
  EXPECT_EQ(SubtreeText(rig, ""), all);
  ExpectSound(rig);
  rig.Reopen();
  EXPECT_EQ(SubtreeText(rig, ""), all);
  EXPECT_EQ(rig.Get("a", "data"), "0 type 2: " + HexOf(Pattern(140)));
  EXPECT_EQ("0 type 1: 7465787400", rig.Get("a/m/x/0123456789abcdefghijk", "text"));
}

TEST(TernaryRegistryRestore, AgainAndAgainNothingIsLostButBlocks) {
  FileTreeRig rig;
  CreateTree(rig, "a");
  const std::string all = SubtreeText(rig, "");
  const std::string freeSlots = FreeSlots(rig);
  const SlotCounts::Kind blocks = CountSlots(rig.path).blocks;
  const std::string file = rig.dir / "b";
  ASSERT_EQ(status::kOk, Backup(rig, "a", file));
  for (unsigned int round = 1; round <= 5; ++round) {
    ASSERT_EQ(status::kOk, Restore(rig, "a", file));
    EXPECT_EQ(SubtreeText(rig, ""), all);
    ExpectSound(rig);
    const SlotCounts counts = CountSlots(rig.path);
    EXPECT_EQ(counts.blocks.reachable, blocks.used);
    EXPECT_EQ(counts.blocks.used, blocks.used * (1 + round));
    EXPECT_EQ(FreeSlots(rig).substr(0, 11), freeSlots.substr(0, 11));
  }
}

TEST(TernaryRegistryRestore, ADeletedSubtreeComesBack) {
  FileTreeRig rig;
  CreateTree(rig, "a");
  const std::string all = SubtreeText(rig, "");
  const std::string file = rig.dir / "b";
  ASSERT_EQ(status::kOk, Backup(rig, "a", file));
  ASSERT_EQ(status::kOk, DeleteKey(rig, "a"));
  EXPECT_EQ(status::kNotFound, Restore(rig, "a", file));
  ASSERT_EQ(status::kOk, rig.Create("a"));
  EXPECT_EQ(status::kOk, Restore(rig, "a", file));
  EXPECT_EQ(SubtreeText(rig, ""), all);
  ExpectSound(rig);
}

// ---- over another key

TEST(TernaryRegistryRestore, EverythingButTheNameComesFromTheBackup) {
  FileTreeRig rig;
  CreateTree(rig, "a");
  for (const char* key : {"z", "z/m", "z/b", "z/y", "z/mm", "z/m/1", "z/m/1/2", "z/m/3"}) {
    ASSERT_EQ(status::kOk, rig.Create(key));
    ASSERT_EQ(status::kOk, rig.CreateData(key, key, 3, key));
  }
  std::string others;
  for (const char* key : {"a", "z/b", "z/y", "z/mm"}) others += SubtreeText(rig, key);
  const std::string file = rig.dir / "b";
  ASSERT_EQ(status::kOk, Backup(rig, "a", file));
  EXPECT_EQ(status::kOk, Restore(rig, "z/m", file));
  EXPECT_EQ(SubtreeText(rig, "z/m"), SubtreeText(rig, "a"));
  EXPECT_EQ(status::kNotFound, rig.Find("z/m/1"));
  EXPECT_EQ(status::kOk, rig.Find("z/m/m/x"));
  EXPECT_EQ("0: text nothing data number", ListedValues(rig, "z/m"));
  EXPECT_EQ("0: z", ListedValues(rig, "z"));
  std::string now;
  for (const char* key : {"a", "z/b", "z/y", "z/mm"}) now += SubtreeText(rig, key);
  EXPECT_EQ(now, others);
  ExpectSound(rig);
}

TEST(TernaryRegistryRestore, TheNodeOfTheNameKeepsItsLinksToOthers) {
  FileTreeRig rig;
  for (const char* key : {"m", "f", "t", "mn", "m/x"}) ASSERT_EQ(status::kOk, rig.Create(key));
  ASSERT_EQ(rig.StringNode(2), Packed("0000106d 00030000 00040000 00050000 00060000 00020000"));
  EXPECT_EQ(
      status::kOk,
      RestoreBytes(rig, "m", kComplete + NameRecord("y", kSome) + KeyRecord(0) + KeyRecord(0)));
  EXPECT_EQ(rig.StringNode(2), Packed("0000106d 00030000 00040000 00050000 00070000 00080000"));
  EXPECT_EQ("0: t f mn m/y m", Listed(rig, ""));
  ExpectSound(rig);
}

TEST(TernaryRegistryRestore, ABackupWithoutSubKeysLeavesNone) {
  FileTreeRig rig;
  CreateTree(rig, "a");
  ASSERT_EQ(status::kOk, rig.Create("b"));
  ASSERT_EQ(status::kOk, rig.CreateNumber("b", "only", 7));
  const std::string file = rig.dir / "b.bak";
  ASSERT_EQ(status::kOk, Backup(rig, "b", file));
  EXPECT_EQ(status::kOk, Restore(rig, "a", file));
  EXPECT_EQ("0: b a", Listed(rig, ""));
  EXPECT_EQ(SubtreeText(rig, "a"), SubtreeText(rig, "b"));
  EXPECT_EQ("361 361 362", FreeSlots(rig).substr(0, 11));
  ExpectSound(rig);
}

TEST(TernaryRegistryRestore, AKeyIsRestoredBelowItself) {
  FileTreeRig rig;
  CreateTree(rig, "a");
  const std::string before = SubtreeText(rig, "a");
  const std::string file = rig.dir / "b";
  ASSERT_EQ(status::kOk, Backup(rig, "a", file));
  EXPECT_EQ(status::kOk, Restore(rig, "a/m/x", file));
  EXPECT_EQ(SubtreeText(rig, "a/m/x"), before);
  EXPECT_EQ(status::kOk, rig.Find("a/m/x/m/x/0123456789abcdefghijk"));
  ExpectSound(rig);
  EXPECT_EQ(status::kOk, Restore(rig, "a", file));
  EXPECT_EQ(SubtreeText(rig, "a"), before);
  ExpectSound(rig);
}

TEST(TernaryRegistryRestore, SlashesAroundAPathMeanTheSameKey) {
  for (const char* path : {"a", "/a", "a/", "/a/"}) {
    FileTreeRig rig;
    ASSERT_EQ(status::kOk, rig.Create("a"));
    EXPECT_EQ(status::kOk,
              RestoreBytes(rig, path, kComplete + KeyRecord(kSome) + NumberRecord(0, "n", 5)));
    EXPECT_EQ("0 type 0: 0500000000000000", rig.Get("a", "n")) << path;
    ExpectSound(rig);
  }
}

TEST(TernaryRegistryRestore, ABackupIsCarriedToAnotherRegistry) {
  std::string text;
  TempDir folder;
  const std::string file = folder / "b";
  {
    FileTreeRig from;
    CreateTree(from, "a");
    ASSERT_EQ(status::kOk, Backup(from, "a", file));
    text = SubtreeText(from, "a");
  }
  FileTreeRig to;
  ASSERT_EQ(status::kOk, to.Create("other"));
  ASSERT_EQ(status::kOk, to.Create("other/key"));
  EXPECT_EQ(status::kOk, Restore(to, "other/key", file));
  EXPECT_EQ(SubtreeText(to, "other/key"), text);
  ExpectSound(to);
}

// What cannot be reached below the key stays in use.
TEST(TernaryRegistryRestore, DamageBelowAKeyDoesNotKeepItFromBeingReplaced) {
  for (unsigned int link : {4u, 8u, 12u, 16u, 20u}) {
    for (unsigned int id : {0x300u, 0x200u, 0x100u, 0x1FFu, 0xEEEE00u, 0x5000u}) {
      SCOPED_TRACE(std::to_string(link) + " to " + std::to_string(id));
      FileTreeRig rig;
      for (const char* key : {"a", "a/b", "z"}) ASSERT_EQ(status::kOk, rig.Create(key));
      ASSERT_EQ(status::kOk, rig.CreateNumber("z", "n", 5));
      const std::string z = SubtreeText(rig, "z");
      rig.PatchWord(kStringArea + 40 * 3 + link, id);
      OnSmallStack([&] {
        EXPECT_EQ(status::kOk,
                  RestoreBytes(rig, "a",
                               kComplete + NameRecord("y", kSome) + KeyRecord(0) + KeyRecord(0)));
      });
      EXPECT_EQ(SubtreeText(rig, "z"), z);
      EXPECT_EQ("0: z a/y a", Listed(rig, ""));
      EXPECT_EQ("", FreeLists(rig));
    }
  }
}

// ---- the root

TEST(TernaryRegistryRestore, TheRootIsRestoredWithAllKeys) {
  FileTreeRig rig;
  CreateTree(rig, "");
  ASSERT_EQ(status::kOk, rig.tree.SetDefaultValue(kAdmin, nullptr, "", 77, false));
  const std::string all = SubtreeText(rig, "");
  const std::string file = rig.dir / "b";
  for (const char* path : {"", "/"}) {
    ASSERT_EQ(status::kOk, Backup(rig, path, file));
    ASSERT_EQ(status::kOk, DeleteKey(rig, "m"));
    ASSERT_EQ(status::kOk, rig.Create("new"));
    ASSERT_EQ(status::kOk, rig.Delete("", "data"));
    EXPECT_EQ(status::kOk, Restore(rig, path, file));
    EXPECT_EQ(SubtreeText(rig, ""), all);
    EXPECT_EQ(0x100u, rig.Word(4180 + 28));  // still the start node
    ExpectSound(rig);
    rig.Reopen();
    EXPECT_EQ(SubtreeText(rig, ""), all);
  }
}

// The root is found without looking at the flag of its node.
TEST(TernaryRegistryRestore, TheNodeOfTheNameTellsThatAKeyEndsThere) {
  FileTreeRig rig;
  rig.Patch(kStringArea + 40 + 2, "00");
  EXPECT_EQ(status::kOk, RestoreBytes(rig, "", kComplete + KeyRecord(0)));
  EXPECT_EQ(rig.StringNode(1), Packed("00001000 16*0 00020000"));
  ExpectSound(rig);
}

TEST(TernaryRegistryRestore, ABackupOfTheRootBecomesAnOrdinaryKey) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("a"));
  ASSERT_EQ(status::kOk, rig.Create("b"));
  ASSERT_EQ(status::kOk, rig.tree.SetKeyWatch(kAdmin, nullptr, "", 0x2A));
  const std::string file = rig.dir / "b.bak";
  ASSERT_EQ(status::kOk, Backup(rig, "", file));
  ASSERT_EQ(rig.KeyNode(1), Packed("00000000 0000 5f aa ffff0000 00000000 0000000000000000"));
  EXPECT_EQ(status::kOk, Restore(rig, "b", file));
  EXPECT_EQ(rig.StringNode(3), Packed("00001062 00000000 00000000 00000000 00040000 00060000"));
  EXPECT_EQ(rig.KeyNode(6), Packed("00000000 0000 5f a8 ffff0000 00000000 0000000000000000"));
  EXPECT_EQ("0: b/b b/a b a", Listed(rig, ""));
  ExpectSound(rig);
  // A key below it takes over its rights, as below any key but the root.
  ASSERT_EQ(status::kOk, rig.Create("b/c"));
  unsigned char permission = 0;
  ASSERT_EQ(status::kOk, rig.tree.GetKeyPermission(kAdmin, nullptr, "b/c", &permission));
  EXPECT_EQ(0x5F, permission);
}

TEST(TernaryRegistryRestore, ABackupOfAnOrdinaryKeyBecomesTheRoot) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.tree.CreateKey(kUser, nullptr, "a", 0x1234, true));
  ASSERT_EQ(status::kOk, rig.tree.CreateKey(kUser, nullptr, "a/b", 0, false));
  ASSERT_EQ(status::kOk, rig.tree.SetKeyWatch(kUser, nullptr, "a", 0x3F));
  ASSERT_EQ(status::kOk, rig.CreateNumber("a", "n", 5));
  const std::string file = rig.dir / "b.bak";
  ASSERT_EQ(status::kOk, Backup(rig, "a", file));
  EXPECT_EQ(status::kOk, Restore(rig, "", file));
  EXPECT_EQ(rig.StringNode(1), Packed("00001000 00000000 00000000 00000000 00040000 00050000"));
  EXPECT_EQ(rig.KeyNode(5), Packed("00020000 0100 0f ff e8030000 00000000 3412000000000000"));
  EXPECT_EQ("0: b", Listed(rig, ""));
  ExpectSound(rig);
  rig.Reopen();
  EXPECT_EQ(status::kExists, rig.tree.CreateRootKey());
  EXPECT_EQ("0 type 0: 0500000000000000", rig.Get("", "n"));
  EXPECT_EQ(status::kOk, rig.tree.CreateKey(kUser, nullptr, "c", 0, false));
  EXPECT_EQ(status::kNoRight, rig.tree.CreateKey(kOther, nullptr, "d", 0, false));
  ExpectSound(rig);
}

// ---- rights

TEST(TernaryRegistryRestore, NeedsTheRightToCreate) {
  TempDir folder;
  const std::string file = folder / "b";
  PutFile(file, kComplete + NameRecord("x", kSome) + KeyRecord(0) + KeyRecord(0));
  ExpectToNeedTheRight(
      4, [](FileTreeRig& rig) { ASSERT_EQ(status::kOk, rig.Create("a/b")); },
      [&](TernaryRegistry& tree, unsigned int user) {
        return tree.RestoreKeyTree(user, nullptr, "a", file.c_str());
      });
}

TEST(TernaryRegistryRestore, TheRightsOfTheKeysBelowDoNotCount) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.tree.CreateKey(kUser, nullptr, "a", 0, false));
  ASSERT_EQ(status::kOk, rig.Create("a/b"));
  rig.SetPermission(3, "00");
  const std::string file = rig.dir / "b";
  PutFile(file, kComplete + KeyRecord(0));
  EXPECT_EQ(status::kNoRight, rig.tree.RestoreKeyTree(kUser, nullptr, "a/b", file.c_str()));
  EXPECT_EQ(status::kOk, rig.tree.RestoreKeyTree(kUser, nullptr, "a", file.c_str()));
  EXPECT_EQ(status::kNotFound, rig.Find("a/b"));
  EXPECT_EQ(rig.KeyNode(4), Packed("00000000 0000 0f 00 ffff0000 00000000 0000000000000000"));
}

TEST(TernaryRegistryRestore, AnybodyMayReplaceTheWholeRegistry) {
  FileTreeRig rig;
  CreateTree(rig, "a");
  std::string key = KeyRecord(0);
  key.replace(6, 1, "\xFF");      // all rights for everybody
  key.replace(8, 2, "\xE8\x03");  // kUser's
  const std::string file = rig.dir / "b";
  PutFile(file, kComplete + key);
  ASSERT_EQ(status::kOk, rig.tree.SetKeyPermission(kAdmin, nullptr, "", 0x1F));
  EXPECT_EQ(status::kNoRight, rig.tree.RestoreKeyTree(kUser, nullptr, "", file.c_str()));
  ASSERT_EQ(status::kOk,
            rig.tree.SetKeyPermission(kAdmin, nullptr, "", 0x5F));  // of a new registry
  EXPECT_EQ(status::kOk, rig.tree.RestoreKeyTree(kUser, nullptr, "", file.c_str()));
  EXPECT_EQ("0:", Listed(rig, ""));
  EXPECT_EQ("[] owner 1000 rights 255 flags 0 default 0\n", SubtreeText(rig, ""));
  ExpectSound(rig);
}

}  // namespace

}  // namespace tamu::registry
