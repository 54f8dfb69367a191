// Restoring over a key that damage has led to free slots: what is restored is never given back with
// it.
#include "tests/registry/filetree/BackupTesting.h"
#include "tests/registry/filetree/KeyDamage.h"

namespace tamu::registry {

namespace {

// "b" with the sub-key "b/y" and a value each, backed up to `backup`; "a" with the same below it,
// which takes the slots 4 and 5 of the string nodes and keys, 3 and 4 of the values.
void Prepare(FileTreeRig& rig, std::string* backup) {
  Create(rig, {"b", "b/y", "a", "a/x"});
  for (const char* key : {"b/y", "b", "a/x", "a"})
    ASSERT_EQ(status::kOk, rig.CreateNumber(key, "v", 7));
  *backup = BackedUp(rig, "b");
}

// Restores over "a": the new nodes are there and stay there when other keys take slots.
void ExpectReplaced(FileTreeRig& rig, const std::string& backup) {
  ASSERT_EQ(status::kOk, RestoreBytes(rig, "a", backup));
  EXPECT_EQ("", FreeLists(rig));
  ASSERT_EQ(status::kOk, rig.Create("c"));
  ASSERT_EQ(status::kOk, rig.CreateNumber("c", "other", 1));
  EXPECT_EQ("0: c a/y a b/y b", Listed(rig, ""));
  EXPECT_EQ("0: v", ListedValues(rig, "a"));
  EXPECT_EQ("0: v", ListedValues(rig, "a/y"));
}

TEST(TernaryRegistryRestoreDamage, ALinkToAFreeNode) {
  for (unsigned int link : kLinks) {
    SCOPED_TRACE(link);
    FileTreeRig rig;
    std::string backup;
    Prepare(rig, &backup);
    rig.PatchWord(InString(5, link), 0x600);  // the next to be taken
    ExpectReplaced(rig, backup);
    EXPECT_EQ("", StructureFindings(rig.path));
  }
}

TEST(TernaryRegistryRestoreDamage, ALinkToAFreeKey) {
  FileTreeRig rig;
  std::string backup;
  Prepare(rig, &backup);
  rig.PatchWord(InString(5, kKeyLink), 0x600);
  ExpectReplaced(rig, backup);
}

TEST(TernaryRegistryRestoreDamage, ALinkToAFreeValue) {
  FileTreeRig rig;
  std::string backup;
  Prepare(rig, &backup);
  rig.PatchWord(InKey(5, 0), 0x500);
  ExpectReplaced(rig, backup);
}

// The node of "a" comes to the front of the free list.
void FreeTheNodeOfTheName(FileTreeRig& rig) {
  rig.PatchWord(kStringTable + 32 + 4 * 4, 6);
  rig.PatchWord(kStringTable + 32, 4);
  rig.PatchWord(kStringTable + 28, rig.FreeStrings() + 1);
  rig.Reopen();
}

TEST(TernaryRegistryRestoreDamage, TheNodeOfTheNameIsFree) {
  FileTreeRig rig;
  std::string backup;
  Prepare(rig, &backup);
  FreeTheNodeOfTheName(rig);
  ExpectRefused(rig, "a", backup, 59);
}

// "a/x" is in use itself; its new nodes would get the slot of "a" and lead away from it.
TEST(TernaryRegistryRestoreDamage, ANodeOnTheWayIsFree) {
  FileTreeRig rig;
  std::string backup;
  Prepare(rig, &backup);
  FreeTheNodeOfTheName(rig);
  ExpectRefused(rig, "a/x", backup, 59);
  EXPECT_EQ("0: v", ListedValues(rig, "a/x"));
  EXPECT_EQ(status::kOk, RestoreBytes(rig, "b/y", kComplete + KeyRecord(0)))
      << "away from the damage";
}

// Links to a table that restoring appends.
TEST(TernaryRegistryRestoreDamage, ALinkIntoTheNextTable) {
  FileTreeRig rig;
  std::string backup;
  Prepare(rig, &backup);
  rig.PatchWord(InString(5, kHi), 0x101);
  rig.PatchWord(InString(5, kKeyLink), 0x101);
  rig.PatchWord(kStringTable + 28, 0);
  rig.PatchWord(kKeyTable + 28, 0);
  rig.Reopen();
  ASSERT_EQ(status::kOk, RestoreBytes(rig, "a", backup));
  ASSERT_EQ(status::kOk, rig.Create("c"));
  EXPECT_EQ("0: c a/y a b/y b", Listed(rig, ""));
  EXPECT_EQ("0: v", ListedValues(rig, "a/y"));
}

}  // namespace

}  // namespace tamu::registry
