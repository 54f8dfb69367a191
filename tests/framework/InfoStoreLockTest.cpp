// The lock of an information store.
#include "framework/YAXStatus.h"
#include "framework/internal/CYAXIMMutex.h"
#include "tests/framework/InfoStoreRig.h"
#include "tests/registry/ManyThreads.h"

namespace {

template <class Store>
class InfoStoreLock : public InfoStoreTest<Store> {};
TYPED_TEST_SUITE(InfoStoreLock, BothStores, StoreNames);

TYPED_TEST(InfoStoreLock, EveryWayOutGivesTheLockBack) {
  PCMutex& lock = *CYAXIMMutex::mspMutex;
  Components components(2);
  components[1].pGuid = nullptr;
  YAX_SYSTEM_INFO_ST system = SystemOf(1, "");
  YAX_COMPONENT_INFO_ST info = Player();
  YAX_COMPONENT_TYPE_ENUM type = YAX_COMPONENT_TYPE_FUNCTION;
  void* function = nullptr;
  char binary[kYAXTextSize] = "";
  YAXInfoManager& manager = this->store;
  for (bool null : {true, false, false}) {
    manager.GetSystemInfo(null ? nullptr : &system);
    EXPECT_FALSE(lock.IsMine());
    manager.SetSystemInfo(null ? nullptr : &system);
    EXPECT_FALSE(lock.IsMine());
    manager.IsSysSingleBinary();
    EXPECT_FALSE(lock.IsMine());
    manager.SetComponentInfo(kClsid, null ? nullptr : &info);
    EXPECT_FALSE(lock.IsMine());
    manager.RegisterComponent(kClsid, null ? nullptr : &info);
    EXPECT_FALSE(lock.IsMine());
    manager.RegisterAllComponent(null ? nullptr : components.Array());
    EXPECT_FALSE(lock.IsMine());
    manager.GetComponentInfo(kClsid, null ? nullptr : &info);
    EXPECT_FALSE(lock.IsMine());
    manager.GetComponentType(kClsid, null ? nullptr : &type);
    EXPECT_FALSE(lock.IsMine());
    manager.GetComponentEntryFunc(kClsid, null ? nullptr : &function);
    EXPECT_FALSE(lock.IsMine());
    manager.GetComponentBinPath(kClsid, null ? nullptr : binary);
    EXPECT_FALSE(lock.IsMine());
    manager.UnregisterComponent(null ? GuidOf(99) : kClsid);
    EXPECT_FALSE(lock.IsMine());
  }
}

TYPED_TEST(InfoStoreLock, AThreadThatHoldsTheLockUsesTheStoreAndOthersWait) {
  tamu::registry::Watchdog watchdog("the lock of an information store");
  YAX_SYSTEM_INFO_ST system = SystemOf(1, "/lib");
  PCMutex& lock = *CYAXIMMutex::mspMutex;
  lock.Take();
  ASSERT_EQ(yax_framework::kOk, this->store.SetSystemInfo(&system));
  std::atomic<bool> begins{false}, isOver{false};
  std::thread other([&] {
    begins = true;
    EXPECT_EQ(0u, this->store.IsSysSingleBinary()) << "what was set last";
    isOver = true;
  });
  while (!begins) std::this_thread::yield();
  for (int i = 0; i < 50; ++i) {
    EXPECT_EQ(yax_framework::kOk, this->store.GetSystemInfo(&system));
    EXPECT_FALSE(isOver) << "it did not wait";
  }
  system.isSingleBin = 0;
  EXPECT_EQ(yax_framework::kOk, this->store.SetSystemInfo(&system));
  lock.Give();
  other.join();
}

}  // namespace
