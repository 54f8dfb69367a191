// Creating a key of exactly the name that is asked for.
#pragma once

#include <string>

#include "registry/Registry.h"

namespace yaxreg {

// The library may take the last character of a new name for another one that stands there in a
// similar name: next to "display", creating "disk" makes "disp" first, with status 0, and "disk"
// only when it is asked again. This asks until the key is there; what is made beside the way is a
// stray key, which the caller deletes. The parent must exist. A null `defaultValue`: none.
unsigned int CreateExactKey(tamu::registry::Registry& registry, const std::string& path,
                            const unsigned long long* defaultValue);

}  // namespace yaxreg
