#include <vector>

#include "tests/registry/filetree/FileTreeRig.h"

namespace tamu::registry {

namespace {

constexpr unsigned int InNode(unsigned int slot, unsigned int field) {
  return kStringArea + 40 * slot + field;
}

TEST(TernaryRegistryWalks, ReadNodeTreeListsTheLinksOfEveryNodeThatHasAny) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("ma"));    // 200: segment "m", split 'a', with key
  ASSERT_EQ(status::kOk, rig.Create("mb1"));   // 300, higher
  ASSERT_EQ(status::kOk, rig.Create("m+"));    // 400, lower
  ASSERT_EQ(status::kOk, rig.Create("mb0"));   // 500, lower than 300
  ASSERT_EQ(status::kOk, rig.Create("ma/x"));  // 600, a child: not followed
  unsigned int ids[9] = {};
  unsigned int count = 0;
  EXPECT_EQ(status::kOk, rig.tree.ReadNodeTree(0x200, ids, &count, 9));
  EXPECT_EQ(6u, count);
  const std::vector<unsigned int> expected = {0, 0x300, 0x400, 0, 0, 0x500, 0, 0, 0};
  EXPECT_EQ(std::vector<unsigned int>(ids, ids + 9), expected);
}

TEST(TernaryRegistryWalks, ReadNodeTreeFollowsEqualThenHighThenLow) {
  FileTreeRig rig;
  unsigned int node = 0;
  for (int i = 0; i < 8; ++i) ASSERT_EQ(status::kOk, rig.tree.CreateStringNode(0, "a", &node, 0));
  const unsigned int links[][4] = {// node, lo, hi, equal
                                   {2, 0x300, 0x400, 0x500},
                                   {3, 0, 0, 0x600},
                                   {4, 0, 0x700, 0},
                                   {5, 0x800, 0, 0}};
  for (const auto& each : links) {
    for (unsigned int i = 1; i < 4; ++i) rig.PatchWord(InNode(each[0], 4 * i), each[i]);
  }
  unsigned int ids[12] = {};
  unsigned int count = 0;
  EXPECT_EQ(status::kLimit,
            rig.tree.ReadNodeTree(0x200, ids, &count, 12));  // no room left at node 600
  EXPECT_EQ(12u, count);
  const std::vector<unsigned int> expected = {0x500, 0x400, 0x300, 0,     0, 0x800,
                                              0,     0x700, 0,     0x600, 0, 0};
  EXPECT_EQ(std::vector<unsigned int>(ids, ids + 12), expected);
}

TEST(TernaryRegistryWalks, ReadNodeTreeTakesTheEqualLinkOfAKeyForNone) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("a"));
  ASSERT_EQ(status::kOk, rig.Create("ab"));  // 300 behind 200
  unsigned int ids[3] = {7, 7, 7};
  unsigned int count = 0;
  EXPECT_EQ(status::kOk, rig.tree.ReadNodeTree(0x200, ids, &count, 3));
  EXPECT_EQ(0u, count);
}

TEST(TernaryRegistryWalks, ReadNodeTreeNeedsRoomForThreeMore) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("a"));
  unsigned int ids[3] = {7, 7, 7};
  for (unsigned int count : {1u, 3u, 4u, 0xFFFFFFFEu}) {
    unsigned int after = count;
    EXPECT_EQ(status::kLimit, rig.tree.ReadNodeTree(0x200, ids, &after, 3)) << count;
    EXPECT_EQ(after, count);
  }
  unsigned int count = 0;
  EXPECT_EQ(status::kLimit, rig.tree.ReadNodeTree(0x200, ids, &count, 2));
  EXPECT_EQ(21u, ids[0] + ids[1] + ids[2]);
}

TEST(TernaryRegistryWalks, ReadNodeTreeEndsInACircle) {
  for (unsigned int field : {4u, 8u, 12u}) {
    FileTreeRig rig;
    unsigned int first = 0;
    unsigned int second = 0;
    ASSERT_EQ(status::kOk, rig.tree.CreateStringNode(0, "a", &first, 0));
    ASSERT_EQ(status::kOk, rig.tree.CreateStringNode(0, "b", &second, 0));
    rig.PatchWord(InNode(2, field), 0x300);
    rig.PatchWord(InNode(3, field), 0x200);
    std::vector<unsigned int> ids(3000);
    unsigned int count = 0;
    EXPECT_EQ(status::kInvalidFile, rig.tree.ReadNodeTree(0x200, ids.data(), &count, 3000))
        << field;
  }
}

TEST(TernaryRegistryWalks, ReadNodeTreeStopsAtANodeThatDoesNotExist) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("a"));
  rig.PatchWord(InNode(2, 4), 0x2C8);
  unsigned int ids[9];
  unsigned int count = 0;
  EXPECT_EQ(status::kInvalidFile, rig.tree.ReadNodeTree(0x200, ids, &count, 9));
  EXPECT_EQ(status::kInvalidFile, rig.tree.ReadNodeTree(60000u << 8, ids, &count, 9));
}

TEST(TernaryRegistryWalks, NullPointersAreRefused) {
  FileTreeRig rig;
  unsigned int id = 0;
  EXPECT_EQ(status::kBadArgument, rig.tree.ReadNodeTree(0x100, nullptr, &id, 3));
  EXPECT_EQ(status::kBadArgument, rig.tree.ReadNodeTree(0x100, &id, nullptr, 3));
  EXPECT_EQ(status::kBadArgument, rig.tree.FindSuffix(nullptr, &id, &id));
  EXPECT_EQ(status::kBadArgument, rig.tree.FindSuffix("a", nullptr, &id));
  EXPECT_EQ(status::kBadArgument, rig.tree.FindSuffix("a", &id, nullptr));
}

// Names as no creation leaves them: the root's high link leads to 200, a chain of 'a' and 'b' that
// ends in a node of split character 0.
class TernaryRegistrySuffixTest : public ::testing::Test {
 protected:
  TernaryRegistrySuffixTest() {
    for (const char* name : {"a", "b", "", "x"}) {
      unsigned int node = 0;
      EXPECT_EQ(status::kOk, rig_.tree.CreateStringNode(0, name, &node, 0));
    }
    rig_.PatchWord(InNode(1, 8), 0x200);
    rig_.PatchWord(InNode(2, 12), 0x300);
    rig_.PatchWord(InNode(3, 12), 0x400);
    rig_.PatchWord(InNode(4, 12), 0x500);
  }

  FileTreeRig rig_;
  unsigned int branch_ = 77;
  unsigned int next_ = 88;
};

TEST_F(TernaryRegistrySuffixTest, ANameThatEndsIsToldWithItsLastBranch) {
  EXPECT_EQ(status::kOk, rig_.tree.FindSuffix("ab", &branch_, &next_));
  EXPECT_EQ(0x100u, branch_);
  EXPECT_EQ(0x200u, next_);
}

TEST_F(TernaryRegistrySuffixTest, TheLastBranchIsTheDeepest) {
  rig_.PatchWord(InNode(2, 4), 0x500);
  EXPECT_EQ(status::kOk, rig_.tree.FindSuffix("ab", &branch_, &next_));
  EXPECT_EQ(0x200u, branch_);
  EXPECT_EQ(0x300u, next_);
}

TEST_F(TernaryRegistrySuffixTest, ANameThatLeavesTheTreeIsNotThere) {
  EXPECT_EQ(status::kNotFound, rig_.tree.FindSuffix("b", &branch_, &next_));
  EXPECT_EQ(status::kNotFound, rig_.tree.FindSuffix("ac", &branch_, &next_));
  EXPECT_EQ(status::kNotFound, rig_.tree.FindSuffix("", &branch_, &next_));
}

TEST_F(TernaryRegistrySuffixTest, ASegmentMatchesOnlyAsFarAsASlash) {
  rig_.Patch(InNode(2, 1), "02");
  rig_.Patch(InNode(2, 24), "6d2f");  // "m/"
  EXPECT_EQ(status::kOk, rig_.tree.FindSuffix("m", &branch_, &next_));
  EXPECT_EQ(status::kNotFound, rig_.tree.FindSuffix("", &branch_, &next_));
  EXPECT_EQ(status::kNotFound, rig_.tree.FindSuffix("mx", &branch_, &next_));
  EXPECT_EQ(status::kNotFound, rig_.tree.FindSuffix("x", &branch_, &next_));
}

TEST_F(TernaryRegistrySuffixTest, DamageIsReported) {
  rig_.PatchWord(InNode(1, 8), 0x100);  // a circle
  EXPECT_EQ(status::kInvalidFile, rig_.tree.FindSuffix("a", &branch_, &next_));
  rig_.PatchWord(InNode(1, 8), 0x2C8);
  EXPECT_EQ(status::kInvalidFile, rig_.tree.FindSuffix("a", &branch_, &next_));
  rig_.PatchWord(InNode(1, 8), 0x200);
  rig_.Patch(InNode(2, 1), "11");  // a segment of 17
  EXPECT_EQ(status::kInvalidFile, rig_.tree.FindSuffix("a", &branch_, &next_));
}

TEST_F(TernaryRegistrySuffixTest, WithoutAStartNodeNothingIsThere) {
  rig_.PatchWord(4180 + 28, 0);
  rig_.Reopen();
  EXPECT_EQ(status::kNotFound, rig_.tree.FindSuffix("ab", &branch_, &next_));
}

}  // namespace

}  // namespace tamu::registry
