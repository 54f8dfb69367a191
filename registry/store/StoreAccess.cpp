#include "registry/store/StoreAccess.h"

#include "registry/store/BlockChain.h"
#include "registry/store/ProcessFile.h"

namespace tamu::registry {

// The store's own lock comes first, then the one over the process's file, which stores share, then
// the one between processes.
StoreAccess::StoreAccess(FileStore& store, Sharing sharing)
    : store_(store), sharing_(sharing), isOutermost_(true) {
  if (IsReader()) {
    knownLength_ = store_.file_.KnownLength();
    known_ = store_.file_.Mapped(0, knownLength_);
    return;
  }
  store_.lock_.Take();
  PCMutex& processLock = ProcessFile::Lock();
  processLock.Take();
  isOutermost_ = processLock.Depth() == 1;
  if (sharing_ == Sharing::kAlone) store_.TakeLock();
  if (isOutermost_) store_.Enter();
}

StoreAccess::~StoreAccess() {
  if (IsReader()) return;
  PCMutex& processLock = ProcessFile::Lock();
  if (isOutermost_) store_.Leave();
  if (sharing_ == Sharing::kAlone) store_.GiveLock();
  if (processLock.Depth() == 1) ProcessFile::OperationEnds();
  processLock.Give();
  store_.lock_.Give();
}

Status StoreAccess::ReadRecord(NodeKind kind, unsigned int id, void* bytes) const {
  unsigned int offset = 0;
  const Status found = Resolve(kind, id, &offset);
  if (found.IsOk()) return Noted(store_.file_.Read(offset, RecordSizeOf(kind), bytes));
  return store_.file_.IsOpen() ? found : Status(status::kInputOutput);
}

bool StoreAccess::IsUsed(NodeKind kind, unsigned int id) const {
  unsigned int offset = 0;
  unsigned int entry = 0;
  if (!store_.tables_.ResolveEntry(kind, id, &offset).IsOk()) return false;
  return Noted(store_.file_.ReadInteger(offset, &entry)).IsOk() && entry == 0;
}

Status StoreAccess::ReadData(unsigned int id, void* buffer, unsigned int* size) const {
  if (size == nullptr) return status::kBadArgument;
  if (*size == 0) return status::kOk;
  if (buffer == nullptr) return status::kBadArgument;
  if (!store_.file_.IsOpen()) return status::kInputOutput;
  BlockChain chain(store_.tables_);
  const Status found = Noted(chain.Follow(store_.file_, id));
  return found.IsOk() ? Noted(chain.Read(store_.file_, buffer, size)) : found;
}

}  // namespace tamu::registry
