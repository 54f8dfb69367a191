#include "framework/internal/OneChange.h"

#include "framework/YAXStatus.h"
#include "registry/Transaction.h"

namespace status = tamu::registry::status;

namespace {

unsigned int InTransaction(tamu::registry::Registry& registry, const RegistryWork& work,
                           bool staysAnyhow) {
  tamu::registry::Transaction transaction(registry);
  // A registry that is not open answers to each operation in its own way.
  if (transaction.Begun() != status::kOk && transaction.Begun() != status::kNoRight) {
    return yax_framework::kRegistryFailed;
  }
  const unsigned int result = work();
  const bool stays = staysAnyhow || result == yax_framework::kOk;
  if (transaction.Begun() != status::kOk || !stays) return result;
  return transaction.Commit() == status::kOk ? result : yax_framework::kRegistryFailed;
}

}  // namespace

unsigned int AsOneChange(tamu::registry::Registry& registry, const RegistryWork& work) {
  return InTransaction(registry, work, false);
}

unsigned int InOneCommit(tamu::registry::Registry& registry, const RegistryWork& work) {
  return InTransaction(registry, work, true);
}
