// Random transactions, compared with the same operations without any.
#include "tests/registry/ModelSeeds.h"
#include "tests/registry/TransactionModelRun.h"

namespace tamu::registry {
namespace {

constexpr unsigned int kModelRounds = 25;
constexpr unsigned int kTransactions = 40;  // in a round; five seeds

class SeededTransactionRun {
 public:
  explicit SeededTransactionRun(unsigned int seed) : run_(ModelInput(seed)) {}
  void Run() {
    run_.Run(kModelRounds, kTransactions, [] { return true; });
  }

 private:
  TransactionModelRun run_;
};

TEST(RegistryTransactionModel, AgreesUnderFixedSeeds) {
  for (const unsigned int seed : {1u, 22u, 333u, 4444u}) RunUnder<SeededTransactionRun>(seed);
}

TEST(RegistryTransactionModel, AgreesUnderANewSeed) {
  RunUnderANewSeed<SeededTransactionRun>();
}

}  // namespace
}  // namespace tamu::registry
