// Single operations of a store, each a change of its own.
#pragma once

#include "registry/store/Changes.h"

namespace tamu::registry {

inline unsigned int AcquireSlot(FileStore& store, NodeKind kind, unsigned int* id) {
  Changes changes(store);
  const Status result = changes.Take(kind, id);
  return result.IsOk() ? changes.Keep(result) : result;
}

inline unsigned int ReleaseSlot(FileStore& store, NodeKind kind, unsigned int id) {
  Changes changes(store);
  const Status result = changes.Release(kind, id);
  return result.IsOk() ? changes.Keep(result) : result;
}

}  // namespace tamu::registry
