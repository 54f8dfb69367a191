// The modes of durability that tests can have.
#pragma once

#include <vector>

#include "registry/Registry.h"
#include "tests/platform/TestFiles.h"

// Without kProcess where files cannot be mapped.
inline std::vector<tamu::registry::Durability> PossibleModes() {
  using tamu::registry::Durability;
  TempDir folder;
  const std::string path = folder / "registry";
  tamu::registry::Registry registry(path.c_str(), "user");
  const bool isOpen = registry.Initialize() == 0;
  if (isOpen && registry.EffectiveDurability() == Durability::kNone) {
    return {Durability::kNone, Durability::kPower};
  }
  return {Durability::kNone, Durability::kProcess, Durability::kPower};
}
