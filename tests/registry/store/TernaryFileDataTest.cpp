#include <cstdint>
#include <memory>

#include "tests/platform/ChildProcess.h"
#include "tests/registry/store/StoreTesting.h"
#include "tests/support/LengthLook.h"
#include "tests/support/StoreCalls.h"

namespace status = tamu::registry::status;

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
    EXPECT_EQ(status::kOk, store.WriteData(0, Pattern(size, seed).get(), size, &id));
    return id;
  }
  // Reads into a heap buffer of exactly `wanted` bytes.
  void ExpectRead(unsigned int id, unsigned int wanted, const std::string& expected) {
    std::unique_ptr<unsigned char[]> buffer(new unsigned char[wanted]);
    unsigned int size = wanted;
    EXPECT_EQ(status::kOk, store.ReadData(buffer.get(), &size, id));
    ASSERT_EQ(size, expected.size());
    EXPECT_TRUE(std::string(buffer.get(), buffer.get() + size) == expected);
  }
  void ExpectUnreadable(unsigned int id) {
    unsigned char buffer[1024];
    unsigned int size = sizeof buffer;
    EXPECT_EQ(status::kInvalidFile, store.ReadData(buffer, &size, id));
    size = 1;
    EXPECT_EQ(status::kInvalidFile, store.ReadData(buffer, &size, id));
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
    EXPECT_EQ(0x100u, Write(row.size));
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
  EXPECT_EQ(0x100u, Write(100));
  EXPECT_EQ(2u, Entry(3, 1));
  EXPECT_EQ(0u, Entry(3, 2));
  EXPECT_EQ(0x300u, Write(64));
}

TEST_F(TernaryFileDataTest, MoreThan1024BytesAnswer75) {
  const std::string before = Bytes();
  unsigned int id = 77;
  EXPECT_EQ(status::kLimit, store.WriteData(0, Pattern(1025).get(), 1025, &id));
  EXPECT_EQ(0u, id);
  id = 77;
  EXPECT_EQ(status::kLimit, store.WriteData(0, Pattern(1).get(), 0xFFFFFFFF, &id));
  EXPECT_EQ(0u, id);
  EXPECT_TRUE(Bytes() == before);
}

TEST_F(TernaryFileDataTest, NoBytesAnswer22AndTakeNoBlock) {
  const std::string before = Bytes();
  unsigned int id = 77;
  EXPECT_EQ(status::kBadArgument, store.WriteData(0, "x", 0, &id));
  EXPECT_EQ(0u, id);
  id = 77;
  EXPECT_EQ(status::kBadArgument, store.WriteData(0, nullptr, 1, &id));
  EXPECT_EQ(0u, id);
  EXPECT_EQ(status::kBadArgument, store.WriteData(0, "x", 1, nullptr));
  EXPECT_TRUE(Bytes() == before);
  EXPECT_EQ(0x100u, Write(1));
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
    EXPECT_EQ(status::kOk, store.ReadData(&byte, &size, id));
    EXPECT_EQ(0u, size);
    EXPECT_EQ(status::kOk, store.ReadData(nullptr, &size, id));
  }
  EXPECT_EQ(7, byte);
  EXPECT_EQ(status::kBadArgument, store.ReadData(&byte, nullptr, 0x100));
  size = 1;
  EXPECT_EQ(status::kBadArgument, store.ReadData(nullptr, &size, 0x100));
}

TEST_F(TernaryFileDataTest, ReadsAScatteredChainInItsOrder) {
  ASSERT_EQ(0x100u, Write(64, 1));
  ASSERT_EQ(0x200u, Write(192, 2));
  ASSERT_EQ(0x500u, Write(64, 3));
  ASSERT_EQ(0x600u, Write(64, 4));
  ASSERT_EQ(status::kOk, store.DeleteData(0, 0x500));
  ASSERT_EQ(status::kOk, store.DeleteData(0, 0x200));
  ASSERT_EQ(status::kOk, store.DeleteData(0, 0x100));
  // The free list is 1, 2, 3, 4, 5, 7: the fifth block is not followed by its neighbour.
  EXPECT_EQ(0x100u, Write(500, 5));
  EXPECT_EQ(5u, Entry(3, 4));
  EXPECT_EQ(7u, Entry(3, 5));
  EXPECT_EQ(8u, Entry(3, 7));
  EXPECT_EQ(0u, Entry(3, 9));
  ExpectRead(0x100, 500, PatternText(500, 5));
  ExpectRead(0x100, 330, PatternText(330, 5));
  ExpectRead(0x600, 64, PatternText(64, 4));
}

TEST_F(TernaryFileDataTest, ReadsAChainThatRunsBackwards) {
  for (unsigned int i = 1; i <= 4; ++i) ASSERT_EQ(Write(64, i), i << 8);
  for (unsigned int i = 1; i <= 4; ++i) ASSERT_EQ(status::kOk, store.DeleteData(0, i << 8));
  EXPECT_EQ(0x400u, Write(256, 9));
  EXPECT_EQ(Bytes().substr(52528 + 64, 64), PatternText(256, 9).substr(192));
  ExpectRead(0x400, 256, PatternText(256, 9));
}

TEST_F(TernaryFileDataTest, DeletedBlocksLeadTheFreeListInChainOrder) {
  ASSERT_EQ(0x100u, Write(192));
  ASSERT_EQ(0x400u, Write(128));
  EXPECT_EQ(status::kOk, store.DeleteData(0, 0x100));
  EXPECT_EQ(1u, Entry(3, 0));
  EXPECT_EQ(2u, Entry(3, 1));
  EXPECT_EQ(3u, Entry(3, 2));
  EXPECT_EQ(6u, Entry(3, 3));
  EXPECT_EQ(362u, FreeCount(3));
  EXPECT_EQ(2u, store.Descriptor(NodeKind::kData).usedNodes);
}

TEST_F(TernaryFileDataTest, IdZeroIsNoData) {
  ASSERT_EQ(0x100u, Write(64));
  const std::string before = Bytes();
  EXPECT_EQ(status::kOk, store.DeleteData(0, 0));
  EXPECT_TRUE(Bytes() == before);
  EXPECT_EQ(1u, store.Descriptor(NodeKind::kData).usedNodes);
  ExpectUnreadable(0);
}

TEST_F(TernaryFileDataTest, IdsWithoutTableOrBlockAnswer59) {
  ASSERT_EQ(0x100u, Write(64));
  const std::string before = Bytes();
  for (unsigned int id : {0x101u, 0x1C8u, 0x16D00u, 0xEA6000u, 0xFFFFFF00u, 0xC8u}) {
    SCOPED_TRACE(id);
    ExpectUnreadable(id);
    EXPECT_EQ(status::kInvalidFile, store.DeleteData(0, id));
  }
  EXPECT_TRUE(Bytes() == before);
}

TEST_F(TernaryFileDataTest, AChainOfMoreThan16BlocksAnswers59) {
  ASSERT_EQ(0x100u, Write(1024, 1));
  ASSERT_EQ(0x1100u, Write(64, 2));
  Damage(kTables[3] + 32 + 4 * 16, 17);
  ExpectUnreadable(0x100);
  ExpectRead(0x1100, 64, PatternText(64, 2));
  ExpectRead(0x200, 1024, PatternText(1024, 1).substr(64) + PatternText(64, 2));
}

TEST_F(TernaryFileDataTest, AChainThatLeavesItsTableAnswers59) {
  ASSERT_EQ(0x100u, Write(128));
  for (unsigned int next : {365u, 60000u, 0x01000001u, 0xFFFFFFFFu}) {
    SCOPED_TRACE(next);
    Damage(kTables[3] + 32 + 4, next);
    ExpectUnreadable(0x100);
  }
}

TEST_F(TernaryFileDataTest, AChainInACircleAnswers59) {
  ASSERT_EQ(0x100u, Write(128));
  Damage(kTables[3] + 32 + 8, 1);
  ExpectUnreadable(0x100);
  Damage(kTables[3] + 32 + 8, 2);
  ExpectUnreadable(0x100);
  ExpectUnreadable(0x200);
}

// The table is whole, but the file has lost its last blocks meanwhile.
TEST_F(TernaryFileDataTest, BlocksThatAreGoneAnswer5) {
  ASSERT_EQ(0x100u, Write(128));
  std::filesystem::resize_file(path, 52528 + 100);
  WaitForTheNextLook();
  unsigned char buffer[128];
  unsigned int size = sizeof buffer;
  EXPECT_EQ(status::kInputOutput, store.ReadData(buffer, &size, 0x100));
}

// ---- what the store tells of itself

TEST_F(TernaryFileDataTest, TellsItsCountsAndSizes) {
  TakeMany(NodeKind::kKey, 3);
  TakeMany(NodeKind::kValue, 365);
  ASSERT_EQ(status::kOk, ReleaseSlot(store, NodeKind::kKey, 0x200));
  RegistryInfo info;
  ASSERT_EQ(status::kOk, store.GetRegistryInfo(&info));
  EXPECT_EQ(1u, info.infoFormat);
  EXPECT_EQ(2u, info.keyCount);
  EXPECT_EQ(365u, info.valueCount);
  EXPECT_EQ(103920u, info.fileSize);
  EXPECT_EQ(16u, info.segmentSize);
  EXPECT_EQ(32u, info.valueNameSize);
  EXPECT_EQ(1024u, info.maxDataSize);
  EXPECT_EQ(364u, info.keyCapacity);
  EXPECT_EQ(863u, info.valueCapacity);
  EXPECT_EQ(364u, info.dataBlockCapacity);
  EXPECT_EQ(1u, info.infoFlag);
  EXPECT_EQ(0u, info.infoReserved);
}

TEST_F(TernaryFileDataTest, TellingWritesTheAddressOfTheRecordAndNothingElse) {
  std::string expected = Bytes();
  RegistryInfo info;
  ASSERT_EQ(status::kOk, store.GetRegistryInfo(&info));
  SetU32(expected, 84, static_cast<unsigned int>(reinterpret_cast<uintptr_t>(&info)));
  EXPECT_TRUE(Bytes() == expected);
  EXPECT_EQ(status::kBadArgument, store.GetRegistryInfo(nullptr));
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
    EXPECT_EQ(status::kOk, store.StoreData(0, Pattern(size).get(), size, &stored));
    EXPECT_EQ(stored, written);
    EXPECT_TRUE(Bytes() == expected);
  }
}

TEST_F(TernaryFileDataTest, StoringRefusesWhatWritingRefuses) {
  const std::string before = Bytes();
  unsigned int id = 77;
  EXPECT_EQ(status::kBadArgument, store.StoreData(0, "x", 0, &id));
  EXPECT_EQ(0u, id);
  EXPECT_EQ(status::kBadArgument, store.StoreData(0, nullptr, 1, &id));
  EXPECT_EQ(status::kBadArgument, store.StoreData(0, "x", 1, nullptr));
  id = 77;
  EXPECT_EQ(status::kLimit, store.StoreData(0, Pattern(1025).get(), 1025, &id));
  EXPECT_EQ(0u, id);
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
