// Which changes somebody has asked for with the watch bits of keys.
#pragma once

#include "registry/base/ChangeList.h"
#include "registry/store/StoreAccess.h"

namespace tamu::registry {

// Drops those that the watch bits of their keys, and of the keys above, do not ask for
// (base/Watch.h).
void KeepWatched(FileStore& store, ChangeList* changes);

}  // namespace tamu::registry
