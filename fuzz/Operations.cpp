// Operations with handles and without, compared with a model, as the input draws them.
#include "fuzz/support/Harness.h"
#include "tests/registry/HandlesModelRun.h"

namespace fuzz {
namespace {

void RunOperations(Bytes& in) {
  using namespace tamu::registry;
  HandlesModelRun run(ModelInput([&in](unsigned int limit) { return in.Below(limit); }));
  run.Run(4, 60, [&in] { return !in.IsOver(); });
}

const Harness sOperations("Operations", RunOperations);

}  // namespace
}  // namespace fuzz
