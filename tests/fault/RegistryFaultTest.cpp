// A workload whose system calls fail at every place in turn, and what the registry is afterwards.
#include <map>
#include <set>
#include <utility>
#include <vector>

#include "registry/Registry.h"
#include "registry/store/TernaryFile.h"
#include "tests/platform/TestFiles.h"
#include "tests/support/FaultCalls.h"
#include "tests/support/StructureCheck.h"

namespace tamu::registry {
namespace {

using faults::Mode;

constexpr unsigned int kUserId = 65535;

// ---- the workload

struct Step {
  enum Action { kKey, kDefault, kCreate, kSet, kDelete };
  Action action;
  const char* path;
  const char* name;
  unsigned int type;
  unsigned int size;
};

// No name differs from another in its last character only, so that each becomes the key that it
// says whatever the others are. Keys: behind a key, inside a node, in a second node, to either
// side, below another key. Values: each number of blocks, growing, shrinking, becoming another
// type.
const Step kSteps[] = {
    {Step::kKey, "net", "", 0, 0},
    {Step::kKey, "network", "", 0, 0},
    {Step::kCreate, "net", "ip", 1, 65},
    {Step::kCreate, "net", "mtu", 0, 8},
    {Step::kKey, "netmask", "", 0, 0},
    {Step::kKey, "netwo", "", 0, 0},
    {Step::kKey, "device-manager-configuration", "", 0, 0},
    {Step::kKey, "device-manager-control", "", 0, 0},
    {Step::kKey, "device-ma", "", 0, 0},
    {Step::kCreate, "device-ma", "blob", 3, 1024},
    {Step::kKey, "net/address", "", 0, 0},
    {Step::kKey, "net/addr", "", 0, 0},
    {Step::kSet, "net", "ip", 1, 1},
    {Step::kKey, "alpha", "", 0, 0},
    {Step::kKey, "zulu", "", 0, 0},
    {Step::kCreate, "zulu", "a", 2, 1},
    {Step::kCreate, "zulu", "b", 2, 64},
    {Step::kCreate, "zulu", "c", 5, 500},
    {Step::kSet, "zulu", "a", 2, 129},
    {Step::kSet, "device-ma", "blob", 4, 1000},
    {Step::kSet, "net", "mtu", 0, 4},
    {Step::kDelete, "zulu", "b", 0, 0},
    {Step::kSet, "zulu", "c", 0, 4},
    {Step::kCreate, "zulu", "b", 1, 200},
    {Step::kDefault, "net", "", 0, 0},
    {Step::kDelete, "net", "ip", 0, 0},
    {Step::kKey, "zulu/below", "", 0, 0},
    {Step::kSet, "zulu", "b", 1, 1024},
};

std::string DataOf(const Step& step) {
  std::string bytes;
  for (unsigned int i = 0; i < step.size; ++i) {
    const bool isUpperHalf = step.type == 0 && i >= 4;  // of a number: not handed out
    bytes += static_cast<char>(isUpperHalf ? 0 : 1 + (i * 7 + i / 64 + step.size) % 255);
  }
  return bytes;
}

unsigned long long NumberOf(const Step& step) {
  return 1000 + static_cast<unsigned long long>(&step - kSteps);
}

unsigned int Apply(Registry& registry, const Step& step) {
  std::string data = DataOf(step);
  Value value = {step.type, step.size, data.data()};
  switch (step.action) {
    case Step::kKey:
      return registry.CreateKey(0, step.path, NumberOf(step));
    case Step::kDefault:
      return registry.SetDefaultValue(0, step.path, NumberOf(step));
    case Step::kCreate:
      return registry.CreateValue(0, step.path, step.name, &value);
    case Step::kSet:
      return registry.SetValue(0, step.path, step.name, &value);
    case Step::kDelete:
      return registry.DeleteValue(0, step.path, step.name);
  }
  return 0;
}

// ---- what must be there afterwards

// What is known after each step; nothing is known of what a step hit by the fault has worked on.
class Model {
 public:
  void Done(const Step& step) {
    const ValueName name = {step.path, step.name};
    switch (step.action) {
      case Step::kKey:
      case Step::kDefault:
        keys_[step.path] = NumberOf(step);
        break;
      case Step::kCreate:
      case Step::kSet:
        values_[name] = DataOf(step);
        break;
      case Step::kDelete:
        values_.erase(name);
        break;
    }
  }
  void Hit(const Step& step) {
    if (step.action == Step::kKey || step.action == Step::kDefault) {
      keys_.erase(step.path);
    } else {
      values_.erase({step.path, step.name});
    }
  }
  // The power went, or seemed to, while the key was created.
  void CutAt(const char* path) { cutAt_ = path; }

  // Everything known is there. Names beside the one whose creation was cut off may be gone.
  // Returns how many are.
  unsigned int ExpectIn(Registry& registry) const {
    unsigned int gone = 0;
    for (const auto& [path, number] : keys_) {
      unsigned long long stored = 0;
      const unsigned int status = registry.GetDefaultValue(0, path.c_str(), &stored);
      if (status == 2 && MayBeGone(path)) {
        ++gone;
        continue;
      }
      EXPECT_EQ(status, 0u) << path;
      EXPECT_EQ(stored, number) << path;
    }
    for (const auto& [name, data] : values_) {
      ReadValue value;
      const char* path = name.first.c_str();
      const unsigned int status = registry.GetValue(0, path, name.second.c_str(), &value);
      if (status == 2 && MayBeGone(name.first)) continue;
      EXPECT_EQ(status, 0u) << path << " " << name.second;
      if (value.data == nullptr) continue;
      // Of a number the low four bytes come; they are all that is not zero.
      EXPECT_EQ(value.size, data.size()) << path << " " << name.second;
      const std::string bytes(value.bytes(), value.bytes() + value.size);
      EXPECT_TRUE(bytes == data) << path << " " << name.second;
    }
    return gone;
  }

 private:
  using ValueName = std::pair<std::string, std::string>;

  // Below the same key as the one cut off: its name may have parted from theirs at the first
  // letter.
  bool MayBeGone(const std::string& path) const {
    if (cutAt_.empty()) return false;
    const size_t slash = cutAt_.rfind('/');
    return slash == std::string::npos || path.compare(0, slash + 1, cutAt_, 0, slash + 1) == 0;
  }

  std::map<std::string, unsigned long long> keys_;  // path -> default value
  std::map<ValueName, std::string> values_;
  std::string cutAt_;
};

// ---- the files to start from

// A registry with its root key; the file is made by the fixture's folder once a test.
std::string NewRegistryFile(const std::string& path) {
  Registry registry(path.c_str(), kUserId);
  EXPECT_EQ(registry.Initialize(), 0u);
  registry.Finalize();
  return GetFile(path);
}

// The same with only a few free slots of each kind, so that the workload grows all four.
std::string AlmostFullFile(const std::string& path) {
  NewRegistryFile(path);
  TernaryFile store;
  EXPECT_EQ(store.Initialize(path.c_str()), 0u);
  const unsigned int left[4] = {3, 5, 2, 20};
  for (unsigned int kind = 0; kind < 4; ++kind) {
    const TernaryNodeDescriptor& descriptor = store.Descriptor(static_cast<NodeKind>(kind));
    while (descriptor.lastTable->freeCount() > left[kind]) {
      unsigned int id = 0;
      if (store.AcquireSlot(0, static_cast<NodeKind>(kind), &id) != 0) return "";
    }
  }
  store.Finalize();
  return GetFile(path);
}

// ---- the files to look at afterwards

bool Contains(const std::string& text, const char* part) {
  return text.find(part) != std::string::npos;
}

// What is wrong with the file, but for
// - slots that were taken and not marked as used: as long as there are as many that nothing leads
//   to, they are only lost;
// - findings that tell of `harmless`, unless it is null.
std::string GraveFindings(const std::string& path, const char* harmless) {
  const SlotCounts counts = CountSlots(path);
  unsigned int lost = 0;
  for (const SlotCounts::Kind& kind : {counts.strings, counts.keys, counts.values, counts.blocks}) {
    lost += kind.used - kind.reachable;
  }
  std::string findings;
  for (const std::string& finding : CheckStructure(path)) {
    if (Contains(finding, "used slot") && Contains(finding, "has the entry") && lost > 0) {
      --lost;
    } else if (harmless == nullptr || !Contains(finding, harmless)) {
      findings += finding + "\n";
    }
  }
  return findings;
}

// ---- one run

struct Outcome {
  bool completed = false;     // the workload has fewer calls than the fault's number
  bool hitInOpening = false;  // the fault struck while the file was made or opened
  unsigned int opened = 0;
  const Step* hit = nullptr;  // the first step that the fault struck, if the disk was gone then
  Model model;

  // What may be wrong because a change of two records was cut off between them: a key counts a
  // value that was just deleted, the rest of a node's names lie where the whole names should.
  const char* Harmless() const {
    if (hit == nullptr) return nullptr;
    if (hit->action == Step::kDelete) return "counts";
    return hit->action == Step::kKey ? "out of order" : nullptr;
  }
};

class RegistryFaults : public ::testing::Test {
 protected:
  void SetUp() override { clean_ = dir_ / "clean.rce"; }
  void TearDown() override { faults::Disarm(); }

  // Runs the workload on a file that holds `base`, or on none. The file is closed afterwards.
  Outcome RunWith(Mode mode, unsigned int number, const std::string& base) {
    std::filesystem::remove(path_);
    if (!base.empty()) PutFile(path_, base);
    Outcome outcome;
    faults::Arm(mode, number);
    {
      Registry registry(path_.c_str(), kUserId);
      outcome.opened = registry.Initialize();
      outcome.hitInOpening = faults::Struck() > 0;
      for (const Step& step : kSteps) {
        const unsigned int before = faults::Struck();
        const unsigned int status = Apply(registry, step);
        const bool lost = mode == Mode::kLoseFrom && faults::Struck() > 0;
        if (before == 0 && faults::Struck() > 0 && mode != Mode::kFailOnce) {
          outcome.hit = &step;
          if (step.action == Step::kKey) outcome.model.CutAt(step.path);
        }
        if (faults::Struck() != before || lost) {
          outcome.model.Hit(step);
        } else if (status == 0) {
          outcome.model.Done(step);
        }
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

  // The registry opens, is sound, holds what it must and goes on.
  void ExpectWhole(const Outcome& outcome) {
    EXPECT_EQ(GraveFindings(path_, outcome.Harmless()), "");
    Registry registry(path_.c_str(), kUserId);
    ASSERT_EQ(registry.Initialize(), 0u);
    if (outcome.model.ExpectIn(registry) > 0) ++runsWithLostNames_;
    EXPECT_EQ(registry.CreateKey(0, "quite-new"), 0u);
    std::string data(300, 'q');
    Value value = {1, 300, data.data()};
    EXPECT_EQ(registry.CreateValue(0, "quite-new", "value", &value), 0u);
    ReadValue back;
    EXPECT_EQ(registry.GetValue(0, "quite-new", "value", &back), 0u);
    EXPECT_EQ(back.size, 300u);
    outcome.model.ExpectIn(registry);
  }

  // Faults at every call in turn.
  void FailEverywhere(Mode mode, const std::string& base) {
    unsigned int number = 0;
    for (bool completed = false; !completed; ++number) {
      SCOPED_TRACE(std::string(faults::Name(mode)) + ", call " + std::to_string(number));
      const Outcome outcome = RunWith(mode, number, base);
      if (base.empty() && outcome.hitInOpening) {
        ExpectOpensOrIsRefused();
      } else {
        EXPECT_EQ(outcome.opened, 0u);
        ExpectWhole(outcome);
      }
      completed = outcome.completed || TooManyFailures();
    }
    EXPECT_GT(number, 200u);  // the workload is one
    // A node is cut in three writes. Between the last two of them, and only there, what lies below
    // it has lost the beginning of its name.
    unsigned int keySteps = 0;
    for (const Step& step : kSteps) keySteps += step.action == Step::kKey ? 1 : 0;
    EXPECT_LE(runsWithLostNames_, mode == Mode::kFailOnce ? 0 : keySteps);
  }

  static bool TooManyFailures() {
    const auto* test = ::testing::UnitTest::GetInstance()->current_test_info();
    return test->result()->total_part_count() > 60;
  }

  // A file whose making was disturbed may be refused for good; nothing worse happens.
  void ExpectOpensOrIsRefused() {
    Registry registry(path_.c_str(), kUserId);
    const unsigned int opened = registry.Initialize();
    // No file of ours at all, or one that ends in its headers.
    EXPECT_TRUE(opened == 0 || opened == 59 || opened == 12) << opened;
    for (const Step& step : kSteps) Apply(registry, step);
  }

  TempDir dir_;
  std::string path_ = dir_ / "registry.rce";
  std::string clean_;
  unsigned int runsWithLostNames_ = 0;
};

TEST_F(RegistryFaults, OneCallFailsInANewFile) {
  FailEverywhere(Mode::kFailOnce, NewRegistryFile(clean_));
}

TEST_F(RegistryFaults, OneCallFailsWhileTheFileGrows) {
  FailEverywhere(Mode::kFailOnce, AlmostFullFile(clean_));
}

TEST_F(RegistryFaults, OneCallFailsFromTheMakingOfTheFileOn) {
  FailEverywhere(Mode::kFailOnce, "");
}

TEST_F(RegistryFaults, AllCallsFailFromOneOnInANewFile) {
  FailEverywhere(Mode::kFailFrom, NewRegistryFile(clean_));
}

TEST_F(RegistryFaults, AllCallsFailFromOneOnWhileTheFileGrows) {
  FailEverywhere(Mode::kFailFrom, AlmostFullFile(clean_));
}

TEST_F(RegistryFaults, AllCallsFailFromTheMakingOfTheFileOn) {
  FailEverywhere(Mode::kFailFrom, "");
}

TEST_F(RegistryFaults, ThePowerGoesInANewFile) {
  FailEverywhere(Mode::kLoseFrom, NewRegistryFile(clean_));
}

TEST_F(RegistryFaults, ThePowerGoesWhileTheFileGrows) {
  FailEverywhere(Mode::kLoseFrom, AlmostFullFile(clean_));
}

TEST_F(RegistryFaults, ThePowerGoesFromTheMakingOfTheFileOn) {
  FailEverywhere(Mode::kLoseFrom, "");
}

// The system may write a part of what it was given and say so.
TEST_F(RegistryFaults, AShortWriteMakesNoDifference) {
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
TEST_F(RegistryFaults, ATornWriteIsSurvived) {
  const std::string base = AlmostFullFile(clean_);
  for (unsigned int number = 0;; ++number) {
    SCOPED_TRACE("call " + std::to_string(number));
    const Outcome outcome = RunWith(Mode::kTearFrom, number, base);
    Registry registry(path_.c_str(), kUserId);
    EXPECT_EQ(registry.Initialize(), 0u);
    for (const Step& step : kSteps) Apply(registry, step);
    if (outcome.completed) break;
  }
}

}  // namespace
}  // namespace tamu::registry
