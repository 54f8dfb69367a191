#include "tests/crash/Expectation.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/crash/MemoryFolder.h"
#include "tests/crash/ScriptRun.h"

namespace status = tamu::registry::status;

namespace crash {

using tamu::registry::Registry;

Expectation::Expectation(const Script& script) : script_(script) {
  const MemoryFolder folder;
  const std::string path = folder.path() + "/" + kRegistryName;
  script_.start.PutInto(folder.path());
  Registry registry(path.c_str(), kUserId);
  EXPECT_EQ(0u, Prepare(registry, Durability::kNone, script.space));
  EXPECT_EQ(status::kOk, registry.Initialize());
  std::vector<FolderImage> images = {FolderImage::Of(folder.path())};
  ScriptRun run(registry, folder.path());
  for (const Step& step : script_.steps) {
    answers_.push_back(run.Do(step));
    images.push_back(FolderImage::Of(folder.path()));
  }
  registry.Finalize();
  Find(images);
}

void Expectation::Find(const std::vector<FolderImage>& images) {
  const MemoryFolder folder;
  for (const FolderImage& image : images) {
    image.PutInto(folder.path());
    RegistryState state = RegistryState::Read(folder.path(), Durability::kNone);
    state.Decode(folder.path());
    states_.push_back(std::move(state));
  }
}

const RegistryState& Expectation::After(unsigned int step) const {
  return states_[std::min(step, script_.count())];
}

}  // namespace crash
