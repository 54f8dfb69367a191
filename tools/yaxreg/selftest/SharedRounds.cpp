#include "tools/yaxreg/selftest/SharedRounds.h"

#include <algorithm>
#include <deque>

#include "registry/Transaction.h"
#include "tools/yaxreg/selftest/ChildTask.h"
#include "tools/yaxreg/selftest/SharedNumbers.h"
#include "tools/yaxreg/selftest/TestContent.h"

namespace yaxreg {

namespace status = tamu::registry::status;
using tamu::registry::Registry;
using tamu::registry::Transaction;

namespace {

constexpr unsigned int kWriters = 3;
constexpr unsigned int kSharedPatience =
    90000;  // ms; who waits for the others gives up after a minute

// The numbers of the writers, and that of torn looks behind them.
constexpr unsigned int kTorn = kWriters;

// One change, that goes on from the last one, whoever has made that.
bool ChangeOnce(Registry& registry, SharedNumbers& shared) {
  Transaction change(registry);
  TestContent content(registry);
  unsigned int number = 0;
  if (change.Begun() != status::kOk) return false;
  const TestContent::State state = content.Read(&number);
  if (state == TestContent::State::kMixed) ++shared[kTorn];
  return state == TestContent::State::kWhole && content.Write(number + 1) == status::kOk &&
         change.Commit() == status::kOk;
}

bool LookOnce(Registry& registry, SharedNumbers& shared) {
  Transaction look(registry);
  unsigned int number = 0;
  if (look.Begun() != status::kOk) return false;
  const TestContent::State state = TestContent(registry).Read(&number);
  if (state == TestContent::State::kMixed) ++shared[kTorn];
  return state != TestContent::State::kUnreadable;
}

int WorkBesideOthers(const TestPart& part, unsigned int process, SharedNumbers& shared) {
  Registry registry(part.file.c_str(), tamu::registry::kAdministratorId);
  if (OpenForTest(registry) != status::kOk) return 1;
  do {
    if (process == kWriters) {
      if (!LookOnce(registry, shared)) return 1;
    } else {
      if (!ChangeOnce(registry, shared)) return 1;
      ++shared[process];
    }
  } while (!part.IsOver());
  return 0;
}

}  // namespace

void RunSharedRounds(const TestPart& part) {
  SelfTestCounts& counts = *part.counts;
  SharedNumbers shared;
  if (!counts.hasJournal || !shared.AreThere()) return;
  std::deque<ChildTask> children;
  for (unsigned int i = 0; i <= kWriters; ++i) {
    children.emplace_back([&, i] { return WorkBesideOthers(part, i, shared); });
  }
  const auto left =
      std::chrono::duration_cast<std::chrono::milliseconds>(part.end - SelfTestClock::now());
  const auto patience =
      static_cast<unsigned int>(std::max<long long>(left.count(), 0)) + kSharedPatience;
  for (ChildTask& child : children) counts.stuck += child.Wait(patience) == 0 ? 0 : 1;
  unsigned int made = 0;
  for (unsigned int i = 0; i < kWriters; ++i) made += shared[i];
  counts.changes += made;
  counts.tornLooks += shared[kTorn];
  unsigned int number = 0;
  const Found found = LookInChild(part.file, &number);
  if (found != Found::kWhole) {
    ++counts.unreadable;
  } else if (number != made) {
    counts.lostChanges += made > number ? made - number : number - made;
  }
}

}  // namespace yaxreg
