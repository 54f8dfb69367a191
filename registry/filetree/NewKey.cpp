#include "registry/filetree/NewKey.h"

#include "registry/base/Rights.h"
#include "registry/keytree/NodeNames.h"

namespace tamu::registry {

namespace {

// Hangs the rest of a name, with the key at its end, where the search has stopped. The slot of the
// key is given back when the name is refused.
Status HangName(Changes& changes, const NodeMatch& match, StringId target, const char* name,
                KeyId keyId) {
  StringId first = 0;
  Status result = StoreName(changes, name, &first, keyId);
  if (!result.IsOk()) return changes.GiveBack(keyId, result);
  TernaryStringNode node;
  TernaryStringNode firstNode;
  result = changes.Read(target, &node);
  if (result.IsOk()) result = changes.Read(first, &firstNode);
  if (!result.IsOk()) return result;
  SetLink(&node, LinkForName(node, match, firstNode), first);
  result = changes.Write(target, node);
  return result.IsOk() ? changes.Write(first, firstNode) : result;
}

// The path goes on behind the cut only where its last character is the one that stands there.
const char* BehindExactCut(signed char atCut, const char* rest, unsigned int cut) {
  const bool endsThere = static_cast<signed char>(rest[cut]) == atCut && rest[cut + 1] == 0;
  return rest + cut + (endsThere ? 1 : 0);
}

Status EndNameAt(Changes& changes, StringId target, KeyId keyId) {
  TernaryStringNode node;
  const Status result = changes.Read(target, &node);
  if (!result.IsOk()) return result;
  EndName(&node, keyId);
  return changes.Write(target, node);
}

}  // namespace

Status StoreNewKey(Changes& changes, const TernaryKeyNode& key, KeyId* id) {
  const Status result = changes.Take(id);
  return result.IsOk() ? changes.Write(*id, key) : result;
}

Status StoreName(Changes& changes, const char* name, StringId* firstNode, KeyId keyId) {
  StringId first = 0;
  const Status result = WriteName(changes, name, keyId, [&](StringId id, const auto&) {
    if (first == 0) first = id;
    return Status(status::kOk);
  });
  if (result.IsOk()) *firstNode = first;
  if (result == status::kBadArgument) *firstNode = 0;
  return result;
}

Status CutNode(Changes& changes, StringId node, unsigned int cut, StringId previous,
               StringId* upper) {
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
  CutName parts;
  result = WriteCut(changes, node, whole, cut, &parts);
  NodeLink link = NodeLink::kEqual;
  if (result.IsOk() && FindLink(parent, node, &link)) {
    SetLink(&parent, link, parts.upperId);
    result = changes.Write(previous, parent);
  }
  if (result.IsOk()) *upper = parts.upperId;
  return result;
}

Status StoreKeyAt(Changes& changes, const NodeMatch& match, const char* path,
                  const TernaryKeyNode& key, NewNameRule rule, bool* atNode) {
  StringId target = match.node;
  const char* rest = path + match.position;
  Status result = status::kOk;
  if (match.splitIndex >= 0) {
    const unsigned int cut = static_cast<unsigned int>(match.splitIndex);
    result = CutNode(changes, match.node, cut, match.previous, &target);
    if (!result.IsOk()) return result;
    if (rule == NewNameRule::kExact) {
      TernaryStringNode upper;
      result = changes.Read(target, &upper);
      if (!result.IsOk()) return result;
      rest = BehindExactCut(upper.splitChar(), rest, cut);
    } else {
      rest = BehindCut(rest, cut);
    }
  }
  KeyId id = 0;
  result = StoreNewKey(changes, key, &id);
  if (!result.IsOk()) return result;
  *atNode = rest[0] == 0;
  return *atNode ? EndNameAt(changes, target, id) : HangName(changes, match, target, rest, id);
}

Status InheritPermission(const StoreAccess& access, const NodeMatch& match, unsigned int user,
                         TernaryKeyNode* key) {
  TernaryStringNode directory;
  Status result = access.Read(match.directory, &directory);
  if (!result.IsOk()) return result;
  if (directory.keyNode() == 0) return status::kNoRight;
  TernaryKeyNode parent;
  result = access.Read(directory.keyNode(), &parent);
  if (!result.IsOk()) return result;
  if (!parent.IsPermissible(user, kRightCreate)) return status::kNoRight;
  key->setPermission(InheritedPermission(parent));
  return status::kOk;
}

}  // namespace tamu::registry
