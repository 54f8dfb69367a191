// Changing what a key holds itself.
#include "registry/base/Rights.h"
#include "registry/memtree/StringLock.h"
#include "registry/memtree/TernaryKeyTree.h"
#include "registry/store/TernaryFile.h"

namespace tamu::registry {

// Finds a key, and a value of it unless `name` is null, and locks the key's owner through the
// handle. The tree's lock is held.
unsigned int TernaryKeyTree::LockKey(unsigned int user, void* tree, const char* path,
                                     unsigned char rights, const char* name, StringLock* lock,
                                     Found* found) {
  if (initialized == 0) return status::kNoRight;
  if (tree == nullptr) return status::kBadArgument;
  do {
    const unsigned int result = name != nullptr ? ReachValue(user, tree, path, rights, name, found)
                                                : ReachKey(user, tree, path, rights, found);
    if (result != status::kOk) return result;
  } while (!lock->Take(found->owner, static_cast<TernaryHandle*>(tree)));
  return status::kOk;
}

// Gives a key another record. When that fails it keeps the one it has.
unsigned int TernaryKeyTree::ReplaceKey(TernaryKey* key, const TernaryKeyNode& after) {
  Changes changes(*file);
  const Status result = changes.End(changes.Write(key->id, after));
  if (result.IsOk()) *key->node = after;
  return result;
}

unsigned int TernaryKeyTree::SetDefaultValue(unsigned int user, void* tree, const char* path,
                                             unsigned long long value, bool clear) {
  PCMutexGuard guard(treeLock);
  StringLock lock;
  Found found;
  const unsigned int result = LockKey(user, tree, path, kRightModify, nullptr, &lock, &found);
  if (result != status::kOk) return result;
  TernaryKeyNode after = *found.key->node;
  if (!clear) after.setDefaultValue(value);
  after.setDefaultSet(!clear);
  return ReplaceKey(found.key, after);
}

unsigned int TernaryKeyTree::SetKeyPermission(unsigned int user, void* tree, const char* path,
                                              unsigned char permission) {
  PCMutexGuard guard(treeLock);
  StringLock lock;
  Found found;
  const unsigned int result = LockKey(user, tree, path, kMustOwn, nullptr, &lock, &found);
  if (result != status::kOk) return result;
  TernaryKeyNode after = *found.key->node;
  after.setPermission(permission);
  return ReplaceKey(found.key, after);
}

unsigned int TernaryKeyTree::SetKeyWatch(unsigned int user, void* tree, const char* path,
                                         unsigned char watch) {
  PCMutexGuard guard(treeLock);
  StringLock lock;
  Found found;
  const unsigned int result = LockKey(user, tree, path, kRightRead, nullptr, &lock, &found);
  if (result != status::kOk) return result;
  TernaryKeyNode after = *found.key->node;
  after.setWatch(watch);
  return ReplaceKey(found.key, after);
}

}  // namespace tamu::registry
