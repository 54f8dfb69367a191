#include "registry/filetree/backup/NewSlots.h"

namespace tamu::registry {

// A slot that cannot be given back stays taken.
NewSlots::~NewSlots() {
  for (unsigned int i = 0; i < kNodeKinds; ++i) {
    const NodeKind kind = static_cast<NodeKind>(i);
    Stack<unsigned int>& ids = taken_.Of(kind);
    while (!ids.IsEmpty()) store_.ReleaseSlot(changes_.id(), kind, ids.Pop());
  }
}

// What is taken is always remembered: there is room before it is taken.
unsigned int NewSlots::Take(NodeKind kind, unsigned int* id) {
  Stack<unsigned int>& ids = taken_.Of(kind);
  if (!ids.HasRoom()) return status::kInvalidFile;
  const unsigned int result = store_.AcquireSlot(changes_.id(), kind, id);
  return result == status::kOk ? ids.Push(*id) : result;
}

unsigned int NewSlots::TakeData(const void* data, unsigned int size, unsigned int* id) {
  Stack<unsigned int>& ids = taken_.Of(NodeKind::kData);
  if (!ids.HasRoom()) return status::kInvalidFile;
  const unsigned int result = store_.StoreData(changes_.id(), data, size, id);
  return result == status::kOk ? ids.Push(*id) : result;
}

}  // namespace tamu::registry
