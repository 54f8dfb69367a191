// Ids that name nothing, chains of values that lead back, and files that cannot be read: listing
// and counting tell of it, deleting takes what it can reach, and the free lists stay whole.
#include "tests/registry/filetree/KeyDamage.h"
#include "tests/registry/filetree/SharedStore.h"
#include "tests/support/LengthLook.h"

namespace tamu::registry {

namespace {

TEST(TernaryRegistryKeyIdDamage, AValueThatIsItsOwnNext) {
  FileTreeRig rig;
  Create(rig, {"a", "a/b"});
  ASSERT_EQ(status::kOk, rig.CreateNumber("a/b", "1", 1));
  ASSERT_EQ(status::kOk, rig.CreateNumber("a/b", "2", 1));
  rig.PatchWord(InValue(1, 0), 0x100);
  ExpectBelow(rig, "a/b", "0:", "59");
  ExpectBelow(rig, "a", "0: b", "59");
  OnSmallStack([&] {
    EXPECT_EQ("75: 2 1 1", ListedValues(rig, "a/b", 0, 3));
    NameList list(1000);
    EXPECT_EQ(status::kInvalidFile, rig.tree.ListValues(kAdmin, nullptr, "a/b", 1, &list));
    EXPECT_EQ(363u, list.Count());  // as many values as a file of this size can have, but one
  });
  ExpectHealed(rig, "a/b", "361 362 364 364");
}

TEST(TernaryRegistryKeyIdDamage, TwoValuesThatLeadToEachOther) {
  FileTreeRig rig;
  Create(rig, {"a", "a/b"});
  for (const char* name : {"1", "2", "3"}) ASSERT_EQ(status::kOk, rig.CreateNumber("a/b", name, 1));
  rig.PatchWord(InValue(1, 0), 0x200);
  TernaryKeyNode key;
  key.setFirstValue(0x300);
  unsigned int count = 0;
  OnSmallStack([&] {
    NameList list(1000);
    EXPECT_EQ(status::kInvalidFile, rig.tree.ListValues(kAdmin, nullptr, "a/b", 0, &list));
    EXPECT_EQ(status::kInvalidFile, rig.tree.CountKeyValues(&count, &key));
  });
  ExpectBelow(rig, "a/b", "0:", "59");
  ExpectBelow(rig, "a", "0: b", "59");
  const std::string before = rig.KeyNode(3);
  OnSmallStack([&] { EXPECT_EQ(status::kInvalidFile, rig.tree.DeleteAllValues(0, 0x300)); });
  EXPECT_EQ(364u, rig.FreeValues());
  EXPECT_EQ("01000000 02000000 03000000 04000000 05000000", Entries(rig, kValueTable, 5))
      << "the values 3, 2 and 1 in this order";
  EXPECT_EQ(rig.KeyNode(3), before);
}

TEST(TernaryRegistryKeyIdDamage, ALinkToANodeThatDoesNotExist) {
  for (unsigned int bad : kBadIds) {
    for (unsigned int link : kLinks) {
      SCOPED_TRACE(std::to_string(bad) + " at " + std::to_string(link));
      FileTreeRig rig;
      Create(rig, {"a", "a/m", "a/f", "a/t", "a/mn", "a/m/x"});
      ASSERT_EQ(status::kOk, rig.CreateNumber("a/t", "n", 1));
      rig.PatchWord(InString(3, link), bad);
      ExpectBelow(rig, "a",
                  link == kHi      ? "59:"
                  : link == kLo    ? "59: t"
                  : link == kEqual ? "59: t f"
                                   : "59: t f mn",
                  "59");
      // What the link led to stays in use, and is reached no more.
      ExpectHealed(rig, "a", link == kHi ? "361 362 363 364" : "361 362 364 364");
    }
  }
}

TEST(TernaryRegistryKeyIdDamage, SubKeysThatDoNotExist) {
  for (unsigned int bad : kBadIds) {
    SCOPED_TRACE(bad);
    FileTreeRig rig;
    Create(rig, {"a", "b"});
    rig.PatchWord(InString(2, kChild), bad);
    ExpectBelow(rig, "a", "59:", "59");
    ExpectBelow(rig, "", "59: b", "59");
    const std::string before = rig.Contents();
    EXPECT_EQ(status::kInvalidFile, rig.tree.RecursiveDeleteKeyTree(0, bad));
    EXPECT_EQ(rig.Contents(), before);
    ExpectHealed(rig, "a", "361 362 364 364");
    EXPECT_EQ(rig.StringNode(2),
              "00000061"
              "00000000"
              "00030000" +
                  std::string(24, '0'));
  }
}

TEST(TernaryRegistryKeyIdDamage, AKeyThatDoesNotExist) {
  for (unsigned int bad : kBadIds) {
    SCOPED_TRACE(bad);
    FileTreeRig rig;
    Create(rig, {"a", "a/b", "a/b/c"});
    rig.PatchWord(InString(3, kKeyLink), bad);
    ExpectBelow(rig, "a", "0: b/c b", "59");
    ExpectBelow(rig, "a/b", "59:", "59");
    const std::string before = rig.Contents();
    unsigned char permission = 77;
    EXPECT_EQ(status::kInvalidFile, DeleteKey(rig, "a/b"));
    EXPECT_EQ("59:", ListedValues(rig, "a/b"));
    EXPECT_EQ(status::kInvalidFile, rig.tree.GetKeyPermission(kAdmin, nullptr, "a/b", &permission));
    EXPECT_EQ(status::kInvalidFile, rig.tree.SetKeyPermission(kAdmin, nullptr, "a/b", 1));
    EXPECT_EQ(status::kInvalidFile, rig.tree.SetKeyWatch(kAdmin, nullptr, "a/b", 1));
    EXPECT_EQ(status::kInvalidFile, rig.tree.DeleteSingleKey(0, bad));
    EXPECT_EQ(status::kInvalidFile, rig.tree.DeleteAllValues(0, bad));
    EXPECT_EQ(77u, permission);
    EXPECT_EQ(rig.Contents(), before);
    ExpectHealed(rig, "a", "362 362 364 364");  // the key of "b" stays in use
  }
}

TEST(TernaryRegistryKeyIdDamage, AValueThatDoesNotExist) {
  for (unsigned int bad : kBadIds) {
    SCOPED_TRACE(bad);
    FileTreeRig rig;
    Create(rig, {"a", "a/b"});
    for (const char* name : {"1", "2", "3"})
      ASSERT_EQ(status::kOk, rig.CreateNumber("a/b", name, 1));
    rig.PatchWord(InValue(2, 0), bad);
    EXPECT_EQ("59: 3 2", ListedValues(rig, "a/b"));
    EXPECT_EQ("59:", ListedValues(rig, "a/b", 2));
    EXPECT_EQ("59: 3 2", ListedValues(rig, "a/b", 0, 2));
    ExpectBelow(rig, "a", "0: b", "59");
    ExpectBelow(rig, "a/b", "0:", "59");
    TernaryKeyNode key;
    unsigned int count = 10;
    key.setFirstValue(bad);  // the first one is not counted when it cannot be read
    EXPECT_EQ(status::kInvalidFile, rig.tree.CountKeyValues(&count, &key));
    EXPECT_EQ(10u, count);
    key.setFirstValue(0x300);  // a later one is
    EXPECT_EQ(status::kInvalidFile, rig.tree.CountKeyValues(&count, &key));
    EXPECT_EQ(13u, count);
    ExpectHealed(rig, "a", "362 363 363 364");
  }
}

// The values of a key are walked to their end, whatever number its record tells.
TEST(TernaryRegistryKeyIdDamage, ANumberOfValuesThatIsWrong) {
  FileTreeRig rig;
  for (const char* name : {"1", "2", "3"}) ASSERT_EQ(status::kOk, rig.CreateNumber("", name, 1));
  rig.Patch(InKey(1, 4), "0500");
  EXPECT_EQ("0: 3 2 1", ListedValues(rig, ""));
  EXPECT_EQ("0:", ListedValues(rig, "", 3));
  EXPECT_EQ("75:", ListedValues(rig, "", 5));
  rig.Patch(InKey(1, 4), "0200");
  EXPECT_EQ("0: 3 2 1", ListedValues(rig, ""));
  EXPECT_EQ("0: 2 1", ListedValues(rig, "", 1));
  EXPECT_EQ("75:", ListedValues(rig, "", 2));
}

TEST(TernaryRegistryKeyIdDamage, ANameOfAValueWithoutEnd) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.CreateNumber("", "n", 0x7A7A7A7A7A7A7A7A));  // "z" behind the name
  rig.Patch(InValue(1, 12), Repeated("79", 32));
  EXPECT_EQ(ListedValues(rig, ""), "0: " + std::string(32, 'y'));
}

TEST(TernaryRegistryKeyIdDamage, WhatIsFreeIsNotGivenBackAgain) {
  FileTreeRig rig;
  Create(rig, {"a", "a/m", "a/f", "a/b"});  // "b" hangs from "f"
  for (const char* name : {"1", "2"}) ASSERT_EQ(status::kOk, rig.CreateNumber("a/m", name, 1));
  rig.PatchWord(InString(4, kHi), 9u << 8);       // never used
  rig.PatchWord(InString(5, kChild), 364u << 8);  // the last one
  rig.PatchWord(InString(5, kKeyLink), 10u << 8);
  rig.PatchWord(InValue(2, 0), 11u << 8);
  ExpectBelow(rig, "a", "0: b f m", "0: 3 of 3 keys, 0 of 2 values");
  ExpectHealed(rig, "a", "362 362 363 364");
}

// What a free value leads to is somebody else's by now.
TEST(TernaryRegistryKeyIdDamage, AFreeValueEndsTheValuesGivenBack) {
  SharedStore shared;
  for (const char* name : {"1", "2", "3"}) {
    ASSERT_EQ(status::kOk, shared.tree.CreateValue(kAdmin, nullptr, "", name, 1, true));
  }
  ASSERT_EQ(status::kOk, shared.store.ReleaseValueNode(0, 0x200, nullptr));
  EXPECT_EQ(status::kInvalidFile, shared.tree.DeleteAllValues(0, 0x100));
  const std::string bytes = FileBytes(shared.path, 0, 100000);
  EXPECT_EQ(363u, storetests::U32At(bytes, kValueTable + 28));  // "1" is in use
  EXPECT_EQ(3u, storetests::U32At(bytes, kValueTable + 32));
  EXPECT_EQ(2u, storetests::U32At(bytes, kValueTable + 32 + 4 * 3));
  EXPECT_EQ("", storetests::FreeListFindings(bytes));
}

TEST(TernaryRegistryKeyIdDamage, AFileThatWasClosedCannotBeRead) {
  FileTreeRig rig;
  Create(rig, {"a", "a/b"});
  ASSERT_EQ(status::kOk, rig.CreateNumber("a", "n", 1));
  TernaryFile::file.Destroy();
  const std::string before = rig.Contents();
  unsigned char permission = 77;
  EXPECT_EQ("5:", Listed(rig, "a"));
  EXPECT_EQ("5:", ListedValues(rig, "a"));
  EXPECT_EQ("5", Counted(rig, "a"));
  EXPECT_EQ(status::kInputOutput, DeleteKey(rig, "a"));
  EXPECT_EQ(status::kInputOutput, rig.tree.GetKeyPermission(kAdmin, nullptr, "a", &permission));
  EXPECT_EQ(status::kInputOutput, rig.tree.SetKeyPermission(kAdmin, nullptr, "a", 1));
  EXPECT_EQ(status::kInputOutput, rig.tree.SetKeyWatch(kAdmin, nullptr, "a", 1));
  EXPECT_EQ(status::kInputOutput, rig.tree.DeleteSingleKey(0, 0x200));
  EXPECT_EQ(status::kInputOutput, rig.tree.DeleteAllValues(0, 0x200));
  EXPECT_EQ(status::kInputOutput, rig.tree.RecursiveDeleteKeyTree(0, 0x200));
  EXPECT_EQ(77u, permission);
  EXPECT_EQ(rig.Contents(), before);
}

TEST(TernaryRegistryKeyIdDamage, AFileThatWasCutIsReadUpToTheCut) {
  FileTreeRig rig;
  Create(rig, {"a", "a/b"});
  ASSERT_EQ(status::kOk, rig.CreateNumber("a/b", "n", 1));
  ASSERT_EQ(0, CutFile(rig.path, kValueArea));
  EXPECT_EQ("0: a/b a", Listed(rig, ""));
  EXPECT_EQ("5:", ListedValues(rig, "a/b"));
  EXPECT_EQ("5", Counted(rig, "a"));
  ASSERT_EQ(0, CutFile(rig.path, InString(3, 0)));
  EXPECT_EQ("5:", Listed(rig, ""));
  EXPECT_EQ("5", Counted(rig, ""));
}

TEST(TernaryRegistryKeyIdDamage, ValuesBehindTheCutStayInUse) {
  FileTreeRig rig;
  Create(rig, {"a", "a/b"});
  for (const char* name : {"1", "2"}) ASSERT_EQ(status::kOk, rig.CreateNumber("a/b", name, 1));
  ASSERT_EQ(status::kOk, rig.CreateNumber("a", "3", 1));
  ASSERT_EQ(0, CutFile(rig.path, kValueArea));
  ExpectDeleted(rig, "a", "362 363 361 364");
  EXPECT_EQ("0:", Listed(rig, ""));
}

TEST(TernaryRegistryKeyIdDamage, ValuesBeforeTheCutAreGivenBack) {
  FileTreeRig rig;
  Create(rig, {"a", "a/b"});
  ASSERT_EQ(status::kOk, rig.CreateNumber("a/b", "first", 1));
  ASSERT_EQ(status::kOk, rig.CreateNumber("a/b", "older", 1));
  ASSERT_EQ(status::kOk, rig.Delete("a/b", "first"));
  ASSERT_EQ(status::kOk, rig.CreateNumber("a/b", "newer", 1));  // slot 1, and leads to slot 2
  ASSERT_EQ(0, CutFile(rig.path, InValue(2, 0)));
  ExpectDeleted(rig, "a", "362 363 363 364");
  EXPECT_EQ("0:", Listed(rig, ""));
}

}  // namespace

}  // namespace tamu::registry
