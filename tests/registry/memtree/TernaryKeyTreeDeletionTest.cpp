// Deleting keys through a handle: what is found afterwards, and what stays.
#include "tests/registry/memtree/LoadedWriting.h"

namespace tamu::registry {

namespace {

using TernaryKeyTreeDeletionTest = LoadedWriting;

TEST_F(TernaryKeyTreeDeletionTest, TheNameStaysAndIsUsedAgain) {
  Start({"m", "f", "t", "m/x"});  // string nodes 2 to 5
  EXPECT_EQ(StringNode(2),
            "0000106d"                          // a key ends at "m"
            "00030000000400000000000000050000"  // lo "f", hi "t", child "x"
            "00020000");
  ASSERT_EQ(status::kOk, DeleteKey("m"));
  EXPECT_EQ(
      "0000006d"
      "00030000000400000000000000000000"
      "00000000",
      StringNode(2));
  for (const char* key : {"m", "m/", "m/x"})
    EXPECT_EQ(status::kNotFound, rig.Find(root, key)) << key;
  for (const char* key : {"f", "t"}) EXPECT_EQ(status::kOk, rig.Find(root, key)) << key;
  EXPECT_EQ("4 strings, 3 keys", rig.Loaded());
  EXPECT_EQ("360 361 364 364", FreeSlots());
  EXPECT_EQ(status::kNotFound, DeleteKey("m"));

  ASSERT_EQ(status::kOk, CreateKey("m"));
  EXPECT_EQ(
      "0000106d"
      "00030000000400000000000000000000"
      "00020000",
      StringNode(2));
  EXPECT_EQ("360 360 364 364", FreeSlots());
  EXPECT_EQ(status::kNotFound, rig.Find(root, "m/x"));
  Reload();
  EXPECT_EQ("4 strings, 4 keys", rig.Loaded());
  EXPECT_EQ(ListedStoredKeys(""), ListedKeys(root));
  ExpectSound(rig.path);
}

// So the name can be created again without a handle alone.
TEST_F(TernaryKeyTreeDeletionTest, ANameThatOthersGoOnFromKeepsThem) {
  Start({"m", "mn"});
  ASSERT_EQ(status::kOk, DeleteKey("m"));
  EXPECT_EQ(
      "0000006d"
      "00000000000000000003000000000000"
      "00000000",
      StringNode(2));
  EXPECT_EQ(status::kOk, rig.Find(root, "mn"));
  EXPECT_EQ(status::kNoRight, CreateKey("m"));
  EXPECT_EQ(status::kOk, rig.file->CreateKey(kAdmin, nullptr, "m", 0, false));
  EXPECT_EQ(
      "0000106d"
      "00000000000000000003000000000000"
      "00020000",
      StringNode(2));
  Reload();
  EXPECT_EQ("0: mn m", ListedKeys(root));
  ExpectSound(rig.path);
}

// The file after deleting a key of a tree with values, through a handle or without one.
std::string FileWithout(const char* key, bool throughHandle) {
  LoadedTreeRig rig;
  rig.Create({"a", "a/m", "a/f", "a/t", "a/mn", "a/m/x", "a/m/y", "b", "b/c"});
  for (const char* owner : {"", "a", "a/m", "a/m/x", "a/mn", "b"}) {
    for (const char* name : {"1", "2"}) EXPECT_EQ(status::kOk, rig.CreateNumber(owner, name, 1));
    EXPECT_EQ(status::kOk, rig.CreateData(owner, "d", Pattern(100)));
  }
  TernaryHandle* root = rig.Load("");
  EXPECT_EQ(0u, throughHandle ? rig.loaded.DeleteKey(kAdmin, root, key)
                              : rig.file->DeleteKey(kAdmin, nullptr, key));
  ExpectSound(rig.path);
  return rig.Contents();
}

TEST_F(TernaryKeyTreeDeletionTest, TheFileIsAsAfterDeletingWithoutAHandle) {
  for (const char* key : {"a", "a/m", "a/f", "a/mn", "a/m/x", "/b", "b/", "/a/m/"}) {
    EXPECT_TRUE(FileWithout(key, true) == FileWithout(key, false)) << key;
  }
}

// But for the mark of a node that was written while it was locked.
TEST_F(TernaryKeyTreeDeletionTest, TheRootKeyGoesTheSameWay) {
  for (const char* key : {"", "/"}) {
    std::string through = FileWithout(key, true);
    EXPECT_EQ('\x01', through[InString(1, 2)]);
    through[InString(1, 2)] = '\0';
    EXPECT_TRUE(through == FileWithout(key, false)) << key;
  }
}

TEST_F(TernaryKeyTreeDeletionTest, WithoutItsKeyTheRootIsNotFound) {
  Start({"a"});
  ASSERT_EQ(status::kOk, DeleteKey(""));
  EXPECT_EQ("363 364 364 364", FreeSlots());
  EXPECT_EQ("1 strings, 0 keys", rig.Loaded());
  EXPECT_EQ(status::kNotFound, rig.Find(root, ""));
  EXPECT_EQ(status::kNotFound, rig.Find(root, "a"));
  EXPECT_EQ(status::kNotFound, DeleteKey(""));
  EXPECT_EQ(status::kNoRight, CreateKey("b"));
  EXPECT_EQ(status::kOk, rig.Unload(root));
  EXPECT_EQ(status::kNotFound, rig.TryToLoad(""));
  EXPECT_EQ(status::kNotFound, rig.TryToLoad("a"));
}

TEST_F(TernaryKeyTreeDeletionTest, TheBlocksOfItsValuesStayInUse) {
  Start({"a", "a/b"});
  ASSERT_EQ(status::kOk, CreateData("a", "v", 1, Pattern(100)));  // blocks 1 and 2
  ASSERT_EQ(status::kOk, CreateData("a/b", "v", 1, "x"));         // block 3
  const std::string table = Hex(kDataTable, 32 + 4 * 365);
  const std::string blocks = Hex(kDataArea, 64 * 5);
  EXPECT_EQ(status::kOk, DeleteKey("a"));
  EXPECT_EQ("362 363 364 361", FreeSlots());
  EXPECT_EQ(Hex(kDataTable, 32 + 4 * 365), table);
  EXPECT_EQ(Hex(kDataArea, 64 * 5), blocks);
  ASSERT_EQ(status::kOk, CreateData("", "new", 1, "y"));
  EXPECT_EQ("79", DataBlock(4).substr(0, 2));
}

// With all that hangs on it, in memory and in the file; but nothing leads there.
TEST_F(TernaryKeyTreeDeletionTest, WhatAHandleNeedsStaysForIt) {
  Start({"a", "a/b", "a/b/c", "a/d", "x"});  // 2 to 6; d hangs on b
  for (const char* key : {"a", "a/b", "a/b/c"}) ASSERT_EQ(status::kOk, CreateNumber(key, "n", 5));
  TernaryHandle* handle = rig.Load("a/b");
  const std::string kept = Hex(InString(3, 0), 40 * 3) + Hex(InKey(3, 0), 24 * 3);
  EXPECT_EQ("358 358 361 364", FreeSlots());
  ASSERT_EQ(status::kOk, DeleteKey("a"));
  EXPECT_EQ(
      "00000061"
      "00000000000600000000000000000000"
      "00000000",
      StringNode(2));
  EXPECT_EQ(Hex(InString(3, 0), 40 * 3) + Hex(InKey(3, 0), 24 * 3), kept);
  EXPECT_EQ("358 359 362 364", FreeSlots()) << "the key and the value of a";
  EXPECT_EQ("type 0: 0500000000000000", Get(handle, "c", "n"));
  EXPECT_EQ(status::kNotFound, rig.Find(root, "a/b"));
  EXPECT_EQ("0: x", ListedStoredKeys(""));
  EXPECT_EQ(status::kOk, rig.Unload(handle));
  EXPECT_EQ("358 359 362 364", FreeSlots()) << "of the file nothing comes back";
  EXPECT_EQ("", StructureFindings(rig.path));
}

TEST_F(TernaryKeyTreeDeletionTest, NeedsTheRightToDelete) {
  ExpectLoadedToNeedTheRight(8, [](TernaryKeyTree& tree, unsigned int user, TernaryHandle* handle) {
    return tree.DeleteKey(user, handle, "a");
  });
}

// Not of what is above it or below it.
TEST_F(TernaryKeyTreeDeletionTest, TheRightIsThatOfTheKeyItself) {
  Start({"a", "a/b", "a/b/c"});
  for (const char* key : {"", "a", "a/b/c"}) {
    ASSERT_EQ(status::kOk, rig.loaded.SetKeyPermission(kAdmin, root, key, 0x00));
  }
  ASSERT_EQ(status::kOk, rig.loaded.SetKeyPermission(kAdmin, root, "a/b", 0x80));
  EXPECT_EQ(status::kNoRight, rig.loaded.DeleteKey(kOther, root, "a"));
  EXPECT_EQ(status::kNoRight, rig.loaded.DeleteKey(kOther, root, "a/b/c"));
  EXPECT_EQ(status::kNoRight, rig.loaded.DeleteKey(kAdmin, root, "a/b"));
  EXPECT_EQ(status::kOk, rig.loaded.DeleteKey(kOther, root, "a/b"));
  EXPECT_EQ("0: a", ListedKeys(root));
}

TEST_F(TernaryKeyTreeDeletionTest, MissesAMissingKey) {
  Start({"a", "abc", "abd"});
  const std::string before = rig.Contents();
  for (const char* key : {"b", "ab", "ab/", "a/b", "abcd", "a//"}) {
    EXPECT_EQ(status::kNotFound, DeleteKey(key)) << key;
  }
  EXPECT_TRUE(rig.Contents() == before);
}

// A name without a key has nothing below it that anybody could reach.
TEST_F(TernaryKeyTreeDeletionTest, BelowADeletedKeyNothingIsCreated) {
  Start({"a", "a/b"});
  ASSERT_EQ(status::kOk, DeleteKey("a"));
  EXPECT_EQ(status::kNoRight, CreateKey("a/b"));
  EXPECT_EQ(status::kNoRight, rig.file->CreateKey(kAdmin, nullptr, "a/b", 0, false));
  EXPECT_EQ(status::kBadArgument, CreateKey("c/b"));
}

// What a handle answers: FindKey, GetValue, GetDefaultValue, GetValueOffset, GetKeyInfo,
// GetKeyPermission, ListKeys, ListValues, SetValue, the two CreateValue, DeleteValue,
// SetDefaultValue, SetKeyPermission, SetKeyWatch, DeleteKey.
std::string Answers(LoadedTreeRig& rig, TernaryHandle* handle, const char* path) {
  TernaryKeyTree& tree = rig.loaded;
  unsigned long long number = 0;
  unsigned int offset = 0;
  unsigned char permission = 0;
  KeyInfo info = {};
  NameList names(5);
  char byte = 'x';
  Value value = {1, 1, &byte};
  ReadValue read;
  const unsigned int answers[] = {rig.Find(handle, path),
                                  tree.GetValue(kAdmin, handle, path, "n", &read),
                                  tree.GetDefaultValue(kAdmin, handle, path, &number),
                                  tree.GetValueOffset(kAdmin, handle, path, "n", &offset),
                                  tree.GetKeyInfo(kAdmin, handle, path, &info),
                                  tree.GetKeyPermission(kAdmin, handle, path, &permission),
                                  tree.ListKeys(kAdmin, handle, path, 0, &names, 0),
                                  tree.ListValues(kAdmin, handle, path, 0, &names),
                                  tree.SetValue(kAdmin, handle, path, "n", &value),
                                  tree.CreateValue(kAdmin, handle, path, "n", 1, true),
                                  tree.CreateValue(kAdmin, handle, path, "n", &value),
                                  tree.DeleteValue(kAdmin, handle, path, "n"),
                                  tree.SetDefaultValue(kAdmin, handle, path, 1, false),
                                  tree.SetKeyPermission(kAdmin, handle, path, 1),
                                  tree.SetKeyWatch(kAdmin, handle, path, 1),
                                  tree.DeleteKey(kAdmin, handle, path)};
  std::string text;
  for (unsigned int each : answers) text += std::to_string(each) + " ";
  return text;
}

TEST_F(TernaryKeyTreeDeletionTest, AHandleWhoseKeyIsDeletedFindsNothing) {
  Start({"a", "a/b", "a/b/c", "x"});
  TernaryHandle* a = rig.Load("a");
  ASSERT_EQ(status::kOk, DeleteKey("a"));
  const std::string before = rig.Contents();
  for (const char* path : {"", "/", "b", "b/c"}) {
    EXPECT_EQ(Answers(rig, a, path), Repeated("2 ", 16)) << path;
    EXPECT_EQ(status::kNoRight, rig.loaded.CreateKey(kAdmin, a, path, 0, false)) << path;
  }
  EXPECT_EQ(Answers(rig, root, "a"), Repeated("2 ", 16));
  EXPECT_EQ(Answers(rig, root, "a/"), Repeated("2 ", 16)) << "a name without a key";
  EXPECT_TRUE(rig.Contents() == before);
  // The name is used again, and with it the handle.
  ASSERT_EQ(status::kOk, CreateKey("a"));
  EXPECT_EQ(status::kOk, rig.loaded.CreateKey(kAdmin, a, "new", 0, false));
  EXPECT_EQ("0: x a/new a", ListedKeys(root));
  EXPECT_EQ("0: x a/new a", ListedStoredKeys(""));
  EXPECT_EQ(status::kOk, rig.Unload(a));
  ExpectSound(rig.path);
}

TEST_F(TernaryKeyTreeDeletionTest, AHandleWhoseKeyIsDeletedCanBeClosed) {
  Start({"a", "a/b", "x"});
  TernaryHandle* a = rig.Load("a");
  ASSERT_EQ(status::kOk, rig.loaded.DeleteKey(kAdmin, a, ""));
  ASSERT_EQ(status::kOk, rig.Unload(root));
  EXPECT_EQ(status::kOk, rig.Unload(a));
  root = rig.Load("");
  EXPECT_EQ("3 strings, 2 keys", rig.Loaded());
  ExpectSound(rig.path);
}

}  // namespace

}  // namespace tamu::registry
