// A program's life in which calls of the C library are interrupted, do half of what they were asked
// for, or fail.
#include <fcntl.h>

#include <cerrno>

#include "framework/YAX.h"
#include "framework/YAXStatus.h"
#include "tests/framework/PrintedMessages.h"
#include "tests/platform/OpenDescriptors.h"
#include "tests/support/RegistryLife.h"
#include "tests/support/StructureCheck.h"
#include "tests/support/SystemFaults.h"

namespace yax {
namespace {

using system_faults::Calls;
using system_faults::Effect;

class SystemFaultsTest : public ::testing::TestWithParam<unsigned int> {
 protected:
  SystemFaultsTest() : life(folder / ".", GetParam()) {
    undisturbed = Live(Effect::kNone, Calls::kAll, 0);
    EXPECT_EQ("backup registry ", NamesIn(folder / "."));
  }
  ~SystemFaultsTest() override { system_faults::Disarm(); }

  // The text of a life from nothing in which a call is struck.
  std::string Live(Effect effect, Calls calls, unsigned int number, int error = 0) {
    for (const std::string& file : {path, path + ".journal", backup}) remove(file.c_str());
    known.clear();
    system_faults::Arm(effect, calls, number, error);
    const std::string text = life.Run(&known);
    system_faults::Disarm();
    return text;
  }
  // The numbers of the calls of this kind, one life each.
  template <class Look>
  void ForEachCall(Effect effect, Calls calls, unsigned int step, Look look) {
    for (unsigned int number = 0;; number += step * YAX_TEST_STRIDE) {
      const int error = kErrors[number % (sizeof kErrors / sizeof *kErrors)];
      const std::string text = Live(effect, calls, number, error);
      if (system_faults::Count() <= number) break;
      SCOPED_TRACE("call " + std::to_string(number) + ", " + system_faults::Struck() + ", error " +
                   std::to_string(error));
      look(text);
      if (HasFailure()) break;
    }
  }

  // Lives that wait for the disk take long.
  static unsigned int Step(unsigned int usual) {
    return GetParam() == YAX_DURABILITY_POWER ? 11 : usual;
  }
  static constexpr int kErrors[] = {EAGAIN, EIO, ENOSPC, EROFS, EMFILE, ENOMEM, EACCES};

  TempDir folder;
  const std::string path = folder / "registry";
  const std::string backup = folder / "backup";
  RegistryLife life;
  std::set<int64_t> known;
  std::string undisturbed;
};

TEST_P(SystemFaultsTest, AnInterruptedCallIsMadeAgain) {
  ForEachCall(Effect::kInterrupted, Calls::kInterruptible, Step(5),
              [this](const std::string& text) { EXPECT_EQ(undisturbed, text); });
  EXPECT_EQ(undisturbed, Live(Effect::kInterrupted, Calls::kInterruptible, system_faults::kEvery));
  EXPECT_EQ("", StructureFindings(path));
}

TEST_P(SystemFaultsTest, ShortReadsAndWritesGoOn) {
  EXPECT_EQ(undisturbed, Live(Effect::kHalf, Calls::kTransfers, system_faults::kEvery));
  EXPECT_EQ("", StructureFindings(path));
}

// Whatever a call says, the answer is one of the statuses, what was acknowledged is there, and
// nothing stays open.
TEST_P(SystemFaultsTest, ARefusedCallIsAStatus) {
  const long open = OpenDescriptors();
  ForEachCall(Effect::kRefused, Calls::kAll, Step(3), [&](const std::string& text) {
    EXPECT_EQ(std::string::npos, text.find("another number")) << text;
    EXPECT_EQ(open, OpenDescriptors());
    if (access(path.c_str(), F_OK) != 0) return;
    EXPECT_EQ("", StructureFindings(path));
    yax_registry* registry = nullptr;
    yax_key* key = nullptr;
    ASSERT_EQ(YAX_OK, yax_open(path.c_str(), nullptr, &registry));
    EXPECT_EQ(YAX_OK, yax_key_at(registry, "", &key));
    int64_t number = 0;
    const yax_status found = yax_get_int(key, "kept", &number);
    if (found == YAX_OK) {
      EXPECT_EQ(1u, known.count(number)) << number << "\n" << text;
    } else {
      EXPECT_EQ(YAX_NOT_FOUND, found);
      EXPECT_TRUE(known.empty() || GetParam() == YAX_DURABILITY_POWER) << text;
    }
    yax_key_free(key);
    yax_close(registry);
  });
  EXPECT_TRUE(life.HasKnownStatuses());
}

// The day's clock goes back a year and forth a century: waiting takes its time, what is watched is
// told, and another opening numbers its changes anew.
TEST_P(SystemFaultsTest, TheClockOfTheDayDoesNotMatter) {
  for (const long long jump : {-365LL * 86400, 36500LL * 86400, 0LL}) {
    SCOPED_TRACE(jump);
    system_faults::SetClock(jump);
    EXPECT_EQ(undisturbed, Live(Effect::kNone, Calls::kAll, 0));
    yax_registry* registry = nullptr;
    yax_key* key = nullptr;
    yax_watch* watch = nullptr;
    yax_change change = {};
    ASSERT_EQ(YAX_OK, yax_open(path.c_str(), nullptr, &registry));
    ASSERT_EQ(YAX_OK, yax_key_at(registry, "", &key));
    ASSERT_EQ(YAX_OK, yax_watch_key(key, &watch));
    system_faults::SetClock(-jump);
    EXPECT_EQ(YAX_OK, yax_set_int(key, "kept", 5));
    EXPECT_EQ(YAX_OK, yax_watch_next(watch, 10000, &change));
    EXPECT_STREQ("kept", change.name);
    EXPECT_EQ(YAX_NO_DATA, yax_watch_next(watch, 20, &change));
    yax_watch_free(watch);
    yax_key_free(key);
    yax_close(registry);
  }
  system_faults::SetClock(0);
}

INSTANTIATE_TEST_SUITE_P(EveryMode, SystemFaultsTest,
                         ::testing::Values(YAX_DURABILITY_NONE, YAX_DURABILITY_PROCESS,
                                           YAX_DURABILITY_POWER));

// Its semaphores and threads, too.
TEST(FrameworkSystemFaultsTest, IsMadeOrTellsWhyNot) {
  const TempDir folder;
  const std::string path = folder / "registry";
  const PrintedMessages printed;
  const long open = OpenDescriptors();
  for (unsigned int number = 0;; number += YAX_TEST_STRIDE) {
    SCOPED_TRACE("call " + std::to_string(number));
    system_faults::Arm(Effect::kRefused, Calls::kAll, number, EAGAIN);
    const unsigned int result = CreateYAX(path.c_str());
    system_faults::Disarm();
    const bool isOver = system_faults::Count() <= number;
    if (result == yax_framework::kOk) {
      EXPECT_EQ(yax_framework::kOk, DestroyYAX());
    } else {
      EXPECT_TRUE(result == yax_framework::kNoMemory || result == yax_framework::kRegistryFailed ||
                  result == yax_framework::kUnspecified)
          << system_faults::Struck() << " " << std::hex << result;
    }
    EXPECT_EQ(open, OpenDescriptors()) << system_faults::Struck();
    if (isOver || ::testing::Test::HasFailure()) break;
  }
}

}  // namespace
}  // namespace yax
