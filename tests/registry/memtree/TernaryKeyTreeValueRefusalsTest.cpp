// Changing values through a handle: what is refused, and what a full store keeps from being stored.
#include "tests/registry/memtree/LoadedWriting.h"

namespace tamu::registry {

namespace {

using LoadedValueWrites = LoadedWriting;

TEST_F(LoadedValueWrites, AnUnknownTypeChangesNothingAndIsNotReported) {
  Start({"a"});
  ASSERT_EQ(CreateData("a", "n", 1, Pattern(100)), 0u);
  ASSERT_EQ(CreateNumber("a", "m", 7), 0u);
  const std::string before = rig.Contents();
  for (unsigned int type : {6u, 31u, 32u, 0xFFFFFFFFu}) {
    SCOPED_TRACE(type);
    for (const std::string& bytes : {std::string(), std::string("x"), Pattern(1024)}) {
      EXPECT_EQ(SetData("a", "n", type, bytes), 0u);
      EXPECT_EQ(SetData("a", "m", type, bytes), 0u);
      EXPECT_EQ(SetData("a", "missing", type, bytes), 2u);
      EXPECT_EQ(SetData("missing", "n", type, bytes), 2u);
    }
  }
  EXPECT_TRUE(rig.Contents() == before);
  EXPECT_FALSE(root->start->isLocked());
  EXPECT_EQ(GetEverywhere("a", "n"), "type 1: " + HexOf(Pattern(100)));
  EXPECT_EQ(GetEverywhere("a", "m"), "type 0: 0700000000000000");
  ExpectSound(rig.path);
}

// The slot is given back, and no block was taken.
TEST_F(LoadedValueWrites, NothingIsCreatedOfAnUnknownType) {
  Start({"a"});
  ASSERT_EQ(CreateNumber("a", "old", 7), 0u);
  const std::string before = rig.Contents();
  for (unsigned int type : {6u, 31u, 32u, 0xFFFFFFFFu}) {
    SCOPED_TRACE(type);
    for (const std::string& bytes : {std::string(), std::string("x"), Pattern(1024)}) {
      EXPECT_EQ(CreateData("a", "n", type, bytes), 53u);
      EXPECT_EQ(CreateData("missing", "n", type, bytes), 2u);
    }
  }
  EXPECT_TRUE(rig.Contents() == before);
  EXPECT_EQ(FreeSlots(), "362 362 363 364");
  EXPECT_FALSE(root->start->isLocked());
  EXPECT_EQ(ListedValues("a"), "0: old");
  ASSERT_EQ(CreateNumber("a", "new", 8), 0u);
  EXPECT_EQ(Word(InKey(2, 0)), 0x200u);
}

TEST_F(LoadedValueWrites, AnUnknownTypeIsRefusedAfterTheFileHasGrown) {
  Start({"a"});
  for (unsigned int i = 0; i < 364; ++i) ASSERT_EQ(CreateNumber("a", "n", i), 0u);
  ASSERT_EQ(rig.Contents().size(), 75888u);
  EXPECT_EQ(CreateData("a", "n", 6, "x"), 53u);
  EXPECT_EQ(rig.Contents().size(), 75888u + 32 + 4 * 500 + 52 * 500);
  EXPECT_TRUE(CreateNumber("a", "n", 1) == 0u);
  ExpectSound(rig.path);
}

TEST_F(LoadedValueWrites, CreatingNeedsTheRightToCreate) {
  ExpectLoadedToNeedTheRight(4, [](TernaryKeyTree& tree, unsigned int user, TernaryHandle* handle) {
    return tree.CreateValue(user, handle, "a", "new", 1, true);
  });
  ExpectLoadedToNeedTheRight(4, [](TernaryKeyTree& tree, unsigned int user, TernaryHandle* handle) {
    char byte = 'x';
    Value value = {1, 1, &byte};
    return tree.CreateValue(user, handle, "a", "new", &value);
  });
}

TEST_F(LoadedValueWrites, SettingNeedsTheRightToModify) {
  ExpectLoadedToNeedTheRight(2, [](TernaryKeyTree& tree, unsigned int user, TernaryHandle* handle) {
    char byte = 'x';
    Value value = {1, 1, &byte};
    return tree.SetValue(user, handle, "a", "v", &value);
  });
}

TEST_F(LoadedValueWrites, DeletingNeedsTheRightToDelete) {
  ExpectLoadedToNeedTheRight(8, [](TernaryKeyTree& tree, unsigned int user, TernaryHandle* handle) {
    return tree.DeleteValue(user, handle, "a", "v");
  });
}

// Before the type and the name of the value.
TEST_F(LoadedValueWrites, TheRightIsAskedForFirst) {
  ASSERT_EQ(rig.file->CreateKey(kUser, nullptr, "a", 0, false), 0u);
  Start({});
  char byte = 'x';
  Value value = {6, 1, &byte};
  EXPECT_EQ(rig.loaded.CreateValue(kOther, root, "a", "n", &value), 1u);
  EXPECT_EQ(rig.loaded.SetValue(kOther, root, "a", "n", &value), 1u);
  EXPECT_EQ(rig.loaded.DeleteValue(kOther, root, "a", "n"), 1u);
  EXPECT_EQ(rig.loaded.SetValue(kUser, root, "a", "n", &value), 2u);
  EXPECT_EQ(rig.loaded.DeleteValue(kUser, root, "a", "n"), 2u);
}

TEST_F(LoadedValueWrites, WhatIsMissingIsNotFound) {
  Start({"a", "a/abc"});
  ASSERT_EQ(CreateNumber("a", "n", 1), 0u);
  const std::string before = rig.Contents();
  for (const char* key : {"b", "a/b", "a/ab", "a/abcd", "a//", "x/"}) {
    EXPECT_EQ(CreateNumber(key, "n", 1), 2u) << key;
    EXPECT_EQ(CreateData(key, "n", 1, "x"), 2u) << key;
    EXPECT_EQ(SetData(key, "n", 1, "x"), 2u) << key;
    EXPECT_EQ(DeleteValue(key, "n"), 2u) << key;
  }
  for (const char* name : {"", "nn", "N"}) {
    EXPECT_EQ(SetData("a", name, 1, "x"), 2u) << name;
    EXPECT_EQ(DeleteValue("a", name), 2u) << name;
  }
  EXPECT_TRUE(rig.Contents() == before);
}

TEST_F(LoadedValueWrites, WhatMustBeFollowedMustBeThere) {
  Start({"a"});
  ASSERT_EQ(CreateNumber("a", "n", 1), 0u);
  const std::string before = rig.Contents();
  char byte = 'x';
  Value value = {1, 1, &byte};
  Value noData = {1, 1, nullptr};
  TernaryKeyTree& tree = rig.loaded;
  EXPECT_EQ(tree.CreateValue(kAdmin, root, "a", nullptr, 1, true), 22u);
  EXPECT_EQ(tree.CreateValue(kAdmin, root, "a", nullptr, &value), 22u);
  EXPECT_EQ(tree.CreateValue(kAdmin, root, "a", "m", nullptr), 22u);
  EXPECT_EQ(tree.CreateValue(kAdmin, root, "a", "m", &noData), 22u);
  EXPECT_EQ(tree.SetValue(kAdmin, root, "a", nullptr, &value), 22u);
  EXPECT_EQ(tree.SetValue(kAdmin, root, "a", "n", nullptr), 22u);
  EXPECT_EQ(tree.SetValue(kAdmin, root, "a", "n", &noData), 22u);
  EXPECT_EQ(tree.DeleteValue(kAdmin, root, "a", nullptr), 22u);
  EXPECT_TRUE(rig.Contents() == before);
}

// Leaves one block, and no room for more.
void FillBlocks(LoadedTreeRig& rig) {
  TernaryFile& store = *rig.loaded.File();
  TernaryNodeDescriptor& blocks = store.Descriptor(NodeKind::kData);
  while (blocks.tableCount < 21) ASSERT_EQ(store.ExpandFile(&blocks, 64, 2), 0u);
}

TEST_F(LoadedValueWrites, DataThatFindsNoRoomChangesNothing) {
  Start({"a"});
  ASSERT_EQ(CreateData("a", "s", 1, Pattern(100)), 0u);
  ASSERT_EQ(CreateData("a", "o", 1, Pattern(30)), 0u);
  FillBlocks(rig);
  const std::string before = rig.Contents();
  EXPECT_EQ(CreateData("a", "n", 1, Pattern(65)), 75u);
  EXPECT_EQ(SetData("a", "s", 2, Pattern(200)), 75u);
  EXPECT_TRUE(rig.Contents() == before);
  EXPECT_EQ(GetEverywhere("a", "n"), "2");
  EXPECT_EQ(GetEverywhere("a", "s"), "type 1: " + HexOf(Pattern(100)));
  Reload();
  EXPECT_EQ(GetEverywhere("a", "s"), "type 1: " + HexOf(Pattern(100)));
  EXPECT_EQ(GetEverywhere("a", "o"), "type 1: " + HexOf(Pattern(30)));
  // What finds room can be stored.
  EXPECT_EQ(CreateData("a", "n", 1, Pattern(64)), 0u);
  EXPECT_EQ(GetEverywhere("a", "n"), "type 1: " + HexOf(Pattern(64)));
  EXPECT_EQ(SetData("a", "s", 0, Pattern(8)), 0u);
  EXPECT_EQ(GetEverywhere("a", "s"), "type 0: " + HexOf(Pattern(8)));
  EXPECT_EQ(DeleteValue("a", "n"), 0u);
  ExpectSound(rig.path);
}

// Of a number the blocks are of no use.
TEST_F(LoadedValueWrites, ANumberIsCreatedInAFullStoreAllTheSame) {
  Start({"a"});
  FillBlocks(rig);
  ASSERT_EQ(CreateData("a", "n", 0, Pattern(65)), 0u);
  EXPECT_EQ(GetEverywhere("a", "n"), "type 0: 01080f161d242b32");
  ExpectSound(rig.path);
}

TEST_F(LoadedValueWrites, WithoutRoomForAValueNothingIsChanged) {
  Start({"a"});
  TernaryFile& store = *rig.loaded.File();
  TernaryNodeDescriptor& values = store.Descriptor(NodeKind::kValue);
  while (values.tableCount < 21) ASSERT_EQ(store.ExpandFile(&values, 52, 2), 0u);
  ASSERT_EQ(CreateNumber("a", "n", 1), 0u);
  const std::string before = rig.Contents();
  EXPECT_EQ(CreateNumber("a", "m", 1), 75u);
  for (unsigned int type : {0u, 1u, 6u}) EXPECT_EQ(CreateData("a", "m", type, "x"), 75u);
  EXPECT_TRUE(rig.Contents() == before);
  EXPECT_FALSE(root->start->isLocked());
  EXPECT_EQ(GetEverywhere("a", "n"), "type 0: 0100000000000000");
  EXPECT_EQ(GetEverywhere("a", "m"), "2");
}

}  // namespace

}  // namespace tamu::registry
