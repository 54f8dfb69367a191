#include <gtest/gtest.h>

#include <vector>

#include "registry/keytree/NamePruning.h"
#include "tests/registry/RegistryRig.h"
#include "tests/support/NodeLinks.h"

namespace tamu::registry {
namespace {

// String nodes of a new file: the root's is 0x100, the first name's 0x200.
constexpr unsigned int kFirstName = 0x200;

class NamePruningTest : public ::testing::Test {
 protected:
  // Keys as they are made, from the shortest name on where one is the beginning of another.
  void Make(const std::vector<std::string>& keys) {
    Open();
    for (const std::string& key : keys) EXPECT_EQ(status::kOk, registry.MakeKey(key.c_str()));
  }
  void Delete(const std::string& key) {
    Open();
    EXPECT_EQ(status::kOk, registry.DeleteKey(0, key.c_str())) << key;
    registry.Finalize();
  }
  void Open() {
    RegistryOptions options;
    options.durability = Durability::kNone;
    options.space = SpacePolicy::kReuse;
    registry.Finalize();
    EXPECT_EQ(status::kOk, registry.SetOptions(options));
    EXPECT_EQ(status::kOk, registry.Initialize());
  }
  // How many string nodes are used, the root's among them.
  unsigned int Strings() { return CountSlots(path).strings.used; }
  std::string Keys() {
    std::string keys;
    for (const auto& key : DecodeTree(path)) keys += key.first + " ";
    return keys;
  }
  void SetLo(unsigned int id, unsigned int lo) {
    registry.Finalize();
    PutLink(path, id, NodeLink::kLo, lo);
  }

  TempDir folder;
  const std::string path = folder / "registry";
  Registry registry{path.c_str(), kAdmin};
};

TEST_F(NamePruningTest, ANameOfItsOwnGoesWithAllItsNodes) {
  Make({"a", std::string(60, 'b')});
  EXPECT_EQ(6u, Strings());
  Delete(std::string(60, 'b'));
  EXPECT_EQ(2u, Strings());
  EXPECT_EQ(" a ", Keys());
}

TEST_F(NamePruningTest, ANameThatOnlyLedOnIsJoinedWithTheRest) {
  Make({"net", "network"});
  EXPECT_EQ(3u, Strings());
  Delete("net");
  EXPECT_EQ(2u, Strings());
  EXPECT_EQ(" network ", Keys());
}

TEST_F(NamePruningTest, ANameWithAKeyStays) {
  Make({"net", "network"});
  Delete("network");
  EXPECT_EQ(2u, Strings());
  EXPECT_EQ(" net ", Keys());
}

TEST_F(NamePruningTest, WhatIsBesideANameTakesItsPlace) {
  for (const char* beside : {"mad", "maz"}) {
    Make({"max", beside});
    EXPECT_EQ(3u, Strings());
    Delete("max");
    EXPECT_EQ(2u, Strings());
    EXPECT_EQ(" " + std::string(beside) + " ", Keys());
    Delete(beside);
    EXPECT_EQ(1u, Strings());
  }
}

TEST_F(NamePruningTest, ABranchThatIsNeededStaysUntilItIsNot) {
  Make({"b", "a", "c"});
  Delete("b");
  EXPECT_EQ(4u, Strings());
  EXPECT_EQ(" a c ", Keys());
  Delete("a");
  EXPECT_EQ(2u, Strings());
  EXPECT_EQ(" c ", Keys());
}

// A node holds 17 characters.
TEST_F(NamePruningTest, WhatDoesNotFitInANodeStaysParted) {
  const std::string first(17, 'f');
  Make({first, first + "g"});
  Delete(first);
  EXPECT_EQ(3u, Strings());
  EXPECT_EQ(" " + first + "g ", Keys());
  Delete(first + "g");
  EXPECT_EQ(1u, Strings());
}

TEST_F(NamePruningTest, SeventeenCharactersAreJoined) {
  const std::string first(16, 'f');
  Make({first, first + "g"});
  Delete(first);
  EXPECT_EQ(2u, Strings());
  EXPECT_EQ(" " + first + "g ", Keys());
}

TEST_F(NamePruningTest, WhatIsBelowTheKeysAroundStays) {
  Make({"net", "net/eth0", "network", "network/wlan0"});
  Delete("net");
  EXPECT_EQ(" network network/wlan0 ", Keys());
  EXPECT_EQ("", StructureFindings(path));
}

TEST_F(NamePruningTest, ALinkToItselfStaysAsItIs) {
  Make({"a"});
  SetLo(kFirstName, kFirstName);
  Delete("a");
  EXPECT_EQ(2u, Strings());
}

TEST_F(NamePruningTest, ALinkThatLeadsBackStaysAsItIs) {
  Make({"a", "b"});
  SetLo(kFirstName + 0x100, kFirstName);  // "b", behind "a"
  Delete("b");
  EXPECT_EQ(3u, Strings());
  Open();
  unsigned char permission = 0;
  EXPECT_EQ(status::kOk, registry.GetKeyPermission(0, "a", &permission));
}

TEST_F(NamePruningTest, ALinkThatLeadsNowhereStaysAsItIs) {
  Make({"a"});
  SetLo(kFirstName, 0x777700);
  Delete("a");
  EXPECT_EQ(2u, Strings());
}

// Every field of every string node is damaged in turn, and then a key deleted: no damage is added.
TEST_F(NamePruningTest, NoDamageSpreads) {
  const std::vector<std::string> keys = {"net", "nets", "network", std::string(40, 'b')};
  Make(keys);
  EXPECT_EQ(status::kOk, registry.MakeKey("network/x"));
  registry.Finalize();
  const std::string whole = GetFile(path);
  const unsigned int last = Strings() << 8;
  const auto damage = [&](unsigned int offset, unsigned int value, unsigned int width) {
    std::string bytes = whole;
    for (unsigned int i = 0; i < width; ++i) {
      bytes[offset + i] = static_cast<char>(value >> 8 * i & 0xFF);
    }
    for (const std::string& key : keys) {
      SCOPED_TRACE(std::to_string(offset) + " " + std::to_string(value) + " " + key);
      PutFile(path, bytes);
      const size_t before = CheckStructure(path).size();
      Open();
      registry.DeleteKey(0, key.c_str());
      registry.Finalize();
      EXPECT_GE(before, CheckStructure(path).size()) << StructureFindings(path);
    }
  };
  constexpr unsigned int kStrings = 10188;  // where the records of a new file begin
  constexpr unsigned int kLinks = 4;
  for (unsigned int id = 0x100; id <= last; id += 0x100) {
    const unsigned int at = kStrings + TernaryStringNode::kSize * (id >> 8);
    for (unsigned int link = 0; link <= kLinks; ++link) {  // and the key
      for (unsigned int to = 0; to <= last + 0x100; to += 0x100 * YAX_TEST_STRIDE) {
        damage(at + 4 + 4 * link, to, 4);
      }
      damage(at + 4 + 4 * link, 0x777700, 4);
    }
    for (const unsigned int length : {0u, 16u, 17u}) damage(at + 1, length, 1);
    for (const unsigned int flags : {0x00u, 0x10u}) damage(at + 2, flags, 1);
  }
}

}  // namespace
}  // namespace tamu::registry
