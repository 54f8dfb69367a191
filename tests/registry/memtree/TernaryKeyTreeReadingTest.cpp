// Reading through a handle: values, default values, counts, permissions and offsets.
#include "tests/registry/memtree/LoadedTreeRig.h"

namespace tamu::registry {
namespace {

class TernaryKeyTreeReadingTest : public ::testing::Test {
 protected:
  // A value as the administrator gets it, "0 type 1: 616263".
  std::string Get(const char* key, const char* name, unsigned int type = kValueTypeAny,
                  unsigned int user = kAdmin) {
    Value value = {type, 77, nullptr};
    const unsigned int result = rig.loaded.GetValue(user, root, key, name, &value);
    if (value.data == nullptr) {
      EXPECT_EQ(value.type, type);
      EXPECT_EQ(77u, value.size);
      return std::to_string(result);
    }
    const std::string bytes(static_cast<const char*>(value.data), value.size);
    FreeValueData(value);
    return std::to_string(result) + " type " + std::to_string(value.type) + ": " + HexOf(bytes);
  }
  std::string Counted(const char* key, unsigned int user = kAdmin) {
    KeyInfo info = {99, 99, 99, 99, 99, 99, 99};
    const unsigned int result = rig.loaded.GetKeyInfo(user, root, key, &info);
    std::string text = std::to_string(result) + ":";
    for (unsigned int field : {info.reserved, info.subKeyCount, info.totalKeyCount, info.valueCount,
                               info.totalValueCount, info.userId, info.permission}) {
      text += " " + std::to_string(field);
    }
    return text;
  }
  std::string Offset(const char* key, const char* name, unsigned int user = kAdmin) {
    unsigned int offset = 77;
    const unsigned int result = rig.loaded.GetValueOffset(user, root, key, name, &offset);
    return std::to_string(result) + " " + std::to_string(offset);
  }
  void LoadAll() { root = rig.Load(""); }

  LoadedTreeRig rig;
  TernaryHandle* root = nullptr;
};

TEST_F(TernaryKeyTreeReadingTest, AreReadWithAllTheirBytes) {
  rig.Create({"a", "a/b"});
  ASSERT_EQ(status::kOk, rig.CreateNumber("a/b", "n", 0x0102030405060708ull));
  ASSERT_EQ(status::kOk, rig.CreateData("a/b", "d", "abc"));
  ASSERT_EQ(status::kOk, rig.CreateData("a/b", "none", ""));
  LoadAll();
  EXPECT_EQ("0 type 0: 0807060504030201", Get("a/b", "n"));
  EXPECT_EQ("0 type 1: 616263", Get("a/b", "d"));
  EXPECT_EQ("0", Get("a/b", "none")) << "not set, and not reported";
  EXPECT_EQ("2", Get("a/b", "missing"));
  EXPECT_EQ("2", Get("a/x", "n"));
  EXPECT_EQ(status::kBadArgument, rig.loaded.GetValue(kAdmin, root, "a", nullptr, nullptr));
}

TEST_F(TernaryKeyTreeReadingTest, AnotherTypeIsNotHandedOutAndNotReported) {
  rig.Create({"a"});
  ASSERT_EQ(status::kOk, rig.CreateData("a", "d", "abc"));
  LoadAll();
  EXPECT_EQ("0 type 1: 616263", Get("a", "d", 1));
  for (unsigned int type : {0u, 2u, 3u, 5u}) EXPECT_EQ("0", Get("a", "d", type)) << type;
}

TEST_F(TernaryKeyTreeReadingTest, TheNewerOfTwoIsRead) {
  rig.Create({"a"});
  ASSERT_EQ(status::kOk, rig.CreateData("a", "d", "old"));
  ASSERT_EQ(status::kOk, rig.CreateData("a", "d", "new"));
  LoadAll();
  EXPECT_EQ(Get("a", "d"), "0 type 1: " + HexOf("new"));
}

// 33548 is where the values' area begins, 52528 where the blocks' does.
TEST_F(TernaryKeyTreeReadingTest, TheOffsetOfDataCountsSlotsOf52Bytes) {
  rig.Create({"a"});
  ASSERT_EQ(status::kOk, rig.CreateNumber("a", "n", 5));           // slot 1
  ASSERT_EQ(status::kOk, rig.CreateData("a", "d", Pattern(100)));  // slot 2, blocks 1 and 2
  ASSERT_EQ(status::kOk, rig.CreateData("a", "e", "x"));           // slot 3, block 3
  ASSERT_EQ(status::kOk, rig.CreateData("a", "none", ""));
  LoadAll();
  EXPECT_EQ(Offset("a", "n"), "0 " + std::to_string(33548 + 44 + 52));
  EXPECT_EQ(Offset("a", "d"), "0 " + std::to_string(52528 + 52));
  EXPECT_EQ(Offset("a", "e"), "0 " + std::to_string(52528 + 3 * 52));
  EXPECT_EQ("53 77", Offset("a", "none"));
  EXPECT_EQ("2 77", Offset("a", "missing"));
}

TEST_F(TernaryKeyTreeReadingTest, ADefaultValueIsRead) {
  ASSERT_EQ(status::kOk, rig.file->CreateKey(kAdmin, nullptr, "a", 7, true));
  rig.Create({"b"});
  LoadAll();
  unsigned long long number = 0;
  EXPECT_EQ(status::kOk, rig.loaded.GetDefaultValue(kAdmin, root, "a", &number));
  EXPECT_EQ(7u, number);
  EXPECT_EQ(status::kNoData, rig.loaded.GetDefaultValue(kAdmin, root, "b", &number));
  EXPECT_EQ(status::kNotFound, rig.loaded.GetDefaultValue(kAdmin, root, "c", &number));
  EXPECT_EQ(status::kBadArgument, rig.loaded.GetDefaultValue(kAdmin, root, "a", nullptr));
  EXPECT_EQ(7u, number);
}

// The user and the permission are told all the same, and the counts are 0.
TEST_F(TernaryKeyTreeReadingTest, WithoutTheRightToReadNothingIsCounted) {
  rig.Create({"a", "a/b"});
  ASSERT_EQ(status::kOk, rig.CreateNumber("a", "n", 1));
  LoadAll();
  EXPECT_EQ("1: 99 0 0 0 0 2000 15", Counted("a", kOther));
}

TEST_F(TernaryKeyTreeReadingTest, RightsAreAskedOfTheKeyItself) {
  ASSERT_EQ(status::kOk, rig.file->CreateKey(kUser, nullptr, "a", 7, true));
  ASSERT_EQ(status::kOk, rig.CreateData("a", "d", "abc"));
  for (unsigned int rights = 0; rights < 16; ++rights) {
    ASSERT_EQ(status::kOk,
              rig.file->SetKeyPermission(kUser, nullptr, "a", static_cast<unsigned char>(rights)));
    ASSERT_EQ(status::kOk, rig.loaded.UnloadKeyTree(nullptr));
    LoadAll();
    const bool reads = (rights & 1) != 0;
    const bool modifies = (rights & 2) != 0;
    unsigned long long number = 0;
    NameList names(5);
    for (unsigned int user : {kUser, kAdmin}) {
      EXPECT_EQ(Get("a", "d", 6, user), reads ? "0 type 1: 616263" : "1");
      EXPECT_EQ(rig.loaded.GetDefaultValue(user, root, "a", &number), reads ? 0u : 1u);
      EXPECT_EQ(rig.loaded.ListValues(user, root, "a", 0, &names), reads ? 0u : 1u);
      EXPECT_EQ(Offset("a", "d", user).substr(0, 1), modifies ? "0" : "1");
      EXPECT_EQ(status::kOk, rig.loaded.ListKeys(user, root, "a", 0, &names, 0))
          << "needs no right";
    }
    EXPECT_EQ("1", Get("a", "d", 6, kOther));
    unsigned char permission = 0;
    EXPECT_EQ(status::kOk, rig.loaded.GetKeyPermission(kOther, root, "a", &permission))
        << "nor does this";
    EXPECT_EQ(permission, rights);
    ASSERT_EQ(status::kOk, rig.Unload(root));
  }
}

TEST_F(TernaryKeyTreeReadingTest, WhatIsNeverThere) {
  unsigned long long number = 5;
  ChangeBuffer* buffer = nullptr;
  LoadAll();
  EXPECT_EQ(status::kNotSupported, rig.loaded.GetSetValue(kAdmin, root, "", "n", &number, true));
  EXPECT_EQ(2u, rig.loaded.GetChangeBuffer(buffer));
  EXPECT_EQ(status::kNotSupported, rig.loaded.RegistryInterface::FindKey(kAdmin, root, "", 0));
  EXPECT_EQ(status::kNotSupported, rig.loaded.BackupKeyTree(kAdmin, root, "", "backup"));
  EXPECT_EQ(status::kNotSupported, rig.loaded.RestoreKeyTree(kAdmin, root, "", "backup"));
}

}  // namespace
}  // namespace tamu::registry
