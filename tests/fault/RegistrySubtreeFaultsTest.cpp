// Whole keys deleted and restored where a file can no longer be written.
#include "registry/Registry.h"
#include "tests/fault/FaultFiles.h"
#include "tests/registry/filetree/BackupTesting.h"
#include "tests/support/FaultCalls.h"

namespace tamu::registry {
namespace {

using faults::Mode;

// Two keys with a sub-key each and three values, the second with a backup of its own; the
// registry is closed.
class RegistrySubtreeFaults : public ::testing::Test {
 protected:
  void SetUp() override {
    Registry registry(path_.c_str(), kAdmin);
    ASSERT_EQ(status::kOk, registry.Initialize());
    std::string data(100, 'd');
    Value value = {1, 100, data.data()};
    for (const char* top : {"old", "new"}) {
      const std::string below = std::string(top) + "/below";
      for (const std::string& key : {std::string(top), below}) {
        const auto initial = static_cast<unsigned char>(top[0]);
        ASSERT_EQ(status::kOk, registry.CreateKey(0, key.c_str(), initial));
        ASSERT_EQ(status::kOk, registry.CreateValue(0, key.c_str(), top, &value));
      }
      ASSERT_EQ(status::kOk, registry.CreateValue(0, below.c_str(), "second", &value));
    }
    ASSERT_EQ(status::kOk, registry.BackupKey(0, "new", backup_.c_str()));
    registry.Finalize();
    image_ = GetFile(path_);
    before_ = SubtreeText(path_, "");
    used_ = UsedSlots(path_);
  }
  void TearDown() override { faults::Disarm(); }

  // The status of an operation on the registry of the beginning, with a fault at one of its calls.
  template <class Operation>
  unsigned int With(Mode mode, unsigned int number, Operation operation) {
    PutFile(path_, image_);
    Registry registry(path_.c_str(), kAdmin);
    faults::WriteStraight(registry);
    EXPECT_EQ(status::kOk, registry.Initialize());
    faults::Arm(mode, number);
    const unsigned int status = operation(registry);
    calls_ = faults::Count();
    faults::Disarm();
    return status;
  }
  unsigned int DeleteWith(Mode mode, unsigned int number) {
    return With(mode, number, [](Registry& registry) { return registry.DeleteKey(0, "old"); });
  }
  unsigned int RestoreWith(Mode mode, unsigned int number) {
    return With(mode, number, [this](Registry& registry) {
      return registry.RestoreKey(0, "old", backup_.c_str());
    });
  }

  TempDir dir_;
  const std::string path_ = dir_ / "registry.rce";
  const std::string backup_ = dir_ / "backup";
  std::string image_;
  std::string before_;
  std::string used_;
  unsigned int calls_ = 0;
};

// Giving a slot back takes two writes: its entry, then the list's head. Of "old" these are three
// values, two keys and one string node.
constexpr unsigned int kGivingBack = 2 * (3 + 2 + 1);

TEST_F(RegistrySubtreeFaults, AKeyThatCannotBeCutOffIsNotDeleted) {
  for (const Mode mode : {Mode::kFailOnce, Mode::kFailFrom}) {
    SCOPED_TRACE(faults::Name(mode));
    EXPECT_EQ(status::kInputOutput, DeleteWith(mode, 0));
    EXPECT_TRUE(GetFile(path_) == image_);
    EXPECT_EQ(SubtreeText(path_, ""), before_);
  }
}

// What cannot be given back stays in use, and nothing leads to it.
TEST_F(RegistrySubtreeFaults, AKeyThatIsCutOffIsDeleted) {
  ASSERT_EQ(status::kOk, DeleteWith(Mode::kNone, 0));
  EXPECT_EQ(calls_, 1 + kGivingBack);
  const std::string after = SubtreeText(path_, "");
  EXPECT_NE(after, before_);
  for (unsigned int number = 1; number < 1 + kGivingBack; ++number) {
    SCOPED_TRACE(number);
    EXPECT_EQ(status::kOk, DeleteWith(Mode::kFailFrom, number));
    EXPECT_EQ(SubtreeText(path_, ""), after);
    EXPECT_EQ(status::kOk, DeleteWith(Mode::kFailOnce, number));
    EXPECT_EQ(SubtreeText(path_, ""), after);
    EXPECT_EQ("", StructureFindings(path_));
  }
}

// Up to the write by which the key changes over to the new nodes, 5; from then on the new ones are
// there, and only what is given back may be missed.
TEST_F(RegistrySubtreeFaults, ARestoreThatCannotBeWrittenIsReported) {
  ASSERT_EQ(status::kOk, RestoreWith(Mode::kNone, 0));
  const unsigned int calls = calls_;
  ASSERT_GT(calls, kGivingBack + 1);
  const std::string after = SubtreeText(path_, "");
  EXPECT_NE(after, before_);
  for (unsigned int number = 0; number < calls; ++number) {
    SCOPED_TRACE("call " + std::to_string(number) + " of " + std::to_string(calls));
    const bool isWritten = number >= calls - kGivingBack;
    EXPECT_EQ(RestoreWith(Mode::kFailFrom, number), isWritten ? 0u : 5u);
    EXPECT_EQ(SubtreeText(path_, ""), isWritten ? after : before_);
  }
  EXPECT_EQ(status::kOk, RestoreWith(Mode::kFailFrom, calls));
  EXPECT_EQ(SubtreeText(path_, ""), after);
}

// When only one call fails, all that was taken is given back.
TEST_F(RegistrySubtreeFaults, ARestoreThatFailsOnceLeavesNothingBehind) {
  ASSERT_EQ(status::kOk, RestoreWith(Mode::kNone, 0));
  const unsigned int calls = calls_;
  ASSERT_GT(calls, kGivingBack + 1);
  for (unsigned int number = 0; number < calls - kGivingBack; ++number) {
    SCOPED_TRACE("call " + std::to_string(number) + " of " + std::to_string(calls));
    EXPECT_EQ(status::kInputOutput, RestoreWith(Mode::kFailOnce, number));
    EXPECT_EQ(SubtreeText(path_, ""), before_);
    EXPECT_EQ(UsedSlots(path_), used_);
    EXPECT_EQ("", StructureFindings(path_));
  }
}

}  // namespace
}  // namespace tamu::registry
