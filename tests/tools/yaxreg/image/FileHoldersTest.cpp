#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <string>

#include "tests/platform/TestFiles.h"
#include "tests/processes/Worker.h"
#include "tools/yaxreg/image/FileHolders.h"

namespace {

using yaxreg::HoldersOf;

TEST(FileHolders, AreOthersThatHaveTheFileOpen) {
  const TempDir folder;
  const std::string file = folder / "device.rce";
  PutFile(file, "x");
  std::FILE* const own = std::fopen(file.c_str(), "r");
  ASSERT_NE(nullptr, own);
  int told[2] = {-1, -1};
  int toEnd[2] = {-1, -1};
  ASSERT_EQ(0, pipe(told));
  ASSERT_EQ(0, pipe(toEnd));
  EXPECT_EQ("", HoldersOf(file));
  char letter = 'o';
  processes::Worker other([&] {
    if (write(told[1], &letter, 1) != 1 || read(toEnd[0], &letter, 1) != 1) return "no word";
    return "";
  });
  ASSERT_EQ(1, read(told[0], &letter, 1));
  const std::string holders = HoldersOf(file);
  EXPECT_NE(std::string::npos, holders.find(" (")) << holders;
  EXPECT_EQ(')', holders.back()) << holders;
  EXPECT_EQ(std::string::npos, holders.find(std::to_string(getpid()))) << holders;
  ASSERT_EQ(1, write(toEnd[1], &letter, 1));
  EXPECT_TRUE(other.EndsWell());
  EXPECT_EQ("", HoldersOf(file));
  EXPECT_EQ("", HoldersOf(folder / "absent"));
  std::fclose(own);
  for (const int end : {told[0], told[1], toEnd[0], toEnd[1]}) close(end);
}

}  // namespace
