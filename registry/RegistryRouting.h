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

// Calls operation(tree, treeHandle) on the tree that `handle` leads to. The object is ready.
template <class Operation>
unsigned int Registry::Route(unsigned int handle, Operation operation) {
  if (instance->IsWalkedHere()) return status::kBusy;
  if (instance->transaction.IsMine()) return RouteInTransaction(handle, operation);
  OperationScope scope(*this, handle);
  RegistryInterface* tree = nullptr;
  void* treeHandle = nullptr;
  const unsigned int result = GetKeyTree(handle, tree, treeHandle);
  return result == status::kOk ? operation(*tree, treeHandle) : result;
}

// Whatever is loaded for everybody stays as it is, also without a handle.
template <class Operation>
unsigned int Registry::RouteInTransaction(unsigned int handle, Operation operation) {
  OpenTransaction& transaction = instance->transaction;
  if (handle == 0 && !transaction.MayUseFileTree()) return status::kBusy;
  OperationScope scope(*this, handle);
  OpenTransaction::Scope open(transaction);
  if (handle == 0) return operation(static_cast<RegistryInterface&>(*fileTree), nullptr);
  void* treeHandle = nullptr;
  const unsigned int result = transaction.FindHandle(handle, &treeHandle);
  if (result != status::kOk) return result;
  return operation(static_cast<RegistryInterface&>(*keyTree), treeHandle);
}

// The same for an operation that changes something. What it is to others is noted.
template <class Operation>
unsigned int Registry::RouteChange(unsigned int handle, ChangeKind kind, const char* keyPath,
                                   const char* valueName, Operation operation) {
  if (instance->IsWalkedHere()) return status::kBusy;
  ChangeScope changeScope(*this, handle);
  OpenTransaction& transaction = instance->transaction;
  if (!transaction.IsMine()) return Route(handle, operation);
  if (handle == 0 && !transaction.MayUseFileTree()) return status::kBusy;
  OperationScope scope(*this, handle);
  const HeldChange::Mark before = transaction.Here();
  const unsigned int result = RouteInTransaction(handle, operation);
  transaction.Note({kind, keyPath, valueName}, handle, result, before);
  return result;
}

}  // namespace tamu::registry
