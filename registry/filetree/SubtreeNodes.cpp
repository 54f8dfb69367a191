#include "registry/filetree/SubtreeNodes.h"

#include "registry/filetree/ValueWalk.h"

namespace tamu::registry {

unsigned int SubtreeNodes::Prepare() {
  unsigned int result = metNodes_.Prepare(store_.Descriptor(NodeKind::kString));
  if (result == status::kOk) result = metKeys_.Prepare(store_.Descriptor(NodeKind::kKey));
  if (result == status::kOk) result = metValues_.Prepare(store_.Descriptor(NodeKind::kValue));
  return result;
}

void SubtreeNodes::SpareNode(unsigned int id) {
  allUsed_ = access_.IsUsed(NodeKind::kString, id) && allUsed_;
  metNodes_.Add(id);
}

unsigned int SubtreeNodes::CollectSubtree(unsigned int first) {
  if (first == 0) return status::kOk;
  TernaryStringNode node;
  unsigned int result = access_.Read(first, &node);
  if (result != status::kOk) return result;
  if (!access_.IsUsed(NodeKind::kString, first)) return status::kInvalidFile;
  NodeWalk walk(access_, kStoredOrder, metNodes_, NodeWalk::Damage::kSkipped);
  result = walk.Start(node, first);
  while (result == status::kOk && !walk.IsOver()) {
    if (!walk.IsEntered()) {
      result = CollectKey(walk.Node().keyNode());
      if (result == status::kOk) result = slots_.Of(NodeKind::kString).Push(walk.Id());
    }
    if (result == status::kOk) result = walk.Next();
  }
  return result;
}

unsigned int SubtreeNodes::CollectKey(unsigned int keyNode) {
  TernaryKeyNode key;
  if (!access_.IsUsed(NodeKind::kKey, keyNode) || !metKeys_.Add(keyNode)) return status::kOk;
  if (access_.Read(keyNode, &key) != status::kOk) return status::kOk;
  if (CollectValues(key) == status::kNoMemory) return status::kNoMemory;
  return slots_.Of(NodeKind::kKey).Push(keyNode);
}

unsigned int SubtreeNodes::CollectValues(const TernaryKeyNode& key) {
  ValueWalk walk(store_, access_, key.firstValue(), &metValues_);
  for (; !walk.IsOver(); walk.Advance()) {
    unsigned int result = walk.Read();
    const bool used = access_.IsUsed(NodeKind::kValue, walk.Id());
    if (result == status::kOk && !used) result = status::kInvalidFile;
    if (result == status::kOk) result = slots_.Of(NodeKind::kValue).Push(walk.Id());
    if (result != status::kOk) return result;
  }
  return status::kOk;
}

Status SubtreeNodes::ReleaseAll(Changes& changes, NodeKind kind) {
  Status result = status::kOk;
  const Stack<unsigned int>& ids = slots_.Of(kind);
  for (unsigned int i = 0; i < ids.Count(); ++i) result = changes.Release(kind, ids[i]);
  return result;
}

Status SubtreeNodes::Release(Changes& changes) {
  ReleaseAll(changes, NodeKind::kValue).Ignore();  // what cannot be given back stays in use
  ReleaseAll(changes, NodeKind::kKey).Ignore();
  return ReleaseAll(changes, NodeKind::kString);
}

}  // namespace tamu::registry
