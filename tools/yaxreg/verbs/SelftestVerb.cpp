// selftest: does this device keep what is promised?
#include <ostream>
#include <random>

#include "tools/yaxreg/cli/Invocation.h"
#include "tools/yaxreg/selftest/SelfTest.h"
#include "tools/yaxreg/text/JsonText.h"
#include "tools/yaxreg/text/Numbers.h"
#include "tools/yaxreg/verbs/VerbTable.h"

namespace yaxreg {

namespace {

constexpr unsigned int kUsualTime = 10;               // seconds
constexpr unsigned long long kLongestTime = 1000000;  // seconds

struct SelfTestWish {
  std::string folder;
  unsigned long long seconds = kUsualTime;
  unsigned long long seed = 0;
};

bool TakeWish(Invocation& call, SelfTestWish* wish) {
  wish->folder = call.Has("FOLDER") ? call.Text("FOLDER") : ".";
  wish->seed = std::random_device()();
  const struct {
    const char* option;
    unsigned long long most;
    unsigned long long* number;
  } numbers[] = {{"--time", kLongestTime, &wish->seconds}, {"--seed", 0xFFFFFFFF, &wish->seed}};
  for (const auto& one : numbers) {
    if (!call.Has(one.option)) continue;
    if (ParseNumberUpTo(call.Text(one.option), one.most, one.number)) continue;
    call.Fail(kUsage, "", "",
              std::string(one.option) + ": " + Shown(call.Text(one.option)) +
                  " is no number from 0 to " + std::to_string(one.most));
    return false;
  }
  return true;
}

class CountPrinter {
 public:
  explicit CountPrinter(Invocation& call) : call_(call) {}

  // "4,812 kills"
  void Begin(unsigned int count, const char* what) {
    call_.out << GroupedText(count) << ' ' << what;
    separator_ = ": ";
  }
  // ": 0 mixed", which is good when there is none.
  void Add(unsigned int count, const char* what) {
    const Palette& palette = call_.palette;
    call_.out << separator_ << (count == 0 ? palette.good : palette.bad) << GroupedText(count)
              << ' ' << what << palette.end;
    separator_ = ", ";
  }
  void End() { call_.out << '\n'; }

 private:
  Invocation& call_;
  const char* separator_ = ": ";
};

void PrintText(Invocation& call, const SelfTestWish& wish, const SelfTestCounts& counts) {
  CountPrinter printer(call);
  printer.Begin(counts.kills, "kills while something was changed");
  printer.Add(counts.mixed, "mixed");
  printer.Add(counts.lost, "lost");
  printer.Add(counts.unreadable, "unreadable");
  printer.End();
  printer.Begin(counts.changes, "changes by three processes at once");
  printer.Add(counts.lostChanges, "lost");
  printer.Add(counts.tornLooks, "seen by half");
  printer.Add(counts.stuck, "stuck");
  printer.End();
  printer.Begin(counts.fullDisks, "changes without room on the disk");
  printer.Add(counts.mixedByFullDisks, "mixed");
  printer.End();
  printer.Begin(counts.damages, "damaged files");
  printer.Add(counts.crashes, "crashes");
  call.out << ", " << GroupedText(counts.refused) << " refused at opening";
  printer.End();
  if (!counts.hasJournal) {
    call.out << "no journal can be had here: a kill may leave half a change, and one process at a "
                "time has a registry\n";
  }
  const Palette& palette = call.palette;
  if (counts.IsKept()) {
    call.out << palette.good << "all is as promised" << palette.end << '\n';
  } else {
    call.out << palette.bad << "not all is as promised" << palette.end << " (seed " << wish.seed
             << ")\n";
  }
}

void PrintJson(Invocation& call, const SelfTestWish& wish, const SelfTestCounts& counts) {
  const struct {
    const char* name;
    unsigned int count;
  } fields[] = {{"kills", counts.kills},         {"mixed", counts.mixed},
                {"lost", counts.lost},           {"unreadable", counts.unreadable},
                {"changes", counts.changes},     {"lostChanges", counts.lostChanges},
                {"tornLooks", counts.tornLooks}, {"stuck", counts.stuck},
                {"fullDisks", counts.fullDisks}, {"mixedByFullDisks", counts.mixedByFullDisks},
                {"damages", counts.damages},     {"refused", counts.refused},
                {"crashes", counts.crashes}};
  call.out << "{\"folder\":" << TextJson(wish.folder) << ",\"seconds\":" << wish.seconds
           << ",\"seed\":" << wish.seed
           << ",\"journal\":" << (counts.hasJournal ? "true" : "false");
  for (const auto& field : fields) call.out << ",\"" << field.name << "\":" << field.count;
  call.out << ",\"kept\":" << (counts.IsKept() ? "true" : "false") << "}\n";
}

ExitCode RunSelftest(Invocation& call) {
  SelfTestWish wish;
  if (!TakeWish(call, &wish)) return kUsage;
  SelfTestCounts counts;
  std::string reason;
  if (!RunSelfTest(wish.folder, static_cast<unsigned int>(wish.seconds),
                   static_cast<unsigned int>(wish.seed), &counts, &reason)) {
    return call.Fail(kFailed, wish.folder, "", reason);
  }
  if (call.isJson()) {
    PrintJson(call, wish, counts);
  } else {
    PrintText(call, wish, counts);
  }
  return counts.IsKept() ? kDone : kFailed;
}

}  // namespace

Verb SelftestVerb() {
  return {
      "selftest",
      "Try out whether this device keeps what is promised",
      "Works in a folder of its own within FOLDER, which is gone afterwards: kills processes in "
      "the middle of changes, as with kProcess and kPower, lets three processes change a registry "
      "and one look at it, lets changes find no room (a limit of the size of files stands for the "
      "full disk), and uses files that are damaged on purpose. A power cut is not tried. The exit "
      "code is 4 when something is not as docs/behaviour.md promises it. Where no journal can be "
      "had, a kill may leave half a change, which is told and no failure.",
      {{"FOLDER", "Where, on the file system to test; the working folder if left out", false,
        true}},
      {{"--time", "SECONDS", "How long, 10 if left out; each part has one round at least"},
       {"--seed", "N", "Draw the same damage as a test before"}},
      "yaxreg selftest /var/lib/app --time 60",
      RunSelftest,
      true};
}

}  // namespace yaxreg
