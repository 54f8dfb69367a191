// Fields of 256 bytes, and values in the registry that others have written.
#include "tests/framework/InfoStoreRig.h"

using namespace std::string_literals;

namespace {

// A component is registered, for others to change.
template <class Store>
class InfoStoreFields : public InfoStoreTest<Store> {
 protected:
  InfoStoreFields() {
    const YAX_COMPONENT_INFO_ST info = Player();
    EXPECT_EQ(this->store.RegisterComponent(kClsid, &info), 0u);
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
    EXPECT_EQ(this->store.SetComponentInfo(kClsid, &info), 0u);
    const unsigned int kept = length < 256 ? length : 255;
    EXPECT_EQ(this->Stored(kClsidKey, "CompName"), "type 1: " + std::string(kept, 'n') + '\0');
    EXPECT_EQ(this->Stored(kClsidKey, "BinaryPath"), "type 1: " + std::string(kept, 'p') + '\0');
    EXPECT_EQ(this->ReadName(), std::string(kept, 'n') + '\0');
  }
}

TYPED_TEST(InfoStoreFields, AFolderIsWrittenWithAtMost255CharactersAndATerminator) {
  YAX_SYSTEM_INFO_ST info = SystemOf(1, "");
  FillField(info.BinDirectory, std::string(256, 'd'));
  EXPECT_EQ(this->store.SetSystemInfo(&info), 0u);
  EXPECT_EQ(this->Stored("YAX_SYSTEM", "BinDirectory"), "type 1: " + std::string(255, 'd') + '\0');
  EXPECT_EQ(this->store.GetSystemInfo(&info), 0u);
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
  EXPECT_EQ(this->store.GetComponentBinPath(kClsid, binary), 0u);
  EXPECT_EQ(std::string(binary, sizeof binary), std::string(255, 'y') + '\0' + '#');
}

TYPED_TEST(InfoStoreFields, ATextWithoutTerminatorGetsOne) {
  this->Put(kClsidKey, "CompName", 1, "abc");
  EXPECT_EQ(this->ReadName(), "abc\0"s);
}

TYPED_TEST(InfoStoreFields, OfANumberTheBytesThatThereAreCount) {
  this->Put(kClsidKey, "Type", 1, "\1\2");
  YAX_COMPONENT_TYPE_ENUM type = YAX_COMPONENT_TYPE_FUNCTION;
  EXPECT_EQ(this->store.GetComponentType(kClsid, &type), 0u);
  EXPECT_EQ(type, 0x0201u) << "two bytes of a text";
  this->Put(kClsidKey, "Type", 2, "\1\2\3\4\5\6\7\x8\x9");
  EXPECT_EQ(this->store.GetComponentType(kClsid, &type), 0u);
  EXPECT_EQ(type, 0x04030201u) << "the first four of nine";
}

// ---- the two ways of reading part here

class InfoStoreFileFields : public InfoStoreFields<YAXInfoManagerRCEFile> {};
class InfoStoreMemoryFields : public InfoStoreFields<YAXInfoManagerRCEMemory> {};

TEST_F(InfoStoreFileFields, ANumberReadAsATextIsItsBytes) {
  Put(kClsidKey, "CompName", 0, "AB\0\0\0\0\0\0"s);
  EXPECT_EQ(ReadName(), "AB\0"s);
}

TEST_F(InfoStoreMemoryFields, ANumberReadAsATextIsEmpty) {
  Put(kClsidKey, "CompName", 0, "AB\0\0\0\0\0\0"s);
  EXPECT_EQ(ReadName(), "\0"s);
  Put(kClsidKey, "CompName", 2, "data\0"s);
  EXPECT_EQ(ReadName(), "\0"s) << "data of another type";
}

TEST_F(InfoStoreFileFields, AValueThatIsNotSetCannotBeRead) {
  for (const char* name : {"CompName", "Type", "FactoryFn", "BinaryPath"}) {
    ASSERT_EQ(registry.CreateValue(0, kClsidKey, name, nullptr), 0u);
  }
  YAX_COMPONENT_INFO_ST info = {};
  EXPECT_EQ(store.GetComponentInfo(kClsid, &info), 0xE000000D);
  YAX_COMPONENT_TYPE_ENUM type = YAX_COMPONENT_TYPE_BINARY;
  EXPECT_EQ(store.GetComponentType(kClsid, &type), 0xE000000D);
  void* function = nullptr;
  EXPECT_EQ(store.GetComponentEntryFunc(kClsid, &function), 0xE000000D);
  char binary[kYAXTextSize];
  EXPECT_EQ(store.GetComponentBinPath(kClsid, binary), 0xE000000D);
}

TEST_F(InfoStoreMemoryFields, AValueThatIsNotSetIsEmptyOrZero) {
  for (const char* name : {"CompName", "Type", "FactoryFn", "BinaryPath"}) {
    ASSERT_EQ(registry.CreateValue(0, kClsidKey, name, nullptr), 0u);
  }
  YAX_COMPONENT_INFO_ST info = Player();
  EXPECT_EQ(store.GetComponentInfo(kClsid, &info), 0u);
  EXPECT_STREQ(info.CompName, "");
  EXPECT_EQ(info.Type, 0u);
  EXPECT_EQ(info.FactoryFn, nullptr);
  EXPECT_STREQ(info.BinaryPath, "");
  void* function = &info;
  EXPECT_EQ(store.GetComponentEntryFunc(kClsid, &function), 0xE000000F);
  EXPECT_EQ(function, nullptr);
}

}  // namespace
