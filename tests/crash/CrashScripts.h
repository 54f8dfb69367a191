// The states that crashes of whole scripts may leave, judged.
#pragma once

#include "tests/crash/Durability.h"
#include "tests/crash/Verdicts.h"

namespace crash {

enum class Crash {
  kDeath,     // of the process
  kPowerCut,  // of the machine
};

// Of random scripts, until there were at least so many states.
Verdicts LookAtRandom(Durability durability, Crash crash, unsigned int states);
// The same of scripts that begin with the making of the file.
Verdicts LookAtMaking(Durability durability, Crash crash, unsigned int states);
// Of a file that is rewritten, so many times.
Verdicts LookAtRewriting(Durability durability, Crash crash, unsigned int times);
// Of one that grows into what a rewriting has left, so many times.
Verdicts LookAtGrowing(Durability durability, Crash crash, unsigned int times);
// Of changes of hundreds of kilobytes: one in so many states.
Verdicts LookAtLarge(Durability durability, Crash crash, unsigned int lookOneIn);

}  // namespace crash
