// Which programs have a file open.
#pragma once

#include <string>

namespace yaxreg {

// Other programs that have the file open, as far as the system tells: "app (1234), sh (77)", of
// more than three "and others". "" when none is known.
std::string HoldersOf(const std::string& file);

}  // namespace yaxreg
