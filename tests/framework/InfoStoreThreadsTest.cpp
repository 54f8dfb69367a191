// Information stores beside threads that use the registry in their own way.
#include <unistd.h>

#include "framework/YAX.h"
#include "framework/YAXStatus.h"
#include "tests/framework/InfoStoreRig.h"
#include "tests/platform/ChildProcess.h"
#include "tests/registry/ManyThreads.h"

namespace {

using tamu::registry::OnThreads;
using tamu::registry::Watchdog;

// A framework, and its registry and information store as clients see them.
class FrameworkThreads : public ::testing::Test {
 protected:
  FrameworkThreads() {
    EXPECT_EQ(yax_framework::kOk, CreateYAX(path.c_str()));
    void* view = nullptr;
    EXPECT_EQ(yax_framework::kOk, GetYAXInstance(IID_IYAXRegistry, &view));
    registry = static_cast<IYAXRegistry*>(view);
    EXPECT_EQ(yax_framework::kOk, GetYAXInstance(IID_IYAXInfoManager, &view));
    manager = static_cast<IYAXInfoManager*>(view);
    EXPECT_EQ(0u, registry->CreateKey(0, "app"));
    EXPECT_EQ(0u, registry->CreateValue(0, "app", "text", YAX_REG_DATA_TYPE_STRING, "mine"));
  }
  ~FrameworkThreads() override {
    registry->Release();
    manager->Release();
    DestroyYAX();
    EXPECT_EQ("", StructureFindings(path));
  }

  // What a thread without handles does; counts what it did not expect.
  unsigned int ReadWithoutHandle() {
    unsigned int surprises = 0;
    char text[16] = "";
    unsigned int size = sizeof text, n[5] = {};
    if (registry->GetValue(0, "app", "text", YAX_REG_DATA_TYPE_STRING, text, &size) != 0 ||
        std::string(text) != "mine") {
      ++surprises;
    }
    if (registry->GetKeyInfo(0, "app", &n[0], &n[1], &n[2], &n[3], &n[4]) != 0) ++surprises;
    return surprises;
  }

  TempDir folder;
  const std::string path = folder / "registry";
  IYAXRegistry* registry = nullptr;
  IYAXInfoManager* manager = nullptr;
  Watchdog watchdog{"information stores on many threads"};
};

// Every operation of the reader would close the handles of the one that registers.
TEST_F(FrameworkThreads, OneRegistersWhileAnotherReadsWithoutHandles) {
  constexpr unsigned int kCount = 60;
  Components components(kCount);
  std::atomic<unsigned int> surprises{0};
  std::atomic<bool> isOver{false};
  OnThreads(2, [&](unsigned int thread) {
    if (thread == 0) {
      for (unsigned int i = 0; i < kCount / 2; ++i) {
        if (manager->RegisterComponent(GuidOf(i + 1), &components[i]) != 0) ++surprises;
      }
      if (manager->RegisterAllComponent(components.Array() + kCount / 2) != 0) ++surprises;
      isOver = true;
      return;
    }
    while (!isOver) surprises += ReadWithoutHandle();
  });
  EXPECT_EQ(0u, surprises);
  EXPECT_EQ("", StructureFindings(path));
  const std::map<std::string, DecodedKey> tree = DecodeTree(path);
  EXPECT_EQ(tree.size(), 1u + 1 + 1 + kCount);
  EXPECT_EQ(1u, tree.at("app").values.size()) << "nothing was written to another's key";
  for (unsigned int i = 0; i < kCount; ++i) {
    const DecodedKey& key = tree.at(KeyOf(GuidOf(i + 1)));
    ASSERT_EQ(4u, key.values.size());
    EXPECT_EQ(key.values[3].bytes, FieldOf(components[i].CompName));
  }
}

TEST_F(FrameworkThreads, AllOperationsOfTheStoreAtOnce) {
  std::atomic<unsigned int> surprises{0};
  OnThreads(4, [&](unsigned int thread) {
    const auto count = [&](unsigned int result) {
      if (result != 0) ++surprises;
    };
    for (unsigned int round = 0; round < 15; ++round) {
      if (thread == 3) {
        surprises += ReadWithoutHandle();
        continue;
      }
      const YAX_GUID_ST guid = GuidOf(1 + thread);
      YAX_COMPONENT_INFO_ST info = ComponentOf("c", 1, 16 * (1 + thread), "lib.so");
      YAX_SYSTEM_INFO_ST system = SystemOf(thread, "/lib");
      count(manager->RegisterComponent(guid, &info));
      FillField(info.CompName, std::to_string(round));
      count(manager->SetComponentInfo(guid, &info));
      YAX_COMPONENT_INFO_ST read = {};
      count(manager->GetComponentInfo(guid, &read));
      if (std::string(read.CompName) != info.CompName || read.FactoryFn != info.FactoryFn) {
        ++surprises;
      }
      count(manager->SetSystemInfo(&system));
      count(manager->GetSystemInfo(&system));
      count(manager->UnregisterComponent(guid));
    }
  });
  EXPECT_EQ(0u, surprises);
  EXPECT_EQ(DecodeTree(path).size(), 1u + 1 + 2) << "the root, app, and the two top keys";
}

// A store has a lock of its own, also when a newer one comes and goes.
TEST(InfoStoreThreads, AStoreWorksWhileNewerOnesComeAndGo) {
  TempDir folder;
  const std::string path = folder / "registry";
  tamu::registry::Registry registry(path.c_str(), "adminstrator");
  ASSERT_EQ(0u, registry.Initialize());
  YAXInfoManagerRCEMemory store(&registry);
  YAX_SYSTEM_INFO_ST first = SystemOf(1, "/lib");
  ASSERT_EQ(yax_framework::kOk, store.SetSystemInfo(&first));
  Watchdog watchdog("stores that come and go");
  std::atomic<unsigned int> surprises{0};
  OnThreads(3, [&](unsigned int thread) {
    for (unsigned int round = 0; round < 60; ++round) {
      YAX_SYSTEM_INFO_ST info = {};
      if (thread == 0) {
        YAXInfoManagerRCEMemory newer(&registry);
        if (newer.IsSysSingleBinary() != 1) ++surprises;
      } else if (store.GetSystemInfo(&info) != 0 || info.isSingleBin != 1) {
        ++surprises;
      }
    }
  });
  EXPECT_EQ(0u, surprises);
  EXPECT_EQ("", StructureFindings(path));
}

// The store that works without handles beside one that uses them.
TEST(InfoStoreThreads, BothKindsOfStoresWorkAtOnce) {
  TempDir folder;
  const std::string path = folder / "registry";
  tamu::registry::Registry registry(path.c_str(), "adminstrator");
  ASSERT_EQ(0u, registry.Initialize());
  YAXInfoManagerRCEMemory memory(&registry);
  YAXInfoManagerRCEFile file(&registry);
  Components components(40);
  Watchdog watchdog("stores of both kinds");
  std::atomic<unsigned int> surprises{0};
  OnThreads(2, [&](unsigned int thread) {
    YAXInfoManager& store = thread == 0 ? static_cast<YAXInfoManager&>(memory) : file;
    for (unsigned int i = thread; i < 40; i += 2) {
      if (store.RegisterComponent(GuidOf(i + 1), &components[i]) != 0) ++surprises;
    }
  });
  EXPECT_EQ(0u, surprises);
  EXPECT_EQ("", StructureFindings(path));
  EXPECT_EQ(DecodeTree(path).size(), 2u + 40);
}

// Registering anew what was unregistered keeps a level of the registry's lock with the thread.
// Other threads then wait for ever, and live and end in a process of their own.
TEST(InfoStoreThreads, AThreadThatKeepsTheRegistryGoesOnWhileOthersWaitInTheStore) {
  TempDir folder;
  const std::string path = folder / "registry";
  EXPECT_TRUE(InChild([&path]() -> bool {
    alarm(20);  // ends the process
    auto* registry = new tamu::registry::Registry(path.c_str(), "adminstrator");
    if (registry->Initialize() != 0) return false;
    auto* store = new YAXInfoManagerRCEFile(registry);
    YAX_COMPONENT_INFO_ST info = Player();
    bool goesOn = store->RegisterComponent(kClsid, &info) == 0 &&
                  store->UnregisterComponent(kClsid) == 0 &&
                  store->RegisterComponent(kClsid, &info) == 0;
    std::atomic<bool> begins{false}, answered{false};
    std::thread([store, &begins, &answered] {
      begins = true;
      YAX_COMPONENT_TYPE_ENUM type = YAX_COMPONENT_TYPE_FUNCTION;
      store->GetComponentType(kClsid, &type);
      answered = true;
    }).detach();
    while (!begins) std::this_thread::yield();
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    goesOn = goesOn && store->GetComponentInfo(kClsid, &info) == 0 &&
             store->SetComponentInfo(kClsid, &info) == 0;
    _exit(goesOn && !answered ? 0 : 1);
  }));
}

}  // namespace
