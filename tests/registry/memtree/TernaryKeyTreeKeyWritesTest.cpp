// Changing through a handle what a key holds itself.
#include "tests/platform/ChildProcess.h"
#include "tests/registry/memtree/LoadedWriting.h"

namespace tamu::registry {

namespace {

class LoadedKeyWrites : public LoadedWriting {
 protected:
  unsigned int SetDefault(const char* key, unsigned long long number, bool clear = false) {
    return rig.loaded.SetDefaultValue(kAdmin, root, key, number, clear);
  }
  // The default value: a number, or "53".
  std::string Default(const char* key) {
    unsigned long long number = 0;
    const unsigned int result = rig.loaded.GetDefaultValue(kAdmin, root, key, &number);
    return std::to_string(result == 0 ? number : result);
  }
  std::string DefaultEverywhere(const char* key) {
    const std::string text = Default(key);
    unsigned long long number = 0;
    const unsigned int result = rig.file->GetDefaultValue(kAdmin, nullptr, key, &number);
    EXPECT_EQ(std::to_string(result == 0 ? number : result), text);
    Reload();
    EXPECT_EQ(Default(key), text);
    return text;
  }
  unsigned int SetWatch(const char* key, unsigned char watch) {
    return rig.loaded.SetKeyWatch(kAdmin, root, key, watch);
  }
  unsigned int SetPermission(const char* key, unsigned int permission) {
    return rig.loaded.SetKeyPermission(kAdmin, root, key, static_cast<unsigned char>(permission));
  }
};

TEST_F(LoadedKeyWrites, ADefaultValueIsStoredInTheKey) {
  Start({"a"});
  ASSERT_EQ(SetDefault("a", 0x1122334455667788), 0u);
  EXPECT_EQ(KeyNode(2),
            "0000000000000f01"
            "ffff000000000000"
            "8877665544332211");
  EXPECT_EQ(DefaultEverywhere("a"), "1234605616436508552");
  ASSERT_EQ(SetDefault("a", 0), 0u);
  EXPECT_EQ(KeyNode(2),
            "0000000000000f01"
            "ffff000000000000"
            "0000000000000000");
  EXPECT_EQ(DefaultEverywhere("a"), "0");
}

TEST_F(LoadedKeyWrites, AClearedDefaultKeepsItsNumberInTheFile) {
  Start({"a"});
  ASSERT_EQ(SetDefault("a", 7), 0u);
  ASSERT_EQ(SetDefault("a", 9, true), 0u);
  EXPECT_EQ(KeyNode(2),
            "0000000000000f00"
            "ffff000000000000"
            "0700000000000000");
  EXPECT_EQ(DefaultEverywhere("a"), "53");
  const std::string before = rig.Contents();
  EXPECT_EQ(SetDefault("a", 9, true), 0u) << "that there was none is not reported";
  EXPECT_TRUE(rig.Contents() == before);
}

TEST_F(LoadedKeyWrites, APermissionIsOneByteOfTheKey) {
  Start({"a"});
  ASSERT_EQ(SetPermission("a", 0xA5), 0u);
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

TEST_F(LoadedKeyWrites, OfAWatchSixBitsAreKeptBesideTheOtherFlags) {
  Start({"a"});
  const struct {
    unsigned char watch;
    const char* stored;
    const char* withDefault;
    const char* ofRoot;
  } kCases[] = {{0x00, "00", "01", "02"}, {0x01, "04", "05", "06"}, {0x20, "80", "81", "82"},
                {0x3F, "fc", "fd", "fe"}, {0x40, "00", "01", "02"}, {0xFF, "fc", "fd", "fe"},
                {0xC1, "04", "05", "06"}};
  for (const auto& each : kCases) {
    SCOPED_TRACE(static_cast<unsigned int>(each.watch));
    ASSERT_EQ(SetWatch("a", each.watch), 0u);
    EXPECT_EQ(Hex(InKey(2, 7), 1), each.stored);
    ASSERT_EQ(SetDefault("a", 1), 0u);
    EXPECT_EQ(Hex(InKey(2, 7), 1), each.withDefault);
    ASSERT_EQ(SetWatch("a", each.watch), 0u);
    EXPECT_EQ(Hex(InKey(2, 7), 1), each.withDefault);
    ASSERT_EQ(SetDefault("a", 1, true), 0u);
    EXPECT_EQ(Hex(InKey(2, 7), 1), each.stored);
    ASSERT_EQ(SetWatch("", each.watch), 0u);
    EXPECT_EQ(KeyNode(1),
              std::string("0000000000005f") + each.ofRoot + "ffff0000000000000000000000000000");
    Reload();
  }
  ExpectSound(rig.path);
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

TEST_F(LoadedKeyWrites, APermissionIsForTheOwnerAndTheAdministrator) {
  ASSERT_EQ(rig.file->CreateKey(kUser, nullptr, "a", 0, false), 0u);
  Start({});
  for (unsigned int rights : {0x00u, 0x0Fu, 0xF0u, 0xFFu}) {
    SCOPED_TRACE(rights);
    for (unsigned int user : {kUser, kAdmin}) {
      ASSERT_EQ(SetPermission("a", rights), 0u);
      EXPECT_EQ(rig.loaded.SetKeyPermission(user, root, "a", 0x35), 0u);
      EXPECT_EQ(Hex(InKey(2, 6), 1), "35");
    }
    ASSERT_EQ(SetPermission("a", rights), 0u);
    const std::string before = rig.Contents();
    for (unsigned int user : {kOther, 0u, kAdmin - 1}) {
      EXPECT_EQ(rig.loaded.SetKeyPermission(user, root, "a", 0x35), 1u) << user;
    }
    EXPECT_TRUE(rig.Contents() == before);
  }
  EXPECT_FALSE(root->start->isLocked());
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
