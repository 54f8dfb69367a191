// Loading subtrees: what is in memory afterwards.
#include "tests/registry/memtree/LoadedTreeRig.h"

namespace tamu::registry {
namespace {

TEST(TernaryKeyTreeLoading, AKeyComesWithAllBelowIt) {
  LoadedTreeRig rig;
  rig.Create({"a", "a/b", "a/b/c", "x"});
  TernaryHandle* handle = rig.Load("a");
  EXPECT_EQ(status::kOk, rig.Find(handle, ""));
  EXPECT_EQ(status::kOk, rig.Find(handle, "b"));
  EXPECT_EQ(status::kOk, rig.Find(handle, "b/c"));
  EXPECT_EQ(status::kNotFound, rig.Find(handle, "x"));
  EXPECT_EQ(status::kNotFound, rig.Find(handle, "a"));
  EXPECT_EQ("4 strings, 4 keys", rig.Loaded());  // the root's, too
  EXPECT_EQ(1u, handle->start->loadCount);
  EXPECT_TRUE(handle->wake.IsCreated());
  EXPECT_TRUE(handle->ack.IsCreated());
  EXPECT_EQ(0, handle->waiterCount);
}

TEST(TernaryKeyTreeLoading, TheRootComesWithEverything) {
  for (const char* root : {"", "/", static_cast<const char*>(nullptr)}) {
    LoadedTreeRig rig;
    rig.Create({"m", "f", "t", "mn", "m/x", "m/x/y"});
    TernaryHandle* handle = rig.Load(root);
    EXPECT_EQ(handle->path, root);
    EXPECT_EQ(handle->start, rig.Root());
    EXPECT_EQ("7 strings, 7 keys", rig.Loaded());
  }
}

TEST(TernaryKeyTreeLoading, NothingIsWritten) {
  LoadedTreeRig rig;
  rig.Create({"a", "a/b"});
  const std::string before = rig.Contents();
  rig.Unload(rig.Load("a"));
  rig.Unload(rig.Load(""));
  EXPECT_EQ(status::kNotFound, rig.TryToLoad("missing"));
  rig.Close();
  EXPECT_TRUE(rig.Contents() == before);
}

TEST(TernaryKeyTreeLoading, ValuesComeInTheOrderOfTheFileWithTheirData) {
  LoadedTreeRig rig;
  rig.Create({"a"});
  ASSERT_EQ(status::kOk, rig.CreateNumber("a", "n", 0x0102030405060708ull));
  ASSERT_EQ(status::kOk, rig.CreateData("a", "d", "abc"));
  ASSERT_EQ(status::kOk, rig.CreateData("a", "none", ""));
  ASSERT_EQ(status::kOk, rig.CreateData("a", "long", Pattern(1024)));
  TernaryHandle* handle = rig.Load("a");
  EXPECT_EQ(LoadedValues(*handle->start->key),
            "long " + HexOf(Pattern(1024)) + ", none 53, d 616263, n 0807060504030201");
}

TEST(TernaryKeyTreeLoading, TheSameKeyTwiceIsOneString) {
  LoadedTreeRig rig;
  rig.Create({"a", "a/b"});
  TernaryHandle* one = rig.Load("a");
  TernaryHandle* two = rig.Load("/a/");
  EXPECT_NE(one, two);
  EXPECT_EQ(one->start, two->start);
  EXPECT_EQ(2u, one->start->loadCount);
}

TEST(TernaryKeyTreeLoading, WhatIsLoadedIsShared) {
  LoadedTreeRig rig;
  rig.Create({"a", "a/b", "a/b/c", "a/d"});
  TernaryHandle* inner = rig.Load("a/b");
  EXPECT_EQ("4 strings, 3 keys", rig.Loaded());  // "a" is only on the way
  TernaryHandle* outer = rig.Load("a");
  EXPECT_EQ("5 strings, 5 keys", rig.Loaded());
  EXPECT_EQ(rig.KeyOf(outer, "b"), inner->start->key);
  TernaryHandle* root = rig.Load("");
  EXPECT_EQ(rig.KeyOf(root, "a/b/c"), rig.KeyOf(inner, "c"));
}

TEST(TernaryKeyTreeLoading, AMissingKeyLeavesWhatIsLoaded) {
  LoadedTreeRig rig;
  rig.Create({"a", "a/b", "abc"});
  for (const char* key : {"x", "a/x", "a/b/c", "ab", "abcd", "abx", "a/bb", "abc/x", "//a"}) {
    EXPECT_EQ(status::kNotFound, rig.TryToLoad(key)) << key;
  }
  EXPECT_EQ("1 strings, 1 keys", rig.Loaded());
  TernaryHandle* root = rig.Load("");
  const std::string all = rig.Loaded();
  for (const char* key : {"x", "a/x", "a/b/c", "ab", "abcd", "abx", "a/bb", "abc/x", "//a"}) {
    EXPECT_EQ(status::kNotFound, rig.TryToLoad(key)) << key;
  }
  EXPECT_EQ(rig.Loaded(), all);
  EXPECT_EQ(status::kOk, rig.Find(root, "abc"));
}

TEST(TernaryKeyTreeLoading, ANameWithoutAKeyIsNotLoaded) {
  for (bool rootIsLoaded : {false, true}) {
    LoadedTreeRig rig;
    rig.Create({"d", "d/e", "a", "ab"});
    ASSERT_EQ(status::kOk, rig.Delete("d"));
    ASSERT_EQ(status::kOk, rig.Delete("a"));
    if (rootIsLoaded) rig.Load("");
    for (const char* key : {"a", "a/", "d", "d/", "d/e"}) {
      EXPECT_EQ(status::kNotFound, rig.TryToLoad(key)) << key;
    }
    EXPECT_EQ(status::kOk, rig.TryToLoad("ab"));
    EXPECT_EQ(status::kOk, rig.TryToLoad("ab/"));
  }
}

TEST(TernaryKeyTreeLoading, WithoutARootKeyThereIsNothing) {
  LoadedTreeRig rig;
  rig.Create({"a"});
  ASSERT_EQ(status::kOk, rig.Delete(""));
  EXPECT_EQ(status::kNotFound, rig.TryToLoad(""));
  EXPECT_EQ(status::kNotFound, rig.TryToLoad("a"));
}

TEST(TernaryKeyTreeLoading, AFileWithoutStartNodeHasNoKeys) {
  TempDir dir;
  TernaryKeyTree tree(nullptr);
  ASSERT_EQ(status::kOk, tree.Initialize((dir / "new").c_str()));
  void* handle = nullptr;
  EXPECT_EQ(status::kNotFound, tree.LoadKeyTree("", handle));
  EXPECT_EQ(status::kNotFound, tree.LoadKeyTree("a", handle));
  EXPECT_EQ(nullptr, tree.GetStartString(0));
}

TEST(TernaryKeyTreeLoading, BeforeInitializeAndAfterFinalizeNothingIsLoaded) {
  TernaryKeyTree tree(nullptr);
  void* handle = nullptr;
  EXPECT_EQ(status::kNoRight, tree.LoadKeyTree("", handle));
  EXPECT_EQ(status::kOk, tree.UnloadKeyTree(nullptr));
  LoadedTreeRig rig;
  rig.Close();
  EXPECT_EQ(status::kNoRight, rig.loaded.LoadKeyTree("", handle));
  EXPECT_EQ(nullptr, handle);
}

// ---- damage

TEST(TernaryKeyTreeLoading, AnImpossibleRunEndsTheWay) {
  LoadedTreeRig rig;
  rig.Create({"a", "a/b"});
  PatchFile(rig.path, InString(2, kSegmentLength), "\x11");
  EXPECT_EQ(status::kInvalidFile, rig.TryToLoad("a"));
  EXPECT_EQ(status::kInvalidFile, rig.TryToLoad("a/b"));
  EXPECT_EQ(status::kInvalidFile, rig.TryToLoad(""));
}

TEST(TernaryKeyTreeLoading, BelowAKeyWhatCannotBeReadIsNotThere) {
  LoadedTreeRig rig;
  rig.Create({"a", "a/m", "a/f", "a/t"});  // 300, its lower 400, its higher 500
  PatchFile(rig.path, InString(5, kSegmentLength), "\xFF");
  TernaryHandle* handle = rig.Load("a");
  EXPECT_EQ(status::kNotFound, rig.Find(handle, "t"));
  EXPECT_EQ(status::kOk, rig.Find(handle, ""));
}

TEST(TernaryKeyTreeLoading, LinksThatFormACircleEnd) {
  for (unsigned int link : kLinks) {
    for (unsigned int to : {0x300u, 0x200u, 0x100u}) {
      LoadedTreeRig rig;
      rig.Create({"a", "a/m"});
      rig.PatchWord(InString(3, link), to);
      OnSmallStack([&] {
        rig.Load("a");
        rig.TryToLoad("");
        rig.TryToLoad("a/m/m/m");
        rig.TryToLoad("a/zz");
        rig.Close();
      });
    }
  }
}

TEST(TernaryKeyTreeLoading, ALinkThatLeadsToTheSameNodeTwiceLoadsItOnce) {
  LoadedTreeRig rig;
  rig.Create({"m", "m/b"});
  rig.PatchWord(InString(2, kLo), 0x300);  // its child, too
  for (int round = 0; round < 3; ++round) {
    EXPECT_EQ(status::kOk, rig.TryToLoad("m/b"));
    TernaryHandle* m = rig.Load("m");
    EXPECT_EQ(status::kOk, rig.Find(m, "b"));
    EXPECT_EQ("3 strings, 3 keys", rig.Loaded());
    EXPECT_EQ(status::kOk, rig.Unload(m));
  }
}

TEST(TernaryKeyTreeLoading, ANodeOnTheWayIsNotLoadedAgain) {
  LoadedTreeRig rig;
  rig.Create({"m", "m/b"});
  rig.PatchWord(InString(3, kChild), 0x200);
  EXPECT_EQ(status::kInvalidFile, rig.TryToLoad("m/b"));
  EXPECT_EQ(status::kInvalidFile, rig.TryToLoad("m/b/m"));
  TernaryHandle* m = rig.Load("m");
  EXPECT_EQ(status::kOk, rig.Find(m, "b"));
  EXPECT_EQ(status::kNotFound, rig.Find(m, "b/m"));
}

TEST(TernaryKeyTreeLoading, AKeyThatTwoNamesShareIsLoadedOnce) {
  LoadedTreeRig rig;
  rig.Create({"a", "b"});
  rig.PatchWord(InString(3, kKeyLink), 0x200);
  TernaryHandle* a = rig.Load("a");
  EXPECT_EQ(status::kInvalidFile, rig.TryToLoad("b"));
  EXPECT_EQ(status::kOk, rig.Unload(a));
  EXPECT_EQ(status::kOk, rig.TryToLoad("b"));
}

// Of the root's key nothing is needed for others.
TEST(TernaryKeyTreeLoading, TheRootsKeyKeepsNoOtherFromBeingLoaded) {
  LoadedTreeRig rig;
  rig.Create({"a"});
  ASSERT_EQ(status::kOk, rig.CreateNumber("", "n", 1));
  rig.PatchWord(InValue(1, 0), 0x100);
  EXPECT_EQ(status::kOk, rig.TryToLoad("a"));
  EXPECT_EQ(status::kInvalidFile, rig.TryToLoad(""));
  EXPECT_EQ(status::kInvalidFile, rig.TryToLoad("/"));
}

TEST(TernaryKeyTreeLoading, ValuesThatFormACircleKeepTheKeyFromBeingLoaded) {
  LoadedTreeRig rig;
  rig.Create({"a"});
  ASSERT_EQ(status::kOk, rig.CreateNumber("a", "n", 1));
  rig.PatchWord(InValue(1, 0), 0x100);
  EXPECT_EQ(status::kInvalidFile, rig.TryToLoad("a"));
}

TEST(TernaryKeyTreeLoading, DataThatCannotBeReadIsZero) {
  LoadedTreeRig rig;
  rig.Create({"a"});
  ASSERT_EQ(status::kOk, rig.CreateData("a", "lost", "abc"));
  ASSERT_EQ(status::kOk, rig.CreateData("a", "there", "xyz"));
  rig.PatchWord(InValue(1, 44), 0);
  TernaryHandle* handle = rig.Load("a");
  EXPECT_EQ("there 78797a, lost 000000", LoadedValues(*handle->start->key));
}

}  // namespace
}  // namespace tamu::registry
