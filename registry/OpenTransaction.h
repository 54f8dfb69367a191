// The transaction that a registry file has open. Internal to Registry's sources.
#pragma once

#include "registry/base/ChangeNote.h"
#include "registry/memtree/TernaryKeyTree.h"
#include "registry/store/HeldChange.h"

namespace tamu::registry {

class RegistryInstance;

// From its begin to its end its thread holds the instance's change lock, a level for each begin.
// Its operations run in a Scope each: on the store as the transaction has it, and through handles
// on what it has loaded for itself. Nobody else sees either. At the end the store's changes become
// part of the file, and what is loaded for everybody follows them.
class OpenTransaction {
 public:
  class Scope;

  explicit OpenTransaction(RegistryInstance& instance) : instance_(instance) {}
  ~OpenTransaction() { Abort(); }
  OpenTransaction(const OpenTransaction&) = delete;
  OpenTransaction& operator=(const OpenTransaction&) = delete;

  // True when the calling thread has begun it.
  bool IsMine() const;
  // For the three of Registry.
  unsigned int Begin();
  unsigned int End();
  unsigned int Cancel();
  // Cancels the whole, whoever has begun it; nobody uses it meanwhile. Does nothing when none is
  // open.
  void Abort();

  // The rest is for the thread that has begun it. Before an operation without a handle: false when
  // another thread keeps the file tree's lock for good.
  bool MayUseFileTree() const;
  unsigned int OpenKey(const char* path, unsigned int* handle);
  unsigned int CloseKey(unsigned int handle);
  // In a scope: the loaded key of a handle. kBadArgument, or why it cannot be loaded.
  unsigned int FindHandle(unsigned int handle, TernaryHandle** loaded);
  // After the scope of an operation that may have changed something since it was `before`.
  void Note(const ChangeNote& note, unsigned int handle, unsigned int result,
            const HeldChange::Mark& before);
  HeldChange::Mark Here() const { return held_.Here(); }

 private:
  // What a cancel goes back to.
  struct Savepoint {
    HeldChange::Mark written;
    unsigned int noted = 0;       // changes
    unsigned int opened = 0;      // handles
    unsigned int keptLevels = 0;  // of the file tree's lock
    bool isAllNoted = true;
  };

  Status Open();
  void GoBackTo(const Savepoint& savepoint);
  void DropLoaded();
  void LetOthersFollow(unsigned int version);
  bool MayBeAborted() const;
  void Close();
  static void AbortThoseOfThisThread();

  friend struct ThreadEnd;

  RegistryInstance& instance_;
  HeldChange held_;
  LoadedStrings loaded_;  // in a scope: what everybody has loaded
  ChangeList changes_;
  ShortStack<Savepoint, 4> savepoints_;  // one for each begin
  unsigned int opened_ = 0;              // handles, ever
  bool isAllNoted_ = true;               // changes_ tells everything that is in the file
  bool isAllTold_ = true;                // changes_ tells all that operations have done
  bool isLoadedBehind_ = false;          // what it has loaded is to be loaded anew
  bool isDoomed_ = false;                // it cannot be ended but by cancelling it
  OpenTransaction* next_ = nullptr;      // of those that are open in the process
  OpenTransaction** place_ = nullptr;
};

// Holds the loaded tree and the store; what is read and changed in it is the transaction's.
class OpenTransaction::Scope {
 public:
  explicit Scope(OpenTransaction& transaction);
  ~Scope();
  Scope(const Scope&) = delete;
  Scope& operator=(const Scope&) = delete;

 private:
  OpenTransaction& transaction_;
  PCMutexGuard treeGuard_;
  HeldChange::Scope store_;
};

}  // namespace tamu::registry
