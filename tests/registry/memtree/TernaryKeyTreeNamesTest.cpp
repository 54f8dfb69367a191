// The strings of names created through a handle: which slots they take, what is stored, where they
// hang.
#include "tests/registry/memtree/RootHandle.h"

namespace tamu::registry {
namespace {

const std::string kText = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJ";
// The first node of a name of more than 17 characters of kText.
const char kFirstOfMany[] = "00100071 8*0 00030000 8*0 6162636465666768696a6b6c6d6e6f70";

class TernaryKeyTreeNamesTest : public RootHandleTest {
 protected:
  // That the strings from slot 2 on have these records, and nothing more was taken.
  void ExpectNodes(std::initializer_list<const char*> nodes) {
    unsigned int slot = 2;
    for (const char* node : nodes) {
      EXPECT_EQ(rig.StringNode(slot), Packed(node)) << "slot " << slot;
      ++slot;
    }
    EXPECT_EQ(CountSlots(rig.path).strings.used, slot - 1);
  }
  TernaryString* StringOf(const char* path) {
    TernaryString* string = nullptr;
    TernaryKey* key = nullptr;
    TernaryString* owner = nullptr;
    EXPECT_EQ(status::kOk, rig.loaded.FindKey(root, path, string, key, owner)) << path;
    return string;
  }
};

TEST_F(TernaryKeyTreeNamesTest, ANameOfOneCharacterHasNoSegment) {
  ASSERT_EQ(status::kOk, Create("a"));
  ExpectNodes({"00001061 16*0 00020000 16*0"});
}

TEST_F(TernaryKeyTreeNamesTest, ANameOf16CharactersHasASegmentOf15) {
  ASSERT_EQ(status::kOk, Create(kText.substr(0, 16)));
  ExpectNodes({"000f1070 16*0 00020000 6162636465666768696a6b6c6d6e6f 1*0"});
}

TEST_F(TernaryKeyTreeNamesTest, ANameOf17CharactersFillsANode) {
  ASSERT_EQ(status::kOk, Create(kText.substr(0, 17)));
  ExpectNodes({"00101071 16*0 00020000 6162636465666768696a6b6c6d6e6f70"});
}

TEST_F(TernaryKeyTreeNamesTest, ANameOf18CharactersEndsInANodeWithoutSegment) {
  ASSERT_EQ(status::kOk, Create(kText.substr(0, 18)));
  ExpectNodes({kFirstOfMany, "00001072 16*0 00020000 16*0"});
}

TEST_F(TernaryKeyTreeNamesTest, ANameOf34CharactersFillsTwoNodes) {
  ASSERT_EQ(status::kOk, Create(kText.substr(0, 34)));
  ExpectNodes({kFirstOfMany, "00101048 16*0 00020000 72737475767778797a41424344454647"});
}

TEST_F(TernaryKeyTreeNamesTest, ANameOf35CharactersTakesThreeNodes) {
  ASSERT_EQ(status::kOk, Create(kText.substr(0, 35)));
  ExpectNodes({kFirstOfMany, "00100048 8*0 00040000 8*0 72737475767778797a41424344454647",
               "00001049 16*0 00020000 16*0"});
}

// The file has the lock that the string had while it was written; whoever loads it forgets it.
TEST_F(TernaryKeyTreeNamesTest, TheOwnersRecordTellsOfTheLock) {
  EXPECT_EQ(rig.StringNode(1), Packed("00001000 16*0 00010000 16*0"));
  ASSERT_EQ(status::kOk, Create("a"));
  EXPECT_EQ(rig.StringNode(1), Packed("00001100 12*0 00020000 00010000 16*0"));
  ASSERT_EQ(status::kOk, Create("a/b"));
  EXPECT_EQ(rig.StringNode(2), Packed("00001161 12*0 00030000 00020000 16*0"));
  EXPECT_FALSE(root->start->isLocked());
  EXPECT_FALSE(root->start->directory->isLocked());
  ASSERT_EQ(status::kOk, rig.Unload(root));
  ASSERT_EQ(status::kOk, rig.loaded.UnloadKeyTree(nullptr));
  root = rig.Load("");
  EXPECT_EQ(0x10, root->start->node.flags());
  EXPECT_EQ(0x10, root->start->directory->node.flags());
  ASSERT_EQ(status::kOk, Create("a/c"));
  EXPECT_EQ(rig.StringNode(2), Packed("00001161 12*0 00030000 00020000 16*0"))
      << "the new name hangs beside \"b\"; this record was not written";
  ASSERT_EQ(status::kOk, Create("ab"));
  EXPECT_EQ(rig.StringNode(2), Packed("00001061 8*0 00050000 00030000 00020000 16*0"));
}

TEST_F(TernaryKeyTreeNamesTest, AShorterNameCutsTheLonger) {
  CreateAll({"abc", "ab"});
  ExpectNodes({"00001063 16*0 00020000 16*0", "00011062 8*0 00020000 4*0 00030000 61 15*0"});
  EXPECT_EQ(rig.StringNode(1), Packed("00001100 12*0 00030000 00010000 16*0"));
}

TEST_F(TernaryKeyTreeNamesTest, ANameThatDiffersAtTheSplitCharacterCutsNothing) {
  CreateAll({"abc", "abd", "aba"});
  ExpectNodes({"00021063 00040000 00030000 8*0 00020000 6162 14*0", "00001064 16*0 00030000 16*0",
               "00001061 16*0 00040000 16*0"});
  EXPECT_EQ(StringOf("abc")->higher, StringOf("abd"));
  EXPECT_EQ(StringOf("abc")->lower, StringOf("aba"));
}

TEST_F(TernaryKeyTreeNamesTest, ALongerNameGoesOnBehindTheShorter) {
  CreateAll({"ab", "abcd"});
  ExpectNodes({"00011062 8*0 00030000 4*0 00020000 61 15*0", "00011064 16*0 00030000 63 15*0"});
}

// Taken in this order: the upper part, the nodes of the name; each key has the next slot.
TEST_F(TernaryKeyTreeNamesTest, ANameThatBranchesOffCutsAndHangsBesideTheCut) {
  CreateAll({"abcdef", "abxyz", "abaaa"});
  ExpectNodes({"00021066 16*0 00020000 6465 14*0",
               "00020063 00050000 00040000 00020000 8*0 6162 14*0",
               "0002107a 16*0 00030000 7879 14*0", "00021061 16*0 00040000 6161 14*0"});
}

TEST_F(TernaryKeyTreeNamesTest, TheTwoPartsOfABranchHaveNoKeyBetweenThem) {
  CreateAll({"abcx", "abdz"});
  ExpectNodes({"00001078 16*0 00020000 16*0", "00020063 4*0 00040000 00020000 8*0 6162 14*0",
               "0001107a 16*0 00030000 64 15*0"});
}

TEST_F(TernaryKeyTreeNamesTest, ACutAtTheFirstCharacterKeepsTheRestWhole) {
  CreateAll({kText.substr(0, 17).c_str(), "b1"});
  ExpectNodes({"000f1071 16*0 00020000 62636465666768696a6b6c6d6e6f70 1*0",
               "00000061 4*0 00040000 00020000 24*0", "00011031 16*0 00030000 62 15*0"});
}

TEST_F(TernaryKeyTreeNamesTest, ACutKeepsTheLinksOfTheLowerPart) {
  CreateAll({"abc", "aba", "abe", "abcd", "abc/d", "a11"});
  EXPECT_EQ(rig.StringNode(7), Packed("00010062 00080000 4*0 00020000 8*0 61 15*0"));
  EXPECT_EQ(rig.StringNode(2),
            Packed("00001063 00030000 00040000 00050000 00060000 00020000 16*0"));
}

TEST_F(TernaryKeyTreeNamesTest, ACutIsFoundUnderWhicheverLinkLedToIt) {
  CreateAll({"m", "cde", "xyz", "mnop", "m/qrs"});
  EXPECT_EQ(rig.StringNode(2),
            Packed("0000116d 00030000 00040000 00050000 00060000 00020000 16*0"));
  CreateAll({"c12", "x12", "mn12", "m/q12"});
  EXPECT_EQ(rig.StringNode(2),
            Packed("0000116d 00070000 00090000 000b0000 000d0000 00020000 16*0"));
}

TEST_F(TernaryKeyTreeNamesTest, HighBytesHangBelowTheOthers) {
  CreateAll({"m", "\xE4", "A", "\x80", "\xFF"});
  ExpectNodes({"0000106d 00030000 12*0 00020000 16*0",
               "000010e4 00050000 00040000 8*0 00030000 16*0",
               "00001041 00060000 12*0 00040000 16*0", "00001080 16*0 00050000 16*0",
               "000010ff 16*0 00060000 16*0"});
}

TEST_F(TernaryKeyTreeNamesTest, ANameWithoutAKeyEndsUnmarked) {
  TernaryString* first = nullptr;
  ASSERT_EQ(status::kOk,
            rig.loaded.CreateStringNode(0, kText.substr(0, 18).c_str(), first, nullptr));
  ExpectNodes({kFirstOfMany, "00000072 36*0"});
  EXPECT_EQ(0x200u, first->id);
  EXPECT_EQ(0x300u, first->equal->id);
  EXPECT_EQ(nullptr, first->equal->key);
  delete first->equal;
  delete first;
}

TEST_F(TernaryKeyTreeNamesTest, TheEmptyNameIsANodeWithoutCharacters) {
  TernaryKey* key = nullptr;
  ASSERT_EQ(status::kOk, rig.loaded.CreateKeyNode(0, 0, 0, 0, false, key));
  TernaryString* first = nullptr;
  ASSERT_EQ(status::kOk, rig.loaded.CreateStringNode(0, "", first, key));
  ExpectNodes({"00001000 16*0 00020000 16*0"});
  EXPECT_EQ(first->key, key);
  delete first;
  delete key;
}

TEST_F(TernaryKeyTreeNamesTest, ASlashIsNoPartOfANameAndGivesAllSlotsBack) {
  const std::string before = Tables();
  for (size_t length : {0u, 1u, 16u, 17u, 18u, 34u, 35u}) {
    for (const char* end : {"/", "/x"}) {
      TernaryString* first = root->start;
      const std::string name = kText.substr(0, length) + end;
      EXPECT_EQ(status::kBadArgument, rig.loaded.CreateStringNode(0, name.c_str(), first, nullptr))
          << name;
      EXPECT_EQ(nullptr, first);
      EXPECT_TRUE(Tables() == before) << name;
    }
  }
  TernaryString* first = nullptr;
  EXPECT_EQ(status::kBadArgument, rig.loaded.CreateStringNode(0, nullptr, first, nullptr));
}

TEST_F(TernaryKeyTreeNamesTest, NothingIsCutAtOrBehindASegmentsEnd) {
  CreateAll({"abc"});
  const std::string before = rig.Contents();
  for (unsigned int cut : {2u, 3u, 16u, 255u, 0xFFFFFFFFu}) {
    TernaryString* upper = nullptr;
    EXPECT_EQ(status::kNoData,
              rig.loaded.SplitString(0, StringOf("abc"), 0, cut, root->start, upper));
    EXPECT_EQ(upper, StringOf("abc"));
  }
  EXPECT_TRUE(rig.Contents() == before);
}

TEST_F(TernaryKeyTreeNamesTest, AStringThatDoesNotHangThereIsNotCut) {
  CreateAll({"abc", "abc/def"});
  const std::string before = rig.Contents();
  TernaryString* below = StringOf("abc/def");
  for (TernaryString* parent : {root->start, below}) {
    TernaryString* upper = nullptr;
    EXPECT_EQ(status::kBadArgument, rig.loaded.SplitString(0, below, 0, 1, parent, upper));
    EXPECT_EQ(upper, below);
  }
  TernaryString* upper = nullptr;
  EXPECT_EQ(status::kBadArgument, rig.loaded.SplitString(0, nullptr, 0, 0, root->start, upper));
  EXPECT_TRUE(rig.Contents() == before);
}

TEST_F(TernaryKeyTreeNamesTest, AStringThatIsLoadedElsewhereIsNotCut) {
  CreateAll({"m", "abc"});
  const std::string before = rig.Contents();
  TernaryString* m = StringOf("m");
  TernaryString* below = m->lower;
  m->lower = nullptr;
  TernaryString* upper = nullptr;
  EXPECT_EQ(status::kInvalidFile, rig.loaded.SplitString(0, below, 0, 1, m, upper));
  EXPECT_EQ(upper, below);
  m->lower = below;
  EXPECT_TRUE(rig.Contents() == before);
}

TEST_F(TernaryKeyTreeNamesTest, WithoutAParentTheUpperPartBecomesTheRoot) {
  CreateAll({"abc"});
  TernaryString* upper = nullptr;
  ASSERT_EQ(status::kOk, rig.loaded.SplitString(0, StringOf("abc"), 7, 1, nullptr, upper));
  EXPECT_EQ(0x300u, upper->id);
  EXPECT_EQ(FileBytes(rig.path, 4180 + 28, 4), std::string("\0\3\0\0", 4));
  ExpectNodes({"00001063 16*0 00020000 16*0", "00010062 8*0 00020000 8*0 61 15*0"});
  EXPECT_EQ(rig.StringNode(1), Packed("00001100 12*0 00020000 00010000 16*0"));
  // As it would have been with its parent.
  EXPECT_EQ(0u, rig.loaded.SetStartString(root->start));
  root->start->SetDirectory(upper);
  EXPECT_EQ(status::kOk, rig.loaded.File()->WriteNode(0, 0x100, &root->start->node, false));
}

TEST_F(TernaryKeyTreeNamesTest, ACutFirstLevelKeepsTheRoot) {
  CreateAll({"abc", "abc/x"});
  for (const char* name : {"axyz", "b12"}) {
    ASSERT_EQ(status::kOk, Create(name)) << name;
    EXPECT_EQ(FileBytes(rig.path, 4180 + 28, 4), std::string("\0\1\0\0", 4));
    EXPECT_EQ(rig.Root(), root->start);
    EXPECT_EQ(0x100u, root->start->id);
  }
}

TEST_F(TernaryKeyTreeNamesTest, AHandleOnACutStringGoesOn) {
  CreateAll({"abcdef", "abcdef/x"});
  TernaryHandle* handle = rig.Load("abcdef");
  TernaryString* start = handle->start;
  TernaryKey* x = rig.KeyOf(handle, "x");
  CreateAll({"abc", "abxyz", "abcdzz"});
  EXPECT_EQ(handle->start, start);
  EXPECT_EQ(StringOf("abcdef"), start);
  EXPECT_EQ(rig.KeyOf(handle, "x"), x);
  EXPECT_EQ(status::kOk, CreateThrough(handle, "y"));
  EXPECT_EQ(status::kOk, CreateThrough(handle, "xx"));
  EXPECT_EQ("abc abcdef abcdef/x abcdef/xx abcdef/y abcdzz abxyz", Stored());
  EXPECT_EQ(1u, start->loadCount);
  EXPECT_EQ(status::kOk, rig.Unload(handle));
  EXPECT_EQ(status::kOk, rig.Find(root, "abcdef/xx"));
}

// The other's change is written together with the lock that it has on the string.
TEST_F(TernaryKeyTreeNamesTest, ALockedStringIsCutWithItsLock) {
  CreateAll({"abc", "abc/x"});
  TernaryString* abc = StringOf("abc");
  ASSERT_EQ(status::kOk, abc->Lock(root));
  ASSERT_EQ(status::kOk, Create("ab"));
  EXPECT_TRUE(abc->isLocked());
  EXPECT_EQ(rig.StringNode(2), Packed("00001163 12*0 00030000 00020000 16*0"));
  ASSERT_EQ(status::kOk, abc->Unlock());
  EXPECT_EQ(status::kOk, rig.Find(root, "abc/x"));
}

}  // namespace
}  // namespace tamu::registry
