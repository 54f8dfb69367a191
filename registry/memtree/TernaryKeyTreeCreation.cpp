// Creating keys.
#include <memory>
#include <new>

#include "registry/base/Rights.h"
#include "registry/keytree/NodeNames.h"
#include "registry/memtree/NameSplit.h"
#include "registry/memtree/NewName.h"
#include "registry/memtree/StringLock.h"
#include "registry/memtree/TernaryKeyTree.h"
#include "registry/store/TernaryFile.h"

namespace tamu::registry {

namespace {

// Writes a new key into a slot of its own, and makes an object for it, the caller's.
Status TakeKey(Changes& changes, const TernaryKeyNode& record, TernaryKey*& key) {
  unsigned int id = 0;
  Status result = changes.Take(NodeKind::kKey, &id);
  if (result.IsOk()) result = changes.Write(id, record);
  if (!result.IsOk()) return result;
  TernaryKeyNode* copy = new (std::nothrow) TernaryKeyNode(record);
  TernaryKey* made = copy != nullptr ? new (std::nothrow) TernaryKey(id, copy) : nullptr;
  if (made == nullptr) {
    delete copy;
    return status::kNoMemory;
  }
  key = made;
  return result;
}

TernaryKeyNode NewRecord(unsigned int owner, unsigned char permission,
                         unsigned long long defaultValue, bool isSet) {
  TernaryKeyNode record;
  record.setOwner(owner);
  record.setPermission(permission);
  record.setDefaultValue(defaultValue);
  record.setDefaultSet(isSet);
  return record;
}

}  // namespace

unsigned int TernaryKeyTree::CreateKeyNode(unsigned int, unsigned int owner,
                                           unsigned char permission,
                                           unsigned long long defaultValue, bool isSet,
                                           TernaryKey*& key) {
  PCMutexGuard guard(treeLock);
  if (initialized == 0) return status::kNoRight;
  Changes changes(*file);
  const TernaryKeyNode record = NewRecord(owner, permission, defaultValue, isSet);
  TernaryKey* made = nullptr;
  Status result = TakeKey(changes, record, made);
  if (result.IsOk()) result = changes.Keep(result);
  if (result.IsOk()) {
    key = made;
  } else {
    delete made;
  }
  return result;
}

unsigned int TernaryKeyTree::AddKey(unsigned int, TernaryString* string,
                                    unsigned long long defaultValue, bool isSet) {
  PCMutexGuard guard(treeLock);
  if (initialized == 0) return status::kNoRight;
  if (string == nullptr) return status::kBadArgument;
  if (string->key != nullptr || string->node->keyNode() != 0) return status::kExists;
  Changes changes(*file);
  TernaryKey* key = nullptr;
  Status result = TakeKey(changes, NewRecord(0, 0, defaultValue, isSet), key);
  std::unique_ptr<TernaryKey> made(key);
  if (!result.IsOk()) return result;
  TernaryStringNode after = *string->node;
  after.setKeyNode(key->id);
  after.setHasKey(true);
  result = changes.End(changes.Write(string->id, after));
  if (!result.IsOk()) return result;
  *string->node = after;
  string->key = made.release();
  return result;
}

unsigned int TernaryKeyTree::CreateRootKey() {
  PCMutexGuard guard(treeLock);
  if (initialized == 0) return status::kNoRight;
  Changes changes(*file);
  if (startString != nullptr || changes.StartNode() != 0) return status::kExists;
  TernaryKey* key = nullptr;
  const TernaryKeyNode record =
      NewRecord(TernaryKeyNode::kRootOwner, TernaryKeyNode::kRootPermission, 0, false);
  Status result = TakeKey(changes, record, key);
  std::unique_ptr<TernaryKey> made(key);
  NewName name;
  if (result.IsOk()) result = name.Write(changes, "", key);
  if (result.IsOk()) result = changes.SetStartNode(name.First()->id);
  if (result.IsOk()) result = changes.Keep(result);
  if (!result.IsOk()) return result;
  startString = name.LetGo();
  made.release();  // the string has it
  return result;
}

// Searches the place of a new key. kNoRight also where the place is in the file, but not loaded: so
// is what hangs behind a name that ends at a split char. The directory of a string that is locked
// is only put away: it is there again when the owner can be locked.
// Test: LoadedCreation.ANameThatEndsAtABranchIsRefused
unsigned int TernaryKeyTree::FindPlace(unsigned int user, TernaryHandle* handle, const char* path,
                                       KeyMatchDescriptor* match) {
  const unsigned int result = FindKey(handle->start, path, match);
  if (result == status::kOk) return status::kExists;
  if (result != status::kNotFound) return result;
  const bool inside = match->splitIndex >= 0;
  const bool isPutAway = match->matchChild() && match->string->isLocked();
  if (isPutAway) return status::kOk;
  if (!inside && match->nodeId != 0) return status::kNoRight;
  const TernaryKey* parent = match->owner->key;
  if (parent == nullptr || !parent->isPermissible(user, kRightCreate)) return status::kNoRight;
  // A key that is in the file is never replaced by a new one.
  const bool endsHere = !inside && path[match->position] == 0;
  if (endsHere && match->string->node->keyNode() != 0) return status::kNoRight;
  return status::kOk;
}

// Writes the key where the place was found; memory follows once it is kept. A creation that is
// refused takes nothing but the cut, which stays. Test: LoadedCreation.ARefusedCreationTakesNothing
unsigned int TernaryKeyTree::CreateAt(const KeyMatchDescriptor& match, const char* path,
                                      const TernaryKeyNode& record) {
  Changes changes(*file);
  NameSplit split;
  const char* rest = path + match.position;
  Status result = status::kOk;
  if (match.splitIndex >= 0) {
    const unsigned int cut = static_cast<unsigned int>(match.splitIndex);
    result = split.Write(changes, match.string, cut, match.previous);
    if (!result.IsOk()) return result;
    // A path whose last character stands at the cut ends there, whether or not the characters are
    // the same. Test: LoadedCreation.ACharacterThatDiffersAtTheEndIsTakenAsTheCut
    rest += cut;
    if (rest[0] != 0 && rest[1] == 0) ++rest;
  }
  TernaryString* target = split.Upper() != nullptr ? split.Upper() : match.string;
  TernaryStringNode after = *target->node;
  NodeLink link = NodeLink::kEqual;
  TernaryKey* key = nullptr;
  NewName name;
  const Changes::Mark behindCut = changes.Here();
  if (rest[0] == '/') result = status::kBadArgument;
  if (result.IsOk() && rest[0] != 0) result = CheckName(rest, true);
  if (result.IsOk()) result = TakeKey(changes, record, key);
  std::unique_ptr<TernaryKey> made(key);
  if (result.IsOk() && rest[0] == 0) {
    after.setKeyNode(key->id);
    after.setHasKey(true);
  } else if (result.IsOk()) {
    result = name.Write(changes, rest, key);
    if (result.IsOk()) {
      link = LinkForName(*target->node, match, *name.First()->node);
      SetLink(&after, link, name.First()->id);
    }
  }
  if (result.IsOk()) result = changes.Write(target->id, after);
  if (!result.IsOk()) changes.UndoTo(behindCut);
  result = changes.End(result);
  if (split.Upper() != nullptr && changes.IsKept()) split.Apply();
  if (!result.IsOk()) return result;
  *target->node = after;
  if (name.First() != nullptr) {
    LinkString(target, link, name.LetGo());
  } else {
    target->key = key;
  }
  made.release();
  return result;
}

unsigned int TernaryKeyTree::CreateKey(unsigned int user, void* tree, const char* path,
                                       unsigned long long defaultValue, bool isSet) {
  PCMutexGuard guard(treeLock);
  if (initialized == 0) return status::kNoRight;
  if (tree == nullptr) return status::kBadArgument;
  if (path == nullptr) path = "";
  TernaryHandle* handle = static_cast<TernaryHandle*>(tree);
  StringLock lock;
  KeyMatchDescriptor match;
  do {
    match = KeyMatchDescriptor();
    const unsigned int result = FindPlace(user, handle, path, &match);
    if (result != status::kOk) return result;
  } while (!lock.Take(match.owner, handle));
  const TernaryKeyNode& parent = *match.owner->key->node;
  const unsigned char permission =
      parent.isRoot() ? TernaryKeyNode::kTopPermission : parent.permission();
  return CreateAt(match, path, NewRecord(user, permission, defaultValue, isSet));
}

}  // namespace tamu::registry
