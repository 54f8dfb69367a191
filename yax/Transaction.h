// Several changes as one, and steps from an old version of the settings to the new one.
#pragma once

#include <functional>
#include <vector>

#include "yax/Settings.h"

namespace yax {

// What this thread changes in the scope happens whole or not at all: it is taken back unless Commit
// was called. Until then this thread alone sees it, and changes by others wait: be brief. Scopes
// nest, then the outermost decides. It must end before the registry does.
class Transaction {
 public:
  // Waits for those of others, if there are any.
  explicit Transaction(Registry& registry) {
    yax_transaction* begun = nullptr;
    status_ = yax_begin(registry.get(), &begun);
    transaction_.reset(begun);
  }

  // Whether it was begun.
  Status status() const { return status_; }
  // With any answer but success everything is as before the scope.
  Status Commit() { return yax_commit(transaction_.release()); }

 private:
  struct Cancel {
    void operator()(yax_transaction* transaction) const { yax_cancel(transaction); }
  };

  std::unique_ptr<yax_transaction, Cancel> transaction_;
  Status status_;
};

// Calls change(), which answers a Status, in a transaction: its changes happen if that is a
// success.
template <class Change>
Status Atomically(Registry& registry, Change change) {
  Transaction transaction(registry);
  if (!transaction.status()) return transaction.status();
  const Status changed = change();
  return changed ? transaction.Commit() : changed;
}

// The value of a key that counts the steps that were done.
constexpr char kVersionName[] = ".version";

// Does those of the numbered steps that were not done yet, in their order, each once and as one
// transaction with its number, which the key keeps. Stops at the first that fails. A key whose
// number is above theirs was written by a newer program: YAX_RANGE.
inline Status Migrate(Registry& registry, Key& key,
                      const std::vector<std::function<Status(Key&)>>& steps) {
  const Result<std::size_t> stored = key.Get<std::size_t>(kVersionName);
  if (!stored && stored.status() != Status(YAX_NOT_FOUND)) return stored.status();
  const std::size_t done = stored.value_or(0u);
  if (done > steps.size()) return YAX_RANGE;
  for (std::size_t i = done; i < steps.size(); ++i) {
    const Status step = Atomically(registry, [&] {
      const Status changed = steps[i](key);
      return changed ? key.Set(kVersionName, i + 1) : changed;
    });
    if (!step) return step;
  }
  return YAX_OK;
}

}  // namespace yax
