// Deleting keys that handles have open, or something below: what stays for them, and until when.
#include <malloc.h>

#include <algorithm>

#include "tests/registry/memtree/LoadedWriting.h"

namespace tamu::registry {

namespace {

// "a" with "b", "c" below that, and "d", which hangs on "b": the string nodes and keys 2 to 5. "x"
// is 6. Each key has a number of its own name.
class LoadedOrphans : public LoadedWriting {
 protected:
  LoadedOrphans() {
    Start({"a", "a/b", "a/b/c", "a/d", "x"});
    for (const char* key : {"a", "a/b", "a/b/c", "a/d", "x"}) {
      EXPECT_EQ(CreateNumber(key, "n", 1), 0u) << key;
    }
  }
  // What was deleted, in other slots.
  void MakeAgain() {
    for (const char* key : {"a", "a/b", "a/b/c", "a/d"}) {
      ASSERT_EQ(CreateKey(key), 0u) << key;
      ASSERT_EQ(CreateNumber(key, "n", 1), 0u) << key;
    }
  }
  // Everything that changes something works as ever.
  void ExpectWritable(TernaryHandle* handle) {
    TernaryKeyTree& tree = rig.loaded;
    char byte = 'x';
    Value value = {1, 1, &byte};
    EXPECT_EQ(tree.CreateValue(kAdmin, handle, "", "new", &value), 0u);
    EXPECT_EQ(tree.SetValue(kAdmin, handle, "", "n", &value), 0u);
    EXPECT_EQ(tree.DeleteValue(kAdmin, handle, "", "new"), 0u);
    EXPECT_EQ(tree.SetDefaultValue(kAdmin, handle, "", 7, false), 0u);
    EXPECT_EQ(tree.SetKeyPermission(kAdmin, handle, "", 0x0F), 0u);
    EXPECT_EQ(tree.SetKeyWatch(kAdmin, handle, "", 1), 0u);
    EXPECT_EQ(tree.CreateKey(kAdmin, handle, "made", 0, false), 0u);
    EXPECT_EQ(tree.CreateKey(kAdmin, handle, "made/below", 0, false), 0u);
    EXPECT_EQ(tree.DeleteKey(kAdmin, handle, "made"), 0u);
    EXPECT_EQ(Get(handle, "", "n"), "type 1: 78");
    EXPECT_EQ(rig.Find(handle, "made"), 2u);
  }
  void ExpectSoundTree() {
    EXPECT_EQ(StructureFindings(rig.path), "");
    EXPECT_FALSE(root->start->isLocked());
  }
};

const char* const kOne = "type 0: 0100000000000000";

TEST_F(LoadedOrphans, AnOpenKeyStaysUsable) {
  TernaryHandle* b = rig.Load("a/b");
  ASSERT_EQ(DeleteKey("a"), 0u);
  EXPECT_EQ(Get(b, "", "n"), kOne);
  EXPECT_EQ(Get(b, "c", "n"), kOne);
  EXPECT_EQ(ListedKeys(b), "0: c");
  ExpectWritable(b);
  EXPECT_EQ(rig.loaded.DeleteKey(kAdmin, b, "c"), 0u);
  EXPECT_EQ(ListedKeys(b), "0:");
  EXPECT_EQ(ListedKeys(root), "0: x");
  EXPECT_EQ(ListedStoredKeys(""), "0: x");
  ExpectSoundTree();
  EXPECT_EQ(rig.Unload(b), 0u);
  EXPECT_EQ(rig.TryToLoad("a/b"), 2u);
  ExpectSoundTree();
}

// Of a key beside an open one, which hangs on it, nothing comes back either; but of one that the
// open one hangs on.
TEST_F(LoadedOrphans, WhatAnOpenKeyHangsOnIsGivenBack) {
  TernaryHandle* d = rig.Load("a/d");
  const std::string before = StringNode(5) + rig.KeyNode(5) + ValueNode(4);
  ASSERT_EQ(DeleteKey("a"), 0u);
  // The nodes c and b, 4 and 3; their keys, then that of "a": 4, 3, 2; their values: 3, 2, 1.
  EXPECT_EQ(Entries(kStringTable, 8),
            "03000000 00000000 00000000 04000000 07000000 00000000 00000000 08000000 ");
  EXPECT_EQ(Entries(kKeyTable, 8),
            "02000000 00000000 03000000 04000000 07000000 00000000 00000000 08000000 ");
  EXPECT_EQ(Entries(kValueTable, 7),
            "01000000 02000000 03000000 06000000 00000000 00000000 07000000 ");
  EXPECT_EQ(FreeSlots(), "360 361 362 364");
  EXPECT_EQ(StringNode(5) + rig.KeyNode(5) + ValueNode(4), before);
  // Others take the slots now.
  for (const char* key : {"p", "q", "p/r"}) ASSERT_EQ(CreateKey(key), 0u) << key;
  EXPECT_EQ(Get(d, "", "n"), kOne);
  ExpectWritable(d);
  EXPECT_EQ(rig.Unload(d), 0u);
  EXPECT_EQ(ListedKeys(root), ListedStoredKeys(""));
  ExpectSoundTree();
}

TEST_F(LoadedOrphans, OfTwoHandlesOnAKeyEitherMayGoFirst) {
  TernaryHandle* one = rig.Load("a/b");
  TernaryHandle* two = rig.Load("a/b");
  TernaryHandle* three = rig.Load("a/b");
  ASSERT_EQ(DeleteKey("a"), 0u);
  EXPECT_EQ(rig.Unload(two), 0u);
  EXPECT_EQ(Get(one, "c", "n"), kOne);
  ExpectWritable(three);
  EXPECT_EQ(rig.Unload(one), 0u);
  EXPECT_EQ(Get(three, "c", "n"), kOne);
  EXPECT_EQ(rig.Unload(three), 0u);
  ExpectSoundTree();
}

// "d" hangs on "b", and "c" is below it.
TEST_F(LoadedOrphans, HandlesOnSeveralKeysMayGoInAnyOrder) {
  int order[] = {0, 1, 2};
  do {
    SCOPED_TRACE(std::to_string(order[0]) + std::to_string(order[1]) + std::to_string(order[2]));
    TernaryHandle* handles[] = {rig.Load("a/b"), rig.Load("a/b/c"), rig.Load("a/d")};
    ASSERT_EQ(DeleteKey("a"), 0u);
    for (int i = 0; i < 3; ++i) {
      for (int left = i; left < 3; ++left) {
        EXPECT_EQ(Get(handles[order[left]], "", "n"), kOne);
        EXPECT_EQ(rig.loaded.SetDefaultValue(kAdmin, handles[order[left]], "", 1, false), 0u);
      }
      EXPECT_EQ(rig.Unload(handles[order[i]]), 0u);
    }
    ExpectSoundTree();
    MakeAgain();
  } while (std::next_permutation(order, order + 3));
}

// As above, but what leads to the open keys is given back: each stays for itself.
TEST_F(LoadedOrphans, OpenKeysFarApartStayEachForItself) {
  for (bool firstGoesFirst : {true, false}) {
    TernaryHandle* c = rig.Load("a/b/c");
    TernaryHandle* d = rig.Load("a/d");
    ASSERT_EQ(DeleteKey("a"), 0u);
    EXPECT_EQ(rig.Unload(firstGoesFirst ? c : d), 0u);
    ExpectWritable(firstGoesFirst ? d : c);
    EXPECT_EQ(rig.Unload(firstGoesFirst ? d : c), 0u);
    ExpectSoundTree();
    MakeAgain();
  }
}

TEST_F(LoadedOrphans, AKeyDeletedThroughItsOwnHandleLeavesOpenOnesBelowToo) {
  for (bool outerGoesFirst : {true, false}) {
    TernaryHandle* outer = rig.Load("a");
    TernaryHandle* inner = rig.Load("a/b");
    ASSERT_EQ(rig.loaded.DeleteKey(kAdmin, outer, ""), 0u);
    EXPECT_EQ(rig.Find(outer, ""), 2u);
    EXPECT_EQ(rig.Find(outer, "b"), 2u);
    EXPECT_EQ(Get(inner, "c", "n"), kOne);
    EXPECT_EQ(rig.Unload(outerGoesFirst ? outer : inner), 0u);
    if (outerGoesFirst) ExpectWritable(inner);
    EXPECT_EQ(rig.Unload(outerGoesFirst ? inner : outer), 0u);
    ExpectSoundTree();
    MakeAgain();
  }
}

TEST_F(LoadedOrphans, WhatIsDeletedAlreadyMayBeDeletedFurther) {
  for (bool outerGoesFirst : {true, false}) {
    TernaryHandle* b = rig.Load("a/b");
    TernaryHandle* c = rig.Load("a/b/c");
    ASSERT_EQ(DeleteKey("a"), 0u);
    EXPECT_EQ(rig.loaded.DeleteKey(kAdmin, b, ""), 0u);
    EXPECT_EQ(rig.Find(b, ""), 2u);
    EXPECT_EQ(rig.loaded.CreateKey(kAdmin, b, "new", 0, false), 1u);
    EXPECT_EQ(Get(c, "", "n"), kOne);
    EXPECT_EQ(rig.Unload(outerGoesFirst ? b : c), 0u);
    if (outerGoesFirst) ExpectWritable(c);
    EXPECT_EQ(rig.Unload(outerGoesFirst ? c : b), 0u);
    ExpectSoundTree();
    MakeAgain();
  }
}

TEST_F(LoadedOrphans, ANewKeyOfTheSameNameIsAnother) {
  TernaryHandle* old = rig.Load("a/b");
  ASSERT_EQ(DeleteKey("a"), 0u);
  for (const char* key : {"a", "a/b", "a/b/e"}) ASSERT_EQ(CreateKey(key), 0u) << key;
  ASSERT_EQ(CreateNumber("a/b", "n", 2), 0u);
  TernaryHandle* made = rig.Load("a/b");
  EXPECT_NE(made->start, old->start);
  EXPECT_EQ(Get(old, "", "n"), kOne);
  EXPECT_EQ(Get(made, "", "n"), "type 0: 0200000000000000");
  EXPECT_EQ(ListedKeys(old), "0: c");
  EXPECT_EQ(ListedKeys(made), "0: e");
  ExpectWritable(old);
  EXPECT_EQ(Get(made, "", "n"), "type 0: 0200000000000000");
  EXPECT_EQ(GetStored("a/b", "n"), "type 0: 0200000000000000");
  ExpectWritable(made);
  EXPECT_EQ(rig.Unload(old), 0u);
  EXPECT_EQ(ListedKeys(made), "0: e");
  EXPECT_EQ(rig.Unload(made), 0u);
  EXPECT_EQ(GetEverywhere("a/b", "n"), "type 1: 78");
  ExpectSoundTree();
}

// The handle of a deleted key does not keep what is below the new one.
TEST_F(LoadedOrphans, ANewKeyIsUnloadedWhileTheDeletedOneIsOpen) {
  TernaryHandle* old = rig.Load("a/b");
  ASSERT_EQ(DeleteKey("a"), 0u);
  for (const char* key : {"a", "a/b", "a/b/e", "a/b/e/f"}) ASSERT_EQ(CreateKey(key), 0u) << key;
  ASSERT_EQ(rig.Unload(root), 0u);
  EXPECT_EQ(rig.Loaded(), "1 strings, 1 keys");
  TernaryHandle* made = rig.Load("a/b/e");
  EXPECT_EQ(rig.Loaded(), "5 strings, 3 keys");
  EXPECT_EQ(rig.Unload(made), 0u);
  EXPECT_EQ(rig.Loaded(), "4 strings, 1 keys");
  EXPECT_EQ(Get(old, "c", "n"), kOne);
  EXPECT_EQ(rig.loaded.UnloadKeyTree(nullptr), 0u);
  EXPECT_EQ(Get(old, "c", "n"), kOne);
  EXPECT_EQ(rig.Unload(old), 0u);
  root = rig.Load("");
}

TEST_F(LoadedOrphans, AllHandlesMayBeLeftOpen) {
  rig.Load("a");
  rig.Load("a/b");
  TernaryHandle* c = rig.Load("a/b/c");
  rig.Load("a/d");
  ASSERT_EQ(DeleteKey("a"), 0u);
  ASSERT_EQ(c->start->Lock(c), 0u);
  rig.Close();  // the leak checker tells what is forgotten
  ASSERT_EQ(rig.loaded.Initialize(rig.path.c_str()), 0u);
  root = rig.Load("");
  EXPECT_EQ(ListedKeys(root), "0: x");
}

TEST_F(LoadedOrphans, ALockedKeyStaysUntilItIsUnlockedAndClosed) {
  TernaryHandle* b = rig.Load("a/b");
  ASSERT_EQ(b->start->Lock(b), 0u);
  ASSERT_EQ(DeleteKey("a"), 0u);
  EXPECT_EQ(rig.Unload(b), 16u);
  EXPECT_EQ(rig.Find(b, "c"), 2u) << "it is put away";
  ASSERT_EQ(b->start->Unlock(), 0u);
  EXPECT_EQ(Get(b, "c", "n"), kOne);
  ExpectWritable(b);
  EXPECT_EQ(rig.Unload(b), 0u);
  ExpectSoundTree();
}

// Nobody has it open, but somebody is about to change what is below.
TEST_F(LoadedOrphans, AKeyThatIsLockedThroughAnotherHandleStaysToo) {
  ASSERT_EQ(CreateKey("a/b/c/e"), 0u);
  ASSERT_EQ(CreateNumber("a/b/c/e", "n", 1), 0u);
  TernaryHandle* e = rig.Load("a/b/c/e");
  TernaryHandle* x = rig.Load("x");
  TernaryString* c = nullptr;
  TernaryKey* key = nullptr;
  TernaryString* owner = nullptr;
  ASSERT_EQ(rig.loaded.FindKey(root, "a/b/c", c, key, owner), 0u);
  ASSERT_EQ(c->Lock(x), 0u);
  ASSERT_EQ(DeleteKey("a"), 0u);
  EXPECT_EQ(FreeSlots(), "359 360 361 364");  // b and d have come back, and the key of "a"
  EXPECT_EQ(rig.Unload(x), 16u);
  EXPECT_EQ(Get(e, "", "n"), kOne);
  EXPECT_EQ(rig.loaded.UnloadKeyTree(nullptr), 0u);
  EXPECT_EQ(c->key, key);
  ASSERT_EQ(c->Unlock(), 0u);
  EXPECT_EQ(c->directory, e->start);
  EXPECT_EQ(Get(e, "", "n"), kOne);
  EXPECT_EQ(rig.Unload(x), 0u);
  EXPECT_EQ(Get(e, "", "n"), kOne);
  ExpectWritable(e);
  EXPECT_EQ(rig.Unload(e), 0u);
  ExpectSoundTree();
}

// What was put away does not come back when it is unlocked.
TEST_F(LoadedOrphans, AKeyThatIsLockedItselfIsDeletedWithAllBelowIt) {
  TernaryHandle* a = rig.Load("a");
  ASSERT_EQ(a->start->Lock(a), 0u);
  ASSERT_EQ(DeleteKey("a"), 0u);
  ASSERT_EQ(a->start->Unlock(), 0u);
  EXPECT_EQ(ListedKeys(root), "0: x");
  EXPECT_EQ(ListedStoredKeys(""), "0: x");
  ASSERT_EQ(CreateKey("a"), 0u);
  EXPECT_EQ(ListedKeys(root), "0: x a");
  EXPECT_EQ(ListedStoredKeys(""), "0: x a");
  EXPECT_EQ(rig.Unload(a), 0u);
  ExpectSoundTree();
}

// Bytes of the heap in use; 0 where a sanitizer has its own, which tells of leaks itself.
size_t HeapInUse() {
  return mallinfo2().uordblks;
}

TEST_F(LoadedOrphans, AgainAndAgainNothingGrowsInMemory) {
  ASSERT_EQ(DeleteKey("a"), 0u);
  size_t before = 0;
  for (unsigned int round = 0; round < 10000; ++round) {
    if (round == 100) before = HeapInUse();
    ASSERT_EQ(CreateKey("a"), 0u);
    ASSERT_EQ(CreateKey("a/b"), 0u);
    TernaryHandle* a = rig.Load("a");
    TernaryHandle* b = rig.Load("a/b");
    ASSERT_EQ(rig.loaded.CreateValue(kAdmin, b, "", "n", round, true), 0u);
    ASSERT_EQ(DeleteKey("a"), 0u);
    ASSERT_EQ(rig.loaded.DeleteKey(kAdmin, b, ""), 0u);
    ASSERT_EQ(rig.Unload(round % 2 == 0 ? a : b), 0u);
    ASSERT_EQ(rig.Unload(round % 2 == 0 ? b : a), 0u);
  }
  EXPECT_LE(HeapInUse(), before + 20000);
  EXPECT_EQ(UsedSlots(rig.path), "10003 2 1 0") << "a name each round";
  ExpectSoundTree();
}

}  // namespace

}  // namespace tamu::registry
