#include <cstring>

#include "tests/registry/filetree/FileTreeRig.h"

namespace tamu::registry {

namespace {

typedef TernaryRegistry::KeyMatchDescriptor Match;

// All that a search reports, the ids in hex.
std::string Describe(unsigned int result, const Match& match) {
  char text[160];
  std::snprintf(
      text, sizeof text, "%u: node %x key %x position %u cut %d previous %x directory %x flags %x",
      result, unsigned{match.node}, unsigned{match.keyNode}, match.position, match.splitIndex,
      unsigned{match.previous}, unsigned{match.directory}, static_cast<unsigned int>(match.flags));
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
  std::snprintf(text, sizeof text, "%u: node %x key %x", result, unsigned{match.node},
                unsigned{match.keyNode});
  return text;
}

TEST(TernaryRegistrySearch, AFreshDescriptorNamesNothing) {
  EXPECT_EQ("0: node 0 key 0 position 0 cut -1 previous 0 directory 0 flags 0",
            Describe(0, Match()));
}

TEST(TernaryRegistrySearch, TheEmptyPathIsTheRootKey) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("abc"));
  EXPECT_EQ("0: node 100 key 100", Hit(rig, ""));
  EXPECT_EQ("0: node 100 key 100", Hit(rig, "/"));
  EXPECT_EQ("0: node 100 key 100", Hit(rig, nullptr));
}

TEST(TernaryRegistrySearch, InAnEmptyTreeEveryNameHangsFromTheRootsChildLink) {
  FileTreeRig rig;
  EXPECT_EQ("2: node 100 key 0 position 0 cut -1 previous 0 directory 100 flags 1",
            Search(rig, "x"));
  EXPECT_EQ("2: node 100 key 0 position 1 cut -1 previous 0 directory 100 flags 1",
            Search(rig, "/x"));
  EXPECT_EQ("2: node 100 key 0 position 0 cut -1 previous 0 directory 100 flags 1",
            Search(rig, "x/y/z"));
  EXPECT_EQ("2: node 100 key 0 position 1 cut -1 previous 0 directory 100 flags 1",
            Search(rig, "//"));
}

TEST(TernaryRegistrySearch, APathThatLeavesASegmentTellsTheCut) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("abcd"));  // one node, 200: segment "abc", split 'd'
  // The path ends inside the segment: the cut is the last character that matched.
  EXPECT_EQ("2: node 200 key 0 position 0 cut 0 previous 100 directory 100 flags 0",
            Search(rig, "a"));
  EXPECT_EQ("2: node 200 key 0 position 0 cut 1 previous 100 directory 100 flags 0",
            Search(rig, "ab"));
  EXPECT_EQ("2: node 200 key 0 position 1 cut 2 previous 100 directory 100 flags 0",
            Search(rig, "/abc"));
  // A character differs: the cut is there.
  EXPECT_EQ("2: node 200 key 0 position 0 cut 0 previous 100 directory 100 flags 0",
            Search(rig, "xbcd"));
  EXPECT_EQ("2: node 200 key 0 position 0 cut 2 previous 100 directory 100 flags 0",
            Search(rig, "abxd"));
  EXPECT_EQ("2: node 200 key 0 position 0 cut 0 previous 100 directory 100 flags 0",
            Search(rig, "x"));
  // A slash is a character like any other there.
  EXPECT_EQ("2: node 200 key 0 position 0 cut 1 previous 100 directory 100 flags 0",
            Search(rig, "a/bcd"));
  EXPECT_EQ("2: node 200 key 0 position 0 cut 1 previous 100 directory 100 flags 0",
            Search(rig, "a/"));
}

TEST(TernaryRegistrySearch, APathThatLeavesAtASplitCharacterHangsFromItsLowOrHighLink) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("abc"));
  EXPECT_EQ("2: node 200 key 0 position 2 cut -1 previous 100 directory 100 flags 0",
            Search(rig, "abb"));
  EXPECT_EQ("2: node 200 key 0 position 2 cut -1 previous 100 directory 100 flags 0",
            Search(rig, "abdef"));
  EXPECT_EQ("2: node 200 key 0 position 2 cut -1 previous 100 directory 100 flags 0",
            Search(rig, "ab/"));
}

TEST(TernaryRegistrySearch, ALongerNameHangsFromTheEqualLink) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("abc"));
  EXPECT_EQ("2: node 200 key 0 position 3 cut -1 previous 100 directory 100 flags 2",
            Search(rig, "abcd"));
  ASSERT_EQ(status::kOk, rig.Create("abcd"));  // 300 behind 200
  EXPECT_EQ("2: node 300 key 0 position 4 cut -1 previous 200 directory 100 flags 2",
            Search(rig, "abcde"));
  EXPECT_EQ("2: node 300 key 0 position 3 cut -1 previous 200 directory 100 flags 0",
            Search(rig, "abcx"));
}

TEST(TernaryRegistrySearch, ANameThatEndsWithoutAKeyMissesAtItsNode) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("ab"));
  ASSERT_EQ(status::kOk,
            rig.Create("bc"));  // cuts: 300 is 'a', with 200 'b' behind it and 400 "bc" higher
  EXPECT_EQ("2: node 300 key 0 position 1 cut -1 previous 100 directory 100 flags 2",
            Search(rig, "a"));
  EXPECT_EQ("2: node 300 key 0 position 2 cut -1 previous 100 directory 100 flags 2",
            Search(rig, "/a"));
  EXPECT_EQ("2: node 400 key 0 position 0 cut 0 previous 300 directory 100 flags 0",
            Search(rig, "b"));
}

TEST(TernaryRegistrySearch, ASubKeyHangsFromTheChildLink) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("abc"));
  EXPECT_EQ("2: node 200 key 0 position 4 cut -1 previous 100 directory 200 flags 3",
            Search(rig, "abc/d"));
  EXPECT_EQ("2: node 200 key 0 position 5 cut -1 previous 100 directory 200 flags 3",
            Search(rig, "/abc/d/e"));
  EXPECT_EQ("2: node 200 key 0 position 4 cut -1 previous 100 directory 200 flags 3",
            Search(rig, "abc//"));
}

TEST(TernaryRegistrySearch, TheFlagsAreThoseOfTheLastNode) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("abc"));
  ASSERT_EQ(status::kOk, rig.Create("abc/def"));  // 300 under 200: segment "de", split 'f'
  EXPECT_EQ("2: node 300 key 0 position 6 cut -1 previous 200 directory 200 flags 0",
            Search(rig, "abc/deg"));
  EXPECT_EQ("2: node 300 key 0 position 4 cut 1 previous 200 directory 200 flags 0",
            Search(rig, "abc/de"));
  EXPECT_EQ("2: node 300 key 0 position 7 cut -1 previous 200 directory 200 flags 2",
            Search(rig, "abc/defg"));
  EXPECT_EQ("2: node 300 key 0 position 8 cut -1 previous 200 directory 300 flags 3",
            Search(rig, "abc/def/g"));
  EXPECT_EQ("0: node 300 key 300", Hit(rig, "abc/def"));
  EXPECT_EQ("0: node 300 key 300", Hit(rig, "/abc/def/"));
}

TEST(TernaryRegistrySearch, ATrailingSlashNamesTheSameKey) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("a"));
  EXPECT_EQ("0: node 200 key 200", Hit(rig, "a/"));
  EXPECT_EQ("0: node 200 key 200", Hit(rig, "/a/"));
  EXPECT_EQ(status::kNotFound, rig.Find("a//"));
  EXPECT_EQ(status::kNotFound, rig.Find("//a"));
}

TEST(TernaryRegistrySearch, ATrailingSlashFindsANameThatHasNoKey) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("ab"));
  ASSERT_EQ(status::kOk, rig.Create("bc"));
  EXPECT_EQ("0: node 300 key 0", Hit(rig, "a/"));
  EXPECT_EQ(status::kNotFound, rig.Find("a"));
}

TEST(TernaryRegistrySearch, UpperAndLowerCaseAreDifferentNames) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("a"));
  EXPECT_EQ(status::kNotFound, rig.Find("A"));
  ASSERT_EQ(status::kOk, rig.Create("A"));
  EXPECT_EQ(0x200u, rig.KeyOf("a"));
  EXPECT_EQ(0x300u, rig.KeyOf("A"));
}

TEST(TernaryRegistrySearch, BytesFromHex80OnComeBeforeAllOthers) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("m"));     // 200
  ASSERT_EQ(status::kOk, rig.Create("\x80"));  // 300, below 'm'
  ASSERT_EQ(status::kOk, rig.Create("\xFF"));  // 400, below 'm', above 80
  ASSERT_EQ(status::kOk, rig.Create("\x01"));  // 500, above FF
  ASSERT_EQ(status::kOk, rig.Create("\x7F"));  // 600, above 'm'
  EXPECT_EQ(
      "0000106d"
      "00030000"
      "00060000"
      "0000000000000000"
      "00020000",
      rig.StringNode(2));
  EXPECT_EQ(
      "00001080"
      "00000000"
      "00040000"
      "0000000000000000"
      "00030000",
      rig.StringNode(3));
  EXPECT_EQ(
      "000010ff"
      "00000000"
      "00050000"
      "0000000000000000"
      "00040000",
      rig.StringNode(4));
  for (const char* name : {"m", "\x80", "\xFF", "\x01", "\x7F"})
    EXPECT_EQ(status::kOk, rig.Find(name));
  EXPECT_EQ(status::kNotFound, rig.Find("\x81"));
}

TEST(TernaryRegistrySearch, SegmentsHoldAnyByteButTheSlash) {
  FileTreeRig rig;
  std::string name;
  for (int c = 1; c < 256; ++c) {
    if (c != '/') name += static_cast<char>(c);
  }
  ASSERT_EQ(status::kOk, rig.Create(name));
  EXPECT_EQ(0x200u, rig.KeyOf(name));
  EXPECT_EQ(status::kNotFound, rig.Find(name + "x"));
  name.back() = '\xFE';
  EXPECT_EQ(status::kNotFound, rig.Find(name));
}

TEST(TernaryRegistrySearch, AMissWritesNoIds) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("a"));
  unsigned int node = 77;
  unsigned int key = 88;
  EXPECT_EQ(status::kNotFound, rig.tree.FindKey(nullptr, "b", &node, &key));
  EXPECT_EQ(77u, node);
  EXPECT_EQ(88u, key);
  EXPECT_EQ(status::kOk, rig.tree.FindKey(nullptr, "a", &node, &key));
  EXPECT_EQ(0x200u, node);
  EXPECT_EQ(0x200u, key);
}

// Any tree pointer but null starts the search at node 0, which is all zero.
TEST(TernaryRegistrySearch, WithATreePointerOnlyTheEmptyPathIsThere) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("a"));
  int anything = 0;
  unsigned int node = 77;
  unsigned int key = 88;
  EXPECT_EQ(status::kNotFound, rig.tree.FindKey(&anything, "a", &node, &key));
  EXPECT_EQ(status::kOk, rig.tree.FindKey(&anything, "", &node, &key));
  EXPECT_EQ(0u, node);
  EXPECT_EQ(0u, key);
  EXPECT_EQ(status::kNoRight, rig.tree.CreateKey(kAdmin, &anything, "b", 0, false));
  EXPECT_EQ(status::kExists, rig.tree.CreateKey(kAdmin, &anything, "", 0, false));
}

TEST(TernaryRegistrySearch, NullPointersForResultsAreRefused) {
  FileTreeRig rig;
  unsigned int id = 0;
  EXPECT_EQ(status::kBadArgument, rig.tree.FindKey(nullptr, "", nullptr, &id));
  EXPECT_EQ(status::kBadArgument, rig.tree.FindKey(nullptr, "", &id, nullptr));
  EXPECT_EQ(status::kBadArgument, rig.tree.FindKey(0x100u, "", nullptr));
}

TEST(TernaryRegistrySearch, APathIsReadNoFurtherThanItsTerminator) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("abcdefghijklmnopqrst"));
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

TEST(TernaryRegistrySearch, TheLockIsFreeAfterEveryOutcome) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("abc"));
  for (const char* path : {"", "abc", "abc/", "a", "abd", "abcd", "abc/d"}) {
    Search(rig, path);
    EXPECT_FALSE(rig.tree.ObjectLock().IsMine()) << path;
  }
}

TEST(TernaryRegistrySearch, OwnerAdministratorAndOthersHaveTheirNibble) {
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

TEST(TernaryRegistrySearch, OneOfTheRightsAskedForIsEnough) {
  TernaryKeyNode key;
  key.setOwner(kUser);
  key.setPermission(0x42);
  EXPECT_TRUE(TernaryRegistry::isPermissible(&key, kUser, 0x0F));
  EXPECT_TRUE(TernaryRegistry::isPermissible(&key, kOther, 0x06));
  EXPECT_FALSE(TernaryRegistry::isPermissible(&key, kUser, 0x0D));
  EXPECT_FALSE(TernaryRegistry::isPermissible(&key, kOther, 0x0B));
  EXPECT_FALSE(TernaryRegistry::isPermissible(&key, kUser, 0));
}

TEST(TernaryRegistrySearch, APermissionOf0FDeniesEverybodyElse) {
  TernaryKeyNode key;
  key.setOwner(kUser);
  key.setPermission(0x0F);
  EXPECT_FALSE(TernaryRegistry::isPermissible(&key, kOther, 0x0F));
  EXPECT_TRUE(TernaryRegistry::isPermissible(&key, kUser, 8));
  EXPECT_TRUE(TernaryRegistry::isPermissible(&key, kAdmin, 8));
}

}  // namespace

}  // namespace tamu::registry
