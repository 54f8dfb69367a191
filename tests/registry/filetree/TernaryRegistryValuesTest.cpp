// Reading values and default values.
#include <memory>

#include "tests/registry/filetree/FileTreeRig.h"

namespace tamu::registry {

namespace {

TEST(TernaryRegistryValues, BytesOfEverySizeComeBackAsTheyWere) {
  struct {
    unsigned int size;
    unsigned int blocks;
  } const cases[] = {{1, 1}, {63, 1}, {64, 1}, {65, 2}, {128, 2}, {1023, 16}, {1024, 16}};
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("a"));
  unsigned int used = 0;
  for (const auto& each : cases) {
    const std::string name = std::to_string(each.size);
    const std::string bytes = Pattern(each.size);
    EXPECT_EQ(status::kOk, rig.CreateData("a", name, 2, bytes)) << name;
    used += each.blocks;
    EXPECT_EQ(rig.FreeBlocks(), kUsableSlots - used) << name;
    EXPECT_EQ(rig.Get("a", name), "0 type 2: " + HexOf(bytes));
    EXPECT_EQ(status::kOk, rig.SetData("a", name, 3, Pattern(each.size))) << name;
    EXPECT_EQ(rig.Get("a", name), "0 type 3: " + HexOf(bytes));
    EXPECT_EQ(rig.FreeBlocks(), kUsableSlots - used) << name;
  }
  rig.Reopen();
  for (const auto& each : cases) {
    EXPECT_EQ(rig.Get("a", std::to_string(each.size)), "0 type 3: " + HexOf(Pattern(each.size)));
  }
}

TEST(TernaryRegistryValues, EveryTypeOfDataComesBackWithItsNumber) {
  FileTreeRig rig;
  for (unsigned int type = 1; type <= 5; ++type) {
    const std::string name = std::to_string(type);
    EXPECT_EQ(status::kOk, rig.CreateData("", name, type, "data"));
    EXPECT_EQ(rig.Get("", name), "0 type " + name + ": 64617461");
  }
}

TEST(TernaryRegistryValues, ANumberIsReadAsItsLowHalf) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.CreateNumber("", "n", 0x1122334455667788));
  EXPECT_EQ("0 type 0: 8877665500000000", rig.Get("", "n"));
}

TEST(TernaryRegistryValues, AValueThatIsNotSetHasNoData) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.CreateData("", "empty", 1, ""));
  ASSERT_EQ(status::kOk, rig.tree.CreateValue(kAdmin, nullptr, "", "unset", 5, false));
  EXPECT_EQ("53", rig.Get("", "empty"));
  EXPECT_EQ("53", rig.Get("", "unset"));
  unsigned int offset = 77;
  EXPECT_EQ(status::kNoData, rig.tree.GetValueOffset(kAdmin, nullptr, "", "empty", &offset));
  EXPECT_EQ(status::kNoData, rig.tree.GetValueOffset(kAdmin, nullptr, "", "unset", &offset));
  EXPECT_EQ(77u, offset);
}

TEST(TernaryRegistryValues, AFailedReadLeavesTheCallersValueAsItWas) {
  FileTreeRig rig;
  int mine = 0;
  Value value = {4, 12, &mine};
  EXPECT_EQ(status::kNotFound, rig.tree.GetValue(kAdmin, nullptr, "", "none", &value));
  EXPECT_EQ(status::kNotFound, rig.tree.GetValue(kAdmin, nullptr, "none", "none", &value));
  ASSERT_EQ(status::kOk, rig.CreateData("", "empty", 1, ""));
  EXPECT_EQ(status::kNoData, rig.tree.GetValue(kAdmin, nullptr, "", "empty", &value));
  EXPECT_EQ(4u, value.type);
  EXPECT_EQ(12u, value.size);
  EXPECT_EQ(value.data, &mine);
}

TEST(TernaryRegistryValues, ALongNameIsFoundByItsFirst31Characters) {
  FileTreeRig rig;
  const std::string name = "abcdefghijklmnopqrstuvwxyz0123456789ABCD";
  ASSERT_EQ(40u, name.size());
  ASSERT_EQ(status::kOk, rig.CreateNumber("", name, 7));
  EXPECT_EQ(rig.Hex(kValueArea + 52 + 12, 32),
            HexOf("abcdefghijklmnopqrstuvwxyz01234" + std::string(1, '\0')));
  EXPECT_EQ("2", rig.Get("", name));
  EXPECT_EQ("2", rig.Get("", name.substr(0, 32)));
  EXPECT_EQ("0 type 0: 0700000000000000", rig.Get("", name.substr(0, 31)));
  EXPECT_EQ("2", rig.Get("", name.substr(0, 30)));
  EXPECT_EQ(status::kNotFound, rig.SetData("", name, 1, "x"));
  EXPECT_EQ(status::kNotFound, rig.Delete("", name));
  EXPECT_EQ(status::kOk, rig.Delete("", name.substr(0, 31)));
}

TEST(TernaryRegistryValues, NamesAreComparedByteByByte) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.CreateNumber("", "name", 1));
  ASSERT_EQ(status::kOk, rig.CreateNumber("", "Name", 2));
  ASSERT_EQ(status::kOk, rig.CreateNumber("", "na\x80\xFF", 3));
  ASSERT_EQ(status::kOk, rig.CreateNumber("", "a/b", 4));
  EXPECT_EQ("0 type 0: 0100000000000000", rig.Get("", "name"));
  EXPECT_EQ("0 type 0: 0200000000000000", rig.Get("", "Name"));
  EXPECT_EQ("0 type 0: 0300000000000000", rig.Get("", "na\x80\xFF"));
  EXPECT_EQ("0 type 0: 0400000000000000", rig.Get("", "a/b"));
  EXPECT_EQ("2", rig.Get("", "nam"));
  EXPECT_EQ("2", rig.Get("", "names"));
}

TEST(TernaryRegistryValues, NewerValueHidesTheOlder) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("a"));
  ASSERT_EQ(status::kOk, rig.CreateNumber("a", "n", 1));
  ASSERT_EQ(status::kOk, rig.CreateNumber("a", "other", 9));
  ASSERT_EQ(status::kOk, rig.CreateNumber("a", "n", 2));
  EXPECT_EQ("000300000300", rig.Hex(kKeyArea + 24 * 2, 6));  // the newest value, three of them
  EXPECT_EQ("0 type 0: 0200000000000000", rig.Get("a", "n"));
  EXPECT_EQ(status::kOk,
            rig.SetData("a", "n", 0, std::string("\x03\0\0\0", 4)));  // the newer one again
  EXPECT_EQ(status::kOk, rig.Delete("a", "n"));
  EXPECT_EQ("0 type 0: 0100000000000000", rig.Get("a", "n"));
  EXPECT_EQ(status::kOk, rig.Delete("a", "n"));
  EXPECT_EQ("2", rig.Get("a", "n"));
  EXPECT_EQ("0 type 0: 0900000000000000", rig.Get("a", "other"));
}

TEST(TernaryRegistryValues, FindValueHandsOutACopyOfTheRecord) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.CreateNumber("", "n", 5));
  unsigned int id = 77;
  TernaryValueNode* record = nullptr;
  EXPECT_EQ(2u, rig.tree.FindValue(0x100, "missing", &id, record));
  EXPECT_EQ(77u, id);
  EXPECT_EQ(nullptr, record);
  EXPECT_EQ(0u, rig.tree.FindValue(0x100, "n", &id, record));
  const std::unique_ptr<TernaryValueNode> owner(record);
  EXPECT_EQ(0x100u, id);
  ASSERT_NE(nullptr, record);
  EXPECT_EQ(5u, record->number());
  EXPECT_EQ(2u, rig.tree.FindValue(0, "n", &id, record));  // key 0 has no values
}

TEST(TernaryRegistryValues, TheDefaultValueIsNoNamedValue) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("a"));
  unsigned long long number = 77;
  EXPECT_EQ(status::kNoData, rig.tree.GetDefaultValue(kAdmin, nullptr, "a", &number));
  EXPECT_EQ(77u, number);
  EXPECT_EQ(status::kOk, rig.tree.SetDefaultValue(kAdmin, nullptr, "a", 0x8877665544332211, false));
  EXPECT_EQ(
      "0000000000000f01"
      "ffff000000000000"
      "1122334455667788",
      rig.KeyNode(2));
  EXPECT_EQ(status::kOk, rig.tree.GetDefaultValue(kAdmin, nullptr, "a", &number));
  EXPECT_EQ(0x8877665544332211u, number);
  EXPECT_EQ(kUsableSlots, rig.FreeValues());
}

TEST(TernaryRegistryValues, GetSetValueReadsTheLowHalfIntoTheCallersNumber) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.CreateNumber("", "n", 0x1122334455667788));
  unsigned long long number = 0xFFFFFFFFFFFFFFFF;
  EXPECT_EQ(status::kOk, rig.tree.GetSetValue(kAdmin, nullptr, "", "n", &number, true));
  EXPECT_EQ(0x55667788u, number);
  ASSERT_EQ(status::kOk, rig.CreateData("", "text", 1, "abcdefghij"));
  EXPECT_EQ(status::kOk, rig.tree.GetSetValue(kAdmin, nullptr, "", "text", &number, true));
  EXPECT_EQ(0x6867666564636261u, number);
}

TEST(TernaryRegistryValues, GetSetValueWritesTheLowHalf) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.CreateNumber("", "n", 0x1122334455667788));
  unsigned long long number = 0xAABBCCDD01020304;
  EXPECT_EQ(status::kOk, rig.tree.GetSetValue(kAdmin, nullptr, "", "n", &number, false));
  EXPECT_EQ(0xAABBCCDD01020304u, number);
  EXPECT_EQ("0403020144332211", rig.Hex(kValueArea + 52 + 44, 8));
  EXPECT_EQ("08000040", rig.Hex(kValueArea + 52 + 8, 4));
}

TEST(TernaryRegistryValues, GetSetValueThatFailsLeavesTheNumberAsItWas) {
  FileTreeRig rig;
  unsigned long long number = 77;
  EXPECT_EQ(status::kNotFound, rig.tree.GetSetValue(kAdmin, nullptr, "", "n", &number, true));
  EXPECT_EQ(status::kNotFound, rig.tree.GetSetValue(kAdmin, nullptr, "", "n", &number, false));
  EXPECT_EQ(status::kNotFound, rig.tree.GetSetValue(kAdmin, nullptr, "x", "n", &number, true));
  ASSERT_EQ(status::kOk, rig.CreateData("", "empty", 1, ""));
  EXPECT_EQ(status::kNoData, rig.tree.GetSetValue(kAdmin, nullptr, "", "empty", &number, true));
  EXPECT_EQ(77u, number);
}

TEST(TernaryRegistryValues, TheOffsetOfAValueIsWhereItsDataLiesInTheFile) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.CreateNumber("", "n", 0x1122334455667788));
  ASSERT_EQ(status::kOk, rig.CreateData("", "first", 1, Pattern(100)));
  ASSERT_EQ(status::kOk, rig.CreateData("", "second", 1, "here"));
  unsigned int offset = 0;
  EXPECT_EQ(status::kOk, rig.tree.GetValueOffset(kAdmin, nullptr, "", "n", &offset));
  EXPECT_EQ(offset, 33548u + 52 + 44);
  EXPECT_EQ("8877665544332211", rig.Hex(offset, 8));
  EXPECT_EQ(status::kOk, rig.tree.GetValueOffset(kAdmin, nullptr, "", "first", &offset));
  EXPECT_EQ(offset, 52528u + 64);
  EXPECT_EQ(rig.Hex(offset, 100), HexOf(Pattern(100)));
  EXPECT_EQ(status::kOk, rig.tree.GetValueOffset(kAdmin, nullptr, "", "second", &offset));
  EXPECT_EQ(offset, 52528u + 64 * 3);
  EXPECT_EQ("68657265", rig.Hex(offset, 4));
}

TEST(TernaryRegistryValues, AnEmptyValueThatIsSetHasNoOffset) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.CreateData("", "v", 1, "abc"));
  ASSERT_EQ(status::kOk, rig.SetData("", "v", 1, ""));
  unsigned int offset = 77;
  EXPECT_EQ(status::kNoData, rig.tree.GetValueOffset(kAdmin, nullptr, "", "v", &offset));
  EXPECT_EQ(77u, offset);
}

TEST(TernaryRegistryValues, TheOffsetInALaterTableIsThatTables) {
  FileTreeRig rig;
  while (rig.FreeValues() > 0) ASSERT_EQ(status::kOk, rig.CreateNumber("", "n", 1));
  ASSERT_EQ(status::kOk, rig.CreateNumber("", "last", 0x0A0B));
  unsigned int offset = 0;
  EXPECT_EQ(status::kOk, rig.tree.GetValueOffset(kAdmin, nullptr, "", "last", &offset));
  EXPECT_EQ(offset, 75888u + 32 + 4 * 500 + 52 + 44);
  EXPECT_EQ("0b0a000000000000", rig.Hex(offset, 8));
}

}  // namespace

}  // namespace tamu::registry
