// Threads that load, use and unload components.
#include <chrono>
#include <mutex>

#include "framework/YAXStatus.h"
#include "tests/framework/ComponentRig.h"
#include "tests/registry/ManyThreads.h"

using tamu::registry::OnThreads;
using tamu::registry::Watchdog;

namespace {

constexpr YAX_GUID_ST kOwnClass = ClsidOf(1);
constexpr const char* kFiles[] = {"sound", "second", "third", "fourth"};

class ComponentThreads : public ComponentRig {
 protected:
  void Expect(bool holds) {
    if (!holds) ++surprises_;
  }
  // A component's last reference is never dropped while it may be unloaded: the function that drops
  // it is the component's own, and must have returned.
  void Drop(void* object) {
    const std::lock_guard<std::mutex> guard(drop_);
    Expect(static_cast<IYAXCompBase*>(object)->Release() == 0);
  }
  void Unload(const YAX_GUID_ST& clsid) {
    const std::lock_guard<std::mutex> guard(drop_);
    const unsigned int result = loader_->UnloadComponent(clsid);
    Expect(result == 0 || result == 0xE000000B);
  }
  // The pause lets the others have their turn: what waits for a mutex has no place in a queue.
  void UnloadAndPause(const YAX_GUID_ST& clsid) {
    Unload(clsid);
    std::this_thread::sleep_for(std::chrono::microseconds(50));
  }

  std::mutex drop_;
  std::atomic<unsigned int> surprises_{0};
};

TEST_F(ComponentThreads, OpenTheSameNewFileOnce) {
  const Watchdog watchdog("two threads load the same file");
  Register(kOwnClass, "sound");
  for (unsigned int round = 1; round <= 100; ++round) {
    void* handles[2] = {};
    unsigned int results[2] = {1, 1};
    OnThreads(2,
              [&](unsigned int i) { results[i] = loader_->LoadComponent(kOwnClass, &handles[i]); });
    ASSERT_EQ(0u, results[0]) << round;
    ASSERT_EQ(0u, results[1]) << round;
    ASSERT_NE(nullptr, handles[0]) << round;
    ASSERT_EQ(handles[0], handles[1]) << round;
    ASSERT_EQ(Notes().opened, round);
    ASSERT_EQ(yax_framework::kOk, loader_->UnloadComponent(kOwnClass));
    ASSERT_FALSE(IsMapped(ComponentFile("sound"))) << round << ": opened twice";
  }
  EXPECT_EQ(100u, Notes().closed);
}

TEST_F(ComponentThreads, OpenOneFileForTwoComponents) {
  const Watchdog watchdog("two threads load components of the same file");
  const YAX_GUID_ST clsids[] = {ClsidOf(1), ClsidOf(2)};
  for (const YAX_GUID_ST& clsid : clsids) Register(clsid, "sound");
  for (unsigned int round = 1; round <= 100; ++round) {
    void* handles[2] = {};
    OnThreads(2,
              [&](unsigned int i) { Expect(loader_->LoadComponent(clsids[i], &handles[i]) == 0); });
    ASSERT_EQ(handles[0], handles[1]) << round;
    for (const YAX_GUID_ST& clsid : clsids) Expect(loader_->UnloadComponent(clsid) == 0);
    ASSERT_FALSE(IsMapped(ComponentFile("sound"))) << round << ": neither has a record";
  }
  EXPECT_EQ(0u, surprises_);
}

TEST_F(ComponentThreads, LoadDifferentFilesAtOnce) {
  const Watchdog watchdog("four threads load files of their own");
  for (unsigned int i = 0; i < 4; ++i) Register(ClsidOf(i), kFiles[i]);
  constexpr unsigned int kRounds = 200;
  OnThreads(4, [&](unsigned int i) {
    for (unsigned int round = 0; round < kRounds; ++round) {
      void* handle = nullptr;
      void* again = nullptr;
      void* object = nullptr;
      Expect(loader_->LoadComponent(ClsidOf(i), &handle) == 0 && handle != nullptr);
      Expect(loader_->LoadComponent(ClsidOf(i), &again) == 0 && again == handle);
      Expect(yax_->GetComponentInstance(ClsidOf(i), IID_ITestObject, &object) == 0);
      if (object == nullptr) continue;
      Expect(static_cast<ITestObject*>(object)->Answer() == 42);
      Expect(loader_->UnloadComponent(ClsidOf(i)) == 0xE000000B);
      Expect(static_cast<ITestObject*>(object)->Release() == 0);
      Expect(loader_->UnloadComponent(ClsidOf(i)) == 0);
    }
  });
  EXPECT_EQ(0u, surprises_);
  EXPECT_EQ(Notes().opened, 4 * kRounds);
  EXPECT_EQ(Notes().closed, 4 * kRounds);
}

TEST_F(ComponentThreads, UnloadWhileOthersAskForFactoriesAndObjects) {
  const Watchdog watchdog("a thread unloads what others use");
  Register(kOwnClass, "sound");
  constexpr unsigned int kRounds = 1500;
  std::atomic<unsigned int> users{3};
  OnThreads(4, [&](unsigned int i) {
    if (i == 0) {
      while (users > 0) UnloadAndPause(kOwnClass);
      return;
    }
    for (unsigned int round = 0; round < kRounds; ++round) {
      // Now and then all of them let it be unloaded.
      while (Notes().closed < round / 10) std::this_thread::yield();
      void* factory = nullptr;
      void* object = nullptr;
      if (i != 1) {
        Expect(yax_->GetComponentInstance(kOwnClass, IID_ITestObject, &object) == 0);
      } else {
        Expect(yax_->GetComponentFactory(kOwnClass, &factory) == 0);
      }
      if (factory != nullptr) {
        Expect(static_cast<YAXComponentFactory*>(factory)->CreateObject(IID_ITestObject, &object) ==
               0);
      }
      Expect(object != nullptr && static_cast<ITestObject*>(object)->Answer() == 42);
      for (void* made : {object, factory}) {
        if (made != nullptr) Drop(made);
      }
    }
    --users;
  });
  EXPECT_EQ(0u, surprises_);
  EXPECT_GE(Notes().closed, (kRounds - 1) / 10);
  EXPECT_EQ(Notes().factoriesMade, 3 * kRounds);
  EXPECT_EQ(Notes().factoriesGone, 3 * kRounds);
  EXPECT_EQ(yax_framework::kOk, loader_->UnloadComponent(kOwnClass));
  EXPECT_FALSE(IsMapped(ComponentFile("sound")));
  EXPECT_EQ(Notes().opened, Notes().closed);
}

TEST_F(ComponentThreads, UnloadWhileAnotherLoads) {
  const Watchdog watchdog("a thread unloads what another loads");
  Register(kOwnClass, "sound");
  constexpr unsigned int kRounds = 3000;
  OnThreads(2, [&](unsigned int i) {
    for (unsigned int round = 0; round < kRounds; ++round) {
      void* handle = nullptr;
      if (i == 0) {
        Expect(loader_->LoadComponent(kOwnClass, &handle) == 0 && handle != nullptr);
      } else {
        Unload(kOwnClass);
      }
    }
  });
  EXPECT_EQ(0u, surprises_);
  EXPECT_EQ(yax_framework::kOk, loader_->UnloadComponent(kOwnClass));
  EXPECT_FALSE(IsMapped(ComponentFile("sound"))) << "a reference to the file is lost";
  EXPECT_EQ(Notes().opened, Notes().closed);
}

// Whoever holds a lock can rely on the component.
TEST_F(ComponentThreads, LocksKeepAComponentThatOthersUnload) {
  const Watchdog watchdog("a thread locks what another unloads");
  Register(kOwnClass, "sound");
  std::atomic<bool> isOver{false};
  OnThreads(2, [&](unsigned int i) {
    if (i == 1) {
      while (!isOver) UnloadAndPause(kOwnClass);
      return;
    }
    for (unsigned int round = 0; round < 1000; ++round) {
      Expect(loader_->LockComponent(kOwnClass, 1) == 0);
      void* object = nullptr;
      Expect(yax_->GetComponentInstance(kOwnClass, IID_ITestObject, &object) == 0);
      if (object == nullptr) continue;
      Expect(static_cast<ITestObject*>(object)->Answer() == 42);
      Expect(static_cast<ITestObject*>(object)->Release() == 0);
      const std::lock_guard<std::mutex> guard(drop_);  // as with a last reference
      Expect(loader_->LockComponent(kOwnClass, 0) == 0);
    }
    isOver = true;
  });
  EXPECT_EQ(0u, surprises_);
  EXPECT_EQ(yax_framework::kOk, loader_->UnloadComponent(kOwnClass));
  EXPECT_EQ(Notes().opened, Notes().closed);
}

// Its factory is not counted: nothing of the component is alive until it has made the object.
TEST_F(ComponentThreads, MakeObjectsByAFactoryThatNobodyCountsWhileAnotherUnloads) {
  const Watchdog watchdog("a thread unloads what another makes objects of");
  Register(kOwnClass, "static_factory");
  std::atomic<bool> isOver{false};
  OnThreads(2, [&](unsigned int i) {
    if (i == 1) {
      while (!isOver) UnloadAndPause(kOwnClass);
      return;
    }
    for (unsigned int round = 0; round < 5000; ++round) {
      void* object = nullptr;
      Expect(yax_->GetComponentInstance(kOwnClass, IID_ITestObject, &object) == 0);
      if (object == nullptr) continue;
      Expect(static_cast<ITestObject*>(object)->Answer() == 42);
      Drop(object);
    }
    isOver = true;
  });
  EXPECT_EQ(0u, surprises_);
  EXPECT_EQ(5000u, Notes().factoryReleases);
  EXPECT_EQ(yax_framework::kOk, loader_->UnloadComponent(kOwnClass));
  EXPECT_EQ(Notes().opened, Notes().closed);
}

TEST_F(ComponentThreads, OfAFactoryMayCallTheFrameworkWhenItEnds) {
  const Watchdog watchdog("a factory that ends waits for a thread");
  Register(kOwnClass, "waits_for_thread");
  Register(ClsidOf(2), "sound");
  Notes().other = ClsidOf(2);
  void* object = nullptr;
  ASSERT_EQ(yax_framework::kOk, yax_->GetComponentInstance(kOwnClass, IID_ITestObject, &object));
  EXPECT_EQ(0u, Notes().answers[1]) << "the thread that it waited for";
  EXPECT_EQ(0u, static_cast<ITestObject*>(object)->Release());
  Notes().answers[1] = 1;
  EXPECT_EQ(yax_framework::kOk, loader_->LockComponent(kOwnClass, 1));
  EXPECT_EQ(0u, Notes().answers[1]);
  EXPECT_EQ(4u, Notes().factoriesGone);
  EXPECT_EQ(yax_framework::kOk, loader_->LockComponent(kOwnClass, 0));
  EXPECT_EQ(yax_framework::kOk, loader_->UnloadComponent(kOwnClass));
}

}  // namespace
