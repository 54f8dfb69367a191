// From a component's identifier to its factory and its objects, through the built library.
#include <unistd.h>

#include "framework/YAXStatus.h"
#include "tests/framework/ComponentRig.h"
#include "tests/framework/PrintedMessages.h"

namespace {

constexpr YAX_GUID_ST kOwn = ClsidOf(1);
constexpr YAX_GUID_ST kOther = ClsidOf(2);
constexpr YAX_GUID_ST kUnknown = ClsidOf(3);

constexpr char kNotLoaded[] =
    "3 [CYAX::GetComponentFactory] Error while getting loading component...\n";
constexpr char kNoAddress[] =
    "3 [CYAX::GetComponentFactory] Error while getting function address...\n";

class CYAXComponentsTest : public ComponentRig {
 protected:
  // What the operations that need a factory answer.
  void ExpectNoFactory(const YAX_GUID_ST& clsid, unsigned int status, const std::string& message) {
    PrintedMessages printed;
    void* out = this;
    EXPECT_EQ(yax_->GetComponentFactory(clsid, &out), status);
    EXPECT_EQ(out, this);
    EXPECT_EQ(printed.Take(), message);
    EXPECT_EQ(yax_->GetComponentInstance(clsid, IID_ITestObject, &out), status);
    EXPECT_EQ(out, this);
    EXPECT_EQ(printed.Take(), message);
    EXPECT_EQ(loader_->LockComponent(clsid, 1), status);
    EXPECT_EQ(printed.Take(), message);
  }

  const std::string sound_ = ComponentFile("sound");
  void* const untouched_ = this;
};

// ---- loading

TEST_F(CYAXComponentsTest, AreLoadedOnceAndUnloaded) {
  Register(kOwn, "sound");
  EXPECT_FALSE(IsMapped(sound_));
  void* handle = Load(kOwn);
  ASSERT_NE(nullptr, handle);
  EXPECT_NE(nullptr, dlsym(handle, "EntryFn_getFactory"));
  EXPECT_EQ(Load(kOwn), handle);
  EXPECT_EQ(Load(kOwn), handle);
  EXPECT_EQ(1u, Notes().opened);
  EXPECT_EQ(yax_framework::kOk, loader_->UnloadComponent(kOwn))
      << "once, however often it was loaded";
  EXPECT_EQ(1u, Notes().closed);
  EXPECT_FALSE(IsMapped(sound_));
  EXPECT_EQ(yax_framework::kOk, loader_->UnloadComponent(kOwn));
  EXPECT_NE(nullptr, Load(kOwn));
  EXPECT_EQ(2u, Notes().opened);
}

TEST_F(CYAXComponentsTest, ANullHandleIsRefusedBeforeAnythingElse) {
  Register(kOwn, "sound");
  EXPECT_EQ(yax_framework::kBadArgument, loader_->LoadComponent(kOwn, nullptr));
  EXPECT_EQ(yax_framework::kBadArgument, loader_->LoadComponent(kUnknown, nullptr));
  SetSystem(1);
  EXPECT_EQ(yax_framework::kBadArgument, loader_->LoadComponent(kOwn, nullptr));
  EXPECT_FALSE(IsMapped(sound_));
}

TEST_F(CYAXComponentsTest, NullPlacesForTheOutcomeAreRefusedBeforeAnythingElse) {
  Register(kOwn, "sound");
  PrintedMessages printed;
  for (const YAX_GUID_ST& clsid : {kOwn, kUnknown}) {
    EXPECT_EQ(yax_framework::kBadArgument, yax_->GetComponentFactory(clsid, nullptr));
    EXPECT_EQ(yax_framework::kBadArgument,
              yax_->GetComponentInstance(clsid, IID_ITestObject, nullptr));
  }
  EXPECT_EQ("", printed.Take());
  EXPECT_FALSE(IsMapped(sound_));
}

TEST_F(CYAXComponentsTest, ThatAreNotRegisteredAreRefused) {
  for (const bool isKeyThere : {false, true}) {
    if (isKeyThere) Register(kOwn, "sound");
    void* handle = untouched_;
    EXPECT_EQ(yax_framework::kRegistryFailed, loader_->LoadComponent(kUnknown, &handle));
    EXPECT_EQ(handle, untouched_);
    EXPECT_EQ(yax_framework::kRegistryFailed, loader_->UnloadComponent(kUnknown));
    ExpectNoFactory(kUnknown, 0xE000000D, kNotLoaded);
  }
}

TEST_F(CYAXComponentsTest, WithoutTheirFileAreNotLoaded) {
  Register(kOwn, "missing");
  PrintedMessages printed;
  void* handle = untouched_;
  EXPECT_EQ(yax_framework::kCannotLoad, loader_->LoadComponent(kOwn, &handle));
  EXPECT_EQ(nullptr, handle);
  const std::string reason = printed.Take();
  EXPECT_EQ(0u, reason.rfind("3 [YAXLoadManager::LoadBinary] dlopen error, ", 0)) << reason;
  ExpectNoFactory(kOwn, 0xE0000009, reason + kNotLoaded);
  EXPECT_EQ(yax_framework::kOk, loader_->UnloadComponent(kOwn)) << "nothing to unload";
}

TEST_F(CYAXComponentsTest, AreFoundWhereTheyWereRegisteredWhateverTheFolder) {
  PutFile(folder_ / "copy.so", GetFile(sound_));
  Register(kOwn, "copy.so", nullptr, YAX_COMPONENT_TYPE_BINARY);
  for (const std::string& binDirectory : {folder_ / "", folder_ / "."}) {
    SetSystem(0, binDirectory.c_str());
    void* handle = nullptr;
    EXPECT_EQ(yax_framework::kCannotLoad, loader_->LoadComponent(kOwn, &handle));
  }
  Register(kOther, "sound");
  SetSystem(0, "/nowhere");
  EXPECT_NE(nullptr, Load(kOther));
}

TEST_F(CYAXComponentsTest, OfOneFileShareIt) {
  Register(kOwn, "sound");
  Register(kOther, "sound");
  void* handle = Load(kOwn);
  EXPECT_EQ(Load(kOther), handle);
  EXPECT_EQ(1u, Notes().opened);
  EXPECT_EQ(yax_framework::kOk, loader_->UnloadComponent(kOther));
  EXPECT_TRUE(IsMapped(sound_));
  EXPECT_EQ(yax_framework::kOk, loader_->UnloadComponent(kOwn));
  EXPECT_FALSE(IsMapped(sound_));
}

TEST_F(CYAXComponentsTest, ThatWereUnregisteredStayLoaded) {
  Register(kOwn, "sound");
  Load(kOwn);
  EXPECT_EQ(yax_framework::kOk, manager_->UnregisterComponent(kOwn));
  EXPECT_EQ(yax_framework::kRegistryFailed, loader_->UnloadComponent(kOwn));
  EXPECT_TRUE(IsMapped(sound_));
}

TEST_F(CYAXComponentsTest, ThatRefuseStayLoaded) {
  const std::string file = ComponentFile("refusing");
  Register(kOwn, "refusing");
  void* handle = Load(kOwn);
  Notes().refusal = 1;
  EXPECT_EQ(yax_framework::kInUse, loader_->UnloadComponent(kOwn));
  EXPECT_TRUE(IsMapped(file));
  EXPECT_EQ(Load(kOwn), handle);
  Notes().refusal = 0;
  EXPECT_EQ(yax_framework::kOk, loader_->UnloadComponent(kOwn));
  EXPECT_FALSE(IsMapped(file));
}

TEST_F(CYAXComponentsTest, ThatCannotBeAskedStayLoaded) {
  Register(kOwn, "no_unload_entry");
  Load(kOwn);
  EXPECT_EQ(yax_framework::kNoEntry, loader_->UnloadComponent(kOwn));
  EXPECT_TRUE(IsMapped(ComponentFile("no_unload_entry")));
}

TEST_F(CYAXComponentsTest, RegisteredWithAWrongPathFirstAreUnloadedAllTheSame) {
  Register(kOwn, "no_unload_entry");
  Load(kOwn);
  EXPECT_EQ(yax_framework::kNoEntry, loader_->UnloadComponent(kOwn));
  YAX_COMPONENT_INFO_ST info = {};
  info.Type = YAX_COMPONENT_TYPE_BINARY;
  std::strcpy(info.BinaryPath, sound_.c_str());
  ASSERT_EQ(yax_framework::kOk, manager_->SetComponentInfo(kOwn, &info));
  Load(kOwn);
  EXPECT_EQ(yax_framework::kOk, loader_->UnloadComponent(kOwn));
  EXPECT_FALSE(IsMapped(sound_));
  EXPECT_EQ(yax_framework::kNoEntry, loader_->UnloadComponent(kOwn))
      << "the wrong one is still there";
}

TEST(ComponentsAtTheEnd, StayMappedWhenTheFrameworkEnds) {
  const FreshComponents fresh;
  TempDir folder;
  void* object = nullptr;
  {
    const Framework framework(folder / "registry");
    const View<IYAX> yax(IID_IYAX);
    const View<IYAXInfoManager> manager(IID_IYAXInfoManager);
    YAX_COMPONENT_INFO_ST info = {};
    info.Type = YAX_COMPONENT_TYPE_BINARY;
    std::strcpy(info.BinaryPath, ComponentFile("sound").c_str());
    ASSERT_EQ(yax_framework::kOk, manager->RegisterComponent(kOwn, &info));
    ASSERT_EQ(yax_framework::kOk, yax->GetComponentInstance(kOwn, IID_ITestObject, &object));
  }
  EXPECT_EQ(0u, Notes().closed);
  EXPECT_TRUE(IsMapped(ComponentFile("sound")));
  EXPECT_EQ(42u, static_cast<ITestObject*>(object)->Answer());
  static_cast<ITestObject*>(object)->Release();
}

// ---- factories and objects

TEST_F(CYAXComponentsTest, GiveTheirFactory) {
  Register(kOwn, "sound");
  PrintedMessages printed;
  void* made = untouched_;
  ASSERT_EQ(yax_framework::kOk, yax_->GetComponentFactory(kOwn, &made));
  EXPECT_EQ("", printed.Take());
  YAXComponentFactory* factory = static_cast<YAXComponentFactory*>(made);
  EXPECT_EQ(1u, Notes().factoriesMade);
  EXPECT_EQ(0u, Notes().factoryReleases) << "the caller's";
  void* object = nullptr;
  EXPECT_EQ(yax_framework::kOk, factory->CreateObject(IID_ITestObject, &object));
  EXPECT_EQ(0u, static_cast<ITestObject*>(object)->Release());
  EXPECT_EQ(yax_framework::kInUse, loader_->UnloadComponent(kOwn)) << "the factory lives";
  EXPECT_EQ(0u, factory->Release());
  EXPECT_EQ(1u, Notes().factoriesGone);
  EXPECT_EQ(yax_framework::kOk, loader_->UnloadComponent(kOwn));
}

TEST_F(CYAXComponentsTest, GiveObjectsAndReleaseTheFactoryOnce) {
  Register(kOwn, "sound");
  void* out = untouched_;
  ASSERT_EQ(yax_framework::kOk, yax_->GetComponentInstance(kOwn, IID_ITestObject, &out));
  EXPECT_EQ(1u, Notes().factoriesMade);
  EXPECT_EQ(1u, Notes().factoryReleases);
  EXPECT_EQ(1u, Notes().factoriesGone);
  ITestObject* object = static_cast<ITestObject*>(out);
  EXPECT_EQ(42u, object->Answer());
  EXPECT_EQ(yax_framework::kInUse, loader_->UnloadComponent(kOwn)) << "the object lives";
  EXPECT_EQ(0u, object->Release()) << "handed on as it is";
  EXPECT_TRUE(IsMapped(sound_)) << "nothing is unloaded by itself";
  EXPECT_EQ(yax_framework::kOk, loader_->UnloadComponent(kOwn));
  EXPECT_FALSE(IsMapped(sound_));
}

TEST_F(CYAXComponentsTest, DoNotGiveInterfacesTheyDoNotHave) {
  Register(kOwn, "sound");
  void* out = untouched_;
  EXPECT_EQ(yax_framework::kNoInterface, yax_->GetComponentInstance(kOwn, IID_IYAX, &out));
  EXPECT_EQ(nullptr, out);
  EXPECT_EQ(1u, Notes().factoryReleases);
  EXPECT_EQ(yax_framework::kOk, loader_->UnloadComponent(kOwn));
}

TEST_F(CYAXComponentsTest, ThatFailToCreateHaveTheirFactoryReleasedOnce) {
  Register(kOwn, "fails_to_create");
  void* out = untouched_;
  EXPECT_EQ(0xE0000042u, yax_->GetComponentInstance(kOwn, IID_ITestObject, &out));
  EXPECT_EQ(nullptr, out);
  EXPECT_EQ(1u, Notes().factoryReleases);
  EXPECT_EQ(0xE0000043u, loader_->LockComponent(kOwn, 1));
  EXPECT_EQ(2u, Notes().factoriesMade);
  EXPECT_EQ(2u, Notes().factoryReleases);
  EXPECT_EQ(2u, Notes().factoriesGone);
  EXPECT_EQ(yax_framework::kOk, loader_->UnloadComponent(kOwn));
}

TEST_F(CYAXComponentsTest, ThatSaySoWithoutAFactoryGiveNothing) {
  Register(kOwn, "no_factory");
  void* out = untouched_;
  EXPECT_EQ(yax_framework::kOk, yax_->GetComponentFactory(kOwn, &out));
  EXPECT_EQ(nullptr, out);
  out = untouched_;
  EXPECT_EQ(yax_framework::kUnspecified, yax_->GetComponentInstance(kOwn, IID_ITestObject, &out));
  EXPECT_EQ(nullptr, out);
  EXPECT_EQ(yax_framework::kUnspecified, loader_->LockComponent(kOwn, 1));
  EXPECT_EQ(yax_framework::kUnspecified, loader_->LockComponent(kOwn, 0));
  EXPECT_EQ(4u, Notes().entered);
}

TEST_F(CYAXComponentsTest, ThatFailWithAFactoryHaveItReleasedOnce) {
  Register(kOwn, "fails_with_factory");
  PrintedMessages printed;
  void* out = untouched_;
  EXPECT_EQ(0xE0000099u, yax_->GetComponentInstance(kOwn, IID_ITestObject, &out));
  EXPECT_EQ(out, untouched_);
  EXPECT_EQ(1u, Notes().factoryReleases);
  EXPECT_EQ(0xE0000099u, loader_->LockComponent(kOwn, 1));
  EXPECT_EQ(2u, Notes().factoryReleases);
  EXPECT_EQ(2u, Notes().factoriesGone);
  EXPECT_EQ("", printed.Take()) << "the component's own failure";
  ASSERT_EQ(0xE0000099u, yax_->GetComponentFactory(kOwn, &out));
  EXPECT_EQ(0u, static_cast<YAXComponentFactory*>(out)->Release()) << "the caller's";
  EXPECT_EQ(yax_framework::kOk, loader_->UnloadComponent(kOwn));
}

TEST_F(CYAXComponentsTest, WithoutAFactoryEntryStayLoaded) {
  Register(kOwn, "no_factory_entry");
  ExpectNoFactory(kOwn, 0xE000000F, kNoAddress);
  EXPECT_TRUE(IsMapped(ComponentFile("no_factory_entry")));
  EXPECT_EQ(yax_framework::kOk, loader_->UnloadComponent(kOwn));
  EXPECT_FALSE(IsMapped(ComponentFile("no_factory_entry")));
}

// ---- locks

TEST_F(CYAXComponentsTest, ThatAreLockedStayLoaded) {
  Register(kOwn, "sound");
  EXPECT_EQ(yax_framework::kOk, loader_->LockComponent(kOwn, 7)) << "loads it";
  EXPECT_EQ(7u, Notes().lastLock) << "handed on as it is";
  EXPECT_EQ(yax_framework::kOk, loader_->LockComponent(kOwn, 1));
  EXPECT_EQ(2u, Notes().factoryReleases);
  EXPECT_EQ(yax_framework::kInUse, loader_->UnloadComponent(kOwn));
  EXPECT_EQ(yax_framework::kOk, loader_->LockComponent(kOwn, 0));
  EXPECT_EQ(yax_framework::kInUse, loader_->UnloadComponent(kOwn));
  EXPECT_EQ(yax_framework::kOk, loader_->LockComponent(kOwn, 0));
  EXPECT_EQ(0u, Notes().lastLock);
  EXPECT_EQ(yax_framework::kOk, loader_->UnloadComponent(kOwn));
  EXPECT_FALSE(IsMapped(sound_));
}

TEST_F(CYAXComponentsTest, AreLoadedToTakeALockBack) {
  Register(kOwn, "sound");
  EXPECT_EQ(yax_framework::kUnspecified, loader_->LockComponent(kOwn, 0))
      << "the component's answer";
  EXPECT_TRUE(IsMapped(sound_));
  EXPECT_EQ(yax_framework::kOk, loader_->UnloadComponent(kOwn));
}

// ---- calls back

TEST_F(CYAXComponentsTest, CallTheFrameworkFromTheirEntry) {
  Register(kOwn, "calls_back");
  Register(kOther, "sound");
  Notes().other = kOther;
  void* out = nullptr;
  ASSERT_EQ(yax_framework::kOk, yax_->GetComponentInstance(kOwn, IID_ITestObject, &out));
  const unsigned int expected[] = {0, 0, 0, 0, 0xE000000B, 0};
  for (unsigned int i = 0; i < 6; ++i) EXPECT_EQ(Notes().answers[i], expected[i]) << i;
  EXPECT_EQ(1u, Notes().closed) << "the other one";
  EXPECT_TRUE(IsMapped(ComponentFile("calls_back"))) << "not while its code runs";
  static_cast<ITestObject*>(out)->Release();
  EXPECT_EQ(yax_framework::kOk, loader_->UnloadComponent(kOwn));
}

TEST_F(CYAXComponentsTest, CannotUnloadAnotherOfTheSameFileWhileTheyAreAsked) {
  const std::string file = ComponentFile("unloads_itself");
  const std::string link = folder_ / "link.so";
  ASSERT_EQ(0, symlink(file.c_str(), link.c_str()));
  Register(kOwn, "unloads_itself");
  Register(kOther, link, nullptr, YAX_COMPONENT_TYPE_BINARY);
  Notes().self = kOther;
  ASSERT_EQ(Load(kOther), Load(kOwn));
  EXPECT_EQ(yax_framework::kOk, loader_->UnloadComponent(kOwn));
  EXPECT_EQ(1u, Notes().asked);
  EXPECT_EQ(yax_framework::kInUse, Notes().answers[1]);
  EXPECT_FALSE(IsMapped(file));
}

// Whatever a component tells of itself.
TEST_F(CYAXComponentsTest, AreNotUnloadedWhileTheFrameworkCallsTheirFactory) {
  Register(kOwn, "leaves_early");
  Notes().self = kOwn;
  void* out = nullptr;
  ASSERT_EQ(yax_framework::kOk, yax_->GetComponentInstance(kOwn, IID_ITestObject, &out));
  static_cast<ITestObject*>(out)->Release();
  EXPECT_EQ(yax_framework::kOk, loader_->LockComponent(kOwn, 1));
  for (unsigned int call = 0; call < 3; ++call) {
    EXPECT_EQ(yax_framework::kInUse, Notes().answers[call]) << call;
  }
  EXPECT_EQ(yax_framework::kOk, loader_->UnloadComponent(kOwn));
  EXPECT_FALSE(IsMapped(ComponentFile("leaves_early")));
}

TEST_F(CYAXComponentsTest, AreNotLoadedByThemselvesWhileTheyAreClosed) {
  Register(kOwn, "comes_back");
  Notes().self = kOwn;
  Load(kOwn);
  EXPECT_EQ(yax_framework::kOk, loader_->UnloadComponent(kOwn));
  EXPECT_EQ(yax_framework::kCannotLoad, Notes().answers[0]);
  EXPECT_FALSE(IsMapped(ComponentFile("comes_back")));
  void* out = nullptr;
  ASSERT_EQ(yax_framework::kOk, yax_->GetComponentInstance(kOwn, IID_ITestObject, &out))
      << "loaded anew";
  static_cast<ITestObject*>(out)->Release();
  EXPECT_EQ(yax_framework::kOk, loader_->UnloadComponent(kOwn));
}

TEST_F(CYAXComponentsTest, CannotUnloadThemselvesWhileTheyAreAsked) {
  Register(kOwn, "unloads_itself");
  const std::string file = ComponentFile("unloads_itself");
  Notes().self = kOwn;
  Load(kOwn);
  Notes().refusal = 1;
  for (unsigned int time = 1; time <= 2; ++time) {
    EXPECT_EQ(yax_framework::kInUse, loader_->UnloadComponent(kOwn));
    EXPECT_EQ(Notes().asked, time) << "once each time";
    EXPECT_EQ(yax_framework::kInUse, Notes().answers[1]);
    EXPECT_TRUE(IsMapped(file));
  }
  Notes().refusal = 0;
  EXPECT_EQ(yax_framework::kOk, loader_->UnloadComponent(kOwn));
  EXPECT_EQ(3u, Notes().asked);
  EXPECT_EQ(yax_framework::kInUse, Notes().answers[1]);
  EXPECT_FALSE(IsMapped(file));
}

}  // namespace
