// Creating keys through a handle: what is answered, and what the key record holds.
#include "tests/registry/memtree/RootHandle.h"

namespace tamu::registry {
namespace {

class TernaryKeyTreeCreationTest : public RootHandleTest {
 protected:
  unsigned int CreateAs(unsigned int user, const char* path) {
    return rig.loaded.CreateKey(user, root, path, 0, false);
  }
  unsigned int CreateInFile(const char* path) {
    return rig.file->CreateKey(kAdmin, nullptr, path, 0, false);
  }
};

TEST_F(TernaryKeyTreeCreationTest, AKeyUnderTheRootIsItsOwnersAlone) {
  EXPECT_EQ(status::kOk, rig.loaded.CreateKey(0x01020304, root, "a", 0x1122334455667788, true));
  EXPECT_EQ(
      "0000000000000f01"
      "0403020100000000"
      "8877665544332211",
      rig.KeyNode(2));
}

// It is the parent's record that tells, wherever the key lies.
TEST_F(TernaryKeyTreeCreationTest, BelowAKeyWithTheRootFlagAKeyIsItsOwnersAlone) {
  CreateAll({"a"});
  TernaryKeyNode& node = rig.KeyOf(root, "a")->node;
  node.setPermission(0xFF);
  node.setRoot(true);
  EXPECT_EQ(0u, CreateAs(kUser, "a/b"));
  EXPECT_EQ(
      "0000000000000f00"
      "e803000000000000"
      "0000000000000000",
      rig.KeyNode(3));
}

TEST_F(TernaryKeyTreeCreationTest, PathsBeginAtTheHandlesKey) {
  CreateAll({"a", "a/b"});
  TernaryHandle* handle = rig.Load("a");
  EXPECT_EQ(status::kOk, CreateThrough(handle, "c"));
  EXPECT_EQ(status::kOk, CreateThrough(handle, "/d"));
  EXPECT_EQ(status::kOk, CreateThrough(handle, "b/e"));
  EXPECT_EQ("a a/b a/b/e a/c a/d", Stored());
  EXPECT_EQ(status::kExists, CreateThrough(handle, ""));
  EXPECT_EQ(status::kExists, rig.loaded.CreateKey(kAdmin, handle, nullptr, 0, false));
}

TEST_F(TernaryKeyTreeCreationTest, WithoutAHandleNothingIsCreated) {
  const std::string before = rig.Contents();
  EXPECT_EQ(status::kBadArgument, rig.loaded.CreateKey(kAdmin, nullptr, "a", 0, false));
  EXPECT_EQ(status::kBadArgument, rig.loaded.CreateKey(kAdmin, nullptr, nullptr, 0, false));
  EXPECT_TRUE(rig.Contents() == before);
}

// A key that is refused costs nothing but the record that nothing leads to.
TEST_F(TernaryKeyTreeCreationTest, AMissingParentGivesEverySlotBack) {
  const std::string tables = Tables();
  for (const char* path : {"a/b", "a/b/c", "a/", "abcdefghijklmnop/x", "abcdefghijklmnopq/x",
                           "abcdefghijklmnopqrstuvwxyzabcdefghijklmnopqrstuvwxyz/x"}) {
    EXPECT_EQ(status::kBadArgument, Create(path)) << path;
    EXPECT_TRUE(Tables() == tables) << path;
    EXPECT_EQ("1 strings, 1 keys", rig.Loaded());
  }
  CreateAll({"a", "a/b"});
  EXPECT_EQ(0x200u, rig.KeyOf(root, "a")->id);
  EXPECT_EQ(0x300u, rig.KeyOf(root, "a/b")->id);
}

// Neither slots nor room: the file does not grow.
TEST_F(TernaryKeyTreeCreationTest, ARefusedCreationTakesNothing) {
  CreateAll({"a"});
  const std::string contents = rig.Contents();
  const std::string missing = std::string(8840, 'n') + "/y";
  const std::string tooLong(200000, 'n');
  for (int call = 0; call < 20; ++call) {
    EXPECT_EQ(status::kBadArgument, Create(missing.c_str()));
    EXPECT_EQ(status::kBadArgument, Create(("a/" + missing).c_str()));
    EXPECT_EQ(status::kLimit, Create(tooLong.c_str()));
    EXPECT_EQ(status::kLimit, Create((tooLong + "/y").c_str()))
        << "there is no room up to the \"/\"";
  }
  EXPECT_TRUE(rig.Contents() == contents);
  EXPECT_EQ(1u, rig.loaded.File()->Descriptor(NodeKind::kString).tableCount);
  TernaryString* first = nullptr;
  EXPECT_EQ(status::kBadArgument, rig.loaded.CreateStringNode(0, missing.c_str(), first, nullptr));
  EXPECT_EQ(nullptr, first);
  EXPECT_TRUE(rig.Contents() == contents);
}

TEST_F(TernaryKeyTreeCreationTest, AMissingParentInsideALongerNameLeavesTheCut) {
  CreateAll({"abcd"});
  EXPECT_EQ(status::kBadArgument, Create("abx/y"));
  EXPECT_EQ(rig.StringNode(2), Packed("00001064 16*0 00020000 16*0"));
  EXPECT_EQ(rig.StringNode(3), Packed("00020063 8*0 00020000 8*0 6162 14*0"));
  EXPECT_EQ("3 2 0 0", UsedSlots(rig.path));
  const std::string tables = Tables();
  EXPECT_EQ(status::kBadArgument, Create("abx/y"));
  EXPECT_TRUE(Tables() == tables) << "there is nothing left to cut";
  EXPECT_EQ("abcd", Stored());
}

TEST_F(TernaryKeyTreeCreationTest, AParentThatWouldEndAtTheCutLeavesTheCutToo) {
  CreateAll({"abcd"});
  EXPECT_EQ(status::kBadArgument, Create("ab/y"));
  EXPECT_EQ(rig.StringNode(3), Packed("00020063 8*0 00020000 8*0 6162 14*0"));
  EXPECT_EQ("3 2 0 0", UsedSlots(rig.path));
  EXPECT_EQ("abcd", Stored());
}

TEST_F(TernaryKeyTreeCreationTest, AnEmptyComponentIsNoName) {
  CreateAll({"a"});
  const std::string before = rig.Contents();
  for (const char* path : {"a//b", "a//", "//", "//a"})
    EXPECT_EQ(status::kBadArgument, Create(path)) << path;
  EXPECT_TRUE(rig.Contents() == before);
}

TEST_F(TernaryKeyTreeCreationTest, AKeylessNameIsNoParentInEitherTree) {
  CreateAll({"d", "ab", "bc"});  // the name "a" exists now, as a branch
  ASSERT_EQ(status::kOk, rig.loaded.DeleteKey(kAdmin, root, "d"));
  const std::string before = rig.Contents();
  for (const char* path : {"a/x", "a/x/y", "d/x"}) {
    EXPECT_EQ(status::kNoRight, Create(path)) << path;
    EXPECT_EQ(1u, CreateInFile(path)) << path;
  }
  EXPECT_EQ(status::kExists, Create("a/"));
  EXPECT_EQ(17u, CreateInFile("a/"));
  EXPECT_TRUE(rig.Contents() == before);
}

// Where others go on behind the name. Without a handle the key is made.
TEST_F(TernaryKeyTreeCreationTest, ANameThatEndsAtABranchIsRefused) {
  CreateAll({"abcx", "abdz"});
  const std::string before = rig.Contents();
  EXPECT_EQ(status::kNoRight, Create("abc"));
  EXPECT_TRUE(rig.Contents() == before);
  EXPECT_EQ(status::kNotFound, rig.Find(root, "abc"));
  ASSERT_EQ(status::kOk, rig.Unload(root));
  ASSERT_EQ(status::kOk, rig.loaded.UnloadKeyTree(nullptr));
  EXPECT_EQ(0u, CreateInFile("abc"));
  root = rig.Load("");
  EXPECT_EQ("abc abcx abdz", Stored());
}

// The character at which an existing name is cut is not compared when it is the path's last.
TEST_F(TernaryKeyTreeCreationTest, ACharacterThatDiffersAtTheEndIsTakenAsTheCut) {
  struct {
    const char* there;
    const char* asked;
    const char* made;
  } const cases[] = {{"abcx", "abd", "abc"}, {"abc", "ax", "ab"}, {"abc", "a/", "ab"},
                     {"bcd", "//", "b"},     {"abcd", "x", "a"},  {"abcd", "/x", "a"}};
  std::string top = "0";
  for (const auto& each : cases) {
    ++top[0];
    ASSERT_EQ(status::kOk, Create(top));
    TernaryHandle* handle = rig.Load(top.c_str());
    ASSERT_EQ(status::kOk, CreateThrough(handle, each.there));
    EXPECT_EQ(status::kOk, CreateThrough(handle, each.asked)) << each.asked;
    EXPECT_EQ(status::kOk, rig.Find(handle, each.made)) << each.asked;
    EXPECT_EQ(status::kOk, rig.Find(handle, each.there)) << each.asked;
    EXPECT_EQ(status::kNotFound, rig.Find(handle, each.asked)) << each.asked;
    EXPECT_EQ(status::kOk, rig.Unload(handle));
  }
  EXPECT_EQ("1 1/abc 1/abcx 2 2/ab 2/abc 3 3/ab 3/abc 4 4/b 4/bcd 5 5/a 5/abcd 6 6/a 6/abcd",
            Stored());
}

// An empty component, but the rest of the path is its last character.
TEST_F(TernaryKeyTreeCreationTest, ASlashAtTheEndIsTakenAsTheCutToo) {
  CreateAll({"a", "a/xyz"});
  EXPECT_EQ(status::kBadArgument, Create("a//b"));
  EXPECT_EQ("a a/xyz", Stored());
  EXPECT_EQ("4 3 0 0", UsedSlots(rig.path)) << "the cut stays";
  CreateAll({"b", "b/xyz", "b//"});
  EXPECT_EQ("a a/xyz b b/x b/xyz", Stored());
}

TEST_F(TernaryKeyTreeCreationTest, ADeletedNameIsCreatedWhereItWas) {
  CreateAll({"abc", "abd", "abc/x"});
  EXPECT_EQ("4 4 0 0", UsedSlots(rig.path));
  for (const char* path : {"abd", "abc/x", "abc"}) {
    ASSERT_EQ(status::kOk, rig.loaded.DeleteKey(kAdmin, root, path));
    EXPECT_EQ(status::kNotFound, rig.Find(root, path));
    ASSERT_EQ(status::kOk, Create(path));
    EXPECT_EQ(status::kExists, Create(path));
  }
  EXPECT_EQ("3 3 0 0", UsedSlots(rig.path)) << "the last one has taken \"abc/x\" with it";
  EXPECT_EQ("abc abd", Stored());
}

}  // namespace
}  // namespace tamu::registry
