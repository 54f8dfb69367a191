// How the operations on components call each other.
#include <gtest/gtest.h>

#include <cstring>

#include "framework/YAX.h"
#include "framework/internal/CYAX.h"
#include "tests/framework/ComponentFiles.h"
#include "tests/framework/PrintedMessages.h"
#include "tests/platform/TestFiles.h"

namespace {

constexpr YAX_GUID_ST kOwn = ClsidOf(1);
constexpr YAX_GUID_ST kStatic = ClsidOf(2);
constexpr YAX_GUID_ST kUnknown = ClsidOf(3);

// Takes a hand in the framework's calls to itself.
class WatchedYAX : public CYAX {
 public:
  unsigned int LoadComponent(const YAX_GUID_ST& clsid, void** handle) override {
    ++loads;
    handleBefore = *handle;
    if (loadFailure != 0) return loadFailure;
    const unsigned int result = CYAX::LoadComponent(clsid, handle);
    // Another thread could be as quick.
    if (unloads > 0) {
      --unloads;
      EXPECT_EQ(UnloadComponent(clsid), 0u);
      if (unregisters) UnregisterComponent(clsid);
    }
    return result;
  }
  unsigned int GetComponentFactory(const YAX_GUID_ST& clsid, void** factory) override {
    ++factories;
    factoryBefore = *factory;
    if (givesNone) return 0;
    const unsigned int result = CYAX::GetComponentFactory(clsid, factory);
    if (unloadsAfter) unloadResult = UnloadComponent(clsid);  // as above
    return result;
  }

  unsigned int loads = 0;
  unsigned int loadFailure = 0;
  unsigned int unloads = 0;  // how many of the next loads are undone
  bool unregisters = false;
  unsigned int factories = 0;
  bool givesNone = false;
  bool unloadsAfter = false;  // tries to, when there is a factory
  unsigned int unloadResult = 0;
  void* handleBefore = this;
  void* factoryBefore = this;
};

class ComponentCalls : public ::testing::Test {
 protected:
  ComponentCalls() {
    EXPECT_EQ(yax_->Initialize((folder_ / "registry").c_str()), 0u);
    YAX_COMPONENT_INFO_ST info = {};
    info.Type = YAX_COMPONENT_TYPE_BINARY;
    info.FactoryFn = Give;
    std::strncpy(info.BinaryPath, ComponentFile("sound").c_str(), sizeof info.BinaryPath - 1);
    EXPECT_EQ(yax_->RegisterComponent(kOwn, &info), 0u);
    const std::string file = ComponentFile("static_factory");
    std::strncpy(info.BinaryPath, file.c_str(), sizeof info.BinaryPath - 1);
    EXPECT_EQ(yax_->RegisterComponent(kStatic, &info), 0u);
  }
  ~ComponentCalls() override { yax_->Release(); }

  static unsigned int Give(const YAX_GUID_ST&, const YAX_GUID_ST&, void**) { return 0; }
  static void Drop(void* object) { static_cast<IYAXCompBase*>(object)->Release(); }

  FreshComponents fresh_;
  TempDir folder_;
  WatchedYAX* const yax_ = new WatchedYAX;  // its reference is the test's
};

TEST_F(ComponentCalls, AnAddressIsThatOfTheSymbolOrOfTheRegisteredFunction) {
  void* handle = nullptr;
  ASSERT_EQ(yax_->LoadComponent(kOwn, &handle), 0u);
  void* address = nullptr;
  EXPECT_EQ(yax_->GetFuncAddress(kOwn, handle, "EntryFn_canUnloadNow", &address), 0u);
  EXPECT_EQ(address, dlsym(handle, "EntryFn_canUnloadNow"));
  EXPECT_EQ(yax_->GetFuncAddress(kUnknown, handle, "EntryFn_getFactory", &address), 0u);
  EXPECT_EQ(address, dlsym(handle, "EntryFn_getFactory")) << "the handle's";
  EXPECT_EQ(yax_->GetFuncAddress(kOwn, handle, "nothing", &address), 0xE000000Fu);
  EXPECT_EQ(address, nullptr);
  for (const char* symbol : {"nothing", static_cast<const char*>(nullptr)}) {
    EXPECT_EQ(yax_->GetFuncAddress(kOwn, nullptr, symbol, &address), 0u);
    EXPECT_EQ(address, reinterpret_cast<void*>(Give));
  }
  EXPECT_EQ(yax_->GetFuncAddress(kUnknown, nullptr, "EntryFn_getFactory", &address), 0xE000000Du);
}

TEST_F(ComponentCalls, AFactoryIsAskedForAfterLoading) {
  void* out = nullptr;
  ASSERT_EQ(yax_->GetComponentFactory(kOwn, &out), 0u);
  Drop(out);
  EXPECT_EQ(yax_->loads, 1u);
  EXPECT_EQ(yax_->handleBefore, nullptr);
}

TEST_F(ComponentCalls, AFailureToLoadIsHandedOn) {
  PrintedMessages printed;
  yax_->loadFailure = 0x1234;
  void* out = this;
  EXPECT_EQ(yax_->CYAX::GetComponentFactory(kOwn, &out), 0x1234u);
  EXPECT_EQ(out, this);
  EXPECT_EQ(yax_->loads, 1u);
  EXPECT_EQ(printed.Take(),
            "3 [CYAX::GetComponentFactory] Error while getting loading component...\n");
}

TEST_F(ComponentCalls, ObjectsAndLocksAreAskedOfTheFactory) {
  void* out = this;
  ASSERT_EQ(yax_->GetComponentInstance(kOwn, IID_IYAXCompBase, &out), 0u);
  EXPECT_EQ(yax_->factories, 1u);
  EXPECT_EQ(yax_->factoryBefore, nullptr);
  Drop(out);
  EXPECT_EQ(yax_->LockComponent(kOwn, 1), 0u);
  EXPECT_EQ(yax_->factories, 2u);
  EXPECT_EQ(yax_->factoryBefore, nullptr);
  EXPECT_EQ(yax_->LockComponent(kOwn, 0), 0u);
  yax_->givesNone = true;
  out = this;
  EXPECT_EQ(yax_->GetComponentInstance(kOwn, IID_IYAXCompBase, &out), 0xE0000010u);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(yax_->LockComponent(kOwn, 1), 0xE0000010u);
}

TEST_F(ComponentCalls, WhatIsUnloadedBeforeItIsAskedIsLoadedAgain) {
  PrintedMessages printed;
  yax_->unloads = 1;
  void* out = nullptr;
  ASSERT_EQ(yax_->GetComponentFactory(kOwn, &out), 0u);
  ASSERT_NE(out, nullptr);
  EXPECT_EQ(yax_->loads, 2u);
  EXPECT_EQ(yax_->handleBefore, nullptr);
  EXPECT_EQ(Notes().opened, 2u);
  EXPECT_EQ(Notes().closed, 1u);
  EXPECT_EQ(printed.Take(), "");
  Drop(out);
}

TEST_F(ComponentCalls, WhatCannotBeLoadedAgainIsAFailureToLoad) {
  PrintedMessages printed;
  yax_->unloads = 1;
  yax_->unregisters = true;
  void* out = this;
  EXPECT_EQ(yax_->GetComponentFactory(kOwn, &out), 0xE000000Du);
  EXPECT_EQ(out, this);
  EXPECT_EQ(yax_->loads, 2u);
  EXPECT_EQ(printed.Take(),
            "3 [CYAX::GetComponentFactory] Error while getting loading component...\n");
}

// ---- between the factory and what it is asked for

TEST_F(ComponentCalls, AnObjectIsMadeByAFactoryThatNobodyCountsWhileAnotherUnloads) {
  yax_->unloadsAfter = true;
  void* out = nullptr;
  ASSERT_EQ(yax_->GetComponentInstance(kStatic, IID_IYAXCompBase, &out), 0u);
  EXPECT_EQ(yax_->unloadResult, 0xE000000Bu);
  EXPECT_EQ(Notes().factoryReleases, 1u);
  EXPECT_EQ(Notes().closed, 0u);
  Drop(out);
  EXPECT_EQ(yax_->UnloadComponent(kStatic), 0u);
  EXPECT_FALSE(IsMapped(ComponentFile("static_factory")));
}

TEST_F(ComponentCalls, ALockIsTakenByAFactoryThatNobodyCountsWhileAnotherUnloads) {
  yax_->unloadsAfter = true;
  ASSERT_EQ(yax_->LockComponent(kStatic, 1), 0u);
  EXPECT_EQ(yax_->unloadResult, 0xE000000Bu);
  EXPECT_EQ(yax_->UnloadComponent(kStatic), 0xE000000Bu) << "it is locked";
  ASSERT_EQ(yax_->LockComponent(kStatic, 0), 0u);
  EXPECT_EQ(yax_->UnloadComponent(kStatic), 0u);
  EXPECT_FALSE(IsMapped(ComponentFile("static_factory")));
}

// What a client is given as a factory does not keep anything open.
TEST_F(ComponentCalls, AFactoryThatNobodyCountsKeepsNothingOpenForAClient) {
  yax_->unloadsAfter = true;
  void* out = nullptr;
  ASSERT_EQ(yax_->GetComponentFactory(kStatic, &out), 0u);
  EXPECT_EQ(yax_->unloadResult, 0u);
  EXPECT_EQ(Notes().closed, 1u);
  yax_->unloadsAfter = false;
  ASSERT_EQ(yax_->GetComponentInstance(kStatic, IID_IYAXCompBase, &out), 0u) << "loaded anew";
  Drop(out);
}

}  // namespace
