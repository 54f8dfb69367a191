// The information store that keeps its table in memory, and the lock that it shows.
#include "framework/YAX.h"
#include "framework/YAXStatus.h"
#include "framework/internal/CYAXIMMutex.h"
#include "tests/framework/InfoStoreRig.h"

namespace {

// The table is never given back, only written over.
TEST(YAXInfoManager, AShorterArrayLeavesTheRestOfTheTable) {
  YAXInfoManager store;
  Components three(3), one(1);
  one[0] = ComponentOf("other", 1, 0x10, "", &kClsid);
  ASSERT_EQ(yax_framework::kOk, store.RegisterAllComponent(three.Array()));
  ASSERT_EQ(yax_framework::kOk, store.RegisterAllComponent(one.Array()));
  unsigned int index = 99;
  EXPECT_EQ(yax_framework::kOk, store.LookupComponent(kClsid, &index));
  EXPECT_EQ(0u, index);
  EXPECT_EQ(yax_framework::kNotRegistered, store.LookupComponent(GuidOf(1), &index))
      << "written over";
  EXPECT_EQ(3u, index);
  EXPECT_EQ(yax_framework::kOk, store.LookupComponent(GuidOf(3), &index));
  EXPECT_EQ(2u, index);
}

TEST(YAXInfoManager, NullPointersAreRefused) {
  YAXInfoManager store;
  Components one(1);
  ASSERT_EQ(yax_framework::kOk, store.RegisterAllComponent(one.Array()));
  EXPECT_EQ(yax_framework::kBadArgument, store.SetSystemInfo(nullptr));
  EXPECT_EQ(yax_framework::kBadArgument, store.GetSystemInfo(nullptr));
  EXPECT_EQ(yax_framework::kBadArgument, store.RegisterAllComponent(nullptr));
  EXPECT_EQ(yax_framework::kBadArgument, store.GetComponentInfo(GuidOf(1), nullptr));
  EXPECT_EQ(yax_framework::kBadArgument, store.GetComponentType(GuidOf(1), nullptr));
  EXPECT_EQ(yax_framework::kBadArgument, store.GetComponentEntryFunc(GuidOf(1), nullptr));
  EXPECT_EQ(yax_framework::kBadArgument, store.GetComponentBinPath(GuidOf(1), nullptr));
  EXPECT_EQ(yax_framework::kOk, store.LookupComponent(GuidOf(1), nullptr))
      << "the place need not be wanted";
  EXPECT_EQ(yax_framework::kNotRegistered, store.LookupComponent(GuidOf(2), nullptr));
}

TEST(YAXInfoManager, DoesNotRegisterSingleComponents) {
  YAXInfoManager store;
  Components one(1);
  ASSERT_EQ(yax_framework::kOk, store.RegisterAllComponent(one.Array()));
  EXPECT_EQ(yax_framework::kNotProvided, store.RegisterComponent(GuidOf(2), &one[0]));
  EXPECT_EQ(yax_framework::kNotProvided, store.SetComponentInfo(GuidOf(1), &one[0]));
  EXPECT_EQ(yax_framework::kNotProvided, store.UnregisterComponent(GuidOf(1)));
  EXPECT_EQ(yax_framework::kNotProvided, store.RegisterComponent(GuidOf(2), nullptr));
  EXPECT_EQ(yax_framework::kNotProvided, store.SetComponentInfo(GuidOf(1), nullptr));
  EXPECT_EQ(yax_framework::kOk, store.LookupComponent(GuidOf(1), nullptr));
}

// ---- the system information

TEST(YAXInfoManager, TheSystemInformationIsZeroAtFirstAndKeptWhole) {
  YAXInfoManager store;
  YAX_SYSTEM_INFO_ST info;
  std::memset(&info, '#', sizeof info);
  EXPECT_EQ(yax_framework::kOk, store.GetSystemInfo(&info));
  EXPECT_EQ(0u, info.isSingleBin);
  EXPECT_EQ(std::string(info.BinDirectory, 256), std::string(256, '\0'));
  info.isSingleBin = 5;
  std::memset(info.BinDirectory, 'd', 256);
  EXPECT_EQ(yax_framework::kOk, store.SetSystemInfo(&info));
  YAX_SYSTEM_INFO_ST read = {};
  EXPECT_EQ(yax_framework::kOk, store.GetSystemInfo(&read));
  EXPECT_EQ(5u, read.isSingleBin);
  EXPECT_EQ(std::string(256, 'd'), std::string(read.BinDirectory, 256));
}

TEST(YAXInfoManager, OneAloneMeansASingleBinary) {
  YAXInfoManager store;
  EXPECT_EQ(0u, store.IsSysSingleBinary());
  for (unsigned int word : {1u, 2u, 0u, 0xFFFFFFFFu}) {
    YAX_SYSTEM_INFO_ST info = SystemOf(word, "");
    EXPECT_EQ(yax_framework::kOk, store.SetSystemInfo(&info));
    EXPECT_EQ(store.IsSysSingleBinary(), word == 1 ? 1u : 0u) << word;
  }
}

// ---- the table

TEST(YAXInfoManager, AnEmptyTableHasNothingAtPlaceZero) {
  YAXInfoManager store;
  unsigned int index = 99;
  EXPECT_EQ(yax_framework::kNotRegistered, store.LookupComponent(kClsid, &index));
  EXPECT_EQ(0u, index);
  YAX_COMPONENT_INFO_ST info = Player();
  YAX_COMPONENT_TYPE_ENUM type = YAX_COMPONENT_TYPE_BINARY;
  void* function = &info;
  char path[kYAXTextSize] = "kept";
  EXPECT_EQ(yax_framework::kNotRegistered, store.GetComponentInfo(kClsid, &info));
  EXPECT_EQ(yax_framework::kNotRegistered, store.GetComponentType(kClsid, &type));
  EXPECT_EQ(yax_framework::kNotRegistered, store.GetComponentEntryFunc(kClsid, &function));
  EXPECT_EQ(yax_framework::kNotRegistered, store.GetComponentBinPath(kClsid, path));
  EXPECT_STREQ(info.CompName, "Player");
  EXPECT_EQ(function, &info);
  EXPECT_STREQ(path, "kept");
}

TEST(YAXInfoManager, AFullTableIsLookedThroughToItsEnd) {
  YAXInfoManager store;
  Components components(256);
  ASSERT_EQ(yax_framework::kOk, store.RegisterAllComponent(components.Array()));
  unsigned int index = 99;
  EXPECT_EQ(yax_framework::kOk, store.LookupComponent(kClsid, &index)) << "number 10 is its own";
  EXPECT_EQ(9u, index);
  EXPECT_EQ(yax_framework::kOk, store.LookupComponent(GuidOf(256), &index));
  EXPECT_EQ(255u, index);
  EXPECT_EQ(yax_framework::kNotRegistered, store.LookupComponent(GuidOf(257), &index));
  EXPECT_EQ(256u, index);
}

TEST(YAXInfoManager, Of300ComponentsTheFirst256AreKept) {
  YAXInfoManager store;
  Components components(300);
  ASSERT_EQ(yax_framework::kOk, store.RegisterAllComponent(components.Array()));
  unsigned int index = 99;
  EXPECT_EQ(yax_framework::kOk, store.LookupComponent(GuidOf(256), &index));
  EXPECT_EQ(255u, index);
  EXPECT_EQ(yax_framework::kNotRegistered, store.LookupComponent(GuidOf(257), &index));
  EXPECT_EQ(256u, index);
}

// The records stay the caller's.
TEST(YAXInfoManager, AChangedRecordIsFoundChanged) {
  YAXInfoManager store;
  Components components(1);
  ASSERT_EQ(yax_framework::kOk, store.RegisterAllComponent(components.Array()));
  components[0].pGuid = &kClsid;
  EXPECT_EQ(yax_framework::kNotRegistered, store.LookupComponent(GuidOf(1), nullptr));
  EXPECT_EQ(yax_framework::kOk, store.LookupComponent(kClsid, nullptr));
}

TEST(YAXInfoManager, ARecordWithoutIdentifierIsPassedOver) {
  YAXInfoManager store;
  Components components(3);
  components[1].pGuid = nullptr;
  ASSERT_EQ(yax_framework::kOk, store.RegisterAllComponent(components.Array()));
  unsigned int index = 99;
  EXPECT_EQ(yax_framework::kOk, store.LookupComponent(GuidOf(3), &index));
  EXPECT_EQ(2u, index);
  EXPECT_EQ(yax_framework::kNotRegistered, store.LookupComponent(GuidOf(2), &index));
  EXPECT_EQ(3u, index);
}

TEST(YAXInfoManager, AnIdentifierIsComparedInAll16Bytes) {
  YAXInfoManager store;
  YAX_COMPONENT_INFO_ST info = Player();
  YAX_COMPONENT_INFO_ST* array[] = {&info, nullptr};
  ASSERT_EQ(yax_framework::kOk, store.RegisterAllComponent(array));
  for (unsigned int i = 0; i < sizeof kClsid; ++i) {
    unsigned char bytes[sizeof kClsid];
    std::memcpy(bytes, &kClsid, sizeof bytes);
    bytes[i] ^= 0x80;
    YAX_GUID_ST other;
    std::memcpy(&other, bytes, sizeof other);
    EXPECT_EQ(yax_framework::kNotRegistered, store.LookupComponent(other, nullptr)) << "byte " << i;
  }
  EXPECT_EQ(yax_framework::kOk, store.LookupComponent(kClsid, nullptr));
}

// ---- what is told of a component

TEST(YAXInfoManager, OfAFunctionComponentThePathIsNotTold) {
  YAXInfoManager store;
  YAX_COMPONENT_INFO_ST known = ComponentOf("function", 0, 0x10, "not told", &kClsid);
  YAX_COMPONENT_INFO_ST* array[] = {&known, nullptr};
  ASSERT_EQ(yax_framework::kOk, store.RegisterAllComponent(array));
  const YAX_GUID_ST mine = GuidOf(5);
  YAX_COMPONENT_INFO_ST info = ComponentOf("", 1, 0x20, "kept", &mine);
  info.Reserved = 1;
  EXPECT_EQ(yax_framework::kOk, store.GetComponentInfo(kClsid, &info));
  EXPECT_STREQ(info.CompName, "function");
  EXPECT_EQ(0u, info.Type);
  EXPECT_EQ(77u, info.Reserved);
  EXPECT_EQ(info.FactoryFn, FunctionAt(0x10));
  EXPECT_STREQ(info.BinaryPath, "kept");
  EXPECT_EQ(info.pGuid, &mine);
}

TEST(YAXInfoManager, OfOtherComponentsTheFunctionIsNotTold) {
  for (unsigned int type : {1u, 2u}) {
    YAXInfoManager store;
    YAX_COMPONENT_INFO_ST known = ComponentOf("binary", type, 0x10, "lib.so", &kClsid);
    YAX_COMPONENT_INFO_ST* array[] = {&known, nullptr};
    ASSERT_EQ(yax_framework::kOk, store.RegisterAllComponent(array));
    YAX_COMPONENT_INFO_ST info = ComponentOf("", 0, 0x20, "");
    EXPECT_EQ(yax_framework::kOk, store.GetComponentInfo(kClsid, &info));
    EXPECT_EQ(info.Type, type);
    EXPECT_EQ(info.FactoryFn, FunctionAt(0x20)) << "kept";
    EXPECT_STREQ(info.BinaryPath, "lib.so");
  }
}

TEST(YAXInfoManager, TypeFunctionAndPathAreToldOneByOneWhateverTheType) {
  YAXInfoManager store;
  YAX_COMPONENT_INFO_ST known = ComponentOf("function", 0, 0x10, "lib.so", &kClsid);
  YAX_COMPONENT_INFO_ST* array[] = {&known, nullptr};
  ASSERT_EQ(yax_framework::kOk, store.RegisterAllComponent(array));
  YAX_COMPONENT_TYPE_ENUM type = YAX_COMPONENT_TYPE_BINARY;
  void* function = nullptr;
  char path[kYAXTextSize] = "";
  EXPECT_EQ(yax_framework::kOk, store.GetComponentType(kClsid, &type));
  EXPECT_EQ(0u, type);
  EXPECT_EQ(yax_framework::kOk, store.GetComponentEntryFunc(kClsid, &function));
  EXPECT_EQ(function, reinterpret_cast<void*>(FunctionAt(0x10)));
  EXPECT_EQ(yax_framework::kOk, store.GetComponentBinPath(kClsid, path));
  EXPECT_STREQ(path, "lib.so");
  known.FactoryFn = nullptr;
  EXPECT_EQ(yax_framework::kNoEntry, store.GetComponentEntryFunc(kClsid, &function));
  EXPECT_EQ(nullptr, function);
}

// Of a binary component alone the path is told with the type.
TEST(YAXInfoManager, TypeAndPathAreToldAtOnce) {
  YAXInfoManager store;
  Components two(2);
  two[1].Type = YAX_COMPONENT_TYPE_FUNCTION;
  ASSERT_EQ(yax_framework::kOk, store.RegisterAllComponent(two.Array()));
  YAX_COMPONENT_TYPE_ENUM type = YAX_COMPONENT_TYPE_BINARY;
  char path[kYAXTextSize] = "untouched";
  EXPECT_EQ(yax_framework::kOk, store.GetComponentBinary(GuidOf(2), &type, path));
  EXPECT_EQ(YAX_COMPONENT_TYPE_FUNCTION, type);
  EXPECT_STREQ("untouched", path);
  EXPECT_EQ(yax_framework::kOk, store.GetComponentBinary(GuidOf(1), &type, path));
  EXPECT_EQ(YAX_COMPONENT_TYPE_BINARY, type);
  EXPECT_STREQ("lib.so", path);
  EXPECT_EQ(yax_framework::kNotRegistered, store.GetComponentBinary(GuidOf(9), &type, path));
  EXPECT_EQ(yax_framework::kBadArgument, store.GetComponentBinary(GuidOf(1), nullptr, path));
  EXPECT_EQ(yax_framework::kBadArgument, store.GetComponentBinary(GuidOf(1), &type, nullptr));
}

TEST(YAXInfoManager, FieldsWithoutTerminatorAreToldWith255Characters) {
  YAXInfoManager store;
  YAX_COMPONENT_INFO_ST known = Player();
  FillField(known.CompName, std::string(256, 'n'));
  FillField(known.BinaryPath, std::string(256, 'p'));
  YAX_COMPONENT_INFO_ST* array[] = {&known, nullptr};
  ASSERT_EQ(yax_framework::kOk, store.RegisterAllComponent(array));
  YAX_COMPONENT_INFO_ST info = {};
  EXPECT_EQ(yax_framework::kOk, store.GetComponentInfo(kClsid, &info));
  EXPECT_EQ(FieldOf(info.CompName), std::string(255, 'n') + '\0');
  EXPECT_EQ(FieldOf(info.BinaryPath), std::string(255, 'p') + '\0');
  char path[kYAXTextSize + 1];
  std::memset(path, '#', sizeof path);
  EXPECT_EQ(yax_framework::kOk, store.GetComponentBinPath(kClsid, path));
  EXPECT_EQ(std::string(path, sizeof path), std::string(255, 'p') + '\0' + '#');
}

// Who looks up through a derived store gets that store's answer.
TEST(YAXInfoManager, AskingGoesThroughTheStoresOwnLookup) {
  class Finder : public YAXInfoManager {
   public:
    unsigned int LookupComponent(const YAX_GUID_ST&, unsigned int* index) override {
      *index = 1;
      return 0;
    }
  } store;
  Components components(2);
  ASSERT_EQ(yax_framework::kOk, store.RegisterAllComponent(components.Array()));
  YAX_COMPONENT_INFO_ST info = {};
  EXPECT_EQ(yax_framework::kOk, store.GetComponentInfo(kClsid, &info));
  EXPECT_STREQ(info.CompName, "c2");
  char path[kYAXTextSize];
  EXPECT_EQ(yax_framework::kOk, store.GetComponentBinPath(kClsid, path));
}

// ---- the text form of identifiers

TEST(YAXInfoManager, AnIdentifiersTextIsAppended) {
  YAXInfoManager store;
  const YAX_GUID_ST guid = {
      0x1FBF55FC, 0x0F15, 0x45CC, {0x8F, 0x3F, 0xDE, 0x86, 0xA5, 0x64, 0x0C, 0xB5}};
  char text[kYAXTextSize] = "YAX_ROOT/";
  EXPECT_EQ(yax_framework::kOk, store.ConvertGUID2String(&guid, text));
  EXPECT_STREQ(text, "YAX_ROOT/{1FBF55FC-0F15-45CC-8F3F-DE86A5640CB5}");
  EXPECT_EQ(yax_framework::kOk, store.ConvertGUID2String(&kClsid, text));
  EXPECT_STREQ(text,
               "YAX_ROOT/{1FBF55FC-0F15-45CC-8F3F-DE86A5640CB5}"
               "{0000000A-BEEF-0102-807F-00FF01020304}");
}

TEST(YAXInfoManager, AnIdentifiersTextHas38CharactersWhateverItsNumbers) {
  YAXInfoManager store;
  YAX_GUID_ST guid;
  std::memset(&guid, 0xFF, sizeof guid);
  char exact[38 + 1] = "";
  EXPECT_EQ(yax_framework::kOk, store.ConvertGUID2String(&guid, exact));
  EXPECT_STREQ(exact, "{FFFFFFFF-FFFF-FFFF-FFFF-FFFFFFFFFFFF}");
  guid = {};
  exact[0] = 0;
  EXPECT_EQ(yax_framework::kOk, store.ConvertGUID2String(&guid, exact));
  EXPECT_STREQ(exact, "{00000000-0000-0000-0000-000000000000}");
}

TEST(YAXInfoManager, AnIdentifiersTextNeedsBothPointers) {
  YAXInfoManager store;
  char text[kYAXTextSize] = "kept";
  EXPECT_EQ(yax_framework::kBadArgument, store.ConvertGUID2String(nullptr, text));
  EXPECT_EQ(yax_framework::kBadArgument, store.ConvertGUID2String(&kClsid, nullptr));
  EXPECT_STREQ(text, "kept");
}

// ---- the lock that a store shows

TEST(YAXInfoManager, TheNewestStoreShowsItsLock) {
  EXPECT_EQ(nullptr, CYAXIMMutex::mspMutex.load());
  {
    YAXInfoManager first;
    PCMutex* const lock = CYAXIMMutex::mspMutex;
    ASSERT_NE(nullptr, lock);
    EXPECT_TRUE(lock->IsCreated());
    YAXInfoManager second;
    EXPECT_NE(CYAXIMMutex::mspMutex.load(), lock);
    EXPECT_NE(nullptr, CYAXIMMutex::mspMutex.load());
  }
  EXPECT_EQ(nullptr, CYAXIMMutex::mspMutex.load()) << "the dying store took it away";
}

TEST(YAXInfoManager, AnOlderStoreLeavesTheLockThatANewerShows) {
  auto* first = new YAXInfoManager;
  YAXInfoManager second;
  PCMutex* const lock = CYAXIMMutex::mspMutex;
  delete first;
  EXPECT_EQ(CYAXIMMutex::mspMutex.load(), lock);
}

TEST(YAXInfoManager, EachFrameworkShowsItsLockAndTakesItAway) {
  TempDir folder;
  const std::string path = folder / "registry";
  for (int round = 0; round < 2; ++round) {
    ASSERT_EQ(yax_framework::kOk, CreateYAX(path.c_str()));
    EXPECT_NE(nullptr, CYAXIMMutex::mspMutex.load());
    DestroyYAX();
    EXPECT_EQ(nullptr, CYAXIMMutex::mspMutex.load());
  }
}

}  // namespace
