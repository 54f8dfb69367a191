// Loading and unloading.
#include <new>

#include "registry/base/RCEString.h"
#include "registry/memtree/SubtreeLoader.h"
#include "registry/memtree/TernaryKeyTree.h"
#include "registry/memtree/TreeRefresh.h"

namespace tamu::registry {

Status TernaryKeyTree::MakeHandle(const char* path, std::unique_ptr<TernaryHandle>* handle) {
  handle->reset(new (std::nothrow) TernaryHandle(path, &treeLock));
  if (*handle == nullptr) return status::kNoMemory;
  (*handle)->ownPath.reset(RCEString::Duplicate(path != nullptr ? path : ""));
  if ((*handle)->ownPath == nullptr) return status::kNoMemory;
  const bool made = (*handle)->wake.Create(0) && (*handle)->ack.Create(0);
  return made ? status::kOk : status::kInputOutput;
}

unsigned int TernaryKeyTree::LoadKeyTree(const char* keyPath, void*& tree) {
  return ChangeTree(true, [&]() -> Status {
    LockedAccess access(*file);
    SubtreeLoader::Loaded found;
    Status result = SubtreeLoader::LoadForHandle(access, loaded_, keyPath, &found);
    std::unique_ptr<TernaryHandle> handle;
    if (result.IsOk()) result = MakeHandle(keyPath, &handle);
    if (!result.IsOk()) return result;
    handle->leftOut = found.leftOut;
    tree = handle.get();
    loaded_.AddHandle(handle.release(), found.string, found.isBelowHandle);
    return result;
  });
}

void TernaryKeyTree::SetBehind() {
  PCMutexGuard guard(treeLock);
  loaded_.isBehind = true;
}

unsigned int TernaryKeyTree::Follow(const ChangeList& changes, unsigned int before) {
  PCMutexGuard guard(treeLock);
  if (initialized == 0) return status::kNoRight;
  LockedAccess access(*file);
  const bool isShared = file->IsShared();
  if (loaded_.isBehind || (isShared && loaded_.seen != before)) return CatchUp();
  const Status result = TreeRefresh(access, loaded_).Follow(changes);
  loaded_.isBehind = !result.IsOk();
  if (result.IsOk() && isShared) loaded_.seen = file->Version();
  return result;
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
