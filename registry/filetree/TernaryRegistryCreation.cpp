// Creating keys.
#include "registry/filetree/TernaryRegistry.h"

namespace tamu::registry {

unsigned int TernaryRegistry::CreateRootKey() {
  PCMutexGuard guard(lock_);
  if (file == nullptr) return status::kNoRight;
  ChangeScope changes(*file);
  if (file->GetStartNode(0) != 0) return status::kExists;
  unsigned int key = 0;
  unsigned int result = CreateKeyNode(changes.id(), TernaryKeyNode::kRootOwner,
                                      TernaryKeyNode::kRootPermission, 0, &key, false, true);
  if (result != status::kOk) return result;
  unsigned int node = 0;
  result = CreateStringNode(changes.id(), "", &node, key);
  if (result != status::kOk) {
    file->ReleaseKeyNode(changes.id(), key, nullptr);
    return result;
  }
  file->SetStartNode(0, node);  // dropped: the next opening makes the root again
  return status::kOk;
}

unsigned int TernaryRegistry::CreateKeyNode(unsigned int changes, unsigned int owner,
                                            unsigned char permission,
                                            unsigned long long defaultValue, unsigned int* keyNode,
                                            bool defaultSet, bool root) {
  if (file == nullptr) return status::kNoRight;
  if (keyNode == nullptr) return status::kBadArgument;
  unsigned int id = 0;
  unsigned int result = file->AcquireSlot(changes, NodeKind::kKey, &id);
  if (result != status::kOk) return result;
  TernaryKeyNode key;
  key.setDefaultValue(defaultValue);
  key.setDefaultSet(defaultSet);
  key.setRoot(root);
  key.setOwner(owner);
  key.setPermission(permission);
  result = file->WriteKeyNode(changes, id, &key, false);
  if (result != status::kOk) {
    file->ReleaseKeyNode(changes, id, nullptr);
    return result;
  }
  *keyNode = id;
  return status::kOk;
}

// The permission that a new key gets from its parent, if the user may create keys there. The parent
// of a keyless name is key 0, which gives nobody any right.
unsigned int TernaryRegistry::InheritPermission(AccessScope& access,
                                                const KeyMatchDescriptor& match, unsigned int user,
                                                unsigned char* permission) {
  TernaryStringNode directory;
  unsigned int result = access.Read(match.directory, &directory);
  if (result != status::kOk) return result;
  if (directory.keyNode() == 0) return status::kNoRight;
  TernaryKeyNode parent;
  result = access.Read(directory.keyNode(), &parent);
  if (result != status::kOk) return result;
  if (!isPermissible(&parent, user, kCreate)) return status::kNoRight;
  *permission = parent.isRoot() ? TernaryKeyNode::kTopPermission : parent.permission();
  return status::kOk;
}

unsigned int TernaryRegistry::CreateKey(unsigned int user, void* tree, const char* path,
                                        unsigned long long defaultValue, bool defaultSet) {
  if (path == nullptr) path = "";
  PCMutexGuard guard(lock_);
  if (file == nullptr) return status::kNoRight;
  ChangeScope changes(*file);
  KeyMatchDescriptor match;
  unsigned int result = Search(changes, StartNodeOf(tree), path, &match);
  if (result == status::kOk) return status::kExists;
  if (result != status::kNotFound) return result;
  unsigned char permission = 0;
  result = InheritPermission(changes, match, user, &permission);
  if (result != status::kOk) return result;

  unsigned int target = match.node;
  const char* rest = path + match.position;
  if (match.splitIndex >= 0) {
    const unsigned int cut = static_cast<unsigned int>(match.splitIndex);
    result = SplitNode(changes.id(), match.node, match.position, cut, match.previous, &target);
    if (result != status::kOk) return result;
    // The new upper node ends in the character at the cut. A path whose last character stands there
    // ends at that node, whether or not the characters are the same: with "abc" there, creating "x"
    // makes "a", and "ax" makes "ab". Test:
    // FileTreeKeys.ACharacterThatDiffersAtTheEndIsTakenAsTheCut
    rest += cut;
    if (rest[0] != 0 && rest[1] == 0) ++rest;
  }
  unsigned int key = 0;
  result = CreateKeyNode(changes.id(), user, permission, defaultValue, &key, defaultSet, false);
  if (result != status::kOk) return result;
  if (rest[0] != 0) return HangName(changes, match, target, rest, key);
  result = EndNameAt(changes, target, key);
  // A key that ends at a node that was there, or at a cut, leaves one level of the lock with the
  // calling thread: other threads' operations without a handle wait from now on.
  // Test: FileTreeKeys.AKeyThatEndsInsideALongerNameKeepsTheLock
  if (result == status::kOk) guard.Keep();
  return result;
}

}  // namespace tamu::registry
