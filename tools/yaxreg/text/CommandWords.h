// The words of a line that somebody has written.
#pragma once

#include <string>
#include <vector>

namespace yaxreg {

// Words are parted by blanks. In single quotation marks every character stands for itself, in
// double ones all but these and backslashes, which have a backslash before them; elsewhere a
// backslash takes its meaning from any character. A # at the beginning of a word ends the line.
// False: something has no end.
bool SplitCommandWords(const std::string& line, std::vector<std::string>* words);

}  // namespace yaxreg
