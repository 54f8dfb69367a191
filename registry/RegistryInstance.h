// What all Registry objects of the process on one path share.
#pragma once

#include "platform/PCFork.h"
#include "platform/PCMutex.h"
#include "platform/PCNotifier.h"
#include "registry/OpenTransaction.h"
#include "registry/base/List.h"

namespace tamu::registry {

class RegistryDaemon;
class TernaryKeyTree;
class TernaryRegistry;
struct TernaryHandle;

// Owns the trees and the handle table. The list of instances has no lock of its own: constructing,
// initialising and finalising Registry objects is serialised by the caller.
class RegistryInstance {
 public:
  // In a process that was forked, once: what the other one has opened is not known any more, and
  // stays as it is in memory.
  static void LeaveInherited();
  // The instance of the path, with one more reference, or a new one with the first. Null when there
  // is no memory.
  static RegistryInstance* CreateInstance(const char* path);
  // Drops a reference. kBusy while others are left; with the last the instance is gone: 0. The
  // trees and the handle table, if any, are then the caller's.
  static unsigned int DeleteInstance(RegistryInstance* instance);

  static RegistryInstance* sFirstInstance;

  char* path = nullptr;  // owned copy
  TernaryKeyTree* keyTree = nullptr;
  TernaryRegistry* fileTree = nullptr;
  RegistryDaemon* daemon = nullptr;  // a third backend, never made
  List<void*>* handles = nullptr;
  unsigned int refCount = 1;
  bool isWalked = false;  // there is a WalkScope, of the thread that holds operationLock
  const unsigned int fork = PCFork::Count();  // of the process that has made it
  RegistryInstance* next = nullptr;
  RegistryInstance* prev = nullptr;  // not followed: it may name an instance that is gone

  // Held over every operation on the trees. Taken after the file tree's object lock, by operations
  // without a handle, and before any lock of the key tree and the store.
  PCMutex operationLock;
  // Held by whoever changes something, and by a transaction from its begin to its end. Who waits
  // for it has none of the others, but for levels of the file tree's lock that a thread keeps for
  // good; who has it waits for that lock only where nobody keeps it.
  PCMutex changeLock;
  unsigned int keptLevels = 0;  // of the file tree's lock, by one thread; guarded by changeLock
  OpenTransaction transaction{*this};
  PCNotifier notifier;              // of ChangeDescriptor
  unsigned long long notified = 0;  // the change that it has told last; its thread's

  // What an open handle leads to; null for one that is not open. The tree's lock is held, or the
  // caller is one of its readers.
  TernaryHandle* Loaded(unsigned int handle) const {
    if (handles->isInvalidIndex(handle)) return nullptr;
    return static_cast<TernaryHandle*>(*handles->Get(handle));
  }
  // True for a visitor or rewriter of a client; asked before any lock is taken.
  bool IsWalkedHere() const { return operationLock.IsMine() && isWalked; }
  // While a visitor or rewriter runs: its thread holds operationLock and is refused what it asks.
  class WalkScope {
   public:
    explicit WalkScope(RegistryInstance& walked) : walked_(walked) { walked_.isWalked = true; }
    ~WalkScope() { walked_.isWalked = false; }
    WalkScope(const WalkScope&) = delete;
    WalkScope& operator=(const WalkScope&) = delete;

   private:
    RegistryInstance& walked_;
  };

 private:
  RegistryInstance() = default;
  ~RegistryInstance() { delete[] path; }
  static RegistryInstance* Make(const char* path);
};

}  // namespace tamu::registry
