// How safe a registry of these rigs keeps its changes.
#pragma once

#include "registry/Registry.h"

namespace crash {

using tamu::registry::Durability;

// Before Initialize: asks for a durability.
inline unsigned int Prepare(tamu::registry::Registry& registry, Durability durability) {
  tamu::registry::RegistryOptions options;
  options.durability = durability;
  return registry.SetOptions(options);
}

}  // namespace crash
