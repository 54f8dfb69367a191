// Nothing here writes to the file.
#include "registry/memtree/LoadedStrings.h"

#include <utility>

#include "registry/memtree/StringWalk.h"

namespace tamu::registry {

namespace {

// Why a string stays when the walk leaves it.
constexpr unsigned int kInUse = 1;        // it is a handle's, or locked: everything below stays too
constexpr unsigned int kLeadsToUsed = 2;  // something below it stays

// What hangs on a string and the string itself, whatever still needs it.
void FreeFrom(TernaryString* string) {
  StringWalk walk(kStoredOrder);
  for (walk.Start(string); !walk.IsOver(); walk.Next()) {
    TernaryString& s = walk.Current();
    if (walk.IsEntered()) {
      if (s.isLocked()) s.directory = s.parked;
      continue;
    }
    LoadedStrings::UnloadKey(s.key);
    delete &s;
  }
}

}  // namespace

void LoadedStrings::UnloadValues(TernaryKey* key) {
  while (key->firstValue != nullptr) {
    TernaryValue* value = key->firstValue;
    key->firstValue = value->next;
    delete value;
  }
}

void LoadedStrings::UnloadKey(TernaryKey* key) {
  if (key == nullptr) return;
  UnloadValues(key);
  delete key;
}

// kBusy when something stays; what leads there stays too, without keys.
Status LoadedStrings::RecursiveUnloadKeyTree(TernaryString* string) {
  Status result = status::kOk;
  StringWalk walk(kStoredOrder);
  for (walk.Start(string); !walk.IsOver(); walk.Next()) {
    TernaryString& s = walk.Current();
    if (walk.IsEntered()) {
      if (!s.isInUse()) continue;
      s.walkMark = kInUse;
      walk.SkipLinks();
      continue;
    }
    if (s.walkMark != kInUse) {
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
void LoadedStrings::UnloadFrom(TernaryString* string, bool always) {
  if (string->isBusy()) return;
  if (string->directory != nullptr && RecursiveUnloadKeyTree(string->directory) == status::kOk) {
    string->directory = nullptr;
  }
  const bool stays = string->directory != nullptr;
  if (string == start && stays) return;
  bool isRoot = always;
  if (string->key != nullptr) {
    isRoot = isRoot || string->key->node.isRoot();
    UnloadKey(string->key);
    string->key = nullptr;
  }
  if (string != start || stays || !isRoot) return;
  delete string;
  start = nullptr;
}

void LoadedStrings::AddStart(TernaryString* string, bool isBelowHandle) {
  if (string->loadCount == 0) {
    // What was not loaded before the search has no handles: it has met all that are above.
    string->isBelowHandle = isBelowHandle;
    if (!isBelowHandle) TellBelow(string, true);
  }
  ++string->loadCount;
}

void LoadedStrings::AddHandle(TernaryHandle* handle, TernaryString* string, bool isBelowHandle) {
  if (handles_ != nullptr || string->loadCount > 0) {
    AddStart(string, isBelowHandle);
  } else {  // nobody is below
    string->isBelowHandle = isBelowHandle;
    ++string->loadCount;
  }
  handle->start = string;
  AddHandle(handle);
}

void LoadedStrings::AddHandle(TernaryHandle* handle) {
  handle->next = handles_;
  handle->place = &handles_;
  if (handles_ != nullptr) handles_->place = &handle->next;
  handles_ = handle;
}

// Tells the strings of handles below a key whether one starts above them, as far as that comes with
// this key: those that are below one another know it already.
void LoadedStrings::TellBelow(TernaryString* string, bool isBelowHandle) {
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
void LoadedStrings::AddOrphan(TernaryString* string) {
  StringWalk walk(kStoredOrder);
  // What is below an orphan is marked already.
  walk.Start(string->isOrphan ? nullptr : string);
  for (; !walk.IsOver(); walk.Next()) walk.Current().isOrphan = true;
  TernaryString** list = string->loadCount > 0 ? &orphans_ : &looseOrphans_;
  string->nextOrphan = *list;
  string->orphanPlace = list;
  if (*list != nullptr) (*list)->orphanPlace = &string->nextOrphan;
  *list = string;
}

// Test: TernaryKeyTreeDeletionTest.WhatAHandleNeedsStaysForIt
void LoadedStrings::RecursiveDeleteKeyTree(TernaryString* string) {
  TernaryString::ForgetPaths();  // of those that stay
  StringWalk walk(kStoredOrder);
  for (walk.Start(string); !walk.IsOver(); walk.Next()) {
    TernaryString& s = walk.Current();
    if (walk.IsEntered()) {
      if (s.isInUse()) walk.SkipLinks();
    } else if (s.isInUse()) {
      AddOrphan(&s);
    } else {
      UnloadKey(s.key);
      delete &s;
    }
  }
}

// Takes an orphan at which no handle starts any more out of its list, and frees it unless it is
// busy. What is in use below it becomes an orphan of its own.
void LoadedStrings::FreeOrphan(TernaryString* orphan) {
  *orphan->orphanPlace = orphan->nextOrphan;
  if (orphan->nextOrphan != nullptr) orphan->nextOrphan->orphanPlace = orphan->orphanPlace;
  orphan->orphanPlace = nullptr;
  RecursiveDeleteKeyTree(orphan);
}

// There are no more of them than threads that change something, so looking at all is cheap.
void LoadedStrings::FreeLooseOrphans() {
  for (TernaryString* orphan = looseOrphans_; orphan != nullptr;) {
    TernaryString* next = orphan->nextOrphan;
    if (!orphan->isBusy()) FreeOrphan(orphan);
    orphan = next;
  }
}

// The last handle of a string is gone. A subtree stays as long as a handle starts above it: what
// such a handle does not find it would take for missing, and create anew over what is in the file.
void LoadedStrings::LetGoOf(TernaryString* string) {
  if (string->orphanPlace != nullptr) {
    FreeOrphan(string);
  } else if (!string->isOrphan && !string->isBelowHandle) {
    if (handles_ != nullptr) TellBelow(string, false);
    UnloadFrom(string, false);
  }
}

Status LoadedStrings::DropHandle(TernaryHandle* handle) {
  if (handle->lockedStrings > 0 || handle->waiterCount > 0 || handle->lockers > 0) {
    return status::kBusy;
  }
  TernaryString* string = handle->start;
  *handle->place = handle->next;
  if (handle->next != nullptr) handle->next->place = handle->place;
  delete handle;
  if (string != nullptr) {
    if (string->loadCount > 0) --string->loadCount;
    if (string->loadCount == 0) LetGoOf(string);
  }
  FreeLooseOrphans();
  return status::kOk;
}

void LoadedStrings::DropUnneeded() {
  FreeLooseOrphans();
  if (start != nullptr && start->loadCount == 0) UnloadFrom(start, true);
}

bool LoadedStrings::IsBusy() const {
  bool isBusy = false;
  VisitTops([&](TernaryString* top) {
    StringWalk walk(kStoredOrder);
    for (walk.Start(top); !walk.IsOver(); walk.Next()) {
      if (walk.Current().isBusy()) isBusy = true;
    }
  });
  return isBusy;
}

void LoadedStrings::SwapStrings(LoadedStrings& other) {
  std::swap(start, other.start);
  std::swap(orphans_, other.orphans_);
  std::swap(looseOrphans_, other.looseOrphans_);
  for (LoadedStrings* each : {this, &other}) {
    for (TernaryString** list : {&each->orphans_, &each->looseOrphans_}) {
      if (*list != nullptr) (*list)->orphanPlace = list;
    }
  }
}

void LoadedStrings::Swap(LoadedStrings& other) {
  SwapStrings(other);
  std::swap(isBehind, other.isBehind);
  std::swap(seen, other.seen);
  std::swap(handles_, other.handles_);
  for (LoadedStrings* each : {this, &other}) {
    if (each->handles_ != nullptr) each->handles_->place = &each->handles_;
  }
}

void LoadedStrings::FreeEverything() {
  FreeFrom(start);
  start = nullptr;
  for (TernaryString** list : {&orphans_, &looseOrphans_}) {
    while (*list != nullptr) {
      TernaryString* orphan = *list;
      *list = orphan->nextOrphan;
      FreeFrom(orphan);
    }
  }
  isBehind = false;
  while (handles_ != nullptr) {
    TernaryHandle* handle = handles_;
    handles_ = handle->next;
    delete handle;
  }
}

}  // namespace tamu::registry
