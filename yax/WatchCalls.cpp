// Changes told by the C interface.
#include <cstring>
#include <new>

#include "platform/PCWord.h"
#include "registry/base/ChangeNote.h"
#include "yax/Failure.h"

using tamu::registry::Change;
using tamu::registry::ChangeList;

struct yax_watch {
  explicit yax_watch(yax_registry* registry) : owner(registry) {}

  yax_registry* owner;  // one of its references
  std::unique_ptr<char[]> path;
  unsigned long long number = 0;  // of the latest change that was read
  ChangeList changes;             // those read
  unsigned int told = 0;          // of these
};

using namespace yax;

namespace {

// The next one that was read already; null when there is none.
const Change* NextTold(yax_watch* watch) {
  while (watch->told < watch->changes.Count()) {
    const Change& change = watch->changes.At(watch->told++);
    if (Concerns(change, watch->path.get())) return &change;
  }
  return nullptr;
}

// Waits for changes and reads them. The descriptor is for those who do not want to wait.
unsigned int ReadMore(yax_watch* watch, unsigned int milliseconds, unsigned int flags) {
  Registry& registry = watch->owner->registry;
  if (milliseconds > 0) {
    const unsigned int awaited = registry.WaitForChange(watch->number, milliseconds);
    if (awaited != status::kOk) return awaited;
  }
  watch->told = 0;
  const unsigned int read = registry.ReadChanges(&watch->number, &watch->changes, flags);
  const bool isNothing = read == status::kOk && watch->changes.Count() == 0;
  return isNothing && milliseconds == 0 ? status::kNoData : read;
}

unsigned int WatchKey(yax_key* key, yax_watch** watch) {
  if (key == nullptr || watch == nullptr) return status::kBadArgument;
  std::unique_ptr<yax_watch> made(new (std::nothrow) yax_watch(key->owner));
  if (made == nullptr) return status::kNoMemory;
  const size_t size = std::strlen(PathOf(key)) + 1;
  made->path.reset(new (std::nothrow) char[size]);
  if (made->path == nullptr) return status::kNoMemory;
  std::memcpy(made->path.get(), PathOf(key), size);
  made->number = RegistryOf(key).ChangeNumber();
  const unsigned int result =
      RegistryOf(key).ReadChanges(&made->number, &made->changes, Registry::kBesideLoop);
  if (result != status::kOk && result != status::kLimit) return result;
  Hold(key->owner);
  *watch = made.release();
  return status::kOk;
}

unsigned int NextChange(yax_watch* watch, unsigned milliseconds, yax_change* change) {
  const unsigned long long start = PCWord::Now();
  const unsigned int flags = milliseconds == 0 ? 0 : Registry::kBesideLoop;
  for (;;) {
    const Change* const next = NextTold(watch);
    if (next != nullptr) {
      *change = {static_cast<unsigned>(next->kind), next->keyPath, next->valueName};
      return status::kOk;
    }
    const unsigned long long passed = milliseconds == YAX_FOREVER ? 0 : PCWord::Now() - start;
    const unsigned int left =
        passed < milliseconds ? milliseconds - static_cast<unsigned>(passed) : 0;
    const unsigned int result = ReadMore(watch, left, flags);
    if (result != status::kOk) return result;
  }
}

}  // namespace

yax_status yax_watch_key(yax_key* key, yax_watch** watch) {
  return Told(key, nullptr, WatchKey(key, watch));
}

void yax_watch_free(yax_watch* watch) {
  if (watch == nullptr) return;
  LetGo(watch->owner);
  delete watch;
}

yax_status yax_watch_next(yax_watch* watch, unsigned milliseconds, yax_change* change) {
  if (watch == nullptr || change == nullptr) {
    return Told({"a watch", "", "", kNullPointer}, status::kBadArgument);
  }
  const unsigned int result = NextChange(watch, milliseconds, change);
  return result == status::kNoData ? result : Told({watch->path.get()}, result);
}

int yax_change_descriptor(yax_registry* registry) {
  return registry == nullptr ? -1 : registry->registry.ChangeDescriptor();
}
