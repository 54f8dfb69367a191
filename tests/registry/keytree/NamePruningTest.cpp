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

}  // namespace
}  // namespace tamu::registry
