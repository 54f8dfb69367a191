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
  EXPECT_EQ(file.Size(), 10u);
  EXPECT_EQ(faults::Count(), 0u);
  EXPECT_TRUE(Write(0, "ab"));
  EXPECT_EQ(faults::Count(), 1u);
  EXPECT_TRUE(file.Truncate(5));
  EXPECT_EQ(faults::Count(), 2u);
  EXPECT_TRUE(PCFile::Make((dir / "made").c_str()));
  EXPECT_EQ(faults::Count(), 3u);
  EXPECT_EQ(faults::Struck(), 0u);
  EXPECT_EQ(GetFile(path), "ab234");
}

TEST_F(FaultCalls, FailOnce) {
  faults::Arm(Mode::kFailOnce, 1);
  EXPECT_TRUE(Write(0, "a"));
  EXPECT_EQ(faults::Struck(), 0u);
  EXPECT_FALSE(Write(1, "b"));
  EXPECT_EQ(faults::Struck(), 1u);
  EXPECT_TRUE(Write(2, "c"));
  EXPECT_EQ(faults::Struck(), 1u);
  EXPECT_EQ(faults::Count(), 3u);
  EXPECT_EQ(GetFile(path), "a1c3456789");
}

TEST_F(FaultCalls, FailFromThereOn) {
  faults::Arm(Mode::kFailFrom, 1);
  EXPECT_TRUE(Write(0, "a"));
  EXPECT_FALSE(Write(1, "b"));
  EXPECT_FALSE(file.Truncate(3));
  EXPECT_FALSE(PCFile::Make((dir / "made").c_str()));
  EXPECT_EQ(GetFile(dir / "made"), "(cannot be read)");
  EXPECT_EQ(faults::Struck(), 3u);
  EXPECT_EQ(GetFile(path), "a123456789");
  char byte = 0;
  EXPECT_TRUE(file.Seek(9) && file.Read(&byte, 1));
  EXPECT_EQ(byte, '9');
}

TEST_F(FaultCalls, FailNoMoreWhenDisarmed) {
  faults::Arm(Mode::kFailFrom, 0);
  EXPECT_FALSE(Write(0, "a"));
  faults::Disarm();
  EXPECT_TRUE(Write(0, "b"));
  EXPECT_EQ(GetFile(path), "b123456789");
}

TEST_F(FaultCalls, AShortWriteIsGoneOnWith) {
  faults::Arm(Mode::kShortOnce, 0);
  EXPECT_TRUE(Write(2, "abcde"));
  EXPECT_EQ(faults::Count(), 2u);  // two bytes, then three
  EXPECT_EQ(faults::Struck(), 1u);
  EXPECT_EQ(GetFile(path), "01abcde789");
  faults::Arm(Mode::kShortOnce, 0);
  EXPECT_TRUE(file.Truncate(4));  // cannot be shortened
  EXPECT_EQ(faults::Struck(), 0u);
  EXPECT_EQ(GetFile(path), "01ab");
}

TEST_F(FaultCalls, ATornWriteStaysTorn) {
  faults::Arm(Mode::kTearFrom, 1);
  EXPECT_TRUE(Write(0, "ABC"));
  EXPECT_FALSE(Write(4, "abcd"));
  EXPECT_FALSE(Write(0, "x"));
  EXPECT_EQ(GetFile(path), "ABC3ab6789");
}

TEST_F(FaultCalls, AWriteIsTornAtAnyByte) {
  faults::ArmTear(1, 3);
  EXPECT_TRUE(Write(0, "ABC"));
  EXPECT_EQ(faults::TornSize(), 0u);
  EXPECT_FALSE(Write(4, "abcd"));
  EXPECT_EQ(faults::TornSize(), 4u);
  EXPECT_FALSE(Write(0, "x"));
  EXPECT_EQ(GetFile(path), "ABC3abc789");
  faults::ArmTear(0, 0);
  EXPECT_FALSE(Write(4, "xyz"));
  EXPECT_EQ(faults::TornSize(), 3u);
  EXPECT_EQ(GetFile(path), "ABC3abc789");
  faults::ArmTear(0, 3);
  EXPECT_TRUE(Write(0, "xyz")) << "nothing is left to fail";
  EXPECT_FALSE(Write(0, "a"));
  EXPECT_EQ(GetFile(path), "xyz3abc789");
}

TEST_F(FaultCalls, WhatIsLostShowsUntilThePowerReturns) {
  const std::string made = dir / "made";
  faults::Arm(Mode::kLoseFrom, 1);
  EXPECT_TRUE(Write(0, "a"));
  EXPECT_TRUE(Write(1, "b"));
  EXPECT_TRUE(Write(12, "c"));
  EXPECT_TRUE(PCFile::Make(made.c_str()));
  EXPECT_EQ(faults::Struck(), 3u);
  char bytes[2] = {};
  EXPECT_TRUE(file.Seek(0) && file.Read(bytes, 2));
  EXPECT_EQ(std::string(bytes, 2), "ab");
  EXPECT_EQ(GetFile(made), "");
  file.Destroy();
  faults::PowerReturns();
  EXPECT_EQ(GetFile(path), "a123456789");
  EXPECT_EQ(GetFile(made), "(cannot be read)");
}

TEST_F(FaultCalls, AnEmptiedFileComesBackWithThePower) {
  faults::Arm(Mode::kLoseFrom, 0);
  file.Destroy();
  EXPECT_TRUE(PCFile::Make(path.c_str()));
  EXPECT_EQ(GetFile(path), "");
  faults::PowerReturns();
  EXPECT_EQ(GetFile(path), "0123456789");
}

}  // namespace
