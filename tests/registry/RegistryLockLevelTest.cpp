// A key that ends inside a longer name leaves one level of the file tree's lock with its thread.
// The threads that wait for it then wait for ever: they live and end in processes of their own.
#include <atomic>
#include <chrono>
#include <thread>

#include "registry/Registry.h"
#include "tests/platform/ChildProcess.h"
#include "tests/platform/TestFiles.h"

namespace tamu::registry {

namespace {

// True once `flag` is set; false when it is not after long enough.
bool ComesTrue(const std::atomic<bool>& flag) {
  for (int i = 0; i < 1000 && !flag; ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  return flag;
}

// Runs `operation` on a thread of its own that nobody waits for.
template <class Operation>
void RunApart(std::atomic<bool>& done, Operation operation) {
  std::atomic<bool> started{false};
  std::thread([&done, &started, operation] {
    started = true;
    operation();
    done = true;
  }).detach();
  while (!started) std::this_thread::yield();
}

// A registry whose calling thread keeps a level; null when it cannot be made. It is never
// destroyed.
Registry* RegistryWithKeptLevel(const std::string& path) {
  Registry* registry = new Registry(path.c_str(), 65535u);
  const bool made = registry->Initialize() == 0 && registry->CreateKey(0, "abc") == 0 &&
                    registry->CreateKey(0, "ab") == 0;
  return made ? registry : nullptr;
}

// Runs the test in a child process whose thread keeps a level of a registry's lock.
template <class Test>
bool InChildWithKeptLevel(Test test) {
  TempDir dir;
  const std::string path = dir / "a.rce";
  return InChild([&] {
    Registry* registry = RegistryWithKeptLevel(path);
    return registry != nullptr && test(registry);
  });
}

TEST(RegistryLockLevel, ThreadsWithoutHandleWaitForTheOneThatKeepsALevel) {
  EXPECT_TRUE(InChildWithKeptLevel([](Registry* registry) -> bool {
    std::atomic<bool> answered{false};
    RunApart(answered, [registry] { registry->CreateKey(0, "other"); });
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    _exit(answered ? 1 : 0);
  }));
}

TEST(RegistryLockLevel, TheThreadThatKeepsALevelGoesOn) {
  EXPECT_TRUE(InChildWithKeptLevel([](Registry* registry) -> bool {
    std::atomic<bool> answered{false};
    RunApart(answered, [registry] { registry->CreateKey(0, "other"); });
    unsigned long long number = 0;
    const bool goesOn = registry->CreateKey(0, "xy", 7) == 0 &&
                        registry->GetDefaultValue(0, "xy", &number) == 0 && number == 7 &&
                        registry->CreateKey(0, "a") == 0;
    _exit(goesOn ? 0 : 1);
  }));
}

// Also while a thread without handle waits: it must not hold what the others need. What the calls
// answer does not matter here.
TEST(RegistryLockLevel, CallsThroughHandlesAreAnsweredAllTheSame) {
  EXPECT_TRUE(InChildWithKeptLevel([](Registry* registry) -> bool {
    std::atomic<bool> waiting{false};
    RunApart(waiting, [registry] { registry->CreateKey(0, "other"); });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    std::atomic<bool> answered{false};
    RunApart(answered, [registry] {
      unsigned int handle = 0;
      registry->OpenKey("", &handle);
      unsigned long long number = 0;
      registry->GetDefaultValue(handle != 0 ? handle : 77, "", &number);
      registry->CloseKey(handle != 0 ? handle : 77);
    });
    _exit(ComesTrue(answered) ? 0 : 1);
  }));
}

// Changes everything there is to change through a handle on the root. True when all is done.
bool ChangeThroughHandles(Registry& registry, const char* key) {
  unsigned int root = 0;
  Value text = TextValue("text"), longer = TextValue("a longer text");
  unsigned long long number = 0;
  return registry.OpenKey("", &root) == 0 && registry.CreateKey(root, key, 7) == 0 &&
         registry.CreateValue(root, key, "text", &text) == 0 &&
         registry.SetValue(root, key, "text", &longer) == 0 &&
         registry.DeleteValue(root, key, "text") == 0 &&
         registry.SetDefaultValue(root, key, 8) == 0 &&
         registry.GetDefaultValue(root, key, &number) == 0 && number == 8 &&
         registry.SetKeyPermission(root, key, 0xFF) == 0 &&
         registry.SetKeyWatch(root, key, 3) == 0 && registry.DeleteKey(root, key) == 0 &&
         registry.CloseKey(root) == 0;
}

// The thread without a handle waits from before these begin until after they have ended.
TEST(RegistryLockLevel, ChangesThroughHandlesAreDoneWhileOthersWait) {
  EXPECT_TRUE(InChildWithKeptLevel([](Registry* registry) -> bool {
    std::atomic<bool> waiting{false};
    RunApart(waiting, [registry] { registry->CreateKey(0, "other"); });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    std::atomic<bool> answered{false};
    std::atomic<bool> allDone{false};
    RunApart(answered,
             [registry, &allDone] { allDone = ChangeThroughHandles(*registry, "of-another"); });
    const bool doneHere = ChangeThroughHandles(*registry, "of-its-own");
    const bool doneThere = ComesTrue(answered) && allDone;
    _exit(doneHere && doneThere && !waiting ? 0 : 1);
  }));
}

TEST(RegistryLockLevel, ARegistryClosesWithALevelKept) {
  TempDir dir;
  const std::string path = dir / "a.rce";
  {
    Registry registry(path.c_str(), 65535u);
    ASSERT_EQ(status::kOk, registry.Initialize());
    ASSERT_EQ(status::kOk, registry.CreateKey(0, "abc"));
    ASSERT_EQ(status::kOk, registry.CreateKey(0, "ab"));
    registry.Finalize();
    ASSERT_EQ(status::kOk, registry.Initialize());
    ASSERT_EQ(status::kOk, registry.CreateKey(0, "a"));
  }
  Registry registry(path.c_str(), 65535u);
  ASSERT_EQ(status::kOk, registry.Initialize());
  for (const char* key : {"abc", "ab", "a"}) EXPECT_EQ(status::kExists, registry.CreateKey(0, key));
}

}  // namespace

}  // namespace tamu::registry
