// Where the programs of a device keep the journals of their registries.
#pragma once

#include "registry/Registry.h"

namespace yaxreg {

// The folder that the environment names in YAX_SIDE_FOLDER; null: beside each registry. It is that
// of RegistryOptions::sideFolder in the programs that share the registry.
const char* SideFolder();
// Has a registry that is to be initialised keep its journal there, too.
void UseSideFolder(tamu::registry::Registry& registry);

}  // namespace yaxreg
