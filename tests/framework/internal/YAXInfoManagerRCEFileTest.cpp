// The information store that works without key handles.
#include "tests/framework/InfoStoreRig.h"
#include "tests/framework/PrintedMessages.h"

using namespace std::string_literals;

namespace {

class InfoStoreFile : public InfoStoreTest<YAXInfoManagerRCEFile> {};

TEST_F(InfoStoreFile, AnArrayEndsAtARecordWithoutIdentifier) {
  Components components(3);
  components[1].pGuid = nullptr;
  PrintedMessages messages;
  EXPECT_EQ(store.RegisterAllComponent(components.Array()), 0u);
  EXPECT_EQ(messages.Take(), "3 Index Count = 1\n");
  EXPECT_TRUE(HasKey(KeyOf(GuidOf(1))));
  EXPECT_FALSE(HasKey(KeyOf(GuidOf(3))));
}

TEST_F(InfoStoreFile, CountsTheComponentsOfAnArray) {
  Components components(3);
  PrintedMessages messages;
  ASSERT_EQ(store.RegisterAllComponent(components.Array()), 0u);
  EXPECT_EQ(messages.Take(), "3 Index Count = 1\n3 Index Count = 2\n3 Index Count = 3\n");
}

TEST_F(InfoStoreFile, AComponentThatFailedIsNotCounted) {
  Components components(2);
  ASSERT_EQ(store.RegisterComponent(GuidOf(2), &components[1]), 0u);
  PrintedMessages messages;
  EXPECT_EQ(store.RegisterAllComponent(components.Array()), 0xE000000D);
  EXPECT_EQ(messages.Take(), "3 Index Count = 1\n");
}

// The sign is stored by the operations on one component alone.
TEST_F(InfoStoreFile, AnArrayStoresFunctionsWithUpperHalfZero) {
  YAX_COMPONENT_INFO_ST info = Player();
  YAX_COMPONENT_INFO_ST* array[] = {&info, nullptr};
  ASSERT_EQ(store.RegisterAllComponent(array), 0u);
  EXPECT_EQ(Stored(kClsidKey, "FactoryFn"), "type 0: \x50\x34\x12\x80\0\0\0\0"s);
  EXPECT_EQ(Stored(kClsidKey, "Type"), "type 0: \1\0\0\0\0\0\0\0"s);
  void* function = nullptr;
  EXPECT_EQ(store.GetComponentEntryFunc(kClsid, &function), 0u);
  EXPECT_EQ(function, reinterpret_cast<void*>(info.FactoryFn));
}

// Without a handle a number that is set keeps its upper half.
TEST_F(InfoStoreFile, SettingAFunctionWritesItsLowerHalf) {
  YAX_COMPONENT_INFO_ST info = Player();
  ASSERT_EQ(store.RegisterComponent(kClsid, &info), 0u);
  info.FactoryFn = FunctionAt(0x00ABCDE0);
  ASSERT_EQ(store.SetComponentInfo(kClsid, &info), 0u);
  EXPECT_EQ(Stored(kClsidKey, "FactoryFn"), "type 0: \xE0\xCD\xAB\0\xFF\xFF\xFF\xFF"s);
  ASSERT_EQ(store.UnregisterComponent(kClsid), 0u);
  YAX_COMPONENT_INFO_ST* array[] = {&info, nullptr};
  ASSERT_EQ(store.RegisterAllComponent(array), 0u);
  info.FactoryFn = FunctionAt(0x80123450);
  ASSERT_EQ(store.SetComponentInfo(kClsid, &info), 0u);
  EXPECT_EQ(Stored(kClsidKey, "FactoryFn"), "type 0: \x50\x34\x12\x80\0\0\0\0"s);
  void* function = nullptr;
  EXPECT_EQ(store.GetComponentEntryFunc(kClsid, &function), 0u);
  EXPECT_EQ(function, reinterpret_cast<void*>(info.FactoryFn));
}

TEST_F(InfoStoreFile, ChangingOrUnregisteringWhatIsNotRegisteredMakesNoKey) {
  const std::string before = FileContent(path);
  YAX_COMPONENT_INFO_ST info = Player();
  EXPECT_EQ(store.SetComponentInfo(kClsid, &info), 0xE000000D);
  EXPECT_EQ(store.UnregisterComponent(kClsid), 0xE000000D);
  EXPECT_EQ(FileContent(path), before);
}

// As every operation without a handle.
TEST_F(InfoStoreFile, ClosesTheHandlesOfOthers) {
  ASSERT_EQ(registry.CreateKey(0, "app"), 0u);
  unsigned int handle = 0;
  ASSERT_EQ(registry.OpenKey("app", &handle), 0u);
  EXPECT_EQ(store.IsSysSingleBinary(), 0u);
  EXPECT_EQ(registry.CloseKey(handle), 22u);
}

TEST_F(InfoStoreFile, AFailingRegistryIsReportedByEveryOperation) {
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

}  // namespace
