#include "registry/filetree/NodeWalk.h"

namespace tamu::registry {

unsigned int LinkOf(const TernaryStringNode& node, NodeLink link) {
  switch (link) {
    case NodeLink::kLo:
      return node.lo();
    case NodeLink::kHi:
      return node.hi();
    case NodeLink::kEqual:
      return node.equal();
    case NodeLink::kChild:
      return node.child();
  }
  return 0;
}

void SetLink(TernaryStringNode* node, NodeLink link, unsigned int id) {
  switch (link) {
    case NodeLink::kLo:
      node->setLo(id);
      break;
    case NodeLink::kHi:
      node->setHi(id);
      break;
    case NodeLink::kEqual:
      node->setEqual(id);
      break;
    case NodeLink::kChild:
      node->setChild(id);
      break;
  }
}

unsigned int NodeWalk::Start(unsigned int id) {
  TernaryStringNode node;
  const unsigned int result = access_.Read(id, &node);
  return result == status::kOk ? Start(node, id) : result;
}

unsigned int NodeWalk::Start(const TernaryStringNode& node, unsigned int id) {
  depth_ = 0;
  if (id != 0 && !met_.Add(id)) return status::kInvalidFile;
  const unsigned int result = frames_.GrowTo(1);
  if (result != status::kOk) return result;
  *frames_[depth_++] = Frame();
  frames_[0]->node = node;
  frames_[0]->id = id;
  entered_ = true;
  return status::kOk;
}

unsigned int NodeWalk::Next() {
  if (!entered_) --depth_;  // the node that was left is done
  entered_ = false;
  if (depth_ == 0) return status::kOk;
  unsigned int result = frames_.GrowTo(depth_ + 1);
  if (result != status::kOk) return result;
  Frame& top = *frames_[depth_ - 1];
  while (top.tried < kNodeLinks) {
    const NodeLink link = order_[top.tried++];
    const unsigned int id = LinkOf(top.node, link);
    if (id == 0) continue;
    if (damage_ == Damage::kSkipped && !access_.IsUsed(NodeKind::kString, id)) continue;
    Frame& next = *frames_[depth_];
    result = met_.Add(id) ? access_.Read(id, &next.node) : status::kInvalidFile;
    if (result != status::kOk) {
      if (damage_ == Damage::kSkipped) continue;
      return result;
    }
    next.id = id;
    next.mark = 0;
    next.tried = 0;
    next.via = link;
    ++depth_;
    entered_ = true;
    return status::kOk;
  }
  return status::kOk;
}

}  // namespace tamu::registry
