// Listing the names of keys.
#include "tests/registry/filetree/KeyTesting.h"

namespace tamu::registry {

namespace {

// "x", "y", "z", "x" and so on, `length` characters.
std::string LongName(unsigned int length) {
  std::string name;
  for (unsigned int i = 0; i < length; ++i) name += static_cast<char>('x' + i % 3);
  return name;
}

// At each node what is greater comes first, then what is smaller, then what is longer, then what is
// below, and then the key itself.
TEST(FileTreeListing, GreaterNamesComeFirst) {
  FileTreeRig rig;
  CreateFiveKeys(rig);
  EXPECT_EQ(Listed(rig, ""), "0: t f mn m/x m");
  for (const char* key : {"z", "p", "h", "b"}) ASSERT_EQ(rig.Create(key), 0u);
  EXPECT_EQ(Listed(rig, ""), "0: z p t h b f mn m/x m");
}

TEST(FileTreeListing, NamesThatAscendComeInDescendingOrder) {
  FileTreeRig rig;
  for (const char* key : {"a", "b", "c", "d", "da", "db"}) ASSERT_EQ(rig.Create(key), 0u);
  EXPECT_EQ(Listed(rig, ""), "0: db da d c b a");
}

TEST(FileTreeListing, KeysAtEveryDepthAreNamedFromTheKeyListed) {
  FileTreeRig rig;
  for (const char* key : {"a", "a/b", "a/b/c", "a/b/c/d", "a/bb", "ab", "a/b/e"}) {
    ASSERT_EQ(rig.Create(key), 0u) << key;
  }
  EXPECT_EQ(Listed(rig, ""), "0: ab a/bb a/b/e a/b/c/d a/b/c a/b a");
  EXPECT_EQ(Listed(rig, "a"), "0: bb b/e b/c/d b/c b");
  EXPECT_EQ(Listed(rig, "a/b"), "0: e c/d c");
  EXPECT_EQ(Listed(rig, "a/b/c"), "0: d");
  EXPECT_EQ(Listed(rig, "/a/b/c/"), "0: d");
}

// Names that were cut where others part from them are spelt as before.
TEST(FileTreeListing, NamesInSeveralNodesAreSpeltWhole) {
  FileTreeRig rig;
  for (const char* key : {"network", "net", "networks", "netsup", "netsup/x", "nest"}) {
    ASSERT_EQ(rig.Create(key), 0u) << key;
  }
  EXPECT_EQ(Listed(rig, ""), "0: nest netsup/x netsup networks network net");
}

TEST(FileTreeListing, AKeyWithoutSubKeysAddsNothing) {
  FileTreeRig rig;
  EXPECT_EQ(Listed(rig, ""), "0:");
  ASSERT_EQ(rig.Create("a"), 0u);
  ASSERT_EQ(rig.Create("ab"), 0u);
  EXPECT_EQ(Listed(rig, "a"), "0:");
  EXPECT_EQ(Listed(rig, "ab", 5, 1), "0:");
  EXPECT_EQ(Listed(rig, "a", 0, 0, 0), "0:");  // a list of capacity 0 is no failure then
}

TEST(FileTreeListing, NamesAreAddedBehindThoseInTheList) {
  FileTreeRig rig;
  CreateFiveKeys(rig);
  NameList list(10);
  ASSERT_EQ(rig.tree.ListKeys(kAdmin, nullptr, "m", 0, &list, 0), 0u);
  EXPECT_EQ(ListText(rig.tree.ListKeys(kAdmin, nullptr, "", 3, &list, 0), list), "0: x m/x m");
}

TEST(FileTreeListing, NamesWithoutAKeyAreNeitherListedNorSkipped) {
  FileTreeRig rig;
  for (const char* key : {"ab", "bc", "cd", "de"}) ASSERT_EQ(rig.Create(key), 0u);
  ASSERT_EQ(DeleteKey(rig, "cd"), 0u);  // "a" is a branch, "cd" is left of a key
  EXPECT_EQ(Listed(rig, ""), "0: de bc ab");
  EXPECT_EQ(Listed(rig, "", 1), "0: bc ab");
}

// What is listed is told by the flag, not by the id of a key.
TEST(FileTreeListing, TheFlagOfANodeTellsWhetherAKeyIsListed) {
  FileTreeRig rig;
  for (const char* key : {"a", "b"}) ASSERT_EQ(rig.Create(key), 0u);
  rig.Patch(kStringArea + 40 * 2 + 2, "00");
  EXPECT_EQ(Listed(rig, ""), "0: b");
  rig.Patch(kStringArea + 40 * 2 + 2, "10");
  rig.PatchWord(kStringArea + 40 * 2 + 20, 0);
  EXPECT_EQ(Listed(rig, ""), "0: b a");
}

TEST(FileTreeListing, BytesAbove127ComeAfterTheOthers) {
  FileTreeRig rig;
  for (const char* key : {"a", "\x80", "\xFF", "\x7F", "\x01", "\x80\xFF"}) {
    ASSERT_EQ(rig.Create(key), 0u);
  }
  EXPECT_EQ(Listed(rig, ""), "0: \x7F \x01 \xFF \x80\xFF \x80 a");
  FileTreeRig ascending;
  for (const char* key : {"\x80", "\xFF", "\x01", "\x7F"}) ASSERT_EQ(ascending.Create(key), 0u);
  EXPECT_EQ(Listed(ascending, ""), "0: \x7F \x01 \xFF \x80");
}

TEST(FileTreeListing, ThePathIsPutBeforeTheNamesAsItIs) {
  FileTreeRig rig;
  for (const char* key : {"a", "a/b", "a/b/c"}) ASSERT_EQ(rig.Create(key), 0u);
  EXPECT_EQ(Listed(rig, "a", 0, 1), "0: ab/c ab");
  EXPECT_EQ(Listed(rig, "/a", 0, 1), "0: /ab/c /ab");
  EXPECT_EQ(Listed(rig, "a/", 0, 1), "0: a/b/c a/b");
  EXPECT_EQ(Listed(rig, "a/b/", 0, 1), "0: a/b/c");
  EXPECT_EQ(Listed(rig, "", 0, 1), "0: a/b/c a/b a");
  EXPECT_EQ(Listed(rig, "/", 0, 1), "0: /a/b/c /a/b /a");
  EXPECT_EQ(Listed(rig, "a", 0, 0xFFFFFFFF), "0: ab/c ab");
  EXPECT_EQ(Listed(rig, "a", 0, 0xFFFFFFFE), "0: b/c b");  // no other flag says anything
}

TEST(FileTreeListing, NamesOfAnyLengthAreListed) {
  for (unsigned int length : {16u, 17u, 100u, 101u, 102u, 103u, 104u, 105u, 300u, 5000u}) {
    SCOPED_TRACE(length);
    FileTreeRig rig;
    const std::string name = LongName(length);
    ASSERT_EQ(rig.Create(name), 0u);
    ASSERT_EQ(rig.Create(name + "/s"), 0u);
    EXPECT_EQ(Listed(rig, ""), "0: " + name + "/s " + name);
    EXPECT_EQ(Listed(rig, "/", 0, 1), "0: /" + name + "/s /" + name);
    EXPECT_EQ(Listed(rig, name), "0: s");
    EXPECT_EQ(Listed(rig, name, 0, 1), "0: " + name + "s");
    EXPECT_EQ(Listed(rig, name + "/", 0, 1), "0: " + name + "/s");
  }
}

TEST(FileTreeListing, ShortNamesAfterLongOnesAreTheirOwn) {
  FileTreeRig rig;
  const std::string name = LongName(300);
  for (const std::string& key : {std::string("a"), name, name + "a", std::string("xab")}) {
    ASSERT_EQ(rig.Create(key), 0u);
  }
  EXPECT_EQ(Listed(rig, ""), "0: xab " + name + "a " + name + " a");
}

TEST(FileTreeListing, ALongPathStandsBeforeLongNames) {
  FileTreeRig rig;
  const std::string path = LongName(104);
  const std::string name(103, 'n');
  ASSERT_EQ(rig.Create(path), 0u);
  ASSERT_EQ(rig.Create(path + "/" + name), 0u);
  ASSERT_EQ(rig.Create(path + "/op"), 0u);
  EXPECT_EQ(Listed(rig, path, 0, 1), "0: " + path + "op " + path + name);
  EXPECT_EQ(Listed(rig, path), "0: op " + name);
}

TEST(FileTreeListing, AFullListKeepsTheNamesThatCameFirst) {
  FileTreeRig rig;
  CreateFiveKeys(rig);
  EXPECT_EQ(Listed(rig, "", 0, 0, 1), "75: t");
  EXPECT_EQ(Listed(rig, "", 0, 0, 4), "75: t f mn m/x");
  EXPECT_EQ(Listed(rig, "", 4, 0, 1), "0: m");
  EXPECT_EQ(Listed(rig, "", 3, 0, 1), "75: m/x");
  EXPECT_EQ(Listed(rig, "", 0, 0, 5), "0: t f mn m/x m");
}

TEST(FileTreeListing, ListingKeysNeedsTheRightToRead) {
  ExpectToNeedTheRight(
      1,
      [](FileTreeRig& rig) {
        ASSERT_EQ(rig.Create("ab"), 0u);
        ASSERT_EQ(rig.tree.CreateKey(kUser, nullptr, "a/b", 0, false), 0u);
      },
      [](TernaryRegistry& tree, unsigned int user) {
        NameList list(10);
        const unsigned int result = tree.ListKeys(user, nullptr, "a", 0, &list, 0);
        EXPECT_EQ(ListText(result, list), result == 0 ? "0: b" : "1:");
        return result;
      });
}

TEST(FileTreeListing, TheRightsOfTheKeysListedDoNotCount) {
  FileTreeRig rig;
  ASSERT_EQ(rig.Create("a"), 0u);
  ASSERT_EQ(rig.Create("a/b"), 0u);
  rig.SetPermission(3, "00");
  NameList list(10);
  EXPECT_EQ(ListText(rig.tree.ListKeys(kUser, nullptr, "", 0, &list, 0), list), "0: a/b a");
  EXPECT_EQ(rig.tree.ListKeys(kUser, nullptr, "a", 0, &list, 0), 1u);
  EXPECT_EQ(Listed(rig, "a/b"), "1:");
}

TEST(FileTreeListing, NothingIsListedOfAKeyThatIsNotThere) {
  FileTreeRig rig;
  ASSERT_EQ(rig.Create("ab"), 0u);
  ASSERT_EQ(rig.Create("bc"), 0u);  // the name "a" exists now, as a branch
  int anything = 0;
  NameList list(10);
  EXPECT_EQ(Listed(rig, "x"), "2:");
  EXPECT_EQ(Listed(rig, "a"), "2:");
  EXPECT_EQ(Listed(rig, "a/"), "1:");
  EXPECT_EQ(ListedValues(rig, "x"), "2:");
  EXPECT_EQ(ListedValues(rig, "a/"), "1:");
  EXPECT_EQ(rig.tree.ListKeys(0, nullptr, "a/", 0, &list, 0), 1u);
  EXPECT_EQ(rig.tree.ListKeys(kAdmin, &anything, "", 0, &list, 0), 1u);
  EXPECT_EQ(rig.tree.ListKeys(kAdmin, &anything, "ab", 0, &list, 0), 2u);
  EXPECT_EQ(rig.tree.ListValues(kAdmin, &anything, "", 0, &list), 1u);
  EXPECT_EQ(list.Count(), 0u);
}

TEST(FileTreeListing, ANullPathIsTheRootKey) {
  FileTreeRig rig;
  ASSERT_EQ(rig.Create("a"), 0u);
  ASSERT_EQ(rig.CreateNumber("", "n", 1), 0u);
  NameList keys(10);
  EXPECT_EQ(ListText(rig.tree.ListKeys(kAdmin, nullptr, nullptr, 0, &keys, 0), keys), "0: a");
  NameList prefixed(10);
  EXPECT_EQ(ListText(rig.tree.ListKeys(kAdmin, nullptr, nullptr, 0, &prefixed, 1), prefixed),
            "0: a");
  NameList values(10);
  EXPECT_EQ(ListText(rig.tree.ListValues(kAdmin, nullptr, nullptr, 0, &values), values), "0: n");
}

TEST(FileTreeListing, WithoutAListNothingCanBeListed) {
  FileTreeRig rig;
  ASSERT_EQ(rig.CreateNumber("", "n", 1), 0u);
  EXPECT_EQ(rig.tree.ListKeys(kAdmin, nullptr, "", 0, nullptr, 0), 22u);
  EXPECT_EQ(rig.tree.ListValues(kAdmin, nullptr, "", 0, nullptr), 22u);
}

TEST(FileTreeListing, ListingChangesNothing) {
  FileTreeRig rig;
  CreateFiveKeys(rig);
  ASSERT_EQ(rig.CreateNumber("m", "n", 1), 0u);
  const std::string before = rig.Contents();
  Listed(rig, "", 0, 1);
  ListedValues(rig, "m");
  EXPECT_EQ(rig.Contents(), before);
}

TEST(FileTreeListing, WithoutAFileNothingIsListed) {
  FileTreeRig rig;
  ASSERT_EQ(rig.tree.Finalize(), 0u);
  TernaryRegistry::RecursiveArg arg;
  NameList list(1);
  arg.names = &list;
  TernaryStringNode node;
  EXPECT_EQ(Listed(rig, ""), "1:");
  EXPECT_EQ(ListedValues(rig, ""), "1:");
  EXPECT_EQ(rig.tree.RecursiveListString(&node, 0, "", &arg), 1u);
  EXPECT_EQ(rig.tree.ListNode(0x100, 0, &arg), 1u);
}

}  // namespace

}  // namespace tamu::registry
