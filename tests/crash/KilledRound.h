// A registry that is killed again and again while it works through one script.
#pragma once

#include <sys/types.h>

#include "tests/crash/FolderImage.h"
#include "tests/crash/MemoryFolder.h"
#include "tests/crash/Random.h"
#include "tests/crash/RegistryState.h"
#include "tests/crash/SharedCount.h"
#include "tests/crash/Verdicts.h"

namespace crash {

// A child does the steps and tells of each when it has answered; SIGKILL ends it at some moment.
// What it leaves is compared with another registry, which does the same steps undisturbed and
// writes straight through. The next child goes on from there.
class KilledRound {
 public:
  // Starts with a new, small file. The verdicts are added to *verdicts.
  KilledRound(unsigned int seed, Durability durability, Verdicts* verdicts);

  // Kills one child, perhaps a second one that only opens the registry, and looks at what is there.
  // False when it was bad: the round is over then.
  bool Kill();
  // Steps that were done so far.
  unsigned int done() const { return done_; }

 private:
  void KillOneThat(bool onlyOpens);
  void Work(bool onlyOpens);
  void DoUndisturbed(unsigned int end);
  bool Compare(unsigned int acknowledged);
  RegistryState Undisturbed() const;
  void Tell(const RegistryState& before, const RegistryState& after, const RegistryState& found);

  unsigned int seed_;
  Durability durability_;
  Verdicts& verdicts_;
  Random random_;
  unsigned int done_ = 0;
  SharedCount acknowledged_;
  MemoryFolder killed_;
  MemoryFolder undisturbed_;
};

// Kills so many children, in rounds of different seeds.
Verdicts KillOften(Durability durability, unsigned int kills);

}  // namespace crash
