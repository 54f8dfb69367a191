// A workload whose system calls fail at every place in turn, and what the registry is afterwards.
#include <memory>
#include <set>

#include "tests/fault/FaultFiles.h"
#include "tests/fault/FaultWorkload.h"
#include "tests/platform/TestFiles.h"
#include "tests/support/FaultCalls.h"

namespace tamu::registry {
namespace {

using faults::AlmostFullFile;
using faults::GraveFindings;
using faults::KnownState;
using faults::kUserId;
using faults::Mode;
using faults::NewRegistryFile;
using faults::Step;

// ---- one run

struct Outcome {
  bool completed = false;     // the workload has fewer calls than the fault's number
  bool hitInOpening = false;  // the fault struck while the file was made or opened
  unsigned int opened = 0;
  const Step* hit = nullptr;  // the first step that the fault struck, if the disk was gone then
  KnownState known;
  // What is known instead, if the power went when the step hit had done its work already.
  std::unique_ptr<KnownState> orKnown;

  // What may be wrong because a change of two records was cut off between them: a key counts a
  // value that was just deleted, the rest of a node's names lie where the whole names should.
  std::vector<std::string> Harmless() const {
    if (hit == nullptr) return {};
    if (hit->action == Step::kDelete) return {"counts"};
    if (hit->action == Step::kKey) return {"out of order"};
    return {};
  }
};

class RegistryFaultTest : public ::testing::Test {
 protected:
  void SetUp() override { clean_ = dir_ / "clean.rce"; }
  void TearDown() override { faults::Disarm(); }

  // Runs the workload on a file that holds `base`, or on none. The file is closed afterwards.
  Outcome RunWith(Mode mode, unsigned int number, const std::string& base) {
    std::filesystem::remove_all(folder_);
    std::filesystem::create_directory(folder_);
    if (!base.empty()) PutFile(path_, base);
    Outcome outcome;
    faults::Arm(mode, number);
    {
      Registry registry(path_.c_str(), kUserId);
      if (!hasJournal_) faults::WriteStraight(registry);
      outcome.opened = registry.Initialize();
      outcome.hitInOpening = faults::Struck() > 0;
      for (const Step& step : faults::Workload()) {
        const unsigned int before = faults::Struck();
        const unsigned int status = faults::Apply(registry, step, folder_);
        Note(step, status, mode, before, &outcome);
        if (number >= faults::Count() && status != 0) {
          ADD_FAILURE() << "status " << status << " without a fault: " << step.path;
        }
      }
      outcome.completed = faults::Count() <= number;
    }
    faults::Disarm();
    if (mode == Mode::kLoseFrom) faults::PowerReturns();
    return outcome;
  }

  // What is known after a step. `struckBefore`: how often the fault had struck before it.
  static void Note(const Step& step, unsigned int status, Mode mode, unsigned int struckBefore,
                   Outcome* outcome) {
    const bool isStruck = faults::Struck() > struckBefore;
    const bool isWhole = step.action == Step::kRemove || step.action == Step::kRestore;
    const bool isOneWrite = step.action == Step::kPermission || step.action == Step::kWatch;
    if (isStruck && isOneWrite && mode == Mode::kFailOnce) {
      EXPECT_EQ(status, 5u) << step.path;
    }
    if (mode == Mode::kLoseFrom && struckBefore > 0) return;  // nothing of it stays
    if (isStruck && struckBefore == 0 && mode != Mode::kFailOnce) {
      outcome->hit = &step;
      if (step.action == Step::kKey) outcome->known.CutAt(step.path);
      if (isWhole && mode == Mode::kLoseFrom) {
        outcome->orKnown = std::make_unique<KnownState>(outcome->known);
        outcome->orKnown->Done(step);
        return;
      }
    }
    if (isStruck && !isWhole) {
      outcome->known.Hit(step);
    } else if (status == 0) {
      outcome->known.Done(step);
    }
  }

  // Everything known is there. Returns how many names are gone that may be.
  unsigned int ExpectKnown(Registry& registry, const Outcome& outcome) {
    const std::map<std::string, DecodedKey> tree = DecodeTree(path_);
    unsigned int gone = 0;
    std::string differences = outcome.known.Differences(registry, tree, &gone);
    if (!differences.empty() && outcome.orKnown != nullptr) {
      differences = outcome.orKnown->Differences(registry, tree, &gone);
    }
    EXPECT_EQ(differences, "");
    return gone;
  }

  // The registry opens, is sound, holds what it must and goes on.
  void ExpectWhole(const Outcome& outcome) {
    if (hasJournal_) ExpectRecovery();
    EXPECT_EQ(GraveFindings(path_, outcome.Harmless()), "");
    Registry registry(path_.c_str(), kUserId);
    ASSERT_EQ(registry.Initialize(), 0u);
    if (ExpectKnown(registry, outcome) > 0) ++runsWithLostNames_;
    EXPECT_EQ(registry.CreateKey(0, "quite-new"), 0u);
    std::string data(300, 'q');
    Value value = {1, 300, data.data()};
    EXPECT_EQ(registry.CreateValue(0, "quite-new", "value", &value), 0u);
    const std::string backup = folder_ + "quite-new.backup";
    EXPECT_EQ(registry.BackupKey(0, "quite-new", backup.c_str()), 0u);
    EXPECT_EQ(registry.DeleteKey(0, "quite-new"), 0u);
    EXPECT_EQ(registry.CreateKey(0, "quite-new"), 0u);
    EXPECT_EQ(registry.RestoreKey(0, "quite-new", backup.c_str()), 0u);
    ReadValue back;
    EXPECT_EQ(registry.GetValue(0, "quite-new", "value", &back), 0u);
    EXPECT_EQ(back.size, 300u);
    ExpectKnown(registry, outcome);
  }

  // What the registry could not undo is undone when it is opened again.
  void ExpectRecovery() {
    Registry registry(path_.c_str(), kUserId);
    EXPECT_EQ(registry.Initialize(), 0u);
  }

  // Faults at every call in turn.
  void FailEverywhere(Mode mode, const std::string& base) {
    unsigned int number = 0;
    for (bool completed = false; !completed; number += YAX_TEST_STRIDE) {
      SCOPED_TRACE(std::string(faults::Name(mode)) + ", call " + std::to_string(number));
      const Outcome outcome = RunWith(mode, number, base);
      if (base.empty() && outcome.hitInOpening) {
        ExpectOpens();
      } else {
        EXPECT_EQ(outcome.opened, 0u);
        ExpectWhole(outcome);
      }
      completed = outcome.completed || faults::TooManyFailures();
    }
    EXPECT_GT(number, hasJournal_ ? 100u : 200u);  // the workload is one
    // A node is cut in three writes. Between the last two of them, and only there, what lies below
    // it has lost the beginning of its name.
    unsigned int keySteps = 0;
    for (const Step& step : faults::Workload()) keySteps += step.action == Step::kKey ? 1 : 0;
    EXPECT_LE(runsWithLostNames_, mode == Mode::kFailOnce ? 0 : keySteps);
  }

  // Whatever has disturbed its making, the file is not there or whole.
  void ExpectOpens() {
    Registry registry(path_.c_str(), kUserId);
    EXPECT_EQ(registry.Initialize(), 0u);
    for (const Step& step : faults::Workload()) faults::Apply(registry, step, folder_);
  }

  TempDir dir_;
  const std::string folder_ = dir_ / "run/";  // of one run
  const std::string path_ = folder_ + "registry.rce";
  std::string clean_;
  bool hasJournal_ = false;
  unsigned int runsWithLostNames_ = 0;
};

TEST_F(RegistryFaultTest, OneCallFailsInANewFile) {
  FailEverywhere(Mode::kFailOnce, NewRegistryFile(clean_));
}

TEST_F(RegistryFaultTest, OneCallFailsWhileTheFileGrows) {
  FailEverywhere(Mode::kFailOnce, AlmostFullFile(clean_));
}

TEST_F(RegistryFaultTest, OneCallFailsFromTheMakingOfTheFileOn) {
  FailEverywhere(Mode::kFailOnce, "");
}

TEST_F(RegistryFaultTest, AllCallsFailFromOneOnInANewFile) {
  FailEverywhere(Mode::kFailFrom, NewRegistryFile(clean_));
}

TEST_F(RegistryFaultTest, AllCallsFailFromOneOnWhileTheFileGrows) {
  FailEverywhere(Mode::kFailFrom, AlmostFullFile(clean_));
}

TEST_F(RegistryFaultTest, AllCallsFailFromTheMakingOfTheFileOn) {
  FailEverywhere(Mode::kFailFrom, "");
}

TEST_F(RegistryFaultTest, OneCallFailsBesideAJournal) {
  hasJournal_ = true;
  FailEverywhere(Mode::kFailOnce, NewRegistryFile(clean_));
  FailEverywhere(Mode::kFailOnce, AlmostFullFile(clean_));
}

TEST_F(RegistryFaultTest, AllCallsFailFromOneOnBesideAJournal) {
  hasJournal_ = true;
  FailEverywhere(Mode::kFailFrom, NewRegistryFile(clean_));
  FailEverywhere(Mode::kFailFrom, AlmostFullFile(clean_));
}

TEST_F(RegistryFaultTest, ThePowerGoesInANewFile) {
  FailEverywhere(Mode::kLoseFrom, NewRegistryFile(clean_));
}

TEST_F(RegistryFaultTest, ThePowerGoesWhileTheFileGrows) {
  FailEverywhere(Mode::kLoseFrom, AlmostFullFile(clean_));
}

TEST_F(RegistryFaultTest, ThePowerGoesFromTheMakingOfTheFileOn) {
  FailEverywhere(Mode::kLoseFrom, "");
}

TEST_F(RegistryFaultTest, APermissionThatCannotBeWrittenIsAsItWas) {
  Registry registry(clean_.c_str(), kUserId);
  ASSERT_EQ(registry.Initialize(), 0u);
  ASSERT_EQ(registry.CreateKey(0, "key", 7), 0u);
  const std::string before = GetFile(clean_);
  faults::Arm(Mode::kFailFrom, 0);
  EXPECT_EQ(registry.SetKeyPermission(0, "key", 0xFF), 5u);
  EXPECT_EQ(registry.SetKeyWatch(0, "key", 0x15), 5u);
  EXPECT_GE(faults::Struck(), 2u);
  faults::Disarm();
  EXPECT_EQ(GetFile(clean_), before);
  unsigned char permission = 0;
  EXPECT_EQ(registry.GetKeyPermission(0, "key", &permission), 0u);
  EXPECT_EQ(permission, 0x0Fu);
}

// Nobody knows what a disk has that refuses to be synced: what is there when the file is opened
// again is the change or the state before it, and both occur.
TEST_F(RegistryFaultTest, AChangeThatCouldNotBeSyncedMayBeThereAfterTheNextOpening) {
  RegistryOptions options;
  options.durability = Durability::kPower;
  std::set<unsigned long long> found;
  bool isOver = false;
  for (unsigned int call = 0; !isOver; ++call) {
    SCOPED_TRACE(call);
    std::filesystem::remove_all(folder_);
    std::filesystem::create_directory(folder_);
    unsigned int result = 0;
    unsigned long long number = 0;
    {
      Registry registry(path_.c_str(), kUserId);
      ASSERT_EQ(status::kOk, registry.SetOptions(options));
      ASSERT_EQ(status::kOk, registry.Initialize());
      ASSERT_EQ(status::kOk, registry.CreateKey(0, "k", 1));
      faults::Arm(Mode::kFailOnce, call);
      result = registry.SetDefaultValue(0, "k", 2);
      isOver = faults::Count() <= call;
      faults::Disarm();
      if (registry.GetDefaultValue(0, "k", &number) == status::kOk) {
        EXPECT_EQ(result == status::kOk ? 2u : 1u, number);
      }
    }
    Registry next(path_.c_str(), kUserId);
    ASSERT_EQ(status::kOk, next.SetOptions(options));
    ASSERT_EQ(status::kOk, next.Initialize());
    ASSERT_EQ(status::kOk, next.GetDefaultValue(0, "k", &number));
    if (result == status::kInputOutput) found.insert(number);
    EXPECT_EQ(isOver, result == status::kOk);
  }
  EXPECT_EQ((std::set<unsigned long long>{1, 2}), found);
}

// A backup that fails tells so at whatever call it does; the registry is not touched, nor is what
// was in the place of the backup.
TEST_F(RegistryFaultTest, ABackupThatCannotBeWrittenIsReportedAndChangesNothing) {
  Registry registry(clean_.c_str(), kUserId);
  ASSERT_EQ(registry.Initialize(), 0u);
  ASSERT_EQ(registry.CreateKey(0, "key", 7), 0u);
  std::string data(1000, 'd');
  Value value = {1, 1000, data.data()};
  for (unsigned int i = 0; i < 140; ++i) {
    ASSERT_EQ(registry.CreateValue(0, "key", std::to_string(i).c_str(), &value), 0u);
  }
  const std::string before = GetFile(clean_);
  std::filesystem::create_directory(folder_);
  const std::string backup = folder_ + "backup";
  ASSERT_EQ(registry.BackupKey(0, "key", backup.c_str()), 0u);
  const std::string whole = GetFile(backup);
  for (const std::string& older : {std::string(), std::string("older")}) {
    for (const Mode mode : {Mode::kFailOnce, Mode::kFailFrom, Mode::kShortOnce, Mode::kTearFrom}) {
      for (unsigned int number = 0;; ++number) {
        SCOPED_TRACE(std::string(faults::Name(mode)) + ", call " + std::to_string(number) + older);
        std::filesystem::remove_all(folder_);
        std::filesystem::create_directory(folder_);
        if (!older.empty()) PutFile(backup, older);
        faults::Arm(mode, number);
        const unsigned int status = registry.BackupKey(0, "key", backup.c_str());
        const unsigned int struck = faults::Struck();
        const unsigned int count = faults::Count();
        faults::Disarm();
        EXPECT_TRUE(GetFile(clean_) == before);
        if (status == 0) {
          EXPECT_TRUE(GetFile(backup) == whole);
          EXPECT_EQ(NamesIn(folder_), "backup ");
        } else {
          EXPECT_EQ(status, 5u);
          EXPECT_EQ(GetFile(backup), older.empty() ? "(cannot be read)" : older);
        }
        if (mode == Mode::kFailOnce && struck > 0) {
          EXPECT_EQ(status, 5u);
          EXPECT_EQ(NamesIn(folder_), older.empty() ? "" : "backup ");
        }
        if (number < count) continue;
        EXPECT_EQ(status, 0u);
        EXPECT_EQ(number, older.empty() ? 6u : 7u)
            << "made, rights, written in three pieces, marked as complete, named";
        break;
      }
    }
  }
  // What could not be removed goes with the next backup.
  EXPECT_EQ(registry.BackupKey(0, "key", backup.c_str()), 0u);
  EXPECT_EQ(NamesIn(folder_), "backup ");
}

// The system may write a part of what it was given and say so.
TEST_F(RegistryFaultTest, AShortWriteMakesNoDifference) {
  for (const std::string& base : {std::string(), AlmostFullFile(clean_)}) {
    RunWith(Mode::kNone, 0, base);
    const std::string expected = GetFile(path_);
    for (unsigned int number = 0;; ++number) {
      SCOPED_TRACE("call " + std::to_string(number));
      const Outcome outcome = RunWith(Mode::kShortOnce, number, base);
      ASSERT_EQ(outcome.opened, 0u);
      ASSERT_TRUE(GetFile(path_) == expected);
      if (outcome.completed) break;
    }
  }
}

// Half a record may be left: nothing is promised of it but that the registry opens and nothing
// crashes, hangs or reads outside.
TEST_F(RegistryFaultTest, ATornWriteIsSurvived) {
  const std::string base = AlmostFullFile(clean_);
  for (unsigned int number = 0;; ++number) {
    SCOPED_TRACE("call " + std::to_string(number));
    const Outcome outcome = RunWith(Mode::kTearFrom, number, base);
    Registry registry(path_.c_str(), kUserId);
    EXPECT_EQ(registry.Initialize(), 0u);
    for (const Step& step : faults::Workload()) faults::Apply(registry, step, folder_);
    if (outcome.completed) break;
  }
}

}  // namespace
}  // namespace tamu::registry
