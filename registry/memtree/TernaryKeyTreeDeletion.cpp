// Deleting keys, and giving back what they took.
#include "registry/base/Rights.h"
#include "registry/memtree/StringLock.h"
#include "registry/memtree/StringWalk.h"
#include "registry/memtree/TernaryKeyTree.h"
#include "registry/store/TernaryFile.h"

namespace tamu::registry {

// Data blocks stay in use, as when a value is deleted.
// Test: LoadedDeletion.TheBlocksOfItsValuesStayInUse
unsigned int TernaryKeyTree::DeleteAllValues(unsigned int changes, TernaryKey* key) {
  for (const TernaryValue* value = key->firstValue; value != nullptr; value = value->next) {
    file->ReleaseValueNode(changes, value->id, nullptr);
  }
  return UnloadValues(key);
}

unsigned int TernaryKeyTree::DeleteSingleKey(unsigned int changes, TernaryString* string) {
  if (string->key == nullptr) return status::kOk;
  DeleteAllValues(changes, string->key);
  DropKey(changes, string->key, true);
  string->key = nullptr;
  return status::kOk;
}

namespace {

void MarkOrphan(TernaryString* orphan) {
  StringWalk walk(kStoredOrder);
  for (walk.Start(orphan); !walk.IsOver(); walk.Next()) walk.Current().isOrphan = true;
}

}  // namespace

// A string that a handle needs, or that is locked, stays with all that it leads to, in memory and
// in the file, but nothing leads there any more. Test: LoadedDeletion.WhatAHandleNeedsStaysForIt
unsigned int TernaryKeyTree::RecursiveDeleteKeyTree(unsigned int changes, TernaryString* string) {
  bool kept = false;
  StringWalk walk(kStoredOrder);
  for (walk.Start(string); !walk.IsOver(); walk.Next()) {
    TernaryString& s = walk.Current();
    if (walk.IsEntered()) {
      if (s.isInUse()) walk.SkipLinks();
    } else if (s.isInUse()) {
      kept = true;
      MarkOrphan(&s);
      AddOrphan(&s);
    } else {
      DeleteSingleKey(changes, &s);
      file->ReleaseNode(changes, s.id, nullptr);
      delete &s;
    }
  }
  return kept ? status::kBusy : status::kOk;
}

// The key is cut off with one write; only then is what it took given back. When that write fails
// everything stays as it is, and the status is 0 all the same.
unsigned int TernaryKeyTree::DeleteKey(unsigned int user, void* tree, const char* path) {
  PCMutexGuard guard(treeLock);
  StringLock lock;
  Found found;
  const unsigned int result = LockKey(user, tree, path, kRightDelete, nullptr, &lock, &found);
  if (result != status::kOk) return result;
  TernaryFile::ChangeScope changes(*file);
  TernaryString& s = *found.string;
  // The strings of the key's own name stay, as a name without a key.
  // Test: LoadedDeletion.TheNameStaysAndIsUsedAgain
  TernaryStringNode after = *s.node;
  after.setHasKey(false);
  after.setChild(0);
  after.setKeyNode(0);
  bool putBack = false;
  if (ReplaceNode(changes.id(), &s, after, &putBack) != status::kOk) return status::kOk;
  // The directory of a string that is locked is put away. So is that of the handle's own key, which
  // is its own owner.
  TernaryString* below = s.isLocked() ? s.parked : s.directory;
  if (s.isLocked() || below != nullptr) s.SetDirectory(nullptr);
  RecursiveDeleteKeyTree(changes.id(), below);
  DeleteSingleKey(changes.id(), &s);
  return status::kOk;
}

}  // namespace tamu::registry
