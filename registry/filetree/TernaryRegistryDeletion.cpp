// Deleting keys, and giving back what they took.
#include "registry/filetree/SubtreeNodes.h"
#include "registry/filetree/TernaryRegistry.h"

namespace tamu::registry {

// Data blocks stay in use, as when a value is deleted. A value that cannot be given back is not
// this key's alone, and neither is what follows it. Test:
// FileTreeDeletion.DeletingAKeyKeepsTheBlocksOfItsValuesInUse
unsigned int TernaryRegistry::DeleteAllValues(unsigned int changes, unsigned int keyNode) {
  PCMutexGuard guard(lock_);
  if (file == nullptr) return status::kNoRight;
  AccessScope access(*file);
  TernaryKeyNode key;
  SubtreeNodes values(*file, access);
  unsigned int result = access.Read(keyNode, &key);
  // The record of a free slot may lead to values of others.
  const bool used = access.IsUsed(NodeKind::kKey, keyNode);
  if (result == status::kOk && key.firstValue() != 0 && !used) result = status::kInvalidFile;
  if (result == status::kOk) result = values.Prepare();
  if (result == status::kOk) result = values.CollectValues(key);
  if (result != status::kNoMemory) values.Release(changes);
  return result;
}

unsigned int TernaryRegistry::DeleteSingleKey(unsigned int changes, unsigned int keyNode) {
  PCMutexGuard guard(lock_);
  if (file == nullptr) return status::kNoRight;
  AccessScope access(*file);
  TernaryKeyNode key;
  const unsigned int result = access.Read(keyNode, &key);
  if (result != status::kOk) return result;
  // Values that cannot be given back stay in use.
  if (key.firstValue() != 0 && DeleteAllValues(changes, keyNode) == status::kNoMemory) {
    return status::kNoMemory;
  }
  return file->ReleaseKeyNode(changes, keyNode, nullptr);
}

unsigned int TernaryRegistry::RecursiveDeleteKeyTree(unsigned int changes, unsigned int node) {
  PCMutexGuard guard(lock_);
  if (file == nullptr) return status::kNoRight;
  if (node == 0) return status::kBadArgument;
  AccessScope access(*file);
  SubtreeNodes nodes(*file, access);
  unsigned int result = nodes.Prepare();
  if (result == status::kOk) result = nodes.CollectSubtree(node);
  return result == status::kOk ? nodes.Release(changes) : result;
}

// Finds the key and what goes with it: itself and all that is below its string node. Damage does
// not keep it from being removed, what cannot be read is left out; the nodes and keys on the way to
// it stay, whatever leads there.
unsigned int TernaryRegistry::ReachKeyTree(AccessScope& access, unsigned int user, const void* tree,
                                           const char* path, unsigned char right, Reached* reached,
                                           SubtreeNodes* nodes) {
  unsigned int result = nodes->Prepare();
  if (result == status::kOk) result = ReachKey(access, user, tree, path, right, reached, nodes);
  if (result == status::kOk) result = access.Read(reached->nodeId, &reached->node);
  if (result != status::kOk) return result;
  if (nodes->CollectSubtree(reached->node.child()) == status::kNoMemory) return status::kNoMemory;
  return nodes->CollectKey(reached->keyId);
}

// The key is cut off with one write; only then is what it took given back. Whenever the process
// ends, the tree never leads to a free slot.
unsigned int TernaryRegistry::DeleteKey(unsigned int user, void* tree, const char* path) {
  PCMutexGuard guard(lock_);
  if (file == nullptr) return status::kNoRight;
  ChangeScope changes(*file);
  Reached reached;
  SubtreeNodes nodes(*file, changes);
  unsigned int result = ReachKeyTree(changes, user, tree, path, kDelete, &reached, &nodes);
  if (result != status::kOk) return result;
  // The nodes of the key's own name stay, as a name without a key.
  // Test: FileTreeDeletion.TheNameOfADeletedKeyStaysAndIsUsedAgain
  TernaryStringNode after = reached.node;
  after.setHasKey(false);
  after.setChild(0);
  after.setKeyNode(0);
  bool putBack = false;
  result = ReplaceNode(changes, reached.nodeId, reached.node, &after, &putBack);
  if (result == status::kOk) nodes.Release(changes.id());
  return result;
}

}  // namespace tamu::registry
