// The string nodes of names: which slots they take, what is stored, where they hang.
#include <random>
#include <set>

#include "tests/registry/filetree/FileTreeRig.h"

namespace tamu::registry {

namespace {

TEST(TernaryRegistryNames, ANameOf17CharactersTakesOneNode) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("abcdefghijklmnopq"));
  EXPECT_EQ(rig.FreeStrings(), kUsableSlots - 2);
  EXPECT_EQ(rig.StringNode(2),
            "00101071"                          // 16 characters, then 'q'
            "00000000000000000000000000000000"  // no links
            "00020000"
            "6162636465666768696a6b6c6d6e6f70");
}

TEST(TernaryRegistryNames, ANameOf20CharactersTakesTwoNodes) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("abcdefghijklmnopqrst"));
  EXPECT_EQ(rig.FreeStrings(), kUsableSlots - 3);
  EXPECT_EQ(rig.StringNode(2),
            "00100071"
            "0000000000000000"
            "00030000"  // goes on at 300
            "00000000"
            "00000000"
            "6162636465666768696a6b6c6d6e6f70");
  EXPECT_EQ(
      "00021074"
      "00000000000000000000000000000000"
      "00020000"
      "7273",
      rig.StringNode(3));
}

TEST(TernaryRegistryNames, ANameOf18CharactersEndsInANodeWithoutSegment) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("abcdefghijklmnopqr"));
  EXPECT_EQ(
      "00001072"
      "00000000000000000000000000000000"
      "00020000",
      rig.StringNode(3));
}

TEST(TernaryRegistryNames, ANameOfTwoCharactersHasASegmentOfOne) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("ab"));
  EXPECT_EQ(
      "00011062"
      "00000000000000000000000000000000"
      "00020000"
      "61",
      rig.StringNode(2));
}

// One node for every 17 characters or part of them; only the last carries the key.
TEST(TernaryRegistryNames, AChainHas17CharactersANode) {
  FileTreeRig rig;
  unsigned int used = 1;
  const std::string text =
      "\x80\xFF"
      "cdefghijklmnopqrstuvwxyzABCDEFGHIJKLMN";
  for (unsigned int length = 1; length <= 40; ++length) {
    const unsigned int nodes = length <= 17 ? 1 : length <= 34 ? 2 : 3;
    unsigned int first = 0;
    ASSERT_EQ(status::kOk,
              rig.tree.CreateStringNode(0, text.substr(0, length).c_str(), &first, 0x7700));
    EXPECT_EQ(first, (used + 1) << 8) << length;
    std::string stored;
    for (unsigned int i = 0; i < nodes; ++i) {
      const unsigned int slot = used + 1 + i;
      const bool last = i + 1 == nodes;
      const std::string record = FileBytes(rig.path, kStringArea + 40 * slot, 40);
      EXPECT_EQ(HexOf(record.substr(2, 1)), last ? "10" : "00") << length;
      EXPECT_EQ(rig.Word(kStringArea + 40 * slot + 12), last ? 0 : (slot + 1) << 8) << length;
      EXPECT_EQ(rig.Word(kStringArea + 40 * slot + 20), last ? 0x7700u : 0u) << length;
      stored += record.substr(24, static_cast<unsigned char>(record[1])) + record[3];
    }
    EXPECT_EQ(stored, text.substr(0, length));
    used += nodes;
    EXPECT_EQ(rig.FreeStrings(), kUsableSlots - used) << length;
  }
}

TEST(TernaryRegistryNames, AChainWithoutKeyEndsUnmarked) {
  FileTreeRig rig;
  unsigned int first = 0;
  ASSERT_EQ(status::kOk, rig.tree.CreateStringNode(0, "ab", &first, 0));
  EXPECT_EQ(0x200u, first);
  EXPECT_EQ(
      "00010062"
      "00000000000000000000000000000000"
      "00000000"
      "61",
      rig.StringNode(2));
}

TEST(TernaryRegistryNames, ASlashIsNoPartOfAName) {
  FileTreeRig rig;
  unsigned int first = 77;
  EXPECT_EQ(status::kBadArgument, rig.tree.CreateStringNode(0, "/", &first, 0));
  EXPECT_EQ(0u, first);
  first = 77;
  EXPECT_EQ(status::kBadArgument, rig.tree.CreateStringNode(0, "ab/", &first, 0));
  EXPECT_EQ(0u, first);
  EXPECT_EQ(rig.FreeStrings(), kUsableSlots - 3);
}

TEST(TernaryRegistryNames, AShorterNameCutsTheLonger) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("abc"));
  ASSERT_EQ(status::kOk, rig.Create("ab"));
  EXPECT_EQ(rig.StringNode(3),
            "00011062"  // "a", 'b'
            "0000000000000000"
            "00020000"  // the rest of "abc"
            "00000000"
            "00030000"
            "61");
  EXPECT_EQ(
      "00001063"
      "00000000000000000000000000000000"
      "00020000",
      rig.StringNode(2));
  EXPECT_EQ(rig.StringNode(1),
            "00001000"
            "000000000000000000000000"
            "00030000"  // the root leads to the upper part now
            "00010000");
  EXPECT_EQ(0x200u, rig.KeyOf("abc"));
  EXPECT_EQ(0x300u, rig.KeyOf("ab"));
}

TEST(TernaryRegistryNames, ANameThatBranchesOffCutsAndHangsBesideTheCut) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("abcdef"));
  ASSERT_EQ(status::kOk, rig.Create("abxyz"));  // cut at 'c': 300 above 200, then 400 for "xyz"
  ASSERT_EQ(status::kOk, rig.Create("abaaa"));  // 500 for "aaa"
  EXPECT_EQ(rig.StringNode(3),
            "00020063"
            "00050000"  // lower: "aaa"
            "00040000"  // higher: "xyz"
            "00020000"
            "00000000"
            "00000000"
            "6162");
  EXPECT_EQ(
      "00021066"
      "00000000000000000000000000000000"
      "00020000"
      "6465",
      rig.StringNode(2));
  EXPECT_EQ(
      "0002107a"
      "00000000000000000000000000000000"
      "00030000"
      "7879",
      rig.StringNode(4));
  EXPECT_EQ(
      "00021061"
      "00000000000000000000000000000000"
      "00040000"
      "6161",
      rig.StringNode(5));
}

// A cut at the first character leaves an upper part without segment.
TEST(TernaryRegistryNames, ACutAtTheFirstCharacterKeepsTheRestWhole) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("abcdefghijklmnopq"));
  ASSERT_EQ(status::kOk, rig.Create("b1"));
  EXPECT_EQ(
      "00000061"
      "00000000"
      "00040000"
      "00020000"
      "00000000"
      "00000000",
      rig.StringNode(3));
  EXPECT_EQ(
      "000f1071"
      "00000000000000000000000000000000"
      "00020000"
      "62636465666768696a6b6c6d6e6f70",
      rig.StringNode(2));
}

// A cut at the last character leaves a lower part without segment, its links in place.
TEST(TernaryRegistryNames, ACutKeepsTheLinksOfTheLowerPart) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("abc"));    // 200
  ASSERT_EQ(status::kOk, rig.Create("aba"));    // 300, lo
  ASSERT_EQ(status::kOk, rig.Create("abe"));    // 400, hi
  ASSERT_EQ(status::kOk, rig.Create("abcd"));   // 500, equal
  ASSERT_EQ(status::kOk, rig.Create("abc/d"));  // 600, child
  ASSERT_EQ(status::kOk, rig.Create("a11"));    // 700 above 200, 800
  EXPECT_EQ(
      "00010062"
      "00080000"
      "00000000"
      "00020000"
      "00000000"
      "00000000"
      "61",
      rig.StringNode(7));
  EXPECT_EQ(
      "00001063"
      "00030000"
      "00040000"
      "00050000"
      "00060000"
      "00020000",
      rig.StringNode(2));
}

TEST(TernaryRegistryNames, ACutIsFoundUnderWhicheverLinkLedToIt) {
  FileTreeRig rig;
  for (const char* key : {"m", "cde", "xyz", "mnop", "m/qrs"})
    ASSERT_EQ(status::kOk, rig.Create(key));
  EXPECT_EQ(
      "0000106d"
      "00030000"
      "00040000"
      "00050000"
      "00060000"
      "00020000",
      rig.StringNode(2));
  for (const char* key : {"c12", "x12", "mn12", "m/q12"}) ASSERT_EQ(status::kOk, rig.Create(key));
  EXPECT_EQ(
      "0000106d"
      "00070000"
      "00090000"
      "000b0000"
      "000d0000"
      "00020000",
      rig.StringNode(2));
  for (const char* key : {"m", "cde", "xyz", "mnop", "m/qrs", "c12", "x12", "mn12", "m/q12"}) {
    EXPECT_EQ(status::kOk, rig.Find(key)) << key;
  }
}

TEST(TernaryRegistryNames, AMissingParentInsideALongerNameLeavesTheCut) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("abcd"));
  EXPECT_EQ(status::kBadArgument, rig.Create("abx/y"));
  EXPECT_EQ(rig.FreeStrings(), kUsableSlots - 4);  // the upper part and the lost node
  EXPECT_EQ(rig.FreeKeys(), kUsableSlots - 2);
  EXPECT_EQ(0x200u, rig.KeyOf("abcd"));
  EXPECT_EQ(status::kNotFound, rig.Find("abc"));
  EXPECT_EQ(status::kNotFound, rig.Find("abx"));
}

TEST(TernaryRegistryNames, NothingIsCutAtOrBehindASegmentsEnd) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("abc"));  // segment of 2
  const std::string before = rig.Contents();
  for (unsigned int cut : {2u, 3u, 16u, 255u, 0xFFFFFFFFu}) {
    unsigned int upper = 77;
    EXPECT_EQ(status::kNoData, rig.tree.SplitNode(0, 0x200, 0, cut, 0x100, &upper));
    EXPECT_EQ(0x200u, upper);
  }
  EXPECT_EQ(rig.Contents(), before);
}

TEST(TernaryRegistryNames, ANodeThatDoesNotLeadToTheCutOneStaysAsItIs) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("abc"));
  ASSERT_EQ(status::kOk, rig.Create("abcdef"));  // 300 behind 200
  const std::string root = rig.StringNode(1);
  unsigned int upper = 0;
  EXPECT_EQ(status::kOk, rig.tree.SplitNode(0, 0x300, 0, 0, 0x100, &upper));
  EXPECT_EQ(0x400u, upper);
  EXPECT_EQ(rig.StringNode(1), root);
  EXPECT_EQ(
      "00000064"
      "0000000000000000"
      "00030000"
      "00000000"
      "00000000",
      rig.StringNode(4));
  EXPECT_EQ(
      "00011066"
      "00000000000000000000000000000000"
      "00030000"
      "65",
      rig.StringNode(3));
}

// The slots of a creation: the upper part, the key, the name's nodes in their order.
TEST(TernaryRegistryNames, SlotsAreTakenUpperPartFirst) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("abc"));
  const std::string name = "axxxxxxxxxxxxxxxxxxxxxxx";  // 'a' and 23 more, two nodes
  ASSERT_EQ(status::kOk, rig.Create(name));
  TernaryRegistry::KeyMatchDescriptor match;
  EXPECT_EQ(status::kOk, rig.tree.FindKey(0x100u, name.c_str(), &match));
  EXPECT_EQ(0x500u, match.node);  // 300 is the upper part, 400 the name's first node
  EXPECT_EQ(0x300u, match.keyNode);
  EXPECT_EQ(0x400u, rig.Word(kStringArea + 40 * 3 + 8));
}

TEST(TernaryRegistryNames, NamesWithLongSharedBeginningsStayApart) {
  FileTreeRig rig;
  const std::string shared = "ABCDEFGHIJKLMNOPQRSTUVWXYZ";
  std::vector<std::string> names;
  for (size_t length = 15; length <= 19; ++length) {
    names.push_back(shared.substr(0, length) + "-one");
    names.push_back(shared.substr(0, length) + "\x80two");
    names.push_back(shared.substr(0, length) + "\xFFthree and more characters");
  }
  for (size_t i = 0; i < names.size(); ++i) {
    ASSERT_EQ(status::kOk, rig.Create(names[i])) << i;
    for (size_t k = 0; k < names.size(); ++k) {
      EXPECT_EQ(rig.KeyOf(names[k]), k <= i ? (k + 2) << 8 : 0) << names[k];
    }
  }
  rig.Reopen();
  for (const std::string& name : names) EXPECT_EQ(status::kOk, rig.Find(name)) << name;
  for (size_t length = 1; length <= 19; ++length) {
    EXPECT_EQ(status::kNotFound, rig.Find(shared.substr(0, length))) << length;
  }
}

// Random names of few different characters, so that they share and cut each other. What a creation
// makes is found by asking: a name may come out cut short (see ACharacterThatDiffersAtTheEnd...).
TEST(TernaryRegistryNames, RandomNamesAreFoundAndNoOthers) {
  for (unsigned int seed = 1; seed <= 6; ++seed) {
    SCOPED_TRACE(seed);
    FileTreeRig rig;
    std::mt19937 random(seed);
    std::set<std::string> model;
    for (int i = 0; i < 120; ++i) {
      std::string name;
      for (auto left = random() % 22 + 1; left > 0; --left) {
        name += "a\x80\xFFz"[random() % 8 < 5 ? 0 : random() % 4];
      }
      const unsigned int result = rig.Create(name);
      ASSERT_EQ(result, model.count(name) != 0 ? 17u : 0u);
      if (result == 0 && rig.Find(name) != 0) {
        // Taken as the cut: another last character stands there.
        ASSERT_EQ(status::kOk, rig.Create(name));
        for (char c : {'a', '\x80', '\xFF', 'z'}) {
          const std::string made = name.substr(0, name.size() - 1) + c;
          if (made != name && rig.Find(made) == 0) model.insert(made);
        }
      }
      model.insert(name);
    }
    for (const std::string& name : model) {
      EXPECT_EQ(status::kOk, rig.Find(name)) << HexOf(name);
      for (size_t length = 1; length < name.size(); ++length) {
        const std::string part = name.substr(0, length);
        EXPECT_EQ(rig.Find(part), model.count(part) != 0 ? 0u : 2u) << HexOf(part);
      }
      EXPECT_EQ(rig.Find(name + "a"), model.count(name + "a") != 0 ? 0u : 2u) << HexOf(name);
    }
  }
}

}  // namespace

}  // namespace tamu::registry
