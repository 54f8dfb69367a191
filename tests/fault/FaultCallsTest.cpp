#include "platform/PCFile.h"
#include "tests/platform/TestFiles.h"
#include "tests/support/FaultCalls.h"

namespace {

using faults::Mode;

class FaultCalls : public ::testing::Test {
 protected:
  void SetUp() override {
    PutFile(path, "0123456789");
    ASSERT_TRUE(file.Create(path.c_str(), PCFile::kReadWrite));
  }
  void TearDown() override { faults::Disarm(); }

  int Write(unsigned int offset, const char* text) {
    return file.Seek(offset) ? file.Write(text, static_cast<unsigned int>(std::string(text).size()))
                             : 0;
  }

  TempDir dir;
  std::string path = dir / "file";
  PCFile file;
};

TEST_F(FaultCalls, CountWhatChangesAFileAndNothingElse) {
  faults::Arm(Mode::kNone, 0);
  char byte = 0;
  EXPECT_TRUE(file.Read(&byte, 1));
  EXPECT_EQ(10u, file.Size());
  EXPECT_EQ(0u, faults::Count());
  EXPECT_TRUE(Write(0, "ab"));
  EXPECT_EQ(1u, faults::Count());
  EXPECT_TRUE(file.Truncate(5));
  EXPECT_EQ(2u, faults::Count());
  EXPECT_TRUE(PCFile::Make((dir / "made").c_str()));
  EXPECT_EQ(3u, faults::Count());
  EXPECT_EQ(0u, faults::Struck());
  EXPECT_EQ("ab234", GetFile(path));
}

TEST_F(FaultCalls, FailOnce) {
  faults::Arm(Mode::kFailOnce, 1);
  EXPECT_TRUE(Write(0, "a"));
  EXPECT_EQ(0u, faults::Struck());
  EXPECT_FALSE(Write(1, "b"));
  EXPECT_EQ(1u, faults::Struck());
  EXPECT_TRUE(Write(2, "c"));
  EXPECT_EQ(1u, faults::Struck());
  EXPECT_EQ(3u, faults::Count());
  EXPECT_EQ("a1c3456789", GetFile(path));
}

TEST_F(FaultCalls, FailFromThereOn) {
  faults::Arm(Mode::kFailFrom, 1);
  EXPECT_TRUE(Write(0, "a"));
  EXPECT_FALSE(Write(1, "b"));
  EXPECT_FALSE(file.Truncate(3));
  EXPECT_FALSE(PCFile::Make((dir / "made").c_str()));
  EXPECT_EQ("(cannot be read)", GetFile(dir / "made"));
  EXPECT_EQ(3u, faults::Struck());
  EXPECT_EQ("a123456789", GetFile(path));
  char byte = 0;
  EXPECT_TRUE(file.Seek(9) && file.Read(&byte, 1));
  EXPECT_EQ('9', byte);
}

TEST_F(FaultCalls, FailNoMoreWhenDisarmed) {
  faults::Arm(Mode::kFailFrom, 0);
  EXPECT_FALSE(Write(0, "a"));
  faults::Disarm();
  EXPECT_TRUE(Write(0, "b"));
  EXPECT_EQ("b123456789", GetFile(path));
}

TEST_F(FaultCalls, AShortWriteIsGoneOnWith) {
  faults::Arm(Mode::kShortOnce, 0);
  EXPECT_TRUE(Write(2, "abcde"));
  EXPECT_EQ(2u, faults::Count());  // two bytes, then three
  EXPECT_EQ(1u, faults::Struck());
  EXPECT_EQ("01abcde789", GetFile(path));
  faults::Arm(Mode::kShortOnce, 0);
  EXPECT_TRUE(file.Truncate(4));  // cannot be shortened
  EXPECT_EQ(0u, faults::Struck());
  EXPECT_EQ("01ab", GetFile(path));
}

TEST_F(FaultCalls, ATornWriteStaysTorn) {
  faults::Arm(Mode::kTearFrom, 1);
  EXPECT_TRUE(Write(0, "ABC"));
  EXPECT_FALSE(Write(4, "abcd"));
  EXPECT_FALSE(Write(0, "x"));
  EXPECT_EQ("ABC3ab6789", GetFile(path));
}

TEST_F(FaultCalls, AWriteIsTornAtAnyByte) {
  faults::ArmTear(1, 3);
  EXPECT_TRUE(Write(0, "ABC"));
  EXPECT_EQ(0u, faults::TornSize());
  EXPECT_FALSE(Write(4, "abcd"));
  EXPECT_EQ(4u, faults::TornSize());
  EXPECT_FALSE(Write(0, "x"));
  EXPECT_EQ("ABC3abc789", GetFile(path));
  faults::ArmTear(0, 0);
  EXPECT_FALSE(Write(4, "xyz"));
  EXPECT_EQ(3u, faults::TornSize());
  EXPECT_EQ("ABC3abc789", GetFile(path));
  faults::ArmTear(0, 3);
  EXPECT_TRUE(Write(0, "xyz")) << "nothing is left to fail";
  EXPECT_FALSE(Write(0, "a"));
  EXPECT_EQ("xyz3abc789", GetFile(path));
}

TEST_F(FaultCalls, WhatIsLostShowsUntilThePowerReturns) {
  const std::string made = dir / "made";
  faults::Arm(Mode::kLoseFrom, 1);
  EXPECT_TRUE(Write(0, "a"));
  EXPECT_TRUE(Write(1, "b"));
  EXPECT_TRUE(Write(12, "c"));
  EXPECT_TRUE(PCFile::Make(made.c_str()));
  EXPECT_EQ(3u, faults::Struck());
  char bytes[2] = {};
  EXPECT_TRUE(file.Seek(0) && file.Read(bytes, 2));
  EXPECT_EQ("ab", std::string(bytes, 2));
  EXPECT_EQ("", GetFile(made));
  file.Destroy();
  faults::PowerReturns();
  EXPECT_EQ("a123456789", GetFile(path));
  EXPECT_EQ("(cannot be read)", GetFile(made));
}

TEST_F(FaultCalls, AnEmptiedFileComesBackWithThePower) {
  faults::Arm(Mode::kLoseFrom, 0);
  file.Destroy();
  EXPECT_TRUE(PCFile::Make(path.c_str()));
  EXPECT_EQ("", GetFile(path));
  faults::PowerReturns();
  EXPECT_EQ("0123456789", GetFile(path));
}

}  // namespace
