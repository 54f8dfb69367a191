#include <gtest/gtest.h>

#include "registry/format/NodeAllocationTable.h"
#include "tests/registry/store/RecordTesting.h"

namespace tamu::registry::storetests {
namespace {

TEST(NodeAllocationTable, IsZeroWhenMade) {
  static_assert(sizeof(NodeAllocationTable) == 32);
  EXPECT_EQ("00000000 00000000 00000000 00000000 00000000 00000000 00000000 00000000",
            Hex(NodeAllocationTable()));
}

TEST(NodeAllocationTable, PutsEveryFieldAtItsPlace) {
  NodeAllocationTable table;
  table.setNextTable(0x00018790);
  table.setTableOffset(4220);
  table.setAreaOffset(10188);
  table.setEntryCount(365);
  table.setTableNumber(20);
  table.setFreeCount(364);
  EXPECT_EQ("90870100 7C100000 CC270000 6D010000 00000000 14000000 00000000 6C010000", Hex(table));
}

TEST(NodeAllocationTable, GetsEveryFieldFromItsPlace) {
  const NodeAllocationTable table = Numbered<NodeAllocationTable>();
  EXPECT_EQ(0x84838281u, table.nextTable());
  EXPECT_EQ(0x88878685u, table.tableOffset());
  EXPECT_EQ(0x8C8B8A89u, table.areaOffset());
  EXPECT_EQ(0x908F8E8Du, table.entryCount());
  EXPECT_EQ(0x95u, table.tableNumber());
  EXPECT_EQ(0xA09F9E9Du, table.freeCount());
}

TEST(NodeAllocationTable, ClearingTouchesTheTwoReservedWordsOnly) {
  NodeAllocationTable table = Numbered<NodeAllocationTable>();
  table.ClearReserved();
  EXPECT_EQ("81828384 85868788 898A8B8C 8D8E8F90 00000000 95969798 00000000 9D9E9FA0", Hex(table));
}

TEST(NodeAllocationTable, EntriesFollowTheHeadAtOnce) {
  NodeAllocationTable table;
  table.setTableOffset(4220);
  EXPECT_EQ(4248u, table.freeCountOffset());
  EXPECT_EQ(4252u, table.entriesOffset());
  EXPECT_EQ(4252u, table.entryOffset(0));
  EXPECT_EQ(5708u, table.entryOffset(364));
}

}  // namespace
}  // namespace tamu::registry::storetests
