// The string nodes that spell the names of keys, planned before they are written.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "registry/format/NodeLink.h"
#include "registry/format/TernaryStringNode.h"
#include "tools/yaxreg/image/Content.h"

namespace yaxreg {

// As few nodes as the names need, and neighbours balanced, so that searches are short.
class NameTree {
 public:
  static constexpr size_t kNone = Content::kNone;

  struct Node {
    std::string segment;  // at most 16 characters
    char split = 0;
    size_t key = kNone;  // index in the content of the key whose name ends here
    // Indexes of other nodes; `child` is the first node of the names below the key.
    size_t lo = kNone;
    size_t hi = kNone;
    size_t equal = kNone;
    size_t child = kNone;
  };

  // Plans the names of all keys below `key`.
  NameTree(const Content& content, size_t key);

  // A node comes before those that it links to. Empty when there are no keys below.
  const std::vector<Node>& nodes() const { return nodes_; }

  // The node as it is stored, without its links and its key.
  static tamu::registry::TernaryStringNode RecordOf(const Node& node);
  static size_t LinkOf(const Node& node, tamu::registry::NodeLink link);

 private:
  // Names that begin alike: names_[begin] to names_[end - 1], of which `offset` bytes are spelt.
  // The node that is made for them goes to `link` of node `from`.
  struct Task {
    size_t begin;
    size_t end;
    size_t offset;
    size_t from;
    tamu::registry::NodeLink link;
  };

  void CollectNames(const Content& content, size_t key);
  void AddDirectory(size_t parentKey, size_t from);
  void MakeNode(const Task& task);
  const std::string& Name(size_t position) const { return content_.keys[names_[position]].name; }

  const Content& content_;
  size_t top_;                  // the key whose sub-keys are planned
  std::vector<size_t> names_;   // keys, those of one parent side by side, sorted as a search goes
  std::vector<size_t> firsts_;  // by key - top_: where the names below it begin in names_
  std::vector<Node> nodes_;
  std::vector<Task> tasks_;
};

}  // namespace yaxreg
