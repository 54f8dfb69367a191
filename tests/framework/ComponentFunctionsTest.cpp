// Components in the running program, and systems where all components are there.
#include "tests/framework/ComponentRig.h"
#include "tests/framework/PrintedMessages.h"
#include "tests/platform/ChildProcess.h"

namespace {

constexpr YAX_GUID_ST kOwn = ClsidOf(1);
constexpr YAX_GUID_ST kOther = ClsidOf(2);
constexpr YAX_GUID_ST kUnknown = ClsidOf(3);

constexpr char kNoAddress[] =
    "3 [CYAX::GetComponentFactory] Error while getting function address...\n";

YAX_GUID_ST gAsked = {};

unsigned int GiveHere(const YAX_GUID_ST& clsid, const YAX_GUID_ST& iid, void** factory) {
  gAsked = clsid;
  return GiveFactory<TestFactory>(iid, factory);
}

// Registered in another process alone.
unsigned int GiveElsewhere(const YAX_GUID_ST& clsid, const YAX_GUID_ST& iid, void** factory) {
  gAsked = clsid;
  return GiveFactory<TestFactory>(iid, factory);
}

unsigned int Fail(const YAX_GUID_ST&, const YAX_GUID_ST&, void** factory) {
  EXPECT_EQ(*factory, nullptr);
  return 0xE0000077;
}

class ComponentFunctions : public ComponentRig {
 protected:
  ComponentFunctions() { gAsked = {}; }

  // That the object of this component was made by a function of this program.
  void ExpectMadeHere(const YAX_GUID_ST& clsid) {
    gAsked = {};
    void* out = nullptr;
    ASSERT_EQ(yax_->GetComponentInstance(clsid, IID_ITestObject, &out), 0u);
    EXPECT_TRUE(gAsked == clsid);
    EXPECT_EQ(static_cast<ITestObject*>(out)->Answer(), 42u);
    static_cast<ITestObject*>(out)->Release();
  }
  void ExpectNoAddress(const YAX_GUID_ST& clsid, unsigned int status) {
    PrintedMessages printed;
    void* out = this;
    EXPECT_EQ(yax_->GetComponentFactory(clsid, &out), status);
    EXPECT_EQ(out, this);
    EXPECT_EQ(printed.Take(), kNoAddress);
  }

  const std::string sound_ = ComponentFile("sound");
};

TEST_F(ComponentFunctions, AreCalledAndNothingIsLoaded) {
  Register(kOwn, sound_, GiveHere, YAX_COMPONENT_TYPE_FUNCTION);
  void* handle = this;
  EXPECT_EQ(loader_->LoadComponent(kOwn, &handle), 0u);
  EXPECT_EQ(handle, nullptr);
  ExpectMadeHere(kOwn);
  EXPECT_EQ(Notes().factoriesMade, 1u);
  EXPECT_EQ(Notes().factoryReleases, 1u);
  EXPECT_EQ(loader_->LockComponent(kOwn, 1), 0u);
  EXPECT_EQ(loader_->UnloadComponent(kOwn), 0u) << "nobody is asked";
  EXPECT_EQ(loader_->LockComponent(kOwn, 0), 0u);
  EXPECT_EQ(Notes().asked, 0u);
  EXPECT_FALSE(IsMapped(sound_));
}

TEST_F(ComponentFunctions, AreCalledForEveryTypeButOne) {
  Register(kOwn, sound_, GiveHere, 2);
  void* handle = this;
  EXPECT_EQ(loader_->LoadComponent(kOwn, &handle), 0u);
  EXPECT_EQ(handle, nullptr);
  ExpectMadeHere(kOwn);
  Register(kOther, sound_, GiveHere, 0xFFFFFFFF);
  ExpectMadeHere(kOther);
  EXPECT_EQ(loader_->UnloadComponent(kOther), 0u);
  EXPECT_FALSE(IsMapped(sound_));
}

TEST_F(ComponentFunctions, AreNotCalledForAComponentInASharedObject) {
  Register(kOwn, sound_, GiveHere, YAX_COMPONENT_TYPE_BINARY);
  void* out = nullptr;
  ASSERT_EQ(yax_->GetComponentInstance(kOwn, IID_ITestObject, &out), 0u);
  EXPECT_TRUE(gAsked == YAX_GUID_ST());
  static_cast<ITestObject*>(out)->Release();
}

TEST_F(ComponentFunctions, HandTheirFailureOn) {
  Register(kOwn, "", Fail, YAX_COMPONENT_TYPE_FUNCTION);
  PrintedMessages printed;
  void* out = this;
  EXPECT_EQ(yax_->GetComponentFactory(kOwn, &out), 0xE0000077u);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(printed.Take(), "");
}

TEST_F(ComponentFunctions, ThatAreNullAreNoEntry) {
  Register(kOwn, "", nullptr, YAX_COMPONENT_TYPE_FUNCTION);
  EXPECT_EQ(Load(kOwn), nullptr);
  ExpectNoAddress(kOwn, 0xE000000F);
}

TEST_F(ComponentFunctions, CanBeSetAnew) {
  Register(kOwn, "", nullptr, YAX_COMPONENT_TYPE_FUNCTION);
  YAX_COMPONENT_INFO_ST info = {};
  info.FactoryFn = GiveHere;
  EXPECT_EQ(manager_->SetComponentInfo(kOwn, &info), 0u);
  ExpectMadeHere(kOwn);
}

// ---- all components in the running program

TEST_F(ComponentFunctions, AreCalledForAllComponentsOfASingleBinary) {
  Register(kOwn, sound_, GiveHere, YAX_COMPONENT_TYPE_BINARY);
  Register(kOther, sound_, nullptr, YAX_COMPONENT_TYPE_BINARY);
  SetSystem(1);
  ExpectMadeHere(kOwn);
  ExpectNoAddress(kOther, 0xE000000F);
  ExpectNoAddress(kUnknown, 0xE000000D);
  EXPECT_FALSE(IsMapped(sound_));
}

TEST_F(ComponentFunctions, ASingleBinaryLoadsAndUnloadsNothing) {
  Register(kOwn, "sound");
  ASSERT_NE(Load(kOwn), nullptr);
  SetSystem(1);
  for (const YAX_GUID_ST& clsid : {kOwn, kUnknown}) {
    void* handle = this;
    EXPECT_EQ(loader_->LoadComponent(clsid, &handle), 0u);
    EXPECT_EQ(handle, nullptr);
    EXPECT_EQ(loader_->UnloadComponent(clsid), 0u);
  }
  EXPECT_EQ(Notes().asked, 0u);
  EXPECT_TRUE(IsMapped(sound_));
}

TEST_F(ComponentFunctions, OnlyOneMeansASingleBinary) {
  Register(kOwn, "sound");
  for (const unsigned int isSingleBin : {0u, 2u, 0x101u, 0xFFFFFFFFu}) {
    SetSystem(isSingleBin);
    EXPECT_NE(Load(kOwn), nullptr) << isSingleBin;
    EXPECT_EQ(loader_->UnloadComponent(kOwn), 0u);
    EXPECT_FALSE(IsMapped(sound_)) << isSingleBin;
  }
}

// ---- addresses of another process

// Only where addresses are longer than what the registry keeps of them can they be told apart; this
// child has its functions where its parent has them.
TEST(ComponentFunctionsOfAnotherProcess, AreNotCalledWhereTheyCanBeTold) {
  const FreshComponents fresh;
  TempDir folder;
  const std::string file = folder / "registry";
  ASSERT_TRUE(InChild([&] {
    const Framework framework(file);
    const View<IYAXInfoManager> manager(IID_IYAXInfoManager);
    YAX_COMPONENT_INFO_ST info = {};
    info.FactoryFn = GiveElsewhere;
    return manager->RegisterComponent(kOwn, &info) == 0;
  }));
  const Framework framework(file);
  const View<IYAX> yax(IID_IYAX);
  PrintedMessages printed;
  void* out = nullptr;
  const unsigned int result = yax->GetComponentInstance(kOwn, IID_ITestObject, &out);
  if (sizeof(void*) == 8) {
    EXPECT_EQ(result, 0xE000000Fu);
    EXPECT_EQ(printed.Take(), kNoAddress);
    EXPECT_EQ(out, nullptr);
    return;
  }
  ASSERT_EQ(result, 0u);
  EXPECT_TRUE(gAsked == kOwn);
  static_cast<ITestObject*>(out)->Release();
}

}  // namespace
