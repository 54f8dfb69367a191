// Changes of a store whose writes fail.
#include "registry/store/Changes.h"
#include "tests/registry/store/RecordTesting.h"
#include "tests/registry/store/StoreTesting.h"
#include "tests/support/FaultCalls.h"

namespace tamu::registry::storetests {
namespace {

using faults::Mode;

class ChangesFaultTest : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    TakeMany(NodeKind::kString, 363);
    ASSERT_EQ(status::kOk, store.StoreData(0, std::string(200, 'd').data(), 200, &data));
    ASSERT_EQ(status::kOk, store.SetStartNode(0, 0x100));
    bytes = Bytes();
    known = Known();
  }
  void TearDown() override {
    faults::Disarm();
    StoreTest::TearDown();
  }

  // Some of everything. The first status that is no success.
  Status WriteAll(Changes& changes) {
    unsigned int id = 0;
    Status result = changes.Write(0x100, Numbered<TernaryStringNode>());
    for (unsigned int i = 0; i < 3 && result.IsOk(); ++i) {
      result = changes.Take(NodeKind::kString, &id);
    }
    if (result.IsOk()) result = changes.Write(id, Numbered<TernaryStringNode>());
    if (result.IsOk()) result = changes.Release(NodeKind::kString, 0x500);
    if (result.IsOk()) result = changes.ReleaseData(data);
    DataId stored;
    if (result.IsOk()) result = changes.StoreData(std::string(100, 'e').data(), 100, &stored);
    if (result.IsOk()) result = changes.SetStartNode(0x200);
    return result;
  }
  // The same as a change of its own.
  unsigned int Run() {
    Changes changes(store);
    return changes.End(WriteAll(changes));
  }
  // How many calls Run makes when nothing fails. The file is as before.
  unsigned int CallsOfRun() {
    faults::Arm(Mode::kNone, 0);
    EXPECT_EQ(status::kOk, Run());
    const unsigned int calls = faults::Count();
    Reopen(bytes);
    return calls;
  }
  // Writes the start node and a record, and is left when nothing can be written any more.
  void LeaveHalf() {
    Changes changes(store);
    ASSERT_EQ(status::kOk, changes.SetStartNode(0x200));
    ASSERT_EQ(status::kOk, changes.Write(0x100, Numbered<TernaryStringNode>()));
    faults::Arm(Mode::kFailFrom, 0);
  }
  // The table of keys once more, for a descriptor that is not the store's own.
  void LoadKeyTable(TernaryNodeDescriptor& descriptor) {
    NodeAllocationTable* table = nullptr;
    ASSERT_EQ(status::kOk, store.LoadNAT(kTables[1], table));
    descriptor.Append(table);
  }

  unsigned int data = 0;
  std::string bytes;
  std::string known;
};

TEST_F(ChangesFaultTest, WhatAFailedWriteHasBegunIsUndone) {
  const unsigned int calls = CallsOfRun();
  ASSERT_GT(calls, 20u);
  for (const Mode mode : {Mode::kFailOnce, Mode::kTearFrom}) {
    for (unsigned int number = 0; number < calls; ++number) {
      SCOPED_TRACE(std::string(faults::Name(mode)) + " call " + std::to_string(number));
      faults::Arm(mode, number);
      {
        Changes changes(store);
        EXPECT_EQ(status::kInputOutput, changes.End(WriteAll(changes)));
        if (mode == Mode::kTearFrom) faults::Disarm();
      }
      faults::Disarm();
      if (store.Bytes().IsOpen()) {  // a failed growth closes it
        EXPECT_TRUE(Bytes() == bytes);
        EXPECT_TRUE(Known() == known);
      } else if (mode == Mode::kFailOnce) {
        EXPECT_TRUE(Bytes() == bytes);
      } else {  // what was appended could not be cut off
        EXPECT_TRUE(Bytes().substr(0, bytes.size()) == bytes);
      }
      Reopen(bytes);
    }
  }
}

TEST_F(ChangesFaultTest, WhatCannotBeUndoneAtOnceIsUndoneByTheNextAccess) {
  LeaveHalf();
  EXPECT_FALSE(Bytes() == bytes);
  faults::Disarm();
  EXPECT_FALSE(Bytes() == bytes);
  {
    StoreAccess access(store);
    EXPECT_EQ(0x100u, access.StartNode());
    TernaryStringNode node;
    EXPECT_EQ(status::kOk, access.Read(0x100, &node));
    EXPECT_EQ(Hex(TernaryStringNode()), Hex(node));
  }
  EXPECT_TRUE(Bytes() == bytes);
  EXPECT_TRUE(Known() == known);
}

TEST_F(ChangesFaultTest, IsUndoneWhereverTheWritesBeginToFail) {
  const unsigned int calls = CallsOfRun();
  for (unsigned int number = 0; number < calls; ++number) {
    SCOPED_TRACE(number);
    faults::Arm(Mode::kFailFrom, number);
    EXPECT_EQ(status::kInputOutput, Run());
    faults::Disarm();
    if (store.Bytes().IsOpen()) {
      { StoreAccess access(store); }
      EXPECT_TRUE(Bytes() == bytes);
      EXPECT_TRUE(Known() == known);
    }
    Reopen(bytes);
  }
}

// Only the access that holds the store alone undoes: within a change nothing is taken from it.
TEST_F(ChangesFaultTest, AnAccessWithinAChangeUndoesNothing) {
  Changes changes(store);
  ASSERT_EQ(status::kOk, changes.SetStartNode(0x200));
  const Changes::Mark mark = changes.Here();
  ASSERT_EQ(status::kOk, changes.SetStartNode(0x300));
  faults::Arm(Mode::kFailFrom, 0);
  EXPECT_FALSE(changes.UndoTo(mark));
  faults::Disarm();
  EXPECT_EQ(0x300u, StoreAccess(store).StartNode());
  EXPECT_TRUE(changes.UndoTo(mark));
  EXPECT_EQ(0x200u, StoreAccess(store).StartNode());
}

TEST_F(ChangesFaultTest, WhatWasToBeUndoneIsUndoneThoughTheChangeIsKept) {
  const unsigned int startNode = StoreAccess(store).StartNode();
  {
    Changes changes(store);
    const Changes::Mark mark = changes.Here();
    ASSERT_EQ(status::kOk, changes.SetStartNode(0x300));
    faults::Arm(Mode::kFailFrom, 0);
    EXPECT_FALSE(changes.UndoTo(mark));
    faults::Disarm();
    EXPECT_EQ(status::kOk, changes.Keep(status::kOk));
  }
  EXPECT_EQ(startNode, StoreAccess(store).StartNode());
  EXPECT_EQ(startNode, U32(4208));
}

// Else the old bytes would be written over what the later change has kept.
TEST_F(ChangesFaultTest, NothingIsChangedBeforeAllIsUndone) {
  LeaveHalf();
  faults::Arm(Mode::kFailOnce, 0);  // the access tries again, once
  {
    Changes changes(store);
    EXPECT_EQ(1u, faults::Struck());
    const std::string half = Bytes();
    unsigned int id = 0x5555;
    EXPECT_EQ(status::kInputOutput, changes.SetStartNode(0x300));
    EXPECT_EQ(status::kInputOutput, changes.Take(NodeKind::kKey, &id));
    EXPECT_EQ(0x5555u, id);
    EXPECT_EQ(status::kInputOutput,
              changes.Grow(&store.Descriptor(NodeKind::kKey), 24, kExpansionSlots));
    { Changes inner(store); }
    EXPECT_TRUE(Bytes() == half);
    EXPECT_EQ(status::kOk, changes.Keep(status::kOk));
  }
  { StoreAccess access(store); }
  EXPECT_TRUE(Bytes() == bytes);
  EXPECT_TRUE(Known() == known);
  EXPECT_EQ(status::kOk, store.SetStartNode(0, 0x300));
}

TEST_F(ChangesFaultTest, WhatIsStillToBeUndoneIsForgottenWithTheFile) {
  LeaveHalf();
  store.Finalize();
  faults::Disarm();
  const std::string half = Bytes();
  EXPECT_FALSE(half == bytes);
  ASSERT_EQ(status::kOk, store.Initialize(path.c_str()));
  EXPECT_EQ(0x200u, StoreAccess(store).StartNode());
  EXPECT_TRUE(Bytes() == half);
}

TEST_F(ChangesFaultTest, WhatIsStillToBeUndoneIsForgottenWhenTheFileIsOpenedAnew) {
  LeaveHalf();
  const std::string half = Bytes();
  ASSERT_EQ(status::kOk, store.Initialize(path.c_str()));
  faults::Disarm();
  EXPECT_EQ(0x200u, StoreAccess(store).StartNode());
  EXPECT_TRUE(Bytes() == half);
}

TEST_F(ChangesFaultTest, AFileThatWasReplacedIsNotUndone) {
  LeaveHalf();
  const std::string half = Bytes();
  faults::Disarm();
  TernaryFile other;
  PutFile(dir / "other", bytes);
  ASSERT_EQ(status::kOk, other.Initialize((dir / "other").c_str()));
  { StoreAccess access(store); }
  EXPECT_TRUE(Bytes() == half);
  EXPECT_TRUE(GetFile(dir / "other") == bytes);
  other.Finalize();
}

// A descriptor that is not the store's own.
TEST_F(ChangesFaultTest, AFailedGrowthOfSomebodysTablesLeavesThemAsTheyWere) {
  for (unsigned int number = 0;; ++number) {
    SCOPED_TRACE(number);
    TernaryNodeDescriptor descriptor;
    LoadKeyTable(descriptor);
    faults::Arm(Mode::kFailOnce, number);
    const unsigned int result = store.ExpandFile(&descriptor, 24, 500);
    const bool struck = faults::Struck() > 0;
    faults::Disarm();
    if (!struck) {
      EXPECT_EQ(status::kOk, result);
      EXPECT_EQ(2u, descriptor.tableCount);
      break;
    }
    EXPECT_EQ(status::kInputOutput, result);
    EXPECT_EQ(1u, descriptor.tableCount);
    EXPECT_EQ(descriptor.firstTable, descriptor.lastTable);
    EXPECT_EQ(364u, descriptor.totalNodes);
    EXPECT_EQ(0u, descriptor.lastTable->nextTable());
    EXPECT_TRUE(Known() == known);
    EXPECT_TRUE(Bytes() == bytes);
    Reopen(bytes);
  }
}

// A table that is not the store's own.
TEST_F(ChangesFaultTest, AFailedTakeLeavesSomebodysTableAsItWas) {
  for (unsigned int number = 0;; ++number) {
    SCOPED_TRACE(number);
    TernaryNodeDescriptor descriptor;
    LoadKeyTable(descriptor);
    unsigned int id = 0;
    faults::Arm(Mode::kFailOnce, number);
    const unsigned int result = store.AcquireNodeId(0, &id, descriptor.firstTable);
    const bool struck = faults::Struck() > 0;
    faults::Disarm();
    EXPECT_EQ(struck ? status::kInputOutput : status::kOk, result);
    EXPECT_EQ(struck ? 364u : 363u, descriptor.firstTable->freeCount());
    EXPECT_EQ(descriptor.firstTable->freeCount(), FreeCount(1));
    if (!struck) break;
  }
}

}  // namespace
}  // namespace tamu::registry::storetests
