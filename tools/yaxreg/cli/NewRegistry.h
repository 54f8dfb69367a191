// Making an empty registry.
#pragma once

#include "tools/yaxreg/cli/Invocation.h"

namespace yaxreg {

// Makes the file of the call, which must not exist, complete or not at all. A failure has been
// printed.
ExitCode MakeNewRegistry(Invocation& call);

}  // namespace yaxreg
