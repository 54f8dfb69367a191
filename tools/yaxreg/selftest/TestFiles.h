// Files that the self test puts in place.
#pragma once

#include <string>

namespace yaxreg {

// Makes a file of these bytes, wherever there was one; without a journal beside it.
bool PutTestFile(const std::string& file, const std::string& bytes);

}  // namespace yaxreg
