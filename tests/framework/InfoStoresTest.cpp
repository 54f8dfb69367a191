// What both information stores do that keep what they know in the registry.
#include "tests/framework/InfoStoreRig.h"
#include "tests/framework/PrintedMessages.h"

using namespace std::string_literals;

namespace {

template <class Store>
class InfoStores : public InfoStoreTest<Store> {};
TYPED_TEST_SUITE(InfoStores, BothStores, StoreNames);

// ---- null pointers

TYPED_TEST(InfoStores, NullPointersAreRefused) {
  YAXInfoManager& manager = this->store;
  const std::string before = FileContent(this->path);
  EXPECT_EQ(manager.SetSystemInfo(nullptr), 0xE0000008);
  EXPECT_EQ(manager.GetSystemInfo(nullptr), 0xE0000008);
  EXPECT_EQ(manager.RegisterAllComponent(nullptr), 0xE0000008);
  EXPECT_EQ(manager.RegisterComponent(kClsid, nullptr), 0xE0000008);
  EXPECT_EQ(manager.SetComponentInfo(kClsid, nullptr), 0xE0000008);
  EXPECT_EQ(manager.GetComponentInfo(kClsid, nullptr), 0xE0000008);
  EXPECT_EQ(manager.GetComponentType(kClsid, nullptr), 0xE0000008);
  EXPECT_EQ(manager.GetComponentEntryFunc(kClsid, nullptr), 0xE0000008);
  EXPECT_EQ(manager.GetComponentBinPath(kClsid, nullptr), 0xE0000008);
  EXPECT_EQ(FileContent(this->path), before);
}

// ---- a registry without anything in it

// Nothing is created by asking.
TYPED_TEST(InfoStores, ReadingAFreshRegistryChangesNoByte) {
  YAXInfoManager& manager = this->store;
  const std::string before = FileContent(this->path);
  YAX_SYSTEM_INFO_ST system = SystemOf(9, "kept");
  EXPECT_EQ(manager.GetSystemInfo(&system), 0xE000000D);
  EXPECT_EQ(system.isSingleBin, 9u);
  EXPECT_STREQ(system.BinDirectory, "kept");
  EXPECT_EQ(manager.IsSysSingleBinary(), 0u);
  YAX_COMPONENT_INFO_ST info = Player();
  EXPECT_EQ(manager.GetComponentInfo(kClsid, &info), 0xE000000D);
  YAX_COMPONENT_TYPE_ENUM type = YAX_COMPONENT_TYPE_BINARY;
  EXPECT_EQ(manager.GetComponentType(kClsid, &type), 0xE000000D);
  void* function = &info;
  EXPECT_EQ(manager.GetComponentEntryFunc(kClsid, &function), 0xE000000D);
  char text[kYAXTextSize] = "kept";
  EXPECT_EQ(manager.GetComponentBinPath(kClsid, text), 0xE000000D);
  EXPECT_STREQ(text, "kept");
  EXPECT_EQ(FileContent(this->path), before);
}

TYPED_TEST(InfoStores, AComponentThatIsNotRegisteredIsAFailureOfTheRegistry) {
  YAXInfoManager& manager = this->store;
  YAX_COMPONENT_INFO_ST info = Player();
  ASSERT_EQ(manager.RegisterComponent(kClsid, &info), 0u);
  const std::string before = FileContent(this->path);
  const YAX_GUID_ST other = GuidOf(0xB);
  YAX_COMPONENT_TYPE_ENUM type = YAX_COMPONENT_TYPE_FUNCTION;
  void* function = nullptr;
  char text[kYAXTextSize];
  EXPECT_EQ(manager.GetComponentInfo(other, &info), 0xE000000D);
  EXPECT_EQ(manager.GetComponentType(other, &type), 0xE000000D);
  EXPECT_EQ(manager.GetComponentEntryFunc(other, &function), 0xE000000D);
  EXPECT_EQ(manager.GetComponentBinPath(other, text), 0xE000000D);
  EXPECT_EQ(manager.SetComponentInfo(other, &info), 0xE000000D);
  EXPECT_EQ(manager.UnregisterComponent(other), 0xE000000D);
  EXPECT_EQ(FileContent(this->path), before);
}

// ---- what is read

TYPED_TEST(InfoStores, AComponentIsReadBackWhateverItsType) {
  for (unsigned int type : {0u, 1u, 2u}) {
    const YAX_GUID_ST guid = GuidOf(100 + type);
    const YAX_COMPONENT_INFO_ST written = ComponentOf("name", type, 0x1230 + type, "/lib/x.so");
    ASSERT_EQ(this->store.RegisterComponent(guid, &written), 0u);
    YAX_COMPONENT_INFO_ST info = Player();
    info.Reserved = 5;
    EXPECT_EQ(this->store.GetComponentInfo(guid, &info), 0u);
    EXPECT_STREQ(info.CompName, "name");
    EXPECT_EQ(info.Type, type);
    EXPECT_EQ(info.FactoryFn, written.FactoryFn);
    EXPECT_STREQ(info.BinaryPath, "/lib/x.so");
    EXPECT_EQ(info.pGuid, &kClsid) << "the caller's";
    EXPECT_EQ(info.Reserved, 5u) << "the caller's";
    YAX_COMPONENT_TYPE_ENUM read = YAX_COMPONENT_TYPE_BINARY;
    EXPECT_EQ(this->store.GetComponentType(guid, &read), 0u);
    EXPECT_EQ(read, type);
    void* function = nullptr;
    EXPECT_EQ(this->store.GetComponentEntryFunc(guid, &function), 0u);
    EXPECT_EQ(function, reinterpret_cast<void*>(written.FactoryFn));
    char binary[kYAXTextSize] = "";
    EXPECT_EQ(this->store.GetComponentBinPath(guid, binary), 0u);
    EXPECT_STREQ(binary, "/lib/x.so");
  }
}

TYPED_TEST(InfoStores, WhatIsWrittenIsFoundByTheNextProgram) {
  YAX_COMPONENT_INFO_ST info = Player();
  YAX_SYSTEM_INFO_ST system = SystemOf(1, "/bin");
  ASSERT_EQ(this->store.RegisterComponent(kClsid, &info), 0u);
  ASSERT_EQ(this->store.SetSystemInfo(&system), 0u);
  this->Reopen();
  info = {};
  system = {};
  EXPECT_EQ(this->store.GetComponentInfo(kClsid, &info), 0u);
  EXPECT_STREQ(info.CompName, "Player");
  EXPECT_EQ(this->store.GetSystemInfo(&system), 0u);
  EXPECT_STREQ(system.BinDirectory, "/bin");
  EXPECT_EQ(system.isSingleBin, 1u);
}

TYPED_TEST(InfoStores, AComponentWithoutFunctionHasNoEntry) {
  YAX_COMPONENT_INFO_ST info = Player();
  info.FactoryFn = nullptr;
  ASSERT_EQ(this->store.RegisterComponent(kClsid, &info), 0u);
  void* function = &info;
  EXPECT_EQ(this->store.GetComponentEntryFunc(kClsid, &function), 0xE000000F);
  EXPECT_EQ(function, nullptr);
}

// The address of an earlier run of the program is none of this one's.
// Where addresses are longer than what is stored of them; else it is the address.
TYPED_TEST(InfoStores, AFunctionThatThisProcessDidNotRegisterIsNone) {
  const bool isWhole = sizeof(void*) == 4;
  void* const expected = isWhole ? reinterpret_cast<void*>(0x54637261) : nullptr;
  YAX_COMPONENT_INFO_ST info = Player();
  ASSERT_EQ(this->store.RegisterComponent(kClsid, &info), 0u);
  this->Put(kClsidKey, "FactoryFn", 0, "\x61\x72\x63\x54\0\0\0\0"s);
  void* function = &info;
  EXPECT_EQ(this->store.GetComponentEntryFunc(kClsid, &function), isWhole ? 0 : 0xE000000F);
  EXPECT_EQ(function, expected);
  EXPECT_EQ(this->store.GetComponentInfo(kClsid, &info), 0u);
  EXPECT_EQ(reinterpret_cast<void*>(info.FactoryFn), expected);
  EXPECT_STREQ(info.BinaryPath, "libplayer.so") << "what comes behind it is read all the same";
}

// ---- registering and changing

TYPED_TEST(InfoStores, RegisteringTwiceFailsAndLeavesTheFirst) {
  const YAX_COMPONENT_INFO_ST first = Player();
  ASSERT_EQ(this->store.RegisterComponent(kClsid, &first), 0u);
  const std::string before = FileContent(this->path);
  const YAX_COMPONENT_INFO_ST second = ComponentOf("Second", 0, 0x10, "second.so");
  EXPECT_EQ(this->store.RegisterComponent(kClsid, &second), 0xE000000D);
  YAX_COMPONENT_INFO_ST again = ComponentOf("Third", 0, 0x20, "third.so", &kClsid);
  YAX_COMPONENT_INFO_ST* array[] = {&again, nullptr};
  EXPECT_EQ(this->store.RegisterAllComponent(array), 0xE000000D);
  EXPECT_EQ(FileContent(this->path), before);
  EXPECT_EQ(CountSlots(this->path).keys.used, 3u);
}

TYPED_TEST(InfoStores, SettingAComponentChangesItsFourValues) {
  const YAX_COMPONENT_INFO_ST first = Player();
  ASSERT_EQ(this->store.RegisterComponent(kClsid, &first), 0u);
  const YAX_COMPONENT_INFO_ST second =
      ComponentOf("A rather longer name", 0, 0x10, std::string(200, 'p').c_str());
  EXPECT_EQ(this->store.SetComponentInfo(kClsid, &second), 0u);
  YAX_COMPONENT_INFO_ST info = {};
  EXPECT_EQ(this->store.GetComponentInfo(kClsid, &info), 0u);
  EXPECT_STREQ(info.CompName, second.CompName);
  EXPECT_EQ(info.Type, 0u);
  EXPECT_EQ(info.FactoryFn, second.FactoryFn);
  EXPECT_STREQ(info.BinaryPath, second.BinaryPath);
  EXPECT_EQ(DecodeTree(this->path).at(kClsidKey).values.size(), 4u);
}

TYPED_TEST(InfoStores, ADeletedComponentIsGoneAndMayComeBack) {
  YAX_COMPONENT_INFO_ST info = Player();
  ASSERT_EQ(this->store.RegisterComponent(kClsid, &info), 0u);
  EXPECT_EQ(this->store.UnregisterComponent(kClsid), 0u);
  EXPECT_FALSE(this->HasKey(kClsidKey));
  EXPECT_TRUE(this->HasKey("YAX_ROOT"));
  EXPECT_EQ(this->store.GetComponentInfo(kClsid, &info), 0xE000000D);
  EXPECT_EQ(this->store.UnregisterComponent(kClsid), 0xE000000D);
  const YAX_COMPONENT_INFO_ST second = ComponentOf("Second", 0, 0x10, "second.so");
  EXPECT_EQ(this->store.RegisterComponent(kClsid, &second), 0u);
  EXPECT_EQ(this->store.GetComponentInfo(kClsid, &info), 0u);
  EXPECT_STREQ(info.CompName, "Second");
}

TYPED_TEST(InfoStores, AnArrayMayHoldMoreThanATableDoes) {
  Components components(300);
  ASSERT_EQ(this->store.RegisterAllComponent(components.Array()), 0u);
  EXPECT_EQ(DecodeTree(this->path).size(), 2u + 300u);
  for (unsigned int number : {1u, 256u, 257u, 300u}) {
    YAX_COMPONENT_INFO_ST info = {};
    EXPECT_EQ(this->store.GetComponentInfo(GuidOf(number), &info), 0u);
    EXPECT_STREQ(info.CompName, ("c" + std::to_string(number)).c_str());
    EXPECT_EQ(info.FactoryFn, FunctionAt(16 * number));
  }
}

TYPED_TEST(InfoStores, AnEmptyArrayMakesTheTopKeyAlone) {
  YAX_COMPONENT_INFO_ST* none[] = {nullptr};
  PrintedMessages messages;
  EXPECT_EQ(this->store.RegisterAllComponent(none), 0u);
  EXPECT_EQ(messages.Take(), "");
  EXPECT_EQ(DecodeTree(this->path).size(), 2u);
  EXPECT_TRUE(this->HasKey("YAX_ROOT"));
  EXPECT_EQ(this->store.RegisterAllComponent(none), 0u) << "it may be there";
}

TYPED_TEST(InfoStores, AnArrayEndsAtTheFirstComponentThatExists) {
  Components components(3);
  ASSERT_EQ(this->store.RegisterComponent(GuidOf(2), &components[1]), 0u);
  EXPECT_EQ(this->store.RegisterAllComponent(components.Array()), 0xE000000D);
  EXPECT_TRUE(this->HasKey(KeyOf(GuidOf(1)))) << "what came before stays";
  EXPECT_FALSE(this->HasKey(KeyOf(GuidOf(3))));
  YAX_COMPONENT_INFO_ST info = {};
  EXPECT_EQ(this->store.GetComponentInfo(GuidOf(1), &info), 0u);
}

// The table in memory is not used.
TYPED_TEST(InfoStores, LookingUpFindsNothing) {
  Components components(2);
  ASSERT_EQ(this->store.RegisterAllComponent(components.Array()), 0u);
  unsigned int index = 9;
  EXPECT_EQ(this->store.LookupComponent(GuidOf(1), &index), 0xE0000004);
  EXPECT_EQ(index, 0u);
}

// ---- the system information

TYPED_TEST(InfoStores, TheSystemInformationIsMadeOnceAndChangedThen) {
  YAX_SYSTEM_INFO_ST info = SystemOf(1, "/usr/lib");
  ASSERT_EQ(this->store.SetSystemInfo(&info), 0u);
  EXPECT_EQ(this->store.IsSysSingleBinary(), 1u);
  info = SystemOf(7, "/opt");
  ASSERT_EQ(this->store.SetSystemInfo(&info), 0u);
  EXPECT_EQ(this->store.IsSysSingleBinary(), 7u) << "as it is stored";
  EXPECT_EQ(DecodeTree(this->path).at("YAX_SYSTEM").values.size(), 2u);
  info = {};
  EXPECT_EQ(this->store.GetSystemInfo(&info), 0u);
  EXPECT_EQ(info.isSingleBin, 7u);
  EXPECT_STREQ(info.BinDirectory, "/opt");
}

// A first call that ended half-way leaves the key without the second value.
TYPED_TEST(InfoStores, HalfASystemInformationIsRepairedByDeletingItsKey) {
  YAX_SYSTEM_INFO_ST info = SystemOf(1, "/usr/lib");
  ASSERT_EQ(this->registry.CreateKey(0, "YAX_SYSTEM"), 0u);
  EXPECT_EQ(this->store.SetSystemInfo(&info), 0xE000000D) << "without values";
  EXPECT_EQ(this->store.GetSystemInfo(&info), 0xE000000D);
  EXPECT_EQ(this->store.IsSysSingleBinary(), 0u);
  this->Put("YAX_SYSTEM", "BinDirectory", 1, "/lib\0"s);
  EXPECT_EQ(this->store.SetSystemInfo(&info), 0xE000000D) << "without the second value";
  EXPECT_EQ(this->store.SetSystemInfo(&info), 0xE000000D) << "each time";
  EXPECT_EQ(this->Stored("YAX_SYSTEM", "BinDirectory"), "type 1: /lib\0"s) << "nothing stays of it";
  EXPECT_EQ(this->Stored("YAX_SYSTEM", "isSingleBin"), "no value");
  YAX_SYSTEM_INFO_ST read = SystemOf(9, "");
  EXPECT_EQ(this->store.GetSystemInfo(&read), 0xE000000D);
  EXPECT_STREQ(read.BinDirectory, "/lib") << "what was read before the failure";
  EXPECT_EQ(read.isSingleBin, 9u);
  ASSERT_EQ(this->registry.DeleteKey(0, "YAX_SYSTEM"), 0u);
  EXPECT_EQ(this->store.SetSystemInfo(&info), 0u);
  EXPECT_EQ(this->store.GetSystemInfo(&read), 0u);
  EXPECT_EQ(read.isSingleBin, 1u);
}

// ---- a component with values missing

TYPED_TEST(InfoStores, AComponentIsReadUpToTheValueThatIsMissing) {
  ASSERT_EQ(this->registry.CreateKey(0, "YAX_ROOT"), 0u);
  ASSERT_EQ(this->registry.CreateKey(0, kClsidKey), 0u);
  this->Put(kClsidKey, "CompName", 1, "half\0"s);
  this->Put(kClsidKey, "Type", 0, "\1\0\0\0\0\0\0\0"s);
  YAX_COMPONENT_INFO_ST info = ComponentOf("", 0, 0x10, "kept");
  EXPECT_EQ(this->store.GetComponentInfo(kClsid, &info), 0xE000000D);
  EXPECT_STREQ(info.CompName, "half");
  EXPECT_EQ(info.Type, 1u);
  EXPECT_EQ(info.FactoryFn, FunctionAt(0x10));
  EXPECT_STREQ(info.BinaryPath, "kept");
  const YAX_COMPONENT_INFO_ST other = Player();
  EXPECT_EQ(this->store.SetComponentInfo(kClsid, &other), 0xE000000D);
  EXPECT_EQ(this->Stored(kClsidKey, "CompName"), "type 1: half\0"s) << "nothing stays of it";
}

// ---- rights

TYPED_TEST(InfoStores, TheKeysOfAnotherUserAreNotChanged) {
  ASSERT_EQ(this->registry.SetCurrentUser("other"), 0u);
  ASSERT_EQ(this->registry.CreateKey(0, "YAX_ROOT"), 0u);
  ASSERT_EQ(this->registry.CreateKey(0, "YAX_SYSTEM"), 0u);
  this->Put("YAX_SYSTEM", "BinDirectory", 1, "/lib\0"s);
  this->Put("YAX_SYSTEM", "isSingleBin", 0, "\1\0\0\0\0\0\0\0"s);
  ASSERT_EQ(this->registry.SetCurrentUser("adminstrator"), 0u);
  const std::string before = FileContent(this->path);
  YAX_COMPONENT_INFO_ST info = Player();
  YAX_COMPONENT_INFO_ST* array[] = {&info, nullptr};
  YAX_SYSTEM_INFO_ST system = SystemOf(1, "");
  EXPECT_EQ(this->store.RegisterComponent(kClsid, &info), 0xE000000D);
  EXPECT_EQ(this->store.RegisterAllComponent(array), 0xE000000D);
  EXPECT_EQ(this->store.SetSystemInfo(&system), 0xE000000D);
  EXPECT_EQ(this->store.GetSystemInfo(&system), 0xE000000D);
  EXPECT_EQ(this->store.IsSysSingleBinary(), 0u);
  EXPECT_EQ(FileContent(this->path), before);
}

}  // namespace
