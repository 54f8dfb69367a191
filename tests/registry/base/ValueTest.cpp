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
  EXPECT_EQ(offsetof(Value, type), 0u);
  EXPECT_EQ(offsetof(Value, size), 4u);
  EXPECT_EQ(offsetof(Value, data), 8u);
  EXPECT_EQ(sizeof(Value), 8 + sizeof(void*));
}

TEST(Value, FreeingForgetsTheBuffer) {
  Value value = {kValueTypeString, 0, nullptr};
  Fill(value, "abc", 4);
  FreeValueData(value);
  EXPECT_EQ(value.data, nullptr);
  EXPECT_EQ(value.size, 0u);
  EXPECT_EQ(value.type, kValueTypeString);
  FreeValueData(value);
  EXPECT_EQ(value.data, nullptr);
}

TEST(ReadValue, AsksForAnyTypeUnlessTold) {
  const ReadValue any;
  EXPECT_EQ(any.type, kValueTypeAny);
  EXPECT_EQ(any.size, 0u);
  EXPECT_EQ(any.data, nullptr);
  EXPECT_EQ(ReadValue(kValueTypeString).type, kValueTypeString);
}

TEST(ReadValue, ShowsTerminatedTextOnly) {
  ReadValue value;
  EXPECT_EQ(value.text(), nullptr);
  Fill(value, "abc", 4);
  EXPECT_STREQ(value.text(), "abc");
  value.size = 3;
  EXPECT_EQ(value.text(), nullptr);
  value.size = 0;
  EXPECT_EQ(value.text(), nullptr);
}

TEST(ReadValue, ReadsUpToEightBytesAsANumber) {
  const unsigned char bytes[9] = {0x88, 0x77, 0x66, 0x55, 0x44, 0x33, 0x22, 0x11, 0xFF};
  ReadValue value;
  EXPECT_EQ(value.number(), 0u);
  Fill(value, bytes, 9);
  EXPECT_EQ(value.number(), 0x1122334455667788u);
  EXPECT_EQ(value.bytes()[8], 0xFFu);
  value.size = 8;
  EXPECT_EQ(value.number(), 0x1122334455667788u);
  value.size = 4;
  EXPECT_EQ(value.number(), 0x55667788u);
  value.size = 1;
  EXPECT_EQ(value.number(), 0x88u);
  value.size = 0;
  EXPECT_EQ(value.number(), 0u);
}

TEST(ReadValue, WithASizeButNoBytesIsEmpty) {
  ReadValue value;
  value.size = 8;
  EXPECT_EQ(value.text(), nullptr);
  EXPECT_EQ(value.number(), 0u);
}

TEST(Value, IsMadeFromBytesThatStayTheCallers) {
  const unsigned char bytes[] = {1, 2, 3};
  const Value value = MakeValue(5, bytes, 3);
  EXPECT_EQ(value.type, 5u);
  EXPECT_EQ(value.size, 3u);
  EXPECT_EQ(value.data, bytes);
}

TEST(Value, OfATextCountsItsTerminator) {
  const char text[] = "four";
  const Value value = TextValue(text);
  EXPECT_EQ(value.type, 1u);
  EXPECT_EQ(value.size, 5u);
  EXPECT_EQ(value.data, text);
}

TEST(KeyInfo, LayoutOfTheBinaryInterface) {
  EXPECT_EQ(sizeof(KeyInfo), 28u);
  EXPECT_EQ(offsetof(KeyInfo, reserved), 0u);
  EXPECT_EQ(offsetof(KeyInfo, subKeyCount), 4u);
  EXPECT_EQ(offsetof(KeyInfo, totalKeyCount), 8u);
  EXPECT_EQ(offsetof(KeyInfo, valueCount), 12u);
  EXPECT_EQ(offsetof(KeyInfo, totalValueCount), 16u);
  EXPECT_EQ(offsetof(KeyInfo, userId), 20u);
  EXPECT_EQ(offsetof(KeyInfo, permission), 24u);
}

TEST(RegistryInfo, LayoutOfTheBinaryInterface) {
  EXPECT_EQ(sizeof(RegistryInfo), 44u);
  EXPECT_EQ(offsetof(RegistryInfo, infoFormat), 0u);
  EXPECT_EQ(offsetof(RegistryInfo, keyCount), 4u);
  EXPECT_EQ(offsetof(RegistryInfo, valueCount), 8u);
  EXPECT_EQ(offsetof(RegistryInfo, fileSize), 12u);
  EXPECT_EQ(offsetof(RegistryInfo, segmentSize), 16u);
  EXPECT_EQ(offsetof(RegistryInfo, valueNameSize), 20u);
  EXPECT_EQ(offsetof(RegistryInfo, maxDataSize), 24u);
  EXPECT_EQ(offsetof(RegistryInfo, keyCapacity), 28u);
  EXPECT_EQ(offsetof(RegistryInfo, valueCapacity), 32u);
  EXPECT_EQ(offsetof(RegistryInfo, dataBlockCapacity), 36u);
  EXPECT_EQ(offsetof(RegistryInfo, infoFlag), 40u);
  EXPECT_EQ(offsetof(RegistryInfo, infoReserved), 41u);
}

}  // namespace
}  // namespace tamu::registry
