// Files that are damaged on purpose.
#pragma once

#include "tools/yaxreg/selftest/TestRound.h"

namespace yaxreg {

// Whatever is done with them answers a status: no process dies of it or comes to no end.
void RunDamageRounds(const TestPart& part);

}  // namespace yaxreg
