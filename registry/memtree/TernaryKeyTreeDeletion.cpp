// Deleting keys, and giving back what they took.
#include "registry/base/Rights.h"
#include "registry/memtree/StringLock.h"
#include "registry/memtree/StringWalk.h"
#include "registry/memtree/TernaryKeyTree.h"
#include "registry/store/TernaryFile.h"

namespace tamu::registry {

namespace {

// Gives back the slots of a key and its values; what cannot be given back stays in use. So do data
// blocks, as when a value is deleted. Test: LoadedDeletion.TheBlocksOfItsValuesStayInUse
void ReleaseKey(Changes& changes, const TernaryKey* key) {
  if (key == nullptr) return;
  for (const TernaryValue* value = key->firstValue; value != nullptr; value = value->next) {
    changes.Release(NodeKind::kValue, value->id).Ignore();
  }
  changes.Release(NodeKind::kKey, key->id).Ignore();
}

// The same for all that hangs on a string, but for what is in use.
void ReleaseSubtree(Changes& changes, TernaryString* string) {
  StringWalk walk(kStoredOrder);
  for (walk.Start(string); !walk.IsOver(); walk.Next()) {
    const TernaryString& s = walk.Current();
    if (walk.IsEntered()) {
      if (s.isInUse()) walk.SkipLinks();
    } else if (!s.isInUse()) {
      ReleaseKey(changes, s.key);
      changes.Release(NodeKind::kString, s.id).Ignore();
    }
  }
}

void MarkOrphan(TernaryString* orphan) {
  StringWalk walk(kStoredOrder);
  for (walk.Start(orphan); !walk.IsOver(); walk.Next()) walk.Current().isOrphan = true;
}

}  // namespace

// A string that a handle needs, or that is locked, stays with all that it leads to, in memory and
// in the file, but nothing leads there any more. Test: LoadedDeletion.WhatAHandleNeedsStaysForIt
void TernaryKeyTree::RecursiveDeleteKeyTree(TernaryString* string) {
  StringWalk walk(kStoredOrder);
  for (walk.Start(string); !walk.IsOver(); walk.Next()) {
    TernaryString& s = walk.Current();
    if (walk.IsEntered()) {
      if (s.isInUse()) walk.SkipLinks();
    } else if (s.isInUse()) {
      MarkOrphan(&s);
      AddOrphan(&s);
    } else {
      if (s.key != nullptr) UnloadKey(s.key);
      delete &s;
    }
  }
}

// The key is cut off with one write; only then is what it took given back.
unsigned int TernaryKeyTree::DeleteKey(unsigned int user, void* tree, const char* path) {
  PCMutexGuard guard(treeLock);
  StringLock lock;
  Found found;
  const unsigned int result = LockKey(user, tree, path, kRightDelete, nullptr, &lock, &found);
  if (result != status::kOk) return result;
  TernaryString& s = *found.string;
  // The strings of the key's own name stay, as a name without a key.
  // Test: LoadedDeletion.TheNameStaysAndIsUsedAgain
  TernaryStringNode after = *s.node;
  after.setHasKey(false);
  after.setChild(0);
  after.setKeyNode(0);
  // The directory of a string that is locked is put away. So is that of the handle's own key, which
  // is its own owner.
  TernaryString* below = s.isLocked() ? s.parked : s.directory;
  Changes changes(*file);
  Status written = changes.Write(s.id, after);
  if (written.IsOk()) {
    ReleaseSubtree(changes, below);
    ReleaseKey(changes, s.key);
  }
  written = changes.End(written);
  if (!written.IsOk()) return written;
  *s.node = after;
  if (s.isLocked() || below != nullptr) s.SetDirectory(nullptr);
  RecursiveDeleteKeyTree(below);
  UnloadKey(s.key);
  s.key = nullptr;
  return status::kOk;
}

}  // namespace tamu::registry
