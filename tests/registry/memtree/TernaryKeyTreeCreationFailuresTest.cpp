// Creating keys where the file is full or damaged, where a handle's key is gone, and where somebody
// else has a string locked.
#include <atomic>
#include <thread>

#include "tests/registry/memtree/RootHandle.h"

namespace tamu::registry {
namespace {

class TernaryKeyTreeCreationFailuresTest : public RootHandleTest {
 protected:
  // Closes and opens everything, with a change of the file between.
  void Damage(unsigned int offset, const std::string& hex) {
    isSound = false;
    ASSERT_EQ(status::kOk, rig.Unload(root));
    ASSERT_EQ(status::kOk, rig.loaded.UnloadKeyTree(nullptr));
    PatchFile(rig.path, offset, BytesOfHex(hex));
    root = rig.Load("");
  }
  // Leaves one free slot of a kind, in the last table that it can have.
  void FillUp(NodeKind kind) {
    TernaryFile& store = *rig.loaded.File();
    while (store.Descriptor(kind).tableCount < 21) {
      ASSERT_EQ(status::kOk, store.ExpandFile(&store.Descriptor(kind), RecordSizeOf(kind), 2));
    }
  }
  // Waits until so many threads wait for strings that are locked through the handle.
  static void AwaitWaiters(TernaryHandle* handle, int count) {
    for (bool wait = false; !wait; std::this_thread::yield()) {
      PCMutexGuard guard(*handle->treeLock);
      wait = handle->waiterCount == count;
    }
  }
  // What CreateKey does for a name below a string whose level is empty, under a lock that is held.
  void HangByHand(TernaryString* owner, const char* name) {
    TernaryKey* key = nullptr;
    TernaryString* first = nullptr;
    ASSERT_EQ(status::kOk, rig.loaded.CreateKeyNode(0, kAdmin, 15, 0, false, key));
    ASSERT_EQ(status::kOk, rig.loaded.CreateStringNode(0, name, first, key));
    PCMutexGuard guard(*root->treeLock);
    owner->SetDirectory(first);
    ASSERT_EQ(status::kOk, rig.loaded.File()->WriteNode(0, owner->id, &owner->node, false));
  }
};

// ---- no room

TEST_F(TernaryKeyTreeCreationFailuresTest, WithoutRoomForAKeyNothingIsChanged) {
  FillUp(NodeKind::kKey);
  CreateAll({"abc"});
  const std::string before = rig.Contents();
  for (const char* path : {"abd", "abc/d", "abcd"}) EXPECT_EQ(status::kLimit, Create(path)) << path;
  EXPECT_TRUE(rig.Contents() == before);
  EXPECT_EQ("2 strings, 2 keys", rig.Loaded());
}

TEST_F(TernaryKeyTreeCreationFailuresTest, WithoutRoomForAKeyTheCutStays) {
  FillUp(NodeKind::kKey);
  CreateAll({"abc"});
  EXPECT_EQ(status::kLimit, Create("ab"));
  EXPECT_EQ("3 strings, 2 keys", rig.Loaded());
  EXPECT_EQ(rig.StringNode(3), Packed("00010062 8*0 00020000 8*0 61 15*0"));
}

TEST_F(TernaryKeyTreeCreationFailuresTest, WithoutRoomForACutNothingIsChanged) {
  FillUp(NodeKind::kString);
  CreateAll({"abc"});
  const std::string before = rig.Contents();
  for (const char* path : {"ab", "axyz", "xyz"}) EXPECT_EQ(status::kLimit, Create(path)) << path;
  EXPECT_TRUE(rig.Contents() == before);
}

TEST_F(TernaryKeyTreeCreationFailuresTest, WithoutRoomForANameAllThatWasTakenIsGivenBack) {
  FillUp(NodeKind::kString);
  const SlotCounts before = CountSlots(rig.path);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(status::kLimit, Create("abcdefghijklmnopqr"));
  const SlotCounts after = CountSlots(rig.path);
  EXPECT_EQ(after.strings.free, before.strings.free);
  EXPECT_EQ(after.keys.free, before.keys.free);
  EXPECT_EQ("1 strings, 1 keys", rig.Loaded());
  CreateAll({"abcdefghijklmnopq"});
  EXPECT_EQ(status::kLimit, Create("b"));
}

// ---- damage

// A segment of 17 characters.
TEST_F(TernaryKeyTreeCreationFailuresTest, WhatCouldNotBeLoadedIsNotCreatedAgain) {
  CreateAll({"m", "a", "z", "mm", "m/x"});
  struct {
    unsigned int slot;
    std::vector<const char*> paths;
  } const cases[] = {{3, {"a", "abc", "a/b"}},
                     {4, {"z", "zz"}},
                     {5, {"mm", "mn", "mmm"}},
                     {6, {"m/x", "m/y", "m/x/y"}}};
  for (const auto& each : cases) {
    const unsigned int segmentLength = kStringArea + 40 * each.slot + 1;
    Damage(segmentLength, "11");
    const std::string before = rig.Contents();
    for (const char* path : each.paths) EXPECT_EQ(status::kNoRight, Create(path)) << path;
    EXPECT_TRUE(rig.Contents() == before);
    Damage(segmentLength, "00");
  }
  EXPECT_EQ(status::kOk, Create("m/y"));
  isSound = true;
}

TEST_F(TernaryKeyTreeCreationFailuresTest, AKeyThatCouldNotBeLoadedIsNotReplaced) {
  CreateAll({"a"});
  Damage(kStringArea + 40 * 2 + 20, "00c80000");
  const std::string before = rig.Contents();
  EXPECT_EQ(status::kNotFound, rig.Find(root, "a"));
  EXPECT_EQ(status::kNoRight, Create("a"));
  EXPECT_EQ(status::kNoRight, Create("a/b"));
  EXPECT_TRUE(rig.Contents() == before);
}

// Two links lead to one string, which is loaded for one of them.
TEST_F(TernaryKeyTreeCreationFailuresTest, AStringIsCutWhereItIsLoaded) {
  CreateAll({"m", "axyz"});
  Damage(kStringArea + 40 * 2 + 12, "00030000");  // `equal` of "m" leads to the string of "axyz"
  EXPECT_EQ(status::kOk, Create("a123"));
  EXPECT_EQ(rig.StringNode(2), Packed("0000106d 00040000 4*0 00030000 4*0 00020000 16*0"));
  EXPECT_EQ(rig.StringNode(4), Packed("00010078 00050000 4*0 00030000 8*0 61 15*0"));
  const TernaryString* m = root->start->directory;
  EXPECT_EQ(0x400u, m->lower->id);
  EXPECT_EQ(0x300u, m->lower->equal->id);
  EXPECT_EQ(nullptr, m->equal);
  EXPECT_EQ(status::kOk, rig.Find(root, "a123"));
}

// ---- handles

TEST_F(TernaryKeyTreeCreationFailuresTest, BelowAHandleWhoseKeyIsGoneNothingIsCreated) {
  CreateAll({"a", "a/b"});
  TernaryHandle* handle = rig.Load("a");
  ASSERT_EQ(status::kOk, rig.loaded.DeleteKey(kAdmin, root, "a"));
  const std::string before = rig.Contents();
  for (const char* path : {"", "b", "c", "/"})
    EXPECT_EQ(status::kNoRight, CreateThrough(handle, path)) << path;
  EXPECT_EQ(status::kNoRight, rig.loaded.CreateKey(kAdmin, handle, nullptr, 0, false));
  EXPECT_TRUE(rig.Contents() == before);
  CreateAll({"a"});
  EXPECT_EQ(status::kOk, CreateThrough(handle, "c")) << "the name has its string again";
  EXPECT_EQ("a a/c", Stored());
}

TEST_F(TernaryKeyTreeCreationFailuresTest, AnInnerHandleThatIsClosedLeavesTheKeyToTheOuter) {
  CreateAll({"a"});
  ASSERT_EQ(status::kOk, rig.loaded.CreateValue(kAdmin, root, "a", "n", 5, true));
  TernaryHandle* inner = rig.Load("a");
  ASSERT_EQ(status::kOk, rig.Unload(inner));
  const std::string before = rig.Contents();
  EXPECT_EQ(status::kExists, Create("a"));
  EXPECT_TRUE(rig.Contents() == before);
  EXPECT_EQ(status::kOk, Create("a/b"));
}

TEST_F(TernaryKeyTreeCreationFailuresTest, AfterTheEndNothingIsCreated) {
  rig.Close();
  isSound = false;
  TernaryKey* key = nullptr;
  TernaryString* string = nullptr;
  EXPECT_EQ(status::kNoRight, rig.loaded.CreateKey(kAdmin, nullptr, "a", 0, false));
  EXPECT_EQ(status::kNoRight, rig.loaded.CreateKey(kAdmin, root, "a", 0, false))
      << "the handle is not looked at";
  EXPECT_EQ(status::kNoRight, rig.loaded.CreateRootKey());
  EXPECT_EQ(status::kNoRight, rig.loaded.CreateKeyNode(0, 0, 0, 0, false, key));
  EXPECT_EQ(status::kNoRight, rig.loaded.CreateStringNode(0, "a", string, nullptr));
  EXPECT_EQ(status::kNoRight, rig.loaded.SplitString(0, nullptr, 0, 0, nullptr, string));
  EXPECT_EQ(status::kNoRight, rig.loaded.AddKey(0, nullptr, 0, false));
}

// ---- a string that somebody has locked by hand

// What is there already cannot be seen until then.
TEST_F(TernaryKeyTreeCreationFailuresTest, WhoCreatesOnALockedLevelWaits) {
  CreateAll({"a", "a/b"});
  TernaryString* a = root->start->directory;
  ASSERT_EQ(status::kOk, a->Lock(root));
  const char* const paths[] = {"a/c", "a/b", "a/b/x", "a/d/x"};
  unsigned int results[4] = {77, 77, 77, 77};
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&, i] { results[i] = Create(paths[i]); });
    AwaitWaiters(root, i + 1);
  }
  EXPECT_EQ(status::kOk, Create("x")) << "on another level";
  EXPECT_EQ(status::kExists, Create("a"));
  EXPECT_EQ("a a/b x", Stored());
  ASSERT_EQ(status::kOk, a->Unlock());
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(0u, results[0]);
  EXPECT_EQ(17u, results[1]);
  EXPECT_EQ(0u, results[2]);
  EXPECT_EQ(22u, results[3]);
  EXPECT_EQ("a a/b a/b/x a/c x", Stored());
}

// The rights on the locked level are not asked for by a key further down.
TEST_F(TernaryKeyTreeCreationFailuresTest, WhoMayCreateBelowALockedLevelWaitsForIt) {
  CreateAll({"a"});
  ASSERT_EQ(status::kOk, rig.loaded.SetKeyPermission(kAdmin, root, "a", 0x4F));
  ASSERT_EQ(status::kOk, rig.loaded.CreateKey(kUser, root, "a/own", 0, false));
  ASSERT_EQ(status::kOk, rig.loaded.SetKeyPermission(kAdmin, root, "a", 0x0F));
  TernaryString* a = root->start->directory;
  ASSERT_EQ(status::kOk, a->Lock(root));
  unsigned int result = 77;
  std::atomic<bool> done{false};
  std::thread thread([&] {
    result = rig.loaded.CreateKey(kUser, root, "a/own/x", 0, false);
    done = true;
  });
  for (bool goesOn = false; !goesOn; std::this_thread::yield()) {
    PCMutexGuard guard(*root->treeLock);
    goesOn = done || root->waiterCount == 1;
  }
  ASSERT_EQ(status::kOk, a->Unlock());
  thread.join();
  EXPECT_EQ(0u, result);
}

// Who waits for an empty level finds what was hung there meanwhile.
TEST_F(TernaryKeyTreeCreationFailuresTest, AKeyIsAddedBesideOneThatCameWhileItsCreatorWaited) {
  CreateAll({"a"});
  TernaryHandle* other = rig.Load("a");
  TernaryString* a = root->start->directory;
  for (TernaryHandle* through : {root, other}) {
    ASSERT_EQ(status::kOk, rig.loaded.DeleteKey(kAdmin, root, "a"));
    CreateAll({"a"});
    const std::string prefix = through == root ? "a/" : "";
    ASSERT_EQ(status::kOk, a->Lock(root));
    unsigned int result = 77;
    std::thread thread([&] { result = CreateThrough(through, prefix + "theirs"); });
    AwaitWaiters(root, 1);
    HangByHand(a, "own");
    ASSERT_EQ(status::kOk, a->Unlock());
    thread.join();
    EXPECT_EQ(0u, result);
    EXPECT_EQ("a a/own a/theirs", Stored());
    EXPECT_FALSE(a->isBusy());
  }
}

TEST_F(TernaryKeyTreeCreationFailuresTest, AKeyThatCameWhileItsCreatorWaitedIsThere) {
  CreateAll({"a"});
  TernaryString* a = root->start->directory;
  ASSERT_EQ(status::kOk, a->Lock(root));
  unsigned int results[2] = {77, 77};
  std::thread same([&] { results[0] = Create("a/own"); });
  std::thread below([&] { results[1] = Create("a/own/x"); });
  AwaitWaiters(root, 2);
  HangByHand(a, "own");
  ASSERT_EQ(status::kOk, a->Unlock());
  same.join();
  below.join();
  EXPECT_EQ(17u, results[0]);
  EXPECT_EQ(0u, results[1]);
  EXPECT_EQ("a a/own a/own/x", Stored());
}

// Neither the key nor its rights are what they were before the wait.
TEST_F(TernaryKeyTreeCreationFailuresTest, TheRightsAreLookedAtAgainAfterAWait) {
  ASSERT_EQ(status::kOk, rig.loaded.CreateKey(kUser, root, "a", 0, false));
  TernaryString* a = root->start->directory;
  ASSERT_EQ(status::kOk, a->Lock(root));
  unsigned int result = 77;
  std::thread thread([&] { result = rig.loaded.CreateKey(kUser, root, "a/b", 0, false); });
  AwaitWaiters(root, 1);
  ASSERT_EQ(status::kOk, rig.loaded.SetKeyPermission(kAdmin, root, "a", 0x0B));
  const std::string before = rig.Contents();
  ASSERT_EQ(status::kOk, a->Unlock());
  thread.join();
  EXPECT_EQ(1u, result);
  EXPECT_TRUE(rig.Contents() == before);
}

}  // namespace
}  // namespace tamu::registry
