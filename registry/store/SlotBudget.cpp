#include "registry/store/SlotBudget.h"

namespace tamu::registry {

SlotBudget::SlotBudget(const TernaryFile& store)
    : mayGrow_(store.MayGrow()), reusesSpace_(store.ReusesSpace()) {
  for (unsigned int i = 0; i < kNodeKinds; ++i) {
    const TernaryNodeDescriptor& descriptor = store.Descriptor(static_cast<NodeKind>(i));
    if (descriptor.damaged || descriptor.lastTable == nullptr) continue;
    Kind& kind = kinds_[i];
    kind.usable = true;
    kind.tables = descriptor.tableCount;
    for (unsigned int t = 0; t < kind.tables; ++t) {
      kind.freeSlots[t] = descriptor.tables[t]->freeCount();
    }
    kind.tablesLeft = descriptor.tableCapacity - descriptor.tableCount;
  }
}

bool SlotBudget::TakeFrom(unsigned int* freeSlots, unsigned int count) {
  if (count > *freeSlots) return false;
  *freeSlots -= count;
  return true;
}

// As Changes takes them: of the newest table, else of the oldest, else of one that is appended.
unsigned int SlotBudget::Take(NodeKind kind, unsigned int count) {
  Kind& from = kinds_[static_cast<unsigned int>(kind)];
  if (!from.usable) return status::kInvalidFile;
  if (TakeFrom(&from.freeSlots[from.tables - 1], count)) return status::kOk;
  for (unsigned int t = 0; reusesSpace_ && t + 1 < from.tables; ++t) {
    if (TakeFrom(&from.freeSlots[t], count)) return status::kOk;
  }
  if (!mayGrow_) return status::kInvalidFile;
  if (from.tablesLeft == 0) return status::kLimit;
  --from.tablesLeft;
  from.freeSlots[from.tables++] = TernaryFile::kExpansionSlots - 1 - count;
  return status::kOk;
}

}  // namespace tamu::registry
