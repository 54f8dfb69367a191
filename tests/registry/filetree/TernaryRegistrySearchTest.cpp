#include <cstring>

#include "tests/registry/filetree/FileTreeRig.h"

namespace tamu::registry {

namespace {

typedef TernaryRegistry::KeyMatchDescriptor Match;

// All that a search reports, the ids in hex.
std::string Describe(unsigned int result, const Match& match) {
  char text[160];
  std::snprintf(text, sizeof text,
                "%u: node %x key %x position %u cut %d previous %x directory %x flags %x", result,
                match.node, match.keyNode, match.position, match.splitIndex, match.previous,
                match.directory, static_cast<unsigned int>(match.flags));
  return text;
}

std::string Search(FileTreeRig& rig, const char* path) {
  Match match;
  const unsigned int result = rig.tree.FindKey(0x100u, path, &match);
  return Describe(result, match);
}

// Status, node and key of a hit; where a search left the tree means nothing then.
std::string Hit(FileTreeRig& rig, const char* path) {
  Match match;
  const unsigned int result = rig.tree.FindKey(0x100u, path, &match);
  char text[64];
  std::snprintf(text, sizeof text, "%u: node %x key %x", result, match.node, match.keyNode);
  return text;
}

TEST(FileTreeSearch, AFreshDescriptorNamesNothing) {
  EXPECT_EQ(Describe(0, Match()),
            "0: node 0 key 0 position 0 cut -1 previous 0 directory 0 flags 0");
}

TEST(FileTreeSearch, TheEmptyPathIsTheRootKey) {
  FileTreeRig rig;
  ASSERT_EQ(rig.Create("abc"), 0u);
  EXPECT_EQ(Hit(rig, ""), "0: node 100 key 100");
  EXPECT_EQ(Hit(rig, "/"), "0: node 100 key 100");
  EXPECT_EQ(Hit(rig, nullptr), "0: node 100 key 100");
}

TEST(FileTreeSearch, InAnEmptyTreeEveryNameHangsFromTheRootsChildLink) {
  FileTreeRig rig;
  EXPECT_EQ(Search(rig, "x"),
            "2: node 100 key 0 position 0 cut -1 previous 0 directory 100 flags 1");
  EXPECT_EQ(Search(rig, "/x"),
            "2: node 100 key 0 position 1 cut -1 previous 0 directory 100 flags 1");
  EXPECT_EQ(Search(rig, "x/y/z"),
            "2: node 100 key 0 position 0 cut -1 previous 0 directory 100 flags 1");
  EXPECT_EQ(Search(rig, "//"),
            "2: node 100 key 0 position 1 cut -1 previous 0 directory 100 flags 1");
}

TEST(FileTreeSearch, APathThatLeavesASegmentTellsTheCut) {
  FileTreeRig rig;
  ASSERT_EQ(rig.Create("abcd"), 0u);  // one node, 200: segment "abc", split 'd'
  // The path ends inside the segment: the cut is the last character that matched.
  EXPECT_EQ(Search(rig, "a"),
            "2: node 200 key 0 position 0 cut 0 previous 100 directory 100 flags 0");
  EXPECT_EQ(Search(rig, "ab"),
            "2: node 200 key 0 position 0 cut 1 previous 100 directory 100 flags 0");
  EXPECT_EQ(Search(rig, "/abc"),
            "2: node 200 key 0 position 1 cut 2 previous 100 directory 100 flags 0");
  // A character differs: the cut is there.
  EXPECT_EQ(Search(rig, "xbcd"),
            "2: node 200 key 0 position 0 cut 0 previous 100 directory 100 flags 0");
  EXPECT_EQ(Search(rig, "abxd"),
            "2: node 200 key 0 position 0 cut 2 previous 100 directory 100 flags 0");
  EXPECT_EQ(Search(rig, "x"),
            "2: node 200 key 0 position 0 cut 0 previous 100 directory 100 flags 0");
  // A slash is a character like any other there.
  EXPECT_EQ(Search(rig, "a/bcd"),
            "2: node 200 key 0 position 0 cut 1 previous 100 directory 100 flags 0");
  EXPECT_EQ(Search(rig, "a/"),
            "2: node 200 key 0 position 0 cut 1 previous 100 directory 100 flags 0");
}

TEST(FileTreeSearch, APathThatLeavesAtASplitCharacterHangsFromItsLowOrHighLink) {
  FileTreeRig rig;
  ASSERT_EQ(rig.Create("abc"), 0u);
  EXPECT_EQ(Search(rig, "abb"),
            "2: node 200 key 0 position 2 cut -1 previous 100 directory 100 flags 0");
  EXPECT_EQ(Search(rig, "abdef"),
            "2: node 200 key 0 position 2 cut -1 previous 100 directory 100 flags 0");
  EXPECT_EQ(Search(rig, "ab/"),
            "2: node 200 key 0 position 2 cut -1 previous 100 directory 100 flags 0");
}

TEST(FileTreeSearch, ALongerNameHangsFromTheEqualLink) {
  FileTreeRig rig;
  ASSERT_EQ(rig.Create("abc"), 0u);
  EXPECT_EQ(Search(rig, "abcd"),
            "2: node 200 key 0 position 3 cut -1 previous 100 directory 100 flags 2");
  ASSERT_EQ(rig.Create("abcd"), 0u);  // 300 behind 200
  EXPECT_EQ(Search(rig, "abcde"),
            "2: node 300 key 0 position 4 cut -1 previous 200 directory 100 flags 2");
  EXPECT_EQ(Search(rig, "abcx"),
            "2: node 300 key 0 position 3 cut -1 previous 200 directory 100 flags 0");
}

TEST(FileTreeSearch, ANameThatEndsWithoutAKeyMissesAtItsNode) {
  FileTreeRig rig;
  ASSERT_EQ(rig.Create("ab"), 0u);
  ASSERT_EQ(rig.Create("bc"), 0u);  // cuts: 300 is 'a', with 200 'b' behind it and 400 "bc" higher
  EXPECT_EQ(Search(rig, "a"),
            "2: node 300 key 0 position 1 cut -1 previous 100 directory 100 flags 2");
  EXPECT_EQ(Search(rig, "/a"),
            "2: node 300 key 0 position 2 cut -1 previous 100 directory 100 flags 2");
  EXPECT_EQ(Search(rig, "b"),
            "2: node 400 key 0 position 0 cut 0 previous 300 directory 100 flags 0");
}

TEST(FileTreeSearch, ASubKeyHangsFromTheChildLink) {
  FileTreeRig rig;
  ASSERT_EQ(rig.Create("abc"), 0u);
  EXPECT_EQ(Search(rig, "abc/d"),
            "2: node 200 key 0 position 4 cut -1 previous 100 directory 200 flags 3");
  EXPECT_EQ(Search(rig, "/abc/d/e"),
            "2: node 200 key 0 position 5 cut -1 previous 100 directory 200 flags 3");
  EXPECT_EQ(Search(rig, "abc//"),
            "2: node 200 key 0 position 4 cut -1 previous 100 directory 200 flags 3");
}

TEST(FileTreeSearch, TheFlagsAreThoseOfTheLastNode) {
  FileTreeRig rig;
  ASSERT_EQ(rig.Create("abc"), 0u);
  ASSERT_EQ(rig.Create("abc/def"), 0u);  // 300 under 200: segment "de", split 'f'
  EXPECT_EQ(Search(rig, "abc/deg"),
            "2: node 300 key 0 position 6 cut -1 previous 200 directory 200 flags 0");
  EXPECT_EQ(Search(rig, "abc/de"),
            "2: node 300 key 0 position 4 cut 1 previous 200 directory 200 flags 0");
  EXPECT_EQ(Search(rig, "abc/defg"),
            "2: node 300 key 0 position 7 cut -1 previous 200 directory 200 flags 2");
  EXPECT_EQ(Search(rig, "abc/def/g"),
            "2: node 300 key 0 position 8 cut -1 previous 200 directory 300 flags 3");
  EXPECT_EQ(Hit(rig, "abc/def"), "0: node 300 key 300");
  EXPECT_EQ(Hit(rig, "/abc/def/"), "0: node 300 key 300");
}

TEST(FileTreeSearch, ATrailingSlashNamesTheSameKey) {
  FileTreeRig rig;
  ASSERT_EQ(rig.Create("a"), 0u);
  EXPECT_EQ(Hit(rig, "a/"), "0: node 200 key 200");
  EXPECT_EQ(Hit(rig, "/a/"), "0: node 200 key 200");
  EXPECT_EQ(rig.Find("a//"), 2u);
  EXPECT_EQ(rig.Find("//a"), 2u);
}

TEST(FileTreeSearch, ATrailingSlashFindsANameThatHasNoKey) {
  FileTreeRig rig;
  ASSERT_EQ(rig.Create("ab"), 0u);
  ASSERT_EQ(rig.Create("bc"), 0u);
  EXPECT_EQ(Hit(rig, "a/"), "0: node 300 key 0");
  EXPECT_EQ(rig.Find("a"), 2u);
}

TEST(FileTreeSearch, UpperAndLowerCaseAreDifferentNames) {
  FileTreeRig rig;
  ASSERT_EQ(rig.Create("a"), 0u);
  EXPECT_EQ(rig.Find("A"), 2u);
  ASSERT_EQ(rig.Create("A"), 0u);
  EXPECT_EQ(rig.KeyOf("a"), 0x200u);
  EXPECT_EQ(rig.KeyOf("A"), 0x300u);
}

TEST(FileTreeSearch, BytesFromHex80OnComeBeforeAllOthers) {
  FileTreeRig rig;
  ASSERT_EQ(rig.Create("m"), 0u);     // 200
  ASSERT_EQ(rig.Create("\x80"), 0u);  // 300, below 'm'
  ASSERT_EQ(rig.Create("\xFF"), 0u);  // 400, below 'm', above 80
  ASSERT_EQ(rig.Create("\x01"), 0u);  // 500, above FF
  ASSERT_EQ(rig.Create("\x7F"), 0u);  // 600, above 'm'
  EXPECT_EQ(rig.StringNode(2),
            "0000106d"
            "00030000"
            "00060000"
            "0000000000000000"
            "00020000");
  EXPECT_EQ(rig.StringNode(3),
            "00001080"
            "00000000"
            "00040000"
            "0000000000000000"
            "00030000");
  EXPECT_EQ(rig.StringNode(4),
            "000010ff"
            "00000000"
            "00050000"
            "0000000000000000"
            "00040000");
  for (const char* name : {"m", "\x80", "\xFF", "\x01", "\x7F"}) EXPECT_EQ(rig.Find(name), 0u);
  EXPECT_EQ(rig.Find("\x81"), 2u);
}

TEST(FileTreeSearch, SegmentsHoldAnyByteButTheSlash) {
  FileTreeRig rig;
  std::string name;
  for (int c = 1; c < 256; ++c) {
    if (c != '/') name += static_cast<char>(c);
  }
  ASSERT_EQ(rig.Create(name), 0u);
  EXPECT_EQ(rig.KeyOf(name), 0x200u);
  EXPECT_EQ(rig.Find(name + "x"), 2u);
  name.back() = '\xFE';
  EXPECT_EQ(rig.Find(name), 2u);
}

TEST(FileTreeSearch, AMissWritesNoIds) {
  FileTreeRig rig;
  ASSERT_EQ(rig.Create("a"), 0u);
  unsigned int node = 77;
  unsigned int key = 88;
  EXPECT_EQ(rig.tree.FindKey(nullptr, "b", &node, &key), 2u);
  EXPECT_EQ(node, 77u);
  EXPECT_EQ(key, 88u);
  EXPECT_EQ(rig.tree.FindKey(nullptr, "a", &node, &key), 0u);
  EXPECT_EQ(node, 0x200u);
  EXPECT_EQ(key, 0x200u);
}

// Any tree pointer but null starts the search at node 0, which is all zero.
TEST(FileTreeSearch, WithATreePointerOnlyTheEmptyPathIsThere) {
  FileTreeRig rig;
  ASSERT_EQ(rig.Create("a"), 0u);
  int anything = 0;
  unsigned int node = 77;
  unsigned int key = 88;
  EXPECT_EQ(rig.tree.FindKey(&anything, "a", &node, &key), 2u);
  EXPECT_EQ(rig.tree.FindKey(&anything, "", &node, &key), 0u);
  EXPECT_EQ(node, 0u);
  EXPECT_EQ(key, 0u);
  EXPECT_EQ(rig.tree.CreateKey(kAdmin, &anything, "b", 0, false), 1u);
  EXPECT_EQ(rig.tree.CreateKey(kAdmin, &anything, "", 0, false), 17u);
}

TEST(FileTreeSearch, NullPointersForResultsAreRefused) {
  FileTreeRig rig;
  unsigned int id = 0;
  EXPECT_EQ(rig.tree.FindKey(nullptr, "", nullptr, &id), 22u);
  EXPECT_EQ(rig.tree.FindKey(nullptr, "", &id, nullptr), 22u);
  EXPECT_EQ(rig.tree.FindKey(0x100u, "", nullptr), 22u);
}

TEST(FileTreeSearch, APathIsReadNoFurtherThanItsTerminator) {
  FileTreeRig rig;
  ASSERT_EQ(rig.Create("abcdefghijklmnopqrst"), 0u);
  const std::string longest = "/abcdefghijklmnopqrst/";
  for (size_t length = 0; length <= longest.size(); ++length) {
    char* exact = new char[length + 1];  // the sanitizer watches the byte behind it
    std::memcpy(exact, longest.c_str(), length);
    exact[length] = 0;
    unsigned int node = 0;
    unsigned int key = 0;
    const bool isKey = length <= 1 || length >= 21;
    EXPECT_EQ(rig.tree.FindKey(nullptr, exact, &node, &key), isKey ? 0u : 2u) << exact;
    delete[] exact;
  }
}

TEST(FileTreeSearch, TheLockIsFreeAfterEveryOutcome) {
  FileTreeRig rig;
  ASSERT_EQ(rig.Create("abc"), 0u);
  for (const char* path : {"", "abc", "abc/", "a", "abd", "abcd", "abc/d"}) {
    Search(rig, path);
    EXPECT_FALSE(rig.tree.ObjectLock().IsMine()) << path;
  }
}

TEST(FileTreeSearch, OwnerAdministratorAndOthersHaveTheirNibble) {
  TernaryKeyNode key;
  key.setOwner(kUser);
  for (unsigned int permission = 0; permission < 256; ++permission) {
    key.setPermission(static_cast<unsigned char>(permission));
    for (unsigned int right = 1; right <= 8; right *= 2) {
      const unsigned char asked = static_cast<unsigned char>(right);
      const bool owner = (permission & right) != 0;
      const bool others = (permission & (right * 16)) != 0;
      EXPECT_EQ(TernaryRegistry::isPermissible(&key, kUser, asked), owner);
      EXPECT_EQ(TernaryRegistry::isPermissible(&key, kAdmin, asked), owner);
      EXPECT_EQ(TernaryRegistry::isPermissible(&key, kOther, asked), others);
    }
  }
}

TEST(FileTreeSearch, OneOfTheRightsAskedForIsEnough) {
  TernaryKeyNode key;
  key.setOwner(kUser);
  key.setPermission(0x42);
  EXPECT_TRUE(TernaryRegistry::isPermissible(&key, kUser, 0x0F));
  EXPECT_TRUE(TernaryRegistry::isPermissible(&key, kOther, 0x06));
  EXPECT_FALSE(TernaryRegistry::isPermissible(&key, kUser, 0x0D));
  EXPECT_FALSE(TernaryRegistry::isPermissible(&key, kOther, 0x0B));
  EXPECT_FALSE(TernaryRegistry::isPermissible(&key, kUser, 0));
}

TEST(FileTreeSearch, APermissionOf0FDeniesEverybodyElse) {
  TernaryKeyNode key;
  key.setOwner(kUser);
  key.setPermission(0x0F);
  EXPECT_FALSE(TernaryRegistry::isPermissible(&key, kOther, 0x0F));
  EXPECT_TRUE(TernaryRegistry::isPermissible(&key, kUser, 8));
  EXPECT_TRUE(TernaryRegistry::isPermissible(&key, kAdmin, 8));
}

}  // namespace

}  // namespace tamu::registry
