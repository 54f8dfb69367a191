// The slots that a change of many steps has taken so far.
#pragma once

#include "registry/filetree/SlotLists.h"

namespace tamu::registry {

// Gives all of them back, the last first, unless they are kept.
class NewSlots {
 public:
  NewSlots(TernaryFile& store, TernaryFile::ChangeScope& changes)
      : store_(store), changes_(changes) {}
  ~NewSlots();
  NewSlots(const NewSlots&) = delete;
  NewSlots& operator=(const NewSlots&) = delete;

  // Makes room to remember so many slots of each kind (of data: chains). kNoMemory.
  unsigned int Prepare(const unsigned int (&counts)[kNodeKinds]) { return taken_.Reserve(counts); }
  // Takes a slot. kInvalidFile when there is no room to remember it; the statuses of AcquireSlot.
  unsigned int Take(NodeKind kind, unsigned int* id);
  // Stores data in a chain of blocks. The statuses of StoreData, and kInvalidFile as above.
  unsigned int TakeData(const void* data, unsigned int size, unsigned int* id);
  // The slots are in the registry now, for good.
  void Keep() { taken_.Clear(); }

 private:
  TernaryFile& store_;
  TernaryFile::ChangeScope& changes_;
  SlotLists taken_;
};

}  // namespace tamu::registry
