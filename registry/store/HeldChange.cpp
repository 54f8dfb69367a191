#include "registry/store/HeldChange.h"

#include <utility>

namespace tamu::registry {

Status HeldChange::Begin(FileStore& store) {
  LockedAccess access(store);
  if (!store.file_.IsOpen() || store.file_.IsBlocked() || !store.undo_.IsEmpty()) {
    return status::kInputOutput;
  }
  if (store.changes_ > 0) return status::kBusy;
  Status result = tables_.CopyFrom(store.tables_);
  if (result.IsOk()) result = undo_.MakeSwapCheap();
  if (!result.IsOk()) {
    undo_.Clear();
    tables_.Clear();
    return result;
  }
  store_ = &store;
  store.TakeLock();  // kept until the end
  isGathering_ = true;
  changes_ = 1;
  return result;
}

void HeldChange::Exchange() {
  if (!undo_.IsEmpty() || !store_->undo_.IsEmpty()) store_->ForgetPaths();
  store_->tables_.Swap(tables_);
  store_->undo_.Swap(undo_);
  store_->file_.ExchangeGathered(gathered_, isGathering_);
  std::swap(store_->changes_, changes_);
}

bool HeldChange::UndoTo(const Mark& mark) {
  Scope scope(*this);
  return store_->undo_.UndoTo(mark, store_->file_, store_->tables_);
}

// From here on it is a change like any other, with its last operation to be ended.
Status HeldChange::Finish(bool isKept) {
  FileStore& store = *store_;
  Status result = status::kOk;
  LockedAccess access(store);
  Exchange();
  {
    Changes last(store, Mark());
    if (isKept) result = last.Keep(result);
  }
  tables_.Clear();
  store_ = nullptr;
  store.GiveLock();
  return result;
}

Status HeldChange::End() {
  return Finish(true);
}

void HeldChange::Cancel() {
  if (IsOpen()) Finish(false).Ignore();
}

}  // namespace tamu::registry
