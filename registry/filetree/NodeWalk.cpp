#include "registry/filetree/NodeWalk.h"

namespace tamu::registry {

Status NodeWalk::Start(StringId id) {
  TernaryStringNode node;
  const Status result = access_.Read(id, &node);
  return result.IsOk() ? Start(node, id) : result;
}

Status NodeWalk::Start(const TernaryStringNode& node, StringId id) {
  way_.CutTo(0);
  if (id != 0 && !met_.Add(id)) return status::kInvalidFile;
  if (!way_.Extend(1).IsOk()) return status::kNoMemory;
  top_ = &way_.Top();
  *top_ = {node, id, 0, 0, NodeLink::kLo};
  entered_ = true;
  return status::kOk;
}

Status NodeWalk::Next() {
  return Step();
}

}  // namespace tamu::registry
