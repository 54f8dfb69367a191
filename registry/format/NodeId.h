// Node ids: (slot << 8) | table number. Id 0 means no node.
#pragma once

#include <type_traits>

namespace tamu::registry {

// The kinds of records, in the order of their tables in the file. The kind of an id is never
// stored: it follows from the field that holds the id.
enum class NodeKind : unsigned int { kString = 0, kKey = 1, kValue = 2, kData = 3 };

constexpr unsigned int kNodeKinds = 4;

constexpr unsigned int SlotOf(unsigned int id) {
  return id >> 8;
}
constexpr unsigned int TableOf(unsigned int id) {
  return id & 0xFF;
}
constexpr unsigned int MakeNodeId(unsigned int table, unsigned int slot) {
  return table | (slot << 8);
}

// The id of a node whose kind is known. In the file, at the edge of the library and where nodes of
// every kind are treated alike it is the plain number; the ids of two kinds never stand for each
// other, nor are they compared.
template <NodeKind kind>
class NodeIdOf {
 public:
  static constexpr NodeKind kKind = kind;

  constexpr NodeIdOf() = default;
  constexpr NodeIdOf(unsigned int id) : id_(id) {}
  template <NodeKind other, class = std::enable_if_t<other != kind>>
  NodeIdOf(NodeIdOf<other>) = delete;
  constexpr operator unsigned int() const { return id_; }

 private:
  unsigned int id_ = 0;
};

template <NodeKind a, NodeKind b, class = std::enable_if_t<a != b>>
bool operator==(NodeIdOf<a>, NodeIdOf<b>) = delete;
template <NodeKind a, NodeKind b, class = std::enable_if_t<a != b>>
bool operator!=(NodeIdOf<a>, NodeIdOf<b>) = delete;

using StringId = NodeIdOf<NodeKind::kString>;
using KeyId = NodeIdOf<NodeKind::kKey>;
using ValueId = NodeIdOf<NodeKind::kValue>;
using DataId = NodeIdOf<NodeKind::kData>;  // of the first block, for all of the data

}  // namespace tamu::registry
