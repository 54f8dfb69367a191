// Loading and unloading.
#include <new>

#include "registry/base/RCEString.h"
#include "registry/memtree/SubtreeLoader.h"
#include "registry/memtree/TernaryKeyTree.h"
#include "registry/memtree/TreeRefresh.h"

namespace tamu::registry {

namespace {

Status MakeHandle(const char* path, PCMutex* lock, std::unique_ptr<TernaryHandle>* handle) {
  handle->reset(new (std::nothrow) TernaryHandle(path, lock));
  if (*handle == nullptr) return status::kNoMemory;
  (*handle)->ownPath.reset(RCEString::Duplicate(path != nullptr ? path : ""));
  if ((*handle)->ownPath == nullptr) return status::kNoMemory;
  const bool made = (*handle)->wake.Create(0) && (*handle)->ack.Create(0);
  return made ? status::kOk : status::kInputOutput;
}

}  // namespace

unsigned int TernaryKeyTree::LoadKeyTree(const char* keyPath, void*& tree) {
  return ChangeTree(true, [&]() -> Status {
    LockedAccess access(*file);
    SubtreeLoader::Loaded found;
    Status result = SubtreeLoader::LoadForHandle(access, loaded_, keyPath, &found);
    std::unique_ptr<TernaryHandle> handle;
    if (result.IsOk()) result = MakeHandle(keyPath, &treeLock, &handle);
    if (!result.IsOk()) return result;
    tree = handle.get();
    loaded_.AddHandle(handle.release(), found.string, found.isBelowHandle);
    return result;
  });
}

void TernaryKeyTree::SetBehind() {
  PCMutexGuard guard(treeLock);
  isBehind_ = true;
}

unsigned int TernaryKeyTree::Follow(const ChangeList& changes) {
  return InTree(true, [&]() -> Status {
    LockedAccess access(*file);
    const Status result = TreeRefresh(access, loaded_).Follow(changes);
    isBehind_ = !result.IsOk();
    return result;
  });
}

unsigned int TernaryKeyTree::UnloadKeyTree(void* tree) {
  PCMutexGuard guard(treeLock);
  if (tree == nullptr) {
    loaded_.DropUnneeded();
    return status::kOk;
  }
  if (initialized == 0) return status::kNoRight;
  return loaded_.DropHandle(static_cast<TernaryHandle*>(tree));
}

unsigned int TernaryKeyTree::UnloadAll() {
  PCMutexGuard guard(treeLock);
  for (TernaryHandle* handle = loaded_.Handles(); handle != nullptr;) {
    TernaryHandle* next = handle->next;
    UnloadKeyTree(handle);
    handle = next;
  }
  UnloadKeyTree(nullptr);
  return loaded_.Handles() != nullptr ? status::kBusy : status::kOk;
}

}  // namespace tamu::registry
