#include "tests/crash/Recording.h"

#include <gtest/gtest.h>

#include "tests/crash/MemoryFolder.h"
#include "tests/crash/RecordedCalls.h"
#include "tests/crash/RegistryState.h"
#include "tests/crash/ScriptRun.h"

namespace status = tamu::registry::status;

namespace crash {

using tamu::registry::Registry;

Recording::Recording(const Script& script, Durability durability) {
  const MemoryFolder folder;
  const std::string path = folder.path() + "/" + kRegistryName;
  script.start.PutInto(folder.path());
  Registry registry(path.c_str(), kUserId);
  EXPECT_EQ(0u, Prepare(registry, durability, script.space));
  StartRecording(script.start);
  EXPECT_EQ(status::kOk, registry.Initialize());
  ScriptRun run(registry, folder.path());
  const auto keepFile = [&] {
    files_.push_back(MeaningfulBytes(FolderImage::Of(folder.path()).BytesAt(kRegistryName)));
  };
  keepFile();
  for (const Step& step : script.steps) {
    EndStep();
    answers_.push_back(run.Do(step));
    keepFile();
  }
  EndStep();
  registry.Finalize();
  calls_ = StopRecording();
}

}  // namespace crash
