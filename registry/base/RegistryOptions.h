// How a registry is opened.
#pragma once

#include "registry/base/Durability.h"

namespace tamu::registry {

struct RegistryOptions {
  // kProcess and kPower keep a file beside the registry while it is open: its name with ".journal"
  // behind it, 64 KiB as a rule. The last object on a path removes it.
  Durability durability = Durability::kProcess;
  // With kProcess, another folder for that file, in memory (/run) where the flash is to be spared;
  // null: beside the registry. The same for all programs of a registry: who looks elsewhere does not
  // see what a dead process has left. Only these programs may write there.
  const char* sideFolder = nullptr;
};

}  // namespace tamu::registry
