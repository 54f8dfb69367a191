// Deleting keys that handles have open, or something below: what stays for them, and until when.
#include <malloc.h>

#include <algorithm>

#include "tests/registry/memtree/LoadedWriting.h"

namespace tamu::registry {

namespace {

// "a" with "b", "c" below that, and "d", which hangs on "b": the string nodes and keys 2 to 5. "x"
// is 6. Each key has a number of its own name.
class TernaryKeyTreeOrphansTest : public LoadedWriting {
 protected:
  TernaryKeyTreeOrphansTest() {
    Start({"a", "a/b", "a/b/c", "a/d", "x"});
    for (const char* key : {"a", "a/b", "a/b/c", "a/d", "x"}) {
      EXPECT_EQ(status::kOk, CreateNumber(key, "n", 1)) << key;
    }
  }
  // What was deleted, in other slots.
  void MakeAgain() {
    for (const char* key : {"a", "a/b", "a/b/c", "a/d"}) {
      ASSERT_EQ(status::kOk, CreateKey(key)) << key;
      ASSERT_EQ(status::kOk, CreateNumber(key, "n", 1)) << key;
    }
  }
  // Everything that changes something works as ever.
  void ExpectWritable(TernaryHandle* handle) {
    TernaryKeyTree& tree = rig.loaded;
    char byte = 'x';
    Value value = {1, 1, &byte};
    EXPECT_EQ(status::kOk, tree.CreateValue(kAdmin, handle, "", "new", &value));
    EXPECT_EQ(status::kOk, tree.SetValue(kAdmin, handle, "", "n", &value));
    EXPECT_EQ(status::kOk, tree.DeleteValue(kAdmin, handle, "", "new"));
    EXPECT_EQ(status::kOk, tree.SetDefaultValue(kAdmin, handle, "", 7, false));
    EXPECT_EQ(status::kOk, tree.SetKeyPermission(kAdmin, handle, "", 0x0F));
    EXPECT_EQ(status::kOk, tree.SetKeyWatch(kAdmin, handle, "", 1));
    EXPECT_EQ(status::kOk, tree.CreateKey(kAdmin, handle, "made", 0, false));
    EXPECT_EQ(status::kOk, tree.CreateKey(kAdmin, handle, "made/below", 0, false));
    EXPECT_EQ(status::kOk, tree.DeleteKey(kAdmin, handle, "made"));
    EXPECT_EQ("type 1: 78", Get(handle, "", "n"));
    EXPECT_EQ(status::kNotFound, rig.Find(handle, "made"));
  }
  void ExpectSoundTree() {
    EXPECT_EQ("", StructureFindings(rig.path));
    EXPECT_FALSE(root->start->isLocked());
  }
};

const char* const kOne = "type 0: 0100000000000000";

TEST_F(TernaryKeyTreeOrphansTest, AnOpenKeyStaysUsable) {
  TernaryHandle* b = rig.Load("a/b");
  ASSERT_EQ(status::kOk, DeleteKey("a"));
  EXPECT_EQ(kOne, Get(b, "", "n"));
  EXPECT_EQ(kOne, Get(b, "c", "n"));
  EXPECT_EQ("0: c", ListedKeys(b));
  ExpectWritable(b);
  EXPECT_EQ(status::kOk, rig.loaded.DeleteKey(kAdmin, b, "c"));
  EXPECT_EQ("0:", ListedKeys(b));
  EXPECT_EQ("0: x", ListedKeys(root));
  EXPECT_EQ("0: x", ListedStoredKeys(""));
  ExpectSoundTree();
  EXPECT_EQ(status::kOk, rig.Unload(b));
  EXPECT_EQ(status::kNotFound, rig.TryToLoad("a/b"));
  ExpectSoundTree();
}

// Of a key beside an open one, which hangs on it, nothing comes back either; but of one that the
// open one hangs on.
TEST_F(TernaryKeyTreeOrphansTest, WhatAnOpenKeyHangsOnIsGivenBack) {
  TernaryHandle* d = rig.Load("a/d");
  const std::string before = StringNode(5) + rig.KeyNode(5) + ValueNode(4);
  ASSERT_EQ(status::kOk, DeleteKey("a"));
  // The nodes c and b, 4 and 3; their keys, then that of "a": 4, 3, 2; their values: 3, 2, 1.
  EXPECT_EQ("03000000 00000000 00000000 04000000 07000000 00000000 00000000 08000000 ",
            Entries(kStringTable, 8));
  EXPECT_EQ("02000000 00000000 03000000 04000000 07000000 00000000 00000000 08000000 ",
            Entries(kKeyTable, 8));
  EXPECT_EQ("01000000 02000000 03000000 06000000 00000000 00000000 07000000 ",
            Entries(kValueTable, 7));
  EXPECT_EQ("360 361 362 364", FreeSlots());
  EXPECT_EQ(StringNode(5) + rig.KeyNode(5) + ValueNode(4), before);
  // Others take the slots now.
  for (const char* key : {"p", "q", "p/r"}) ASSERT_EQ(status::kOk, CreateKey(key)) << key;
  EXPECT_EQ(kOne, Get(d, "", "n"));
  ExpectWritable(d);
  EXPECT_EQ(status::kOk, rig.Unload(d));
  EXPECT_EQ(ListedKeys(root), ListedStoredKeys(""));
  ExpectSoundTree();
}

TEST_F(TernaryKeyTreeOrphansTest, OfTwoHandlesOnAKeyEitherMayGoFirst) {
  TernaryHandle* one = rig.Load("a/b");
  TernaryHandle* two = rig.Load("a/b");
  TernaryHandle* three = rig.Load("a/b");
  ASSERT_EQ(status::kOk, DeleteKey("a"));
  EXPECT_EQ(status::kOk, rig.Unload(two));
  EXPECT_EQ(kOne, Get(one, "c", "n"));
  ExpectWritable(three);
  EXPECT_EQ(status::kOk, rig.Unload(one));
  EXPECT_EQ(kOne, Get(three, "c", "n"));
  EXPECT_EQ(status::kOk, rig.Unload(three));
  ExpectSoundTree();
}

// "d" hangs on "b", and "c" is below it.
TEST_F(TernaryKeyTreeOrphansTest, HandlesOnSeveralKeysMayGoInAnyOrder) {
  int order[] = {0, 1, 2};
  do {
    SCOPED_TRACE(std::to_string(order[0]) + std::to_string(order[1]) + std::to_string(order[2]));
    TernaryHandle* handles[] = {rig.Load("a/b"), rig.Load("a/b/c"), rig.Load("a/d")};
    ASSERT_EQ(status::kOk, DeleteKey("a"));
    for (int i = 0; i < 3; ++i) {
      for (int left = i; left < 3; ++left) {
        EXPECT_EQ(kOne, Get(handles[order[left]], "", "n"));
        EXPECT_EQ(status::kOk,
                  rig.loaded.SetDefaultValue(kAdmin, handles[order[left]], "", 1, false));
      }
      EXPECT_EQ(status::kOk, rig.Unload(handles[order[i]]));
    }
    ExpectSoundTree();
    MakeAgain();
  } while (std::next_permutation(order, order + 3));
}

// As above, but what leads to the open keys is given back: each stays for itself.
TEST_F(TernaryKeyTreeOrphansTest, OpenKeysFarApartStayEachForItself) {
  for (bool firstGoesFirst : {true, false}) {
    TernaryHandle* c = rig.Load("a/b/c");
    TernaryHandle* d = rig.Load("a/d");
    ASSERT_EQ(status::kOk, DeleteKey("a"));
    EXPECT_EQ(0u, rig.Unload(firstGoesFirst ? c : d));
    ExpectWritable(firstGoesFirst ? d : c);
    EXPECT_EQ(0u, rig.Unload(firstGoesFirst ? d : c));
    ExpectSoundTree();
    MakeAgain();
  }
}

TEST_F(TernaryKeyTreeOrphansTest, AKeyDeletedThroughItsOwnHandleLeavesOpenOnesBelowToo) {
  for (bool outerGoesFirst : {true, false}) {
    TernaryHandle* outer = rig.Load("a");
    TernaryHandle* inner = rig.Load("a/b");
    ASSERT_EQ(status::kOk, rig.loaded.DeleteKey(kAdmin, outer, ""));
    EXPECT_EQ(status::kNotFound, rig.Find(outer, ""));
    EXPECT_EQ(status::kNotFound, rig.Find(outer, "b"));
    EXPECT_EQ(kOne, Get(inner, "c", "n"));
    EXPECT_EQ(0u, rig.Unload(outerGoesFirst ? outer : inner));
    if (outerGoesFirst) ExpectWritable(inner);
    EXPECT_EQ(0u, rig.Unload(outerGoesFirst ? inner : outer));
    ExpectSoundTree();
    MakeAgain();
  }
}

TEST_F(TernaryKeyTreeOrphansTest, WhatIsDeletedAlreadyMayBeDeletedFurther) {
  for (bool outerGoesFirst : {true, false}) {
    TernaryHandle* b = rig.Load("a/b");
    TernaryHandle* c = rig.Load("a/b/c");
    ASSERT_EQ(status::kOk, DeleteKey("a"));
    EXPECT_EQ(status::kOk, rig.loaded.DeleteKey(kAdmin, b, ""));
    EXPECT_EQ(status::kNotFound, rig.Find(b, ""));
    EXPECT_EQ(status::kNoRight, rig.loaded.CreateKey(kAdmin, b, "new", 0, false));
    EXPECT_EQ(kOne, Get(c, "", "n"));
    EXPECT_EQ(0u, rig.Unload(outerGoesFirst ? b : c));
    if (outerGoesFirst) ExpectWritable(c);
    EXPECT_EQ(0u, rig.Unload(outerGoesFirst ? c : b));
    ExpectSoundTree();
    MakeAgain();
  }
}

TEST_F(TernaryKeyTreeOrphansTest, ANewKeyOfTheSameNameIsAnother) {
  TernaryHandle* old = rig.Load("a/b");
  ASSERT_EQ(status::kOk, DeleteKey("a"));
  for (const char* key : {"a", "a/b", "a/b/e"}) ASSERT_EQ(status::kOk, CreateKey(key)) << key;
  ASSERT_EQ(status::kOk, CreateNumber("a/b", "n", 2));
  TernaryHandle* made = rig.Load("a/b");
  EXPECT_NE(made->start, old->start);
  EXPECT_EQ(kOne, Get(old, "", "n"));
  EXPECT_EQ("type 0: 0200000000000000", Get(made, "", "n"));
  EXPECT_EQ("0: c", ListedKeys(old));
  EXPECT_EQ("0: e", ListedKeys(made));
  ExpectWritable(old);
  EXPECT_EQ("type 0: 0200000000000000", Get(made, "", "n"));
  EXPECT_EQ("type 0: 0200000000000000", GetStored("a/b", "n"));
  ExpectWritable(made);
  EXPECT_EQ(status::kOk, rig.Unload(old));
  EXPECT_EQ("0: e", ListedKeys(made));
  EXPECT_EQ(status::kOk, rig.Unload(made));
  EXPECT_EQ("type 1: 78", GetEverywhere("a/b", "n"));
  ExpectSoundTree();
}

// The handle of a deleted key does not keep what is below the new one.
TEST_F(TernaryKeyTreeOrphansTest, ANewKeyIsUnloadedWhileTheDeletedOneIsOpen) {
  TernaryHandle* old = rig.Load("a/b");
  ASSERT_EQ(status::kOk, DeleteKey("a"));
  for (const char* key : {"a", "a/b", "a/b/e", "a/b/e/f"})
    ASSERT_EQ(status::kOk, CreateKey(key)) << key;
  ASSERT_EQ(status::kOk, rig.Unload(root));
  EXPECT_EQ("1 strings, 1 keys", rig.Loaded());
  TernaryHandle* made = rig.Load("a/b/e");
  EXPECT_EQ("5 strings, 3 keys", rig.Loaded());
  EXPECT_EQ(status::kOk, rig.Unload(made));
  EXPECT_EQ("4 strings, 1 keys", rig.Loaded());
  EXPECT_EQ(kOne, Get(old, "c", "n"));
  EXPECT_EQ(status::kOk, rig.loaded.UnloadKeyTree(nullptr));
  EXPECT_EQ(kOne, Get(old, "c", "n"));
  EXPECT_EQ(status::kOk, rig.Unload(old));
  root = rig.Load("");
}

TEST_F(TernaryKeyTreeOrphansTest, AllHandlesMayBeLeftOpen) {
  rig.Load("a");
  rig.Load("a/b");
  TernaryHandle* c = rig.Load("a/b/c");
  rig.Load("a/d");
  ASSERT_EQ(status::kOk, DeleteKey("a"));
  ASSERT_EQ(status::kOk, c->start->Lock(c));
  rig.Close();  // the leak checker tells what is forgotten
  ASSERT_EQ(status::kOk, rig.loaded.Initialize(rig.path.c_str()));
  root = rig.Load("");
  EXPECT_EQ("0: x", ListedKeys(root));
}

TEST_F(TernaryKeyTreeOrphansTest, ALockedKeyStaysUntilItIsUnlockedAndClosed) {
  TernaryHandle* b = rig.Load("a/b");
  ASSERT_EQ(status::kOk, b->start->Lock(b));
  ASSERT_EQ(status::kOk, DeleteKey("a"));
  EXPECT_EQ(status::kBusy, rig.Unload(b));
  EXPECT_EQ(status::kNotFound, rig.Find(b, "c")) << "it is put away";
  ASSERT_EQ(status::kOk, b->start->Unlock());
  EXPECT_EQ(kOne, Get(b, "c", "n"));
  ExpectWritable(b);
  EXPECT_EQ(status::kOk, rig.Unload(b));
  ExpectSoundTree();
}

// Nobody has it open, but somebody is about to change what is below.
TEST_F(TernaryKeyTreeOrphansTest, AKeyThatIsLockedThroughAnotherHandleStaysToo) {
  ASSERT_EQ(status::kOk, CreateKey("a/b/c/e"));
  ASSERT_EQ(status::kOk, CreateNumber("a/b/c/e", "n", 1));
  TernaryHandle* e = rig.Load("a/b/c/e");
  TernaryHandle* x = rig.Load("x");
  TernaryString* c = nullptr;
  TernaryKey* key = nullptr;
  TernaryString* owner = nullptr;
  ASSERT_EQ(status::kOk, rig.loaded.FindKey(root, "a/b/c", c, key, owner));
  ASSERT_EQ(status::kOk, c->Lock(x));
  ASSERT_EQ(status::kOk, DeleteKey("a"));
  EXPECT_EQ("359 360 361 364", FreeSlots());  // b and d have come back, and the key of "a"
  EXPECT_EQ(status::kBusy, rig.Unload(x));
  EXPECT_EQ(kOne, Get(e, "", "n"));
  EXPECT_EQ(status::kOk, rig.loaded.UnloadKeyTree(nullptr));
  EXPECT_EQ(c->key, key);
  ASSERT_EQ(status::kOk, c->Unlock());
  EXPECT_EQ(c->directory, e->start);
  EXPECT_EQ(kOne, Get(e, "", "n"));
  EXPECT_EQ(status::kOk, rig.Unload(x));
  EXPECT_EQ(kOne, Get(e, "", "n"));
  ExpectWritable(e);
  EXPECT_EQ(status::kOk, rig.Unload(e));
  ExpectSoundTree();
}

// What was put away does not come back when it is unlocked.
TEST_F(TernaryKeyTreeOrphansTest, AKeyThatIsLockedItselfIsDeletedWithAllBelowIt) {
  TernaryHandle* a = rig.Load("a");
  ASSERT_EQ(status::kOk, a->start->Lock(a));
  ASSERT_EQ(status::kOk, DeleteKey("a"));
  ASSERT_EQ(status::kOk, a->start->Unlock());
  EXPECT_EQ("0: x", ListedKeys(root));
  EXPECT_EQ("0: x", ListedStoredKeys(""));
  ASSERT_EQ(status::kOk, CreateKey("a"));
  EXPECT_EQ("0: x a", ListedKeys(root));
  EXPECT_EQ("0: x a", ListedStoredKeys(""));
  EXPECT_EQ(status::kOk, rig.Unload(a));
  ExpectSoundTree();
}

// Bytes of the heap in use; 0 where a sanitizer has its own, which tells of leaks itself.
size_t HeapInUse() {
  return mallinfo2().uordblks;
}

TEST_F(TernaryKeyTreeOrphansTest, AgainAndAgainNothingGrowsInMemory) {
  ASSERT_EQ(status::kOk, DeleteKey("a"));
  size_t before = 0;
  for (unsigned int round = 0; round < 10000; ++round) {
    if (round == 100) before = HeapInUse();
    ASSERT_EQ(status::kOk, CreateKey("a"));
    ASSERT_EQ(status::kOk, CreateKey("a/b"));
    TernaryHandle* a = rig.Load("a");
    TernaryHandle* b = rig.Load("a/b");
    ASSERT_EQ(status::kOk, rig.loaded.CreateValue(kAdmin, b, "", "n", round, true));
    ASSERT_EQ(status::kOk, DeleteKey("a"));
    ASSERT_EQ(status::kOk, rig.loaded.DeleteKey(kAdmin, b, ""));
    ASSERT_EQ(0u, rig.Unload(round % 2 == 0 ? a : b));
    ASSERT_EQ(0u, rig.Unload(round % 2 == 0 ? b : a));
  }
  EXPECT_LE(HeapInUse(), before + 20000);
  EXPECT_EQ("10003 2 1 0", UsedSlots(rig.path)) << "a name each round";
  ExpectSoundTree();
}

}  // namespace

}  // namespace tamu::registry
