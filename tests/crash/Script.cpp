#include "tests/crash/Script.h"

#include <gtest/gtest.h>

#include "registry/store/TernaryFile.h"
#include "tests/crash/MemoryFolder.h"
#include "tests/crash/ScriptRun.h"

namespace status = tamu::registry::status;

namespace crash {

using tamu::registry::Registry;
using tamu::registry::TernaryFile;

namespace {

constexpr unsigned int kBudget = 180 * 12;  // bytes: a dozen records of each kind
constexpr unsigned int kStepsOfMaking = 2;  // behind the opening
constexpr unsigned int kLargeValues = 120;  // of the greatest length

FolderImage SmallFile() {
  const MemoryFolder folder;
  const std::string path = folder.path() + "/" + kRegistryName;
  EXPECT_EQ(status::kOk, TernaryFile().CreateRegistryFile(path.c_str(), kBudget));
  return FolderImage::Of(folder.path());
}

std::vector<Step> RandomSteps(unsigned int seed, unsigned int count) {
  std::vector<Step> steps;
  for (unsigned int i = 0; i < count; ++i) steps.push_back(StepOf(seed, i));
  return steps;
}

// The small file, and beside it a backup of a key with many long values.
FolderImage SmallFileAndLargeBackup() {
  const MemoryFolder folder;
  SmallFile().PutInto(folder.path());
  const std::string path = folder.path() + "/" + kRegistryName;
  const std::string backup = folder.path() + "/first.backup";
  const std::string data(tamu::registry::kValueDataMax, 'x');
  Registry registry(path.c_str(), kUserId);
  EXPECT_EQ(status::kOk, registry.Initialize());
  EXPECT_EQ(status::kOk, registry.CreateKey(0, "zulu"));
  for (unsigned int i = 0; i < kLargeValues; ++i) {
    tamu::registry::Value value =
        tamu::registry::MakeValue(3, data.data(), tamu::registry::kValueDataMax);
    EXPECT_EQ(status::kOk, registry.CreateValue(0, "zulu", std::to_string(i).c_str(), &value));
  }
  EXPECT_EQ(status::kOk, registry.BackupKey(0, "zulu", backup.c_str()));
  registry.Finalize();
  FolderImage image = FolderImage::Of(folder.path());
  image.files[image.NumberOf(kRegistryName)] = SmallFile().BytesAt(kRegistryName);
  return image;
}

Step StepOn(Step::Action action, const char* path) {
  Step step = {};
  step.action = action;
  step.path = path;
  step.name = "first.backup";
  return step;
}

}  // namespace

SpacePolicy PolicyOf(unsigned int seed) {
  return seed % 2 == 0 ? SpacePolicy::kReuse : SpacePolicy::kExact;
}

Script Script::Random(unsigned int seed, unsigned int count) {
  return {"seed " + std::to_string(seed), SmallFile(), RandomSteps(seed, count), PolicyOf(seed)};
}

Script Script::Making(unsigned int seed) {
  return {"making, seed " + std::to_string(seed),
          {},
          RandomSteps(seed, kStepsOfMaking),
          PolicyOf(seed)};
}

Script Script::Large() {
  return {"large",
          SmallFileAndLargeBackup(),
          {StepOn(Step::kCreateKey, "zulu"), StepOn(Step::kRestore, "zulu"),
           StepOn(Step::kSetDefault, "zulu"), StepOn(Step::kRestore, "zulu"),
           StepOn(Step::kDeleteKey, "zulu"), StepOn(Step::kCreateKey, "alpha")}};
}

Script Script::Rewriting() {
  Step value = StepOn(Step::kCreateValue, "zulu");
  value.type = 3;
  value.data.assign(tamu::registry::kValueDataMax, 'v');
  Step again = value;
  again.path = "net";
  Step rewrite = StepOn(Step::kRewrite, "");
  rewrite.data = RewrittenBytes();
  return {"rewriting",
          SmallFile(),
          {StepOn(Step::kCreateKey, "zulu"), value, rewrite, again,
           StepOn(Step::kSetDefault, "net"), StepOn(Step::kDeleteKey, "zulu"), rewrite, again}};
}

Script Script::GrowingIntoRest() {
  Step value = StepOn(Step::kCreateValue, "net");
  value.type = 3;
  value.data.assign(tamu::registry::kValueDataMax, 'v');
  Step rewrite = StepOn(Step::kRewrite, "");
  rewrite.data = RewrittenBytes();
  std::vector<Step> steps = {StepOn(Step::kCreateKey, "net"), value, rewrite};
  for (const char* path :
       {"alpha", "beta", "gamma", "delta", "eta", "iota", "kappa", "lambda", "mu"}) {
    steps.push_back(StepOn(Step::kCreateKey, path));
  }
  steps.push_back(StepOn(Step::kSetDefault, "net"));
  steps.push_back(value);
  steps.push_back(StepOn(Step::kSetDefault, "mu"));
  return {"growing into what is left", SmallFile(), steps};
}

std::string Script::NameOf(unsigned int step) const {
  const std::string number = name + ", step " + std::to_string(step);
  if (step == 0) return number + ", opening";
  return number + ", " + (step > count() ? "closing" : Describe(steps[step - 1]));
}

}  // namespace crash
