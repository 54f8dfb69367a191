#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "platform/PCFile.h"
#include "tests/platform/ChildProcess.h"
#include "tests/platform/TestFiles.h"
#include "tests/support/Constinit.h"

namespace {

YAX_TEST_CONSTINIT PCFile gStaticFile;

std::string ReadAt(PCFile& file, unsigned int offset, unsigned int size) {
  std::string bytes(size, '?');
  if (file.Seek(offset) != 1 || file.Read(bytes.data(), size) != 1) return "(no)";
  return bytes;
}

TEST(PCFile, NeedsNoInitialisationAtRunTime) {
  EXPECT_FALSE(gStaticFile.IsOpen());
  EXPECT_FALSE(gStaticFile.Missing());
}

TEST(PCFile, MakesAnEmptyFileAndLeavesItClosed) {
  TempDir dir;
  const int next = NextDescriptor();
  EXPECT_EQ(PCFile::Make((dir / "new").c_str()), 1);
  EXPECT_EQ(GetFile(dir / "new"), "");
  EXPECT_EQ(NextDescriptor(), next);
}

TEST(PCFile, MakesFilesWithModeOfTheUmask) {
  TempDir dir;
  const mode_t before = umask(027);
  EXPECT_EQ(PCFile::Make((dir / "new").c_str()), 1);
  umask(before);
  struct stat info = {};
  ASSERT_EQ(stat((dir / "new").c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 07777u, 0640u);
}

TEST(PCFile, MakeEmptiesAFileThatExists) {
  TempDir dir;
  PutFile(dir / "old", "content");
  EXPECT_EQ(PCFile::Make((dir / "old").c_str()), 1);
  EXPECT_EQ(GetFile(dir / "old"), "");
}

TEST(PCFile, MakeFailsWhereNoRegularFileCanBe) {
  TempDir dir;
  const int next = NextDescriptor();
  ASSERT_EQ(mkfifo((dir / "fifo").c_str(), 0666), 0);
  EXPECT_EQ(PCFile::Make((dir / "absent/new").c_str()), 0);
  EXPECT_EQ(PCFile::Make((dir / ".").c_str()), 0);
  EXPECT_EQ(PCFile::Make((dir / "fifo").c_str()), 0);
  EXPECT_EQ(PCFile::Make("/dev/null"), 0);
  EXPECT_EQ(PCFile::Make(""), 0);
  EXPECT_EQ(PCFile::Make(nullptr), 0);
  EXPECT_EQ(NextDescriptor(), next);
}

TEST(PCFile, CreateOpensAtTheStartOfTheFile) {
  TempDir dir;
  PutFile(dir / "f", "abcdef");
  PCFile file;
  EXPECT_FALSE(file.IsOpen());
  EXPECT_EQ(file.Create((dir / "f").c_str(), PCFile::kReadWrite), 1);
  EXPECT_TRUE(file.IsOpen());
  char bytes[3];
  EXPECT_EQ(file.Read(bytes, 3), 1);
  EXPECT_EQ(std::string(bytes, 3), "abc");
  EXPECT_EQ(GetFile(dir / "f"), "abcdef");
}

TEST(PCFile, CreateOpensAFileDatedAfterTheYear2038) {
  TempDir dir;
  PutFile(dir / "f", "abc");
  ASSERT_EQ(std::system(("touch -d 2040-01-01 '" + (dir / "f") + "'").c_str()), 0);
  PCFile file;
  EXPECT_EQ(file.Create((dir / "f").c_str(), 2), 1);
  EXPECT_TRUE(file.SameFile((dir / "f").c_str()));
}

TEST(PCFile, CreateNeverMakesAFile) {
  TempDir dir;
  PCFile file;
  EXPECT_EQ(file.Create((dir / "absent").c_str(), 2), 0);
  EXPECT_FALSE(file.IsOpen());
  EXPECT_TRUE(file.Missing());
  EXPECT_EQ(access((dir / "absent").c_str(), F_OK), -1);
}

TEST(PCFile, CreateTakesOnlyTheReadWriteMode) {
  TempDir dir;
  PutFile(dir / "f", "abc");
  PCFile file;
  for (int mode : {-1, 0, 1, 3, 6}) EXPECT_EQ(file.Create((dir / "f").c_str(), mode), 0) << mode;
  EXPECT_FALSE(file.Missing());
}

TEST(PCFile, CreateRefusesWhatIsNoRegularFileAndLeavesNothingOpen) {
  TempDir dir;
  const int next = NextDescriptor();
  ASSERT_EQ(mkfifo((dir / "fifo").c_str(), 0666), 0);
  PutFile(dir / "plain", "");
  PCFile file;
  for (const std::string& path :
       {dir / ".", dir / "fifo", dir / "plain/below", std::string("/dev/null")}) {
    EXPECT_EQ(file.Create(path.c_str(), 2), 0) << path;
    EXPECT_FALSE(file.IsOpen()) << path;
    EXPECT_FALSE(file.Missing()) << path;
  }
  EXPECT_EQ(file.Create(nullptr, 2), 0);
  EXPECT_FALSE(file.Missing());
  EXPECT_EQ(NextDescriptor(), next);
}

TEST(PCFile, MissingIsForgottenByTheNextCreate) {
  TempDir dir;
  PutFile(dir / "f", "");
  PCFile file;
  EXPECT_EQ(file.Create((dir / "absent").c_str(), 2), 0);
  EXPECT_TRUE(file.Missing());
  EXPECT_EQ(file.Create((dir / "f").c_str(), 2), 1);
  EXPECT_FALSE(file.Missing());
  EXPECT_EQ(file.Create((dir / ".").c_str(), 2), 0);
  EXPECT_FALSE(file.Missing());
}

TEST(PCFile, CreateClosesWhatWasOpenEvenWhenItFails) {
  TempDir dir;
  PutFile(dir / "a", "aaaa");
  PutFile(dir / "b", "bbbb");
  const int next = NextDescriptor();
  PCFile file;
  ASSERT_EQ(file.Create((dir / "a").c_str(), 2), 1);
  ASSERT_EQ(file.Seek(3), 1);
  ASSERT_EQ(file.Create((dir / "b").c_str(), 2), 1);
  EXPECT_EQ(ReadAt(file, 0, 4), "bbbb");
  EXPECT_EQ(NextDescriptor(), next + 1);
  EXPECT_EQ(file.Create((dir / "absent").c_str(), 2), 0);
  EXPECT_FALSE(file.IsOpen());
  EXPECT_EQ(NextDescriptor(), next);
}

TEST(PCFile, IsNotInheritedByOtherPrograms) {
  TempDir dir;
  PutFile(dir / "f", "");
  const int fd = NextDescriptor();
  PCFile file;
  ASSERT_EQ(file.Create((dir / "f").c_str(), 2), 1);
  EXPECT_EQ(fcntl(fd, F_GETFD), FD_CLOEXEC);
}

TEST(PCFile, StaysClearOfTheStandardStreams) {
  TempDir dir;
  const std::string path = dir / "f";
  EXPECT_TRUE(InChild([&] {
    for (int fd = 0; fd < 3; ++fd) close(fd);
    PCFile file;
    if (PCFile::Make(path.c_str()) != 1 || file.Create(path.c_str(), 2) != 1) return false;
    return write(1, "x", 1) < 0 && write(2, "x", 1) < 0 && file.Write("ok", 2) == 1;
  }));
  EXPECT_EQ(GetFile(path), "ok");
}

TEST(PCFile, ReadsMoveThePosition) {
  TempDir dir;
  PutFile(dir / "f", "abcdef");
  PCFile file;
  ASSERT_EQ(file.Create((dir / "f").c_str(), 2), 1);
  std::string bytes(2, '?');
  EXPECT_EQ(file.Read(bytes.data(), 2), 1);
  EXPECT_EQ(bytes, "ab");
  EXPECT_EQ(file.Read(bytes.data(), 2), 1);
  EXPECT_EQ(bytes, "cd");
  EXPECT_EQ(file.Seek(1), 1);
  EXPECT_EQ(file.Read(bytes.data(), 2), 1);
  EXPECT_EQ(bytes, "bc");
}

TEST(PCFile, ReadsFailWhenFewerBytesAreThere) {
  TempDir dir;
  PutFile(dir / "f", "abcdef");
  PCFile file;
  ASSERT_EQ(file.Create((dir / "f").c_str(), 2), 1);
  char bytes[8];
  ASSERT_EQ(file.Seek(4), 1);
  EXPECT_EQ(file.Read(bytes, 3), 0);
  EXPECT_EQ(file.Read(bytes, 2), 1) << "the position stays after a failure";
  EXPECT_EQ(std::string(bytes, 2), "ef");
  EXPECT_EQ(file.Read(bytes, 1), 0) << "at the end";
  EXPECT_EQ(ReadAt(file, 7, 1), "(no)");
  EXPECT_EQ(ReadAt(file, 0xFFFFFFFF, 1), "(no)");
}

TEST(PCFile, WritesMoveThePositionAndShowInTheFileAndInReads) {
  TempDir dir;
  PutFile(dir / "f", "abcdef");
  PCFile file;
  ASSERT_EQ(file.Create((dir / "f").c_str(), 2), 1);
  EXPECT_EQ(file.Write("12", 2), 1);
  EXPECT_EQ(file.Write("34", 2), 1);
  EXPECT_EQ(GetFile(dir / "f"), "1234ef");
  EXPECT_EQ(ReadAt(file, 0, 6), "1234ef");
  ASSERT_EQ(file.Seek(3), 1);
  EXPECT_EQ(file.Write("xyz!", 4), 1);
  EXPECT_EQ(ReadAt(file, 0, 7), "123xyz!");
}

TEST(PCFile, StoresMoveThePositionAndShowInTheFileAndInReads) {
  TempDir dir;
  PutFile(dir / "file", "0123456789");
  PCFile file;
  ASSERT_EQ(1, file.Create((dir / "file").c_str(), PCFile::kReadWrite));
  file.AllowStores();
  ASSERT_EQ(1, file.Seek(3));
  EXPECT_EQ(1, file.Store("abc", 3));
  EXPECT_EQ(6u, file.Position());
  EXPECT_EQ("abc6", ReadAt(file, 3, 4));
  EXPECT_EQ("012abc6789", GetFile(dir / "file"));
  ASSERT_EQ(1, file.Seek(8));
  EXPECT_EQ(1, file.Store("xyz", 3));  // beyond the end
  EXPECT_EQ("012abc67xyz", GetFile(dir / "file"));
}

TEST(PCFile, AStoreIntoAPartThatOthersHaveCutOffIsAWrite) {
  TempDir dir;
  const std::string path = dir / "file";
  PutFile(path, std::string(20000, 'a'));
  PCFile file;
  ASSERT_EQ(1, file.Create(path.c_str(), PCFile::kReadWrite));
  file.AllowStores();
  ASSERT_EQ(0, truncate(path.c_str(), 5));
  ASSERT_EQ(1, file.Seek(19000));
  EXPECT_EQ(1, file.Store("end", 3));
  EXPECT_EQ(19003u, GetFile(path).size());
  EXPECT_EQ("end", ReadAt(file, 19000, 3));
}

TEST(PCFile, TransfersOfNoBytesSucceedAndChangeNothing) {
  TempDir dir;
  PutFile(dir / "f", "abc");
  PutFile(dir / "empty", "");
  PCFile file;
  ASSERT_EQ(file.Create((dir / "empty").c_str(), 2), 1);
  EXPECT_EQ(file.Read(nullptr, 0), 1);
  EXPECT_EQ(file.Write(nullptr, 0), 1);
  ASSERT_EQ(file.Create((dir / "f").c_str(), 2), 1);
  for (unsigned int offset : {0u, 1u, 3u, 100u}) {
    ASSERT_EQ(file.Seek(offset), 1);
    EXPECT_EQ(file.Read(nullptr, 0), 1) << offset;
    EXPECT_EQ(file.Write(nullptr, 0), 1) << offset;
  }
  EXPECT_EQ(file.Size(), 3u);
  EXPECT_EQ(ReadAt(file, 3, 1), "(no)");
}

TEST(PCFile, AnswersFailureWhileClosed) {
  PCFile file;
  char byte = 'x';
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(file.Read(&byte, 1), 0);
    EXPECT_EQ(file.Read(&byte, 0), 0);
    EXPECT_EQ(file.Write(&byte, 1), 0);
    EXPECT_EQ(file.Write(&byte, 0), 0);
    EXPECT_EQ(file.Seek(0), 0);
    EXPECT_EQ(file.Truncate(0), 0);
    EXPECT_EQ(file.Truncate(5), 0);
    EXPECT_EQ(file.Size(), 0u);
    EXPECT_FALSE(file.SameFile("/"));
    file.Refresh();
    TempDir dir;
    PutFile(dir / "f", "abc");
    ASSERT_EQ(file.Create((dir / "f").c_str(), 2), 1);
    EXPECT_EQ(file.Destroy(), 1);
    EXPECT_EQ(file.Destroy(), 1);
    EXPECT_FALSE(file.IsOpen());
  }
}

TEST(PCFile, RecognisesItsFileUnderOtherNames) {
  TempDir dir;
  PutFile(dir / "f", "abc");
  PutFile(dir / "copy", "abc");
  ASSERT_EQ(symlink("f", (dir / "soft").c_str()), 0);
  ASSERT_EQ(link((dir / "f").c_str(), (dir / "hard").c_str()), 0);
  PCFile file;
  ASSERT_EQ(file.Create((dir / "f").c_str(), 2), 1);
  EXPECT_TRUE(file.SameFile((dir / "f").c_str()));
  EXPECT_TRUE(file.SameFile((dir / "./f").c_str()));
  EXPECT_TRUE(file.SameFile((dir / "soft").c_str()));
  EXPECT_TRUE(file.SameFile((dir / "hard").c_str()));
  EXPECT_FALSE(file.SameFile((dir / "copy").c_str()));
  EXPECT_FALSE(file.SameFile((dir / "absent").c_str()));
  EXPECT_FALSE(file.SameFile(nullptr));
  PutFile(dir / "new", "abc");
  ASSERT_EQ(rename((dir / "new").c_str(), (dir / "f").c_str()), 0);
  EXPECT_FALSE(file.SameFile((dir / "f").c_str())) << "another file took the name";
}

TEST(PCFile, RecognisesTheFileThatAnotherObjectHasOpen) {
  TempDir dir;
  PutFile(dir / "f", "abc");
  PutFile(dir / "copy", "abc");
  ASSERT_EQ(link((dir / "f").c_str(), (dir / "hard").c_str()), 0);
  PCFile file;
  PCFile other;
  EXPECT_FALSE(file.SameFile(other));
  ASSERT_EQ(file.Create((dir / "f").c_str(), 2), 1);
  EXPECT_FALSE(file.SameFile(other));
  EXPECT_FALSE(other.SameFile(file));
  ASSERT_EQ(other.Create((dir / "hard").c_str(), 2), 1);
  EXPECT_TRUE(file.SameFile(other));
  ASSERT_EQ(other.Create((dir / "copy").c_str(), 2), 1);
  EXPECT_FALSE(file.SameFile(other));
}

TEST(PCFile, ExchangesWhatIsOpen) {
  TempDir dir;
  PutFile(dir / "f", "abcdef");
  PCFile file;
  PCFile other;
  ASSERT_EQ(file.Create((dir / "f").c_str(), 2), 1);
  ASSERT_EQ(other.Create((dir / "absent").c_str(), 2), 0);
  ASSERT_EQ(file.Seek(2), 1);
  file.Swap(other);
  EXPECT_FALSE(file.IsOpen());
  EXPECT_TRUE(file.Missing());
  EXPECT_FALSE(other.Missing());
  char letters[3] = {};
  EXPECT_EQ(file.Read(letters, 1), 0);
  EXPECT_EQ(other.Read(letters, 2), 1);
  EXPECT_STREQ(letters, "cd");
  ASSERT_EQ(other.Seek(8), 1);
  EXPECT_EQ(other.Write("x", 1), 1);
  EXPECT_EQ(other.Truncate(0), 1);  // the protected length has come along
  EXPECT_EQ(GetFile(dir / "f"), "abcdef");
}

}  // namespace
