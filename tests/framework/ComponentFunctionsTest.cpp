// Components in the running program, and systems where all components are there.
#include "framework/YAXStatus.h"
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
  EXPECT_EQ(nullptr, *factory);
  return 0xE0000077;
}

class ComponentFunctions : public ComponentRig {
 protected:
  ComponentFunctions() { gAsked = {}; }

  // That the object of this component was made by a function of this program.
  void ExpectMadeHere(const YAX_GUID_ST& clsid) {
    gAsked = {};
    void* out = nullptr;
    ASSERT_EQ(yax_framework::kOk, yax_->GetComponentInstance(clsid, IID_ITestObject, &out));
    EXPECT_TRUE(gAsked == clsid);
    EXPECT_EQ(42u, static_cast<ITestObject*>(out)->Answer());
    static_cast<ITestObject*>(out)->Release();
  }
  void ExpectNoAddress(const YAX_GUID_ST& clsid, unsigned int status) {
    PrintedMessages printed;
    void* out = this;
    EXPECT_EQ(yax_->GetComponentFactory(clsid, &out), status);
    EXPECT_EQ(out, this);
    EXPECT_EQ(kNoAddress, printed.Take());
  }

  const std::string sound_ = ComponentFile("sound");
};

TEST_F(ComponentFunctions, AreCalledAndNothingIsLoaded) {
  Register(kOwn, sound_, GiveHere, YAX_COMPONENT_TYPE_FUNCTION);
  void* handle = this;
  EXPECT_EQ(yax_framework::kOk, loader_->LoadComponent(kOwn, &handle));
  EXPECT_EQ(nullptr, handle);
  ExpectMadeHere(kOwn);
  EXPECT_EQ(1u, Notes().factoriesMade);
  EXPECT_EQ(1u, Notes().factoryReleases);
  EXPECT_EQ(yax_framework::kOk, loader_->LockComponent(kOwn, 1));
  EXPECT_EQ(yax_framework::kOk, loader_->UnloadComponent(kOwn)) << "nobody is asked";
  EXPECT_EQ(yax_framework::kOk, loader_->LockComponent(kOwn, 0));
  EXPECT_EQ(0u, Notes().asked);
  EXPECT_FALSE(IsMapped(sound_));
}

TEST_F(ComponentFunctions, AreCalledForEveryTypeButOne) {
  Register(kOwn, sound_, GiveHere, 2);
  void* handle = this;
  EXPECT_EQ(yax_framework::kOk, loader_->LoadComponent(kOwn, &handle));
  EXPECT_EQ(nullptr, handle);
  ExpectMadeHere(kOwn);
  Register(kOther, sound_, GiveHere, 0xFFFFFFFF);
  ExpectMadeHere(kOther);
  EXPECT_EQ(yax_framework::kOk, loader_->UnloadComponent(kOther));
  EXPECT_FALSE(IsMapped(sound_));
}

TEST_F(ComponentFunctions, AreNotCalledForAComponentInASharedObject) {
  Register(kOwn, sound_, GiveHere, YAX_COMPONENT_TYPE_BINARY);
  void* out = nullptr;
  ASSERT_EQ(yax_framework::kOk, yax_->GetComponentInstance(kOwn, IID_ITestObject, &out));
  EXPECT_TRUE(gAsked == YAX_GUID_ST());
  static_cast<ITestObject*>(out)->Release();
}

TEST_F(ComponentFunctions, HandTheirFailureOn) {
  Register(kOwn, "", Fail, YAX_COMPONENT_TYPE_FUNCTION);
  PrintedMessages printed;
  void* out = this;
  EXPECT_EQ(0xE0000077u, yax_->GetComponentFactory(kOwn, &out));
  EXPECT_EQ(nullptr, out);
  EXPECT_EQ("", printed.Take());
}

TEST_F(ComponentFunctions, ThatAreNullAreNoEntry) {
  Register(kOwn, "", nullptr, YAX_COMPONENT_TYPE_FUNCTION);
  EXPECT_EQ(nullptr, Load(kOwn));
  ExpectNoAddress(kOwn, 0xE000000F);
}

TEST_F(ComponentFunctions, CanBeSetAnew) {
  Register(kOwn, "", nullptr, YAX_COMPONENT_TYPE_FUNCTION);
  YAX_COMPONENT_INFO_ST info = {};
  info.FactoryFn = GiveHere;
  EXPECT_EQ(yax_framework::kOk, manager_->SetComponentInfo(kOwn, &info));
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
  ASSERT_NE(nullptr, Load(kOwn));
  SetSystem(1);
  for (const YAX_GUID_ST& clsid : {kOwn, kUnknown}) {
    void* handle = this;
    EXPECT_EQ(yax_framework::kOk, loader_->LoadComponent(clsid, &handle));
    EXPECT_EQ(nullptr, handle);
    EXPECT_EQ(yax_framework::kOk, loader_->UnloadComponent(clsid));
  }
  EXPECT_EQ(0u, Notes().asked);
  EXPECT_TRUE(IsMapped(sound_));
}

TEST_F(ComponentFunctions, OnlyOneMeansASingleBinary) {
  Register(kOwn, "sound");
  for (const unsigned int isSingleBin : {0u, 2u, 0x101u, 0xFFFFFFFFu}) {
    SetSystem(isSingleBin);
    EXPECT_NE(nullptr, Load(kOwn)) << isSingleBin;
    EXPECT_EQ(yax_framework::kOk, loader_->UnloadComponent(kOwn));
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
    EXPECT_EQ(yax_framework::kNoEntry, result);
    EXPECT_EQ(kNoAddress, printed.Take());
    EXPECT_EQ(nullptr, out);
    return;
  }
  ASSERT_EQ(0u, result);
  EXPECT_TRUE(gAsked == kOwn);
  static_cast<ITestObject*>(out)->Release();
}

}  // namespace
