#include <gtest/gtest.h>

#include <cstddef>
#include <type_traits>

#include "framework/YAXRecords.h"

namespace {

TEST(YAXRecords, AnIdentifierIsSixteenBytes) {
  EXPECT_EQ(sizeof(YAX_GUID_ST), 16u);
  EXPECT_EQ(alignof(YAX_GUID_ST), 4u);
  EXPECT_EQ(offsetof(YAX_GUID_ST, Data1), 0u);
  EXPECT_EQ(offsetof(YAX_GUID_ST, Data2), 4u);
  EXPECT_EQ(offsetof(YAX_GUID_ST, Data3), 6u);
  EXPECT_EQ(offsetof(YAX_GUID_ST, Data4), 8u);
  EXPECT_EQ(sizeof(YAX_GUID_ST::Data1), 4u);
  EXPECT_EQ(sizeof(YAX_GUID_ST::Data2), 2u);
  EXPECT_EQ(sizeof(YAX_GUID_ST::Data3), 2u);
  EXPECT_EQ(sizeof(YAX_GUID_ST::Data4), 8u);
}

TEST(YAXRecords, TheSystemsDescriptionIsTheSameEverywhere) {
  EXPECT_EQ(sizeof(YAX_SYSTEM_INFO_ST), 260u);
  EXPECT_EQ(offsetof(YAX_SYSTEM_INFO_ST, isSingleBin), 0u);
  EXPECT_EQ(sizeof(YAX_SYSTEM_INFO_ST::isSingleBin), 4u);
  EXPECT_EQ(offsetof(YAX_SYSTEM_INFO_ST, BinDirectory), 4u);
  EXPECT_EQ(sizeof(YAX_SYSTEM_INFO_ST::BinDirectory), 256u);
}

struct ComponentLayout {
  std::size_t name, reserved, type, function, path, size;
};

// On machines with 32-bit and with 64-bit addresses.
TEST(YAXRecords, AComponentsDescriptionDependsOnTheSizeOfAnAddress) {
  static_assert(sizeof(void*) == 4 || sizeof(void*) == 8, "no other layout is known");
  const ComponentLayout expected = sizeof(void*) == 4 ? ComponentLayout{4, 260, 264, 268, 272, 528}
                                                      : ComponentLayout{8, 264, 268, 272, 280, 536};
  EXPECT_EQ(offsetof(YAX_COMPONENT_INFO_ST, pGuid), 0u);
  EXPECT_EQ(offsetof(YAX_COMPONENT_INFO_ST, CompName), expected.name);
  EXPECT_EQ(offsetof(YAX_COMPONENT_INFO_ST, Reserved), expected.reserved);
  EXPECT_EQ(offsetof(YAX_COMPONENT_INFO_ST, Type), expected.type);
  EXPECT_EQ(offsetof(YAX_COMPONENT_INFO_ST, FactoryFn), expected.function);
  EXPECT_EQ(offsetof(YAX_COMPONENT_INFO_ST, BinaryPath), expected.path);
  EXPECT_EQ(sizeof(YAX_COMPONENT_INFO_ST), expected.size);
  EXPECT_EQ(sizeof(YAX_COMPONENT_INFO_ST::CompName), 256u);
  EXPECT_EQ(sizeof(YAX_COMPONENT_INFO_ST::Reserved), 4u);
  EXPECT_EQ(sizeof(YAX_COMPONENT_INFO_ST::Type), 4u);
  EXPECT_EQ(sizeof(YAX_COMPONENT_INFO_ST::FactoryFn), sizeof(void*));
  EXPECT_EQ(sizeof(YAX_COMPONENT_INFO_ST::BinaryPath), 256u);
}

TEST(YAXRecords, EnumerationsAreUnsignedWordsWithFixedValues) {
  EXPECT_EQ(sizeof(YAX_COMPONENT_TYPE_ENUM), 4u);
  EXPECT_TRUE(std::is_unsigned<std::underlying_type<YAX_COMPONENT_TYPE_ENUM>::type>::value);
  EXPECT_EQ(static_cast<unsigned int>(YAX_COMPONENT_TYPE_FUNCTION), 0u);
  EXPECT_EQ(static_cast<unsigned int>(YAX_COMPONENT_TYPE_BINARY), 1u);
  EXPECT_EQ(sizeof(YAX_REG_DATA_TYPE_ENUM), 4u);
  EXPECT_TRUE(std::is_unsigned<std::underlying_type<YAX_REG_DATA_TYPE_ENUM>::type>::value);
  EXPECT_EQ(static_cast<unsigned int>(YAX_REG_DATA_TYPE_INTEGER), 0u);
  EXPECT_EQ(static_cast<unsigned int>(YAX_REG_DATA_TYPE_STRING), 1u);
}

}  // namespace
