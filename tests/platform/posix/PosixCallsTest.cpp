// What the calls tell about files that are there, that are not, and that somebody else has.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/vfs.h>

#include <cerrno>
#include <climits>

#include "platform/posix/PosixCalls.h"
#include "tests/platform/ChildProcess.h"
#include "tests/platform/TestFiles.h"

namespace {

class PosixCallsTest : public ::testing::Test {
 protected:
  PosixCallsTest() : mPath(mDir / "f") {}
  ~PosixCallsTest() override {
    if (mFd >= 0) posix::Close(mFd);
  }

  void Start(const std::string& bytes = "text") {
    PutFile(mPath, bytes);
    mFd = posix::Open(mPath.c_str());
    ASSERT_GT(mFd, 2);
  }
  static mode_t ModeOf(const std::string& path) {
    struct stat info = {};
    EXPECT_EQ(0, stat(path.c_str(), &info));
    return info.st_mode & 07777;
  }

  TempDir mDir;
  const std::string mPath;
  int mFd = -1;
};

TEST_F(PosixCallsTest, AnOpeningThatFailsTellsWhy) {
  EXPECT_EQ(-ENOENT, posix::Open(mPath.c_str()));
  EXPECT_EQ(-ENOENT, posix::OpenToRead(mPath.c_str(), true));
  PutFile(mPath, "text");
  EXPECT_EQ(-EEXIST, posix::MakeNew(mPath.c_str()));
  ASSERT_EQ(0, symlink("f", (mDir / "link").c_str()));
  EXPECT_EQ(-ELOOP, posix::OpenToRead((mDir / "link").c_str(), false));
  EXPECT_EQ(-ELOOP, posix::OpenOrMake((mDir / "link").c_str()));
  EXPECT_TRUE(InChild([&] {
    LimitDescriptors(0);
    return posix::Open(mPath.c_str()) == -EMFILE;
  }));
  // Not above the standard streams' numbers either.
  EXPECT_TRUE(InChild([&] {
    close(0);
    LimitDescriptors(3);
    return posix::Open(mPath.c_str()) == -EINVAL && fcntl(0, F_GETFD) == -1;
  }));
}

TEST_F(PosixCallsTest, AClosedDescriptorIsNoFile) {
  Start();
  EXPECT_FALSE(posix::IsRegular(-1));
  EXPECT_EQ(-1, posix::Length(-1));
  EXPECT_FALSE(posix::SameFile(-1, mPath.c_str()));
  EXPECT_FALSE(posix::SameFile(mFd, (mDir / "absent").c_str()));
  EXPECT_FALSE(posix::SameFile(-1, mFd));
  EXPECT_FALSE(posix::SameFile(mFd, -1));
  EXPECT_TRUE(posix::SameFile(mFd, mFd));
  EXPECT_FALSE(posix::WritesInPlace(-1));
  EXPECT_FALSE(posix::IsOnNetwork(-1));
  EXPECT_FALSE(posix::Allocate(-1, 1));
  EXPECT_FALSE(posix::Truncate(-1, 1));
  EXPECT_FALSE(posix::SyncData(-1));
  EXPECT_FALSE(posix::Close(-1));
  EXPECT_EQ(EBADF, posix::TryLock(-1));
  EXPECT_EQ(EBADF, posix::Hold(-1, 0, posix::Holding::kShared));
  EXPECT_TRUE(posix::IsHeld(-1, 0));
  unsigned long long device = 1;
  unsigned long long number = 2;
  posix::Identify(-1, &device, &number);
  EXPECT_EQ(1u, device);
  EXPECT_EQ(2u, number);
}

TEST_F(PosixCallsTest, AFolderIsNoRegularFile) {
  const int folder = posix::OpenToRead((mDir / ".").c_str(), true);
  ASSERT_GT(folder, 2);
  EXPECT_FALSE(posix::IsRegular(folder));
  EXPECT_TRUE(posix::Close(folder));
}

TEST_F(PosixCallsTest, AByteIsHeldByOneOrSharedByMany) {
  Start();
  const int other = posix::OpenToRead(mPath.c_str(), true);
  ASSERT_EQ(0, posix::Hold(mFd, 7, posix::Holding::kShared));
  EXPECT_EQ(0, posix::Hold(other, 7, posix::Holding::kShared));
  EXPECT_TRUE(posix::IsHeld(mFd, 7));
  EXPECT_EQ(EAGAIN, posix::Hold(mFd, 7, posix::Holding::kAlone));
  EXPECT_EQ(EBADF, posix::Hold(other, 7, posix::Holding::kAlone)) << "it is open for reading alone";
  EXPECT_EQ(0, posix::Hold(other, 7, posix::Holding::kNone));
  EXPECT_FALSE(posix::IsHeld(mFd, 7));
  EXPECT_EQ(0, posix::Hold(mFd, 7, posix::Holding::kAlone));
  EXPECT_TRUE(posix::IsHeld(other, 7));
  EXPECT_FALSE(posix::IsHeld(other, 8));
  posix::Close(other);
}

// As many bytes as are asked for, in pages and a rest, with what was there.
void ExpectAllocated(int fd, const std::string& path) {
  for (const unsigned int length : {100u, 4096u, 70000u, 70000u, 10u, 200001u}) {
    const size_t before = GetFile(path).size();
    ASSERT_TRUE(posix::Allocate(fd, length));
    const std::string bytes = GetFile(path);
    EXPECT_EQ(before > length ? before : length, bytes.size());
    EXPECT_EQ("text", bytes.substr(0, 4));
    EXPECT_EQ(std::string::npos, bytes.find_first_not_of('\0', 4));
  }
}

TEST_F(PosixCallsTest, ALengthIsAllocatedWithZeros) {
  Start();
  ExpectAllocated(mFd, mPath);
}

// A memory file has its blocks where it has zeros; other file systems may be asked for them.
TEST_F(PosixCallsTest, EveryFileSystemAllocates) {
  const std::string path = "/dev/shm/yax-allocated-" + std::to_string(getpid());
  const int fd = posix::OpenOrMake(path.c_str());
  if (fd < 0) GTEST_SKIP() << "there is no memory file system";
  EXPECT_EQ(4, posix::PositionedWrite(fd, "text", 4, 0));
  struct statfs system = {};
  ASSERT_EQ(0, fstatfs(fd, &system));
  EXPECT_EQ(system.f_type == 0x01021994, posix::WritesInPlace(fd));
  ExpectAllocated(fd, path);
  posix::Close(fd);
  EXPECT_TRUE(posix::Remove(path.c_str()));
}

TEST_F(PosixCallsTest, ADiskThatIsFullHasNoBlocks) {
  Start();
  EXPECT_TRUE(InChild([&] {
    LimitFileSize(10000);
    return !posix::Allocate(mFd, 20000) && posix::Allocate(mFd, 9000) &&
           posix::Length(mFd) >= 9000 && posix::Length(mFd) <= 10000;
  }));
  EXPECT_EQ("text", GetFile(mPath).substr(0, 4));
}

TEST_F(PosixCallsTest, AStateIsThatOfTheFileAsItIs) {
  bool isYoung = false;
  EXPECT_EQ(0u, posix::StateOf(mPath.c_str(), &isYoung));
  EXPECT_FALSE(isYoung);
  Start();
  const unsigned long long before = posix::StateOf(mPath.c_str(), &isYoung);
  EXPECT_TRUE(isYoung);
  EXPECT_NE(0u, before);
  ASSERT_TRUE(posix::Truncate(mFd, 2));
  EXPECT_NE(before, posix::StateOf(mPath.c_str(), &isYoung));
  posix::Pause(70 * 1000);
  isYoung = false;
  EXPECT_NE(0u, posix::StateOf(mPath.c_str(), &isYoung));
  EXPECT_FALSE(isYoung);
}

TEST_F(PosixCallsTest, RightsToReadAndWriteAreTaken) {
  Start();
  ASSERT_EQ(0, chmod(mPath.c_str(), 0600));
  PutFile(mDir / "model", "");
  ASSERT_EQ(0, chmod((mDir / "model").c_str(), 0754));
  posix::TakeRightsOf(mFd, (mDir / "absent").c_str());
  EXPECT_EQ(0600u, ModeOf(mPath));
  posix::TakeRightsOf(mFd, (mDir / "model").c_str());
  EXPECT_EQ(0644u, ModeOf(mPath));
  EXPECT_EQ(ENOENT, posix::CopyRights(mFd, (mDir / "absent").c_str()));
  EXPECT_EQ(0, posix::CopyRights(mFd, (mDir / "model").c_str()));
  EXPECT_EQ(0754u, ModeOf(mPath));
}

TEST_F(PosixCallsTest, RightsOfSomebodyElsesFileAreNotTaken) {
  if (geteuid() != 0) GTEST_SKIP() << "only the superuser can make files of others";
  Start();
  PutFile(mDir / "model", "");
  ASSERT_EQ(0, chmod((mDir / "model").c_str(), 0666));
  ASSERT_EQ(0, chmod((mDir / ".").c_str(), 0777));
  EXPECT_TRUE(InChild([&] {
    const std::string own = mDir / "own";
    if (!DropRights()) return false;
    const int fd = posix::MakeNew(own.c_str(), 0600);
    posix::TakeRightsOf(fd, (mDir / "model").c_str());
    return fd > 2 && posix::CopyRights(fd, (mDir / "model").c_str()) == EPERM;
  }));
  EXPECT_EQ(0600u, ModeOf(mDir / "own"));
}

TEST_F(PosixCallsTest, NamesAreGivenAsAsked) {
  Start();
  const std::string other = mDir / "other";
  PutFile(other, "other");
  const auto move = [&](posix::Moving how) {
    return posix::Move(mPath.c_str(), other.c_str(), how);
  };
  EXPECT_EQ(EEXIST, posix::Link(mPath.c_str(), other.c_str()));
  EXPECT_EQ(0, posix::Link(mPath.c_str(), (mDir / "link").c_str()));
  EXPECT_EQ(EEXIST, move(posix::Moving::kNew));
  EXPECT_EQ(0, move(posix::Moving::kExchange));
  EXPECT_EQ("other", GetFile(mPath));
  EXPECT_EQ(0, move(posix::Moving::kReplace));
  EXPECT_EQ("other", GetFile(other));
  EXPECT_EQ("link other ", NamesIn(mDir / "."));
  EXPECT_EQ(ENOENT, move(posix::Moving::kReplace));
  EXPECT_EQ(ENOENT, move(posix::Moving::kExchange));
  EXPECT_EQ(ENOENT, move(posix::Moving::kNew));
  EXPECT_FALSE(posix::Remove(mPath.c_str()));
}

TEST_F(PosixCallsTest, TheFolderOfAPathIsSynced) {
  EXPECT_TRUE(posix::SyncFolderOf(mPath.c_str()));
  EXPECT_TRUE(posix::SyncFolderOf("f"));
  EXPECT_FALSE(posix::SyncFolderOf((mDir / "absent/f").c_str()));
  EXPECT_FALSE(posix::SyncFolderOf((std::string(PATH_MAX, 'f') + "/f").c_str()));
}

TEST_F(PosixCallsTest, ARealPathNeedsItsRoom) {
  Start();
  ASSERT_EQ(0, symlink("f", (mDir / "link").c_str()));
  char real[PATH_MAX];
  ASSERT_TRUE(posix::RealPath((mDir / "link").c_str(), real, sizeof real));
  const std::string found = real;
  EXPECT_EQ(std::filesystem::canonical(mPath).string(), found);
  const unsigned int size = static_cast<unsigned int>(found.size()) + 1;
  EXPECT_TRUE(posix::RealPath(mPath.c_str(), real, size));
  EXPECT_FALSE(posix::RealPath(mPath.c_str(), real, size - 1));
  EXPECT_FALSE(posix::RealPath((mDir / "absent").c_str(), real, sizeof real));
}

TEST_F(PosixCallsTest, ALinkIsSeenFromWhereItIs) {
  Start();
  const std::string link = mDir / "link";
  char target[PATH_MAX];
  const auto size = [](const std::string& text) {
    return static_cast<unsigned int>(text.size() + 1);
  };
  EXPECT_EQ(EINVAL, posix::LinkTarget(mPath.c_str(), target, sizeof target));
  EXPECT_EQ(ENOENT, posix::LinkTarget(link.c_str(), target, sizeof target));
  EXPECT_EQ(ENOENT, posix::LinkTarget("yax-no-such-file", target, sizeof target));
  ASSERT_EQ(0, symlink("file", link.c_str()));
  const std::string relative = mDir / "file";
  ASSERT_EQ(0, posix::LinkTarget(link.c_str(), target, size(relative)));
  EXPECT_EQ(relative, target);
  EXPECT_EQ(ENAMETOOLONG, posix::LinkTarget(link.c_str(), target, size(relative) - 1));
  EXPECT_EQ(ENAMETOOLONG, posix::LinkTarget(link.c_str(), target, 2));
  ASSERT_TRUE(posix::Remove(link.c_str()));
  ASSERT_EQ(0, symlink("/absolute", link.c_str()));
  ASSERT_EQ(0, posix::LinkTarget(link.c_str(), target, sizeof target));
  EXPECT_STREQ("/absolute", target);
}

TEST_F(PosixCallsTest, TheBootIdIsTheSameUntilTheNextStart) {
  unsigned char first[16] = {};
  unsigned char second[16] = {};
  if (!posix::BootId(first)) GTEST_SKIP() << "the system tells none";
  EXPECT_TRUE(posix::BootId(second));
  EXPECT_EQ(std::string(first, first + 16), std::string(second, second + 16));
  EXPECT_NE(std::string(16, '\0'), std::string(first, first + 16));
}

}  // namespace
