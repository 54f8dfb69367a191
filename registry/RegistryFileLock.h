// The lock that a registry's operations without a handle hold. Internal.
#pragma once

#include "registry/RegistryRouting.h"

namespace tamu::registry {

// A thread may keep a level of this lock for good (Registry::CreateKey). Whoever has a lock of its
// own to hold over such operations takes this one first, or lets its own go before it waits.
class RegistryFileLock {
 public:
  // Null when the object is not initialised. It is the registry's.
  static PCMutex* Of(const Registry& registry) {
    return registry.IsReady() ? &registry.fileTree->ObjectLock() : nullptr;
  }
};

}  // namespace tamu::registry
