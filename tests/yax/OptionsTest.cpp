// What a registry is opened with.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/platform/ChildProcess.h"
#include "tests/platform/TestFiles.h"
#include "tests/support/PossibleModes.h"
#include "yax/Settings.h"
#include "yax/Transaction.h"

namespace yax {
namespace {

class OptionsTest : public ::testing::Test {
 protected:
  // With a hole where a key was, and closed again.
  void MakeFile() {
    Registry registry(path);
    for (const char* key : {"gone", "kept"}) {
      EXPECT_TRUE(registry[key].Set("text", std::string(200, 'x')));
    }
    EXPECT_TRUE(registry["gone"].Remove());
  }

  TempDir folder;
  const std::string path = folder / "settings.rce";
  Options options;
};

TEST_F(OptionsTest, ADamagedFileIsRefusedWhereThatIsAskedFor) {
  MakeFile();
  std::string bytes = GetFile(path);
  bytes.replace(10188 + 40 + 16, 4, std::string("\0\x77\x77\0", 4));  // below the root: nowhere
  PutFile(path, bytes);
  EXPECT_TRUE(Registry(path, options).status().ok());
  options.checkAtOpening = true;
  EXPECT_EQ(Status(YAX_INVALID_FILE), Registry(path, options).status());
}

TEST_F(OptionsTest, AFileIsCompactedWhereLessIsLeftThanAskedFor) {
  MakeFile();
  const std::string before = GetFile(path);
  EXPECT_TRUE(Registry(path, options).status().ok());
  EXPECT_TRUE(before == GetFile(path));
  options.compactBelow = 20000;  // more than there ever are
  const Registry registry(path, options);
  EXPECT_FALSE(before == GetFile(path));
  EXPECT_EQ(std::string(200, 'x'), registry["kept"].Get("text", ""));
}

TEST_F(OptionsTest, SpaceIsUsedAgainUnlessExactnessIsAskedFor) {
  for (const bool isExact : {false, true}) {
    options.exactSpace = isExact;
    Registry registry(folder / (isExact ? "exact.rce" : "usual.rce"), options);
    ASSERT_TRUE(registry["k"].Make());
    ASSERT_TRUE(registry["k"].Remove());
    const Result<yax_room> room = registry.Room();
    ASSERT_TRUE(room);
    EXPECT_EQ(isExact ? 2u : 1u, room->strings.used);
  }
}

TEST_F(OptionsTest, TheSideFileIsWhereItIsAskedFor) {
  if (PossibleModes().size() < 3) return;  // needs shared memory
  options.sideFolder = folder / "side";
  options.durability = Durability::kProcess;
  ASSERT_EQ(0, mkdir(options.sideFolder.c_str(), 0755));
  const Registry registry(path, options);
  ASSERT_TRUE(registry) << registry.status().text();
  EXPECT_EQ("settings.rce side ", NamesIn(folder / "."));
  EXPECT_NE("", NamesIn(options.sideFolder));
}

TEST_F(OptionsTest, AChangeWaitsNoLongerThanAskedFor) {
  if (PossibleModes().size() < 3) return;  // two processes need shared memory
  int ready[2], begun[2];
  ASSERT_EQ(0, pipe(ready));
  ASSERT_EQ(0, pipe(begun));
  const pid_t child = fork();
  if (child == 0) {
    close(ready[1]);
    char byte = 0;
    if (read(ready[0], &byte, 1) != 1) EndChild(1);
    Registry registry(path);
    Transaction transaction(registry);
    if (write(begun[1], &byte, 1) != 1) EndChild(1);
    if (read(ready[0], &byte, 1) != 0) EndChild(1);  // until the other one has what it wants
    EndChild(0);
  }
  options.waitAtMost = 20;
  Registry registry(path, options);
  ASSERT_TRUE(registry) << registry.status().text();
  char byte = 0;
  EXPECT_EQ(1, write(ready[1], &byte, 1));
  EXPECT_EQ(1, read(begun[0], &byte, 1));
  EXPECT_EQ(Status(YAX_INPUT_OUTPUT), registry["k"].Set("n", 1));
  close(ready[1]);
  int status = 0;
  EXPECT_EQ(child, waitpid(child, &status, 0));
  EXPECT_EQ(0, status);
  EXPECT_TRUE(registry["k"].Set("n", 1));
  for (const int end : {ready[0], begun[0], begun[1]}) close(end);
}

}  // namespace
}  // namespace yax
