// The completion of yaxreg's command lines in bash, made from the table of verbs.
#pragma once

#include <string>

#include "tools/yaxreg/cli/Verb.h"

namespace yaxreg {

// The script, to be sourced by bash or found by the package bash-completion. It completes verbs,
// options, some of their values, names of files, the keys of the registry file on the command line
// and their values. For names that begin with a dash it offers "--" first.
std::string BashCompletion(const VerbTable& table);

// True for options whose value names a file or a folder.
bool TakesFile(const Option& option);

}  // namespace yaxreg
