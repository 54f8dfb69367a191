// A file of the library's own beside another file, which several objects have open.
#include <sys/stat.h>

#include <thread>

#include "platform/PCSideFile.h"
#include "tests/platform/ChildProcess.h"
#include "tests/platform/OpenDescriptors.h"
#include "tests/platform/TestFiles.h"

namespace {

using Holding = PCSideFile::Holding;

class PCSideFileTest : public ::testing::Test {
 protected:
  PCSideFileTest() : mPath(mDir / "side"), mModel(mDir / "model") { PutFile(mModel, "model"); }

  bool Make() { return mFile.Create(mPath.c_str(), mModel.c_str()) == 1; }

  TempDir mDir;
  const std::string mPath;
  const std::string mModel;
  PCSideFile mFile;
};

TEST_F(PCSideFileTest, GetsTheRightsOfItsModelWhenItIsMade) {
  ASSERT_EQ(0, chmod(mModel.c_str(), 0640));
  ASSERT_TRUE(Make());
  struct stat info = {};
  ASSERT_EQ(0, stat(mPath.c_str(), &info));
  EXPECT_EQ(0640u, info.st_mode & 07777);
  mFile.Destroy();
  ASSERT_EQ(0, chmod(mPath.c_str(), 0600));
  ASSERT_TRUE(Make());
  ASSERT_EQ(0, stat(mPath.c_str(), &info));
  EXPECT_EQ(0600u, info.st_mode & 07777);
}

TEST_F(PCSideFileTest, IsNotMadeWhereNoRegularFileCanBe) {
  const long open = OpenDescriptors();
  EXPECT_EQ(0, mFile.Create(nullptr, mModel.c_str()));
  EXPECT_EQ(0, mFile.Create(mPath.c_str(), nullptr));
  EXPECT_EQ(0, mFile.Create((mDir / "absent/side").c_str(), mModel.c_str()));
  EXPECT_EQ(0, mFile.Create((mDir / ".").c_str(), mModel.c_str()));
  ASSERT_EQ(0, mkfifo(mPath.c_str(), 0600));
  EXPECT_FALSE(Make());
  EXPECT_EQ(0, mFile.Look(mPath.c_str()));
  EXPECT_FALSE(mFile.IsOpen());
  EXPECT_EQ(open, OpenDescriptors());
}

TEST_F(PCSideFileTest, AFileThatIsOnlyReadTakesNothing) {
  PutFile(mPath, "side");
  ASSERT_EQ(1, mFile.Look(mPath.c_str()));
  mFile.LeaveDoor();
  char bytes[4] = {};
  EXPECT_EQ(1, mFile.Read(0, bytes, 4));
  EXPECT_EQ("side", std::string(bytes, 4));
  EXPECT_EQ(0, mFile.Read(1, bytes, 4));
  EXPECT_EQ(0, mFile.Write(0, "more", 4));
  EXPECT_EQ(0, mFile.Resize(2));
  EXPECT_EQ(0, mFile.Resize(8192));
  EXPECT_EQ("side", GetFile(mPath));
  ASSERT_EQ(0, symlink("side", (mDir / "link").c_str()));
  EXPECT_EQ(0, mFile.Look((mDir / "link").c_str()));
  EXPECT_EQ(0, mFile.Look((mDir / "absent").c_str()));
  EXPECT_FALSE(mFile.IsOpen());
}

TEST_F(PCSideFileTest, WithoutADescriptorNobodyKnowsWhatIsThere) {
  PutFile(mPath, "side");
  EXPECT_TRUE(InChild([&] {
    LimitDescriptors(0);
    PCSideFile file;
    return file.Look(mPath.c_str()) == -1 && !file.IsOpen() &&
           file.Create(mPath.c_str(), mModel.c_str()) == 0 &&
           file.OpenToHold(mPath.c_str(), Holding::kAlone) == 0;
  }));
}

TEST_F(PCSideFileTest, PlacesAreHeldByOneOrShared) {
  ASSERT_TRUE(Make());
  PCSideFile other;
  ASSERT_EQ(1, other.OpenToHold(mPath.c_str(), Holding::kAlone));
  constexpr unsigned int kPlace = PCSideFile::kFirstPlace;
  EXPECT_EQ(1, mFile.Hold(kPlace, Holding::kShared));
  EXPECT_EQ(1, other.Hold(kPlace, Holding::kShared));
  EXPECT_EQ(0, other.Hold(kPlace, Holding::kAlone));
  EXPECT_FALSE(other.MayHold(kPlace, Holding::kAlone));
  EXPECT_TRUE(other.MayHold(kPlace, Holding::kShared));
  EXPECT_TRUE(mFile.IsHeld(kPlace));
  other.Destroy();
  EXPECT_FALSE(mFile.IsHeld(kPlace));
  EXPECT_EQ(1, mFile.Hold(kPlace, Holding::kAlone));
  EXPECT_EQ(1, other.OpenToHold(mPath.c_str(), Holding::kShared));
  EXPECT_EQ(0, other.Hold(kPlace, Holding::kShared));
  EXPECT_EQ(0, other.OpenToHold((mDir / "absent").c_str(), Holding::kShared));
}

TEST_F(PCSideFileTest, WhileClosedItHoldsAndTellsNothing) {
  unsigned long long device = 1;
  unsigned long long number = 2;
  mFile.Identity(&device, &number);
  EXPECT_EQ(0u, device);
  EXPECT_EQ(0u, number);
  EXPECT_EQ(0, mFile.Hold(PCSideFile::kFirstPlace, Holding::kShared));
  EXPECT_FALSE(mFile.IsHeld(PCSideFile::kFirstPlace));
  EXPECT_TRUE(mFile.MayHold(PCSideFile::kFirstPlace, Holding::kAlone));
  EXPECT_EQ(0, mFile.EnterDoor());
  unsigned int size = 7;
  EXPECT_EQ(0, mFile.GetSize(&size));
  EXPECT_EQ(7u, size);
  EXPECT_EQ(0u, mFile.Size());
  EXPECT_EQ(0, mFile.Read(0, &size, 0));
  EXPECT_EQ(0, mFile.Write(0, &size, 0));
  EXPECT_EQ(0, mFile.Sync());
  EXPECT_EQ(0, mFile.Resize(0));
  EXPECT_EQ(nullptr, mFile.Map(4096));
  EXPECT_EQ(nullptr, mFile.MapStart(4096));
  mFile.Remove();
  bool isYoung = false;
  EXPECT_EQ(0u, PCSideFile::StateOf(nullptr, &isYoung));
  char real[10];
  EXPECT_EQ(0, PCSideFile::RealPath(nullptr, real, sizeof real));
}

TEST_F(PCSideFileTest, IdentityIsThatOfTheFileUnderAnyName) {
  ASSERT_TRUE(Make());
  ASSERT_EQ(0, link(mPath.c_str(), (mDir / "other").c_str()));
  PCSideFile other;
  ASSERT_EQ(1, other.OpenToHold((mDir / "other").c_str(), Holding::kShared));
  unsigned long long own[2] = {};
  unsigned long long others[2] = {};
  mFile.Identity(&own[0], &own[1]);
  other.Identity(&others[0], &others[1]);
  EXPECT_EQ(own[0], others[0]);
  EXPECT_EQ(own[1], others[1]);
  EXPECT_NE(0u, own[1]);
}

TEST_F(PCSideFileTest, TheDoorIsWaitedFor) {
  ASSERT_TRUE(Make());
  std::thread leaves([this] {
    PCSideFile::Pause(20000);
    mFile.LeaveDoor();
  });
  PCSideFile other;
  EXPECT_EQ(1, other.Create(mPath.c_str(), mModel.c_str()));
  leaves.join();
}

TEST_F(PCSideFileTest, AFileThatAnotherHasRemovedIsMadeAnew) {
  ASSERT_TRUE(Make());
  EXPECT_EQ(1, mFile.Write(0, "old", 3));
  std::thread removes([this] {
    PCSideFile::Pause(20000);
    mFile.Remove();
  });
  PCSideFile other;
  EXPECT_EQ(1, other.Create(mPath.c_str(), mModel.c_str()));
  removes.join();
  EXPECT_EQ(0u, other.Size());
  EXPECT_EQ("", GetFile(mPath));
}

TEST_F(PCSideFileTest, OnlyItsOwnFileIsRemoved) {
  ASSERT_TRUE(Make());
  std::filesystem::remove(mPath);
  PutFile(mPath, "another's");
  mFile.Remove();
  EXPECT_FALSE(mFile.IsOpen());
  EXPECT_EQ("another's", GetFile(mPath));
}

TEST_F(PCSideFileTest, LengthsAndMappingsFollowTheFile) {
  ASSERT_TRUE(Make());
  ASSERT_EQ(1, mFile.Resize(8192));
  EXPECT_EQ(8192u, mFile.Size());
  unsigned char* const all = mFile.Map(8192);
  unsigned char* const start = mFile.MapStart(4096);
  if (all == nullptr || start == nullptr) GTEST_SKIP() << "there are no such mappings here";
  all[4095] = 'x';
  EXPECT_EQ('x', start[4095]);
  EXPECT_EQ('x', GetFile(mPath)[4095]);
  ASSERT_EQ(1, mFile.Resize(4096));
  EXPECT_EQ(4096u, GetFile(mPath).size());
  EXPECT_EQ('x', start[4095]);
  EXPECT_EQ(1, mFile.Resize(0));
  EXPECT_EQ(0u, mFile.Size());
}

TEST_F(PCSideFileTest, ALengthThatCannotBeToldIsTheLargest) {
  ASSERT_TRUE(Make());
  std::filesystem::resize_file(mPath, 0x100000010);
  EXPECT_EQ(0xFFFFFFFFu, mFile.Size());
}

TEST_F(PCSideFileTest, ADiskThatIsFullIsTold) {
  ASSERT_TRUE(Make());
  EXPECT_TRUE(InChild([&] {
    // What is open here is closed in a child.
    PCSideFile file;
    if (file.OpenToHold(mPath.c_str(), Holding::kAlone) != 1) return false;
    LimitFileSize(1000);
    const std::string bytes(2000, 'b');
    return file.Resize(2000) == 0 && file.Write(0, bytes.data(), 2000) == 0;
  }));
}

TEST_F(PCSideFileTest, AChildHasItClosed) {
  ASSERT_TRUE(Make());
  EXPECT_TRUE(InChild([&] { return !mFile.IsOpen() && mFile.Size() == 0 && !mFile.Sync(); }));
  EXPECT_TRUE(mFile.IsOpen());
  EXPECT_TRUE(InChild([&] {
    PCSideFile other;
    return other.OpenToHold(mPath.c_str(), Holding::kAlone) == 1 && other.IsHeld(PCSideFile::kDoor);
  })) << "the door is the parent's all the same";
}

}  // namespace
