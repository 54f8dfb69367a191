// Slots of the registry file, by kind.
#pragma once

#include "registry/base/Stack.h"
#include "registry/format/NodeId.h"

namespace tamu::registry {

// In the order in which they are listed. Order counts only within a kind: each has free lists of its
// own.
class SlotLists {
 public:
  Stack<unsigned int>& Of(NodeKind kind) { return kinds_[static_cast<unsigned int>(kind)]; }

 private:
  Stack<unsigned int> kinds_[kNodeKinds];
};

}  // namespace tamu::registry
