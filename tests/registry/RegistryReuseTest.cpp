// What SpacePolicy::kReuse does with slots that are free.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <set>
#include <vector>

#include "tests/registry/RegistryRig.h"

namespace tamu::registry {
namespace {

const std::string kLongData(1000, 'd');

class RegistryReuse : public ::testing::Test {
 protected:
  RegistryReuse() { Open(SpacePolicy::kReuse); }
  ~RegistryReuse() override {
    registry.Finalize();
    EXPECT_EQ("", StructureFindings(path));
  }

  void Open(SpacePolicy space) {
    registry.Finalize();
    RegistryOptions options;
    options.durability = Durability::kNone;
    options.space = space;
    EXPECT_EQ(status::kOk, registry.SetOptions(options));
    EXPECT_EQ(status::kOk, registry.Initialize());
  }
  unsigned int OpenKey(const char* key) {
    unsigned int handle = 0;
    EXPECT_EQ(status::kOk, registry.OpenKey(key, &handle));
    return handle;
  }
  unsigned int Set(unsigned int handle, const char* key, const char* name,
                   const std::string& data) {
    ExactValue value(kValueTypeString, data);
    return registry.SetValue(handle, key, name, &value);
  }
  unsigned int Create(unsigned int handle, const char* key, const char* name,
                      const std::string& data, unsigned int type = kValueTypeString) {
    ExactValue value(type, data);
    return registry.CreateValue(handle, key, name, &value);
  }
  void MakeKeys(const std::vector<const char*>& keys) {
    for (const char* key : keys) EXPECT_EQ(status::kOk, registry.MakeKey(key)) << key;
  }
  std::string Used() { return UsedSlots(path); }
  std::string Keys() {
    std::string keys;
    for (const auto& key : DecodeTree(path)) keys += key.first + " ";
    return keys;
  }

  TempDir folder;
  const std::string path = folder / "registry";
  Registry registry{path.c_str(), kAdmin};
};

// A new file has 364 slots for blocks, an appended table 499; a value of 1,000 bytes takes sixteen.
TEST_F(RegistryReuse, FreeSlotsOfOlderTablesAreUsed) {
  MakeKeys({"a"});
  for (unsigned int i = 0; i < 40; ++i) {
    ASSERT_EQ(status::kOk, Create(0, "a", ("v" + std::to_string(i)).c_str(), kLongData));
  }
  ASSERT_EQ(2u, CountSlots(path).blocks.tables);
  for (unsigned int i = 0; i < 20; ++i) {
    ASSERT_EQ(status::kOk, registry.DeleteValue(0, "a", ("v" + std::to_string(i)).c_str()));
  }
  EXPECT_EQ("2 2 20 320", Used());
  for (unsigned int i = 0; i < 30; ++i) {
    ASSERT_EQ(status::kOk, Create(0, "a", ("w" + std::to_string(i)).c_str(), kLongData));
  }
  EXPECT_EQ(2u, CountSlots(path).blocks.tables);
  EXPECT_EQ("2 2 50 800", Used());
  Open(SpacePolicy::kExact);
  for (unsigned int i = 20; i < 30; ++i) {
    ASSERT_EQ(status::kOk, registry.RemoveValue("a", ("w" + std::to_string(i)).c_str()));
  }
  ASSERT_EQ(status::kOk, Set(0, "a", "v30", kLongData));
  for (unsigned int i = 0; i < 4; ++i) {
    ASSERT_EQ(status::kOk, Create(0, "a", ("x" + std::to_string(i)).c_str(), kLongData));
  }
  EXPECT_EQ(3u, CountSlots(path).blocks.tables);
}

// 100 values of 1,000 bytes, set in turn: with kExact the blocks that an older table gets back are
// lost.
TEST_F(RegistryReuse, SettingsInTurnWearNoFileOut) {
  for (const bool reuses : {true, false}) {
    Open(reuses ? SpacePolicy::kReuse : SpacePolicy::kExact);
    const char* key = reuses ? "reused" : "exact";
    MakeKeys({key});
    for (unsigned int i = 0; i < 100; ++i) {
      ASSERT_EQ(status::kOk, Create(0, key, ("v" + std::to_string(i)).c_str(), kLongData));
    }
    unsigned int count = 0;
    const auto set = [&] {
      return Set(0, key, ("v" + std::to_string(count % 100)).c_str(), kLongData);
    };
    while (count < 3000 && set() == status::kOk) ++count;
    EXPECT_EQ(reuses ? 3000u : 542u, count);
    if (reuses) {
      EXPECT_EQ(status::kOk, registry.DeleteKey(0, key));
      EXPECT_EQ("1 1 0 0", Used());
      registry.Finalize();
      std::filesystem::remove(path);
    }
  }
}

TEST_F(RegistryReuse, DataOfAsManyBlocksIsWrittenWhereItLies) {
  MakeKeys({"a"});
  ASSERT_EQ(status::kOk, Create(0, "a", "first", kLongData));
  for (unsigned int i = 0; i < 30; ++i) {
    ASSERT_EQ(status::kOk, Create(0, "a", ("v" + std::to_string(i)).c_str(), kLongData));
  }
  for (const bool isThroughHandle : {false, true}) {
    const unsigned int handle = isThroughHandle ? OpenKey("") : 0;
    unsigned char offset[4] = {};
    unsigned char after[4] = {};
    Value before = {kValueTypeOffset, sizeof offset, offset};
    Value behind = {kValueTypeOffset, sizeof after, after};
    EXPECT_EQ(status::kOk, registry.GetValue(handle, "a", "first", &before));
    EXPECT_EQ(status::kOk, Set(handle, "a", "first", std::string(990, handle != 0 ? 'h' : 'f')));
    EXPECT_EQ(status::kOk, registry.GetValue(handle, "a", "first", &behind));
    EXPECT_EQ(GetU32(offset), GetU32(after));
  }
  ExactValue put(kValueTypeMax, std::string(1001, 'p'));
  const std::string bytes = Used();
  EXPECT_EQ(status::kOk, registry.PutValue("a", "first", put, false));
  EXPECT_EQ(bytes, Used());
  EXPECT_EQ("type 5: " + std::string(1001, 'p'), Read(registry, "a", "first"));
}

TEST_F(RegistryReuse, AValueGivesItsBlocksBack) {
  MakeKeys({"a"});
  for (const bool isThroughHandle : {false, true}) {
    const unsigned int handle = isThroughHandle ? OpenKey("") : 0;
    EXPECT_EQ(status::kOk, Create(handle, "a", "text", kLongData));
    EXPECT_EQ("2 2 1 16", Used());
    EXPECT_EQ(status::kOk, registry.DeleteValue(handle, "a", "text"));
    EXPECT_EQ("2 2 0 0", Used());
  }
}

TEST_F(RegistryReuse, ANumberTakesNoBlocks) {
  MakeKeys({"a"});
  for (const bool isThroughHandle : {false, true}) {
    const unsigned int handle = isThroughHandle ? OpenKey("") : 0;
    EXPECT_EQ(status::kOk, Create(handle, "a", "number", "12345678", kValueTypeInteger));
    EXPECT_EQ("2 2 1 0", Used());
    EXPECT_EQ(status::kOk, registry.DeleteValue(handle, "a", "number"));
  }
}

TEST_F(RegistryReuse, AKeyGivesAllBackThatIsBelowIt) {
  for (const bool isThroughHandle : {false, true}) {
    MakeKeys({"a", "a/b", "a/b/c"});
    for (const char* key : {"a", "a/b", "a/b/c"}) {
      EXPECT_EQ(status::kOk, Create(0, key, "text", kLongData));
    }
    EXPECT_EQ("4 4 3 48", Used());
    EXPECT_EQ(status::kOk, registry.DeleteKey(isThroughHandle ? OpenKey("") : 0, "a"));
    EXPECT_EQ("1 1 0 0", Used());
  }
}

// With kExact the 23rd time is refused.
TEST_F(RegistryReuse, RestoringAHundredTimesTakesNoMoreThanOnce) {
  const std::string backup = folder / "backup";
  MakeKeys({"a", "a/b"});
  for (unsigned int i = 0; i < 60; ++i) {
    ASSERT_EQ(status::kOk,
              Create(0, i % 2 ? "a" : "a/b", ("v" + std::to_string(i)).c_str(), kLongData));
  }
  const std::string used = Used();
  ASSERT_EQ(status::kOk, registry.BackupKey(0, "a", backup.c_str()));
  for (unsigned int i = 0; i < 100; ++i) {
    ASSERT_EQ(status::kOk, registry.RestoreKey(0, "a", backup.c_str())) << i;
  }
  EXPECT_EQ(used, Used());
  EXPECT_EQ("type 1: " + kLongData, Read(registry, "a/b", "v10"));
}

TEST_F(RegistryReuse, ARefusedCreationHasTakenNothing) {
  MakeKeys({"a"});
  const std::string before = GetFile(path);
  EXPECT_EQ(status::kBadArgument, registry.CreateKey(0, "missing/b"));
  EXPECT_EQ(status::kBadArgument, registry.CreateKey(0, "a/b//"));
  EXPECT_EQ(status::kLimit, Create(0, "a", "text", std::string(1025, 'x')));
  const unsigned int handle = OpenKey("");
  EXPECT_EQ(status::kBadArgument, registry.CreateKey(handle, "missing/b"));
  EXPECT_EQ(status::kNoData, Create(handle, "a", "text", "x", 6));
  EXPECT_EQ(before, GetFile(path));
}

TEST_F(RegistryReuse, AFullFileKeepsWhatItHas) {
  MakeKeys({"a"});
  unsigned int count = 0;
  for (; Create(0, "a", std::to_string(count).c_str(), kLongData) == status::kOk; ++count) {
  }
  // 22 times 16 of 364, and 20 tables of 499.
  EXPECT_EQ(22u + 20 * 31, count);
  EXPECT_EQ(status::kLimit, Create(0, "a", "one more", kLongData));
  EXPECT_EQ("2 2 " + std::to_string(count) + " " + std::to_string(count * 16), Used());
  EXPECT_EQ(status::kOk, registry.DeleteValue(0, "a", "3"));
  EXPECT_EQ(status::kOk, Create(0, "a", "one more", kLongData));
  EXPECT_EQ(status::kLimit, Create(0, "a", "and more", kLongData));
}

TEST_F(RegistryReuse, TheFileIsOneThatKExactGoesOnWith) {
  MakeKeys({"network", "net", "netbook", "a"});
  EXPECT_EQ(status::kOk, Create(0, "netbook", "text", kLongData));
  EXPECT_EQ(status::kOk, registry.DeleteKey(0, "net"));
  EXPECT_EQ(status::kOk, registry.DeleteKey(0, "network"));
  Open(SpacePolicy::kExact);
  EXPECT_EQ(status::kOk, registry.MakeKey("network"));
  EXPECT_EQ(status::kOk, registry.MakeKey("net"));
  EXPECT_EQ(status::kOk, registry.DeleteValue(0, "netbook", "text"));
  EXPECT_EQ(" a net netbook network ", Keys());
  EXPECT_EQ("", StructureFindings(path));
}

TEST_F(RegistryReuse, AHandleOfADeletedKeyLeadsNowhere) {
  for (const bool isThroughHandle : {true, false}) {
    MakeKeys({"a", "a/b", "other"});
    const unsigned int root = OpenKey("");
    const unsigned int below = OpenKey("a/b");
    EXPECT_EQ(status::kOk, Create(below, "", "text", "data"));
    if (isThroughHandle) {
      EXPECT_EQ(status::kOk, registry.DeleteKey(root, "a"));
      EXPECT_EQ(status::kBadArgument, Set(below, "", "text", "other"));
      EXPECT_EQ(status::kBadArgument, registry.CreateKey(below, "c"));
      EXPECT_EQ(status::kOk, registry.CreateKey(root, "third"));
      EXPECT_EQ(status::kOk, registry.DeleteKey(root, "third"));
    } else {
      EXPECT_EQ(status::kOk, registry.DeleteKey(0, "a"));
    }
    EXPECT_EQ(status::kOk, registry.DeleteKey(0, "other"));
    EXPECT_EQ("1 1 0 0", Used());
  }
}

TEST_F(RegistryReuse, AnUnknownPolicyIsRefused) {
  Registry other((folder / "other").c_str(), kAdmin);
  RegistryOptions options;
  options.space = static_cast<SpacePolicy>(2);
  EXPECT_EQ(status::kBadArgument, other.SetOptions(options));
}

// Deletes keys in every order, by both trees: at each step exactly the others are there, and at the
// end nothing is.
TEST_F(RegistryReuse, NamesThatBeginAlikeGoInEveryOrder) {
  std::vector<std::string> order = {"net", "network", "netbook", "networks"};
  unsigned int run = 0;
  std::sort(order.begin(), order.end());
  do {
    MakeKeys({"network", "netbook", "net", "networks"});
    std::set<std::string> left(order.begin(), order.end());
    for (const std::string& key : order) {
      const unsigned int handle = run++ % 3 == 0 ? OpenKey("") : 0;
      EXPECT_EQ(status::kOk, registry.DeleteKey(handle, key.c_str()));
      left.erase(key);
      std::string expected = " ";
      for (const std::string& name : left) expected += name + " ";
      EXPECT_EQ(expected, Keys());
      EXPECT_EQ("", StructureFindings(path));
    }
    EXPECT_EQ("1 1 0 0", Used());
  } while (std::next_permutation(order.begin(), order.end()));
}

}  // namespace
}  // namespace tamu::registry
