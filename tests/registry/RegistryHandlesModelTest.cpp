// Random operations with and without handles, on a registry and on a model of it: every answer must
// agree, and after each batch the file, while handles are open, must be what operations without
// handles leave. One seed is new in every run; YAX_TEST_SEED runs that one alone again.
#include "tests/registry/HandlesModelRun.h"
#include "tests/registry/ModelSeeds.h"

namespace tamu::registry {

namespace {

constexpr unsigned int kHandleBatches = 40;
constexpr unsigned int kHandleOperations = 250;  // in a batch

class SeededHandlesRun {
 public:
  explicit SeededHandlesRun(unsigned int seed) : run_(ModelInput(seed)) {}
  void Run() {
    run_.Run(kHandleBatches, kHandleOperations, [] { return true; });
  }

 private:
  HandlesModelRun run_;
};

class RegistryHandlesModelTest : public ::testing::TestWithParam<unsigned int> {};

TEST_P(RegistryHandlesModelTest, AgreesUnderAFixedSeed) {
  if (GivenSeed() != nullptr) GTEST_SKIP() << "only the given seed is run";
  RunUnder<SeededHandlesRun>(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Seeds, RegistryHandlesModelTest, ::testing::Values(1u, 2u, 3u, 4u));

TEST(RegistryHandlesModel, AgreesUnderANewSeed) {
  RunUnderANewSeed<SeededHandlesRun>();
}

}  // namespace

}  // namespace tamu::registry
