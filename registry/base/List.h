// A table of slots whose indexes stay valid while the entry lives: the handle table.
#pragma once

#include "registry/base/Array.h"

namespace tamu::registry {

template <class T>
class List;

// Slot 0 is never handed out: 0 is the index of no entry. The table does not own its items, except
// that RemoveAll frees them.
template <>
class List<void*> {
 public:
  List() = default;
  ~List() = default;
  List(const List&) = delete;
  List& operator=(const List&) = delete;

  // Grows to n slots. 0 or kNoMemory.
  unsigned int EnsureCapacity(unsigned int n);
  // Marks a free slot used and returns its index; 0 when none can be had. The search goes up from
  // the slot handed out last, then from 1; the table doubles when only slot 0 would stay free.
  unsigned int AllocateSpace();
  // Stores `item` in a free slot and writes its index. 0 or kNoMemory (index untouched).
  unsigned int Add(void* item, unsigned int* index);
  // True when i is beyond the table or its slot is free; so for 0.
  bool isInvalidIndex(unsigned int i) const;
  // Address of the item of slot i, which must be valid.
  void** Get(unsigned int i) { return items[i]; }
  // Frees slot i, not its item. 0 or kBadArgument.
  unsigned int RemoveByIndex(unsigned int i);
  // Gives the item of every used slot back with operator delete (so they must be plain memory from
  // operator new), frees all slots; the next slot handed out is 1. The capacity stays. Returns 0.
  unsigned int RemoveAll();

  unsigned int count = 0;      // slots in use
  unsigned int capacity = 0;   // slots
  unsigned int lastIndex = 0;  // the slot handed out last
  Array<void*> items;
  Array<bool> used;

 private:
  unsigned int FindFree(unsigned int first, unsigned int end) const;
};

}  // namespace tamu::registry
