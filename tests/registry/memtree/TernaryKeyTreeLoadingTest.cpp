// Loading subtrees: what is in memory afterwards.
#include "tests/registry/memtree/LoadedTreeRig.h"

namespace tamu::registry {
namespace {

TEST(Loading, AKeyComesWithAllBelowIt) {
  LoadedTreeRig rig;
  rig.Create({"a", "a/b", "a/b/c", "x"});
  TernaryHandle* handle = rig.Load("a");
  EXPECT_EQ(rig.Find(handle, ""), 0u);
  EXPECT_EQ(rig.Find(handle, "b"), 0u);
  EXPECT_EQ(rig.Find(handle, "b/c"), 0u);
  EXPECT_EQ(rig.Find(handle, "x"), 2u);
  EXPECT_EQ(rig.Find(handle, "a"), 2u);
  EXPECT_EQ(rig.Loaded(), "4 strings, 4 keys");  // the root's, too
  EXPECT_EQ(handle->start->loadCount, 1u);
  EXPECT_TRUE(handle->wake.IsCreated());
  EXPECT_TRUE(handle->ack.IsCreated());
  EXPECT_EQ(handle->waiterCount, 0);
}

TEST(Loading, TheRootComesWithEverything) {
  for (const char* root : {"", "/", static_cast<const char*>(nullptr)}) {
    LoadedTreeRig rig;
    rig.Create({"m", "f", "t", "mn", "m/x", "m/x/y"});
    TernaryHandle* handle = rig.Load(root);
    EXPECT_EQ(handle->path, root);
    EXPECT_EQ(handle->start, rig.Root());
    EXPECT_EQ(rig.Loaded(), "7 strings, 7 keys");
  }
}

TEST(Loading, NothingIsWritten) {
  LoadedTreeRig rig;
  rig.Create({"a", "a/b"});
  const std::string before = rig.Contents();
  rig.Unload(rig.Load("a"));
  rig.Unload(rig.Load(""));
  EXPECT_EQ(rig.TryToLoad("missing"), 2u);
  rig.Close();
  EXPECT_TRUE(rig.Contents() == before);
}

TEST(Loading, ValuesComeInTheOrderOfTheFileWithTheirData) {
  LoadedTreeRig rig;
  rig.Create({"a"});
  ASSERT_EQ(rig.CreateNumber("a", "n", 0x0102030405060708ull), 0u);
  ASSERT_EQ(rig.CreateData("a", "d", "abc"), 0u);
  ASSERT_EQ(rig.CreateData("a", "none", ""), 0u);
  ASSERT_EQ(rig.CreateData("a", "long", Pattern(1024)), 0u);
  TernaryHandle* handle = rig.Load("a");
  EXPECT_EQ(LoadedValues(*handle->start->key),
            "long " + HexOf(Pattern(1024)) + ", none 53, d 616263, n 0807060504030201");
}

TEST(Loading, TheSameKeyTwiceIsOneString) {
  LoadedTreeRig rig;
  rig.Create({"a", "a/b"});
  TernaryHandle* one = rig.Load("a");
  TernaryHandle* two = rig.Load("/a/");
  EXPECT_NE(one, two);
  EXPECT_EQ(one->start, two->start);
  EXPECT_EQ(one->start->loadCount, 2u);
}

TEST(Loading, WhatIsLoadedIsShared) {
  LoadedTreeRig rig;
  rig.Create({"a", "a/b", "a/b/c", "a/d"});
  TernaryHandle* inner = rig.Load("a/b");
  EXPECT_EQ(rig.Loaded(), "4 strings, 3 keys");  // "a" is only on the way
  TernaryHandle* outer = rig.Load("a");
  EXPECT_EQ(rig.Loaded(), "5 strings, 5 keys");
  EXPECT_EQ(rig.KeyOf(outer, "b"), inner->start->key);
  TernaryHandle* root = rig.Load("");
  EXPECT_EQ(rig.KeyOf(root, "a/b/c"), rig.KeyOf(inner, "c"));
}

TEST(Loading, AMissingKeyLeavesWhatIsLoaded) {
  LoadedTreeRig rig;
  rig.Create({"a", "a/b", "abc"});
  for (const char* key : {"x", "a/x", "a/b/c", "ab", "abcd", "abx", "a/bb", "abc/x", "//a"}) {
    EXPECT_EQ(rig.TryToLoad(key), 2u) << key;
  }
  EXPECT_EQ(rig.Loaded(), "1 strings, 1 keys");
  TernaryHandle* root = rig.Load("");
  const std::string all = rig.Loaded();
  for (const char* key : {"x", "a/x", "a/b/c", "ab", "abcd", "abx", "a/bb", "abc/x", "//a"}) {
    EXPECT_EQ(rig.TryToLoad(key), 2u) << key;
  }
  EXPECT_EQ(rig.Loaded(), all);
  EXPECT_EQ(rig.Find(root, "abc"), 0u);
}

TEST(Loading, ANameWithoutAKeyIsNotLoaded) {
  for (bool rootIsLoaded : {false, true}) {
    LoadedTreeRig rig;
    rig.Create({"d", "d/e", "a", "ab"});
    ASSERT_EQ(rig.Delete("d"), 0u);
    ASSERT_EQ(rig.Delete("a"), 0u);
    if (rootIsLoaded) rig.Load("");
    for (const char* key : {"a", "a/", "d", "d/", "d/e"}) {
      EXPECT_EQ(rig.TryToLoad(key), 2u) << key;
    }
    EXPECT_EQ(rig.TryToLoad("ab"), 0u);
    EXPECT_EQ(rig.TryToLoad("ab/"), 0u);
  }
}

TEST(Loading, WithoutARootKeyThereIsNothing) {
  LoadedTreeRig rig;
  rig.Create({"a"});
  ASSERT_EQ(rig.Delete(""), 0u);
  EXPECT_EQ(rig.TryToLoad(""), 2u);
  EXPECT_EQ(rig.TryToLoad("a"), 2u);
}

TEST(Loading, AFileWithoutStartNodeHasNoKeys) {
  TempDir dir;
  TernaryKeyTree tree(nullptr);
  ASSERT_EQ(tree.Initialize((dir / "new").c_str()), 0u);
  void* handle = nullptr;
  EXPECT_EQ(tree.LoadKeyTree("", handle), 2u);
  EXPECT_EQ(tree.LoadKeyTree("a", handle), 2u);
  EXPECT_EQ(tree.GetStartString(0), nullptr);
}

TEST(Loading, BeforeInitializeAndAfterFinalizeNothingIsLoaded) {
  TernaryKeyTree tree(nullptr);
  void* handle = nullptr;
  EXPECT_EQ(tree.LoadKeyTree("", handle), 1u);
  EXPECT_EQ(tree.UnloadKeyTree(nullptr), 0u);
  LoadedTreeRig rig;
  rig.Close();
  EXPECT_EQ(rig.loaded.LoadKeyTree("", handle), 1u);
  EXPECT_EQ(handle, nullptr);
}

// ---- damage

TEST(LoadingDamage, AnImpossibleRunEndsTheWay) {
  LoadedTreeRig rig;
  rig.Create({"a", "a/b"});
  PatchFile(rig.path, InString(2, kSegmentLength), "\x11");
  EXPECT_EQ(rig.TryToLoad("a"), 59u);
  EXPECT_EQ(rig.TryToLoad("a/b"), 59u);
  EXPECT_EQ(rig.TryToLoad(""), 59u);
}

TEST(LoadingDamage, BelowAKeyWhatCannotBeReadIsNotThere) {
  LoadedTreeRig rig;
  rig.Create({"a", "a/m", "a/f", "a/t"});  // 300, its lower 400, its higher 500
  PatchFile(rig.path, InString(5, kSegmentLength), "\xFF");
  TernaryHandle* handle = rig.Load("a");
  EXPECT_EQ(rig.Find(handle, "t"), 2u);
  EXPECT_EQ(rig.Find(handle, ""), 0u);
}

TEST(LoadingDamage, LinksThatFormACircleEnd) {
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

TEST(LoadingDamage, ALinkThatLeadsToTheSameNodeTwiceLoadsItOnce) {
  LoadedTreeRig rig;
  rig.Create({"m", "m/b"});
  rig.PatchWord(InString(2, kLo), 0x300);  // its child, too
  for (int round = 0; round < 3; ++round) {
    EXPECT_EQ(rig.TryToLoad("m/b"), 0u);
    TernaryHandle* m = rig.Load("m");
    EXPECT_EQ(rig.Find(m, "b"), 0u);
    EXPECT_EQ(rig.Loaded(), "3 strings, 3 keys");
    EXPECT_EQ(rig.Unload(m), 0u);
  }
}

TEST(LoadingDamage, ANodeOnTheWayIsNotLoadedAgain) {
  LoadedTreeRig rig;
  rig.Create({"m", "m/b"});
  rig.PatchWord(InString(3, kChild), 0x200);
  EXPECT_EQ(rig.TryToLoad("m/b"), 59u);
  EXPECT_EQ(rig.TryToLoad("m/b/m"), 59u);
  TernaryHandle* m = rig.Load("m");
  EXPECT_EQ(rig.Find(m, "b"), 0u);
  EXPECT_EQ(rig.Find(m, "b/m"), 2u);
}

TEST(LoadingDamage, AKeyThatTwoNamesShareIsLoadedOnce) {
  LoadedTreeRig rig;
  rig.Create({"a", "b"});
  rig.PatchWord(InString(3, kKeyLink), 0x200);
  TernaryHandle* a = rig.Load("a");
  EXPECT_EQ(rig.TryToLoad("b"), 59u);
  EXPECT_EQ(rig.Unload(a), 0u);
  EXPECT_EQ(rig.TryToLoad("b"), 0u);
}

// Of the root's key nothing is needed for others.
TEST(LoadingDamage, TheRootsKeyKeepsNoOtherFromBeingLoaded) {
  LoadedTreeRig rig;
  rig.Create({"a"});
  ASSERT_EQ(rig.CreateNumber("", "n", 1), 0u);
  rig.PatchWord(InValue(1, 0), 0x100);
  EXPECT_EQ(rig.TryToLoad("a"), 0u);
  EXPECT_EQ(rig.TryToLoad(""), 59u);
  EXPECT_EQ(rig.TryToLoad("/"), 59u);
}

TEST(LoadingDamage, ValuesThatFormACircleKeepTheKeyFromBeingLoaded) {
  LoadedTreeRig rig;
  rig.Create({"a"});
  ASSERT_EQ(rig.CreateNumber("a", "n", 1), 0u);
  rig.PatchWord(InValue(1, 0), 0x100);
  EXPECT_EQ(rig.TryToLoad("a"), 59u);
}

TEST(LoadingDamage, DataThatCannotBeReadIsZero) {
  LoadedTreeRig rig;
  rig.Create({"a"});
  ASSERT_EQ(rig.CreateData("a", "lost", "abc"), 0u);
  ASSERT_EQ(rig.CreateData("a", "there", "xyz"), 0u);
  rig.PatchWord(InValue(1, 44), 0);
  TernaryHandle* handle = rig.Load("a");
  EXPECT_EQ(LoadedValues(*handle->start->key), "there 78797a, lost 000000");
}

}  // namespace
}  // namespace tamu::registry
