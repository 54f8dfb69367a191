// A component made with the kit, as the framework and as a program see it.
#include <dlfcn.h>

#include <cstring>

#include "framework/YAXStatus.h"
#include "tests/framework/kit/Tally.h"
#include "tests/platform/TestFiles.h"

namespace {

// The shared object, opened without the framework.
class YAXComponentKitTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_FALSE(IsMapped());
    handle = dlopen(YAX_KIT_COMPONENT, RTLD_NOW);
    ASSERT_NE(nullptr, handle) << dlerror();
    getFactory = reinterpret_cast<YAX_FACTORY_FN>(dlsym(handle, "EntryFn_getFactory"));
    canUnload = reinterpret_cast<unsigned int (*)()>(dlsym(handle, "EntryFn_canUnloadNow"));
    ASSERT_NE(nullptr, getFactory);
    ASSERT_NE(nullptr, canUnload);
    ASSERT_EQ(0u, canUnload());
  }
  ~YAXComponentKitTest() override {
    if (handle == nullptr) return;
    EXPECT_EQ(0u, canUnload());
    EXPECT_EQ(0, dlclose(handle));
    EXPECT_FALSE(IsMapped());
  }
  static bool IsMapped() {
    void* mapped = dlopen(YAX_KIT_COMPONENT, RTLD_NOW | RTLD_NOLOAD);
    if (mapped != nullptr) dlclose(mapped);
    return mapped != nullptr;
  }
  YAXComponentFactory* Factory() {
    void* factory = nullptr;
    EXPECT_EQ(0u, getFactory(CLSID_Tally, IID_YAXComponentFactory, &factory));
    return static_cast<YAXComponentFactory*>(factory);
  }

  void* handle = nullptr;
  YAX_FACTORY_FN getFactory = nullptr;
  unsigned int (*canUnload)() = nullptr;
};

TEST_F(YAXComponentKitTest, IsReallyUnmapped) {
  EXPECT_TRUE(IsMapped());  // the rest is in the destructor
}

TEST_F(YAXComponentKitTest, AFactoryComesWithOneReferenceAndKeepsTheComponent) {
  YAXComponentFactory* factory = Factory();
  EXPECT_NE(0u, canUnload());
  EXPECT_EQ(2u, factory->AddRef());
  EXPECT_EQ(1u, factory->Release());
  EXPECT_NE(0u, canUnload());
  EXPECT_EQ(0u, factory->Release());
}

TEST_F(YAXComponentKitTest, AnObjectComesWithOneReferenceAndKeepsTheComponent) {
  YAXComponentFactory* factory = Factory();
  void* made = nullptr;
  EXPECT_EQ(yax_framework::kOk, factory->CreateObject(IID_ITally, &made));
  EXPECT_EQ(0u, factory->Release());
  ITally* tally = static_cast<ITally*>(made);
  EXPECT_NE(0u, canUnload());
  EXPECT_EQ(2u, tally->AddRef());
  EXPECT_EQ(1u, tally->Count());
  EXPECT_EQ(2u, tally->Count());
  EXPECT_EQ(1u, tally->Release());
  EXPECT_NE(0u, canUnload());
  EXPECT_EQ(0u, tally->Release());
}

TEST_F(YAXComponentKitTest, EachObjectIsANewOne) {
  YAXComponentFactory* factory = Factory();
  ITally* tallies[2] = {};
  for (ITally*& tally : tallies) {
    void* made = nullptr;
    EXPECT_EQ(yax_framework::kOk, factory->CreateObject(IID_ITally, &made));
    tally = static_cast<ITally*>(made);
    EXPECT_EQ(1u, tally->Count());
  }
  EXPECT_NE(tallies[0], tallies[1]);
  EXPECT_EQ(0u, factory->Release());
  EXPECT_EQ(0u, tallies[0]->Release());
  EXPECT_NE(0u, canUnload());
  EXPECT_EQ(0u, tallies[1]->Release());
}

TEST_F(YAXComponentKitTest, LocksKeepTheComponentAndAreCounted) {
  YAXComponentFactory* factory = Factory();
  EXPECT_EQ(yax_framework::kUnspecified, factory->LockBinary(0));  // there is none
  EXPECT_EQ(yax_framework::kOk, factory->LockBinary(1));
  EXPECT_EQ(yax_framework::kOk, factory->LockBinary(77));
  EXPECT_EQ(0u, factory->Release());
  EXPECT_NE(0u, canUnload());
  factory = Factory();
  EXPECT_EQ(yax_framework::kOk, factory->LockBinary(0));
  EXPECT_EQ(yax_framework::kOk, factory->LockBinary(0));
  EXPECT_EQ(yax_framework::kUnspecified, factory->LockBinary(0));
  EXPECT_EQ(0u, factory->Release());
}

TEST_F(YAXComponentKitTest, ObjectsAreNotTakenForLocks) {
  YAXComponentFactory* factory = Factory();
  void* made = nullptr;
  EXPECT_EQ(yax_framework::kOk, factory->CreateObject(IID_ITally, &made));
  EXPECT_EQ(yax_framework::kUnspecified, factory->LockBinary(0));
  EXPECT_EQ(yax_framework::kOk, factory->LockBinary(1));
  EXPECT_EQ(yax_framework::kOk, factory->LockBinary(0));
  EXPECT_EQ(yax_framework::kUnspecified, factory->LockBinary(0));
  EXPECT_EQ(0u, factory->Release());
  EXPECT_NE(0u, canUnload());
  EXPECT_EQ(0u, static_cast<ITally*>(made)->Release());
}

TEST_F(YAXComponentKitTest, InterfacesLeadToTheObjectAndItsRoot) {
  YAXComponentFactory* factory = Factory();
  void* made = nullptr;
  EXPECT_EQ(yax_framework::kOk, factory->CreateObject(IID_IYAXCompBase, &made));
  IYAXCompBase* root = static_cast<IYAXCompBase*>(made);
  void* view = nullptr;
  EXPECT_EQ(yax_framework::kOk, root->GetInterface(IID_ITally, &view));
  EXPECT_EQ(1u, static_cast<ITally*>(view)->Count());
  EXPECT_EQ(1u, static_cast<ITally*>(view)->Release());
  EXPECT_EQ(0u, root->Release());
  EXPECT_EQ(yax_framework::kOk, factory->GetInterface(IID_IYAXCompBase, &view));
  EXPECT_EQ(1u, static_cast<IYAXCompBase*>(view)->Release());
  EXPECT_EQ(yax_framework::kOk, factory->GetInterface(IID_YAXComponentFactory, &view));
  EXPECT_EQ(1u, static_cast<YAXComponentFactory*>(view)->Release());
  EXPECT_EQ(0u, factory->Release());
}

TEST_F(YAXComponentKitTest, UnknownInterfacesGiveNothingAndLeaveNothing) {
  YAXComponentFactory* factory = Factory();
  void* out = this;
  EXPECT_EQ(yax_framework::kNoInterface, factory->CreateObject(IID_IYAX, &out));
  EXPECT_EQ(nullptr, out);
  EXPECT_EQ(yax_framework::kBadArgument, factory->CreateObject(IID_ITally, nullptr));
  out = this;
  EXPECT_EQ(yax_framework::kNoInterface, factory->GetInterface(IID_ITally, &out));
  EXPECT_EQ(nullptr, out);
  EXPECT_EQ(yax_framework::kBadArgument, factory->GetInterface(IID_YAXComponentFactory, nullptr));
  EXPECT_EQ(0u, factory->Release());
  EXPECT_EQ(0u, canUnload());
}

TEST_F(YAXComponentKitTest, TheEntryAnswersForItsOwnComponentOnly) {
  void* out = this;
  EXPECT_EQ(yax_framework::kNotRegistered, getFactory(IID_ITally, IID_YAXComponentFactory, &out));
  EXPECT_EQ(nullptr, out);
  out = this;
  EXPECT_EQ(yax_framework::kNoInterface, getFactory(CLSID_Tally, IID_ITally, &out));
  EXPECT_EQ(nullptr, out);
  EXPECT_EQ(yax_framework::kBadArgument, getFactory(CLSID_Tally, IID_YAXComponentFactory, nullptr));
}

// The same through the framework.
class ComponentKitInFramework : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(yax_framework::kOk, CreateYAX((folder / "registry").c_str()));
    void* view = nullptr;
    ASSERT_EQ(yax_framework::kOk, GetYAXInstance(IID_IYAXInfoManager, &view));
    IYAXInfoManager* manager = static_cast<IYAXInfoManager*>(view);
    YAX_COMPONENT_INFO_ST info = {};
    info.Type = YAX_COMPONENT_TYPE_BINARY;
    std::strncpy(info.BinaryPath, YAX_KIT_COMPONENT, sizeof info.BinaryPath - 1);
    EXPECT_EQ(yax_framework::kOk, manager->RegisterComponent(CLSID_Tally, &info));
    manager->Release();
    ASSERT_EQ(yax_framework::kOk, GetYAXInstance(IID_IYAX, &view));
    yax = static_cast<IYAX*>(view);
    ASSERT_EQ(yax_framework::kOk, GetYAXInstance(IID_IYAXDynamicLoad, &view));
    loader = static_cast<IYAXDynamicLoad*>(view);
  }
  ~ComponentKitInFramework() override {
    yax->Release();
    EXPECT_EQ(1u, loader->Release());
    DestroyYAX();
  }
  void ExpectUnmapped() { EXPECT_EQ(nullptr, dlopen(YAX_KIT_COMPONENT, RTLD_NOW | RTLD_NOLOAD)); }

  TempDir folder;
  IYAX* yax = nullptr;
  IYAXDynamicLoad* loader = nullptr;
};

TEST_F(ComponentKitInFramework, IsUnmappedWhenTheLastObjectIsGone) {
  // Loaded anew, it counts from the beginning.
  for (int round = 0; round < 2; ++round) {
    void* made = nullptr;
    ASSERT_EQ(yax_framework::kOk, yax->GetComponentInstance(CLSID_Tally, IID_ITally, &made));
    ITally* tally = static_cast<ITally*>(made);
    EXPECT_EQ(1u, tally->Count());
    EXPECT_EQ(yax_framework::kInUse, loader->UnloadComponent(CLSID_Tally));
    EXPECT_EQ(2u, tally->Count());
    EXPECT_EQ(0u, tally->Release());
    EXPECT_EQ(yax_framework::kOk, loader->UnloadComponent(CLSID_Tally));
    ExpectUnmapped();
  }
}

TEST_F(ComponentKitInFramework, IsUnmappedWhenTheLastLockIsGone) {
  EXPECT_EQ(yax_framework::kOk, loader->LockComponent(CLSID_Tally, 1));
  EXPECT_EQ(yax_framework::kOk, loader->LockComponent(CLSID_Tally, 1));
  EXPECT_EQ(yax_framework::kOk, loader->LockComponent(CLSID_Tally, 0));
  EXPECT_EQ(yax_framework::kInUse, loader->UnloadComponent(CLSID_Tally));
  EXPECT_EQ(yax_framework::kOk, loader->LockComponent(CLSID_Tally, 0));
  EXPECT_EQ(yax_framework::kOk, loader->UnloadComponent(CLSID_Tally));
  ExpectUnmapped();
}

}  // namespace
