// How large the records of each kind are, and how the tables of a kind grow.
#pragma once

#include "registry/format/DataBlock.h"
#include "registry/format/NodeId.h"
#include "registry/format/TernaryKeyNode.h"
#include "registry/format/TernaryStringNode.h"
#include "registry/format/TernaryValueNode.h"

namespace tamu::registry {

constexpr unsigned int kTablesMax = 21;        // of a kind
constexpr unsigned int kExpansionSlots = 500;  // entries of an appended table

// Bytes of a record of the kind.
constexpr unsigned int RecordSizeOf(NodeKind kind) {
  constexpr unsigned int kSizes[kNodeKinds] = {TernaryStringNode::kSize, TernaryKeyNode::kSize,
                                               TernaryValueNode::kSize, kDataBlockSize};
  return kSizes[static_cast<unsigned int>(kind)];
}

}  // namespace tamu::registry
