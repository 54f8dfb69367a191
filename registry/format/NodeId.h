// Node ids: (slot << 8) | table number. Id 0 means no node.
#pragma once

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

}  // namespace tamu::registry
