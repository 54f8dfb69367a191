// Several threads at work on one registry: each counts in a value of its own and reads all others.
#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "examples/Check.h"
#include "registry/Registry.h"

using namespace tamu::registry;

namespace {

constexpr unsigned int kThreads = 4;
constexpr std::chrono::milliseconds kTime(500);

std::string Name(unsigned int worker) {
  return "worker" + std::to_string(worker);
}

// What one thread does; through the handle, which an operation without one would close for all.
class Worker {
 public:
  Worker(Registry& registry, unsigned int handle, unsigned int number)
      : registry_(registry), handle_(handle), own_(Name(number)) {}

  void Run(const std::atomic<bool>& stop) {
    while (!stop) {
      ++changes_;
      Value value = MakeValue(kValueTypeInteger, &changes_, sizeof changes_);
      Check(registry_.SetValue(handle_, "", own_.c_str(), &value), "SetValue");
      for (unsigned int i = 0; i < kThreads; ++i) {
        ReadValue seen(kValueTypeInteger);
        Check(registry_.GetValue(handle_, "", Name(i).c_str(), &seen), "GetValue");
        ++reads_;
      }
    }
  }
  unsigned long long changes() const { return changes_; }
  unsigned long long reads() const { return reads_; }

 private:
  Registry& registry_;
  unsigned int handle_;
  std::string own_;
  unsigned long long changes_ = 0;
  unsigned long long reads_ = 0;
};

// Keys and values are made before the threads start.
unsigned int Prepare(Registry& registry) {
  Check(registry.CreateKey(0, "workers"), "workers");
  for (unsigned int i = 0; i < kThreads; ++i) {
    unsigned long long zero = 0;
    Value value = MakeValue(kValueTypeInteger, &zero, sizeof zero);
    Check(registry.CreateValue(0, "workers", Name(i).c_str(), &value), "CreateValue");
  }
  unsigned int handle = 0;
  Check(registry.OpenKey("workers", &handle), "OpenKey");
  return handle;
}

void RunAll(std::vector<Worker>& workers) {
  std::atomic<bool> stop{false};
  std::vector<std::thread> threads;
  for (Worker& worker : workers) threads.emplace_back([&] { worker.Run(stop); });
  std::this_thread::sleep_for(kTime);
  stop = true;
  for (std::thread& thread : threads) thread.join();
}

// Asks the file.
unsigned long long Stored(Registry& registry, unsigned int worker) {
  ReadValue value(kValueTypeInteger);
  Check(registry.GetValue(0, "workers", Name(worker).c_str(), &value), "GetValue");
  return value.number();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::printf("usage: %s FILE\n", argv[0]);
    return 2;
  }
  Registry registry(argv[1], "installer");
  Check(registry.Initialize(), argv[1]);
  const unsigned int handle = Prepare(registry);
  std::vector<Worker> workers;
  for (unsigned int i = 0; i < kThreads; ++i) workers.emplace_back(registry, handle, i);
  RunAll(workers);
  for (unsigned int i = 0; i < kThreads; ++i) {
    const unsigned long long stored = Stored(registry, i);
    std::printf("thread %u: %7llu changes, %7llu reads; last number in the file: %llu\n", i + 1,
                workers[i].changes(), workers[i].reads(), stored);
    if (stored != workers[i].changes()) return 1;
  }
}
