// Bringing what is loaded up to date with the file.
#pragma once

#include "registry/base/ChangeList.h"
#include "registry/memtree/SubtreeLoader.h"

namespace tamu::registry {

// For one refresh, after somebody else has changed the file. Handles stay what they are; one whose
// key is gone leads nowhere from then on (TernaryHandle::start is null), and so does one whose key
// was deleted while it was in use. The tree's lock is held.
class TreeRefresh {
 public:
  TreeRefresh(const StoreAccess& access, LoadedStrings& loaded)
      : access_(access), loaded_(loaded) {}

  // Loads everything that a handle needs anew. kBusy: a string is locked, or somebody waits for
  // one; kNoMemory, kInputOutput. Nothing has changed then.
  Status LoadAnew();
  // Loads what a list tells of: keys one by one as long as only they have changed, else everything.
  // After a failure a part may be done, and everything has to be loaded.
  Status Follow(const ChangeList& changes);

 private:
  Status Load(LoadedStrings& strings, TernaryHandle* handle);
  Status ReloadKey(const char* path);
  Status LoadAwaited();

  const StoreAccess& access_;
  LoadedStrings& loaded_;
};

}  // namespace tamu::registry
