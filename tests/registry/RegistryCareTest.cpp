// Compacting and checking a file, and telling how much it still holds.
#include <gtest/gtest.h>

#include <random>

#include "registry/filetree/TernaryRegistry.h"
#include "tests/registry/RegistryRig.h"
#include "tests/support/NodeLinks.h"

namespace tamu::registry {
namespace {

constexpr unsigned int kMostSlots = 364 + 20 * 499;  // of a kind

class RegistryCare : public ::testing::Test {
 protected:
  unsigned int Open(const RegistryOptions& options) {
    registry.Finalize();
    EXPECT_EQ(status::kOk, registry.SetOptions(options));
    return registry.Initialize();
  }
  static RegistryOptions Options(SpacePolicy space = SpacePolicy::kExact) {
    RegistryOptions options;
    options.durability = Durability::kNone;
    options.space = space;
    return options;
  }
  unsigned int Create(unsigned int handle, const char* key, const std::string& name,
                      const std::string& data) {
    ExactValue value(kValueTypeString, data);
    return registry.CreateValue(handle, key, name.c_str(), &value);
  }
  // Keys and values, and slots of each kind that nothing leads to.
  void MakeWorn() {
    EXPECT_EQ(status::kOk, Open(Options()));
    for (const char* key : {"network", "network/eth0", "net", "display", "gone"}) {
      EXPECT_EQ(status::kOk, registry.MakeKey(key));
    }
    for (unsigned int i = 0; i < 60; ++i) {
      EXPECT_EQ(status::kOk, Create(0, "network/eth0", "v" + std::to_string(i),
                                    std::string(1 + i * 17 % 1000, 'x')));
      if (i % 3 == 0) {
        EXPECT_EQ(status::kOk,
                  registry.DeleteValue(0, "network/eth0", ("v" + std::to_string(i)).c_str()));
      }
    }
    unsigned long long number = 7;
    Value value = MakeValue(kValueTypeInteger, &number, sizeof number);
    EXPECT_EQ(status::kOk, registry.CreateValue(0, "net", "number", &value));
    EXPECT_EQ(status::kOk, registry.SetDefaultValue(0, "display", 99));
    EXPECT_EQ(status::kOk, registry.SetKeyPermission(0, "display", 0x35));
    EXPECT_EQ(status::kOk, registry.DeleteKey(0, "gone"));
  }
  CheckResult Check() {
    CheckResult result = {};
    EXPECT_EQ(status::kOk, registry.Check(&result));
    return result;
  }
  RegistryRoom Room() {
    RegistryRoom room = {};
    EXPECT_EQ(status::kOk, registry.GetRoom(&room));
    return room;
  }
  // Keys and values by path, but for names without a key.
  std::string Tree() {
    std::string text;
    for (const auto& key : DecodeTree(path)) {
      text += key.first + " " + std::to_string(key.second.owner) + " " +
              std::to_string(key.second.permission) + " " + std::to_string(key.second.flags) + " " +
              std::to_string(key.second.defaultValue);
      for (const DecodedValue& value : key.second.values) {
        text += " " + value.name + ":" + std::to_string(value.type) + value.bytes +
                std::to_string(value.number);
      }
      text += "\n";
    }
    return text;
  }
  // Lets the first name's node lead to names that are elsewhere.
  void Damage(unsigned int child) {
    registry.Finalize();
    PutLink(path, 0x200, NodeLink::kChild, child);
  }

  TempDir folder;
  const std::string path = folder / "registry";
  Registry registry{path.c_str(), kAdmin};
};

// ---- room

TEST_F(RegistryCare, ANewFileHasAllRoom) {
  EXPECT_EQ(status::kOk, Open(Options()));
  const RegistryRoom room = Room();
  EXPECT_EQ(kMostSlots - 1, room.strings.left);
  EXPECT_EQ(kMostSlots - 1, room.keys.left);
  EXPECT_EQ(kMostSlots, room.values.left);
  EXPECT_EQ(kMostSlots, room.blocks.left);
  EXPECT_EQ(1u, room.strings.inUse);
  EXPECT_EQ(0u, room.values.inUse);
  EXPECT_EQ(0u, room.blocks.stranded);
}

TEST_F(RegistryCare, StrandedSlotsAreRoomWhereSpaceIsUsedAgain) {
  for (const SpacePolicy space : {SpacePolicy::kExact, SpacePolicy::kReuse}) {
    const bool reuses = space == SpacePolicy::kReuse;
    EXPECT_EQ(status::kOk, Open(Options(space)));
    if (!reuses) {
      EXPECT_EQ(status::kOk, registry.MakeKey("a"));
      for (unsigned int i = 0; i < 400; ++i) {
        ASSERT_EQ(status::kOk, Create(0, "a", std::to_string(i), "x"));
      }
      for (unsigned int i = 0; i < 100; ++i) {
        ASSERT_EQ(status::kOk, registry.DeleteValue(0, "a", std::to_string(i).c_str()));
      }
    }
    const RegistryRoom room = Room();
    EXPECT_EQ(300u, room.values.inUse);
    EXPECT_EQ(100u, room.values.stranded);
    EXPECT_EQ(kMostSlots - 400 + (reuses ? 100 : 0), room.values.left);
    EXPECT_EQ(400u, room.blocks.inUse);
    EXPECT_EQ(0u, room.blocks.stranded);
  }
}

// ---- checking

TEST_F(RegistryCare, ASoundFileIsToldToBeSound) {
  EXPECT_EQ(status::kOk, Open(Options(SpacePolicy::kReuse)));
  EXPECT_EQ(status::kOk, registry.MakeKey("a/b"));
  EXPECT_EQ(status::kOk, Create(0, "a", "text", std::string(100, 'x')));
  const std::string before = GetFile(path);
  const CheckResult result = Check();
  EXPECT_EQ(FileCondition::kSound, result.condition);
  EXPECT_EQ(3u, result.strings.reached);
  EXPECT_EQ(3u, result.keys.reached);
  EXPECT_EQ(1u, result.values.reached);
  EXPECT_EQ(2u, result.blocks.reached);
  EXPECT_EQ(before, GetFile(path));
}

TEST_F(RegistryCare, LeakedSlotsAreWear) {
  MakeWorn();
  const CheckResult result = Check();
  const SlotCounts slots = CountSlots(path);
  EXPECT_EQ(FileCondition::kWorn, result.condition);
  EXPECT_EQ(slots.strings.reachable, result.strings.reached);
  EXPECT_EQ(slots.keys.reachable, result.keys.reached);
  EXPECT_EQ(slots.values.reachable, result.values.reached);
  EXPECT_EQ(slots.blocks.reachable, result.blocks.reached);
  EXPECT_EQ(slots.blocks.used - slots.blocks.reachable, result.blocks.leaked);
  EXPECT_LT(100u, result.blocks.leaked);
}

TEST_F(RegistryCare, ADamagedFileIsToldAndStays) {
  MakeWorn();
  Damage(0x777700);
  const std::string before = GetFile(path);
  EXPECT_EQ(status::kOk, Open(Options()));
  EXPECT_EQ(FileCondition::kDamaged, Check().condition);
  EXPECT_EQ(status::kInvalidFile, registry.Compact());
  EXPECT_EQ(before, GetFile(path));
}

TEST_F(RegistryCare, ACircleIsDamage) {
  MakeWorn();
  Damage(0x200);
  EXPECT_EQ(status::kOk, Open(Options()));
  EXPECT_EQ(FileCondition::kDamaged, Check().condition);
}

TEST_F(RegistryCare, AFileWhoseRootCannotBeReadIsLost) {
  MakeWorn();
  registry.Finalize();
  std::string bytes = GetFile(path);
  PutU32(reinterpret_cast<unsigned char*>(&bytes[4180 + 28]), 0x777700);
  PutFile(path, bytes);
  EXPECT_EQ(status::kOk, Open(Options()));
  EXPECT_EQ(FileCondition::kLost, Check().condition);
}

TEST_F(RegistryCare, ADamagedFileIsNotOpenedWhereThatIsAskedFor) {
  MakeWorn();
  RegistryOptions options = Options();
  options.checkAtOpening = true;
  EXPECT_EQ(status::kOk, Open(options));
  Damage(0x777700);
  EXPECT_EQ(status::kInvalidFile, Open(options));
  EXPECT_EQ(status::kNoRight, registry.CreateKey(0, "a"));
  EXPECT_EQ(status::kOk, Open(Options()));
}

// Who is not told gets a registry with a new root key, and what was there is lost.
TEST_F(RegistryCare, AFileWithoutARootStaysAsItIsWhereALookIsAskedFor) {
  MakeWorn();
  registry.Finalize();
  std::string bytes = GetFile(path);
  PutU32(reinterpret_cast<unsigned char*>(&bytes[4180 + 28]), 0);
  PutFile(path, bytes);
  RegistryOptions options = Options();
  options.checkAtOpening = true;
  EXPECT_EQ(status::kInvalidFile, Open(options));
  EXPECT_TRUE(bytes == GetFile(path));
}

TEST_F(RegistryCare, ANewFileIsOpenedWithEverythingAskedFor) {
  RegistryOptions options = Options();
  options.checkAtOpening = true;
  options.compactBelow = kMostSlots + 1;
  EXPECT_EQ(status::kOk, Open(options));
  EXPECT_EQ("1 1 0 0", UsedSlots(path));
}

// As a program does that dies between two writes of a file without a journal: of "temperature"
// only what is behind "temp" and the character after it can be reached.
TEST_F(RegistryCare, ANameThatHasLostItsBeginningIsDamage) {
  RegistryOptions options = Options();
  EXPECT_EQ(status::kOk, Open(options));
  EXPECT_EQ(status::kOk, registry.MakeKey("temperature"));
  EXPECT_EQ(status::kOk, registry.MakeKey("x"));
  registry.Finalize();
  {
    TernaryRegistry tree(nullptr, nullptr);
    ASSERT_EQ(status::kOk, tree.Initialize(path.c_str()));
    unsigned int upper = 0;
    // 0x400 is "x", and does not lead to the rest of "temperature".
    EXPECT_EQ(status::kOk, tree.SplitNode(0, 0x200, 0, 3, 0x400, &upper));
    EXPECT_EQ(0x500u, upper);
  }
  const std::string before = GetFile(path);
  EXPECT_EQ(status::kOk, Open(options));
  KeyInfo info;
  EXPECT_EQ(status::kNotFound, registry.GetKeyInfo(0, "temperature", &info));
  EXPECT_EQ(FileCondition::kDamaged, Check().condition);
  EXPECT_EQ(status::kInvalidFile, registry.Compact());
  options.checkAtOpening = true;
  EXPECT_EQ(status::kInvalidFile, Open(options));
  EXPECT_EQ(before, GetFile(path));
}

// What another reader of files finds sound, too, is never called damaged.
TEST_F(RegistryCare, SoundFilesAreNeverCalledDamaged) {
  MakeWorn();
  registry.Finalize();
  const std::string whole = GetFile(path);
  std::minstd_rand engine(17);
  unsigned int damaged = 0;
  for (unsigned int i = 0; i < 400; ++i) {
    std::string bytes = whole;
    bytes[4180 + engine() % 16000] = static_cast<char>(engine() >> 5);
    PutFile(path, bytes);
    SCOPED_TRACE(i);
    if (Open(Options()) != status::kOk) continue;
    const FileCondition condition = Check().condition;
    registry.Finalize();
    if (condition < FileCondition::kDamaged) continue;
    ++damaged;
    EXPECT_NE("", StructureFindings(path));
  }
  EXPECT_LT(20u, damaged);
}

// ---- compacting

TEST_F(RegistryCare, CompactingWinsBackAllThatIsLostAndKeepsTheContent) {
  MakeWorn();
  const std::string tree = Tree();
  EXPECT_EQ(status::kOk, registry.Compact());
  EXPECT_EQ(FileCondition::kSound, Check().condition);
  registry.Finalize();
  EXPECT_EQ(tree, Tree());
  EXPECT_EQ("", StructureFindings(path));
  const SlotCounts slots = CountSlots(path);
  EXPECT_EQ(slots.strings.reachable, slots.strings.used);
  EXPECT_EQ(slots.blocks.reachable, slots.blocks.used);
}

TEST_F(RegistryCare, HandlesStayOpenOverACompaction) {
  MakeWorn();
  unsigned int handle = 0;
  EXPECT_EQ(status::kOk, registry.OpenKey("network", &handle));
  EXPECT_EQ(status::kOk, registry.Compact());
  ReadValue value;
  EXPECT_EQ(status::kOk, registry.GetValue(handle, "eth0", "v1", &value));
  EXPECT_EQ(std::string(18, 'x'), BytesOf(value));
  EXPECT_EQ(status::kOk, registry.CreateKey(handle, "wlan0"));
  registry.Finalize();
  EXPECT_EQ("", StructureFindings(path));
}

TEST_F(RegistryCare, ACompactedFileIsNoFurtherCompacted) {
  MakeWorn();
  EXPECT_EQ(status::kOk, registry.Compact());
  const std::string once = GetFile(path);
  EXPECT_EQ(status::kOk, registry.Compact());
  EXPECT_EQ(once, GetFile(path));
}

TEST_F(RegistryCare, AFileThatHasGrownGetsItsTablesBack) {
  EXPECT_EQ(status::kOk, Open(Options()));
  EXPECT_EQ(status::kOk, registry.MakeKey("a"));
  for (unsigned int i = 0; i < 200; ++i) {
    ASSERT_EQ(status::kOk, Create(0, "a", std::to_string(i), std::string(1000, 'x')));
  }
  for (unsigned int i = 0; i < 150; ++i) {
    ASSERT_EQ(status::kOk, registry.DeleteValue(0, "a", std::to_string(i).c_str()));
  }
  EXPECT_EQ(7u, CountSlots(path).blocks.tables);
  EXPECT_EQ(status::kOk, registry.Compact());
  registry.Finalize();
  EXPECT_EQ(2u, CountSlots(path).blocks.tables);
  EXPECT_EQ("2 2 50 800", UsedSlots(path));
  EXPECT_EQ("", StructureFindings(path));
}

// A table of keys with 100 entries instead of 365: what lies behind them belongs to nothing.
TEST_F(RegistryCare, TablesThatAreNotAlikeBecomeThoseOfANewFile) {
  MakeWorn();
  registry.Finalize();
  const std::string tree = Tree();
  std::string bytes = GetFile(path);
  unsigned char* const table = reinterpret_cast<unsigned char*>(
      &bytes[FileLayout::OfEntries(365).tableOffset(NodeKind::kKey)]);
  const unsigned int used = 364 - GetU32(table + 28);
  PutU32(table + 12, 100);
  PutU32(table + 28, 99 - used);
  PutFile(path, bytes);
  EXPECT_EQ(status::kOk, Open(Options()));
  EXPECT_EQ(FileCondition::kWorn, Check().condition);
  EXPECT_EQ(status::kOk, registry.Compact());
  registry.Finalize();
  EXPECT_EQ(tree, Tree());
  EXPECT_EQ("", StructureFindings(path));
  const std::string after = GetFile(path);
  EXPECT_EQ(75888u, GetU32(reinterpret_cast<const unsigned char*>(&after[4180 + 32])));
}

TEST_F(RegistryCare, AVisitorIsRefused) {
  class Visitor final : public WalkVisitor {
   public:
    explicit Visitor(Registry& walked) : registry(walked) {}
    Then VisitKey(const WalkedKey&) override {
      CheckResult result = {};
      RegistryRoom room = {};
      EXPECT_EQ(status::kBusy, registry.Check(&result));
      EXPECT_EQ(status::kBusy, registry.GetRoom(&room));
      EXPECT_EQ(status::kBusy, registry.Compact());
      return Then::kStop;
    }
    Then VisitValue(const WalkedKey&, const WalkedValue&) override { return Then::kStop; }
    Registry& registry;
  };
  EXPECT_EQ(status::kOk, Open(Options()));
  Visitor visitor(registry);
  EXPECT_EQ(status::kOk, registry.Walk(0, "", visitor));
}

TEST_F(RegistryCare, OpeningCompactsAFileThatIsNearlyFull) {
  MakeWorn();
  RegistryOptions options = Options();
  options.compactBelow = Room().blocks.left;
  EXPECT_EQ(status::kOk, Open(options));
  EXPECT_EQ(FileCondition::kWorn, Check().condition);
  ++options.compactBelow;
  EXPECT_EQ(status::kOk, Open(options));
  EXPECT_EQ(FileCondition::kSound, Check().condition);
}

// A key that has lost its sub-keys: the file is sound, and they can still be saved.
TEST_F(RegistryCare, OpeningThrowsNoStraysAway) {
  EXPECT_EQ(status::kOk, Open(Options()));
  EXPECT_EQ(status::kOk, registry.MakeKey("net/eth0"));
  EXPECT_EQ(status::kOk, Create(0, "net/eth0", "address", "192.168.0.1"));
  Damage(0);
  const std::string before = GetFile(path);
  RegistryOptions options = Options();
  options.compactBelow = 2 * kMostSlots;
  EXPECT_EQ(status::kOk, Open(options));
  const CheckResult result = Check();
  EXPECT_EQ(FileCondition::kWorn, result.condition);
  EXPECT_EQ(1u, result.keys.leaked);
  EXPECT_EQ(1u, result.values.leaked);
  registry.Finalize();
  EXPECT_EQ(before, GetFile(path));
  EXPECT_EQ(status::kOk, Open(Options()));
  EXPECT_EQ(status::kOk, registry.Compact());
  EXPECT_EQ(FileCondition::kSound, Check().condition);
}

TEST_F(RegistryCare, OpeningLeavesADamagedFileAsItIs) {
  MakeWorn();
  Damage(0x777700);
  const std::string before = GetFile(path);
  RegistryOptions options = Options();
  options.compactBelow = kMostSlots;
  EXPECT_EQ(status::kOk, Open(options));
  registry.Finalize();
  EXPECT_EQ(before, GetFile(path));
}

TEST_F(RegistryCare, OnlyTheAdministratorCompactsAndNotInATransaction) {
  RegistryRoom room = {};
  CheckResult result = {};
  EXPECT_EQ(status::kNoRight, registry.Compact());
  EXPECT_EQ(status::kNoRight, registry.Check(&result));
  EXPECT_EQ(status::kNoRight, registry.GetRoom(&room));
  MakeWorn();
  EXPECT_EQ(status::kBadArgument, registry.Check(nullptr));
  EXPECT_EQ(status::kBadArgument, registry.GetRoom(nullptr));
  registry.SetCurrentUserId(7);
  EXPECT_EQ(status::kNoRight, registry.Compact());
  EXPECT_EQ(status::kOk, registry.Check(&result));
  registry.SetCurrentUserId(kAdmin);
  EXPECT_EQ(status::kOk, registry.BeginTransaction());
  EXPECT_EQ(status::kBusy, registry.Compact());
  const unsigned int before = Room().keys.inUse;
  EXPECT_EQ(status::kOk, registry.MakeKey("within"));
  EXPECT_EQ(before + 1, Room().keys.inUse);
  EXPECT_EQ(result.keys.reached + 1, Check().keys.reached);
  EXPECT_EQ(status::kOk, registry.CancelTransaction());
  EXPECT_EQ(before, Room().keys.inUse);
}

TEST_F(RegistryCare, AFileThatIsOnlyReadIsChecked) {
  MakeWorn();
  RegistryOptions options = Options();
  options.readOnly = true;
  options.checkAtOpening = true;
  options.compactBelow = kMostSlots;
  EXPECT_EQ(status::kOk, Open(options));
  EXPECT_EQ(FileCondition::kWorn, Check().condition);
  EXPECT_EQ(status::kNoRight, registry.Compact());
}

}  // namespace
}  // namespace tamu::registry
