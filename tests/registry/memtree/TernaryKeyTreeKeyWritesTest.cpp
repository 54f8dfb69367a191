// Changing through a handle what a key holds itself.
#include "tests/platform/ChildProcess.h"
#include "tests/registry/memtree/LoadedWriting.h"

namespace tamu::registry {

namespace {

using LoadedKeyWrites = LoadedWriting;

TEST_F(LoadedKeyWrites, APermissionIsOneByteOfTheKey) {
  Start({"a"});
  ASSERT_EQ(rig.loaded.SetKeyPermission(kAdmin, root, "a", 0xA5), 0u);
  EXPECT_EQ(KeyNode(2),
            "000000000000a500"
            "ffff000000000000"
            "0000000000000000");
  unsigned char permission = 0;
  for (int loadedAnew = 0; loadedAnew < 2; ++loadedAnew) {
    EXPECT_EQ(rig.loaded.GetKeyPermission(kOther, root, "a", &permission), 0u);
    EXPECT_EQ(permission, 0xA5);
    Reload();
  }
  EXPECT_EQ(rig.file->GetKeyPermission(kOther, nullptr, "a", &permission), 0u);
  EXPECT_EQ(permission, 0xA5);
}

TEST_F(LoadedKeyWrites, ADefaultNeedsTheRightToModify) {
  for (bool clear : {false, true}) {
    ExpectLoadedToNeedTheRight(
        2, [clear](TernaryKeyTree& tree, unsigned int user, TernaryHandle* handle) {
          return tree.SetDefaultValue(user, handle, "a", 8, clear);
        });
  }
}

TEST_F(LoadedKeyWrites, AWatchNeedsTheRightToRead) {
  ExpectLoadedToNeedTheRight(1, [](TernaryKeyTree& tree, unsigned int user, TernaryHandle* handle) {
    return tree.SetKeyWatch(user, handle, "a", 5);
  });
}

// What every operation that changes something answers for the administrator: CreateKey of a key
// below, SetDefaultValue, SetKeyPermission, SetKeyWatch, the two CreateValue, SetValue,
// DeleteValue, DeleteKey.
std::string Writes(TernaryKeyTree& tree, TernaryHandle* handle, const std::string& key) {
  const char* path = key.c_str();
  const std::string below = key.empty() ? "new" : key + "/new";
  char byte = 'x';
  Value value = {1, 1, &byte};
  const unsigned int answers[] = {tree.CreateKey(kAdmin, handle, below.c_str(), 0, false),
                                  tree.SetDefaultValue(kAdmin, handle, path, 1, false),
                                  tree.SetKeyPermission(kAdmin, handle, path, 0x0F),
                                  tree.SetKeyWatch(kAdmin, handle, path, 1),
                                  tree.CreateValue(kAdmin, handle, path, "n", 1, true),
                                  tree.CreateValue(kAdmin, handle, path, "d", &value),
                                  tree.SetValue(kAdmin, handle, path, "d", &value),
                                  tree.DeleteValue(kAdmin, handle, path, "n"),
                                  tree.DeleteKey(kAdmin, handle, path)};
  std::string text;
  for (unsigned int each : answers) text += std::to_string(each) + " ";
  return text;
}

TEST_F(LoadedKeyWrites, AKeyIsReachedThroughAnyHandleAboveIt) {
  const struct {
    const char* handle;
    const char* path;
  } kWays[] = {{"", "a/b"}, {"", "/a/b"}, {"", "a/b/"}, {"a", "b"},
               {"a", "b/"}, {"a", "/b"},  {"a/b", ""},  {"a/b", "/"}};
  for (const auto& way : kWays) {
    SCOPED_TRACE(std::string(way.handle) + " " + way.path);
    LoadedTreeRig other;
    other.Create({"a", "a/b", "a/b/c"});
    TernaryHandle* handle = other.Load(way.handle);
    char byte = 'x';
    Value value = {1, 1, &byte};
    EXPECT_EQ(other.loaded.SetDefaultValue(kAdmin, handle, way.path, 1, false), 0u);
    EXPECT_EQ(other.loaded.SetKeyPermission(kAdmin, handle, way.path, 0x1F), 0u);
    EXPECT_EQ(other.loaded.SetKeyWatch(kAdmin, handle, way.path, 1), 0u);
    EXPECT_EQ(other.loaded.CreateValue(kAdmin, handle, way.path, "n", 1, true), 0u);
    EXPECT_EQ(other.loaded.CreateValue(kAdmin, handle, way.path, "d", &value), 0u);
    EXPECT_EQ(other.loaded.SetValue(kAdmin, handle, way.path, "n", &value), 0u);
    EXPECT_EQ(other.loaded.DeleteValue(kAdmin, handle, way.path, "d"), 0u);
    EXPECT_EQ(HexOf(FileBytes(other.path, InKey(3, 0), 24)),
              "0001000001001f05"
              "ffff000000000000"
              "0100000000000000");
    EXPECT_EQ(SubtreeText(other.path, "a/b"),
              "[] owner 65535 rights 31 flags 5 default 1 n=1+1:78\n"
              "[c] owner 65535 rights 15 flags 0 default 0\n");
    EXPECT_EQ(other.loaded.DeleteKey(kAdmin, handle, way.path), 0u);
    EXPECT_EQ(SubtreeText(other.path, "a/b"), "");
  }
}

TEST_F(LoadedKeyWrites, WithoutAHandleNothingIsChanged) {
  Start({"a"});
  ASSERT_EQ(CreateNumber("a", "n", 1), 0u);
  const std::string before = rig.Contents();
  EXPECT_EQ(Writes(rig.loaded, nullptr, "a"), "22 22 22 22 22 22 22 22 22 ");
  EXPECT_EQ(Writes(rig.loaded, nullptr, ""), "22 22 22 22 22 22 22 22 22 ");
  EXPECT_TRUE(rig.Contents() == before);
}

TEST_F(LoadedKeyWrites, ATreeThatIsNotOpenChangesNothing) {
  Start({"a"});
  EXPECT_EQ(Writes(rig.loaded, root, "a"), "0 0 0 0 0 0 0 0 0 ");
  TernaryKeyTree closed(nullptr);
  EXPECT_EQ(Writes(closed, nullptr, "a"), "1 1 1 1 1 1 1 1 1 ");
  const std::string file = rig.dir / "other.rce";
  ASSERT_EQ(rig.Unload(root), 0u);
  rig.Close();
  ASSERT_EQ(closed.Initialize(file.c_str()), 0u);
  ASSERT_EQ(closed.Finalize(), 0u);
  EXPECT_EQ(Writes(closed, nullptr, "a"), "1 1 1 1 1 1 1 1 1 ");
}

TEST_F(LoadedKeyWrites, AMissingKeyIsNotFound) {
  Start({"a", "abc", "abd"});
  const std::string before = SubtreeText(rig.path, "");
  for (const char* key : {"b", "ab", "ab/", "a/b", "abcd"}) {
    EXPECT_EQ(Writes(rig.loaded, root, key), "22 2 2 2 2 2 2 2 2 ") << key;
  }
  EXPECT_EQ(SubtreeText(rig.path, ""), before);
  ExpectSound(rig.path);
}

TEST_F(LoadedKeyWrites, WhatGoesWithoutAHandleAloneIsNotThere) {
  Start({"a"});
  ASSERT_EQ(CreateNumber("a", "n", 5), 0u);
  RegistryInterface& tree = rig.loaded;
  const std::string backup = rig.dir / "backup";
  const std::string before = rig.Contents();
  for (TernaryHandle* handle : {root, static_cast<TernaryHandle*>(nullptr)}) {
    unsigned long long number = 9;
    EXPECT_EQ(tree.GetSetValue(kAdmin, handle, "a", "n", &number, true), 37u);
    EXPECT_EQ(tree.GetSetValue(kAdmin, handle, "a", "n", &number, false), 37u);
    EXPECT_EQ(number, 9u);
    EXPECT_EQ(tree.FindKey(kAdmin, handle, "a", 0), 37u);
    EXPECT_EQ(tree.BackupKeyTree(kAdmin, handle, "a", backup.c_str()), 37u);
    EXPECT_EQ(tree.RestoreKeyTree(kAdmin, handle, "a", backup.c_str()), 37u);
  }
  EXPECT_EQ(tree.LoadKey("a", nullptr), 37u);
  EXPECT_EQ(tree.StoreKey(nullptr), 37u);
  EXPECT_FALSE(std::filesystem::exists(backup));
  EXPECT_TRUE(rig.Contents() == before);
}

// Runs `check` where the keys cannot be written, but what lies before them can.
template <class Check>
bool WhereKeysCannotBeWritten(Check check) {
  return InChild([&] {
    LoadedTreeRig rig;
    rig.Create({"a"});
    TernaryHandle* root = rig.Load("");
    const std::string before = rig.Contents();
    LimitFileSize(kKeyArea);
    return check(rig.loaded, root) && rig.Contents() == before && !root->start->isLocked();
  });
}

TEST_F(LoadedKeyWrites, ADefaultThatCannotBeWrittenIsReportedAndTakenBack) {
  EXPECT_TRUE(WhereKeysCannotBeWritten([](TernaryKeyTree& tree, TernaryHandle* handle) {
    unsigned long long number = 0;
    return tree.SetDefaultValue(kAdmin, handle, "a", 1, false) == 5 &&
           tree.GetDefaultValue(kAdmin, handle, "a", &number) == 53;
  }));
}

TEST_F(LoadedKeyWrites, APermissionThatCannotBeWrittenIsReportedAndTakenBack) {
  EXPECT_TRUE(WhereKeysCannotBeWritten([](TernaryKeyTree& tree, TernaryHandle* handle) {
    unsigned char permission = 0;
    return tree.SetKeyPermission(kAdmin, handle, "a", 1) == 5 &&
           tree.GetKeyPermission(kAdmin, handle, "a", &permission) == 0 && permission == 0x0F;
  }));
}

TEST_F(LoadedKeyWrites, AWatchThatCannotBeWrittenIsReportedAndTakenBack) {
  EXPECT_TRUE(WhereKeysCannotBeWritten([](TernaryKeyTree& tree, TernaryHandle* handle) {
    return tree.SetKeyWatch(kAdmin, handle, "a", 1) == 5 &&
           handle->start->directory->key->node->watch() == 0;
  }));
}

}  // namespace

}  // namespace tamu::registry
