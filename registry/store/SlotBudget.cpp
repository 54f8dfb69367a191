#include "registry/store/SlotBudget.h"

namespace tamu::registry {

SlotBudget::SlotBudget(const TernaryFile& store) : mayGrow_(store.MayGrow()) {
  for (unsigned int i = 0; i < kNodeKinds; ++i) {
    const TernaryNodeDescriptor& descriptor = store.Descriptor(static_cast<NodeKind>(i));
    if (descriptor.damaged || descriptor.lastTable == nullptr) continue;
    kinds_[i].usable = true;
    kinds_[i].freeSlots = descriptor.lastTable->freeCount();
    kinds_[i].tablesLeft = descriptor.tableCapacity - descriptor.tableCount;
  }
}

unsigned int SlotBudget::Take(NodeKind kind, unsigned int count) {
  Kind& from = kinds_[static_cast<unsigned int>(kind)];
  if (!from.usable) return status::kInvalidFile;
  if (count > from.freeSlots) {
    if (!mayGrow_) return status::kInvalidFile;
    if (from.tablesLeft == 0) return status::kLimit;
    --from.tablesLeft;
    from.freeSlots = TernaryFile::kExpansionSlots - 1;
  }
  from.freeSlots -= count;
  return status::kOk;
}

}  // namespace tamu::registry
