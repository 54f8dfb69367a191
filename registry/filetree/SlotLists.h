// Slots of the registry file, by kind.
#pragma once

#include "registry/Array.h"
#include "registry/store/TernaryFile.h"

namespace tamu::registry {

// What is to be given back, in the order in which it is listed or in the opposite one. Order counts
// only within a kind: each has free lists of its own.
class SlotLists {
 public:
  // Makes room for so many slots of each kind. kNoMemory.
  unsigned int Reserve(const unsigned int (&counts)[kNodeKinds]);
  // Adds a slot, making room if needed. kNoMemory.
  unsigned int Append(NodeKind kind, unsigned int id);
  // True when one more can be added without making room.
  bool HasRoom(NodeKind kind) const;
  void Clear();

  unsigned int Count(NodeKind kind) const { return Of(kind).count; }
  unsigned int At(NodeKind kind, unsigned int i) const { return *Of(kind).ids[i]; }

 private:
  struct Kind {
    Array<unsigned int> ids;
    unsigned int count = 0;
  };

  const Kind& Of(NodeKind kind) const { return kinds_[static_cast<unsigned int>(kind)]; }

  Kind kinds_[kNodeKinds];
};

}  // namespace tamu::registry
