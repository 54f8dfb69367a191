#include "registry/memtree/NameSplit.h"

#include "registry/keytree/NodeNames.h"
#include "registry/memtree/LoadedObject.h"
#include "registry/memtree/StringWalk.h"

namespace tamu::registry {

namespace {

// The link on which `string` hangs. False when it hangs elsewhere: in a damaged file several links
// may lead to one string, which is loaded for one of them.
bool FindLoadedLink(TernaryString* parent, TernaryString* string, NodeLink* link) {
  for (const NodeLink candidate : kSplitOrder) {
    const bool isPutAway = candidate == NodeLink::kChild && parent->isLocked();
    const TernaryString* there = isPutAway ? parent->parked : SlotOf(*parent, candidate);
    if (there != string || LinkOf(parent->node, candidate) != string->id) continue;
    *link = candidate;
    return true;
  }
  return false;
}

}  // namespace

void LinkString(TernaryString* parent, NodeLink link, TernaryString* string) {
  if (link == NodeLink::kChild) {
    parent->SetDirectory(string);
  } else {
    SlotOf(*parent, link) = string;
  }
}

Status NameSplit::Write(Changes& changes, TernaryString* string, unsigned int cut,
                        TernaryString* parent) {
  if (string->node.segmentLength() <= cut) return status::kNoData;
  if (parent != nullptr) {
    if (parent == string || !FindLink(parent->node, string->id, &link_)) {
      return status::kBadArgument;
    }
    if (!FindLoadedLink(parent, string, &link_)) return status::kInvalidFile;
  }
  CutName parts;
  Status result = WriteCut(changes, string->id, string->node, cut, &parts);
  if (result.IsOk()) result = MakeLoaded(parts.upperId, parts.upper, &upper_);
  if (!result.IsOk()) return result;
  string_ = string;
  parent_ = parent;
  lower_ = parts.lower;
  if (parent == nullptr) return changes.SetStartNode(parts.upperId);
  relinked_ = parent->node;
  SetLink(&relinked_, link_, parts.upperId);
  return changes.Write(parent->id, relinked_);
}

TernaryString* NameSplit::Apply() {
  TernaryString* upper = upper_.release();
  string_->node = lower_;
  upper->equal = string_;
  if (parent_ != nullptr) {
    parent_->node = relinked_;
    LinkString(parent_, link_, upper);
  }
  return upper;
}

}  // namespace tamu::registry
