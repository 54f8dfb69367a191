// Several processes that change and read one registry at the same time.
#pragma once

#include "tools/yaxreg/selftest/TestRound.h"

namespace yaxreg {

// Each change goes on from what is there; in the end there are as many as were made. Needs a
// journal.
void RunSharedRounds(const TestPart& part);

}  // namespace yaxreg
