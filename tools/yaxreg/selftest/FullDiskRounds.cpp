#include "tools/yaxreg/selftest/FullDiskRounds.h"

#include <signal.h>
#include <sys/resource.h>

#include "registry/Transaction.h"
#include "tools/yaxreg/image/FileBytes.h"
#include "tools/yaxreg/image/RegistryImage.h"
#include "tools/yaxreg/selftest/ChildTask.h"
#include "tools/yaxreg/selftest/SharedNumbers.h"
#include "tools/yaxreg/selftest/TestContent.h"
#include "tools/yaxreg/selftest/TestFiles.h"

namespace yaxreg {

namespace status = tamu::registry::status;
using tamu::registry::Registry;
using tamu::registry::Transaction;

namespace {

constexpr unsigned int kMostRoom = 40000;    // bytes that the file may grow by
constexpr unsigned int kMostChanges = 2000;  // of a round

// What a process of a round answers.
enum : int { kWasRefused = 0, kWasMixed, kWasNotFull };

std::string FillOf(unsigned int number) {
  return "fill/" + std::to_string(number);
}

// What needs room comes last.
unsigned int GrowOnce(Registry& registry, unsigned int number) {
  const std::string data(tamu::registry::kValueDataMax, 'f');
  Transaction change(registry);
  if (change.Begun() != status::kOk) return change.Begun();
  const unsigned int written = TestContent(registry).Write(number);
  if (written != status::kOk) return written;
  const unsigned int filled = registry.PutValue(
      FillOf(number).c_str(), "data",
      tamu::registry::MakeValue(2, data.data(), static_cast<unsigned int>(data.size())), true);
  return filled == status::kOk ? change.Commit() : filled;
}

bool IsAsOf(Registry& registry, unsigned int number) {
  unsigned int found = 0;
  unsigned char permission = 0;
  const unsigned int next = registry.GetKeyPermission(0, FillOf(number + 1).c_str(), &permission);
  const unsigned int last = registry.GetKeyPermission(0, FillOf(number).c_str(), &permission);
  return TestContent(registry).Read(&found) == TestContent::State::kWhole && found == number &&
         next == status::kNotFound && last == (number == 0 ? status::kNotFound : +status::kOk);
}

// What cannot be made longer is closed until it is opened again.
bool IsClosed(Registry& registry) {
  unsigned char permission = 0;
  return registry.GetKeyPermission(0, "", &permission) == status::kInputOutput;
}

int GrowUntilRefused(const std::string& file, unsigned int room, SharedNumbers& shared) {
  const rlimit limit = {room, room};
  signal(SIGXFSZ, SIG_IGN);
  if (setrlimit(RLIMIT_FSIZE, &limit) != 0) return kWasNotFull;
  Registry registry(file.c_str(), tamu::registry::kAdministratorId);
  if (OpenForTest(registry) != status::kOk) return kWasRefused;
  for (unsigned int number = 1; number <= kMostChanges; ++number) {
    if (GrowOnce(registry, number) != status::kOk) {
      return IsClosed(registry) || IsAsOf(registry, number - 1) ? kWasRefused : kWasMixed;
    }
    shared[0] = number;
  }
  return kWasNotFull;
}

// With room again.
int LookAndGoOn(const std::string& file, unsigned int number) {
  Registry registry(file.c_str(), tamu::registry::kAdministratorId);
  if (OpenForTest(registry) != status::kOk || !IsAsOf(registry, number)) return kWasMixed;
  return GrowOnce(registry, number + 1) == status::kOk && IsAsOf(registry, number + 1) ? kWasRefused
                                                                                       : kWasMixed;
}

}  // namespace

void RunFullDiskRounds(const TestPart& part) {
  SelfTestCounts& counts = *part.counts;
  std::string bytes;
  if (!ReadWholeFile(part.file, RegistryImage::kMaxSize, &bytes).isDone()) return;
  do {
    SharedNumbers shared;
    if (!shared.AreThere() || !PutTestFile(part.file, bytes)) break;
    const unsigned int room = static_cast<unsigned int>(bytes.size()) + part.Draw(kMostRoom);
    const int grown = RunInChild([&] { return GrowUntilRefused(part.file, room, shared); });
    if (grown == kWasNotFull) break;
    ++counts.fullDisks;
    const unsigned int number = shared[0];
    const bool isKept = grown == kWasRefused &&
                        RunInChild([&] { return LookAndGoOn(part.file, number); }) == kWasRefused;
    if (!isKept) ++counts.mixedByFullDisks;
  } while (!part.IsOver());
}

}  // namespace yaxreg
