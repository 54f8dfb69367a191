#include <cstdint>
#include <memory>

#include "tests/platform/ChildProcess.h"
#include "tests/registry/store/StoreTesting.h"
#include "tests/support/LengthLook.h"

namespace tamu::registry::storetests {
namespace {

class TernaryFileDataTest : public StoreTest {
 protected:
  // Bytes that differ from block to block, in a heap buffer of exactly that size.
  static std::unique_ptr<unsigned char[]> Pattern(unsigned int size, unsigned int seed = 0) {
    std::unique_ptr<unsigned char[]> bytes(new unsigned char[size]);
    for (unsigned int i = 0; i < size; ++i) bytes[i] = PatternByte(i, seed);
    return bytes;
  }
  static unsigned char PatternByte(unsigned int i, unsigned int seed) {
    return static_cast<unsigned char>(1 + (i * 7 + i / 64 + seed) % 255);
  }
  static std::string PatternText(unsigned int size, unsigned int seed = 0) {
    std::string text;
    for (unsigned int i = 0; i < size; ++i) text += static_cast<char>(PatternByte(i, seed));
    return text;
  }

  unsigned int Write(unsigned int size, unsigned int seed = 0) {
    unsigned int id = 0;
    EXPECT_EQ(store.WriteData(0, Pattern(size, seed).get(), size, &id), 0u);
    return id;
  }
  // Reads into a heap buffer of exactly `wanted` bytes.
  void ExpectRead(unsigned int id, unsigned int wanted, const std::string& expected) {
    std::unique_ptr<unsigned char[]> buffer(new unsigned char[wanted]);
    unsigned int size = wanted;
    EXPECT_EQ(store.ReadData(buffer.get(), &size, id), 0u);
    ASSERT_EQ(size, expected.size());
    EXPECT_TRUE(std::string(buffer.get(), buffer.get() + size) == expected);
  }
  void ExpectUnreadable(unsigned int id) {
    unsigned char buffer[1024];
    unsigned int size = sizeof buffer;
    EXPECT_EQ(store.ReadData(buffer, &size, id), 59u);
    size = 1;
    EXPECT_EQ(store.ReadData(buffer, &size, id), 59u);
  }
};

TEST_F(TernaryFileDataTest, StoresEverySizeInWholeBlocksAndZeroesTheRest) {
  const struct {
    unsigned int size;
    unsigned int blocks;
  } rows[] = {{1, 1}, {63, 1}, {64, 1}, {65, 2}, {100, 2}, {128, 2}, {1023, 16}, {1024, 16}};
  const std::string fresh = Bytes();
  for (const auto& row : rows) {
    SCOPED_TRACE(row.size);
    Reopen(fresh.substr(0, 52528) + std::string(365 * 64, '\xEE'));
    EXPECT_EQ(Write(row.size), 0x100u);
    EXPECT_EQ(FreeCount(3), 364u - row.blocks);
    EXPECT_EQ(Entry(3, 0), row.blocks + 1);
    for (unsigned int i = 1; i <= row.blocks; ++i) {
      EXPECT_EQ(Entry(3, i), i < row.blocks ? i + 1 : 0u) << "block " << i;
    }
    std::string expected = PatternText(row.size);
    expected.resize(row.blocks * 64, '\0');
    expected.insert(0, 64, '\xEE');
    expected.resize(365 * 64, '\xEE');
    EXPECT_TRUE(Bytes().substr(52528) == expected);
    EXPECT_EQ(store.Descriptor(NodeKind::kData).usedNodes, row.blocks);
    ExpectRead(0x100, row.size, PatternText(row.size));
  }
}

TEST_F(TernaryFileDataTest, HundredBytesTakeTheFirstTwoBlocks) {
  EXPECT_EQ(Write(100), 0x100u);
  EXPECT_EQ(Entry(3, 1), 2u);
  EXPECT_EQ(Entry(3, 2), 0u);
  EXPECT_EQ(Write(64), 0x300u);
}

TEST_F(TernaryFileDataTest, MoreThan1024BytesAnswer75) {
  const std::string before = Bytes();
  unsigned int id = 77;
  EXPECT_EQ(store.WriteData(0, Pattern(1025).get(), 1025, &id), 75u);
  EXPECT_EQ(id, 0u);
  id = 77;
  EXPECT_EQ(store.WriteData(0, Pattern(1).get(), 0xFFFFFFFF, &id), 75u);
  EXPECT_EQ(id, 0u);
  EXPECT_TRUE(Bytes() == before);
}

TEST_F(TernaryFileDataTest, NoBytesAnswer22AndTakeNoBlock) {
  const std::string before = Bytes();
  unsigned int id = 77;
  EXPECT_EQ(store.WriteData(0, "x", 0, &id), 22u);
  EXPECT_EQ(id, 0u);
  id = 77;
  EXPECT_EQ(store.WriteData(0, nullptr, 1, &id), 22u);
  EXPECT_EQ(id, 0u);
  EXPECT_EQ(store.WriteData(0, "x", 1, nullptr), 22u);
  EXPECT_TRUE(Bytes() == before);
  EXPECT_EQ(Write(1), 0x100u);
}

TEST_F(TernaryFileDataTest, ReadsNoMoreThanAskedFor) {
  const unsigned int id = Write(200);
  for (unsigned int wanted : {1u, 63u, 64u, 65u, 128u, 199u}) {
    SCOPED_TRACE(wanted);
    ExpectRead(id, wanted, PatternText(wanted));
  }
}

TEST_F(TernaryFileDataTest, ReadsNoMoreThanTheBlocksHold) {
  const unsigned int id = Write(65);
  ExpectRead(id, 1024, PatternText(65) + Zeros(63));
}

TEST_F(TernaryFileDataTest, ReadingNothingSucceedsForAnyId) {
  unsigned int size = 0;
  unsigned char byte = 7;
  for (unsigned int id : {0u, 0x100u, 0xFFFFFFFFu}) {
    EXPECT_EQ(store.ReadData(&byte, &size, id), 0u);
    EXPECT_EQ(size, 0u);
    EXPECT_EQ(store.ReadData(nullptr, &size, id), 0u);
  }
  EXPECT_EQ(byte, 7);
  EXPECT_EQ(store.ReadData(&byte, nullptr, 0x100), 22u);
  size = 1;
  EXPECT_EQ(store.ReadData(nullptr, &size, 0x100), 22u);
}

TEST_F(TernaryFileDataTest, ReadsAScatteredChainInItsOrder) {
  ASSERT_EQ(Write(64, 1), 0x100u);
  ASSERT_EQ(Write(192, 2), 0x200u);
  ASSERT_EQ(Write(64, 3), 0x500u);
  ASSERT_EQ(Write(64, 4), 0x600u);
  ASSERT_EQ(store.DeleteData(0, 0x500), 0u);
  ASSERT_EQ(store.DeleteData(0, 0x200), 0u);
  ASSERT_EQ(store.DeleteData(0, 0x100), 0u);
  // The free list is 1, 2, 3, 4, 5, 7: the fifth block is not followed by its neighbour.
  EXPECT_EQ(Write(500, 5), 0x100u);
  EXPECT_EQ(Entry(3, 4), 5u);
  EXPECT_EQ(Entry(3, 5), 7u);
  EXPECT_EQ(Entry(3, 7), 8u);
  EXPECT_EQ(Entry(3, 9), 0u);
  ExpectRead(0x100, 500, PatternText(500, 5));
  ExpectRead(0x100, 330, PatternText(330, 5));
  ExpectRead(0x600, 64, PatternText(64, 4));
}

TEST_F(TernaryFileDataTest, ReadsAChainThatRunsBackwards) {
  for (unsigned int i = 1; i <= 4; ++i) ASSERT_EQ(Write(64, i), i << 8);
  for (unsigned int i = 1; i <= 4; ++i) ASSERT_EQ(store.DeleteData(0, i << 8), 0u);
  EXPECT_EQ(Write(256, 9), 0x400u);
  EXPECT_EQ(Bytes().substr(52528 + 64, 64), PatternText(256, 9).substr(192));
  ExpectRead(0x400, 256, PatternText(256, 9));
}

TEST_F(TernaryFileDataTest, DeletedBlocksLeadTheFreeListInChainOrder) {
  ASSERT_EQ(Write(192), 0x100u);
  ASSERT_EQ(Write(128), 0x400u);
  EXPECT_EQ(store.DeleteData(0, 0x100), 0u);
  EXPECT_EQ(Entry(3, 0), 1u);
  EXPECT_EQ(Entry(3, 1), 2u);
  EXPECT_EQ(Entry(3, 2), 3u);
  EXPECT_EQ(Entry(3, 3), 6u);
  EXPECT_EQ(FreeCount(3), 362u);
  EXPECT_EQ(store.Descriptor(NodeKind::kData).usedNodes, 2u);
}

TEST_F(TernaryFileDataTest, IdZeroIsNoData) {
  ASSERT_EQ(Write(64), 0x100u);
  const std::string before = Bytes();
  EXPECT_EQ(store.DeleteData(0, 0), 0u);
  EXPECT_TRUE(Bytes() == before);
  EXPECT_EQ(store.Descriptor(NodeKind::kData).usedNodes, 1u);
  ExpectUnreadable(0);
}

TEST_F(TernaryFileDataTest, IdsWithoutTableOrBlockAnswer59) {
  ASSERT_EQ(Write(64), 0x100u);
  const std::string before = Bytes();
  for (unsigned int id : {0x101u, 0x1C8u, 0x16D00u, 0xEA6000u, 0xFFFFFF00u, 0xC8u}) {
    SCOPED_TRACE(id);
    ExpectUnreadable(id);
    EXPECT_EQ(store.DeleteData(0, id), 59u);
  }
  EXPECT_TRUE(Bytes() == before);
}

TEST_F(TernaryFileDataTest, AChainOfMoreThan16BlocksAnswers59) {
  ASSERT_EQ(Write(1024, 1), 0x100u);
  ASSERT_EQ(Write(64, 2), 0x1100u);
  Damage(kTables[3] + 32 + 4 * 16, 17);
  ExpectUnreadable(0x100);
  ExpectRead(0x1100, 64, PatternText(64, 2));
  ExpectRead(0x200, 1024, PatternText(1024, 1).substr(64) + PatternText(64, 2));
}

TEST_F(TernaryFileDataTest, AChainThatLeavesItsTableAnswers59) {
  ASSERT_EQ(Write(128), 0x100u);
  for (unsigned int next : {365u, 60000u, 0x01000001u, 0xFFFFFFFFu}) {
    SCOPED_TRACE(next);
    Damage(kTables[3] + 32 + 4, next);
    ExpectUnreadable(0x100);
  }
}

TEST_F(TernaryFileDataTest, AChainInACircleAnswers59) {
  ASSERT_EQ(Write(128), 0x100u);
  Damage(kTables[3] + 32 + 8, 1);
  ExpectUnreadable(0x100);
  Damage(kTables[3] + 32 + 8, 2);
  ExpectUnreadable(0x100);
  ExpectUnreadable(0x200);
}

// The table is whole, but the file has lost its last blocks meanwhile.
TEST_F(TernaryFileDataTest, BlocksThatAreGoneAnswer5) {
  ASSERT_EQ(Write(128), 0x100u);
  std::filesystem::resize_file(path, 52528 + 100);
  WaitForTheNextLook();
  unsigned char buffer[128];
  unsigned int size = sizeof buffer;
  EXPECT_EQ(store.ReadData(buffer, &size, 0x100), 5u);
}

// ---- what the store tells of itself

TEST_F(TernaryFileDataTest, TellsItsCountsAndSizes) {
  TakeMany(NodeKind::kKey, 3);
  TakeMany(NodeKind::kValue, 365);
  ASSERT_EQ(store.ReleaseSlot(0, NodeKind::kKey, 0x200), 0u);
  RegistryInfo info;
  ASSERT_EQ(store.GetRegistryInfo(&info), 0u);
  EXPECT_EQ(info.infoFormat, 1u);
  EXPECT_EQ(info.keyCount, 2u);
  EXPECT_EQ(info.valueCount, 365u);
  EXPECT_EQ(info.fileSize, 103920u);
  EXPECT_EQ(info.segmentSize, 16u);
  EXPECT_EQ(info.valueNameSize, 32u);
  EXPECT_EQ(info.maxDataSize, 1024u);
  EXPECT_EQ(info.keyCapacity, 364u);
  EXPECT_EQ(info.valueCapacity, 863u);
  EXPECT_EQ(info.dataBlockCapacity, 364u);
  EXPECT_EQ(info.infoFlag, 1u);
  EXPECT_EQ(info.infoReserved, 0u);
}

TEST_F(TernaryFileDataTest, TellingWritesTheAddressOfTheRecordAndNothingElse) {
  std::string expected = Bytes();
  RegistryInfo info;
  ASSERT_EQ(store.GetRegistryInfo(&info), 0u);
  SetU32(expected, 84, static_cast<unsigned int>(reinterpret_cast<uintptr_t>(&info)));
  EXPECT_TRUE(Bytes() == expected);
  EXPECT_EQ(store.GetRegistryInfo(nullptr), 22u);
  EXPECT_TRUE(Bytes() == expected);
}

TEST_F(TernaryFileDataTest, StoredDataIsTheSameAsWrittenData) {
  const std::string fresh = Bytes();
  for (unsigned int size : {1u, 64u, 100u, 1024u}) {
    SCOPED_TRACE(size);
    Reopen(fresh);
    const unsigned int written = Write(size);
    const std::string expected = Bytes();
    Reopen(fresh);
    unsigned int stored = 0;
    EXPECT_EQ(store.StoreData(0, Pattern(size).get(), size, &stored), 0u);
    EXPECT_EQ(stored, written);
    EXPECT_TRUE(Bytes() == expected);
  }
}

TEST_F(TernaryFileDataTest, StoringRefusesWhatWritingRefuses) {
  const std::string before = Bytes();
  unsigned int id = 77;
  EXPECT_EQ(store.StoreData(0, "x", 0, &id), 22u);
  EXPECT_EQ(id, 0u);
  EXPECT_EQ(store.StoreData(0, nullptr, 1, &id), 22u);
  EXPECT_EQ(store.StoreData(0, "x", 1, nullptr), 22u);
  id = 77;
  EXPECT_EQ(store.StoreData(0, Pattern(1025).get(), 1025, &id), 75u);
  EXPECT_EQ(id, 0u);
  EXPECT_EQ(Bytes(), before);
}

// No byte can be written behind the second block: the tables can, the third block cannot.
TEST_F(TernaryFileDataTest, StoringGivesTheChainBackWhenABlockCannotBeWritten) {
  const std::string fresh = Bytes();
  EXPECT_TRUE(InChild([&] {
    LimitFileSize(kAreas[3] + 3 * 64);
    unsigned int id = 77;
    if (store.StoreData(0, Pattern(192).get(), 192, &id) != 5 || id != 0) return false;
    if (FreeCount(3) != 364 || !FreeListFindings(Bytes()).empty()) return false;
    if (store.Descriptor(NodeKind::kData).usedNodes != 0) return false;
    return store.StoreData(0, Pattern(128).get(), 128, &id) == 0 && id == 0x100;
  }));
  Reopen(fresh);
  EXPECT_TRUE(InChild([&] {
    LimitFileSize(kAreas[3] + 3 * 64);
    unsigned int id = 0;  // which writing does not tell
    return store.WriteData(0, Pattern(192).get(), 192, &id) == 0 && id == 0x100;
  }));
}

}  // namespace
}  // namespace tamu::registry::storetests
