// How much a store can still hand out.
#pragma once

#include "registry/store/TernaryFile.h"

namespace tamu::registry {

// Reckons what a series of acquisitions would answer, without making them: a table is drawn from
// until it has too few free slots, then another is appended, as long as there may be one more. Free
// slots of older tables count with SpacePolicy::kReuse alone. What only the acquisition itself can
// find out (a damaged free list, a full disk) is not foreseen.
class SlotBudget {
 public:
  // An access to the store is held.
  explicit SlotBudget(const TernaryFile& store);
  // Takes `count` slots at once, at most 499. 0; kLimit when there are no more; kInvalidFile when
  // the kind is damaged.
  unsigned int Take(NodeKind kind, unsigned int count);

 private:
  struct Kind {
    bool usable = false;
    unsigned int tables = 0;  // whose free slots are told below; the last is the newest
    unsigned int freeSlots[kTablesMax] = {};
    unsigned int tablesLeft = 0;
  };
  static bool TakeFrom(unsigned int* freeSlots, unsigned int count);

  Kind kinds_[kNodeKinds];
  bool mayGrow_;
  bool reusesSpace_;
};

}  // namespace tamu::registry
