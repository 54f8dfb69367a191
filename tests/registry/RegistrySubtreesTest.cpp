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
    EXPECT_EQ(99u, info.reserved);
    if (result != 0) return "status " + std::to_string(result);
    return std::to_string(info.subKeyCount) + " " + std::to_string(info.totalKeyCount) + ", " +
           std::to_string(info.valueCount) + " " + std::to_string(info.totalValueCount) + ", " +
           std::to_string(info.userId) + ", " + std::to_string(info.permission);
  }

  // "net" with two values, "net/eth" with one, "net/eth/a", "net/wlan".
  void CreateNet() {
    for (const char* key : {"net", "net/eth", "net/eth/a", "net/wlan"}) {
      ASSERT_EQ(status::kOk, registry.CreateKey(0, key, 7));
    }
    ExactValue text(1, "text"), blob(3, std::string(100, 'b'));
    ASSERT_EQ(status::kOk, registry.CreateValue(0, "net", "old", &text));
    ASSERT_EQ(status::kOk, registry.CreateValue(0, "net", "new", &blob));
    ASSERT_EQ(status::kOk, registry.CreateValue(0, "net/eth", "mtu", nullptr));
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
  EXPECT_EQ("0: net/wlan net/eth/a net/eth net", Keys(""));
  EXPECT_EQ("0: wlan eth/a eth", Keys("/net/"));
  EXPECT_EQ("0: eth/a eth", Keys("net", 1));
  EXPECT_EQ("0", Keys("net", 3));
  EXPECT_EQ("75: wlan eth/a", Keys("net", 0, 2));
  EXPECT_EQ("75: eth/a", Keys("net", 1, 1));
  EXPECT_EQ("0: eth", Keys("net", 2, 1));
  EXPECT_EQ("12", Keys("net", 0, 0));
  EXPECT_EQ("0: neteth/a neteth", Keys("net", 1, 20, kListWithPath));
  EXPECT_EQ("0: /net/eth/a /net/eth", Keys("/net/", 1, 20, kListWithPath));
  EXPECT_EQ("0: new old", Values("net"));
  EXPECT_EQ("0: old", Values("net", 1));
  EXPECT_EQ("75", Values("net", 2));
  EXPECT_EQ("75: new", Values("net", 0, 1));
  EXPECT_EQ("0: mtu", Values("net/eth"));
  EXPECT_EQ("75", Values("net/wlan"));
}

TEST_F(RegistrySubtreesTest, KeysAndValuesAreCounted) {
  CreateNet();
  EXPECT_EQ("1 4, 0 3, 65535, 95", Info(""));
  EXPECT_EQ("2 3, 2 3, 65535, 15", Info("net"));
  EXPECT_EQ("0 0, 0 0, 65535, 15", Info("net/eth/a"));
  registry.SetCurrentUserId(7);
  EXPECT_EQ("1 4, 0 3, 7, 95", Info(""));
  EXPECT_EQ("status 1", Info("net"));
}

TEST_F(RegistrySubtreesTest, AKeyIsDeletedWithAllThatIsBelow) {
  CreateNet();
  ASSERT_EQ(status::kOk, registry.CreateKey(0, "other"));
  EXPECT_EQ(status::kOk, registry.DeleteKey(0, "net/eth/a"));
  EXPECT_EQ(status::kNotFound, registry.DeleteKey(0, "net/eth/a"));
  EXPECT_EQ(status::kOk, registry.DeleteKey(0, "net"));
  EXPECT_EQ("0: other", Keys(""));
  EXPECT_EQ("1 1, 0 0, 65535, 95", Info(""));
  EXPECT_EQ("status 2", Info("net/eth"));
  EXPECT_EQ("status 2", Read(registry, "net", "old"));
  RegistryInfo info = {};
  EXPECT_EQ(status::kOk, registry.GetRegistryInfo(&info));
  EXPECT_EQ(2u, info.keyCount);
  EXPECT_EQ(0u, info.valueCount);
  EXPECT_EQ(status::kOk, registry.CreateKey(0, "net"));
  EXPECT_EQ("0", Keys("net"));
  EXPECT_EQ("75", Values("net"));
}

TEST_F(RegistrySubtreesTest, OnlyTheOwnerAndTheAdministratorChangeAPermission) {
  registry.SetCurrentUserId(7);
  ASSERT_EQ(status::kOk, registry.CreateKey(0, "mine"));
  EXPECT_EQ(status::kOk,
            registry.SetKeyPermission(0, "mine", MakePermission(kRightsAll, kRightsAll)));
  registry.SetCurrentUserId(8);
  unsigned char permission = 0;
  EXPECT_EQ(status::kNoRight, registry.SetKeyPermission(0, "mine", 0));
  EXPECT_EQ(status::kOk, registry.GetKeyPermission(0, "mine", &permission));
  EXPECT_EQ(0xFFu, permission);
  EXPECT_EQ(status::kOk, registry.CreateKey(0, "mine/yours"));
  EXPECT_EQ(status::kOk, registry.DeleteKey(0, "mine/yours"));
  registry.SetCurrentUserId(kAdmin);
  EXPECT_EQ(status::kOk, registry.SetKeyPermission(0, "mine", 0x21));
  registry.SetCurrentUserId(8);
  EXPECT_EQ(status::kOk, registry.GetKeyPermission(0, "mine", &permission)) << "without any right";
  EXPECT_EQ(0x21u, permission);
  EXPECT_EQ(status::kNotFound, registry.SetKeyPermission(0, "missing", 0x21));
  EXPECT_EQ(status::kNotFound, registry.GetKeyPermission(0, "missing", &permission));
}

TEST_F(RegistrySubtreesTest, TheWatchBitsAreTheLowSixOfTheByte) {
  ASSERT_EQ(status::kOk, registry.CreateKey(0, "key", 1));
  EXPECT_EQ(status::kOk, registry.SetKeyWatch(0, "key", 0xEA));
  EXPECT_EQ(0xA9u, DecodeTree(path).at("key").flags);
  EXPECT_EQ(status::kOk, registry.SetKeyWatch(0, "", 0x3F));
  EXPECT_EQ(0xFEu, DecodeTree(path).at("").flags);
  registry.SetCurrentUserId(7);
  EXPECT_EQ(status::kNoRight, registry.SetKeyWatch(0, "key", 0));
  EXPECT_EQ(status::kNotFound, registry.SetKeyWatch(0, "missing", 0));
  EXPECT_EQ(0xA9u, DecodeTree(path).at("key").flags);
}

TEST_F(RegistrySubtreesTest, AKeyIsCarriedToAnotherRegistryAndBack) {
  CreateNet();
  ASSERT_EQ(status::kOk, registry.BackupKey(0, "net", backup.c_str()));
  // The header; "e", "th", "a" and "wlan"; four keys; three values and their data.
  EXPECT_EQ(GetFile(backup).size(), 1u + 4 * 40 + 4 * 24 + 3 * 52 + 4 + 100);
  registry.Finalize();
  Registry other((folder / "other").c_str(), kAdmin);
  ASSERT_EQ(status::kOk, other.Initialize());
  ASSERT_EQ(status::kOk, other.CreateKey(0, "elsewhere"));
  EXPECT_EQ(status::kOk, other.RestoreKey(0, "elsewhere", backup.c_str()));
  EXPECT_EQ(Read(other, "elsewhere", "new"), "type 3: " + std::string(100, 'b'));
  EXPECT_EQ("status 53", Read(other, "elsewhere/eth", "mtu"));
  EXPECT_EQ(status::kOk, other.CreateKey(0, "elsewhere/wlan/b"));
  EXPECT_EQ(status::kOk, other.BackupKey(0, "elsewhere", backup.c_str()));
  other.Finalize();
  EXPECT_EQ("", StructureFindings(folder / "other"));
  ASSERT_EQ(status::kOk, registry.Initialize());
  EXPECT_EQ(status::kOk, registry.RestoreKey(0, "net", backup.c_str()));
  EXPECT_EQ("0: wlan/b wlan eth/a eth", Keys("net"));
  EXPECT_EQ("0: new old", Values("net"));
}

TEST_F(RegistrySubtreesTest, BackingUpNeedsTheRightToReadAndRestoringThatToCreate) {
  CreateNet();
  ASSERT_EQ(status::kOk,
            registry.SetKeyPermission(0, "net", MakePermission(kRightsAll, kRightRead)));
  registry.SetCurrentUserId(7);
  EXPECT_EQ(status::kOk, registry.BackupKey(0, "net", backup.c_str()));
  EXPECT_EQ(status::kNoRight, registry.BackupKey(0, "net/eth", backup.c_str()));
  EXPECT_EQ(status::kNotFound, registry.BackupKey(0, "missing", backup.c_str()));
  const std::string before = GetFile(path);
  EXPECT_EQ(status::kNoRight, registry.RestoreKey(0, "net", backup.c_str()));
  EXPECT_EQ(status::kNotFound, registry.RestoreKey(0, "missing", backup.c_str()));
  EXPECT_EQ(status::kInputOutput, registry.RestoreKey(0, "", (backup + "s").c_str()))
      << "there is none";
  EXPECT_EQ(status::kInputOutput, registry.BackupKey(0, "", path.c_str()))
      << "the registry's own file";
  EXPECT_EQ(status::kInputOutput, registry.RestoreKey(0, "", path.c_str()));
  EXPECT_EQ(GetFile(path), before);
  EXPECT_EQ(status::kOk, registry.RestoreKey(0, "", backup.c_str())) << "at the root everybody may";
  EXPECT_EQ("0: wlan eth/a eth", Keys(""));
}

}  // namespace

}  // namespace tamu::registry
