#include "registry/filetree/SubtreeNodes.h"

#include "registry/filetree/ValueWalk.h"

namespace tamu::registry {

Status SubtreeNodes::Prepare() {
  Status result = metNodes_.Prepare(access_.Descriptor(NodeKind::kString));
  if (result.IsOk()) result = metKeys_.Prepare(access_.Descriptor(NodeKind::kKey));
  if (result.IsOk()) result = metValues_.Prepare(access_.Descriptor(NodeKind::kValue));
  return result;
}

void SubtreeNodes::SpareNode(StringId id) {
  allUsed_ = access_.IsUsed(id) && allUsed_;
  metNodes_.Add(id);
}

Status SubtreeNodes::CollectSubtree(StringId first) {
  if (first == 0) return status::kOk;
  TernaryStringNode node;
  Status result = access_.Read(first, &node);
  if (!result.IsOk()) return result;
  if (!access_.IsUsed(first)) return status::kInvalidFile;
  NodeWalk walk(access_, kStoredOrder, metNodes_, NodeWalk::Damage::kSkipped);
  result = walk.Start(node, first);
  while (result.IsOk() && !walk.IsOver()) {
    if (!walk.IsEntered()) {
      result = CollectKey(walk.Node().keyNode());
      if (result.IsOk()) result = slots_.Of(NodeKind::kString).Push(walk.Id());
    }
    if (result.IsOk()) result = walk.Next();
  }
  return result;
}

Status SubtreeNodes::CollectKeyTree(unsigned int user, StringId startNode, const char* path,
                                    unsigned char rights, Reached* reached,
                                    TernaryStringNode* node) {
  Status result = Prepare();
  if (result.IsOk()) result = ReachKey(access_, user, startNode, path, rights, reached, this);
  if (result.IsOk()) result = access_.Read(reached->nodeId, node);
  if (!result.IsOk()) return result;
  if (CollectSubtree(node->child()) == status::kNoMemory) return status::kNoMemory;
  return CollectKey(reached->keyId);
}

Status SubtreeNodes::CollectKey(KeyId keyNode) {
  TernaryKeyNode key;
  if (!access_.IsUsed(keyNode) || !metKeys_.Add(keyNode)) return status::kOk;
  if (!access_.Read(keyNode, &key).IsOk()) return status::kOk;
  if (CollectValues(key) == status::kNoMemory) return status::kNoMemory;
  return slots_.Of(NodeKind::kKey).Push(keyNode);
}

Status SubtreeNodes::CollectValues(const TernaryKeyNode& key) {
  ValueWalk walk(access_, key.firstValue(), &metValues_);
  for (; !walk.IsOver(); walk.Advance()) {
    Status result = walk.Read();
    const bool used = access_.IsUsed(walk.Id());
    if (result.IsOk() && !used) result = status::kInvalidFile;
    if (result.IsOk()) result = slots_.Of(NodeKind::kValue).Push(walk.Id());
    const TernaryValueNode& value = walk.Record();
    const bool hasBlocks = value.isInBlocks() && value.dataWord() != 0;
    if (result.IsOk() && hasBlocks && access_.ReusesSpace()) {
      result = slots_.Of(NodeKind::kData).Push(value.dataWord());
    }
    if (!result.IsOk()) return result;
  }
  return status::kOk;
}

Status SubtreeNodes::ReleaseAll(Changes& changes, NodeKind kind) {
  Status result = status::kOk;
  const Stack<unsigned int>& ids = slots_.Of(kind);
  for (unsigned int i = 0; i < ids.Count(); ++i) {
    result = kind == NodeKind::kData ? changes.ReleaseData(ids[i]) : changes.Release(kind, ids[i]);
  }
  return result;
}

Status SubtreeNodes::Release(Changes& changes) {
  ReleaseAll(changes, NodeKind::kData).Ignore();
  ReleaseAll(changes, NodeKind::kValue).Ignore();  // what cannot be given back stays in use
  ReleaseAll(changes, NodeKind::kKey).Ignore();
  return ReleaseAll(changes, NodeKind::kString);
}

}  // namespace tamu::registry
