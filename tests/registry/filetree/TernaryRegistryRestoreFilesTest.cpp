// Which files are restored, and which are refused.
#include <sys/stat.h>

#include <filesystem>

#include "registry/filetree/backup/BackupFile.h"
#include "tests/platform/ChildProcess.h"
#include "tests/registry/filetree/BackupTesting.h"

namespace tamu::registry {

namespace {

// A key with one value.
std::string OneValue() {
  return kComplete + KeyRecord(kSome) + NumberRecord(0, "n", 5);
}

// Restoring the file answers `status` and changes nothing.
void ExpectRefusedFile(FileTreeRig& rig, const std::string& file, unsigned int status) {
  const std::string before = rig.Contents();
  for (const char* path : {"", "a"}) {
    EXPECT_EQ(Restore(rig, path, file), status) << path << " from " << file;
  }
  EXPECT_TRUE(rig.Contents() == before) << "the registry has changed";
  EXPECT_FALSE(rig.tree.ObjectLock().IsMine());
}

// ---- arguments and keys

TEST(TernaryRegistryRestoreFiles, ANullArgumentIsRefused) {
  FileTreeRig rig;
  const std::string file = rig.dir / "b";
  PutFile(file, OneValue());
  const std::string before = rig.Contents();
  EXPECT_EQ(status::kBadArgument, rig.tree.RestoreKeyTree(kAdmin, nullptr, nullptr, file.c_str()));
  EXPECT_EQ(status::kBadArgument, rig.tree.RestoreKeyTree(kAdmin, nullptr, "", nullptr));
  EXPECT_EQ(status::kBadArgument, rig.tree.RestoreKeyTree(kAdmin, nullptr, "missing", nullptr));
  EXPECT_EQ(status::kBadArgument, rig.tree.RestoreKeyTree(kAdmin, nullptr, nullptr, nullptr));
  EXPECT_EQ(rig.Contents(), before);
}

TEST(TernaryRegistryRestoreFiles, AMissingKeyIsNotMade) {
  FileTreeRig rig;
  for (const char* key : {"ab", "ac", "de"}) ASSERT_EQ(status::kOk, rig.Create(key));
  ASSERT_EQ(status::kOk, DeleteKey(rig, "de"));
  const std::string file = rig.dir / "b";
  PutFile(file, OneValue());
  const std::string before = rig.Contents();
  int anything = 0;
  for (const std::string& each : {file, rig.dir / "missing"}) {
    for (const char* path : {"b", "a", "de", "abc", "ab/x", "//"}) {
      EXPECT_EQ(status::kNotFound, Restore(rig, path, each)) << path;
    }
    EXPECT_EQ(status::kNoRight, Restore(rig, "de/", each));  // a name without a key
    EXPECT_EQ(status::kNotFound, rig.tree.RestoreKeyTree(kAdmin, &anything, "ab", each.c_str()));
    EXPECT_EQ(status::kNoRight, rig.tree.RestoreKeyTree(kAdmin, &anything, "", each.c_str()));
  }
  EXPECT_EQ(rig.Contents(), before);
}

TEST(TernaryRegistryRestoreFiles, WithoutAFileNobodyMayRestore) {
  TempDir folder;
  const std::string file = folder / "b";
  PutFile(file, OneValue());
  TernaryRegistry tree(nullptr, nullptr);
  EXPECT_EQ(status::kNoRight, tree.RestoreKeyTree(kAdmin, nullptr, "", file.c_str()));
}

// ---- files

TEST(TernaryRegistryRestoreFiles, AFileThatCannotBeOpenedIsTold) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("a"));
  for (const char* name : {"missing", "missing/b", ".", "a.rce/b"}) {
    ExpectRefusedFile(rig, rig.dir / name, 5);
  }
  ExpectRefusedFile(rig, "", 5);
  EXPECT_FALSE(std::filesystem::exists(rig.dir / "missing"));
}

TEST(TernaryRegistryRestoreFiles, NeverFromTheRegistryItself) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("a"));
  const std::string link = rig.dir / "symbolic";
  const std::string second = rig.dir / "hard";
  std::filesystem::create_symlink(rig.path, link);
  std::filesystem::create_hard_link(rig.path, second);
  for (const std::string& file : {rig.path, link, second, rig.dir / "./a.rce"}) {
    ExpectRefusedFile(rig, file, 5);
  }
  EXPECT_EQ("0: a", Listed(rig, ""));
}

// It begins with 255, as if it were complete, and is no backup.
TEST(TernaryRegistryRestoreFiles, ARegistryFileIsNoBackup) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("a"));
  std::filesystem::copy_file(rig.path, rig.dir / "copy");
  ExpectRefusedFile(rig, rig.dir / "copy", 59);
}

TEST(TernaryRegistryRestoreFiles, AFileThatMayOnlyBeReadIsNotOpened) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("a"));
  const std::string file = rig.dir / "b";
  PutFile(file, OneValue());
  ASSERT_EQ(0, chmod((rig.dir / ".").c_str(), 0755));
  for (const mode_t mode : {0000u, 0222u, 0444u, 0666u}) {
    ASSERT_EQ(0, chmod(file.c_str(), mode));
    const std::string before = rig.Contents();
    EXPECT_TRUE(InChild([&] {
      if (getuid() == 0 && setuid(65534) != 0) return false;
      return Restore(rig, "a", file) == (mode == 0666 ? 0u : 5u);
    })) << mode;
    EXPECT_EQ(rig.Contents() == before, mode != 0666) << mode;
  }
}

// ---- the first byte

TEST(TernaryRegistryRestoreFiles, ABackupThatWasNeverCompletedIsRefused) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("a"));
  std::string backup = OneValue();
  backup[0] = '\0';
  ExpectRefused(rig, "a", backup, 5);
  ExpectRefused(rig, "", backup, 5);
  ExpectRefused(rig, "a", backup.substr(0, 1), 5);
  ExpectRefused(rig, "a", "", 5);
}

TEST(TernaryRegistryRestoreFiles, EveryOtherFirstByteIsThatOfACompleteBackup) {
  for (const char* first : {"\x01", "\x02", "\x80", "\xFF"}) {
    FileTreeRig rig;
    ASSERT_EQ(status::kOk, rig.Create("a"));
    EXPECT_EQ(status::kOk, RestoreBytes(rig, "a", first + OneValue().substr(1)));
    EXPECT_EQ("0 type 0: 0500000000000000", rig.Get("a", "n"));
  }
}

TEST(TernaryRegistryRestoreFiles, WhatFollowsTheLastRecordDoesNotCount) {
  for (const std::string& more : {std::string("x"), std::string(9000, '/'), OneValue()}) {
    FileTreeRig rig;
    ASSERT_EQ(status::kOk, rig.Create("a"));
    EXPECT_EQ(status::kOk, RestoreBytes(rig, "a", OneValue() + more));
    EXPECT_EQ("0: n", ListedValues(rig, "a"));
    EXPECT_EQ("0: a", Listed(rig, ""));
    ExpectSound(rig);
  }
}

TEST(TernaryRegistryRestoreFiles, TheFileIsClosedAfterwards) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("a"));
  EXPECT_EQ(status::kOk, RestoreBytes(rig, "a", OneValue()));
  EXPECT_FALSE(BackupFile::backup.IsOpen());
  std::string backup = OneValue();
  EXPECT_EQ(status::kInputOutput, RestoreBytes(rig, "a", backup.substr(0, 60)));
  EXPECT_FALSE(BackupFile::backup.IsOpen());
  backup[25 + 11] = '\x1F';
  EXPECT_EQ(status::kInvalidFile, RestoreBytes(rig, "a", backup));
  EXPECT_FALSE(BackupFile::backup.IsOpen());
  backup[0] = '\0';
  EXPECT_EQ(status::kInputOutput, RestoreBytes(rig, "a", backup));
  EXPECT_FALSE(BackupFile::backup.IsOpen());
}

// ---- room

// More than half of the names that a file can have.
TEST(TernaryRegistryRestoreFiles, NeedsRoomBesideWhatIsThere) {
  std::string backup = kComplete;
  constexpr unsigned int kManyNames = 6000;
  for (unsigned int i = 1; i < kManyNames; ++i) backup += NameRecord("k", 0, {0, 0, kSome, 0});
  backup += NameRecord("k", kSome) + KeyRecord(0) + KeyRecord(kSome) + NumberRecord(0, "n", 5);
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("a"));
  EXPECT_EQ(status::kOk, RestoreBytes(rig, "a", backup));
  const std::string file = rig.dir / "b";
  ASSERT_EQ(status::kOk, Backup(rig, "a", file));
  const std::string before = GetFile(rig.path);
  EXPECT_EQ(status::kLimit, Restore(rig, "a", file));
  EXPECT_TRUE(GetFile(rig.path) == before) << "the registry has changed";
  EXPECT_EQ("0: 1 of 1 keys, 1 of 1 values", Counted(rig, "a"));
  rig.tree.Finalize();
  FileTreeRig another;
  ASSERT_EQ(status::kOk, another.Create("b"));
  EXPECT_EQ(status::kOk, Restore(another, "b", file));
  EXPECT_EQ("0: 1 of 1 keys, 1 of 1 values", Counted(another, "b"));
}

}  // namespace

}  // namespace tamu::registry
