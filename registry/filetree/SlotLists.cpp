#include "registry/filetree/SlotLists.h"

namespace tamu::registry {

Status SlotLists::Reserve(const unsigned int (&counts)[kNodeKinds]) {
  for (unsigned int i = 0; i < kNodeKinds; ++i) {
    const Status result = kinds_[i].Reserve(counts[i]);
    if (!result.IsOk()) return result;
  }
  return status::kOk;
}

void SlotLists::Clear() {
  for (Stack<unsigned int>& list : kinds_) list.Clear();
}

}  // namespace tamu::registry
