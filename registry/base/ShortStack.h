// A stack that is short as a rule.
#pragma once

#include <new>
#include <utility>

#include "platform/PCMem.h"
#include "registry/base/Status.h"

namespace tamu::registry {

// Elements are plain data. The first kShort lie in the object itself, more on the heap until the
// stack is cleared.
template <class T, unsigned int kShort>
class ShortStack {
 public:
  ShortStack() = default;
  ~ShortStack() { Clear(); }
  ShortStack(const ShortStack&) = delete;
  ShortStack& operator=(const ShortStack&) = delete;

  // Puts n elements of any content on top. kNoMemory with nothing changed.
  Status Extend(unsigned int n) {
    if (n > capacity_ - count_ && (n > kMost || !Grow(count_ + n))) return status::kNoMemory;
    count_ += n;
    return status::kOk;
  }
  // From now on the elements lie on the heap, until Clear: a Swap with an empty stack then copies
  // none. kNoMemory with nothing changed.
  Status MoveToHeap() {
    return items_ != few_ || Grow(kShort + 1) ? status::kOk : status::kNoMemory;
  }
  Status Push(const T& item) {
    const Status result = Extend(1);
    if (result.IsOk()) items_[count_ - 1] = item;
    return result;
  }
  // There must be one.
  const T& Top() const { return items_[count_ - 1]; }
  // The i-th from the bottom.
  T& operator[](unsigned int i) { return items_[i]; }
  const T& operator[](unsigned int i) const { return items_[i]; }
  unsigned int Count() const { return count_; }
  bool IsEmpty() const { return count_ == 0; }
  // Drops all but the n elements at the bottom.
  void CutTo(unsigned int n) { count_ = n; }
  void Swap(ShortStack& other) {
    const bool isShort = items_ == few_;
    const bool isOtherShort = other.items_ == other.few_;
    const unsigned int mine = isShort ? count_ : 0;
    const unsigned int others = isOtherShort ? other.count_ : 0;
    for (unsigned int i = 0; i < mine || i < others; ++i) std::swap(few_[i], other.few_[i]);
    std::swap(items_, other.items_);
    if (isOtherShort) items_ = few_;
    if (isShort) other.items_ = other.few_;
    std::swap(count_, other.count_);
    std::swap(capacity_, other.capacity_);
  }
  // Empties it, and gives back what it has on the heap.
  void Clear() {
    if (items_ != few_) delete[] items_;
    items_ = few_;
    capacity_ = kShort;
    count_ = 0;
  }

 private:
  static constexpr unsigned int kMost = 0x7FFFFFFF / sizeof(T);

  bool Grow(unsigned int n) {
    if (n > kMost / 2) return false;
    const unsigned int capacity = n > 2 * capacity_ ? n : 2 * capacity_;
    T* grown = new (std::nothrow) T[capacity];
    if (grown == nullptr) return false;
    PCMem::Copy(grown, items_, count_ * sizeof(T));
    if (items_ != few_) delete[] items_;
    items_ = grown;
    capacity_ = capacity;
    return true;
  }

  T few_[kShort];
  T* items_ = few_;
  unsigned int capacity_ = kShort;
  unsigned int count_ = 0;
};

}  // namespace tamu::registry
