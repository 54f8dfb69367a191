// The links of a string node to others.
#pragma once

#include "registry/format/TernaryStringNode.h"

namespace tamu::registry {

// In the order in which they are stored.
enum class NodeLink : unsigned char { kLo, kHi, kEqual, kChild };

// The link's id, 0 = none.
inline StringId LinkOf(const TernaryStringNode& node, NodeLink link) {
  return node.link(static_cast<unsigned int>(link));
}
void SetLink(TernaryStringNode* node, NodeLink link, StringId id);

constexpr unsigned int kNodeLinks = 4;
// The order in which subtrees are backed up, restored, unloaded and given back.
constexpr NodeLink kStoredOrder[kNodeLinks] = {NodeLink::kLo, NodeLink::kHi, NodeLink::kEqual,
                                               NodeLink::kChild};
// The order in which names are listed, and keys counted.
constexpr NodeLink kListingOrder[kNodeLinks] = {NodeLink::kHi, NodeLink::kLo, NodeLink::kEqual,
                                                NodeLink::kChild};
// The order in which the link to a node is looked for when the node is split.
constexpr NodeLink kSplitOrder[kNodeLinks] = {NodeLink::kEqual, NodeLink::kLo, NodeLink::kHi,
                                              NodeLink::kChild};

}  // namespace tamu::registry
