// Permissions and watch bits.
#include "tests/registry/filetree/DamagedFile.h"
#include "tests/registry/filetree/KeyTesting.h"

namespace tamu::registry {

namespace {

TEST(TernaryRegistryPermission, EverybodyMayAskForIt) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.tree.CreateKey(kUser, nullptr, "a", 0, false));
  const struct {
    const char* hex;
    unsigned int byte;
  } permissions[] = {{"00", 0x00}, {"0f", 0x0F}, {"a5", 0xA5}, {"ff", 0xFF}};
  for (const auto& each : permissions) {
    rig.SetPermission(2, each.hex);
    for (unsigned int user : {kUser, kOther, kAdmin, 0u}) {
      unsigned char permission = 77;
      EXPECT_EQ(status::kOk, rig.tree.GetKeyPermission(user, nullptr, "a", &permission));
      EXPECT_EQ(permission, each.byte);
    }
  }
  unsigned char permission = 77;
  EXPECT_EQ(status::kOk, rig.tree.GetKeyPermission(kOther, nullptr, "", &permission));
  EXPECT_EQ(0x5Fu, permission);
}

TEST(TernaryRegistryPermission, OnlyTheOwnerAndTheAdministratorChangeIt) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.tree.CreateKey(kUser, nullptr, "a", 5, true));
  ASSERT_EQ(status::kOk, rig.CreateNumber("a", "n", 1));
  EXPECT_EQ(status::kOk, rig.tree.SetKeyPermission(kUser, nullptr, "a", 0xFF));
  const std::string before = rig.Contents();
  for (unsigned int user : {kOther, 0u, 1u, 65534u, 65536u, 0xFFFFFFFFu}) {
    EXPECT_EQ(status::kNoRight, rig.tree.SetKeyPermission(user, nullptr, "a", 0x0F)) << user;
  }
  EXPECT_EQ(status::kNoRight, rig.tree.SetKeyPermission(kUser, nullptr, "", 0xFF));
  EXPECT_EQ(rig.Contents(), before);
  EXPECT_EQ(status::kOk, rig.tree.SetKeyPermission(kAdmin, nullptr, "a", 0x00));
  EXPECT_EQ(
      "0001000001000001"
      "e803000000000000"
      "0500000000000000",
      rig.KeyNode(2));
  EXPECT_EQ(status::kOk, rig.tree.SetKeyPermission(kAdmin, nullptr, "", 0xA3));
  EXPECT_EQ("000000000000a302ffff0000", rig.KeyNode(1).substr(0, 24));
}

TEST(TernaryRegistryPermission, AnOwnerWithoutAnyRightMayTakeThemBack) {
  FileTreeRig rig;
  KeyInfo info;
  ASSERT_EQ(status::kOk, rig.tree.CreateKey(kUser, nullptr, "a", 0, false));
  ASSERT_EQ(status::kOk, rig.tree.SetKeyPermission(kUser, nullptr, "a", 0x00));
  EXPECT_EQ(status::kNoRight, rig.tree.GetKeyInfo(kUser, nullptr, "a", &info));
  EXPECT_EQ(status::kOk, rig.tree.SetKeyPermission(kUser, nullptr, "/a/", 0x01));
  EXPECT_EQ(status::kOk, rig.tree.GetKeyInfo(kUser, nullptr, "a", &info));
  EXPECT_EQ(0x01u, info.permission);
  EXPECT_EQ(status::kNoRight, rig.tree.GetKeyInfo(kOther, nullptr, "a", &info));
  EXPECT_EQ(status::kOk, rig.tree.SetKeyPermission(kUser, nullptr, "a", 0x10));
  EXPECT_EQ(status::kNoRight, rig.tree.GetKeyInfo(kUser, nullptr, "a", &info));
  EXPECT_EQ(status::kOk, rig.tree.GetKeyInfo(kOther, nullptr, "a", &info));
  EXPECT_EQ(0x10u, info.permission);
}

TEST(TernaryRegistryPermission, OnlyItsByteChanges) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("a"));
  rig.Patch(InKey(2, 0),
            "00000000"
            "0000"
            "0ffd"
            "ffff0000"
            "00000000"
            "0807060504030201");
  std::string before = rig.Contents();
  EXPECT_EQ(status::kOk, rig.tree.SetKeyPermission(kAdmin, nullptr, "a", 0x77));
  before[InKey(2, 6)] = 0x77;
  EXPECT_EQ(rig.Contents(), before);
  rig.Reopen();
  unsigned char permission = 0;
  EXPECT_EQ(status::kOk, rig.tree.GetKeyPermission(kUser, nullptr, "a", &permission));
  EXPECT_EQ(0x77u, permission);
}

// It reads as a key that belongs to user 0 and gives no right; nothing is written for it.
TEST(TernaryRegistryPermission, ANameWithoutAKeyHasPermissionZero) {
  FileTreeRig rig;
  int anything = 0;
  ASSERT_EQ(status::kOk, rig.Create("ab"));
  ASSERT_EQ(status::kOk, rig.Create("bc"));  // the name "a" exists now, as a branch
  ASSERT_EQ(status::kOk, rig.Create("de"));
  ASSERT_EQ(status::kOk, DeleteKey(rig, "de"));
  const std::string before = rig.Contents();
  for (const char* path : {"a/", "de/", "/a/"}) {
    SCOPED_TRACE(path);
    unsigned char permission = 77;
    EXPECT_EQ(status::kOk, rig.tree.GetKeyPermission(kUser, nullptr, path, &permission));
    EXPECT_EQ(0u, permission);
    EXPECT_EQ(status::kNotFound, rig.tree.SetKeyPermission(kAdmin, nullptr, path, 0xFF));
    EXPECT_EQ(status::kNotFound, rig.tree.SetKeyPermission(0, nullptr, path, 0xFF));
    EXPECT_EQ(status::kNoRight, rig.tree.SetKeyPermission(kUser, nullptr, path, 0xFF));
    EXPECT_EQ(status::kNoRight, rig.tree.SetKeyWatch(kAdmin, nullptr, path, 0xFF));
    EXPECT_EQ(status::kNoRight, rig.tree.SetKeyWatch(0, nullptr, path, 0xFF));
  }
  unsigned char permission = 77;
  EXPECT_EQ(status::kOk, rig.tree.GetKeyPermission(kAdmin, &anything, "", &permission));
  EXPECT_EQ(0u, permission);
  EXPECT_EQ(status::kNotFound, rig.tree.SetKeyPermission(kAdmin, &anything, "", 0xFF));
  EXPECT_EQ(rig.Contents(), before);
}

TEST(TernaryRegistryRights, TheKeysBelowAreNotAsked) {
  FileTreeRig rig;
  const std::string backup = rig.dir / "backup";
  ASSERT_EQ(status::kOk, rig.tree.CreateKey(kUser, nullptr, "a", 0, false));
  ASSERT_EQ(status::kOk, rig.Create("a/b"));
  ASSERT_EQ(status::kOk, rig.CreateNumber("a/b", "n", 1));
  rig.SetPermission(3, "00");  // of "a/b", which is the administrator's
  NameList list(10);
  KeyInfo info = KeyInfo();
  EXPECT_EQ(status::kNoRight, rig.tree.ListKeys(kUser, nullptr, "a/b", 0, &list, 0));
  EXPECT_EQ("0: b", ListText(rig.tree.ListKeys(kUser, nullptr, "a", 0, &list, 0), list));
  EXPECT_EQ(status::kNoRight, rig.tree.GetKeyInfo(kUser, nullptr, "a/b", &info));
  EXPECT_EQ(status::kOk, rig.tree.GetKeyInfo(kUser, nullptr, "a", &info));
  EXPECT_EQ(1u, info.totalValueCount);
  EXPECT_EQ(status::kNoRight, rig.tree.BackupKeyTree(kUser, nullptr, "a/b", backup.c_str()));
  EXPECT_EQ(status::kOk, rig.tree.BackupKeyTree(kUser, nullptr, "a", backup.c_str()));
  EXPECT_EQ(status::kNoRight, rig.tree.RestoreKeyTree(kUser, nullptr, "a/b", backup.c_str()));
  EXPECT_EQ(status::kOk, rig.tree.RestoreKeyTree(kUser, nullptr, "a", backup.c_str()));
  EXPECT_EQ("0: 1 of 1 keys, 0 of 1 values", Counted(rig, "a"));
  EXPECT_EQ(status::kNoRight, rig.tree.DeleteKey(kUser, nullptr, "a/b"));
  EXPECT_EQ(status::kOk, rig.tree.DeleteKey(kUser, nullptr, "a"));
  EXPECT_EQ("0:", Listed(rig, ""));
}

TEST(TernaryRegistryWatch, OnlyItsByteChanges) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.tree.CreateKey(kUser, nullptr, "a", 7, true));
  ASSERT_EQ(status::kOk, rig.CreateNumber("a", "n", 1));
  std::string before = rig.Contents();
  EXPECT_EQ(status::kOk, rig.tree.SetKeyWatch(kUser, nullptr, "/a/", 0x2A));
  before[InKey(2, 7)] = static_cast<char>(0xA9);
  EXPECT_EQ(rig.Contents(), before);
  unsigned long long number = 0;
  EXPECT_EQ(status::kOk, rig.tree.GetDefaultValue(kUser, nullptr, "a", &number));
  EXPECT_EQ(7u, number);
}

TEST(TernaryRegistryWatch, NeedsTheRightToRead) {
  ExpectToNeedTheRight(
      1, [](FileTreeRig&) {},
      [](TernaryRegistry& tree, unsigned int user) {
        return tree.SetKeyWatch(user, nullptr, "a", 1);
      });
}

}  // namespace

}  // namespace tamu::registry
