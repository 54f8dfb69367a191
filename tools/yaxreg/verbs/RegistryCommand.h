// Commands that are written without the words yaxreg and FILE.
#pragma once

#include <string>
#include <vector>

#include "tools/yaxreg/cli/Invocation.h"

namespace yaxreg {

// Puts the registry behind the verb, if it works on one, and --json where it is wanted. Null when
// the words begin with no verb; they are as they were.
const Verb* AddRegistry(const std::string& file, bool isJson, std::vector<std::string>* words);

// The file of a call as a word of a command.
std::string FileWord(const Invocation& call);

// What the output of a call is, as another call is to have it.
OutputKind KindOf(const Invocation& call);

}  // namespace yaxreg
