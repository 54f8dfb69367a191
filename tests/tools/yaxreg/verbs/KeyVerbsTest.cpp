#include <gtest/gtest.h>

#include <cstdio>

#include "tests/tools/yaxreg/ChangeRig.h"

namespace status = tamu::registry::status;

namespace {

using Names = std::vector<std::string>;

class KeyVerbsWithoutAFile : public ChangeRig {
  void SetUp() override {}
};
class KeyVerbs : public ChangeRig {};

// ---- create

TEST_F(KeyVerbsWithoutAFile, CreateMakesARegistryAndNothingElse) {
  ExpectDone("", {"create", file});
  EXPECT_EQ(75888u, GetFile(file).size());
  EXPECT_EQ(1u, FilesInFolder());
  EXPECT_EQ(0x5F, Key("").permission);
  EXPECT_EQ(65535u, Key("").owner);
  MakeKeys({"net"});
  EXPECT_EQ(Names({"net"}), Paths());
}

TEST_F(KeyVerbsWithoutAFile, CreateTellsProgramsWhatItMade) {
  ExpectDone("{\"changed\":true,\"file\":\"" + file + "\"}\n", {"create", file, "--json"});
}

TEST_F(KeyVerbsWithoutAFile, CreateLeavesAFileAlone) {
  PutFile(file, "mine");
  ExpectFailure(1, "yaxreg: " + file + ": there is a file already (status 17)\n", {"create", file});
  chmod((folder / ".").c_str(), 0755);
  const OrdinaryUser user;  // who may make nothing there
  ExpectFailure(1, "(status 17)\n", {"create", file});
  EXPECT_EQ("mine", GetFile(file));
  EXPECT_EQ(1u, FilesInFolder());
}

TEST_F(KeyVerbsWithoutAFile, CreateMakesNothingWhereALinkLeads) {
  const std::string target = folder / "target";
  ASSERT_EQ(0, symlink(target.c_str(), file.c_str()));
  ExpectFailure(1, "(status 17)\n", {"create", file});
  EXPECT_EQ(1u, FilesInFolder());
}

TEST_F(KeyVerbsWithoutAFile, CreateMakesARegistryOfTheLongestName) {
  const std::string longest = folder / std::string(255, 'n').c_str();
  ExpectDone("", {"create", longest});
  ExpectDone("", {"mkkey", longest, "net"});
  EXPECT_EQ(1u, FilesInFolder());
}

TEST_F(KeyVerbsWithoutAFile, CreateNeedsTheFolder) {
  ExpectFailure(4, "cannot be made: No such file or directory\n",
                {"create", folder / "none/device.rce"});
  chmod((folder / ".").c_str(), 0755);
  const OrdinaryUser user;
  ExpectFailure(4, "cannot be made: Permission denied\n", {"create", file});
  EXPECT_EQ(0u, FilesInFolder());
}

// ---- mkkey

TEST_F(KeyVerbs, MkkeyCreatesAKeyWithoutDefaultValue) {
  ExpectDone("", {"mkkey", file, "/net/"});
  EXPECT_EQ(Names({"net"}), Paths());
  EXPECT_FALSE(Key("net").hasDefault);
  EXPECT_EQ(65535u, Key("net").owner);
  EXPECT_EQ(0x0F, Key("net").permission);
}

TEST_F(KeyVerbs, MkkeyGivesItTheDefaultValueAndTheUser) {
  ExpectDone("{\"changed\":true,\"path\":\"net\"}\n",
             {"mkkey", file, "net", "--default", "-2", "--user", "installer", "--json"});
  EXPECT_TRUE(Key("net").hasDefault);
  EXPECT_EQ(0xFFFFFFFFFFFFFFFEu, Key("net").defaultValue);
  EXPECT_EQ(0xE7886B13u, Key("net").owner);
  ExpectDone("", {"mkkey", file, "log", "--uid", "0xFFFFFFFF"});
  EXPECT_EQ(0xFFFFFFFFu, Key("log").owner);
}

struct Neighbours {
  Names present;
  const char* created;
};

TEST_F(KeyVerbs, MkkeyCreatesExactlyThisKeyWhateverItsNeighboursAre) {
  const Neighbours cases[] = {{{"main"}, "max"},
                              {{"main", "mai"}, "max"},
                              {{"display"}, "disk"},
                              {{"display", "disp"}, "disk"},
                              {{"abc"}, "ax"},
                              {{"abcd"}, "x"},
                              {{"abcd"}, "a"},
                              {{"network"}, "net"},
                              {{"net"}, "network"},
                              {{"bcd", "xyz"}, "c"},
                              {{"abcdefghijklmnopqrstuvwxyz"}, "abcdefghijklmnopqrstx"},
                              {{"abcdefghijklmnopqrstuvwxyz"}, "abcdefghijklmnopx"},
                              {{"abcdefghijklmnopqrstuvwxyz"}, "abcdefghijklmnop"},
                              {{"p", "p/main", "q", "q/max"}, "p/max"},
                              {{"p", "p/main", "main"}, "p/mai"},
                              {{"vlan10", "vlan20"}, "vlan1"},
                              {{"\xFF\xFEz"}, "\xFF\x80"}};
  for (const Neighbours& one : cases) {
    SCOPED_TRACE(one.created);
    ASSERT_EQ(0, std::remove(file.c_str()));
    MakeKeys(one.present);
    ExpectDone("", {"mkkey", file, one.created});
    Names expected = one.present;
    expected.push_back(one.created);
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(expected, Paths());
    EXPECT_TRUE(yaxreg::RegistryImage(GetFile(file)).IsSound());
  }
}

TEST_F(KeyVerbs, MkkeyKeepsAKeyThatIsCalledAsAStrayOneWouldBe) {
  MakeKeys({"main", "mai"}, 7);
  MakeValue("mai", "mtu", 2, "abc");
  ExpectDone("", {"mkkey", file, "max", "--default", "3"});
  EXPECT_EQ("abc", Value("mai", "mtu").data);
  EXPECT_FALSE(Key("mai").hasDefault);
  EXPECT_EQ(3u, Key("max").defaultValue);
}

TEST_F(KeyVerbs, MkkeyLeavesNoStrayKeyWhereItsUserMayNotDelete) {
  MakeKeys({"p", "p/main"}, 7);
  ASSERT_EQ(0, Yaxreg({"rights", file, "p", "rc:rc"}).code);
  ExpectDone("", {"mkkey", file, "p/max", "--uid", "9"});
  EXPECT_EQ(Names({"p", "p/main", "p/max"}), Paths());
  EXPECT_EQ(9u, Key("p/max").owner);
  EXPECT_EQ(0x55, Key("p/max").permission);
}

TEST_F(KeyVerbs, MkkeyCreatesADeletedKeyAgain) {
  MakeKeys({"main"});
  ASSERT_EQ(0, Yaxreg({"rmkey", file, "main"}).code);
  ExpectDone("", {"mkkey", file, "main"});
  ExpectDone("", {"mkkey", file, "max"});
  EXPECT_EQ(Names({"main", "max"}), Paths());
}

TEST_F(KeyVerbs, MkkeyCreatesParentsWhenAsked) {
  MakeKeys({"n", "main"});
  ExpectDone("", {"mkkey", "-p", file, "max/main/x/y", "--default", "5"});
  EXPECT_EQ(Names({"main", "max", "max/main", "max/main/x", "max/main/x/y", "n"}), Paths());
  EXPECT_EQ(5u, Key("max/main/x/y").defaultValue);
  EXPECT_FALSE(Key("max/main/x").hasDefault);
}

TEST_F(KeyVerbs, MkkeyGoesManyLevelsDeep) {
  std::string path = "k";
  for (int i = 1; i < 1000; ++i) path += "/k";
  ExpectDone("", {"mkkey", "-p", file, path});
  EXPECT_EQ(1000u, Paths().size());
  EXPECT_EQ(path, Paths().back());
}

TEST_F(KeyVerbs, MkkeyRefusesAKeyThatExistsUnlessParentsAreCreated) {
  MakeKeys({"net", "net/eth0"});
  for (const char* const path : {"net", "net/eth0", "/net/", "", "/"}) {
    ExpectFailure(1, "the key exists already (status 17)\n", {"mkkey", file, path});
  }
  ExpectDone("", {"mkkey", "-p", file, ""});
  ExpectDone("{\"changed\":false,\"path\":\"net/eth0\"}\n",
             {"mkkey", "-p", file, "/net/eth0", "--json"});
}

TEST_F(KeyVerbs, MkkeySetsTheDefaultValueOfAKeyThatExists) {
  MakeKeys({"net"});
  ExpectDone("{\"changed\":true,\"path\":\"net\"}\n",
             {"mkkey", "-p", file, "net", "--default", "0", "--json"});
  EXPECT_TRUE(Key("net").hasDefault);
  ExpectDone("{\"changed\":true,\"path\":\"net\"}\n",
             {"mkkey", "-p", file, "net", "--default", "0x100000000", "--json"});
  EXPECT_EQ(0x100000000u, Key("net").defaultValue);
  ExpectDone("{\"changed\":false,\"path\":\"net\"}\n",
             {"mkkey", "-p", file, "net", "--default", "4294967296", "--json"});
  ExpectFailure(1, "user 7 has no right to do this (status 1)\n",
                {"mkkey", "-p", file, "net", "--default", "1", "--uid", "7"});
}

TEST_F(KeyVerbs, MkkeyNeedsTheParent) {
  MakeKeys({"net"});
  ExpectFailure(1, ": ne/eth0: its parent does not exist; -p creates it (status 2)\n",
                {"mkkey", file, "ne/eth0"});
  ExpectFailure(1, "(status 2)\n", {"mkkey", file, "net/a/b"});
}

TEST_F(KeyVerbs, MkkeyNeedsTheRightToCreate) {
  MakeKeys({"net"});
  ExpectFailure(1, ": net/eth0: user 7 has no right to do this (status 1)\n",
                {"mkkey", file, "net/eth0", "--uid", "7"});
}

TEST_F(KeyVerbs, MkkeyRefusesWrongArguments) {
  for (const char* const path : {"a//b", "//a", "a//", "///"}) {
    ExpectFailure(2, "has an empty name in it\n", {"mkkey", "-p", file, path});
  }
  ExpectFailure(2, "--default: x is no whole number", {"mkkey", file, "a", "--default", "x"});
  ExpectFailure(2, "--default:  is no whole number", {"mkkey", file, "a", "--default", ""});
  for (const char* const uid : {"", "x", "-1", "4294967296"}) {
    ExpectFailure(2, "is no user id\n", {"mkkey", file, "a", "--uid", uid});
  }
  ExpectFailure(2, "only one of --user and --uid",
                {"mkkey", file, "a", "--uid", "1", "--user", "installer"});
  ExpectFailure(2, "PATH is required", {"mkkey", file});
}

TEST_F(KeyVerbs, MkkeyTakesKeysThatAreCalledAsVerbsOrAreNoText) {
  for (const char* const path : {"get", "mkkey", "comp", "--", "\xFF\x01", "-x", "a=b", "[a]"}) {
    ExpectDone("", {"mkkey", file, "--", path});
    EXPECT_EQ(path, Key(path).name);
  }
  ExpectDone("{\"changed\":true,\"path\":{\"hex\":\"ff0a\"}}\n",
             {"mkkey", file, "\xFF\n", "--json"});
  ExpectFailure(1, ": \\xff\\x0a: the key exists already", {"mkkey", file, "\xFF\n"});
}

TEST_F(KeyVerbs, MkkeySaysThatTheRegistryIsFull) {
  {
    Registry registry(file.c_str(), tamu::registry::kAdministratorId);
    ASSERT_EQ(status::kOk, registry.Initialize());
    unsigned int result = 0;
    for (unsigned int i = 0; result == 0; ++i) {
      ASSERT_LT(i, 20000u);
      result = registry.CreateKey(0, std::to_string(100000 + i).c_str());
    }
    ASSERT_EQ(status::kLimit, result);
  }
  const size_t keys = Paths().size();
  const Answer answer = Yaxreg({"mkkey", file, "a-name-of-its-own"});
  EXPECT_EQ(1, answer.code);
  EXPECT_EQ("yaxreg: " + file +
                ": a-name-of-its-own: the registry is full; yaxreg compact may help (status 75)\n",
            answer.err);
  EXPECT_EQ(keys, Paths().size());
}

// A name takes one string node for 17 bytes begun, and one to part from the name beside it. One
// long name leaves three nodes.
class KeyVerbsInAFullRegistry : public KeyVerbs {
 protected:
  void SetUp() override {
    KeyVerbs::SetUp();
    MakeKeys({std::string(17 * (Left() - 3), 'n')});
    ASSERT_EQ(3u, Left());
  }
  unsigned int Left() const {
    return yaxreg::RegistryImage(GetFile(file)).UseOf(yaxreg::NodeKind::kString).room();
  }
};

TEST_F(KeyVerbsInAFullRegistry, MkkeyMakesNoParentsWhenThereIsNoRoomForTheKey) {
  const std::string full = "the registry is full; yaxreg compact may help (status 75)\n";
  for (const std::string& path : {std::string("x/a/b/c/d"), "x/" + std::string(17 * 3 + 1, 'b'),
                                  "x/a/" + std::string(35, 'b'),
                                  "x/a/" + std::string(18, 'b') + "/" + std::string(17, 'c')}) {
    ExpectFailure(1, full, {"mkkey", "-p", file, path});
  }
  std::string deep = "x";
  for (int i = 0; i < 10000; ++i) deep += "/x";
  ExpectFailure(1, full, {"mkkey", "-p", file, deep});
}

TEST_F(KeyVerbsInAFullRegistry, MkkeyMakesWhatThereIsRoomFor) {
  ExpectDone("", {"mkkey", "-p", file, "x/" + std::string(17, 'b')});
  EXPECT_EQ(0u, Left());
  EXPECT_EQ(3u, Paths().size());
}

// What the first name needs is seen when the last one fails.
TEST_F(KeyVerbsInAFullRegistry, MkkeyDeletesTheParentsWhenTheKeyCannotBeMade) {
  const Answer answer = Yaxreg({"mkkey", "-p", file, "x/a/b/c"});
  EXPECT_EQ(1, answer.code);
  EXPECT_NE(std::string::npos, answer.err.find("(status 75)\n")) << answer.err;
  EXPECT_EQ(1u, Paths().size());
}

// Spelled already, since it was deleted.
TEST_F(KeyVerbsInAFullRegistry, MkkeyMakesAKeyOfANameThatIsLeft) {
  const std::string name(17 * 2, 'x');
  MakeKeys({name});
  ASSERT_EQ(0u, Left());
  ASSERT_EQ(0, Yaxreg({"rmkey", file, name}).code);
  ExpectDone("", {"mkkey", "-p", file, name});
}

TEST_F(KeyVerbsInAFullRegistry, MkkeyUsesTheLastNode) {
  ExpectDone("", {"mkkey", file, "x"});
  ExpectDone("", {"rmkey", file, "x"});
  ASSERT_EQ(3u, Left());
  ExpectDone("", {"mkkey", "-p", file, "x/" + std::string(17, 'b')});
  EXPECT_EQ(0u, Left());
}

TEST_F(KeyVerbs, MkkeyChangesRegistriesThatMayBeWrittenOnly) {
  ExpectNoRegistryFails("mkkey", {"net"});
  ExpectNoRegistryFails("mkkey", {"-p", "net/eth0"});
  ExpectReadOnlyFails({"mkkey", file, "net"});
}

// ---- rmkey

TEST_F(KeyVerbs, RmkeyDeletesAKeyAndAllBelowIt) {
  MakeKeys({"net", "net/eth0", "net/eth0/ip", "network", "ne"});
  MakeValue("net/eth0", "mtu", 2, "abc");
  ExpectDone("", {"rmkey", file, "/net/"});
  EXPECT_EQ(Names({"ne", "network"}), Paths());
}

TEST_F(KeyVerbs, RmkeyTellsProgramsWhatItDid) {
  MakeKeys({"a", "a/b"});
  ExpectDone("{\"changed\":true,\"path\":\"a/b\"}\n", {"rmkey", file, "a/b", "--json"});
  EXPECT_EQ(Names({"a"}), Paths());
}

TEST_F(KeyVerbs, RmkeyRefusesTheRoot) {
  for (const char* const path : {"", "/"}) {
    ExpectFailure(2, "the root cannot be deleted", {"rmkey", file, path});
  }
}

TEST_F(KeyVerbs, RmkeyNeedsTheKeyAndTheRight) {
  MakeKeys({"main", "net"}, 7);
  for (const char* const path : {"mai", "ma", "maina", "main/x", "net//", "x"}) {
    ExpectFailure(1, "there is no such key (status 2)\n", {"rmkey", file, path});
  }
  ExpectFailure(1, "user 8 has no right to do this (status 1)\n",
                {"rmkey", file, "net", "--uid", "8"});
  ExpectDone("", {"rmkey", file, "net", "--uid", "7"});
}

TEST_F(KeyVerbs, RmkeyChangesRegistriesThatMayBeWrittenOnly) {
  MakeKeys({"net"});
  ExpectNoRegistryFails("rmkey", {"net"});
  ExpectReadOnlyFails({"rmkey", file, "net"});
}

TEST_F(KeyVerbs, RmkeyMindsNoMissingKeyWhenItIsForced) {
  ExpectFailure(1, "there is no such key", {"rmkey", file, "gone/key"});
  ExpectDone("", {"rmkey", "-f", file, "gone/key"});
  MakeKeys({"net"});
  ExpectDone("", {"rmkey", file, "net", "--force"});
  EXPECT_TRUE(Paths().empty());
  ExpectFailure(2, "the root cannot be deleted", {"rmkey", "-f", file, ""});
}

}  // namespace
