// Backups that end at the edge of a piece, or a byte beside it.
#include "tests/registry/filetree/BackupTesting.h"

namespace tamu::registry {

namespace {

constexpr unsigned int kLongest = 1024;

// "a" with `full` values of the longest kind and a last one of `size` bytes, newest first. Each of
// the full ones takes 16 blocks.
std::string CreateValues(FileTreeRig& rig, unsigned int full, unsigned int size) {
  EXPECT_EQ(status::kOk, rig.Create("a"));
  std::string values;
  for (unsigned int i = 1; i <= full + 1; ++i) {
    const std::string name = "v" + std::to_string(i);
    const std::string data = Pattern(i <= full ? kLongest : size);
    EXPECT_EQ(status::kOk, rig.CreateData("a", name, 2, data));
    values = ValueRecord((i - 1) << 8, name, 0x62, static_cast<unsigned int>(data.size()),
                         (1 + 16 * (i - 1)) << 8) +
             data + values;
  }
  return kComplete + KeyRecord((full + 1) << 8, full + 1) + values;
}

// 1 + 24 bytes, each full value 52 + 1024, the last 52 and its data.
TEST(TernaryRegistryBackupPieces, ABackupMayEndAtTheEdgeOfAPiece) {
  const struct {
    unsigned int full;
    unsigned int last;
    unsigned int size;
  } cases[] = {{3, 790, 4095}, {3, 791, 4096}, {3, 792, 4097},
               {7, 582, 8191}, {7, 583, 8192}, {7, 584, 8193}};
  for (const auto& each : cases) {
    SCOPED_TRACE(each.size);
    FileTreeRig rig;
    const std::string expected = CreateValues(rig, each.full, each.last);
    const std::string backup = BackedUp(rig, "a");
    EXPECT_EQ(backup.size(), each.size);
    EXPECT_TRUE(backup == expected);

    ASSERT_EQ(status::kOk, rig.Create("b"));
    EXPECT_EQ(status::kOk, RestoreBytes(rig, "b", backup));
    EXPECT_EQ(SubtreeText(rig, "b"), SubtreeText(rig, "a"));
    EXPECT_EQ(BackedUp(rig, "b").size(), each.size);
    ExpectRefused(rig, "b", backup.substr(0, each.size - 1), 5);
    ExpectSound(rig);
  }
}

// What is written at once is larger.
TEST(TernaryRegistryBackupPieces, ALargeBackupMayEndAtTheEdgeOfAPiece) {
  for (unsigned int size : {65535u, 65536u, 65537u}) {
    SCOPED_TRACE(size);
    FileTreeRig rig;
    CreateValues(rig, 60, size - (1 + 24 + 60 * (52 + kLongest) + 52));
    const std::string backup = BackedUp(rig, "a");
    EXPECT_EQ(backup.size(), size);
    ASSERT_EQ(rig.Create("b"), 0u);
    EXPECT_EQ(RestoreBytes(rig, "b", backup), 0u);
    EXPECT_EQ(SubtreeText(rig, "b"), SubtreeText(rig, "a"));
    EXPECT_EQ(BackedUp(rig, "b").size(), size);
    ExpectSound(rig);
  }
}

// A record of each kind that begins in one piece and ends in the next.
TEST(TernaryRegistryBackupPieces, ARecordMayLieInTwoPieces) {
  // Names of 40 bytes, then keys of 24 with values of 52: byte 4096 lies in a value, in a key, and
  // in a name.
  for (unsigned int names : {61u, 62u, 104u}) {
    SCOPED_TRACE(names);
    FileTreeRig rig;
    ASSERT_EQ(status::kOk, rig.Create("a"));
    std::string path = "a";
    for (unsigned int i = 0; i < names; ++i) {
      path += "/k";
      ASSERT_EQ(status::kOk, rig.Create(path));
      ASSERT_EQ(status::kOk, rig.CreateNumber(path, "n", i));
    }
    const std::string backup = BackedUp(rig, "a");
    EXPECT_EQ(backup.size(), 1 + names * (40 + 24 + 52) + 24);
    ASSERT_EQ(status::kOk, rig.Create("b"));
    EXPECT_EQ(status::kOk, RestoreBytes(rig, "b", backup));
    EXPECT_EQ(SubtreeText(rig, "b"), SubtreeText(rig, "a"));
    ExpectSound(rig);
  }
}

}  // namespace

}  // namespace tamu::registry
