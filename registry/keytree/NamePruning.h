// Taking out what is left of a deleted key's name.
#pragma once

#include "registry/store/Changes.h"

namespace tamu::registry {

// Gives back the string nodes of a name that no key ends at any more, as far as they lead nowhere;
// one that only leads on to a single other becomes one with that, if both fit in a node. What is
// written at once is found as before at every moment. Names that end at a key, or that others need,
// stay as they are. `path` is that of the key, from the root. kInvalidFile for links that are no
// tree, the statuses of reading and writing; what was written is then for the caller to undo.
Status PruneName(Changes& changes, const char* path);

// The same as a part of a change: a name that cannot be taken out stays, and that is no failure.
void PruneNameIfSound(Changes& changes, const char* path);

}  // namespace tamu::registry
