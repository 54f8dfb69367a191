// The string nodes of a new name, and where they are hung.
#include "registry/filetree/TernaryRegistry.h"
#include "registry/keytree/NodeNames.h"

namespace tamu::registry {

unsigned int TernaryRegistry::CreateStringNode(unsigned int changes, const char* name,
                                               unsigned int* firstNode, unsigned int keyNode) {
  if (file == nullptr) return status::kNoRight;
  if (name == nullptr || firstNode == nullptr) return status::kBadArgument;
  unsigned int id = 0;
  unsigned int result = file->AcquireSlot(changes, NodeKind::kString, &id);
  if (result != status::kOk) return result;
  const unsigned int first = id;
  TernaryStringNode node;
  for (const char* rest = name;;) {
    const unsigned int taken = TakeName(&node, rest);
    rest += taken;
    if (*rest == 0) break;
    if (taken < kNodeNameMax) {
      // A "/". The nodes taken so far stay taken. Test: FileTreeKeys.AMissingParentCostsAStringNode
      *firstNode = 0;
      return status::kBadArgument;
    }
    unsigned int next = 0;
    result = file->AcquireSlot(changes, NodeKind::kString, &next);
    if (result != status::kOk) return result;
    node.setEqual(next);
    result = file->WriteNode(changes, id, &node, false);
    if (result != status::kOk) return result;
    id = next;
    node = TernaryStringNode();
  }
  node.setHasKey(keyNode != 0);
  node.setKeyNode(keyNode);
  result = file->WriteNode(changes, id, &node, false);
  if (result == status::kOk) *firstNode = first;
  return result;
}

unsigned int TernaryRegistry::SplitNode(unsigned int changes, unsigned int node, unsigned int,
                                        unsigned int cut, unsigned int previous,
                                        unsigned int* upper) {
  if (file == nullptr) return status::kNoRight;
  if (upper == nullptr) return status::kBadArgument;
  AccessScope access(*file);
  TernaryStringNode before;
  unsigned int result = access.Read(node, &before);
  if (result != status::kOk) return result;
  if (!before.HasValidSegment()) return status::kInvalidFile;
  if (before.segmentLength() <= cut) {
    *upper = node;
    return status::kNoData;
  }
  TernaryStringNode parent;
  result = access.Read(previous, &parent);
  if (result != status::kOk) return result;
  if (previous == node) return status::kInvalidFile;
  unsigned int upperId = 0;
  result = file->AcquireSlot(changes, NodeKind::kString, &upperId);
  if (result != status::kOk) return result;
  TernaryStringNode upperNode = UpperPart(before, cut, node);
  TernaryStringNode lowerNode = LowerPart(before, cut);
  TernaryStringNode relinked = parent;
  NodeLink link = NodeLink::kEqual;
  const bool linked = FindLink(parent, node, &link);
  if (linked) SetLink(&relinked, link, upperId);
  result = file->WriteNode(changes, upperId, &upperNode, false);
  if (result == status::kOk) result = file->WriteNode(changes, node, &lowerNode, false);
  if (result == status::kOk && linked) {
    result = file->WriteNode(changes, previous, &relinked, false);
  }
  if (result == status::kOk) {
    *upper = upperId;
    return status::kOk;
  }
  // Without its upper part the lower one would be a different name, and nothing is given back that
  // may still be linked.
  if (file->WriteNode(changes, node, &before, false) == status::kOk &&
      (!linked || file->WriteNode(changes, previous, &parent, false) == status::kOk)) {
    file->ReleaseNode(changes, upperId, nullptr);
  }
  return result;
}

// Gives back the chain of a name that hangs nowhere. The result is that of the last read.
unsigned int TernaryRegistry::ReleaseChain(ChangeScope& changes, unsigned int first) {
  unsigned int result = status::kOk;
  for (unsigned int id = first; id != 0;) {
    TernaryStringNode node;
    result = changes.Read(id, &node);
    if (result != status::kOk) return result;
    if (file->ReleaseNode(changes.id(), id, nullptr) != status::kOk) return result;
    id = node.equal();
  }
  return result;
}

unsigned int TernaryRegistry::HangName(ChangeScope& changes, const KeyMatchDescriptor& match,
                                       unsigned int target, const char* name, unsigned int keyId) {
  unsigned int first = 0;
  unsigned int result = CreateStringNode(changes.id(), name, &first, keyId);
  if (result != status::kOk) {
    file->ReleaseKeyNode(changes.id(), keyId, nullptr);
    return result;
  }
  TernaryStringNode before;
  TernaryStringNode firstNode;
  result = changes.Read(target, &before);
  if (result == status::kOk) result = changes.Read(first, &firstNode);
  if (result != status::kOk) {
    file->ReleaseKeyNode(changes.id(), keyId, nullptr);
    const unsigned int released = ReleaseChain(changes, first);
    return released != status::kOk ? released : result;
  }
  TernaryStringNode after = before;
  SetLink(&after, LinkForName(before, match.matchChild(), match.matchEqual(), firstNode), first);
  result = file->WriteNode(changes.id(), target, &after, false);
  if (result == status::kOk) result = file->WriteNode(changes.id(), first, &firstNode, false);
  if (result == status::kOk) return status::kOk;
  // Nothing is given back that the target may still lead to.
  if (file->WriteNode(changes.id(), target, &before, false) == status::kOk) {
    file->ReleaseKeyNode(changes.id(), keyId, nullptr);
    ReleaseChain(changes, first);
  }
  return result;
}

unsigned int TernaryRegistry::EndNameAt(ChangeScope& changes, unsigned int target,
                                        unsigned int keyId) {
  TernaryStringNode before;
  unsigned int result = changes.Read(target, &before);
  if (result != status::kOk) {
    file->ReleaseKeyNode(changes.id(), keyId, nullptr);
    return result;
  }
  TernaryStringNode after = before;
  after.setKeyNode(keyId);
  after.setHasKey(true);
  bool putBack = false;
  result = ReplaceNode(changes, target, before, &after, &putBack);
  if (putBack) file->ReleaseKeyNode(changes.id(), keyId, nullptr);
  return result;
}

// Writes a node that is part of the tree. A write that fails may have written a part of the record:
// *putBack tells whether the node was written as before, and leads nowhere new.
unsigned int TernaryRegistry::ReplaceNode(ChangeScope& changes, unsigned int id,
                                          const TernaryStringNode& before, TernaryStringNode* after,
                                          bool* putBack) {
  const unsigned int result = file->WriteNode(changes.id(), id, after, false);
  if (result == status::kOk) return status::kOk;
  TernaryStringNode again = before;
  *putBack = file->WriteNode(changes.id(), id, &again, false) == status::kOk;
  return result;
}

}  // namespace tamu::registry
