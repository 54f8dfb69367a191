// Finding keys in memory: what a search tells.
#include "tests/registry/memtree/LoadedTreeRig.h"

namespace tamu::registry {
namespace {

class TernaryKeyTreeSearchTest : public ::testing::Test {
 protected:
  // The outcome, as "2 node 400 at 3 run -1 parent 200 owner 100 flags 2"; ids in hex.
  std::string Search(const char* path) {
    TernaryKeyTree::KeyMatchDescriptor match;
    const unsigned int result = TernaryKeyTree::FindKey(rig.Root(), path, &match);
    char text[120];
    const StringId before = match.previous != nullptr ? match.previous->id : StringId();
    std::snprintf(text, sizeof text,
                  "%u string %x node %x at %u run %d parent %x owner %x flags %x", result,
                  unsigned{match.string->id}, unsigned{match.nodeId}, match.position,
                  match.splitIndex, unsigned{before}, unsigned{match.owner->id}, match.flags);
    return text;
  }
  LoadedTreeRig rig;
};

TEST_F(TernaryKeyTreeSearchTest, TheEmptyPathIsTheStart) {
  EXPECT_EQ("0 string 100 node 0 at 0 run -1 parent 100 owner 100 flags 0", Search(""));
  EXPECT_EQ("0 string 100 node 0 at 1 run -1 parent 100 owner 100 flags 0", Search("/"));
}

TEST_F(TernaryKeyTreeSearchTest, WithoutKeysItStopsAtTheEmptyDirectory) {
  EXPECT_EQ("2 string 100 node 0 at 0 run -1 parent 0 owner 100 flags 1", Search("a"));
  EXPECT_EQ("2 string 100 node 0 at 1 run -1 parent 0 owner 100 flags 1", Search("/a"));
}

TEST_F(TernaryKeyTreeSearchTest, KeysAreFoundAtEveryDepth) {
  rig.Create({"abc", "abc/x", "abd"});
  rig.Load("");
  EXPECT_EQ("0 string 200", Search("abc").substr(0, 12));
  EXPECT_EQ("0 string 300", Search("/abc/x").substr(0, 12));
  EXPECT_EQ("0 string 400", Search("abd").substr(0, 12));
  EXPECT_EQ("0 string 200", Search("abc/").substr(0, 12)) << "one at the end is accepted";
  EXPECT_EQ(Search("abc/x").substr(30), Search("abc/x/").substr(30));
  EXPECT_NE(Search("abc/x").find("owner 200"), std::string::npos);
}

// "abc" and "xyz": runs "ab" and "xy".
TEST_F(TernaryKeyTreeSearchTest, ARunIsCutWhereItParts) {
  rig.Create({"abc"});
  rig.Load("");
  EXPECT_EQ("2 string 200 node 0 at 0 run 0 parent 100 owner 100 flags 0", Search("x"));
  EXPECT_EQ("2 string 200 node 0 at 0 run 1 parent 100 owner 100 flags 0", Search("ax"));
  EXPECT_EQ("2 string 200 node 0 at 0 run 0 parent 100 owner 100 flags 0", Search("a"));
  EXPECT_EQ("2 string 200 node 0 at 0 run 1 parent 100 owner 100 flags 0", Search("ab"));
  EXPECT_EQ("2 string 200 node 0 at 0 run 1 parent 100 owner 100 flags 0", Search("a/b"));
}

TEST_F(TernaryKeyTreeSearchTest, AMissingLinkIsTold) {
  rig.Create({"abc"});
  rig.Load("");
  EXPECT_EQ("2 string 200 node 0 at 2 run -1 parent 100 owner 100 flags 0", Search("aba"));
  EXPECT_EQ("2 string 200 node 0 at 2 run -1 parent 100 owner 100 flags 0", Search("abd"));
  EXPECT_EQ("2 string 200 node 0 at 3 run -1 parent 100 owner 100 flags 2", Search("abcd"));
  EXPECT_EQ("2 string 200 node 0 at 4 run -1 parent 100 owner 200 flags 3", Search("abc/d"));
}

// What is in the file and not loaded is told by its id.
TEST_F(TernaryKeyTreeSearchTest, WhatIsNotLoadedIsToldByItsId) {
  rig.Create({"m", "a", "z", "mm", "m/x"});  // 200 and its links 300, 400, 500, 600
  EXPECT_EQ("2 string 100 node 200 at 0 run -1 parent 0 owner 100 flags 1", Search("a"));
  TernaryHandle* handle = rig.Load("m");
  EXPECT_EQ("0 string 200", Search("m").substr(0, 12));
  EXPECT_EQ("0 string 600", Search("m/x").substr(0, 12));
  EXPECT_EQ("2 string 200 node 300 at 0 run -1 parent 100 owner 100 flags 0", Search("a"));
  EXPECT_EQ("2 string 200 node 400 at 0 run -1 parent 100 owner 100 flags 0", Search("z"));
  EXPECT_EQ("2 string 200 node 500 at 1 run -1 parent 100 owner 100 flags 2", Search("mm"));
  EXPECT_EQ(status::kOk, rig.Unload(handle));
  EXPECT_EQ("2 string 200 node 600 at 2 run -1 parent 100 owner 200 flags 3", Search("m/x"));
  EXPECT_EQ("2 string 200 node 500 at 1 run -1 parent 100 owner 100 flags 2", Search("m"));
}

// What was found before counts for nothing.
TEST_F(TernaryKeyTreeSearchTest, BelowALockedStringNothingIsFound) {
  rig.Create({"a", "a/b"});
  TernaryHandle* handle = rig.Load("");
  TernaryString* string = nullptr;
  TernaryKey* key = nullptr;
  TernaryString* owner = nullptr;
  EXPECT_EQ(status::kOk, rig.Find(handle, "a/b"));
  EXPECT_EQ(status::kOk, rig.loaded.FindKey(handle, "a", string, key, owner));
  ASSERT_EQ(status::kOk, string->Lock(handle));
  EXPECT_EQ(status::kNotFound, rig.Find(handle, "a/b"));
  ASSERT_EQ(status::kOk, string->Unlock());
  EXPECT_EQ(status::kOk, rig.Find(handle, "a/b"));
}

TEST_F(TernaryKeyTreeSearchTest, AKeyThatIsNotLoadedAnyMoreIsNotFound) {
  rig.Create({"a", "a/b"});
  TernaryHandle* root = rig.Load("");
  rig.Load("a/b");
  EXPECT_EQ(status::kOk, rig.Find(nullptr, "a"));
  EXPECT_EQ(status::kOk, rig.Unload(root));
  EXPECT_EQ(status::kNotFound, rig.Find(nullptr, "a"));
  EXPECT_EQ(status::kOk, rig.Find(nullptr, "a/b"));
}

TEST_F(TernaryKeyTreeSearchTest, ANameWithoutAKeyIsNotFound) {
  rig.Create({"ab", "bc"});  // "a" and "b" are branches in a chain of single characters
  rig.Create({"abc"});
  ASSERT_EQ(status::kOk, rig.Delete("ab"));
  TernaryHandle* root = rig.Load("");
  EXPECT_EQ(status::kNotFound, rig.Find(root, "ab"));
  EXPECT_EQ(status::kNotFound, rig.Find(root, "ab/"));
  EXPECT_EQ(status::kOk, rig.Find(root, "abc"));
  EXPECT_EQ(status::kOk, rig.Find(nullptr, "abc")) << "without a handle from the root";
}

TEST_F(TernaryKeyTreeSearchTest, HighBytesSortBelowTheOthers) {
  rig.Create({"m", "\xE4", "A", "z"});
  TernaryHandle* root = rig.Load("");
  for (const char* key : {"m", "\xE4", "A", "z"})
    EXPECT_EQ(status::kOk, rig.Find(root, key)) << key;
  EXPECT_EQ(status::kNotFound, rig.Find(root, "\xE5"));
  const TernaryString* m = rig.Root()->directory;
  EXPECT_EQ(m->lower->node.splitChar(), static_cast<signed char>(0xE4));
}

}  // namespace
}  // namespace tamu::registry
