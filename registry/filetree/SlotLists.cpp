#include "registry/filetree/SlotLists.h"

namespace tamu::registry {

unsigned int SlotLists::Reserve(const unsigned int (&counts)[kNodeKinds]) {
  for (unsigned int i = 0; i < kNodeKinds; ++i) {
    const unsigned int result = kinds_[i].Reserve(counts[i]);
    if (result != status::kOk) return result;
  }
  return status::kOk;
}

void SlotLists::Clear() {
  for (Stack<unsigned int>& list : kinds_) list.Clear();
}

}  // namespace tamu::registry
