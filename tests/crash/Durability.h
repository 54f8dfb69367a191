// How safe a registry of these rigs keeps its changes.
#pragma once

#include "registry/Registry.h"

namespace crash {

using tamu::registry::Durability;
using tamu::registry::SpacePolicy;

// Before Initialize: asks for a durability.
inline unsigned int Prepare(tamu::registry::Registry& registry, Durability durability,
                            SpacePolicy space = SpacePolicy::kExact) {
  tamu::registry::RegistryOptions options;
  options.durability = durability;
  options.space = space;
  return registry.SetOptions(options);
}

}  // namespace crash
