#include "registry/filetree/NewSlots.h"

namespace tamu::registry {

// A slot that cannot be given back stays taken.
NewSlots::~NewSlots() {
  for (unsigned int i = 0; i < kNodeKinds; ++i) {
    const NodeKind kind = static_cast<NodeKind>(i);
    for (unsigned int left = taken_.Count(kind); left > 0; --left) {
      store_.ReleaseSlot(changes_.id(), kind, taken_.At(kind, left - 1));
    }
  }
}

// What is taken is always remembered: there is room before it is taken.
unsigned int NewSlots::Take(NodeKind kind, unsigned int* id) {
  if (!taken_.HasRoom(kind)) return status::kInvalidFile;
  const unsigned int result = store_.AcquireSlot(changes_.id(), kind, id);
  return result == status::kOk ? taken_.Append(kind, *id) : result;
}

unsigned int NewSlots::TakeData(const void* data, unsigned int size, unsigned int* id) {
  if (!taken_.HasRoom(NodeKind::kData)) return status::kInvalidFile;
  const unsigned int result = store_.StoreData(changes_.id(), data, size, id);
  return result == status::kOk ? taken_.Append(NodeKind::kData, *id) : result;
}

}  // namespace tamu::registry
