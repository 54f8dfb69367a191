#include <gtest/gtest.h>

#include "registry/RegistryLock.h"

namespace tamu::registry {

namespace {

TEST(RegistryLock, IsMadeAsOftenAsAsked) {
  RegistryLock* first = nullptr;
  RegistryLock* second = nullptr;
  EXPECT_EQ(0u, RegistryLock::Make(&first));
  EXPECT_EQ(0u, RegistryLock::Make(&second));
  EXPECT_NE(nullptr, first);
  EXPECT_NE(nullptr, second);
  EXPECT_NE(first, second);
  delete first;
  delete second;
}

}  // namespace

}  // namespace tamu::registry
