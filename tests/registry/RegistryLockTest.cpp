#include <gtest/gtest.h>

#include "registry/RegistryLock.h"

namespace tamu::registry {

namespace {

TEST(RegistryLock, IsMadeAsOftenAsAsked) {
  RegistryLock* first = nullptr;
  RegistryLock* second = nullptr;
  EXPECT_EQ(RegistryLock::Make(&first), 0u);
  EXPECT_EQ(RegistryLock::Make(&second), 0u);
  EXPECT_NE(first, nullptr);
  EXPECT_NE(second, nullptr);
  EXPECT_NE(first, second);
  delete first;
  delete second;
}

}  // namespace

}  // namespace tamu::registry
