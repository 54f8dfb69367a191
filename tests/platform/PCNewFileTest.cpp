#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cstring>

#include "platform/PCFile.h"
#include "platform/PCNewFile.h"
#include "tests/platform/ChildProcess.h"
#include "tests/platform/TestFiles.h"

namespace {

// Writes the text to where the new file is to be written.
bool Fill(PCNewFile& made, const char* text) {
  PCFile file;
  return file.Create(made.Path(), PCFile::kReadWrite) &&
         file.Write(text, static_cast<unsigned int>(std::strlen(text))) && file.Destroy();
}

mode_t ModeOf(const std::string& path) {
  struct stat info = {};
  EXPECT_EQ(0, stat(path.c_str(), &info));
  return info.st_mode & 07777;
}

TEST(PCNewFile, HasItsNameOnlyWhenItIsGiven) {
  TempDir dir;
  const int next = NextDescriptor();
  {
    PCNewFile made;
    ASSERT_EQ(1, made.Create((dir / "f").c_str()));
    EXPECT_FALSE(made.IsInPlace());
    EXPECT_EQ(made.Path(), dir / ".yax-new-00");
    ASSERT_TRUE(Fill(made, "new"));
    EXPECT_EQ(".yax-new-00 ", NamesIn(dir / "."));
    EXPECT_EQ(1, made.Sync());
    EXPECT_EQ(1, made.GiveName(true));
    EXPECT_EQ("new", GetFile(dir / "f"));
  }
  EXPECT_EQ("f ", NamesIn(dir / "."));
  EXPECT_EQ(NextDescriptor(), next);
}

TEST(PCNewFile, LeavesNothingWhenItIsGivenUp) {
  TempDir dir;
  PutFile(dir / "old", "old");
  const int next = NextDescriptor();
  PCNewFile made;
  for (const char* name : {"new", "old"}) {
    ASSERT_EQ(1, made.Create((dir / name).c_str()));
    ASSERT_TRUE(Fill(made, "part"));
  }
  made.Destroy();
  made.Destroy();
  EXPECT_FALSE(made.IsOpen());
  EXPECT_EQ(nullptr, made.Path());
  EXPECT_EQ(0, made.Sync());
  EXPECT_EQ(0, made.GiveName(false));
  EXPECT_EQ(0, made.TakeName());
  EXPECT_EQ("old ", NamesIn(dir / "."));
  EXPECT_EQ("old", GetFile(dir / "old"));
  EXPECT_EQ(NextDescriptor(), next);
}

TEST(PCNewFile, ReplacesAFileWithItsOwnerAndMode) {
  for (const bool sync : {false, true}) {
    TempDir dir;
    const std::string path = dir / "f";
    PutFile(path, "a long old text");
    ASSERT_EQ(0, chmod(path.c_str(), 0640));
    if (geteuid() == 0) {
      ASSERT_EQ(0, chown(path.c_str(), 7, 8));
    }
    struct stat before = {};
    ASSERT_EQ(0, stat(path.c_str(), &before));
    PCNewFile made;
    ASSERT_EQ(1, made.Create(path.c_str()));
    ASSERT_TRUE(Fill(made, "new"));
    EXPECT_EQ("a long old text", GetFile(path));
    EXPECT_EQ(1, made.GiveName(sync));
    made.Destroy();
    struct stat after = {};
    ASSERT_EQ(0, stat(path.c_str(), &after));
    EXPECT_EQ("new", GetFile(path));
    EXPECT_EQ(after.st_mode, before.st_mode);
    EXPECT_EQ(after.st_uid, before.st_uid);
    EXPECT_EQ(after.st_gid, before.st_gid);
    EXPECT_EQ("f ", NamesIn(dir / "."));
  }
}

TEST(PCNewFile, HasTheModeOfTheUmask) {
  TempDir dir;
  const mode_t before = umask(027);
  PCNewFile made;
  EXPECT_EQ(1, made.Create((dir / "f").c_str()));
  EXPECT_EQ(1, made.GiveName(false));
  umask(before);
  EXPECT_EQ(0640u, ModeOf(dir / "f"));
}

TEST(PCNewFile, FollowsSymbolicLinks) {
  TempDir dir;
  std::filesystem::create_directory(dir / "below");
  for (const char* there : {"old", "(cannot be read)"}) {
    SCOPED_TRACE(there);
    const std::string target = dir / "below/target";
    std::filesystem::remove(target);
    if (std::string(there) == "old") PutFile(target, there);
    for (const char* name : {"first", "second", "third"}) std::filesystem::remove(dir / name);
    std::filesystem::create_symlink("below/target", dir / "first");
    std::filesystem::create_symlink("./first", dir / "second");
    std::filesystem::create_symlink(dir / "second", dir / "third");
    PCNewFile made;
    ASSERT_EQ(1, made.Create((dir / "third").c_str()));
    EXPECT_EQ(std::string(".yax-new-00 ") + (*there == 'o' ? "target " : ""),
              NamesIn(dir / "below"));
    ASSERT_TRUE(Fill(made, "new"));
    EXPECT_EQ(GetFile(dir / "third"), there);
    EXPECT_EQ(1, made.GiveName(false));
    EXPECT_EQ("new", GetFile(target));
    EXPECT_TRUE(std::filesystem::is_symlink(dir / "third"));
    EXPECT_EQ("target ", NamesIn(dir / "below"));
  }
}

TEST(PCNewFile, IsNotMadeWhereNoRegularFileCanBe) {
  TempDir dir;
  const int next = NextDescriptor();
  ASSERT_EQ(0, mkfifo((dir / "fifo").c_str(), 0666));
  std::filesystem::create_symlink("circle", dir / "circle");
  PCNewFile made;
  for (const std::string& path : {dir / "absent/new", dir / ".", dir / "fifo", dir / "circle",
                                  dir / "name/", std::string("/dev/null"), std::string()}) {
    EXPECT_EQ(0, made.Create(path.c_str())) << path;
    EXPECT_FALSE(made.IsOpen()) << path;
  }
  EXPECT_EQ(0, made.Create((dir / std::string(5000, 'x').c_str()).c_str()));
  EXPECT_EQ(0, made.Create(nullptr));
  EXPECT_EQ(NextDescriptor(), next);
  EXPECT_EQ("circle fifo ", NamesIn(dir / "."));
}

TEST(PCNewFile, LeavesAFileThatAppearsMeanwhileUnlessItTakesTheName) {
  TempDir dir;
  const std::string path = dir / "f";
  for (const bool takes : {false, true}) {
    std::filesystem::remove(path);
    PCNewFile made;
    ASSERT_EQ(1, made.Create(path.c_str()));
    ASSERT_TRUE(Fill(made, "late"));
    PutFile(path, "early");
    EXPECT_EQ(1, takes ? made.TakeName() : made.GiveName(true));
    made.Destroy();
    EXPECT_EQ(GetFile(path), takes ? "late" : "early");
    EXPECT_EQ("f ", NamesIn(dir / "."));
  }
}

TEST(PCNewFile, LeavesAFileThatCameBefore) {
  TempDir dir;
  PutFile(dir / "f", "early");
  PCNewFile made;
  ASSERT_EQ(1, made.CreateNew((dir / "f").c_str()));
  ASSERT_TRUE(Fill(made, "late"));
  EXPECT_EQ(1, made.GiveName(false));
  made.Destroy();
  EXPECT_EQ("early", GetFile(dir / "f"));
  EXPECT_EQ("f ", NamesIn(dir / "."));
  EXPECT_EQ(0, made.CreateNew(""));
  EXPECT_EQ(0, made.CreateNew(nullptr));
}

TEST(PCNewFile, SeveralAreMadeInOneFolderAtOnce) {
  TempDir dir;
  PCNewFile first;
  PCNewFile second;
  ASSERT_EQ(1, first.Create((dir / "a").c_str()));
  ASSERT_EQ(1, second.Create((dir / "b").c_str()));
  EXPECT_EQ(second.Path(), dir / ".yax-new-01");
  EXPECT_TRUE(Fill(first, "1") && Fill(second, "2"));
  EXPECT_EQ(1, first.GiveName(false));
  EXPECT_EQ(1, second.GiveName(false));
  EXPECT_EQ("12", GetFile(dir / "a") + GetFile(dir / "b"));
  EXPECT_EQ("a b ", NamesIn(dir / "."));
}

TEST(PCNewFile, WhatWasLeftBehindIsRemovedAndNothingElse) {
  TempDir dir;
  PutFile(dir / "kept", "kept");
  ASSERT_EQ(0, mkfifo((dir / ".yax-new-00").c_str(), 0666));
  std::filesystem::create_directory(dir / ".yax-new-01");
  std::filesystem::create_symlink("kept", dir / ".yax-new-02");
  PutFile(dir / ".yax-new-03", "left");
  PCNewFile made;
  ASSERT_EQ(1, made.Create((dir / "f").c_str()));
  EXPECT_EQ(made.Path(), dir / ".yax-new-02");  // the link goes, what it leads to stays
  ASSERT_EQ(1, made.GiveName(false));
  PCNewFile another;
  EXPECT_EQ(1, made.Create((dir / "g").c_str()));
  EXPECT_EQ(1, another.Create((dir / "h").c_str()));
  EXPECT_EQ(another.Path(), dir / ".yax-new-03");
  EXPECT_EQ("", GetFile(another.Path()));
  EXPECT_EQ("kept", GetFile(dir / "kept"));
}

TEST(PCNewFile, AFileIsWrittenInPlaceWhereTheFolderTakesNoOther) {
  TempDir dir;
  const std::string path = dir / "f";
  PutFile(path, "a long old text");
  chmod(path.c_str(), 0666);
  chmod((dir / ".").c_str(), 0555);
  EXPECT_TRUE(InChild([&] {
    PCNewFile made;
    if (!DropRights() || made.Create((dir / "absent").c_str())) return false;
    if (!made.Create(path.c_str()) || !made.IsInPlace() || GetFile(path) != "") return false;
    return made.Path() == path && Fill(made, "new") && made.Sync() && made.GiveName(true) &&
           made.TakeName();
  }));
  chmod((dir / ".").c_str(), 0755);
  EXPECT_EQ("new", GetFile(path));
  EXPECT_EQ("f ", NamesIn(dir / "."));
}

// Only the superuser may give a file away.
TEST(PCNewFile, AFileOfAnotherUserIsWrittenInPlace) {
  if (geteuid() != 0) GTEST_SKIP() << "only the superuser can make files of others";
  TempDir dir;
  const std::string path = dir / "f";
  PutFile(path, "a long old text");
  chmod(path.c_str(), 0666);
  chmod((dir / ".").c_str(), 0777);
  EXPECT_TRUE(InChild([&] {
    PCNewFile made;
    return DropRights() && made.Create(path.c_str()) && made.IsInPlace() && Fill(made, "new") &&
           made.GiveName(false);
  }));
  struct stat info = {};
  ASSERT_EQ(0, stat(path.c_str(), &info));
  EXPECT_EQ(0u, info.st_uid);
  EXPECT_EQ("new", GetFile(path));
  EXPECT_EQ("f ", NamesIn(dir / "."));
}

// A folder where each temporary name is somebody else's takes no other.
TEST(PCNewFile, WithoutATemporaryNameNothingIsMade) {
  TempDir dir;
  PutFile(dir / "old", "old");
  std::string names;
  for (int i = 0; i < 100; ++i) {
    const std::string name = std::string(".yax-new-") + (i < 10 ? "0" : "") + std::to_string(i);
    ASSERT_EQ(0, mkdir((dir / name.c_str()).c_str(), 0755));
    names += name + " ";
  }
  PCNewFile made;
  EXPECT_EQ(0, made.Create((dir / "new").c_str()));
  EXPECT_EQ(0, made.Create((dir / "old").c_str()));
  EXPECT_EQ("old", GetFile(dir / "old"));
  EXPECT_EQ(names + "old ", NamesIn(dir / "."));
}

TEST(PCNewFile, APathMayBeShortButNotTooLong) {
  TempDir dir;
  const std::string before = std::filesystem::current_path();
  std::filesystem::current_path(dir / ".");
  PCNewFile made;
  EXPECT_EQ(1, made.Create("f"));
  EXPECT_STREQ(".yax-new-00", made.Path());
  EXPECT_TRUE(Fill(made, "new"));
  EXPECT_EQ(1, made.GiveName(true));
  made.Destroy();
  EXPECT_EQ("f ", NamesIn("."));
  std::string path;
  while (path.size() < 4090) path += "./";
  // A temporary name beside it would be too long.
  EXPECT_EQ(0, made.CreateNew((path + "g").c_str()));
  EXPECT_EQ(1, made.Create((path + "f").c_str()));
  EXPECT_TRUE(made.IsInPlace());
  EXPECT_EQ(0, made.CreateNew((path + "././././g").c_str()));
  EXPECT_EQ("f ", NamesIn("."));
  std::filesystem::current_path(before);
}

TEST(PCNewFile, AFileWithoutANameIsWrittenInPlace) {
  TempDir dir;
  PutFile(dir / "f", "a long old text");
  const int fd = open((dir / "f").c_str(), O_RDWR);
  ASSERT_GE(fd, 0);
  std::filesystem::remove(dir / "f");
  PCNewFile made;
  ASSERT_EQ(1, made.Create(("/proc/self/fd/" + std::to_string(fd)).c_str()));
  EXPECT_TRUE(made.IsInPlace());
  EXPECT_TRUE(Fill(made, "new"));
  char bytes[10] = {};
  EXPECT_EQ(3, pread(fd, bytes, sizeof bytes, 0));
  EXPECT_STREQ(bytes, "new");
  close(fd);
  EXPECT_EQ("", NamesIn(dir / "."));
}

}  // namespace
