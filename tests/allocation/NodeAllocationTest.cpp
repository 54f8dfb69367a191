// Operations on nodes and records, for which the heap has nothing left.
#include "tests/allocation/CountedHeap.h"
#include "tests/registry/filetree/NodeCalls.h"
#include "tests/registry/filetree/SharedStore.h"

namespace tamu::registry {
namespace {

TEST(NodeAllocationTest, WhatFailsHasChangedNothingAndLeavesNothing) {
  for (const NodeCall& call : NodeCalls()) {
    bool isOver = false;
    for (unsigned int nth = 1; !isOver && !::testing::Test::HasFailure(); ++nth) {
      SCOPED_TRACE(std::string(call.name) + ", allocation " + std::to_string(nth));
      SharedStore rig;
      MakeNodes(rig.tree);
      const std::string before = GetFile(rig.path);
      const unsigned int live = heap::sLive;
      heap::sFailing = nth;
      const unsigned int result = call.run(rig.store, rig.tree);
      isOver = heap::sFailing > 0;
      heap::sFailing = 0;
      EXPECT_EQ(live, heap::sLive);
      if (isOver) {
        EXPECT_EQ(call.expected, result);
      } else if (result != call.expected) {
        EXPECT_EQ(status::kNoMemory, result);
        EXPECT_TRUE(before == GetFile(rig.path));
      }
    }
  }
}

}  // namespace
}  // namespace tamu::registry
