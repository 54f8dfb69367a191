// A component made with the kit, as the framework and as a program see it.
#include <dlfcn.h>

#include <cstring>

#include "tests/framework/kit/Tally.h"
#include "tests/platform/TestFiles.h"

namespace {

// The shared object, opened without the framework.
class ComponentKit : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_FALSE(IsMapped());
    handle = dlopen(YAX_KIT_COMPONENT, RTLD_NOW);
    ASSERT_NE(handle, nullptr) << dlerror();
    getFactory = reinterpret_cast<YAX_FACTORY_FN>(dlsym(handle, "EntryFn_getFactory"));
    canUnload = reinterpret_cast<unsigned int (*)()>(dlsym(handle, "EntryFn_canUnloadNow"));
    ASSERT_NE(getFactory, nullptr);
    ASSERT_NE(canUnload, nullptr);
    ASSERT_EQ(canUnload(), 0u);
  }
  ~ComponentKit() override {
    if (handle == nullptr) return;
    EXPECT_EQ(canUnload(), 0u);
    EXPECT_EQ(dlclose(handle), 0);
    EXPECT_FALSE(IsMapped());
  }
  static bool IsMapped() {
    void* mapped = dlopen(YAX_KIT_COMPONENT, RTLD_NOW | RTLD_NOLOAD);
    if (mapped != nullptr) dlclose(mapped);
    return mapped != nullptr;
  }
  YAXComponentFactory* Factory() {
    void* factory = nullptr;
    EXPECT_EQ(getFactory(CLSID_Tally, IID_YAXComponentFactory, &factory), 0u);
    return static_cast<YAXComponentFactory*>(factory);
  }

  void* handle = nullptr;
  YAX_FACTORY_FN getFactory = nullptr;
  unsigned int (*canUnload)() = nullptr;
};

TEST_F(ComponentKit, IsReallyUnmapped) {
  EXPECT_TRUE(IsMapped());  // the rest is in the destructor
}

TEST_F(ComponentKit, AFactoryComesWithOneReferenceAndKeepsTheComponent) {
  YAXComponentFactory* factory = Factory();
  EXPECT_NE(canUnload(), 0u);
  EXPECT_EQ(factory->AddRef(), 2u);
  EXPECT_EQ(factory->Release(), 1u);
  EXPECT_NE(canUnload(), 0u);
  EXPECT_EQ(factory->Release(), 0u);
}

TEST_F(ComponentKit, AnObjectComesWithOneReferenceAndKeepsTheComponent) {
  YAXComponentFactory* factory = Factory();
  void* made = nullptr;
  EXPECT_EQ(factory->CreateObject(IID_ITally, &made), 0u);
  EXPECT_EQ(factory->Release(), 0u);
  ITally* tally = static_cast<ITally*>(made);
  EXPECT_NE(canUnload(), 0u);
  EXPECT_EQ(tally->AddRef(), 2u);
  EXPECT_EQ(tally->Count(), 1u);
  EXPECT_EQ(tally->Count(), 2u);
  EXPECT_EQ(tally->Release(), 1u);
  EXPECT_NE(canUnload(), 0u);
  EXPECT_EQ(tally->Release(), 0u);
}

TEST_F(ComponentKit, EachObjectIsANewOne) {
  YAXComponentFactory* factory = Factory();
  ITally* tallies[2] = {};
  for (ITally*& tally : tallies) {
    void* made = nullptr;
    EXPECT_EQ(factory->CreateObject(IID_ITally, &made), 0u);
    tally = static_cast<ITally*>(made);
    EXPECT_EQ(tally->Count(), 1u);
  }
  EXPECT_NE(tallies[0], tallies[1]);
  EXPECT_EQ(factory->Release(), 0u);
  EXPECT_EQ(tallies[0]->Release(), 0u);
  EXPECT_NE(canUnload(), 0u);
  EXPECT_EQ(tallies[1]->Release(), 0u);
}

TEST_F(ComponentKit, LocksKeepTheComponentAndAreCounted) {
  YAXComponentFactory* factory = Factory();
  EXPECT_EQ(factory->LockBinary(0), 0xE0000010u);  // there is none
  EXPECT_EQ(factory->LockBinary(1), 0u);
  EXPECT_EQ(factory->LockBinary(77), 0u);
  EXPECT_EQ(factory->Release(), 0u);
  EXPECT_NE(canUnload(), 0u);
  factory = Factory();
  EXPECT_EQ(factory->LockBinary(0), 0u);
  EXPECT_EQ(factory->LockBinary(0), 0u);
  EXPECT_EQ(factory->LockBinary(0), 0xE0000010u);
  EXPECT_EQ(factory->Release(), 0u);
}

TEST_F(ComponentKit, ObjectsAreNotTakenForLocks) {
  YAXComponentFactory* factory = Factory();
  void* made = nullptr;
  EXPECT_EQ(factory->CreateObject(IID_ITally, &made), 0u);
  EXPECT_EQ(factory->LockBinary(0), 0xE0000010u);
  EXPECT_EQ(factory->LockBinary(1), 0u);
  EXPECT_EQ(factory->LockBinary(0), 0u);
  EXPECT_EQ(factory->LockBinary(0), 0xE0000010u);
  EXPECT_EQ(factory->Release(), 0u);
  EXPECT_NE(canUnload(), 0u);
  EXPECT_EQ(static_cast<ITally*>(made)->Release(), 0u);
}

TEST_F(ComponentKit, InterfacesLeadToTheObjectAndItsRoot) {
  YAXComponentFactory* factory = Factory();
  void* made = nullptr;
  EXPECT_EQ(factory->CreateObject(IID_IYAXCompBase, &made), 0u);
  IYAXCompBase* root = static_cast<IYAXCompBase*>(made);
  void* view = nullptr;
  EXPECT_EQ(root->GetInterface(IID_ITally, &view), 0u);
  EXPECT_EQ(static_cast<ITally*>(view)->Count(), 1u);
  EXPECT_EQ(static_cast<ITally*>(view)->Release(), 1u);
  EXPECT_EQ(root->Release(), 0u);
  EXPECT_EQ(factory->GetInterface(IID_IYAXCompBase, &view), 0u);
  EXPECT_EQ(static_cast<IYAXCompBase*>(view)->Release(), 1u);
  EXPECT_EQ(factory->GetInterface(IID_YAXComponentFactory, &view), 0u);
  EXPECT_EQ(static_cast<YAXComponentFactory*>(view)->Release(), 1u);
  EXPECT_EQ(factory->Release(), 0u);
}

TEST_F(ComponentKit, UnknownInterfacesGiveNothingAndLeaveNothing) {
  YAXComponentFactory* factory = Factory();
  void* out = this;
  EXPECT_EQ(factory->CreateObject(IID_IYAX, &out), 0xE0000007u);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(factory->CreateObject(IID_ITally, nullptr), 0xE0000008u);
  out = this;
  EXPECT_EQ(factory->GetInterface(IID_ITally, &out), 0xE0000007u);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(factory->GetInterface(IID_YAXComponentFactory, nullptr), 0xE0000008u);
  EXPECT_EQ(factory->Release(), 0u);
  EXPECT_EQ(canUnload(), 0u);
}

TEST_F(ComponentKit, TheEntryAnswersForItsOwnComponentOnly) {
  void* out = this;
  EXPECT_EQ(getFactory(IID_ITally, IID_YAXComponentFactory, &out), 0xE0000004u);
  EXPECT_EQ(out, nullptr);
  out = this;
  EXPECT_EQ(getFactory(CLSID_Tally, IID_ITally, &out), 0xE0000007u);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(getFactory(CLSID_Tally, IID_YAXComponentFactory, nullptr), 0xE0000008u);
}

// The same through the framework.
class ComponentKitInFramework : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(CreateYAX((folder / "registry").c_str()), 0u);
    void* view = nullptr;
    ASSERT_EQ(GetYAXInstance(IID_IYAXInfoManager, &view), 0u);
    IYAXInfoManager* manager = static_cast<IYAXInfoManager*>(view);
    YAX_COMPONENT_INFO_ST info = {};
    info.Type = YAX_COMPONENT_TYPE_BINARY;
    std::strncpy(info.BinaryPath, YAX_KIT_COMPONENT, sizeof info.BinaryPath - 1);
    EXPECT_EQ(manager->RegisterComponent(CLSID_Tally, &info), 0u);
    manager->Release();
    ASSERT_EQ(GetYAXInstance(IID_IYAX, &view), 0u);
    yax = static_cast<IYAX*>(view);
    ASSERT_EQ(GetYAXInstance(IID_IYAXDynamicLoad, &view), 0u);
    loader = static_cast<IYAXDynamicLoad*>(view);
  }
  ~ComponentKitInFramework() override {
    yax->Release();
    EXPECT_EQ(loader->Release(), 1u);
    DestroyYAX();
  }
  void ExpectUnmapped() { EXPECT_EQ(dlopen(YAX_KIT_COMPONENT, RTLD_NOW | RTLD_NOLOAD), nullptr); }

  TempDir folder;
  IYAX* yax = nullptr;
  IYAXDynamicLoad* loader = nullptr;
};

TEST_F(ComponentKitInFramework, IsUnmappedWhenTheLastObjectIsGone) {
  // Loaded anew, it counts from the beginning.
  for (int round = 0; round < 2; ++round) {
    void* made = nullptr;
    ASSERT_EQ(yax->GetComponentInstance(CLSID_Tally, IID_ITally, &made), 0u);
    ITally* tally = static_cast<ITally*>(made);
    EXPECT_EQ(tally->Count(), 1u);
    EXPECT_EQ(loader->UnloadComponent(CLSID_Tally), 0xE000000Bu);
    EXPECT_EQ(tally->Count(), 2u);
    EXPECT_EQ(tally->Release(), 0u);
    EXPECT_EQ(loader->UnloadComponent(CLSID_Tally), 0u);
    ExpectUnmapped();
  }
}

TEST_F(ComponentKitInFramework, IsUnmappedWhenTheLastLockIsGone) {
  EXPECT_EQ(loader->LockComponent(CLSID_Tally, 1), 0u);
  EXPECT_EQ(loader->LockComponent(CLSID_Tally, 1), 0u);
  EXPECT_EQ(loader->LockComponent(CLSID_Tally, 0), 0u);
  EXPECT_EQ(loader->UnloadComponent(CLSID_Tally), 0xE000000Bu);
  EXPECT_EQ(loader->LockComponent(CLSID_Tally, 0), 0u);
  EXPECT_EQ(loader->UnloadComponent(CLSID_Tally), 0u);
  ExpectUnmapped();
}

}  // namespace
