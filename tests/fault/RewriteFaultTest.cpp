// The whole file exchanged where calls fail: all of it, or nothing.
#include "tests/fault/FaultFiles.h"
#include "tests/registry/RegistryRig.h"
#include "tests/support/FaultCalls.h"
#include "tests/support/GivenBytes.h"
#include "tests/support/PossibleModes.h"

namespace tamu::registry {
namespace {

using faults::Mode;

class RewriteFaultTest : public ::testing::TestWithParam<Durability> {
 protected:
  ~RewriteFaultTest() override { faults::Disarm(); }

  unsigned int Open(Registry& registry) {
    RegistryOptions options;
    options.durability = GetParam();
    EXPECT_EQ(status::kOk, registry.SetOptions(options));
    return registry.Initialize();
  }
  // The bytes of a registry whose key "k" has this default value, and as many long values.
  std::string Content(unsigned int number, unsigned int values) {
    remove(path.c_str());
    Registry registry(path.c_str(), kAdmin);
    EXPECT_EQ(status::kOk, Open(registry));
    EXPECT_EQ(status::kOk, registry.CreateKey(0, "k", number));
    for (unsigned int i = 0; i < values; ++i) {
      ExactValue value(3, std::string(1000, 'v'));
      EXPECT_EQ(status::kOk, registry.CreateValue(0, "k", std::to_string(i).c_str(), &value));
    }
    registry.Finalize();
    return GetFile(path);
  }
  static unsigned long long NumberOf(Registry& registry, unsigned int handle, const char* key) {
    unsigned long long number = 0;
    EXPECT_EQ(status::kOk, registry.GetDefaultValue(handle, key, &number));
    return number;
  }
  // The default value in the file, when it is opened anew.
  unsigned long long NumberInFile() {
    Registry registry(path.c_str(), kAdmin);
    EXPECT_EQ(status::kOk, Open(registry));
    return NumberOf(registry, 0, "k");
  }

  // Exchanges one content for the other, with a fault at each of the calls in turn.
  void FailEverywhere(Mode mode, const std::string& from, const std::string& to) {
    for (unsigned int call = 0;; ++call) {
      SCOPED_TRACE(std::string(faults::Name(mode)) + " " + std::to_string(call));
      PutFile(path, from);
      unsigned int result = 0;
      {
        Registry registry(path.c_str(), kAdmin);
        ASSERT_EQ(status::kOk, Open(registry));
        unsigned int handle = 0;
        ASSERT_EQ(status::kOk, registry.OpenKey("k", &handle));
        GivenBytes rewriter(to);
        faults::Arm(mode, call);
        result = registry.RewriteFile(rewriter);
        const bool isOver = faults::Count() <= call;
        faults::Disarm();
        if (result == 0) {
          EXPECT_EQ(2u, NumberOf(registry, handle, ""));
        }
        if (isOver) {
          EXPECT_EQ(status::kOk, result);
          EXPECT_GT(call, 0u);
          return;
        }
        EXPECT_TRUE(result == 0 || result == status::kInputOutput || result == status::kNoSpace)
            << result;
      }
      // With kPower nobody knows what a disk has that refuses to be synced.
      const unsigned long long number = NumberInFile();
      const bool isUnknown = GetParam() == Durability::kPower && result == status::kInputOutput;
      EXPECT_TRUE(number == (result == 0 ? 2u : 1u) || (isUnknown && number == 2u)) << number;
      EXPECT_EQ("", StructureFindings(path));
    }
  }

  TempDir dir;
  const std::string path = dir / "registry";
};

TEST_P(RewriteFaultTest, ASmallerContentIsThereWholeOrNotAtAll) {
  const std::string from = Content(1, 80);
  const std::string to = Content(2, 0);
  for (const Mode mode : {Mode::kFailOnce, Mode::kShortOnce}) FailEverywhere(mode, from, to);
}

TEST_P(RewriteFaultTest, ALargerContentIsThereWholeOrNotAtAll) {
  const std::string from = Content(1, 0);
  const std::string to = Content(2, 80);
  for (const Mode mode : {Mode::kFailOnce, Mode::kShortOnce}) FailEverywhere(mode, from, to);
}

INSTANTIATE_TEST_SUITE_P(Modes, RewriteFaultTest, ::testing::ValuesIn(PossibleModes()));

}  // namespace
}  // namespace tamu::registry
