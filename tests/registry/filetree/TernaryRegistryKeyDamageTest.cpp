// Links that lead back, and what two lead to: listing and counting tell of it, deleting takes what
// it can reach and nothing twice.
#include "tests/registry/filetree/KeyDamage.h"

namespace tamu::registry {

namespace {

TEST(TernaryRegistryKeyDamage, AnImpossibleSegmentLengthIsNotListed) {
  FileTreeRig rig;
  Create(rig, {"a", "a/m", "a/t", "b"});
  for (unsigned int length = 17; length <= 255; ++length) {
    rig.Patch(InString(3, kSegmentLength), HexOf(std::string(1, static_cast<char>(length))));
    EXPECT_EQ("59:", Listed(rig, "a")) << length;  // before any neighbour
    EXPECT_EQ("59: b", Listed(rig, "")) << length;
    EXPECT_EQ("59:", Listed(rig, "", 100)) << length;
  }
  EXPECT_EQ("0: 2 of 2 keys, 0 of 0 values", Counted(rig, "a"));  // without looking at names
  ExpectHealed(rig, "a", "361 362 364 364");
}

TEST(TernaryRegistryKeyDamage, TheLongestSegmentIsListed) {
  FileTreeRig rig;
  Create(rig, {"0123456789abcdefg"});
  ASSERT_EQ("10", rig.Hex(InString(2, kSegmentLength), 1));
  EXPECT_EQ("0: 0123456789abcdefg", Listed(rig, ""));
}

TEST(TernaryRegistryKeyDamage, AZeroByteEndsTheNameListed) {
  FileTreeRig rig;
  Create(rig, {"abcd", "abcd/x"});
  rig.Patch(InString(2, 24 + 1), "00");
  EXPECT_EQ("0: a a", Listed(rig, ""));
}

TEST(TernaryRegistryKeyDamage, ANodeThatLinksToItself) {
  for (unsigned int link : kLinks) {
    SCOPED_TRACE(link);
    FileTreeRig rig;
    Create(rig, {"a", "a/m"});
    ASSERT_EQ(status::kOk, rig.CreateNumber("a/m", "n", 1));
    rig.PatchWord(InString(3, link), 0x300);
    ExpectBelow(rig, "a", "59:", "59");
    ExpectBelow(rig, "", "59:", "59");
    ExpectHealed(rig, "a", "362 363 364 364");
  }
}

TEST(TernaryRegistryKeyDamage, TwoNodesThatLinkToEachOther) {
  const struct {
    const char* second;  // 400, hangs from "a/m", 300
    unsigned int link;   // of 400, leads back to 300
  } cases[] = {{"a/f", kLo},   {"a/f", kHi},   {"a/f", kEqual},   {"a/f", kChild},
               {"a/t", kHi},   {"a/t", kLo},   {"a/t", kEqual},   {"a/t", kChild},
               {"a/mn", kLo},  {"a/mn", kHi},  {"a/mn", kEqual},  {"a/mn", kChild},
               {"a/m/n", kLo}, {"a/m/n", kHi}, {"a/m/n", kEqual}, {"a/m/n", kChild}};
  for (const auto& each : cases) {
    SCOPED_TRACE(std::string(each.second) + " " + std::to_string(each.link));
    FileTreeRig rig;
    Create(rig, {"a", "a/m", each.second});
    rig.PatchWord(InString(4, each.link), 0x300);
    ExpectBelow(rig, "a", "59:", "59");
    ExpectHealed(rig, "a", "362 363 364 364");
  }
}

// What links upward stays with those above.
TEST(TernaryRegistryKeyDamage, ALinkToAKeyAbove) {
  const struct {
    unsigned int link;
    unsigned int above;
  } cases[] = {{kLo, 0x100},    {kLo, 0x200},    {kLo, 0x300},    {kHi, 0x100},
               {kHi, 0x200},    {kEqual, 0x100}, {kEqual, 0x200}, {kEqual, 0x300},
               {kChild, 0x100}, {kChild, 0x200}, {kChild, 0x300}, {kChild, 0x400}};
  for (const auto& each : cases) {
    for (const char* deleted : {"a/b/c", "a/b", "a"}) {
      SCOPED_TRACE(std::to_string(each.link) + " to " + std::to_string(each.above) + ", " +
                   deleted);
      FileTreeRig rig;
      Create(rig, {"a", "a/b", "a/b/c", "a/b/c/d", "z"});
      rig.PatchWord(InString(5, each.link), each.above);  // "d"
      ExpectBelow(rig, "", "59: z", "59");
      const std::string path = deleted;
      const char* const freeSlots = path == "a"     ? "361 362 364 364"
                                    : path == "a/b" ? "360 361 364 364"
                                                    : "359 360 364 364";
      ExpectHealed(rig, path, freeSlots);
      EXPECT_EQ(Listed(rig, ""), path == "a" ? "0: z" : path == "a/b" ? "0: z a" : "0: z a/b a");
    }
  }
}

// "f" is looked for by way of "m".
TEST(TernaryRegistryKeyDamage, ALinkToANodeOnTheWayToTheKey) {
  for (unsigned int link : kLinks) {
    SCOPED_TRACE(link);
    FileTreeRig rig;
    Create(rig, {"m", "f", "f/x"});
    ASSERT_EQ(status::kOk, rig.CreateNumber("m", "n", 1));
    rig.PatchWord(InString(4, link), 0x200);
    ExpectHealed(rig, "f", "361 362 363 364");
    EXPECT_EQ("0: m", Listed(rig, ""));
    EXPECT_EQ("0: n", ListedValues(rig, "m"));
  }
}

TEST(TernaryRegistryKeyDamage, AKeyThatIsItsOwnChild) {
  FileTreeRig rig;
  Create(rig, {"a", "b"});
  rig.PatchWord(InString(2, kChild), 0x200);
  ExpectBelow(rig, "a", "59: b", "59");
  ExpectHealed(rig, "a", "361 362 364 364");
  EXPECT_EQ("0: b", Listed(rig, ""));
}

TEST(TernaryRegistryKeyDamage, TheRootAsItsOwnChild) {
  FileTreeRig rig;
  rig.PatchWord(InString(1, kChild), 0x100);
  EXPECT_EQ("59", Counted(rig, ""));
  ExpectHealed(rig, "", "363 364 364 364");
}

TEST(TernaryRegistryKeyDamage, ANodeThatTwoLinkTo) {
  for (const char* deleted : {"a", "a/c"}) {
    FileTreeRig rig;
    Create(rig, {"a", "a/b", "a/c", "a/b/x"});
    ASSERT_EQ(status::kOk, rig.CreateNumber("a/b/x", "n", 1));
    rig.PatchWord(InString(4, kChild), 0x500);
    ExpectBelow(rig, "a", "59: c/x c", "59");
    ExpectBelow(rig, "a/b", "0: x", "0: 1 of 1 keys, 0 of 1 values");
    ExpectBelow(rig, "a/c", "0: x", "0: 1 of 1 keys, 0 of 1 values");
    if (std::string(deleted) == "a") {
      ExpectHealed(rig, "a", "362 363 364 364");
      continue;
    }
    // The other link leads to a free node then, which is not given back a second time.
    ExpectDeleted(rig, "a/c", "360 361 364 364");
    ExpectHealed(rig, "a", "362 363 364 364");
  }
}

TEST(TernaryRegistryKeyDamage, AKeyThatTwoNodesShare) {
  FileTreeRig rig;
  Create(rig, {"a", "a/b", "a/c"});
  rig.PatchWord(InString(3, kKeyLink), 0x400);
  ExpectBelow(rig, "a", "0: c b", "0: 2 of 2 keys, 0 of 0 values");
  ExpectHealed(rig, "a", "362 362 364 364");  // nothing leads to the other key any more
}

TEST(TernaryRegistryKeyDamage, AKeyWithValuesThatTwoNodesShare) {
  FileTreeRig rig;
  Create(rig, {"a", "a/b", "a/c"});
  for (const char* name : {"1", "2"}) ASSERT_EQ(status::kOk, rig.CreateNumber("a/c", name, 1));
  rig.PatchWord(InString(3, kKeyLink), 0x400);
  ExpectBelow(rig, "a", "0: c b", "59");
  EXPECT_EQ("0: 2 1", ListedValues(rig, "a/b"));
  ExpectHealed(rig, "a", "362 362 364 364");
}

TEST(TernaryRegistryKeyDamage, AKeyOfAnotherThatIsDeleted) {
  for (unsigned int key : {0x100u, 0x200u, 0x400u}) {
    SCOPED_TRACE(key);
    FileTreeRig rig;
    Create(rig, {"a", "a/b", "c"});
    ASSERT_EQ(status::kOk, rig.CreateNumber("c", "n", 1));
    ASSERT_EQ(status::kOk, rig.CreateNumber("a", "n", 1));
    rig.PatchWord(InString(3, kKeyLink), key);
    EXPECT_EQ(status::kOk, DeleteKey(rig, "a"));
    EXPECT_EQ("", FreeLists(rig));
    EXPECT_EQ(status::kOk, DeleteKey(rig, "c"));
    EXPECT_EQ("", FreeLists(rig));
  }
}

TEST(TernaryRegistryKeyDamage, TheKeysOnTheWayToADeletedOneStay) {
  for (unsigned int key : {0x100u, 0x200u}) {  // the root's, that of "a"
    SCOPED_TRACE(key);
    FileTreeRig rig;
    Create(rig, {"a", "a/b", "a/b/c"});
    ASSERT_EQ(status::kOk, rig.CreateNumber("a", "n", 1));
    rig.PatchWord(InString(4, kKeyLink), key);
    ASSERT_EQ(status::kOk, DeleteKey(rig, "a/b"));
    EXPECT_EQ("", FreeLists(rig));
    EXPECT_EQ("361 361 363 364", FreeSlots(rig));  // "a/b/c" is gone, its key never came back
    ASSERT_EQ(status::kOk, rig.tree.CreateKey(kUser, nullptr, "z", 0, false));
    EXPECT_EQ("0: z a", Listed(rig, ""));
    EXPECT_EQ("0: n", ListedValues(rig, "a"));
  }
}

TEST(TernaryRegistryKeyDamage, ValuesThatTwoKeysShare) {
  FileTreeRig rig;
  Create(rig, {"a", "a/b", "a/c"});
  for (const char* name : {"1", "2"}) ASSERT_EQ(status::kOk, rig.CreateNumber("a/b", name, 1));
  ASSERT_EQ(status::kOk, rig.CreateNumber("a/c", "3", 1));
  rig.PatchWord(InValue(3, 0), 0x100);  // "3" goes on with "1"
  rig.Patch(InKey(4, 4), "0200");
  EXPECT_EQ("0: 3 1", ListedValues(rig, "a/c"));
  EXPECT_EQ("0: 0 of 0 keys, 2 of 2 values", Counted(rig, "a/c"));
  ExpectBelow(rig, "a", "0: c b", "59");
  ExpectHealed(rig, "a", "362 363 364 364");
}

}  // namespace

}  // namespace tamu::registry
