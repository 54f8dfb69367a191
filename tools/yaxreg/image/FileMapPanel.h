// The panels of a file's map: one for each kind, one row a table, whose cells are the slots.
#pragma once

#include <string>

#include "tools/yaxreg/image/RegistryImage.h"

namespace yaxreg {
namespace filemap {

std::string DrawPanel(const RegistryImage& image, NodeKind kind, double left, double top);

}  // namespace filemap
}  // namespace yaxreg
