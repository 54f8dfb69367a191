// The information store that opens a top key for each operation.
#include "framework/YAX.h"
#include "framework/YAXStatus.h"
#include "tests/framework/InfoStoreRig.h"
#include "tests/framework/PrintedMessages.h"

using namespace std::string_literals;

namespace {

class YAXInfoManagerRCEMemoryTest : public InfoStoreTest<YAXInfoManagerRCEMemory> {
 protected:
  // A key of a client's, open.
  unsigned int OpenApp() {
    EXPECT_EQ(0u, registry.CreateKey(0, "app"));
    unsigned int handle = 0;
    EXPECT_EQ(0u, registry.OpenKey("app", &handle));
    return handle;
  }
  // How many handles are open, those of the store included.
  unsigned int OpenHandles() {
    unsigned int open = 0;
    for (unsigned int handle = 1; handle < 50; ++handle) {
      tamu::registry::KeyInfo info = {};
      if (registry.GetKeyInfo(handle, "", &info) != 22) ++open;
    }
    return open;
  }
};

TEST_F(YAXInfoManagerRCEMemoryTest, AnArrayEndsWithAFailureAtARecordWithoutIdentifier) {
  Components components(3);
  components[1].pGuid = nullptr;
  PrintedMessages messages;
  EXPECT_EQ(yax_framework::kBadArgument, store.RegisterAllComponent(components.Array()));
  EXPECT_EQ("3 Count = 1\n", messages.Take());
  EXPECT_EQ(0u, OpenHandles());
  EXPECT_TRUE(HasKey(KeyOf(GuidOf(1))));
  EXPECT_FALSE(HasKey(KeyOf(GuidOf(3))));
}

TEST_F(YAXInfoManagerRCEMemoryTest, CountsTheComponentsOfAnArray) {
  Components components(3);
  PrintedMessages messages;
  ASSERT_EQ(yax_framework::kOk, store.RegisterAllComponent(components.Array()));
  EXPECT_EQ("3 Count = 1\n3 Count = 2\n3 Count = 3\n", messages.Take());
}

TEST_F(YAXInfoManagerRCEMemoryTest, AComponentThatFailedIsNotCounted) {
  Components components(2);
  ASSERT_EQ(yax_framework::kOk, store.RegisterComponent(GuidOf(2), &components[1]));
  PrintedMessages messages;
  EXPECT_EQ(yax_framework::kRegistryFailed, store.RegisterAllComponent(components.Array()));
  EXPECT_EQ("3 Count = 1\n", messages.Take());
}

TEST_F(YAXInfoManagerRCEMemoryTest, AnArrayStoresFunctionsWithTheirSign) {
  YAX_COMPONENT_INFO_ST info = Player();
  YAX_COMPONENT_INFO_ST* array[] = {&info, nullptr};
  ASSERT_EQ(yax_framework::kOk, store.RegisterAllComponent(array));
  EXPECT_EQ("type 0: \x50\x34\x12\x80\xFF\xFF\xFF\xFF"s, Stored(kClsidKey, "FactoryFn"));
}

TEST_F(YAXInfoManagerRCEMemoryTest, SettingAFunctionWritesBothHalves) {
  YAX_COMPONENT_INFO_ST info = Player();
  ASSERT_EQ(yax_framework::kOk, store.RegisterComponent(kClsid, &info));
  info.FactoryFn = FunctionAt(0x00ABCDE0);
  ASSERT_EQ(yax_framework::kOk, store.SetComponentInfo(kClsid, &info));
  EXPECT_EQ("type 0: \xE0\xCD\xAB\0\0\0\0\0"s, Stored(kClsidKey, "FactoryFn"));
  info.FactoryFn = FunctionAt(0x80000010);
  ASSERT_EQ(yax_framework::kOk, store.SetComponentInfo(kClsid, &info));
  EXPECT_EQ("type 0: \x10\0\0\x80\xFF\xFF\xFF\xFF"s, Stored(kClsidKey, "FactoryFn"));
}

// Also when there is nothing to change.
TEST_F(YAXInfoManagerRCEMemoryTest, EveryChangeMakesTheComponentsKey) {
  const YAX_COMPONENT_INFO_ST info = Player();
  EXPECT_EQ(yax_framework::kRegistryFailed, store.SetComponentInfo(kClsid, &info));
  EXPECT_TRUE(HasKey("YAX_ROOT"));
  EXPECT_EQ(2u, DecodeTree(path).size()) << "the root and the key";
  EXPECT_EQ(0u, OpenHandles());
  const std::string before = FileContent(path);
  EXPECT_EQ(yax_framework::kRegistryFailed, store.SetComponentInfo(kClsid, &info));
  EXPECT_EQ(yax_framework::kRegistryFailed, store.UnregisterComponent(kClsid));
  EXPECT_EQ(FileContent(path), before) << "it is there";
}

TEST_F(YAXInfoManagerRCEMemoryTest, UnregisteringOnANewFileMakesTheComponentsKey) {
  EXPECT_EQ(yax_framework::kRegistryFailed, store.UnregisterComponent(kClsid));
  EXPECT_TRUE(HasKey("YAX_ROOT"));
  EXPECT_EQ(2u, DecodeTree(path).size()) << "the root and the key";
  EXPECT_EQ(0u, OpenHandles());
}

// ---- handles

TEST_F(YAXInfoManagerRCEMemoryTest, ClosesWhatItOpens) {
  OpenApp();
  const YAX_COMPONENT_INFO_ST player = Player();
  YAX_COMPONENT_INFO_ST info = {};
  YAX_SYSTEM_INFO_ST system = SystemOf(1, "");
  EXPECT_EQ(yax_framework::kRegistryFailed, store.GetSystemInfo(&system));
  EXPECT_EQ(1u, OpenHandles()) << "there is no such key";
  EXPECT_EQ(yax_framework::kOk, store.SetSystemInfo(&system));
  EXPECT_EQ(1u, OpenHandles()) << "the key is new";
  EXPECT_EQ(yax_framework::kOk, store.SetSystemInfo(&system));
  EXPECT_EQ(yax_framework::kOk, store.GetSystemInfo(&system));
  EXPECT_EQ(1u, store.IsSysSingleBinary());
  EXPECT_EQ(1u, OpenHandles());
  EXPECT_EQ(yax_framework::kOk, store.RegisterComponent(kClsid, &player));
  EXPECT_EQ(yax_framework::kRegistryFailed, store.RegisterComponent(kClsid, &player));
  EXPECT_EQ(1u, OpenHandles());
  EXPECT_EQ(yax_framework::kOk, store.SetComponentInfo(kClsid, &player));
  EXPECT_EQ(yax_framework::kOk, store.GetComponentInfo(kClsid, &info));
  EXPECT_EQ(yax_framework::kRegistryFailed, store.GetComponentInfo(GuidOf(1), &info));
  EXPECT_EQ(yax_framework::kOk, store.UnregisterComponent(kClsid));
  EXPECT_EQ(yax_framework::kRegistryFailed, store.UnregisterComponent(kClsid));
  EXPECT_EQ(1u, OpenHandles());
}

// A program that only asks never runs out of handles.
TEST_F(YAXInfoManagerRCEMemoryTest, ThousandsOfQuestionsNeedNoMoreHandlesThanOne) {
  const YAX_COMPONENT_INFO_ST player = Player();
  ASSERT_EQ(yax_framework::kOk, store.RegisterComponent(kClsid, &player));
  YAX_COMPONENT_TYPE_ENUM type = YAX_COMPONENT_TYPE_FUNCTION;
  for (int i = 0; i < 2000; ++i)
    ASSERT_EQ(yax_framework::kOk, store.GetComponentType(kClsid, &type));
  unsigned int handle = 0;
  ASSERT_EQ(0u, registry.OpenKey("", &handle));
  EXPECT_LT(handle, 50u) << "the table did not grow";
  EXPECT_EQ(1u, OpenHandles());
}

// What a client has open stays open, and writes to its own key.
TEST_F(YAXInfoManagerRCEMemoryTest, AClientsHandleSurvivesRegistering) {
  const unsigned int app = OpenApp();
  Components components(40);
  ASSERT_EQ(yax_framework::kOk, store.RegisterAllComponent(components.Array()));
  YAX_SYSTEM_INFO_ST system = SystemOf(1, "/lib");
  ASSERT_EQ(yax_framework::kOk, store.SetSystemInfo(&system));
  ASSERT_EQ(yax_framework::kOk, store.UnregisterComponent(GuidOf(7)));
  tamu::registry::ExactValue text(1, "mine\0"s);
  EXPECT_EQ(0u, registry.CreateValue(app, "", "name", &text));
  EXPECT_EQ(0u, registry.CreateKey(app, "below", 5));
  EXPECT_EQ("", StructureFindings(path));
  const std::map<std::string, DecodedKey> tree = DecodeTree(path);
  EXPECT_EQ(tree.size(), 1u + 2 + 39 + 2);
  EXPECT_EQ(5u, tree.at("app/below").defaultValue);
  ASSERT_EQ(1u, tree.at("app").values.size());
  EXPECT_EQ("mine\0"s, tree.at("app").values[0].bytes);
  EXPECT_EQ(0u, registry.CloseKey(app));
}

// Changes through the client's handle and the store's are one.
TEST_F(YAXInfoManagerRCEMemoryTest, AClientsHandleOnTheComponentsSeesTheNewOnes) {
  YAX_COMPONENT_INFO_ST info = Player();
  ASSERT_EQ(yax_framework::kOk, store.RegisterComponent(GuidOf(1), &info));
  unsigned int handle = 0;
  ASSERT_EQ(0u, registry.OpenKey("YAX_ROOT", &handle));
  ASSERT_EQ(yax_framework::kOk, store.RegisterComponent(kClsid, &info));
  tamu::registry::ReadValue value;
  EXPECT_EQ(0u, registry.GetValue(handle, kClsidText, "CompName", &value));
  EXPECT_STREQ(value.text(), "Player");
  tamu::registry::ExactValue other(1, "Other\0"s);
  EXPECT_EQ(0u, registry.SetValue(handle, kClsidText, "CompName", &other));
  EXPECT_EQ(yax_framework::kOk, store.GetComponentInfo(kClsid, &info));
  EXPECT_STREQ(info.CompName, "Other");
  EXPECT_EQ(yax_framework::kOk, store.UnregisterComponent(kClsid));
  EXPECT_EQ(2u, registry.GetValue(handle, kClsidText, "CompName", &value));
}

// ---- failures

TEST_F(YAXInfoManagerRCEMemoryTest, AFailingRegistryIsReportedByEveryOperation) {
  registry.Finalize();
  YAX_COMPONENT_INFO_ST info = Player();
  YAX_COMPONENT_INFO_ST* array[] = {&info, nullptr};
  YAX_SYSTEM_INFO_ST system = SystemOf(1, "");
  EXPECT_EQ(yax_framework::kRegistryFailed, store.SetSystemInfo(&system));
  EXPECT_EQ(yax_framework::kRegistryFailed, store.GetSystemInfo(&system));
  EXPECT_EQ(0u, store.IsSysSingleBinary());
  EXPECT_EQ(yax_framework::kRegistryFailed, store.RegisterAllComponent(array));
  EXPECT_EQ(yax_framework::kRegistryFailed, store.RegisterComponent(kClsid, &info));
  EXPECT_EQ(yax_framework::kRegistryFailed, store.UnregisterComponent(kClsid));
  EXPECT_EQ(yax_framework::kRegistryFailed, store.SetComponentInfo(kClsid, &info));
  EXPECT_EQ(yax_framework::kRegistryFailed, store.GetComponentInfo(kClsid, &info));
}

// Whoever may not create there.
TEST_F(YAXInfoManagerRCEMemoryTest, ATopKeyThatCannotBeMadeIsAFailure) {
  ASSERT_EQ(0u, registry.SetCurrentUserId(tamu::registry::kAdmin));
  ASSERT_EQ(0u, registry.SetKeyPermission(0, "", 0x11));
  ASSERT_EQ(0u, registry.SetCurrentUser("adminstrator"));
  const std::string before = FileContent(path);
  YAX_COMPONENT_INFO_ST info = Player();
  YAX_COMPONENT_INFO_ST* array[] = {&info, nullptr};
  YAX_SYSTEM_INFO_ST system = SystemOf(1, "");
  EXPECT_EQ(yax_framework::kRegistryFailed, store.SetSystemInfo(&system));
  EXPECT_EQ(yax_framework::kRegistryFailed, store.RegisterAllComponent(array));
  EXPECT_EQ(yax_framework::kRegistryFailed, store.RegisterComponent(kClsid, &info));
  EXPECT_EQ(0u, OpenHandles());
  EXPECT_EQ(FileContent(path), before);
}

// ---- several stores

TEST_F(YAXInfoManagerRCEMemoryTest, WorksOnWhenANewerStoreIsGone) {
  {
    YAXInfoManagerRCEMemory newer(&registry);
    YAX_SYSTEM_INFO_ST info = SystemOf(1, "/lib");
    EXPECT_EQ(yax_framework::kOk, newer.SetSystemInfo(&info));
  }
  YAX_SYSTEM_INFO_ST info = {};
  EXPECT_EQ(yax_framework::kOk, store.GetSystemInfo(&info));
  EXPECT_STREQ(info.BinDirectory, "/lib");
  EXPECT_EQ(yax_framework::kOk, store.SetSystemInfo(&info));
}

TEST_F(YAXInfoManagerRCEMemoryTest, BothKindsOfStoresReadTheSame) {
  YAXInfoManagerRCEFile file(&registry);
  YAX_COMPONENT_INFO_ST info = Player();
  ASSERT_EQ(yax_framework::kOk, file.RegisterComponent(kClsid, &info));
  info = {};
  EXPECT_EQ(yax_framework::kOk, store.GetComponentInfo(kClsid, &info));
  EXPECT_EQ(info.FactoryFn, Player().FactoryFn);
  ASSERT_EQ(yax_framework::kOk, store.RegisterComponent(GuidOf(1), &info));
  EXPECT_EQ(yax_framework::kOk, file.GetComponentInfo(GuidOf(1), &info));
  EXPECT_STREQ(info.CompName, "Player");
}

// ---- through the framework

TEST(FrameworkInfoStore, AComponentIsFoundByTheNextFramework) {
  TempDir folder;
  const std::string path = folder / "registry";
  for (int round = 0; round < 2; ++round) {
    ASSERT_EQ(yax_framework::kOk, CreateYAX(path.c_str()));
    void* view = nullptr;
    ASSERT_EQ(yax_framework::kOk, GetYAXInstance(IID_IYAXInfoManager, &view));
    auto* manager = static_cast<IYAXInfoManager*>(view);
    YAX_COMPONENT_INFO_ST info = Player();
    if (round == 0) {
      EXPECT_EQ(yax_framework::kOk, manager->RegisterComponent(kClsid, &info));
    } else {
      info = {};
      EXPECT_EQ(yax_framework::kOk, manager->GetComponentInfo(kClsid, &info));
      EXPECT_STREQ(info.CompName, "Player");
      EXPECT_STREQ(info.BinaryPath, "libplayer.so");
    }
    manager->Release();
    DestroyYAX();
  }
}

// What the framework answers is what its store does.
TEST(FrameworkInfoStore, EveryOperationIsTheStores) {
  TempDir folder;
  const std::string path = folder / "registry";
  ASSERT_EQ(yax_framework::kOk, CreateYAX(path.c_str()));
  void* view = nullptr;
  ASSERT_EQ(yax_framework::kOk, GetYAXInstance(IID_IYAXInfoManager, &view));
  auto* manager = static_cast<IYAXInfoManager*>(view);
  YAX_SYSTEM_INFO_ST system = SystemOf(3, "/lib");
  YAX_COMPONENT_INFO_ST info = Player();
  Components components(2);
  EXPECT_EQ(yax_framework::kBadArgument, manager->SetSystemInfo(nullptr));
  EXPECT_EQ(yax_framework::kRegistryFailed, manager->GetSystemInfo(&system));
  EXPECT_EQ(yax_framework::kOk, manager->SetSystemInfo(&system));
  EXPECT_EQ(yax_framework::kOk, manager->GetSystemInfo(&system));
  EXPECT_EQ(yax_framework::kBadArgument, manager->RegisterAllComponent(nullptr));
  EXPECT_EQ(yax_framework::kOk, manager->RegisterAllComponent(components.Array()));
  EXPECT_EQ(yax_framework::kOk, manager->RegisterComponent(kClsid, &info));
  EXPECT_EQ(yax_framework::kRegistryFailed, manager->RegisterComponent(kClsid, &info));
  info = ComponentOf("Changed", 0, 0x10, "");
  EXPECT_EQ(yax_framework::kOk, manager->SetComponentInfo(kClsid, &info));
  info = {};
  EXPECT_EQ(yax_framework::kOk, manager->GetComponentInfo(kClsid, &info));
  EXPECT_STREQ(info.CompName, "Changed");
  EXPECT_EQ(yax_framework::kOk, manager->UnregisterComponent(kClsid));
  EXPECT_EQ(yax_framework::kRegistryFailed, manager->GetComponentInfo(kClsid, &info));
  EXPECT_EQ("", StructureFindings(path));
  const std::map<std::string, DecodedKey> tree = DecodeTree(path);
  EXPECT_EQ(tree.size(), 1u + 2 + 2);
  ASSERT_EQ(2u, tree.at("YAX_SYSTEM").values.size());
  EXPECT_EQ(3u, tree.at("YAX_SYSTEM").values[0].number);
  manager->Release();
  DestroyYAX();
}

}  // namespace
