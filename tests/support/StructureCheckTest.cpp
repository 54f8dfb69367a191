#include <gtest/gtest.h>

#include "registry/Registry.h"
#include "tests/platform/TestFiles.h"
#include "tests/support/StructureCheck.h"

namespace status = tamu::registry::status;

namespace {

using tamu::registry::Registry;
using tamu::registry::Value;

// Places in a new registry file of 75888 bytes.
constexpr unsigned kHeaderAt = 4180;
constexpr unsigned kStringTable = 4220;
constexpr unsigned kKeyTable = 5712;
constexpr unsigned kBlockTable = 8696;
constexpr unsigned kEnd = 75888;

constexpr unsigned Entry(unsigned table, unsigned slot) {
  return table + 32 + 4 * slot;
}
constexpr unsigned StringNode(unsigned slot) {
  return 10188 + 40 * slot;
}
constexpr unsigned KeyNode(unsigned slot) {
  return 24788 + 24 * slot;
}
constexpr unsigned ValueNode(unsigned slot) {
  return 33548 + 52 * slot;
}

std::string Little(unsigned long long number, unsigned width) {
  std::string bytes;
  for (unsigned i = 0; i < width; ++i) bytes += static_cast<char>(number >> (8 * i) & 0xFF);
  return bytes;
}

void Create(Registry& registry, const char* key, const char* name, unsigned type,
            const std::string& data) {
  std::string copy = data;
  Value value = {type, static_cast<unsigned>(copy.size()), copy.data()};
  ASSERT_EQ(status::kOk, registry.CreateValue(0, key, name, &value));
}

// String nodes: 1 root, 2 "ab" + 'c' (key 2), 3 'd' greater than 'c' (key 3), 4 'x' below 2 (key
// 4). Values of "abc": 2 "number", 1 "text" in blocks 1 and 2. Of "abd": 3 "small" in block 3.
class StructureCheckTest : public ::testing::Test {
 protected:
  StructureCheckTest() {
    {
      Registry registry(path_.c_str(), 65535);
      EXPECT_EQ(status::kOk, registry.Initialize());
      EXPECT_EQ(status::kOk, registry.CreateKey(0, "abc", 7));
      EXPECT_EQ(status::kOk, registry.CreateKey(0, "abd"));
      EXPECT_EQ(status::kOk, registry.CreateKey(0, "abc/x"));
      Create(registry, "abc", "text", 1, std::string(100, 't'));
      Create(registry, "abc", "number", 0, Little(42, 8));
      Create(registry, "abd", "small", 5, "0123456789");
    }
    bytes_ = GetFile(path_);
    EXPECT_EQ(kEnd, bytes_.size());
  }

  void Put(unsigned offset, unsigned number, unsigned width = 4) {
    bytes_.replace(offset, width, Little(number, width));
  }

  // Appends a table of two entries, one slot in use, behind the table at `last`. Returns its
  // offset.
  unsigned AppendTable(unsigned last, unsigned number, unsigned recordSize) {
    const unsigned offset = static_cast<unsigned>(bytes_.size());
    bytes_ += Little(0, 4) + Little(offset, 4) + Little(offset + 40, 4) + Little(2, 4) +
              Little(0, 4) + Little(number, 4) + Little(0, 8) + Little(0, 8);
    bytes_.append(2 * recordSize, '\0');
    Put(last, offset);
    Put(kHeaderAt + 32, static_cast<unsigned>(bytes_.size()));
    return offset;
  }

  std::string Findings() {
    PutFile(path_, bytes_);
    return StructureFindings(path_);
  }

  void ExpectFinding(const std::string& finding) {
    EXPECT_NE(("\n" + Findings()).find("\n" + finding), std::string::npos)
        << "expected: " << finding << "\nfound:\n"
        << StructureFindings(path_);
  }

  TempDir folder_;
  std::string path_ = folder_ / "registry";
  std::string bytes_;
};

TEST_F(StructureCheckTest, FindsNothingInASoundFile) {
  EXPECT_EQ("", Findings());
}

TEST_F(StructureCheckTest, FindsNothingInANewFile) {
  const std::string path = folder_ / "new";
  Registry registry(path.c_str(), 65535);
  ASSERT_EQ(status::kOk, registry.Initialize());
  EXPECT_EQ("", StructureFindings(path));
}

TEST_F(StructureCheckTest, FindsNothingInAppendedTables) {
  const unsigned second = AppendTable(kStringTable, 1, 40);
  AppendTable(second, 2, 40);
  EXPECT_EQ("", Findings());
  EXPECT_EQ(3u, CountSlots(path_).strings.tables);
}

TEST_F(StructureCheckTest, CountsSlotsInUseReachedAndFree) {
  const SlotCounts counts = CountSlots(path_);
  EXPECT_EQ(4u, counts.strings.used);
  EXPECT_EQ(4u, counts.strings.reachable);
  EXPECT_EQ(360u, counts.strings.free);
  EXPECT_EQ(4u, counts.keys.used);
  EXPECT_EQ(4u, counts.keys.reachable);
  EXPECT_EQ(360u, counts.keys.free);
  EXPECT_EQ(3u, counts.values.used);
  EXPECT_EQ(3u, counts.values.reachable);
  EXPECT_EQ(361u, counts.values.free);
  EXPECT_EQ(3u, counts.blocks.used);
  EXPECT_EQ(3u, counts.blocks.reachable);
  EXPECT_EQ(361u, counts.blocks.free);
  EXPECT_EQ(1u, counts.blocks.tables);
}

TEST_F(StructureCheckTest, CountsALeakedSlotWithoutAFinding) {
  Put(StringNode(2) + 16, 0);  // "abc" lets go of "abc/x"
  EXPECT_EQ("", Findings());
  const SlotCounts counts = CountSlots(path_);
  EXPECT_EQ(4u, counts.strings.used);
  EXPECT_EQ(3u, counts.strings.reachable);
  EXPECT_EQ(3u, counts.keys.reachable);
}

TEST_F(StructureCheckTest, DecodesEveryKeyAndValue) {
  const std::map<std::string, DecodedKey> keys = DecodeTree(path_);
  ASSERT_EQ(4u, keys.size());
  EXPECT_EQ(0xFFFFu, keys.at("").owner);
  EXPECT_EQ(0x5Fu, keys.at("").permission);
  EXPECT_EQ(2u, keys.at("").flags);
  EXPECT_EQ(0x0Fu, keys.at("abc/x").permission);
  const DecodedKey& key = keys.at("abc");
  EXPECT_EQ(1u, key.flags);
  EXPECT_EQ(7u, key.defaultValue);
  ASSERT_EQ(2u, key.values.size());
  EXPECT_EQ("number", key.values[0].name);
  EXPECT_EQ(0u, key.values[0].type);
  EXPECT_EQ(8u, key.values[0].size);
  EXPECT_EQ(42u, key.values[0].number);
  EXPECT_TRUE(key.values[0].isSet);
  EXPECT_EQ("text", key.values[1].name);
  EXPECT_EQ(std::string(100, 't'), key.values[1].bytes);
  EXPECT_EQ("0123456789", keys.at("abd").values[0].bytes);
}

TEST_F(StructureCheckTest, FindsThatThereIsNoFile) {
  EXPECT_EQ("the file cannot be read\nthe file is shorter than its headers\n",
            StructureFindings(folder_ / "absent"));
}

TEST_F(StructureCheckTest, FindsAFileCutInItsHeaders) {
  bytes_.resize(4219);
  EXPECT_EQ("the file is shorter than its headers\n", Findings());
}

TEST_F(StructureCheckTest, FindsAFileCutInItsAreas) {
  bytes_.resize(kEnd - 1);
  ExpectFinding("header: the file is shorter than it says");
}

TEST_F(StructureCheckTest, FindsATableChainThatIsACircle) {
  Put(kStringTable, kStringTable);
  ExpectFinding("string table 1: wrong number");
}

TEST_F(StructureCheckTest, FindsATwentySecondTable) {
  unsigned last = kKeyTable;
  for (unsigned number = 1; number <= 20; ++number) last = AppendTable(last, number, 24);
  EXPECT_EQ("", Findings());
  AppendTable(last, 21, 24);
  ExpectFinding("key table 21: more than 21 tables");
}

TEST_F(StructureCheckTest, FindsAnAreaThatLiesOverAnother) {
  Put(kStringTable + 8, 24788 - 40 * 365 + 40);
  ExpectFinding("tables or areas overlap at offset 24788");
}

TEST_F(StructureCheckTest, DoesNotFollowTheHeadOfAFullTable) {
  const unsigned second = AppendTable(kStringTable, 1, 40);
  Put(Entry(second, 0), 77);
  EXPECT_EQ("", Findings());
}

TEST_F(StructureCheckTest, DoesNotFollowTheLastFreeSlot) {
  Put(Entry(kStringTable, 364), 999);
  EXPECT_EQ("", Findings());
}

TEST_F(StructureCheckTest, FindsADataChainThatIsACircle) {
  Put(Entry(kBlockTable, 2), 1);
  ExpectFinding("block 0x100: reached twice");
}

TEST_F(StructureCheckTest, FindsBlocksThatTwoValuesShare) {
  Put(ValueNode(3) + 44, 0x100);
  ExpectFinding("block 0x100: reached twice");
}

TEST_F(StructureCheckTest, AllowsAValueWhoseDataCouldNotBeStored) {
  Put(ValueNode(3) + 44, 0);
  Put(ValueNode(3) + 11, 0x25, 1);  // in blocks, not set
  EXPECT_EQ("", Findings());
  EXPECT_EQ("", DecodeTree(path_).at("abd").values[0].bytes);
}

// One damage each: `width` bytes at `offset` become `number`, and the check tells it so.
struct Damage {
  const char* finding;
  unsigned offset;
  unsigned number;
  unsigned width;
};

void PrintTo(const Damage& damage, std::ostream* out) {
  *out << damage.finding;
}

class StructureDamageTest : public StructureCheckTest,
                            public ::testing::WithParamInterface<Damage> {};

TEST_P(StructureDamageTest, IsFound) {
  const Damage& damage = GetParam();
  Put(damage.offset, damage.number, damage.width);
  ExpectFinding(damage.finding);
}

INSTANTIATE_TEST_SUITE_P(
    Header, StructureDamageTest,
    ::testing::Values(Damage{"file header: wrong signature", 0, 0x0FACE0FE, 4},
                      Damage{"file header: wrong marker", 4, 0xDEADBEEE, 4},
                      Damage{"file header: wrong version", 8, 3, 4},
                      Damage{"file header: wrong revision", 12, 2, 4},
                      Damage{"file header: reserved byte 83", 83, 1, 1},
                      Damage{"header: reserved word at 0", kHeaderAt, 1, 4},
                      Damage{"header: wrong offset of itself", kHeaderAt + 4, 4181, 4},
                      Damage{"header: wrong version", kHeaderAt + 8, 2, 4},
                      Damage{"header: the file is shorter than it says", kHeaderAt + 32, kEnd + 1,
                             4},
                      Damage{"header: reserved word at 36", kHeaderAt + 36, 1, 4}));

INSTANTIATE_TEST_SUITE_P(
    Tables, StructureDamageTest,
    ::testing::Values(
        Damage{"string table 0: outside the file", kHeaderAt + 12, 0, 4},
        Damage{"key table 0: outside the file", kHeaderAt + 16, 0xFFFFFFF0, 4},
        Damage{"value table 1: outside the file", 7204, kEnd, 4},
        Damage{"string table 0: wrong offset of itself", kStringTable + 4, 4224, 4},
        Damage{"string table 0: wrong number", kStringTable + 20, 1, 1},
        Damage{"string table 0: wrong count of entries", kStringTable + 12, 0, 4},
        Damage{"string table 0: wrong count of entries", kStringTable + 12, 0x1000000, 4},
        Damage{"string table 0: more free slots than there are", kStringTable + 28, 365, 4},
        Damage{"string table 0: ends beyond the file", kStringTable + 12, 100000, 4},
        Damage{"block table 0: its area is outside the file", kBlockTable + 8, 52592, 4},
        Damage{"string table 0: its area is outside the file", kStringTable + 8, 4, 4},
        Damage{"string table 0: its area is outside the file", kStringTable + 8, 0xFFFFFFFF, 4},
        Damage{"string table 0: a reserved word", kStringTable + 16, 1, 4},
        Damage{"string table 0: a reserved word", kStringTable + 24, 1, 4},
        Damage{"string table 0: a reserved byte", kStringTable + 21, 1, 1},
        Damage{"tables or areas overlap", kStringTable + 12, 366, 4}));

INSTANTIATE_TEST_SUITE_P(
    FreeLists, StructureDamageTest,
    ::testing::Values(
        Damage{"string table 0: the free list leaves the table after 0 of 360",
               Entry(kStringTable, 0), 0, 4},
        Damage{"string table 0: the free list leaves the table after 6 of 360",
               Entry(kStringTable, 10), 365, 4},
        Damage{"string table 0: the free list leaves the table after 360 of 361", kStringTable + 28,
               361, 4},
        Damage{"string table 0: used slot 364 has the entry 365", kStringTable + 28, 359, 4},
        Damage{"string table 0: the free list is a circle", Entry(kStringTable, 10), 5, 4},
        Damage{"string table 0: the free list is a circle", Entry(kStringTable, 10), 10, 4},
        Damage{"string table 0: used slot 2 has the entry 3", Entry(kStringTable, 2), 3, 4},
        Damage{"block table 0: used slot 3 has the entry 365", Entry(kBlockTable, 3), 365, 4},
        Damage{"string 0x400: reached but free", Entry(kStringTable, 363), 4, 4}));

INSTANTIATE_TEST_SUITE_P(
    Strings, StructureDamageTest,
    ::testing::Values(Damage{"string 0x200: segment of 17 characters", StringNode(2) + 1, 17, 1},
                      Damage{"string 0x200: a '/' in a name", StringNode(2) + 24, '/', 1},
                      Damage{"string 0x200: a '/' in a name", StringNode(2) + 3, '/', 1},
                      Damage{"string 0x200: a zero byte in a name", StringNode(2) + 25, 0, 1},
                      Damage{"string 0x200: a zero byte in a name", StringNode(2) + 3, 0, 1},
                      Damage{"string 0x300: out of order", StringNode(3) + 3, 'c', 1},
                      Damage{"string 0x300: out of order", StringNode(3) + 3, 0x80, 1},
                      Damage{"string 0x200: reserved byte", StringNode(2), 1, 1},
                      Damage{"string 0x200: unknown flags", StringNode(2) + 2, 0x12, 1},
                      Damage{"string 0x200: flag and key disagree", StringNode(2) + 2, 0, 1},
                      Damage{"string 0x200: flag and key disagree", StringNode(2) + 20, 0, 4},
                      Damage{"string 0x200: reached twice", StringNode(3) + 4, 0x200, 4},
                      Damage{"string 0x300: reached twice", StringNode(3) + 16, 0x300, 4},
                      Damage{"string 0x500: reached but free", StringNode(3) + 12, 0x500, 4},
                      Damage{"string 0x16d00: there is no such slot", StringNode(3) + 12, 0x16D00,
                             4},
                      Damage{"string 0x301: there is no such slot", StringNode(2) + 8, 0x301, 4},
                      Damage{"string 0x1: there is no such slot", StringNode(2) + 8, 1, 4},
                      Damage{"string 0x900: reached but free", kHeaderAt + 28, 0x900, 4},
                      Damage{"root string 0x100: has characters", StringNode(1) + 1, 1, 1},
                      Damage{"root string 0x100: has characters", StringNode(1) + 3, 'a', 1},
                      Damage{"root string 0x100: has neighbours", StringNode(1) + 8, 0x200, 4},
                      Damage{"root string 0x100: flag and key disagree", StringNode(1) + 2, 0, 1}));

INSTANTIATE_TEST_SUITE_P(
    Keys, StructureDamageTest,
    ::testing::Values(Damage{"key 0x200: reached twice", StringNode(3) + 20, 0x200, 4},
                      Damage{"key 0x500: reached but free", StringNode(3) + 20, 0x500, 4},
                      Damage{"key 0xff00: reached but free", StringNode(3) + 20, 0xFF00, 4},
                      Damage{"key 0x10003: there is no such slot", StringNode(3) + 20, 0x10003, 4},
                      Damage{"key 0x200: counts 1 values, has 2", KeyNode(2) + 4, 1, 2},
                      Damage{"key 0x200: wrong root flag", KeyNode(2) + 7, 3, 1},
                      Damage{"key 0x100: wrong root flag", KeyNode(1) + 7, 0, 1},
                      Damage{"key 0x200: reserved word", KeyNode(2) + 12, 1, 4}));

INSTANTIATE_TEST_SUITE_P(
    Values, StructureDamageTest,
    ::testing::Values(Damage{"value 0x200: reached twice", ValueNode(1), 0x200, 4},
                      Damage{"value 0x200: reached twice", KeyNode(3), 0x200, 4},
                      Damage{"value 0x400: reached but free", ValueNode(1), 0x400, 4},
                      Damage{"value 0x16d00: there is no such slot", ValueNode(1), 0x16D00, 4},
                      Damage{"value 0x100: the name has no end", ValueNode(1) + 43, 'x', 1},
                      Damage{"value 0x100: unknown type", ValueNode(1) + 11, 0x66, 1},
                      Damage{"value 0x100: unknown type", ValueNode(1) + 11, 0xE1, 1},
                      Damage{"value 0x100: reserved bytes", ValueNode(1) + 4, 1, 1},
                      Damage{"value 0x100: reserved bytes", ValueNode(1) + 10, 1, 1},
                      Damage{"value 0x100: more than 1024 bytes", ValueNode(1) + 8, 1025, 2},
                      Damage{"value 0x100: type and place disagree", ValueNode(1) + 11, 0x41, 1},
                      Damage{"value 0x200: type and place disagree", ValueNode(2) + 11, 0x60, 1},
                      Damage{"value 0x100: 64 bytes in 2 blocks", ValueNode(1) + 8, 64, 2},
                      Damage{"value 0x100: 129 bytes in 2 blocks", ValueNode(1) + 8, 129, 2},
                      Damage{"value 0x100: 100 bytes in 1 blocks", Entry(kBlockTable, 1), 0, 4},
                      Damage{"value 0x100: 100 bytes in 0 blocks", ValueNode(1) + 44, 0, 4},
                      Damage{"block 0x400: reached but free", Entry(kBlockTable, 2), 4, 4},
                      Damage{"block 0x16d00: there is no such slot", ValueNode(1) + 44, 0x16D00,
                             4}));

}  // namespace
