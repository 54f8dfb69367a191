// The manual page of yaxreg, made from the table of verbs.
#pragma once

#include <string>

#include "tools/yaxreg/cli/Verb.h"

namespace yaxreg {

// The whole page as troff source with the man macros. `version` is a text such as "1.2.3".
std::string ManPage(const VerbTable& table, const std::string& version);

// "FILE PATH [NUMBER]": the arguments of a verb as they stand on a command line.
std::string ArgumentsOf(const Verb& verb);

// Text as troff shows it unchanged. No line of the result begins with a control character.
std::string Troff(const std::string& text);

// A paragraph of words: every sentence begins on a line of its own, and no line has more than 80
// characters where there are blanks to break it at.
std::string TroffParagraph(const std::string& text);

}  // namespace yaxreg
