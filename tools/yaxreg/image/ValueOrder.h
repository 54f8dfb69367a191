// The order in which values are compared and written.
#pragma once

#include <vector>

#include "tools/yaxreg/image/Content.h"

namespace yaxreg {

// The values sorted by the bytes of their names, those of one name newest first.
std::vector<const ContentValue*> ValuesByName(const ContentKey& key);

}  // namespace yaxreg
