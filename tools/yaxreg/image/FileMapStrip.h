// The strip of a file's map: the whole file to scale.
#pragma once

#include <string>

#include "tools/yaxreg/image/RegistryImage.h"

namespace yaxreg {
namespace filemap {

std::string DrawStrip(const RegistryImage& image);

}  // namespace filemap
}  // namespace yaxreg
