// Deleting keys, and giving back what they took.
#include "registry/filetree/SubtreeNodes.h"
#include "registry/filetree/TernaryRegistry.h"

namespace tamu::registry {

// Data blocks stay in use, as when a value is deleted. A value that cannot be given back is not
// this key's alone, and neither is what follows it. Test:
// FileTreeDeletion.DeletingAKeyKeepsTheBlocksOfItsValuesInUse
unsigned int TernaryRegistry::DeleteAllValues(unsigned int, unsigned int keyNode) {
  PCMutexGuard guard(lock_);
  if (file == nullptr) return status::kNoRight;
  Changes changes(*file);
  TernaryKeyNode key;
  SubtreeNodes values(*file, changes);
  unsigned int result = changes.Read(keyNode, &key);
  // The record of a free slot may lead to values of others.
  const bool used = changes.IsUsed(NodeKind::kKey, keyNode);
  if (result == status::kOk && key.firstValue() != 0 && !used) result = status::kInvalidFile;
  if (result == status::kOk) result = values.Prepare();
  if (result == status::kOk) result = values.CollectValues(key);
  if (result == status::kNoMemory) return result;
  values.Release(changes).Ignore();  // what cannot be given back stays in use
  return changes.Keep(result);
}

unsigned int TernaryRegistry::DeleteSingleKey(unsigned int, unsigned int keyNode) {
  PCMutexGuard guard(lock_);
  if (file == nullptr) return status::kNoRight;
  Changes changes(*file);
  TernaryKeyNode key;
  Status result = changes.Read(keyNode, &key);
  if (!result.IsOk()) return result;
  // Values that cannot be given back stay in use.
  if (key.firstValue() != 0 && DeleteAllValues(0, keyNode) == status::kNoMemory) {
    return status::kNoMemory;
  }
  return changes.Keep(changes.Release(NodeKind::kKey, keyNode));
}

unsigned int TernaryRegistry::RecursiveDeleteKeyTree(unsigned int, unsigned int node) {
  PCMutexGuard guard(lock_);
  if (file == nullptr) return status::kNoRight;
  if (node == 0) return status::kBadArgument;
  Changes changes(*file);
  SubtreeNodes nodes(*file, changes);
  Status result = nodes.Prepare();
  if (result.IsOk()) result = nodes.CollectSubtree(node);
  if (!result.IsOk()) return result;
  return changes.Keep(nodes.Release(changes));  // what cannot be given back stays in use
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
  Changes changes(*file);
  Reached reached;
  SubtreeNodes nodes(*file, changes);
  Status result = ReachKeyTree(changes, user, tree, path, kDelete, &reached, &nodes);
  if (!result.IsOk()) return result;
  // The nodes of the key's own name stay, as a name without a key.
  // Test: FileTreeDeletion.TheNameOfADeletedKeyStaysAndIsUsedAgain
  TernaryStringNode after = reached.node;
  after.setHasKey(false);
  after.setChild(0);
  after.setKeyNode(0);
  result = changes.Write(reached.nodeId, after);
  if (result.IsOk()) nodes.Release(changes).Ignore();  // what cannot be given back stays in use
  return changes.End(result);
}

}  // namespace tamu::registry
