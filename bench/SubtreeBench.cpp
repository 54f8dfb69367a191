// What lists, counts, backups, restores and deletions of whole subtrees cost. Each key below "data"
// has two values, a number and a text of 20 bytes. The time for each key is in the last column.
#include <benchmark/benchmark.h>

#include "bench/BenchFile.h"

using namespace tamu::registry;

namespace {

constexpr char kKey[] = "data";

// A registry with so many keys below "data", and a backup of them.
class Subtree {
 public:
  explicit Subtree(unsigned int keys)
      : file_(".rce"), backup_(".bak"), registry_(file_.path(), kAdministratorId) {
    Open();
    Fill(keys);
    Check(registry_.BackupKey(0, kKey, backup_.path()), "BackupKey");
  }

  Registry* operator->() { return &registry_; }
  const char* backup() const { return backup_.path(); }
  // A new file with nothing below "data".
  void Empty() {
    registry_.Finalize();
    file_.Remove();
    Open();
  }
  void Restore() { Check(registry_.RestoreKey(0, kKey, backup()), "RestoreKey"); }

 private:
  void Open() {
    Check(registry_.Initialize(), "Initialize");
    Check(registry_.CreateKey(0, kKey), kKey);
  }
  void Fill(unsigned int keys) {
    unsigned long long number = 1500;
    Value integer = {kValueTypeInteger, sizeof number, &number};
    char text[20] = "fast and reliable";
    Value string = {kValueTypeString, sizeof text, text};
    for (unsigned int i = 0; i < keys; ++i) {
      char name[24];
      std::snprintf(name, sizeof name, "data/key%04u", i);
      Check(registry_.CreateKey(0, name), name);
      Check(registry_.CreateValue(0, name, "mtu", &integer), "mtu");
      Check(registry_.CreateValue(0, name, "profile", &string), "profile");
    }
  }

  BenchFile file_;
  BenchFile backup_;
  Registry registry_;
};

unsigned int Keys(const benchmark::State& state) {
  return static_cast<unsigned int>(state.range(0));
}

void CountKeys(benchmark::State& state) {
  state.counters["per_key"] = benchmark::Counter(
      static_cast<double>(Keys(state)),
      benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void List(benchmark::State& state) {
  Subtree subtree(Keys(state));
  for (auto _ : state) {
    NameList names(Keys(state));
    Check(subtree->ListKeys(0, kKey, 0, 0, &names, 0), "ListKeys");
    benchmark::DoNotOptimize(names.Count());
  }
  CountKeys(state);
}

void Count(benchmark::State& state) {
  Subtree subtree(Keys(state));
  for (auto _ : state) {
    KeyInfo info = KeyInfo();
    Check(subtree->GetKeyInfo(0, kKey, &info), "GetKeyInfo");
    benchmark::DoNotOptimize(info.totalKeyCount);
  }
  CountKeys(state);
}

void Backup(benchmark::State& state) {
  Subtree subtree(Keys(state));
  for (auto _ : state) Check(subtree->BackupKey(0, kKey, subtree.backup()), "BackupKey");
  CountKeys(state);
}

void Restore(benchmark::State& state) {
  Subtree subtree(Keys(state));
  for (auto _ : state) {
    state.PauseTiming();
    subtree.Empty();
    state.ResumeTiming();
    subtree.Restore();
  }
  CountKeys(state);
}

void Delete(benchmark::State& state) {
  Subtree subtree(Keys(state));
  for (auto _ : state) {
    state.PauseTiming();
    subtree.Empty();
    subtree.Restore();
    state.ResumeTiming();
    Check(subtree->DeleteKey(0, kKey), "DeleteKey");
  }
  CountKeys(state);
}

void SomeSizes(benchmark::internal::Benchmark* benchmark) {
  benchmark->Arg(100)->Arg(400)->Arg(1000)->Arg(4000)->Unit(benchmark::kMicrosecond);
}

BENCHMARK(List)->Arg(20)->Apply(SomeSizes);
BENCHMARK(Count)->Apply(SomeSizes);
BENCHMARK(Backup)->Apply(SomeSizes);
BENCHMARK(Restore)->Apply(SomeSizes);
BENCHMARK(Delete)->Apply(SomeSizes);

}  // namespace
