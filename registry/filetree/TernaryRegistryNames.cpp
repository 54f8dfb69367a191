// The string nodes of a new name, and where they are hung.
#include "registry/filetree/TernaryRegistry.h"
#include "registry/keytree/NodeNames.h"

namespace tamu::registry {

unsigned int TernaryRegistry::CreateStringNode(unsigned int, const char* name,
                                               unsigned int* firstNode, unsigned int keyNode) {
  if (file == nullptr) return status::kNoRight;
  if (name == nullptr || firstNode == nullptr) return status::kBadArgument;
  Changes changes(*file);
  return changes.End(SpellName(changes, name, firstNode, keyNode));
}

Status TernaryRegistry::SpellName(Changes& changes, const char* name, unsigned int* firstNode,
                                  unsigned int keyNode) {
  unsigned int id = 0;
  Status result = changes.Take(NodeKind::kString, &id);
  if (!result.IsOk()) return result;
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
    result = changes.Take(NodeKind::kString, &next);
    if (!result.IsOk()) return result;
    node.setEqual(next);
    result = changes.Write(id, node);
    if (!result.IsOk()) return result;
    id = next;
    node = TernaryStringNode();
  }
  node.setHasKey(keyNode != 0);
  node.setKeyNode(keyNode);
  result = changes.Write(id, node);
  if (result.IsOk()) *firstNode = first;
  return result;
}

unsigned int TernaryRegistry::SplitNode(unsigned int, unsigned int node, unsigned int,
                                        unsigned int cut, unsigned int previous,
                                        unsigned int* upper) {
  if (file == nullptr) return status::kNoRight;
  if (upper == nullptr) return status::kBadArgument;
  Changes changes(*file);
  return changes.End(Split(changes, node, cut, previous, upper));
}

Status TernaryRegistry::Split(Changes& changes, unsigned int node, unsigned int cut,
                              unsigned int previous, unsigned int* upper) {
  TernaryStringNode whole;
  Status result = changes.Read(node, &whole);
  if (!result.IsOk()) return result;
  if (!whole.HasValidSegment()) return status::kInvalidFile;
  if (whole.segmentLength() <= cut) {
    *upper = node;
    return status::kNoData;
  }
  TernaryStringNode parent;
  result = changes.Read(previous, &parent);
  if (!result.IsOk()) return result;
  if (previous == node) return status::kInvalidFile;
  unsigned int upperId = 0;
  result = changes.Take(NodeKind::kString, &upperId);
  if (result.IsOk()) result = changes.Write(upperId, UpperPart(whole, cut, node));
  if (result.IsOk()) result = changes.Write(node, LowerPart(whole, cut));
  NodeLink link = NodeLink::kEqual;
  if (result.IsOk() && FindLink(parent, node, &link)) {
    SetLink(&parent, link, upperId);
    result = changes.Write(previous, parent);
  }
  if (result.IsOk()) *upper = upperId;
  return result;
}

// Hangs the rest of a name, with the key at its end, where the search has stopped. The slot of the
// key is given back when the name is refused.
Status TernaryRegistry::HangName(Changes& changes, const KeyMatchDescriptor& match,
                                 unsigned int target, const char* name, unsigned int keyId) {
  unsigned int first = 0;
  Status result = SpellName(changes, name, &first, keyId);
  if (!result.IsOk()) return changes.GiveBack(NodeKind::kKey, keyId, result);
  TernaryStringNode node;
  TernaryStringNode firstNode;
  result = changes.Read(target, &node);
  if (result.IsOk()) result = changes.Read(first, &firstNode);
  if (!result.IsOk()) return result;
  SetLink(&node, LinkForName(node, match.matchChild(), match.matchEqual(), firstNode), first);
  result = changes.Write(target, node);
  return result.IsOk() ? changes.Write(first, firstNode) : result;
}

Status TernaryRegistry::EndNameAt(Changes& changes, unsigned int target, unsigned int keyId) {
  TernaryStringNode node;
  const Status result = changes.Read(target, &node);
  if (!result.IsOk()) return result;
  node.setKeyNode(keyId);
  node.setHasKey(true);
  return changes.Write(target, node);
}

}  // namespace tamu::registry
