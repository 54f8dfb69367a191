// What the component framework's operations cost with 10, 100 and 500 components registered.
#include <benchmark/benchmark.h>

#include <cstring>
#include <string>
#include <vector>

#include "bench/BenchFile.h"
#include "examples/components/IThermometer.h"
#include "framework/YAX.h"

namespace {

using tamu::registry::BenchFile;

// Ends the program unless the status is 0.
void CheckFramework(unsigned int status, const char* what) {
  if (status == yax_framework::kOk) return;
  std::fprintf(stderr, "%s: %s (%X)\n", what, YAXStatusText(status), status);
  std::exit(1);
}

// A framework on a file of its own with so many components registered, the thermometer among them.
class BenchFramework {
 public:
  explicit BenchFramework(const benchmark::State& state) : file_(".rce") {
    CheckFramework(CreateYAX(file_.path()), "CreateYAX");
    yax_ = View<IYAX>(IID_IYAX);
    loader_ = View<IYAXDynamicLoad>(IID_IYAXDynamicLoad);
    manager_ = View<IYAXInfoManager>(IID_IYAXInfoManager);
    registry_ = View<IYAXRegistry>(IID_IYAXRegistry);
    Register(static_cast<unsigned int>(state.range(0)));
  }
  ~BenchFramework() {
    yax_->Release();
    loader_->Release();
    manager_->Release();
    registry_->Release();
    DestroyYAX();
  }
  BenchFramework(const BenchFramework&) = delete;
  BenchFramework& operator=(const BenchFramework&) = delete;

  IYAX& yax() { return *yax_; }
  IYAXDynamicLoad& loader() { return *loader_; }
  IYAXInfoManager& manager() { return *manager_; }
  // Keeps what is registered in memory from now on.
  void KeepLoaded() {
    unsigned int handle = 0;
    CheckFramework(registry_->OpenKey("YAX_ROOT", &handle, 0), "OpenKey");
  }

 private:
  template <class Interface>
  static Interface* View(const YAX_GUID_ST& iid) {
    void* view = nullptr;
    CheckFramework(GetYAXInstance(iid, &view), "GetYAXInstance");
    return static_cast<Interface*>(view);
  }
  void Register(unsigned int count) {
    YAX_COMPONENT_INFO_ST info = {};
    info.Type = YAX_COMPONENT_TYPE_BINARY;
    std::strcpy(info.CompName, "component");
    std::strncpy(info.BinaryPath, YAX_BENCH_COMPONENT, sizeof info.BinaryPath - 1);
    std::vector<YAX_GUID_ST> guids(count);
    std::vector<YAX_COMPONENT_INFO_ST> infos(count, info);
    std::vector<YAX_COMPONENT_INFO_ST*> all;
    for (unsigned int i = 0; i < count; ++i) {
      guids[i] = CLSID_Thermometer;
      guids[i].Data1 += i * 0x9E3779B9;
      infos[i].pGuid = &guids[i];
      all.push_back(&infos[i]);
    }
    all.push_back(nullptr);
    CheckFramework(manager_->RegisterAllComponent(all.data()), "RegisterAllComponent");
  }

  BenchFile file_;
  IYAX* yax_ = nullptr;
  IYAXDynamicLoad* loader_ = nullptr;
  IYAXInfoManager* manager_ = nullptr;
  IYAXRegistry* registry_ = nullptr;
};

void GetInfo(BenchFramework& framework) {
  YAX_COMPONENT_INFO_ST info;
  CheckFramework(framework.manager().GetComponentInfo(CLSID_Thermometer, &info),
                 "GetComponentInfo");
  benchmark::DoNotOptimize(info);
}

void GetComponentInfo(benchmark::State& state) {
  BenchFramework framework(state);
  for (auto _ : state) GetInfo(framework);
}

// The same while a client has a handle on the components' key.
void GetComponentInfoKeptLoaded(benchmark::State& state) {
  BenchFramework framework(state);
  framework.KeepLoaded();
  for (auto _ : state) GetInfo(framework);
}

void GetInstance(BenchFramework& framework) {
  void* made = nullptr;
  CheckFramework(framework.yax().GetComponentInstance(CLSID_Thermometer, IID_IThermometer, &made),
                 "GetComponentInstance");
  static_cast<IThermometer*>(made)->Release();
}

void GetComponentInstance(benchmark::State& state) {
  BenchFramework framework(state);
  for (auto _ : state) GetInstance(framework);
  CheckFramework(framework.loader().UnloadComponent(CLSID_Thermometer), "UnloadComponent");
}

void GetComponentInstanceKeptLoaded(benchmark::State& state) {
  BenchFramework framework(state);
  framework.KeepLoaded();
  for (auto _ : state) GetInstance(framework);
  CheckFramework(framework.loader().UnloadComponent(CLSID_Thermometer), "UnloadComponent");
}

void LoadLoaded(benchmark::State& state) {
  BenchFramework framework(state);
  void* handle = nullptr;
  for (auto _ : state) {
    CheckFramework(framework.loader().LoadComponent(CLSID_Thermometer, &handle), "LoadComponent");
    benchmark::DoNotOptimize(handle);
  }
  CheckFramework(framework.loader().UnloadComponent(CLSID_Thermometer), "UnloadComponent");
}

void LoadAndUnload(benchmark::State& state) {
  BenchFramework framework(state);
  void* handle = nullptr;
  for (auto _ : state) {
    CheckFramework(framework.loader().LoadComponent(CLSID_Thermometer, &handle), "LoadComponent");
    CheckFramework(framework.loader().UnloadComponent(CLSID_Thermometer), "UnloadComponent");
  }
}

void SomeSizes(benchmark::internal::Benchmark* benchmark) {
  benchmark->Arg(10)->Arg(100)->Arg(500)->Unit(benchmark::kMicrosecond);
}

BENCHMARK(GetComponentInfo)->Apply(SomeSizes);
BENCHMARK(GetComponentInfoKeptLoaded)->Apply(SomeSizes);
BENCHMARK(GetComponentInstance)->Apply(SomeSizes);
BENCHMARK(GetComponentInstanceKeptLoaded)->Apply(SomeSizes);
BENCHMARK(LoadLoaded)->Apply(SomeSizes);
BENCHMARK(LoadAndUnload)->Apply(SomeSizes);

}  // namespace
