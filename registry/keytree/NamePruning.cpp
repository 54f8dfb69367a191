#include "registry/keytree/NamePruning.h"

#include "registry/base/Stack.h"
#include "registry/keytree/NodeNames.h"

namespace tamu::registry {

namespace {

// Goes down a name and keeps the ids of the nodes on the way.
class NameWay {
 public:
  explicit NameWay(const StoreAccess& access)
      : access_(access), stepsLeft_(access.Descriptor(NodeKind::kString).totalNodes + 1) {}

  Status Start(StringId id) { return Go(id); }
  const TernaryStringNode& Node() const { return node_; }
  Status Follow(NodeLink link) {
    const StringId next = LinkOf(node_, link);
    if (next == 0) return status::kNotFound;
    if (stepsLeft_-- == 0) return status::kInvalidFile;
    return Go(next);
  }
  Status Arrive(bool) { return status::kOk; }
  void Pass() {}

  unsigned int Count() const { return ids_.Count(); }
  StringId Pop() { return ids_.Pop(); }
  StringId Last() const { return ids_.Top(); }
  bool Has(StringId id) const {
    for (unsigned int i = 0; i < ids_.Count(); ++i) {
      if (ids_[i] == id) return true;
    }
    return false;
  }

 private:
  Status Go(StringId id) {
    Status result = access_.Read(id, &node_);
    if (result.IsOk() && !node_.HasValidSegment()) result = status::kInvalidFile;
    if (result.IsOk()) result = ids_.Push(id);
    return result;
  }

  const StoreAccess& access_;
  unsigned int stepsLeft_;
  TernaryStringNode node_;
  Stack<StringId> ids_;
};

// How many of lo, hi and equal lead on; *link is the last of them.
unsigned int CountWaysOn(const TernaryStringNode& node, NodeLink* link) {
  unsigned int count = 0;
  for (const NodeLink each : {NodeLink::kLo, NodeLink::kHi, NodeLink::kEqual}) {
    if (LinkOf(node, each) == 0) continue;
    *link = each;
    ++count;
  }
  return count;
}

bool IsNeeded(const TernaryStringNode& node) {
  return node.hasKey() || node.keyNode() != 0 || node.child() != 0;
}

// False when the characters of both are more than a node holds.
bool JoinNodes(const TernaryStringNode& upper, NodeLink link, const TernaryStringNode& lower,
               TernaryStringNode* joined) {
  signed char name[2 * kNodeNameMax] = {};
  unsigned int length = 0;
  for (unsigned int i = 0; i < upper.segmentLength(); ++i) name[length++] = upper.segment(i);
  if (link == NodeLink::kEqual) name[length++] = upper.splitChar();
  for (unsigned int i = 0; i < lower.segmentLength(); ++i) name[length++] = lower.segment(i);
  if (length > TernaryStringNode::kSegmentMax) return false;
  *joined = lower;
  joined->setSegmentLength(length);
  for (unsigned int i = 0; i < TernaryStringNode::kSegmentMax; ++i) {
    joined->setSegment(i, name[i]);  // behind the length it is 0
  }
  return true;
}

// With one write the node becomes the one that it leads to.
Status JoinWithNext(Changes& changes, const NameWay& way, StringId id,
                    const TernaryStringNode& node, NodeLink link) {
  const StringId nextId = LinkOf(node, link);
  if (nextId == id || way.Has(nextId)) return status::kInvalidFile;
  TernaryStringNode next;
  Status result = changes.Read(nextId, &next);
  if (!result.IsOk()) return result;
  if (!next.HasValidSegment()) return status::kInvalidFile;
  TernaryStringNode joined;
  if (!JoinNodes(node, link, next, &joined)) return result;
  result = changes.Write(id, joined);
  return result.IsOk() ? changes.Release(nextId) : result;
}

Status CutOff(Changes& changes, StringId aboveId, StringId id) {
  TernaryStringNode above;
  Status result = changes.Read(aboveId, &above);
  NodeLink link = NodeLink::kEqual;
  if (!result.IsOk()) return result;
  if (!FindLink(above, id, &link)) return status::kInvalidFile;
  SetLink(&above, link, 0);
  if (FindLink(above, id, &link)) return status::kInvalidFile;
  result = changes.Write(aboveId, above);
  return result.IsOk() ? changes.Release(id) : result;
}

}  // namespace

Status PruneName(Changes& changes, const char* path) {
  NameWay way(changes);
  PathMatch match;
  Status result = way.Start(changes.StartNode());
  if (result.IsOk()) result = SearchPath(way, path != nullptr ? path : "", &match);
  // The root's node stays.
  while (result.IsOk() && way.Count() > 1) {
    const StringId id = way.Pop();
    if (way.Has(id)) return status::kInvalidFile;
    TernaryStringNode node;
    result = changes.Read(id, &node);
    if (!result.IsOk() || IsNeeded(node)) return result;
    NodeLink link = NodeLink::kEqual;
    const unsigned int ways = CountWaysOn(node, &link);
    if (ways > 1) return result;
    if (ways == 1) return JoinWithNext(changes, way, id, node, link);
    result = CutOff(changes, way.Last(), id);
  }
  return result;
}

void PruneNameIfSound(Changes& changes, const char* path) {
  const Changes::Mark before = changes.Here();
  if (!PruneName(changes, path).IsOk()) changes.UndoTo(before);
}

}  // namespace tamu::registry
