// Checking and compacting a file that cannot be mapped, with each of the calls failing in turn.
#include "tests/fault/FaultFiles.h"
#include "tests/registry/RegistryRig.h"
#include "tests/support/FaultCalls.h"

namespace tamu::registry {
namespace {

using faults::Mode;

class CompactingFaultTest : public ::testing::Test {
 protected:
  CompactingFaultTest() {
    faults::RefuseMappings(true);
    Registry registry(path.c_str(), kAdmin);
    faults::WriteStraight(registry);
    EXPECT_EQ(status::kOk, registry.Initialize());
    for (const char* key : {"temperature", "temp", "gone", "pressure/high"}) {
      EXPECT_EQ(status::kOk, registry.MakeKey(key));
      ExactValue large(2, std::string(300, 'd'));
      ExactValue small(1, "1234");
      EXPECT_EQ(status::kOk, registry.PutValue(key, "large", large, true));
      EXPECT_EQ(status::kOk, registry.PutValue(key, "small", small, true));
      EXPECT_EQ(status::kOk, registry.SetDefaultValue(0, key, 7));
    }
    EXPECT_EQ(status::kOk, registry.DeleteKey(0, "gone"));
    registry.Finalize();
    start = GetFile(path);
  }
  ~CompactingFaultTest() override {
    faults::Disarm();
    faults::RefuseMappings(false);
  }

  // An operation on the file as it was at the start, in which a call fails. The calls that it made.
  template <class Operation>
  unsigned int Fail(unsigned int number, unsigned int* result, Operation operation) {
    PutFile(path, start);
    Registry registry(path.c_str(), kAdmin);
    faults::WriteStraight(registry);
    EXPECT_EQ(status::kOk, registry.Initialize());
    faults::ArmAll(Mode::kFailOnce, number);
    *result = operation(registry);
    faults::Disarm();
    return faults::Count();
  }

  TempDir folder;
  const std::string path = folder / "registry";
  std::string start;
};

// The last thousand calls one by one: most of those before read one slot after the other.
TEST_F(CompactingFaultTest, KeepsAllKeysWhereverACallFails) {
  const auto compact = [](Registry& registry) { return registry.Compact(); };
  unsigned int result = 0;
  const unsigned int all = Fail(0xFFFFFFFF, &result, compact);
  EXPECT_EQ(status::kOk, result);
  const unsigned int each = all > 1000 ? all - 1000 : 0;
  unsigned int failures = 0;
  for (unsigned int number = 0; number < all && !faults::TooManyFailures();
       number += number < each ? 131 : YAX_TEST_STRIDE) {
    SCOPED_TRACE(number);
    Fail(number, &result, compact);
    EXPECT_TRUE(result == 0 || result == status::kInputOutput || result == status::kInvalidFile)
        << result;
    failures += result != 0 ? 1 : 0;
    EXPECT_EQ("", StructureFindings(path));
    Registry registry(path.c_str(), kAdmin);
    faults::WriteStraight(registry);
    ASSERT_EQ(status::kOk, registry.Initialize());
    EXPECT_EQ("type 2: " + std::string(300, 'd'), Read(registry, "pressure/high", "large"));
    EXPECT_EQ("status 2", Read(registry, "gone", "small"));
  }
  EXPECT_LT(5u, failures);
}

}  // namespace
}  // namespace tamu::registry
