// The room that restoring a key takes beside what is there.
#pragma once

#include <string>

#include "tools/yaxreg/image/Content.h"
#include "tools/yaxreg/image/RegistryImage.h"

namespace yaxreg {

// Whether a key could be restored that did not find room for all that is wanted of it and below it:
// something is lost in the file at present, and if it were compact, all of `wanted` would have room
// beside what the key is now, if it is there.
bool FitsWhenCompact(const RegistryImage& image, const Content& wanted, const std::string& path);

}  // namespace yaxreg
