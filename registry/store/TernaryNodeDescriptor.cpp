#include "registry/store/TernaryNodeDescriptor.h"

#include <utility>

namespace tamu::registry {

namespace {

unsigned int UsableIn(const NodeAllocationTable& table) {
  return table.entryCount() > 0 ? table.entryCount() - 1 : 0;
}

unsigned int UsedIn(const NodeAllocationTable& table) {
  const unsigned int usable = UsableIn(table);
  return usable > table.freeCount() ? usable - table.freeCount() : 0;
}

}  // namespace

void TernaryNodeDescriptor::Append(NodeAllocationTable* table) {
  if (firstTable == nullptr) firstTable = table;
  lastTable = table;
  tables[tableCount] = table;
  areas[tableCount] = {table->areaOffset(), UsableIn(*table)};
  ++tableCount;
  usedNodes += UsedIn(*table);
  totalNodes += UsableIn(*table);
}

void TernaryNodeDescriptor::RemoveLast() {
  --tableCount;
  usedNodes -= UsedIn(*lastTable);
  totalNodes -= UsableIn(*lastTable);
  delete lastTable;
  tables[tableCount] = nullptr;
  areas[tableCount] = Area();
  lastTable = tables[tableCount - 1];
}

void TernaryNodeDescriptor::Clear() {
  for (unsigned int i = 0; i < tableCount; ++i) {
    delete tables[i];
    tables[i] = nullptr;
    areas[i] = Area();
  }
  firstTable = nullptr;
  lastTable = nullptr;
  tableCount = 0;
  usedNodes = 0;
  totalNodes = 0;
  damaged = false;
}

void TernaryNodeDescriptor::Swap(TernaryNodeDescriptor& other) {
  std::swap(firstTable, other.firstTable);
  std::swap(lastTable, other.lastTable);
  std::swap(tableCount, other.tableCount);
  std::swap(tableCapacity, other.tableCapacity);
  std::swap(usedNodes, other.usedNodes);
  std::swap(totalNodes, other.totalNodes);
  std::swap(tables, other.tables);
  std::swap(areas, other.areas);
  std::swap(damaged, other.damaged);
}

}  // namespace tamu::registry
