// The completion of yaxreg's command lines in zsh, made from the table of verbs.
#pragma once

#include <string>

#include "tools/yaxreg/cli/Verb.h"

namespace yaxreg {

// The function, to be found by compinit. It completes verbs and options with what they do, names of
// files, the keys of the registry file on the command line and their values.
std::string ZshCompletion(const VerbTable& table);

}  // namespace yaxreg
