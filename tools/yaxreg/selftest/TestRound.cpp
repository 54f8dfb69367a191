#include "tools/yaxreg/selftest/TestRound.h"

#include "tools/yaxreg/image/HeldSignals.h"
#include "tools/yaxreg/image/SideFolder.h"
#include "tools/yaxreg/selftest/ChildTask.h"
#include "tools/yaxreg/selftest/SharedNumbers.h"
#include "tools/yaxreg/selftest/TestContent.h"

namespace yaxreg {

namespace status = tamu::registry::status;
using tamu::registry::Durability;
using tamu::registry::Registry;

bool TestPart::IsOver() const {
  return SelfTestClock::now() >= end || HeldSignals::IsToEnd();
}

unsigned int TestPart::Draw(unsigned int most) const {
  return static_cast<unsigned int>((*random)() % (most + 1ull));
}

unsigned int OpenForTest(Registry& registry, Durability durability) {
  tamu::registry::RegistryOptions options;
  options.durability = SideFolder() == nullptr ? durability : Durability::kProcess;
  options.sideFolder = SideFolder();
  options.space = tamu::registry::SpacePolicy::kReuse;
  registry.SetOptions(options);
  const unsigned int opened = registry.Initialize();
  if (opened != status::kNoSpace) return opened;
  options.durability = Durability::kNone;
  options.sideFolder = nullptr;
  registry.SetOptions(options);
  return registry.Initialize();
}

unsigned int OpenForTest(Registry& registry) {
  return OpenForTest(registry, Durability::kProcess);
}

Found LookInChild(const std::string& file, unsigned int* number) {
  SharedNumbers shared;
  if (!shared.AreThere()) return Found::kUnreadable;
  const int answer = RunInChild([&] {
    Registry registry(file.c_str(), tamu::registry::kAdministratorId);
    if (OpenForTest(registry) != status::kOk) return 1;
    unsigned int found = 0;
    const TestContent::State state = TestContent(registry).Read(&found);
    shared[0] = found;
    if (state != TestContent::State::kWhole) return state == TestContent::State::kMixed ? 2 : 1;
    tamu::registry::CheckResult result;
    const bool isSound = registry.Check(&result) == status::kOk &&
                         result.condition <= tamu::registry::FileCondition::kWorn;
    return isSound ? 0 : 1;
  });
  *number = shared[0];
  return answer == 0 ? Found::kWhole : answer == 2 ? Found::kMixed : Found::kUnreadable;
}

unsigned int MakeTestFile(const std::string& file, bool* hasJournal) {
  Registry registry(file.c_str(), tamu::registry::kAdministratorId);
  const unsigned int made = OpenForTest(registry);
  if (made != status::kOk) return made;
  *hasJournal = registry.EffectiveDurability() != Durability::kNone;
  return TestContent(registry).Write(0);
}

}  // namespace yaxreg
