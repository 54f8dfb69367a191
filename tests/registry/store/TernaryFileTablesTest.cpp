#include "tests/registry/store/StoreTesting.h"

namespace status = tamu::registry::status;

namespace tamu::registry::storetests {
namespace {

class TernaryFileTablesTest : public StoreTest {
 protected:
  // Appends small tables until the kind has `count` of them.
  void GrowTo(NodeKind kind, unsigned int count) {
    while (store.Descriptor(kind).tableCount < count) {
      ASSERT_EQ(status::kOk, store.ExpandFile(&store.Descriptor(kind),
                                              kRecordSizes[static_cast<unsigned int>(kind)], 3));
    }
  }
};

TEST_F(TernaryFileTablesTest, LoadsAChainOf21Tables) {
  GrowTo(NodeKind::kKey, 21);
  store.Finalize();
  ASSERT_EQ(status::kOk, store.Initialize(path.c_str()));
  const TernaryNodeDescriptor& keys = store.Descriptor(NodeKind::kKey);
  EXPECT_EQ(21u, keys.tableCount);
  EXPECT_EQ(keys.totalNodes, 364u + 20 * 2);
  EXPECT_FALSE(keys.damaged);
  for (unsigned int i = 0; i < 21; ++i) EXPECT_EQ(keys.tables[i]->tableNumber(), i);
  EXPECT_EQ(keys.lastTable, keys.tables[20]);
  EXPECT_EQ(0x114u, Take(NodeKind::kKey));
}

TEST_F(TernaryFileTablesTest, ATwentySecondTableInTheFileDamagesTheKind) {
  GrowTo(NodeKind::kKey, 21);
  const unsigned int last = store.Descriptor(NodeKind::kKey).lastTable->tableOffset();
  std::string bytes = Bytes();
  const unsigned int end = static_cast<unsigned int>(bytes.size());
  SetU32(bytes, last, end);
  for (unsigned int word : {0u, end, end + 44, 3u, 0u, 21u, 0u, 2u, 1u, 2u, 3u})
    AddU32(bytes, word);
  bytes += Zeros(3 * 24);
  SetU32(bytes, 4180 + 32, static_cast<unsigned int>(bytes.size()));
  Reopen(bytes);
  EXPECT_EQ(21u, store.Descriptor(NodeKind::kKey).tableCount);
  EXPECT_TRUE(store.Descriptor(NodeKind::kKey).damaged);
  unsigned int id = 0;
  EXPECT_EQ(status::kInvalidFile, Acquire(NodeKind::kKey, &id));
  EXPECT_TRUE(Bytes() == bytes);
  TernaryKeyNode key;
  EXPECT_EQ(status::kOk, store.ReadNodeInBuffer(0x114, &key));
  EXPECT_EQ(status::kInvalidFile, store.ReadNodeInBuffer(0x115, &key));
  EXPECT_EQ(0x100u, Take(NodeKind::kString));
}

TEST_F(TernaryFileTablesTest, ATableThatFollowsItselfDamagesTheKind) {
  Damage(kTables[2], kTables[2]);
  EXPECT_EQ(1u, store.Descriptor(NodeKind::kValue).tableCount);
  EXPECT_TRUE(store.Descriptor(NodeKind::kValue).damaged);
  unsigned int id = 0;
  EXPECT_EQ(status::kInvalidFile, Acquire(NodeKind::kValue, &id));
}

TEST_F(TernaryFileTablesTest, TwoTablesThatFollowEachOtherDamageTheKind) {
  GrowTo(NodeKind::kString, 2);
  Damage(75888, kTables[0]);
  EXPECT_EQ(2u, store.Descriptor(NodeKind::kString).tableCount);
  EXPECT_TRUE(store.Descriptor(NodeKind::kString).damaged);
}

TEST_F(TernaryFileTablesTest, LoadingTellsWhatStoppedIt) {
  TernaryNodeDescriptor& strings = store.Descriptor(NodeKind::kString);
  strings.Clear();
  EXPECT_EQ(status::kOk, store.LoadAllNAT(kTables[0], &strings));
  strings.Clear();
  EXPECT_EQ(status::kInvalidFile, store.LoadAllNAT(kTables[0] + 4, &strings));
  EXPECT_TRUE(strings.damaged);
  EXPECT_EQ(0u, strings.tableCount);
  strings.Clear();
  EXPECT_EQ(status::kInputOutput, store.LoadAllNAT(75888 - 31, &strings));
  EXPECT_TRUE(strings.damaged);
  EXPECT_EQ(status::kBadArgument, store.LoadAllNAT(kTables[0], nullptr));
}

TEST_F(TernaryFileTablesTest, LoadingAHeadClearsItsReservedWords) {
  std::string bytes = Bytes();
  SetU32(bytes, kTables[0] + 16, 0x11111111);
  SetU32(bytes, kTables[0] + 20, 0x22222200);
  SetU32(bytes, kTables[0] + 24, 0x33333333);
  Reopen(bytes);
  NodeAllocationTable* table = nullptr;
  ASSERT_EQ(status::kOk, store.LoadNAT(kTables[0], table));
  EXPECT_EQ(std::string(table->bytes() + 16, table->bytes() + 32),
            std::string("\0\0\0\0\0\x22\x22\x22\0\0\0\0\x6C\x01\0\0", 16));
  delete table;
  table = nullptr;
  EXPECT_EQ(status::kInputOutput, store.LoadNAT(75888, table));
  EXPECT_EQ(nullptr, table);
}

// ---- one field of a table's head wrong

struct Row {
  const char* what;
  unsigned int field;  // offset in the head
  unsigned int value;
  bool relative;  // added to what stands there
};

// The values are wrong for the first as well as for the second table of strings.
const Row kRows[] = {
    {"nextTable behind the file", 0, 0x00FFFFF0, false},
    {"nextTable at the very end of the numbers", 0, 0xFFFFFFF0, false},
    {"nextTable into the headers", 0, 84, false},
    {"nextTable into another kind's table", 0, 5712, false},
    {"tableOffset off by four", 4, 4, true},
    {"tableOffset zero", 4, 0, false},
    {"areaOffset behind the file", 8, 0x01000000, false},
    {"areaOffset that wraps around", 8, 0xFFFFFFF0, false},
    {"areaOffset at the end of the file", 8, 97920, false},
    {"no entries", 12, 0, false},
    {"more entries than a node id can name", 12, 0x01000000, false},
    {"entries beyond the file", 12, 0x00FFFFFF, false},
    {"all bits in entryCount", 12, 0xFFFFFFFF, false},
    {"tableNumber one more", 20, 1, true},
    {"tableNumber 255", 20, 255, false},
    {"freeCount beyond the entries", 28, 0x00010000, false},
    {"all bits in freeCount", 28, 0xFFFFFFFF, false},
};

std::string WithRow(std::string bytes, unsigned int table, const Row& row) {
  const unsigned int offset = table + row.field;
  SetU32(bytes, offset, row.relative ? U32At(bytes, offset) + row.value : row.value);
  return bytes;
}

TEST_F(TernaryFileTablesTest, AFirstTableWithAnyFieldWrongDamagesItsKindOnly) {
  const std::string good = Bytes();
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.what);
    Reopen(WithRow(good, kTables[0], row));
    EXPECT_TRUE(store.Descriptor(NodeKind::kString).damaged);
    // A head whose successor is wrong is right itself.
    EXPECT_EQ(store.Descriptor(NodeKind::kString).tableCount, row.field == 0 ? 1u : 0u);
    unsigned int id = 0;
    TernaryStringNode node;
    EXPECT_EQ(status::kInvalidFile, Acquire(NodeKind::kString, &id));
    EXPECT_EQ(store.ReadNodeInBuffer(0x100, &node), row.field == 0 ? 0u : 59u);
    EXPECT_EQ(status::kInvalidFile,
              store.ExpandFile(&store.Descriptor(NodeKind::kString), 40, 500));
    EXPECT_EQ(0x100u, Take(NodeKind::kKey));
    EXPECT_EQ(0x100u, Take(NodeKind::kValue));
    EXPECT_EQ(status::kOk, store.WriteData(0, "x", 1, &id));
    EXPECT_EQ(0x100u, id);
  }
}

TEST_F(TernaryFileTablesTest, TheTablesBeforeADamagedOneServeTheirIds) {
  TakeMany(NodeKind::kString, 364);
  ASSERT_EQ(0x101u, Take(NodeKind::kString));
  ASSERT_EQ(0x201u, Take(NodeKind::kString));
  const std::string good = Bytes();
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.what);
    Reopen(WithRow(good, 75888, row));
    const TernaryNodeDescriptor& strings = store.Descriptor(NodeKind::kString);
    EXPECT_TRUE(strings.damaged);
    EXPECT_EQ(strings.tableCount, row.field == 0 ? 2u : 1u);
    TernaryStringNode node;
    node.setSplitChar('s');
    EXPECT_EQ(status::kOk, store.WriteNode(0, 0x16C00, &node, false));
    EXPECT_EQ(status::kOk, store.ReadNodeInBuffer(0x16C00, &node));
    EXPECT_EQ(store.ReadNodeInBuffer(0x101, &node), row.field == 0 ? 0u : 59u);
    EXPECT_EQ(0u, store.ReleaseNode(0, 0x16C00, nullptr));
    // The slot just given back stays free: a new table would cut off the rest of the chain.
    unsigned int id = 0;
    EXPECT_EQ(status::kInvalidFile, Acquire(NodeKind::kString, &id));
    EXPECT_EQ(status::kInvalidFile,
              store.ExpandFile(&store.Descriptor(NodeKind::kString), 40, 500));
    EXPECT_EQ(0x100u, Take(NodeKind::kKey));
  }
}

TEST_F(TernaryFileTablesTest, TheFreeCountMayBeAnythingBelowTheEntries) {
  Damage(kTables[1] + 28, 364);
  EXPECT_FALSE(store.Descriptor(NodeKind::kKey).damaged);
  Damage(kTables[1] + 28, 0);
  EXPECT_FALSE(store.Descriptor(NodeKind::kKey).damaged);
  EXPECT_EQ(364u, store.Descriptor(NodeKind::kKey).usedNodes);
  Damage(kTables[1] + 28, 365);
  EXPECT_TRUE(store.Descriptor(NodeKind::kKey).damaged);
}

TEST_F(TernaryFileTablesTest, AnAreaMayEndAtTheLastByteButNotBehindIt) {
  ASSERT_EQ(75888u, kAreas[3] + 365 * 64);
  EXPECT_FALSE(store.Descriptor(NodeKind::kData).damaged);
  Damage(kTables[3] + 8, kAreas[3] + 1);
  EXPECT_TRUE(store.Descriptor(NodeKind::kData).damaged);
}

TEST_F(TernaryFileTablesTest, AnAreaBeyondTheLengthInTheHeaderDamagesItsKind) {
  Damage(4180 + 32, 75887);
  EXPECT_TRUE(store.Descriptor(NodeKind::kData).damaged);
  EXPECT_FALSE(store.Descriptor(NodeKind::kValue).damaged);
  Damage(4180 + 32, 52527);
  EXPECT_TRUE(store.Descriptor(NodeKind::kValue).damaged);
  EXPECT_FALSE(store.Descriptor(NodeKind::kKey).damaged);
}

TEST_F(TernaryFileTablesTest, AFirstTableThatIsNowhereDamagesItsKind) {
  for (unsigned int offset : {0u, 84u, 75888u, 0xFFFFFFFFu}) {
    SCOPED_TRACE(offset);
    Damage(4180 + 16, offset);
    EXPECT_TRUE(store.Descriptor(NodeKind::kKey).damaged);
    unsigned int id = 0;
    TernaryKeyNode key;
    EXPECT_EQ(status::kInvalidFile, Acquire(NodeKind::kKey, &id));
    EXPECT_EQ(status::kInvalidFile, store.ReadNodeInBuffer(0, &key));
    EXPECT_EQ(status::kInvalidFile, store.ReleaseKeyNode(0, 0x100, nullptr));
    EXPECT_FALSE(store.Descriptor(NodeKind::kString).damaged);
  }
}

TEST_F(TernaryFileTablesTest, AnIdLeadsToItsSlot) {
  GrowTo(NodeKind::kValue, 2);
  unsigned int offset = 0;
  EXPECT_EQ(0u, store.Tables().Resolve(NodeKind::kString, 0x100, &offset));
  EXPECT_EQ(offset, 10188u + 40);
  EXPECT_EQ(0u, store.Tables().Resolve(NodeKind::kKey, 0x16C00, &offset));
  EXPECT_EQ(offset, 24788u + 364 * 24);
  EXPECT_EQ(0u, store.Tables().Resolve(NodeKind::kData, 0x200, &offset));
  EXPECT_EQ(offset, 52528u + 128);
  EXPECT_EQ(0u, store.Tables().Resolve(NodeKind::kValue, 0x300, &offset));
  EXPECT_EQ(offset, 33548u + 3 * 52);
  EXPECT_EQ(0u, store.Tables().Resolve(NodeKind::kValue, 0x201, &offset));
  EXPECT_EQ(offset, 75888u + 44 + 2 * 52);
  EXPECT_EQ(0u,
            store.Tables().Resolve(NodeKind::kValue, 0, &offset));  // slot 0 of the newest table
  EXPECT_EQ(offset, 75888u + 44);
}

TEST_F(TernaryFileTablesTest, AnIdWithoutTableOrSlotLeadsNowhere) {
  unsigned int offset = 4711;
  for (unsigned int id : {0x101u, 0x1C8u, 0x1FFu, 0x16D00u, 0xEA6000u, 0xFFFFFF00u, 0xFFFFFFFFu}) {
    EXPECT_EQ(59u, store.Tables().Resolve(NodeKind::kString, id, &offset)) << std::hex << id;
  }
  EXPECT_EQ(4711u, offset);
}

TEST_F(TernaryFileTablesTest, TablesAndAreasThatOverlapAreRefused) {
  struct {
    unsigned int offset, value;
    NodeKind kind;
  } const rows[] = {
      {kTables[2] + 8, kAreas[1], NodeKind::kValue},        // values over keys
      {kTables[3] + 8, kTables[0], NodeKind::kData},        // data over a table
      {kTables[1] + 8, kAreas[0] + 40, NodeKind::kKey},     // keys inside strings
      {kTables[0] + 8, kTables[0] + 32, NodeKind::kString}  // an area over its own table
  };
  const std::string sound = Bytes();
  for (const auto& row : rows) {
    SCOPED_TRACE(row.offset);
    Reopen(sound);
    Damage(row.offset, row.value);
    EXPECT_TRUE(store.Descriptor(row.kind).damaged);
    unsigned int id = 0;
    const std::string before = Bytes();
    EXPECT_EQ(status::kInvalidFile, Acquire(row.kind, &id));
    EXPECT_TRUE(Bytes() == before);
  }
}

}  // namespace
}  // namespace tamu::registry::storetests
