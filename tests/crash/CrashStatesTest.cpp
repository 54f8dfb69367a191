// A change is there whole or not at all, whatever call it is cut off at.
//
// A random script is done by a registry whose system calls are recorded. From the record come the
// states that a crash leaves: of a process that dies, all calls up to one, the last of them torn
// anywhere; of a power cut, samples of what was not synced by then. Each is opened by a new
// registry, which must find the state before or behind the operation that was cut off: keys and
// values, owners and rights, backups. Sometimes its recovery is cut off as well.
//
// It proves what system calls do. Stores into mapped memory are seen only between two calls:
// SteppedKillTest.cpp looks at each of them.
#include <gtest/gtest.h>

#include "tests/crash/CrashScripts.h"
#include "tests/crash/CrashSize.h"

namespace crash {
namespace {

// The controls: this is what the rig is there to find.
TEST(CrashStates, WithoutAJournalDeathsLeaveMixedStates) {
  EXPECT_GT(LookAtRandom(Durability::kNone, Crash::kDeath, Sized(1000, 10000)).mixed, 0u);
}

TEST(CrashStates, WithoutAJournalPowerCutsLoseWhatWasAcknowledged) {
  const Verdicts verdicts = LookAtRandom(Durability::kNone, Crash::kPowerCut, Sized(1000, 10000));
  EXPECT_GT(verdicts.mixed, 0u);
  EXPECT_GT(verdicts.lost, 0u);
}

TEST(CrashStates, WithoutAJournalANewFileOpensThoughItMayBeDamaged) {
  const Verdicts verdicts = LookAtMaking(Durability::kNone, Crash::kDeath, Sized(300, 3000));
  EXPECT_EQ(0u, verdicts.unopenable);
  EXPECT_GT(verdicts.damaged, 0u);
}

TEST(CrashStates, WithoutAJournalManyValuesThatAreRestoredLeaveSlotsInUse) {
  EXPECT_GT(LookAtLarge(Durability::kNone, Crash::kDeath, OneIn(200, 20)).damaged, 0u);
}

}  // namespace
}  // namespace crash
