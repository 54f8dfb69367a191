// Loading and unloading.
#include <new>

#include "registry/memtree/SubtreeLoader.h"
#include "registry/memtree/TernaryKeyTree.h"

namespace tamu::registry {

namespace {

// True when a handle has loaded the key that was found, with all that is below it: one that starts
// there or above.
bool IsLoaded(const StringMatch& match) {
  const TernaryString& string = *match.string;
  if (string.key == nullptr) return false;
  return match.isBelowComplete || (string.loadCount > 0 && string.isComplete);
}

Status MakeHandle(const char* path, PCMutex* lock, std::unique_ptr<TernaryHandle>* handle) {
  handle->reset(new (std::nothrow) TernaryHandle(path, lock));
  if (*handle == nullptr) return status::kNoMemory;
  const bool made = (*handle)->wake.Create(0) && (*handle)->ack.Create(0);
  return made ? status::kOk : status::kInputOutput;
}

}  // namespace

unsigned int TernaryKeyTree::LoadKeyTree(const char* keyPath, void*& tree) {
  return InTree(true, [&]() -> Status {
    StoreAccess access(*file);
    if (!SubtreeLoader::HasRootKey(loaded_)) {
      const Status result = SubtreeLoader(access, loaded_).LoadRootKey();
      if (loaded_.start == nullptr) return result;  // its key may be damaged; others are not
    }
    Status result = status::kOk;
    StringMatch match;
    TernaryString* string = nullptr;
    if (SearchStrings(loaded_.start, keyPath, &match).IsOk() && IsLoaded(match)) {
      string = match.string;
      string->isComplete = true;
    } else {
      result = SubtreeLoader(access, loaded_).LoadKeyTree(keyPath, string);
    }
    std::unique_ptr<TernaryHandle> handle;
    if (result.IsOk()) result = MakeHandle(keyPath, &treeLock, &handle);
    if (!result.IsOk()) return result;
    tree = handle.get();
    loaded_.AddHandle(handle.release(), string, match.isBelowHandle);
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
