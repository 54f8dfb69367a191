#include "registry/filetree/SlotLists.h"

namespace tamu::registry {

unsigned int SlotLists::Reserve(const unsigned int (&counts)[kNodeKinds]) {
  for (unsigned int i = 0; i < kNodeKinds; ++i) {
    const unsigned int result = kinds_[i].ids.EnsureCapacity(counts[i]);
    if (result != status::kOk) return result;
  }
  return status::kOk;
}

unsigned int SlotLists::Append(NodeKind kind, unsigned int id) {
  Kind& list = kinds_[static_cast<unsigned int>(kind)];
  const unsigned int result = list.ids.GrowTo(list.count + 1);
  if (result == status::kOk) *list.ids[list.count++] = id;
  return result;
}

bool SlotLists::HasRoom(NodeKind kind) const {
  return Of(kind).count < Of(kind).ids.capacity;
}

void SlotLists::Clear() {
  for (Kind& list : kinds_) list.count = 0;
}

}  // namespace tamu::registry
