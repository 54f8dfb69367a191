#include "registry/filetree/NodeWalk.h"

namespace tamu::registry {

Status NodeWalk::Start(unsigned int id) {
  TernaryStringNode node;
  const Status result = access_.Read(id, &node);
  return result.IsOk() ? Start(node, id) : result;
}

Status NodeWalk::Start(const TernaryStringNode& node, unsigned int id) {
  way_.Clear();
  if (id != 0 && !met_.Add(id)) return status::kInvalidFile;
  Frame first;
  first.node = node;
  first.id = id;
  entered_ = true;
  return way_.Push(first);
}

Status NodeWalk::Next() {
  if (!entered_) way_.Pop();  // the node that was left is done
  entered_ = false;
  if (way_.IsEmpty()) return status::kOk;
  Frame& top = way_.Top();
  while (top.tried < kNodeLinks) {
    Frame next;
    next.via = order_[top.tried++];
    next.id = LinkOf(top.node, next.via);
    if (next.id == 0) continue;
    if (damage_ == Damage::kSkipped && !access_.IsUsed(NodeKind::kString, next.id)) continue;
    const Status result =
        met_.Add(next.id) ? access_.Read(next.id, &next.node) : Status(status::kInvalidFile);
    if (result.IsOk()) {
      entered_ = true;
      return way_.Push(next);
    }
    if (damage_ == Damage::kEndsWalk) return result;
  }
  return status::kOk;
}

}  // namespace tamu::registry
