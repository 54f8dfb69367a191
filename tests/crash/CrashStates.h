// The states that a crash at any call of a recording may leave.
#pragma once

#include "tests/crash/CrashJudge.h"
#include "tests/crash/Random.h"
#include "tests/crash/Recording.h"

namespace crash {

// Makes the states and has them looked at. Now and then recovery is cut off, too, and what that
// leaves is looked at as well; after a power cut with what it has not synced lost.
class CrashStates {
 public:
  // Of the script that `expected` tells of, done with the judge's durability. One in `lookOneIn`
  // states is looked at.
  CrashStates(const Expectation& expected, CrashJudge* judge, unsigned int seed,
              unsigned int lookOneIn);

  // The process dies: all calls up to one; each write torn between sectors and at some other bytes.
  void LookAtDeaths();
  // The power goes behind a call: `draws` states of each moment at which something is not synced.
  void LookAtPowerCuts(unsigned int draws);

  const Recording& recording() const { return recording_; }

 private:
  void Look(const FolderImage& image, unsigned int step, const std::string& where, bool isPowerCut);
  FolderImage CutRecovery(const FolderImage& image, bool isPowerCut);
  void LookAtTears(const FolderImage& image, size_t call);
  unsigned int StepBehind(size_t call) const;

  const Expectation& expected_;
  CrashJudge& judge_;
  Recording recording_;
  Random random_;
  unsigned int lookOneIn_;
  MemoryFolder folder_;  // for recoveries that are cut off
};

}  // namespace crash
