// How an operation of Registry reaches a key tree. Internal to Registry's sources.
#pragma once

#include "registry/Registry.h"
#include "registry/RegistryInstance.h"
#include "registry/filetree/TernaryRegistry.h"
#include "registry/memtree/TernaryKeyTree.h"

namespace tamu::registry {

inline bool Registry::IsInherited() const {
  return instance != nullptr && instance->fork != PCFork::Count();
}

inline bool Registry::IsReady() const {
  return keyTree != nullptr && fileTree != nullptr && instance != nullptr && !IsInherited();
}

// Holds an operation's locks until the backend has returned. An operation without a handle takes
// the file tree's lock first: a thread may keep a level of it for good, and whoever waits for it
// must not hold what operations through handles need.
class Registry::OperationScope {
 public:
  OperationScope(Registry& registry, unsigned int handle)
      : fileLock_(handle == 0 ? &registry.fileTree->ObjectLock() : nullptr),
        operationLock_(registry.instance->operationLock) {
    if (fileLock_ != nullptr) fileLock_->Take();
    operationLock_.Take();
  }
  ~OperationScope() {
    operationLock_.Give();
    if (fileLock_ != nullptr) fileLock_->Give();
  }
  OperationScope(const OperationScope&) = delete;
  OperationScope& operator=(const OperationScope&) = delete;

 private:
  PCMutex* fileLock_;
  PCMutex& operationLock_;
};

// Calls operation(tree, treeHandle) on the tree that `handle` leads to. The object is ready.
template <class Operation>
unsigned int Registry::Route(unsigned int handle, Operation operation) {
  if (instance->IsWalkedHere()) return status::kBusy;
  OperationScope scope(*this, handle);
  RegistryInterface* tree = nullptr;
  void* treeHandle = nullptr;
  const unsigned int result = GetKeyTree(handle, tree, treeHandle);
  return result == status::kOk ? operation(*tree, treeHandle) : result;
}

}  // namespace tamu::registry
