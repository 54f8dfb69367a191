#include "registry/store/TableMap.h"
#include "tests/registry/store/RecordTesting.h"
#include "tests/registry/store/StoreTesting.h"

namespace tamu::registry::storetests {
namespace {

class TableMapTest : public StoreTest {
 protected:
  void Follow(unsigned int offset, const std::string& bytes) {
    store.Tables().Follow(offset, static_cast<unsigned int>(bytes.size()),
                          reinterpret_cast<const unsigned char*>(bytes.data()));
  }
  std::string HeaderBytes() { return Known().substr(0, 40); }
  std::string Head(NodeKind kind) {
    const NodeAllocationTable& table = *store.Descriptor(kind).firstTable;
    return std::string(reinterpret_cast<const char*>(table.bytes()), 32);
  }
  static std::string Piece(unsigned int first, unsigned int size) {
    std::string piece;
    for (unsigned int i = 0; i < size; ++i) piece += static_cast<char>(first + i);
    return piece;
  }
};

TEST_F(TableMapTest, TheHeaderFollowsWholly) {
  Follow(4180, Piece(1, 40));
  EXPECT_EQ(Piece(1, 40), HeaderBytes());
}

TEST_F(TableMapTest, PartsOfTheHeaderFollow) {
  const std::string before = HeaderBytes();
  Follow(4190, Piece(1, 3));
  EXPECT_EQ(before.substr(0, 10) + Piece(1, 3) + before.substr(13), HeaderBytes());
  Follow(4219, Piece(9, 1));
  EXPECT_EQ(before.substr(0, 10) + Piece(1, 3) + before.substr(13, 26) + Piece(9, 1),
            HeaderBytes());
}

TEST_F(TableMapTest, BytesThatReachIntoTheHeaderFollow) {
  const std::string before = HeaderBytes();
  Follow(4170, Piece(1, 12));
  EXPECT_EQ(Piece(11, 2) + before.substr(2), HeaderBytes());
}

// The first table's head comes right behind the header.
TEST_F(TableMapTest, BytesThatReachFromTheHeaderIntoAHeadFollowInBoth) {
  const std::string header = HeaderBytes();
  const std::string head = Head(NodeKind::kString);
  Follow(4217, Piece(1, 6));
  EXPECT_EQ(header.substr(0, 37) + Piece(1, 3), HeaderBytes());
  EXPECT_EQ(Piece(4, 3) + head.substr(3), Head(NodeKind::kString));
}

TEST_F(TableMapTest, WhatIsNeitherHeaderNorHeadLeavesThemAlone) {
  const std::string known = Known();
  Follow(4170, Piece(1, 10));              // before the header
  Follow(kTables[0] + 32, Piece(1, 100));  // entries
  Follow(kTables[1] - 10, Piece(1, 10));   // before a head
  Follow(kAreas[0], Piece(1, 255));        // records
  Follow(0xFFFFFFF0, Piece(1, 15));        // behind everything
  Follow(kTables[1] + 4, std::string());   // nothing
  EXPECT_TRUE(Known() == known);
}

TEST_F(TableMapTest, TheCountOfFreeSlotsFollows) {
  for (unsigned int kind = 0; kind < 4; ++kind) {
    SCOPED_TRACE(kind);
    Follow(kTables[kind] + 28, std::string("\x2C\x01\x00\x00\x05\x00\x00\x00", 8));
    EXPECT_EQ(300u, store.Descriptor(kKinds[kind]).firstTable->freeCount());
    EXPECT_EQ(75888u, store.Header().fileSize());
  }
}

TEST_F(TableMapTest, EachTableOfAKindFollowsItsOwnHead) {
  ASSERT_EQ(status::kOk, store.ExpandFile(&store.Descriptor(NodeKind::kKey), 24, 500));
  Follow(75888 + 28, std::string("\x07\x00\x00\x00", 4));
  EXPECT_EQ(364u, store.Descriptor(NodeKind::kKey).tables[0]->freeCount());
  EXPECT_EQ(7u, store.Descriptor(NodeKind::kKey).tables[1]->freeCount());
}

// As when a head is loaded.
TEST_F(TableMapTest, TheReservedWordsOfAHeadStayZero) {
  Follow(kTables[2], Piece(1, 32));
  const std::string expected = Piece(1, 16) + Zeros(4) + Piece(21, 4) + Zeros(4) + Piece(29, 4);
  EXPECT_EQ(expected, Head(NodeKind::kValue));
}

TEST_F(TableMapTest, ResolvesIdsToRecordsAndEntries) {
  unsigned int offset = 0;
  const TableMap& tables = store.Tables();
  ASSERT_EQ(status::kOk, tables.Resolve(NodeKind::kString, 0x200, &offset));
  EXPECT_EQ(10268u, offset);
  ASSERT_EQ(status::kOk, tables.ResolveEntry(NodeKind::kString, 0x200, &offset));
  EXPECT_EQ(4260u, offset);
  ASSERT_EQ(status::kOk, tables.Resolve(NodeKind::kData, 0x16C00, &offset));
  EXPECT_EQ(75824u, offset);
  ASSERT_EQ(status::kOk, tables.ResolveEntry(NodeKind::kData, 0x16C00, &offset));
  EXPECT_EQ(10184u, offset);
}

TEST_F(TableMapTest, ResolvesIdsOfAppendedTables) {
  ASSERT_EQ(status::kOk, store.ExpandFile(&store.Descriptor(NodeKind::kKey), 24, 500));
  unsigned int offset = 0;
  ASSERT_EQ(status::kOk, store.Tables().Resolve(NodeKind::kKey, 0x101, &offset));
  EXPECT_EQ(75888u + 32 + 2000 + 24, offset);
  ASSERT_EQ(status::kOk, store.Tables().ResolveEntry(NodeKind::kKey, 0x101, &offset));
  EXPECT_EQ(75888u + 32 + 4, offset);
  ASSERT_EQ(status::kOk, store.Tables().Resolve(NodeKind::kKey, 0x1F301, &offset));
  EXPECT_EQ(status::kInvalidFile, store.Tables().Resolve(NodeKind::kKey, 0x1F401, &offset));
}

TEST_F(TableMapTest, SlotsThatAreNeverHandedOutHaveNoEntry) {
  unsigned int offset = 0x5555;
  for (const unsigned int id : {0x0u, 0x1u, 0xFFu, 0x16D00u, 0x101u, 0x1FFu, 0xFFFFFF00u}) {
    EXPECT_EQ(status::kInvalidFile, store.Tables().ResolveEntry(NodeKind::kKey, id, &offset));
  }
  EXPECT_EQ(0x5555u, offset);
}

TEST_F(TableMapTest, FindsTheTableOfAnId) {
  ASSERT_EQ(status::kOk, store.ExpandFile(&store.Descriptor(NodeKind::kKey), 24, 500));
  const TernaryNodeDescriptor& keys = store.Descriptor(NodeKind::kKey);
  EXPECT_EQ(keys.tables[1], store.Tables().Find(NodeKind::kKey, 0));
  EXPECT_EQ(keys.tables[0], store.Tables().Find(NodeKind::kKey, 0x500));
  EXPECT_EQ(keys.tables[1], store.Tables().Find(NodeKind::kKey, 0x501));
  EXPECT_EQ(nullptr, store.Tables().Find(NodeKind::kKey, 0x502));
  EXPECT_EQ(nullptr, store.Tables().Find(NodeKind::kValue, 0x501));
}

TEST_F(TableMapTest, KnowsTheKindOfItsDescriptors) {
  for (const NodeKind kind : kKinds) {
    EXPECT_EQ(kind, store.Tables().KindOf(&store.Descriptor(kind)));
  }
  const TernaryNodeDescriptor foreign;
  EXPECT_EQ(NodeKind::kData, store.Tables().KindOf(&foreign));
}

TEST_F(TableMapTest, KnowsWhichTablesAreOfNodes) {
  for (const NodeKind kind : kKinds) {
    EXPECT_EQ(kind != NodeKind::kData,
              store.Tables().IsNodeTable(*store.Descriptor(kind).firstTable));
  }
  EXPECT_FALSE(store.Tables().IsNodeTable(NodeAllocationTable()));
}

TEST_F(TableMapTest, LoadsWhatTheStoreHasLoaded) {
  TakeMany(NodeKind::kValue, 370);
  StoreAccess access(store);
  TableMap tables;
  ASSERT_EQ(status::kOk, tables.Load(store.Bytes()));
  EXPECT_EQ(Hex(store.Header()), Hex(tables.Header()));
  for (const NodeKind kind : kKinds) {
    const TernaryNodeDescriptor& expected = store.Descriptor(kind);
    const TernaryNodeDescriptor& loaded = tables.Descriptor(kind);
    ASSERT_EQ(expected.tableCount, loaded.tableCount);
    EXPECT_EQ(expected.usedNodes, loaded.usedNodes);
    for (unsigned int i = 0; i < loaded.tableCount; ++i) {
      EXPECT_EQ(Hex(*expected.tables[i]), Hex(*loaded.tables[i]));
    }
  }
  EXPECT_EQ(2u, tables.Descriptor(NodeKind::kValue).tableCount);
  tables.Clear();
  EXPECT_EQ(0u, tables.Descriptor(NodeKind::kValue).tableCount);
}

TEST_F(TableMapTest, AFileWithADamagedChainGrowsOnlyWhereItEnds) {
  std::string bytes = Bytes();
  SetU32(bytes, kTables[1], 12);  // a next table that cannot be
  Reopen(bytes);
  StoreAccess access(store);
  EXPECT_TRUE(store.Descriptor(NodeKind::kKey).damaged);
  EXPECT_TRUE(store.MayGrow());
  PutFile(path, bytes + "x");
  EXPECT_FALSE(store.MayGrow());
}

}  // namespace
}  // namespace tamu::registry::storetests
