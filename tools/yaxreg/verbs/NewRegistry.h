// Making an empty registry.
#pragma once

#include <string>

#include "tools/yaxreg/cli/Invocation.h"

namespace yaxreg {

// Lets the library make an empty registry where nobody else looks, and reads its bytes. Returns a
// status of the registry.
unsigned int MakeEmptyRegistry(const std::string& file, std::string* bytes);

// Makes the file of the call, which must not exist, complete or not at all. A failure has been
// printed.
ExitCode MakeNewRegistry(Invocation& call);

}  // namespace yaxreg
