// Changes that find no room on the disk.
#pragma once

#include "tools/yaxreg/selftest/TestRound.h"

namespace yaxreg {

// A limit of the size of files stands for the full disk: a change that does not fit is refused, and
// everything is as before, for this process and the next one.
void RunFullDiskRounds(const TestPart& part);

}  // namespace yaxreg
