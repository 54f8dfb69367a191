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

bool NodeSet::Add(unsigned int id) {
  const unsigned int table = TableOf(id);
  if (table >= tableCount_) return false;
  if (SlotOf(id) >= firstBit_[table + 1] - firstBit_[table]) return false;
  const unsigned int bit = firstBit_[table] + SlotOf(id);
  unsigned char& byte = *bits_[bit / 8];
  const unsigned char mask = static_cast<unsigned char>(1u << (bit % 8));
  const bool isNew = (byte & mask) == 0;
  byte = static_cast<unsigned char>(byte | mask);
  return isNew;
}

}  // namespace tamu::registry
