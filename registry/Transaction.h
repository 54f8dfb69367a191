// Several changes of a registry as one, for the length of a scope.
#pragma once

#include "registry/Registry.h"

namespace tamu::registry {

// Begins a transaction (Registry::BeginTransaction), and cancels it at its end unless Commit was
// called. All three are called by one thread.
class Transaction {
 public:
  // Begun() tells how that went.
  explicit Transaction(Registry& registry)
      : registry_(registry), begun_(registry.BeginTransaction()), isOpen_(begun_ == status::kOk) {}
  ~Transaction() { Cancel(); }
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;

  // The status of beginning it. When that has failed, operations in the scope are changes of their
  // own.
  unsigned int Begun() const { return begun_; }
  // Makes it happen: 0, or why nothing has happened. It is over then, whatever the answer. Again,
  // or when beginning it has failed: that failure, or kBadArgument.
  unsigned int Commit() {
    if (!isOpen_) return begun_ != status::kOk ? begun_ : status::kBadArgument;
    isOpen_ = false;
    return registry_.EndTransaction();
  }
  // Takes back what was done. Does nothing when it is over.
  void Cancel() {
    if (isOpen_) registry_.CancelTransaction();
    isOpen_ = false;
  }

 private:
  Registry& registry_;
  const unsigned int begun_;
  bool isOpen_;
};

}  // namespace tamu::registry
