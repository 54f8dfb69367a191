// Keys and values as the records that a file holds.
#pragma once

#include "registry/format/TernaryKeyNode.h"
#include "registry/format/TernaryValueNode.h"
#include "tools/yaxreg/image/Content.h"

namespace yaxreg {

// Without the link to its first value.
tamu::registry::TernaryKeyNode KeyRecordOf(const ContentKey& key);
// Without the links to the next value and to its data.
tamu::registry::TernaryValueNode ValueRecordOf(const ContentValue& value);

}  // namespace yaxreg
