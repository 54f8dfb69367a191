#include "registry/base/List.h"

namespace tamu::registry {

unsigned int List<void*>::EnsureCapacity(unsigned int n) {
  if (items.EnsureCapacity(n) != status::kOk) return status::kNoMemory;
  if (used.EnsureCapacity(n, false) != status::kOk) return status::kNoMemory;
  if (n > capacity) capacity = n;
  return status::kOk;
}

// The first free slot in [first, end); 0 when there is none.
unsigned int List<void*>::FindFree(unsigned int first, unsigned int end) const {
  for (unsigned int i = first; i < end; ++i) {
    if (!*used[i]) return i;
  }
  return 0;
}

unsigned int List<void*>::AllocateSpace() {
  if (count + 1 >= capacity) {
    const unsigned int doubled = capacity == 0 ? 2 : capacity * 2;
    if (doubled <= capacity || EnsureCapacity(doubled) != status::kOk) return 0;
  }
  unsigned int slot = FindFree(lastIndex + 1, capacity);
  if (slot == 0) slot = FindFree(1, lastIndex);
  if (slot == 0 && lastIndex > 0) slot = FindFree(lastIndex, lastIndex + 1);
  if (slot == 0) return 0;
  lastIndex = slot;
  ++count;
  *used[slot] = true;
  return slot;
}

unsigned int List<void*>::Add(void* item, unsigned int* index) {
  const unsigned int slot = AllocateSpace();
  if (slot == 0) return status::kNoMemory;
  *items[slot] = item;
  *index = slot;
  return status::kOk;
}

bool List<void*>::isInvalidIndex(unsigned int i) const {
  return i >= capacity || !*used[i];
}

unsigned int List<void*>::RemoveByIndex(unsigned int i) {
  if (isInvalidIndex(i)) return status::kBadArgument;
  *used[i] = false;
  --count;
  return status::kOk;
}

unsigned int List<void*>::RemoveAll() {
  for (unsigned int i = 1; i < capacity; ++i) {
    if (*used[i]) ::operator delete(*items[i]);
  }
  used.MemsetZero();
  lastIndex = 0;
  count = 0;
  return status::kOk;
}

}  // namespace tamu::registry
