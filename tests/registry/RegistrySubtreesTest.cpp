// Whole keys through the front end: listing, counting, deleting, rights, watch bits, backups.
#include "tests/registry/RegistryRig.h"

namespace tamu::registry {

namespace {

class RegistrySubtreesTest : public OpenRegistryTest {
 protected:
  // "status: name name", or the status alone without names.
  std::string Keys(const char* key, unsigned int first = 0, unsigned int capacity = 20,
                   unsigned int flags = 0) {
    NameList list(capacity);
    return Text(registry.ListKeys(0, key, first, 0, &list, flags), list);
  }
  std::string Values(const char* key, unsigned int first = 0, unsigned int capacity = 20) {
    NameList list(capacity);
    return Text(registry.ListValues(0, key, first, 0, &list), list);
  }
  // What GetKeyInfo tells: "keys all, values all, user, permission", or the status.
  std::string Info(const char* key) {
    KeyInfo info = {99, 0, 0, 0, 0, 0, 0};
    const unsigned int result = registry.GetKeyInfo(0, key, &info);
    EXPECT_EQ(info.reserved, 99u);
    if (result != 0) return "status " + std::to_string(result);
    return std::to_string(info.subKeyCount) + " " + std::to_string(info.totalKeyCount) + ", " +
           std::to_string(info.valueCount) + " " + std::to_string(info.totalValueCount) + ", " +
           std::to_string(info.userId) + ", " + std::to_string(info.permission);
  }

  // "net" with two values, "net/eth" with one, "net/eth/a", "net/wlan".
  void CreateNet() {
    for (const char* key : {"net", "net/eth", "net/eth/a", "net/wlan"}) {
      ASSERT_EQ(registry.CreateKey(0, key, 7), 0u);
    }
    ExactValue text(1, "text"), blob(3, std::string(100, 'b'));
    ASSERT_EQ(registry.CreateValue(0, "net", "old", &text), 0u);
    ASSERT_EQ(registry.CreateValue(0, "net", "new", &blob), 0u);
    ASSERT_EQ(registry.CreateValue(0, "net/eth", "mtu", nullptr), 0u);
  }

  const std::string backup = folder / "backup";

 private:
  static std::string Text(unsigned int result, const NameList& list) {
    std::string text = std::to_string(result);
    for (unsigned int i = 0; i < list.Count(); ++i) {
      text += (i == 0 ? ": " : " ") + std::string(list.GetName(i, nullptr));
    }
    return text;
  }
};

TEST_F(RegistrySubtreesTest, KeysAndValuesAreListed) {
  CreateNet();
  EXPECT_EQ(Keys(""), "0: net/wlan net/eth/a net/eth net");
  EXPECT_EQ(Keys("/net/"), "0: wlan eth/a eth");
  EXPECT_EQ(Keys("net", 1), "0: eth/a eth");
  EXPECT_EQ(Keys("net", 3), "0");
  EXPECT_EQ(Keys("net", 0, 2), "75: wlan eth/a");
  EXPECT_EQ(Keys("net", 1, 1), "75: eth/a");
  EXPECT_EQ(Keys("net", 2, 1), "0: eth");
  EXPECT_EQ(Keys("net", 0, 0), "12");
  EXPECT_EQ(Keys("net", 1, 20, kListWithPath), "0: neteth/a neteth");
  EXPECT_EQ(Keys("/net/", 1, 20, kListWithPath), "0: /net/eth/a /net/eth");
  EXPECT_EQ(Values("net"), "0: new old");
  EXPECT_EQ(Values("net", 1), "0: old");
  EXPECT_EQ(Values("net", 2), "75");
  EXPECT_EQ(Values("net", 0, 1), "75: new");
  EXPECT_EQ(Values("net/eth"), "0: mtu");
  EXPECT_EQ(Values("net/wlan"), "75");
}

TEST_F(RegistrySubtreesTest, KeysAndValuesAreCounted) {
  CreateNet();
  EXPECT_EQ(Info(""), "1 4, 0 3, 65535, 95");
  EXPECT_EQ(Info("net"), "2 3, 2 3, 65535, 15");
  EXPECT_EQ(Info("net/eth/a"), "0 0, 0 0, 65535, 15");
  registry.SetCurrentUserId(7);
  EXPECT_EQ(Info(""), "1 4, 0 3, 7, 95");
  EXPECT_EQ(Info("net"), "status 1");
}

TEST_F(RegistrySubtreesTest, AKeyIsDeletedWithAllThatIsBelow) {
  CreateNet();
  ASSERT_EQ(registry.CreateKey(0, "other"), 0u);
  EXPECT_EQ(registry.DeleteKey(0, "net/eth/a"), 0u);
  EXPECT_EQ(registry.DeleteKey(0, "net/eth/a"), 2u);
  EXPECT_EQ(registry.DeleteKey(0, "net"), 0u);
  EXPECT_EQ(Keys(""), "0: other");
  EXPECT_EQ(Info(""), "1 1, 0 0, 65535, 95");
  EXPECT_EQ(Info("net/eth"), "status 2");
  EXPECT_EQ(Read(registry, "net", "old"), "status 2");
  RegistryInfo info = {};
  EXPECT_EQ(registry.GetRegistryInfo(&info), 0u);
  EXPECT_EQ(info.keyCount, 2u);
  EXPECT_EQ(info.valueCount, 0u);
  EXPECT_EQ(registry.CreateKey(0, "net"), 0u);
  EXPECT_EQ(Keys("net"), "0");
  EXPECT_EQ(Values("net"), "75");
}

TEST_F(RegistrySubtreesTest, OnlyTheOwnerAndTheAdministratorChangeAPermission) {
  registry.SetCurrentUserId(7);
  ASSERT_EQ(registry.CreateKey(0, "mine"), 0u);
  EXPECT_EQ(registry.SetKeyPermission(0, "mine", MakePermission(kRightsAll, kRightsAll)), 0u);
  registry.SetCurrentUserId(8);
  unsigned char permission = 0;
  EXPECT_EQ(registry.SetKeyPermission(0, "mine", 0), 1u);
  EXPECT_EQ(registry.GetKeyPermission(0, "mine", &permission), 0u);
  EXPECT_EQ(permission, 0xFFu);
  EXPECT_EQ(registry.CreateKey(0, "mine/yours"), 0u);
  EXPECT_EQ(registry.DeleteKey(0, "mine/yours"), 0u);
  registry.SetCurrentUserId(kAdmin);
  EXPECT_EQ(registry.SetKeyPermission(0, "mine", 0x21), 0u);
  registry.SetCurrentUserId(8);
  EXPECT_EQ(registry.GetKeyPermission(0, "mine", &permission), 0u) << "without any right";
  EXPECT_EQ(permission, 0x21u);
  EXPECT_EQ(registry.SetKeyPermission(0, "missing", 0x21), 2u);
  EXPECT_EQ(registry.GetKeyPermission(0, "missing", &permission), 2u);
}

TEST_F(RegistrySubtreesTest, TheWatchBitsAreTheLowSixOfTheByte) {
  ASSERT_EQ(registry.CreateKey(0, "key", 1), 0u);
  EXPECT_EQ(registry.SetKeyWatch(0, "key", 0xEA), 0u);
  EXPECT_EQ(DecodeTree(path).at("key").flags, 0xA9u);
  EXPECT_EQ(registry.SetKeyWatch(0, "", 0x3F), 0u);
  EXPECT_EQ(DecodeTree(path).at("").flags, 0xFEu);
  registry.SetCurrentUserId(7);
  EXPECT_EQ(registry.SetKeyWatch(0, "key", 0), 1u);
  EXPECT_EQ(registry.SetKeyWatch(0, "missing", 0), 2u);
  EXPECT_EQ(DecodeTree(path).at("key").flags, 0xA9u);
}

TEST_F(RegistrySubtreesTest, AKeyIsCarriedToAnotherRegistryAndBack) {
  CreateNet();
  ASSERT_EQ(registry.BackupKey(0, "net", backup.c_str()), 0u);
  // The header; "e", "th", "a" and "wlan"; four keys; three values and their data.
  EXPECT_EQ(GetFile(backup).size(), 1u + 4 * 40 + 4 * 24 + 3 * 52 + 4 + 100);
  registry.Finalize();
  Registry other((folder / "other").c_str(), kAdmin);
  ASSERT_EQ(other.Initialize(), 0u);
  ASSERT_EQ(other.CreateKey(0, "elsewhere"), 0u);
  EXPECT_EQ(other.RestoreKey(0, "elsewhere", backup.c_str()), 0u);
  EXPECT_EQ(Read(other, "elsewhere", "new"), "type 3: " + std::string(100, 'b'));
  EXPECT_EQ(Read(other, "elsewhere/eth", "mtu"), "status 53");
  EXPECT_EQ(other.CreateKey(0, "elsewhere/wlan/b"), 0u);
  EXPECT_EQ(other.BackupKey(0, "elsewhere", backup.c_str()), 0u);
  other.Finalize();
  EXPECT_EQ(StructureFindings(folder / "other"), "");
  ASSERT_EQ(registry.Initialize(), 0u);
  EXPECT_EQ(registry.RestoreKey(0, "net", backup.c_str()), 0u);
  EXPECT_EQ(Keys("net"), "0: wlan/b wlan eth/a eth");
  EXPECT_EQ(Values("net"), "0: new old");
}

TEST_F(RegistrySubtreesTest, BackingUpNeedsTheRightToReadAndRestoringThatToCreate) {
  CreateNet();
  ASSERT_EQ(registry.SetKeyPermission(0, "net", MakePermission(kRightsAll, kRightRead)), 0u);
  registry.SetCurrentUserId(7);
  EXPECT_EQ(registry.BackupKey(0, "net", backup.c_str()), 0u);
  EXPECT_EQ(registry.BackupKey(0, "net/eth", backup.c_str()), 1u);
  EXPECT_EQ(registry.BackupKey(0, "missing", backup.c_str()), 2u);
  const std::string before = GetFile(path);
  EXPECT_EQ(registry.RestoreKey(0, "net", backup.c_str()), 1u);
  EXPECT_EQ(registry.RestoreKey(0, "missing", backup.c_str()), 2u);
  EXPECT_EQ(registry.RestoreKey(0, "", (backup + "s").c_str()), 5u) << "there is none";
  EXPECT_EQ(registry.BackupKey(0, "", path.c_str()), 5u) << "the registry's own file";
  EXPECT_EQ(registry.RestoreKey(0, "", path.c_str()), 5u);
  EXPECT_EQ(GetFile(path), before);
  EXPECT_EQ(registry.RestoreKey(0, "", backup.c_str()), 0u) << "at the root everybody may";
  EXPECT_EQ(Keys(""), "0: wlan eth/a eth");
}

}  // namespace

}  // namespace tamu::registry
