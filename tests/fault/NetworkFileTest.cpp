// A registry on a file system that several machines have.
#include "tests/fault/FaultFiles.h"
#include "tests/registry/RegistryRig.h"
#include "tests/support/FaultCalls.h"
#include "tests/support/FileLocks.h"

namespace tamu::registry {
namespace {

class NetworkFileTest : public ::testing::Test {
 protected:
  NetworkFileTest() { faults::PretendNetwork(true); }
  ~NetworkFileTest() override { faults::PretendNetwork(false); }

  unsigned int Opened(Registry& registry, Durability mode, bool isToRead = false) {
    RegistryOptions options;
    options.durability = mode;
    options.readOnly = isToRead;
    options.sideFolder = sideFolder;
    EXPECT_EQ(status::kOk, registry.SetOptions(options));
    return registry.Initialize();
  }
  // What an opening answers in another process: it knows no more of this one than another machine.
  unsigned int OpenedElsewhere(bool isToRead) {
    return AnswerOfChild([&]() -> unsigned int {
      Registry registry(path.c_str(), kAdmin);
      RegistryOptions options;
      options.readOnly = isToRead;
      if (isToRead) registry.SetOptions(options);
      EndChild(static_cast<int>(registry.Initialize()));
    });
  }

  TempDir dir;
  const std::string path = dir / "registry";
  const char* sideFolder = nullptr;
};

TEST_F(NetworkFileTest, IsForOneProcessAtATime) {
  {
    Registry registry(path.c_str(), kAdmin);
    ASSERT_EQ(status::kOk, registry.Initialize());
    EXPECT_EQ(Durability::kNone, registry.EffectiveDurability());
    EXPECT_EQ(status::kOk, registry.CreateKey(0, "key", 7));
    const unsigned int refused = HasFileLocks(path) ? status::kNoSpace : status::kOk;
    EXPECT_EQ(refused, OpenedElsewhere(false));
    EXPECT_EQ(refused, OpenedElsewhere(true));
  }
  EXPECT_EQ(status::kOk, OpenedElsewhere(false));
  EXPECT_EQ(status::kOk, OpenedElsewhere(true));
}

// Nor where the journal would be on this machine.
TEST_F(NetworkFileTest, CannotHaveWhatNeedsMemoryOfAllItsPrograms) {
  sideFolder = "/tmp";
  Registry registry(path.c_str(), kAdmin);
  EXPECT_EQ(status::kNoSpace, Opened(registry, Durability::kProcess));
}

TEST_F(NetworkFileTest, CanSurviveAPowerCutForOneProcess) {
  Registry registry(path.c_str(), kAdmin);
  ASSERT_EQ(status::kOk, Opened(registry, Durability::kPower));
  EXPECT_EQ(Durability::kPower, registry.EffectiveDurability());
  EXPECT_EQ(status::kOk, registry.CreateKey(0, "key", 7));
  EXPECT_EQ(HasFileLocks(path) ? status::kNoSpace : status::kOk, OpenedElsewhere(false));
  registry.Finalize();
  EXPECT_EQ(status::kOk, OpenedElsewhere(false));
}

}  // namespace
}  // namespace tamu::registry
