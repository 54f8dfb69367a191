// A process may die at any instruction.
//
// A child is led through a random script instruction by instruction, so that every store into
// mapped memory is met, too. What SIGKILL leaves is what the files hold at that moment: the rig
// takes them over while the child stands still, at random instructions, and has them opened and
// compared with the states before and behind the operation. Some children are really killed, and
// what lies there is opened in its place.
#include <gtest/gtest.h>

#include "tests/crash/CrashSize.h"
#include "tests/crash/SteppedScript.h"

namespace crash {
namespace {

constexpr unsigned int kSteps = 14;
constexpr unsigned int kStepsOfControl = 10;

// At least so many moments are looked at; so many children are killed in each script.
Verdicts LookAndKill(Durability durability, unsigned int steps, unsigned int looks,
                     unsigned int kills) {
  Verdicts verdicts;
  for (unsigned int seed = 1; verdicts.states < looks; ++seed) {
    SteppedScript script(Script::Random(seed, steps), durability, &verdicts, seed);
    script.LookEverywhere();
    for (unsigned int i = 0; i < kills && !::testing::Test::HasFailure(); ++i) script.Kill();
    if (::testing::Test::HasFailure()) break;
  }
  verdicts.Print();
  return verdicts;
}

// The control: this is what the rig is there to find.
TEST(SteppedKill, WithoutAJournalStatesAreMixedOrDamaged) {
  const Verdicts verdicts = LookAndKill(Durability::kNone, kStepsOfControl, Sized(2000, 20000), 5);
  EXPECT_GT(verdicts.mixed + verdicts.damaged, 0u);
}

TEST(SteppedKill, LeavesEachChangeWholeOrNotAtAll) {
  LookAndKill(Durability::kProcess, kSteps, Sized(10000, 1500000), 50).ExpectSound();
}

}  // namespace
}  // namespace crash
