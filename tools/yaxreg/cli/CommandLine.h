// The command line of yaxreg.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "tools/yaxreg/cli/Invocation.h"

namespace yaxreg {

// Runs one call of a verb of the table, arguments without the program's name; a help has lines of
// at most so many columns, 0: of any length. Throws nothing.
ExitCode RunYaxreg(const VerbTable& table, const std::vector<std::string>& arguments,
                   std::istream& in, std::ostream& out, std::ostream& err, OutputKind kind,
                   unsigned int columns = 0);

// The same for a call whose streams and batch are there.
ExitCode RunCommand(const VerbTable& table, const std::vector<std::string>& arguments,
                    Invocation& call);

// The verb that the first words name, and how many words; null if there is none.
const Verb* FindVerb(const VerbTable& table, const std::vector<std::string>& words, size_t* count);

// "--long" of "-l,--long".
std::string LongName(const Option& option);

}  // namespace yaxreg
