// What may follow at the end of a line that is being typed.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tools/yaxreg/cli/Verb.h"

namespace yaxreg {

struct ShellCompletion {
  size_t begin = 0;                // where the word begins that is not complete, in bytes
  std::vector<std::string> words;  // what it may become, as it is typed; one that may go on has a
                                   // slash or a colon at its end
};

// Answers the keys and values whose places begin so, no more than one level further.
using PlaceFinder = std::function<std::vector<std::string>(const std::string& beginning)>;

// Of a command without the words yaxreg and FILE: verbs, options of the verb, or places.
ShellCompletion CompleteCommand(const VerbTable& table, const std::string& line,
                                const PlaceFinder& places);

// What all the words begin with.
std::string CommonBeginning(const std::vector<std::string>& words);

}  // namespace yaxreg
