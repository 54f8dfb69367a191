// The kinds of records, to go through all of them.
#pragma once

#include "registry/format/NodeId.h"

namespace yaxreg {

// In the order of the file's tables, which is that of their numbers.
constexpr tamu::registry::NodeKind kAllKinds[tamu::registry::kNodeKinds] = {
    tamu::registry::NodeKind::kString, tamu::registry::NodeKind::kKey,
    tamu::registry::NodeKind::kValue, tamu::registry::NodeKind::kData};

}  // namespace yaxreg
