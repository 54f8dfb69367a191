#include "tests/platform/ChildProcess.h"
#include "tests/registry/store/StoreTesting.h"
#include "tests/support/StoreCalls.h"

namespace status = tamu::registry::status;

namespace tamu::registry::storetests {
namespace {

class TernaryFileGrowthTest : public StoreTest {
 protected:
  // What an expansion of a kind by 500 slots makes of the file.
  static std::string Grown(std::string bytes, unsigned int kind, unsigned int slots = 500) {
    const unsigned int table = static_cast<unsigned int>(bytes.size());
    SetU32(bytes, kTables[kind], table);
    AddU32(bytes, 0);
    AddU32(bytes, table);
    AddU32(bytes, table + 32 + 4 * slots);
    AddU32(bytes, slots);
    AddU32(bytes, 0);
    AddU32(bytes, 1);
    AddU32(bytes, 0);
    AddU32(bytes, slots - 1);
    for (unsigned int i = 1; i <= slots; ++i) AddU32(bytes, i);
    bytes += Zeros(slots * kRecordSizes[kind]);
    SetU32(bytes, 4180 + 32, static_cast<unsigned int>(bytes.size()));
    return bytes;
  }
};

TEST_F(TernaryFileGrowthTest, The365thNodeAppendsATable) {
  const unsigned int sizes[3] = {97920, 89920, 103920};
  const std::string fresh = Bytes();
  for (unsigned int kind = 0; kind < 3; ++kind) {
    SCOPED_TRACE(kind);
    Reopen(fresh);
    TakeMany(kKinds[kind], 364);
    const std::string full = Bytes();
    ASSERT_EQ(75888u, full.size());
    EXPECT_EQ(0x101u, Take(kKinds[kind]));
    std::string expected = Grown(full, kind);
    ASSERT_EQ(expected.size(), sizes[kind]);
    SetU32(expected, 75888 + 28, 498);
    SetU32(expected, 75888 + 32, 2);
    SetU32(expected, 75888 + 36, 0);
    EXPECT_TRUE(Bytes() == expected);
    const TernaryNodeDescriptor& descriptor = store.Descriptor(kKinds[kind]);
    EXPECT_EQ(2u, descriptor.tableCount);
    EXPECT_EQ(365u, descriptor.usedNodes);
    EXPECT_EQ(descriptor.totalNodes, 364u + 499);
    EXPECT_EQ(1u, descriptor.lastTable->tableNumber());
    EXPECT_EQ(store.Header().fileSize(), sizes[kind]);
    EXPECT_EQ(0x201u, Take(kKinds[kind]));
  }
}

// A power cut may leave the length of a growth that has never been a part of the registry.
TEST_F(TernaryFileGrowthTest, AnUnusedEndOfTheFileIsWrittenOver) {
  TakeMany(kKinds[0], 364);
  const std::string full = Bytes();
  for (const std::string& end : {Zeros(30000), std::string(30000, 'x')}) {
    store.SetOptions({Durability::kPower, nullptr});
    Reopen(full + end);
    EXPECT_EQ(store.EffectiveDurability(), Durability::kPower);
    EXPECT_EQ(0x101u, Take(kKinds[0]));
    EXPECT_EQ(0x201u, Take(kKinds[0]));
    std::string expected = Grown(full, 0);
    SetU32(expected, 75888 + 28, 497);
    SetU32(expected, 75888 + 32, 3);
    SetU32(expected, 75888 + 36, 0);
    SetU32(expected, 75888 + 40, 0);
    EXPECT_TRUE(Bytes().substr(0, expected.size()) == expected);
  }
}

TEST_F(TernaryFileGrowthTest, DataGrowsWhenTheNewestTableHasTooFewBlocks) {
  const std::string kilobyte(1024, 'k');
  unsigned int id = 0;
  for (unsigned int i = 0; i < 22; ++i)
    ASSERT_EQ(status::kOk, store.WriteData(0, kilobyte.data(), 1024, &id));
  ASSERT_EQ(12u, FreeCount(3));
  EXPECT_EQ(status::kOk, store.WriteData(0, kilobyte.data(), 1024, &id));
  EXPECT_EQ(0x101u, id);
  EXPECT_EQ(109920u, Bytes().size());
  EXPECT_EQ(12u, FreeCount(3));  // these stay free
  EXPECT_EQ(U32(75888 + 28), 499u - 16);
  EXPECT_EQ(status::kOk, store.WriteData(0, "x", 1, &id));
  EXPECT_EQ(0x1101u, id);
}

TEST_F(TernaryFileGrowthTest, FreeSlotsOfOlderTablesStayFree) {
  TakeMany(NodeKind::kKey, 365);
  EXPECT_EQ(status::kOk, ReleaseSlot(store, NodeKind::kKey, 0x500));
  EXPECT_EQ(1u, FreeCount(1));
  EXPECT_EQ(5u, Entry(1, 0));
  EXPECT_EQ(0x201u, Take(NodeKind::kKey));
  EXPECT_EQ(1u, FreeCount(1));
}

TEST_F(TernaryFileGrowthTest, A22ndTableIsRefusedAndNothingIsChanged) {
  TernaryNodeDescriptor& strings = store.Descriptor(NodeKind::kString);
  for (unsigned int i = 1; i < 21; ++i) ASSERT_EQ(status::kOk, store.ExpandFile(&strings, 40, 500));
  EXPECT_EQ(Bytes().size(), 75888u + 20 * 22032);
  EXPECT_EQ(strings.totalNodes, 364u + 20 * 499);
  TakeMany(NodeKind::kString, 499);
  const std::string before = Bytes();
  unsigned int id = 0;
  EXPECT_EQ(status::kLimit, Acquire(NodeKind::kString, &id));
  EXPECT_EQ(status::kLimit, store.ExpandFile(&strings, 40, 500));
  EXPECT_TRUE(Bytes() == before);
  // The store goes on.
  EXPECT_EQ(status::kOk, ReleaseSlot(store, NodeKind::kString, 0x1F314));
  EXPECT_EQ(0x1F314u, Take(NodeKind::kString));
  EXPECT_EQ(0x100u, Take(NodeKind::kKey));
}

TEST_F(TernaryFileGrowthTest, DataIsRefusedAtTheLastTableToo) {
  TernaryNodeDescriptor& data = store.Descriptor(NodeKind::kData);
  for (unsigned int i = 1; i < 21; ++i) ASSERT_EQ(status::kOk, store.ExpandFile(&data, 64, 2));
  const std::string before = Bytes();
  unsigned int id = 77;
  EXPECT_EQ(status::kLimit, store.WriteData(0, std::string(65, 'x').data(), 65, &id));
  EXPECT_EQ(0u, id);
  EXPECT_TRUE(Bytes() == before);
  EXPECT_EQ(status::kOk, store.WriteData(0, "x", 1, &id));
  EXPECT_EQ(0x114u, id);
}

TEST_F(TernaryFileGrowthTest, AnExpansionCanHaveAnyNumberOfSlots) {
  const std::string before = Bytes();
  EXPECT_EQ(status::kOk, store.ExpandFile(&store.Descriptor(NodeKind::kValue), 52, 700));
  EXPECT_TRUE(Bytes() == Grown(before, 2, 700));
}

TEST_F(TernaryFileGrowthTest, ABeyondReasonExpansionAnswers28AndClosesTheFile) {
  const std::string before = Bytes();
  EXPECT_EQ(status::kNoSpace, store.ExpandFile(&store.Descriptor(NodeKind::kData), 64, 0x7FFFFFFF));
  EXPECT_TRUE(Bytes() == before);
  unsigned int id = 0;
  EXPECT_EQ(status::kInputOutput, Acquire(NodeKind::kKey, &id));
  EXPECT_EQ(status::kOk, store.Finalize());
  EXPECT_EQ(status::kOk, store.Initialize(path.c_str()));
  EXPECT_EQ(0x100u, Take(NodeKind::kKey));
}

TEST_F(TernaryFileGrowthTest, NullAndNothingAnswer22) {
  const std::string before = Bytes();
  EXPECT_EQ(status::kBadArgument, store.ExpandFile(nullptr, 40, 500));
  EXPECT_EQ(status::kBadArgument, store.ExpandFile(&store.Descriptor(NodeKind::kKey), 24, 0));
  EXPECT_TRUE(Bytes() == before);
}

// A disk that is full somewhere inside the new table: the file is as it was, closed, and complete
// when it is opened again.
TEST_F(TernaryFileGrowthTest, AGrowthThatFailsAnywhereLeavesTheFileAsItWas) {
  TakeMany(NodeKind::kString, 364);
  for (unsigned int i = 1; i <= 364; ++i) {
    TernaryStringNode node;
    node.setKeyNode(i);
    ASSERT_EQ(status::kOk, store.WriteNode(0, i << 8, &node, false));
  }
  store.Finalize();
  const std::string full = Bytes();
  for (unsigned int limit = 75888; limit < 97920; limit += 512) {
    SCOPED_TRACE(limit);
    EXPECT_TRUE(InChild([&] {
      LimitFileSize(limit);
      TernaryFile limited;
      unsigned int id = 0;
      TernaryStringNode node;
      return limited.Initialize(path.c_str()) == 0 &&
             AcquireSlot(limited, NodeKind::kString, &id) == 5 && id == 0 &&
             limited.Descriptor(NodeKind::kString).tableCount == 1 &&
             limited.Header().fileSize() == 75888 &&
             AcquireSlot(limited, NodeKind::kKey, &id) == 5 &&
             limited.ReadNodeInBuffer(0x100, &node) == 5;
    }));
    ASSERT_TRUE(Bytes() == full);
  }
  EXPECT_TRUE(InChild([&] {
    LimitFileSize(97920);
    TernaryFile enough;
    unsigned int id = 0;
    return enough.Initialize(path.c_str()) == 0 &&
           AcquireSlot(enough, NodeKind::kString, &id) == 0 && id == 0x101;
  }));
  ASSERT_EQ(status::kOk, store.Initialize(path.c_str()));
  EXPECT_EQ(97920u, Bytes().size());
  for (unsigned int i = 1; i <= 364; ++i) {
    TernaryStringNode node;
    ASSERT_EQ(status::kOk, store.ReadNodeInBuffer(i << 8, &node));
    ASSERT_EQ(node.keyNode(), i);
  }
}

TEST_F(TernaryFileGrowthTest, AFailedGrowthAfterAGoodOneKeepsTheGoodOne) {
  TakeMany(NodeKind::kString, 365);
  TakeMany(NodeKind::kKey, 364);
  store.Finalize();
  const std::string before = Bytes();
  ASSERT_EQ(97920u, before.size());
  EXPECT_TRUE(InChild([&] {
    LimitFileSize(97920 + 22032);  // room for the strings' second expansion alone
    TernaryFile limited;
    unsigned int id = 0;
    if (limited.Initialize(path.c_str()) != 0) return false;
    for (unsigned int i = 0; i < 499; ++i) {
      if (AcquireSlot(limited, NodeKind::kString, &id) != 0) return false;
    }
    return id == 0x102 && AcquireSlot(limited, NodeKind::kKey, &id) == 5;
  }));
  EXPECT_EQ(Bytes().size(), 97920u + 22032);
  ASSERT_EQ(status::kOk, store.Initialize(path.c_str()));
  EXPECT_EQ(3u, store.Descriptor(NodeKind::kString).tableCount);
  EXPECT_EQ(864u, store.Descriptor(NodeKind::kString).usedNodes);
  EXPECT_EQ("", FreeListFindings(Bytes()));
}

// Bytes that a power cut left behind the length in the header are no part of the file.
TEST_F(TernaryFileGrowthTest, WritesOverWhatAnInterruptedGrowthHasLeft) {
  TakeMany(NodeKind::kValue, 364);
  const std::string full = Bytes();
  Reopen(full + std::string(5000, '\xAA'));
  EXPECT_EQ(0x101u, Take(NodeKind::kValue));
  std::string expected = Grown(full, 2);
  SetU32(expected, 75888 + 28, 498);
  SetU32(expected, 75888 + 32, 2);
  SetU32(expected, 75888 + 36, 0);
  EXPECT_TRUE(Bytes() == expected);
}

// The records of changes tell of them, too.
TEST_F(TernaryFileGrowthTest, AFailedGrowthLeavesTheFileAsLongAsItWas) {
  TakeMany(NodeKind::kValue, 364);
  Reopen(Bytes() + Zeros(60000));
  const size_t length = Bytes().size();
  EXPECT_EQ(0x101u, Take(NodeKind::kValue));
  EXPECT_EQ(status::kNoSpace, store.ExpandFile(&store.Descriptor(NodeKind::kData), 64, 0x7FFFFFFF));
  EXPECT_EQ(length, Bytes().size());
}

// A table that this store cannot follow may lie there: it is not written over by another kind.
TEST_F(TernaryFileGrowthTest, DoesNotGrowOverTheRestOfADamagedChain) {
  TakeMany(NodeKind::kString, 365);
  TakeMany(NodeKind::kKey, 364);
  std::string bytes = Bytes();
  SetU32(bytes, 4180 + 32, 75888);
  Reopen(bytes);
  ASSERT_TRUE(store.Descriptor(NodeKind::kString).damaged);
  unsigned int id = 0;
  EXPECT_EQ(status::kInvalidFile, Acquire(NodeKind::kKey, &id));
  EXPECT_TRUE(Bytes() == bytes);
}

// A header that is rewritten elsewhere than where it is read loses what was appended.
TEST_F(TernaryFileGrowthTest, AHeaderThatIsNotInItsPlaceIsNotRewritten) {
  for (unsigned int place : {84u, 4100u, 4179u, 4181u, 0u, 0xFFFFFFFFu}) {
    SCOPED_TRACE(place);
    Damage(4184, place);
    const std::string before = Bytes();
    EXPECT_EQ(status::kInvalidFile, store.ExpandFile(&store.Descriptor(NodeKind::kKey), 24, 500));
    EXPECT_EQ(59u, store.SetStartNode('a', 0x100));
    EXPECT_TRUE(Bytes() == before);
    EXPECT_TRUE(TernaryFile::file.IsOpen());
  }
}

TEST_F(TernaryFileGrowthTest, ALengthFarBeyondTheFileIsNotBelieved) {
  Damage(4212, 0x7FF00000);
  EXPECT_EQ(status::kInvalidFile, store.ExpandFile(&store.Descriptor(NodeKind::kKey), 24, 500));
  EXPECT_EQ(kNewFileSize, Bytes().size());
}

}  // namespace
}  // namespace tamu::registry::storetests
