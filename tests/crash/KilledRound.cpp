#include "tests/crash/KilledRound.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>

#include "tests/crash/Script.h"
#include "tests/crash/ScriptRun.h"

namespace status = tamu::registry::status;

namespace crash {

using tamu::registry::Registry;

namespace {

constexpr unsigned int kLongestLife = 3000;    // microseconds from the fork on
constexpr unsigned int kLongestOpening = 500;  // the same of a child that only opens the registry
constexpr unsigned int kSecondKillOneIn = 4;
constexpr unsigned int kKillsOfOneFile = 25;  // then it is rather full

bool IsSame(const RegistryState& expected, const RegistryState& found) {
  return Difference(expected, found).empty() && DifferenceOfTrees(expected, found).empty() &&
         DifferenceOfBackups(expected, found).empty();
}

std::string PathIn(const MemoryFolder& folder) {
  return folder.path() + "/" + kRegistryName;
}

}  // namespace

KilledRound::KilledRound(unsigned int seed, Durability durability, Verdicts* verdicts)
    : seed_(seed), durability_(durability), verdicts_(*verdicts), random_(seed) {
  const FolderImage start = Script::Random(seed, 0).start;
  RewrittenBytes();  // before anything is open
  start.PutInto(killed_.path());
  start.PutInto(undisturbed_.path());
}

bool KilledRound::Kill() {
  acknowledged_.Set(done_);
  KillOneThat(false);
  if (random_.IsOneIn(kSecondKillOneIn)) KillOneThat(true);
  return Compare(acknowledged_.Get());
}

void KilledRound::KillOneThat(bool onlyOpens) {
  const unsigned int life = random_.Below(onlyOpens ? kLongestOpening : kLongestLife);
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) Work(onlyOpens);
  usleep(life);
  kill(child, SIGKILL);
  int status = 0;
  ASSERT_EQ(child, waitpid(child, &status, 0));
  EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL)
      << "the child ended by itself behind step " << acknowledged_.Get();
}

// In the child, until it is killed.
void KilledRound::Work(bool onlyOpens) {
  Registry registry(PathIn(killed_).c_str(), kUserId);
  Prepare(registry, durability_, PolicyOf(seed_));
  if (registry.Initialize() != 0) _exit(1);
  ScriptRun run(registry, killed_.path());
  for (unsigned int step = done_; !onlyOpens; ++step) {
    run.Do(StepOf(seed_, step));
    acknowledged_.Set(step + 1);
  }
  for (;;) pause();
}

void KilledRound::DoUndisturbed(unsigned int end) {
  Registry registry(PathIn(undisturbed_).c_str(), kUserId);
  Prepare(registry, Durability::kNone, PolicyOf(seed_));
  EXPECT_EQ(status::kOk, registry.Initialize());
  ScriptRun run(registry, undisturbed_.path());
  for (; done_ < end; ++done_) run.Do(StepOf(seed_, done_));
}

// The step that was cut off is done or not. Where it is, it was done through a handle that may have
// been open for longer than here, on which the stored count of values depends: both go on from the
// same bytes.
bool KilledRound::Compare(unsigned int acknowledged) {
  ++verdicts_.states;
  RegistryState found = RegistryState::Read(killed_.path(), durability_);
  if (found.opening == 0) found.Decode(killed_.path());
  DoUndisturbed(acknowledged);
  const RegistryState before = Undisturbed();
  if (found.file == before.file && IsSame(before, found)) return true;
  DoUndisturbed(acknowledged + 1);
  const RegistryState after = Undisturbed();
  const bool isDone = IsSame(after, found);
  if (isDone || IsSame(before, found)) {
    done_ = isDone ? acknowledged + 1 : acknowledged;
    FolderImage::Of(killed_.path()).PutInto(undisturbed_.path());
    return true;
  }
  Tell(before, after, found);
  return false;
}

RegistryState KilledRound::Undisturbed() const {
  RegistryState state = RegistryState::Read(undisturbed_.path(), Durability::kNone);
  state.Decode(undisturbed_.path());
  return state;
}

void KilledRound::Tell(const RegistryState& before, const RegistryState& after,
                       const RegistryState& found) {
  const std::string on = Difference(after, found);
  const std::string back = Difference(before, found);
  const bool isInPlace = on.empty() || back.empty();
  const bool isSound = isInPlace && (DifferenceOfTrees(after, found).empty() ||
                                     DifferenceOfTrees(before, found).empty());
  ++(found.opening != 0 ? verdicts_.unopenable
     : isSound          ? verdicts_.backups
     : isInPlace        ? verdicts_.damaged
                        : verdicts_.mixed);
  verdicts_.findings += "seed " + std::to_string(seed_) + ", step " + std::to_string(done_) + ", " +
                        Describe(StepOf(seed_, done_ - 1)) + ": behind it " + on +
                        DifferenceOfTrees(after, found) + DifferenceOfBackups(after, found) +
                        "; before it " + back + DifferenceOfTrees(before, found) +
                        DifferenceOfBackups(before, found) + "\n";
}

Verdicts KillOften(Durability durability, unsigned int kills) {
  Verdicts verdicts;
  unsigned int steps = 0;
  for (unsigned int seed = 1; verdicts.states < kills; ++seed) {
    KilledRound round(seed, durability, &verdicts);
    for (unsigned int i = 0; i < kKillsOfOneFile && round.Kill(); ++i) {
    }
    steps += round.done();
  }
  std::printf("%u steps; ", steps);
  verdicts.Print();
  return verdicts;
}

}  // namespace crash
