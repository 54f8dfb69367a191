#include "tools/yaxreg/image/TreeReader.h"

#include <algorithm>
#include <utility>

#include "registry/UserId.h"

namespace yaxreg {

using tamu::registry::LinkOf;
using tamu::registry::TernaryKeyNode;

namespace {

constexpr int kNoLower = -1000;
constexpr int kNoUpper = 1000;
constexpr char kLostAndFound[] = "lost+found";
constexpr unsigned int kMostVisits = 2;  // of a node that several links lead to
constexpr unsigned char kKnownFlags =
    TernaryStringNode::kFlagKey | TernaryStringNode::kFlagLocked | TernaryStringNode::kFlagWaiters;

bool IsNameCharacter(signed char c) {
  return c != 0 && c != '/';
}

bool HasReadableSegment(const TernaryStringNode& node) {
  if (!node.HasValidSegment()) return false;
  for (unsigned int i = 0; i < node.segmentLength(); ++i) {
    if (!IsNameCharacter(node.segment(i))) return false;
  }
  return true;
}

// Stands for characters of a name that cannot be read: "(0x500)".
std::string Stopgap(unsigned int id) {
  const std::string name = RegistryImage::NodeName(NodeKind::kString, id);
  return '(' + name.substr(name.rfind(' ') + 1) + ')';
}

}  // namespace

TreeReader::TreeReader(RegistryImage& image, Orphans orphans)
    : image_(image),
      graph_(TakeGraph(image, orphans)),
      keys_(image, KeyIds()),
      visits_(image.Tables(NodeKind::kString)) {}

NodeGraph TreeReader::TakeGraph(RegistryImage& image, Orphans orphans) {
  NodeGraph graph(image);
  if (orphans == Orphans::kAlways || graph.IsBroken()) {
    graph.TakeOrphans();
  } else if (!graph.orphans().empty()) {
    image.Report(Severity::kNote,
                 "there are keys in use that nothing leads to: deleted while they "
                 "were open, or lost; yaxreg repair saves them, too");
  }
  return graph;
}

std::vector<unsigned int> TreeReader::KeyIds() const {
  std::vector<unsigned int> ids;
  for (const unsigned int id : graph_.nodes()) {
    TernaryStringNode node;
    image_.Read(NodeKind::kString, id, &node);
    if (node.keyNode() != 0) ids.push_back(node.keyNode());
  }
  return ids;
}

void TreeReader::Run() {
  ReadRoot();
  for (const unsigned int id : graph_.nodes()) {
    if (!graph_.IsLive(id) && id != graph_.root()) ++image_.deadNodes_;
  }
  for (size_t i = 0; i < found_.size(); ++i) ReadDirectory(i);
  Flatten();
}

void TreeReader::ReadRoot() {
  Found root = {{}, Content::kNone, 0, 0, 0};
  root.key.isMadeUp = true;
  root.key.owner = TernaryKeyNode::kRootOwner;
  root.key.permission = TernaryKeyNode::kRootPermission;
  found_.push_back(std::move(root));
  TernaryStringNode node;
  if (!image_.Read(NodeKind::kString, graph_.root(), &node)) return;
  if (LinkOf(node, NodeLink::kLo) != 0 || LinkOf(node, NodeLink::kHi) != 0 ||
      LinkOf(node, NodeLink::kEqual) != 0) {
    image_.Report(Severity::kDamage, "the root's string node has neighbours");
  }
  ReportLeftovers(graph_.root(), node, 0);
  if (node.keyNode() != 0) {
    const auto path = [] { return std::string(); };
    ContentKey& key = found_[0].key;
    key.isMadeUp = !keys_.Read(node.keyNode(), true, path, &key);
  } else {
    image_.Report(Severity::kDamage, "the registry has no root key, no key can be created", "");
  }
  found_[0].subKeys = graph_.TargetOf(graph_.root(), NodeLink::kChild);
  CheckSubKeys(graph_.root(), "");
}

void TreeReader::CheckSubKeys(unsigned int id, const std::string& path) {
  if (graph_.IsMended(id, NodeLink::kChild)) {
    image_.Report(Severity::kLoss,
                  "the link to its sub-keys is broken; those that nothing leads to are taken for "
                  "them",
                  path);
  } else if (!graph_.IsUsable(id, NodeLink::kChild)) {
    image_.Report(Severity::kLoss, "its sub-keys cannot be read", path);
  }
}

void TreeReader::ReadDirectory(size_t parent) {
  if (parent == lostAndFound_) return ReadLostAndFound();
  if (found_[parent].subKeys == 0 && parent > 0) return;
  std::vector<Entry> entries;
  if (found_[parent].subKeys != 0) {
    pending_.push_back({found_[parent].subKeys, "", kNoLower, kNoUpper});
  }
  while (!pending_.empty()) {
    const Visit visit = std::move(pending_.back());
    pending_.pop_back();
    VisitNode(visit, parent, &entries);
  }
  // Of two equal names the one that a search finds comes first.
  std::stable_sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) {
    return a.name != b.name ? a.name < b.name : a.isOrdered && !b.isOrdered;
  });
  found_[parent].firstChild = found_.size();
  for (const Entry& entry : entries) ReadEntry(entry, parent);
  if (parent == 0) AddOrphans();
  found_[parent].children = found_.size() - found_[parent].firstChild;
}

// Keys that have lost their place are put below "lost+found", each by the number of the node from
// which on its name is known.
void TreeReader::AddOrphans() {
  if (graph_.orphans().empty() || !image_.IsReached(NodeKind::kString, graph_.orphans()[0])) return;
  std::string name = kLostAndFound;
  const auto hasName = [&](const Found& found) {
    return found.parent == 0 && found.key.name == name;
  };
  while (std::any_of(found_.begin() + 1, found_.end(), hasName)) name += '+';
  AddMadeUp(name, 0, 0);
  const auto first = found_.begin() + 1;
  std::stable_sort(first, found_.end(),
                   [](const Found& a, const Found& b) { return a.key.name < b.key.name; });
  const auto folder = std::find_if(first, found_.end(), hasName);
  lostAndFound_ = static_cast<size_t>(folder - found_.begin());
}

void TreeReader::AddMadeUp(const std::string& name, size_t parent, unsigned int subKeys) {
  Found found = {{}, parent, subKeys, 0, 0};
  found.key.name = name;
  found.key.depth = found_[parent].key.depth + 1;
  found.key.isMadeUp = true;
  found.key.owner = tamu::registry::kAdministratorId;
  found.key.permission =
      parent == 0 ? TernaryKeyNode::kTopPermission : found_[parent].key.permission;
  found_.push_back(std::move(found));
}

void TreeReader::ReadLostAndFound() {
  image_.Report(Severity::kLoss, "keys that nothing leads to: their paths are lost",
                PathOf(lostAndFound_));
  std::vector<std::pair<std::string, unsigned int>> names;
  for (const unsigned int id : graph_.orphans()) names.emplace_back(Stopgap(id), id);
  std::sort(names.begin(), names.end());
  found_[lostAndFound_].firstChild = found_.size();
  for (const auto& [name, id] : names) AddMadeUp(name, lostAndFound_, id);
  found_[lostAndFound_].children = names.size();
}

void TreeReader::VisitNode(const Visit& visit, size_t parent, std::vector<Entry>* entries) {
  TernaryStringNode node;
  image_.Read(NodeKind::kString, visit.id, &node);
  const bool isReadable = HasReadableSegment(node);
  const bool hasSegment = node.segmentLength() > 0;
  const int split = node.splitChar();
  const int first = hasSegment ? node.segment(0) : split;
  const bool isOrdered = !isReadable || (first > visit.above && first < visit.below);
  if (!IsAcceptable(visit, node, isOrdered, parent)) return;

  // Neighbours branch at the split character's place: behind the segment, if there is one.
  const std::string before = visit.prefix + SegmentOf(visit, node, parent);
  const bool isSplitReadable = IsNameCharacter(node.splitChar());
  const int above = hasSegment ? kNoLower : visit.above;
  const int below = hasSegment ? kNoUpper : visit.below;
  FollowLink(NodeLink::kLo, visit, {0, before, above, isSplitReadable ? split : below}, parent);
  FollowLink(NodeLink::kHi, visit, {0, before, isSplitReadable ? split : above, below}, parent);
  const std::string whole = before + SplitOf(visit, node, parent);
  FollowLink(NodeLink::kEqual, visit, {0, whole, kNoLower, kNoUpper}, parent);
  const bool hasKey = node.hasKey() || node.keyNode() != 0;
  if (hasKey || node.child() != 0) entries->push_back({whole, visit.id, isOrdered});
  if (!graph_.IsLive(visit.id) && node.equal() == 0) NoteDeadName(whole, parent);
}

// What cannot be read of a name is replaced, so that the keys are not lost with it.
std::string TreeReader::SegmentOf(const Visit& visit, const TernaryStringNode& node,
                                  size_t parent) {
  if (!HasReadableSegment(node)) {
    image_.Report(Severity::kLoss,
                  "a part of names below it cannot be read, it is shown as " + Stopgap(visit.id),
                  PathBelow(parent, visit.prefix));
    return Stopgap(visit.id);
  }
  std::string segment;
  for (unsigned int i = 0; i < node.segmentLength(); ++i) {
    segment += static_cast<char>(node.segment(i));
  }
  return segment;
}

std::string TreeReader::SplitOf(const Visit& visit, const TernaryStringNode& node, size_t parent) {
  if (IsNameCharacter(node.splitChar())) return std::string(1, static_cast<char>(node.splitChar()));
  image_.Report(Severity::kLoss,
                "a character of names below it cannot be read, it is shown as " + Stopgap(visit.id),
                PathBelow(parent, visit.prefix));
  return Stopgap(visit.id);
}

void TreeReader::NoteDeadName(const std::string& name, size_t parent) {
  if (image_.deadNames_.size() < RegistryImage::kMaxFindings) {
    image_.deadNames_.push_back(PathBelow(parent, name));
  }
}

// False when nothing can be done with the node from here. What is wrong with it is reported.
bool TreeReader::IsAcceptable(const Visit& visit, const TernaryStringNode& node, bool isOrdered,
                              size_t parent) {
  const std::string name = RegistryImage::NodeName(NodeKind::kString, visit.id);
  const bool isShared = graph_.LinksTo(visit.id) > 1;
  if (isShared && (!isOrdered || visits_.Count(visit.id) > kMostVisits)) {
    image_.Report(Severity::kLoss, "names below it are lost: a link leads to other names",
                  PathBelow(parent, visit.prefix));
    return false;
  }
  if (isShared) {
    image_.Report(Severity::kLoss,
                  "names below it may be those of another place: two links lead "
                  "to " +
                      name,
                  PathBelow(parent, visit.prefix));
  }
  if (!isOrdered) {
    image_.Report(Severity::kLoss,
                  "names below it are out of order in " + name + ", programs do not find them",
                  PathBelow(parent, visit.prefix));
  }
  if (image_.IsFree(NodeKind::kString, visit.id)) {
    image_.Report(Severity::kLoss, name + " is on the free list: its names may have been deleted",
                  PathBelow(parent, visit.prefix));
  }
  ReportLeftovers(visit.id, node, parent);
  return true;
}

void TreeReader::ReportLeftovers(unsigned int id, const TernaryStringNode& node, size_t parent) {
  const std::string name = RegistryImage::NodeName(NodeKind::kString, id);
  if (node.bytes()[0] != 0 || (node.flags() & ~kKnownFlags) != 0) {
    image_.Report(Severity::kDamage, "reserved bits or bytes of " + name + " are not 0",
                  PathOf(parent));
  }
  if (node.hasKey() != (node.keyNode() != 0)) {
    image_.Report(Severity::kDamage, "flag and key of " + name + " disagree", PathOf(parent));
  }
}

void TreeReader::FollowLink(NodeLink link, const Visit& from, Visit to, size_t parent) {
  if (graph_.IsMended(from.id, link)) {
    image_.Report(Severity::kLoss,
                  "a link to names below it is broken; those that nothing leads to are taken for "
                  "them",
                  PathBelow(parent, to.prefix));
  } else if (!graph_.IsUsable(from.id, link)) {
    image_.Report(Severity::kLoss, "names below it are lost: a link leads nowhere",
                  PathBelow(parent, to.prefix));
  }
  to.id = graph_.TargetOf(from.id, link);
  if (to.id != 0) pending_.push_back(std::move(to));
}

void TreeReader::ReadEntry(const Entry& entry, size_t parent) {
  if (IsRepeated(entry, parent)) return;
  TernaryStringNode node;
  image_.Read(NodeKind::kString, entry.id, &node);
  const auto path = [&] { return PathBelow(parent, entry.name); };
  Found found = {{}, parent, 0, 0, 0};
  found.key.name = entry.name;
  found.key.depth = found_[parent].key.depth + 1;
  found.subKeys = graph_.TargetOf(entry.id, NodeLink::kChild);
  CheckSubKeys(entry.id, path());
  const bool hasSubKeys = found.subKeys != 0 && graph_.IsLive(found.subKeys);
  if (node.keyNode() == 0 || !keys_.Read(node.keyNode(), false, path, &found.key)) {
    if (node.keyNode() == 0 && node.hasKey()) {
      image_.Report(Severity::kLoss, "its key record is lost", path());
    }
    if (found.subKeys != 0 && image_.IsFree(NodeKind::kString, found.subKeys)) {
      image_.Report(Severity::kDamage, "it is no key, but a link leads from it to a free slot",
                    path());
    }
    if (!hasSubKeys) return;
    // Keys below a name that has none itself: the library never leaves that.
    image_.Report(Severity::kDamage, "it is no key, but there are keys below it", path());
    AddMadeUp(entry.name, parent, found.subKeys);
    return;
  }
  found_.push_back(std::move(found));
}

bool TreeReader::IsRepeated(const Entry& entry, size_t parent) {
  if (found_.size() == found_[parent].firstChild || found_.back().key.name != entry.name) {
    return false;
  }
  image_.Report(Severity::kLoss, "there is a second key of this name, which is lost",
                PathBelow(parent, entry.name));
  return true;
}

// The keys lie level by level; the content has each before those below it.
void TreeReader::Flatten() {
  image_.content_.keys.reserve(found_.size());
  std::vector<size_t> pending = {0};
  while (!pending.empty()) {
    Found& found = found_[pending.back()];
    pending.pop_back();
    image_.content_.keys.push_back(std::move(found.key));
    for (size_t i = found.children; i > 0; --i) pending.push_back(found.firstChild + i - 1);
  }
}

std::string TreeReader::PathOf(size_t found) const {
  std::vector<size_t> way;
  for (size_t i = found; found_[i].parent != Content::kNone; i = found_[i].parent) {
    way.push_back(i);
  }
  std::string path;
  for (size_t i = way.size(); i > 0; --i) {
    path += found_[way[i - 1]].key.name;
    if (i > 1) path += '/';
  }
  return path;
}

std::string TreeReader::PathBelow(size_t parent, const std::string& name) const {
  const std::string path = PathOf(parent);
  return path.empty() || name.empty() ? path + name : path + '/' + name;
}

}  // namespace yaxreg
