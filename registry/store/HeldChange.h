// A change that stays open between operations.
#pragma once

#include "registry/store/Changes.h"

namespace tamu::registry {

// What several operations write is one change: each is a part of it when it runs in a Scope.
// Outside of scopes the store is for everybody what it was before the change, and nobody changes
// anything: the caller sees to that, and other processes wait with their changes. Whatever the
// durability, nothing but the tables of a growth is in the file before the end. One thread at a
// time.
class HeldChange {
 public:
  using Mark = UndoLog::Mark;
  class Scope;

  HeldChange() = default;
  HeldChange(const HeldChange&) = delete;
  HeldChange& operator=(const HeldChange&) = delete;

  // kNoMemory; kInputOutput when nothing can be written now; kBusy within a Changes.
  Status Begin(FileStore& store);
  bool IsOpen() const { return store_ != nullptr; }
  // A place to which UndoTo takes back what was written after it. Not in a scope.
  Mark Here() const { return undo_.Here(); }
  // False: the change can only be cancelled.
  bool UndoTo(const Mark& mark);
  // Makes it a part of the file, whole or not at all, and ends it: the statuses of Changes::Keep.
  Status End();
  // Ends it with nothing changed.
  void Cancel();

 private:
  void Exchange();
  Status Finish(bool isKept);

  FileStore* store_ = nullptr;
  // In a scope: those of the store as it is for everybody.
  TableMap tables_;
  UndoLog undo_;
  ChangeSet gathered_;
  bool isGathering_ = false;
  unsigned int changes_ = 0;
};

// Holds the store; what is read and written in it is the change's.
class HeldChange::Scope {
 public:
  explicit Scope(HeldChange& change) : change_(change), access_(*change.store_) {
    change_.Exchange();
  }
  ~Scope() { change_.Exchange(); }
  Scope(const Scope&) = delete;
  Scope& operator=(const Scope&) = delete;

 private:
  HeldChange& change_;
  StoreAccess access_;
};

}  // namespace tamu::registry
