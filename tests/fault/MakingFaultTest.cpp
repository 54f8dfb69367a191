// Files that are made while system calls fail, or kill the process: whole or not at all.
#include <sys/wait.h>

#include <cerrno>

#include "tests/registry/store/StoreTesting.h"
#include "tests/support/FaultCalls.h"

namespace tamu::registry {
namespace {

using faults::Mode;
using posix::Moving;

constexpr unsigned int kWrites = 80;  // of the bytes of a new file

// A file system, and what it cannot do.
struct System {
  const char* name;
  bool isOld;
};

constexpr System kSystems[] = {{"moves in every way", false}, {"links and replaces", true}};

// How a file is made.
struct Making {
  System system;
  Durability durability;
  std::string old;  // the file that is there; empty: none is
};

std::vector<Making> AllMakings() {
  std::vector<Making> all;
  for (const System& system : kSystems) {
    for (const Durability durability : {Durability::kNone, Durability::kPower}) {
      for (const char* old : {"", "old"}) all.push_back({system, durability, old});
    }
  }
  return all;
}

class MakingFaultTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(status::kOk, TernaryFile().CreateRegistryFile(path.c_str(), 65536));
    whole = GetFile(path);
  }
  void TearDown() override { faults::Disarm(); }

  // The folder is as the making finds it, and the fault waits for it.
  void Prepare(const Making& making, Mode mode, unsigned int number) {
    for (const auto& entry : std::filesystem::directory_iterator(dir / ".")) {
      std::filesystem::remove(entry.path());
    }
    if (!making.old.empty()) PutFile(path, making.old);
    faults::Arm(mode, number);
    if (making.system.isOld) RefuseNewNames();
  }
  static void RefuseNewNames() {
    faults::RefuseMoves(Moving::kNew, EINVAL);
    faults::RefuseMoves(Moving::kExchange, EINVAL);
  }
  // OpenOrCreate where no file is; CreateRegistryFile where one is, and where a journal would be
  // made as well.
  unsigned int Make(const Making& making) const {
    TernaryFile store;
    store.SetOptions({making.durability, nullptr});
    if (!making.old.empty() || making.durability == Durability::kPower) {
      return store.CreateRegistryFile(path.c_str(), 65536);
    }
    const Status result = store.OpenOrCreate(path.c_str());
    store.Finalize();
    return result;
  }
  static std::string NameOf(const Making& making, Mode mode, unsigned int number) {
    return std::string(faults::Name(mode)) + ", call " + std::to_string(number) + ", " +
           making.system.name + ", durability " +
           std::to_string(static_cast<unsigned int>(making.durability)) + ", " +
           (making.old.empty() ? "no file" : making.old);
  }
  bool IsOld(const Making& making) const {
    return GetFile(path) == (making.old.empty() ? "(cannot be read)" : making.old);
  }
  bool IsWhole() const { return GetFile(path) == whole; }
  static std::string NamesOf(const Making& making) {
    return making.old.empty() ? "" : "registry.rce ";
  }
  // Whatever has happened before, the next making works and leaves nothing else.
  void ExpectTheNextMakingWorks(const Making& making) {
    if (making.old.empty()) std::filesystem::remove(path);
    EXPECT_EQ(0u, Make(making));
    EXPECT_TRUE(IsWhole());
    EXPECT_EQ("registry.rce ", NamesIn(dir / "."));
  }
  // What a making answers whose call with the number fails: made, rights taken over, headers and
  // all else written, name given.
  static unsigned int StatusOf(const Making& making, unsigned int number) {
    const unsigned int firstWrite = making.old.empty() ? 1 : 2;
    if (number <= firstWrite) return 28;
    if (number == firstWrite + 1) return 59;
    const bool isWritten = number >= firstWrite + kWrites;
    return isWritten && making.durability == Durability::kNone ? 28 : 5;
  }
  // The calls of a making without faults.
  unsigned int CallsOf(const Making& making) {
    Prepare(making, Mode::kNone, 0);
    EXPECT_EQ(0u, Make(making));
    const unsigned int calls = faults::Count();
    EXPECT_GT(calls, kWrites + 1);
    EXPECT_TRUE(IsWhole());
    EXPECT_EQ("registry.rce ", NamesIn(dir / "."));
    return calls;
  }

  TempDir dir;
  const std::string path = dir / "registry.rce";
  std::string whole;
};

TEST_F(MakingFaultTest, OneCallThatFailsLeavesAllAsItWasAndNothingBeside) {
  for (const Making& making : AllMakings()) {
    const unsigned int calls = CallsOf(making);
    unsigned int overcome = 0;
    for (unsigned int number = 0; number < calls; ++number) {
      SCOPED_TRACE(NameOf(making, Mode::kFailOnce, number));
      Prepare(making, Mode::kFailOnce, number);
      const unsigned int result = Make(making);
      ASSERT_GT(faults::Struck(), 0u);
      faults::Disarm();
      // Without an exchange of names a replaced file cannot come back.
      const bool mayBeNew = making.system.isOld && making.durability == Durability::kPower;
      if (result == 0) {
        ++overcome;  // another way was there, or a name could not be removed
        EXPECT_TRUE(IsWhole());
      } else {
        EXPECT_EQ(StatusOf(making, number), result);
        EXPECT_TRUE(IsOld(making) || (mayBeNew && !making.old.empty() && IsWhole()));
        EXPECT_EQ(NamesOf(making), NamesIn(dir / "."));
      }
      ExpectTheNextMakingWorks(making);
    }
    EXPECT_LE(overcome, 2u) << NameOf(making, Mode::kFailOnce, 0);
  }
}

// Openings, locks, lengths and looks at names fail, too.
TEST_F(MakingFaultTest, ACallThatOnlyLooksLeavesTheOldFileOrTheWholeNewOne) {
  for (const Making& making : AllMakings()) {
    for (unsigned int number = 0; !HasFailure(); number += YAX_TEST_STRIDE) {
      SCOPED_TRACE(NameOf(making, Mode::kFailOnce, number));
      Prepare(making, Mode::kNone, 0);
      faults::ArmAll(Mode::kFailOnce, number);
      if (making.system.isOld) RefuseNewNames();
      const unsigned int result = Make(making);
      const bool isOver = faults::Struck() == 0;
      faults::Disarm();
      EXPECT_TRUE(IsWhole() || (result != 0 && IsOld(making))) << result;
      ExpectTheNextMakingWorks(making);
      if (isOver) break;
    }
  }
}

// Names that cannot be removed stay until the next making.
TEST_F(MakingFaultTest, AllCallsThatFailFromOneOnLeaveTheFileAsItWas) {
  for (const Making& making : AllMakings()) {
    const unsigned int calls = CallsOf(making);
    for (const Mode mode : {Mode::kFailFrom, Mode::kTearFrom}) {
      for (unsigned int number = 0; number < calls; ++number) {
        SCOPED_TRACE(NameOf(making, mode, number));
        Prepare(making, mode, number);
        const unsigned int result = Make(making);
        faults::Disarm();
        if (result == 0) {
          EXPECT_TRUE(IsWhole());
          EXPECT_GE(number + 2, calls);
        } else {
          // What has been given a name may be unable to lose it.
          const bool mayBeNew = making.durability == Durability::kPower && number + 4 >= calls;
          EXPECT_TRUE(IsOld(making) || (mayBeNew && IsWhole()));
        }
        ExpectTheNextMakingWorks(making);
      }
    }
  }
}

TEST_F(MakingFaultTest, AShortWriteMakesNoDifference) {
  for (const Making& making : AllMakings()) {
    const unsigned int calls = CallsOf(making);
    for (unsigned int number = 0; number < calls; ++number) {
      SCOPED_TRACE(NameOf(making, Mode::kShortOnce, number));
      Prepare(making, Mode::kShortOnce, number);
      EXPECT_EQ(0u, Make(making));
      faults::Disarm();
      EXPECT_TRUE(IsWhole());
      EXPECT_EQ("registry.rce ", NamesIn(dir / "."));
    }
  }
}

TEST_F(MakingFaultTest, AProcessThatIsKilledLeavesTheOldFileOrTheWholeNewOne) {
  for (const Making& making : AllMakings()) {
    const unsigned int calls = CallsOf(making);
    for (unsigned int number = 0; number <= calls; ++number) {
      SCOPED_TRACE(NameOf(making, Mode::kKill, number));
      Prepare(making, Mode::kKill, number);
      const pid_t child = fork();
      ASSERT_GE(child, 0);
      if (child == 0) _exit(static_cast<int>(Make(making)));
      int status = 0;
      ASSERT_EQ(child, waitpid(child, &status, 0));
      EXPECT_EQ(number < calls, WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL);
      faults::Disarm();
      const bool isNamed = number + 2 >= calls;
      EXPECT_TRUE(IsOld(making) || (isNamed && IsWhole()));
      TernaryFile store;
      if (making.old.empty()) {
        EXPECT_EQ(status::kOk, store.OpenOrCreate(path.c_str()));
        EXPECT_TRUE(IsWhole());
        store.Finalize();
      }
      ExpectTheNextMakingWorks(making);
    }
  }
}

// Such as one that another file is mounted on: it is written over when the new one is complete.
TEST_F(MakingFaultTest, AFileThatCannotBeReplacedIsWrittenOver) {
  for (const Durability durability : {Durability::kNone, Durability::kPower}) {
    Prepare({kSystems[0], durability, "old"}, Mode::kNone, 0);
    faults::RefuseMoves(Moving::kReplace, EBUSY);
    faults::RefuseMoves(Moving::kExchange, EBUSY);
    EXPECT_EQ(0u, Make({kSystems[0], durability, "old"}));
    EXPECT_TRUE(IsWhole());
    EXPECT_EQ("registry.rce ", NamesIn(dir / "."));
  }
}

// While it is written over, it is neither the old one nor the new one.
TEST_F(MakingFaultTest, AFileThatCannotBeWrittenOverEitherIsToldOf) {
  for (const Durability durability : {Durability::kNone, Durability::kPower}) {
    const Making making = {kSystems[0], durability, "old"};
    unsigned int refused = 0;
    for (unsigned int number = 0; !HasFailure(); number += YAX_TEST_STRIDE) {
      SCOPED_TRACE(NameOf(making, Mode::kFailOnce, number));
      Prepare(making, Mode::kNone, 0);
      faults::ArmAll(Mode::kFailOnce, number);
      faults::RefuseMoves(Moving::kReplace, EBUSY);
      faults::RefuseMoves(Moving::kExchange, EBUSY);
      const unsigned int result = Make(making);
      const bool isOver = faults::Struck() == 0;
      faults::Disarm();
      if (result != 0) ++refused;
      EXPECT_TRUE(result != 0 || IsWhole());
      ExpectTheNextMakingWorks(making);
      if (isOver) break;
    }
    EXPECT_GT(refused, 0u);
  }
}

// Where neither moves nor links give a new name, a replacing move does.
TEST_F(MakingFaultTest, AFileSystemThatOnlyReplacesIsEnough) {
  const Making making = {kSystems[0], Durability::kNone, ""};
  Prepare(making, Mode::kNone, 0);
  faults::RefuseMoves(Moving::kNew, EINVAL);
  faults::RefuseLinks(EPERM);
  EXPECT_EQ(0u, Make(making));
  EXPECT_TRUE(IsWhole());
  EXPECT_EQ("registry.rce ", NamesIn(dir / "."));
}

}  // namespace
}  // namespace tamu::registry
