#include "tests/registry/store/StoreTesting.h"
#include "tests/support/StoreCalls.h"

namespace status = tamu::registry::status;

namespace tamu::registry::storetests {
namespace {

class TernaryFileSlotsTest : public StoreTest {
 protected:
  NodeAllocationTable* Table(NodeKind kind) { return store.Descriptor(kind).lastTable; }

  // A release that must be refused: 59, no byte of the file changed, nor the counts.
  void ExpectRefused(NodeKind kind, unsigned int id) {
    const std::string before = Bytes();
    const unsigned int freeBefore = Table(kind)->freeCount();
    const unsigned int usedBefore = store.Descriptor(kind).usedNodes;
    EXPECT_EQ(status::kInvalidFile, store.ReleaseNodeId(0, id, Table(kind)));
    EXPECT_EQ(status::kInvalidFile, ReleaseSlot(store, kind, id));
    if (kind == NodeKind::kData) {
      EXPECT_EQ(status::kInvalidFile, store.DeleteData(0, id));
    }
    EXPECT_TRUE(Bytes() == before);
    EXPECT_EQ(Table(kind)->freeCount(), freeBefore);
    EXPECT_EQ(store.Descriptor(kind).usedNodes, usedBefore);
  }

  // Takes that must be refused.
  void ExpectNoneTaken(NodeKind kind, unsigned int status) {
    const std::string before = Bytes();
    unsigned int id = 0x5555;
    EXPECT_EQ(store.AcquireNodeId(0, &id, Table(kind)), status);
    EXPECT_EQ(0x5555u, id);
    EXPECT_TRUE(Bytes() == before);
  }
};

TEST_F(TernaryFileSlotsTest, ANewFileHandsOutItsSlotsInAscendingOrder) {
  for (unsigned int kind = 0; kind < 4; ++kind) {
    SCOPED_TRACE(kind);
    std::string expected = Bytes();
    unsigned int id = 0;
    EXPECT_EQ(status::kOk, store.AcquireNodeId(0, &id, Table(kKinds[kind])));
    EXPECT_EQ(0x100u, id);
    EXPECT_EQ(status::kOk, store.AcquireNodeId(0, &id, Table(kKinds[kind])));
    EXPECT_EQ(0x200u, id);
    SetU32(expected, kTables[kind] + 28, 362);
    SetU32(expected, kTables[kind] + 32, 3);
    SetU32(expected, kTables[kind] + 36, 0);
    SetU32(expected, kTables[kind] + 40, 0);
    EXPECT_TRUE(Bytes() == expected);
    EXPECT_EQ(362u, Table(kKinds[kind])->freeCount());
  }
}

TEST_F(TernaryFileSlotsTest, TheSlotReleasedLastIsTakenNext) {
  TakeMany(NodeKind::kString, 5);
  EXPECT_EQ(status::kOk, ReleaseSlot(store, NodeKind::kString, 0x100));
  EXPECT_EQ(status::kOk, ReleaseSlot(store, NodeKind::kString, 0x400));
  EXPECT_EQ(4u, Entry(0, 0));
  EXPECT_EQ(1u, Entry(0, 4));
  EXPECT_EQ(6u, Entry(0, 1));
  EXPECT_EQ(361u, FreeCount(0));
  EXPECT_EQ(0x400u, Take(NodeKind::kString));
  EXPECT_EQ(0x100u, Take(NodeKind::kString));
  EXPECT_EQ(0x600u, Take(NodeKind::kString));
}

TEST_F(TernaryFileSlotsTest, TheLastSlotLeavesTheNumberOfEntriesAsTheHead) {
  for (unsigned int i = 0; i < 364; ++i) {
    unsigned int id = 0;
    ASSERT_EQ(status::kOk, store.AcquireNodeId(0, &id, Table(NodeKind::kKey)));
    ASSERT_EQ(id, (i + 1) << 8);
  }
  EXPECT_EQ(365u, Entry(1, 0));
  EXPECT_EQ(0u, FreeCount(1));
  ExpectNoneTaken(NodeKind::kKey, 28);
  EXPECT_EQ(status::kOk, store.ReleaseNodeId(0, 0x16C00, Table(NodeKind::kKey)));
  EXPECT_EQ(364u, Entry(1, 0));
  EXPECT_EQ(365u, Entry(1, 364));
  EXPECT_EQ(1u, FreeCount(1));
}

// ---- chains

TEST_F(TernaryFileSlotsTest, AChainIsLinkedInTheOrderTaken) {
  unsigned int indexes[3] = {};
  EXPECT_EQ(status::kOk, store.AcquireNodeIndexes(0, indexes, Table(NodeKind::kData), 3));
  EXPECT_EQ(1u, indexes[0]);
  EXPECT_EQ(2u, indexes[1]);
  EXPECT_EQ(3u, indexes[2]);
  EXPECT_EQ(4u, Entry(3, 0));
  EXPECT_EQ(2u, Entry(3, 1));
  EXPECT_EQ(3u, Entry(3, 2));
  EXPECT_EQ(0u, Entry(3, 3));
  EXPECT_EQ(361u, FreeCount(3));
}

TEST_F(TernaryFileSlotsTest, AReleasedChainComesBackInItsOrder) {
  unsigned int indexes[4] = {};
  NodeAllocationTable* table = Table(NodeKind::kData);
  ASSERT_EQ(status::kOk, store.AcquireNodeIndexes(0, indexes, table, 3));
  ASSERT_EQ(status::kOk, store.AcquireNodeIndexes(0, indexes, table, 2));
  EXPECT_EQ(status::kOk, store.ReleaseNodeId(0, 0x100, table));
  EXPECT_EQ(1u, Entry(3, 0));
  EXPECT_EQ(2u, Entry(3, 1));
  EXPECT_EQ(3u, Entry(3, 2));
  EXPECT_EQ(6u, Entry(3, 3));
  EXPECT_EQ(362u, FreeCount(3));
  EXPECT_EQ(status::kOk, store.AcquireNodeIndexes(0, indexes, table, 4));
  EXPECT_EQ(1u, indexes[0]);
  EXPECT_EQ(2u, indexes[1]);
  EXPECT_EQ(3u, indexes[2]);
  EXPECT_EQ(6u, indexes[3]);
  EXPECT_EQ(6u, Entry(3, 3));
  EXPECT_EQ(0u, Entry(3, 6));
}

TEST_F(TernaryFileSlotsTest, AChainOfNoSlotsWritesNothing) {
  const std::string before = Bytes();
  unsigned int index = 77;
  EXPECT_EQ(status::kOk, store.AcquireNodeIndexes(0, &index, Table(NodeKind::kData), 0));
  EXPECT_EQ(77u, index);
  EXPECT_TRUE(Bytes() == before);
}

TEST_F(TernaryFileSlotsTest, AChainLongerThanTheFreeListAnswers28) {
  unsigned int indexes[365];
  NodeAllocationTable* table = Table(NodeKind::kData);
  const std::string before = Bytes();
  EXPECT_EQ(status::kNoSpace, store.AcquireNodeIndexes(0, indexes, table, 365));
  EXPECT_TRUE(Bytes() == before);
  EXPECT_EQ(status::kOk, store.AcquireNodeIndexes(0, indexes, table, 364));
  EXPECT_EQ(364u, indexes[363]);
  EXPECT_EQ(365u, Entry(3, 0));
  EXPECT_EQ(0u, Entry(3, 364));
  EXPECT_EQ(0u, FreeCount(3));
}

// ---- damaged free lists

TEST_F(TernaryFileSlotsTest, AHeadOutsideTheTableIsNotTaken) {
  for (unsigned int head : {0u, 365u, 366u, 0x01000000u, 0xFFFFFFFFu}) {
    SCOPED_TRACE(head);
    Damage(kTables[0] + 32, head);
    ExpectNoneTaken(NodeKind::kString, 59);
  }
}

// What a power cut leaves between the advance of the head and the lowering of the count.
TEST_F(TernaryFileSlotsTest, AFullTableThatSaysOneSlotIsFreeHandsOutNone) {
  TakeMany(NodeKind::kString, 364);
  ASSERT_EQ(365u, Entry(0, 0));
  Damage(kTables[0] + 28, 1);
  const std::string before = Bytes();
  unsigned int id = 0;
  EXPECT_EQ(status::kInvalidFile, Acquire(NodeKind::kString, &id));
  EXPECT_TRUE(Bytes() == before);
}

TEST_F(TernaryFileSlotsTest, AFreeListThatEndsTooEarlyIsNotTaken) {
  Damage(kTables[3] + 32 + 4 * 2, 0);
  const std::string before = Bytes();
  unsigned int indexes[3] = {7, 7, 7};
  EXPECT_EQ(status::kInvalidFile, store.AcquireNodeIndexes(0, indexes, Table(NodeKind::kData), 3));
  EXPECT_TRUE(Bytes() == before);
  EXPECT_EQ(364u, Table(NodeKind::kData)->freeCount());
  // Nor is its last slot: an entry 0 may as well mean that the slot is in use.
  EXPECT_EQ(status::kInvalidFile, store.AcquireNodeIndexes(0, indexes, Table(NodeKind::kData), 2));
  EXPECT_EQ(status::kOk, store.AcquireNodeIndexes(0, indexes, Table(NodeKind::kData), 1));
  EXPECT_EQ(1u, indexes[0]);
}

TEST_F(TernaryFileSlotsTest, AFreeListInACircleIsNotTaken) {
  Damage(kTables[3] + 32 + 4 * 3, 2);
  const std::string before = Bytes();
  unsigned int indexes[4] = {};
  EXPECT_EQ(status::kInvalidFile, store.AcquireNodeIndexes(0, indexes, Table(NodeKind::kData), 4));
  EXPECT_TRUE(Bytes() == before);
}

TEST_F(TernaryFileSlotsTest, ASlotBehindTheTableInsideAChainIsNotTaken) {
  Damage(kTables[3] + 32 + 4 * 2, 365);
  const std::string before = Bytes();
  unsigned int indexes[3] = {};
  EXPECT_EQ(status::kInvalidFile, store.AcquireNodeIndexes(0, indexes, Table(NodeKind::kData), 3));
  EXPECT_TRUE(Bytes() == before);
}

// ---- releasing what is not in use

TEST_F(TernaryFileSlotsTest, ReleasingANodeTwiceIsRefused) {
  for (NodeKind kind : {NodeKind::kString, NodeKind::kKey, NodeKind::kValue}) {
    ASSERT_EQ(0x100u, Take(kind));
    ASSERT_EQ(0x200u, Take(kind));
    ASSERT_EQ(status::kOk, ReleaseSlot(store, kind, 0x100));
    ExpectRefused(kind, 0x100);
  }
}

TEST_F(TernaryFileSlotsTest, ReleasingTheLastFreeSlotTwiceIsRefused) {
  TakeMany(NodeKind::kKey, 364);
  ASSERT_EQ(status::kOk, ReleaseSlot(store, NodeKind::kKey, 0x16C00));
  ExpectRefused(NodeKind::kKey, 0x16C00);
}

// A damaged head of 0 does not make a free slot look as if it were in use.
TEST_F(TernaryFileSlotsTest, ReleasingTwiceIsRefusedWhenTheHeadWasZero) {
  TakeMany(NodeKind::kKey, 364);
  ASSERT_EQ(status::kOk, store.FileWriteInteger(Table(NodeKind::kKey)->entriesOffset(), 0));
  ASSERT_EQ(status::kOk, ReleaseSlot(store, NodeKind::kKey, 0x200));
  ExpectRefused(NodeKind::kKey, 0x200);
  unsigned int id = 0;
  ASSERT_EQ(status::kOk, store.AcquireNodeId(0, &id, Table(NodeKind::kKey)));
  EXPECT_EQ(0x200u, id);
  ExpectNoneTaken(NodeKind::kKey, 28);
}

TEST_F(TernaryFileSlotsTest, OnlySlotsThatWereTakenAreUsed) {
  TernaryFile::AccessScope access(store);
  for (NodeKind kind : {NodeKind::kString, NodeKind::kKey, NodeKind::kValue}) {
    EXPECT_FALSE(access.IsUsed(kind, 0x100));
    ASSERT_EQ(0x100u, Take(kind));
    EXPECT_TRUE(access.IsUsed(kind, 0x100));
    EXPECT_FALSE(access.IsUsed(kind, 0x200));
    EXPECT_FALSE(access.IsUsed(kind, 0x16C00)) << "the last, whose entry names no slot";
    for (unsigned int id : {0u, 1u, 0x101u, 0x16D00u, 0xFFFFFF00u, 0xFFFFFFFFu}) {
      EXPECT_FALSE(access.IsUsed(kind, id)) << id;
    }
    ASSERT_EQ(status::kOk, ReleaseSlot(store, kind, 0x100));
    EXPECT_FALSE(access.IsUsed(kind, 0x100));
  }
}

TEST_F(TernaryFileSlotsTest, ReleasingInATableWithoutUsedSlotsIsRefused) {
  ExpectRefused(NodeKind::kString, 0x100);
  ExpectRefused(NodeKind::kString, 0x16C00);
  ExpectRefused(NodeKind::kData, 0x100);
}

TEST_F(TernaryFileSlotsTest, ReleasingAChainTwiceIsRefused) {
  unsigned int indexes[3];
  ASSERT_EQ(status::kOk, store.AcquireNodeIndexes(0, indexes, Table(NodeKind::kData), 3));
  ASSERT_EQ(status::kOk, store.AcquireNodeIndexes(0, indexes, Table(NodeKind::kData), 3));
  ASSERT_EQ(status::kOk, store.ReleaseNodeId(0, 0x100, Table(NodeKind::kData)));
  ExpectRefused(NodeKind::kData, 0x100);
  ExpectRefused(NodeKind::kData, 0x200);
  ExpectRefused(NodeKind::kData, 0x300);
}

TEST_F(TernaryFileSlotsTest, AChainWhoseMiddleWasReleasedIsRefused) {
  unsigned int indexes[3];
  ASSERT_EQ(status::kOk, store.AcquireNodeIndexes(0, indexes, Table(NodeKind::kData), 3));
  ASSERT_EQ(status::kOk, store.ReleaseNodeId(0, 0x200, Table(NodeKind::kData)));
  EXPECT_EQ(363u, FreeCount(3));
  ExpectRefused(NodeKind::kData, 0x100);
  ExpectRefused(NodeKind::kData, 0x200);
}

TEST_F(TernaryFileSlotsTest, AChainInACircleIsRefused) {
  unsigned int indexes[3];
  ASSERT_EQ(status::kOk, store.AcquireNodeIndexes(0, indexes, Table(NodeKind::kData), 3));
  Damage(kTables[3] + 32 + 4 * 3, 2);
  ExpectRefused(NodeKind::kData, 0x100);
  ExpectRefused(NodeKind::kData, 0x200);
  Damage(kTables[3] + 32 + 4 * 3, 3);
  ExpectRefused(NodeKind::kData, 0x300);
}

TEST_F(TernaryFileSlotsTest, AChainThatLeavesTheTableIsRefused) {
  unsigned int indexes[3];
  ASSERT_EQ(status::kOk, store.AcquireNodeIndexes(0, indexes, Table(NodeKind::kData), 3));
  for (unsigned int next : {365u, 0xFFFFFFFFu}) {
    Damage(kTables[3] + 32 + 4 * 2, next);
    ExpectRefused(NodeKind::kData, 0x100);
  }
}

TEST_F(TernaryFileSlotsTest, ANodeThatIsChainedToAnotherIsRefused) {
  TakeMany(NodeKind::kString, 2);
  Damage(kTables[0] + 32 + 4, 2);
  ExpectRefused(NodeKind::kString, 0x100);
}

TEST_F(TernaryFileSlotsTest, AnIdOutsideTheTableIsRefused) {
  TakeMany(NodeKind::kValue, 2);
  for (unsigned int id : {0x101u, 0x16D00u, 0xEA6000u, 0xFFFFFF00u, 0x1C8u}) {
    SCOPED_TRACE(id);
    ExpectRefused(NodeKind::kValue, id);
  }
}

TEST_F(TernaryFileSlotsTest, NullPointersAndIdZeroAnswer22) {
  NodeAllocationTable* table = Table(NodeKind::kKey);
  unsigned int id = 0;
  const std::string before = Bytes();
  EXPECT_EQ(status::kBadArgument, store.AcquireNodeId(0, nullptr, table));
  EXPECT_EQ(status::kBadArgument, store.AcquireNodeId(0, &id, nullptr));
  EXPECT_EQ(status::kBadArgument, store.AcquireNodeIndexes(0, nullptr, table, 1));
  EXPECT_EQ(status::kBadArgument, store.AcquireNodeIndexes(0, &id, nullptr, 1));
  EXPECT_EQ(status::kBadArgument, store.ReleaseNodeId(0, 0x100, nullptr));
  EXPECT_EQ(status::kBadArgument, store.ReleaseNodeId(0, 0, table));
  TernaryKeyNode* key = nullptr;
  EXPECT_EQ(status::kBadArgument, store.AcquireKeyNode(0, nullptr, key));
  EXPECT_EQ(status::kBadArgument, ReleaseSlot(store, NodeKind::kKey, 0));
  EXPECT_TRUE(Bytes() == before);
}

// The entry of a used slot is 0, and a free list never leads there.
TEST_F(TernaryFileSlotsTest, AFreeListThatLeadsToAUsedSlotIsRefused) {
  TakeMany(NodeKind::kKey, 2);
  Damage(kTables[1] + 32, 2);
  const std::string before = Bytes();
  unsigned int id = 0;
  EXPECT_EQ(status::kInvalidFile, Acquire(NodeKind::kKey, &id));
  EXPECT_TRUE(Bytes() == before);
}

TEST_F(TernaryFileSlotsTest, IndexesAreWrittenOnlyWithSuccess) {
  Damage(kTables[3] + 32 + 4 * 3, 366);
  unsigned int indexes[5] = {9, 9, 9, 9, 9};
  EXPECT_EQ(status::kInvalidFile, store.AcquireNodeIndexes(0, indexes, Table(NodeKind::kData), 5));
  for (unsigned int index : indexes) EXPECT_EQ(9u, index);
}

}  // namespace
}  // namespace tamu::registry::storetests
