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

// The same as <svg> elements of a page, which brings the looks of their classes and tells what the
// colours of the slots mean.
struct FileMapParts {
  std::string strip;
  std::string panels[kNodeKinds];
};
FileMapParts DrawFileMapParts(const RegistryImage& image);

}  // namespace yaxreg
