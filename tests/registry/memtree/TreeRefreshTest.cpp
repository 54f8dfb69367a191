// Loaded keys follow a file that somebody else has changed.
#include <random>

#include "registry/memtree/TreeRefresh.h"
#include "tests/registry/memtree/LoadedTreeRig.h"

namespace tamu::registry {
namespace {

// What both trees tell of a key must be the same: all keys below it, and of each its values, its
// rights and its default value.
std::string Described(RegistryInterface& tree, void* handle, const std::string& prefix) {
  const auto at = [&](const std::string& path) {
    return prefix.empty() || path.empty() ? prefix + path : prefix + "/" + path;
  };
  NameList keys(4096);
  EXPECT_EQ(status::kOk, tree.ListKeys(kAdmin, handle, at("").c_str(), 0, &keys, 0));
  std::vector<std::string> paths = {""};
  for (unsigned int i = 0; i < keys.Count(); ++i) paths.push_back(keys.GetName(i, nullptr));
  std::sort(paths.begin(), paths.end());
  std::string text;
  for (const std::string& path : paths) {
    unsigned char rights = 0;
    unsigned long long number = 0;
    EXPECT_EQ(status::kOk, tree.GetKeyPermission(kAdmin, handle, at(path).c_str(), &rights))
        << path;
    const unsigned int isSet = tree.GetDefaultValue(kAdmin, handle, at(path).c_str(), &number);
    text += path + " " + std::to_string(rights) + " " + std::to_string(isSet) + " " +
            std::to_string(number) + ":";
    NameList names(4096);
    tree.ListValues(kAdmin, handle, at(path).c_str(), 0, &names);
    for (unsigned int i = 0; i < names.Count(); ++i) {
      Value value = {kValueTypeAny, 0, nullptr};
      EXPECT_EQ(status::kOk,
                tree.GetValue(kAdmin, handle, at(path).c_str(), names.GetName(i, nullptr), &value));
      text += std::string(" ") + names.GetName(i, nullptr) + "=" +
              std::string(static_cast<char*>(value.data), value.size);
      FreeValueData(value);
    }
    text += "\n";
  }
  return text;
}

class TreeRefreshTest : public ::testing::Test {
 protected:
  TreeRefreshTest() {
    rig.Create({"a", "a/b", "a/b/c", "a/net", "x"});
    EXPECT_EQ(status::kOk, rig.CreateData("a/b", "text", "old"));
  }
  unsigned int SetText(const char* key, const char* name, std::string text) {
    Value value = {1, static_cast<unsigned int>(text.size()), text.data()};
    return rig.file->SetValue(kAdmin, nullptr, key, name, &value);
  }
  std::string ValuesOf(TernaryHandle* handle, const char* key) {
    return LoadedValues(*rig.KeyOf(handle, key));
  }
  static void Note(ChangeList& list, ChangeKind kind, const char* path, const char* name = "") {
    ASSERT_EQ(0u, list.Add(kind, nullptr, path, name));
  }
  void ExpectLikeTheFile(TernaryHandle* handle, const char* key) {
    EXPECT_EQ(Described(rig.loaded, handle, ""), Described(*rig.file, nullptr, key)) << key;
  }

  // Changes one of kKeys without a handle, and notes it.
  void ChangeOne(std::mt19937& random, unsigned int round, ChangeList& changes) {
    const auto below = [&](unsigned int n) { return static_cast<unsigned int>(random() % n); };
    const char* key = kKeys[below(std::size(kKeys))];
    const std::string name(1, static_cast<char>('p' + below(3)));
    switch (below(7)) {
      case 0:
        rig.file->CreateKey(kAdmin, nullptr, key, 0, false);
        Note(changes, ChangeKind::kKeyCreated, key);
        break;
      case 1:
        if (below(4) != 0) break;
        rig.file->DeleteKey(kAdmin, nullptr, key);
        Note(changes, ChangeKind::kKeyDeleted, key);
        break;
      case 2:
        rig.CreateData(key, name.c_str(), Pattern(1 + below(200)));
        Note(changes, ChangeKind::kValueCreated, key, name.c_str());
        break;
      case 3:
        SetText(key, name.c_str(), Pattern(1 + below(200)));
        Note(changes, ChangeKind::kValueSet, key, name.c_str());
        break;
      case 4:
        rig.file->DeleteValue(kAdmin, nullptr, key, name.c_str());
        Note(changes, ChangeKind::kValueDeleted, key, name.c_str());
        break;
      case 5:
        rig.file->SetDefaultValue(kAdmin, nullptr, key, round, false);
        Note(changes, ChangeKind::kDefaultChanged, key);
        break;
      default:
        rig.file->SetKeyPermission(kAdmin, nullptr, key,
                                   static_cast<unsigned char>(below(16) * 16 + 15));
        Note(changes, ChangeKind::kRightsChanged, key);
        break;
    }
  }

  static constexpr const char* kKeys[] = {"a",     "a/b",   "a/b/c", "a/net", "a/netx", "a/nq",
                                          "a/b/d", "a/b/e", "x",     "x/y",   "x/yz",   "x/y/z"};
  LoadedTreeRig rig;
};

TEST_F(TreeRefreshTest, EverythingIsSeenThroughHandlesThatWereOpen) {
  TernaryHandle* handle = rig.Load("a");
  ASSERT_EQ(status::kOk, SetText("a/b", "text", "new"));
  rig.Create({"a/b/d", "a/ne"});  // cuts a name that is loaded
  ASSERT_EQ(status::kOk, rig.Delete("a/b/c"));
  ASSERT_EQ(status::kOk, rig.CreateData("a/net", "other", "1"));
  rig.loaded.SetBehind();
  EXPECT_EQ(status::kOk, rig.Find(handle, "b/d"));
  EXPECT_EQ(status::kNotFound, rig.Find(handle, "b/c"));
  ExpectLikeTheFile(handle, "a");
}

TEST_F(TreeRefreshTest, UntilSomebodyTellsThatTheFileHasChangedMemoryIsAsItWas) {
  TernaryHandle* handle = rig.Load("a");
  ASSERT_EQ(status::kOk, SetText("a/b", "text", "new"));
  EXPECT_EQ(ValuesOf(handle, "b"), "text " + HexOf("old"));
}

TEST_F(TreeRefreshTest, AHandleWhoseKeyIsGoneLeadsNowhere) {
  TernaryHandle* outer = rig.Load("a");
  TernaryHandle* inner = rig.Load("a/b");
  ASSERT_EQ(status::kOk, rig.Delete("a/b"));
  rig.loaded.SetBehind();
  EXPECT_EQ(status::kOk, rig.Find(outer, "net"));
  EXPECT_EQ(status::kBadArgument, rig.Find(inner, ""));
  EXPECT_EQ(status::kBadArgument, rig.loaded.CreateKey(kAdmin, inner, "z", 0, false));
  EXPECT_EQ(status::kBadArgument, rig.loaded.DeleteKey(kAdmin, inner, ""));
  // Also when there is such a key again.
  rig.Create({"a/b"});
  rig.loaded.SetBehind();
  EXPECT_EQ(status::kOk, rig.Find(outer, "b"));
  EXPECT_EQ(status::kBadArgument, rig.Find(inner, ""));
  EXPECT_EQ(status::kOk, rig.Unload(inner));
  EXPECT_EQ(status::kOk, rig.Unload(outer));
  EXPECT_EQ(0u, rig.loaded.UnloadAll());
}

TEST_F(TreeRefreshTest, AHandleWhoseKeyWasDeletedThroughAnotherLeadsNowhere) {
  TernaryHandle* outer = rig.Load("a");
  TernaryHandle* inner = rig.Load("a/b/c");
  ASSERT_EQ(status::kOk, rig.loaded.DeleteKey(kAdmin, outer, "b"));
  EXPECT_EQ(status::kOk, rig.Find(inner, ""));
  rig.loaded.SetBehind();
  EXPECT_EQ(status::kBadArgument, rig.Find(inner, ""));
  EXPECT_EQ(status::kOk, rig.Unload(inner));
}

TEST_F(TreeRefreshTest, HandlesNeedWhatTheyHaveNeeded) {
  TernaryHandle* inner = rig.Load("a/b");
  TernaryHandle* outer = rig.Load("a");
  TernaryHandle* again = rig.Load("a/b");
  rig.Create({"a/b/new"});
  rig.loaded.SetBehind();
  EXPECT_EQ(status::kOk, rig.Find(inner, "new"));
  EXPECT_EQ(inner->start, again->start);
  EXPECT_EQ(2u, inner->start->loadCount);
  EXPECT_EQ("6 strings, 6 keys", rig.Loaded());
  EXPECT_EQ(status::kOk, rig.Unload(inner));
  EXPECT_EQ(status::kOk, rig.Find(outer, "b/new"));
  EXPECT_EQ(status::kOk, rig.Unload(outer));
  EXPECT_EQ(status::kOk, rig.Find(again, "new"));
  EXPECT_EQ(status::kOk, rig.Unload(again));
  EXPECT_EQ(0u, rig.loaded.UnloadAll());
}

TEST_F(TreeRefreshTest, WhatIsCreatedThroughAHandleAfterwardsIsSound) {
  TernaryHandle* handle = rig.Load("a");
  rig.Create({"a/ne", "a/nq"});
  rig.loaded.SetBehind();
  EXPECT_EQ(status::kOk, rig.loaded.CreateKey(kAdmin, handle, "nz", 0, false));
  EXPECT_EQ(status::kOk, rig.loaded.CreateKey(kAdmin, handle, "b/c/d", 0, false));
  ExpectLikeTheFile(handle, "a");
}

TEST_F(TreeRefreshTest, AStringThatIsLockedIsWaitedFor) {
  TernaryHandle* handle = rig.Load("a");
  TernaryHandle* other = rig.Load("x");
  handle->start->Lock(handle);
  ASSERT_EQ(status::kOk, rig.Delete("a/b"));
  rig.loaded.SetBehind();
  TernaryString* string = nullptr;
  TernaryKey* key = nullptr;
  TernaryString* owner = nullptr;
  EXPECT_EQ(status::kBusy, rig.loaded.FindKey(other, "", string, key, owner));
  handle->start->Unlock();
  EXPECT_EQ(status::kOk, rig.loaded.FindKey(other, "", string, key, owner));
  EXPECT_EQ(status::kNotFound, rig.Find(handle, "b"));
}

TEST_F(TreeRefreshTest, AListLoadsTheKeyThatHasChangedAndNoOther) {
  TernaryHandle* handle = rig.Load("a");
  const TernaryKey* other = rig.KeyOf(handle, "net");
  ASSERT_EQ(status::kOk, SetText("a/b", "text", "new"));
  ASSERT_EQ(status::kOk, SetText("a/b", "text", "newer"));
  ASSERT_EQ(status::kOk, rig.CreateData("a/net", "other", "1"));
  ChangeList changes;
  Note(changes, ChangeKind::kValueSet, "a/b", "text");
  Note(changes, ChangeKind::kValueSet, "/a/b", "text");
  Note(changes, ChangeKind::kValueSet, "x", "not loaded");
  EXPECT_EQ(0u, rig.loaded.Follow(changes, 0));
  EXPECT_EQ(ValuesOf(handle, "b"), "text " + HexOf("newer"));
  EXPECT_EQ(rig.KeyOf(handle, "net"), other);
  EXPECT_EQ("", ValuesOf(handle, "net"));
}

TEST_F(TreeRefreshTest, AListWithAKeyLoadsEverything) {
  TernaryHandle* handle = rig.Load("a");
  rig.Create({"a/ne"});
  ASSERT_EQ(status::kOk, SetText("a/b", "text", "new"));
  ChangeList changes;
  Note(changes, ChangeKind::kKeyCreated, "a/ne");
  Note(changes, ChangeKind::kValueSet, "a/b", "text");
  EXPECT_EQ(0u, rig.loaded.Follow(changes, 0));
  ExpectLikeTheFile(handle, "a");
}

TEST_F(TreeRefreshTest, AListThatCannotBeFollowedNowIsFollowedByTheNextOperation) {
  TernaryHandle* handle = rig.Load("a");
  TernaryHandle* other = rig.Load("x");
  handle->start->Lock(handle);
  ASSERT_EQ(status::kOk, SetText("a/b", "text", "new"));
  ChangeList changes;
  Note(changes, ChangeKind::kValueSet, "a/b", "text");
  EXPECT_EQ(16u, rig.loaded.Follow(changes, 0));
  EXPECT_EQ(status::kBusy, rig.loaded.CreateKey(kAdmin, other, "z", 0, false));
  handle->start->Unlock();
  EXPECT_EQ(ValuesOf(handle, "b"), "text " + HexOf("new"));
}

TEST_F(TreeRefreshTest, WithoutHandlesNothingStaysLoaded) {
  rig.Unload(rig.Load("a"));
  const unsigned int before = rig.loaded.GetStartString(0)->id;
  rig.loaded.SetBehind();
  EXPECT_EQ(status::kOk, rig.TryToLoad("a"));
  EXPECT_EQ(rig.loaded.GetStartString(0)->id, before);
}

// Some steps of each round are told by a list, the others by the word that something has changed.
TEST_F(TreeRefreshTest, RandomChangesAreFollowed) {
  const unsigned int seed = 20406;
  std::mt19937 random(seed);
  const auto below = [&](unsigned int n) { return static_cast<unsigned int>(random() % n); };
  std::vector<std::pair<TernaryHandle*, std::string>> handles;
  for (unsigned int round = 0; round < 400; ++round) {
    SCOPED_TRACE("seed " + std::to_string(seed) + ", round " + std::to_string(round));
    if (handles.size() < 4) {
      const char* key = kKeys[below(std::size(kKeys))];
      void* tree = nullptr;
      if (rig.loaded.LoadKeyTree(key, tree) == 0) {
        handles.emplace_back(static_cast<TernaryHandle*>(tree), key);
      }
    } else {
      const unsigned int gone = below(4);
      ASSERT_EQ(status::kOk, rig.Unload(handles[gone].first));
      handles.erase(handles.begin() + gone);
    }
    ChangeList changes;
    for (unsigned int step = below(4); step > 0; --step) {
      ChangeOne(random, round, changes);
    }
    if (below(2) == 0) {
      rig.loaded.SetBehind();
    } else {
      ASSERT_EQ(0u, rig.loaded.Follow(changes, 0));
    }
    for (auto& handle : handles) {
      unsigned char rights = 0;
      if (rig.loaded.GetKeyPermission(kAdmin, handle.first, "", &rights) == 22) continue;
      ASSERT_NO_FATAL_FAILURE(ExpectLikeTheFile(handle.first, handle.second.c_str()));
    }
  }
}

}  // namespace
}  // namespace tamu::registry
