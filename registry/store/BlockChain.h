// The data blocks of one value.
#pragma once

#include "registry/format/DataBlock.h"
#include "registry/store/TableMap.h"

namespace tamu::registry {

// The slots of a chain, at most kDataBlocksMax, all of one table.
class BlockChain {
 public:
  explicit BlockChain(const TableMap& tables) : tables_(tables) {}

  // Follows the chain that starts at `id`. kInvalidFile: there is none, it is damaged, or longer
  // than any value's; kInputOutput.
  Status Follow(const StoreFile& file, DataId id);
  // Reads up to *size bytes; *size becomes the bytes read. kInputOutput.
  Status Read(const StoreFile& file, void* buffer, unsigned int* size) const;
  // Of a chain that was followed.
  const NodeAllocationTable* Table() const { return table_; }
  const unsigned int* Slots() const { return slots_; }
  unsigned int Count() const { return count_; }

 private:
  const TableMap& tables_;
  const NodeAllocationTable* table_ = nullptr;
  unsigned int slots_[kDataBlocksMax];
  unsigned int count_ = 0;
};

}  // namespace tamu::registry
