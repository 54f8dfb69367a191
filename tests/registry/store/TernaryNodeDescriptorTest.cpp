#include <gtest/gtest.h>

#include "registry/store/TernaryNodeDescriptor.h"

namespace tamu::registry::storetests {
namespace {

NodeAllocationTable* Table(unsigned int entries, unsigned int freeCount) {
  NodeAllocationTable* table = new NodeAllocationTable;
  table->setEntryCount(entries);
  table->setFreeCount(freeCount);
  return table;
}

TEST(TernaryNodeDescriptor, KnowsTheSizesOfTheRecords) {
  EXPECT_EQ(RecordSizeOf(NodeKind::kString), 40u);
  EXPECT_EQ(RecordSizeOf(NodeKind::kKey), 24u);
  EXPECT_EQ(RecordSizeOf(NodeKind::kValue), 52u);
  EXPECT_EQ(RecordSizeOf(NodeKind::kData), 64u);
}

TEST(TernaryNodeDescriptor, CountsTheSlotsOfItsTables) {
  TernaryNodeDescriptor descriptor;
  EXPECT_EQ(descriptor.tableCapacity, 21u);
  NodeAllocationTable* first = Table(365, 300);
  descriptor.Append(first);
  EXPECT_EQ(descriptor.firstTable, first);
  EXPECT_EQ(descriptor.lastTable, first);
  EXPECT_EQ(descriptor.usedNodes, 64u);
  EXPECT_EQ(descriptor.totalNodes, 364u);
  NodeAllocationTable* second = Table(500, 499);
  descriptor.Append(second);
  EXPECT_EQ(descriptor.firstTable, first);
  EXPECT_EQ(descriptor.lastTable, second);
  EXPECT_EQ(descriptor.tables[0], first);
  EXPECT_EQ(descriptor.tables[1], second);
  EXPECT_EQ(descriptor.tableCount, 2u);
  EXPECT_EQ(descriptor.usedNodes, 64u);
  EXPECT_EQ(descriptor.totalNodes, 863u);
}

TEST(TernaryNodeDescriptor, ATableWithoutEntriesAddsNothing) {
  TernaryNodeDescriptor descriptor;
  descriptor.Append(Table(0, 0));
  EXPECT_EQ(descriptor.tableCount, 1u);
  EXPECT_EQ(descriptor.usedNodes, 0u);
  EXPECT_EQ(descriptor.totalNodes, 0u);
}

TEST(TernaryNodeDescriptor, ClearedIsAsNew) {
  TernaryNodeDescriptor descriptor;
  descriptor.Append(Table(365, 300));
  descriptor.damaged = true;
  descriptor.Clear();
  EXPECT_EQ(descriptor.firstTable, nullptr);
  EXPECT_EQ(descriptor.lastTable, nullptr);
  EXPECT_EQ(descriptor.tables[0], nullptr);
  EXPECT_EQ(descriptor.tableCount, 0u);
  EXPECT_EQ(descriptor.tableCapacity, 21u);
  EXPECT_EQ(descriptor.usedNodes, 0u);
  EXPECT_EQ(descriptor.totalNodes, 0u);
  EXPECT_FALSE(descriptor.damaged);
}

}  // namespace
}  // namespace tamu::registry::storetests
