// The string nodes of a new name, and where they are hung.
#include "registry/filetree/TernaryRegistry.h"

namespace tamu::registry {

namespace {

// The link of `parent` that leads to `id`, looked for in this order, is set to `to`. False when
// there is none.
bool Relink(TernaryStringNode* parent, unsigned int id, unsigned int to) {
  if (parent->equal() == id) {
    parent->setEqual(to);
  } else if (parent->lo() == id) {
    parent->setLo(to);
  } else if (parent->hi() == id) {
    parent->setHi(to);
  } else if (parent->child() == id) {
    parent->setChild(to);
  } else {
    return false;
  }
  return true;
}

// The part of `node` before `cut`, ending in the character at `cut`, with `nodeId` behind it.
TernaryStringNode UpperPart(const TernaryStringNode& node, unsigned int cut, unsigned int nodeId) {
  TernaryStringNode upper;
  for (unsigned int i = 0; i < cut; ++i) upper.setSegment(i, node.segment(i));
  upper.setSegmentLength(cut);
  upper.setSplitChar(node.segment(cut));
  upper.setEqual(nodeId);
  return upper;
}

// `node` without its first cut + 1 characters; the bytes behind the rest are zero.
TernaryStringNode LowerPart(const TernaryStringNode& node, unsigned int cut) {
  TernaryStringNode lower = node;
  const unsigned int length = node.segmentLength() - cut - 1;
  for (unsigned int i = 0; i < TernaryStringNode::kSegmentMax; ++i) {
    lower.setSegment(i, i < length ? node.segment(cut + 1 + i) : static_cast<signed char>(0));
  }
  lower.setSegmentLength(length);
  return lower;
}

// Hangs the chain that starts with `first` on the link that the search has found empty.
void Hang(TernaryStringNode* target, bool asChild, bool asEqual, const TernaryStringNode& first,
          unsigned int firstId) {
  const signed char c = first.segmentLength() > 0 ? first.segment(0) : first.splitChar();
  if (asChild) {
    target->setChild(firstId);
  } else if (asEqual) {
    target->setEqual(firstId);
  } else if (target->splitChar() >= c) {
    target->setLo(firstId);
  } else {
    target->setHi(firstId);
  }
}

}  // namespace

unsigned int TernaryRegistry::CreateStringNode(unsigned int changes, const char* name,
                                               unsigned int* firstNode, unsigned int keyNode) {
  if (file == nullptr) return status::kNoRight;
  if (name == nullptr || firstNode == nullptr) return status::kBadArgument;
  unsigned int id = 0;
  unsigned int result = file->AcquireSlot(changes, NodeKind::kString, &id);
  if (result != status::kOk) return result;
  const unsigned int first = id;
  TernaryStringNode node;
  unsigned int length = 0;
  for (const char* c = name; *c != 0; ++c) {
    if (*c == '/') {
      // The nodes taken so far stay taken. Test: FileTreeKeys.AMissingParentCostsAStringNode
      *firstNode = 0;
      return status::kBadArgument;
    }
    if (length < TernaryStringNode::kSegmentMax) {
      node.setSegment(length++, static_cast<signed char>(*c));
      continue;
    }
    node.setSplitChar(static_cast<signed char>(*c));
    if (c[1] == 0) break;
    unsigned int next = 0;
    result = file->AcquireSlot(changes, NodeKind::kString, &next);
    if (result != status::kOk) return result;
    node.setEqual(next);
    node.setSegmentLength(length);
    result = file->WriteNode(changes, id, &node, false);
    if (result != status::kOk) return result;
    id = next;
    node = TernaryStringNode();
    length = 0;
  }
  if (length > 0 && node.splitChar() == 0) {
    --length;
    node.setSplitChar(node.segment(length));
    node.setSegment(length, 0);
  }
  node.setSegmentLength(length);
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
  const bool linked = Relink(&relinked, node, upperId);
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
  Hang(&after, match.matchChild(), match.matchEqual(), firstNode, first);
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
