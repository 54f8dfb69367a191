#include "registry/store/UndoLog.h"
#include "tests/registry/store/StoreTesting.h"

namespace tamu::registry::storetests {
namespace {

constexpr unsigned int kPlace = kAreas[0] + 40;  // the record of the first string

class UndoLogTest : public StoreTest {
 protected:
  // Writes through the log.
  void Write(unsigned int offset, const std::string& text) {
    const unsigned int size = static_cast<unsigned int>(text.size());
    ASSERT_EQ(status::kOk, log.AddBytes(store.Bytes(), offset, size));
    ASSERT_EQ(status::kOk, store.Bytes().Write(offset, size, text.data()));
  }
  bool UndoTo(const UndoLog::Mark& mark) { return log.UndoTo(mark, store.Bytes(), store.Tables()); }
  std::string FileText(unsigned int size) { return GetFile(path).substr(kPlace, size); }

  UndoLog log;
};

TEST_F(UndoLogTest, UndoesTheLatestFirst) {
  const std::string before = GetFile(path);
  StoreAccess access(store);
  Write(kPlace, "first");
  Write(kPlace + 2, "second");
  Write(kPlace + 1, "3");
  EXPECT_EQ("f3second", FileText(8));
  EXPECT_TRUE(UndoTo(UndoLog::Mark()));
  EXPECT_TRUE(GetFile(path) == before);
  EXPECT_TRUE(log.IsEmpty());
}

TEST_F(UndoLogTest, UndoesToAMark) {
  StoreAccess access(store);
  Write(kPlace, "abcd");
  const UndoLog::Mark mark = log.Here();
  Write(kPlace + 1, "XY");
  Write(kPlace + 2, "Z");
  EXPECT_TRUE(UndoTo(mark));
  EXPECT_EQ("abcd", FileText(4));
  EXPECT_FALSE(log.IsEmpty());
  EXPECT_EQ(mark.entries, log.Here().entries);
  EXPECT_EQ(mark.bytes, log.Here().bytes);
  Write(kPlace, "MN");
  EXPECT_TRUE(UndoTo(mark));
  EXPECT_EQ("abcd", FileText(4));
  EXPECT_TRUE(UndoTo(UndoLog::Mark()));
  EXPECT_EQ(Zeros(4), FileText(4));
}

TEST_F(UndoLogTest, WhatIsUndoneIsForgotten) {
  StoreAccess access(store);
  Write(kPlace, "abcd");
  EXPECT_TRUE(UndoTo(UndoLog::Mark()));
  ASSERT_EQ(status::kOk, store.Bytes().Write(kPlace, 4, "later"));
  EXPECT_TRUE(UndoTo(UndoLog::Mark()));
  EXPECT_EQ("late", FileText(4));
}

TEST_F(UndoLogTest, ClearedUndoesNothing) {
  StoreAccess access(store);
  Write(kPlace, "abcd");
  ASSERT_EQ(status::kOk, log.AddUsed(NodeKind::kKey, 1));
  log.Clear();
  EXPECT_TRUE(log.IsEmpty());
  EXPECT_TRUE(UndoTo(UndoLog::Mark()));
  EXPECT_EQ("abcd", FileText(4));
  EXPECT_EQ(0u, store.Descriptor(NodeKind::kKey).usedNodes);
}

TEST_F(UndoLogTest, HeaderAndHeadsFollowTheFile) {
  const std::string known = Known();
  StoreAccess access(store);
  ASSERT_EQ(status::kOk, log.AddBytes(store.Bytes(), kTables[2] + 28, 4));
  store.Descriptor(NodeKind::kValue).firstTable->setFreeCount(17);
  ASSERT_EQ(status::kOk, log.AddBytes(store.Bytes(), 4180, 40));
  store.Tables().Header().setStartNode(0x700);
  EXPECT_FALSE(Known() == known);
  EXPECT_TRUE(UndoTo(UndoLog::Mark()));
  EXPECT_TRUE(Known() == known);
  EXPECT_EQ(364u, store.Descriptor(NodeKind::kValue).firstTable->freeCount());
  EXPECT_EQ(0u, store.Header().startNode());
}

TEST_F(UndoLogTest, CountsOfSlotsInUseGoBackUpAndDown) {
  TakeMany(NodeKind::kKey, 5);
  StoreAccess access(store);
  TernaryNodeDescriptor& keys = store.Descriptor(NodeKind::kKey);
  ASSERT_EQ(status::kOk, log.AddUsed(NodeKind::kKey, 3));
  keys.usedNodes += 3;
  const UndoLog::Mark mark = log.Here();
  ASSERT_EQ(status::kOk, log.AddUsed(NodeKind::kKey, -6));
  keys.usedNodes -= 6;
  EXPECT_TRUE(UndoTo(mark));
  EXPECT_EQ(8u, keys.usedNodes);
  EXPECT_TRUE(UndoTo(UndoLog::Mark()));
  EXPECT_EQ(5u, keys.usedNodes);
  EXPECT_EQ(0u, store.Descriptor(NodeKind::kString).usedNodes);
}

TEST_F(UndoLogTest, AGrowthIsCutOff) {
  StoreAccess access(store);
  NodeAllocationTable* table = new NodeAllocationTable;
  table->setTableOffset(kNewFileSize);
  table->setEntryCount(500);
  table->setFreeCount(499);
  store.Descriptor(NodeKind::kValue).Append(table);
  ASSERT_EQ(status::kOk, store.Bytes().Write(kNewFileSize + 1000, 4, "grow"));
  store.Bytes().Protect(kNewFileSize + 1004);
  ASSERT_EQ(status::kOk, log.AddGrowth(NodeKind::kValue, kNewFileSize, kNewFileSize));
  EXPECT_TRUE(UndoTo(UndoLog::Mark()));
  EXPECT_EQ(kNewFileSize, GetFile(path).size());
  EXPECT_EQ(1u, store.Descriptor(NodeKind::kValue).tableCount);
  EXPECT_EQ(364u, store.Descriptor(NodeKind::kValue).totalNodes);
}

TEST_F(UndoLogTest, WhatCannotBeReadIsNotRemembered) {
  StoreAccess access(store);
  Write(kPlace, "abcd");
  const UndoLog::Mark mark = log.Here();
  EXPECT_EQ(status::kInputOutput, log.AddBytes(store.Bytes(), kNewFileSize - 2, 4));
  EXPECT_EQ(mark.entries, log.Here().entries);
  EXPECT_EQ(mark.bytes, log.Here().bytes);
  EXPECT_TRUE(UndoTo(UndoLog::Mark()));
  EXPECT_EQ(Zeros(4), FileText(4));
}

// 48 entries and 2048 bytes lie in the log itself.
TEST_F(UndoLogTest, IsAsLongAsItHasToBe) {
  const std::string before = GetFile(path);
  StoreAccess access(store);
  for (unsigned int i = 0; i < 49; ++i) Write(kPlace + i, "xy");
  Write(kPlace, std::string(2049, 'z'));
  for (unsigned int i = 0; i < 500; ++i) Write(kPlace + 7 * i, "many more");
  EXPECT_TRUE(UndoTo(UndoLog::Mark()));
  EXPECT_TRUE(GetFile(path) == before);
}

// Without a file nothing can be written, nor be looked at.
TEST_F(UndoLogTest, KeepsWhatCannotBeUndone) {
  {
    StoreAccess access(store);
    Write(kPlace, "abcd");
    Write(kPlace + 8, "efgh");
  }
  store.Finalize();
  TernaryFile closed;
  EXPECT_FALSE(log.UndoTo(UndoLog::Mark(), closed.Bytes(), closed.Tables()));
  EXPECT_EQ(2u, log.Here().entries);
  EXPECT_EQ(8u, log.Here().bytes);
  ASSERT_EQ(status::kOk, store.Initialize(path.c_str()));
  StoreAccess access(store);
  EXPECT_EQ("abcd", FileText(4));
  EXPECT_TRUE(UndoTo(UndoLog::Mark()));
  EXPECT_EQ(Zeros(12), FileText(12));
}

}  // namespace
}  // namespace tamu::registry::storetests
