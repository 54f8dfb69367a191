// What lists, counts, backups, restores and deletions of whole subtrees cost.
#include "bench/Subtree.h"

using namespace tamu::registry;

namespace {

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
