// The objects of the C interface.
#pragma once

#include <atomic>
#include <memory>

#include "registry/Registry.h"
#include "yax/yax.h"

// Lives until it was closed and the last key of it is gone.
struct yax_registry {
  yax_registry(const char* path, unsigned int user) : registry(path, user) {}

  tamu::registry::Registry registry;
  std::atomic<unsigned int> references{1};
};

struct yax_key {
  yax_registry* owner;  // one of its references
  std::unique_ptr<char[]> path;
};

struct yax_names {
  tamu::registry::NameList list;
  std::unique_ptr<const char*[]> sorted;  // those of the list that are wanted
  size_t count = 0;

  explicit yax_names(unsigned int capacity) : list(capacity) {}
};

namespace yax {

using tamu::registry::Registry;
namespace status = tamu::registry::status;

inline Registry& RegistryOf(const yax_key* key) {
  return key->owner->registry;
}
inline const char* PathOf(const yax_key* key) {
  return key->path.get();
}
// Takes a reference to a registry, and gives one back.
void Hold(yax_registry* registry);
void LetGo(yax_registry* registry);

}  // namespace yax
