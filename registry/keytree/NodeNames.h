// Key names, cut into string nodes.
#pragma once

#include "registry/format/NodeLink.h"

namespace tamu::registry {

// As many characters as a node holds: the segment and the split character.
constexpr unsigned int kNodeNameMax = TernaryStringNode::kSegmentMax + 1;

// The first character that the node stands for.
signed char FirstCharOf(const TernaryStringNode& node);
// Puts the beginning of a name into a node that has none yet, at most kNodeNameMax characters and
// none from a "/" on; the last becomes the split character. Returns how many they are.
unsigned int TakeName(TernaryStringNode* node, const char* name);

// The part of `node` before `cut`, ending in the character at `cut`, with `nodeId` behind it. `cut`
// is below the segment's length.
TernaryStringNode UpperPart(const TernaryStringNode& node, unsigned int cut, unsigned int nodeId);
// `node` without its first cut + 1 characters; the bytes behind the rest are zero.
TernaryStringNode LowerPart(const TernaryStringNode& node, unsigned int cut);

// The link of `node` that leads to `id`, looked for in kSplitOrder. False when there is none.
bool FindLink(const TernaryStringNode& node, unsigned int id, NodeLink* link);
// The link on which a new name is hung where a search stopped: at an empty child link, behind the
// split character, or beside it.
NodeLink LinkForName(const TernaryStringNode& node, bool asChild, bool asEqual,
                     const TernaryStringNode& first);

}  // namespace tamu::registry
