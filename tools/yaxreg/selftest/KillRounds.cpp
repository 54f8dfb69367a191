#include "tools/yaxreg/selftest/KillRounds.h"

#include <unistd.h>

#include "tools/yaxreg/selftest/ChildTask.h"
#include "tools/yaxreg/selftest/SharedNumbers.h"
#include "tools/yaxreg/selftest/TestContent.h"

namespace yaxreg {

namespace status = tamu::registry::status;
using tamu::registry::Durability;
using tamu::registry::Registry;

namespace {

constexpr unsigned int kLongestDelay = 3000;  // microseconds until the kill
constexpr unsigned int kKillPause = 100;      // microseconds
constexpr unsigned int kKillTries = 300000;   // pauses until a change must have been made

// Of the numbers that the processes share.
enum : unsigned int { kFirst, kAcknowledged };

int ChangeForEver(const std::string& file, Durability durability, SharedNumbers& shared) {
  Registry registry(file.c_str(), tamu::registry::kAdministratorId);
  unsigned int number = 0;
  if (OpenForTest(registry, durability) != status::kOk) return 1;
  TestContent content(registry);
  if (content.Read(&number) == TestContent::State::kUnreadable) return 1;
  shared[kAcknowledged] = number;  // the first: it counts as soon as the other differs
  shared[kFirst] = number;
  for (;;) {
    if (content.Write(++number) != status::kOk) return 1;
    shared[kAcknowledged] = number;
  }
}

// Until it has made a change. False: it has ended, or makes none.
bool AwaitChange(ChildTask& child, SharedNumbers& shared) {
  for (unsigned int i = 0; i < kKillTries; ++i) {
    if (shared[kAcknowledged] != shared[kFirst]) return true;
    if (child.HasEnded()) return false;
    usleep(kKillPause);
  }
  return false;
}

}  // namespace

void RunKillRounds(const TestPart& part) {
  SelfTestCounts& counts = *part.counts;
  do {
    SharedNumbers shared;
    const bool isForPower = counts.kills % 2 != 0;
    const Durability durability = isForPower ? Durability::kPower : Durability::kProcess;
    if (!shared.AreThere()) break;
    ChildTask child([&] { return ChangeForEver(part.file, durability, shared); });
    const bool hasBegun = AwaitChange(child, shared);
    usleep(part.Draw(kLongestDelay));
    if (!hasBegun || child.HasEnded()) {
      ++counts.stuck;
      break;
    }
    child.Kill();
    ++counts.kills;
    const unsigned int acknowledged = shared[kAcknowledged];
    unsigned int number = 0;
    switch (LookInChild(part.file, &number)) {
      case Found::kMixed:
        ++counts.mixed;
        break;
      case Found::kUnreadable:
        ++counts.unreadable;
        return;
      case Found::kWhole:
        if (number != acknowledged && number != acknowledged + 1) ++counts.lost;
        break;
    }
  } while (!part.IsOver());
}

}  // namespace yaxreg
