// A counting semaphore.
#pragma once

#include "platform/Export.h"

class YAX_API PCSemaphore {
 public:
  // Not created: Take and Give answer 0 at once.
  constexpr PCSemaphore() = default;
  // Destroys the semaphore; nobody may be waiting for it.
  ~PCSemaphore();
  PCSemaphore(const PCSemaphore&) = delete;
  PCSemaphore& operator=(const PCSemaphore&) = delete;

  // Makes the semaphore with `initialCount`; one that exists is destroyed first.
  // Returns 1, or 0 when the system cannot give one (it is then not created).
  int Create(unsigned int initialCount);
  // Waits until the count is above 0 and lowers it. Returns 1; 0 without waiting when not created.
  int Take();
  // Lowers the count if it is above 0. Returns 1; 0, without waiting, when it is not, or not
  // created.
  int TryTake();
  // Raises the count and wakes one waiter. Returns 1; 0 when not created. A thread that Take lets
  // through may destroy the semaphore at once.
  int Give();
  // Gives the semaphore back; does nothing when not created. Returns 1.
  int Destroy();
  bool IsCreated() const { return mImpl != nullptr; }

 private:
  struct Impl;
  Impl* mImpl = nullptr;  // owned
};
