#include "tests/crash/CrashScripts.h"

#include <gtest/gtest.h>

#include "tests/crash/CrashStates.h"

namespace crash {
namespace {

constexpr unsigned int kSteps = 50;
constexpr unsigned int kDraws = 4;

void LookAt(const Script& script, Durability durability, Crash crash, unsigned int seed,
            Verdicts* verdicts, unsigned int lookOneIn = 1) {
  const Expectation expected(script);
  CrashJudge judge(expected, durability, verdicts);
  CrashStates cut(expected, &judge, seed, lookOneIn);
  EXPECT_EQ(expected.answers(), cut.recording().answers()) << script.name;
  for (unsigned int step = 0; step <= script.count(); ++step) {
    EXPECT_TRUE(expected.After(step).file == cut.recording().files()[step]) << script.NameOf(step);
  }
  if (crash == Crash::kPowerCut) {
    cut.LookAtPowerCuts(kDraws);
  } else {
    cut.LookAtDeaths();
  }
}

Verdicts LookOften(const Script& script, Durability durability, Crash crash, unsigned int times) {
  Verdicts verdicts;
  for (unsigned int seed = 1; seed <= times; ++seed) {
    LookAt(script, durability, crash, seed, &verdicts);
  }
  verdicts.Print();
  return verdicts;
}

}  // namespace

Verdicts LookAtRandom(Durability durability, Crash crash, unsigned int states) {
  Verdicts verdicts;
  for (unsigned int seed = 1; verdicts.states < states; ++seed) {
    LookAt(Script::Random(seed, kSteps), durability, crash, seed, &verdicts);
  }
  verdicts.Print();
  return verdicts;
}

Verdicts LookAtMaking(Durability durability, Crash crash, unsigned int states) {
  Verdicts verdicts;
  for (unsigned int seed = 1; verdicts.states < states; ++seed) {
    LookAt(Script::Making(seed), durability, crash, seed, &verdicts);
  }
  verdicts.Print();
  return verdicts;
}

Verdicts LookAtRewriting(Durability durability, Crash crash, unsigned int times) {
  return LookOften(Script::Rewriting(), durability, crash, times);
}

Verdicts LookAtGrowing(Durability durability, Crash crash, unsigned int times) {
  return LookOften(Script::GrowingIntoRest(), durability, crash, times);
}

Verdicts LookAtLarge(Durability durability, Crash crash, unsigned int lookOneIn) {
  Verdicts verdicts;
  LookAt(Script::Large(), durability, crash, 1, &verdicts, lookOneIn);
  verdicts.Print();
  return verdicts;
}

}  // namespace crash
