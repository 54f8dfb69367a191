// The lock that a registry's operations without a handle hold. Internal.
#pragma once

#include "registry/Registry.h"
#include "registry/RegistryInstance.h"
#include "registry/RegistryRouting.h"
#include "registry/filetree/TernaryRegistry.h"

namespace tamu::registry {

// A thread may keep a level of this lock for good (Registry::CreateKey). Whoever has a lock of its
// own to hold over such operations takes this one first, or lets its own go before it waits.
class RegistryFileLock {
 public:
  // Null when the object is not initialised. It is the registry's.
  static PCMutex* Of(const Registry& registry) {
    return registry.IsReady() ? &registry.fileTree->ObjectLock() : nullptr;
  }
  // What whoever changes something holds, too: to be taken before that one. Nobody waits for that
  // one, or for a lock of his own, while he has this.
  static PCMutex* OfChanges(const Registry& registry) {
    return registry.IsReady() ? &registry.instance->changeLock : nullptr;
  }
};

}  // namespace tamu::registry
