// Slots of the registry file, by kind.
#pragma once

#include "registry/base/Stack.h"
#include "registry/store/TernaryFile.h"

namespace tamu::registry {

// What is to be given back, in the order in which it is listed or in the opposite one. Order counts
// only within a kind: each has free lists of its own.
class SlotLists {
 public:
  // Makes room for so many slots of each kind. kNoMemory.
  Status Reserve(const unsigned int (&counts)[kNodeKinds]);
  Stack<unsigned int>& Of(NodeKind kind) { return kinds_[static_cast<unsigned int>(kind)]; }
  void Clear();

 private:
  Stack<unsigned int> kinds_[kNodeKinds];
};

}  // namespace tamu::registry
