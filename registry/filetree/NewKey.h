// Writing a new key and its name into the file.
#pragma once

#include "registry/filetree/KeySearch.h"
#include "registry/store/Changes.h"

namespace tamu::registry {

// Writes a key into a slot of its own.
Status StoreNewKey(Changes& changes, const TernaryKeyNode& key, KeyId* id);
// Writes the string nodes of a name; the key, unless it is 0, ends at the last. kBadArgument for a
// "/" in the name: *firstNode is 0 and the nodes taken before it stay taken.
// Test: TernaryRegistryCreation.AMissingParentCostsAStringNode
Status StoreName(Changes& changes, const char* name, StringId* firstNode, KeyId keyId);
// Cuts the segment of a node at `cut` and puts a new node above it, *upper, under `previous`.
// kNoData when there is nothing to cut (*upper is then the node).
Status CutNode(Changes& changes, StringId node, unsigned int cut, StringId previous,
               StringId* upper);
// Which name a new key gets whose last character is the first that differs from a stored one.
enum class NewNameRule : unsigned char {
  kTaken,  // the stored one's (BehindCut)
  kExact,  // its own
};
// Writes a key where the search for its name has ended. *atNode: it ends at a node that was there,
// or at a cut.
Status StoreKeyAt(Changes& changes, const NodeMatch& match, const char* path,
                  const TernaryKeyNode& key, NewNameRule rule, bool* atNode);
// Gives a new key the permission that the key above it hands down, if the user may create keys
// there. The parent of a keyless name is key 0, which gives nobody any right: kNoRight.
Status InheritPermission(const StoreAccess& access, const NodeMatch& match, unsigned int user,
                         TernaryKeyNode* key);

}  // namespace tamu::registry
