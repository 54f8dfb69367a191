// The lock object of a registry object.
#pragma once

#include "platform/PCMutex.h"
#include "platform/PCSemaphore.h"

namespace tamu::registry {

// Made with a Registry's opening and destroyed with its closing; no operation takes it.
class RegistryLock {
 public:
  RegistryLock() = default;
  RegistryLock(const RegistryLock&) = delete;
  RegistryLock& operator=(const RegistryLock&) = delete;

  // Makes a lock object whose three semaphores exist, with the counts 1, 0 and 0; the caller owns
  // it. kNoMemory; kInputOutput when a semaphore cannot be made. *lock is then null.
  static unsigned int Make(RegistryLock** lock);

 private:
  struct Part {
    PCSemaphore semaphore;
    bool created = false;
  };

  static bool Create(Part* part, unsigned int count);

  PCMutex mutex_;
  Part first_;
  [[maybe_unused]] unsigned int firstCounter_ = 0;
  Part second_;
  Part third_;
  [[maybe_unused]] RegistryLock* self_ = this;
  [[maybe_unused]] unsigned int counters_[2] = {};
};

}  // namespace tamu::registry
