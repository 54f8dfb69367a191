// The completion of yaxreg's command lines in bash, made from the table of verbs.
#pragma once

#include <string>

#include "tools/yaxreg/cli/Verb.h"

namespace yaxreg {

// The script, to be sourced by bash or found by the package bash-completion. It completes verbs,
// options, names of files, the keys of the registry file on the command line and their values.
std::string BashCompletion();

// True for options whose value names a file or a folder.
bool TakesFile(const Option& option);

}  // namespace yaxreg
