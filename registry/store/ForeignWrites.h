// Whether another process has written the file while it was read here.
#pragma once

#include <atomic>

#include "platform/PCWord.h"

namespace tamu::registry {

class ForeignWrites {
 public:
  // Whatever is read from now on was there while the word was `value`, or the read answers
  // kInputOutput (IsTorn). Null: nobody else writes.
  void Watch(const unsigned int* word, unsigned int value) {
    word_ = word;
    expected_ = value;
  }
  bool IsWatched(unsigned int value) const { return word_ != nullptr && expected_ == value; }
  // True when a read has failed because the word had another value by then.
  bool IsTorn() const { return isTorn_.load(std::memory_order_relaxed); }
  void SetTorn(bool isTorn) const { isTorn_.store(isTorn, std::memory_order_relaxed); }
  // Tells, and remembers, whether what was read before the call was there at the same time.
  bool IsUnchanged() const {
    if (word_ == nullptr || PCWord::LoadBehindReads(word_) == expected_) return true;
    SetTorn(true);
    return false;
  }

 private:
  const unsigned int* word_ = nullptr;
  unsigned int expected_ = 0;  // value of the word
  mutable std::atomic<bool> isTorn_{false};
};

}  // namespace tamu::registry
