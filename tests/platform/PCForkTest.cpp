// What a child of the process does not go on with.
#include <fcntl.h>

#include "platform/PCFork.h"
#include "tests/platform/ChildProcess.h"
#include "tests/platform/TestFiles.h"

namespace {

bool IsOpen(int fd) {
  return fcntl(fd, F_GETFD) >= 0;
}

TEST(PCForkTest, AChildIsAnotherProcessAndClosesWhatIsItsParentsAlone) {
  const unsigned int count = PCFork::Count();
  const int closed = dup(STDERR_FILENO);
  const int kept = dup(STDERR_FILENO);
  PCFork::CloseInChild(closed);
  PCFork::CloseInChild(kept);
  PCFork::Forget(kept);
  EXPECT_TRUE(
      InChild([&] { return PCFork::Count() == count + 1 && !IsOpen(closed) && IsOpen(kept); }));
  EXPECT_EQ(count, PCFork::Count());
  EXPECT_TRUE(IsOpen(closed));
  PCFork::Forget(closed);
  close(closed);
  close(kept);
}

// There are places for 64. Further descriptors stay open in a child.
TEST(PCForkTest, TooManyDescriptorsTakeNothingFromOthers) {
  int all[70];
  for (int& fd : all) {
    fd = dup(STDERR_FILENO);
    PCFork::CloseInChild(fd);
  }
  EXPECT_TRUE(InChild([&] { return !IsOpen(all[0]) && IsOpen(all[69]); }));
  for (const int fd : all) {
    PCFork::Forget(fd);
    close(fd);
  }
  EXPECT_TRUE(InChild([&] { return IsOpen(STDERR_FILENO); }));
}

}  // namespace
