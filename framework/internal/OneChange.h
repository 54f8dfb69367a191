// What the framework changes in the registry at once. Internal.
#pragma once

#include "framework/YAXStatus.h"
#include "registry/Transaction.h"

// Runs work(), which answers a status of the framework, within a transaction. What it has changed
// in the registry stays when `stays(status)`, and otherwise nothing does. kRegistryFailed, too,
// when it cannot stay.
template <class Work, class Stays>
unsigned int InTransaction(tamu::registry::Registry& registry, Work work, Stays stays) {
  namespace status = tamu::registry::status;
  tamu::registry::Transaction transaction(registry);
  // A registry that is not open answers to each operation in its own way.
  if (transaction.Begun() != status::kOk && transaction.Begun() != status::kNoRight) {
    return yax_status::kRegistryFailed;
  }
  const unsigned int result = work();
  if (transaction.Begun() != status::kOk || !stays(result)) return result;
  return transaction.Commit() == status::kOk ? result : yax_status::kRegistryFailed;
}

// All of it, or nothing when it fails.
template <class Work>
unsigned int AsOneChange(tamu::registry::Registry& registry, Work work) {
  return InTransaction(registry, work,
                       [](unsigned int result) { return result == yax_status::kOk; });
}

// Several changes, each of which stays or not by itself; they happen at the same time.
template <class Work>
unsigned int InOneCommit(tamu::registry::Registry& registry, Work work) {
  return InTransaction(registry, work, [](unsigned int) { return true; });
}
