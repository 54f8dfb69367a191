// Finding keys and values in the records of the file.
#pragma once

#include "registry/keytree/KeyRecords.h"
#include "registry/keytree/PathSearch.h"
#include "registry/store/StoreAccess.h"

namespace tamu::registry {

class SubtreeNodes;

// Where a search found a key, or where the path left the tree. The node is where it stopped: with
// kMatchChild the missing part hangs from its child link, with kMatchEqual from its equal link, or
// at the path's end the key is its own.
struct NodeMatch : PathMatch {
  StringId node = 0;       // found: where the key ends. Missed: where the search stopped
  KeyId keyNode = 0;       // found: the key; 0 for a name without key ("a/")
  StringId previous = 0;   // the node whose link led to node; 0 at the start node
  StringId directory = 0;  // the node at which the parent key of the last component ends
};

// A key, and one of its values, as read from the file.
struct Reached {
  StringId nodeId = 0;  // where the name ends
  KeyId keyId = 0;      // 0: a name without a key
  TernaryKeyNode key;
  ValueId valueId = 0;
  TernaryValueNode value;
  ValueId beforeId = 0;  // the value before it in the key's chain, 0 for the first
};

// The root string node; 0 for the subtrees of others, which are not in the file.
StringId StartNodeOf(const StoreAccess& access, const void* tree);
// Searches from a node. kNotFound: `match` tells where the path left the tree. What is on the way
// is left out of `spare`, if given. `match` must be as constructed.
Status SearchNodes(const StoreAccess& access, StringId startNode, const char* path,
                   NodeMatch* match, SubtreeNodes* spare = nullptr);
// Finds a key from a node, reads it and checks the right. A name without key has one of user 0 that
// gives nobody any right.
Status ReachKey(const StoreAccess& access, unsigned int user, StringId startNode, const char* path,
                unsigned char rights, Reached* reached, SubtreeNodes* spare = nullptr);
// Finds the newest value of a name in the key that was reached. kNotFound; kCannotOpen: a value of
// the chain cannot be read; kInvalidFile: the chain is a circle.
Status ReachValue(const StoreAccess& access, const char* name, Reached* reached);

}  // namespace tamu::registry
