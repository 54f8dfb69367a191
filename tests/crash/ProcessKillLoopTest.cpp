// The same as KillLoopTest.cpp with the journal as mapped memory.
#include <gtest/gtest.h>

#include "tests/crash/CrashSize.h"
#include "tests/crash/KilledRound.h"

namespace crash {
namespace {

TEST(ProcessKillLoop, NothingThatWasAcknowledgedIsLost) {
  KillOften(Durability::kProcess, Sized(200, 10000)).ExpectSound();
}

}  // namespace
}  // namespace crash
