#include "registry/RegistryLock.h"

#include <new>

namespace tamu::registry {

bool RegistryLock::Create(Part* part, unsigned int count) {
  part->created = part->semaphore.Create(count) != 0;
  return part->created;
}

// The semaphores that were created are destroyed with the object.
RegistryLock* RegistryLock::Make() {
  RegistryLock* lock = new (std::nothrow) RegistryLock;
  if (lock == nullptr) return nullptr;
  if (Create(&lock->first_, 1) && Create(&lock->second_, 0) && Create(&lock->third_, 0)) return lock;
  delete lock;
  return nullptr;
}

}  // namespace tamu::registry
