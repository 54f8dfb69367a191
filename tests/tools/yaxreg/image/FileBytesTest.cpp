#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <set>
#include <string>

#include "tests/platform/TestFiles.h"
#include "tests/tools/yaxreg/ChangeRig.h"
#include "tests/tools/yaxreg/SystemCalls.h"
#include "tools/yaxreg/image/FileBytes.h"

namespace yaxreg {

namespace {

class FileBytes : public ::testing::Test {
 protected:
  // The names of all files in the folder, with a blank behind each.
  std::string Files() const {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder / ".")) {
      names.insert(entry.path().filename());
    }
    std::string all;
    for (const std::string& name : names) all += name + ' ';
    return all;
  }
  // Runs `work` in a process that can write files of 1000 bytes at most; true when it answers true.
  template <class Work>
  static bool OnAFullDisk(Work work) {
    const pid_t child = fork();
    if (child == 0) {
      const rlimit limit = {1000, 1000};
      signal(SIGXFSZ, SIG_IGN);
      _exit(setrlimit(RLIMIT_FSIZE, &limit) == 0 && work() ? 0 : 1);
    }
    int status = 0;
    return waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
  }
  static mode_t ModeOf(const std::string& path) {
    struct stat found = {};
    EXPECT_EQ(0, lstat(path.c_str(), &found));
    return found.st_mode & 07777;
  }

  TempDir folder;
  const std::string file = folder / "file";
  const std::string old = "old bytes";
};

TEST_F(FileBytes, ReadsAWholeFile) {
  const std::string bytes(5000, '\xFF');
  PutFile(file, bytes);
  std::string read;
  EXPECT_TRUE(ReadWholeFile(file, 5000, &read).isDone());
  EXPECT_EQ(bytes, read);
  PutFile(file, "");
  EXPECT_TRUE(ReadWholeFile(file, 0, &read).isDone());
  EXPECT_EQ("", read);
}

TEST_F(FileBytes, ReadsNoFileThatIsTooLong) {
  PutFile(file, "12345");
  std::string read;
  const FileResult result = ReadWholeFile(file, 4, &read);
  EXPECT_FALSE(result.isDone());
  EXPECT_TRUE(result.tooLarge);
  EXPECT_FALSE(result.exists);
  EXPECT_EQ("", read);
}

TEST_F(FileBytes, ReadsRegularFilesOnly) {
  std::string read;
  EXPECT_EQ("cannot be opened: No such file or directory",
            ReadWholeFile(folder / "absent", 10, &read).reason);
  EXPECT_EQ("cannot be read: Is a directory", ReadWholeFile(folder / ".", 10, &read).reason);
  ASSERT_EQ(0, mkfifo(file.c_str(), 0600));
  EXPECT_EQ("is no regular file", ReadWholeFile(file, 10, &read).reason);
  EXPECT_EQ("is no regular file", ReadWholeFile("/dev/zero", 10, &read).reason);
}

TEST_F(FileBytes, WritesANewFile) {
  const std::string bytes(5000, '\0');
  EXPECT_TRUE(WriteNewFile(file, bytes).isDone());
  EXPECT_EQ(bytes, GetFile(file));
  EXPECT_EQ("file ", Files());
}

TEST_F(FileBytes, WritesOverNothingThatIsThere) {
  PutFile(file, old);
  const FileResult result = WriteNewFile(file, "new");
  EXPECT_TRUE(result.exists);
  EXPECT_EQ("cannot be made: File exists", result.reason);
  EXPECT_EQ(old, GetFile(file));
  // Nor through a link that leads nowhere.
  ASSERT_EQ(0, symlink("absent", (folder / "link").c_str()));
  EXPECT_TRUE(WriteNewFile(folder / "link", "new").exists);
  EXPECT_TRUE(WriteNewFile(folder / ".", "new").exists);
  EXPECT_EQ("file link ", Files());
}

TEST_F(FileBytes, WritesNoNewFileIntoAFolderThatIsNotThere) {
  const FileResult result = WriteNewFile(folder / "absent/file", "new");
  EXPECT_EQ("cannot be made: No such file or directory", result.reason);
  EXPECT_FALSE(result.exists);
}

TEST_F(FileBytes, GivesANewFileTheModeOfEveryNewFile) {
  for (const mode_t mask : {022u, 077u, 0u, 0777u}) {
    unlink(file.c_str());
    const mode_t before = umask(mask);
    EXPECT_TRUE(WriteNewFile(file, "new").isDone());
    umask(before);
    EXPECT_EQ(0666u & ~mask, ModeOf(file));
  }
}

// The file has its name when it is complete, and nobody's file is written over even then.
TEST_F(FileBytes, GivesANewFileItsNameAtTheEnd) {
  std::string present;
  {
    const TakenOverCalls taken({[&] { return present = GetFile(file), 0; }, {}});
    EXPECT_TRUE(WriteNewFile(file, "new").isDone());
  }
  EXPECT_EQ("(cannot be read)", present);
  ASSERT_EQ(0, unlink(file.c_str()));
  {
    const TakenOverCalls taken({[&] { return PutFile(file, old), 0; }, {}});
    EXPECT_TRUE(WriteNewFile(file, "new").exists);
  }
  EXPECT_EQ(old, GetFile(file));
  EXPECT_EQ("file ", Files());
}

TEST_F(FileBytes, WritesANewFileWhereThereAreNoLinks) {
  for (const int error : {EPERM, EOPNOTSUPP, ENOSYS, EMLINK}) {
    const auto fails = [&] { return error; };
    {
      const TakenOverCalls taken({fails, {}});
      EXPECT_TRUE(WriteNewFile(file, "new").isDone());
      EXPECT_TRUE(WriteNewFile(file, "newer").exists);
    }
    EXPECT_EQ("new", GetFile(file));
    EXPECT_EQ("file ", Files());
    ASSERT_EQ(0, unlink(file.c_str()));
    // Somebody is faster.
    {
      const TakenOverCalls taken({fails, [&] { return PutFile(file, old), 0; }});
      EXPECT_TRUE(WriteNewFile(file, "new").exists);
    }
    EXPECT_EQ(old, GetFile(file));
    EXPECT_EQ("file ", Files());
    ASSERT_EQ(0, unlink(file.c_str()));
  }
  const TakenOverCalls taken({[] { return EACCES; }, {}});
  EXPECT_EQ("cannot be made: Permission denied", WriteNewFile(file, "new").reason);
  EXPECT_EQ("", Files());
}

TEST_F(FileBytes, WritesANewFileWhereNothingButThatIsPossible) {
  for (const int error : {EINVAL, ENOSYS, EOPNOTSUPP}) {
    const TakenOverCalls taken({[] { return EPERM; }, [&] { return error; }});
    EXPECT_TRUE(WriteNewFile(file, "new").isDone());
    EXPECT_EQ("new", GetFile(file));
    EXPECT_EQ("file ", Files());
    ASSERT_EQ(0, unlink(file.c_str()));
  }
  const TakenOverCalls taken({[] { return EPERM; }, [&] { return PutFile(file, old), EINVAL; }});
  EXPECT_TRUE(WriteNewFile(file, "new").exists);
  EXPECT_EQ(old, GetFile(file));
  EXPECT_EQ("file ", Files());
}

TEST_F(FileBytes, WritesFilesOfTheLongestName) {
  const std::string longest = folder / std::string(255, 'n').c_str();
  EXPECT_TRUE(WriteNewFile(longest, old).isDone());
  EXPECT_TRUE(ReplaceFile(longest, old, "new").isDone());
  EXPECT_EQ("new", GetFile(longest));
  EXPECT_EQ("cannot be made: File name too long", WriteNewFile(longest + "n", "new").reason);
  EXPECT_EQ(std::string(255, 'n') + ' ', Files());
}

TEST_F(FileBytes, TellsTheFolderOfAPath) {
  EXPECT_EQ(".", FolderOf("a"));
  EXPECT_EQ("/", FolderOf("/a"));
  EXPECT_EQ("a/b", FolderOf("a/b/c"));
}

TEST_F(FileBytes, LeavesNothingWhenTheDiskIsFull) {
  const std::string bytes(5000, 'x');
  EXPECT_TRUE(OnAFullDisk([&] { return WriteNewFile(file, std::string(1000, 'x')).isDone(); }));
  EXPECT_EQ("file ", Files());
  ASSERT_EQ(0, unlink(file.c_str()));
  EXPECT_TRUE(OnAFullDisk(
      [&] { return WriteNewFile(file, bytes).reason == "cannot be written: File too large"; }));
  EXPECT_EQ("", Files());
  PutFile(file, old);
  EXPECT_TRUE(OnAFullDisk([&] {
    return ReplaceFile(file, old, bytes).reason ==
           "the temporary file cannot be written: File too large";
  }));
  EXPECT_EQ("file ", Files());
  EXPECT_EQ(old, GetFile(file));
}

TEST_F(FileBytes, ReplacesAFile) {
  PutFile(file, old);
  ASSERT_EQ(0, chmod(file.c_str(), 0640));
  EXPECT_TRUE(ReplaceFile(file, old, "new").isDone());
  EXPECT_EQ("new", GetFile(file));
  EXPECT_EQ(0640u, ModeOf(file));
  EXPECT_EQ("file ", Files());
}

TEST_F(FileBytes, KeepsTheOwnerOfAFileThatItReplaces) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can give files away";
  PutFile(file, old);
  ASSERT_EQ(0, chown(file.c_str(), 1234, 4321));
  EXPECT_TRUE(ReplaceFile(file, old, "new").isDone());
  struct stat found = {};
  ASSERT_EQ(0, stat(file.c_str(), &found));
  EXPECT_EQ(1234u, found.st_uid);
  EXPECT_EQ(4321u, found.st_gid);
}

TEST_F(FileBytes, ReplacesWhatALinkLeadsTo) {
  ASSERT_EQ(0, mkdir((folder / "sub").c_str(), 0700));
  PutFile(folder / "sub/real", old);
  ASSERT_EQ(0, symlink("sub/real", file.c_str()));
  EXPECT_TRUE(ReplaceFile(file, old, "new").isDone());
  EXPECT_EQ("new", GetFile(folder / "sub/real"));
  EXPECT_TRUE(std::filesystem::is_symlink(file));
  EXPECT_EQ("file sub ", Files());
}

TEST_F(FileBytes, ReplacesNoFileThatWasChangedMeanwhile) {
  for (const char* present : {"old bytez", "old bytes and more", "old byte", ""}) {
    PutFile(file, present);
    EXPECT_EQ("was changed by another program meanwhile, nothing is done",
              ReplaceFile(file, old, "new").reason);
    EXPECT_EQ(present, GetFile(file));
    EXPECT_EQ("file ", Files());
  }
}

TEST_F(FileBytes, ReplacesNoFileThatIsNotThere) {
  EXPECT_EQ("cannot be written: No such file or directory", ReplaceFile(file, "", "new").reason);
  EXPECT_EQ("", Files());
}

TEST_F(FileBytes, ReplacesNothingThatMayNotBeWritten) {
  PutFile(file, old);
  ASSERT_EQ(0, chmod((folder / ".").c_str(), 0777));
  ASSERT_EQ(0, chmod(file.c_str(), 0444));
  {
    const OrdinaryUser user;
    EXPECT_EQ("cannot be written: Permission denied", ReplaceFile(file, old, "new").reason);
  }
  EXPECT_EQ("file ", Files());
  // Nor in a folder where no file can be made.
  ASSERT_EQ(0, chmod(file.c_str(), 0666));
  ASSERT_EQ(0, chmod((folder / ".").c_str(), 0555));
  {
    const OrdinaryUser user;
    EXPECT_EQ("no temporary file can be made beside it: Permission denied",
              ReplaceFile(file, old, "new").reason);
  }
  ASSERT_EQ(0, chmod((folder / ".").c_str(), 0700));
  EXPECT_EQ("file ", Files());
  EXPECT_EQ(old, GetFile(file));
}

}  // namespace

}  // namespace yaxreg
