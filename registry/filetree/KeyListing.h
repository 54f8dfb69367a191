// Listing and counting what lies below a node of the file.
#pragma once

#include "registry/base/Array.h"
#include "registry/base/KeyInfo.h"
#include "registry/base/NameList.h"
#include "registry/filetree/NodeWalk.h"

namespace tamu::registry {

// The state of a listing.
struct ListingState {
  NameList* names = nullptr;
  unsigned int skip = 0;   // names still to be left out
  unsigned int start = 0;  // length of what is put before each name
  Array<char> buffer;      // the name spelt so far; grows, names may be of any length
};

// Lists the keys whose names go on with a node, which stands `position` characters behind the start
// of the buffer. `id` is the node's, 0 when it is not known.
Status ListFrom(const StoreAccess& access, const TernaryStringNode& node, StringId id,
                unsigned int position, ListingState* state);
// Makes room for `length` bytes of name.
Status ReserveName(Array<char>* buffer, unsigned int length);

// Adds the keys and values reached from a node to the totals, and the keys on its level to the
// sub-keys when `depth` is 0.
Status CountFrom(const StoreAccess& access, const TernaryStringNode& node, StringId id,
                 unsigned int depth, KeyInfo* info);
// Adds the number of values that a key has. One that cannot be read is counted too, unless it is
// the first, and ends the counting. `met` is told of all, if given.
Status CountValuesOf(const StoreAccess& access, const TernaryKeyNode& key, NodeSet* met,
                     unsigned int* count);

}  // namespace tamu::registry
