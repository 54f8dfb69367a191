// Whatever a registry file contains: every operation answers a status, and comes back.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "tests/registry/EveryOperation.h"

namespace status = tamu::registry::status;

using namespace tamu::registry;
using namespace tamu::registry::hostile;

namespace {

constexpr int kMutations = 600;  // per seed

void RunSeed(unsigned int seed) {
  TempDir folder;
  const std::string sound = SoundFile(folder / "sound.rce");
  std::mt19937 random(seed);
  const std::string path = folder / "mutated.rce";
  int openedRounds = 0;
  for (int round = 0; round < kMutations; ++round) {
    SCOPED_TRACE("seed " + std::to_string(seed) + " round " + std::to_string(round));
    std::string file = sound;
    Mutate(random, &file);
    PutFile(path, file);
    Registry registry(path.c_str(), kAdministratorId);
    RegistryOptions options;
    options.durability = Durability::kNone;
    options.space = round % 2 == 0 ? SpacePolicy::kReuse : SpacePolicy::kExact;
    EXPECT_EQ(status::kOk, registry.SetOptions(options));
    const unsigned int opened = registry.Initialize();
    ExpectKnown(opened);
    if (opened != 0) {
      EXPECT_EQ(GetFile(path), file) << "a file that is refused is left alone";
      continue;
    }
    ++openedRounds;
    ReadEverything(registry);
    for (int i = 0; i < 20; ++i) ChangeSomething(registry, random);
    ReadEverything(registry);
    CareForFile(registry);
    ReadEverything(registry);
  }
  EXPECT_GT(openedRounds, kMutations / 2);
}

TEST(RegistryMutation, EveryOperationOnADamagedFileAnswers) {
  for (const unsigned int seed : {1u, 2u, 3u}) RunSeed(seed);
}

}  // namespace
