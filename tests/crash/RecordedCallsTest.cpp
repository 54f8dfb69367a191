#include <gtest/gtest.h>

#include <cerrno>

#include "platform/posix/PosixCalls.h"
#include "tests/crash/MemoryFolder.h"
#include "tests/crash/RecordedCalls.h"

namespace crash {
namespace {

std::string Text(const std::vector<Call>& calls) {
  constexpr const char* kKinds[] = {"make",        "write", "store",  "length",   "sync",
                                    "sync folder", "link",  "rename", "exchange", "remove"};
  std::string text;
  for (const Call& call : calls) {
    text += std::to_string(call.step) + " " + kKinds[call.kind] + " " + std::to_string(call.file) +
            " " + std::to_string(call.offset) + " " + call.bytes + call.name + " " + call.to + "\n";
  }
  return text;
}

class RecordedCallsTest : public ::testing::Test {
 protected:
  // Past the recorded calls, as through a mapping.
  void Store(long offset, char byte) const {
    std::FILE* file = std::fopen(path.c_str(), "r+b");
    ASSERT_NE(nullptr, file);
    EXPECT_EQ(0, std::fseek(file, offset, SEEK_SET));
    EXPECT_EQ(byte, std::fputc(byte, file));
    EXPECT_EQ(0, std::fclose(file));
  }

  const MemoryFolder folder;
  const std::string path = folder.path() + "/a";
  const std::string other = folder.path() + "/b";
};

TEST_F(RecordedCallsTest, ChangesAreRecordedInTheirOrder) {
  StartRecording(FolderImage());
  const int fd = posix::MakeNew(path.c_str());
  EXPECT_EQ(3, posix::PositionedWrite(fd, "abc", 3, 2));
  EXPECT_TRUE(posix::SyncData(fd));
  EndStep();
  EXPECT_TRUE(posix::Truncate(fd, 4));
  EXPECT_TRUE(posix::Allocate(fd, 6));
  EXPECT_TRUE(posix::Close(fd));
  EXPECT_EQ(0, posix::Link(path.c_str(), other.c_str()));
  EXPECT_TRUE(posix::Remove(path.c_str()));
  EXPECT_EQ(0, posix::Move(other.c_str(), path.c_str(), posix::Moving::kReplace));
  EXPECT_TRUE(posix::SyncFolderOf(path.c_str()));
  EXPECT_EQ(
      "0 make 0 0 a \n0 write 0 2 abc \n0 sync 0 0  \n1 length 0 4  \n1 length 0 6  \n"
      "1 link 0 0 a b\n1 remove 0 0 a a\n1 rename 0 0 b a\n1 sync folder 0 0  \n",
      Text(StopRecording()));
}

TEST_F(RecordedCallsTest, TheRecordMakesTheFolderAnew) {
  StartRecording(FolderImage());
  const int fd = posix::MakeNew(path.c_str());
  posix::PositionedWrite(fd, "abc", 3, 2);
  posix::Truncate(fd, 4);
  posix::Close(fd);
  posix::Link(path.c_str(), other.c_str());
  FolderImage image;
  for (const Call& call : StopRecording()) image.Apply(call);
  const MemoryFolder copy;
  image.PutInto(copy.path());
  const FolderImage found = FolderImage::Of(copy.path());
  EXPECT_EQ(2u, found.names.size());
  EXPECT_EQ(std::string("\0\0ab", 4), found.BytesAt("a"));
  EXPECT_EQ(found.BytesAt("a"), found.BytesAt("b"));
}

TEST_F(RecordedCallsTest, StoresThroughAMappingComeBeforeTheNextChange) {
  StartRecording(FolderImage());
  const int fd = posix::OpenOrMake(path.c_str());
  ASSERT_TRUE(posix::Allocate(fd, 8));
  Store(2, 'x');
  Store(4, 'y');
  EXPECT_EQ(1, posix::PositionedWrite(fd, "z", 1, 7));
  Store(0, 'w');
  EndStep();
  posix::Close(fd);
  EXPECT_EQ(std::string("0 make 0 0 a \n0 length 0 8  \n0 store 0 2 x") + '\0' +
                "y \n0 write 0 7 z \n0 store 0 0 w \n",
            Text(StopRecording()));
}

TEST_F(RecordedCallsTest, MovesGiveAnotherNameOrExchangeTwo) {
  StartRecording(FolderImage());
  posix::Close(posix::MakeNew(path.c_str()));
  posix::Close(posix::MakeNew(other.c_str()));
  EXPECT_EQ(EEXIST, posix::Move(path.c_str(), other.c_str(), posix::Moving::kNew));
  EXPECT_EQ(0, posix::Move(path.c_str(), other.c_str(), posix::Moving::kExchange));
  EXPECT_EQ(0, posix::Move(path.c_str(), other.c_str(), posix::Moving::kReplace));
  FolderImage image;
  const std::vector<Call> calls = StopRecording();
  for (const Call& call : calls) image.Apply(call);
  EXPECT_EQ("0 make 0 0 a \n0 make 1 0 b \n0 exchange 0 0 a b\n0 rename 1 0 a b\n", Text(calls));
  EXPECT_EQ((std::map<std::string, int>{{"b", 1}}), image.names);
}

TEST_F(RecordedCallsTest, AFileThatWasThereKeepsItsNumber) {
  FolderImage image;
  image.names["b"] = 5;
  image.files[5] = "abc";
  image.PutInto(folder.path());
  StartRecording(image);
  posix::Close(posix::MakeNew(path.c_str()));
  posix::Close(posix::OpenEmpty(other.c_str()));
  EXPECT_EQ("0 make 6 0 a \n0 length 5 0  \n", Text(StopRecording()));
}

}  // namespace
}  // namespace crash
