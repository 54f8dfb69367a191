// Reading values and default values.
#include <memory>

#include "tests/registry/filetree/FileTreeRig.h"

namespace tamu::registry {

namespace {

TEST(FileTreeValues, BytesOfEverySizeComeBackAsTheyWere) {
  struct {
    unsigned int size;
    unsigned int blocks;
  } const cases[] = {{1, 1}, {63, 1}, {64, 1}, {65, 2}, {128, 2}, {1023, 16}, {1024, 16}};
  FileTreeRig rig;
  ASSERT_EQ(rig.Create("a"), 0u);
  unsigned int used = 0;
  for (const auto& each : cases) {
    const std::string name = std::to_string(each.size);
    const std::string bytes = Pattern(each.size);
    EXPECT_EQ(rig.CreateData("a", name, 2, bytes), 0u) << name;
    used += each.blocks;
    EXPECT_EQ(rig.FreeBlocks(), kUsableSlots - used) << name;
    EXPECT_EQ(rig.Get("a", name), "0 type 2: " + HexOf(bytes));
    EXPECT_EQ(rig.SetData("a", name, 3, Pattern(each.size)), 0u) << name;
    EXPECT_EQ(rig.Get("a", name), "0 type 3: " + HexOf(bytes));
    EXPECT_EQ(rig.FreeBlocks(), kUsableSlots - used) << name;
  }
  rig.Reopen();
  for (const auto& each : cases) {
    EXPECT_EQ(rig.Get("a", std::to_string(each.size)), "0 type 3: " + HexOf(Pattern(each.size)));
  }
}

TEST(FileTreeValues, EveryTypeOfDataComesBackWithItsNumber) {
  FileTreeRig rig;
  for (unsigned int type = 1; type <= 5; ++type) {
    const std::string name = std::to_string(type);
    EXPECT_EQ(rig.CreateData("", name, type, "data"), 0u);
    EXPECT_EQ(rig.Get("", name), "0 type " + name + ": 64617461");
  }
}

TEST(FileTreeValues, ANumberIsReadAsItsLowHalf) {
  FileTreeRig rig;
  ASSERT_EQ(rig.CreateNumber("", "n", 0x1122334455667788), 0u);
  EXPECT_EQ(rig.Get("", "n"), "0 type 0: 8877665500000000");
}

TEST(FileTreeValues, AValueThatIsNotSetHasNoData) {
  FileTreeRig rig;
  ASSERT_EQ(rig.CreateData("", "empty", 1, ""), 0u);
  ASSERT_EQ(rig.tree.CreateValue(kAdmin, nullptr, "", "unset", 5, false), 0u);
  EXPECT_EQ(rig.Get("", "empty"), "53");
  EXPECT_EQ(rig.Get("", "unset"), "53");
  unsigned int offset = 77;
  EXPECT_EQ(rig.tree.GetValueOffset(kAdmin, nullptr, "", "empty", &offset), 53u);
  EXPECT_EQ(rig.tree.GetValueOffset(kAdmin, nullptr, "", "unset", &offset), 53u);
  EXPECT_EQ(offset, 77u);
}

TEST(FileTreeValues, AFailedReadLeavesTheCallersValueAsItWas) {
  FileTreeRig rig;
  int mine = 0;
  Value value = {4, 12, &mine};
  EXPECT_EQ(rig.tree.GetValue(kAdmin, nullptr, "", "none", &value), 2u);
  EXPECT_EQ(rig.tree.GetValue(kAdmin, nullptr, "none", "none", &value), 2u);
  ASSERT_EQ(rig.CreateData("", "empty", 1, ""), 0u);
  EXPECT_EQ(rig.tree.GetValue(kAdmin, nullptr, "", "empty", &value), 53u);
  EXPECT_EQ(value.type, 4u);
  EXPECT_EQ(value.size, 12u);
  EXPECT_EQ(value.data, &mine);
}

TEST(FileTreeValues, ALongNameIsFoundByItsFirst31Characters) {
  FileTreeRig rig;
  const std::string name = "abcdefghijklmnopqrstuvwxyz0123456789ABCD";
  ASSERT_EQ(name.size(), 40u);
  ASSERT_EQ(rig.CreateNumber("", name, 7), 0u);
  EXPECT_EQ(rig.Hex(kValueArea + 52 + 12, 32),
            HexOf("abcdefghijklmnopqrstuvwxyz01234" + std::string(1, '\0')));
  EXPECT_EQ(rig.Get("", name), "2");
  EXPECT_EQ(rig.Get("", name.substr(0, 32)), "2");
  EXPECT_EQ(rig.Get("", name.substr(0, 31)), "0 type 0: 0700000000000000");
  EXPECT_EQ(rig.Get("", name.substr(0, 30)), "2");
  EXPECT_EQ(rig.SetData("", name, 1, "x"), 2u);
  EXPECT_EQ(rig.Delete("", name), 2u);
  EXPECT_EQ(rig.Delete("", name.substr(0, 31)), 0u);
}

TEST(FileTreeValues, NamesAreComparedByteByByte) {
  FileTreeRig rig;
  ASSERT_EQ(rig.CreateNumber("", "name", 1), 0u);
  ASSERT_EQ(rig.CreateNumber("", "Name", 2), 0u);
  ASSERT_EQ(rig.CreateNumber("", "na\x80\xFF", 3), 0u);
  ASSERT_EQ(rig.CreateNumber("", "a/b", 4), 0u);
  EXPECT_EQ(rig.Get("", "name"), "0 type 0: 0100000000000000");
  EXPECT_EQ(rig.Get("", "Name"), "0 type 0: 0200000000000000");
  EXPECT_EQ(rig.Get("", "na\x80\xFF"), "0 type 0: 0300000000000000");
  EXPECT_EQ(rig.Get("", "a/b"), "0 type 0: 0400000000000000");
  EXPECT_EQ(rig.Get("", "nam"), "2");
  EXPECT_EQ(rig.Get("", "names"), "2");
}

TEST(FileTreeValues, NewerValueHidesTheOlder) {
  FileTreeRig rig;
  ASSERT_EQ(rig.Create("a"), 0u);
  ASSERT_EQ(rig.CreateNumber("a", "n", 1), 0u);
  ASSERT_EQ(rig.CreateNumber("a", "other", 9), 0u);
  ASSERT_EQ(rig.CreateNumber("a", "n", 2), 0u);
  EXPECT_EQ(rig.Hex(kKeyArea + 24 * 2, 6), "000300000300");  // the newest value, three of them
  EXPECT_EQ(rig.Get("a", "n"), "0 type 0: 0200000000000000");
  EXPECT_EQ(rig.SetData("a", "n", 0, std::string("\x03\0\0\0", 4)), 0u);  // the newer one again
  EXPECT_EQ(rig.Delete("a", "n"), 0u);
  EXPECT_EQ(rig.Get("a", "n"), "0 type 0: 0100000000000000");
  EXPECT_EQ(rig.Delete("a", "n"), 0u);
  EXPECT_EQ(rig.Get("a", "n"), "2");
  EXPECT_EQ(rig.Get("a", "other"), "0 type 0: 0900000000000000");
}

TEST(FileTreeValues, FindValueHandsOutACopyOfTheRecord) {
  FileTreeRig rig;
  ASSERT_EQ(rig.CreateNumber("", "n", 5), 0u);
  unsigned int id = 77;
  TernaryValueNode* record = nullptr;
  EXPECT_EQ(rig.tree.FindValue(0x100, "missing", &id, record), 2u);
  EXPECT_EQ(id, 77u);
  EXPECT_EQ(record, nullptr);
  EXPECT_EQ(rig.tree.FindValue(0x100, "n", &id, record), 0u);
  const std::unique_ptr<TernaryValueNode> owner(record);
  EXPECT_EQ(id, 0x100u);
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(record->number(), 5u);
  EXPECT_EQ(rig.tree.FindValue(0, "n", &id, record), 2u);  // key 0 has no values
}

TEST(FileTreeValues, TheDefaultValueIsNoNamedValue) {
  FileTreeRig rig;
  ASSERT_EQ(rig.Create("a"), 0u);
  unsigned long long number = 77;
  EXPECT_EQ(rig.tree.GetDefaultValue(kAdmin, nullptr, "a", &number), 53u);
  EXPECT_EQ(number, 77u);
  EXPECT_EQ(rig.tree.SetDefaultValue(kAdmin, nullptr, "a", 0x8877665544332211, false), 0u);
  EXPECT_EQ(rig.KeyNode(2),
            "0000000000000f01"
            "ffff000000000000"
            "1122334455667788");
  EXPECT_EQ(rig.tree.GetDefaultValue(kAdmin, nullptr, "a", &number), 0u);
  EXPECT_EQ(number, 0x8877665544332211u);
  EXPECT_EQ(rig.FreeValues(), kUsableSlots);
}

TEST(FileTreeValues, GetSetValueReadsTheLowHalfIntoTheCallersNumber) {
  FileTreeRig rig;
  ASSERT_EQ(rig.CreateNumber("", "n", 0x1122334455667788), 0u);
  unsigned long long number = 0xFFFFFFFFFFFFFFFF;
  EXPECT_EQ(rig.tree.GetSetValue(kAdmin, nullptr, "", "n", &number, true), 0u);
  EXPECT_EQ(number, 0x55667788u);
  ASSERT_EQ(rig.CreateData("", "text", 1, "abcdefghij"), 0u);
  EXPECT_EQ(rig.tree.GetSetValue(kAdmin, nullptr, "", "text", &number, true), 0u);
  EXPECT_EQ(number, 0x6867666564636261u);
}

TEST(FileTreeValues, GetSetValueWritesTheLowHalf) {
  FileTreeRig rig;
  ASSERT_EQ(rig.CreateNumber("", "n", 0x1122334455667788), 0u);
  unsigned long long number = 0xAABBCCDD01020304;
  EXPECT_EQ(rig.tree.GetSetValue(kAdmin, nullptr, "", "n", &number, false), 0u);
  EXPECT_EQ(number, 0xAABBCCDD01020304u);
  EXPECT_EQ(rig.Hex(kValueArea + 52 + 44, 8), "0403020144332211");
  EXPECT_EQ(rig.Hex(kValueArea + 52 + 8, 4), "08000040");
}

TEST(FileTreeValues, GetSetValueThatFailsLeavesTheNumberAsItWas) {
  FileTreeRig rig;
  unsigned long long number = 77;
  EXPECT_EQ(rig.tree.GetSetValue(kAdmin, nullptr, "", "n", &number, true), 2u);
  EXPECT_EQ(rig.tree.GetSetValue(kAdmin, nullptr, "", "n", &number, false), 2u);
  EXPECT_EQ(rig.tree.GetSetValue(kAdmin, nullptr, "x", "n", &number, true), 2u);
  ASSERT_EQ(rig.CreateData("", "empty", 1, ""), 0u);
  EXPECT_EQ(rig.tree.GetSetValue(kAdmin, nullptr, "", "empty", &number, true), 53u);
  EXPECT_EQ(number, 77u);
}

TEST(FileTreeValues, TheOffsetOfAValueIsWhereItsDataLiesInTheFile) {
  FileTreeRig rig;
  ASSERT_EQ(rig.CreateNumber("", "n", 0x1122334455667788), 0u);
  ASSERT_EQ(rig.CreateData("", "first", 1, Pattern(100)), 0u);
  ASSERT_EQ(rig.CreateData("", "second", 1, "here"), 0u);
  unsigned int offset = 0;
  EXPECT_EQ(rig.tree.GetValueOffset(kAdmin, nullptr, "", "n", &offset), 0u);
  EXPECT_EQ(offset, 33548u + 52 + 44);
  EXPECT_EQ(rig.Hex(offset, 8), "8877665544332211");
  EXPECT_EQ(rig.tree.GetValueOffset(kAdmin, nullptr, "", "first", &offset), 0u);
  EXPECT_EQ(offset, 52528u + 64);
  EXPECT_EQ(rig.Hex(offset, 100), HexOf(Pattern(100)));
  EXPECT_EQ(rig.tree.GetValueOffset(kAdmin, nullptr, "", "second", &offset), 0u);
  EXPECT_EQ(offset, 52528u + 64 * 3);
  EXPECT_EQ(rig.Hex(offset, 4), "68657265");
}

TEST(FileTreeValues, AnEmptyValueThatIsSetHasNoOffset) {
  FileTreeRig rig;
  ASSERT_EQ(rig.CreateData("", "v", 1, "abc"), 0u);
  ASSERT_EQ(rig.SetData("", "v", 1, ""), 0u);
  unsigned int offset = 77;
  EXPECT_EQ(rig.tree.GetValueOffset(kAdmin, nullptr, "", "v", &offset), 53u);
  EXPECT_EQ(offset, 77u);
}

TEST(FileTreeValues, TheOffsetInALaterTableIsThatTables) {
  FileTreeRig rig;
  while (rig.FreeValues() > 0) ASSERT_EQ(rig.CreateNumber("", "n", 1), 0u);
  ASSERT_EQ(rig.CreateNumber("", "last", 0x0A0B), 0u);
  unsigned int offset = 0;
  EXPECT_EQ(rig.tree.GetValueOffset(kAdmin, nullptr, "", "last", &offset), 0u);
  EXPECT_EQ(offset, 75888u + 32 + 4 * 500 + 52 + 44);
  EXPECT_EQ(rig.Hex(offset, 8), "0b0a000000000000");
}

}  // namespace

}  // namespace tamu::registry
