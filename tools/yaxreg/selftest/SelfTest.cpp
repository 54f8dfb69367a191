#include "tools/yaxreg/selftest/SelfTest.h"

#include "tools/yaxreg/image/TemporaryFolder.h"
#include "tools/yaxreg/selftest/DamageRounds.h"
#include "tools/yaxreg/selftest/FullDiskRounds.h"
#include "tools/yaxreg/selftest/KillRounds.h"
#include "tools/yaxreg/selftest/SharedRounds.h"
#include "tools/yaxreg/selftest/TestRound.h"

namespace yaxreg {

namespace {

constexpr unsigned int kParts = 4;

}  // namespace

bool RunSelfTest(const std::string& folder, unsigned int seconds, unsigned int seed,
                 SelfTestCounts* counts, std::string* reason) {
  const TemporaryFolder own(folder + "/registry");
  if (!own.isMade()) {
    *reason = "a folder within " + own.reason();
    return false;
  }
  std::mt19937 random(seed);
  const auto begin = SelfTestClock::now();
  const std::chrono::milliseconds share(1000ull * seconds / kParts);
  const struct {
    const char* name;
    void (*run)(const TestPart&);
  } parts[kParts] = {{"damage", RunDamageRounds},
                     {"kills", RunKillRounds},
                     {"processes", RunSharedRounds},
                     {"disk", RunFullDiskRounds}};
  for (unsigned int i = 0; i < kParts; ++i) {
    const TestPart part = {own.FileIn(parts[i].name), begin + (i + 1) * share, &random, counts};
    const unsigned int made = MakeTestFile(part.file, &counts->hasJournal);
    if (made != 0) {
      *reason = "no registry can be made: " + std::string(tamu::registry::StatusText(made));
      return false;
    }
    parts[i].run(part);
  }
  return true;
}

}  // namespace yaxreg
