#include <gtest/gtest.h>

#include <filesystem>

#include "tests/platform/TestFiles.h"
#include "tools/yaxreg/selftest/SelfTest.h"

namespace {

using yaxreg::SelfTestCounts;

TEST(SelfTest, HasARoundOfEachPartAndLeavesNothing) {
  const TempDir folder;
  SelfTestCounts counts;
  std::string reason;
  ASSERT_TRUE(yaxreg::RunSelfTest(folder / ".", 0, 5, &counts, &reason)) << reason;
  EXPECT_EQ(1u, counts.kills);
  EXPECT_EQ(counts.hasJournal, counts.changes > 0);
  EXPECT_EQ(1u, counts.fullDisks);
  EXPECT_EQ(1u, counts.damages);
  EXPECT_TRUE(counts.IsKept());
  EXPECT_TRUE(std::filesystem::is_empty(folder / "."));
}

TEST(SelfTest, TellsThatItCannotBeDone) {
  const TempDir folder;
  SelfTestCounts counts;
  std::string reason;
  EXPECT_FALSE(yaxreg::RunSelfTest(folder / "absent", 0, 5, &counts, &reason));
  EXPECT_EQ("a folder within cannot be made: No such file or directory", reason);
}

TEST(SelfTest, HasFailedWhateverIsNotAsPromised) {
  SelfTestCounts good;
  good.hasJournal = true;
  good.kills = good.changes = good.fullDisks = good.damages = good.refused = 5;
  EXPECT_TRUE(good.IsKept());
  for (unsigned int SelfTestCounts::*const field :
       {&SelfTestCounts::mixed, &SelfTestCounts::lost, &SelfTestCounts::unreadable,
        &SelfTestCounts::lostChanges, &SelfTestCounts::tornLooks, &SelfTestCounts::stuck,
        &SelfTestCounts::mixedByFullDisks, &SelfTestCounts::crashes}) {
    SelfTestCounts bad = good;
    bad.*field = 1;
    EXPECT_FALSE(bad.IsKept());
  }
  SelfTestCounts withoutJournal = good;
  withoutJournal.hasJournal = false;
  withoutJournal.mixed = 1;
  EXPECT_TRUE(withoutJournal.IsKept());
}

}  // namespace
