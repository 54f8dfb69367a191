// What the registry's operations without a handle cost.
#include <benchmark/benchmark.h>

#include "bench/BenchRegistry.h"

using namespace tamu::registry;

namespace {

void GetInteger(benchmark::State& state) {
  BenchRegistry registry;
  for (auto _ : state) {
    ReadValue value;
    Check(registry->GetValue(0, kDeepKey, "mtu", &value), "GetValue");
    benchmark::DoNotOptimize(value.number());
  }
}
BENCHMARK(GetInteger);

void GetString(benchmark::State& state) {
  BenchRegistry registry;
  for (auto _ : state) {
    ReadValue value;
    Check(registry->GetValue(0, kDeepKey, "profile", &value), "GetValue");
    benchmark::DoNotOptimize(value.text());
  }
}
BENCHMARK(GetString);

void GetFromMissingKey(benchmark::State& state) {
  BenchRegistry registry;
  for (auto _ : state) {
    ReadValue value;
    benchmark::DoNotOptimize(registry->GetValue(0, "devices/net/eth1/limits", "mtu", &value));
  }
}
BENCHMARK(GetFromMissingKey);

void SetInteger(benchmark::State& state) {
  BenchRegistry registry;
  unsigned long long number = 0;
  for (auto _ : state) {
    ++number;
    Value value = {kValueTypeInteger, sizeof number, &number};
    Check(registry->SetValue(0, kDeepKey, "mtu", &value), "SetValue");
  }
}
BENCHMARK(SetInteger);

void SetString(benchmark::State& state) {
  BenchRegistry registry;
  char text[] = "slow and cheap";
  for (auto _ : state) {
    Value value = {kValueTypeString, sizeof text, text};
    Check(registry->SetValue(0, kDeepKey, "profile", &value), "SetValue");
  }
}
BENCHMARK(SetString);

void CreateAndDeleteInteger(benchmark::State& state) {
  BenchRegistry registry;
  unsigned long long number = 7;
  for (auto _ : state) {
    Value value = {kValueTypeInteger, sizeof number, &number};
    Check(registry->CreateValue(0, kDeepKey, "scratch", &value), "CreateValue");
    Check(registry->DeleteValue(0, kDeepKey, "scratch"), "DeleteValue");
  }
}
BENCHMARK(CreateAndDeleteInteger);

void OpenFile(benchmark::State& state) {
  BenchRegistry registry;
  registry->Finalize();
  for (auto _ : state) {
    Registry again(registry.path(), kAdministratorId);
    Check(again.Initialize(), "Initialize");
  }
}
BENCHMARK(OpenFile)->Unit(benchmark::kMicrosecond);

void MakeFile(benchmark::State& state) {
  BenchRegistry registry;
  registry->Finalize();
  for (auto _ : state) {
    std::remove(registry.path());
    Registry made(registry.path(), kAdministratorId);
    Check(made.Initialize(), "Initialize");
  }
}
BENCHMARK(MakeFile)->Unit(benchmark::kMicrosecond);

}  // namespace
