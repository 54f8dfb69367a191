// What several processes and threads reach together on one registry, beside one alone: both in
// turn, medians of many rounds. And how long a commit takes to wake who waits for it in another
// process.
#include <sys/mman.h>
#include <sys/wait.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "bench/BenchRegistry.h"

namespace tamu::registry {

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kRounds = 15;
constexpr std::chrono::milliseconds kRoundTime(100);
constexpr unsigned int kMostUsers = 8;
constexpr unsigned int kWakes = 500;

// What the processes tell each other.
struct Shared {
  std::atomic<unsigned int> ready;
  std::atomic<bool> isToStart;
  std::atomic<bool> isToEnd;
  std::atomic<unsigned long long> done[kMostUsers];
  std::atomic<long long> started;  // ns of the steady clock
  std::atomic<long long> woken;
};

Shared* Share() {
  void* memory =
      mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  return memory == MAP_FAILED ? nullptr : new (memory) Shared();
}

using Operation = void (*)(Registry& registry, unsigned int handle, unsigned int user);

void Set(Registry& registry, unsigned int, unsigned int user) {
  static unsigned long long number = 0;
  ++number;  // an equal value is no change
  Value value = {kValueTypeInteger, sizeof number, &number};
  Check(registry.SetValue(0, kDeepKey, user % 2 == 0 ? "mtu" : "other", &value), "SetValue");
}

void Get(Registry& registry, unsigned int, unsigned int) {
  ReadValue value;
  Check(registry.GetValue(0, kDeepKey, "mtu", &value), "GetValue");
}

void GetByHandle(Registry& registry, unsigned int handle, unsigned int) {
  ReadValue value;
  Check(registry.GetValue(handle, "", "mtu", &value), "GetValue");
}

void Work(Shared& shared, Registry& registry, unsigned int handle, unsigned int user,
          Operation operation) {
  ++shared.ready;
  while (!shared.isToStart) std::this_thread::yield();
  unsigned long long done = 0;
  for (; !shared.isToEnd; ++done) operation(registry, handle, user);
  shared.done[user] = done;
}

void EndRound(Shared& shared, unsigned int users) {
  while (shared.ready < users) std::this_thread::yield();
  shared.isToStart = true;
  std::this_thread::sleep_for(kRoundTime);
  shared.isToEnd = true;
}

// Operations of a round, of all together.
double Sum(Shared& shared) {
  double sum = 0;
  for (auto& each : shared.done) sum += static_cast<double>(each.exchange(0));
  shared.ready = 0;
  shared.isToStart = false;
  shared.isToEnd = false;
  return sum;
}

double RunProcesses(Shared& shared, const char* path, unsigned int users, Operation operation) {
  for (unsigned int user = 0; user < users; ++user) {
    if (fork() != 0) continue;
    Registry registry(path, kAdministratorId);
    Check(registry.Initialize(), "Initialize");
    Work(shared, registry, 0, user, operation);
    registry.Finalize();
    _exit(0);
  }
  EndRound(shared, users);
  while (wait(nullptr) > 0) {
  }
  return Sum(shared);
}

double RunThreads(Shared& shared, const char* path, unsigned int users, Operation operation) {
  Registry registry(path, kAdministratorId);
  Check(registry.Initialize(), "Initialize");
  unsigned int handle = 0;
  if (operation == GetByHandle) Check(registry.OpenKey(kDeepKey, &handle), "OpenKey");
  std::vector<std::thread> threads;
  for (unsigned int user = 0; user < users; ++user) {
    threads.emplace_back([&, user] { Work(shared, registry, handle, user, operation); });
  }
  EndRound(shared, users);
  for (std::thread& each : threads) each.join();
  return Sum(shared);
}

double Median(std::vector<double> all) {
  std::sort(all.begin(), all.end());
  return all[all.size() / 2];
}

using Run = double (*)(Shared& shared, const char* path, unsigned int users, Operation operation);

void Compare(const char* name, Shared& shared, const char* path, Run run, unsigned int users,
             Operation operation, double wanted) {
  std::vector<double> alone;
  std::vector<double> together;
  std::vector<double> ratios;
  for (int round = 0; round < kRounds; ++round) {
    alone.push_back(run(shared, path, 1, operation));
    together.push_back(run(shared, path, users, operation));
    ratios.push_back(together.back() / alone.back());
  }
  const double ns = std::chrono::duration<double, std::nano>(kRoundTime).count();
  std::printf("%-34s %10.0f %10.0f %7.2f %7.2f\n", name, ns / Median(alone), ns / Median(together),
              Median(ratios), wanted);
}

long long Nanoseconds() {
  return std::chrono::nanoseconds(Clock::now().time_since_epoch()).count();
}

// The other process tells when it was woken.
void MeasureWakes(Shared& shared, const char* path) {
  if (fork() == 0) {
    Registry registry(path, kAdministratorId);
    Check(registry.Initialize(), "Initialize");
    unsigned long long number = registry.ChangeNumber();
    for (;;) {
      shared.ready = 1;
      if (registry.WaitForChange(number, 10000) != status::kOk) _exit(1);
      shared.woken = Nanoseconds();
      number = registry.ChangeNumber();
      if (shared.isToEnd) _exit(0);
    }
  }
  Registry registry(path, kAdministratorId);
  Check(registry.Initialize(), "Initialize");
  std::vector<double> took;
  for (unsigned int i = 0; i < kWakes; ++i) {
    while (shared.ready == 0) std::this_thread::yield();
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
    shared.ready = 0;
    shared.isToEnd = i + 1 == kWakes;
    shared.woken = 0;
    const long long start = Nanoseconds();
    Set(registry, 0, i);
    while (shared.woken == 0) std::this_thread::yield();
    took.push_back(static_cast<double>(shared.woken - start) / 1000);
  }
  wait(nullptr);
  std::printf("%-34s %10.1f us (wanted: 100)\n", "set until woken elsewhere", Median(took));
}

}  // namespace

}  // namespace tamu::registry

int main() {
  using namespace tamu::registry;
  BenchRegistry registry;
  unsigned long long number = 1;
  Value other = {kValueTypeInteger, sizeof number, &number};
  Check(registry->CreateValue(0, kDeepKey, "other", &other), "other");
  registry->Finalize();
  Shared* const shared = Share();
  if (shared == nullptr) return 1;
  std::printf("%-34s %10s %10s %7s %7s\n", "nanoseconds", "one", "together", "ratio", "wanted");
  Compare("set, 2 processes", *shared, registry.path(), RunProcesses, 2, Set, 0.7);
  Compare("get, 2 processes", *shared, registry.path(), RunProcesses, 2, Get, 1.8);
  Compare("get, 8 threads", *shared, registry.path(), RunThreads, 8, Get, 1.8);
  Compare("get by handle, 8 threads", *shared, registry.path(), RunThreads, 8, GetByHandle, 1.8);
  MeasureWakes(*shared, registry.path());
  return 0;
}
