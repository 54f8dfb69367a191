// Restoring while the disk is full: the old subtree stays, and nothing of the new one is left.
#include "tests/platform/ChildProcess.h"
#include "tests/registry/filetree/BackupTesting.h"

namespace tamu::registry {

namespace {

constexpr unsigned long kFileSize = 75888;
// What an appended table of a kind takes: head, 500 entries, 500 records.
constexpr unsigned long kStrings = 32 + 500 * (4 + 40);
constexpr unsigned long kKeys = 32 + 500 * (4 + 24);
constexpr unsigned long kValues = 32 + 500 * (4 + 52);
constexpr unsigned long kBlocks = 32 + 500 * (4 + 64);
// More than there are free slots of any kind. Of a new file's 364 the keys of the test leave the
// fewest blocks, then values, then keys; the names come before all of them.
constexpr unsigned int kNames = 400;

// Names below each other, each with a key and a value of one block.
std::string LargeBackup() {
  std::string backup = kComplete;
  for (unsigned int i = 1; i < kNames; ++i) backup += NameRecord("k", kSome, {0, 0, 0, kSome});
  backup += NameRecord("k", kSome);
  for (unsigned int i = 0; i < kNames; ++i) {
    backup += KeyRecord(kSome) + DataRecord(0, "v", Pattern(20));
  }
  return backup + KeyRecord(0);
}

// A registry whose file is closed, and the backup in a file beside it.
class TernaryRegistryRestoreFailuresTest : public ::testing::Test {
 protected:
  void SetUp() override {
    CreateTree(rig_, "a");
    CreateTree(rig_, "z");
    rig_.tree.Finalize();
    PutFile(backup_, LargeBackup());
    ASSERT_EQ(kFileSize, GetFile(rig_.path).size());
  }

  // What restoring answers where the file can grow by so many bytes; the file is closed afterwards.
  bool Answers(unsigned int status, unsigned long room) {
    return InChild([&] {
      LimitFileSize(kFileSize + room);
      if (rig_.tree.Initialize(rig_.path.c_str()) != 0) return false;
      const bool answered = Restore(rig_, "a", backup_) == status;
      rig_.tree.Finalize();
      return answered;
    });
  }

  FileTreeRig rig_;
  const std::string backup_ = rig_.dir / "backup";
};

TEST_F(TernaryRegistryRestoreFailuresTest, NothingIsLostWhicheverKindCannotGrow) {
  const std::string used = UsedSlots(rig_.path);
  const std::string before = SubtreeText(rig_, "");
  // Room for no table, for one of strings, of blocks too, and of values too.
  const unsigned long rooms[] = {0, kStrings + 3000, kStrings + kBlocks + 2000,
                                 kStrings + kBlocks + kValues + 2000};
  const std::string file = GetFile(rig_.path);
  for (const unsigned long room : rooms) {
    SCOPED_TRACE(room);
    PutFile(rig_.path, file);
    EXPECT_TRUE(Answers(5, room));
    EXPECT_EQ(kFileSize, GetFile(rig_.path).size()) << "what was appended is cut off again";
    EXPECT_EQ("", StructureFindings(rig_.path));
    EXPECT_EQ(UsedSlots(rig_.path), used);
    EXPECT_EQ(SubtreeText(rig_, ""), before);
    ASSERT_EQ(status::kOk, rig_.tree.Initialize(rig_.path.c_str()));
    EXPECT_EQ(rig_.Get("a/f", "data"), "0 type 2: " + HexOf(Pattern(220)));
    rig_.tree.Finalize();
  }
}

// Again and again, with the tables that are there already.
TEST_F(TernaryRegistryRestoreFailuresTest, SucceedsAsSoonAsThereIsRoom) {
  const std::string used = UsedSlots(rig_.path);
  const std::string before = SubtreeText(rig_, "");
  constexpr unsigned long kAll = kStrings + kBlocks + kValues + kKeys;
  for (unsigned long room : {0ul, kStrings - 1, kStrings, kStrings + kBlocks - 1,
                             kStrings + kBlocks, kAll - kKeys - 1, kAll - kKeys, kAll - 1}) {
    SCOPED_TRACE(room);
    EXPECT_TRUE(Answers(5, room));
    EXPECT_EQ("", StructureFindings(rig_.path));
    EXPECT_EQ(UsedSlots(rig_.path), used);
    EXPECT_EQ(SubtreeText(rig_, ""), before);
  }
  EXPECT_TRUE(Answers(0, kAll));
  EXPECT_EQ(GetFile(rig_.path).size(), kFileSize + kAll);
  ExpectSound(rig_);
  ASSERT_EQ(status::kOk, rig_.tree.Initialize(rig_.path.c_str()));
  std::string deepest = "a";
  for (unsigned int i = 0; i < kNames; ++i) deepest += "/k";
  EXPECT_EQ(rig_.Get(deepest, "v"), "0 type 2: " + HexOf(Pattern(20)));
  EXPECT_EQ(status::kNotFound, rig_.Find("a/m"));
  EXPECT_EQ(status::kOk, rig_.Find("z/m"));
}

}  // namespace

}  // namespace tamu::registry
