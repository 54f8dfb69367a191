// Listing from a node on, and listing the names of values.
#include "tests/registry/filetree/KeyTesting.h"

namespace tamu::registry {

namespace {

// A listing's state, with what stands in the buffer already.
struct State {
  explicit State(const std::string& start, unsigned int skip = 0) : names(10) {
    arg.names = &names;
    arg.skip = skip;
    EXPECT_EQ(0u, arg.buffer.EnsureCapacity(static_cast<unsigned int>(start.size())));
    for (size_t i = 0; i < start.size(); ++i) arg.buffer.data[i] = start[i];
  }
  NameList names;
  TernaryRegistry::RecursiveArg arg;
};

TEST(TernaryRegistryListingParts, ANodeIsListedBehindWhatTheBufferHolds) {
  FileTreeRig rig;
  CreateFiveKeys(rig);  // "m" is 200, "f" 300, "mn" 500
  State whole("");
  EXPECT_EQ("0: t f mn m/x m", ListText(rig.tree.ListNode(0x200, 0, &whole.arg), whole.names));
  State behind("abc");
  EXPECT_EQ("0: abt abf abmn abm/x abm",
            ListText(rig.tree.ListNode(0x200, 2, &behind.arg), behind.names));
  State skipping("x", 3);
  EXPECT_EQ("0: xm/x xm", ListText(rig.tree.ListNode(0x200, 1, &skipping.arg), skipping.names));
  EXPECT_EQ(0u, skipping.arg.skip);
  State one("");
  EXPECT_EQ("0: n", ListText(rig.tree.ListNode(0x500, 0, &one.arg), one.names));
  State missing("");
  EXPECT_EQ("59:", ListText(rig.tree.ListNode(0x3C8, 0, &missing.arg), missing.names));
}

TEST(TernaryRegistryListingParts, ARecordIsListedAsItsNodeIs) {
  FileTreeRig rig;
  CreateFiveKeys(rig);
  TernaryStringNode node;  // its own, in no file: "ab", with "m" as the lower neighbour of its "b"
  node.setSegmentLength(1);
  node.setSegment(0, 'a');
  node.setSplitChar('b');
  node.setLo(0x500);
  node.setHasKey(true);
  State state("/");
  EXPECT_EQ("0: /an /ab",
            ListText(rig.tree.RecursiveListString(&node, 1, nullptr, &state.arg), state.names));
  State full("");
  for (int i = 0; i < 10; ++i) ASSERT_EQ(status::kOk, rig.tree.ListNode(0x500, 0, &full.arg));
  EXPECT_EQ(status::kLimit, rig.tree.ListNode(0x500, 0, &full.arg));
  EXPECT_EQ(status::kBadArgument, rig.tree.RecursiveListString(nullptr, 0, "", &state.arg));
  EXPECT_EQ(status::kBadArgument, rig.tree.RecursiveListString(&node, 0, "", nullptr));
}

TEST(TernaryRegistryListingParts, TheNewestValueComesFirst) {
  FileTreeRig rig;
  for (const char* name : {"one", "two", "three"})
    ASSERT_EQ(status::kOk, rig.CreateNumber("", name, 1));
  EXPECT_EQ("0: three two one", ListedValues(rig, ""));
  EXPECT_EQ("0: two one", ListedValues(rig, "", 1));
  EXPECT_EQ("0: one", ListedValues(rig, "", 2));
  EXPECT_EQ("75:", ListedValues(rig, "", 3));
  EXPECT_EQ("75:", ListedValues(rig, "", 0xFFFFFFFF));
  ASSERT_EQ(status::kOk, rig.Delete("", "two"));
  EXPECT_EQ("0: three one", ListedValues(rig, ""));
  EXPECT_EQ("75:", ListedValues(rig, "", 2));
}

TEST(TernaryRegistryListingParts, AKeyWithoutValuesAnswers75) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("a"));
  ASSERT_EQ(status::kOk, rig.Create("a/b"));
  ASSERT_EQ(status::kOk, rig.CreateNumber("a/b", "n", 1));
  EXPECT_EQ("75:", ListedValues(rig, "a"));
  EXPECT_EQ("75:", ListedValues(rig, "a", 0, 0));
}

TEST(TernaryRegistryListingParts, EveryValueIsListed) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.CreateNumber("", "n", 1));
  ASSERT_EQ(status::kOk, rig.CreateNumber("", "n", 2));  // the first one is hidden, and there
  ASSERT_EQ(status::kOk, rig.CreateData("", "empty", 1, ""));
  ASSERT_EQ(status::kOk, rig.CreateData("", "data", 2, Pattern(100)));
  ASSERT_EQ(status::kOk, rig.CreateNumber("", "", 3));
  ASSERT_EQ(status::kOk, rig.CreateNumber("", std::string(40, 'x'), 3));
  EXPECT_EQ(ListedValues(rig, ""), "0: " + std::string(31, 'x') + "  data empty n n");
}

TEST(TernaryRegistryListingParts, AFullListKeepsTheValuesThatCameFirst) {
  FileTreeRig rig;
  for (const char* name : {"one", "two", "three"})
    ASSERT_EQ(status::kOk, rig.CreateNumber("", name, 1));
  EXPECT_EQ("75: three two", ListedValues(rig, "", 0, 2));
  EXPECT_EQ("0: two one", ListedValues(rig, "", 1, 2));
  EXPECT_EQ("12:", ListedValues(rig, "", 0, 0));
}

TEST(TernaryRegistryListingParts, ListingValuesNeedsTheRightToRead) {
  ExpectToNeedTheRight(
      1, [](FileTreeRig& rig) { ASSERT_EQ(status::kOk, rig.CreateNumber("a", "n", 1)); },
      [](TernaryRegistry& tree, unsigned int user) {
        NameList list(10);
        const unsigned int result = tree.ListValues(user, nullptr, "a", 0, &list);
        EXPECT_EQ(ListText(result, list), result == 0 ? "0: n" : "1:");
        return result;
      });
}

}  // namespace

}  // namespace tamu::registry
