// Permissions and watch bits.
#include "tests/registry/filetree/DamagedFile.h"
#include "tests/registry/filetree/KeyTesting.h"

namespace tamu::registry {

namespace {

TEST(FileTreePermission, EverybodyMayAskForIt) {
  FileTreeRig rig;
  ASSERT_EQ(rig.tree.CreateKey(kUser, nullptr, "a", 0, false), 0u);
  const struct {
    const char* hex;
    unsigned int byte;
  } permissions[] = {{"00", 0x00}, {"0f", 0x0F}, {"a5", 0xA5}, {"ff", 0xFF}};
  for (const auto& each : permissions) {
    rig.SetPermission(2, each.hex);
    for (unsigned int user : {kUser, kOther, kAdmin, 0u}) {
      unsigned char permission = 77;
      EXPECT_EQ(rig.tree.GetKeyPermission(user, nullptr, "a", &permission), 0u);
      EXPECT_EQ(permission, each.byte);
    }
  }
  unsigned char permission = 77;
  EXPECT_EQ(rig.tree.GetKeyPermission(kOther, nullptr, "", &permission), 0u);
  EXPECT_EQ(permission, 0x5Fu);
}

TEST(FileTreePermission, OnlyTheOwnerAndTheAdministratorChangeIt) {
  FileTreeRig rig;
  ASSERT_EQ(rig.tree.CreateKey(kUser, nullptr, "a", 5, true), 0u);
  ASSERT_EQ(rig.CreateNumber("a", "n", 1), 0u);
  EXPECT_EQ(rig.tree.SetKeyPermission(kUser, nullptr, "a", 0xFF), 0u);
  const std::string before = rig.Contents();
  for (unsigned int user : {kOther, 0u, 1u, 65534u, 65536u, 0xFFFFFFFFu}) {
    EXPECT_EQ(rig.tree.SetKeyPermission(user, nullptr, "a", 0x0F), 1u) << user;
  }
  EXPECT_EQ(rig.tree.SetKeyPermission(kUser, nullptr, "", 0xFF), 1u);
  EXPECT_EQ(rig.Contents(), before);
  EXPECT_EQ(rig.tree.SetKeyPermission(kAdmin, nullptr, "a", 0x00), 0u);
  EXPECT_EQ(rig.KeyNode(2),
            "0001000001000001"
            "e803000000000000"
            "0500000000000000");
  EXPECT_EQ(rig.tree.SetKeyPermission(kAdmin, nullptr, "", 0xA3), 0u);
  EXPECT_EQ(rig.KeyNode(1).substr(0, 24), "000000000000a302ffff0000");
}

TEST(FileTreePermission, AnOwnerWithoutAnyRightMayTakeThemBack) {
  FileTreeRig rig;
  KeyInfo info;
  ASSERT_EQ(rig.tree.CreateKey(kUser, nullptr, "a", 0, false), 0u);
  ASSERT_EQ(rig.tree.SetKeyPermission(kUser, nullptr, "a", 0x00), 0u);
  EXPECT_EQ(rig.tree.GetKeyInfo(kUser, nullptr, "a", &info), 1u);
  EXPECT_EQ(rig.tree.SetKeyPermission(kUser, nullptr, "/a/", 0x01), 0u);
  EXPECT_EQ(rig.tree.GetKeyInfo(kUser, nullptr, "a", &info), 0u);
  EXPECT_EQ(info.permission, 0x01u);
  EXPECT_EQ(rig.tree.GetKeyInfo(kOther, nullptr, "a", &info), 1u);
  EXPECT_EQ(rig.tree.SetKeyPermission(kUser, nullptr, "a", 0x10), 0u);
  EXPECT_EQ(rig.tree.GetKeyInfo(kUser, nullptr, "a", &info), 1u);
  EXPECT_EQ(rig.tree.GetKeyInfo(kOther, nullptr, "a", &info), 0u);
  EXPECT_EQ(info.permission, 0x10u);
}

TEST(FileTreePermission, OnlyItsByteChanges) {
  FileTreeRig rig;
  ASSERT_EQ(rig.Create("a"), 0u);
  rig.Patch(InKey(2, 0),
            "00000000"
            "0000"
            "0ffd"
            "ffff0000"
            "00000000"
            "0807060504030201");
  std::string before = rig.Contents();
  EXPECT_EQ(rig.tree.SetKeyPermission(kAdmin, nullptr, "a", 0x77), 0u);
  before[InKey(2, 6)] = 0x77;
  EXPECT_EQ(rig.Contents(), before);
  rig.Reopen();
  unsigned char permission = 0;
  EXPECT_EQ(rig.tree.GetKeyPermission(kUser, nullptr, "a", &permission), 0u);
  EXPECT_EQ(permission, 0x77u);
}

// It reads as a key that belongs to user 0 and gives no right; nothing is written for it.
TEST(FileTreePermission, ANameWithoutAKeyHasPermissionZero) {
  FileTreeRig rig;
  int anything = 0;
  ASSERT_EQ(rig.Create("ab"), 0u);
  ASSERT_EQ(rig.Create("bc"), 0u);  // the name "a" exists now, as a branch
  ASSERT_EQ(rig.Create("de"), 0u);
  ASSERT_EQ(DeleteKey(rig, "de"), 0u);
  const std::string before = rig.Contents();
  for (const char* path : {"a/", "de/", "/a/"}) {
    SCOPED_TRACE(path);
    unsigned char permission = 77;
    EXPECT_EQ(rig.tree.GetKeyPermission(kUser, nullptr, path, &permission), 0u);
    EXPECT_EQ(permission, 0u);
    EXPECT_EQ(rig.tree.SetKeyPermission(kAdmin, nullptr, path, 0xFF), 2u);
    EXPECT_EQ(rig.tree.SetKeyPermission(0, nullptr, path, 0xFF), 2u);
    EXPECT_EQ(rig.tree.SetKeyPermission(kUser, nullptr, path, 0xFF), 1u);
    EXPECT_EQ(rig.tree.SetKeyWatch(kAdmin, nullptr, path, 0xFF), 1u);
    EXPECT_EQ(rig.tree.SetKeyWatch(0, nullptr, path, 0xFF), 1u);
  }
  unsigned char permission = 77;
  EXPECT_EQ(rig.tree.GetKeyPermission(kAdmin, &anything, "", &permission), 0u);
  EXPECT_EQ(permission, 0u);
  EXPECT_EQ(rig.tree.SetKeyPermission(kAdmin, &anything, "", 0xFF), 2u);
  EXPECT_EQ(rig.Contents(), before);
}

TEST(FileTreeRights, TheKeysBelowAreNotAsked) {
  FileTreeRig rig;
  const std::string backup = rig.dir / "backup";
  ASSERT_EQ(rig.tree.CreateKey(kUser, nullptr, "a", 0, false), 0u);
  ASSERT_EQ(rig.Create("a/b"), 0u);
  ASSERT_EQ(rig.CreateNumber("a/b", "n", 1), 0u);
  rig.SetPermission(3, "00");  // of "a/b", which is the administrator's
  NameList list(10);
  KeyInfo info = KeyInfo();
  EXPECT_EQ(rig.tree.ListKeys(kUser, nullptr, "a/b", 0, &list, 0), 1u);
  EXPECT_EQ(ListText(rig.tree.ListKeys(kUser, nullptr, "a", 0, &list, 0), list), "0: b");
  EXPECT_EQ(rig.tree.GetKeyInfo(kUser, nullptr, "a/b", &info), 1u);
  EXPECT_EQ(rig.tree.GetKeyInfo(kUser, nullptr, "a", &info), 0u);
  EXPECT_EQ(info.totalValueCount, 1u);
  EXPECT_EQ(rig.tree.BackupKeyTree(kUser, nullptr, "a/b", backup.c_str()), 1u);
  EXPECT_EQ(rig.tree.BackupKeyTree(kUser, nullptr, "a", backup.c_str()), 0u);
  EXPECT_EQ(rig.tree.RestoreKeyTree(kUser, nullptr, "a/b", backup.c_str()), 1u);
  EXPECT_EQ(rig.tree.RestoreKeyTree(kUser, nullptr, "a", backup.c_str()), 0u);
  EXPECT_EQ(Counted(rig, "a"), "0: 1 of 1 keys, 0 of 1 values");
  EXPECT_EQ(rig.tree.DeleteKey(kUser, nullptr, "a/b"), 1u);
  EXPECT_EQ(rig.tree.DeleteKey(kUser, nullptr, "a"), 0u);
  EXPECT_EQ(Listed(rig, ""), "0:");
}

TEST(FileTreeWatch, OnlyItsByteChanges) {
  FileTreeRig rig;
  ASSERT_EQ(rig.tree.CreateKey(kUser, nullptr, "a", 7, true), 0u);
  ASSERT_EQ(rig.CreateNumber("a", "n", 1), 0u);
  std::string before = rig.Contents();
  EXPECT_EQ(rig.tree.SetKeyWatch(kUser, nullptr, "/a/", 0x2A), 0u);
  before[InKey(2, 7)] = static_cast<char>(0xA9);
  EXPECT_EQ(rig.Contents(), before);
  unsigned long long number = 0;
  EXPECT_EQ(rig.tree.GetDefaultValue(kUser, nullptr, "a", &number), 0u);
  EXPECT_EQ(number, 7u);
}

TEST(FileTreeWatch, NeedsTheRightToRead) {
  ExpectToNeedTheRight(
      1, [](FileTreeRig&) {},
      [](TernaryRegistry& tree, unsigned int user) {
        return tree.SetKeyWatch(user, nullptr, "a", 1);
      });
}

}  // namespace

}  // namespace tamu::registry
