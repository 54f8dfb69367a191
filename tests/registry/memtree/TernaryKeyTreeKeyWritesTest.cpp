// Changing through a handle what a key holds itself.
#include "tests/platform/ChildProcess.h"
#include "tests/registry/memtree/LoadedWriting.h"

namespace tamu::registry {

namespace {

using TernaryKeyTreeKeyWritesTest = LoadedWriting;

TEST_F(TernaryKeyTreeKeyWritesTest, APermissionIsOneByteOfTheKey) {
  Start({"a"});
  ASSERT_EQ(status::kOk, rig.loaded.SetKeyPermission(kAdmin, root, "a", 0xA5));
  EXPECT_EQ(
      "000000000000a500"
      "ffff000000000000"
      "0000000000000000",
      KeyNode(2));
  unsigned char permission = 0;
  for (int loadedAnew = 0; loadedAnew < 2; ++loadedAnew) {
    EXPECT_EQ(status::kOk, rig.loaded.GetKeyPermission(kOther, root, "a", &permission));
    EXPECT_EQ(0xA5, permission);
    Reload();
  }
  EXPECT_EQ(status::kOk, rig.file->GetKeyPermission(kOther, nullptr, "a", &permission));
  EXPECT_EQ(0xA5, permission);
}

TEST_F(TernaryKeyTreeKeyWritesTest, ADefaultNeedsTheRightToModify) {
  for (bool clear : {false, true}) {
    ExpectLoadedToNeedTheRight(
        2, [clear](TernaryKeyTree& tree, unsigned int user, TernaryHandle* handle) {
          return tree.SetDefaultValue(user, handle, "a", 8, clear);
        });
  }
}

TEST_F(TernaryKeyTreeKeyWritesTest, AWatchNeedsTheRightToRead) {
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

TEST_F(TernaryKeyTreeKeyWritesTest, AKeyIsReachedThroughAnyHandleAboveIt) {
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
    EXPECT_EQ(status::kOk, other.loaded.SetDefaultValue(kAdmin, handle, way.path, 1, false));
    EXPECT_EQ(status::kOk, other.loaded.SetKeyPermission(kAdmin, handle, way.path, 0x1F));
    EXPECT_EQ(status::kOk, other.loaded.SetKeyWatch(kAdmin, handle, way.path, 1));
    EXPECT_EQ(status::kOk, other.loaded.CreateValue(kAdmin, handle, way.path, "n", 1, true));
    EXPECT_EQ(status::kOk, other.loaded.CreateValue(kAdmin, handle, way.path, "d", &value));
    EXPECT_EQ(status::kOk, other.loaded.SetValue(kAdmin, handle, way.path, "n", &value));
    EXPECT_EQ(status::kOk, other.loaded.DeleteValue(kAdmin, handle, way.path, "d"));
    EXPECT_EQ(
        "0001000001001f05"
        "ffff000000000000"
        "0100000000000000",
        HexOf(FileBytes(other.path, InKey(3, 0), 24)));
    EXPECT_EQ(
        "[] owner 65535 rights 31 flags 5 default 1 n=1+1:78\n"
        "[c] owner 65535 rights 15 flags 0 default 0\n",
        SubtreeText(other.path, "a/b"));
    EXPECT_EQ(status::kOk, other.loaded.DeleteKey(kAdmin, handle, way.path));
    EXPECT_EQ("", SubtreeText(other.path, "a/b"));
  }
}

TEST_F(TernaryKeyTreeKeyWritesTest, WithoutAHandleNothingIsChanged) {
  Start({"a"});
  ASSERT_EQ(status::kOk, CreateNumber("a", "n", 1));
  const std::string before = rig.Contents();
  EXPECT_EQ("22 22 22 22 22 22 22 22 22 ", Writes(rig.loaded, nullptr, "a"));
  EXPECT_EQ("22 22 22 22 22 22 22 22 22 ", Writes(rig.loaded, nullptr, ""));
  EXPECT_TRUE(rig.Contents() == before);
}

TEST_F(TernaryKeyTreeKeyWritesTest, ATreeThatIsNotOpenChangesNothing) {
  Start({"a"});
  EXPECT_EQ("0 0 0 0 0 0 0 0 0 ", Writes(rig.loaded, root, "a"));
  TernaryKeyTree closed(nullptr);
  EXPECT_EQ("1 1 1 1 1 1 1 1 1 ", Writes(closed, nullptr, "a"));
  const std::string file = rig.dir / "other.rce";
  ASSERT_EQ(status::kOk, rig.Unload(root));
  rig.Close();
  ASSERT_EQ(status::kOk, closed.Initialize(file.c_str()));
  ASSERT_EQ(status::kOk, closed.Finalize());
  EXPECT_EQ("1 1 1 1 1 1 1 1 1 ", Writes(closed, nullptr, "a"));
}

TEST_F(TernaryKeyTreeKeyWritesTest, AMissingKeyIsNotFound) {
  Start({"a", "abc", "abd"});
  const std::string before = SubtreeText(rig.path, "");
  for (const char* key : {"b", "ab", "ab/", "a/b", "abcd"}) {
    EXPECT_EQ("22 2 2 2 2 2 2 2 2 ", Writes(rig.loaded, root, key)) << key;
  }
  EXPECT_EQ(SubtreeText(rig.path, ""), before);
  ExpectSound(rig.path);
}

TEST_F(TernaryKeyTreeKeyWritesTest, WhatGoesWithoutAHandleAloneIsNotThere) {
  Start({"a"});
  ASSERT_EQ(status::kOk, CreateNumber("a", "n", 5));
  RegistryInterface& tree = rig.loaded;
  const std::string backup = rig.dir / "backup";
  const std::string before = rig.Contents();
  for (TernaryHandle* handle : {root, static_cast<TernaryHandle*>(nullptr)}) {
    unsigned long long number = 9;
    EXPECT_EQ(status::kNotSupported, tree.GetSetValue(kAdmin, handle, "a", "n", &number, true));
    EXPECT_EQ(status::kNotSupported, tree.GetSetValue(kAdmin, handle, "a", "n", &number, false));
    EXPECT_EQ(9u, number);
    EXPECT_EQ(status::kNotSupported, tree.FindKey(kAdmin, handle, "a", 0));
    EXPECT_EQ(status::kNotSupported, tree.BackupKeyTree(kAdmin, handle, "a", backup.c_str()));
    EXPECT_EQ(status::kNotSupported, tree.RestoreKeyTree(kAdmin, handle, "a", backup.c_str()));
  }
  EXPECT_EQ(status::kNotSupported, tree.LoadKey("a", nullptr));
  EXPECT_EQ(status::kNotSupported, tree.StoreKey(nullptr));
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

TEST_F(TernaryKeyTreeKeyWritesTest, ADefaultThatCannotBeWrittenIsReportedAndTakenBack) {
  EXPECT_TRUE(WhereKeysCannotBeWritten([](TernaryKeyTree& tree, TernaryHandle* handle) {
    unsigned long long number = 0;
    return tree.SetDefaultValue(kAdmin, handle, "a", 1, false) == 5 &&
           tree.GetDefaultValue(kAdmin, handle, "a", &number) == 53;
  }));
}

TEST_F(TernaryKeyTreeKeyWritesTest, APermissionThatCannotBeWrittenIsReportedAndTakenBack) {
  EXPECT_TRUE(WhereKeysCannotBeWritten([](TernaryKeyTree& tree, TernaryHandle* handle) {
    unsigned char permission = 0;
    return tree.SetKeyPermission(kAdmin, handle, "a", 1) == 5 &&
           tree.GetKeyPermission(kAdmin, handle, "a", &permission) == 0 && permission == 0x0F;
  }));
}

TEST_F(TernaryKeyTreeKeyWritesTest, AWatchThatCannotBeWrittenIsReportedAndTakenBack) {
  EXPECT_TRUE(WhereKeysCannotBeWritten([](TernaryKeyTree& tree, TernaryHandle* handle) {
    return tree.SetKeyWatch(kAdmin, handle, "a", 1) == 5 &&
           handle->start->directory->key->node.watch() == 0;
  }));
}

}  // namespace

}  // namespace tamu::registry
