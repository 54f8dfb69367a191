// What was acknowledged is there, and the operation in flight is whole or absent, however often a
// program is killed.
//
// A child process works through a random script and tells of each operation that has answered.
// SIGKILL ends it at random moments, sometimes while it opens the registry after an earlier kill.
// Everything is real here: the system calls, the mapping, the end of the process; but only a few of
// all moments are met. CrashStatesTest.cpp and SteppedKillTest.cpp look at each.
#include <gtest/gtest.h>

#include "tests/crash/CrashSize.h"
#include "tests/crash/KilledRound.h"

namespace crash {
namespace {

// The operation in flight may be there in part; the registry opens nevertheless.
TEST(KillLoop, WithoutAJournalARegistryThatWasKilledOpensAgain) {
  const Verdicts verdicts = KillOften(Durability::kNone, Sized(50, 1000));
  EXPECT_EQ(0u, verdicts.unopenable) << verdicts.findings;
}

TEST(KillLoop, NothingThatWasAcknowledgedAndSyncedIsLost) {
  KillOften(Durability::kPower, Sized(50, 2000)).ExpectSound();
}

}  // namespace
}  // namespace crash
