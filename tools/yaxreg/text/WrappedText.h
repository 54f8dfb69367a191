// Texts in lines that fit.
#pragma once

#include <string>

namespace yaxreg {

// Breaks lines at blanks so that none is longer than `columns`, where there is a blank; 0: leaves
// them as they are. What is broken off is indented as its line is, or where behind a word at its
// beginning a column of its own starts (two blanks or more), as that is.
std::string Wrapped(const std::string& text, unsigned int columns);

}  // namespace yaxreg
