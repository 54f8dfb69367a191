// TernaryKeyTreeUnloadingTest: what goes and what stays.
#include <random>
#include <thread>

#include "tests/registry/filetree/SmallStack.h"
#include "tests/registry/memtree/LoadedTreeRig.h"

namespace tamu::registry {
namespace {

class TernaryKeyTreeUnloadingTest : public ::testing::Test {
 protected:
  TernaryKeyTreeUnloadingTest() { rig.Create({"a", "a/b", "a/b/c", "a/d", "x"}); }
  LoadedTreeRig rig;
};

TEST_F(TernaryKeyTreeUnloadingTest, TheLastHandleTakesTheSubtreeAlong) {
  TernaryHandle* handle = rig.Load("a");
  EXPECT_EQ("5 strings, 5 keys", rig.Loaded());
  EXPECT_EQ(status::kOk, rig.Unload(handle));
  EXPECT_EQ("2 strings, 1 keys", rig.Loaded());  // the string of "a" stays on the way
  EXPECT_EQ(status::kOk, rig.TryToLoad("a/d"));
  EXPECT_EQ(status::kOk, rig.loaded.UnloadKeyTree(nullptr));
  EXPECT_EQ("1 strings, 1 keys", rig.Loaded());
}

TEST_F(TernaryKeyTreeUnloadingTest, TheRootGoesWhole) {
  TernaryHandle* handle = rig.Load("");
  EXPECT_EQ("6 strings, 6 keys", rig.Loaded());
  EXPECT_EQ(status::kOk, rig.Unload(handle));
  EXPECT_EQ("1 strings, 1 keys", rig.Loaded());
}

TEST_F(TernaryKeyTreeUnloadingTest, OfTwoHandlesOnAKeyEitherMayGoFirst) {
  for (const char* key : {"a", "a/b", ""}) {
    for (bool firstGoesFirst : {true, false}) {
      TernaryHandle* one = rig.Load(key);
      TernaryHandle* two = rig.Load(key);
      const std::string all = rig.Loaded();
      TernaryHandle* stays = firstGoesFirst ? two : one;
      EXPECT_EQ(0u, rig.Unload(firstGoesFirst ? one : two));
      EXPECT_EQ(rig.Loaded(), all);
      EXPECT_EQ(status::kOk, rig.Find(stays, ""));
      EXPECT_EQ(1u, stays->start->loadCount);
      EXPECT_EQ(status::kOk, rig.Unload(stays));
    }
  }
}

// The outer handle would take what is missing for not being there.
TEST_F(TernaryKeyTreeUnloadingTest, AnInnerHandleLeavesWhatAnOuterOneNeeds) {
  TernaryHandle* outer = rig.Load("a");
  TernaryHandle* inner = rig.Load("a/b");
  TernaryHandle* root = rig.Load("");
  const std::string all = rig.Loaded();
  EXPECT_EQ(status::kOk, rig.Unload(inner));
  EXPECT_EQ(status::kOk, rig.Unload(outer));
  EXPECT_EQ(rig.Loaded(), all);
  for (const char* key : {"a", "a/b", "a/b/c", "a/d"})
    EXPECT_EQ(status::kOk, rig.Find(root, key)) << key;
}

TEST_F(TernaryKeyTreeUnloadingTest, AKeyWhoseNameOnlyBeginsAlikeIsNotBelow) {
  rig.Create({"ab", "ab/x"});
  rig.Load("a");
  TernaryHandle* other = rig.Load("ab");
  const std::string all = rig.Loaded();
  EXPECT_EQ(status::kOk, rig.Unload(other));
  EXPECT_NE(rig.Loaded(), all);
}

TEST_F(TernaryKeyTreeUnloadingTest, AnOuterHandleLeavesWhatAnInnerOneNeeds) {
  TernaryHandle* outer = rig.Load("a");
  TernaryHandle* inner = rig.Load("a/b");
  TernaryKey* c = rig.KeyOf(inner, "c");
  EXPECT_EQ(status::kOk, rig.Unload(outer));
  EXPECT_EQ(status::kOk, rig.Find(inner, ""));
  EXPECT_EQ(rig.KeyOf(inner, "c"), c);
  EXPECT_EQ("5 strings, 4 keys", rig.Loaded());  // "a" has no key, its neighbour "d" hangs on "b"
  TernaryHandle* again = rig.Load("a");
  EXPECT_EQ(rig.KeyOf(again, "b/c"), c) << "there is never a second copy";
  EXPECT_EQ(status::kOk, rig.Find(again, "d"));
}

TEST_F(TernaryKeyTreeUnloadingTest, TheRootStaysWhileAnInnerHandleNeedsIt) {
  TernaryHandle* root = rig.Load("");
  TernaryHandle* inner = rig.Load("a/b");
  TernaryString* rootString = rig.Root();
  TernaryKey* c = rig.KeyOf(inner, "c");
  EXPECT_EQ(status::kOk, rig.Unload(root));
  EXPECT_EQ(rig.Root(), rootString);
  EXPECT_NE(nullptr, rootString->key);
  root = rig.Load("");
  EXPECT_EQ(rig.KeyOf(root, "a/b/c"), c);
  EXPECT_EQ(status::kOk, rig.Find(root, "x"));
  EXPECT_EQ(status::kOk, rig.Unload(inner));
  EXPECT_EQ(status::kOk, rig.Find(root, "a/b/c"));
}

TEST_F(TernaryKeyTreeUnloadingTest, WithoutAHandleOnlyWhatNobodyNeedsGoes) {
  TernaryHandle* inner = rig.Load("a/b");
  EXPECT_EQ(status::kOk, rig.loaded.UnloadKeyTree(nullptr));
  EXPECT_EQ(status::kOk, rig.Find(inner, "c"));
  EXPECT_EQ(1u, inner->start->loadCount);
  TernaryHandle* root = rig.Load("");
  const std::string all = rig.Loaded();
  EXPECT_EQ(status::kOk, rig.loaded.UnloadKeyTree(nullptr));
  EXPECT_EQ(status::kOk, rig.loaded.UnloadKeyTree(nullptr));
  EXPECT_EQ(rig.Loaded(), all);
  EXPECT_EQ(1u, root->start->loadCount);
}

TEST_F(TernaryKeyTreeUnloadingTest, AHandleWithALockedStringIsBusy) {
  TernaryHandle* handle = rig.Load("a");
  ASSERT_EQ(status::kOk, handle->start->Lock(handle));
  EXPECT_EQ(status::kBusy, rig.Unload(handle));
  EXPECT_EQ(1u, handle->start->loadCount);
  ASSERT_EQ(status::kOk, handle->start->Unlock());
  EXPECT_EQ(status::kOk, rig.Unload(handle));
}

TEST_F(TernaryKeyTreeUnloadingTest, AHandleThatSomebodyWaitsWithIsBusy) {
  TernaryHandle* one = rig.Load("a");
  TernaryHandle* two = rig.Load("a");
  TernaryString* a = one->start;
  ASSERT_EQ(status::kOk, a->Lock(one));
  std::thread other([&] {
    a->Lock(two);
    a->Unlock();
  });
  for (bool waits = false; !waits; std::this_thread::yield()) {
    PCMutexGuard guard(*one->treeLock);
    waits = one->waiterCount == 1;
  }
  EXPECT_EQ(status::kBusy, rig.Unload(two));
  EXPECT_EQ(status::kBusy, rig.Unload(one));
  ASSERT_EQ(status::kOk, a->Unlock());
  other.join();
  EXPECT_EQ(status::kOk, rig.Unload(two));
  EXPECT_EQ(status::kOk, rig.Unload(one));
}

TEST_F(TernaryKeyTreeUnloadingTest, ALockedStringStaysWithAllBelowIt) {
  TernaryHandle* handle = rig.Load("a");
  TernaryHandle* other = rig.Load("x");
  TernaryString* b = nullptr;
  TernaryKey* key = nullptr;
  TernaryString* owner = nullptr;
  ASSERT_EQ(status::kOk, rig.loaded.FindKey(handle, "b", b, key, owner));
  ASSERT_EQ(status::kOk, b->Lock(other));
  EXPECT_EQ(status::kOk, rig.Unload(handle));
  ASSERT_EQ(status::kOk, b->Unlock());
  EXPECT_NE(nullptr, b->directory);
  handle = rig.Load("a");
  EXPECT_EQ(status::kOk, rig.Find(handle, "b/c"));
  EXPECT_EQ(rig.KeyOf(handle, "b"), key);
}

TEST_F(TernaryKeyTreeUnloadingTest, AKeyWithTheRootFlagIsNotTheRoot) {
  PatchFile(rig.path, kKeyArea + 24 * 2 + 7, "\x02");
  TernaryHandle* handle = rig.Load("a");
  ASSERT_TRUE(handle->start->key->node.isRoot());
  EXPECT_EQ(status::kOk, rig.Unload(handle));
  EXPECT_EQ("2 strings, 1 keys", rig.Loaded());
  EXPECT_EQ(status::kOk, rig.TryToLoad("a/b/c"));
}

TEST_F(TernaryKeyTreeUnloadingTest, FinalizeFreesHandlesThatWereLeftOpen) {
  rig.Load("");
  rig.Load("a");
  TernaryHandle* handle = rig.Load("a/b");
  ASSERT_EQ(status::kOk, handle->start->Lock(handle));
  rig.Close();  // the leak checker tells what is forgotten
}

TEST_F(TernaryKeyTreeUnloadingTest, AgainAndAgainTheSameIsLoaded) {
  for (int round = 0; round < 100; ++round) {
    TernaryHandle* a = rig.Load("a");
    TernaryHandle* root = rig.Load("");
    EXPECT_EQ(0u, rig.Unload(round % 2 == 0 ? a : root));
    EXPECT_EQ(0u, rig.Unload(round % 2 == 0 ? root : a));
    EXPECT_EQ(status::kOk, rig.loaded.UnloadKeyTree(nullptr));
    EXPECT_EQ("1 strings, 1 keys", rig.Loaded());
  }
}

// True when `path` names a key below `ancestor`.
bool IsBelow(const std::string& path, const std::string& ancestor) {
  if (ancestor.empty()) return !path.empty();
  return path.compare(0, ancestor.size() + 1, ancestor + '/') == 0;
}

// Whatever is opened and closed in whatever order, a handle has all that is below its key, and
// knows whether another one starts above.
TEST(RandomUnloading, EveryHandleHasWhatIsBelowIt) {
  const std::vector<std::string> keys = {"",    "a",     "a/b", "a/b/c", "a/b/d", "a/e",
                                         "a/f", "a/f/g", "x",   "x/y",   "x/y/z", "xa"};
  for (unsigned int seed = 1; seed <= 20; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    LoadedTreeRig rig;
    for (size_t i = 1; i < keys.size(); ++i) rig.Create({keys[i].c_str()});
    std::mt19937 random(seed);
    struct Open {
      std::string path;
      TernaryHandle* handle;
    };
    std::vector<Open> open;
    for (int step = 0; step < 300 && !::testing::Test::HasFailure(); ++step) {
      const bool closes = !open.empty() && random() % 16 < open.size();
      if (closes) {
        const size_t at = random() % open.size();
        EXPECT_EQ(status::kOk, rig.Unload(open[at].handle));
        open.erase(open.begin() + static_cast<std::ptrdiff_t>(at));
      } else {
        const std::string& path = keys[random() % keys.size()];
        open.push_back({path, rig.Load(path.c_str())});
      }
      for (const Open& each : open) {
        bool isBelow = false;
        for (const Open& other : open) isBelow = isBelow || IsBelow(each.path, other.path);
        EXPECT_EQ(each.handle->start->isBelowHandle, isBelow) << each.path;
        for (const std::string& key : keys) {
          if (key != each.path && !IsBelow(key, each.path)) continue;
          const size_t skipped = each.path.empty() ? 0 : each.path.size();
          EXPECT_EQ(status::kOk, rig.Find(each.handle, key.c_str() + skipped))
              << each.path << ", " << key;
        }
      }
    }
    for (const Open& each : open) EXPECT_EQ(status::kOk, rig.Unload(each.handle));
    EXPECT_EQ(status::kOk, rig.loaded.UnloadKeyTree(nullptr));
    EXPECT_EQ("1 strings, 1 keys", rig.Loaded());
  }
}

// Somebody has locked a key between two handles.
TEST_F(TernaryKeyTreeUnloadingTest, AHandleBelowALockedKeyIsNoticedToo) {
  TernaryHandle* inner = rig.Load("a/b/c");
  TernaryHandle* middle = rig.Load("a/b");
  ASSERT_EQ(status::kOk, rig.Unload(middle));
  TernaryHandle* other = rig.Load("x");
  TernaryString* b = nullptr;
  TernaryKey* key = nullptr;
  TernaryString* owner = nullptr;
  TernaryHandle* root = rig.Load("");
  ASSERT_EQ(status::kOk, rig.loaded.FindKey(root, "a/b", b, key, owner));
  ASSERT_EQ(status::kOk, b->Lock(other));
  EXPECT_EQ(status::kOk, rig.Unload(root));
  EXPECT_FALSE(inner->start->isBelowHandle);
  root = rig.Load("");
  EXPECT_TRUE(inner->start->isBelowHandle);
  EXPECT_EQ(nullptr, b->directory) << "still put away";
  ASSERT_EQ(status::kOk, b->Unlock());
  EXPECT_EQ(status::kOk, rig.Find(root, "a/b/c"));
  EXPECT_EQ(status::kOk, rig.Unload(root));
  EXPECT_EQ(status::kOk, rig.Find(inner, ""));
}

// A chain of 10,000 names below each other, on a small stack.
TEST(DeepUnloading, ADeepTreeIsLoadedAndUnloaded) {
  LoadedTreeRig rig;
  rig.Create({"top"});
  constexpr unsigned int kLevels = 10000;
  std::string backup(1, '\x01');
  NameLinks below;
  below.child = kSome;
  for (unsigned int i = 1; i < kLevels; ++i) backup += NameRecord("a", kSome, below);
  backup += NameRecord("a", kSome);
  for (unsigned int i = 0; i <= kLevels; ++i) backup += KeyRecord(0);
  PutFile(rig.dir / "backup", backup);
  ASSERT_EQ(status::kOk,
            rig.file->RestoreKeyTree(kAdmin, nullptr, "top", (rig.dir / "backup").c_str()));
  std::string path = "top";
  for (unsigned int i = 0; i < kLevels; ++i) path += "/a";
  OnSmallStack([&] {
    EXPECT_EQ(status::kOk, rig.TryToLoad(path.c_str()));
    EXPECT_EQ(status::kOk, rig.loaded.UnloadKeyTree(nullptr));
    TernaryHandle* handle = rig.Load("");
    EXPECT_EQ(status::kOk, rig.Find(handle, path.c_str()));
    EXPECT_EQ("10002 strings, 10002 keys", rig.Loaded());
    EXPECT_EQ(status::kOk, rig.Unload(handle));
    EXPECT_EQ("1 strings, 1 keys", rig.Loaded());
    rig.Load("top");
    rig.Close();
  });
}

}  // namespace
}  // namespace tamu::registry
