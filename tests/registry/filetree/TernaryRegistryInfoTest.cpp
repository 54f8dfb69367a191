// What a key tells of itself and of what is below it.
#include <cstring>

#include "tests/registry/filetree/DamagedFile.h"
#include "tests/registry/filetree/KeyTesting.h"

namespace tamu::registry {

namespace {

// "a" with two values, 1 + 3 + 0 more in the three keys below it, and "ab" beside it.
void CreateFamily(FileTreeRig& rig) {
  for (const char* key : {"a", "a/b", "a/b/c", "a/d", "ab"}) ASSERT_EQ(rig.Create(key), 0u);
  for (const char* key : {"a", "a", "a/b", "a/b/c", "a/b/c", "a/b/c", "ab"}) {
    ASSERT_EQ(rig.CreateNumber(key, "n", 1), 0u);
  }
}

// GetKeyInfo into a record of that many bytes 0x5A: all fields, in hex.
std::string Information(FileTreeRig& rig, unsigned int user, const char* path) {
  KeyInfo info;
  std::memset(&info, 0x5A, sizeof info);
  const unsigned int result = rig.tree.GetKeyInfo(user, nullptr, path, &info);
  const unsigned int fields[] = {info.reserved,   info.subKeyCount,     info.totalKeyCount,
                                 info.valueCount, info.totalValueCount, info.userId,
                                 info.permission};
  std::string text = std::to_string(result) + ":";
  for (unsigned int field : fields) {
    text += " " + (field == 0x5A5A5A5A ? std::string("-") : std::to_string(field));
  }
  return text;
}

TEST(FileTreeInfo, KeysAndValuesAreCountedHereAndBelow) {
  FileTreeRig rig;
  CreateFamily(rig);
  EXPECT_EQ(Counted(rig, ""), "0: 2 of 5 keys, 0 of 7 values");
  EXPECT_EQ(Counted(rig, "a"), "0: 2 of 3 keys, 2 of 6 values");
  EXPECT_EQ(Counted(rig, "a/b"), "0: 1 of 1 keys, 1 of 4 values");
  EXPECT_EQ(Counted(rig, "a/b/c"), "0: 0 of 0 keys, 3 of 3 values");
  EXPECT_EQ(Counted(rig, "/a/d/"), "0: 0 of 0 keys, 0 of 0 values");
  EXPECT_EQ(Counted(rig, "ab"), "0: 0 of 0 keys, 1 of 1 values");
}

TEST(FileTreeInfo, NeighboursOnAllSidesAreOnTheSameLevel) {
  FileTreeRig rig;
  for (const char* key : {"m", "f", "t", "mn", "m/x", "m/y"}) ASSERT_EQ(rig.Create(key), 0u);
  EXPECT_EQ(Counted(rig, ""), "0: 4 of 6 keys, 0 of 0 values");
  EXPECT_EQ(Counted(rig, "m"), "0: 2 of 2 keys, 0 of 0 values");
}

TEST(FileTreeInfo, AllFieldsButTheFirstAreFilled) {
  FileTreeRig rig;
  CreateFamily(rig);
  rig.PatchWord(InKey(2, 8), kUser);  // its owner
  rig.SetPermission(2, "f5");
  EXPECT_EQ(Information(rig, kUser, "a"), "0: - 2 3 2 6 1000 245");
  EXPECT_EQ(Information(rig, kUser, ""), "0: - 2 5 0 7 1000 95");
}

TEST(FileTreeInfo, TheUserIsTheOneWhoAsks) {
  FileTreeRig rig;
  ASSERT_EQ(rig.tree.CreateKey(kUser, nullptr, "a", 0, false), 0u);
  rig.SetPermission(2, "1f");
  EXPECT_EQ(Information(rig, kUser, "a"), "0: - 0 0 0 0 1000 31");
  EXPECT_EQ(Information(rig, kOther, "a"), "0: - 0 0 0 0 2000 31");
  EXPECT_EQ(Information(rig, kAdmin, "a"), "0: - 0 0 0 0 65535 31");
  EXPECT_EQ(Information(rig, kOther, ""), "0: - 1 1 0 0 2000 95");
}

TEST(FileTreeInfo, NothingIsFilledInWhenItFails) {
  FileTreeRig rig;
  CreateFamily(rig);
  EXPECT_EQ(Information(rig, kAdmin, "x"), "2: - - - - - - -");
  EXPECT_EQ(Information(rig, kUser, "a"), "1: - - - - - - -");
  rig.PatchWord(InKey(4, 0), 0x3C8);  // the values of "a/b/c"
  EXPECT_EQ(Information(rig, kAdmin, "a"), "59: - - - - - - -");
  EXPECT_EQ(Information(rig, kAdmin, "a/b/c"), "59: - - - - - - -");
  EXPECT_EQ(Information(rig, kAdmin, "ab"), "0: - 0 0 1 1 65535 15");
}

TEST(FileTreeInfo, ValuesAreCountedAndNotTakenFromTheRecord) {
  FileTreeRig rig;
  CreateFamily(rig);
  for (unsigned int slot : {2u, 3u, 4u}) rig.Patch(InKey(slot, 4), "0900");
  EXPECT_EQ(Counted(rig, "a"), "0: 2 of 3 keys, 2 of 6 values");
  for (unsigned int slot : {2u, 3u, 4u}) rig.Patch(InKey(slot, 4), "0000");
  EXPECT_EQ(Counted(rig, "a"), "0: 2 of 3 keys, 2 of 6 values");
}

// Unlike in a list, whether a key is counted is told by its id, not by the flag.
TEST(FileTreeInfo, TheKeyOfANodeTellsWhetherItIsCounted) {
  FileTreeRig rig;
  for (const char* key : {"a", "b"}) ASSERT_EQ(rig.Create(key), 0u);
  rig.Patch(InString(2, 2), "00");
  EXPECT_EQ(Counted(rig, ""), "0: 2 of 2 keys, 0 of 0 values");
  rig.Patch(InString(2, 2), "10");
  rig.PatchWord(InString(2, 20), 0);
  EXPECT_EQ(Counted(rig, ""), "0: 1 of 1 keys, 0 of 0 values");
}

TEST(FileTreeInfo, NamesWithoutAKeyAreNotCounted) {
  FileTreeRig rig;
  for (const char* key : {"ab", "bc", "bc/x"}) ASSERT_EQ(rig.Create(key), 0u);
  EXPECT_EQ(Counted(rig, ""), "0: 2 of 3 keys, 0 of 0 values");
  ASSERT_EQ(DeleteKey(rig, "bc"), 0u);
  EXPECT_EQ(Counted(rig, ""), "0: 1 of 1 keys, 0 of 0 values");
}

TEST(FileTreeInfo, CountingNeedsTheRightToRead) {
  ExpectToNeedTheRight(
      1, [](FileTreeRig& rig) { ASSERT_EQ(rig.Create("a/b"), 0u); },
      [](TernaryRegistry& tree, unsigned int user) {
        KeyInfo info;
        return tree.GetKeyInfo(user, nullptr, "a", &info);
      });
}

TEST(FileTreeInfo, AKeyThatIsNotThereTellsNothing) {
  FileTreeRig rig;
  ASSERT_EQ(rig.Create("ab"), 0u);
  ASSERT_EQ(rig.Create("bc"), 0u);  // the name "a" exists now, as a branch
  int anything = 0;
  KeyInfo info;
  unsigned char permission = 77;
  EXPECT_EQ(Counted(rig, "a"), "2");
  EXPECT_EQ(Counted(rig, "a/"), "1");
  EXPECT_EQ(rig.tree.GetKeyInfo(0, nullptr, "a/", &info), 1u);
  EXPECT_EQ(rig.tree.GetKeyInfo(kAdmin, &anything, "", &info), 1u);
  EXPECT_EQ(rig.tree.GetKeyInfo(kAdmin, &anything, "ab", &info), 2u);
  EXPECT_EQ(rig.tree.GetKeyPermission(kAdmin, nullptr, "a", &permission), 2u);
  EXPECT_EQ(permission, 77u);
  EXPECT_EQ(rig.tree.SetKeyPermission(kAdmin, nullptr, "a", 1), 2u);
  EXPECT_EQ(rig.tree.SetKeyPermission(kUser, nullptr, "a", 1), 2u);
  EXPECT_EQ(rig.tree.SetKeyWatch(kAdmin, nullptr, "a", 1), 2u);
}

TEST(FileTreeInfo, CountsAreAddedToWhatIsThere) {
  FileTreeRig rig;
  CreateFamily(rig);
  TernaryStringNode node;  // in no file, with "a", 200, below it
  node.setChild(0x200);
  KeyInfo info = {1, 10, 20, 30, 40, 50, 60};
  EXPECT_EQ(rig.tree.RecursiveCountKey(&info, &node, 0), 0u);
  EXPECT_EQ(info.subKeyCount, 10u);  // all of them lie deeper
  EXPECT_EQ(info.totalKeyCount, 25u);
  EXPECT_EQ(info.totalValueCount, 47u);
  EXPECT_EQ(info.valueCount, 30u);
  EXPECT_EQ(info.reserved + info.userId + info.permission, 1u + 50 + 60);
}

TEST(FileTreeInfo, TheDepthTellsWhatIsASubKey) {
  FileTreeRig rig;
  CreateFamily(rig);
  TernaryStringNode node;
  node.setEqual(0x200);
  KeyInfo info = KeyInfo();
  EXPECT_EQ(rig.tree.RecursiveCountKey(&info, &node, 0), 0u);
  EXPECT_EQ(info.subKeyCount, 2u);
  EXPECT_EQ(info.totalKeyCount, 5u);
  EXPECT_EQ(info.totalValueCount, 7u);
  info = KeyInfo();
  EXPECT_EQ(rig.tree.RecursiveCountKey(&info, &node, 7), 0u);
  EXPECT_EQ(info.subKeyCount, 0u);
  EXPECT_EQ(info.totalKeyCount, 5u);
  node.setKeyNode(0x300);  // a key of its own
  node.setEqual(0);
  info = KeyInfo();
  EXPECT_EQ(rig.tree.RecursiveCountKey(&info, &node, 0), 0u);
  EXPECT_EQ(info.subKeyCount, 1u);
  EXPECT_EQ(info.totalKeyCount, 1u);
  EXPECT_EQ(info.totalValueCount, 1u);
}

TEST(FileTreeInfo, TheValuesOfARecordAreCounted) {
  FileTreeRig rig;
  for (const char* name : {"1", "2", "3"}) ASSERT_EQ(rig.CreateNumber("", name, 1), 0u);
  TernaryKeyNode key;
  unsigned int count = 10;
  EXPECT_EQ(rig.tree.CountKeyValues(&count, &key), 0u);
  EXPECT_EQ(count, 10u);
  key.setFirstValue(0x300);
  EXPECT_EQ(rig.tree.CountKeyValues(&count, &key), 0u);
  EXPECT_EQ(count, 13u);
  key.setFirstValue(0x200);
  EXPECT_EQ(rig.tree.CountKeyValues(&count, &key), 0u);
  EXPECT_EQ(count, 15u);
}

TEST(FileTreeInfo, WhatCannotBeFollowedIsRefused) {
  FileTreeRig rig;
  unsigned int count = 0;
  KeyInfo info = KeyInfo();
  TernaryKeyNode key;
  TernaryStringNode node;
  EXPECT_EQ(rig.tree.GetKeyInfo(kAdmin, nullptr, "", nullptr), 22u);
  EXPECT_EQ(rig.tree.GetKeyPermission(kAdmin, nullptr, "", nullptr), 22u);
  EXPECT_EQ(rig.tree.CountKeyValues(nullptr, &key), 22u);
  EXPECT_EQ(rig.tree.CountKeyValues(&count, nullptr), 22u);
  EXPECT_EQ(rig.tree.RecursiveCountKey(nullptr, &node, 0), 22u);
  EXPECT_EQ(rig.tree.RecursiveCountKey(&info, nullptr, 0), 22u);
}

TEST(FileTreeInfo, ANullPathIsTheRootKey) {
  FileTreeRig rig;
  unsigned char permission = 77;
  EXPECT_EQ(Information(rig, kUser, nullptr), "0: - 0 0 0 0 1000 95");
  EXPECT_EQ(rig.tree.SetKeyPermission(kAdmin, nullptr, nullptr, 0x1F), 0u);
  EXPECT_EQ(rig.tree.SetKeyWatch(kAdmin, nullptr, nullptr, 1), 0u);
  EXPECT_EQ(rig.tree.GetKeyPermission(kUser, nullptr, nullptr, &permission), 0u);
  EXPECT_EQ(permission, 0x1Fu);
  EXPECT_EQ(rig.KeyNode(1).substr(12, 4), "1f06");
}

TEST(FileTreeInfo, WithoutAFileThereIsNoRight) {
  FileTreeRig rig;
  ASSERT_EQ(rig.tree.Finalize(), 0u);
  unsigned char permission = 77;
  unsigned int count = 0;
  KeyInfo info = KeyInfo();
  TernaryKeyNode key;
  TernaryStringNode node;
  EXPECT_EQ(Counted(rig, ""), "1");
  EXPECT_EQ(rig.tree.CountKeyValues(&count, &key), 1u);
  EXPECT_EQ(rig.tree.RecursiveCountKey(&info, &node, 0), 1u);
  EXPECT_EQ(rig.tree.GetKeyPermission(kAdmin, nullptr, "", &permission), 1u);
  EXPECT_EQ(rig.tree.SetKeyPermission(kAdmin, nullptr, "", 1), 1u);
  EXPECT_EQ(rig.tree.SetKeyWatch(kAdmin, nullptr, "", 1), 1u);
  EXPECT_EQ(permission, 77u);
}

}  // namespace

}  // namespace tamu::registry
