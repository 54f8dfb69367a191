#include <gtest/gtest.h>

#include "tests/support/StructureCheck.h"
#include "tests/tools/yaxreg/ChangeRig.h"

namespace {

using std::string;

// net/eth0 of user 7 with a key below it, values and a hidden one.
class CopyVerbs : public ChangeRig {
 protected:
  void SetUp() override {
    ChangeRig::SetUp();
    MakeKeys({"net"});
    MakeKeys({"own"}, 7);
    MakeKeys({"own/deep"}, 7);
    MakeValue("own", "mtu", 2, "old");
    MakeValue("own", "mtu", 2, "new");
    MakeValue("own/deep", "text", 1, string("abc\0", 4));
    ASSERT_EQ(0, Yaxreg({"rights", file, "own/deep", "r-c-:r"}).code);
    ASSERT_EQ(0, Yaxreg({"default", file, "own", "42"}).code);
  }
  void TearDown() override { EXPECT_EQ("", StructureFindings(file)); }

  string Exported(const string& path) { return PrintedBy({"export", file, path}); }
};

TEST_F(CopyVerbs, CopyAKeyWithAllBelowIt) {
  const string before = Exported("own");
  ExpectDone("", {"cp", file, "own", "net/new/place"});
  EXPECT_EQ(before, Exported("net/new/place"));
  EXPECT_EQ(before, Exported("own"));
  EXPECT_EQ(7u, Key("net/new/place").owner);
}

TEST_F(CopyVerbs, MoveAKey) {
  const string before = Exported("own");
  ExpectDone("{\"changed\":true,\"path\":\"moved\"}\n", {"mv", file, "/own/", "/moved/", "--json"});
  EXPECT_EQ(before, Exported("moved"));
  EXPECT_EQ((std::vector<string>{"moved", "moved/deep", "net"}), Paths());
}

TEST_F(CopyVerbs, CopyAndMoveAValue) {
  ExpectDone("", {"cp", file, "own:mtu", "net:size"});
  EXPECT_EQ("new", Value("net", "size").data);
  ExpectDone("", {"cp", file, "own:mtu", "net/made"});
  EXPECT_EQ("new", Value("net/made", "mtu").data);
  ExpectDone("", {"mv", file, "own:mtu", "own:size"});
  EXPECT_EQ("new", Value("own", "size").data);
  EXPECT_EQ(1u, Key("own").values.size());
}

TEST_F(CopyVerbs, ReplaceOnlyWhenTheyAreTold) {
  ExpectFailure(1, ": net: the key exists already; --force replaces it (status 17)\n",
                {"cp", file, "own", "net"});
  MakeValue("net", "mtu", 2, "other");
  ExpectFailure(1, ": net: there is a value mtu already; --force replaces it (status 17)\n",
                {"mv", file, "own:mtu", "net"});
  ExpectDone("", {"mv", file, "-f", "own:mtu", "net"});
  EXPECT_EQ("new", Value("net", "mtu").data);
  const string before = Exported("own");
  ExpectDone("", {"mv", file, "--force", "own", "net"});
  EXPECT_EQ(before, Exported("net"));
  EXPECT_EQ((std::vector<string>{"net", "net/deep"}), Paths());
}

TEST_F(CopyVerbs, RefuseWhatCannotBe) {
  ExpectFailure(1, ": none: there is no such key (status 2)\n", {"cp", file, "none", "x"});
  ExpectFailure(1, ": own: there is no value none (status 2)\n", {"mv", file, "own:none", "x"});
  ExpectFailure(2, "a key cannot be put into itself\n", {"cp", file, "own", "own/deep/er"});
  ExpectFailure(2, "a key cannot be put into itself\n", {"mv", file, "own", "own", "-f"});
  ExpectFailure(2, "a key cannot replace one that it is in\n", {"cp", file, "own/deep", "own"});
  ExpectFailure(2, "a key cannot become a value\n", {"mv", file, "own", "net:x"});
  ExpectFailure(2, "the root cannot be put anywhere else\n", {"cp", file, "", "net"});
  ExpectFailure(2, "a//b has an empty name in it\n", {"cp", file, "own", "a//b"});
  ExpectFailure(2, "not 1 to 31 bytes\n", {"cp", file, "own:mtu", "net:" + string(32, 'n')});
  ExpectFailure(2, "both places are the same\n", {"mv", file, "own:mtu", "own"});
  ExpectNoRegistryFails("cp", {"a", "b"});
}

// Twice as much with every copy, until there is no room for it.
TEST_F(CopyVerbs, DoAllOrNothing) {
  string before;
  string path = "own";
  for (int i = 0; i < 12; ++i) {
    const string next = "n" + std::to_string(i);
    before = GetFile(file);
    if (Yaxreg({"cp", file, path, next + "/a"}).code != 0) break;
    before = GetFile(file);
    if (Yaxreg({"cp", file, path, next + "/b"}).code != 0) break;
    path = next;
  }
  EXPECT_NE("n11", path);
  EXPECT_TRUE(before == GetFile(file));
}

}  // namespace
