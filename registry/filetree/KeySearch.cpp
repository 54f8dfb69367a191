#include "registry/filetree/KeySearch.h"

#include "registry/filetree/SubtreeNodes.h"

namespace tamu::registry {

namespace {

// Goes from record to record.
class NodeCursor {
 public:
  NodeCursor(const StoreAccess& access, NodeMatch* match, SubtreeNodes* spare)
      : access_(access),
        match_(*match),
        spare_(spare),
        stepsLeft_(access.Descriptor(NodeKind::kString).totalNodes + 1) {}

  Status Start(StringId id) {
    match_.directory = id;
    const Status result = access_.Read(id, &node_);
    if (!result.IsOk()) return result;
    if (spare_ != nullptr) spare_->SpareNode(id);
    match_.node = id;
    return result;
  }
  const TernaryStringNode& Node() const { return node_; }
  Status Follow(NodeLink link) {
    const StringId next = LinkOf(node_, link);
    if (next == 0) return status::kNotFound;
    // More steps than there are nodes: the links form a circle.
    if (stepsLeft_-- == 0) return status::kInvalidFile;
    match_.previous = match_.node;
    match_.node = next;
    if (spare_ != nullptr) {
      spare_->SpareKey(node_.keyNode());  // of the node before: the last one's key is found
      spare_->SpareNode(next);
    }
    const Status result = access_.ReadHere(next, &node_);
    return result.IsOk() && !node_.HasValidSegment() ? Status(status::kInvalidFile) : result;
  }
  // With a slash a name without key counts, as key 0.
  Status Arrive(bool withSlash) {
    if (!withSlash && !node_.hasKey()) return status::kNotFound;
    match_.keyNode = node_.keyNode();
    return status::kOk;
  }
  void Pass() { match_.directory = match_.node; }

 private:
  const StoreAccess& access_;
  NodeMatch& match_;
  SubtreeNodes* spare_;
  unsigned int stepsLeft_;
  TernaryStringNode node_;
};

}  // namespace

StringId StartNodeOf(const StoreAccess& access, const void* tree) {
  return tree == nullptr ? access.StartNode() : StringId();
}

Status SearchNodes(const StoreAccess& access, StringId startNode, const char* path,
                   NodeMatch* match, SubtreeNodes* spare) {
  NodeCursor cursor(access, match, spare);
  const Status result = cursor.Start(startNode);
  return result.IsOk() ? SearchPath(cursor, path != nullptr ? path : "", match) : result;
}

Status ReachKey(const StoreAccess& access, unsigned int user, StringId startNode, const char* path,
                unsigned char rights, Reached* reached, SubtreeNodes* spare) {
  // Who wants to know what is on the way has to go there. Test:
  // RegistryPathsOfFilesTest.WhatIsOnTheWayToADeletedKeyStaysThoughTheWayWasKnown
  const PathMemo::Question question(spare == nullptr ? access.Paths() : nullptr,
                                    access.Descriptor(NodeKind::kKey).usedNodes, startNode, path);
  PathMemo::Place place;
  Status result = status::kOk;
  if (question.Find(&place)) {
    reached->nodeId = static_cast<unsigned int>(place.end);
    reached->keyId = static_cast<unsigned int>(place.extra);
  } else {
    NodeMatch match;
    result = SearchNodes(access, startNode, path, &match, spare);
    if (!result.IsOk()) return result;
    question.Keep(match.node, match.keyNode);
    reached->nodeId = match.node;
    reached->keyId = match.keyNode;
  }
  if (reached->keyId != 0) result = access.ReadHere(reached->keyId, &reached->key);
  if (!result.IsOk()) return result;
  return IsAllowed(reached->key, user, rights) ? status::kOk : status::kNoRight;
}

Status ReachValue(const StoreAccess& access, const char* name, Reached* reached) {
  const unsigned int limit = access.Descriptor(NodeKind::kValue).totalNodes;
  ValueId id = reached->key.firstValue();
  for (unsigned int steps = 0; id != 0; ++steps) {
    if (steps >= limit) return status::kInvalidFile;
    if (!access.ReadHere(id, &reached->value).IsOk()) return status::kCannotOpen;
    if (reached->value.hasName(name)) {
      reached->valueId = id;
      return status::kOk;
    }
    reached->beforeId = id;
    id = reached->value.nextValue();
  }
  return status::kNotFound;
}

}  // namespace tamu::registry
