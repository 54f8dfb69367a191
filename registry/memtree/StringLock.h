// A string that is locked for the length of one change.
#pragma once

#include "registry/memtree/TernaryString.h"

namespace tamu::registry {

// Unlocks it at its end. The tree's lock is held, and nothing of the store: waiting for a string
// gives up the tree's lock alone.
class StringLock {
 public:
  StringLock() = default;
  ~StringLock() {
    if (string_ != nullptr) string_->Unlock();
  }
  StringLock(const StringLock&) = delete;
  StringLock& operator=(const StringLock&) = delete;

  // Locks the string if that needs no waiting. Else waits until it is unlocked and returns false
  // with nothing locked: whatever was found before may be gone.
  bool Take(TernaryString* string, TernaryHandle* handle) {
    const bool waits = string->isLocked();
    string->Lock(handle);
    if (waits) {
      string->Unlock();
      return false;
    }
    string_ = string;
    return true;
  }

 private:
  TernaryString* string_ = nullptr;
};

}  // namespace tamu::registry
