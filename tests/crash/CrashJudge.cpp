#include "tests/crash/CrashJudge.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/crash/ScriptRun.h"

namespace status = tamu::registry::status;

namespace crash {

using tamu::registry::Registry;

namespace {

constexpr unsigned int kGoOnOneIn = 8;  // sound states
constexpr long kMostTold = 20;          // findings

}  // namespace

void CrashJudge::Look(const FolderImage& image, unsigned int step, const std::string& where) {
  image.PutInto(folder_.path());
  LookInto(folder_.path(), step, where);
}

void CrashJudge::LookInto(const std::string& folder, unsigned int step, const std::string& where) {
  RegistryState found = RegistryState::Read(folder, durability_);
  Complete(folder, step, &found);
  const bool isSound = Judge(step, where, found);
  if (!isSound || verdicts_.states % kGoOnOneIn != 0) return;
  const bool isBefore = found.file == expected_.Before(step).file;
  GoOn(folder, isBefore ? step : step + 1, where);
}

// Does a step on what was found.
void CrashJudge::GoOn(const std::string& folder, unsigned int step, const std::string& where) {
  const Script& script = expected_.script();
  if (step == 0 || step > script.count()) return;
  unsigned int answer = 0;
  {
    Registry registry((folder + "/" + kRegistryName).c_str(), kUserId);
    Prepare(registry, durability_);
    EXPECT_EQ(status::kOk, registry.Initialize());
    answer = ScriptRun(registry, folder).Do(script.steps[step - 1]);
  }
  RegistryState found = RegistryState::Read(folder, durability_);
  found.Decode(folder);
  const RegistryState& after = expected_.After(step);
  const std::string difference = Difference(after, found) + DifferenceOfTrees(after, found);
  if (difference.empty()) return;
  ++verdicts_.damaged;
  Tell(script.NameOf(step) + ", done behind a crash, " + where + ": status " +
       std::to_string(answer) + ", " + difference);
}

void CrashJudge::Complete(const std::string& folder, unsigned int step, RegistryState* found) {
  if (found->opening != 0) return;
  if (found->file == expected_.Before(step).file) {
    found->tree = expected_.Before(step).tree;
  } else if (found->file == expected_.After(step).file) {
    found->tree = expected_.After(step).tree;
  } else {
    found->Decode(folder);
    ++verdicts_.otherBytes;
  }
}

// True for a sound state.
bool CrashJudge::Judge(unsigned int step, const std::string& where, const RegistryState& found) {
  ++verdicts_.states;
  const RegistryState& before = expected_.Before(step);
  const RegistryState& after = expected_.After(step);
  const std::string back = Difference(before, found);
  const std::string on = Difference(after, found);
  const std::string finding = expected_.script().NameOf(step) + ", " + where + ": ";
  if ((on.empty() && found.tree == after.tree) || (back.empty() && found.tree == before.tree)) {
    const std::string backups = DifferenceOfBackups(after, found);
    if (backups.empty() || DifferenceOfBackups(before, found).empty()) return true;
    ++verdicts_.backups;
    Tell(finding + backups);
    return false;
  }
  if (back.empty() || on.empty()) {
    ++verdicts_.damaged;
    Tell(finding + DifferenceOfTrees(on.empty() ? after : before, found));
    return false;
  }
  unsigned int& count = found.opening != 0     ? verdicts_.unopenable
                        : IsOlder(step, found) ? verdicts_.lost
                                               : verdicts_.mixed;
  ++count;
  Tell(finding + "behind it " + on + "; before it " + back);
  return false;
}

// The state is one that was acknowledged before the last one.
bool CrashJudge::IsOlder(unsigned int step, const RegistryState& found) const {
  for (unsigned int older = 1; older < step; ++older) {
    if (Difference(expected_.Before(older), found).empty()) return true;
  }
  return false;
}

void CrashJudge::Tell(const std::string& finding) {
  std::string& all = verdicts_.findings;
  if (std::count(all.begin(), all.end(), '\n') < kMostTold) all += finding + "\n";
}

}  // namespace crash
