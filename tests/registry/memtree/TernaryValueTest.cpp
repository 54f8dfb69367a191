#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "registry/memtree/TernaryValue.h"

namespace tamu::registry {
namespace {

// A loaded value whose record is all zero.
struct Loaded {
  TernaryValue value{0x300, new TernaryValueNode};

  std::string Name() const { return value.node.name(); }
  // The value as it is handed out, as "0 type 1: abc".
  std::string Get(unsigned int requested = kValueTypeAny) const {
    Value out = {requested, 77, nullptr};
    const unsigned int result = value.GetValue(&out);
    if (result != 0) {
      EXPECT_EQ(out.type, requested);
      EXPECT_EQ(77u, out.size);
      EXPECT_EQ(nullptr, out.data);
      return std::to_string(result);
    }
    const std::string bytes(static_cast<const char*>(out.data), out.size);
    delete[] static_cast<unsigned char*>(out.data);
    return "0 type " + std::to_string(out.type) + ": " + bytes;
  }
  // Takes over data from an array of exactly its size.
  unsigned int Set(const std::string& name, unsigned int type, const std::string& bytes,
                   unsigned int dataId = 0x100) {
    std::vector<char> buffer(bytes.begin(), bytes.end());
    const Value given = {type, static_cast<unsigned int>(buffer.size()), buffer.data()};
    return value.SetValue(name.c_str(), &given, dataId);
  }
};

TEST(TernaryValue, BeginsWithTheBytesOfItsRecord) {
  TernaryValueNode* record = new TernaryValueNode;
  record->setNumber(5);
  TernaryValue value(0x300, record);
  EXPECT_EQ(0x300u, value.id);
  EXPECT_EQ(nullptr, value.next);
  EXPECT_EQ(6u, value.value.type);
  EXPECT_EQ(0u, value.value.size);
  EXPECT_EQ(nullptr, value.value.data);
  EXPECT_EQ(value.data, value.node.bytes() + 44);
  EXPECT_EQ(0u, value.ownsData);
  EXPECT_EQ(0u, value.GetDataId());
}

TEST(TernaryValue, WithoutARecordItCanBeDestroyed) {
  Value unused = {1, 2, &unused};
  TernaryValue value(&unused);
  EXPECT_EQ(6u, value.value.type);
  EXPECT_EQ(0u, value.value.size);
  EXPECT_EQ(nullptr, value.value.data);
}

TEST(TernaryValue, ANumberIsHeldInTheRecord) {
  Loaded loaded;
  ASSERT_EQ(status::kOk, loaded.Set("old", 1, "abc"));
  EXPECT_EQ(status::kOk, loaded.value.SetValue("n", 0x0102030405060708ull, true));
  const unsigned char expected[] = {0, 0, 0, 0, 0, 0, 0, 0, 8, 0, 0, 0x40, 'n', 0};
  EXPECT_EQ(0, std::memcmp(loaded.value.node.bytes(), expected, sizeof expected));
  EXPECT_EQ(std::string("0 type 0: \x08\x07\x06\x05\x04\x03\x02\x01"), loaded.Get());
  EXPECT_EQ(0u, loaded.value.ownsData);
  EXPECT_EQ(status::kOk, loaded.value.SetValue("n", 7, false));
  EXPECT_EQ(7u, loaded.value.node.number());
  EXPECT_EQ("53", loaded.Get()) << "there, but not set";
}

// What lies in a record goes with it, and stays when the other value ends.
TEST(TernaryValue, ExchangingMovesDataWhereverItIs) {
  Loaded number;
  ASSERT_EQ(status::kOk, number.value.SetValue("n", 5, true));
  {
    Loaded text;
    Loaded other;
    ASSERT_EQ(status::kOk, text.Set("t", 1, "abc"));
    ASSERT_EQ(status::kOk, other.value.SetValue("n", 6, true));
    number.value.Exchange(text.value);
    EXPECT_EQ("0 type 1: abc", number.Get());
    EXPECT_TRUE(number.value.node.hasName("t"));
    EXPECT_EQ(text.value.data, text.value.node.data());
    EXPECT_EQ(std::string("0 type 0: \x05\0\0\0\0\0\0\0", 18), text.Get());
    other.value.Exchange(text.value);
    EXPECT_EQ(std::string("0 type 0: \x06\0\0\0\0\0\0\0", 18), text.Get());
    EXPECT_EQ(std::string("0 type 0: \x05\0\0\0\0\0\0\0", 18), other.Get());
  }
  EXPECT_EQ("0 type 1: abc", number.Get());
}

TEST(TernaryValue, NamesAreCutTo31Characters) {
  Loaded loaded;
  EXPECT_EQ(status::kOk, loaded.value.SetValue(std::string(40, 'n').c_str(), 7, true));
  EXPECT_EQ(std::string(31, 'n'), loaded.Name());
  EXPECT_EQ(status::kOk, loaded.Set(std::string(32, 'm'), 2, "x"));
  EXPECT_EQ(std::string(31, 'm'), loaded.Name());
  EXPECT_EQ(status::kOk, loaded.Set("short", 2, "x"));
  EXPECT_EQ("short", loaded.Name());
}

TEST(TernaryValue, DataIsCopiedAndItsPlaceKept) {
  Loaded loaded;
  for (unsigned int type = 1; type <= 5; ++type) {
    EXPECT_EQ(status::kOk, loaded.Set("v", type, "abcde", 0x1200));
    EXPECT_EQ(loaded.Get(), "0 type " + std::to_string(type) + ": abcde");
    EXPECT_EQ(0x1200u, loaded.value.GetDataId());
    EXPECT_EQ(5u, loaded.value.node.dataSize());
    EXPECT_EQ(loaded.value.node.valueFlags(), 0x60 + type);
    EXPECT_EQ(0x1200u, loaded.value.node.dataWord());
  }
  EXPECT_EQ(status::kOk, loaded.Set("v", 1, ""));
  EXPECT_EQ(0x21, loaded.value.node.valueFlags());
  EXPECT_EQ("53", loaded.Get());
}

TEST(TernaryValue, ANumberTakesTheBytesThatThereAre) {
  Loaded loaded;
  EXPECT_EQ(status::kOk, loaded.Set("n", 0, "\x01\x02"));
  EXPECT_EQ(loaded.Get(), std::string("0 type 0: \x01\x02\0\0\0\0\0\0", 18));
  EXPECT_EQ(status::kOk, loaded.Set("n", 0, "123456789012"));
  EXPECT_EQ("0 type 0: 12345678", loaded.Get());
  EXPECT_EQ(8u, loaded.value.node.dataSize());
  EXPECT_EQ(0u, loaded.value.GetDataId());
}

TEST(TernaryValue, ATypeThatThereIsNotChangesNothing) {
  Loaded loaded;
  ASSERT_EQ(status::kOk, loaded.Set("v", 1, "abc"));
  EXPECT_EQ(status::kNoData, loaded.Set("w", 6, "xyz"));
  EXPECT_EQ(status::kNoData, loaded.Set("w", 31, "xyz"));
  EXPECT_EQ("v", loaded.Name());
  EXPECT_EQ("0 type 1: abc", loaded.Get());
}

TEST(TernaryValue, DataMayComeFromTheValueItself) {
  Loaded loaded;
  ASSERT_EQ(status::kOk, loaded.Set("v", 1, "abcdefghij"));
  Value own = {2, 4, loaded.value.data + 3};
  EXPECT_EQ(status::kOk, loaded.value.SetValue("v", &own, 0x100));
  EXPECT_EQ("0 type 2: defg", loaded.Get());
  own = {0, 4, loaded.value.data};
  EXPECT_EQ(status::kOk, loaded.value.SetValue("v", &own, 0));
  EXPECT_EQ(loaded.Get(), std::string("0 type 0: defg\0\0\0\0", 18));
  own = {0, 2, loaded.value.data + 1};
  EXPECT_EQ(status::kOk, loaded.value.SetValue("v", &own, 0));
  EXPECT_EQ(loaded.Get(), std::string("0 type 0: ef\0\0\0\0\0\0", 18));
}

TEST(TernaryValue, OnlyTheTypeAskedForIsHandedOut) {
  Loaded loaded;
  ASSERT_EQ(status::kOk, loaded.Set("v", 1, "abc"));
  EXPECT_EQ("0 type 1: abc", loaded.Get(6));
  EXPECT_EQ("0 type 1: abc", loaded.Get(1));
  for (unsigned int type : {0u, 2u, 3u, 4u, 5u, 7u}) EXPECT_EQ("22", loaded.Get(type)) << type;
}

// A record may tell a number to be longer than the eight bytes it has.
TEST(TernaryValue, ANumberGivesNoMoreThanItsRecordHolds) {
  Loaded loaded;
  ASSERT_EQ(status::kOk, loaded.value.SetValue("n", 5, true));
  loaded.value.node.setDataSize(1000);
  const std::string expected = std::string("0 type 0: \x05") + std::string(999, '\0');
  EXPECT_EQ(loaded.Get(), expected);
  loaded.value.node.setDataSize(2);
  EXPECT_EQ(loaded.Get(), std::string("0 type 0: \x05\0", 12));
}

TEST(TernaryValue, DataThatWasNotLoadedIsZero) {
  Loaded loaded;
  loaded.value.node.setSet(true);
  loaded.value.node.setInBlocks(true);
  loaded.value.node.setType(3);
  loaded.value.node.setDataSize(3);
  loaded.value.DeleteData();
  EXPECT_EQ(nullptr, loaded.value.data);
  EXPECT_EQ(loaded.Get(), std::string("0 type 3: \0\0\0", 13));
  ASSERT_EQ(status::kOk, loaded.value.CreateData(3));
  EXPECT_EQ(1u, loaded.value.ownsData);
  std::memcpy(loaded.value.data, "xyz", 3);
  EXPECT_EQ("0 type 3: xyz", loaded.Get());
  ASSERT_EQ(status::kOk, loaded.value.CreateData(3));
  EXPECT_EQ(loaded.Get(), std::string("0 type 3: \0\0\0", 13));
}

}  // namespace
}  // namespace tamu::registry
