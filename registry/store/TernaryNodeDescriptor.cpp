#include "registry/store/TernaryNodeDescriptor.h"

namespace tamu::registry {

void TernaryNodeDescriptor::Append(NodeAllocationTable* table) {
  if (firstTable == nullptr) firstTable = table;
  lastTable = table;
  tables[tableCount] = table;
  ++tableCount;
  const unsigned int usable = table->entryCount() > 0 ? table->entryCount() - 1 : 0;
  usedNodes += usable > table->freeCount() ? usable - table->freeCount() : 0;
  totalNodes += usable;
}

void TernaryNodeDescriptor::Clear() {
  for (unsigned int i = 0; i < tableCount; ++i) {
    delete tables[i];
    tables[i] = nullptr;
  }
  firstTable = nullptr;
  lastTable = nullptr;
  tableCount = 0;
  usedNodes = 0;
  totalNodes = 0;
  damaged = false;
}

}  // namespace tamu::registry
