#include "registry/RegistryLock.h"

#include <new>

#include "registry/base/RegistryStatus.h"

namespace tamu::registry {

bool RegistryLock::Create(Part* part, unsigned int count) {
  part->created = part->semaphore.Create(count) != 0;
  return part->created;
}

// The semaphores that were created are destroyed with the object.
unsigned int RegistryLock::Make(RegistryLock** lock) {
  *lock = new (std::nothrow) RegistryLock;
  if (*lock == nullptr) return status::kNoMemory;
  RegistryLock& made = **lock;
  if (Create(&made.first_, 1) && Create(&made.second_, 0) && Create(&made.third_, 0)) {
    return status::kOk;
  }
  delete *lock;
  *lock = nullptr;
  return status::kInputOutput;
}

}  // namespace tamu::registry
