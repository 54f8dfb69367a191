// Fields of 256 bytes, and values in the registry that others have written.
#include "framework/YAXStatus.h"
#include "tests/framework/InfoStoreRig.h"

using namespace std::string_literals;

namespace {

// A component is registered, for others to change.
template <class Store>
class InfoStoreFields : public InfoStoreTest<Store> {
 protected:
  InfoStoreFields() {
    const YAX_COMPONENT_INFO_ST info = Player();
    EXPECT_EQ(yax_framework::kOk, this->store.RegisterComponent(kClsid, &info));
  }
  // The name as it is read into a field full of something else; the byte behind it included.
  std::string ReadName() {
    YAX_COMPONENT_INFO_ST info = Player();
    std::memset(info.CompName, '#', sizeof info.CompName);
    if (this->store.GetComponentInfo(kClsid, &info) != 0) return "failed";
    return FieldOf(info.CompName);
  }
};
TYPED_TEST_SUITE(InfoStoreFields, BothStores, StoreNames);

TYPED_TEST(InfoStoreFields, ATextIsWrittenWithAtMost255CharactersAndATerminator) {
  for (unsigned int length : {0u, 1u, 254u, 255u, 256u}) {
    YAX_COMPONENT_INFO_ST info = Player();
    FillField(info.CompName, std::string(length, 'n'));
    FillField(info.BinaryPath, std::string(length, 'p'));
    EXPECT_EQ(yax_framework::kOk, this->store.SetComponentInfo(kClsid, &info));
    const unsigned int kept = length < 256 ? length : 255;
    EXPECT_EQ(this->Stored(kClsidKey, "CompName"), "type 1: " + std::string(kept, 'n') + '\0');
    EXPECT_EQ(this->Stored(kClsidKey, "BinaryPath"), "type 1: " + std::string(kept, 'p') + '\0');
    EXPECT_EQ(this->ReadName(), std::string(kept, 'n') + '\0');
  }
}

TYPED_TEST(InfoStoreFields, AFolderIsWrittenWithAtMost255CharactersAndATerminator) {
  YAX_SYSTEM_INFO_ST info = SystemOf(1, "");
  FillField(info.BinDirectory, std::string(256, 'd'));
  EXPECT_EQ(yax_framework::kOk, this->store.SetSystemInfo(&info));
  EXPECT_EQ(this->Stored("YAX_SYSTEM", "BinDirectory"), "type 1: " + std::string(255, 'd') + '\0');
  EXPECT_EQ(yax_framework::kOk, this->store.GetSystemInfo(&info));
  EXPECT_EQ(FieldOf(info.BinDirectory), std::string(255, 'd') + '\0');
}

TYPED_TEST(InfoStoreFields, OfALongTextTheFieldHolds255Characters) {
  for (unsigned int size : {255u, 256u, 257u, 1024u}) {
    this->Put(kClsidKey, "CompName", 1, std::string(size, 'x'));
    EXPECT_EQ(this->ReadName(), std::string(255, 'x') + '\0') << size;
  }
  this->Put(kClsidKey, "BinaryPath", 1, std::string(1024, 'y'));
  char binary[kYAXTextSize + 1];
  std::memset(binary, '#', sizeof binary);
  EXPECT_EQ(yax_framework::kOk, this->store.GetComponentBinPath(kClsid, binary));
  EXPECT_EQ(std::string(binary, sizeof binary), std::string(255, 'y') + '\0' + '#');
}

TYPED_TEST(InfoStoreFields, ATextWithoutTerminatorGetsOne) {
  this->Put(kClsidKey, "CompName", 1, "abc");
  EXPECT_EQ("abc\0"s, this->ReadName());
}

TYPED_TEST(InfoStoreFields, OfANumberTheBytesThatThereAreCount) {
  this->Put(kClsidKey, "Type", 1, "\1\2");
  YAX_COMPONENT_TYPE_ENUM type = YAX_COMPONENT_TYPE_FUNCTION;
  EXPECT_EQ(yax_framework::kOk, this->store.GetComponentType(kClsid, &type));
  EXPECT_EQ(0x0201u, type) << "two bytes of a text";
  this->Put(kClsidKey, "Type", 2, "\1\2\3\4\5\6\7\x8\x9");
  EXPECT_EQ(yax_framework::kOk, this->store.GetComponentType(kClsid, &type));
  EXPECT_EQ(0x04030201u, type) << "the first four of nine";
}

// ---- the two ways of reading part here

class InfoStoreFileFields : public InfoStoreFields<YAXInfoManagerRCEFile> {};
class InfoStoreMemoryFields : public InfoStoreFields<YAXInfoManagerRCEMemory> {};

TEST_F(InfoStoreFileFields, ANumberReadAsATextIsItsBytes) {
  Put(kClsidKey, "CompName", 0, "AB\0\0\0\0\0\0"s);
  EXPECT_EQ("AB\0"s, ReadName());
}

TEST_F(InfoStoreMemoryFields, ANumberReadAsATextIsEmpty) {
  Put(kClsidKey, "CompName", 0, "AB\0\0\0\0\0\0"s);
  EXPECT_EQ("\0"s, ReadName());
  Put(kClsidKey, "CompName", 2, "data\0"s);
  EXPECT_EQ("\0"s, ReadName()) << "data of another type";
}

TEST_F(InfoStoreFileFields, AValueThatIsNotSetCannotBeRead) {
  for (const char* name : {"CompName", "Type", "FactoryFn", "BinaryPath"}) {
    ASSERT_EQ(0u, registry.CreateValue(0, kClsidKey, name, nullptr));
  }
  YAX_COMPONENT_INFO_ST info = {};
  EXPECT_EQ(yax_framework::kRegistryFailed, store.GetComponentInfo(kClsid, &info));
  YAX_COMPONENT_TYPE_ENUM type = YAX_COMPONENT_TYPE_BINARY;
  EXPECT_EQ(yax_framework::kRegistryFailed, store.GetComponentType(kClsid, &type));
  void* function = nullptr;
  EXPECT_EQ(yax_framework::kRegistryFailed, store.GetComponentEntryFunc(kClsid, &function));
  char binary[kYAXTextSize];
  EXPECT_EQ(yax_framework::kRegistryFailed, store.GetComponentBinPath(kClsid, binary));
}

TEST_F(InfoStoreMemoryFields, AValueThatIsNotSetIsEmptyOrZero) {
  for (const char* name : {"CompName", "Type", "FactoryFn", "BinaryPath"}) {
    ASSERT_EQ(0u, registry.CreateValue(0, kClsidKey, name, nullptr));
  }
  YAX_COMPONENT_INFO_ST info = Player();
  EXPECT_EQ(yax_framework::kOk, store.GetComponentInfo(kClsid, &info));
  EXPECT_STREQ(info.CompName, "");
  EXPECT_EQ(0u, info.Type);
  EXPECT_EQ(nullptr, info.FactoryFn);
  EXPECT_STREQ(info.BinaryPath, "");
  void* function = &info;
  EXPECT_EQ(yax_framework::kNoEntry, store.GetComponentEntryFunc(kClsid, &function));
  EXPECT_EQ(nullptr, function);
}

}  // namespace
