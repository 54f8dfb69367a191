// Damaged values and data.
#include "tests/registry/filetree/DamagedFile.h"

namespace tamu::registry {

namespace {

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

}  // namespace

}  // namespace tamu::registry
