// What both information stores do that keep what they know in the registry.
#include "framework/YAXStatus.h"
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
  EXPECT_EQ(yax_framework::kBadArgument, manager.SetSystemInfo(nullptr));
  EXPECT_EQ(yax_framework::kBadArgument, manager.GetSystemInfo(nullptr));
  EXPECT_EQ(yax_framework::kBadArgument, manager.RegisterAllComponent(nullptr));
  EXPECT_EQ(yax_framework::kBadArgument, manager.RegisterComponent(kClsid, nullptr));
  EXPECT_EQ(yax_framework::kBadArgument, manager.SetComponentInfo(kClsid, nullptr));
  EXPECT_EQ(yax_framework::kBadArgument, manager.GetComponentInfo(kClsid, nullptr));
  EXPECT_EQ(yax_framework::kBadArgument, manager.GetComponentType(kClsid, nullptr));
  EXPECT_EQ(yax_framework::kBadArgument, manager.GetComponentEntryFunc(kClsid, nullptr));
  EXPECT_EQ(yax_framework::kBadArgument, manager.GetComponentBinPath(kClsid, nullptr));
  EXPECT_EQ(FileContent(this->path), before);
}

// ---- a registry without anything in it

// Nothing is created by asking.
TYPED_TEST(InfoStores, ReadingAFreshRegistryChangesNoByte) {
  YAXInfoManager& manager = this->store;
  const std::string before = FileContent(this->path);
  YAX_SYSTEM_INFO_ST system = SystemOf(9, "kept");
  EXPECT_EQ(yax_framework::kRegistryFailed, manager.GetSystemInfo(&system));
  EXPECT_EQ(9u, system.isSingleBin);
  EXPECT_STREQ(system.BinDirectory, "kept");
  EXPECT_EQ(0u, manager.IsSysSingleBinary());
  YAX_COMPONENT_INFO_ST info = Player();
  EXPECT_EQ(yax_framework::kRegistryFailed, manager.GetComponentInfo(kClsid, &info));
  YAX_COMPONENT_TYPE_ENUM type = YAX_COMPONENT_TYPE_BINARY;
  EXPECT_EQ(yax_framework::kRegistryFailed, manager.GetComponentType(kClsid, &type));
  void* function = &info;
  EXPECT_EQ(yax_framework::kRegistryFailed, manager.GetComponentEntryFunc(kClsid, &function));
  char text[kYAXTextSize] = "kept";
  EXPECT_EQ(yax_framework::kRegistryFailed, manager.GetComponentBinPath(kClsid, text));
  EXPECT_STREQ(text, "kept");
  EXPECT_EQ(FileContent(this->path), before);
}

TYPED_TEST(InfoStores, AComponentThatIsNotRegisteredIsAFailureOfTheRegistry) {
  YAXInfoManager& manager = this->store;
  YAX_COMPONENT_INFO_ST info = Player();
  ASSERT_EQ(yax_framework::kOk, manager.RegisterComponent(kClsid, &info));
  const std::string before = FileContent(this->path);
  const YAX_GUID_ST other = GuidOf(0xB);
  YAX_COMPONENT_TYPE_ENUM type = YAX_COMPONENT_TYPE_FUNCTION;
  void* function = nullptr;
  char text[kYAXTextSize];
  EXPECT_EQ(yax_framework::kRegistryFailed, manager.GetComponentInfo(other, &info));
  EXPECT_EQ(yax_framework::kRegistryFailed, manager.GetComponentType(other, &type));
  EXPECT_EQ(yax_framework::kRegistryFailed, manager.GetComponentEntryFunc(other, &function));
  EXPECT_EQ(yax_framework::kRegistryFailed, manager.GetComponentBinPath(other, text));
  EXPECT_EQ(yax_framework::kRegistryFailed, manager.SetComponentInfo(other, &info));
  EXPECT_EQ(yax_framework::kRegistryFailed, manager.UnregisterComponent(other));
  EXPECT_EQ(FileContent(this->path), before);
}

// ---- what is read

TYPED_TEST(InfoStores, AComponentIsReadBackWhateverItsType) {
  for (unsigned int type : {0u, 1u, 2u}) {
    const YAX_GUID_ST guid = GuidOf(100 + type);
    const YAX_COMPONENT_INFO_ST written = ComponentOf("name", type, 0x1230 + type, "/lib/x.so");
    ASSERT_EQ(yax_framework::kOk, this->store.RegisterComponent(guid, &written));
    YAX_COMPONENT_INFO_ST info = Player();
    info.Reserved = 5;
    EXPECT_EQ(yax_framework::kOk, this->store.GetComponentInfo(guid, &info));
    EXPECT_STREQ(info.CompName, "name");
    EXPECT_EQ(info.Type, type);
    EXPECT_EQ(info.FactoryFn, written.FactoryFn);
    EXPECT_STREQ(info.BinaryPath, "/lib/x.so");
    EXPECT_EQ(info.pGuid, &kClsid) << "the caller's";
    EXPECT_EQ(5u, info.Reserved) << "the caller's";
    YAX_COMPONENT_TYPE_ENUM read = YAX_COMPONENT_TYPE_BINARY;
    EXPECT_EQ(yax_framework::kOk, this->store.GetComponentType(guid, &read));
    EXPECT_EQ(read, type);
    void* function = nullptr;
    EXPECT_EQ(yax_framework::kOk, this->store.GetComponentEntryFunc(guid, &function));
    EXPECT_EQ(function, reinterpret_cast<void*>(written.FactoryFn));
    char binary[kYAXTextSize] = "";
    EXPECT_EQ(yax_framework::kOk, this->store.GetComponentBinPath(guid, binary));
    EXPECT_STREQ(binary, "/lib/x.so");
  }
}

TYPED_TEST(InfoStores, WhatIsWrittenIsFoundByTheNextProgram) {
  YAX_COMPONENT_INFO_ST info = Player();
  YAX_SYSTEM_INFO_ST system = SystemOf(1, "/bin");
  ASSERT_EQ(yax_framework::kOk, this->store.RegisterComponent(kClsid, &info));
  ASSERT_EQ(yax_framework::kOk, this->store.SetSystemInfo(&system));
  this->Reopen();
  info = {};
  system = {};
  EXPECT_EQ(yax_framework::kOk, this->store.GetComponentInfo(kClsid, &info));
  EXPECT_STREQ(info.CompName, "Player");
  EXPECT_EQ(yax_framework::kOk, this->store.GetSystemInfo(&system));
  EXPECT_STREQ(system.BinDirectory, "/bin");
  EXPECT_EQ(1u, system.isSingleBin);
}

TYPED_TEST(InfoStores, AComponentWithoutFunctionHasNoEntry) {
  YAX_COMPONENT_INFO_ST info = Player();
  info.FactoryFn = nullptr;
  ASSERT_EQ(yax_framework::kOk, this->store.RegisterComponent(kClsid, &info));
  void* function = &info;
  EXPECT_EQ(yax_framework::kNoEntry, this->store.GetComponentEntryFunc(kClsid, &function));
  EXPECT_EQ(nullptr, function);
}

// The address of an earlier run of the program is none of this one's.
// Where addresses are longer than what is stored of them; else it is the address.
TYPED_TEST(InfoStores, AFunctionThatThisProcessDidNotRegisterIsNone) {
  const bool isWhole = sizeof(void*) == 4;
  void* const expected = isWhole ? reinterpret_cast<void*>(0x54637261) : nullptr;
  YAX_COMPONENT_INFO_ST info = Player();
  ASSERT_EQ(yax_framework::kOk, this->store.RegisterComponent(kClsid, &info));
  this->Put(kClsidKey, "FactoryFn", 0, "\x61\x72\x63\x54\0\0\0\0"s);
  void* function = &info;
  EXPECT_EQ(this->store.GetComponentEntryFunc(kClsid, &function), isWhole ? 0 : 0xE000000F);
  EXPECT_EQ(function, expected);
  EXPECT_EQ(yax_framework::kOk, this->store.GetComponentInfo(kClsid, &info));
  EXPECT_EQ(reinterpret_cast<void*>(info.FactoryFn), expected);
  EXPECT_STREQ(info.BinaryPath, "libplayer.so") << "what comes behind it is read all the same";
}

// ---- registering and changing

TYPED_TEST(InfoStores, RegisteringTwiceFailsAndLeavesTheFirst) {
  const YAX_COMPONENT_INFO_ST first = Player();
  ASSERT_EQ(yax_framework::kOk, this->store.RegisterComponent(kClsid, &first));
  const std::string before = FileContent(this->path);
  const YAX_COMPONENT_INFO_ST second = ComponentOf("Second", 0, 0x10, "second.so");
  EXPECT_EQ(yax_framework::kRegistryFailed, this->store.RegisterComponent(kClsid, &second));
  YAX_COMPONENT_INFO_ST again = ComponentOf("Third", 0, 0x20, "third.so", &kClsid);
  YAX_COMPONENT_INFO_ST* array[] = {&again, nullptr};
  EXPECT_EQ(yax_framework::kRegistryFailed, this->store.RegisterAllComponent(array));
  EXPECT_EQ(FileContent(this->path), before);
  EXPECT_EQ(3u, CountSlots(this->path).keys.used);
}

TYPED_TEST(InfoStores, SettingAComponentChangesItsFourValues) {
  const YAX_COMPONENT_INFO_ST first = Player();
  ASSERT_EQ(yax_framework::kOk, this->store.RegisterComponent(kClsid, &first));
  const YAX_COMPONENT_INFO_ST second =
      ComponentOf("A rather longer name", 0, 0x10, std::string(200, 'p').c_str());
  EXPECT_EQ(yax_framework::kOk, this->store.SetComponentInfo(kClsid, &second));
  YAX_COMPONENT_INFO_ST info = {};
  EXPECT_EQ(yax_framework::kOk, this->store.GetComponentInfo(kClsid, &info));
  EXPECT_STREQ(info.CompName, second.CompName);
  EXPECT_EQ(0u, info.Type);
  EXPECT_EQ(info.FactoryFn, second.FactoryFn);
  EXPECT_STREQ(info.BinaryPath, second.BinaryPath);
  EXPECT_EQ(4u, DecodeTree(this->path).at(kClsidKey).values.size());
}

TYPED_TEST(InfoStores, ADeletedComponentIsGoneAndMayComeBack) {
  YAX_COMPONENT_INFO_ST info = Player();
  ASSERT_EQ(yax_framework::kOk, this->store.RegisterComponent(kClsid, &info));
  EXPECT_EQ(yax_framework::kOk, this->store.UnregisterComponent(kClsid));
  EXPECT_FALSE(this->HasKey(kClsidKey));
  EXPECT_TRUE(this->HasKey("YAX_ROOT"));
  EXPECT_EQ(yax_framework::kRegistryFailed, this->store.GetComponentInfo(kClsid, &info));
  EXPECT_EQ(yax_framework::kRegistryFailed, this->store.UnregisterComponent(kClsid));
  const YAX_COMPONENT_INFO_ST second = ComponentOf("Second", 0, 0x10, "second.so");
  EXPECT_EQ(yax_framework::kOk, this->store.RegisterComponent(kClsid, &second));
  EXPECT_EQ(yax_framework::kOk, this->store.GetComponentInfo(kClsid, &info));
  EXPECT_STREQ(info.CompName, "Second");
}

TYPED_TEST(InfoStores, AnArrayMayHoldMoreThanATableDoes) {
  Components components(300);
  ASSERT_EQ(yax_framework::kOk, this->store.RegisterAllComponent(components.Array()));
  EXPECT_EQ(DecodeTree(this->path).size(), 2u + 300u);
  for (unsigned int number : {1u, 256u, 257u, 300u}) {
    YAX_COMPONENT_INFO_ST info = {};
    EXPECT_EQ(yax_framework::kOk, this->store.GetComponentInfo(GuidOf(number), &info));
    EXPECT_STREQ(info.CompName, ("c" + std::to_string(number)).c_str());
    EXPECT_EQ(info.FactoryFn, FunctionAt(16 * number));
  }
}

TYPED_TEST(InfoStores, AnEmptyArrayMakesTheTopKeyAlone) {
  YAX_COMPONENT_INFO_ST* none[] = {nullptr};
  PrintedMessages messages;
  EXPECT_EQ(yax_framework::kOk, this->store.RegisterAllComponent(none));
  EXPECT_EQ("", messages.Take());
  EXPECT_EQ(2u, DecodeTree(this->path).size());
  EXPECT_TRUE(this->HasKey("YAX_ROOT"));
  EXPECT_EQ(yax_framework::kOk, this->store.RegisterAllComponent(none)) << "it may be there";
}

TYPED_TEST(InfoStores, AnArrayEndsAtTheFirstComponentThatExists) {
  Components components(3);
  ASSERT_EQ(yax_framework::kOk, this->store.RegisterComponent(GuidOf(2), &components[1]));
  EXPECT_EQ(yax_framework::kRegistryFailed, this->store.RegisterAllComponent(components.Array()));
  EXPECT_TRUE(this->HasKey(KeyOf(GuidOf(1)))) << "what came before stays";
  EXPECT_FALSE(this->HasKey(KeyOf(GuidOf(3))));
  YAX_COMPONENT_INFO_ST info = {};
  EXPECT_EQ(yax_framework::kOk, this->store.GetComponentInfo(GuidOf(1), &info));
}

// The table in memory is not used.
TYPED_TEST(InfoStores, LookingUpFindsNothing) {
  Components components(2);
  ASSERT_EQ(yax_framework::kOk, this->store.RegisterAllComponent(components.Array()));
  unsigned int index = 9;
  EXPECT_EQ(yax_framework::kNotRegistered, this->store.LookupComponent(GuidOf(1), &index));
  EXPECT_EQ(0u, index);
}

// ---- the system information

TYPED_TEST(InfoStores, TheSystemInformationIsMadeOnceAndChangedThen) {
  YAX_SYSTEM_INFO_ST info = SystemOf(1, "/usr/lib");
  ASSERT_EQ(yax_framework::kOk, this->store.SetSystemInfo(&info));
  EXPECT_EQ(1u, this->store.IsSysSingleBinary());
  info = SystemOf(7, "/opt");
  ASSERT_EQ(yax_framework::kOk, this->store.SetSystemInfo(&info));
  EXPECT_EQ(7u, this->store.IsSysSingleBinary()) << "as it is stored";
  EXPECT_EQ(2u, DecodeTree(this->path).at("YAX_SYSTEM").values.size());
  info = {};
  EXPECT_EQ(yax_framework::kOk, this->store.GetSystemInfo(&info));
  EXPECT_EQ(7u, info.isSingleBin);
  EXPECT_STREQ(info.BinDirectory, "/opt");
}

// A first call that ended half-way leaves the key without the second value.
TYPED_TEST(InfoStores, HalfASystemInformationIsRepairedByDeletingItsKey) {
  YAX_SYSTEM_INFO_ST info = SystemOf(1, "/usr/lib");
  ASSERT_EQ(0u, this->registry.CreateKey(0, "YAX_SYSTEM"));
  EXPECT_EQ(yax_framework::kRegistryFailed, this->store.SetSystemInfo(&info)) << "without values";
  EXPECT_EQ(yax_framework::kRegistryFailed, this->store.GetSystemInfo(&info));
  EXPECT_EQ(0u, this->store.IsSysSingleBinary());
  this->Put("YAX_SYSTEM", "BinDirectory", 1, "/lib\0"s);
  EXPECT_EQ(yax_framework::kRegistryFailed, this->store.SetSystemInfo(&info))
      << "without the second value";
  EXPECT_EQ(yax_framework::kRegistryFailed, this->store.SetSystemInfo(&info)) << "each time";
  EXPECT_EQ("type 1: /lib\0"s, this->Stored("YAX_SYSTEM", "BinDirectory")) << "nothing stays of it";
  EXPECT_EQ("no value", this->Stored("YAX_SYSTEM", "isSingleBin"));
  YAX_SYSTEM_INFO_ST read = SystemOf(9, "");
  EXPECT_EQ(yax_framework::kRegistryFailed, this->store.GetSystemInfo(&read));
  EXPECT_STREQ(read.BinDirectory, "/lib") << "what was read before the failure";
  EXPECT_EQ(9u, read.isSingleBin);
  ASSERT_EQ(0u, this->registry.DeleteKey(0, "YAX_SYSTEM"));
  EXPECT_EQ(yax_framework::kOk, this->store.SetSystemInfo(&info));
  EXPECT_EQ(yax_framework::kOk, this->store.GetSystemInfo(&read));
  EXPECT_EQ(1u, read.isSingleBin);
}

// ---- a component with values missing

TYPED_TEST(InfoStores, AComponentIsReadUpToTheValueThatIsMissing) {
  ASSERT_EQ(0u, this->registry.CreateKey(0, "YAX_ROOT"));
  ASSERT_EQ(0u, this->registry.CreateKey(0, kClsidKey));
  this->Put(kClsidKey, "CompName", 1, "half\0"s);
  this->Put(kClsidKey, "Type", 0, "\1\0\0\0\0\0\0\0"s);
  YAX_COMPONENT_INFO_ST info = ComponentOf("", 0, 0x10, "kept");
  EXPECT_EQ(yax_framework::kRegistryFailed, this->store.GetComponentInfo(kClsid, &info));
  EXPECT_STREQ(info.CompName, "half");
  EXPECT_EQ(1u, info.Type);
  EXPECT_EQ(info.FactoryFn, FunctionAt(0x10));
  EXPECT_STREQ(info.BinaryPath, "kept");
  const YAX_COMPONENT_INFO_ST other = Player();
  EXPECT_EQ(yax_framework::kRegistryFailed, this->store.SetComponentInfo(kClsid, &other));
  EXPECT_EQ("type 1: half\0"s, this->Stored(kClsidKey, "CompName")) << "nothing stays of it";
}

// ---- rights

TYPED_TEST(InfoStores, TheKeysOfAnotherUserAreNotChanged) {
  ASSERT_EQ(0u, this->registry.SetCurrentUser("other"));
  ASSERT_EQ(0u, this->registry.CreateKey(0, "YAX_ROOT"));
  ASSERT_EQ(0u, this->registry.CreateKey(0, "YAX_SYSTEM"));
  this->Put("YAX_SYSTEM", "BinDirectory", 1, "/lib\0"s);
  this->Put("YAX_SYSTEM", "isSingleBin", 0, "\1\0\0\0\0\0\0\0"s);
  ASSERT_EQ(0u, this->registry.SetCurrentUser("adminstrator"));
  const std::string before = FileContent(this->path);
  YAX_COMPONENT_INFO_ST info = Player();
  YAX_COMPONENT_INFO_ST* array[] = {&info, nullptr};
  YAX_SYSTEM_INFO_ST system = SystemOf(1, "");
  EXPECT_EQ(yax_framework::kRegistryFailed, this->store.RegisterComponent(kClsid, &info));
  EXPECT_EQ(yax_framework::kRegistryFailed, this->store.RegisterAllComponent(array));
  EXPECT_EQ(yax_framework::kRegistryFailed, this->store.SetSystemInfo(&system));
  EXPECT_EQ(yax_framework::kRegistryFailed, this->store.GetSystemInfo(&system));
  EXPECT_EQ(0u, this->store.IsSysSingleBinary());
  EXPECT_EQ(FileContent(this->path), before);
}

}  // namespace
