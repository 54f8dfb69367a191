// The nodes, keys and values of a subtree that is to be given back.
#pragma once

#include "registry/filetree/KeySearch.h"
#include "registry/filetree/NodeWalk.h"
#include "registry/filetree/SlotLists.h"
#include "registry/store/Changes.h"

namespace tamu::registry {

// Collected before anything is changed, so that giving them back needs no memory and follows no
// link that may have got another meaning meanwhile. What is damaged is left out: slots that are
// free or do not exist, records that cannot be read, and whatever is met a second time. With
// SpacePolicy::kExact data blocks are not collected: they stay in use.
class SubtreeNodes {
 public:
  explicit SubtreeNodes(const StoreAccess& access) : access_(access) {}

  // kNoMemory. Before anything else.
  Status Prepare();
  // Leaves a string node out, or a key, when the collection comes to it.
  void SpareNode(StringId id);
  void SpareKey(KeyId id) { metKeys_.Add(id); }
  // False when a node that was spared is free: the next to take a slot may get it.
  bool AreSparedUsed() const { return allUsed_; }
  // Collects the string nodes reached from `first` (0: none) and the keys on them: every node after
  // all that its lo, hi, equal and child links lead to. kNoMemory; kInvalidFile when `first` is
  // damaged, or the status of reading it.
  Status CollectSubtree(StringId first);
  // Prepares, finds a key and what goes with it: itself and all that is below its string node,
  // *node. Damage does not keep it from being collected, what cannot be read is left out; the nodes
  // and keys on the way to it are spared, whatever leads there. The statuses of ReachKey.
  Status CollectKeyTree(unsigned int user, StringId startNode, const char* path,
                        unsigned char rights, Reached* reached, TernaryStringNode* node);
  // Collects a key and its values. kNoMemory.
  Status CollectKey(KeyId keyNode);
  // Collects the values of a key, the newest first, up to the first that is damaged: then
  // kInvalidFile, or the status of reading it. kNoMemory.
  Status CollectValues(const TernaryKeyNode& key);

  // Gives all of it back, in the order in which it was collected; what cannot be given back stays
  // in use. The result is that of the last string node.
  Status Release(Changes& changes);

 private:
  Status ReleaseAll(Changes& changes, NodeKind kind);

  const StoreAccess& access_;
  SlotLists slots_;
  bool allUsed_ = true;
  NodeSet metNodes_;
  NodeSet metKeys_;
  NodeSet metValues_;
};

}  // namespace tamu::registry
