#include <gtest/gtest.h>

#include <cstddef>
#include <type_traits>

#include "framework/YAXRecords.h"

namespace {

TEST(YAXRecords, AnIdentifierIsSixteenBytes) {
  EXPECT_EQ(16u, sizeof(YAX_GUID_ST));
  EXPECT_EQ(4u, alignof(YAX_GUID_ST));
  EXPECT_EQ(0u, offsetof(YAX_GUID_ST, Data1));
  EXPECT_EQ(4u, offsetof(YAX_GUID_ST, Data2));
  EXPECT_EQ(6u, offsetof(YAX_GUID_ST, Data3));
  EXPECT_EQ(8u, offsetof(YAX_GUID_ST, Data4));
  EXPECT_EQ(4u, sizeof(YAX_GUID_ST::Data1));
  EXPECT_EQ(2u, sizeof(YAX_GUID_ST::Data2));
  EXPECT_EQ(2u, sizeof(YAX_GUID_ST::Data3));
  EXPECT_EQ(8u, sizeof(YAX_GUID_ST::Data4));
}

TEST(YAXRecords, TheSystemsDescriptionIsTheSameEverywhere) {
  EXPECT_EQ(260u, sizeof(YAX_SYSTEM_INFO_ST));
  EXPECT_EQ(0u, offsetof(YAX_SYSTEM_INFO_ST, isSingleBin));
  EXPECT_EQ(4u, sizeof(YAX_SYSTEM_INFO_ST::isSingleBin));
  EXPECT_EQ(4u, offsetof(YAX_SYSTEM_INFO_ST, BinDirectory));
  EXPECT_EQ(256u, sizeof(YAX_SYSTEM_INFO_ST::BinDirectory));
}

struct ComponentLayout {
  std::size_t name, reserved, type, function, path, size;
};

// On machines with 32-bit and with 64-bit addresses.
TEST(YAXRecords, AComponentsDescriptionDependsOnTheSizeOfAnAddress) {
  static_assert(sizeof(void*) == 4 || sizeof(void*) == 8, "no other layout is known");
  const ComponentLayout expected = sizeof(void*) == 4 ? ComponentLayout{4, 260, 264, 268, 272, 528}
                                                      : ComponentLayout{8, 264, 268, 272, 280, 536};
  EXPECT_EQ(0u, offsetof(YAX_COMPONENT_INFO_ST, pGuid));
  EXPECT_EQ(offsetof(YAX_COMPONENT_INFO_ST, CompName), expected.name);
  EXPECT_EQ(offsetof(YAX_COMPONENT_INFO_ST, Reserved), expected.reserved);
  EXPECT_EQ(offsetof(YAX_COMPONENT_INFO_ST, Type), expected.type);
  EXPECT_EQ(offsetof(YAX_COMPONENT_INFO_ST, FactoryFn), expected.function);
  EXPECT_EQ(offsetof(YAX_COMPONENT_INFO_ST, BinaryPath), expected.path);
  EXPECT_EQ(sizeof(YAX_COMPONENT_INFO_ST), expected.size);
  EXPECT_EQ(256u, sizeof(YAX_COMPONENT_INFO_ST::CompName));
  EXPECT_EQ(4u, sizeof(YAX_COMPONENT_INFO_ST::Reserved));
  EXPECT_EQ(4u, sizeof(YAX_COMPONENT_INFO_ST::Type));
  EXPECT_EQ(sizeof(YAX_COMPONENT_INFO_ST::FactoryFn), sizeof(void*));
  EXPECT_EQ(256u, sizeof(YAX_COMPONENT_INFO_ST::BinaryPath));
}

TEST(YAXRecords, EnumerationsAreUnsignedWordsWithFixedValues) {
  EXPECT_EQ(4u, sizeof(YAX_COMPONENT_TYPE_ENUM));
  EXPECT_TRUE(std::is_unsigned<std::underlying_type<YAX_COMPONENT_TYPE_ENUM>::type>::value);
  EXPECT_EQ(0u, static_cast<unsigned int>(YAX_COMPONENT_TYPE_FUNCTION));
  EXPECT_EQ(1u, static_cast<unsigned int>(YAX_COMPONENT_TYPE_BINARY));
  EXPECT_EQ(4u, sizeof(YAX_REG_DATA_TYPE_ENUM));
  EXPECT_TRUE(std::is_unsigned<std::underlying_type<YAX_REG_DATA_TYPE_ENUM>::type>::value);
  EXPECT_EQ(0u, static_cast<unsigned int>(YAX_REG_DATA_TYPE_INTEGER));
  EXPECT_EQ(1u, static_cast<unsigned int>(YAX_REG_DATA_TYPE_STRING));
}

}  // namespace
