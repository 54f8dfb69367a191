// The information store that opens a top key for each operation.
#include "framework/YAX.h"
#include "tests/framework/InfoStoreRig.h"
#include "tests/framework/PrintedMessages.h"

using namespace std::string_literals;

namespace {

class InfoStoreMemory : public InfoStoreTest<YAXInfoManagerRCEMemory> {
 protected:
  // A key of a client's, open.
  unsigned int OpenApp() {
    EXPECT_EQ(registry.CreateKey(0, "app"), 0u);
    unsigned int handle = 0;
    EXPECT_EQ(registry.OpenKey("app", &handle), 0u);
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

TEST_F(InfoStoreMemory, AnArrayEndsWithAFailureAtARecordWithoutIdentifier) {
  Components components(3);
  components[1].pGuid = nullptr;
  PrintedMessages messages;
  EXPECT_EQ(store.RegisterAllComponent(components.Array()), 0xE0000008);
  EXPECT_EQ(messages.Take(), "3 Count = 1\n");
  EXPECT_EQ(OpenHandles(), 0u);
  EXPECT_TRUE(HasKey(KeyOf(GuidOf(1))));
  EXPECT_FALSE(HasKey(KeyOf(GuidOf(3))));
}

TEST_F(InfoStoreMemory, CountsTheComponentsOfAnArray) {
  Components components(3);
  PrintedMessages messages;
  ASSERT_EQ(store.RegisterAllComponent(components.Array()), 0u);
  EXPECT_EQ(messages.Take(), "3 Count = 1\n3 Count = 2\n3 Count = 3\n");
}

TEST_F(InfoStoreMemory, AComponentThatFailedIsNotCounted) {
  Components components(2);
  ASSERT_EQ(store.RegisterComponent(GuidOf(2), &components[1]), 0u);
  PrintedMessages messages;
  EXPECT_EQ(store.RegisterAllComponent(components.Array()), 0xE000000D);
  EXPECT_EQ(messages.Take(), "3 Count = 1\n");
}

TEST_F(InfoStoreMemory, AnArrayStoresFunctionsWithTheirSign) {
  YAX_COMPONENT_INFO_ST info = Player();
  YAX_COMPONENT_INFO_ST* array[] = {&info, nullptr};
  ASSERT_EQ(store.RegisterAllComponent(array), 0u);
  EXPECT_EQ(Stored(kClsidKey, "FactoryFn"), "type 0: \x50\x34\x12\x80\xFF\xFF\xFF\xFF"s);
}

TEST_F(InfoStoreMemory, SettingAFunctionWritesBothHalves) {
  YAX_COMPONENT_INFO_ST info = Player();
  ASSERT_EQ(store.RegisterComponent(kClsid, &info), 0u);
  info.FactoryFn = FunctionAt(0x00ABCDE0);
  ASSERT_EQ(store.SetComponentInfo(kClsid, &info), 0u);
  EXPECT_EQ(Stored(kClsidKey, "FactoryFn"), "type 0: \xE0\xCD\xAB\0\0\0\0\0"s);
  info.FactoryFn = FunctionAt(0x80000010);
  ASSERT_EQ(store.SetComponentInfo(kClsid, &info), 0u);
  EXPECT_EQ(Stored(kClsidKey, "FactoryFn"), "type 0: \x10\0\0\x80\xFF\xFF\xFF\xFF"s);
}

// Also when there is nothing to change.
TEST_F(InfoStoreMemory, EveryChangeMakesTheComponentsKey) {
  const YAX_COMPONENT_INFO_ST info = Player();
  EXPECT_EQ(store.SetComponentInfo(kClsid, &info), 0xE000000D);
  EXPECT_TRUE(HasKey("YAX_ROOT"));
  EXPECT_EQ(DecodeTree(path).size(), 2u) << "the root and the key";
  EXPECT_EQ(OpenHandles(), 0u);
  const std::string before = FileContent(path);
  EXPECT_EQ(store.SetComponentInfo(kClsid, &info), 0xE000000D);
  EXPECT_EQ(store.UnregisterComponent(kClsid), 0xE000000D);
  EXPECT_EQ(FileContent(path), before) << "it is there";
}

TEST_F(InfoStoreMemory, UnregisteringOnANewFileMakesTheComponentsKey) {
  EXPECT_EQ(store.UnregisterComponent(kClsid), 0xE000000D);
  EXPECT_TRUE(HasKey("YAX_ROOT"));
  EXPECT_EQ(DecodeTree(path).size(), 2u) << "the root and the key";
  EXPECT_EQ(OpenHandles(), 0u);
}

// ---- handles

TEST_F(InfoStoreMemory, ClosesWhatItOpens) {
  OpenApp();
  const YAX_COMPONENT_INFO_ST player = Player();
  YAX_COMPONENT_INFO_ST info = {};
  YAX_SYSTEM_INFO_ST system = SystemOf(1, "");
  EXPECT_EQ(store.GetSystemInfo(&system), 0xE000000D);
  EXPECT_EQ(OpenHandles(), 1u) << "there is no such key";
  EXPECT_EQ(store.SetSystemInfo(&system), 0u);
  EXPECT_EQ(OpenHandles(), 1u) << "the key is new";
  EXPECT_EQ(store.SetSystemInfo(&system), 0u);
  EXPECT_EQ(store.GetSystemInfo(&system), 0u);
  EXPECT_EQ(store.IsSysSingleBinary(), 1u);
  EXPECT_EQ(OpenHandles(), 1u);
  EXPECT_EQ(store.RegisterComponent(kClsid, &player), 0u);
  EXPECT_EQ(store.RegisterComponent(kClsid, &player), 0xE000000D);
  EXPECT_EQ(OpenHandles(), 1u);
  EXPECT_EQ(store.SetComponentInfo(kClsid, &player), 0u);
  EXPECT_EQ(store.GetComponentInfo(kClsid, &info), 0u);
  EXPECT_EQ(store.GetComponentInfo(GuidOf(1), &info), 0xE000000D);
  EXPECT_EQ(store.UnregisterComponent(kClsid), 0u);
  EXPECT_EQ(store.UnregisterComponent(kClsid), 0xE000000D);
  EXPECT_EQ(OpenHandles(), 1u);
}

// A program that only asks never runs out of handles.
TEST_F(InfoStoreMemory, ThousandsOfQuestionsNeedNoMoreHandlesThanOne) {
  const YAX_COMPONENT_INFO_ST player = Player();
  ASSERT_EQ(store.RegisterComponent(kClsid, &player), 0u);
  YAX_COMPONENT_TYPE_ENUM type = YAX_COMPONENT_TYPE_FUNCTION;
  for (int i = 0; i < 2000; ++i) ASSERT_EQ(store.GetComponentType(kClsid, &type), 0u);
  unsigned int handle = 0;
  ASSERT_EQ(registry.OpenKey("", &handle), 0u);
  EXPECT_LT(handle, 50u) << "the table did not grow";
  EXPECT_EQ(OpenHandles(), 1u);
}

// What a client has open stays open, and writes to its own key.
TEST_F(InfoStoreMemory, AClientsHandleSurvivesRegistering) {
  const unsigned int app = OpenApp();
  Components components(40);
  ASSERT_EQ(store.RegisterAllComponent(components.Array()), 0u);
  YAX_SYSTEM_INFO_ST system = SystemOf(1, "/lib");
  ASSERT_EQ(store.SetSystemInfo(&system), 0u);
  ASSERT_EQ(store.UnregisterComponent(GuidOf(7)), 0u);
  tamu::registry::ExactValue text(1, "mine\0"s);
  EXPECT_EQ(registry.CreateValue(app, "", "name", &text), 0u);
  EXPECT_EQ(registry.CreateKey(app, "below", 5), 0u);
  EXPECT_EQ(StructureFindings(path), "");
  const std::map<std::string, DecodedKey> tree = DecodeTree(path);
  EXPECT_EQ(tree.size(), 1u + 2 + 39 + 2);
  EXPECT_EQ(tree.at("app/below").defaultValue, 5u);
  ASSERT_EQ(tree.at("app").values.size(), 1u);
  EXPECT_EQ(tree.at("app").values[0].bytes, "mine\0"s);
  EXPECT_EQ(registry.CloseKey(app), 0u);
}

// Changes through the client's handle and the store's are one.
TEST_F(InfoStoreMemory, AClientsHandleOnTheComponentsSeesTheNewOnes) {
  YAX_COMPONENT_INFO_ST info = Player();
  ASSERT_EQ(store.RegisterComponent(GuidOf(1), &info), 0u);
  unsigned int handle = 0;
  ASSERT_EQ(registry.OpenKey("YAX_ROOT", &handle), 0u);
  ASSERT_EQ(store.RegisterComponent(kClsid, &info), 0u);
  tamu::registry::ReadValue value;
  EXPECT_EQ(registry.GetValue(handle, kClsidText, "CompName", &value), 0u);
  EXPECT_STREQ(value.text(), "Player");
  tamu::registry::ExactValue other(1, "Other\0"s);
  EXPECT_EQ(registry.SetValue(handle, kClsidText, "CompName", &other), 0u);
  EXPECT_EQ(store.GetComponentInfo(kClsid, &info), 0u);
  EXPECT_STREQ(info.CompName, "Other");
  EXPECT_EQ(store.UnregisterComponent(kClsid), 0u);
  EXPECT_EQ(registry.GetValue(handle, kClsidText, "CompName", &value), 2u);
}

// ---- failures

TEST_F(InfoStoreMemory, AFailingRegistryIsReportedByEveryOperation) {
  registry.Finalize();
  YAX_COMPONENT_INFO_ST info = Player();
  YAX_COMPONENT_INFO_ST* array[] = {&info, nullptr};
  YAX_SYSTEM_INFO_ST system = SystemOf(1, "");
  EXPECT_EQ(store.SetSystemInfo(&system), 0xE000000D);
  EXPECT_EQ(store.GetSystemInfo(&system), 0xE000000D);
  EXPECT_EQ(store.IsSysSingleBinary(), 0u);
  EXPECT_EQ(store.RegisterAllComponent(array), 0xE000000D);
  EXPECT_EQ(store.RegisterComponent(kClsid, &info), 0xE000000D);
  EXPECT_EQ(store.UnregisterComponent(kClsid), 0xE000000D);
  EXPECT_EQ(store.SetComponentInfo(kClsid, &info), 0xE000000D);
  EXPECT_EQ(store.GetComponentInfo(kClsid, &info), 0xE000000D);
}

// Whoever may not create there.
TEST_F(InfoStoreMemory, ATopKeyThatCannotBeMadeIsAFailure) {
  ASSERT_EQ(registry.SetCurrentUserId(tamu::registry::kAdmin), 0u);
  ASSERT_EQ(registry.SetKeyPermission(0, "", 0x11), 0u);
  ASSERT_EQ(registry.SetCurrentUser("adminstrator"), 0u);
  const std::string before = FileContent(path);
  YAX_COMPONENT_INFO_ST info = Player();
  YAX_COMPONENT_INFO_ST* array[] = {&info, nullptr};
  YAX_SYSTEM_INFO_ST system = SystemOf(1, "");
  EXPECT_EQ(store.SetSystemInfo(&system), 0xE000000D);
  EXPECT_EQ(store.RegisterAllComponent(array), 0xE000000D);
  EXPECT_EQ(store.RegisterComponent(kClsid, &info), 0xE000000D);
  EXPECT_EQ(OpenHandles(), 0u);
  EXPECT_EQ(FileContent(path), before);
}

// ---- several stores

TEST_F(InfoStoreMemory, WorksOnWhenANewerStoreIsGone) {
  {
    YAXInfoManagerRCEMemory newer(&registry);
    YAX_SYSTEM_INFO_ST info = SystemOf(1, "/lib");
    EXPECT_EQ(newer.SetSystemInfo(&info), 0u);
  }
  YAX_SYSTEM_INFO_ST info = {};
  EXPECT_EQ(store.GetSystemInfo(&info), 0u);
  EXPECT_STREQ(info.BinDirectory, "/lib");
  EXPECT_EQ(store.SetSystemInfo(&info), 0u);
}

TEST_F(InfoStoreMemory, BothKindsOfStoresReadTheSame) {
  YAXInfoManagerRCEFile file(&registry);
  YAX_COMPONENT_INFO_ST info = Player();
  ASSERT_EQ(file.RegisterComponent(kClsid, &info), 0u);
  info = {};
  EXPECT_EQ(store.GetComponentInfo(kClsid, &info), 0u);
  EXPECT_EQ(info.FactoryFn, Player().FactoryFn);
  ASSERT_EQ(store.RegisterComponent(GuidOf(1), &info), 0u);
  EXPECT_EQ(file.GetComponentInfo(GuidOf(1), &info), 0u);
  EXPECT_STREQ(info.CompName, "Player");
}

// ---- through the framework

TEST(FrameworkInfoStore, AComponentIsFoundByTheNextFramework) {
  TempDir folder;
  const std::string path = folder / "registry";
  for (int round = 0; round < 2; ++round) {
    ASSERT_EQ(CreateYAX(path.c_str()), 0u);
    void* view = nullptr;
    ASSERT_EQ(GetYAXInstance(IID_IYAXInfoManager, &view), 0u);
    auto* manager = static_cast<IYAXInfoManager*>(view);
    YAX_COMPONENT_INFO_ST info = Player();
    if (round == 0) {
      EXPECT_EQ(manager->RegisterComponent(kClsid, &info), 0u);
    } else {
      info = {};
      EXPECT_EQ(manager->GetComponentInfo(kClsid, &info), 0u);
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
  ASSERT_EQ(CreateYAX(path.c_str()), 0u);
  void* view = nullptr;
  ASSERT_EQ(GetYAXInstance(IID_IYAXInfoManager, &view), 0u);
  auto* manager = static_cast<IYAXInfoManager*>(view);
  YAX_SYSTEM_INFO_ST system = SystemOf(3, "/lib");
  YAX_COMPONENT_INFO_ST info = Player();
  Components components(2);
  EXPECT_EQ(manager->SetSystemInfo(nullptr), 0xE0000008);
  EXPECT_EQ(manager->GetSystemInfo(&system), 0xE000000D);
  EXPECT_EQ(manager->SetSystemInfo(&system), 0u);
  EXPECT_EQ(manager->GetSystemInfo(&system), 0u);
  EXPECT_EQ(manager->RegisterAllComponent(nullptr), 0xE0000008);
  EXPECT_EQ(manager->RegisterAllComponent(components.Array()), 0u);
  EXPECT_EQ(manager->RegisterComponent(kClsid, &info), 0u);
  EXPECT_EQ(manager->RegisterComponent(kClsid, &info), 0xE000000D);
  info = ComponentOf("Changed", 0, 0x10, "");
  EXPECT_EQ(manager->SetComponentInfo(kClsid, &info), 0u);
  info = {};
  EXPECT_EQ(manager->GetComponentInfo(kClsid, &info), 0u);
  EXPECT_STREQ(info.CompName, "Changed");
  EXPECT_EQ(manager->UnregisterComponent(kClsid), 0u);
  EXPECT_EQ(manager->GetComponentInfo(kClsid, &info), 0xE000000D);
  EXPECT_EQ(StructureFindings(path), "");
  const std::map<std::string, DecodedKey> tree = DecodeTree(path);
  EXPECT_EQ(tree.size(), 1u + 2 + 2);
  ASSERT_EQ(tree.at("YAX_SYSTEM").values.size(), 2u);
  EXPECT_EQ(tree.at("YAX_SYSTEM").values[0].number, 3u);
  manager->Release();
  DestroyYAX();
}

}  // namespace
