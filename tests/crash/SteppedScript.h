// A script that children are led through instruction by instruction.
#pragma once

#include <vector>

#include "tests/crash/CrashJudge.h"
#include "tests/crash/Random.h"
#include "tests/crash/SteppedChild.h"

namespace crash {

class SteppedScript {
 public:
  // The verdicts are added to *verdicts.
  SteppedScript(const Script& script, Durability durability, Verdicts* verdicts, unsigned int seed);

  // Leads one child from the start to the end, and looks at what the files hold behind random
  // instructions.
  void LookEverywhere();
  // After it: leads a new child to a random instruction of a random step, kills it there, and looks
  // at what it leaves.
  void Kill();

 private:
  void Look(unsigned int step, unsigned int instruction);

  const Expectation expected_;
  Durability durability_;
  CrashJudge judge_;
  Verdicts& verdicts_;
  Random random_;
  std::vector<unsigned int> instructions_;  // of each step
  FolderImage last_;                        // what was looked at in this step
  MemoryFolder folder_;
};

}  // namespace crash
