#include "registry/RegistryInstance.h"

#include <new>

#include "platform/PCString.h"
#include "registry/base/RCEString.h"
#include "registry/store/ProcessFile.h"

namespace tamu::registry {

RegistryInstance* RegistryInstance::sFirstInstance = nullptr;

// Other threads of the other process may have held any lock, and been anywhere in what it guards.
void RegistryInstance::LeaveInherited() {
  static unsigned int sFork = 0;
  if (sFork == PCFork::Count()) return;
  sFork = PCFork::Count();
  sFirstInstance = nullptr;
  ProcessFile::StartAnew();
}

RegistryInstance* RegistryInstance::Make(const char* path) {
  RegistryInstance* instance = new (std::nothrow) RegistryInstance;
  if (instance == nullptr) return nullptr;
  instance->path = RCEString::Duplicate(path);
  if (instance->path == nullptr) {
    delete instance;
    return nullptr;
  }
  instance->operationLock.Create();
  instance->changeLock.Create();
  return instance;
}

RegistryInstance* RegistryInstance::CreateInstance(const char* path) {
  RegistryInstance* last = nullptr;
  for (RegistryInstance* each = sFirstInstance; each != nullptr; each = each->next) {
    if (PCString::Diff(each->path, path) == 0) {
      ++each->refCount;
      return each;
    }
    last = each;
  }
  RegistryInstance* instance = Make(path);
  if (instance == nullptr) return nullptr;
  instance->prev = last;
  (last == nullptr ? sFirstInstance : last->next) = instance;
  return instance;
}

// The predecessor is looked up in the list: the `prev` of a successor is left as it is when an
// instance goes, and may lead to freed memory.
unsigned int RegistryInstance::DeleteInstance(RegistryInstance* instance) {
  if (instance == nullptr) return status::kBadArgument;
  --instance->refCount;
  if (instance->refCount > 0) return status::kBusy;
  RegistryInstance** link = &sFirstInstance;
  while (*link != nullptr && *link != instance) link = &(*link)->next;
  if (*link == instance) *link = instance->next;
  delete instance;
  return status::kOk;
}

}  // namespace tamu::registry
