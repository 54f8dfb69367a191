// What operations through a handle cost.
#include <string>
#include <vector>

#include "bench/BenchRegistry.h"
#include "bench/Subtree.h"

using namespace tamu::registry;

namespace {

// A handle of a key, open until the end.
class Handle {
 public:
  Handle(Registry* registry, const char* key) : registry_(registry) {
    Check(registry->OpenKey(key, &number_), "OpenKey");
  }
  ~Handle() { Check(registry_->CloseKey(number_), "CloseKey"); }
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;

  operator unsigned int() const { return number_; }

 private:
  Registry* registry_;
  unsigned int number_ = 0;
};

void HandleGetInteger(benchmark::State& state) {
  BenchRegistry registry;
  const Handle root(registry.operator->(), "");
  for (auto _ : state) {
    ReadValue value;
    Check(registry->GetValue(root, kDeepKey, "mtu", &value), "GetValue");
    benchmark::DoNotOptimize(value.number());
  }
}
BENCHMARK(HandleGetInteger);

void HandleGetString(benchmark::State& state) {
  BenchRegistry registry;
  const Handle root(registry.operator->(), "");
  for (auto _ : state) {
    ReadValue value;
    Check(registry->GetValue(root, kDeepKey, "profile", &value), "GetValue");
    benchmark::DoNotOptimize(value.text());
  }
}
BENCHMARK(HandleGetString);

void HandleSetInteger(benchmark::State& state) {
  BenchRegistry registry;
  const Handle root(registry.operator->(), "");
  unsigned long long number = 0;
  for (auto _ : state) {
    ++number;
    Value value = {kValueTypeInteger, sizeof number, &number};
    Check(registry->SetValue(root, kDeepKey, "mtu", &value), "SetValue");
  }
}
BENCHMARK(HandleSetInteger);

void HandleSetString(benchmark::State& state) {
  BenchRegistry registry;
  const Handle root(registry.operator->(), "");
  char text[] = "slow but reliable";
  for (auto _ : state) {
    Value value = {kValueTypeString, sizeof text, text};
    Check(registry->SetValue(root, kDeepKey, "profile", &value), "SetValue");
  }
}
BENCHMARK(HandleSetString);

void HandleCreateAndDeleteValue(benchmark::State& state) {
  BenchRegistry registry;
  const Handle root(registry.operator->(), "");
  unsigned long long number = 7;
  for (auto _ : state) {
    Value value = {kValueTypeInteger, sizeof number, &number};
    Check(registry->CreateValue(root, kDeepKey, "new", &value), "CreateValue");
    Check(registry->DeleteValue(root, kDeepKey, "new"), "DeleteValue");
  }
}
BENCHMARK(HandleCreateAndDeleteValue);

void HandleCreateAndDeleteKey(benchmark::State& state) {
  BenchRegistry registry;
  const Handle root(registry.operator->(), "");
  for (auto _ : state) {
    Check(registry->CreateKey(root, "devices/net/eth0/filter"), "CreateKey");
    Check(registry->DeleteKey(root, "devices/net/eth0/filter"), "DeleteKey");
  }
}
BENCHMARK(HandleCreateAndDeleteKey);

void Open(benchmark::State& state) {
  Subtree subtree(Keys(state));
  for (auto _ : state) {
    unsigned int handle = 0;
    Check(subtree->OpenKey(kKey, &handle), "OpenKey");
    state.PauseTiming();
    Check(subtree->CloseKey(handle), "CloseKey");
    state.ResumeTiming();
  }
  CountKeys(state);
}
BENCHMARK(Open)->Arg(100)->Arg(4000)->Unit(benchmark::kMicrosecond);

void Close(benchmark::State& state) {
  Subtree subtree(Keys(state));
  for (auto _ : state) {
    state.PauseTiming();
    unsigned int handle = 0;
    Check(subtree->OpenKey(kKey, &handle), "OpenKey");
    state.ResumeTiming();
    Check(subtree->CloseKey(handle), "CloseKey");
  }
  CountKeys(state);
}
BENCHMARK(Close)->Arg(100)->Arg(4000)->Unit(benchmark::kMicrosecond);

// What opening costs when another handle has the subtree in memory already.
void OpenAndCloseAgain(benchmark::State& state) {
  Subtree subtree(Keys(state));
  const Handle first(subtree.operator->(), kKey);
  for (auto _ : state) {
    const Handle again(subtree.operator->(), kKey);
    benchmark::DoNotOptimize(static_cast<unsigned int>(again));
  }
  CountKeys(state);
}
BENCHMARK(OpenAndCloseAgain)->Arg(100)->Arg(4000)->Unit(benchmark::kMicrosecond);

// What opening a key costs when a handle has all of the registry in memory already.
void OpenBelowAnOpenRoot(benchmark::State& state) {
  Subtree subtree(Keys(state));
  const Handle root(subtree.operator->(), "");
  for (auto _ : state) {
    const Handle below(subtree.operator->(), kKey);
    benchmark::DoNotOptimize(static_cast<unsigned int>(below));
  }
  CountKeys(state);
}
BENCHMARK(OpenBelowAnOpenRoot)->Arg(100)->Arg(4000)->Unit(benchmark::kMicrosecond);

void OpenMany(Registry* registry, unsigned int count, std::vector<unsigned int>* handles) {
  handles->resize(count);
  for (unsigned int& handle : *handles) Check(registry->OpenKey(kKey, &handle), "OpenKey");
}

// The operation without a handle that closes them all.
void DropHandles(benchmark::State& state) {
  Subtree subtree(100);
  std::vector<unsigned int> handles;
  for (auto _ : state) {
    state.PauseTiming();
    OpenMany(subtree.operator->(), Keys(state), &handles);
    state.ResumeTiming();
    unsigned char permission = 0;
    Check(subtree->GetKeyPermission(0, kKey, &permission), "GetKeyPermission");
  }
}
BENCHMARK(DropHandles)->Arg(1000)->Arg(20000)->Arg(60000)->Unit(benchmark::kMillisecond);

void CloseInOpeningOrder(benchmark::State& state) {
  Subtree subtree(100);
  std::vector<unsigned int> handles;
  for (auto _ : state) {
    state.PauseTiming();
    OpenMany(subtree.operator->(), Keys(state), &handles);
    state.ResumeTiming();
    for (unsigned int handle : handles) Check(subtree->CloseKey(handle), "CloseKey");
  }
}
BENCHMARK(CloseInOpeningOrder)->Arg(1000)->Arg(20000)->Unit(benchmark::kMillisecond);

// A handle on every level of a path.
void DropHandlesOfEveryLevel(benchmark::State& state) {
  Subtree subtree(0);
  std::string path = kKey;
  std::vector<std::string> paths;
  for (unsigned int level = 0; level < Keys(state); ++level) {
    path += "/d";
    Check(subtree->CreateKey(0, path.c_str()), "CreateKey");
    paths.push_back(path);
  }
  for (auto _ : state) {
    state.PauseTiming();
    for (const std::string& each : paths) {
      unsigned int handle = 0;
      Check(subtree->OpenKey(each.c_str(), &handle), "OpenKey");
    }
    state.ResumeTiming();
    unsigned char permission = 0;
    Check(subtree->GetKeyPermission(0, kKey, &permission), "GetKeyPermission");
  }
}
BENCHMARK(DropHandlesOfEveryLevel)->Arg(400)->Arg(4000)->Unit(benchmark::kMillisecond);

void HandleList(benchmark::State& state) {
  Subtree subtree(Keys(state));
  const Handle handle(subtree.operator->(), kKey);
  for (auto _ : state) {
    NameList names(Keys(state));
    Check(subtree->ListKeys(handle, "", 0, 0, &names, 0), "ListKeys");
    benchmark::DoNotOptimize(names.Count());
  }
  CountKeys(state);
}
BENCHMARK(HandleList)->Arg(20)->Arg(100)->Arg(4000)->Unit(benchmark::kMicrosecond);

void HandleCount(benchmark::State& state) {
  Subtree subtree(Keys(state));
  const Handle handle(subtree.operator->(), kKey);
  for (auto _ : state) {
    KeyInfo info = KeyInfo();
    Check(subtree->GetKeyInfo(handle, "", &info), "GetKeyInfo");
    benchmark::DoNotOptimize(info.totalKeyCount);
  }
  CountKeys(state);
}
BENCHMARK(HandleCount)->Arg(20)->Arg(100)->Arg(4000)->Unit(benchmark::kMicrosecond);

}  // namespace
