// The list of users that --users names.
#pragma once

#include <optional>

#include "tools/yaxreg/cli/Invocation.h"
#include "tools/yaxreg/content/UserNames.h"

namespace yaxreg {

// Reads it; without the option nothing. False: the failure has been printed, *code tells how to
// end.
bool TakeUsers(Invocation& call, std::optional<UserNames>* users, ExitCode* code);

}  // namespace yaxreg
