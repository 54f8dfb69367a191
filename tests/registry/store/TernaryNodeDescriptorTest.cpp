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
  EXPECT_EQ(40u, RecordSizeOf(NodeKind::kString));
  EXPECT_EQ(24u, RecordSizeOf(NodeKind::kKey));
  EXPECT_EQ(52u, RecordSizeOf(NodeKind::kValue));
  EXPECT_EQ(64u, RecordSizeOf(NodeKind::kData));
}

TEST(TernaryNodeDescriptor, CountsTheSlotsOfItsTables) {
  TernaryNodeDescriptor descriptor;
  EXPECT_EQ(21u, descriptor.tableCapacity);
  NodeAllocationTable* first = Table(365, 300);
  descriptor.Append(first);
  EXPECT_EQ(descriptor.firstTable, first);
  EXPECT_EQ(descriptor.lastTable, first);
  EXPECT_EQ(64u, descriptor.usedNodes);
  EXPECT_EQ(364u, descriptor.totalNodes);
  NodeAllocationTable* second = Table(500, 499);
  descriptor.Append(second);
  EXPECT_EQ(descriptor.firstTable, first);
  EXPECT_EQ(descriptor.lastTable, second);
  EXPECT_EQ(descriptor.tables[0], first);
  EXPECT_EQ(descriptor.tables[1], second);
  EXPECT_EQ(2u, descriptor.tableCount);
  EXPECT_EQ(64u, descriptor.usedNodes);
  EXPECT_EQ(863u, descriptor.totalNodes);
}

TEST(TernaryNodeDescriptor, KnowsWhereTheRecordsOfItsTablesLie) {
  TernaryNodeDescriptor descriptor;
  NodeAllocationTable* first = Table(365, 300);
  first->setAreaOffset(10188);
  descriptor.Append(first);
  NodeAllocationTable* second = Table(500, 499);
  second->setAreaOffset(77920);
  descriptor.Append(second);
  EXPECT_EQ(10188u, descriptor.areas[0].offset);
  EXPECT_EQ(364u, descriptor.areas[0].slots);
  EXPECT_EQ(77920u, descriptor.areas[1].offset);
  EXPECT_EQ(499u, descriptor.areas[1].slots);
  TernaryNodeDescriptor other;
  other.Swap(descriptor);
  EXPECT_EQ(0u, descriptor.areas[1].slots);
  EXPECT_EQ(499u, other.areas[1].slots);
  other.RemoveLast();
  EXPECT_EQ(0u, other.areas[1].slots);
  EXPECT_EQ(364u, other.areas[0].slots);
  other.Clear();
  EXPECT_EQ(0u, other.areas[0].slots);
}

TEST(TernaryNodeDescriptor, ATableWithoutEntriesAddsNothing) {
  TernaryNodeDescriptor descriptor;
  descriptor.Append(Table(0, 0));
  EXPECT_EQ(1u, descriptor.tableCount);
  EXPECT_EQ(0u, descriptor.usedNodes);
  EXPECT_EQ(0u, descriptor.totalNodes);
}

TEST(TernaryNodeDescriptor, ClearedIsAsNew) {
  TernaryNodeDescriptor descriptor;
  descriptor.Append(Table(365, 300));
  descriptor.damaged = true;
  descriptor.Clear();
  EXPECT_EQ(nullptr, descriptor.firstTable);
  EXPECT_EQ(nullptr, descriptor.lastTable);
  EXPECT_EQ(nullptr, descriptor.tables[0]);
  EXPECT_EQ(0u, descriptor.tableCount);
  EXPECT_EQ(21u, descriptor.tableCapacity);
  EXPECT_EQ(0u, descriptor.usedNodes);
  EXPECT_EQ(0u, descriptor.totalNodes);
  EXPECT_FALSE(descriptor.damaged);
}

}  // namespace
}  // namespace tamu::registry::storetests
