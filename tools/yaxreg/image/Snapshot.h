// The bytes of a registry file as they are between two changes, whoever changes it.
#pragma once

#include <string>

#include "registry/Registry.h"

namespace yaxreg {

// Of an open registry: within a transaction as it will be. The user of the registry is the same
// afterwards. The status of the library.
unsigned int TakeSnapshot(tamu::registry::Registry& registry, std::string* bytes);

// Of the registry file at `path`, which is only opened to be read. False when the library cannot
// open it.
bool TakeSnapshot(const std::string& path, std::string* bytes);

}  // namespace yaxreg
