// A stack that is short as a rule.
#pragma once

#include <type_traits>

#include "registry/base/Status.h"

namespace tamu::registry {

// What short stacks of all elements have in common.
class ShortStackMemory {
 public:
  ShortStackMemory(const ShortStackMemory&) = delete;
  ShortStackMemory& operator=(const ShortStackMemory&) = delete;

  unsigned int Count() const { return count_; }
  bool IsEmpty() const { return count_ == 0; }
  // Drops all but the n elements at the bottom.
  void CutTo(unsigned int n) { count_ = n; }

 protected:
  // Where the first elements lie, how many, and the size of each.
  struct Few {
    void* place;
    unsigned int count;
    unsigned int size;
  };

  explicit ShortStackMemory(const Few& few) : items_(few.place), capacity_(few.count) {}
  ~ShortStackMemory() = default;
  bool Grow(const Few& few, unsigned int n);
  void Exchange(const Few& few, ShortStackMemory& other, const Few& others);
  void Free(const Few& few);

  void* items_;
  unsigned int capacity_;
  unsigned int count_ = 0;
};

// Elements are plain data. The first kShort lie in the object itself, more on the heap until the
// stack is cleared.
template <class T, unsigned int kShort>
class ShortStack : public ShortStackMemory {
  static_assert(std::is_trivially_copyable<T>::value, "plain data");

 public:
  ShortStack() : ShortStackMemory(Inside()) {}
  ~ShortStack() { Clear(); }

  // Puts n elements of any content on top. kNoMemory with nothing changed.
  Status Extend(unsigned int n) {
    if (n > capacity_ - count_ && (n > kMost || !Grow(Inside(), count_ + n))) {
      return status::kNoMemory;
    }
    count_ += n;
    return status::kOk;
  }
  // From now on the elements lie on the heap, until Clear: a Swap with an empty stack then copies
  // none. kNoMemory with nothing changed.
  Status MoveToHeap() {
    return items_ != few_ || Grow(Inside(), kShort + 1) ? status::kOk : status::kNoMemory;
  }
  Status Push(const T& item) {
    const Status result = Extend(1);
    if (result.IsOk()) Items()[count_ - 1] = item;
    return result;
  }
  // There must be one.
  T& Top() { return Items()[count_ - 1]; }
  const T& Top() const { return Items()[count_ - 1]; }
  // The i-th from the bottom.
  T& operator[](unsigned int i) { return Items()[i]; }
  const T& operator[](unsigned int i) const { return Items()[i]; }
  void Swap(ShortStack& other) { Exchange(Inside(), other, other.Inside()); }
  // Empties it, and gives back what it has on the heap.
  void Clear() { Free(Inside()); }

 private:
  static constexpr unsigned int kMost = 0x7FFFFFFF / sizeof(T);

  Few Inside() { return {few_, kShort, sizeof(T)}; }
  T* Items() const { return static_cast<T*>(items_); }

  alignas(T) unsigned char few_[kShort * sizeof(T)];
};

}  // namespace tamu::registry
