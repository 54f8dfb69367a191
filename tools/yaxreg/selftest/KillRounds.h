// Kills of processes that change something.
#pragma once

#include "tools/yaxreg/selftest/TestRound.h"

namespace yaxreg {

// A process makes one change after the other and is killed wherever it is; the next one finds all
// of a change or nothing of it, and whatever was acknowledged.
void RunKillRounds(const TestPart& part);

}  // namespace yaxreg
