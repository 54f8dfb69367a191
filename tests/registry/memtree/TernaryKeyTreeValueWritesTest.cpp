// Creating, changing and deleting values through a handle: what is stored and what is read.
#include "tests/registry/memtree/LoadedWriting.h"

namespace tamu::registry {

namespace {

using TernaryKeyTreeValueWritesTest = LoadedWriting;

TEST_F(TernaryKeyTreeValueWritesTest, DataOfAnySizeUpTo1024BytesIsKept) {
  Start({"a"});
  for (unsigned int size : {1u, 63u, 64u, 65u, 1023u, 1024u}) {
    SCOPED_TRACE(size);
    const std::string name = "n" + std::to_string(size);
    ASSERT_EQ(status::kOk, CreateData("a", name.c_str(), 5, Pattern(size)));
    EXPECT_EQ(GetEverywhere("a", name.c_str()), "type 5: " + HexOf(Pattern(size)));
    ASSERT_EQ(status::kOk, SetData("a", name.c_str(), 3, Pattern(1025 - size)));
    EXPECT_EQ(GetEverywhere("a", name.c_str()), "type 3: " + HexOf(Pattern(1025 - size)));
  }
  ExpectSound(rig.path);
}

TEST_F(TernaryKeyTreeValueWritesTest, OfNoBytesNothingIsSet) {
  Start({"a"});
  const char* const kFlags[] = {"08000000", "00000021", "00000022",
                                "00000023", "00000024", "00000025"};
  for (unsigned int type = 0; type <= 5; ++type) {
    SCOPED_TRACE(type);
    const std::string name(1, static_cast<char>('a' + type));
    ASSERT_EQ(status::kOk, CreateData("a", name.c_str(), type, ""));
    EXPECT_EQ(Hex(InValue(type + 1, 8), 4), kFlags[type]);
    EXPECT_EQ("0000000000000000", Hex(InValue(type + 1, 44), 8));
    EXPECT_EQ("nothing", GetEverywhere("a", name.c_str()));
  }
  EXPECT_EQ("362 362 358 364", FreeSlots());
  ASSERT_EQ(status::kOk, CreateData("a", "x", 1, "x"));
  EXPECT_EQ("type 1: 78", GetEverywhere("a", "x"));
  for (const char* name : {"a", "b", "f"}) {
    ASSERT_EQ(status::kOk, SetData("a", name, 2, Pattern(70)));
    EXPECT_EQ(GetEverywhere("a", name), "type 2: " + HexOf(Pattern(70)));
  }
  ExpectSound(rig.path);
}

// Without a handle a value that is set to nothing stays set.
TEST_F(TernaryKeyTreeValueWritesTest, SettingAValueToNothingLeavesItUnset) {
  const char* const kFlags[] = {"08000000", "00000021", "00000022",
                                "00000023", "00000024", "00000025"};
  Start({"a"});
  for (unsigned int type = 0; type <= 5; ++type) {
    SCOPED_TRACE(type);
    const std::string name(1, static_cast<char>('a' + type));
    ASSERT_EQ(status::kOk, CreateData("a", name.c_str(), 1, Pattern(200)));
    ASSERT_EQ(status::kOk, SetData("a", name.c_str(), type, ""));
    EXPECT_EQ(Hex(InValue(type + 1, 8), 4), kFlags[type]);
    EXPECT_EQ("0000000000000000", Hex(InValue(type + 1, 44), 8));
    EXPECT_EQ("nothing", GetEverywhere("a", name.c_str()));
  }
  EXPECT_EQ("362 362 358 364", FreeSlots());
  Value nothing = {1, 0, nullptr};
  ASSERT_EQ(status::kOk, rig.file->SetValue(kAdmin, nullptr, "a", "b", &nothing));
  EXPECT_EQ("00000061", Hex(InValue(2, 8), 4));
  Reload();
  EXPECT_EQ("type 1: ", Get("a", "b"));
}

TEST_F(TernaryKeyTreeValueWritesTest, OfTwoValuesOfANameTheNewerCounts) {
  Start({"a"});
  ASSERT_EQ(status::kOk, CreateData("a", "n", 1, "old"));
  ASSERT_EQ(status::kOk, CreateNumber("a", "other", 5));
  ASSERT_EQ(status::kOk, CreateData("a", "n", 2, "new"));
  EXPECT_EQ("000300000300", KeyNode(2).substr(0, 12));
  EXPECT_EQ(0x200u, Word(InValue(3, 0)));
  EXPECT_EQ(0x100u, Word(InValue(2, 0)));
  EXPECT_EQ("0: n other n", ListedValues("a"));
  EXPECT_EQ(GetEverywhere("a", "n"), "type 2: " + HexOf("new"));
  ASSERT_EQ(status::kOk, SetData("a", "n", 3, "newer"));
  EXPECT_EQ(DataBlock(1).substr(0, 6), HexOf("old"));
  EXPECT_EQ(GetEverywhere("a", "n"), "type 3: " + HexOf("newer"));
  ASSERT_EQ(status::kOk, DeleteValue("a", "n"));
  EXPECT_EQ(GetEverywhere("a", "n"), "type 1: " + HexOf("old"));
  ASSERT_EQ(status::kOk, DeleteValue("a", "n"));
  EXPECT_EQ("2", GetEverywhere("a", "n"));
}

TEST_F(TernaryKeyTreeValueWritesTest, ANumberOfFewerBytesIsFilledWithZeros) {
  Start({"a"});
  const char* const kStored[] = {"0000000000000000", "0100000000000000", "0108000000000000",
                                 "01080f0000000000", "01080f1600000000", "01080f161d000000",
                                 "01080f161d240000", "01080f161d242b00", "01080f161d242b32"};
  for (unsigned int size = 1; size <= 8; ++size) {
    SCOPED_TRACE(size);
    const std::string name = std::to_string(size);
    ASSERT_EQ(status::kOk, CreateData("a", name.c_str(), 0, Pattern(size)));
    EXPECT_EQ("08000040", Hex(InValue(size, 8), 4));
    EXPECT_EQ(Hex(InValue(size, 44), 8), kStored[size]);
    EXPECT_EQ(GetEverywhere("a", name.c_str()), std::string("type 0: ") + kStored[size]);
  }
  ASSERT_EQ(status::kOk, CreateNumber("a", "n", 0xFFFFFFFFFFFFFFFF));
  for (unsigned int size = 1; size <= 8; ++size) {
    SCOPED_TRACE(size);
    ASSERT_EQ(status::kOk, SetData("a", "n", 0, Pattern(size)));
    EXPECT_EQ("08000040", Hex(InValue(9, 8), 4));
    EXPECT_EQ(Hex(InValue(9, 44), 8), kStored[size]);
    EXPECT_EQ(GetEverywhere("a", "n"), std::string("type 0: ") + kStored[size]);
  }
  ASSERT_EQ(status::kOk, SetData("a", "n", 0, ""));
  EXPECT_EQ("08000000", Hex(InValue(9, 8), 4));
  EXPECT_EQ(Hex(InValue(9, 44), 8), kStored[0]);
}

TEST_F(TernaryKeyTreeValueWritesTest, OfANumberOfMoreBytesEightCount) {
  Start({"a"});
  ASSERT_EQ(status::kOk, CreateData("a", "n", 0, Pattern(1000)));
  EXPECT_EQ("08000040", Hex(InValue(1, 8), 4));
  EXPECT_EQ("01080f161d242b32", Hex(InValue(1, 44), 8));
  EXPECT_EQ("type 0: 01080f161d242b32", GetEverywhere("a", "n"));
  ASSERT_EQ(status::kOk, SetData("a", "n", 0, std::string(1024, '\x7f')));
  EXPECT_EQ("08000040", Hex(InValue(1, 8), 4));
  EXPECT_EQ("type 0: 7f7f7f7f7f7f7f7f", GetEverywhere("a", "n"));
}

// Without a handle the lower four bytes alone are replaced, and the size is the caller's.
TEST_F(TernaryKeyTreeValueWritesTest, OfANumberAllEightBytesAreReplaced) {
  Start({"a"});
  ASSERT_EQ(status::kOk, CreateNumber("a", "n", 0x1122334455667788));
  ASSERT_EQ(status::kOk, SetData("a", "n", 0, "\x01\x02\x03\x04\x05\x06\x07\x08"));
  EXPECT_EQ("0102030405060708", Hex(InValue(1, 44), 8));
  EXPECT_EQ("type 0: 0102030405060708", GetEverywhere("a", "n"));
  ASSERT_EQ(status::kOk, SetData("a", "n", 0, "\x34\x12"));
  EXPECT_EQ("08000040", Hex(InValue(1, 8), 4));
  EXPECT_EQ("3412000000000000", Hex(InValue(1, 44), 8));

  ASSERT_EQ(status::kOk, CreateNumber("a", "m", 0x1122334455667788));
  char bytes[] = "\x01\x02\x03\x04\x05\x06\x07\x08";
  Value value = {0, 8, bytes};
  ASSERT_EQ(status::kOk, rig.file->SetValue(kAdmin, nullptr, "a", "m", &value));
  EXPECT_EQ("0102030444332211", Hex(InValue(2, 44), 8));
  value.size = 2;
  ASSERT_EQ(status::kOk, rig.file->SetValue(kAdmin, nullptr, "a", "m", &value));
  EXPECT_EQ("02000040", Hex(InValue(2, 8), 4));
  EXPECT_EQ("0102000044332211", Hex(InValue(2, 44), 8));
}

// A number that was set without a handle keeps the size it was given; it has no more than 8 bytes.
TEST_F(TernaryKeyTreeValueWritesTest, ANumberThatIsSaidToBeLongIsReadWithZerosBehindIt) {
  Start({"k"});
  ASSERT_EQ(status::kOk, rig.CreateNumber("k", "v", 0x1122334455667788));
  std::string bytes = Pattern(1000);
  Value value = {0, 1000, bytes.data()};
  ASSERT_EQ(status::kOk, rig.file->SetValue(kAdmin, nullptr, "k", "v", &value));
  ASSERT_EQ("e8030040", Hex(InValue(1, 8), 4));
  Reload();
  EXPECT_EQ(Get("k", "v"), "type 0: 01080f1644332211" + std::string(2 * 992, '0'));
  ASSERT_EQ(status::kOk, SetData("k", "v", 0, "\x05"));
  EXPECT_EQ("type 0: 0500000000000000", GetEverywhere("k", "v"));
}

TEST_F(TernaryKeyTreeValueWritesTest, TheDataMayBeTheValuesOwn) {
  Start({"a"});
  ASSERT_EQ(status::kOk, CreateData("a", "d", 1, Pattern(200)));
  const TernaryValue* own = rig.KeyOf(root, "a")->firstValue;
  Value value = {2, 100, own->data + 50};
  ASSERT_EQ(status::kOk, rig.loaded.SetValue(kAdmin, root, "a", "d", &value));
  EXPECT_EQ(Get("a", "d"), "type 2: " + HexOf(Pattern(150).substr(50)));
  value = {0, 8, own->data + 1};
  ASSERT_EQ(status::kOk, rig.loaded.SetValue(kAdmin, root, "a", "d", &value));
  EXPECT_EQ(Get("a", "d"), "type 0: " + HexOf(Pattern(59).substr(51)));
  value = {0, 4, own->data + 2};
  ASSERT_EQ(status::kOk, rig.loaded.SetValue(kAdmin, root, "a", "d", &value));
  EXPECT_EQ(Get("a", "d"), "type 0: " + HexOf(Pattern(57).substr(53)) + "00000000");
  value = {3, 3, own->data + 1};
  ASSERT_EQ(status::kOk, rig.loaded.SetValue(kAdmin, root, "a", "d", &value));
  EXPECT_EQ(GetEverywhere("a", "d"), "type 3: " + HexOf(Pattern(57).substr(54)));
  const TernaryValue* again = rig.KeyOf(root, "a")->firstValue;
  value = {1, 3, again->data};
  ASSERT_EQ(status::kOk, rig.loaded.CreateValue(kAdmin, root, "a", "copy", &value));
  EXPECT_EQ(GetEverywhere("a", "copy"), "type 1: " + HexOf(Pattern(57).substr(54)));
  ExpectSound(rig.path);
}

}  // namespace

}  // namespace tamu::registry
