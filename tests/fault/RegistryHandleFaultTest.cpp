// The workload through handles, its system calls failing at every place in turn, and what the
// registry is afterwards.
#include "tests/fault/FaultFiles.h"
#include "tests/fault/FaultWorkload.h"
#include "tests/platform/TestFiles.h"
#include "tests/support/FaultCalls.h"

namespace tamu::registry {
namespace {

using faults::KnownState;
using faults::Mode;
using faults::Step;

// Applies each step through another handle: the root's, which stays open, one of the parent, which
// is closed at once, or one of the key itself, which stays open beside the root's until the next.
class HandleWays {
 public:
  HandleWays(Registry& registry, const std::string& folder)
      : registry_(registry), folder_(folder) {}

  // What each step answers, with its number in the workload.
  unsigned int Apply(const Step& step, size_t number) {
    if (step.action == Step::kBackup || step.action == Step::kRestore) {
      root_ = 0;
      own_ = 0;  // closed by what is done without a handle
      return faults::Apply(registry_, step, folder_);
    }
    if (root_ == 0) registry_.OpenKey("", &root_);
    const std::string path = step.path;
    const size_t slash = path.rfind('/');
    if (number % 3 == 1 && slash != std::string::npos) {
      return ThroughTheParent(step, path.substr(0, slash), path.substr(slash + 1));
    }
    if (number % 3 == 2 && step.action != Step::kKey) return ThroughItself(step);
    return ThroughTheRoot(step);
  }

 private:
  // A closed number when the root cannot be opened.
  unsigned int ThroughTheRoot(const Step& step) {
    return faults::ApplyThrough(registry_, step, root_ != 0 ? root_ : 77, step.path);
  }

  unsigned int ThroughTheParent(const Step& step, const std::string& parent,
                                const std::string& name) {
    unsigned int handle = 0;
    if (registry_.OpenKey(parent.c_str(), &handle) != 0) return ThroughTheRoot(step);
    const unsigned int result = faults::ApplyThrough(registry_, step, handle, name.c_str());
    EXPECT_EQ(status::kOk, registry_.CloseKey(handle));
    return result;
  }

  unsigned int ThroughItself(const Step& step) {
    if (own_ != 0) {
      EXPECT_EQ(status::kOk, registry_.CloseKey(own_));
      own_ = 0;
    }
    if (registry_.OpenKey(step.path, &own_) != 0) return ThroughTheRoot(step);
    return faults::ApplyThrough(registry_, step, own_, "");
  }

  Registry& registry_;
  const std::string folder_;
  unsigned int root_ = 0;
  unsigned int own_ = 0;
};

struct HandleOutcome {
  bool completed = false;    // the workload has fewer calls than the fault's number
  bool isKeyCutOff = false;  // the disk was gone in the midst of a key's creation
  KnownState known;

  // What may be wrong. A value that is deleted behind a newer one stays counted; of data that could
  // not be stored the file tells the size alone; the rest of a node's names lie where the whole
  // names should, when the cut was not finished.
  std::vector<std::string> Harmless() const {
    std::vector<std::string> harmless = {"counts", "bytes in 0 blocks"};
    if (isKeyCutOff) harmless.push_back("out of order");
    return harmless;
  }
};

class RegistryHandleFaultTest : public ::testing::Test {
 protected:
  void TearDown() override { faults::Disarm(); }

  // Runs the workload on a file that holds `base`. The file is closed afterwards.
  HandleOutcome RunWith(Mode mode, unsigned int number, const std::string& base) {
    std::filesystem::remove_all(folder_);
    std::filesystem::create_directory(folder_);
    PutFile(path_, base);
    HandleOutcome outcome;
    faults::Arm(mode, number);
    {
      Registry registry(path_.c_str(), faults::kUserId);
      if (!hasJournal_) faults::WriteStraight(registry);
      EXPECT_EQ(status::kOk, registry.Initialize());
      HandleWays ways(registry, folder_);
      for (size_t i = 0; i < faults::Workload().size(); ++i) {
        const Step& step = faults::Workload()[i];
        const unsigned int before = faults::Struck();
        const unsigned int callsBefore = faults::Count();
        const unsigned int status = ways.Apply(step, i);
        if (number >= faults::Count()) {
          EXPECT_EQ(0u, status) << "without a fault: step " << i << ", " << step.path;
        }
        Note(step, status, mode, before, faults::Count() > callsBefore, &outcome);
      }
      outcome.completed = faults::Count() <= number;
    }
    faults::Disarm();
    if (mode == Mode::kLoseFrom) faults::PowerReturns();
    return outcome;
  }

  // What is known after a step. A failed write is not always reported, and where the file was
  // closed because it could not grow, what is answered with 0 is in memory alone.
  static void Note(const Step& step, unsigned int status, Mode mode, unsigned int struckBefore,
                   bool isWritten, HandleOutcome* outcome) {
    const bool isStruck = faults::Struck() > struckBefore;
    if (mode == Mode::kLoseFrom && struckBefore > 0) return;  // nothing of it stays
    if (isStruck && struckBefore == 0 && mode != Mode::kFailOnce && step.action == Step::kKey) {
      outcome->isKeyCutOff = true;
      outcome->known.CutAt(step.path);
    }
    if (isStruck || (status == 0 && !isWritten)) {
      outcome->known.Hit(step);
    } else if (status == 0) {
      outcome->known.Done(step);
    }
  }

  // Everything known is there. Returns how many names are gone that may be.
  unsigned int ExpectKnown(Registry& registry, const HandleOutcome& outcome) {
    unsigned int gone = 0;
    EXPECT_EQ("", outcome.known.Differences(registry, DecodeTree(path_), &gone));
    return gone;
  }

  // The registry opens, is sound, holds what it must and goes on, through handles too.
  void ExpectWhole(const HandleOutcome& outcome) {
    if (hasJournal_) ExpectRecovery();
    EXPECT_EQ("", faults::GraveFindings(path_, outcome.Harmless()));
    Registry registry(path_.c_str(), faults::kUserId);
    ASSERT_EQ(status::kOk, registry.Initialize());
    if (ExpectKnown(registry, outcome) > 0) ++runsWithLostNames_;
    unsigned int root = 0;
    ASSERT_EQ(status::kOk, registry.OpenKey("", &root));
    EXPECT_EQ(status::kOk, registry.CreateKey(root, "quite-new"));
    std::string data(300, 'q');
    Value value = {1, 300, data.data()};
    EXPECT_EQ(status::kOk, registry.CreateValue(root, "quite-new", "value", &value));
    ReadValue back;
    EXPECT_EQ(status::kOk, registry.GetValue(0, "quite-new", "value", &back));
    EXPECT_EQ(300u, back.size);
    ASSERT_EQ(status::kOk, registry.OpenKey("", &root));
    EXPECT_EQ(status::kOk, registry.DeleteKey(root, "quite-new"));
    ExpectKnown(registry, outcome);
    EXPECT_EQ("", faults::GraveFindings(path_, outcome.Harmless()));
  }

  // What the registry could not undo is undone when it is opened again.
  void ExpectRecovery() {
    Registry registry(path_.c_str(), faults::kUserId);
    EXPECT_EQ(status::kOk, registry.Initialize());
  }

  // Faults at every call in turn.
  void FailEverywhere(Mode mode, const std::string& base) {
    unsigned int number = 0;
    for (bool completed = false; !completed; number += YAX_TEST_STRIDE) {
      SCOPED_TRACE(std::string(faults::Name(mode)) + ", call " + std::to_string(number));
      const HandleOutcome outcome = RunWith(mode, number, base);
      ExpectWhole(outcome);
      completed = outcome.completed || faults::TooManyFailures();
    }
    EXPECT_GT(number, hasJournal_ ? 100u : 200u);  // the workload is one
    // Between the last two of the three writes by which a node is cut, and only there, what lies
    // below it has lost the beginning of its name.
    unsigned int keySteps = 0;
    for (const Step& step : faults::Workload()) keySteps += step.action == Step::kKey ? 1 : 0;
    EXPECT_LE(runsWithLostNames_, mode == Mode::kFailOnce ? 0 : keySteps);
  }

  TempDir dir_;
  const std::string folder_ = dir_ / "run/";  // of one run
  const std::string path_ = folder_ + "registry.rce";
  const std::string clean_ = dir_ / "clean.rce";
  bool hasJournal_ = false;
  unsigned int runsWithLostNames_ = 0;
};

TEST_F(RegistryHandleFaultTest, OneCallFailsInANewFile) {
  FailEverywhere(Mode::kFailOnce, faults::NewRegistryFile(clean_));
}

TEST_F(RegistryHandleFaultTest, OneCallFailsWhileTheFileGrows) {
  FailEverywhere(Mode::kFailOnce, faults::AlmostFullFile(clean_));
}

TEST_F(RegistryHandleFaultTest, AllCallsFailFromOneOnInANewFile) {
  FailEverywhere(Mode::kFailFrom, faults::NewRegistryFile(clean_));
}

TEST_F(RegistryHandleFaultTest, AllCallsFailFromOneOnWhileTheFileGrows) {
  FailEverywhere(Mode::kFailFrom, faults::AlmostFullFile(clean_));
}

TEST_F(RegistryHandleFaultTest, OneCallFailsBesideAJournal) {
  hasJournal_ = true;
  FailEverywhere(Mode::kFailOnce, faults::NewRegistryFile(clean_));
  FailEverywhere(Mode::kFailOnce, faults::AlmostFullFile(clean_));
}

TEST_F(RegistryHandleFaultTest, AllCallsFailFromOneOnBesideAJournal) {
  hasJournal_ = true;
  FailEverywhere(Mode::kFailFrom, faults::NewRegistryFile(clean_));
  FailEverywhere(Mode::kFailFrom, faults::AlmostFullFile(clean_));
}

TEST_F(RegistryHandleFaultTest, ThePowerGoesInANewFile) {
  FailEverywhere(Mode::kLoseFrom, faults::NewRegistryFile(clean_));
}

TEST_F(RegistryHandleFaultTest, ThePowerGoesWhileTheFileGrows) {
  FailEverywhere(Mode::kLoseFrom, faults::AlmostFullFile(clean_));
}

// The system may write a part of what it was given and say so.
TEST_F(RegistryHandleFaultTest, AShortWriteMakesNoDifference) {
  const std::string base = faults::AlmostFullFile(clean_);
  RunWith(Mode::kNone, 0, base);
  const std::string expected = GetFile(path_);
  for (unsigned int number = 0;; ++number) {
    SCOPED_TRACE("call " + std::to_string(number));
    const HandleOutcome outcome = RunWith(Mode::kShortOnce, number, base);
    ASSERT_TRUE(GetFile(path_) == expected);
    if (outcome.completed) break;
  }
}

}  // namespace
}  // namespace tamu::registry
