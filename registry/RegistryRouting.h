// How an operation of Registry reaches a key tree. Internal to Registry's sources.
#pragma once

#include "registry/Registry.h"
#include "registry/RegistryInstance.h"
#include "registry/base/FunctionRef.h"
#include "registry/filetree/TernaryRegistry.h"
#include "registry/memtree/TernaryKeyTree.h"

namespace tamu::registry {

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

// Holds what whoever changes something needs before the locks of the operation. Nobody waits for
// the file tree's lock while he has the change lock: a thread may keep it for good.
class Registry::ChangeScope {
 public:
  ChangeScope(Registry& registry, unsigned int handle)
      : instance_(*registry.instance), fileLock_(registry.fileTree->ObjectLock()) {
    levelsBefore_ = LevelsOfFileLock();
    for (;;) {
      instance_.changeLock.Take();
      if (handle != 0 || instance_.transaction.IsMine()) return;
      if (fileLock_.TryTake() != 0) break;
      instance_.changeLock.Give();
      fileLock_.Take();
      fileLock_.Give();
    }
    hasFileLock_ = true;
  }
  ~ChangeScope() {
    if (hasFileLock_) fileLock_.Give();
    instance_.keptLevels += static_cast<unsigned int>(LevelsOfFileLock() - levelsBefore_);
    instance_.changeLock.Give();
  }
  ChangeScope(const ChangeScope&) = delete;
  ChangeScope& operator=(const ChangeScope&) = delete;

 private:
  int LevelsOfFileLock() const { return fileLock_.IsMine() ? fileLock_.Depth() : 0; }

  RegistryInstance& instance_;
  PCMutex& fileLock_;
  int levelsBefore_ = 0;
  bool hasFileLock_ = false;
};

}  // namespace tamu::registry
