// The words of a line that somebody has written.
#pragma once

#include <string>
#include <vector>

namespace yaxreg {

// Words are parted by blanks. In single quotation marks every character stands for itself, in
// double ones all but these and backslashes, which have a backslash before them; elsewhere a
// backslash takes its meaning from any character. A # at the beginning of a word ends the line.
// False: something has no end, or a zero byte is in the line, which no word can have. *reason, if
// it is asked for, tells which.
bool SplitCommandWords(const std::string& line, std::vector<std::string>* words,
                       std::string* reason = nullptr);

}  // namespace yaxreg
