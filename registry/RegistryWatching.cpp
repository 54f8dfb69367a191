// Waiting for changes, by whomever.
#include "registry/RegistryRouting.h"
#include "registry/filetree/WatchedChanges.h"

namespace tamu::registry {

unsigned long long Registry::ChangeNumber() const {
  return IsReady() ? keyTree->File()->ChangeNumber() : 0;
}

unsigned int Registry::WaitForChange(unsigned long long after, unsigned int milliseconds) {
  if (!IsReady()) return status::kNoRight;
  if (instance->transaction.IsMine() || instance->IsWalkedHere()) return status::kBusy;
  const unsigned long long start = PCWord::Now();
  for (;;) {
    const unsigned long long passed = milliseconds == kForever ? 0 : PCWord::Now() - start;
    const bool isOver = passed >= milliseconds;
    const unsigned int left = isOver ? 0 : milliseconds - static_cast<unsigned int>(passed);
    const Status result = keyTree->File()->AwaitChange(&after, left);
    if (result != status::kNoData || isOver) return result;
  }
}

unsigned int Registry::ReadChanges(unsigned long long* after, ChangeList* changes,
                                   unsigned int flags) {
  if (!IsReady()) return status::kNoRight;
  if (after == nullptr || changes == nullptr) return status::kBadArgument;
  if (instance->IsWalkedHere()) return status::kBusy;
  if ((flags & kBesideLoop) == 0) instance->notifier.Clear();
  FileStore& store = *keyTree->File();
  const Status result = store.ReadChanges(after, changes);
  if (result.IsOk() && (flags & kWatchedOnly) != 0) KeepWatched(store, changes);
  return result;
}

int Registry::ChangeDescriptor() {
  if (!IsReady()) return -1;
  PCMutexGuard guard(instance->operationLock);
  PCNotifier& notifier = instance->notifier;
  if (notifier.Descriptor() >= 0) return notifier.Descriptor();
  instance->notified = ChangeNumber();
  notifier.Start(
      [](void* context) {
        auto& self = *static_cast<RegistryInstance*>(context);
        return self.keyTree->File()->AwaitChange(&self.notified, kForever).IsOk() ? 1 : 0;
      },
      [](void* context) {
        static_cast<RegistryInstance*>(context)->keyTree->File()->WakeWaiters();
      },
      instance);
  return notifier.Descriptor();
}

}  // namespace tamu::registry
