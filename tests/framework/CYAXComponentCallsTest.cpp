// How the operations on components call each other.
#include <gtest/gtest.h>

#include <cstring>

#include "framework/YAX.h"
#include "framework/YAXStatus.h"
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
      EXPECT_EQ(yax_framework::kOk, UnloadComponent(clsid));
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

class CYAXComponentCallsTest : public ::testing::Test {
 protected:
  CYAXComponentCallsTest() {
    EXPECT_EQ(0u, yax_->Initialize((folder_ / "registry").c_str()));
    YAX_COMPONENT_INFO_ST info = {};
    info.Type = YAX_COMPONENT_TYPE_BINARY;
    info.FactoryFn = Give;
    std::strncpy(info.BinaryPath, ComponentFile("sound").c_str(), sizeof info.BinaryPath - 1);
    EXPECT_EQ(yax_framework::kOk, yax_->RegisterComponent(kOwn, &info));
    const std::string file = ComponentFile("static_factory");
    std::strncpy(info.BinaryPath, file.c_str(), sizeof info.BinaryPath - 1);
    EXPECT_EQ(yax_framework::kOk, yax_->RegisterComponent(kStatic, &info));
  }
  ~CYAXComponentCallsTest() override { yax_->Release(); }

  static unsigned int Give(const YAX_GUID_ST&, const YAX_GUID_ST&, void**) { return 0; }
  static void Drop(void* object) { static_cast<IYAXCompBase*>(object)->Release(); }

  FreshComponents fresh_;
  TempDir folder_;
  WatchedYAX* const yax_ = new WatchedYAX;  // its reference is the test's
};

TEST_F(CYAXComponentCallsTest, AnAddressIsThatOfTheSymbolOrOfTheRegisteredFunction) {
  void* handle = nullptr;
  ASSERT_EQ(yax_framework::kOk, yax_->LoadComponent(kOwn, &handle));
  void* address = nullptr;
  EXPECT_EQ(yax_framework::kOk,
            yax_->GetFuncAddress(kOwn, handle, "EntryFn_canUnloadNow", &address));
  EXPECT_EQ(address, dlsym(handle, "EntryFn_canUnloadNow"));
  EXPECT_EQ(yax_framework::kOk,
            yax_->GetFuncAddress(kUnknown, handle, "EntryFn_getFactory", &address));
  EXPECT_EQ(address, dlsym(handle, "EntryFn_getFactory")) << "the handle's";
  EXPECT_EQ(yax_framework::kNoEntry, yax_->GetFuncAddress(kOwn, handle, "nothing", &address));
  EXPECT_EQ(nullptr, address);
  for (const char* symbol : {"nothing", static_cast<const char*>(nullptr)}) {
    EXPECT_EQ(yax_framework::kOk, yax_->GetFuncAddress(kOwn, nullptr, symbol, &address));
    EXPECT_EQ(address, reinterpret_cast<void*>(Give));
  }
  EXPECT_EQ(yax_framework::kRegistryFailed,
            yax_->GetFuncAddress(kUnknown, nullptr, "EntryFn_getFactory", &address));
}

TEST_F(CYAXComponentCallsTest, AFactoryIsAskedForAfterLoading) {
  void* out = nullptr;
  ASSERT_EQ(yax_framework::kOk, yax_->GetComponentFactory(kOwn, &out));
  Drop(out);
  EXPECT_EQ(1u, yax_->loads);
  EXPECT_EQ(nullptr, yax_->handleBefore);
}

TEST_F(CYAXComponentCallsTest, AFailureToLoadIsHandedOn) {
  PrintedMessages printed;
  yax_->loadFailure = 0x1234;
  void* out = this;
  EXPECT_EQ(0x1234u, yax_->CYAX::GetComponentFactory(kOwn, &out));
  EXPECT_EQ(out, this);
  EXPECT_EQ(1u, yax_->loads);
  EXPECT_EQ("3 [CYAX::GetComponentFactory] Error while getting loading component...\n",
            printed.Take());
}

TEST_F(CYAXComponentCallsTest, ObjectsAndLocksAreAskedOfTheFactory) {
  void* out = this;
  ASSERT_EQ(yax_framework::kOk, yax_->GetComponentInstance(kOwn, IID_IYAXCompBase, &out));
  EXPECT_EQ(1u, yax_->factories);
  EXPECT_EQ(nullptr, yax_->factoryBefore);
  Drop(out);
  EXPECT_EQ(yax_framework::kOk, yax_->LockComponent(kOwn, 1));
  EXPECT_EQ(2u, yax_->factories);
  EXPECT_EQ(nullptr, yax_->factoryBefore);
  EXPECT_EQ(yax_framework::kOk, yax_->LockComponent(kOwn, 0));
  yax_->givesNone = true;
  out = this;
  EXPECT_EQ(yax_framework::kUnspecified, yax_->GetComponentInstance(kOwn, IID_IYAXCompBase, &out));
  EXPECT_EQ(nullptr, out);
  EXPECT_EQ(yax_framework::kUnspecified, yax_->LockComponent(kOwn, 1));
}

TEST_F(CYAXComponentCallsTest, WhatIsUnloadedBeforeItIsAskedIsLoadedAgain) {
  PrintedMessages printed;
  yax_->unloads = 1;
  void* out = nullptr;
  ASSERT_EQ(yax_framework::kOk, yax_->GetComponentFactory(kOwn, &out));
  ASSERT_NE(nullptr, out);
  EXPECT_EQ(2u, yax_->loads);
  EXPECT_EQ(nullptr, yax_->handleBefore);
  EXPECT_EQ(2u, Notes().opened);
  EXPECT_EQ(1u, Notes().closed);
  EXPECT_EQ("", printed.Take());
  Drop(out);
}

TEST_F(CYAXComponentCallsTest, WhatCannotBeLoadedAgainIsAFailureToLoad) {
  PrintedMessages printed;
  yax_->unloads = 1;
  yax_->unregisters = true;
  void* out = this;
  EXPECT_EQ(yax_framework::kRegistryFailed, yax_->GetComponentFactory(kOwn, &out));
  EXPECT_EQ(out, this);
  EXPECT_EQ(2u, yax_->loads);
  EXPECT_EQ("3 [CYAX::GetComponentFactory] Error while getting loading component...\n",
            printed.Take());
}

// ---- between the factory and what it is asked for

TEST_F(CYAXComponentCallsTest, AnObjectIsMadeByAFactoryThatNobodyCountsWhileAnotherUnloads) {
  yax_->unloadsAfter = true;
  void* out = nullptr;
  ASSERT_EQ(yax_framework::kOk, yax_->GetComponentInstance(kStatic, IID_IYAXCompBase, &out));
  EXPECT_EQ(yax_framework::kInUse, yax_->unloadResult);
  EXPECT_EQ(1u, Notes().factoryReleases);
  EXPECT_EQ(0u, Notes().closed);
  Drop(out);
  EXPECT_EQ(yax_framework::kOk, yax_->UnloadComponent(kStatic));
  EXPECT_FALSE(IsMapped(ComponentFile("static_factory")));
}

TEST_F(CYAXComponentCallsTest, ALockIsTakenByAFactoryThatNobodyCountsWhileAnotherUnloads) {
  yax_->unloadsAfter = true;
  ASSERT_EQ(yax_framework::kOk, yax_->LockComponent(kStatic, 1));
  EXPECT_EQ(yax_framework::kInUse, yax_->unloadResult);
  EXPECT_EQ(yax_framework::kInUse, yax_->UnloadComponent(kStatic)) << "it is locked";
  ASSERT_EQ(yax_framework::kOk, yax_->LockComponent(kStatic, 0));
  EXPECT_EQ(yax_framework::kOk, yax_->UnloadComponent(kStatic));
  EXPECT_FALSE(IsMapped(ComponentFile("static_factory")));
}

// What a client is given as a factory does not keep anything open.
TEST_F(CYAXComponentCallsTest, AFactoryThatNobodyCountsKeepsNothingOpenForAClient) {
  yax_->unloadsAfter = true;
  void* out = nullptr;
  ASSERT_EQ(yax_framework::kOk, yax_->GetComponentFactory(kStatic, &out));
  EXPECT_EQ(0u, yax_->unloadResult);
  EXPECT_EQ(1u, Notes().closed);
  yax_->unloadsAfter = false;
  ASSERT_EQ(yax_framework::kOk, yax_->GetComponentInstance(kStatic, IID_IYAXCompBase, &out))
      << "loaded anew";
  Drop(out);
}

}  // namespace
