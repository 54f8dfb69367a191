// Draws a registry file: where its bytes go, how full it is and how worn.
#pragma once

#include <string>

#include "tools/yaxreg/image/RegistryImage.h"

namespace yaxreg {

// An SVG document of at most a megabyte: a strip of the whole file to scale, and for each kind of
// record one row a table, whose cells are the slots. `title` and `subtitle` are any bytes, without
// control characters.
std::string DrawFileMap(const RegistryImage& image, const std::string& title,
                        const std::string& subtitle);

}  // namespace yaxreg
