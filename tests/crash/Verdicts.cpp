#include "tests/crash/Verdicts.h"

#include <gtest/gtest.h>

#include <cstdio>

namespace crash {

void Verdicts::Print() const {
  std::printf(
      "%u states, %u with other bytes; %u damaged, %u backups, %u mixed, %u unopenable, "
      "%u lost\n",
      states, otherBytes, damaged, backups, mixed, unopenable, lost);
}

void Verdicts::ExpectSound() const {
  EXPECT_GT(states, 0u);
  EXPECT_EQ(0u, otherBytes);
  EXPECT_EQ(0u, damaged) << findings;
  EXPECT_EQ(0u, backups) << findings;
  EXPECT_EQ(0u, mixed) << findings;
  EXPECT_EQ(0u, unopenable) << findings;
  EXPECT_EQ(0u, lost) << findings;
}

}  // namespace crash
