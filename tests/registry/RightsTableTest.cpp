// Every operation on a key or value, by its owner, another user and the administrator, with each
// permission byte: what is answered is what one table tells.
#include "tests/registry/RegistryRig.h"
#include "tests/support/GivenBytes.h"
#include "tests/support/RightsRule.h"

namespace tamu::registry::rights_table {
namespace {

using namespace rights_rule;

struct Operation {
  const char* name;
  unsigned int need;          // with handle 0
  unsigned int needByHandle;  // through a handle
  unsigned int (*run)(Registry& registry, unsigned int handle, const std::string& backup);
  bool mayBePartOfMore = true;  // in a transaction
};

constexpr unsigned int kByPathAlone = 256;  // there is no other way
char sText[] = "text";

unsigned int PutText(Registry& registry, const char* key, const char* name) {
  const Value value = MakeValue(2, sText, 4);
  return registry.PutValue(key, name, value, true);
}

class CountingVisitor : public WalkVisitor {
 public:
  Then VisitKey(const WalkedKey& key) override {
    if (key.isReadable && key.depth == 0) isReadable = true;
    return Then::kGoOn;
  }
  Then VisitValue(const WalkedKey& key, const WalkedValue&) override {
    if (key.depth == 0) ++values;
    return Then::kGoOn;
  }

  bool isReadable = false;
  unsigned int values = 0;
};

// Listed, read, set, ... : the key "k", with a value "v" and a key "k/c" of somebody else, on which
// nobody has a right. Everybody has all rights on "open".
const Operation kOperations[] = {
    {"GetKeyInfo", kRead, kRead,
     [](Registry& registry, unsigned int handle, const std::string&) {
       KeyInfo info;
       return registry.GetKeyInfo(handle, "k", &info);
     }},
    {"GetKeyPermission", kNothing, kNothing,
     [](Registry& registry, unsigned int handle, const std::string&) {
       unsigned char permission = 0;
       return registry.GetKeyPermission(handle, "k", &permission);
     }},
    {"SetKeyPermission", kToOwn, kToOwn,
     [](Registry& registry, unsigned int handle, const std::string&) {
       return registry.SetKeyPermission(handle, "k", 0x77);
     }},
    {"SetKeyWatch", kRead, kRead,
     [](Registry& registry, unsigned int handle, const std::string&) {
       return registry.SetKeyWatch(handle, "k", 5);
     }},
    {"ListKeys", kRead, kNothing,
     [](Registry& registry, unsigned int handle, const std::string&) {
       NameList names(8);
       return registry.ListKeys(handle, "k", 0, 0, &names, 0);
     }},
    {"ListValues", kRead, kRead,
     [](Registry& registry, unsigned int handle, const std::string&) {
       NameList names(8);
       return registry.ListValues(handle, "k", 0, 0, &names);
     }},
    {"Walk", kRead, kNothing,
     [](Registry& registry, unsigned int handle, const std::string&) {
       CountingVisitor visitor;
       const unsigned int result = registry.Walk(handle, "k", visitor);
       EXPECT_EQ(visitor.isReadable ? 1u : 0u, visitor.values);
       return result;
     }},
    {"OpenKey", kNothing, kByPathAlone,
     [](Registry& registry, unsigned int, const std::string&) {
       unsigned int handle = 0;
       const unsigned int result = registry.OpenKey("k", &handle);
       if (result == 0) registry.CloseKey(handle);
       return result;
     }},
    {"CreateKey", kCreate, kCreate,
     [](Registry& registry, unsigned int handle, const std::string&) {
       return registry.CreateKey(handle, "k/new", 1);
     }},
    {"DeleteKey", kDelete, kDelete,
     [](Registry& registry, unsigned int handle, const std::string&) {
       return registry.DeleteKey(handle, "k");
     }},
    {"BackupKey", kRead, kNotSupported,
     [](Registry& registry, unsigned int handle, const std::string& backup) {
       return registry.BackupKey(handle, "k", (backup + "-made").c_str());
     }},
    {"RestoreKey", kCreate, kNotSupported,
     [](Registry& registry, unsigned int handle, const std::string& backup) {
       return registry.RestoreKey(handle, "k", backup.c_str());
     }},
    {"GetValue", kRead, kRead,
     [](Registry& registry, unsigned int handle, const std::string&) {
       ReadValue value;
       return registry.GetValue(handle, "k", "v", &value);
     }},
    {"GetValue of the place", kModify, kByPathAlone,
     [](Registry& registry, unsigned int handle, const std::string&) {
       unsigned char place[4];
       Value value = {kValueTypeOffset, 4, place};
       return registry.GetValue(handle, "k", "v", &value);
     }},
    {"SetValue", kModify, kModify,
     [](Registry& registry, unsigned int handle, const std::string&) {
       Value value = MakeValue(2, sText, 4);
       return registry.SetValue(handle, "k", "v", &value);
     }},
    {"CreateValue", kCreate, kCreate,
     [](Registry& registry, unsigned int handle, const std::string&) {
       Value value = MakeValue(2, sText, 4);
       return registry.CreateValue(handle, "k", "new", &value);
     }},
    {"DeleteValue", kDelete, kDelete,
     [](Registry& registry, unsigned int handle, const std::string&) {
       return registry.DeleteValue(handle, "k", "v");
     }},
    {"GetDefaultValue", kRead, kRead,
     [](Registry& registry, unsigned int handle, const std::string&) {
       unsigned long long number = 0;
       return registry.GetDefaultValue(handle, "k", &number);
     }},
    {"SetDefaultValue", kModify, kModify,
     [](Registry& registry, unsigned int handle, const std::string&) {
       return registry.SetDefaultValue(handle, "k", 9);
     }},
    {"MakeKey", kCreateTwice, kByPathAlone,
     [](Registry& registry, unsigned int, const std::string&) {
       return registry.MakeKey("k/new/below");
     }},
    {"PutValue, new", kCreate, kByPathAlone,
     [](Registry& registry, unsigned int, const std::string&) {
       return PutText(registry, "k", "new");
     }},
    {"PutValue", kModify, kByPathAlone,
     [](Registry& registry, unsigned int, const std::string&) {
       return PutText(registry, "k", "v");
     }},
    {"PutValue with a key", kCreateTwice, kByPathAlone,
     [](Registry& registry, unsigned int, const std::string&) {
       return PutText(registry, "k/new", "v");
     }},
    {"ReadWholeValue", kRead, kByPathAlone,
     [](Registry& registry, unsigned int, const std::string&) {
       ReadValue value;
       return registry.ReadWholeValue("k", "v", &value);
     }},
    {"RemoveValue", kDelete, kByPathAlone,
     [](Registry& registry, unsigned int, const std::string&) {
       return registry.RemoveValue("k", "v");
     }},
    {"RemoveKey", kDelete, kByPathAlone,
     [](Registry& registry, unsigned int, const std::string&) { return registry.RemoveKey("k"); }},
    {"CopyKey from it", kRead, kByPathAlone,
     [](Registry& registry, unsigned int, const std::string&) {
       return registry.CopyKey("k", "open/copy");
     }},
    {"CopyKey to it", kCreate, kByPathAlone,
     [](Registry& registry, unsigned int, const std::string&) {
       return registry.CopyKey("open/source", "k/copy");
     }},
    {"MoveKey from it", kDelete, kByPathAlone,
     [](Registry& registry, unsigned int, const std::string&) {
       return registry.MoveKey("k", "open/moved");
     }},
    {"MoveKey to it", kCreate, kByPathAlone,
     [](Registry& registry, unsigned int, const std::string&) {
       return registry.MoveKey("open/source", "k/moved");
     }},
    {"RewriteFile", kToAdminister, kByPathAlone,
     [](Registry& registry, unsigned int, const std::string& backup) {
       const std::string bytes = GetFile(backup + "-file");
       GivenBytes rewriter(bytes);
       return registry.RewriteFile(rewriter);
     },
     false},
    {"Compact", kToAdminister, kByPathAlone,
     [](Registry& registry, unsigned int, const std::string&) { return registry.Compact(); },
     false},
    {"Check", kNothing, kByPathAlone,
     [](Registry& registry, unsigned int, const std::string&) {
       CheckResult result = {};
       return registry.Check(&result);
     }},
    {"ReadChanges", kNothing, kByPathAlone,
     [](Registry& registry, unsigned int, const std::string&) {
       unsigned long long after = registry.ChangeNumber();
       ChangeList changes;
       return registry.ReadChanges(&after, &changes, Registry::kWatchedOnly);
     },
     false},
};

class RightsTableTest : public ::testing::Test {
 protected:
  RightsTableTest() {
    Open();
    MakeOpenKey("open");
    MakeOpenKey("open/source");
    EXPECT_EQ(status::kOk, registry.SetCurrentUserId(kOwner));
    EXPECT_EQ(status::kOk, registry.MakeKey("k"));
    EXPECT_EQ(status::kOk, registry.SetDefaultValue(0, "k", 3));
    EXPECT_EQ(status::kOk, PutText(registry, "k", "v"));
    EXPECT_EQ(status::kOk, registry.SetKeyPermission(0, "k", 0xFF));
    EXPECT_EQ(status::kOk, registry.SetCurrentUserId(4000));
    EXPECT_EQ(status::kOk, registry.MakeKey("k/c"));
    EXPECT_EQ(status::kOk, registry.SetKeyPermission(0, "k/c", 0));
    registry.SetCurrentUserId(kAdmin);
    EXPECT_EQ(status::kOk, registry.BackupKey(0, "k", backup.c_str()));
    start = GetFile(path);
    PutFile(backup + "-file", start);
  }
  void Open() {
    RegistryOptions options;
    options.durability = Durability::kNone;
    EXPECT_EQ(status::kOk, registry.SetOptions(options));
    ASSERT_EQ(status::kOk, registry.Initialize());
  }
  void MakeOpenKey(const char* key) {
    EXPECT_EQ(status::kOk, registry.MakeKey(key));
    EXPECT_EQ(status::kOk, registry.SetKeyPermission(0, key, 0xFF));
  }
  // Gives the key its permission and asks for a handle of all.
  void Begin(unsigned char permission, bool byHandle) {
    registry.SetCurrentUserId(kAdmin);
    ASSERT_EQ(status::kOk, registry.SetKeyPermission(0, "k", permission));
    handle = 0;
    if (byHandle) {
      ASSERT_EQ(status::kOk, registry.OpenKey("", &handle));
    }
  }
  void End() {
    if (handle != 0) registry.CloseKey(handle);
    handle = 0;
  }
  // What the user is answered; true when he may do it.
  bool Ask(const Operation& operation, unsigned int user, unsigned char permission) {
    const unsigned int need = handle != 0 ? operation.needByHandle : operation.need;
    registry.SetCurrentUserId(user);
    const unsigned int result = operation.run(registry, handle, backup);
    registry.SetCurrentUserId(kAdmin);
    const bool mayDo = MayDo(user, permission, need);
    const unsigned int expected = need == kNotSupported ? status::kNotSupported
                                  : mayDo               ? status::kOk
                                                        : status::kNoRight;
    EXPECT_EQ(expected, result) << operation.name << ", user " << user << ", permission 0x"
                                << std::hex << unsigned(permission) << ", handle " << handle;
    return result == status::kOk;
  }

  TempDir folder;
  const std::string path = folder / "registry";
  const std::string backup = folder / "backup";
  Registry registry{path.c_str(), kAdmin};
  unsigned int handle = 0;
  std::string start;
};

constexpr unsigned int kUsers[] = {kOwner, kOther, kAdmin};

// Each byte; what was done is taken back each time.
TEST_F(RightsTableTest, InATransactionNothingGoesWithoutItsBit) {
  for (const bool byHandle : {false, true}) {
    for (unsigned int permission = 0; permission < 256 && !HasFailure(); ++permission) {
      Begin(static_cast<unsigned char>(permission), byHandle);
      for (const Operation& operation : kOperations) {
        if (!operation.mayBePartOfMore || (byHandle && operation.needByHandle == kByPathAlone)) {
          continue;
        }
        for (const unsigned int user : kUsers) {
          ASSERT_EQ(status::kOk, registry.BeginTransaction());
          Ask(operation, user, static_cast<unsigned char>(permission));
          ASSERT_EQ(status::kOk, registry.CancelTransaction());
        }
      }
      End();
    }
  }
}

// The owner's nibbles, with all that he lacks for the others. Who is refused has changed nothing.
TEST_F(RightsTableTest, NothingGoesWithoutItsBit) {
  for (const bool byHandle : {false, true}) {
    for (unsigned int nibble = 0; nibble < 16 && !HasFailure(); ++nibble) {
      const unsigned char permission = static_cast<unsigned char>(nibble | (15 - nibble) << 4);
      for (const Operation& operation : kOperations) {
        if (byHandle && operation.needByHandle == kByPathAlone) continue;
        for (const unsigned int user : kUsers) {
          Begin(permission, byHandle);
          const unsigned long long number = registry.ChangeNumber();
          const bool isDone = Ask(operation, user, permission);
          if (!isDone) {
            EXPECT_EQ(number, registry.ChangeNumber()) << operation.name;
          }
          End();
          if (!isDone || number == registry.ChangeNumber()) continue;
          registry.Finalize();
          PutFile(path, start);
          Open();
        }
      }
    }
  }
}

}  // namespace
}  // namespace tamu::registry::rights_table
