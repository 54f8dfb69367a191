#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>

#include "tools/yaxreg/selftest/ChildTask.h"

namespace {

using yaxreg::ChildTask;
using yaxreg::RunInChild;

TEST(ChildTask, AnswersHowItHasEnded) {
  EXPECT_EQ(0, RunInChild([] { return 0; }));
  EXPECT_EQ(42, RunInChild([] { return 42; }));
  EXPECT_EQ(ChildTask::kDied, RunInChild([] { return raise(SIGKILL); }));
  EXPECT_EQ(ChildTask::kHung, ChildTask([] { return pause(); }).Wait(20));
}

TEST(ChildTask, IsKilledAtAnyMoment) {
  ChildTask child([] { return pause(); });
  EXPECT_FALSE(child.HasEnded());
  child.Kill();
  EXPECT_TRUE(child.HasEnded());
  EXPECT_EQ(ChildTask::kDied, child.Wait(0));
}

}  // namespace
