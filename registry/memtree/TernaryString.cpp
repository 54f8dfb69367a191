#include "registry/memtree/TernaryString.h"

#include <memory>

#include "registry/store/Immortal.h"

namespace tamu::registry {

namespace {

Immortal<PathMemo> sPaths;
std::atomic<unsigned int> sCount{0};
std::atomic<unsigned int> sLocked{0};

}  // namespace

PathMemo* TernaryString::Paths() {
  return sLocked.load(std::memory_order_relaxed) == 0 ? &sPaths.value : nullptr;
}

void TernaryString::ForgetPaths() {
  sPaths.value.Forget();
}

unsigned int TernaryString::Count() {
  return sCount.load(std::memory_order_relaxed);
}

TernaryString::TernaryString(StringId nodeId, TernaryStringNode* record)
    : TernaryString(nodeId, *std::unique_ptr<TernaryStringNode>(record)) {}

TernaryString::TernaryString(StringId nodeId, const TernaryStringNode& record)
    : id(nodeId),
      node(record),
      isComplete(false),
      isBelowHandle(false),
      isOrphan(false),
      directoryKnown_(false) {
  setFlag(TernaryStringNode::kFlagLocked, false);
  setFlag(TernaryStringNode::kFlagWaiters, false);
  ++sCount;
}

TernaryString::~TernaryString() {
  --sCount;
  if (lockHandle != nullptr) --sLocked;
  ForgetPaths();
}

void TernaryString::setFlag(unsigned char flag, bool on) {
  node.setFlags(static_cast<unsigned char>(on ? node.flags() | flag : node.flags() & ~flag));
}

unsigned int TernaryString::GetDirectory(TernaryString*& out) const {
  out = directory;
  return directory == nullptr && isLocked() ? status::kBusy : status::kOk;
}

unsigned int TernaryString::SetDirectory(TernaryString* dir) {
  if (directory == nullptr && isLocked()) {
    parked = dir;
    lockHandle->parkedDirectory = dir;
    directoryKnown_ = true;
  } else {
    directory = dir;
  }
  node.setChild(dir != nullptr ? dir->id : StringId());
  return status::kOk;
}

// Who waits counts and blocks at the handle that has the string locked, so that its Unlock finds
// them, and gives up all levels of the tree's lock meanwhile, so that Unlock can take it.
unsigned int TernaryString::Lock(TernaryHandle* handle) {
  PCMutexGuard guard(*handle->treeLock);
  ++waiting;
  ++handle->lockers;
  while (isLocked()) {
    TernaryHandle* holder = lockHandle;
    setFlag(TernaryStringNode::kFlagWaiters, true);
    ++holder->waiterCount;
    const int levels = handle->treeLock->ReleaseAll();
    holder->wake.Take();
    holder->ack.Give();
    handle->treeLock->Retake(levels);
    setFlag(TernaryStringNode::kFlagWaiters, true);
  }
  --waiting;
  --handle->lockers;
  parked = directory;
  handle->parkedDirectory = directory;
  directoryKnown_ = directory != nullptr;
  directory = nullptr;
  lockHandle = handle;
  ++sLocked;
  ++handle->lockedStrings;
  setFlag(TernaryStringNode::kFlagLocked, true);
  return status::kOk;
}

// A directory that is in the file but was never loaded keeps its id in the record.
unsigned int TernaryString::Unlock() {
  TernaryHandle* handle = lockHandle;
  if (handle == nullptr) return status::kBadArgument;
  PCMutexGuard guard(*handle->treeLock);
  directory = parked;
  if (directoryKnown_) node.setChild(directory != nullptr ? directory->id : StringId());
  if (handle->parkedDirectory == parked) handle->parkedDirectory = nullptr;
  parked = nullptr;
  setFlag(TernaryStringNode::kFlagLocked, false);
  if ((node.flags() & TernaryStringNode::kFlagWaiters) != 0) {
    for (int woken = 0; woken < handle->waiterCount; ++woken) handle->wake.Give();
    for (; handle->waiterCount > 0; --handle->waiterCount) handle->ack.Take();
  }
  lockHandle = nullptr;
  --sLocked;
  --handle->lockedStrings;
  return status::kOk;
}

}  // namespace tamu::registry
