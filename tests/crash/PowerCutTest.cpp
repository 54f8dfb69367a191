// A power cut leaves the state before or behind the operation, and nothing that was acknowledged is
// lost; see CrashStatesTest.cpp.
#include <gtest/gtest.h>

#include "tests/crash/CrashScripts.h"
#include "tests/crash/CrashSize.h"

namespace crash {
namespace {

TEST(PowerCut, LeavesEachChangeWholeOrNotAtAll) {
  LookAtRandom(Durability::kPower, Crash::kPowerCut, Sized(8000, 400000)).ExpectSound();
}

TEST(PowerCut, LeavesALargeChangeWholeOrNotAtAll) {
  LookAtLarge(Durability::kPower, Crash::kPowerCut, OneIn(4, 1)).ExpectSound();
}

TEST(PowerCut, LeavesARewrittenFileWholeOrNotAtAll) {
  LookAtRewriting(Durability::kPower, Crash::kPowerCut, 1 + Sized(1, 50)).ExpectSound();
}

TEST(PowerCut, LeavesAFileThatGrowsIntoWhatWasLeftWholeOrNotAtAll) {
  LookAtGrowing(Durability::kPower, Crash::kPowerCut, 1 + Sized(1, 50)).ExpectSound();
}

TEST(PowerCut, LeavesANewFileWholeOrNotAtAll) {
  LookAtMaking(Durability::kPower, Crash::kPowerCut, Sized(500, 10000)).ExpectSound();
}

// What survives a power cut survives the death of a process.
TEST(PowerCut, IsNotNeededForAChangeToBeWhole) {
  LookAtRandom(Durability::kPower, Crash::kDeath, Sized(3000, 180000)).ExpectSound();
}

TEST(PowerCut, IsNotNeededForALargeChangeToBeWhole) {
  LookAtLarge(Durability::kPower, Crash::kDeath, OneIn(8, 1)).ExpectSound();
}

}  // namespace
}  // namespace crash
