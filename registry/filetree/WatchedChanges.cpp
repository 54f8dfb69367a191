#include "registry/filetree/WatchedChanges.h"

#include <cstring>
#include <memory>

#include "registry/base/RCEString.h"
#include "registry/base/UserId.h"
#include "registry/base/Watch.h"
#include "registry/filetree/KeySearch.h"

namespace tamu::registry {

namespace {

unsigned char BitOf(ChangeKind kind) {
  switch (kind) {
    case ChangeKind::kKeyCreated:
    case ChangeKind::kKeyDeleted:
      return kWatchKeys;
    case ChangeKind::kKeyRestored:
    case ChangeKind::kCompacted:
      return kWatchRestored;
    case ChangeKind::kDefaultChanged:
      return kWatchDefault;
    case ChangeKind::kRightsChanged:
    case ChangeKind::kWatchChanged:
      return kWatchRights;
    default:
      return kWatchValues;
  }
}

unsigned char WatchOf(const StoreAccess& access, const char* path) {
  Reached reached;
  const Status found =
      ReachKey(access, kAdministratorId, access.StartNode(), path, kOpenToAll, &reached);
  return found.IsOk() && reached.keyId != 0 ? reached.key.watch() : static_cast<unsigned char>(0);
}

// From the key up to the root.
bool IsWatched(const StoreAccess& access, ChangeKind kind, char* path) {
  const unsigned char bit = BitOf(kind);
  const unsigned int direct = bit == kWatchKeys ? 1 : 0;  // levels up to whom the bit itself asks
  for (unsigned int level = 0;; ++level) {
    if (level >= direct) {
      const unsigned char watch = WatchOf(access, path);
      if ((watch & bit) != 0 && (level == direct || (watch & kWatchBelow) != 0)) return true;
    }
    if (path[0] == 0) return false;
    char* slash = std::strrchr(path, '/');
    *(slash != nullptr ? slash : path) = 0;
  }
}

}  // namespace

// Without memory to look it is told.
void KeepWatched(FileStore& store, ChangeList* changes) {
  for (unsigned int i = 0; i < changes->Count();) {
    const Change& change = changes->At(i);
    const Status found = store.Look([&](StoreAccess& access) -> Status {
      const std::unique_ptr<char[]> path(RCEString::Duplicate(change.keyPath));
      const bool isKept = path == nullptr || IsWatched(access, change.kind, path.get());
      return isKept ? status::kOk : status::kNotFound;
    });
    if (found.IsOk()) {
      ++i;
    } else {
      changes->Remove(i);
    }
  }
}

}  // namespace tamu::registry
