// Creating keys through a handle: what is answered, and what the key record holds.
#include "tests/registry/memtree/RootHandle.h"

namespace tamu::registry {
namespace {

class LoadedCreation : public RootHandleTest {
 protected:
  unsigned int CreateAs(unsigned int user, const char* path) {
    return rig.loaded.CreateKey(user, root, path, 0, false);
  }
  unsigned int CreateInFile(const char* path) {
    return rig.file->CreateKey(kAdmin, nullptr, path, 0, false);
  }
};

TEST_F(LoadedCreation, AKeyUnderTheRootIsItsOwnersAlone) {
  EXPECT_EQ(rig.loaded.CreateKey(0x01020304, root, "a", 0x1122334455667788, true), 0u);
  EXPECT_EQ(rig.KeyNode(2),
            "0000000000000f01"
            "0403020100000000"
            "8877665544332211");
}

// It is the parent's record that tells, wherever the key lies.
TEST_F(LoadedCreation, BelowAKeyWithTheRootFlagAKeyIsItsOwnersAlone) {
  CreateAll({"a"});
  TernaryKeyNode& node = *rig.KeyOf(root, "a")->node;
  node.setPermission(0xFF);
  node.setRoot(true);
  EXPECT_EQ(CreateAs(kUser, "a/b"), 0u);
  EXPECT_EQ(rig.KeyNode(3),
            "0000000000000f00"
            "e803000000000000"
            "0000000000000000");
}

TEST_F(LoadedCreation, PathsBeginAtTheHandlesKey) {
  CreateAll({"a", "a/b"});
  TernaryHandle* handle = rig.Load("a");
  EXPECT_EQ(CreateThrough(handle, "c"), 0u);
  EXPECT_EQ(CreateThrough(handle, "/d"), 0u);
  EXPECT_EQ(CreateThrough(handle, "b/e"), 0u);
  EXPECT_EQ(Stored(), "a a/b a/b/e a/c a/d");
  EXPECT_EQ(CreateThrough(handle, ""), 17u);
  EXPECT_EQ(rig.loaded.CreateKey(kAdmin, handle, nullptr, 0, false), 17u);
}

TEST_F(LoadedCreation, WithoutAHandleNothingIsCreated) {
  const std::string before = rig.Contents();
  EXPECT_EQ(rig.loaded.CreateKey(kAdmin, nullptr, "a", 0, false), 22u);
  EXPECT_EQ(rig.loaded.CreateKey(kAdmin, nullptr, nullptr, 0, false), 22u);
  EXPECT_TRUE(rig.Contents() == before);
}

// A key that is refused costs nothing but the record that nothing leads to.
TEST_F(LoadedCreation, AMissingParentGivesEverySlotBack) {
  const std::string tables = Tables();
  for (const char* path : {"a/b", "a/b/c", "a/", "abcdefghijklmnop/x", "abcdefghijklmnopq/x",
                           "abcdefghijklmnopqrstuvwxyzabcdefghijklmnopqrstuvwxyz/x"}) {
    EXPECT_EQ(Create(path), 22u) << path;
    EXPECT_TRUE(Tables() == tables) << path;
    EXPECT_EQ(rig.Loaded(), "1 strings, 1 keys");
  }
  CreateAll({"a", "a/b"});
  EXPECT_EQ(rig.KeyOf(root, "a")->id, 0x200u);
  EXPECT_EQ(rig.KeyOf(root, "a/b")->id, 0x300u);
}

// Neither slots nor room: the file does not grow.
TEST_F(LoadedCreation, ARefusedCreationTakesNothing) {
  CreateAll({"a"});
  const std::string contents = rig.Contents();
  const std::string missing = std::string(8840, 'n') + "/y";
  const std::string tooLong(200000, 'n');
  for (int call = 0; call < 20; ++call) {
    EXPECT_EQ(Create(missing.c_str()), 22u);
    EXPECT_EQ(Create(("a/" + missing).c_str()), 22u);
    EXPECT_EQ(Create(tooLong.c_str()), 75u);
    EXPECT_EQ(Create((tooLong + "/y").c_str()), 75u) << "there is no room up to the \"/\"";
  }
  EXPECT_TRUE(rig.Contents() == contents);
  EXPECT_EQ(rig.loaded.File()->Descriptor(NodeKind::kString).tableCount, 1u);
  TernaryString* first = nullptr;
  EXPECT_EQ(rig.loaded.CreateStringNode(0, missing.c_str(), first, nullptr), 22u);
  EXPECT_EQ(first, nullptr);
  EXPECT_TRUE(rig.Contents() == contents);
}

TEST_F(LoadedCreation, AMissingParentInsideALongerNameLeavesTheCut) {
  CreateAll({"abcd"});
  EXPECT_EQ(Create("abx/y"), 22u);
  EXPECT_EQ(rig.StringNode(2), Packed("00001064 16*0 00020000 16*0"));
  EXPECT_EQ(rig.StringNode(3), Packed("00020063 8*0 00020000 8*0 6162 14*0"));
  EXPECT_EQ(UsedSlots(rig.path), "3 2 0 0");
  const std::string tables = Tables();
  EXPECT_EQ(Create("abx/y"), 22u);
  EXPECT_TRUE(Tables() == tables) << "there is nothing left to cut";
  EXPECT_EQ(Stored(), "abcd");
}

TEST_F(LoadedCreation, AParentThatWouldEndAtTheCutLeavesTheCutToo) {
  CreateAll({"abcd"});
  EXPECT_EQ(Create("ab/y"), 22u);
  EXPECT_EQ(rig.StringNode(3), Packed("00020063 8*0 00020000 8*0 6162 14*0"));
  EXPECT_EQ(UsedSlots(rig.path), "3 2 0 0");
  EXPECT_EQ(Stored(), "abcd");
}

TEST_F(LoadedCreation, AnEmptyComponentIsNoName) {
  CreateAll({"a"});
  const std::string before = rig.Contents();
  for (const char* path : {"a//b", "a//", "//", "//a"}) EXPECT_EQ(Create(path), 22u) << path;
  EXPECT_TRUE(rig.Contents() == before);
}

TEST_F(LoadedCreation, AKeylessNameIsNoParentInEitherTree) {
  CreateAll({"d", "ab", "bc"});  // the name "a" exists now, as a branch
  ASSERT_EQ(rig.loaded.DeleteKey(kAdmin, root, "d"), 0u);
  const std::string before = rig.Contents();
  for (const char* path : {"a/x", "a/x/y", "d/x"}) {
    EXPECT_EQ(Create(path), 1u) << path;
    EXPECT_EQ(CreateInFile(path), 1u) << path;
  }
  EXPECT_EQ(Create("a/"), 17u);
  EXPECT_EQ(CreateInFile("a/"), 17u);
  EXPECT_TRUE(rig.Contents() == before);
}

// Where others go on behind the name. Without a handle the key is made.
TEST_F(LoadedCreation, ANameThatEndsAtABranchIsRefused) {
  CreateAll({"abcx", "abdz"});
  const std::string before = rig.Contents();
  EXPECT_EQ(Create("abc"), 1u);
  EXPECT_TRUE(rig.Contents() == before);
  EXPECT_EQ(rig.Find(root, "abc"), 2u);
  ASSERT_EQ(rig.Unload(root), 0u);
  ASSERT_EQ(rig.loaded.UnloadKeyTree(nullptr), 0u);
  EXPECT_EQ(CreateInFile("abc"), 0u);
  root = rig.Load("");
  EXPECT_EQ(Stored(), "abc abcx abdz");
}

// The character at which an existing name is cut is not compared when it is the path's last.
TEST_F(LoadedCreation, ACharacterThatDiffersAtTheEndIsTakenAsTheCut) {
  struct {
    const char* there;
    const char* asked;
    const char* made;
  } const cases[] = {{"abcx", "abd", "abc"}, {"abc", "ax", "ab"}, {"abc", "a/", "ab"},
                     {"bcd", "//", "b"},     {"abcd", "x", "a"},  {"abcd", "/x", "a"}};
  std::string top = "0";
  for (const auto& each : cases) {
    ++top[0];
    ASSERT_EQ(Create(top), 0u);
    TernaryHandle* handle = rig.Load(top.c_str());
    ASSERT_EQ(CreateThrough(handle, each.there), 0u);
    EXPECT_EQ(CreateThrough(handle, each.asked), 0u) << each.asked;
    EXPECT_EQ(rig.Find(handle, each.made), 0u) << each.asked;
    EXPECT_EQ(rig.Find(handle, each.there), 0u) << each.asked;
    EXPECT_EQ(rig.Find(handle, each.asked), 2u) << each.asked;
    EXPECT_EQ(rig.Unload(handle), 0u);
  }
  EXPECT_EQ(Stored(),
            "1 1/abc 1/abcx 2 2/ab 2/abc 3 3/ab 3/abc 4 4/b 4/bcd 5 5/a 5/abcd 6 6/a 6/abcd");
}

// An empty component, but the rest of the path is its last character.
TEST_F(LoadedCreation, ASlashAtTheEndIsTakenAsTheCutToo) {
  CreateAll({"a", "a/xyz"});
  EXPECT_EQ(Create("a//b"), 22u);
  EXPECT_EQ(Stored(), "a a/xyz");
  EXPECT_EQ(UsedSlots(rig.path), "4 3 0 0") << "the cut stays";
  CreateAll({"b", "b/xyz", "b//"});
  EXPECT_EQ(Stored(), "a a/xyz b b/x b/xyz");
}

TEST_F(LoadedCreation, ADeletedNameIsCreatedWhereItWas) {
  CreateAll({"abc", "abd", "abc/x"});
  EXPECT_EQ(UsedSlots(rig.path), "4 4 0 0");
  for (const char* path : {"abd", "abc/x", "abc"}) {
    ASSERT_EQ(rig.loaded.DeleteKey(kAdmin, root, path), 0u);
    EXPECT_EQ(rig.Find(root, path), 2u);
    ASSERT_EQ(Create(path), 0u);
    EXPECT_EQ(Create(path), 17u);
  }
  EXPECT_EQ(UsedSlots(rig.path), "3 3 0 0") << "the last one has taken \"abc/x\" with it";
  EXPECT_EQ(Stored(), "abc abd");
}

}  // namespace
}  // namespace tamu::registry
