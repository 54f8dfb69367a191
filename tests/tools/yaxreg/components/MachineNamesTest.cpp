#include "tools/yaxreg/components/MachineNames.h"

#include <gtest/gtest.h>

namespace {

TEST(MachineNames, EachMachineHasANameAndAnyOtherAreNumbers) {
  yax_elf::ElfMachine machine;
  EXPECT_TRUE(yaxreg::FindMachine("amd64", &machine));
  EXPECT_EQ("x86-64", yaxreg::MachineName(machine));
  EXPECT_FALSE(yaxreg::FindMachine("abacus", &machine));
  machine = {999, false, false};
  EXPECT_EQ("machine 999 (32 bit, little-endian)", yaxreg::MachineName(machine));
}

}  // namespace
