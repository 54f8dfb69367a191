// Processes that die at any moment while others work on the same registry.
#include <vector>

#include "tests/crash/CrashSize.h"
#include "tests/crash/MemoryFolder.h"
#include "tests/crash/SharedCount.h"
#include "tests/platform/TestFiles.h"
#include "tests/processes/SharedScript.h"
#include "tests/processes/Worker.h"
#include "tests/support/StructureCheck.h"

namespace status = tamu::registry::status;

namespace processes {
namespace {

using tamu::registry::Durability;
using tamu::registry::ReadValue;
using tamu::registry::RegistryOptions;
using tamu::registry::Value;

constexpr unsigned int kWorkers = 4;
constexpr unsigned int kValues = 8;

// What step `step`, from 1 on, makes of value step % kValues.
std::string ContentOf(unsigned int step) {
  return std::to_string(step) + std::string(step * 37 % 400, static_cast<char>('a' + step % 26));
}

std::string NameOfStep(unsigned int step) {
  return "v" + std::to_string(step % kValues);
}

unsigned int Put(Registry& registry, const std::string& key, unsigned int step) {
  std::string bytes = ContentOf(step);
  Value value = {};
  value.type = 2;
  value.size = static_cast<unsigned int>(bytes.size());
  value.data = bytes.data();
  return step <= kValues ? registry.CreateValue(0, key.c_str(), NameOfStep(step).c_str(), &value)
                         : registry.SetValue(0, key.c_str(), NameOfStep(step).c_str(), &value);
}

bool Has(Registry& registry, const std::string& key, unsigned int step) {
  ReadValue value(2);
  return registry.GetValue(0, key.c_str(), NameOfStep(step).c_str(), &value) == 0 &&
         std::string(static_cast<const char*>(value.data), value.size) == ContentOf(step);
}

// Opens the registry and finds all steps done up to `done`, or one more; goes on until it is
// killed.
std::string Work(const std::string& path, Durability durability, unsigned int worker,
                 crash::SharedCount* acknowledged) {
  Registry registry(path.c_str(), kUser);
  RegistryOptions options;
  options.durability = durability;
  registry.SetOptions(options);
  const unsigned int opened = registry.Initialize();
  if (opened != 0) return "opening: status " + std::to_string(opened);
  const std::string key = OwnKey(worker);
  unsigned int step = acknowledged->Get();
  if (Has(registry, key, step + 1)) acknowledged->Set(++step);
  const unsigned int first = step > kValues ? step - kValues + 1 : 1;
  for (unsigned int i = first; i <= step; ++i) {
    if (!Has(registry, key, i)) return "step " + std::to_string(i) + " is lost";
  }
  SharedScript shared(registry, kWorkers + worker, false);
  for (;;) {
    const unsigned int result = Put(registry, key, ++step);
    if (result != 0) return "step: status " + std::to_string(result);
    acknowledged->Set(step);
    const std::string wrong = shared.Look(2);
    if (!wrong.empty()) return wrong;
    if (step % 3 == 0 && !shared.SetText().empty()) return "the text cannot be set";
  }
}

class KilledWorkers : public ::testing::TestWithParam<Durability> {
 protected:
  ~KilledWorkers() override { EXPECT_EQ("", StructureFindings(path)); }

  crash::MemoryFolder folder;
  const std::string path = folder.path() + "/registry";
};

TEST_P(KilledWorkers, LoseNothingAndDisturbNobody) {
  {
    Registry registry(path.c_str(), kUser);
    ASSERT_EQ(status::kOk, registry.Initialize());
    ASSERT_EQ("", PrepareShared(registry));
  }
  crash::SharedCount acknowledged[kWorkers];
  crash::Random random(7);
  const unsigned int kills = crash::Sized(150, 5000);
  std::vector<Worker> workers;
  for (unsigned int i = 0; i < kWorkers; ++i) {
    workers.emplace_back([&, i] { return Work(path, GetParam(), i, &acknowledged[i]); });
  }
  for (unsigned int kill = 0; kill < kills; ++kill) {
    usleep(random.Below(6000));
    const unsigned int i = random.Below(kWorkers);
    ASSERT_TRUE(workers[i].Kill()) << "behind step " << acknowledged[i].Get();
    workers[i].Start([&] { return Work(path, GetParam(), i, &acknowledged[i]); });
  }
  unsigned int steps = 0;
  for (unsigned int i = 0; i < kWorkers; ++i) {
    EXPECT_TRUE(workers[i].Kill());
    steps += acknowledged[i].Get();
  }
  EXPECT_GT(steps, kills);
  Registry registry(path.c_str(), kUser);
  ASSERT_EQ(status::kOk, registry.Initialize());
  for (unsigned int i = 0; i < kWorkers; ++i) {
    EXPECT_TRUE(Has(registry, OwnKey(i), acknowledged[i].Get()) ||
                Has(registry, OwnKey(i), acknowledged[i].Get() + 1));
  }
  EXPECT_EQ("", SharedScript(registry, kMostThreads - 1, false).Look(100));
  registry.Finalize();
  EXPECT_EQ("(cannot be read)", GetFile(path + ".journal"));
}

INSTANTIATE_TEST_SUITE_P(Of, KilledWorkers,
                         ::testing::Values(Durability::kProcess, Durability::kPower),
                         [](const auto& of) {
                           return of.param == Durability::kPower ? "Power" : "Process";
                         });

}  // namespace
}  // namespace processes
