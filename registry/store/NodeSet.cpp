#include "registry/store/NodeSet.h"

namespace tamu::registry {

unsigned int NodeSet::Prepare(const TernaryNodeDescriptor& descriptor) {
  tableCount_ = descriptor.tableCount;
  for (unsigned int i = 0; i < tableCount_; ++i) {
    firstBit_[i + 1] = firstBit_[i] + descriptor.tables[i]->entryCount();
  }
  const unsigned int size = firstBit_[tableCount_] / 8 + 1;
  return bits_.capacity >= size ? bits_.MemsetZero() : bits_.EnsureCapacity(size);
}

}  // namespace tamu::registry
