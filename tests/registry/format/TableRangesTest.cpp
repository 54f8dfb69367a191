#include <gtest/gtest.h>

#include "registry/format/TableRanges.h"

namespace tamu::registry::storetests {
namespace {

void ExpectRange(unsigned long long start, unsigned long long end, const FileRange& range) {
  EXPECT_EQ(start, range.start);
  EXPECT_EQ(end, range.end);
  EXPECT_EQ(end - start, range.size());
}

TEST(TableRanges, AreThoseOfANewFile) {
  ExpectRange(4220, 5712, TableRange(4220, 365));
  ExpectRange(10188, 24788, AreaRange(10188, 365, RecordSizeOf(NodeKind::kString)));
  ExpectRange(52528, 75888, AreaRange(52528, 365, RecordSizeOf(NodeKind::kData)));
}

TEST(TableRanges, ComeFromAStoredTable) {
  NodeAllocationTable table;
  table.setTableOffset(75888);
  table.setAreaOffset(77920);
  table.setEntryCount(500);
  ExpectRange(75888, 77920, TableRangeOf(table));
  ExpectRange(77920, 97920, AreaRangeOf(table, 40));
}

TEST(TableRanges, DoNotWrapInADamagedTable) {
  NodeAllocationTable table;
  table.setTableOffset(0xFFFFFFFF);
  table.setAreaOffset(0xFFFFFFFF);
  table.setEntryCount(0xFFFFFFFF);
  ExpectRange(0xFFFFFFFF, 0xFFFFFFFFull + 32 + 4 * 0xFFFFFFFFull, TableRangeOf(table));
  ExpectRange(0xFFFFFFFF, 65 * 0xFFFFFFFFull, AreaRangeOf(table, 64));
}

TEST(TableRanges, OverlapInAByteThatBothHave) {
  EXPECT_TRUE(Overlap({10, 20}, {19, 30}));
  EXPECT_TRUE(Overlap({19, 30}, {10, 20}));
  EXPECT_TRUE(Overlap({10, 20}, {12, 13}));
  EXPECT_FALSE(Overlap({10, 20}, {20, 30}));
  EXPECT_FALSE(Overlap({20, 30}, {10, 20}));
}

}  // namespace
}  // namespace tamu::registry::storetests
