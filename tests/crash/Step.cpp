#include "tests/crash/Step.h"

#include "registry/Registry.h"
#include "registry/store/TernaryFile.h"
#include "tests/crash/MemoryFolder.h"
#include "tests/crash/Random.h"
#include "tests/platform/TestFiles.h"

namespace crash {

namespace {

constexpr const char* kPaths[] = {
    "net",
    "network",
    "net/eth10",
    "net/eth11",
    "net/eth12",
    "net/eth20",
    "net/eth10/address",
    "zulu",
    "zulu/below",
    "zulu/below/deep",
    "alpha",
    "device-manager-configuration",
    "device-manager-control",
    "device-ma",
};
constexpr const char* kNames[] = {"ip", "mtu", "blob", "a-name-of-thirty-one-characters"};
constexpr const char* kBackups[] = {"first.backup", "second.backup"};
constexpr unsigned int kSizes[] = {1, 8, 63, 64, 65, 129, 500, 1024};
constexpr unsigned int kRights[] = {0x0F, 0x1F, 0xFF};

// So many of each kind in a hundred steps or so.
constexpr struct {
  Step::Action action;
  const char* name;
  unsigned int weight;
} kActions[] = {
    {Step::kCreateKey, "CreateKey", 26},
    {Step::kSetDefault, "SetDefaultValue", 6},
    {Step::kSetPermission, "SetKeyPermission", 4},
    {Step::kSetWatch, "SetKeyWatch", 2},
    {Step::kDeleteKey, "DeleteKey", 6},
    {Step::kCreateValue, "CreateValue", 20},
    {Step::kSetValue, "SetValue", 22},
    {Step::kDeleteValue, "DeleteValue", 6},
    {Step::kBackup, "BackupKey", 4},
    {Step::kRestore, "RestoreKey", 4},
    {Step::kRewrite, "RewriteFile", 2},
    {Step::kCompact, "Compact", 3},
    {Step::kTransaction, "Transaction", 10},
};

Step::Action PickAction(Random& random) {
  unsigned int total = 0;
  for (const auto& each : kActions) total += each.weight;
  unsigned int drawn = random.Below(total);
  for (const auto& each : kActions) {
    if (drawn < each.weight) return each.action;
    drawn -= each.weight;
  }
  return Step::kCreateKey;
}

std::string DataOf(unsigned int size, Random& random) {
  std::string data;
  const unsigned int first = random.Number();
  for (unsigned int i = 0; i < size; ++i) {
    data += static_cast<char>(1 + (first + i * 7 + i / 64) % 255);
  }
  return data;
}

// A backup is a file of its own, which no transaction takes back; the whole file is neither
// rewritten nor compacted in one.
bool MayBePart(Step::Action action) {
  return action != Step::kTransaction && action != Step::kBackup && action != Step::kRewrite &&
         action != Step::kCompact;
}

std::vector<Step> PartsOf(unsigned int seed, unsigned int index) {
  constexpr unsigned int kParts = 5;
  std::vector<Step> parts;
  for (unsigned int i = 0; parts.size() < kParts; ++i) {
    const Step part = StepOf(seed + 1, 6 + index * 64 + i);
    if (MayBePart(part.action)) parts.push_back(part);
  }
  return parts;
}

bool IsOfFile(Step::Action action) {
  return action == Step::kBackup || action == Step::kRestore;
}

std::string MakeRewrittenBytes() {
  using namespace tamu::registry;
  const MemoryFolder folder;
  const std::string path = folder.path() + "/registry";
  constexpr unsigned int kSmall = 180 * 12;  // bytes: a dozen records of each kind
  EXPECT_EQ(0u, TernaryFile().CreateRegistryFile(path.c_str(), kSmall));
  Registry registry(path.c_str(), kAdministratorId);
  EXPECT_EQ(0u, registry.Initialize());
  for (const char* key : {"net", "zulu", "zulu/below"}) EXPECT_EQ(0u, registry.CreateKey(0, key));
  const std::string data(100, 'r');
  const Value value = MakeValue(3, data.data(), 100);
  EXPECT_EQ(0u, registry.PutValue("zulu/below", "blob", value, false));
  registry.Finalize();
  return GetFile(path);
}

}  // namespace

const std::string& RewrittenBytes() {
  static const std::string bytes = MakeRewrittenBytes();
  return bytes;
}

// The first steps make what the others need.
Step StepOf(unsigned int seed, unsigned int index) {
  Random random(seed * 1000003 + index);
  const bool isFirst = index < 6;
  Step step = {};
  step.action = isFirst ? Step::kCreateKey : PickAction(random);
  step.isThroughHandle =
      random.IsOneIn(2) && step.action != Step::kRestore && MayBePart(step.action);
  step.path = isFirst ? kPaths[index] : random.Pick(kPaths);
  step.name = IsOfFile(step.action) ? random.Pick(kBackups) : random.Pick(kNames);
  step.type = random.Below(6);
  step.data = DataOf(step.type == 0 ? 8 : random.Pick(kSizes), random);
  step.number = random.Number();
  if (step.action == Step::kSetPermission) step.number = random.Pick(kRights);
  if (step.action == Step::kSetWatch) step.number &= 0x3F;
  if (step.action == Step::kRewrite) step.data = RewrittenBytes();
  if (step.action == Step::kTransaction) step.parts = PartsOf(seed, index);
  return step;
}

std::string Describe(const Step& step) {
  std::string text;
  for (const Step& part : step.parts) text += (text.empty() ? "" : ", ") + Describe(part);
  if (step.action == Step::kTransaction) return "Transaction of " + text;
  for (const auto& each : kActions) {
    if (each.action == step.action) text = each.name;
  }
  text += std::string("(") + step.path + ", " + step.name + ", type " + std::to_string(step.type) +
          ", " + std::to_string(step.data.size()) + " bytes)";
  return step.isThroughHandle ? text + " through a handle" : text;
}

}  // namespace crash
