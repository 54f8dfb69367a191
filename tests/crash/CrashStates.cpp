#include "tests/crash/CrashStates.h"

#include <set>

#include "tests/crash/PowerDisk.h"
#include "tests/crash/RecordedCalls.h"
#include "tests/crash/UnsyncedFile.h"

namespace crash {
namespace {

constexpr unsigned int kRandomTears = 2;     // of each write
constexpr unsigned int kRecoveryOneIn = 16;  // states whose recovery is cut off

// How many bytes of the write are there when it is torn.
std::set<unsigned int> TearsOf(const Call& call, Random& random) {
  std::set<unsigned int> tears;
  const unsigned int size = static_cast<unsigned int>(call.bytes.size());
  if (call.kind != Call::kWrite || size < 2) return tears;
  const unsigned int sector = UnsyncedFile::kSector;
  for (unsigned int at = sector - call.offset % sector; at < size; at += sector) tears.insert(at);
  for (unsigned int i = 0; i < kRandomTears; ++i) tears.insert(1 + random.Below(size - 1));
  return tears;
}

}  // namespace

CrashStates::CrashStates(const Expectation& expected, CrashJudge* judge, unsigned int seed,
                         unsigned int lookOneIn)
    : expected_(expected),
      judge_(*judge),
      recording_(expected.script(), judge->durability()),
      random_(seed),
      lookOneIn_(lookOneIn) {}

void CrashStates::LookAtDeaths() {
  FolderImage image = expected_.script().start;
  const std::vector<Call>& calls = recording_.calls();
  for (size_t i = 0; i < calls.size(); ++i) {
    if (random_.IsOneIn(lookOneIn_)) {
      Look(image, calls[i].step, "before call " + std::to_string(i), false);
    }
    LookAtTears(image, i);
    image.Apply(calls[i]);
    if (StepBehind(i) == calls[i].step) continue;
    Look(image, StepBehind(i), "behind call " + std::to_string(i), false);
  }
}

void CrashStates::LookAtTears(const FolderImage& image, size_t call) {
  const Call& write = recording_.calls()[call];
  for (const unsigned int size : TearsOf(write, random_)) {
    if (!random_.IsOneIn(lookOneIn_)) continue;
    FolderImage torn = image;
    torn.ApplyTorn(write, size);
    Look(torn, write.step, "call " + std::to_string(call) + " torn at " + std::to_string(size),
         false);
  }
}

void CrashStates::LookAtPowerCuts(unsigned int draws) {
  PowerDisk disk(expected_.script().start);
  const std::vector<Call>& calls = recording_.calls();
  for (size_t i = 0; i < calls.size(); ++i) {
    disk.Apply(calls[i]);
    const unsigned int count = disk.HasChoice() ? draws : 1;
    for (unsigned int draw = 0; draw < count; ++draw) {
      if (!random_.IsOneIn(lookOneIn_)) continue;
      Restart();
      Look(disk.Draw(random_), StepBehind(i), "power gone behind call " + std::to_string(i), true);
    }
  }
}

void CrashStates::Look(const FolderImage& image, unsigned int step, const std::string& where,
                       bool isPowerCut) {
  judge_.Look(image, step, where);
  if (!random_.IsOneIn(kRecoveryOneIn)) return;
  judge_.Look(CutRecovery(image, isPowerCut), step, where + ", recovery cut off");
}

FolderImage CrashStates::CutRecovery(const FolderImage& image, bool isPowerCut) {
  image.PutInto(folder_.path());
  StartRecording(image);
  RegistryState::Read(folder_.path(), judge_.durability());
  const std::vector<Call> calls = StopRecording();
  const unsigned int cut = random_.Below(static_cast<unsigned int>(calls.size()) + 1);
  PowerDisk disk(image);
  FolderImage left = image;
  for (unsigned int i = 0; i < cut; ++i) {
    disk.Apply(calls[i]);
    left.Apply(calls[i]);
  }
  if (!isPowerCut) return left;
  Restart();
  return disk.Draw(random_);
}

// The operation has answered when nothing happens any more before the next one.
unsigned int CrashStates::StepBehind(size_t call) const {
  const std::vector<Call>& calls = recording_.calls();
  const unsigned int step = calls[call].step;
  const bool isLast = call + 1 == calls.size() || calls[call + 1].step != step;
  return isLast ? step + 1 : step;
}

}  // namespace crash
