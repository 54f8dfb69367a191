// Creating keys.
#include "registry/filetree/TernaryRegistry.h"

namespace tamu::registry {

unsigned int TernaryRegistry::CreateRootKey() {
  PCMutexGuard guard(lock_);
  if (file == nullptr) return status::kNoRight;
  Changes changes(*file);
  if (changes.StartNode() != 0) return status::kExists;
  TernaryKeyNode root;
  root.setRoot(true);
  root.setOwner(TernaryKeyNode::kRootOwner);
  root.setPermission(TernaryKeyNode::kRootPermission);
  unsigned int key = 0;
  unsigned int node = 0;
  Status result = StoreKey(changes, root, &key);
  if (!result.IsOk()) return changes.End(result);
  result = SpellName(changes, "", &node, key);
  if (!result.IsOk()) return changes.End(changes.GiveBack(NodeKind::kKey, key, result));
  return changes.End(changes.SetStartNode(node));
}

// Writes a new key into a slot of its own.
Status TernaryRegistry::StoreKey(Changes& changes, const TernaryKeyNode& key, unsigned int* id) {
  const Status result = changes.Take(NodeKind::kKey, id);
  return result.IsOk() ? changes.Write(*id, key) : result;
}

unsigned int TernaryRegistry::CreateKeyNode(unsigned int, unsigned int owner,
                                            unsigned char permission,
                                            unsigned long long defaultValue, unsigned int* keyNode,
                                            bool defaultSet, bool root) {
  if (file == nullptr) return status::kNoRight;
  if (keyNode == nullptr) return status::kBadArgument;
  TernaryKeyNode key;
  key.setDefaultValue(defaultValue);
  key.setDefaultSet(defaultSet);
  key.setRoot(root);
  key.setOwner(owner);
  key.setPermission(permission);
  Changes changes(*file);
  unsigned int id = 0;
  const Status result = StoreKey(changes, key, &id);
  if (result.IsOk()) *keyNode = id;
  return changes.End(result);
}

// The permission that a new key gets from its parent, if the user may create keys there. The parent
// of a keyless name is key 0, which gives nobody any right.
Status TernaryRegistry::InheritPermission(AccessScope& access, const KeyMatchDescriptor& match,
                                          unsigned int user, TernaryKeyNode* key) {
  TernaryStringNode directory;
  Status result = access.Read(match.directory, &directory);
  if (!result.IsOk()) return result;
  if (directory.keyNode() == 0) return status::kNoRight;
  TernaryKeyNode parent;
  result = access.Read(directory.keyNode(), &parent);
  if (!result.IsOk()) return result;
  if (!isPermissible(&parent, user, kCreate)) return status::kNoRight;
  key->setPermission(parent.isRoot() ? TernaryKeyNode::kTopPermission : parent.permission());
  return status::kOk;
}

unsigned int TernaryRegistry::CreateKey(unsigned int user, void* tree, const char* path,
                                        unsigned long long defaultValue, bool defaultSet) {
  if (path == nullptr) path = "";
  PCMutexGuard guard(lock_);
  if (file == nullptr) return status::kNoRight;
  Changes changes(*file);
  KeyMatchDescriptor match;
  Status result = Search(changes, StartNodeOf(tree), path, &match);
  if (result.IsOk()) return status::kExists;
  if (result != status::kNotFound) return result;
  TernaryKeyNode key;
  key.setOwner(user);
  key.setDefaultValue(defaultValue);
  key.setDefaultSet(defaultSet);
  result = InheritPermission(changes, match, user, &key);
  if (!result.IsOk()) return result;
  bool atNode = false;
  result = changes.End(CreateAt(changes, match, path, key, &atNode));
  // A key that ends at a node that was there, or at a cut, leaves one level of the lock with the
  // calling thread: other threads' operations without a handle wait from now on.
  // Test: FileTreeKeys.AKeyThatEndsInsideALongerNameKeepsTheLock
  if (result.IsOk() && atNode) guard.Keep();
  return result;
}

// The place was found. *atNode: the key ends at a node that was there, or at a cut.
Status TernaryRegistry::CreateAt(Changes& changes, const KeyMatchDescriptor& match,
                                 const char* path, const TernaryKeyNode& key, bool* atNode) {
  unsigned int target = match.node;
  const char* rest = path + match.position;
  Status result = status::kOk;
  if (match.splitIndex >= 0) {
    const unsigned int cut = static_cast<unsigned int>(match.splitIndex);
    result = Split(changes, match.node, cut, match.previous, &target);
    if (!result.IsOk()) return result;
    // The new upper node ends in the character at the cut. A path whose last character stands there
    // ends at that node, whether or not the characters are the same: with "abc" there, creating "x"
    // makes "a", and "ax" makes "ab". Test:
    // FileTreeKeys.ACharacterThatDiffersAtTheEndIsTakenAsTheCut
    rest += cut;
    if (rest[0] != 0 && rest[1] == 0) ++rest;
  }
  unsigned int id = 0;
  result = StoreKey(changes, key, &id);
  if (!result.IsOk()) return result;
  *atNode = rest[0] == 0;
  return *atNode ? EndNameAt(changes, target, id) : HangName(changes, match, target, rest, id);
}

}  // namespace tamu::registry
