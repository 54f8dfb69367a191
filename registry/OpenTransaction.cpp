#include "registry/OpenTransaction.h"

#include <memory>

#include "registry/RegistryInstance.h"
#include "registry/filetree/TernaryRegistry.h"
#include "registry/store/Immortal.h"

namespace tamu::registry {

namespace {

Immortal<PCMutex> sListLock;
OpenTransaction* sFirst = nullptr;  // of the list of those that are open

// Nothing else is taken under it.
PCMutex& ListLock() {
  static const int sCreated = sListLock.value.Create();
  static_cast<void>(sCreated);
  return sListLock.value;
}

}  // namespace

// Cancels what its thread has left open.
struct ThreadEnd {
  ~ThreadEnd() {
    if (isArmed) OpenTransaction::AbortThoseOfThisThread();
  }
  bool isArmed = false;
};

namespace {

thread_local ThreadEnd sThreadEnd;

}  // namespace

bool OpenTransaction::IsMine() const {
  return instance_.changeLock.IsMine() && !savepoints_.IsEmpty();
}

// What a process had open when this one was forked is not this one's.
bool OpenTransaction::MayBeAborted() const {
  return IsMine() && instance_.fork == PCFork::Count();
}

bool OpenTransaction::MayUseFileTree() const {
  return instance_.keptLevels == 0 || instance_.fileTree->ObjectLock().IsMine();
}

Status OpenTransaction::Open() {
  PCMutexGuard guard(instance_.operationLock);
  const Status result = held_.Begin(*instance_.keyTree->File());
  if (!result.IsOk()) return result;
  isAllNoted_ = true;
  isAllTold_ = true;
  isLoadedBehind_ = false;
  isDoomed_ = false;
  PCMutexGuard listGuard(ListLock());
  next_ = sFirst;
  place_ = &sFirst;
  if (next_ != nullptr) next_->place_ = &next_;
  sFirst = this;
  sThreadEnd.isArmed = true;
  return result;
}

// Whether it was ended or cancelled, it is over.
void OpenTransaction::Close() {
  DropLoaded();
  changes_.Clear();
  savepoints_.Clear();
  PCMutexGuard listGuard(ListLock());
  *place_ = next_;
  if (next_ != nullptr) next_->place_ = place_;
}

unsigned int OpenTransaction::Begin() {
  instance_.changeLock.Take();
  Savepoint savepoint;
  savepoint.noted = changes_.Count();
  savepoint.opened = opened_;
  savepoint.keptLevels = instance_.keptLevels;
  savepoint.isAllNoted = isAllNoted_;
  const bool isFirst = savepoints_.IsEmpty();
  if (!isFirst) savepoint.written = held_.Here();
  Status result = savepoints_.Push(savepoint);
  if (result.IsOk() && isFirst) {
    result = Open();
    if (!result.IsOk()) savepoints_.CutTo(0);
  }
  if (!result.IsOk()) instance_.changeLock.Give();
  return result;
}

unsigned int OpenTransaction::End() {
  if (!IsMine()) return status::kBadArgument;
  Status result = status::kOk;
  if (savepoints_.Count() > 1) {
    savepoints_.CutTo(savepoints_.Count() - 1);
  } else {
    PCMutexGuard guard(instance_.operationLock);
    TernaryFile& file = *instance_.keyTree->File();
    const unsigned int version = file.IsShared() ? file.Version() : 0;
    ChangeNote note;
    note.list = &changes_;
    const StoreTelling telling(file, isAllTold_ ? &note : nullptr);
    result = isDoomed_ ? Status(status::kInputOutput) : held_.End();
    if (result.IsOk()) {
      LetOthersFollow(version);
    } else {
      held_.Cancel();
      GoBackTo(savepoints_[0]);
    }
    Close();
  }
  instance_.changeLock.Give();
  return result;
}

unsigned int OpenTransaction::Cancel() {
  if (!IsMine()) return status::kBadArgument;
  {
    PCMutexGuard guard(instance_.operationLock);
    const Savepoint savepoint = savepoints_.Top();
    if (savepoints_.Count() > 1) {
      PCMutexGuard treeGuard(instance_.keyTree->TreeLock());
      if (!held_.UndoTo(savepoint.written)) isDoomed_ = true;
      GoBackTo(savepoint);
      savepoints_.CutTo(savepoints_.Count() - 1);
    } else {
      held_.Cancel();
      GoBackTo(savepoint);
      Close();
    }
  }
  instance_.changeLock.Give();
  return status::kOk;
}

// The thread that has begun it may be another: then its levels of the locks stay its own.
void OpenTransaction::Abort() {
  if (savepoints_.IsEmpty()) return;
  held_.Cancel();
  GoBackTo(savepoints_[0]);
  unsigned int levels = savepoints_.Count();
  Close();
  for (; levels > 0; --levels) instance_.changeLock.Give();
}

void OpenTransaction::AbortThoseOfThisThread() {
  for (;;) {
    OpenTransaction* mine = nullptr;
    {
      PCMutexGuard listGuard(ListLock());
      for (mine = sFirst; mine != nullptr && !mine->MayBeAborted();) mine = mine->next_;
    }
    if (mine == nullptr) return;
    PCMutexGuard guard(mine->instance_.operationLock);
    mine->Abort();
  }
}

// What is in the store has gone back already. The handles that were opened since are closed, and
// what keys that are not there have left of the file tree's lock is given back.
void OpenTransaction::GoBackTo(const Savepoint& savepoint) {
  PCMutexGuard treeGuard(instance_.keyTree->TreeLock());
  DropLoaded();
  List<void*>& handles = *instance_.handles;
  for (unsigned int i = 1; i < handles.capacity; ++i) {
    TernaryHandle* const handle = instance_.Loaded(i);
    if (handle == nullptr || !handle->isHidden || handle->openedAt < savepoint.opened) continue;
    handles.RemoveByIndex(i);
    instance_.keyTree->UnloadKeyTree(handle);
  }
  changes_.CutTo(savepoint.noted);
  isAllNoted_ = savepoint.isAllNoted;
  for (; instance_.keptLevels > savepoint.keptLevels; --instance_.keptLevels) {
    instance_.fileTree->ObjectLock().Give();
  }
}

// What cannot follow now does so before the next operation through a handle.
void OpenTransaction::LetOthersFollow(unsigned int version) {
  PCMutexGuard treeGuard(instance_.keyTree->TreeLock());
  for (TernaryHandle* each = instance_.keyTree->Handles(); each != nullptr; each = each->next) {
    if (each->isHidden) each->isAwaited = true;
    each->isHidden = false;
  }
  if (!isAllNoted_) {
    instance_.keyTree->SetBehind();
  } else {
    instance_.keyTree->Follow(changes_, version);
  }
}

void OpenTransaction::DropLoaded() {
  PCMutexGuard treeGuard(instance_.keyTree->TreeLock());
  for (TernaryHandle* each = instance_.keyTree->Handles(); each != nullptr; each = each->next) {
    each->counterpart = nullptr;
  }
  loaded_.FreeEverything();
  isLoadedBehind_ = false;
}

unsigned int OpenTransaction::FindHandle(unsigned int handle, TernaryHandle** loaded) {
  TernaryHandle* const shared = instance_.Loaded(handle);
  if (shared == nullptr) return status::kBadArgument;
  if (shared->counterpart == nullptr) {
    const bool hasKey =
        shared->start != nullptr ? !shared->start->isOrphan : shared->isHidden || shared->isAwaited;
    if (!hasKey) return status::kBadArgument;
    void* tree = nullptr;
    const unsigned int result = instance_.keyTree->LoadKeyTree(shared->ownPath.get(), tree);
    if (result != status::kOk) return result == status::kNotFound ? status::kBadArgument : result;
    auto* const mine = static_cast<TernaryHandle*>(tree);
    const unsigned int leftOut = mine->leftOut;
    if (leftOut == status::kNoMemory || leftOut == status::kInputOutput) {
      instance_.keyTree->UnloadKeyTree(mine);
      return leftOut;
    }
    shared->counterpart = mine;
  }
  *loaded = shared->counterpart;
  return status::kOk;
}

// For others it leads nowhere until the end.
unsigned int OpenTransaction::OpenKey(const char* path, unsigned int* handle) {
  PCMutexGuard guard(instance_.operationLock);
  Scope scope(*this);
  void* mine = nullptr;
  Status result = instance_.keyTree->LoadKeyTree(path, mine);
  if (!result.IsOk()) return result;
  std::unique_ptr<TernaryHandle> shared;
  result = instance_.keyTree->MakeHandle(path, &shared);
  if (result.IsOk()) result = instance_.handles->Add(shared.get(), handle);
  if (!result.IsOk()) {
    instance_.keyTree->UnloadKeyTree(mine);
    return result;
  }
  shared->isHidden = true;
  shared->openedAt = opened_++;
  shared->counterpart = static_cast<TernaryHandle*>(mine);
  loaded_.AddHandle(shared.release());
  return result;
}

// Closed at once, for everybody and for good.
unsigned int OpenTransaction::CloseKey(unsigned int handle) {
  PCMutexGuard guard(instance_.operationLock);
  PCMutexGuard treeGuard(instance_.keyTree->TreeLock());
  TernaryHandle* const shared = instance_.Loaded(handle);
  if (shared == nullptr) return status::kBadArgument;
  instance_.handles->RemoveByIndex(handle);
  if (shared->counterpart != nullptr) {
    Scope scope(*this);
    // A scope may have dropped what was loaded.
    if (shared->counterpart != nullptr) instance_.keyTree->UnloadKeyTree(shared->counterpart);
    shared->counterpart = nullptr;
  }
  const unsigned int result = instance_.keyTree->UnloadKeyTree(shared);
  if (instance_.handles->count == 0) instance_.keyTree->UnloadKeyTree(nullptr);
  return result;
}

void OpenTransaction::Note(const ChangeNote& note, unsigned int handle, unsigned int result,
                           const HeldChange::Mark& before) {
  const bool hasWritten = Here().entries != before.entries;
  if (handle == 0 && hasWritten) isLoadedBehind_ = true;
  if (result != status::kOk) {
    if (hasWritten) isAllNoted_ = false;  // a name that was cut stays so
    return;
  }
  const char* base = handle != 0 ? instance_.Loaded(handle)->ownPath.get() : nullptr;
  for (unsigned int i = 0; i < note.count; ++i) {
    const Change& change = note.changes[i];
    if (changes_.Add(change.kind, base, change.keyPath, change.valueName) != status::kOk) {
      isAllNoted_ = false;
      isAllTold_ = false;
    }
  }
}

OpenTransaction::Scope::Scope(OpenTransaction& transaction)
    : transaction_(transaction),
      treeGuard_(transaction.instance_.keyTree->TreeLock()),
      store_(transaction.held_) {
  if (transaction_.isLoadedBehind_) transaction_.DropLoaded();
  transaction_.instance_.keyTree->Exchange(transaction_.loaded_);
}

OpenTransaction::Scope::~Scope() {
  transaction_.instance_.keyTree->Exchange(transaction_.loaded_);
}

}  // namespace tamu::registry
