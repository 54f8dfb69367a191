#include "tools/yaxreg/image/NodeGraph.h"

#include "registry/format/TernaryKeyNode.h"
#include "registry/keytree/NodeNames.h"

namespace yaxreg {

using tamu::registry::IsCutFrom;
using tamu::registry::kNodeLinks;
using tamu::registry::kStoredOrder;
using tamu::registry::LinkOf;
using tamu::registry::MakeNodeId;
using tamu::registry::TernaryKeyNode;

namespace {

unsigned char BitOf(NodeLink link) {
  return static_cast<unsigned char>(1u << static_cast<unsigned int>(link));
}

}  // namespace

NodeGraph::NodeGraph(RegistryImage& image)
    : image_(image),
      state_(image.Tables(NodeKind::kString)),
      linksTo_(image.Tables(NodeKind::kString)),
      dropped_(image.Tables(NodeKind::kString)) {
  FindRoot();
  if (root_ != 0) {
    linksTo_.Count(root_);  // the header's
    Walk(root_);
  }
  FindBeginnings();
  FindOrphans();
  if (broken_.size() == 1 && orphans_.size() == 1) Reattach();
}

unsigned int NodeGraph::TargetOf(unsigned int id, NodeLink link) const {
  if (IsMended(id, link)) return mendedTarget_;
  TernaryStringNode node;
  if (!IsUsable(id, link) || !image_.Read(NodeKind::kString, id, &node)) return 0;
  // Only the sub-keys' names are looked for behind the root.
  if (id == root_ && link != NodeLink::kChild) return 0;
  const unsigned int target = LinkOf(node, link);
  const auto found = beginnings_.find(target);
  const bool isCut = found != beginnings_.end() && found->second != 0 && found->second != id;
  return isCut ? found->second : target;
}

bool NodeGraph::IsPutBack(unsigned int id) const {
  TernaryStringNode node;
  if (beginnings_.empty() || !image_.Read(NodeKind::kString, id, &node)) return false;
  const auto found = beginnings_.find(node.equal());
  return found != beginnings_.end() && found->second == id;
}

bool NodeGraph::HasLostBeginning(unsigned int id) const {
  const auto found = beginnings_.find(id);
  return found != beginnings_.end() && found->second == 0;
}

bool NodeGraph::IsUsable(unsigned int id, NodeLink link) const {
  return (dropped_[id] & BitOf(link)) == 0;
}

// The root's string node has no characters. A slot that was never used looks like it, but is free.
bool NodeGraph::IsRoot(unsigned int id) const {
  TernaryStringNode node;
  return image_.Read(NodeKind::kString, id, &node) && node.segmentLength() == 0 &&
         node.splitChar() == 0 && !image_.IsFree(NodeKind::kString, id);
}

void NodeGraph::FindRoot() {
  const unsigned int stored = image_.startNode_;
  if (IsRoot(stored)) {
    root_ = stored;
    return;
  }
  root_ = SearchRoot();
  if (root_ != 0) {
    image_.Report(Severity::kDamage, "the header leads to a wrong start node");
  } else if (image_.Record(NodeKind::kString, stored) != nullptr) {
    root_ = stored;
    image_.Report(Severity::kDamage, "the start node is not like a root");
  } else if (stored != 0) {
    image_.Report(Severity::kLoss, "the header leads to a start node that does not exist");
  } else if (!image_.Tables(NodeKind::kString).empty()) {
    image_.Report(Severity::kNote, "there is no root key yet");
  }
}

unsigned int NodeGraph::SearchRoot() const {
  const std::vector<RegistryImage::Table>& tables = image_.Tables(NodeKind::kString);
  for (unsigned int table = 0; table < tables.size(); ++table) {
    for (unsigned int slot = 1; slot < tables[table].entries; ++slot) {
      const unsigned int id = MakeNodeId(table, slot);
      TernaryStringNode node;
      TernaryKeyNode key;
      if (IsRoot(id) && image_.Read(NodeKind::kString, id, &node) &&
          image_.Read(NodeKind::kKey, node.keyNode(), &key) && key.isRoot()) {
        return id;
      }
    }
  }
  return 0;
}

void NodeGraph::Walk(unsigned int from) {
  Enter(from);
  while (!steps_.empty()) {
    Step& step = steps_.back();
    if (step.nextLink == kNodeLinks) {
      Leave();
      continue;
    }
    const unsigned int id = step.id;
    const NodeLink link = kStoredOrder[step.nextLink++];
    const unsigned int target = TargetOf(id, link);
    if (target != 0) Follow(id, link, target);
  }
}

void NodeGraph::Enter(unsigned int id) {
  TernaryStringNode node;
  image_.Read(NodeKind::kString, id, &node);
  state_[id] = kEntered;
  if (node.hasKey() || node.keyNode() != 0) state_[id] |= kLive;
  image_.MarkReached(NodeKind::kString, id);
  nodes_.push_back(id);
  steps_.push_back({id, 0});
}

void NodeGraph::Follow(unsigned int id, NodeLink link, unsigned int target) {
  const bool exists = image_.Record(NodeKind::kString, target) != nullptr;
  const bool isCircle =
      exists && (target == root_ || (state_[target] & (kEntered | kLeft)) == kEntered);
  if (!exists || isCircle || image_.IsFree(NodeKind::kString, target)) {
    broken_.push_back({id, link});
  }
  if (!exists || isCircle) {
    dropped_[id] |= BitOf(link);
    return;
  }
  linksTo_.Count(target);
  if (state_[target] == 0) {
    Enter(target);
  } else if (IsLive(target)) {
    state_[id] |= kLive;
  }
}

void NodeGraph::Leave() {
  const unsigned int id = steps_.back().id;
  steps_.pop_back();
  state_[id] |= kLeft;
  if (IsLive(id) && !steps_.empty()) state_[steps_.back().id] |= kLive;
}

// In use, and not reached.
bool NodeGraph::IsStray(unsigned int id) const {
  return image_.Record(NodeKind::kString, id) != nullptr && state_[id] == 0 &&
         image_.IsInUse(NodeKind::kString, id);
}

std::vector<unsigned int> NodeGraph::LinksOf(unsigned int id) const {
  TernaryStringNode node;
  std::vector<unsigned int> links;
  if (!image_.Read(NodeKind::kString, id, &node)) return links;
  for (const NodeLink link : kStoredOrder) {
    if (LinkOf(node, link) != 0) links.push_back(LinkOf(node, link));
  }
  return links;
}

std::vector<unsigned int> NodeGraph::Strays() const {
  std::vector<unsigned int> strays;
  for (unsigned int table = 0; table < image_.Tables(NodeKind::kString).size(); ++table) {
    for (unsigned int slot = 1; slot < image_.Tables(NodeKind::kString)[table].entries; ++slot) {
      const unsigned int id = MakeNodeId(table, slot);
      if (IsStray(id)) strays.push_back(id);
    }
  }
  return strays;
}

void NodeGraph::FindBeginnings() {
  for (const unsigned int id : Strays()) {
    TernaryStringNode upper, lower;
    image_.Read(NodeKind::kString, id, &upper);
    const unsigned int target = upper.equal();
    if (!image_.Read(NodeKind::kString, target, &lower) || !IsCutFrom(upper, lower, target) ||
        !image_.IsReached(NodeKind::kString, target) ||
        !image_.IsInUse(NodeKind::kString, target)) {
      continue;
    }
    const bool isOnly = beginnings_.insert({target, id}).second;
    if (!isOnly) beginnings_[target] = 0;
  }
  for (const auto& [lower, upper] : beginnings_) {
    if (upper != 0) PutBack(upper, lower);
  }
}

void NodeGraph::PutBack(unsigned int upper, unsigned int lower) {
  state_[upper] = static_cast<unsigned char>(kEntered | kLeft | (state_[lower] & kLive));
  linksTo_.Count(upper);
  image_.MarkReached(NodeKind::kString, upper);
  nodes_.push_back(upper);
}

void NodeGraph::FindOrphans() {
  SlotCounters reachedKeys(image_.Tables(NodeKind::kKey));
  for (const unsigned int id : nodes_) {
    TernaryStringNode node;
    image_.Read(NodeKind::kString, id, &node);
    if (image_.HasSlot(NodeKind::kKey, node.keyNode())) reachedKeys.Count(node.keyNode());
  }
  const std::vector<unsigned int> strays = Strays();
  SlotCounters isLinked(image_.Tables(NodeKind::kString));
  for (const unsigned int id : strays) {
    for (const unsigned int target : LinksOf(id)) {
      if (image_.HasSlot(NodeKind::kString, target)) isLinked.Count(target);
    }
  }
  SlotCounters seen(image_.Tables(NodeKind::kString));
  for (const unsigned int id : strays) {
    if (isLinked[id] == 0 && LeadsToKey(id, &seen, reachedKeys)) orphans_.push_back(id);
  }
}

bool NodeGraph::LeadsToKey(unsigned int id, SlotCounters* seen,
                           const SlotCounters& reachedKeys) const {
  std::vector<unsigned int> pending = {id};
  bool leads = false;
  while (!pending.empty()) {
    const unsigned int next = pending.back();
    pending.pop_back();
    if (!IsStray(next) || seen->Count(next) > 1) continue;
    TernaryStringNode node;
    image_.Read(NodeKind::kString, next, &node);
    const unsigned int key = node.keyNode();
    if (image_.Record(NodeKind::kKey, key) != nullptr && reachedKeys[key] == 0 &&
        image_.IsInUse(NodeKind::kKey, key)) {
      leads = true;
    }
    for (const unsigned int target : LinksOf(next)) pending.push_back(target);
  }
  return leads;
}

// One link is broken and one subtree has lost its place: they belong together.
void NodeGraph::Reattach() {
  mended_ = broken_[0];
  mendedTarget_ = orphans_[0];
  orphans_.clear();
  state_[mended_.id] |= kLive;
  linksTo_.Count(mendedTarget_);
  Walk(mendedTarget_);
}

void NodeGraph::TakeOrphans() {
  for (const unsigned int id : orphans_) {
    linksTo_.Count(id);
    Walk(id);
  }
}

}  // namespace yaxreg
