// Damaged values and data.
#include "tests/registry/filetree/DamagedFile.h"

namespace tamu::registry {

namespace {

TEST(TernaryRegistryValueDamage, AFirstValueThatDoesNotExist) {
  for (unsigned int bad : kBadIds) {
    SCOPED_TRACE(bad);
    FileTreeRig rig;
    ASSERT_EQ(status::kOk, rig.Create("m"));
    rig.PatchWord(InKey(2, 0), bad);
    EXPECT_EQ("0 17 9 9 9 9 9 9 0 0 53 0 ", Answers(rig, "m", "v"));
    unsigned int id = 0;
    TernaryValueNode* record = nullptr;
    EXPECT_EQ(9u, rig.tree.FindValue(0x200, "none", &id, record));
    EXPECT_EQ("0 type 1: 3132333435363738", rig.Get("m", "v"));  // a new value lies before it
  }
}

TEST(TernaryRegistryValueDamage, ANextValueThatDoesNotExist) {
  for (unsigned int bad : kBadIds) {
    SCOPED_TRACE(bad);
    FileTreeRig rig;
    ASSERT_EQ(status::kOk, rig.CreateNumber("", "v", 5));
    rig.PatchWord(InValue(1, 0), bad);
    EXPECT_EQ("0 type 0: 0500000000000000", rig.Get("", "v"));
    EXPECT_EQ("9", rig.Get("", "w"));
    EXPECT_EQ(status::kCannotOpen, rig.SetData("", "w", 1, "x"));
    EXPECT_EQ(status::kCannotOpen, rig.Delete("", "w"));
  }
}

TEST(TernaryRegistryValueDamage, AValueThatIsItsOwnNext) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.CreateNumber("", "w", 5));
  rig.PatchWord(InValue(1, 0), 0x100);
  EXPECT_EQ("0 17 59 59 59 59 59 59 0 0 53 0 ", Answers(rig, "", "v"));
  EXPECT_EQ("0 type 0: 0500000000000000", rig.Get("", "w"));
}

TEST(TernaryRegistryValueDamage, TwoValuesThatLeadToEachOther) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.CreateNumber("", "w", 5));
  ASSERT_EQ(status::kOk, rig.CreateNumber("", "x", 6));
  rig.PatchWord(InValue(1, 0), 0x200);
  EXPECT_EQ("0 17 59 59 59 59 59 59 0 0 53 0 ", Answers(rig, "", "v"));
  EXPECT_EQ("0 type 0: 0500000000000000", rig.Get("", "w"));
  EXPECT_EQ("0 type 0: 0600000000000000", rig.Get("", "x"));
}

TEST(TernaryRegistryValueDamage, AValueNameWithoutTerminator) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.CreateNumber("", "older", 5));
  ASSERT_EQ(status::kOk, rig.CreateNumber("", "n", 6));
  rig.Patch(InValue(2, 12), Repeated("78", 32));
  rig.Patch(InValue(2, 44), Repeated("78", 8));  // nor is there one behind it
  EXPECT_EQ("2", rig.Get("", std::string(31, 'x')));
  EXPECT_EQ("2", rig.Get("", std::string(40, 'x')));
  EXPECT_EQ("2", rig.Get("", "x"));
  EXPECT_EQ("0 type 0: 0500000000000000", rig.Get("", "older"));
}

TEST(TernaryRegistryValueDamage, ATypeThatDoesNotExist) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.CreateNumber("", "n", 6));
  rig.Patch(InValue(1, 11), "5f");
  EXPECT_EQ("0 type 31: 0600000000000000", rig.Get("", "n"));
}

TEST(TernaryRegistryValueDamage, ASizeThatIsTooLarge) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.CreateNumber("", "n", 6));
  ASSERT_EQ(status::kOk, rig.CreateData("", "d", 1, Pattern(1024)));
  rig.Patch(InValue(1, 8), "ffff");
  rig.Patch(InValue(2, 8), "ffff");
  EXPECT_EQ(rig.Get("", "n"), "0 type 0: 06" + Repeated("00", 65534));
  EXPECT_EQ("59", rig.Get("", "d"));  // 16 blocks are all there is
}

TEST(TernaryRegistryValueDamage, DataThatDoesNotExist) {
  for (unsigned int bad : kBadIds) {
    SCOPED_TRACE(bad);
    FileTreeRig rig;
    ASSERT_EQ(status::kOk, rig.CreateData("", "v", 1, "abc"));
    rig.PatchWord(InValue(1, 44), bad);
    unsigned int offset = 77;
    EXPECT_EQ("59", rig.Get("", "v"));
    EXPECT_EQ(status::kInvalidFile, rig.tree.GetValueOffset(kAdmin, nullptr, "", "v", &offset));
    EXPECT_EQ(77u, offset);
    EXPECT_EQ(status::kOk, rig.SetData("", "v", 2, "new"));  // what it led to stays where it is
    EXPECT_EQ("0 type 2: 6e6577", rig.Get("", "v"));
  }
}

TEST(TernaryRegistryValueDamage, DataOfASizeButNoBlock) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.CreateData("", "v", 1, "abc"));
  rig.PatchWord(InValue(1, 44), 0);
  EXPECT_EQ("59", rig.Get("", "v"));
  EXPECT_EQ(status::kOk, rig.SetData("", "v", 1, "new"));
  EXPECT_EQ("0 type 1: 6e6577", rig.Get("", "v"));
}

TEST(TernaryRegistryValueDamage, AChainOfBlocksThatIsNoValues) {
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
    ASSERT_EQ(status::kOk, rig.CreateData("", "v", 1, Pattern(1024)));
    rig.PatchWord(BlockEntry(each.block), each.next);
    EXPECT_EQ("59", rig.Get("", "v"));
    EXPECT_EQ(status::kOk, rig.SetData("", "v", 2, "new"));
    EXPECT_EQ("0 type 2: 6e6577", rig.Get("", "v"));
    EXPECT_EQ(status::kOk, rig.CreateData("", "w", 1, Pattern(1024)));
    EXPECT_EQ(rig.Get("", "w"), "0 type 1: " + HexOf(Pattern(1024)));
    EXPECT_EQ("0 type 2: 6e6577", rig.Get("", "v"));
  }
}

}  // namespace

}  // namespace tamu::registry
