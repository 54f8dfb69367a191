// Key names, cut into string nodes.
#pragma once

#include "registry/keytree/KeyRecords.h"
#include "registry/keytree/PathSearch.h"
#include "registry/store/Changes.h"

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
TernaryStringNode UpperPart(const TernaryStringNode& node, unsigned int cut, StringId nodeId);
// `node` without its first cut + 1 characters; the bytes behind the rest are zero.
TernaryStringNode LowerPart(const TernaryStringNode& node, unsigned int cut);

// `upper` is the part of a name before a cut, `lower`, of the id `lowerId`, has lost that part. Where
// nothing leads to `upper`, its writer has died before it could put it into its place: the name
// begins in the middle. False when `lower` begins as `upper` does: it may not be cut yet.
bool IsCutFrom(const TernaryStringNode& upper, const TernaryStringNode& lower, StringId lowerId);

// The link of `node` that leads to `id`, looked for in kSplitOrder. False when there is none.
bool FindLink(const TernaryStringNode& node, StringId id, NodeLink* link);
// The link on which a new name is hung where a search stopped: at an empty child link, behind the
// split character, or beside it.
NodeLink LinkForName(const TernaryStringNode& node, const PathMatch& match,
                     const TernaryStringNode& first);

// What is left of a path when the node at which it stops is cut: the path from where the node's
// segment began goes on behind the cut. A path whose last character stands at the cut ends there,
// whether or not the characters are the same: with "abc" there, creating "x" makes "a", and "ax"
// makes "ab". Test: TernaryRegistryCreation.ACharacterThatDiffersAtTheEndIsTakenAsTheCut
// Test: TernaryKeyTreeCreationTest.ACharacterThatDiffersAtTheEndIsTakenAsTheCut
inline const char* BehindCut(const char* rest, unsigned int cut) {
  rest += cut;
  return rest[0] != 0 && rest[1] == 0 ? rest + 1 : rest;
}

// A node that was cut in two.
struct CutName {
  StringId upperId = 0;
  TernaryStringNode upper;  // a new one, with the other on its equal link
  TernaryStringNode lower;
};
// Takes a node for what is before the cut and writes it, then what is behind into the node's place.
Status WriteCut(Changes& changes, StringId id, const TernaryStringNode& node, unsigned int cut,
                CutName* parts);

// Takes and writes the string nodes of a name, each when the next one hangs on it; the key, unless
// it is 0, ends at the last. `made(id, node)` is told each that was written and returns a status.
// kBadArgument for a "/": the nodes taken before it stay taken.
template <class Made>
Status WriteName(Changes& changes, const char* name, KeyId keyId, Made made) {
  StringId id = 0;
  Status result = changes.Take(&id);
  while (result.IsOk()) {
    TernaryStringNode node;
    const unsigned int taken = TakeName(&node, name);
    name += taken;
    StringId next = 0;
    if (*name == 0) {
      EndName(&node, keyId);
    } else if (taken < kNodeNameMax) {
      result = status::kBadArgument;
    } else {
      result = changes.Take(&next);
      node.setEqual(next);
    }
    if (result.IsOk()) result = changes.Write(id, node);
    if (result.IsOk()) result = made(id, node);
    if (next == 0) break;
    id = next;
  }
  return result;
}

}  // namespace tamu::registry
