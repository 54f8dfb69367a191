// What the commands of a batch share.
#pragma once

#include <string>

#include "registry/Registry.h"

namespace yaxreg {

// A registry that is open, in a transaction that is not the commands' to end. They look at the file
// as it will be.
struct Batch {
  std::string file;
  tamu::registry::Registry* registry;
};

}  // namespace yaxreg
