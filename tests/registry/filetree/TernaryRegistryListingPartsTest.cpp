// Listing from a node on, and listing the names of values.
#include "tests/registry/filetree/KeyTesting.h"

namespace tamu::registry {

namespace {

// A listing's state, with what stands in the buffer already.
struct State {
  explicit State(const std::string& start, unsigned int skip = 0) : names(10) {
    arg.names = &names;
    arg.skip = skip;
    EXPECT_EQ(arg.buffer.EnsureCapacity(static_cast<unsigned int>(start.size())), 0u);
    for (size_t i = 0; i < start.size(); ++i) arg.buffer.data[i] = start[i];
  }
  NameList names;
  TernaryRegistry::RecursiveArg arg;
};

TEST(FileTreeListing, ANodeIsListedBehindWhatTheBufferHolds) {
  FileTreeRig rig;
  CreateFiveKeys(rig);  // "m" is 200, "f" 300, "mn" 500
  State whole("");
  EXPECT_EQ(ListText(rig.tree.ListNode(0x200, 0, &whole.arg), whole.names), "0: t f mn m/x m");
  State behind("abc");
  EXPECT_EQ(ListText(rig.tree.ListNode(0x200, 2, &behind.arg), behind.names),
            "0: abt abf abmn abm/x abm");
  State skipping("x", 3);
  EXPECT_EQ(ListText(rig.tree.ListNode(0x200, 1, &skipping.arg), skipping.names), "0: xm/x xm");
  EXPECT_EQ(skipping.arg.skip, 0u);
  State one("");
  EXPECT_EQ(ListText(rig.tree.ListNode(0x500, 0, &one.arg), one.names), "0: n");
  State missing("");
  EXPECT_EQ(ListText(rig.tree.ListNode(0x3C8, 0, &missing.arg), missing.names), "59:");
}

TEST(FileTreeListing, ARecordIsListedAsItsNodeIs) {
  FileTreeRig rig;
  CreateFiveKeys(rig);
  TernaryStringNode node;  // its own, in no file: "ab", with "m" as the lower neighbour of its "b"
  node.setSegmentLength(1);
  node.setSegment(0, 'a');
  node.setSplitChar('b');
  node.setLo(0x500);
  node.setHasKey(true);
  State state("/");
  EXPECT_EQ(ListText(rig.tree.RecursiveListString(&node, 1, nullptr, &state.arg), state.names),
            "0: /an /ab");
  State full("");
  for (int i = 0; i < 10; ++i) ASSERT_EQ(rig.tree.ListNode(0x500, 0, &full.arg), 0u);
  EXPECT_EQ(rig.tree.ListNode(0x500, 0, &full.arg), 75u);
  EXPECT_EQ(rig.tree.RecursiveListString(nullptr, 0, "", &state.arg), 22u);
  EXPECT_EQ(rig.tree.RecursiveListString(&node, 0, "", nullptr), 22u);
}

TEST(FileTreeListing, TheNewestValueComesFirst) {
  FileTreeRig rig;
  for (const char* name : {"one", "two", "three"}) ASSERT_EQ(rig.CreateNumber("", name, 1), 0u);
  EXPECT_EQ(ListedValues(rig, ""), "0: three two one");
  EXPECT_EQ(ListedValues(rig, "", 1), "0: two one");
  EXPECT_EQ(ListedValues(rig, "", 2), "0: one");
  EXPECT_EQ(ListedValues(rig, "", 3), "75:");
  EXPECT_EQ(ListedValues(rig, "", 0xFFFFFFFF), "75:");
  ASSERT_EQ(rig.Delete("", "two"), 0u);
  EXPECT_EQ(ListedValues(rig, ""), "0: three one");
  EXPECT_EQ(ListedValues(rig, "", 2), "75:");
}

TEST(FileTreeListing, AKeyWithoutValuesAnswers75) {
  FileTreeRig rig;
  ASSERT_EQ(rig.Create("a"), 0u);
  ASSERT_EQ(rig.Create("a/b"), 0u);
  ASSERT_EQ(rig.CreateNumber("a/b", "n", 1), 0u);
  EXPECT_EQ(ListedValues(rig, "a"), "75:");
  EXPECT_EQ(ListedValues(rig, "a", 0, 0), "75:");
}

TEST(FileTreeListing, EveryValueIsListed) {
  FileTreeRig rig;
  ASSERT_EQ(rig.CreateNumber("", "n", 1), 0u);
  ASSERT_EQ(rig.CreateNumber("", "n", 2), 0u);  // the first one is hidden, and there
  ASSERT_EQ(rig.CreateData("", "empty", 1, ""), 0u);
  ASSERT_EQ(rig.CreateData("", "data", 2, Pattern(100)), 0u);
  ASSERT_EQ(rig.CreateNumber("", "", 3), 0u);
  ASSERT_EQ(rig.CreateNumber("", std::string(40, 'x'), 3), 0u);
  EXPECT_EQ(ListedValues(rig, ""), "0: " + std::string(31, 'x') + "  data empty n n");
}

TEST(FileTreeListing, AFullListKeepsTheValuesThatCameFirst) {
  FileTreeRig rig;
  for (const char* name : {"one", "two", "three"}) ASSERT_EQ(rig.CreateNumber("", name, 1), 0u);
  EXPECT_EQ(ListedValues(rig, "", 0, 2), "75: three two");
  EXPECT_EQ(ListedValues(rig, "", 1, 2), "0: two one");
  EXPECT_EQ(ListedValues(rig, "", 0, 0), "12:");
}

TEST(FileTreeListing, ListingValuesNeedsTheRightToRead) {
  ExpectToNeedTheRight(
      1, [](FileTreeRig& rig) { ASSERT_EQ(rig.CreateNumber("a", "n", 1), 0u); },
      [](TernaryRegistry& tree, unsigned int user) {
        NameList list(10);
        const unsigned int result = tree.ListValues(user, nullptr, "a", 0, &list);
        EXPECT_EQ(ListText(result, list), result == 0 ? "0: n" : "1:");
        return result;
      });
}

}  // namespace

}  // namespace tamu::registry
