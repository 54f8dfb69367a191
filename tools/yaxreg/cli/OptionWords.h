// The words of a command line as the parser takes them.
#pragma once

#include <string>
#include <vector>

#include "tools/yaxreg/cli/Verb.h"

namespace yaxreg {

// The words that follow a verb, "--name=value" of its options that take a value as two words, so
// that the value may be empty; but not what is itself a value, nor behind "--". False: a switch was
// given a value, *reason tells which.
bool SplitOptionWords(const Verb& verb, const std::vector<std::string>& words,
                      std::vector<std::string>* result, std::string* reason);

}  // namespace yaxreg
