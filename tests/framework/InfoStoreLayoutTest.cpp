// The bytes of a component and of the system information in the file.
#include <fstream>

#include "framework/YAXStatus.h"
#include "tests/framework/InfoStoreRig.h"

using namespace std::string_literals;

namespace {

template <class Store>
class InfoStoreLayout : public InfoStoreTest<Store> {};
TYPED_TEST_SUITE(InfoStoreLayout, BothStores, StoreNames);

// The value's 52 bytes: the next older value, the data's size, type and flags, name, data.
std::string Record(unsigned int next, unsigned int size, unsigned int flags, std::string name,
                   const std::string& data) {
  name.resize(32);
  using tamu::registry::Little;
  return Little(next, 8) + Little(size, 3) + Little(flags, 1) + name + data;
}

constexpr unsigned int kFirstValue = 33600;  // slots 1 of a new file
constexpr unsigned int kFirstBlock = 52592;

TYPED_TEST(InfoStoreLayout, ARegisteredComponentIsFourValuesOfItsKey) {
  const YAX_COMPONENT_INFO_ST info = Player();
  ASSERT_EQ(yax_framework::kOk, this->store.RegisterComponent(kClsid, &info));
  const auto part = [&](size_t offset, size_t count) {
    return tamu::registry::FilePart(this->path, offset, count);
  };
  EXPECT_EQ(part(kFirstValue, 52), Record(0, 7, 0x61, "CompName", "\0\1\0\0\0\0\0\0"s));
  EXPECT_EQ(part(kFirstValue + 52, 52), Record(0x100, 8, 0x40, "Type", "\1\0\0\0\0\0\0\0"s));
  EXPECT_EQ(part(kFirstValue + 104, 52),
            Record(0x200, 8, 0x40, "FactoryFn", "\x50\x34\x12\x80\xFF\xFF\xFF\xFF"s));
  EXPECT_EQ(part(kFirstValue + 156, 52),
            Record(0x300, 13, 0x61, "BinaryPath", "\0\2\0\0\0\0\0\0"s));
  EXPECT_EQ(part(kFirstValue + 208, 52), std::string(52, '\0')) << "nothing else";
  EXPECT_EQ("Player\0\0"s, part(kFirstBlock, 8));
  EXPECT_EQ("libplayer.so\0\0"s, part(kFirstBlock + 64, 14));
  const std::map<std::string, DecodedKey> tree = DecodeTree(this->path);
  ASSERT_EQ(3u, tree.size());
  EXPECT_EQ(0xAC295ADDu, tree.at("YAX_ROOT").owner);
  EXPECT_TRUE(tree.at("YAX_ROOT").values.empty());
  EXPECT_EQ(4u, tree.at(kClsidKey).values.size());
}

// Reading one component looks at no other.
TYPED_TEST(InfoStoreLayout, ADamagedComponentDoesNotConcernOthers) {
  const YAX_COMPONENT_INFO_ST info = Player();
  YAX_GUID_ST other = kClsid;
  ++other.Data1;
  ASSERT_EQ(yax_framework::kOk, this->store.RegisterComponent(kClsid, &info));
  ASSERT_EQ(yax_framework::kOk, this->store.RegisterComponent(other, &info));
  const auto putNext = [&](unsigned int id) {  // of the newest value of the other one
    std::fstream file(this->path, std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(kFirstValue + 7 * 52);
    file << tamu::registry::Little(id, 4);
  };
  putNext(0x7FFF);
  YAX_COMPONENT_INFO_ST read = {};
  EXPECT_EQ(yax_framework::kOk, this->store.GetComponentInfo(kClsid, &read));
  EXPECT_EQ("Player", std::string(read.CompName));
  EXPECT_EQ(yax_framework::kRegistryFailed, this->store.GetComponentInfo(other, &read));
  putNext(0x700);
}

TYPED_TEST(InfoStoreLayout, TheSystemInformationIsTwoValues) {
  YAX_SYSTEM_INFO_ST info = SystemOf(0x80000001, "/usr/lib");
  ASSERT_EQ(yax_framework::kOk, this->store.SetSystemInfo(&info));
  EXPECT_EQ(tamu::registry::FilePart(this->path, kFirstValue, 52),
            Record(0, 9, 0x61, "BinDirectory", "\0\1\0\0\0\0\0\0"s));
  EXPECT_EQ(tamu::registry::FilePart(this->path, kFirstValue + 52, 52),
            Record(0x100, 8, 0x40, "isSingleBin", "\x01\0\0\x80\0\0\0\0"s))
      << "the upper half is 0 whatever the sign";
  EXPECT_EQ("/usr/lib\0\0"s, tamu::registry::FilePart(this->path, kFirstBlock, 10));
}

TYPED_TEST(InfoStoreLayout, ATypeIsStoredWithoutASign) {
  YAX_COMPONENT_INFO_ST info = Player();
  info.Type = static_cast<YAX_COMPONENT_TYPE_ENUM>(0xFFFFFFFE);
  ASSERT_EQ(yax_framework::kOk, this->store.RegisterComponent(kClsid, &info));
  EXPECT_EQ("type 0: \xFE\xFF\xFF\xFF\0\0\0\0"s, this->Stored(kClsidKey, "Type"));
  YAX_COMPONENT_TYPE_ENUM type = YAX_COMPONENT_TYPE_FUNCTION;
  EXPECT_EQ(yax_framework::kOk, this->store.GetComponentType(kClsid, &type));
  EXPECT_EQ(0xFFFFFFFE, type);
}

TYPED_TEST(InfoStoreLayout, TheUpperHalfOfAFunctionIsItsSign) {
  YAX_COMPONENT_INFO_ST info = ComponentOf("", 0, 0x7FFFFFF0, "");
  ASSERT_EQ(yax_framework::kOk, this->store.RegisterComponent(GuidOf(1), &info));
  EXPECT_EQ("type 0: \xF0\xFF\xFF\x7F\0\0\0\0"s, this->Stored(KeyOf(GuidOf(1)), "FactoryFn"));
  info.FactoryFn = FunctionAt(0x80000000);
  ASSERT_EQ(yax_framework::kOk, this->store.RegisterComponent(GuidOf(2), &info));
  EXPECT_EQ("type 0: \0\0\0\x80\xFF\xFF\xFF\xFF"s, this->Stored(KeyOf(GuidOf(2)), "FactoryFn"));
  info.FactoryFn = nullptr;
  ASSERT_EQ(yax_framework::kOk, this->store.RegisterComponent(GuidOf(3), &info));
  EXPECT_EQ("type 0: \0\0\0\0\0\0\0\0"s, this->Stored(KeyOf(GuidOf(3)), "FactoryFn"));
}

}  // namespace
