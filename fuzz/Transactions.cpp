// Transactions as the input draws them, compared with the same operations without any.
#include "fuzz/support/Harness.h"
#include "tests/registry/TransactionModelRun.h"

namespace fuzz {
namespace {

void RunTransactions(Bytes& in) {
  using namespace tamu::registry;
  TransactionModelRun run(ModelInput([&in](unsigned int limit) { return in.Below(limit); }));
  run.Run(1, 12, [&in] { return !in.IsOver(); });
}

const Harness sTransactions("Transactions", RunTransactions);

}  // namespace
}  // namespace fuzz
