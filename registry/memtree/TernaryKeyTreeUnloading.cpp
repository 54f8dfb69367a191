// Unloading subtrees. Nothing here writes to the file.
#include <initializer_list>

#include "registry/memtree/StringWalk.h"
#include "registry/memtree/TernaryKeyTree.h"

namespace tamu::registry {

namespace {

// Why a string stays when the walk leaves it.
constexpr unsigned int kInUse = 1;        // it is a handle's, or locked: everything below stays too
constexpr unsigned int kLeadsToUsed = 2;  // something below it stays

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

void TernaryKeyTree::AddHandle(TernaryHandle* handle) {
  handle->next = handles;
  handle->place = &handles;
  if (handles != nullptr) handles->place = &handle->next;
  handles = handle;
}

void TernaryKeyTree::RemoveHandle(TernaryHandle* handle) {
  *handle->place = handle->next;
  if (handle->next != nullptr) handle->next->place = handle->place;
}

// Tells the strings of handles below a key whether one starts above them, as far as that comes with
// this key: those that are below one another know it already.
void TernaryKeyTree::TellBelow(TernaryString* string, bool isBelowHandle) {
  StringWalk walk(kStoredOrder);
  walk.Start(string->isLocked() ? string->parked : string->directory);
  for (; !walk.IsOver(); walk.Next()) {
    TernaryString& s = walk.Current();
    if (s.isLocked()) s.directory = walk.IsEntered() ? s.parked : nullptr;
    if (!walk.IsEntered()) continue;
    const TernaryString* parent = walk.Parent();
    if (parent != nullptr && parent->loadCount > 0 && walk.Via() == NodeLink::kChild) {
      walk.SkipLinks();
    } else if (s.loadCount > 0) {
      s.isBelowHandle = isBelowHandle;
    }
  }
}

// Keeps a string with all that it leads to until nobody uses it any more, though nothing leads
// there.
void TernaryKeyTree::AddOrphan(TernaryString* string) {
  TernaryString** list = string->loadCount > 0 ? &orphans : &looseOrphans;
  string->isOrphan = true;
  string->nextOrphan = *list;
  string->orphanPlace = list;
  if (*list != nullptr) (*list)->orphanPlace = &string->nextOrphan;
  *list = string;
}

// Takes an orphan at which no handle starts any more out of its list, and frees it unless it is
// busy. What is in use below it becomes an orphan of its own.
void TernaryKeyTree::FreeOrphan(TernaryString* orphan) {
  *orphan->orphanPlace = orphan->nextOrphan;
  if (orphan->nextOrphan != nullptr) orphan->nextOrphan->orphanPlace = orphan->orphanPlace;
  orphan->orphanPlace = nullptr;
  StringWalk walk(kStoredOrder);
  for (walk.Start(orphan); !walk.IsOver(); walk.Next()) {
    TernaryString& s = walk.Current();
    if (walk.IsEntered()) {
      if (s.isInUse()) walk.SkipLinks();
    } else if (s.isInUse()) {
      AddOrphan(&s);
    } else {
      if (s.key != nullptr) UnloadKey(s.key);
      delete &s;
    }
  }
}

// There are no more of them than threads that change something, so looking at all is cheap.
void TernaryKeyTree::FreeLooseOrphans() {
  for (TernaryString* orphan = looseOrphans; orphan != nullptr;) {
    TernaryString* next = orphan->nextOrphan;
    if (!orphan->isBusy()) FreeOrphan(orphan);
    orphan = next;
  }
}

// The last handle of a string is gone. A subtree stays as long as a handle starts above it: what
// such a handle does not find it would take for missing, and create anew over what is in the file.
void TernaryKeyTree::LetGoOf(TernaryString* start) {
  if (start->orphanPlace != nullptr) {
    FreeOrphan(start);
  } else if (!start->isOrphan && !start->isBelowHandle) {
    if (handles != nullptr) TellBelow(start, false);
    UnloadFrom(start, false);
  }
}

unsigned int TernaryKeyTree::UnloadKeyTree(void* tree) {
  PCMutexGuard guard(treeLock);
  if (tree == nullptr) {
    FreeLooseOrphans();
    if (startString != nullptr && startString->loadCount == 0) UnloadFrom(startString, true);
    return status::kOk;
  }
  if (initialized == 0) return status::kNoRight;
  TernaryHandle* handle = static_cast<TernaryHandle*>(tree);
  if (handle->lockedStrings > 0 || handle->waiterCount > 0 || handle->lockers > 0) {
    return status::kBusy;
  }
  TernaryString* start = handle->start;
  RemoveHandle(handle);
  delete handle;
  if (start->loadCount > 0) --start->loadCount;
  if (start->loadCount == 0) LetGoOf(start);
  FreeLooseOrphans();
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
  for (TernaryString** list : {&orphans, &looseOrphans}) {
    while (*list != nullptr) {
      TernaryString* orphan = *list;
      *list = orphan->nextOrphan;
      FreeFrom(orphan);
    }
  }
  while (handles != nullptr) {
    TernaryHandle* handle = handles;
    handles = handle->next;
    delete handle;
  }
}

}  // namespace tamu::registry
