#include <gtest/gtest.h>

#include <set>

#include "tests/crash/PowerDisk.h"

namespace crash {
namespace {

constexpr unsigned int kManyDraws = 2000;

// The bytes of the file at `name` in each of many draws, "(none)" where it is not there.
std::set<std::string> Drawn(const PowerDisk& disk, const std::string& name) {
  Random random(1);
  std::set<std::string> found;
  for (unsigned int i = 0; i < kManyDraws; ++i) {
    const FolderImage image = disk.Draw(random);
    found.insert(image.names.count(name) != 0 ? image.BytesAt(name) : "(none)");
  }
  return found;
}

class PowerDiskTest : public ::testing::Test {
 protected:
  PowerDiskTest() {
    image.names["a"] = 0;
    image.files[0] = "old";
  }

  FolderImage image;
  const Call write{Call::kWrite, 0, 0, "new", "", "", 0};
  const Call longer{Call::kWrite, 0, 3, "er", "", "", 0};
  const Call sync{Call::kSync, 0, 0, "", "", "", 0};
  const Call make{Call::kMake, 1, 0, "", "b", "", 0};
  const Call writeMade{Call::kWrite, 1, 0, "made", "", "", 0};
  const Call syncMade{Call::kSync, 1, 0, "", "", "", 0};
  const Call syncFolder{Call::kSyncFolder, 0, 0, "", "", "", 0};
  const Call rename{Call::kRename, 1, 0, "", "b", "a", 0};
};

TEST_F(PowerDiskTest, WhatWasSyncedIsThere) {
  PowerDisk disk(image);
  disk.Apply(write);
  disk.Apply(sync);
  EXPECT_FALSE(disk.HasChoice());
  EXPECT_EQ(std::set<std::string>({"new"}), Drawn(disk, "a"));
}

TEST_F(PowerDiskTest, WhatWasNotSyncedIsThereOrTornOrNot) {
  PowerDisk disk(image);
  disk.Apply(write);
  EXPECT_TRUE(disk.HasChoice());
  EXPECT_EQ(std::set<std::string>({"new", "nld", "ned", "old"}), Drawn(disk, "a"));
}

TEST_F(PowerDiskTest, ALengthMayBeThereWithoutItsBytes) {
  PowerDisk disk(image);
  disk.Apply(longer);
  const std::set<std::string> found = Drawn(disk, "a");
  EXPECT_EQ(1u, found.count(std::string("old\0\0", 5)));
  EXPECT_EQ(1u, found.count("old"));
  EXPECT_EQ(1u, found.count("older"));
}

TEST_F(PowerDiskTest, ANewFileMayLackItsNameOrItsBytes) {
  PowerDisk disk(image);
  disk.Apply(make);
  disk.Apply(writeMade);
  const std::set<std::string> found = Drawn(disk, "b");
  EXPECT_EQ(1u, found.count("(none)"));
  EXPECT_EQ(1u, found.count(""));
  EXPECT_EQ(1u, found.count("made"));
}

TEST_F(PowerDiskTest, ARenameIsDoneOrNot) {
  PowerDisk disk(image);
  for (const Call* call : {&make, &writeMade, &syncMade, &syncFolder, &rename}) disk.Apply(*call);
  EXPECT_EQ(std::set<std::string>({"old", "made"}), Drawn(disk, "a"));
  EXPECT_EQ(std::set<std::string>({"made", "(none)"}), Drawn(disk, "b"));
}

TEST_F(PowerDiskTest, ARenameBeforeTheBytesAreSyncedMayLoseThem) {
  PowerDisk disk(image);
  for (const Call* call : {&make, &writeMade, &rename, &syncFolder}) disk.Apply(*call);
  EXPECT_EQ(1u, Drawn(disk, "a").count(""));
}

}  // namespace
}  // namespace crash
