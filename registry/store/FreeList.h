// The list of free slots of one allocation table.
#pragma once

#include "registry/format/NodeAllocationTable.h"
#include "registry/store/Changes.h"

namespace tamu::registry {

// Follows the chain of a slot in use to its end, at most `maxLength` slots; keeps them in `slots`
// unless that is null. kInvalidFile: the chain is longer, leaves the table, or the slot is free;
// kInputOutput.
Status MeasureChain(const StoreFile& file, const NodeAllocationTable& table, unsigned int slot,
                    unsigned int maxLength, unsigned int* length, unsigned int* slots,
                    unsigned int* last = nullptr);

// Takes slots from the list and gives them back, through a change. A failure leaves the list as it
// was, as far as that can be written.
class FreeList {
 public:
  FreeList(Changes& changes, NodeAllocationTable& table) : changes_(changes), table_(table) {}

  // Takes `count` slots as one chain and writes their numbers to `slots`, in chain order. kNoSpace:
  // fewer are free; kInvalidFile: the list is damaged; kInputOutput, kNoMemory.
  Status Take(unsigned int* slots, unsigned int count);
  // Gives back the chain that starts at `slot`, at most `maxLength` slots; it is handed out next.
  // kInvalidFile with nothing changed when the slot is free already or the chain is damaged.
  Status Release(unsigned int slot, unsigned int maxLength);

 private:
  Status WriteHead(unsigned int freeCount, unsigned int head);
  void Undo(const Changes::Mark& before, unsigned int freeBefore);

  Changes& changes_;
  NodeAllocationTable& table_;
};

}  // namespace tamu::registry
