#include "tools/yaxreg/image/NameTree.h"

#include <algorithm>

namespace yaxreg {

using tamu::registry::NodeLink;
using tamu::registry::TernaryStringNode;

namespace {

// A search compares characters as signed ones.
bool IsBefore(const std::string& a, const std::string& b) {
  return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
    return static_cast<signed char>(x) < static_cast<signed char>(y);
  });
}

// So many characters from `offset` on are the same; no more than a segment holds are looked at.
size_t CommonLength(const std::string& a, const std::string& b, size_t offset) {
  const size_t end = std::min({a.size(), b.size(), offset + TernaryStringNode::kSegmentMax});
  size_t i = offset;
  while (i < end && a[i] == b[i]) ++i;
  return i - offset;
}

void SetLink(NameTree::Node* node, NodeLink link, size_t target) {
  switch (link) {
    case NodeLink::kLo:
      node->lo = target;
      break;
    case NodeLink::kHi:
      node->hi = target;
      break;
    case NodeLink::kEqual:
      node->equal = target;
      break;
    default:
      node->child = target;
  }
}

}  // namespace

NameTree::NameTree(const Content& content, size_t key) : content_(content), top_(key) {
  CollectNames(content, key);
  AddDirectory(key, kNone);
  while (!tasks_.empty()) {
    const Task task = tasks_.back();
    tasks_.pop_back();
    MakeNode(task);
  }
}

TernaryStringNode NameTree::RecordOf(const Node& node) {
  TernaryStringNode record;
  record.setSegmentLength(static_cast<unsigned int>(node.segment.size()));
  for (unsigned int i = 0; i < node.segment.size(); ++i) {
    record.setSegment(i, static_cast<signed char>(node.segment[i]));
  }
  record.setSplitChar(static_cast<signed char>(node.split));
  record.setHasKey(node.key != kNone);
  return record;
}

size_t NameTree::LinkOf(const Node& node, NodeLink link) {
  switch (link) {
    case NodeLink::kLo:
      return node.lo;
    case NodeLink::kHi:
      return node.hi;
    case NodeLink::kEqual:
      return node.equal;
    default:
      return node.child;
  }
}

// Sorts the keys by their parents, and neighbours by name.
void NameTree::CollectNames(const Content& content, size_t key) {
  const size_t end = content.EndOf(key);
  std::vector<size_t> parents(end - key);  // by key - top_
  std::vector<size_t> way = {key};
  for (size_t i = key + 1; i < end; ++i) {
    way.resize(content.keys[i].depth - content.keys[key].depth);
    parents[i - key] = way.back();
    way.push_back(i);
    names_.push_back(i);
  }
  std::sort(names_.begin(), names_.end(), [&](size_t a, size_t b) {
    if (parents[a - key] != parents[b - key]) return parents[a - key] < parents[b - key];
    return IsBefore(content.keys[a].name, content.keys[b].name);
  });
  firsts_.assign(end - key + 1, names_.size());
  for (size_t i = names_.size(); i > 0; --i) firsts_[parents[names_[i - 1] - key] - key] = i - 1;
  // A key without sub-keys: where those of the next one begin.
  for (size_t i = end - key; i > 0; --i) firsts_[i - 1] = std::min(firsts_[i - 1], firsts_[i]);
}

void NameTree::AddDirectory(size_t parentKey, size_t from) {
  const size_t begin = firsts_[parentKey - top_];
  const size_t end = firsts_[parentKey - top_ + 1];
  if (begin < end) tasks_.push_back({begin, end, 0, from, NodeLink::kChild});
}

// The node takes what all names have in common, up to 16 characters, and splits them by the next
// one. All of them go on for at least one character, and only the first can end where the others
// go on.
void NameTree::MakeNode(const Task& task) {
  const std::string& first = Name(task.begin);
  const size_t common = CommonLength(first, Name(task.end - 1), task.offset);
  const size_t length = std::min(common, first.size() - task.offset - 1);
  const size_t place = task.offset + length;
  std::vector<size_t> groups;  // where names with another character at the place begin
  for (size_t i = task.begin; i < task.end; ++i) {
    if (i == task.begin || Name(i)[place] != Name(i - 1)[place]) groups.push_back(i);
  }
  groups.push_back(task.end);
  const size_t middle = (groups.size() - 1) / 2;
  size_t begin = groups[middle];
  const size_t end = groups[middle + 1];

  const size_t index = nodes_.size();
  Node node;
  node.segment = first.substr(task.offset, length);
  node.split = Name(begin)[place];
  if (Name(begin).size() == place + 1) node.key = names_[begin++];
  nodes_.push_back(node);
  if (task.from != kNone) SetLink(&nodes_[task.from], task.link, index);

  if (node.key != kNone) AddDirectory(node.key, index);
  if (begin < end) tasks_.push_back({begin, end, place + 1, index, NodeLink::kEqual});
  if (end < task.end) tasks_.push_back({end, task.end, place, index, NodeLink::kHi});
  if (task.begin < groups[middle]) {
    tasks_.push_back({task.begin, groups[middle], place, index, NodeLink::kLo});
  }
}

}  // namespace yaxreg
