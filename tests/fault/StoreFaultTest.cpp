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

class StoreFaultTest : public storetests::StoreTest {
 protected:
  void TearDown() override {
    faults::Disarm();
    store.Finalize();
  }

  // The file after an access that nothing keeps from undoing what is still to be undone.
  std::string BytesAfterAccess() {
    faults::Disarm();
    EXPECT_NE(0xFFFFFFFFu, store.GetStartNode('a'));
    return Bytes();
  }
};

// A caller may have loaded a chain of tables itself: a growth that fails leaves it, and the store's
// own tables, as they were.
TEST_F(StoreFaultTest, AGrowthOfTablesThatACallerHasLoadedIsUndone) {
  const std::string before = Bytes();
  for (unsigned int fault = 0; fault < 50; ++fault) {
    SCOPED_TRACE(fault);
    Reopen(before);
    TernaryNodeDescriptor own;
    NodeAllocationTable* table = nullptr;
    ASSERT_EQ(status::kOk, store.LoadNAT(storetests::kTables[1], table));
    own.Append(table);
    faults::Arm(Mode::kFailOnce, fault);
    const unsigned int result = store.ExpandFile(&own, 24, 500);
    const bool isStruck = faults::Struck() > 0;
    faults::Disarm();
    EXPECT_EQ(1u, store.Descriptor(NodeKind::kData).tableCount);
    EXPECT_EQ(364u, store.Descriptor(NodeKind::kData).totalNodes);
    if (!isStruck) {
      EXPECT_EQ(0u, result);
      EXPECT_EQ(2u, own.tableCount);
      return;
    }
    EXPECT_EQ(5u, result);
    EXPECT_EQ(1u, own.tableCount);
    EXPECT_EQ(0u, own.lastTable->nextTable());
    EXPECT_TRUE(Bytes() == before);
  }
  FAIL() << "the growth never succeeded";
}

// A header that is one growth ahead of its file: the file keeps its length.
TEST_F(StoreFaultTest, AFileShorterThanItsHeaderTellsKeepsItsLength) {
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
      EXPECT_EQ(0u, result);
      return;
    }
    EXPECT_EQ(5u, result);
    EXPECT_TRUE(Bytes() == before);
  }
  FAIL() << "the growth never succeeded";
}

TEST_F(StoreFaultTest, ACopyOfATableKeepsItsCountWhenASlotCannotBeTaken) {
  NodeAllocationTable copy = *store.Descriptor(NodeKind::kKey).lastTable;
  unsigned int id = 0;
  for (unsigned int fault = 0; fault < 2; ++fault) {
    faults::Arm(Mode::kFailOnce, fault);
    EXPECT_EQ(status::kInputOutput, store.AcquireNodeId(0, &id, &copy));
    EXPECT_EQ(364u, copy.freeCount());
  }
  faults::Disarm();
  ASSERT_EQ(status::kOk, store.AcquireNodeId(0, &id, &copy));
  for (unsigned int fault = 0; fault < 2; ++fault) {
    faults::Arm(Mode::kFailOnce, fault);
    EXPECT_EQ(status::kInputOutput, store.ReleaseNodeId(0, id, &copy));
    EXPECT_EQ(363u, copy.freeCount());
  }
}

// Giving a slot back has no say in what DeleteKey answers, but half of it must not stay.
TEST_F(StoreFaultTest, AHalfReleasedSlotOfADeletedKeyIsTakenUpAgain) {
  TernaryRegistry tree(nullptr, nullptr);
  tree.ShareStore(&store);
  ASSERT_EQ(status::kOk, tree.Initialize(path.c_str()));
  ASSERT_EQ(status::kOk, tree.CreateKey(kAdministratorId, nullptr, "a", 0, false));
  ASSERT_EQ(status::kOk, tree.CreateValue(kAdministratorId, nullptr, "a", "v", 1, true));
  const std::string before = Bytes();
  bool isOver = false;
  for (unsigned int fault = 1; fault < 30 && !isOver; ++fault) {
    SCOPED_TRACE(fault);
    Reopen(before);
    faults::Arm(Mode::kTearFrom, fault);
    EXPECT_EQ(status::kOk, tree.DeleteKey(kAdministratorId, nullptr, "a"));
    isOver = faults::Struck() == 0;
    const std::string after = BytesAfterAccess();
    EXPECT_EQ("", FreeListFindings(after));
    for (unsigned int kind = 0; kind < 4; ++kind) {
      EXPECT_EQ(store.Descriptor(storetests::kKinds[kind]).lastTable->freeCount(), FreeCount(kind));
    }
    Reopen(after);
    for (unsigned int kind = 0; kind < 3; ++kind) {
      const NodeKind each = storetests::kKinds[kind];
      TakeMany(each, store.Descriptor(each).lastTable->freeCount());
      EXPECT_NE(0u, Take(each));
    }
  }
  EXPECT_TRUE(isOver);
  tree.Finalize();
}

// As long as something is still to be undone, what was written would be written over by it.
TEST_F(StoreFaultTest, NothingIsWrittenBeforeAllIsUndone) {
  const std::string before = Bytes();
  unsigned int id = 0;
  faults::Arm(Mode::kTearFrom, 1);
  EXPECT_EQ(5u, Acquire(NodeKind::kKey, &id));
  EXPECT_FALSE(Bytes() == before);
  faults::Arm(Mode::kFailOnce, 0);
  EXPECT_EQ(5u, Acquire(NodeKind::kKey, &id));
  EXPECT_TRUE(BytesAfterAccess() == before);
  EXPECT_EQ(0u, store.Descriptor(NodeKind::kKey).usedNodes);
  EXPECT_EQ(0x100u, Take(NodeKind::kKey));
}

}  // namespace
}  // namespace tamu::registry
