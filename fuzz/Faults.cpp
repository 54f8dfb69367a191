// Operations, of which the input lets calls of the system or allocations fail: what has failed has
// changed nothing, and the file stays sound.
#include "fuzz/support/Harness.h"
#include "tests/allocation/CountedHeap.h"
#include "tests/registry/ModelInput.h"
#include "tests/registry/TreeText.h"
#include "tests/support/FaultCalls.h"

namespace fuzz {
namespace {

using namespace tamu::registry;

bool IsFailure(unsigned int answer) {
  return answer == status::kInputOutput || answer == status::kNoMemory ||
         answer == status::kNoSpace || answer == 9;
}

class FaultRun {
 public:
  explicit FaultRun(Bytes& bytes)
      : bytes_(bytes), in_([&bytes](unsigned int limit) { return bytes.Below(limit); }) {
    const unsigned int choices = bytes_.Below(256);
    options_.durability = (choices & 1) != 0 ? Durability::kPower : Durability::kNone;
    options_.space = (choices & 2) != 0 ? SpacePolicy::kReuse : SpacePolicy::kExact;
    faults::Arm(faults::Mode::kNone, 0);
  }

  void Run() {
    Open();
    EXPECT_EQ(status::kOk, registry_->CreateKey(0, "a"));
    EXPECT_EQ(status::kOk, registry_->CreateKey(0, "b"));
    EXPECT_EQ(status::kOk, registry_->BackupKey(0, "a", backup_.c_str()));
    for (const char* key : {"a", "b"}) in_.AddPath(key);
    for (unsigned int i = 0; i < 40 && !bytes_.IsOver(); ++i) Step();
    registry_.reset();
    EXPECT_EQ("", StructureFindings(path_));
  }

 private:
  void Open() {
    registry_ = std::make_unique<Registry>(path_.c_str(), kAdministratorId);
    EXPECT_EQ(status::kOk, registry_->SetOptions(options_));
    ASSERT_EQ(status::kOk, registry_->Initialize());
    handle_ = 0;
  }

  std::string Content() const { return Describe(DecodeTree(path_)); }

  void Step() {
    const unsigned int fault = bytes_.Below(4);
    const unsigned int number = bytes_.Below(32);
    if (fault == 0) {
      Do();
      return;
    }
    const std::string before = Content();
    if (fault == 1) faults::ArmAll(faults::Mode::kFailOnce, number);
    if (fault == 2) faults::Arm(faults::Mode::kTearFrom, number);
    if (fault == 3) heap::sFailing = number + 1;
    const unsigned int answer = Do();
    heap::sFailing = 0;
    faults::Disarm();
    if (!IsFailure(answer)) return;
    // Opening it again completes what the journal has, though a disk that failed could not be
    // asked.
    const bool goesOn = Look();
    if (!goesOn && options_.durability == Durability::kPower) return;
    EXPECT_EQ(before, Content()) << "fault " << fault << " at " << number << ", status " << answer;
  }

  // Who looks finishes what could not be undone. A file that could not grow is closed, and so is
  // one that the disk has lost something of: false, it is open again.
  bool Look() {
    unsigned long long number = 0;
    if (!IsFailure(registry_->GetDefaultValue(0, "", &number))) return true;
    registry_.reset();
    Open();
    return false;
  }

  unsigned int Do() {
    const unsigned int kind = bytes_.Below(16);
    const std::string path = in_.Path(kind < 4), name = in_.ValueName();
    const char* const key = path.c_str();
    const NewValue made(in_);
    NewExactValue value(made);
    const unsigned int handle = kind % 2 == 0 && kind < 12 ? handle_ : 0;
    if (handle == 0) handle_ = 0;
    switch (kind) {
      case 0:
      case 1:
        return registry_->CreateKey(handle, key, 5);
      case 2:
        in_.AddPath(path);
        return registry_->MakeKey(key);
      case 3:
        return registry_->MoveKey("a", key);
      case 4:
      case 5:
        return registry_->CreateValue(handle, key, name.c_str(), &value);
      case 6:
      case 7:
        return registry_->SetValue(handle, key, name.c_str(), &value);
      case 8:
      case 9:
        return registry_->DeleteValue(handle, key, name.c_str());
      case 10:
      case 11:
        return registry_->SetDefaultValue(handle, key, 77);
      case 12:
        return registry_->OpenKey("", &handle_);
      case 13:
        return path.find('a') == std::string::npos ? 0 : registry_->RemoveKey(key);
      case 14:
        return path.find('a') == std::string::npos
                   ? registry_->PutValue(key, name.c_str(), value, true)
                   : registry_->RestoreKey(0, key, backup_.c_str());
      default:
        return registry_->Compact();
    }
  }

  Bytes& bytes_;
  ModelInput in_;
  TempDir folder_;
  const std::string path_ = folder_ / "registry";
  const std::string backup_ = folder_ / "backup";
  RegistryOptions options_;
  std::unique_ptr<Registry> registry_;
  unsigned int handle_ = 0;
};

void RunFaults(Bytes& in) {
  FaultRun(in).Run();
}

const Harness sFaults("Faults", RunFaults);

}  // namespace
}  // namespace fuzz
