#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>

#include "registry/base/KeyInfo.h"
#include "registry/base/RegistryInfo.h"
#include "registry/base/Value.h"

namespace tamu::registry {
namespace {

// Fills the value as GetValue does: with a new buffer.
void Fill(Value& value, const void* bytes, unsigned int size) {
  unsigned char* buffer = new unsigned char[size];
  std::memcpy(buffer, bytes, size);
  value.data = buffer;
  value.size = size;
}

TEST(Value, NumbersOfTheBinaryInterface) {
  EXPECT_EQ(kValueTypeInteger, 0u);
  EXPECT_EQ(kValueTypeString, 1u);
  EXPECT_EQ(kValueTypeOffset, 4u);
  EXPECT_EQ(kValueTypeMax, 5u);
  EXPECT_EQ(kValueTypeAny, 6u);
  EXPECT_EQ(kValueDataMax, 1024u);
}

TEST(Value, LayoutOfTheBinaryInterface) {
  EXPECT_EQ(0u, offsetof(Value, type));
  EXPECT_EQ(4u, offsetof(Value, size));
  EXPECT_EQ(8u, offsetof(Value, data));
  EXPECT_EQ(sizeof(Value), 8 + sizeof(void*));
}

TEST(Value, FreeingForgetsTheBuffer) {
  Value value = {kValueTypeString, 0, nullptr};
  Fill(value, "abc", 4);
  FreeValueData(value);
  EXPECT_EQ(nullptr, value.data);
  EXPECT_EQ(0u, value.size);
  EXPECT_EQ(kValueTypeString, value.type);
  FreeValueData(value);
  EXPECT_EQ(nullptr, value.data);
}

TEST(ReadValue, AsksForAnyTypeUnlessTold) {
  const ReadValue any;
  EXPECT_EQ(kValueTypeAny, any.type);
  EXPECT_EQ(0u, any.size);
  EXPECT_EQ(nullptr, any.data);
  EXPECT_EQ(kValueTypeString, ReadValue(kValueTypeString).type);
}

TEST(ReadValue, ShowsTerminatedTextOnly) {
  ReadValue value;
  EXPECT_EQ(nullptr, value.text());
  Fill(value, "abc", 4);
  EXPECT_STREQ(value.text(), "abc");
  value.size = 3;
  EXPECT_EQ(nullptr, value.text());
  value.size = 0;
  EXPECT_EQ(nullptr, value.text());
}

TEST(ReadValue, ReadsUpToEightBytesAsANumber) {
  const unsigned char bytes[9] = {0x88, 0x77, 0x66, 0x55, 0x44, 0x33, 0x22, 0x11, 0xFF};
  ReadValue value;
  EXPECT_EQ(0u, value.number());
  Fill(value, bytes, 9);
  EXPECT_EQ(0x1122334455667788u, value.number());
  EXPECT_EQ(0xFFu, value.bytes()[8]);
  value.size = 8;
  EXPECT_EQ(0x1122334455667788u, value.number());
  value.size = 4;
  EXPECT_EQ(0x55667788u, value.number());
  value.size = 1;
  EXPECT_EQ(0x88u, value.number());
  value.size = 0;
  EXPECT_EQ(0u, value.number());
}

TEST(ReadValue, WithASizeButNoBytesIsEmpty) {
  ReadValue value;
  value.size = 8;
  EXPECT_EQ(nullptr, value.text());
  EXPECT_EQ(0u, value.number());
}

TEST(Value, IsMadeFromBytesThatStayTheCallers) {
  const unsigned char bytes[] = {1, 2, 3};
  const Value value = MakeValue(5, bytes, 3);
  EXPECT_EQ(5u, value.type);
  EXPECT_EQ(3u, value.size);
  EXPECT_EQ(value.data, bytes);
}

TEST(Value, OfATextCountsItsTerminator) {
  const char text[] = "four";
  const Value value = TextValue(text);
  EXPECT_EQ(1u, value.type);
  EXPECT_EQ(5u, value.size);
  EXPECT_EQ(value.data, text);
}

TEST(KeyInfo, LayoutOfTheBinaryInterface) {
  EXPECT_EQ(28u, sizeof(KeyInfo));
  EXPECT_EQ(0u, offsetof(KeyInfo, reserved));
  EXPECT_EQ(4u, offsetof(KeyInfo, subKeyCount));
  EXPECT_EQ(8u, offsetof(KeyInfo, totalKeyCount));
  EXPECT_EQ(12u, offsetof(KeyInfo, valueCount));
  EXPECT_EQ(16u, offsetof(KeyInfo, totalValueCount));
  EXPECT_EQ(20u, offsetof(KeyInfo, userId));
  EXPECT_EQ(24u, offsetof(KeyInfo, permission));
}

TEST(RegistryInfo, LayoutOfTheBinaryInterface) {
  EXPECT_EQ(44u, sizeof(RegistryInfo));
  EXPECT_EQ(0u, offsetof(RegistryInfo, infoFormat));
  EXPECT_EQ(4u, offsetof(RegistryInfo, keyCount));
  EXPECT_EQ(8u, offsetof(RegistryInfo, valueCount));
  EXPECT_EQ(12u, offsetof(RegistryInfo, fileSize));
  EXPECT_EQ(16u, offsetof(RegistryInfo, segmentSize));
  EXPECT_EQ(20u, offsetof(RegistryInfo, valueNameSize));
  EXPECT_EQ(24u, offsetof(RegistryInfo, maxDataSize));
  EXPECT_EQ(28u, offsetof(RegistryInfo, keyCapacity));
  EXPECT_EQ(32u, offsetof(RegistryInfo, valueCapacity));
  EXPECT_EQ(36u, offsetof(RegistryInfo, dataBlockCapacity));
  EXPECT_EQ(40u, offsetof(RegistryInfo, infoFlag));
  EXPECT_EQ(41u, offsetof(RegistryInfo, infoReserved));
}

}  // namespace
}  // namespace tamu::registry
