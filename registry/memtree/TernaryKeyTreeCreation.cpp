// Creating keys.
#include <new>

#include "registry/base/Rights.h"
#include "registry/memtree/StringLock.h"
#include "registry/memtree/TernaryKeyTree.h"
#include "registry/store/TernaryFile.h"

namespace tamu::registry {

// Frees a key that hangs nowhere. `release` is false when the file may lead to it.
void TernaryKeyTree::DropKey(unsigned int changes, TernaryKey* key, bool release) {
  if (release) file->ReleaseKeyNode(changes, key->id, nullptr);
  delete key;
}

// A key of a slot just taken. Nothing is written yet.
unsigned int TernaryKeyTree::AcquireKey(unsigned int changes, unsigned long long defaultValue,
                                        bool isSet, TernaryKey*& key) {
  unsigned int id = 0;
  TernaryKeyNode* record = nullptr;
  const unsigned int result = file->AcquireKeyNode(changes, &id, record);
  if (result != status::kOk) return result;
  record->setDefaultValue(defaultValue);
  record->setDefaultSet(isSet);
  key = new (std::nothrow) TernaryKey(id, record);
  if (key != nullptr) return status::kOk;
  file->ReleaseKeyNode(changes, id, record);
  return status::kNoMemory;
}

unsigned int TernaryKeyTree::CreateKeyNode(unsigned int changes, unsigned int owner,
                                           unsigned char permission,
                                           unsigned long long defaultValue, bool isSet,
                                           TernaryKey*& key) {
  PCMutexGuard guard(treeLock);
  if (initialized == 0) return status::kNoRight;
  TernaryKey* made = nullptr;
  unsigned int result = AcquireKey(changes, defaultValue, isSet, made);
  if (result != status::kOk) return result;
  made->node->setOwner(owner);
  made->node->setPermission(permission);
  result = file->WriteKeyNode(changes, made->id, made->node, false);
  if (result == status::kOk) {
    key = made;
  } else {
    DropKey(changes, made, true);
  }
  return result;
}

unsigned int TernaryKeyTree::AddKey(unsigned int changes, TernaryString* string,
                                    unsigned long long defaultValue, bool isSet) {
  PCMutexGuard guard(treeLock);
  if (initialized == 0) return status::kNoRight;
  if (string == nullptr) return status::kBadArgument;
  if (string->key != nullptr || string->node->keyNode() != 0) return status::kExists;
  TernaryKey* key = nullptr;
  unsigned int result = AcquireKey(changes, defaultValue, isSet, key);
  if (result != status::kOk) return result;
  result = file->WriteKeyNode(changes, key->id, key->node, false);
  if (result == status::kOk) return EndNameAt(changes, string, key);
  DropKey(changes, key, true);
  return result;
}

unsigned int TernaryKeyTree::CreateRootKey() {
  PCMutexGuard guard(treeLock);
  if (initialized == 0) return status::kNoRight;
  TernaryFile::ChangeScope changes(*file);
  if (startString != nullptr || file->GetStartNode(0) != 0) return status::kExists;
  TernaryKey* key = nullptr;
  unsigned int result = CreateKeyNode(changes.id(), TernaryKeyNode::kRootOwner,
                                      TernaryKeyNode::kRootPermission, 0, false, key);
  if (result != status::kOk) return result;
  TernaryString* string = nullptr;
  result = CreateStringNode(changes.id(), "", string, key);
  if (result != status::kOk) {
    DropKey(changes.id(), key, true);
    return result;
  }
  result = SetStartString(string);
  if (result != status::kOk) {
    DropNames(changes.id(), string, true);
    DropKey(changes.id(), key, true);
  }
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
  const bool inside = match->runOffset >= 0;
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

// The place was found, its owner is locked.
unsigned int TernaryKeyTree::CreateAt(unsigned int user, const KeyMatchDescriptor& match,
                                      const char* path, unsigned long long defaultValue,
                                      bool isSet) {
  TernaryFile::ChangeScope changes(*file);
  TernaryString* target = match.string;
  const char* rest = path + match.position;
  unsigned int result = status::kOk;
  if (match.runOffset >= 0) {
    const unsigned int cut = static_cast<unsigned int>(match.runOffset);
    result = SplitString(changes.id(), target, match.position, cut, match.parent, target);
    if (result != status::kOk) return result;
    // A path whose last character stands at the cut ends there, whether or not the characters are
    // the same. Test: LoadedCreation.ACharacterThatDiffersAtTheEndIsTakenAsTheCut
    rest += cut;
    if (rest[0] != 0 && rest[1] == 0) ++rest;
  }
  if (rest[0] == '/') return status::kBadArgument;
  // A creation that is refused takes nothing but the cut.
  // Test: LoadedCreation.ARefusedCreationTakesNothing
  if (rest[0] != 0) {
    result = CheckName(rest, true);
    if (result != status::kOk) return result;
  }
  const TernaryKeyNode& parent = *match.owner->key->node;
  const unsigned char permission =
      parent.isRoot() ? TernaryKeyNode::kTopPermission : parent.permission();
  TernaryKey* key = nullptr;
  result = CreateKeyNode(changes.id(), user, permission, defaultValue, isSet, key);
  if (result != status::kOk) return result;
  return rest[0] == 0 ? EndNameAt(changes.id(), target, key)
                      : HangName(changes.id(), match, target, rest, key);
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
  return CreateAt(user, match, path, defaultValue, isSet);
}

}  // namespace tamu::registry
