#include <gtest/gtest.h>

#include "registry/format/NodeAllocationTable.h"
#include "tests/registry/store/RecordTesting.h"

namespace tamu::registry::storetests {
namespace {

TEST(NodeAllocationTable, IsZeroWhenMade) {
  static_assert(sizeof(NodeAllocationTable) == 32);
  EXPECT_EQ(Hex(NodeAllocationTable()),
            "00000000 00000000 00000000 00000000 00000000 00000000 00000000 00000000");
}

TEST(NodeAllocationTable, PutsEveryFieldAtItsPlace) {
  NodeAllocationTable table;
  table.setNextTable(0x00018790);
  table.setTableOffset(4220);
  table.setAreaOffset(10188);
  table.setEntryCount(365);
  table.setTableNumber(20);
  table.setFreeCount(364);
  EXPECT_EQ(Hex(table), "90870100 7C100000 CC270000 6D010000 00000000 14000000 00000000 6C010000");
}

TEST(NodeAllocationTable, GetsEveryFieldFromItsPlace) {
  const NodeAllocationTable table = Numbered<NodeAllocationTable>();
  EXPECT_EQ(table.nextTable(), 0x84838281u);
  EXPECT_EQ(table.tableOffset(), 0x88878685u);
  EXPECT_EQ(table.areaOffset(), 0x8C8B8A89u);
  EXPECT_EQ(table.entryCount(), 0x908F8E8Du);
  EXPECT_EQ(table.tableNumber(), 0x95u);
  EXPECT_EQ(table.freeCount(), 0xA09F9E9Du);
}

TEST(NodeAllocationTable, ClearingTouchesTheTwoReservedWordsOnly) {
  NodeAllocationTable table = Numbered<NodeAllocationTable>();
  table.ClearReserved();
  EXPECT_EQ(Hex(table), "81828384 85868788 898A8B8C 8D8E8F90 00000000 95969798 00000000 9D9E9FA0");
}

TEST(NodeAllocationTable, EntriesFollowTheHeadAtOnce) {
  NodeAllocationTable table;
  table.setTableOffset(4220);
  EXPECT_EQ(table.freeCountOffset(), 4248u);
  EXPECT_EQ(table.entriesOffset(), 4252u);
  EXPECT_EQ(table.entryOffset(0), 4252u);
  EXPECT_EQ(table.entryOffset(364), 5708u);
}

}  // namespace
}  // namespace tamu::registry::storetests
