#include "registry/store/StoreAccess.h"

#include "registry/store/BlockChain.h"
#include "registry/store/ProcessFile.h"

namespace tamu::registry {

// The store's own lock comes first, then the one over the process's file, which stores share, then
// the one between processes.
StoreAccess::StoreAccess(FileStore& store, Sharing sharing)
    : store_(store), sharing_(sharing), isOutermost_(true) {
  if (IsReader()) {
    Know();
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

void StoreAccess::Know() {
  const unsigned int length = store_.file_.KnownLength();
  known_ = store_.file_.Mapped(0, length);
  if (known_ != nullptr && length > kDataBlockSize) knownEnd_ = length - kDataBlockSize;
}

template <NodeKind kind>
Status StoreAccess::ReadAs(unsigned int id, void* bytes) const {
  unsigned int offset = 0;
  if (SlotOf(id) != 0 && Resolve(kind, id, &offset).IsOk()) {
    constexpr unsigned int kRecordSize = RecordSizeOf(kind);
    const unsigned char* mapped = Mapped(offset, kRecordSize);
    if (mapped != nullptr) {
      std::memcpy(bytes, mapped, kRecordSize);
      if (store_.file_.Others().IsUnchanged()) return status::kOk;
      return Noted(status::kInputOutput);
    }
  }
  return ReadRecord(kind, id, bytes);
}
template Status StoreAccess::ReadAs<NodeKind::kString>(unsigned int, void*) const;
template Status StoreAccess::ReadAs<NodeKind::kKey>(unsigned int, void*) const;
template Status StoreAccess::ReadAs<NodeKind::kValue>(unsigned int, void*) const;

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

// A chain of one block, as most are.
bool StoreAccess::ReadBlock(DataId id, void* buffer, unsigned int size) const {
  unsigned int entryAt = 0;
  unsigned int offset = 0;
  if (!store_.tables_.ResolveEntry(NodeKind::kData, id, &entryAt).IsOk()) return false;
  if (!Resolve(NodeKind::kData, id, &offset).IsOk()) return false;
  const unsigned char* entry = Mapped(entryAt, NodeAllocationTable::kEntrySize);
  if (entry == nullptr || GetU32(entry) != 0) return false;
  const unsigned char* block = Mapped(offset, size);
  if (block == nullptr) return false;
  std::memcpy(buffer, block, size);
  return true;
}

Status StoreAccess::ReadData(DataId id, void* buffer, unsigned int* size) const {
  if (size == nullptr) return status::kBadArgument;
  if (*size == 0) return status::kOk;
  if (buffer == nullptr) return status::kBadArgument;
  if (*size <= kDataBlockSize && ReadBlock(id, buffer, *size)) {
    const bool isSure = store_.file_.Others().IsUnchanged();
    return Noted(isSure ? status::kOk : status::kInputOutput);
  }
  if (!store_.file_.IsOpen()) return status::kInputOutput;
  BlockChain chain(store_.tables_);
  const Status found = Noted(chain.Follow(store_.file_, id));
  return found.IsOk() ? Noted(chain.Read(store_.file_, buffer, size)) : found;
}

}  // namespace tamu::registry
