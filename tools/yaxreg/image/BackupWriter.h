// Makes the library's backup stream of a content.
#pragma once

#include <string>

#include "tools/yaxreg/image/Content.h"

namespace yaxreg {

// The stream of a key and all keys below it, complete. docs/format.md tells what is in it.
std::string BackupOf(const Content& content, size_t key);

}  // namespace yaxreg
