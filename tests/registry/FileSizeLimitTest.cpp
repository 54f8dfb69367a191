// A process that may not make files longer than it is told (RLIMIT_FSIZE).
#include "tests/registry/RegistryRig.h"
#include "tests/support/PossibleModes.h"

namespace tamu::registry {
namespace {

constexpr unsigned int kNewFile = 75888;  // bytes of a new registry

std::string NameOf(unsigned int number) {
  return "value" + std::to_string(number);
}

std::string DataOf(unsigned int number) {
  return std::string(1000, static_cast<char>('a' + number % 26));
}

class FileSizeLimit : public ::testing::TestWithParam<Durability> {
 protected:
  // Sets values of 1,000 bytes until that fails, in a process with a limit; `count` of them are
  // there then.
  void Fill(unsigned int limit) {
    count = 0;
    ASSERT_TRUE(InChild([&] {
      LimitFileSize(limit);
      Registry registry(path.c_str(), kAdmin);
      if (registry.SetOptions(Options()) != 0 || registry.Initialize() != 0) return false;
      const unsigned int status = FillUntilRefused(registry);
      if (status != status::kNoSpace && status != status::kInputOutput) return false;
      PutFile(counted, std::to_string(count));
      return true;
    }));
    count = static_cast<unsigned int>(std::stoul(GetFile(counted)));
  }
  RegistryOptions Options() const {
    RegistryOptions options;
    options.durability = GetParam();
    return options;
  }
  unsigned int FillUntilRefused(Registry& registry) {
    if (registry.CreateKey(0, "key") != 0) return 0;
    for (;; ++count) {
      ExactValue value(kValueTypeString, DataOf(count));
      const unsigned int status = registry.CreateValue(0, "key", NameOf(count).c_str(), &value);
      if (status != 0) return status;
    }
  }

  TempDir folder;
  const std::string path = folder / "registry";
  const std::string counted = folder / "count";
  unsigned int count = 0;
};

TEST_P(FileSizeLimit, KeepsWhatWasAcknowledgedAndNothingElse) {
  {
    Registry registry(path.c_str(), kAdmin);
    ASSERT_EQ(status::kOk, registry.SetOptions(Options()));
    ASSERT_EQ(status::kOk, registry.Initialize());
  }
  const std::string empty = GetFile(path);
  for (const unsigned int beyond : {0u, 1u, 4096u, 20000u, 100000u}) {
    SCOPED_TRACE(beyond);
    PutFile(path, empty);
    ASSERT_NO_FATAL_FAILURE(Fill(kNewFile + beyond));
    EXPECT_GE(count, 5u);
    EXPECT_LE(GetFile(path).size(), kNewFile + beyond);
    EXPECT_EQ("", StructureFindings(path));
    Registry registry(path.c_str(), kAdmin);
    ASSERT_EQ(status::kOk, registry.Initialize());
    for (unsigned int i = 0; i < count; ++i) {
      EXPECT_EQ(Read(registry, "key", NameOf(i).c_str()), "type 1: " + DataOf(i));
    }
    EXPECT_EQ("status 2", Read(registry, "key", NameOf(count).c_str()));
    ExactValue value(kValueTypeString, DataOf(count));
    EXPECT_EQ(status::kOk, registry.CreateValue(0, "key", NameOf(count).c_str(), &value));
  }
}

INSTANTIATE_TEST_SUITE_P(, FileSizeLimit, ::testing::ValuesIn(PossibleModes()));

}  // namespace
}  // namespace tamu::registry
