// Which nodes of a kind a walk has met.
#pragma once

#include "registry/base/Array.h"
#include "registry/store/TernaryNodeDescriptor.h"

namespace tamu::registry {

// A bit for each slot that the tables of the kind have; about 1.3 KB for a file that has grown as
// far as it can. The links of a sound file form a tree: what is met a second time is damage.
class NodeSet {
 public:
  // Makes room for all slots of the kind and forgets what was added. 0 or kNoMemory.
  unsigned int Prepare(const TernaryNodeDescriptor& descriptor);
  // Adds a node. False when it was added before, or names no slot.
  bool Add(unsigned int id) {
    unsigned int bit = 0;
    if (!FindBit(id, &bit)) return false;
    unsigned char& byte = *bits_[bit / 8];
    const unsigned int mask = 1u << (bit % 8);
    const bool isNew = (byte & mask) == 0;
    byte = static_cast<unsigned char>(byte | mask);
    return isNew;
  }
  bool Has(unsigned int id) const {
    unsigned int bit = 0;
    return FindBit(id, &bit) && (*bits_[bit / 8] & 1u << (bit % 8)) != 0;
  }

 private:
  // False when there is no such slot.
  bool FindBit(unsigned int id, unsigned int* bit) const {
    const unsigned int table = TableOf(id);
    if (table >= tableCount_) return false;
    const unsigned int first = firstBit_[table];
    if (SlotOf(id) >= firstBit_[table + 1] - first) return false;
    *bit = first + SlotOf(id);
    return true;
  }

  Array<unsigned char> bits_;
  unsigned int tableCount_ = 0;
  unsigned int firstBit_[TernaryNodeDescriptor::kTableCapacity + 1] = {};  // of each table
};

}  // namespace tamu::registry
