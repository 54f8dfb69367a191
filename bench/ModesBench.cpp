// What a change costs with each durability, beside a change without any: both in turn in one
// process, the best of many rounds of each.
#include <sys/syscall.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>

#include "bench/BenchRegistry.h"

namespace {

int sSyncs = 0;

}  // namespace

// The library's calls come here.
extern "C" int fdatasync(int fd) {
  ++sSyncs;
  return static_cast<int>(syscall(SYS_fdatasync, fd));
}

namespace tamu::registry {

namespace {

constexpr int kRounds = 60;

struct Work {
  const char* name;
  double most;         // times what it costs with kNone
  unsigned int count;  // in each round
  void (*run)(Registry& registry, unsigned int i);
};

void SetInteger(Registry& registry, unsigned int i) {
  unsigned long long number = i;
  Value value = {kValueTypeInteger, sizeof number, &number};
  Check(registry.SetValue(0, kDeepKey, "mtu", &value), "SetValue");
}

void CreateAndDeleteValue(Registry& registry, unsigned int i) {
  unsigned long long number = i;
  Value value = {kValueTypeInteger, sizeof number, &number};
  Check(registry.CreateValue(0, kDeepKey, "scratch", &value), "CreateValue");
  Check(registry.DeleteValue(0, kDeepKey, "scratch"), "DeleteValue");
}

void CreateAndDeleteKey(Registry& registry, unsigned int) {
  Check(registry.CreateKey(0, "devices/net/eth0/scratch"), "CreateKey");
  Check(registry.DeleteKey(0, "devices/net/eth0/scratch"), "DeleteKey");
}

// With kPower this costs what one set does there, and a hundred times a set with kNone.
void SetAHundredAsOne(Registry& registry, unsigned int i) {
  Check(registry.BeginTransaction(), "BeginTransaction");
  for (unsigned int k = 0; k < 100; ++k) SetInteger(registry, i + k);
  Check(registry.EndTransaction(), "EndTransaction");
}

void Get(Registry& registry, unsigned int) {
  ReadValue value;
  Check(registry.GetValue(0, kDeepKey, "mtu", &value), "GetValue");
}

constexpr Work kWorks[] = {{"set integer", 1.25, 1000, SetInteger},
                           {"create + delete value", 1.15, 1000, CreateAndDeleteValue},
                           {"create + delete key", 1.15, 1000, CreateAndDeleteKey},
                           {"100 sets as one", 1.25, 20, SetAHundredAsOne},
                           {"get integer", 1.0, 1000, Get}};

// Nanoseconds of one piece of work, the mean of `count`.
double Measure(const char* path, Durability durability, const Work& work, unsigned int count) {
  Registry registry(path, kAdministratorId);
  RegistryOptions options;
  options.durability = durability;
  Check(registry.SetOptions(options), "SetOptions");
  Check(registry.Initialize(), "Initialize");
  for (unsigned int i = 0; i < 20; ++i) work.run(registry, i);
  sSyncs = 0;
  const auto start = std::chrono::steady_clock::now();
  for (unsigned int i = 0; i < count; ++i) work.run(registry, i);
  const std::chrono::duration<double, std::nano> took = std::chrono::steady_clock::now() - start;
  return took.count() / count;
}

void Compare(const char* path, const Work& work) {
  double none = 1e9;
  double process = 1e9;
  for (int round = 0; round < kRounds; ++round) {
    const double without = Measure(path, Durability::kNone, work, work.count);
    const double with = Measure(path, Durability::kProcess, work, work.count);
    if (without < none) none = without;
    if (with < process) process = with;
  }
  constexpr unsigned int kPowerCount = 50;
  const double power = Measure(path, Durability::kPower, work, kPowerCount);
  std::printf("%-24s %9.0f %9.0f %7.2f %7.2f %12.0f %8.2f\n", work.name, none, process,
              process / none, work.most, power, static_cast<double>(sSyncs) / kPowerCount);
}

}  // namespace

}  // namespace tamu::registry

int main() {
  using namespace tamu::registry;
  BenchRegistry registry;
  registry->Finalize();
  std::printf("%-24s %9s %9s %7s %7s %12s %8s\n", "nanoseconds", "kNone", "kProcess", "ratio",
              "wanted", "kPower", "syncs");
  for (const Work& work : kWorks) Compare(registry.path(), work);
  return 0;
}
