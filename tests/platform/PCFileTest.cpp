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
#include "tests/support/LengthLook.h"

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
  EXPECT_EQ(1, PCFile::Make((dir / "new").c_str()));
  EXPECT_EQ("", GetFile(dir / "new"));
  EXPECT_EQ(NextDescriptor(), next);
}

TEST(PCFile, MakesFilesWithModeOfTheUmask) {
  TempDir dir;
  const mode_t before = umask(027);
  EXPECT_EQ(1, PCFile::Make((dir / "new").c_str()));
  umask(before);
  struct stat info = {};
  ASSERT_EQ(0, stat((dir / "new").c_str(), &info));
  EXPECT_EQ(0640u, info.st_mode & 07777u);
}

TEST(PCFile, MakeEmptiesAFileThatExists) {
  TempDir dir;
  PutFile(dir / "old", "content");
  EXPECT_EQ(1, PCFile::Make((dir / "old").c_str()));
  EXPECT_EQ("", GetFile(dir / "old"));
}

TEST(PCFile, MakeFailsWhereNoRegularFileCanBe) {
  TempDir dir;
  const int next = NextDescriptor();
  ASSERT_EQ(0, mkfifo((dir / "fifo").c_str(), 0666));
  EXPECT_EQ(0, PCFile::Make((dir / "absent/new").c_str()));
  EXPECT_EQ(0, PCFile::Make((dir / ".").c_str()));
  EXPECT_EQ(0, PCFile::Make((dir / "fifo").c_str()));
  EXPECT_EQ(0, PCFile::Make("/dev/null"));
  EXPECT_EQ(0, PCFile::Make(""));
  EXPECT_EQ(0, PCFile::Make(nullptr));
  EXPECT_EQ(NextDescriptor(), next);
}

TEST(PCFile, CreateOpensAtTheStartOfTheFile) {
  TempDir dir;
  PutFile(dir / "f", "abcdef");
  PCFile file;
  EXPECT_FALSE(file.IsOpen());
  EXPECT_EQ(1, file.Create((dir / "f").c_str(), PCFile::kReadWrite));
  EXPECT_TRUE(file.IsOpen());
  char bytes[3];
  EXPECT_EQ(1, file.Read(bytes, 3));
  EXPECT_EQ("abc", std::string(bytes, 3));
  EXPECT_EQ("abcdef", GetFile(dir / "f"));
}

TEST(PCFile, CreateOpensAFileDatedAfterTheYear2038) {
  TempDir dir;
  PutFile(dir / "f", "abc");
  ASSERT_EQ(0, std::system(("touch -d 2040-01-01 '" + (dir / "f") + "'").c_str()));
  PCFile file;
  EXPECT_EQ(1, file.Create((dir / "f").c_str(), 2));
  EXPECT_TRUE(file.SameFile((dir / "f").c_str()));
}

TEST(PCFile, CreateNeverMakesAFile) {
  TempDir dir;
  PCFile file;
  EXPECT_EQ(0, file.Create((dir / "absent").c_str(), 2));
  EXPECT_FALSE(file.IsOpen());
  EXPECT_TRUE(file.Missing());
  EXPECT_EQ(-1, access((dir / "absent").c_str(), F_OK));
}

TEST(PCFile, CreateTakesTwoModes) {
  TempDir dir;
  PutFile(dir / "f", "abc");
  PCFile file;
  for (int mode : {-1, 0, 3, 6}) EXPECT_EQ(0, file.Create((dir / "f").c_str(), mode)) << mode;
  EXPECT_FALSE(file.Missing());
  EXPECT_EQ(1, file.Create((dir / "f").c_str(), PCFile::kRead));
  char bytes[3] = {};
  EXPECT_EQ(1, file.Read(bytes, 3));
  EXPECT_EQ("abc", std::string(bytes, 3));
  EXPECT_EQ(1, file.Seek(0));
  EXPECT_EQ(0, file.Write("x", 1));
  EXPECT_EQ(0, file.Create((dir / "absent").c_str(), PCFile::kRead));
}

TEST(PCFile, ACopyIsReadAndWrittenInMemoryUntilItIsDropped) {
  TempDir dir;
  PutFile(dir / "f", "abc");
  PCFile file;
  ASSERT_EQ(1, file.Create((dir / "f").c_str(), PCFile::kRead));
  ASSERT_EQ(1, file.TakeCopy());
  PutFile(dir / "f", "defgh");
  EXPECT_EQ(3u, file.Size());
  EXPECT_EQ(1, file.Seek(1));
  EXPECT_EQ(1, file.Write("X", 1));
  EXPECT_EQ(0, file.Write("YZ", 2));
  EXPECT_EQ(1, file.Seek(0));
  char bytes[5] = {};
  EXPECT_EQ(0, file.Read(bytes, 4));
  EXPECT_EQ(1, file.Read(bytes, 3));
  EXPECT_EQ("aXc", std::string(bytes, 3));
  file.DropCopy();
  EXPECT_EQ(1, file.Seek(0));
  EXPECT_EQ(1, file.Read(bytes, 5));
  EXPECT_EQ("defgh", std::string(bytes, 5));
}

TEST(PCFile, CreateRefusesWhatIsNoRegularFileAndLeavesNothingOpen) {
  TempDir dir;
  const int next = NextDescriptor();
  ASSERT_EQ(0, mkfifo((dir / "fifo").c_str(), 0666));
  PutFile(dir / "plain", "");
  PCFile file;
  for (const std::string& path :
       {dir / ".", dir / "fifo", dir / "plain/below", std::string("/dev/null")}) {
    EXPECT_EQ(0, file.Create(path.c_str(), 2)) << path;
    EXPECT_FALSE(file.IsOpen()) << path;
    EXPECT_FALSE(file.Missing()) << path;
  }
  EXPECT_EQ(0, file.Create(nullptr, 2));
  EXPECT_FALSE(file.Missing());
  EXPECT_EQ(NextDescriptor(), next);
}

TEST(PCFile, MissingIsForgottenByTheNextCreate) {
  TempDir dir;
  PutFile(dir / "f", "");
  PCFile file;
  EXPECT_EQ(0, file.Create((dir / "absent").c_str(), 2));
  EXPECT_TRUE(file.Missing());
  EXPECT_EQ(1, file.Create((dir / "f").c_str(), 2));
  EXPECT_FALSE(file.Missing());
  EXPECT_EQ(0, file.Create((dir / ".").c_str(), 2));
  EXPECT_FALSE(file.Missing());
}

TEST(PCFile, CreateClosesWhatWasOpenEvenWhenItFails) {
  TempDir dir;
  PutFile(dir / "a", "aaaa");
  PutFile(dir / "b", "bbbb");
  const int next = NextDescriptor();
  PCFile file;
  ASSERT_EQ(1, file.Create((dir / "a").c_str(), 2));
  ASSERT_EQ(1, file.Seek(3));
  ASSERT_EQ(1, file.Create((dir / "b").c_str(), 2));
  EXPECT_EQ("bbbb", ReadAt(file, 0, 4));
  EXPECT_EQ(NextDescriptor(), next + 1);
  EXPECT_EQ(0, file.Create((dir / "absent").c_str(), 2));
  EXPECT_FALSE(file.IsOpen());
  EXPECT_EQ(NextDescriptor(), next);
}

TEST(PCFile, IsNotInheritedByOtherPrograms) {
  TempDir dir;
  PutFile(dir / "f", "");
  const int fd = NextDescriptor();
  PCFile file;
  ASSERT_EQ(1, file.Create((dir / "f").c_str(), 2));
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
  EXPECT_EQ("ok", GetFile(path));
}

TEST(PCFile, ReadsMoveThePosition) {
  TempDir dir;
  PutFile(dir / "f", "abcdef");
  PCFile file;
  ASSERT_EQ(1, file.Create((dir / "f").c_str(), 2));
  std::string bytes(2, '?');
  EXPECT_EQ(1, file.Read(bytes.data(), 2));
  EXPECT_EQ("ab", bytes);
  EXPECT_EQ(1, file.Read(bytes.data(), 2));
  EXPECT_EQ("cd", bytes);
  EXPECT_EQ(1, file.Seek(1));
  EXPECT_EQ(1, file.Read(bytes.data(), 2));
  EXPECT_EQ("bc", bytes);
}

TEST(PCFile, ReadsFailWhenFewerBytesAreThere) {
  TempDir dir;
  PutFile(dir / "f", "abcdef");
  PCFile file;
  ASSERT_EQ(1, file.Create((dir / "f").c_str(), 2));
  char bytes[8];
  ASSERT_EQ(1, file.Seek(4));
  EXPECT_EQ(0, file.Read(bytes, 3));
  EXPECT_EQ(1, file.Read(bytes, 2)) << "the position stays after a failure";
  EXPECT_EQ("ef", std::string(bytes, 2));
  EXPECT_EQ(0, file.Read(bytes, 1)) << "at the end";
  EXPECT_EQ("(no)", ReadAt(file, 7, 1));
  EXPECT_EQ("(no)", ReadAt(file, 0xFFFFFFFF, 1));
}

TEST(PCFile, WritesMoveThePositionAndShowInTheFileAndInReads) {
  TempDir dir;
  PutFile(dir / "f", "abcdef");
  PCFile file;
  ASSERT_EQ(1, file.Create((dir / "f").c_str(), 2));
  EXPECT_EQ(1, file.Write("12", 2));
  EXPECT_EQ(1, file.Write("34", 2));
  EXPECT_EQ("1234ef", GetFile(dir / "f"));
  EXPECT_EQ("1234ef", ReadAt(file, 0, 6));
  ASSERT_EQ(1, file.Seek(3));
  EXPECT_EQ(1, file.Write("xyz!", 4));
  EXPECT_EQ("123xyz!", ReadAt(file, 0, 7));
}

TEST(PCFile, StoresMoveThePositionAndShowInTheFileAndInReads) {
  TempDir dir;
  PutFile(dir / "file", "0123456789");
  PCFile file;
  ASSERT_EQ(1, file.Create((dir / "file").c_str(), PCFile::kReadWrite));
  file.MapNow();
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

// A mapping costs more than a few reads by calls.
TEST(PCFile, AFileIsMappedAfterManyReadsOrWhenItIsAskedFor) {
  TempDir dir;
  const std::string path = dir / "file";
  PutFile(path, "0123456789");
  PCFile asked;
  ASSERT_EQ(1, asked.Create(path.c_str(), PCFile::kReadWrite));
  asked.MapNow();
  const bool isPossible = asked.ReadMapped(0, 1) != nullptr;
  PCFile file;
  ASSERT_EQ(1, file.Create(path.c_str(), PCFile::kReadWrite));
  file.AllowStores();
  EXPECT_EQ("34", ReadAt(file, 3, 2));
  EXPECT_EQ(nullptr, file.ReadMapped(0, 1));
  ASSERT_EQ(1, file.Seek(4));
  EXPECT_EQ(1, file.Store("x", 1));
  for (unsigned int i = 0; i < 200; ++i) ASSERT_EQ("3x5", ReadAt(file, 3, 3));
  EXPECT_EQ(isPossible, file.ReadMapped(0, 1) != nullptr);
  ASSERT_EQ(1, file.Seek(5));
  EXPECT_EQ(1, file.Store("y", 1));
  EXPECT_EQ("0123xy6789", GetFile(path));
}

TEST(PCFile, AStoreIntoAPartThatOthersHaveCutOffIsAWrite) {
  TempDir dir;
  const std::string path = dir / "file";
  PutFile(path, std::string(20000, 'a'));
  PCFile file;
  ASSERT_EQ(1, file.Create(path.c_str(), PCFile::kReadWrite));
  file.MapNow();
  file.AllowStores();
  EXPECT_EQ(1, file.Store("b", 1));  // looks at the length
  ASSERT_EQ(0, truncate(path.c_str(), 5));
  WaitForTheNextLook();
  ASSERT_EQ(1, file.Seek(19000));
  EXPECT_EQ(1, file.Store("end", 3));
  EXPECT_EQ(19003u, GetFile(path).size());
  EXPECT_EQ("end", ReadAt(file, 19000, 3));
  EXPECT_EQ(std::string("baaaa") + std::string(5, '\0'), GetFile(path).substr(0, 10));
}

TEST(PCFile, TransfersOfNoBytesSucceedAndChangeNothing) {
  TempDir dir;
  PutFile(dir / "f", "abc");
  PutFile(dir / "empty", "");
  PCFile file;
  ASSERT_EQ(1, file.Create((dir / "empty").c_str(), 2));
  EXPECT_EQ(1, file.Read(nullptr, 0));
  EXPECT_EQ(1, file.Write(nullptr, 0));
  ASSERT_EQ(1, file.Create((dir / "f").c_str(), 2));
  for (unsigned int offset : {0u, 1u, 3u, 100u}) {
    ASSERT_EQ(1, file.Seek(offset));
    EXPECT_EQ(1, file.Read(nullptr, 0)) << offset;
    EXPECT_EQ(1, file.Write(nullptr, 0)) << offset;
  }
  EXPECT_EQ(3u, file.Size());
  EXPECT_EQ("(no)", ReadAt(file, 3, 1));
}

TEST(PCFile, AnswersFailureWhileClosed) {
  PCFile file;
  char byte = 'x';
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(0, file.Read(&byte, 1));
    EXPECT_EQ(0, file.Read(&byte, 0));
    EXPECT_EQ(0, file.Write(&byte, 1));
    EXPECT_EQ(0, file.Write(&byte, 0));
    EXPECT_EQ(0, file.Seek(0));
    EXPECT_EQ(0, file.Truncate(0));
    EXPECT_EQ(0, file.Truncate(5));
    EXPECT_EQ(0u, file.Size());
    EXPECT_FALSE(file.SameFile("/"));
    file.Refresh();
    TempDir dir;
    PutFile(dir / "f", "abc");
    ASSERT_EQ(1, file.Create((dir / "f").c_str(), 2));
    EXPECT_EQ(1, file.Destroy());
    EXPECT_EQ(1, file.Destroy());
    EXPECT_FALSE(file.IsOpen());
  }
}

TEST(PCFile, RecognisesItsFileUnderOtherNames) {
  TempDir dir;
  PutFile(dir / "f", "abc");
  PutFile(dir / "copy", "abc");
  ASSERT_EQ(0, symlink("f", (dir / "soft").c_str()));
  ASSERT_EQ(0, link((dir / "f").c_str(), (dir / "hard").c_str()));
  PCFile file;
  ASSERT_EQ(1, file.Create((dir / "f").c_str(), 2));
  EXPECT_TRUE(file.SameFile((dir / "f").c_str()));
  EXPECT_TRUE(file.SameFile((dir / "./f").c_str()));
  EXPECT_TRUE(file.SameFile((dir / "soft").c_str()));
  EXPECT_TRUE(file.SameFile((dir / "hard").c_str()));
  EXPECT_FALSE(file.SameFile((dir / "copy").c_str()));
  EXPECT_FALSE(file.SameFile((dir / "absent").c_str()));
  EXPECT_FALSE(file.SameFile(nullptr));
  PutFile(dir / "new", "abc");
  ASSERT_EQ(0, rename((dir / "new").c_str(), (dir / "f").c_str()));
  EXPECT_FALSE(file.SameFile((dir / "f").c_str())) << "another file took the name";
}

TEST(PCFile, RecognisesTheFileThatAnotherObjectHasOpen) {
  TempDir dir;
  PutFile(dir / "f", "abc");
  PutFile(dir / "copy", "abc");
  ASSERT_EQ(0, link((dir / "f").c_str(), (dir / "hard").c_str()));
  PCFile file;
  PCFile other;
  EXPECT_FALSE(file.SameFile(other));
  ASSERT_EQ(1, file.Create((dir / "f").c_str(), 2));
  EXPECT_FALSE(file.SameFile(other));
  EXPECT_FALSE(other.SameFile(file));
  ASSERT_EQ(1, other.Create((dir / "hard").c_str(), 2));
  EXPECT_TRUE(file.SameFile(other));
  ASSERT_EQ(1, other.Create((dir / "copy").c_str(), 2));
  EXPECT_FALSE(file.SameFile(other));
}

TEST(PCFile, ExchangesWhatIsOpen) {
  TempDir dir;
  PutFile(dir / "f", "abcdef");
  PCFile file;
  PCFile other;
  ASSERT_EQ(1, file.Create((dir / "f").c_str(), 2));
  ASSERT_EQ(0, other.Create((dir / "absent").c_str(), 2));
  ASSERT_EQ(1, file.Seek(2));
  file.Swap(other);
  EXPECT_FALSE(file.IsOpen());
  EXPECT_TRUE(file.Missing());
  EXPECT_FALSE(other.Missing());
  char letters[3] = {};
  EXPECT_EQ(0, file.Read(letters, 1));
  EXPECT_EQ(1, other.Read(letters, 2));
  EXPECT_STREQ(letters, "cd");
  ASSERT_EQ(1, other.Seek(8));
  EXPECT_EQ(1, other.Write("x", 1));
  EXPECT_EQ(1, other.Truncate(0));  // the protected length has come along
  EXPECT_EQ("abcdef", GetFile(dir / "f"));
}

}  // namespace
