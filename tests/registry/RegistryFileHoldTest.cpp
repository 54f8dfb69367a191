// Who may open a registry that others have open.
#include <sys/stat.h>

#include "tests/registry/RegistryRig.h"
#include "tests/support/FileLocks.h"
#include "tests/support/PossibleModes.h"

namespace tamu::registry {
namespace {

RegistryOptions OptionsOf(Durability mode, bool isToRead = false) {
  RegistryOptions options;
  options.durability = mode;
  options.readOnly = isToRead;
  return options;
}

unsigned int Opened(Registry& registry, const RegistryOptions& options) {
  const unsigned int result = registry.SetOptions(options);
  return result == 0 ? registry.Initialize() : result;
}

// What an opening answers in another process.
unsigned int OpenedElsewhere(const std::string& path, const RegistryOptions& options) {
  return AnswerOfChild([&]() -> unsigned int {
    Registry registry(path.c_str(), kAdmin);
    EndChild(static_cast<int>(Opened(registry, options)));
  });
}

class RegistryFileHold : public ::testing::Test {
 protected:
  void SetUp() override {
    Registry registry(path.c_str(), kAdmin);
    ASSERT_EQ(0u, registry.Initialize());
    registry.Finalize();
    if (!HasFileLocks(path)) GTEST_SKIP() << "there are no locks of open files here";
  }

  TempDir dir;
  const std::string path = dir / "registry";
  const std::vector<Durability> modes = PossibleModes();
};

TEST_F(RegistryFileHold, WithoutAJournalARegistryIsForOneProcess) {
  Registry registry(path.c_str(), kAdmin);
  ASSERT_EQ(0u, Opened(registry, OptionsOf(Durability::kNone)));
  for (const Durability mode : modes) {
    EXPECT_EQ(status::kNoSpace, OpenedElsewhere(path, OptionsOf(mode)));
  }
  EXPECT_EQ(status::kNoSpace, OpenedElsewhere(path, OptionsOf(Durability::kNone, true)));
  EXPECT_EQ("registry ", NamesIn(dir / ""));
  EXPECT_EQ(0u, registry.CreateKey(0, "key"));
  registry.Finalize();
  for (const Durability mode : modes) {
    EXPECT_EQ(0u, OpenedElsewhere(path, OptionsOf(mode)));
  }
}

TEST_F(RegistryFileHold, OneProcessOpensItMoreThanOnce) {
  Registry first(path.c_str(), kAdmin);
  ASSERT_EQ(0u, Opened(first, OptionsOf(Durability::kNone)));
  const std::string otherPath = dir / "./registry";
  {
    Registry second(otherPath.c_str(), kAdmin);
    ASSERT_EQ(0u, Opened(second, OptionsOf(Durability::kNone)));
    EXPECT_EQ(0u, second.CreateKey(0, "key"));
    first.Finalize();
    EXPECT_EQ(status::kNoSpace, OpenedElsewhere(path, OptionsOf(Durability::kNone)));
  }
  EXPECT_EQ(0u, OpenedElsewhere(path, OptionsOf(Durability::kNone)));
}

TEST_F(RegistryFileHold, AChildDoesNotKeepItForItsParent) {
  Registry registry(path.c_str(), kAdmin);
  ASSERT_EQ(0u, Opened(registry, OptionsOf(Durability::kNone)));
  int ends[2] = {-1, -1};
  ASSERT_EQ(0, pipe(ends));
  const pid_t child = fork();
  if (child == 0) {
    char byte = 0;
    close(ends[1]);
    static_cast<void>(!read(ends[0], &byte, 1));
    EndChild(0);
  }
  registry.Finalize();
  EXPECT_EQ(0u, OpenedElsewhere(path, OptionsOf(Durability::kNone)));
  close(ends[1]);
  close(ends[0]);
  EXPECT_EQ(child, waitpid(child, nullptr, 0));
}

// The journals of the two names would be two files.
TEST_F(RegistryFileHold, AnotherFileAtThePathIsRefusedUntilTheOldOneIsClosed) {
  const std::string other = dir / "other";
  PutFile(other, GetFile(path));
  Registry registry(path.c_str(), kAdmin);
  ASSERT_EQ(0u, registry.Initialize());
  const bool hasJournal = registry.EffectiveDurability() != Durability::kNone;
  ASSERT_EQ(0, std::rename(other.c_str(), path.c_str()));
  const RegistryOptions any = OptionsOf(modes.back());
  EXPECT_EQ(hasJournal ? status::kNoSpace : 0u, OpenedElsewhere(path, any));
  EXPECT_EQ(0u, registry.CreateKey(0, "in the old file"));
  registry.Finalize();
  EXPECT_EQ(0u, OpenedElsewhere(path, any));
  ASSERT_EQ(0u, registry.Initialize());
  EXPECT_EQ(status::kNotFound, registry.SetDefaultValue(0, "in the old file", 1));
}

TEST_F(RegistryFileHold, ASecondNameOfTheFileIsRefusedWhileTheFirstIsOpen) {
  const std::string second = dir / "second";
  const std::string symbolic = dir / "symbolic";
  ASSERT_EQ(0, link(path.c_str(), second.c_str()));
  ASSERT_EQ(0, symlink(path.c_str(), symbolic.c_str()));
  for (const Durability mode : modes) {
    Registry registry(path.c_str(), kAdmin);
    ASSERT_EQ(0u, Opened(registry, OptionsOf(mode)));
    EXPECT_EQ(status::kNoSpace, OpenedElsewhere(second, OptionsOf(mode)));
    if (mode != Durability::kNone && modes.size() > 2) {
      EXPECT_EQ(0u, OpenedElsewhere(symbolic, OptionsOf(mode)));
    }
    registry.Finalize();
    EXPECT_EQ(0u, OpenedElsewhere(second, OptionsOf(mode)));
  }
}

}  // namespace
}  // namespace tamu::registry
