// The completion of yaxreg's command lines in fish, made from the table of verbs.
#pragma once

#include <string>

#include "tools/yaxreg/cli/Verb.h"

namespace yaxreg {

// The script, to be found by fish. It completes verbs and options with what they do, names of files,
// the keys of the registry file on the command line and their values.
std::string FishCompletion(const VerbTable& table);

}  // namespace yaxreg
