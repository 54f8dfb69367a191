// The store alone, whose writes fail: what is undone, and when.
#include "registry/filetree/TernaryRegistry.h"
#include "tests/registry/store/StoreTesting.h"
#include "tests/support/FaultCalls.h"

namespace tamu::registry {
namespace {

using faults::Mode;
using storetests::FreeListFindings;
using storetests::kNewFileSize;
using storetests::SetU32;

class StoreFaults : public storetests::StoreTest {
 protected:
  void TearDown() override {
    faults::Disarm();
    store.Finalize();
  }

  // The file after an access that nothing keeps from undoing what is still to be undone.
  std::string BytesAfterAccess() {
    faults::Disarm();
    EXPECT_NE(store.GetStartNode('a'), 0xFFFFFFFFu);
    return Bytes();
  }
};

// A caller may have loaded a chain of tables itself: a growth that fails leaves it, and the store's
// own tables, as they were.
TEST_F(StoreFaults, AGrowthOfTablesThatACallerHasLoadedIsUndone) {
  const std::string before = Bytes();
  for (unsigned int fault = 0; fault < 50; ++fault) {
    SCOPED_TRACE(fault);
    Reopen(before);
    TernaryNodeDescriptor own;
    NodeAllocationTable* table = nullptr;
    ASSERT_EQ(store.LoadNAT(storetests::kTables[1], table), 0u);
    own.Append(table);
    faults::Arm(Mode::kFailOnce, fault);
    const unsigned int result = store.ExpandFile(&own, 24, 500);
    const bool isStruck = faults::Struck() > 0;
    faults::Disarm();
    EXPECT_EQ(store.Descriptor(NodeKind::kData).tableCount, 1u);
    EXPECT_EQ(store.Descriptor(NodeKind::kData).totalNodes, 364u);
    if (!isStruck) {
      EXPECT_EQ(result, 0u);
      EXPECT_EQ(own.tableCount, 2u);
      return;
    }
    EXPECT_EQ(result, 5u);
    EXPECT_EQ(own.tableCount, 1u);
    EXPECT_EQ(own.lastTable->nextTable(), 0u);
    EXPECT_TRUE(Bytes() == before);
  }
  FAIL() << "the growth never succeeded";
}

// A header that is one growth ahead of its file: the file keeps its length.
TEST_F(StoreFaults, AFileShorterThanItsHeaderTellsKeepsItsLength) {
  std::string before = Bytes();
  SetU32(before, 4180 + 32, kNewFileSize + 1000);
  for (unsigned int fault = 0; fault < 50; ++fault) {
    SCOPED_TRACE(fault);
    Reopen(before);
    faults::Arm(Mode::kFailOnce, fault);
    const unsigned int result = store.ExpandFile(&store.Descriptor(NodeKind::kKey), 24, 500);
    const bool isStruck = faults::Struck() > 0;
    faults::Disarm();
    if (!isStruck) {
      EXPECT_EQ(result, 0u);
      return;
    }
    EXPECT_EQ(result, 5u);
    EXPECT_TRUE(Bytes() == before);
  }
  FAIL() << "the growth never succeeded";
}

TEST_F(StoreFaults, ACopyOfATableKeepsItsCountWhenASlotCannotBeTaken) {
  NodeAllocationTable copy = *store.Descriptor(NodeKind::kKey).lastTable;
  unsigned int id = 0;
  for (unsigned int fault = 0; fault < 2; ++fault) {
    faults::Arm(Mode::kFailOnce, fault);
    EXPECT_EQ(store.AcquireNodeId(0, &id, &copy), 5u);
    EXPECT_EQ(copy.freeCount(), 364u);
  }
  faults::Disarm();
  ASSERT_EQ(store.AcquireNodeId(0, &id, &copy), 0u);
  for (unsigned int fault = 0; fault < 2; ++fault) {
    faults::Arm(Mode::kFailOnce, fault);
    EXPECT_EQ(store.ReleaseNodeId(0, id, &copy), 5u);
    EXPECT_EQ(copy.freeCount(), 363u);
  }
}

// Giving a slot back has no say in what DeleteKey answers, but half of it must not stay.
TEST_F(StoreFaults, AHalfReleasedSlotOfADeletedKeyIsTakenUpAgain) {
  TernaryRegistry tree(nullptr, nullptr);
  tree.ShareStore(&store);
  ASSERT_EQ(tree.Initialize(path.c_str()), 0u);
  ASSERT_EQ(tree.CreateKey(kAdministratorId, nullptr, "a", 0, false), 0u);
  ASSERT_EQ(tree.CreateValue(kAdministratorId, nullptr, "a", "v", 1, true), 0u);
  const std::string before = Bytes();
  bool isOver = false;
  for (unsigned int fault = 1; fault < 30 && !isOver; ++fault) {
    SCOPED_TRACE(fault);
    Reopen(before);
    faults::Arm(Mode::kTearFrom, fault);
    EXPECT_EQ(tree.DeleteKey(kAdministratorId, nullptr, "a"), 0u);
    isOver = faults::Struck() == 0;
    const std::string after = BytesAfterAccess();
    EXPECT_EQ(FreeListFindings(after), "");
    for (unsigned int kind = 0; kind < 4; ++kind) {
      EXPECT_EQ(store.Descriptor(storetests::kKinds[kind]).lastTable->freeCount(), FreeCount(kind));
    }
    Reopen(after);
    for (unsigned int kind = 0; kind < 3; ++kind) {
      const NodeKind each = storetests::kKinds[kind];
      TakeMany(each, store.Descriptor(each).lastTable->freeCount());
      EXPECT_NE(Take(each), 0u);
    }
  }
  EXPECT_TRUE(isOver);
  tree.Finalize();
}

// As long as something is still to be undone, what was written would be written over by it.
TEST_F(StoreFaults, NothingIsWrittenBeforeAllIsUndone) {
  const std::string before = Bytes();
  unsigned int id = 0;
  faults::Arm(Mode::kTearFrom, 1);
  EXPECT_EQ(Acquire(NodeKind::kKey, &id), 5u);
  EXPECT_FALSE(Bytes() == before);
  faults::Arm(Mode::kFailOnce, 0);
  EXPECT_EQ(Acquire(NodeKind::kKey, &id), 5u);
  EXPECT_TRUE(BytesAfterAccess() == before);
  EXPECT_EQ(store.Descriptor(NodeKind::kKey).usedNodes, 0u);
  EXPECT_EQ(Take(NodeKind::kKey), 0x100u);
}

}  // namespace
}  // namespace tamu::registry
