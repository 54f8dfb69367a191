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
TEST(TernaryRegistryListing, GreaterNamesComeFirst) {
  FileTreeRig rig;
  CreateFiveKeys(rig);
  EXPECT_EQ("0: t f mn m/x m", Listed(rig, ""));
  for (const char* key : {"z", "p", "h", "b"}) ASSERT_EQ(status::kOk, rig.Create(key));
  EXPECT_EQ("0: z p t h b f mn m/x m", Listed(rig, ""));
}

TEST(TernaryRegistryListing, NamesThatAscendComeInDescendingOrder) {
  FileTreeRig rig;
  for (const char* key : {"a", "b", "c", "d", "da", "db"}) ASSERT_EQ(status::kOk, rig.Create(key));
  EXPECT_EQ("0: db da d c b a", Listed(rig, ""));
}

TEST(TernaryRegistryListing, KeysAtEveryDepthAreNamedFromTheKeyListed) {
  FileTreeRig rig;
  for (const char* key : {"a", "a/b", "a/b/c", "a/b/c/d", "a/bb", "ab", "a/b/e"}) {
    ASSERT_EQ(status::kOk, rig.Create(key)) << key;
  }
  EXPECT_EQ("0: ab a/bb a/b/e a/b/c/d a/b/c a/b a", Listed(rig, ""));
  EXPECT_EQ("0: bb b/e b/c/d b/c b", Listed(rig, "a"));
  EXPECT_EQ("0: e c/d c", Listed(rig, "a/b"));
  EXPECT_EQ("0: d", Listed(rig, "a/b/c"));
  EXPECT_EQ("0: d", Listed(rig, "/a/b/c/"));
}

// Names that were cut where others part from them are spelt as before.
TEST(TernaryRegistryListing, NamesInSeveralNodesAreSpeltWhole) {
  FileTreeRig rig;
  for (const char* key : {"network", "net", "networks", "netsup", "netsup/x", "nest"}) {
    ASSERT_EQ(status::kOk, rig.Create(key)) << key;
  }
  EXPECT_EQ("0: nest netsup/x netsup networks network net", Listed(rig, ""));
}

TEST(TernaryRegistryListing, AKeyWithoutSubKeysAddsNothing) {
  FileTreeRig rig;
  EXPECT_EQ("0:", Listed(rig, ""));
  ASSERT_EQ(status::kOk, rig.Create("a"));
  ASSERT_EQ(status::kOk, rig.Create("ab"));
  EXPECT_EQ("0:", Listed(rig, "a"));
  EXPECT_EQ("0:", Listed(rig, "ab", 5, 1));
  EXPECT_EQ("0:", Listed(rig, "a", 0, 0, 0));  // a list of capacity 0 is no failure then
}

TEST(TernaryRegistryListing, NamesAreAddedBehindThoseInTheList) {
  FileTreeRig rig;
  CreateFiveKeys(rig);
  NameList list(10);
  ASSERT_EQ(status::kOk, rig.tree.ListKeys(kAdmin, nullptr, "m", 0, &list, 0));
  EXPECT_EQ("0: x m/x m", ListText(rig.tree.ListKeys(kAdmin, nullptr, "", 3, &list, 0), list));
}

TEST(TernaryRegistryListing, NamesWithoutAKeyAreNeitherListedNorSkipped) {
  FileTreeRig rig;
  for (const char* key : {"ab", "bc", "cd", "de"}) ASSERT_EQ(status::kOk, rig.Create(key));
  ASSERT_EQ(status::kOk, DeleteKey(rig, "cd"));  // "a" is a branch, "cd" is left of a key
  EXPECT_EQ("0: de bc ab", Listed(rig, ""));
  EXPECT_EQ("0: bc ab", Listed(rig, "", 1));
}

// What is listed is told by the flag, not by the id of a key.
TEST(TernaryRegistryListing, TheFlagOfANodeTellsWhetherAKeyIsListed) {
  FileTreeRig rig;
  for (const char* key : {"a", "b"}) ASSERT_EQ(status::kOk, rig.Create(key));
  rig.Patch(kStringArea + 40 * 2 + 2, "00");
  EXPECT_EQ("0: b", Listed(rig, ""));
  rig.Patch(kStringArea + 40 * 2 + 2, "10");
  rig.PatchWord(kStringArea + 40 * 2 + 20, 0);
  EXPECT_EQ("0: b a", Listed(rig, ""));
}

// As for whoever reads them: what is behind it is not to be seen.
TEST(TernaryRegistryListing, AZeroByteInADamagedNameEndsIt) {
  FileTreeRig rig;
  for (const char* key : {"abc", "abc/x"}) ASSERT_EQ(status::kOk, rig.Create(key));
  EXPECT_EQ("0: abc/x abc", Listed(rig, ""));
  rig.Patch(kStringArea + 40 * 2 + 24 + 1, "00");
  EXPECT_EQ("0: a a", Listed(rig, ""));
  EXPECT_EQ("0: a", Listed(rig, "", 1));
  rig.Patch(kStringArea + 40 * 2 + 24 + 1, "62");
  rig.Patch(kStringArea + 40 * 2 + 3, "00");
  EXPECT_EQ("0: ab ab", Listed(rig, ""));
}

TEST(TernaryRegistryListing, BytesAbove127ComeAfterTheOthers) {
  FileTreeRig rig;
  for (const char* key : {"a", "\x80", "\xFF", "\x7F", "\x01", "\x80\xFF"}) {
    ASSERT_EQ(status::kOk, rig.Create(key));
  }
  EXPECT_EQ("0: \x7F \x01 \xFF \x80\xFF \x80 a", Listed(rig, ""));
  FileTreeRig ascending;
  for (const char* key : {"\x80", "\xFF", "\x01", "\x7F"})
    ASSERT_EQ(status::kOk, ascending.Create(key));
  EXPECT_EQ("0: \x7F \x01 \xFF \x80", Listed(ascending, ""));
}

TEST(TernaryRegistryListing, ThePathIsPutBeforeTheNamesAsItIs) {
  FileTreeRig rig;
  for (const char* key : {"a", "a/b", "a/b/c"}) ASSERT_EQ(status::kOk, rig.Create(key));
  EXPECT_EQ("0: ab/c ab", Listed(rig, "a", 0, 1));
  EXPECT_EQ("0: /ab/c /ab", Listed(rig, "/a", 0, 1));
  EXPECT_EQ("0: a/b/c a/b", Listed(rig, "a/", 0, 1));
  EXPECT_EQ("0: a/b/c", Listed(rig, "a/b/", 0, 1));
  EXPECT_EQ("0: a/b/c a/b a", Listed(rig, "", 0, 1));
  EXPECT_EQ("0: /a/b/c /a/b /a", Listed(rig, "/", 0, 1));
  EXPECT_EQ("0: ab/c ab", Listed(rig, "a", 0, 0xFFFFFFFF));
  EXPECT_EQ("0: b/c b", Listed(rig, "a", 0, 0xFFFFFFFE));  // no other flag says anything
}

TEST(TernaryRegistryListing, NamesOfAnyLengthAreListed) {
  for (unsigned int length : {16u, 17u, 100u, 101u, 102u, 103u, 104u, 105u, 300u, 5000u}) {
    SCOPED_TRACE(length);
    FileTreeRig rig;
    const std::string name = LongName(length);
    ASSERT_EQ(status::kOk, rig.Create(name));
    ASSERT_EQ(status::kOk, rig.Create(name + "/s"));
    EXPECT_EQ(Listed(rig, ""), "0: " + name + "/s " + name);
    EXPECT_EQ(Listed(rig, "/", 0, 1), "0: /" + name + "/s /" + name);
    EXPECT_EQ("0: s", Listed(rig, name));
    EXPECT_EQ(Listed(rig, name, 0, 1), "0: " + name + "s");
    EXPECT_EQ(Listed(rig, name + "/", 0, 1), "0: " + name + "/s");
  }
}

TEST(TernaryRegistryListing, ShortNamesAfterLongOnesAreTheirOwn) {
  FileTreeRig rig;
  const std::string name = LongName(300);
  for (const std::string& key : {std::string("a"), name, name + "a", std::string("xab")}) {
    ASSERT_EQ(status::kOk, rig.Create(key));
  }
  EXPECT_EQ(Listed(rig, ""), "0: xab " + name + "a " + name + " a");
}

TEST(TernaryRegistryListing, ALongPathStandsBeforeLongNames) {
  FileTreeRig rig;
  const std::string path = LongName(104);
  const std::string name(103, 'n');
  ASSERT_EQ(status::kOk, rig.Create(path));
  ASSERT_EQ(status::kOk, rig.Create(path + "/" + name));
  ASSERT_EQ(status::kOk, rig.Create(path + "/op"));
  EXPECT_EQ(Listed(rig, path, 0, 1), "0: " + path + "op " + path + name);
  EXPECT_EQ(Listed(rig, path), "0: op " + name);
}

TEST(TernaryRegistryListing, AFullListKeepsTheNamesThatCameFirst) {
  FileTreeRig rig;
  CreateFiveKeys(rig);
  EXPECT_EQ("75: t", Listed(rig, "", 0, 0, 1));
  EXPECT_EQ("75: t f mn m/x", Listed(rig, "", 0, 0, 4));
  EXPECT_EQ("0: m", Listed(rig, "", 4, 0, 1));
  EXPECT_EQ("75: m/x", Listed(rig, "", 3, 0, 1));
  EXPECT_EQ("0: t f mn m/x m", Listed(rig, "", 0, 0, 5));
}

TEST(TernaryRegistryListing, ListingKeysNeedsTheRightToRead) {
  ExpectToNeedTheRight(
      1,
      [](FileTreeRig& rig) {
        ASSERT_EQ(status::kOk, rig.Create("ab"));
        ASSERT_EQ(status::kOk, rig.tree.CreateKey(kUser, nullptr, "a/b", 0, false));
      },
      [](TernaryRegistry& tree, unsigned int user) {
        NameList list(10);
        const unsigned int result = tree.ListKeys(user, nullptr, "a", 0, &list, 0);
        EXPECT_EQ(ListText(result, list), result == 0 ? "0: b" : "1:");
        return result;
      });
}

TEST(TernaryRegistryListing, TheRightsOfTheKeysListedDoNotCount) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("a"));
  ASSERT_EQ(status::kOk, rig.Create("a/b"));
  rig.SetPermission(3, "00");
  NameList list(10);
  EXPECT_EQ("0: a/b a", ListText(rig.tree.ListKeys(kUser, nullptr, "", 0, &list, 0), list));
  EXPECT_EQ(status::kNoRight, rig.tree.ListKeys(kUser, nullptr, "a", 0, &list, 0));
  EXPECT_EQ("1:", Listed(rig, "a/b"));
}

TEST(TernaryRegistryListing, NothingIsListedOfAKeyThatIsNotThere) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("ab"));
  ASSERT_EQ(status::kOk, rig.Create("bc"));  // the name "a" exists now, as a branch
  int anything = 0;
  NameList list(10);
  EXPECT_EQ("2:", Listed(rig, "x"));
  EXPECT_EQ("2:", Listed(rig, "a"));
  EXPECT_EQ("1:", Listed(rig, "a/"));
  EXPECT_EQ("2:", ListedValues(rig, "x"));
  EXPECT_EQ("1:", ListedValues(rig, "a/"));
  EXPECT_EQ(status::kNoRight, rig.tree.ListKeys(0, nullptr, "a/", 0, &list, 0));
  EXPECT_EQ(status::kNoRight, rig.tree.ListKeys(kAdmin, &anything, "", 0, &list, 0));
  EXPECT_EQ(status::kNotFound, rig.tree.ListKeys(kAdmin, &anything, "ab", 0, &list, 0));
  EXPECT_EQ(status::kNoRight, rig.tree.ListValues(kAdmin, &anything, "", 0, &list));
  EXPECT_EQ(0u, list.Count());
}

TEST(TernaryRegistryListing, ANullPathIsTheRootKey) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("a"));
  ASSERT_EQ(status::kOk, rig.CreateNumber("", "n", 1));
  NameList keys(10);
  EXPECT_EQ("0: a", ListText(rig.tree.ListKeys(kAdmin, nullptr, nullptr, 0, &keys, 0), keys));
  NameList prefixed(10);
  EXPECT_EQ("0: a",
            ListText(rig.tree.ListKeys(kAdmin, nullptr, nullptr, 0, &prefixed, 1), prefixed));
  NameList values(10);
  EXPECT_EQ("0: n", ListText(rig.tree.ListValues(kAdmin, nullptr, nullptr, 0, &values), values));
}

TEST(TernaryRegistryListing, WithoutAListNothingCanBeListed) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.CreateNumber("", "n", 1));
  EXPECT_EQ(status::kBadArgument, rig.tree.ListKeys(kAdmin, nullptr, "", 0, nullptr, 0));
  EXPECT_EQ(status::kBadArgument, rig.tree.ListValues(kAdmin, nullptr, "", 0, nullptr));
}

TEST(TernaryRegistryListing, ListingChangesNothing) {
  FileTreeRig rig;
  CreateFiveKeys(rig);
  ASSERT_EQ(status::kOk, rig.CreateNumber("m", "n", 1));
  const std::string before = rig.Contents();
  Listed(rig, "", 0, 1);
  ListedValues(rig, "m");
  EXPECT_EQ(rig.Contents(), before);
}

TEST(TernaryRegistryListing, WithoutAFileNothingIsListed) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.tree.Finalize());
  TernaryRegistry::RecursiveArg arg;
  NameList list(1);
  arg.names = &list;
  TernaryStringNode node;
  EXPECT_EQ("1:", Listed(rig, ""));
  EXPECT_EQ("1:", ListedValues(rig, ""));
  EXPECT_EQ(status::kNoRight, rig.tree.RecursiveListString(&node, 0, "", &arg));
  EXPECT_EQ(status::kNoRight, rig.tree.ListNode(0x100, 0, &arg));
}

}  // namespace

}  // namespace tamu::registry
