// Backups that are refused or break off, and backups of damaged keys.
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "registry/filetree/backup/BackupFile.h"
#include "tests/platform/ChildProcess.h"
#include "tests/registry/filetree/BackupTesting.h"
#include "tests/registry/filetree/DamagedFile.h"

namespace tamu::registry {

namespace {

const unsigned char kHeaderAtStart = BackupFile::backupHeader;

// A backup answers `status`; registry and lock are as before.
void ExpectFailure(FileTreeRig& rig, const std::string& path, const std::string& file,
                   unsigned int status) {
  const std::string before = rig.Contents();
  OnSmallStack([&] { EXPECT_EQ(Backup(rig, path, file), status) << path << " to " << file; });
  EXPECT_TRUE(rig.Contents() == before) << "the registry has changed";
  EXPECT_FALSE(rig.tree.ObjectLock().IsMine());
}

// ---- arguments, keys and rights

TEST(TernaryRegistryBackupFailures, ANullArgumentIsRefused) {
  FileTreeRig rig;
  const std::string file = rig.dir / "b";
  EXPECT_EQ(status::kBadArgument, rig.tree.BackupKeyTree(kAdmin, nullptr, nullptr, file.c_str()));
  EXPECT_EQ(status::kBadArgument, rig.tree.BackupKeyTree(kAdmin, nullptr, "", nullptr));
  EXPECT_EQ(status::kBadArgument, rig.tree.BackupKeyTree(kAdmin, nullptr, "missing", nullptr));
  EXPECT_EQ(status::kBadArgument, rig.tree.BackupKeyTree(kAdmin, nullptr, nullptr, nullptr));
  EXPECT_FALSE(std::filesystem::exists(file));
}

TEST(TernaryRegistryBackupFailures, WithoutAKeyNoFileIsTouched) {
  FileTreeRig rig;
  Create(rig, {"ab", "ac", "de"});
  ASSERT_EQ(status::kOk, DeleteKey(rig, "de"));
  const std::string older = rig.dir / "older";
  PutFile(older, "older");
  int anything = 0;
  for (const std::string& file : {rig.dir / "new", older}) {
    for (const char* path : {"b", "a", "de", "abc", "ab/x", "//"})
      ExpectFailure(rig, path, file, 2);
    ExpectFailure(rig, "de/", file, 1);  // a name without a key
    EXPECT_EQ(status::kNotFound, rig.tree.BackupKeyTree(kAdmin, &anything, "ab", file.c_str()));
    EXPECT_EQ(status::kNoRight, rig.tree.BackupKeyTree(kAdmin, &anything, "", file.c_str()));
  }
  EXPECT_FALSE(std::filesystem::exists(rig.dir / "new"));
  EXPECT_EQ("older", GetFile(older));
}

TEST(TernaryRegistryBackupFailures, NeedsTheRightToRead) {
  TempDir folder;
  const std::string file = folder / "b";
  ExpectToNeedTheRight(
      1,
      [&](FileTreeRig&) {
        std::error_code none;
        std::filesystem::remove(file, none);
      },
      [&](TernaryRegistry& tree, unsigned int user) {
        const unsigned int result = tree.BackupKeyTree(user, nullptr, "a", file.c_str());
        EXPECT_EQ(std::filesystem::exists(file), result == 0);
        return result;
      });
}

TEST(TernaryRegistryBackupFailures, TheRightsOfTheKeysBelowDoNotCount) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.tree.CreateKey(kUser, nullptr, "a", 0, false));
  Create(rig, {"a/b"});
  rig.SetPermission(3, "00");
  const std::string file = rig.dir / "b";
  EXPECT_EQ(status::kNoRight, rig.tree.BackupKeyTree(kUser, nullptr, "a/b", file.c_str()));
  EXPECT_EQ(status::kOk, rig.tree.BackupKeyTree(kUser, nullptr, "a", file.c_str()));
  EXPECT_EQ(GetFile(file).size(), 1 + 40 + 24 + 24u);
}

TEST(TernaryRegistryBackupFailures, WithoutAFileNobodyMayBackUp) {
  TempDir folder;
  TernaryRegistry tree(nullptr, nullptr);
  const std::string file = folder / "b";
  EXPECT_EQ(status::kNoRight, tree.BackupKeyTree(kAdmin, nullptr, "", file.c_str()));
  EXPECT_FALSE(std::filesystem::exists(file));
}

// ---- files

TEST(TernaryRegistryBackupFailures, AFileThatCannotBeMadeIsTold) {
  FileTreeRig rig;
  Create(rig, {"a"});
  for (const char* name : {"missing/b", ".", "a.rce/b", "b/"}) {
    ExpectFailure(rig, "a", rig.dir / name, 5);
  }
  ExpectFailure(rig, "a", "", 5);
  EXPECT_FALSE(std::filesystem::exists(rig.dir / "missing"));
}

TEST(TernaryRegistryBackupFailures, NeverOntoTheRegistryItself) {
  FileTreeRig rig;
  Create(rig, {"a", "a/b"});
  const std::string link = rig.dir / "symbolic";
  const std::string linkToLink = rig.dir / "again";
  const std::string second = rig.dir / "hard";
  std::filesystem::create_symlink(rig.path, link);
  std::filesystem::create_symlink("symbolic", linkToLink);
  std::filesystem::create_hard_link(rig.path, second);
  for (const std::string& file :
       {rig.path, link, linkToLink, second, rig.dir / "./a.rce", rig.dir / "../" + rig.path}) {
    for (const char* key : {"", "a"}) ExpectFailure(rig, key, file, 5);
  }
  EXPECT_EQ("0: a/b a", Listed(rig, ""));
  EXPECT_EQ("", StructureFindings(rig.path));
  // Another file beside it, by way of a link, is as good as any.
  PutFile(rig.dir / "other", std::string(100, 'x'));
  std::filesystem::create_symlink("other", rig.dir / "to-other");
  EXPECT_EQ(status::kOk, Backup(rig, "a", rig.dir / "to-other"));
  EXPECT_EQ(GetFile(rig.dir / "other").size(), 1 + 40 + 24 + 24u);
}

TEST(TernaryRegistryBackupFailures, ADiskThatIsFullIsTold) {
  FileTreeRig rig;
  Create(rig, {"a"});
  for (unsigned int i = 0; i < 5; ++i) {
    ASSERT_EQ(status::kOk, rig.CreateData("a", "v", 2, Pattern(1024)));
  }
  const std::string file = rig.dir / "b";
  for (const char* older : {"", "older"}) {
    if (*older != 0) PutFile(file, older);
    const std::string before = NamesIn(rig.dir / ".");
    for (unsigned long limit : {0ul, 1ul, 100ul, 4096ul, 5000ul, 5404ul}) {
      EXPECT_TRUE(InChild([&] {
        LimitFileSize(limit);
        return Backup(rig, "a", file) == 5;
      })) << limit;
      EXPECT_EQ(NamesIn(rig.dir / "."), before) << limit;
    }
    if (*older != 0) {
      EXPECT_EQ(GetFile(file), older);
    }
  }
  EXPECT_TRUE(InChild([&] {
    LimitFileSize(5405);  // 1 + 24 + 5 * (52 + 1024)
    return Backup(rig, "a", file) == 0;
  }));
}

TEST(TernaryRegistryBackupFailures, AnOlderBackupStaysUntilTheNewOneIsComplete) {
  FileTreeRig rig;
  Create(rig, {"a", "a/b", "c"});
  const std::string file = rig.dir / "taken.bak";
  const std::string older = BackedUp(rig, "a");
  rig.PatchWord(InString(3, 20), 0xFFFF00);  // the key of "a/b" cannot be read
  const std::string names = NamesIn(rig.dir / ".");
  EXPECT_EQ(status::kInvalidFile, Backup(rig, "a", file));
  EXPECT_EQ(GetFile(file), older);
  EXPECT_EQ(status::kInvalidFile, Backup(rig, "a", rig.dir / "new"));
  EXPECT_EQ(NamesIn(rig.dir / "."), names);
  EXPECT_EQ(status::kOk, Restore(rig, "c", file));
}

TEST(TernaryRegistryBackupFailures, AnOlderFileKeepsItsMode) {
  FileTreeRig rig;
  Create(rig, {"a"});
  const std::string file = rig.dir / "b";
  PutFile(file, std::string(100, 'x'));
  ASSERT_EQ(0, chmod(file.c_str(), 0640));
  ASSERT_EQ(status::kOk, Backup(rig, "a", file));
  EXPECT_EQ(GetFile(file), kComplete + KeyRecord(0));
  struct stat info = {};
  ASSERT_EQ(0, stat(file.c_str(), &info));
  EXPECT_EQ(0640u, info.st_mode & 07777u);
}

// ---- files in a folder that takes no other one

// An empty file that is written in place by whoever is not the superuser.
class LockedFile {
 public:
  explicit LockedFile(FileTreeRig& rig) : folder_(rig.dir / "locked") {
    std::filesystem::create_directory(folder_);
    PutFile(path(), "");
    chmod(path().c_str(), 0666);
    chmod(folder_.c_str(), 0555);
    chmod((rig.dir / ".").c_str(), 0777);
  }
  ~LockedFile() { chmod(folder_.c_str(), 0755); }
  std::string path() const { return folder_ + "/file"; }

 private:
  std::string folder_;
};

TEST(TernaryRegistryBackupFailures, IsWrittenInPlaceWhereTheFolderTakesNoOtherFile) {
  FileTreeRig rig;
  Create(rig, {"a"});
  for (unsigned int i = 0; i < 5; ++i) {
    ASSERT_EQ(status::kOk, rig.CreateData("a", "v", 2, Pattern(1024)));
  }
  const LockedFile file(rig);
  EXPECT_TRUE(InChild([&] { return DropRights() && Backup(rig, "a", file.path()) == 0; }));
  EXPECT_EQ(5405u, GetFile(file.path()).size());
  EXPECT_TRUE(InChild([&] {
    LimitFileSize(5000);
    return DropRights() && Backup(rig, "a", file.path()) == 5;
  }));
  EXPECT_EQ(5000u, GetFile(file.path()).size()) << "as much as there was room for";
}

// ---- the first byte

// Backs up a key on whose way something is damaged, and returns the file.
std::string BrokenOff(FileTreeRig& rig, const LockedFile& file) {
  return Backup(rig, "a", file.path()) == 59 ? GetFile(file.path()) : "(not broken off)";
}

TEST(TernaryRegistryBackupFailures, OnlyTheFirstBackupOfAProcessBeginsIncomplete) {
  EXPECT_EQ(kHeaderAtStart, 0);
  FileTreeRig rig;
  Create(rig, {"a", "a/b", "c"});
  const std::string records = NameRecord("b", 0xFFFF00);
  rig.PatchWord(InString(3, 20), 0xFFFF00);  // the key of "a/b" cannot be read
  const std::string whole = rig.dir / "whole";
  const LockedFile file(rig);
  EXPECT_TRUE(InChild([&] {
    if (!DropRights()) return false;
    BackupFile::backupHeader = 0;  // as in a new process
    if (BrokenOff(rig, file) != std::string(1, '\0') + records) return false;
    if (BrokenOff(rig, file) != std::string(1, '\0') + records) return false;
    if (Backup(rig, "c", whole) != 0 || GetFile(whole) != kComplete + KeyRecord(0)) return false;
    return BrokenOff(rig, file) == kComplete + records;
  }));
}

TEST(TernaryRegistryBackupFailures, ABackupThatBrokeOffIsNotRestored) {
  FileTreeRig rig;
  Create(rig, {"a", "a/b", "c"});
  rig.PatchWord(InString(3, 20), 0xFFFF00);
  const LockedFile locked(rig);
  const std::string file = locked.path();
  EXPECT_TRUE(InChild([&] {
    if (!DropRights()) return false;
    BackupFile::backupHeader = 0;
    const bool first = Backup(rig, "a", file) == 59 && Restore(rig, "c", file) == 5;
    BackupFile::backupHeader = 1;
    return first && Backup(rig, "a", file) == 59 && Restore(rig, "c", file) == 5;
  }));
}

// ---- damaged keys

// The record of a value, without the id of its data, and the data.
std::string DataOf(FileTreeRig& rig) {
  return HexOf(BackedUp(rig, "a").substr(77));
}

TEST(TernaryRegistryBackupFailures, DataThatCannotBeReadInFullIsFilledWithZeros) {
  const std::string half = HexOf(Pattern(100).substr(0, 64));
  FileTreeRig rig;
  Create(rig, {"a"});
  ASSERT_EQ(status::kOk, rig.CreateData("a", "v", 2, Pattern(100)));
  EXPECT_EQ(DataOf(rig), HexOf(Pattern(100)));

  rig.PatchWord(BlockEntry(1), 0);  // the chain ends early
  EXPECT_EQ(DataOf(rig), half + std::string(72, '0'));
  for (unsigned int next : {1u, 365u, 0xFFFFFFFFu}) {  // a circle, the slot behind the last, none
    rig.PatchWord(BlockEntry(1), next);
    EXPECT_EQ(std::string(200, '0'), DataOf(rig)) << next;
  }
  rig.PatchWord(BlockEntry(1), 2);
  for (unsigned int block : kBadIds) {
    rig.PatchWord(InValue(1, 44), block);
    EXPECT_EQ(std::string(200, '0'), DataOf(rig)) << block;
  }
  rig.PatchWord(InValue(1, 44), 0);
  EXPECT_EQ(std::string(200, '0'), DataOf(rig));
}

// What follows stays in its place.
TEST(TernaryRegistryBackupFailures, ADamagedValueDoesNotShiftTheNext) {
  FileTreeRig rig;
  Create(rig, {"a", "b"});
  ASSERT_EQ(status::kOk, rig.CreateNumber("a", "n", 5));
  ASSERT_EQ(status::kOk, rig.CreateData("a", "v", 2, Pattern(100)));
  rig.PatchWord(InValue(2, 44), 0);
  EXPECT_EQ(HexOf(BackedUp(rig, "a")),
            HexOf(kComplete + KeyRecord(0x200, 2) + ValueRecord(0x100, "v", 0x62, 100, 0) +
                  std::string(100, '\0') + NumberRecord(0, "n", 5)));
  EXPECT_EQ(status::kOk, Restore(rig, "b", rig.dir / "taken.bak"));
  EXPECT_EQ("0 type 0: 0500000000000000", rig.Get("b", "n"));
  EXPECT_EQ(rig.Get("b", "v"), "0 type 2: " + std::string(200, '0'));
}

TEST(TernaryRegistryBackupFailures, DataLongerThanAnyValuesIsRefused) {
  FileTreeRig rig;
  Create(rig, {"a"});
  ASSERT_EQ(status::kOk, rig.CreateData("a", "v", 2, Pattern(1024)));
  for (const char* size : {"0104", "0008", "ffff"}) {
    rig.Patch(InValue(1, 8), size);
    ExpectFailure(rig, "a", rig.dir / "b", 59);
  }
  rig.Patch(InValue(1, 8), "0004");
  EXPECT_EQ(status::kOk, Backup(rig, "a", rig.dir / "b"));
}

// Its data lies in the record, and still no key could be restored from it.
TEST(TernaryRegistryBackupFailures, ANumberLongerThanAnyValueIsRefused) {
  FileTreeRig rig;
  Create(rig, {"a", "a/b"});
  ASSERT_EQ(status::kOk, rig.CreateNumber("a/b", "n", 5));
  for (const char* size : {"0104", "0008", "ffff"}) {
    rig.Patch(InValue(1, 8), size);
    for (const char* path : {"", "a", "a/b"}) ExpectFailure(rig, path, rig.dir / "b", 59);
  }
  rig.Patch(InValue(1, 8), "0004");
  EXPECT_EQ(status::kOk, Backup(rig, "a", rig.dir / "b"));
}

TEST(TernaryRegistryBackupFailures, LinksThatFormACircleEndIt) {
  const std::string names[] = {"lo", "hi", "equal", "child"};
  for (unsigned int link = 0; link < 4; ++link) {
    // Of "a/m", 3, and of what hangs there, 4: to itself, to each other, and up to "a".
    const struct {
      const char* second;
      unsigned int from;
      unsigned int to;
    } cases[] = {{"a/f", 3, 0x300},   {"a/f", 4, 0x300},   {"a/t", 4, 0x300}, {"a/mn", 4, 0x300},
                 {"a/m/x", 4, 0x400}, {"a/m/x", 4, 0x300}, {"a/f", 4, 0x200}, {"a/f", 4, 0x100}};
    for (const auto& each : cases) {
      SCOPED_TRACE(names[link] + " of " + std::to_string(each.from) + " to " +
                   std::to_string(each.to) + ", " + each.second);
      FileTreeRig rig;
      Create(rig, {"a", "a/m", each.second});
      rig.PatchWord(InString(each.from, 4 + 4 * link), each.to);
      ExpectFailure(rig, "a", rig.dir / "b", 59);
      ExpectFailure(rig, "", rig.dir / "b", 59);
    }
  }
}

TEST(TernaryRegistryBackupFailures, ValuesThatFormACircleEndIt) {
  FileTreeRig rig;
  Create(rig, {"a", "a/b", "a/c"});
  for (const char* name : {"1", "2", "3"}) ASSERT_EQ(status::kOk, rig.CreateNumber("a", name, 1));
  for (unsigned int id : {0x100u, 0x200u, 0x300u}) {
    rig.PatchWord(InValue(1, 0), id);
    ExpectFailure(rig, "a", rig.dir / "b", 59);
  }
  rig.PatchWord(InValue(1, 0), 0);
  EXPECT_EQ(status::kOk, Backup(rig, "a", rig.dir / "b"));
  rig.PatchWord(InKey(3, 0), 0x200);  // those of "a" are those of "a/b", too
  ExpectFailure(rig, "a", rig.dir / "b", 59);
  EXPECT_EQ(status::kOk, Backup(rig, "a/b", rig.dir / "b"));
}

TEST(TernaryRegistryBackupFailures, LinksToNothingEndIt) {
  FileTreeRig rig;
  Create(rig, {"a", "a/m"});
  ASSERT_EQ(status::kOk, rig.CreateNumber("a/m", "n", 5));
  for (unsigned int bad : kBadIds) {
    SCOPED_TRACE(bad);
    for (unsigned int offset : {InString(3, 4), InString(3, 8), InString(3, 12), InString(3, 16),
                                InString(3, 20), InKey(3, 0), InValue(1, 0)}) {
      const unsigned int before = rig.Word(offset);
      rig.PatchWord(offset, bad);
      ExpectFailure(rig, "a", rig.dir / "b", 59);
      rig.PatchWord(offset, before);
    }
  }
  EXPECT_EQ(status::kOk, Backup(rig, "a", rig.dir / "b"));
}

}  // namespace

}  // namespace tamu::registry
