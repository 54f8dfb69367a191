// Operations on nodes and records in a file that cannot be mapped, whose system calls fail at every
// place in turn.
#include "tests/fault/FaultFiles.h"
#include "tests/registry/filetree/NodeCalls.h"
#include "tests/registry/filetree/SharedStore.h"
#include "tests/support/FaultCalls.h"

namespace tamu::registry {
namespace {

class NodeFaultTest : public ::testing::Test {
 protected:
  NodeFaultTest() { faults::RefuseMappings(true); }
  ~NodeFaultTest() override {
    faults::Disarm();
    faults::RefuseMappings(false);
  }
};

TEST_F(NodeFaultTest, WhatFailsHasChangedNothing) {
  for (const NodeCall& call : NodeCalls()) {
    bool isOver = false;
    for (unsigned int number = 0; !isOver && !faults::TooManyFailures();
         number += YAX_TEST_STRIDE) {
      SCOPED_TRACE(std::string(call.name) + ", call " + std::to_string(number));
      SharedStore rig;
      MakeNodes(rig.tree);
      const std::string before = GetFile(rig.path);
      faults::ArmAll(faults::Mode::kFailOnce, number);
      const unsigned int result = call.run(rig.store, rig.tree);
      isOver = faults::Count() <= number;
      faults::Disarm();
      if (isOver) {
        EXPECT_EQ(call.expected, result);
      } else if (result != call.expected) {
        EXPECT_TRUE(result == status::kInputOutput || result == status::kInvalidFile ||
                    result == status::kCannotOpen)
            << result;
        EXPECT_TRUE(call.mayKeepPart || before == GetFile(rig.path));
      }
    }
  }
}

}  // namespace
}  // namespace tamu::registry
