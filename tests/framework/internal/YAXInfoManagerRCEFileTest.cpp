// The information store that works without key handles.
#include "framework/YAXStatus.h"
#include "tests/framework/InfoStoreRig.h"
#include "tests/framework/PrintedMessages.h"

using namespace std::string_literals;

namespace {

class YAXInfoManagerRCEFileTest : public InfoStoreTest<YAXInfoManagerRCEFile> {};

TEST_F(YAXInfoManagerRCEFileTest, AnArrayEndsAtARecordWithoutIdentifier) {
  Components components(3);
  components[1].pGuid = nullptr;
  PrintedMessages messages;
  EXPECT_EQ(yax_framework::kOk, store.RegisterAllComponent(components.Array()));
  EXPECT_EQ("3 Index Count = 1\n", messages.Take());
  EXPECT_TRUE(HasKey(KeyOf(GuidOf(1))));
  EXPECT_FALSE(HasKey(KeyOf(GuidOf(3))));
}

TEST_F(YAXInfoManagerRCEFileTest, CountsTheComponentsOfAnArray) {
  Components components(3);
  PrintedMessages messages;
  ASSERT_EQ(yax_framework::kOk, store.RegisterAllComponent(components.Array()));
  EXPECT_EQ("3 Index Count = 1\n3 Index Count = 2\n3 Index Count = 3\n", messages.Take());
}

TEST_F(YAXInfoManagerRCEFileTest, AComponentThatFailedIsNotCounted) {
  Components components(2);
  ASSERT_EQ(yax_framework::kOk, store.RegisterComponent(GuidOf(2), &components[1]));
  PrintedMessages messages;
  EXPECT_EQ(yax_framework::kRegistryFailed, store.RegisterAllComponent(components.Array()));
  EXPECT_EQ("3 Index Count = 1\n", messages.Take());
}

// The sign is stored by the operations on one component alone.
TEST_F(YAXInfoManagerRCEFileTest, AnArrayStoresFunctionsWithUpperHalfZero) {
  YAX_COMPONENT_INFO_ST info = Player();
  YAX_COMPONENT_INFO_ST* array[] = {&info, nullptr};
  ASSERT_EQ(yax_framework::kOk, store.RegisterAllComponent(array));
  EXPECT_EQ("type 0: \x50\x34\x12\x80\0\0\0\0"s, Stored(kClsidKey, "FactoryFn"));
  EXPECT_EQ("type 0: \1\0\0\0\0\0\0\0"s, Stored(kClsidKey, "Type"));
  void* function = nullptr;
  EXPECT_EQ(yax_framework::kOk, store.GetComponentEntryFunc(kClsid, &function));
  EXPECT_EQ(function, reinterpret_cast<void*>(info.FactoryFn));
}

// Without a handle a number that is set keeps its upper half.
TEST_F(YAXInfoManagerRCEFileTest, SettingAFunctionWritesItsLowerHalf) {
  YAX_COMPONENT_INFO_ST info = Player();
  ASSERT_EQ(yax_framework::kOk, store.RegisterComponent(kClsid, &info));
  info.FactoryFn = FunctionAt(0x00ABCDE0);
  ASSERT_EQ(yax_framework::kOk, store.SetComponentInfo(kClsid, &info));
  EXPECT_EQ("type 0: \xE0\xCD\xAB\0\xFF\xFF\xFF\xFF"s, Stored(kClsidKey, "FactoryFn"));
  ASSERT_EQ(yax_framework::kOk, store.UnregisterComponent(kClsid));
  YAX_COMPONENT_INFO_ST* array[] = {&info, nullptr};
  ASSERT_EQ(yax_framework::kOk, store.RegisterAllComponent(array));
  info.FactoryFn = FunctionAt(0x80123450);
  ASSERT_EQ(yax_framework::kOk, store.SetComponentInfo(kClsid, &info));
  EXPECT_EQ("type 0: \x50\x34\x12\x80\0\0\0\0"s, Stored(kClsidKey, "FactoryFn"));
  void* function = nullptr;
  EXPECT_EQ(yax_framework::kOk, store.GetComponentEntryFunc(kClsid, &function));
  EXPECT_EQ(function, reinterpret_cast<void*>(info.FactoryFn));
}

TEST_F(YAXInfoManagerRCEFileTest, ChangingOrUnregisteringWhatIsNotRegisteredMakesNoKey) {
  const std::string before = FileContent(path);
  YAX_COMPONENT_INFO_ST info = Player();
  EXPECT_EQ(yax_framework::kRegistryFailed, store.SetComponentInfo(kClsid, &info));
  EXPECT_EQ(yax_framework::kRegistryFailed, store.UnregisterComponent(kClsid));
  EXPECT_EQ(FileContent(path), before);
}

// As every operation without a handle.
TEST_F(YAXInfoManagerRCEFileTest, ClosesTheHandlesOfOthers) {
  ASSERT_EQ(0u, registry.CreateKey(0, "app"));
  unsigned int handle = 0;
  ASSERT_EQ(0u, registry.OpenKey("app", &handle));
  EXPECT_EQ(0u, store.IsSysSingleBinary());
  EXPECT_EQ(22u, registry.CloseKey(handle));
}

TEST_F(YAXInfoManagerRCEFileTest, AFailingRegistryIsReportedByEveryOperation) {
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

}  // namespace
