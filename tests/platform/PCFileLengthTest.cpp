// How PCFile follows a file whose length changes, by its own doing and by that of others.

#include <fcntl.h>
#include <gtest/gtest.h>

#include <string>

#include "platform/PCFile.h"
#include "tests/platform/ChildProcess.h"
#include "tests/platform/TestFiles.h"
#include "tests/support/LengthLook.h"

namespace {

constexpr unsigned int kMiB = 1u << 20;

class PCFileLength : public ::testing::Test {
 protected:
  PCFileLength() : mPath(mDir / "f") {}

  // Makes the file with `bytes` and opens it.
  void Start(const std::string& bytes) {
    PutFile(mPath, bytes);
    ASSERT_EQ(1, mFile.Create(mPath.c_str(), 2));
    mFile.MapNow();
  }
  // Changes the length through a descriptor of its own, as another process does.
  void CutByOthers(long long length) {
    ASSERT_EQ(0, truncate(mPath.c_str(), static_cast<off_t>(length)));
  }
  static std::string ReadAt(PCFile& file, unsigned int offset, unsigned int size) {
    std::string bytes(size, '?');
    if (file.Seek(offset) != 1 || file.Read(bytes.data(), size) != 1) return "(no)";
    return bytes;
  }
  void RefreshLater() {
    WaitForTheNextLook();
    mFile.Refresh();
  }
  std::string ReadAt(unsigned int offset, unsigned int size) { return ReadAt(mFile, offset, size); }
  bool WriteAt(PCFile& file, unsigned int offset, const std::string& bytes) {
    return file.Seek(offset) == 1 &&
           file.Write(bytes.data(), static_cast<unsigned int>(bytes.size())) == 1;
  }

  TempDir mDir;
  std::string mPath;
  PCFile mFile;
};

TEST_F(PCFileLength, AWriteBeyondTheEndFillsTheGapWithZeros) {
  Start("abc");
  EXPECT_EQ(1, mFile.Seek(6));
  EXPECT_EQ(3u, mFile.Size()) << "seeking alone does not extend";
  EXPECT_EQ(1, mFile.Write("x", 1));
  EXPECT_EQ(GetFile(mPath), std::string("abc\0\0\0x", 7));
  EXPECT_EQ(ReadAt(0, 7), std::string("abc\0\0\0x", 7));
  EXPECT_EQ(7u, mFile.Size());
}

TEST_F(PCFileLength, ReadsFollowTheFilesOwnGrowthFromEmptyToManyPages) {
  Start("");
  EXPECT_EQ("(no)", ReadAt(0, 1));
  for (unsigned int i = 0; i < 300; ++i) {
    ASSERT_TRUE(WriteAt(mFile, i * 10007, "mark" + std::to_string(i)));
    ASSERT_EQ(ReadAt(i * 10007, 5), "mark" + std::to_string(i).substr(0, 1));
    ASSERT_EQ("(no)", ReadAt(i * 10007 + 4, 10));
  }
  for (unsigned int i = 0; i < 300; ++i) {
    ASSERT_EQ(ReadAt(i * 10007, 5), "mark" + std::to_string(i).substr(0, 1));
  }
}

TEST_F(PCFileLength, ReadsFollowWhatAnotherObjectWritesAndAppends) {
  Start("abc");
  PCFile other;
  ASSERT_EQ(1, other.Create(mPath.c_str(), 2));
  ASSERT_TRUE(WriteAt(other, 1, "B"));
  EXPECT_EQ("aBc", ReadAt(0, 3));
  ASSERT_TRUE(WriteAt(other, 3, "def"));
  EXPECT_EQ("aBcdef", ReadAt(0, 6));
  ASSERT_TRUE(WriteAt(other, 3 * kMiB, "far"));
  EXPECT_EQ("far", ReadAt(3 * kMiB, 3));
  ASSERT_TRUE(WriteAt(mFile, 5 * kMiB, "back"));
  EXPECT_EQ("back", ReadAt(other, 5 * kMiB, 4));
}

TEST_F(PCFileLength, ReadsFollowWhatAnotherProcessWrites) {
  Start("abc");
  EXPECT_TRUE(InChild([&] {
    PCFile other;
    return other.Create(mPath.c_str(), 2) == 1 && other.Write("ABCDEF", 6) == 1;
  }));
  EXPECT_EQ("ABCDEF", ReadAt(0, 6));
}

TEST_F(PCFileLength, ReadsFailCleanlyInAPartThatOthersCutOff) {
  Start(std::string(50000, 'a'));
  EXPECT_EQ("a", ReadAt(49999, 1));
  CutByOthers(100);
  RefreshLater();
  EXPECT_EQ("(no)", ReadAt(49999, 1));
  EXPECT_EQ("(no)", ReadAt(8192, 100));
  EXPECT_EQ("(no)", ReadAt(99, 2));
  EXPECT_EQ(std::string(100, 'a'), ReadAt(0, 100));
  CutByOthers(0);
  RefreshLater();
  EXPECT_EQ("(no)", ReadAt(0, 1));
  PutFile(mPath, "new content");
  EXPECT_EQ("new content", ReadAt(0, 11));
  RefreshLater();
  EXPECT_EQ("content", ReadAt(4, 7));
}

// Whoever looks, and finds nothing new, has looked for all others.
TEST_F(PCFileLength, IsFreshUntilSomebodyMakesItShorter) {
  Start(std::string(100, 'a'));
  mFile.Refresh();
  const bool isMapped = mFile.ReadMapped(0, 1) != nullptr;
  const unsigned int before = mFile.LookedAt();
  WaitForTheNextLook();
  EXPECT_EQ(isMapped, mFile.IsFresh());
  EXPECT_EQ(isMapped, before != mFile.LookedAt());
  CutByOthers(99);
  WaitForTheNextLook();
  EXPECT_FALSE(mFile.IsFresh());
  mFile.Refresh();
  EXPECT_EQ(std::string(99, 'a'), ReadAt(0, 99));
  EXPECT_EQ("(no)", ReadAt(0, 100));
  WaitForTheNextLook();
  EXPECT_EQ(isMapped, mFile.IsFresh());
}

TEST_F(PCFileLength, ReadsFailCleanlyAfterTheFileWasMadeAnew) {
  Start(std::string(50000, 'a'));
  ASSERT_EQ(1, PCFile::Make(mPath.c_str()));
  RefreshLater();
  EXPECT_EQ("(no)", ReadAt(0, 1));
  EXPECT_EQ("(no)", ReadAt(40000, 1));
}

TEST_F(PCFileLength, TruncateSetsTheLengthGiven) {
  Start(std::string(20000, 'a'));
  EXPECT_EQ(1, mFile.Truncate(3));
  EXPECT_EQ("aaa", GetFile(mPath));
  EXPECT_EQ("aaa", ReadAt(0, 3));
  EXPECT_EQ("(no)", ReadAt(2, 2));
  EXPECT_EQ("(no)", ReadAt(15000, 1));
  EXPECT_EQ(1, mFile.Truncate(5));
  EXPECT_EQ(ReadAt(0, 5), std::string("aaa\0\0", 5)) << "what was cut off does not come back";
  EXPECT_EQ(1, mFile.Truncate(3 * kMiB));
  EXPECT_EQ(mFile.Size(), 3 * kMiB);
  EXPECT_EQ(ReadAt(3 * kMiB - 1, 1), std::string(1, '\0'));
}

TEST_F(PCFileLength, TruncateLeavesThePosition) {
  Start("abcdef");
  ASSERT_EQ(1, mFile.Seek(2));
  EXPECT_EQ(1, mFile.Truncate(4));
  char bytes[2];
  EXPECT_EQ(1, mFile.Read(bytes, 2));
  EXPECT_EQ("cd", std::string(bytes, 2));
}

TEST_F(PCFileLength, TruncateZeroCutsBackToTheLengthAtOpening) {
  Start("abc");
  ASSERT_TRUE(WriteAt(mFile, 3, std::string(9000, 'x')));
  EXPECT_EQ("x", ReadAt(9000, 1));
  EXPECT_EQ(1, mFile.Truncate(0));
  EXPECT_EQ("abc", GetFile(mPath));
  EXPECT_EQ("(no)", ReadAt(9000, 1));
  EXPECT_EQ("abc", ReadAt(0, 3));
  EXPECT_EQ(1, mFile.Truncate(0));
  EXPECT_EQ("abc", GetFile(mPath));
}

TEST_F(PCFileLength, TruncateZeroEmptiesAFileThatWasEmptyAtOpening) {
  Start("");
  ASSERT_TRUE(WriteAt(mFile, 0, "half"));
  EXPECT_EQ(1, mFile.Truncate(0));
  EXPECT_EQ("", GetFile(mPath));
}

TEST_F(PCFileLength, TruncateZeroNeverExtends) {
  Start("abcdef");
  ASSERT_EQ(1, mFile.Truncate(2));
  EXPECT_EQ(1, mFile.Truncate(0));
  EXPECT_EQ("ab", GetFile(mPath));
}

TEST_F(PCFileLength, ProtectMovesWhatTruncateZeroKeeps) {
  Start("abc");
  ASSERT_TRUE(WriteAt(mFile, 3, "defghi"));
  mFile.Protect(6);
  EXPECT_EQ(1, mFile.Truncate(0));
  EXPECT_EQ("abcdef", GetFile(mPath));
  mFile.Protect(1);
  EXPECT_EQ(1, mFile.Truncate(0));
  EXPECT_EQ("a", GetFile(mPath));
}

TEST_F(PCFileLength, AFailedWriteKeepsThePositionAndIsUndoneByTruncateZero) {
  PutFile(mPath, "abc");
  EXPECT_TRUE(InChild([&] {
    LimitFileSize(100);
    PCFile file;
    if (file.Create(mPath.c_str(), 2) != 1 || file.Seek(3) != 1) return false;
    if (file.Write(std::string(200, 'x').data(), 200) != 0) return false;
    if (file.Size() != 100) return false;
    if (file.Write("d", 1) != 1 || ReadAt(file, 0, 5) != "abcdx") return false;
    return file.Truncate(1000) == 0 && file.Truncate(0) == 1;
  }));
  EXPECT_EQ("abc", GetFile(mPath));
}

TEST_F(PCFileLength, LargeFilesAreReadWithoutAMapping) {
  Start("start");
  ASSERT_TRUE(WriteAt(mFile, 65 * kMiB, "end"));
  EXPECT_EQ("end", ReadAt(65 * kMiB, 3));
  EXPECT_EQ("start", ReadAt(0, 5));
  EXPECT_EQ("(no)", ReadAt(65 * kMiB, 4));
  PCFile again;
  ASSERT_EQ(1, again.Create(mPath.c_str(), 2));
  again.Refresh();
  EXPECT_EQ("end", ReadAt(again, 65 * kMiB, 3));
  ASSERT_TRUE(WriteAt(again, 0, "START"));
  EXPECT_EQ("START", ReadAt(0, 5));
  ASSERT_EQ(1, again.Truncate(5));
  EXPECT_EQ("START", ReadAt(again, 0, 5));
  EXPECT_EQ("(no)", ReadAt(again, 4, 2));
}

TEST_F(PCFileLength, OffsetsPassTheFourGigabyteMark) {
  Start("");
  ASSERT_EQ(1, mFile.Seek(0xFFFFFFFE));
  ASSERT_EQ(1, mFile.Write("abc", 3));
  ASSERT_EQ(1, mFile.Write("de", 2));
  EXPECT_EQ("abcde", ReadAt(0xFFFFFFFE, 5));
  EXPECT_EQ("(no)", ReadAt(0xFFFFFFFF, 5));
  EXPECT_EQ(0xFFFFFFFFu, mFile.Size()) << "a longer file reports the largest size";
  EXPECT_EQ(1, mFile.Truncate(0));
  EXPECT_EQ(0u, mFile.Size());
}

TEST_F(PCFileLength, ALengthThatDoesNotFitIsProtectedWhole) {
  PutFile(mPath, "");
  CutByOthers(0x100000010);
  ASSERT_EQ(1, mFile.Create(mPath.c_str(), 2));
  EXPECT_EQ(0xFFFFFFFFu, mFile.Size());
  EXPECT_EQ(1, mFile.Truncate(0));
  EXPECT_EQ(0x100000010u, std::filesystem::file_size(mPath));
}

TEST_F(PCFileLength, OpeningFailsWithoutADescriptorAndDoesNotCallTheFileMissing) {
  PutFile(mPath, "abc");
  EXPECT_TRUE(InChild([&] {
    LimitDescriptors(0);
    PCFile file;
    const bool refused = file.Create(mPath.c_str(), 2) == 0 && !file.IsOpen() && !file.Missing();
    return refused && PCFile::Make(mPath.c_str()) == 0;
  }));
  EXPECT_EQ("abc", GetFile(mPath));
}

// With one descriptor left below the standard streams' numbers the file cannot be moved above them.
TEST_F(PCFileLength, OpeningFailsWhenOnlyAStandardStreamsDescriptorIsLeft) {
  PutFile(mPath, "abc");
  EXPECT_TRUE(InChild([&] {
    close(0);
    LimitDescriptors(3);
    PCFile file;
    if (file.Create(mPath.c_str(), 2) != 0 || file.IsOpen() || file.Missing()) return false;
    return fcntl(0, F_GETFD) == -1;
  }));
}

TEST_F(PCFileLength, ReadsDoWithoutAMappingWhenThereIsNoAddressSpace) {
  Start("abc");
  EXPECT_TRUE(InChild([&] {
    PCFile file;
    LimitAddressSpace();
    char bytes[3];
    if (file.Create(mPath.c_str(), 2) != 1 || file.Read(bytes, 3) != 1 || bytes[2] != 'c')
      return false;
    if (mFile.Seek(3 * kMiB) != 1 || mFile.Write("far", 3) != 1) return false;
    if (mFile.Seek(3 * kMiB) != 1 || mFile.Read(bytes, 3) != 1 || bytes[0] != 'f') return false;
    return mFile.Seek(0) == 1 && mFile.Read(bytes, 3) == 1 && bytes[0] == 'a';
  }));
}

// The names of what this process has mapped.
bool IsMapped(const std::string& path) {
  return GetFile("/proc/self/maps").find(path) != std::string::npos;
}

TEST_F(PCFileLength, AFileThatIsReadDirectlyIsNeverMapped) {
  PutFile(mPath, std::string(3 * kMiB, 'a'));
  mFile.ReadDirectly();
  ASSERT_EQ(1, mFile.Create(mPath.c_str(), 2));
  EXPECT_EQ("aa", ReadAt(3 * kMiB - 2, 2));
  RefreshLater();
  EXPECT_EQ("aa", ReadAt(0, 2));
  EXPECT_FALSE(IsMapped(mPath));
  ASSERT_TRUE(WriteAt(mFile, 3 * kMiB, "end"));
  EXPECT_EQ("aend", ReadAt(3 * kMiB - 1, 4));
  EXPECT_EQ("(no)", ReadAt(3 * kMiB, 4));
  EXPECT_EQ(1, mFile.Truncate(5));
  EXPECT_EQ("aaaaa", ReadAt(0, 5));
  EXPECT_EQ("(no)", ReadAt(0, 6));
  EXPECT_FALSE(IsMapped(mPath));
}

// Without a look at the length in between, as when a medium is taken away in the middle of a read.
TEST_F(PCFileLength, ADirectReadFailsInAPartThatOthersCutOffJustNow) {
  PutFile(mPath, std::string(50000, 'a'));
  mFile.ReadDirectly();
  ASSERT_EQ(1, mFile.Create(mPath.c_str(), 2));
  EXPECT_EQ("a", ReadAt(49999, 1));
  EXPECT_TRUE(InChild([&] {
    CutByOthers(100);
    if (ReadAt(49999, 1) != "(no)" || ReadAt(8192, 100) != "(no)") return false;
    if (ReadAt(99, 2) != "(no)" || ReadAt(0, 100) != std::string(100, 'a')) return false;
    CutByOthers(0);
    return ReadAt(0, 1) == "(no)";
  }));
}

// It is the next opening that heeds it, and every one after that.
TEST_F(PCFileLength, ReadingDirectlyBeginsWithTheNextOpening) {
  Start("abc");
  mFile.ReadDirectly();
  EXPECT_EQ("abc", ReadAt(0, 3));
  for (int i = 0; i < 2; ++i) {
    ASSERT_EQ(1, mFile.Create(mPath.c_str(), 2));
    EXPECT_EQ("abc", ReadAt(0, 3));
    EXPECT_FALSE(IsMapped(mPath));
  }
}

}  // namespace
