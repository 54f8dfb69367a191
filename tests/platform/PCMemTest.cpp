#include <gtest/gtest.h>

#include <string>

#include "platform/PCMem.h"

namespace {

TEST(PCMem, CopiesExactlyTheBytesGiven) {
  std::string dest = "......";
  PCMem::Copy(dest.data() + 1, "a\0c", 3);
  EXPECT_EQ(dest, std::string(".a\0c..", 6));
}

TEST(PCMem, FillsExactlyTheBytesGiven) {
  std::string dest = "......";
  PCMem::Set(dest.data() + 2, 0xFF, 3);
  EXPECT_EQ("..\xFF\xFF\xFF.", dest);
}

TEST(PCMem, NullIsAllowedForNoBytes) {
  char byte = 'x';
  PCMem::Copy(nullptr, nullptr, 0);
  PCMem::Copy(&byte, nullptr, 0);
  PCMem::Set(nullptr, 1, 0);
  PCMem::Set(&byte, 1, 0);
  EXPECT_EQ('x', byte);
}

}  // namespace
