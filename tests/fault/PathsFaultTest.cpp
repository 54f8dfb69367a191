// Paths that are remembered while a change could be undone only in part.
#include "tests/fault/FaultFiles.h"
#include "tests/registry/RegistryRig.h"
#include "tests/support/FaultCalls.h"

namespace tamu::registry {
namespace {

using faults::Mode;

class PathsFaultTest : public ::testing::Test {
 protected:
  ~PathsFaultTest() override { faults::Disarm(); }

  void Open(Registry& registry) {
    RegistryOptions options;
    options.durability = Durability::kPower;
    EXPECT_EQ(status::kOk, registry.SetOptions(options));
    ASSERT_EQ(status::kOk, registry.Initialize());
  }
  void MakeKeys(Registry& registry) {
    for (const char* key : {"x", "y", "y/z", "yard"}) {
      EXPECT_EQ(status::kOk, registry.CreateKey(0, key, 1));
    }
    EXPECT_EQ(status::kOk, registry.DeleteKey(0, "x"));  // the name stays
    for (unsigned int i = 0; i < 70; ++i) {
      EXPECT_EQ(status::kOk, registry.CreateKey(0, ("fill" + std::to_string(i * 7919)).c_str()));
    }
  }
  static std::string Answers(Registry& registry) {
    std::string answers;
    for (const char* key : kPaths) {
      unsigned char rights = 0;
      unsigned long long number = 0;
      const unsigned int told = registry.GetKeyPermission(0, key, &rights);
      const unsigned int had = registry.GetDefaultValue(0, key, &number);
      answers += std::string(key) + ": " + std::to_string(told) + ", " + std::to_string(had) +
                 " = " + std::to_string(number) + "\n";
    }
    return answers;
  }

  static constexpr const char* kPaths[] = {"x/", "y", "y/", "y/z", "new", "new/", "yard"};
  TempDir folder;
  const std::string path = folder / "registry";
};

// A change fails at a write, and so do all later ones; then one write of a change to a key fails.
TEST_F(PathsFaultTest, LeadWhereAWalkLeadsOnceAnUndoingIsFinished) {
  {
    Registry registry(path.c_str(), kAdmin);
    Open(registry);
    MakeKeys(registry);
  }
  const std::string made = GetFile(path);
  unsigned int failed = 0;
  for (unsigned int number = 0; number < 8; ++number) {
    for (const char* key : kPaths) {
      SCOPED_TRACE(std::to_string(number) + " " + key);
      PutFile(path, made);
      Registry registry(path.c_str(), kAdmin);
      Open(registry);
      Answers(registry);
      faults::ArmOn(path, Mode::kFailFrom, number);
      const unsigned int moved = registry.MoveKey("y", "new");
      if (moved != status::kOk) ++failed;
      faults::ArmOn(path, Mode::kFailOnce, 0);
      registry.SetKeyPermission(0, key, 15);
      faults::Disarm();
      const std::string remembered = Answers(registry);
      registry.CreateKey(0, "other", 1);  // forgets them
      EXPECT_EQ(Answers(registry), remembered);
    }
  }
  EXPECT_LT(0u, failed);
}

}  // namespace
}  // namespace tamu::registry
