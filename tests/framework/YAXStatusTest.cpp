#include <gtest/gtest.h>

#include <set>
#include <string>

#include "framework/YAXStatus.h"
#include "registry/base/RegistryStatus.h"

namespace {

struct Named {
  unsigned int status;
  unsigned int value;
};

constexpr Named kAll[] = {
    {yax_framework::kNotProvided, 0xE0000002},   {yax_framework::kNoMemory, 0xE0000003},
    {yax_framework::kNotRegistered, 0xE0000004}, {yax_framework::kNoFramework, 0xE0000005},
    {yax_framework::kNoInterface, 0xE0000007},   {yax_framework::kBadArgument, 0xE0000008},
    {yax_framework::kCannotLoad, 0xE0000009},    {yax_framework::kCannotClose, 0xE000000A},
    {yax_framework::kInUse, 0xE000000B},         {yax_framework::kRegistryFailed, 0xE000000D},
    {yax_framework::kNoEntry, 0xE000000F},       {yax_framework::kUnspecified, 0xE0000010},
};

TEST(YAXStatus, HasFixedValues) {
  EXPECT_EQ(yax_framework::kOk, 0u);
  for (const Named& named : kAll) EXPECT_EQ(named.status, named.value);
}

TEST(YAXStatus, HasATextOfItsOwnForEachValue) {
  const std::string unknown = YAXStatusText(0xE0000001);
  std::set<std::string> texts = {YAXStatusText(0), unknown};
  for (const Named& named : kAll) {
    EXPECT_TRUE(texts.insert(YAXStatusText(named.value)).second) << std::hex << named.value;
  }
  EXPECT_EQ(14u, texts.size());
}

TEST(YAXStatus, TellsOfTheRegistrysStatusesWhatTheRegistryTells) {
  for (unsigned int status = 0; status < 100; ++status) {
    EXPECT_STREQ(YAXStatusText(status), tamu::registry::StatusText(status)) << status;
  }
}

TEST(YAXStatus, HasATextForEveryNumber) {
  for (unsigned int status : {0xE0000000u, 0xE0000006u, 0xE000000Cu, 0xE0000011u, 0xFFFFFFFFu}) {
    ASSERT_NE(nullptr, YAXStatusText(status));
    EXPECT_STRNE(YAXStatusText(status), "");
  }
}

}  // namespace
