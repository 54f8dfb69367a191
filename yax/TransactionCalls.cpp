// Transactions of the C interface.
#include <new>

#include "yax/Failure.h"

struct yax_transaction {
  yax_registry* owner;  // one of its references
};

using namespace yax;

namespace {

unsigned int ToldOf(unsigned int result, const char* reason = nullptr) {
  return Told({"the transaction", "", "", reason}, result);
}

// Ends the object, not what it stands for.
void Drop(yax_transaction* transaction) {
  LetGo(transaction->owner);
  delete transaction;
}

}  // namespace

yax_status yax_begin(yax_registry* registry, yax_transaction** transaction) {
  if (registry == nullptr) return ToldOf(status::kBadArgument, kNotOpen);
  if (transaction == nullptr) return ToldOf(status::kBadArgument, kNullPointer);
  std::unique_ptr<yax_transaction> made(new (std::nothrow) yax_transaction{registry});
  if (made == nullptr) return ToldOf(status::kNoMemory);
  const unsigned int result = registry->registry.BeginTransaction();
  if (result != status::kOk) return ToldOf(result);
  Hold(registry);
  *transaction = made.release();
  return status::kOk;
}

yax_status yax_commit(yax_transaction* transaction) {
  if (transaction == nullptr) return ToldOf(status::kBadArgument, "it was not begun");
  const unsigned int result = transaction->owner->registry.EndTransaction();
  Drop(transaction);
  return ToldOf(result);
}

void yax_cancel(yax_transaction* transaction) {
  if (transaction == nullptr) return;
  transaction->owner->registry.CancelTransaction();  // dropped: it fails only when there is none
  Drop(transaction);
}
