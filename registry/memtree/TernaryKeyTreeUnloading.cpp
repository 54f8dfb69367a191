// Unloading subtrees. Nothing here writes to the file.
#include "platform/PCString.h"
#include "registry/memtree/StringWalk.h"
#include "registry/memtree/TernaryKeyTree.h"

namespace tamu::registry {

namespace {

// Why a string stays when the walk leaves it.
constexpr unsigned int kInUse = 1;        // it is a handle's, or locked: everything below stays too
constexpr unsigned int kLeadsToUsed = 2;  // something below it stays

// True when `path` names a key below `ancestor`.
bool IsBelow(const char* path, const char* ancestor) {
  if (ancestor[0] == 0) return path[0] != 0;
  while (*ancestor != 0 && *ancestor == *path) {
    ++ancestor;
    ++path;
  }
  return *ancestor == 0 && *path == '/';
}

}  // namespace

unsigned int TernaryKeyTree::UnloadValues(TernaryKey* key) {
  while (key->firstValue != nullptr) {
    TernaryValue* value = key->firstValue;
    key->firstValue = value->next;
    delete value;
  }
  return status::kOk;
}

unsigned int TernaryKeyTree::UnloadKey(TernaryKey* key) {
  const unsigned int result = UnloadValues(key);
  delete key;
  return result;
}

// kBusy when something stays; what leads there stays too, without keys.
unsigned int TernaryKeyTree::RecursiveUnloadKeyTree(TernaryString* string) {
  unsigned int result = status::kOk;
  StringWalk walk(kStoredOrder);
  for (walk.Start(string); !walk.IsOver(); walk.Next()) {
    TernaryString& s = walk.Current();
    if (walk.IsEntered()) {
      if (!s.isInUse()) continue;
      s.walkMark = kInUse;
      walk.SkipLinks();
      continue;
    }
    if (s.walkMark != kInUse && s.key != nullptr) {
      UnloadKey(s.key);
      s.key = nullptr;
    }
    TernaryString* parent = walk.Parent();
    if (s.walkMark != 0) {
      if (parent != nullptr) parent->walkMark = kLeadsToUsed;
      if (parent == nullptr) result = status::kBusy;
      continue;
    }
    if (parent != nullptr) SlotOf(*parent, walk.Via()) = nullptr;
    delete &s;
  }
  return result;
}

// Drops what was loaded from a string on, as far as nothing needs it. Of the root string nothing
// goes while something is left below it; it goes itself when it is the root key's, or `always`.
void TernaryKeyTree::UnloadFrom(TernaryString* string, bool always) {
  if (string->isBusy()) return;
  if (string->directory != nullptr && RecursiveUnloadKeyTree(string->directory) == status::kOk) {
    string->directory = nullptr;
  }
  const bool stays = string->directory != nullptr;
  if (string == startString && stays) return;
  bool isRoot = always;
  if (string->key != nullptr) {
    isRoot = isRoot || string->key->node->isRoot();
    UnloadKey(string->key);
    string->key = nullptr;
  }
  if (string != startString || stays || !isRoot) return;
  delete string;
  startString = nullptr;
}

void TernaryKeyTree::RemoveHandle(TernaryHandle* handle) {
  TernaryHandle** place = &handles;
  while (*place != nullptr && *place != handle) place = &(*place)->next;
  if (*place != nullptr) *place = handle->next;
}

bool TernaryKeyTree::IsBelowAnother(const TernaryHandle* handle) const {
  for (const TernaryHandle* other = handles; other != nullptr; other = other->next) {
    if (!other->start->isOrphan && IsBelow(handle->normalizedPath, other->normalizedPath))
      return true;
  }
  return false;
}

// Frees what was deleted while it was in use and is not any more.
void TernaryKeyTree::FreeOrphans() {
  TernaryString** place = &orphans;
  while (*place != nullptr) {
    TernaryString* next = (*place)->nextOrphan;
    if (RecursiveUnloadKeyTree(*place) == status::kOk) {
      *place = next;
    } else {
      place = &(*place)->nextOrphan;
    }
  }
}

// A subtree stays as long as a handle starts at its key or above it: what such a handle does not
// find it would take for missing, and create anew over what is in the file.
unsigned int TernaryKeyTree::UnloadKeyTree(void* tree) {
  PCMutexGuard guard(treeLock);
  if (tree == nullptr) {
    FreeOrphans();
    if (startString != nullptr && startString->loadCount == 0) UnloadFrom(startString, true);
    return status::kOk;
  }
  if (initialized == 0) return status::kNoRight;
  TernaryHandle* handle = static_cast<TernaryHandle*>(tree);
  if (handle->lockedStrings > 0 || handle->waiterCount > 0 || handle->lockers > 0) {
    return status::kBusy;
  }
  TernaryString* start = handle->start;
  if (start->loadCount > 0) --start->loadCount;
  RemoveHandle(handle);
  const bool needed = start->isOrphan || start->loadCount > 0 || IsBelowAnother(handle);
  delete handle;
  if (!needed) UnloadFrom(start, false);
  FreeOrphans();
  return status::kOk;
}

unsigned int TernaryKeyTree::UnloadAll() {
  PCMutexGuard guard(treeLock);
  for (TernaryHandle* handle = handles; handle != nullptr;) {
    TernaryHandle* next = handle->next;
    UnloadKeyTree(handle);
    handle = next;
  }
  UnloadKeyTree(nullptr);
  return handles != nullptr ? status::kBusy : status::kOk;
}

// What hangs on a string and the string itself, whatever still needs it.
void TernaryKeyTree::FreeFrom(TernaryString* string) {
  StringWalk walk(kStoredOrder);
  for (walk.Start(string); !walk.IsOver(); walk.Next()) {
    TernaryString& s = walk.Current();
    if (walk.IsEntered()) {
      if (s.isLocked()) s.directory = s.parked;
      continue;
    }
    if (s.key != nullptr) UnloadKey(s.key);
    delete &s;
  }
}

void TernaryKeyTree::FreeEverything() {
  FreeFrom(startString);
  startString = nullptr;
  while (orphans != nullptr) {
    TernaryString* orphan = orphans;
    orphans = orphan->nextOrphan;
    FreeFrom(orphan);
  }
  while (handles != nullptr) {
    TernaryHandle* handle = handles;
    handles = handle->next;
    delete handle;
  }
}

}  // namespace tamu::registry
