// Whatever a backup file contains: either it is refused and no byte of the registry changes, or the
// registry is sound and answers.
#include <random>

#include "tests/registry/filetree/SmallRegistry.h"

namespace tamu::registry {

namespace {

TEST(RestoreMutation, ABackupCutAnywhereIsIncomplete) {
  SmallRegistry registry;
  const std::string sound = SoundBackup();
  for (size_t length = 0; length < sound.size(); ++length) {
    EXPECT_EQ(5u, TryBackup(registry, sound.substr(0, length))) << length;
  }
  EXPECT_EQ(0u, TryBackup(registry, sound));
}

TEST(RestoreMutation, EveryByteChanged) {
  SmallRegistry registry;
  const std::string sound = SoundBackup();
  unsigned int restored = 0;
  for (size_t at = 0; at < sound.size(); ++at) {
    const unsigned int was = static_cast<unsigned char>(sound[at]);
    for (unsigned int now : {was ^ 0x01u, was ^ 0x10u, was ^ 0x80u, 0x00u, 0x2Fu, 0xFFu}) {
      if (now == was) continue;
      SCOPED_TRACE("byte " + std::to_string(at) + " is " + std::to_string(now));
      std::string changed = sound;
      changed[at] = static_cast<char>(now);
      if (TryBackup(registry, changed) == 0) ++restored;
    }
  }
  EXPECT_GT(restored, sound.size());
  EXPECT_LT(restored, 5 * sound.size());
}

void Mutate(std::mt19937& random, std::string* bytes) {
  const unsigned int changes = static_cast<unsigned int>(1 + random() % 4);
  for (unsigned int i = 0; i < changes && !bytes->empty(); ++i) {
    const size_t at = random() % bytes->size();
    const size_t from = random() % bytes->size();
    static const size_t kLengths[] = {1, 4, 24, 40, 52};
    const size_t length = kLengths[random() % 5];
    switch (random() % 8) {
      case 0:
        (*bytes)[at] = static_cast<char>(random());
        break;
      case 1:
        (*bytes)[at] = static_cast<char>((*bytes)[at] ^ 1 << random() % 8);
        break;
      case 2:
        (*bytes)[at] = static_cast<char>(random() % 2 == 0 ? 0xFF : 0);
        break;
      case 3:
        bytes->replace(at, length, bytes->substr(from, length));
        break;
      case 4:
        bytes->insert(at, bytes->substr(from, length));
        break;
      case 5:
        bytes->erase(at, length);
        break;
      case 6:
        bytes->append(bytes->substr(from, 200));
        break;
      default:
        if (random() % 8 == 0) bytes->resize(at);
        break;
    }
  }
}

TEST(RestoreMutation, TenThousandMutatedBackups) {
  constexpr unsigned int kSeed = 1;
  constexpr unsigned int kRounds = 10000;
  SmallRegistry registry;
  const std::string sound = SoundBackup();
  std::mt19937 random(kSeed);
  unsigned int restored = 0;
  for (unsigned int round = 0; round < kRounds && !::testing::Test::HasFailure(); ++round) {
    SCOPED_TRACE("seed " + std::to_string(kSeed) + " round " + std::to_string(round));
    std::string bytes = sound;
    Mutate(random, &bytes);
    if (TryBackup(registry, bytes) == 0) ++restored;
  }
  EXPECT_GT(restored, kRounds / 20);
  EXPECT_LT(restored, kRounds / 2);
}

}  // namespace

}  // namespace tamu::registry
