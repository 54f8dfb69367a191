// A process that dies at any call leaves the state before or behind the operation; see
// CrashStatesTest.cpp.
#include <gtest/gtest.h>

#include "tests/crash/CrashScripts.h"
#include "tests/crash/CrashSize.h"

namespace crash {
namespace {

TEST(ProcessDeath, LeavesEachChangeWholeOrNotAtAll) {
  LookAtRandom(Durability::kProcess, Crash::kDeath, Sized(8000, 400000)).ExpectSound();
}

TEST(ProcessDeath, LeavesALargeChangeWholeOrNotAtAll) {
  LookAtLarge(Durability::kProcess, Crash::kDeath, OneIn(8, 1)).ExpectSound();
}

TEST(ProcessDeath, LeavesARewrittenFileWholeOrNotAtAll) {
  LookAtRewriting(Durability::kProcess, Crash::kDeath, 1 + Sized(1, 10)).ExpectSound();
}

TEST(ProcessDeath, LeavesANewFileWholeOrNotAtAll) {
  LookAtMaking(Durability::kProcess, Crash::kDeath, Sized(500, 10000)).ExpectSound();
}

}  // namespace
}  // namespace crash
