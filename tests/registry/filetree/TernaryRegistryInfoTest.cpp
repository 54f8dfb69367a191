// What a key tells of itself and of what is below it.
#include <cstring>

#include "tests/registry/filetree/DamagedFile.h"
#include "tests/registry/filetree/KeyTesting.h"

namespace tamu::registry {

namespace {

// "a" with two values, 1 + 3 + 0 more in the three keys below it, and "ab" beside it.
void CreateFamily(FileTreeRig& rig) {
  for (const char* key : {"a", "a/b", "a/b/c", "a/d", "ab"})
    ASSERT_EQ(status::kOk, rig.Create(key));
  for (const char* key : {"a", "a", "a/b", "a/b/c", "a/b/c", "a/b/c", "ab"}) {
    ASSERT_EQ(status::kOk, rig.CreateNumber(key, "n", 1));
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

TEST(TernaryRegistryInfo, KeysAndValuesAreCountedHereAndBelow) {
  FileTreeRig rig;
  CreateFamily(rig);
  EXPECT_EQ("0: 2 of 5 keys, 0 of 7 values", Counted(rig, ""));
  EXPECT_EQ("0: 2 of 3 keys, 2 of 6 values", Counted(rig, "a"));
  EXPECT_EQ("0: 1 of 1 keys, 1 of 4 values", Counted(rig, "a/b"));
  EXPECT_EQ("0: 0 of 0 keys, 3 of 3 values", Counted(rig, "a/b/c"));
  EXPECT_EQ("0: 0 of 0 keys, 0 of 0 values", Counted(rig, "/a/d/"));
  EXPECT_EQ("0: 0 of 0 keys, 1 of 1 values", Counted(rig, "ab"));
}

TEST(TernaryRegistryInfo, NeighboursOnAllSidesAreOnTheSameLevel) {
  FileTreeRig rig;
  for (const char* key : {"m", "f", "t", "mn", "m/x", "m/y"})
    ASSERT_EQ(status::kOk, rig.Create(key));
  EXPECT_EQ("0: 4 of 6 keys, 0 of 0 values", Counted(rig, ""));
  EXPECT_EQ("0: 2 of 2 keys, 0 of 0 values", Counted(rig, "m"));
}

TEST(TernaryRegistryInfo, AllFieldsButTheFirstAreFilled) {
  FileTreeRig rig;
  CreateFamily(rig);
  rig.PatchWord(InKey(2, 8), kUser);  // its owner
  rig.SetPermission(2, "f5");
  EXPECT_EQ("0: - 2 3 2 6 1000 245", Information(rig, kUser, "a"));
  EXPECT_EQ("0: - 2 5 0 7 1000 95", Information(rig, kUser, ""));
}

TEST(TernaryRegistryInfo, TheUserIsTheOneWhoAsks) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.tree.CreateKey(kUser, nullptr, "a", 0, false));
  rig.SetPermission(2, "1f");
  EXPECT_EQ("0: - 0 0 0 0 1000 31", Information(rig, kUser, "a"));
  EXPECT_EQ("0: - 0 0 0 0 2000 31", Information(rig, kOther, "a"));
  EXPECT_EQ("0: - 0 0 0 0 65535 31", Information(rig, kAdmin, "a"));
  EXPECT_EQ("0: - 1 1 0 0 2000 95", Information(rig, kOther, ""));
}

TEST(TernaryRegistryInfo, NothingIsFilledInWhenItFails) {
  FileTreeRig rig;
  CreateFamily(rig);
  EXPECT_EQ("2: - - - - - - -", Information(rig, kAdmin, "x"));
  EXPECT_EQ("1: - - - - - - -", Information(rig, kUser, "a"));
  rig.PatchWord(InKey(4, 0), 0x3C8);  // the values of "a/b/c"
  EXPECT_EQ("59: - - - - - - -", Information(rig, kAdmin, "a"));
  EXPECT_EQ("59: - - - - - - -", Information(rig, kAdmin, "a/b/c"));
  EXPECT_EQ("0: - 0 0 1 1 65535 15", Information(rig, kAdmin, "ab"));
}

TEST(TernaryRegistryInfo, ValuesAreCountedAndNotTakenFromTheRecord) {
  FileTreeRig rig;
  CreateFamily(rig);
  for (unsigned int slot : {2u, 3u, 4u}) rig.Patch(InKey(slot, 4), "0900");
  EXPECT_EQ("0: 2 of 3 keys, 2 of 6 values", Counted(rig, "a"));
  for (unsigned int slot : {2u, 3u, 4u}) rig.Patch(InKey(slot, 4), "0000");
  EXPECT_EQ("0: 2 of 3 keys, 2 of 6 values", Counted(rig, "a"));
}

// Unlike in a list, whether a key is counted is told by its id, not by the flag.
TEST(TernaryRegistryInfo, TheKeyOfANodeTellsWhetherItIsCounted) {
  FileTreeRig rig;
  for (const char* key : {"a", "b"}) ASSERT_EQ(status::kOk, rig.Create(key));
  rig.Patch(InString(2, 2), "00");
  EXPECT_EQ("0: 2 of 2 keys, 0 of 0 values", Counted(rig, ""));
  rig.Patch(InString(2, 2), "10");
  rig.PatchWord(InString(2, 20), 0);
  EXPECT_EQ("0: 1 of 1 keys, 0 of 0 values", Counted(rig, ""));
}

TEST(TernaryRegistryInfo, NamesWithoutAKeyAreNotCounted) {
  FileTreeRig rig;
  for (const char* key : {"ab", "bc", "bc/x"}) ASSERT_EQ(status::kOk, rig.Create(key));
  EXPECT_EQ("0: 2 of 3 keys, 0 of 0 values", Counted(rig, ""));
  ASSERT_EQ(status::kOk, DeleteKey(rig, "bc"));
  EXPECT_EQ("0: 1 of 1 keys, 0 of 0 values", Counted(rig, ""));
}

TEST(TernaryRegistryInfo, CountingNeedsTheRightToRead) {
  ExpectToNeedTheRight(
      1, [](FileTreeRig& rig) { ASSERT_EQ(status::kOk, rig.Create("a/b")); },
      [](TernaryRegistry& tree, unsigned int user) {
        KeyInfo info;
        return tree.GetKeyInfo(user, nullptr, "a", &info);
      });
}

TEST(TernaryRegistryInfo, AKeyThatIsNotThereTellsNothing) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("ab"));
  ASSERT_EQ(status::kOk, rig.Create("bc"));  // the name "a" exists now, as a branch
  int anything = 0;
  KeyInfo info;
  unsigned char permission = 77;
  EXPECT_EQ("2", Counted(rig, "a"));
  EXPECT_EQ("1", Counted(rig, "a/"));
  EXPECT_EQ(status::kNoRight, rig.tree.GetKeyInfo(0, nullptr, "a/", &info));
  EXPECT_EQ(status::kNoRight, rig.tree.GetKeyInfo(kAdmin, &anything, "", &info));
  EXPECT_EQ(status::kNotFound, rig.tree.GetKeyInfo(kAdmin, &anything, "ab", &info));
  EXPECT_EQ(status::kNotFound, rig.tree.GetKeyPermission(kAdmin, nullptr, "a", &permission));
  EXPECT_EQ(77u, permission);
  EXPECT_EQ(status::kNotFound, rig.tree.SetKeyPermission(kAdmin, nullptr, "a", 1));
  EXPECT_EQ(status::kNotFound, rig.tree.SetKeyPermission(kUser, nullptr, "a", 1));
  EXPECT_EQ(status::kNotFound, rig.tree.SetKeyWatch(kAdmin, nullptr, "a", 1));
}

TEST(TernaryRegistryInfo, CountsAreAddedToWhatIsThere) {
  FileTreeRig rig;
  CreateFamily(rig);
  TernaryStringNode node;  // in no file, with "a", 200, below it
  node.setChild(0x200);
  KeyInfo info = {1, 10, 20, 30, 40, 50, 60};
  EXPECT_EQ(status::kOk, rig.tree.RecursiveCountKey(&info, &node, 0));
  EXPECT_EQ(10u, info.subKeyCount);  // all of them lie deeper
  EXPECT_EQ(25u, info.totalKeyCount);
  EXPECT_EQ(47u, info.totalValueCount);
  EXPECT_EQ(30u, info.valueCount);
  EXPECT_EQ(info.reserved + info.userId + info.permission, 1u + 50 + 60);
}

TEST(TernaryRegistryInfo, TheDepthTellsWhatIsASubKey) {
  FileTreeRig rig;
  CreateFamily(rig);
  TernaryStringNode node;
  node.setEqual(0x200);
  KeyInfo info = KeyInfo();
  EXPECT_EQ(status::kOk, rig.tree.RecursiveCountKey(&info, &node, 0));
  EXPECT_EQ(2u, info.subKeyCount);
  EXPECT_EQ(5u, info.totalKeyCount);
  EXPECT_EQ(7u, info.totalValueCount);
  info = KeyInfo();
  EXPECT_EQ(status::kOk, rig.tree.RecursiveCountKey(&info, &node, 7));
  EXPECT_EQ(0u, info.subKeyCount);
  EXPECT_EQ(5u, info.totalKeyCount);
  node.setKeyNode(0x300);  // a key of its own
  node.setEqual(0);
  info = KeyInfo();
  EXPECT_EQ(status::kOk, rig.tree.RecursiveCountKey(&info, &node, 0));
  EXPECT_EQ(1u, info.subKeyCount);
  EXPECT_EQ(1u, info.totalKeyCount);
  EXPECT_EQ(1u, info.totalValueCount);
}

TEST(TernaryRegistryInfo, TheValuesOfARecordAreCounted) {
  FileTreeRig rig;
  for (const char* name : {"1", "2", "3"}) ASSERT_EQ(status::kOk, rig.CreateNumber("", name, 1));
  TernaryKeyNode key;
  unsigned int count = 10;
  EXPECT_EQ(status::kOk, rig.tree.CountKeyValues(&count, &key));
  EXPECT_EQ(10u, count);
  key.setFirstValue(0x300);
  EXPECT_EQ(status::kOk, rig.tree.CountKeyValues(&count, &key));
  EXPECT_EQ(13u, count);
  key.setFirstValue(0x200);
  EXPECT_EQ(status::kOk, rig.tree.CountKeyValues(&count, &key));
  EXPECT_EQ(15u, count);
}

TEST(TernaryRegistryInfo, WhatCannotBeFollowedIsRefused) {
  FileTreeRig rig;
  unsigned int count = 0;
  KeyInfo info = KeyInfo();
  TernaryKeyNode key;
  TernaryStringNode node;
  EXPECT_EQ(status::kBadArgument, rig.tree.GetKeyInfo(kAdmin, nullptr, "", nullptr));
  EXPECT_EQ(status::kBadArgument, rig.tree.GetKeyPermission(kAdmin, nullptr, "", nullptr));
  EXPECT_EQ(status::kBadArgument, rig.tree.CountKeyValues(nullptr, &key));
  EXPECT_EQ(status::kBadArgument, rig.tree.CountKeyValues(&count, nullptr));
  EXPECT_EQ(status::kBadArgument, rig.tree.RecursiveCountKey(nullptr, &node, 0));
  EXPECT_EQ(status::kBadArgument, rig.tree.RecursiveCountKey(&info, nullptr, 0));
}

TEST(TernaryRegistryInfo, ANullPathIsTheRootKey) {
  FileTreeRig rig;
  unsigned char permission = 77;
  EXPECT_EQ("0: - 0 0 0 0 1000 95", Information(rig, kUser, nullptr));
  EXPECT_EQ(status::kOk, rig.tree.SetKeyPermission(kAdmin, nullptr, nullptr, 0x1F));
  EXPECT_EQ(status::kOk, rig.tree.SetKeyWatch(kAdmin, nullptr, nullptr, 1));
  EXPECT_EQ(status::kOk, rig.tree.GetKeyPermission(kUser, nullptr, nullptr, &permission));
  EXPECT_EQ(0x1Fu, permission);
  EXPECT_EQ("1f06", rig.KeyNode(1).substr(12, 4));
}

TEST(TernaryRegistryInfo, WithoutAFileThereIsNoRight) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.tree.Finalize());
  unsigned char permission = 77;
  unsigned int count = 0;
  KeyInfo info = KeyInfo();
  TernaryKeyNode key;
  TernaryStringNode node;
  EXPECT_EQ("1", Counted(rig, ""));
  EXPECT_EQ(status::kNoRight, rig.tree.CountKeyValues(&count, &key));
  EXPECT_EQ(status::kNoRight, rig.tree.RecursiveCountKey(&info, &node, 0));
  EXPECT_EQ(status::kNoRight, rig.tree.GetKeyPermission(kAdmin, nullptr, "", &permission));
  EXPECT_EQ(status::kNoRight, rig.tree.SetKeyPermission(kAdmin, nullptr, "", 1));
  EXPECT_EQ(status::kNoRight, rig.tree.SetKeyWatch(kAdmin, nullptr, "", 1));
  EXPECT_EQ(77u, permission);
}

}  // namespace

}  // namespace tamu::registry
