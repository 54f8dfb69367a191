// A stack that grows on the heap.
#pragma once

#include "registry/base/Array.h"

namespace tamu::registry {

// Elements are plain data. What a walk still has to do is kept here, however deep a tree is. A
// reference to an element is good until the next Push.
template <class T>
class Stack {
 public:
  // kNoMemory with nothing changed.
  unsigned int Push(const T& item) {
    const unsigned int result = items_.GrowTo(count_ + 1);
    if (result == status::kOk) *items_[count_++] = item;
    return result;
  }
  // Adds an element that is whatever was there before. Null without memory.
  T* PushAny() { return items_.GrowTo(count_ + 1) == status::kOk ? items_[count_++] : nullptr; }
  // There must be one.
  void Drop() { --count_; }
  T Pop() { return *items_[--count_]; }
  T& Top() { return *items_[count_ - 1]; }
  const T& Top() const { return *items_[count_ - 1]; }
  // The one `depth` below the top.
  const T& Below(unsigned int depth) const { return *items_[count_ - 1 - depth]; }
  // The i-th from the bottom.
  T& operator[](unsigned int i) { return *items_[i]; }
  const T& operator[](unsigned int i) const { return *items_[i]; }

  unsigned int Count() const { return count_; }
  bool IsEmpty() const { return count_ == 0; }
  void Clear() { count_ = 0; }
  // Makes room for n elements in all; kNoMemory.
  unsigned int Reserve(unsigned int n) { return items_.EnsureCapacity(n); }
  // True when the next Push needs no memory.
  bool HasRoom() const { return count_ < items_.capacity; }

 private:
  Array<T> items_;
  unsigned int count_ = 0;
};

}  // namespace tamu::registry
