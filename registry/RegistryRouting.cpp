// How an operation of Registry reaches a key tree.
#include "registry/RegistryRouting.h"

namespace tamu::registry {

bool Registry::IsInherited() const {
  return instance != nullptr && instance->fork != PCFork::Count();
}

bool Registry::IsReady() const {
  return keyTree != nullptr && fileTree != nullptr && instance != nullptr && !IsInherited();
}

bool Registry::MayChange() const {
  return IsReady() && !keyTree->File()->IsReadOnly();
}

// Calls operation(tree, treeHandle) on the tree that `handle` leads to. The object is ready.
unsigned int Registry::Route(unsigned int handle, const TreeOperation& operation) {
  if (instance->IsWalkedHere()) return status::kBusy;
  if (instance->transaction.IsMine()) return RouteInTransaction(handle, operation);
  OperationScope scope(*this, handle);
  RegistryInterface* tree = nullptr;
  void* treeHandle = nullptr;
  const unsigned int result = GetKeyTree(handle, tree, treeHandle);
  return result == status::kOk ? operation(*tree, treeHandle) : result;
}

// True when an operation that only looks need not wait for those who have locked all operations.
bool Registry::MayLook(unsigned int handle) const {
  return (handle == 0) == (directMode != 0) && !instance->operationLock.IsOthers() &&
         !instance->IsWalkedHere() && !instance->transaction.IsMine();
}

// The same for an operation that only looks. Without a handle it takes no lock here where no
// handles are to be closed: the file tree sees to the rest.
unsigned int Registry::RouteLook(unsigned int handle, const TreeOperation& operation) {
  if (handle != 0 || !MayLook(0)) return Route(handle, operation);
  return operation(static_cast<RegistryInterface&>(*fileTree), nullptr);
}

// The same for an operation that threads may do beside each other through handles, too.
unsigned int Registry::RouteRead(unsigned int handle, const TreeOperation& operation) {
  if (handle != 0 && MayLook(handle)) {
    const PCReaders::Scope readers(keyTree->Readers(), keyTree->TreeLock());
    TernaryHandle* const loaded =
        readers.IsInside() && keyTree->IsReady() ? instance->Loaded(handle) : nullptr;
    if (loaded != nullptr) return operation(static_cast<RegistryInterface&>(*keyTree), loaded);
  }
  return RouteLook(handle, operation);
}

// Whatever is loaded for everybody stays as it is, also without a handle.
unsigned int Registry::RouteInTransaction(unsigned int handle, const TreeOperation& operation) {
  OpenTransaction& transaction = instance->transaction;
  if (handle == 0 && !transaction.MayUseFileTree()) return status::kBusy;
  OperationScope scope(*this, handle);
  OpenTransaction::Scope open(transaction);
  if (handle == 0) return operation(static_cast<RegistryInterface&>(*fileTree), nullptr);
  TernaryHandle* loaded = nullptr;
  const unsigned int result = transaction.FindHandle(handle, &loaded);
  if (result != status::kOk) return result;
  return operation(static_cast<RegistryInterface&>(*keyTree), loaded);
}

// The same for an operation that changes something. What it is to others is noted.
unsigned int Registry::RouteChange(unsigned int handle, ChangeKind kind, const char* keyPath,
                                   const char* valueName, const TreeOperation& operation) {
  if (instance->IsWalkedHere()) return status::kBusy;
  ChangeScope changeScope(*this, handle);
  OpenTransaction& transaction = instance->transaction;
  ChangeNote note;
  note.count = 1;
  note.changes[0] = {kind, keyPath, valueName};
  if (!transaction.IsMine()) {
    return Route(handle, [&](RegistryInterface& tree, void* treeHandle) {
      if (treeHandle != nullptr) note.base = static_cast<TernaryHandle*>(treeHandle)->ownPath.get();
      const StoreTelling telling(*keyTree->File(), &note);
      return operation(tree, treeHandle);
    });
  }
  if (handle == 0 && !transaction.MayUseFileTree()) return status::kBusy;
  OperationScope scope(*this, handle);
  const HeldChange::Mark before = transaction.Here();
  const StoreTelling telling(*keyTree->File(), &note);
  const unsigned int result = RouteInTransaction(handle, operation);
  transaction.Note(note, handle, result, before);
  return result;
}

// Calls operation(file tree) as an operation without a handle.
unsigned int Registry::OnFile(bool argumentsGiven, const FileOperation& operation) {
  if (!IsReady()) return status::kNoRight;
  if (!argumentsGiven) return status::kBadArgument;
  return RouteLook(0, [&](RegistryInterface&, void*) { return operation(*fileTree); });
}

unsigned int Registry::ChangeFile(bool argumentsGiven, ChangeKind kind, const char* keyPath,
                                  const char* valueName, const FileOperation& operation) {
  if (!MayChange()) return status::kNoRight;
  if (!argumentsGiven) return status::kBadArgument;
  return RouteChange(0, kind, keyPath, valueName,
                     [&](RegistryInterface&, void*) { return operation(*fileTree); });
}

}  // namespace tamu::registry
