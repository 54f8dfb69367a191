// Damaged files: whatever a file holds, every operation answers, also on a small stack.
#include <vector>

#include "tests/registry/filetree/FileTreeRig.h"
#include "tests/registry/filetree/SmallStack.h"

namespace tamu::registry {

namespace {

// Where the fields of a string node lie.
constexpr unsigned int kSegmentLength = 1;
constexpr unsigned int kSplitChar = 3;
constexpr unsigned int kLo = 4;
constexpr unsigned int kHi = 8;
constexpr unsigned int kEqual = 12;
constexpr unsigned int kChild = 16;
constexpr unsigned int kKeyLink = 20;
constexpr unsigned int kSegment = 24;

constexpr unsigned int InString(unsigned int slot, unsigned int field) {
  return kStringArea + 40 * slot + field;
}
constexpr unsigned int InKey(unsigned int slot, unsigned int field) {
  return kKeyArea + 24 * slot + field;
}
constexpr unsigned int InValue(unsigned int slot, unsigned int field) {
  return kValueArea + 52 * slot + field;
}
constexpr unsigned int BlockEntry(unsigned int block) {
  return kDataTable + 32 + 4 * block;
}

// Ids that name no record: no such table, no such slot, the slot behind the last.
const unsigned int kBadIds[] = {0x3C8, 0x1FF, 60000u << 8, 0xFFFFFF00, 365u << 8, 0x101};

std::string Repeated(const char* text, unsigned int count) {
  std::string all;
  for (unsigned int i = 0; i < count; ++i) all += text;
  return all;
}

// What all operations that name a value answer, on a small stack: FindKey, CreateKey, then
// GetValue, GetSetValue (get, set), SetValue, GetValueOffset, DeleteValue, the two CreateValue,
// GetDefaultValue, SetDefaultValue.
std::string Answers(FileTreeRig& rig, const std::string& path, const char* name) {
  std::string text;
  OnSmallStack([&] {
    TernaryRegistry& tree = rig.tree;
    const char* p = path.c_str();
    unsigned int node = 0;
    unsigned int key = 0;
    unsigned int offset = 0;
    unsigned long long number = 0;
    char bytes[] = "12345678";
    Value value = {1, 8, bytes};
    ReadValue read;
    const unsigned int answers[] = {tree.FindKey(nullptr, p, &node, &key),
                                    tree.CreateKey(kAdmin, nullptr, p, 0, false),
                                    tree.GetValue(kAdmin, nullptr, p, name, &read),
                                    tree.GetSetValue(kAdmin, nullptr, p, name, &number, true),
                                    tree.GetSetValue(kAdmin, nullptr, p, name, &number, false),
                                    tree.SetValue(kAdmin, nullptr, p, name, &value),
                                    tree.GetValueOffset(kAdmin, nullptr, p, name, &offset),
                                    tree.DeleteValue(kAdmin, nullptr, p, name),
                                    tree.CreateValue(kAdmin, nullptr, p, name, 1, true),
                                    tree.CreateValue(kAdmin, nullptr, p, name, &value),
                                    tree.GetDefaultValue(kAdmin, nullptr, p, &number),
                                    tree.SetDefaultValue(kAdmin, nullptr, p, 1, false)};
    for (unsigned int each : answers) text += std::to_string(each) + " ";
  });
  EXPECT_FALSE(rig.tree.ObjectLock().IsMine());
  return text;
}

const char kAll59[] = "59 59 59 59 59 59 59 59 59 59 59 59 ";
const char kAll5[] = "5 5 5 5 5 5 5 5 5 5 5 5 ";

// Every operation finds the damage on its way along `path` and changes nothing.
void ExpectDamaged(FileTreeRig& rig, const std::string& path) {
  const std::string before = rig.Contents();
  EXPECT_EQ(Answers(rig, path, "v"), kAll59) << path;
  EXPECT_EQ(rig.Contents(), before);
}

TEST(FileTreeDamage, ANodeThatIsItsOwnLowLink) {
  FileTreeRig rig;
  ASSERT_EQ(rig.Create("m"), 0u);
  rig.PatchWord(InString(2, kLo), 0x200);
  ExpectDamaged(rig, "a");
  EXPECT_EQ(rig.Find("m"), 0u);
}

TEST(FileTreeDamage, ANodeThatIsItsOwnHighLink) {
  FileTreeRig rig;
  ASSERT_EQ(rig.Create("m"), 0u);
  rig.PatchWord(InString(2, kHi), 0x200);
  ExpectDamaged(rig, "z");
  ExpectDamaged(rig, "z/y");
}

TEST(FileTreeDamage, ANodeThatIsItsOwnEqualLink) {
  FileTreeRig rig;
  ASSERT_EQ(rig.Create("m"), 0u);
  rig.PatchWord(InString(2, kEqual), 0x200);
  ExpectDamaged(rig, Repeated("m", 1000));
}

TEST(FileTreeDamage, ANodeThatIsItsOwnChildLink) {
  FileTreeRig rig;
  ASSERT_EQ(rig.Create("m"), 0u);
  rig.PatchWord(InString(2, kChild), 0x200);
  ExpectDamaged(rig, Repeated("m/", 1000));
}

TEST(FileTreeDamage, TwoNodesThatLeadToEachOther) {
  struct {
    const char* second;  // 300, hangs from "m", 200
    unsigned int field;  // of 300, leads back to 200
    std::string path;
  } const cases[] = {{"f", kHi, "g"},
                     {"t", kLo, "p"},
                     {"mn", kEqual, Repeated("mn", 500)},
                     {"m/n", kChild, Repeated("m/n/", 500)}};
  for (const auto& each : cases) {
    FileTreeRig rig;
    ASSERT_EQ(rig.Create("m"), 0u);
    ASSERT_EQ(rig.Create(each.second), 0u);
    rig.PatchWord(InString(3, each.field), 0x200);
    ExpectDamaged(rig, each.path);
    EXPECT_EQ(rig.Find("m"), 0u);
    EXPECT_EQ(rig.Find(each.second), 0u);
  }
}

TEST(FileTreeDamage, AnImpossibleSegmentLength) {
  for (const char* length : {"11", "80", "ff"}) {
    FileTreeRig rig;
    ASSERT_EQ(rig.Create("abc"), 0u);
    rig.Patch(InString(2, kSegmentLength), length);
    ExpectDamaged(rig, "abc");
    ExpectDamaged(rig, "a");
    ExpectDamaged(rig, "x");
    ExpectDamaged(rig, Repeated("abc", 100));
    const std::string before = rig.Contents();
    unsigned int upper = 77;
    EXPECT_EQ(rig.tree.SplitNode(0, 0x200, 0, 3, 0x100, &upper), 59u);
    EXPECT_EQ(rig.Contents(), before);
  }
}

// The search never looks behind the path's terminator.
TEST(FileTreeDamage, AZeroByteInASegmentMatchesNothing) {
  FileTreeRig rig;
  ASSERT_EQ(rig.Create("abcd"), 0u);
  rig.Patch(InString(2, kSegment), "610062");  // "a", zero, "b"
  struct {
    const char* path;
    int cut;
  } const cases[] = {{"a", 0}, {"ab", 1}, {"abcd", 1}};
  for (const auto& each : cases) {
    const size_t size = std::strlen(each.path) + 1;
    char* exact = new char[size];
    std::memcpy(exact, each.path, size);
    TernaryRegistry::KeyMatchDescriptor match;
    EXPECT_EQ(rig.tree.FindKey(0x100u, exact, &match), 2u);
    EXPECT_EQ(match.node, 0x200u);
    EXPECT_EQ(match.splitIndex, each.cut) << each.path;
    delete[] exact;
  }
  EXPECT_EQ(rig.Create("ax"), 0u);  // made of what stands there: not found again
  EXPECT_EQ(rig.Find("ax"), 2u);
}

TEST(FileTreeDamage, ASplitCharacterOfZeroMatchesNothing) {
  FileTreeRig rig;
  ASSERT_EQ(rig.Create("abc"), 0u);
  rig.Patch(InString(2, kSplitChar), "00");
  EXPECT_EQ(rig.Find("ab"), 2u);
  EXPECT_EQ(rig.Find("abc"), 2u);
  EXPECT_EQ(rig.Find("ab\x80"), 2u);
}

TEST(FileTreeDamage, ALinkToARecordThatDoesNotExist) {
  for (unsigned int bad : kBadIds) {
    SCOPED_TRACE(bad);
    FileTreeRig rig;
    ASSERT_EQ(rig.Create("m"), 0u);
    for (unsigned int field : {kLo, kHi, kEqual, kChild}) rig.PatchWord(InString(2, field), bad);
    ExpectDamaged(rig, "a");
    ExpectDamaged(rig, "z");
    ExpectDamaged(rig, "mm");
    ExpectDamaged(rig, "m/m");
    EXPECT_EQ(rig.Find("m"), 0u);
  }
}

TEST(FileTreeDamage, AStartNodeThatDoesNotExist) {
  for (unsigned int bad : kBadIds) {
    SCOPED_TRACE(bad);
    FileTreeRig rig;
    ASSERT_EQ(rig.Create("m"), 0u);
    rig.PatchWord(4180 + 28, bad);
    rig.Reopen();
    ExpectDamaged(rig, "m");
    ExpectDamaged(rig, "");
  }
}

TEST(FileTreeDamage, AKeyThatDoesNotExist) {
  for (unsigned int bad : kBadIds) {
    SCOPED_TRACE(bad);
    FileTreeRig rig;
    ASSERT_EQ(rig.Create("m"), 0u);
    rig.PatchWord(InString(2, kKeyLink), bad);
    const std::string before = rig.Contents();
    EXPECT_EQ(Answers(rig, "m", "v"), "0 17 59 59 59 59 59 59 59 59 59 59 ");
    EXPECT_EQ(rig.Create("m/x"), 59u);
    unsigned int id = 0;
    TernaryValueNode* record = nullptr;
    EXPECT_EQ(rig.tree.FindValue(bad, "v", &id, record), 59u);
    EXPECT_EQ(rig.Contents(), before);
  }
}

TEST(FileTreeDamage, AFirstValueThatDoesNotExist) {
  for (unsigned int bad : kBadIds) {
    SCOPED_TRACE(bad);
    FileTreeRig rig;
    ASSERT_EQ(rig.Create("m"), 0u);
    rig.PatchWord(InKey(2, 0), bad);
    EXPECT_EQ(Answers(rig, "m", "v"), "0 17 9 9 9 9 9 9 0 0 53 0 ");
    unsigned int id = 0;
    TernaryValueNode* record = nullptr;
    EXPECT_EQ(rig.tree.FindValue(0x200, "none", &id, record), 9u);
    EXPECT_EQ(rig.Get("m", "v"), "0 type 1: 3132333435363738");  // a new value lies before it
  }
}

TEST(FileTreeDamage, ANextValueThatDoesNotExist) {
  for (unsigned int bad : kBadIds) {
    SCOPED_TRACE(bad);
    FileTreeRig rig;
    ASSERT_EQ(rig.CreateNumber("", "v", 5), 0u);
    rig.PatchWord(InValue(1, 0), bad);
    EXPECT_EQ(rig.Get("", "v"), "0 type 0: 0500000000000000");
    EXPECT_EQ(rig.Get("", "w"), "9");
    EXPECT_EQ(rig.SetData("", "w", 1, "x"), 9u);
    EXPECT_EQ(rig.Delete("", "w"), 9u);
  }
}

TEST(FileTreeDamage, AValueThatIsItsOwnNext) {
  FileTreeRig rig;
  ASSERT_EQ(rig.CreateNumber("", "w", 5), 0u);
  rig.PatchWord(InValue(1, 0), 0x100);
  EXPECT_EQ(Answers(rig, "", "v"), "0 17 59 59 59 59 59 59 0 0 53 0 ");
  EXPECT_EQ(rig.Get("", "w"), "0 type 0: 0500000000000000");
}

TEST(FileTreeDamage, TwoValuesThatLeadToEachOther) {
  FileTreeRig rig;
  ASSERT_EQ(rig.CreateNumber("", "w", 5), 0u);
  ASSERT_EQ(rig.CreateNumber("", "x", 6), 0u);
  rig.PatchWord(InValue(1, 0), 0x200);
  EXPECT_EQ(Answers(rig, "", "v"), "0 17 59 59 59 59 59 59 0 0 53 0 ");
  EXPECT_EQ(rig.Get("", "w"), "0 type 0: 0500000000000000");
  EXPECT_EQ(rig.Get("", "x"), "0 type 0: 0600000000000000");
}

TEST(FileTreeDamage, AValueNameWithoutTerminator) {
  FileTreeRig rig;
  ASSERT_EQ(rig.CreateNumber("", "older", 5), 0u);
  ASSERT_EQ(rig.CreateNumber("", "n", 6), 0u);
  rig.Patch(InValue(2, 12), Repeated("78", 32));
  rig.Patch(InValue(2, 44), Repeated("78", 8));  // nor is there one behind it
  EXPECT_EQ(rig.Get("", std::string(31, 'x')), "2");
  EXPECT_EQ(rig.Get("", std::string(40, 'x')), "2");
  EXPECT_EQ(rig.Get("", "x"), "2");
  EXPECT_EQ(rig.Get("", "older"), "0 type 0: 0500000000000000");
}

TEST(FileTreeDamage, ATypeThatDoesNotExist) {
  FileTreeRig rig;
  ASSERT_EQ(rig.CreateNumber("", "n", 6), 0u);
  rig.Patch(InValue(1, 11), "5f");
  EXPECT_EQ(rig.Get("", "n"), "0 type 31: 0600000000000000");
}

TEST(FileTreeDamage, ASizeThatIsTooLarge) {
  FileTreeRig rig;
  ASSERT_EQ(rig.CreateNumber("", "n", 6), 0u);
  ASSERT_EQ(rig.CreateData("", "d", 1, Pattern(1024)), 0u);
  rig.Patch(InValue(1, 8), "ffff");
  rig.Patch(InValue(2, 8), "ffff");
  EXPECT_EQ(rig.Get("", "n"), "0 type 0: 06" + Repeated("00", 65534));
  EXPECT_EQ(rig.Get("", "d"), "59");  // 16 blocks are all there is
}

TEST(FileTreeDamage, DataThatDoesNotExist) {
  for (unsigned int bad : kBadIds) {
    SCOPED_TRACE(bad);
    FileTreeRig rig;
    ASSERT_EQ(rig.CreateData("", "v", 1, "abc"), 0u);
    rig.PatchWord(InValue(1, 44), bad);
    unsigned int offset = 77;
    EXPECT_EQ(rig.Get("", "v"), "59");
    EXPECT_EQ(rig.tree.GetValueOffset(kAdmin, nullptr, "", "v", &offset), 59u);
    EXPECT_EQ(offset, 77u);
    EXPECT_EQ(rig.SetData("", "v", 2, "new"), 0u);  // what it led to stays where it is
    EXPECT_EQ(rig.Get("", "v"), "0 type 2: 6e6577");
  }
}

TEST(FileTreeDamage, DataOfASizeButNoBlock) {
  FileTreeRig rig;
  ASSERT_EQ(rig.CreateData("", "v", 1, "abc"), 0u);
  rig.PatchWord(InValue(1, 44), 0);
  EXPECT_EQ(rig.Get("", "v"), "59");
  EXPECT_EQ(rig.SetData("", "v", 1, "new"), 0u);
  EXPECT_EQ(rig.Get("", "v"), "0 type 1: 6e6577");
}

TEST(FileTreeDamage, AChainOfBlocksThatIsNoValues) {
  struct {
    unsigned int block;
    unsigned int next;
  } const cases[] = {{1, 1},      // its own next
                     {2, 1},      // a circle of two
                     {1, 0},      // too short
                     {2, 60000},  // no such block
                     {2, 365},    // the block behind the last
                     {16, 17}};   // on into a free block: too long
  for (const auto& each : cases) {
    SCOPED_TRACE(each.block * 1000 + each.next);
    FileTreeRig rig;
    ASSERT_EQ(rig.CreateData("", "v", 1, Pattern(1024)), 0u);
    rig.PatchWord(BlockEntry(each.block), each.next);
    EXPECT_EQ(rig.Get("", "v"), "59");
    EXPECT_EQ(rig.SetData("", "v", 2, "new"), 0u);
    EXPECT_EQ(rig.Get("", "v"), "0 type 2: 6e6577");
    EXPECT_EQ(rig.CreateData("", "w", 1, Pattern(1024)), 0u);
    EXPECT_EQ(rig.Get("", "w"), "0 type 1: " + HexOf(Pattern(1024)));
    EXPECT_EQ(rig.Get("", "v"), "0 type 2: 6e6577");
  }
}

TEST(FileTreeDamage, AFreeListThatCannotBeFollowed) {
  for (unsigned int bad : {0u, 365u, 60000u}) {
    SCOPED_TRACE(bad);
    FileTreeRig rig;
    ASSERT_EQ(rig.Create("abc"), 0u);
    ASSERT_EQ(rig.CreateData("", "v", 1, "x"), 0u);
    const unsigned int heads[] = {kStringTable + 32, kKeyTable + 32, kValueTable + 32,
                                  kDataTable + 32};
    for (unsigned int offset : heads) {
      const unsigned int good = rig.Word(offset);
      rig.PatchWord(offset, bad);
      if (offset < kValueTable) {
        EXPECT_EQ(rig.Create("new"), 59u);
        EXPECT_EQ(rig.Find("new"), 2u);
      } else {
        EXPECT_EQ(rig.CreateData("", "new", 1, "y"), 59u);
        EXPECT_EQ(rig.Get("", "new"), "2");
      }
      rig.PatchWord(offset, good);
    }
    EXPECT_EQ(rig.Find("abc"), 0u);
    EXPECT_EQ(rig.Get("", "v"), "0 type 1: 78");
  }
}

TEST(FileTreeDamage, AFileThatWasClosedCannotBeRead) {
  FileTreeRig rig;
  ASSERT_EQ(rig.Create("m"), 0u);
  TernaryFile::file.Destroy();
  EXPECT_EQ(Answers(rig, "m", "v"), kAll5);
  EXPECT_EQ(Answers(rig, "", "v"), kAll5);
  EXPECT_EQ(Answers(rig, "x/y", "v"), kAll5);
}

TEST(FileTreeDamage, AFileThatWasCutCannotBeReadBehindTheCut) {
  FileTreeRig rig;
  ASSERT_EQ(rig.Create("m"), 0u);
  ASSERT_EQ(rig.CreateNumber("m", "n", 5), 0u);
  ASSERT_EQ(rig.CreateData("m", "d", 1, "data"), 0u);
  ASSERT_EQ(truncate(rig.path.c_str(), kDataArea), 0);
  EXPECT_EQ(rig.Get("m", "d"), "5");
  EXPECT_EQ(rig.Get("m", "n"), "0 type 0: 0500000000000000");
  ASSERT_EQ(truncate(rig.path.c_str(), kValueArea), 0);
  EXPECT_EQ(rig.Get("m", "n"), "9");
  ASSERT_EQ(truncate(rig.path.c_str(), kKeyArea), 0);
  EXPECT_EQ(rig.Get("m", "n"), "5");
  EXPECT_EQ(rig.Create("m/x"), 5u);
  EXPECT_EQ(rig.Find("m"), 0u);
  ASSERT_EQ(truncate(rig.path.c_str(), kStringArea), 0);
  EXPECT_EQ(rig.Find("m"), 5u);
  EXPECT_EQ(rig.Find(""), 5u);
}

// Each level hangs from the one before, as CreateKey hangs it, without searching from the root
// again.
TEST(FileTreeDepth, TenThousandLevelsAreCreatedAndFoundOnASmallStack) {
  constexpr unsigned int kLevels = 10000;
  TempDir dir;
  const std::string path = dir / "a.rce";
  TernaryFile store;
  ASSERT_EQ(store.CreateRegistryFile(path.c_str(), 65536), 0u);
  ASSERT_EQ(store.Initialize(path.c_str()), 0u);
  TernaryRegistry tree(&store, nullptr);
  tree.ShareStore();
  ASSERT_EQ(tree.Initialize(nullptr), 0u);
  unsigned int deepest = 0x100;
  for (unsigned int level = 1; level < kLevels; ++level) {
    unsigned int key = 0;
    unsigned int node = 0;
    ASSERT_EQ(tree.CreateKeyNode(0, kAdmin, 0x0F, 0, &key, false, false), 0u);
    ASSERT_EQ(tree.CreateStringNode(0, "a", &node, key), 0u);
    TernaryStringNode parent;
    ASSERT_EQ(store.ReadNodeInBuffer(deepest, &parent), 0u);
    parent.setChild(node);
    ASSERT_EQ(store.WriteNode(0, deepest, &parent, false), 0u);
    deepest = node;
  }
  const std::string above = Repeated("a/", kLevels - 1);
  const std::string key = above + "a";
  std::vector<unsigned int> answers;
  OnSmallStack([&] {
    unsigned int node = 0;
    unsigned int id = 0;
    unsigned long long number = 0;
    answers = {tree.FindKey(nullptr, key.c_str(), &node, &id),
               tree.CreateKey(kAdmin, nullptr, key.c_str(), 5, true),
               tree.CreateKey(kAdmin, nullptr, key.c_str(), 5, true),
               tree.CreateKey(kAdmin, nullptr, (key + "/b").c_str(), 0, false),
               tree.FindKey(nullptr, (key + "/b").c_str(), &node, &id),
               tree.GetDefaultValue(kAdmin, nullptr, key.c_str(), &number),
               tree.CreateValue(kAdmin, nullptr, key.c_str(), "v", number, true),
               tree.DeleteValue(kAdmin, nullptr, key.c_str(), "v")};
  });
  EXPECT_EQ(answers, std::vector<unsigned int>({2, 0, 17, 0, 0, 0, 0, 0}));
  tree.Finalize();
  store.Finalize();
}

TEST(FileTreeDepth, AChainOfThousandsOfNodesIsWalkedOnASmallStack) {
  constexpr unsigned int kNodes = 5000;
  TempDir dir;
  const std::string path = dir / "a.rce";
  TernaryFile store;
  ASSERT_EQ(store.CreateRegistryFile(path.c_str(), 65536), 0u);
  ASSERT_EQ(store.Initialize(path.c_str()), 0u);
  TernaryRegistry tree(&store, nullptr);
  tree.ShareStore();
  ASSERT_EQ(tree.Initialize(nullptr), 0u);
  unsigned int first = 0;  // of the chain, made from its end
  for (unsigned int i = 0; i < kNodes; ++i) {
    unsigned int node = 0;
    ASSERT_EQ(tree.CreateStringNode(0, "a", &node, 0), 0u);
    TernaryStringNode record;
    ASSERT_EQ(store.ReadNodeInBuffer(node, &record), 0u);
    if (i % 2 == 0) {
      record.setHi(first);
    } else {
      record.setEqual(first);
    }
    ASSERT_EQ(store.WriteNode(0, node, &record, false), 0u);
    first = node;
  }
  std::vector<unsigned int> ids(3 * kNodes);
  unsigned int count = 0;
  unsigned int answer = 77;
  OnSmallStack([&] { answer = tree.ReadNodeTree(first, ids.data(), &count, 3 * kNodes); });
  EXPECT_EQ(answer, 0u);
  EXPECT_EQ(count, 3 * (kNodes - 1));  // the last node has no links
  tree.Finalize();
  store.Finalize();
}

}  // namespace

}  // namespace tamu::registry
