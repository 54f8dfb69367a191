// Changing values through a handle: what is refused, and what a full store keeps from being stored.
#include "tests/registry/memtree/LoadedWriting.h"

namespace tamu::registry {

namespace {

using TernaryKeyTreeValueRefusalsTest = LoadedWriting;

TEST_F(TernaryKeyTreeValueRefusalsTest, AnUnknownTypeChangesNothingAndIsNotReported) {
  Start({"a"});
  ASSERT_EQ(status::kOk, CreateData("a", "n", 1, Pattern(100)));
  ASSERT_EQ(status::kOk, CreateNumber("a", "m", 7));
  const std::string before = rig.Contents();
  for (unsigned int type : {6u, 31u, 32u, 0xFFFFFFFFu}) {
    SCOPED_TRACE(type);
    for (const std::string& bytes : {std::string(), std::string("x"), Pattern(1024)}) {
      EXPECT_EQ(status::kOk, SetData("a", "n", type, bytes));
      EXPECT_EQ(status::kOk, SetData("a", "m", type, bytes));
      EXPECT_EQ(status::kNotFound, SetData("a", "missing", type, bytes));
      EXPECT_EQ(status::kNotFound, SetData("missing", "n", type, bytes));
    }
  }
  EXPECT_TRUE(rig.Contents() == before);
  EXPECT_FALSE(root->start->isLocked());
  EXPECT_EQ(GetEverywhere("a", "n"), "type 1: " + HexOf(Pattern(100)));
  EXPECT_EQ("type 0: 0700000000000000", GetEverywhere("a", "m"));
  ExpectSound(rig.path);
}

// The slot is given back, and no block was taken.
TEST_F(TernaryKeyTreeValueRefusalsTest, NothingIsCreatedOfAnUnknownType) {
  Start({"a"});
  ASSERT_EQ(status::kOk, CreateNumber("a", "old", 7));
  const std::string before = rig.Contents();
  for (unsigned int type : {6u, 31u, 32u, 0xFFFFFFFFu}) {
    SCOPED_TRACE(type);
    for (const std::string& bytes : {std::string(), std::string("x"), Pattern(1024)}) {
      EXPECT_EQ(status::kNoData, CreateData("a", "n", type, bytes));
      EXPECT_EQ(status::kNotFound, CreateData("missing", "n", type, bytes));
    }
  }
  EXPECT_TRUE(rig.Contents() == before);
  EXPECT_EQ("362 362 363 364", FreeSlots());
  EXPECT_FALSE(root->start->isLocked());
  EXPECT_EQ("0: old", ListedValues("a"));
  ASSERT_EQ(status::kOk, CreateNumber("a", "new", 8));
  EXPECT_EQ(0x200u, Word(InKey(2, 0)));
}

TEST_F(TernaryKeyTreeValueRefusalsTest, AnUnknownTypeIsRefusedAfterTheFileHasGrown) {
  Start({"a"});
  for (unsigned int i = 0; i < 364; ++i) ASSERT_EQ(status::kOk, CreateNumber("a", "n", i));
  ASSERT_EQ(75888u, rig.Contents().size());
  EXPECT_EQ(status::kNoData, CreateData("a", "n", 6, "x"));
  EXPECT_EQ(rig.Contents().size(), 75888u + 32 + 4 * 500 + 52 * 500);
  EXPECT_TRUE(CreateNumber("a", "n", 1) == 0u);
  ExpectSound(rig.path);
}

TEST_F(TernaryKeyTreeValueRefusalsTest, CreatingNeedsTheRightToCreate) {
  ExpectLoadedToNeedTheRight(4, [](TernaryKeyTree& tree, unsigned int user, TernaryHandle* handle) {
    return tree.CreateValue(user, handle, "a", "new", 1, true);
  });
  ExpectLoadedToNeedTheRight(4, [](TernaryKeyTree& tree, unsigned int user, TernaryHandle* handle) {
    char byte = 'x';
    Value value = {1, 1, &byte};
    return tree.CreateValue(user, handle, "a", "new", &value);
  });
}

TEST_F(TernaryKeyTreeValueRefusalsTest, SettingNeedsTheRightToModify) {
  ExpectLoadedToNeedTheRight(2, [](TernaryKeyTree& tree, unsigned int user, TernaryHandle* handle) {
    char byte = 'x';
    Value value = {1, 1, &byte};
    return tree.SetValue(user, handle, "a", "v", &value);
  });
}

TEST_F(TernaryKeyTreeValueRefusalsTest, DeletingNeedsTheRightToDelete) {
  ExpectLoadedToNeedTheRight(8, [](TernaryKeyTree& tree, unsigned int user, TernaryHandle* handle) {
    return tree.DeleteValue(user, handle, "a", "v");
  });
}

// Before the type and the name of the value.
TEST_F(TernaryKeyTreeValueRefusalsTest, TheRightIsAskedForFirst) {
  ASSERT_EQ(status::kOk, rig.file->CreateKey(kUser, nullptr, "a", 0, false));
  Start({});
  char byte = 'x';
  Value value = {6, 1, &byte};
  EXPECT_EQ(status::kNoRight, rig.loaded.CreateValue(kOther, root, "a", "n", &value));
  EXPECT_EQ(status::kNoRight, rig.loaded.SetValue(kOther, root, "a", "n", &value));
  EXPECT_EQ(status::kNoRight, rig.loaded.DeleteValue(kOther, root, "a", "n"));
  EXPECT_EQ(status::kNotFound, rig.loaded.SetValue(kUser, root, "a", "n", &value));
  EXPECT_EQ(status::kNotFound, rig.loaded.DeleteValue(kUser, root, "a", "n"));
}

TEST_F(TernaryKeyTreeValueRefusalsTest, WhatIsMissingIsNotFound) {
  Start({"a", "a/abc"});
  ASSERT_EQ(status::kOk, CreateNumber("a", "n", 1));
  const std::string before = rig.Contents();
  for (const char* key : {"b", "a/b", "a/ab", "a/abcd", "a//", "x/"}) {
    EXPECT_EQ(status::kNotFound, CreateNumber(key, "n", 1)) << key;
    EXPECT_EQ(status::kNotFound, CreateData(key, "n", 1, "x")) << key;
    EXPECT_EQ(status::kNotFound, SetData(key, "n", 1, "x")) << key;
    EXPECT_EQ(status::kNotFound, DeleteValue(key, "n")) << key;
  }
  for (const char* name : {"", "nn", "N"}) {
    EXPECT_EQ(status::kNotFound, SetData("a", name, 1, "x")) << name;
    EXPECT_EQ(status::kNotFound, DeleteValue("a", name)) << name;
  }
  EXPECT_TRUE(rig.Contents() == before);
}

TEST_F(TernaryKeyTreeValueRefusalsTest, WhatMustBeFollowedMustBeThere) {
  Start({"a"});
  ASSERT_EQ(status::kOk, CreateNumber("a", "n", 1));
  const std::string before = rig.Contents();
  char byte = 'x';
  Value value = {1, 1, &byte};
  Value noData = {1, 1, nullptr};
  TernaryKeyTree& tree = rig.loaded;
  EXPECT_EQ(status::kBadArgument, tree.CreateValue(kAdmin, root, "a", nullptr, 1, true));
  EXPECT_EQ(status::kBadArgument, tree.CreateValue(kAdmin, root, "a", nullptr, &value));
  EXPECT_EQ(status::kBadArgument, tree.CreateValue(kAdmin, root, "a", "m", nullptr));
  EXPECT_EQ(status::kBadArgument, tree.CreateValue(kAdmin, root, "a", "m", &noData));
  EXPECT_EQ(status::kBadArgument, tree.SetValue(kAdmin, root, "a", nullptr, &value));
  EXPECT_EQ(status::kBadArgument, tree.SetValue(kAdmin, root, "a", "n", nullptr));
  EXPECT_EQ(status::kBadArgument, tree.SetValue(kAdmin, root, "a", "n", &noData));
  EXPECT_EQ(status::kBadArgument, tree.DeleteValue(kAdmin, root, "a", nullptr));
  EXPECT_TRUE(rig.Contents() == before);
}

// Leaves one block, and no room for more.
void FillBlocks(LoadedTreeRig& rig) {
  TernaryFile& store = *rig.loaded.File();
  TernaryNodeDescriptor& blocks = store.Descriptor(NodeKind::kData);
  while (blocks.tableCount < 21) ASSERT_EQ(status::kOk, store.ExpandFile(&blocks, 64, 2));
}

TEST_F(TernaryKeyTreeValueRefusalsTest, DataThatFindsNoRoomChangesNothing) {
  Start({"a"});
  ASSERT_EQ(status::kOk, CreateData("a", "s", 1, Pattern(100)));
  ASSERT_EQ(status::kOk, CreateData("a", "o", 1, Pattern(30)));
  FillBlocks(rig);
  const std::string before = rig.Contents();
  EXPECT_EQ(status::kLimit, CreateData("a", "n", 1, Pattern(65)));
  EXPECT_EQ(status::kLimit, SetData("a", "s", 2, Pattern(200)));
  EXPECT_TRUE(rig.Contents() == before);
  EXPECT_EQ("2", GetEverywhere("a", "n"));
  EXPECT_EQ(GetEverywhere("a", "s"), "type 1: " + HexOf(Pattern(100)));
  Reload();
  EXPECT_EQ(GetEverywhere("a", "s"), "type 1: " + HexOf(Pattern(100)));
  EXPECT_EQ(GetEverywhere("a", "o"), "type 1: " + HexOf(Pattern(30)));
  // What finds room can be stored.
  EXPECT_EQ(status::kOk, CreateData("a", "n", 1, Pattern(64)));
  EXPECT_EQ(GetEverywhere("a", "n"), "type 1: " + HexOf(Pattern(64)));
  EXPECT_EQ(status::kOk, SetData("a", "s", 0, Pattern(8)));
  EXPECT_EQ(GetEverywhere("a", "s"), "type 0: " + HexOf(Pattern(8)));
  EXPECT_EQ(status::kOk, DeleteValue("a", "n"));
  ExpectSound(rig.path);
}

// Of a number the blocks are of no use.
TEST_F(TernaryKeyTreeValueRefusalsTest, ANumberIsCreatedInAFullStoreAllTheSame) {
  Start({"a"});
  FillBlocks(rig);
  ASSERT_EQ(status::kOk, CreateData("a", "n", 0, Pattern(65)));
  EXPECT_EQ("type 0: 01080f161d242b32", GetEverywhere("a", "n"));
  ExpectSound(rig.path);
}

TEST_F(TernaryKeyTreeValueRefusalsTest, WithoutRoomForAValueNothingIsChanged) {
  Start({"a"});
  TernaryFile& store = *rig.loaded.File();
  TernaryNodeDescriptor& values = store.Descriptor(NodeKind::kValue);
  while (values.tableCount < 21) ASSERT_EQ(status::kOk, store.ExpandFile(&values, 52, 2));
  ASSERT_EQ(status::kOk, CreateNumber("a", "n", 1));
  const std::string before = rig.Contents();
  EXPECT_EQ(status::kLimit, CreateNumber("a", "m", 1));
  for (unsigned int type : {0u, 1u, 6u}) EXPECT_EQ(status::kLimit, CreateData("a", "m", type, "x"));
  EXPECT_TRUE(rig.Contents() == before);
  EXPECT_FALSE(root->start->isLocked());
  EXPECT_EQ("type 0: 0100000000000000", GetEverywhere("a", "n"));
  EXPECT_EQ("2", GetEverywhere("a", "m"));
}

}  // namespace

}  // namespace tamu::registry
