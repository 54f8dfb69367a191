#include "tools/yaxreg/image/TreeReader.h"

#include <algorithm>
#include <utility>

#include "registry/base/UserId.h"

namespace yaxreg {

using tamu::registry::LinkOf;
using tamu::registry::TernaryKeyNode;

TreeReader::TreeReader(RegistryImage& image, Orphans orphans)
    : image_(image),
      orphans_(orphans),
      graph_(image),
      keys_(image),
      visits_(image.Tables(NodeKind::kString)) {
  keys_.Claim(KeyIds(0));
}

// The keys of all nodes that were reached, from one of them on.
std::vector<unsigned int> TreeReader::KeyIds(size_t firstNode) const {
  std::vector<unsigned int> ids;
  for (size_t i = firstNode; i < graph_.nodes().size(); ++i) {
    TernaryStringNode node;
    image_.Read(NodeKind::kString, graph_.nodes()[i], &node);
    if (node.keyNode() != 0) ids.push_back(node.keyNode());
  }
  return ids;
}

void TreeReader::Run() {
  ReadRoot();
  for (const unsigned int id : graph_.nodes()) {
    if (!graph_.IsLive(id) && id != graph_.root()) ++image_.deadNodes_;
  }
  ReadDirectories();
  image_.hasStrays_ = HasStrays();
  if (image_.hasStrays_) ReportStrays();
  if (takesStrays_) {
    ReadLostAndFound();
    ReadDirectories();
  }
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
  ReadRootKey(node);
  found_[0].subKeys = graph_.TargetOf(graph_.root(), NodeLink::kChild);
  CheckSubKeys(graph_.root(), [] { return std::string(); });
}

// The root key is known by its mark, too.
void TreeReader::ReadRootKey(const TernaryStringNode& node) {
  const auto path = [] { return std::string(); };
  ContentKey& key = found_[0].key;
  if (image_.Record(NodeKind::kKey, node.keyNode()) != nullptr) {
    key.isMadeUp = !keys_.Read(node.keyNode(), true, path, &key);
    return;
  }
  const unsigned int stray = keys_.StrayRootKey();
  if (stray != 0) {
    keys_.Claim({stray});
    key.isMadeUp = !keys_.Read(stray, true, path, &key);
    image_.Report(Severity::kDamage, "the root's link to its key is broken", path);
  } else if (node.hasKey() || node.keyNode() != 0) {
    image_.Report(Severity::kLoss, "its key record is lost", path);
  } else {
    image_.Report(Severity::kDamage, "the registry has no root key, no key can be created", path);
  }
}

void TreeReader::CheckSubKeys(unsigned int id, const PathMaker& path) {
  if (graph_.IsMended(id, NodeLink::kChild)) {
    image_.Report(Severity::kLoss,
                  "the link to its sub-keys is broken; those that nothing leads to are taken for "
                  "them",
                  path);
  } else if (!graph_.IsUsable(id, NodeLink::kChild)) {
    image_.Report(Severity::kLoss, "its sub-keys cannot be read", path);
  }
}

void TreeReader::ReadDirectories() {
  for (; nextDirectory_ < found_.size(); ++nextDirectory_) ReadDirectory(nextDirectory_);
}

void TreeReader::ReadDirectory(size_t parent) {
  if (parent == lostAndFound_) return;
  std::vector<Entry> entries;
  pieces_.clear();
  if (found_[parent].subKeys != 0) {
    pending_.push_back({found_[parent].subKeys, Content::kNone, kNoLower, kNoUpper});
  }
  while (!pending_.empty()) {
    const Visit visit = pending_.back();
    pending_.pop_back();
    VisitNode(visit, parent, &entries);
  }
  SortEntries(&entries, parent);
  found_[parent].firstChild = found_.size();
  for (const Entry& entry : entries) ReadEntry(entry, parent);
  if (parent == 0) ReserveLostAndFound();
  found_[parent].children = found_.size() - found_[parent].firstChild;
}

// Of equal names the one that a search finds keeps it, the others get the numbers of their nodes.
void TreeReader::SortEntries(std::vector<Entry>* entries, size_t parent) {
  const auto isBefore = [](const Entry& a, const Entry& b) {
    return a.name != b.name ? a.name < b.name : a.isOrdered && !b.isOrdered;
  };
  std::stable_sort(entries->begin(), entries->end(), isBefore);
  bool isRenamed = false;
  std::string before;
  for (size_t i = 0; i < entries->size(); ++i) {
    Entry& entry = (*entries)[i];
    if (i == 0 || entry.name != before) {
      before = entry.name;
      continue;
    }
    entry.name += '(' + RegistryImage::IdText(entry.id) + ')';
    image_.Report(Severity::kLoss,
                  "there is a second key of this name, it is shown as " + entry.name,
                  [&] { return PathBelow(parent, before); });
    isRenamed = true;
  }
  if (isRenamed) std::stable_sort(entries->begin(), entries->end(), isBefore);
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
  CheckSubKeys(entry.id, path);
  if (node.keyNode() != 0 && keys_.Read(node.keyNode(), false, path, &found.key)) {
    found_.push_back(std::move(found));
    return;
  }
  if (node.keyNode() == 0 && node.hasKey()) {
    image_.Report(Severity::kLoss, "its key record is lost", path);
  }
  if (found.subKeys != 0 && image_.IsFree(NodeKind::kString, found.subKeys)) {
    image_.Report(Severity::kDamage, "it is no key, but a link leads from it to a free slot", path);
  }
  if (node.keyNode() != 0 && keys_.IsEmpty(node.keyNode())) {
    AddMadeUp(entry.name, parent, found.subKeys);
    return;
  }
  if (found.subKeys == 0 || !graph_.IsLive(found.subKeys)) return;
  // Keys below a name that has none itself: the library never leaves that.
  image_.Report(Severity::kDamage, "it is no key, but there are keys below it", path);
  AddMadeUp(entry.name, parent, found.subKeys);
}

bool TreeReader::IsRepeated(const Entry& entry, size_t parent) {
  if (found_.size() == found_[parent].firstChild || found_.back().key.name != entry.name) {
    return false;
  }
  image_.Report(Severity::kLoss, "there is a second key of this name, which is lost",
                [&] { return PathBelow(parent, entry.name); });
  return true;
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

// The keys lie level by level; the content has each before those below it.
void TreeReader::Flatten() {
  image_.content_.keys.reserve(found_.size());
  std::vector<size_t> pending = {0};
  while (!pending.empty()) {
    const size_t next = pending.back();
    pending.pop_back();
    if (next == lostAndFound_ && !takesStrays_) continue;
    Found& found = found_[next];
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
