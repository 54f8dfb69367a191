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

// How many steps were done, as the key tells. More than are known: YAX_RANGE.
inline Result<std::size_t> StepsDone(const Key& key, std::size_t known) {
  Result<std::size_t> done = key.Get<std::size_t>(kVersionName);
  if (!done && done.status() == Status(YAX_NOT_FOUND)) done = std::size_t{0};
  if (done && *done > known) return Status(YAX_RANGE);
  return done;
}

// Does those of the numbered steps that were not done yet, in their order, each once and as one
// transaction with its number, which the key keeps; programs that migrate at once share them. Stops
// at the first that fails. A key whose number is above theirs was written by a newer program:
// YAX_RANGE.
inline Status Migrate(Registry& registry, Key& key,
                      const std::vector<std::function<Status(Key&)>>& steps) {
  Result<std::size_t> done = StepsDone(key, steps.size());
  while (done && *done < steps.size()) {
    const Status step = Atomically(registry, [&]() -> Status {
      done = StepsDone(key, steps.size());  // another program may have done some meanwhile
      if (!done || *done == steps.size()) return done.status();
      const Status changed = steps[*done](key);
      return changed ? key.Set(kVersionName, ++*done) : changed;
    });
    if (!step) return step;
  }
  return done.status();
}

}  // namespace yax
