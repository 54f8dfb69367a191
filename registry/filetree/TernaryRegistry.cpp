// The object itself: opening and closing.
#include "registry/filetree/TernaryRegistry.h"

#include <new>

namespace tamu::registry {

TernaryRegistry::TernaryRegistry(TernaryFile* storeFile, RegistryDaemon* daemonObject)
    : NodeOperations(storeFile, daemonObject) {}

TernaryRegistry::~TernaryRegistry() {
  if (owner_ == StoreOwner::kMade) DropStore();
}

template <class Scope>
unsigned int TernaryRegistry::OnKey(unsigned int user, const void* tree, const char* path,
                                    unsigned char rights, bool argumentsGiven,
                                    const FunctionRef<Status(Scope&, Reached&)>& body) {
  return InStore<Scope>(argumentsGiven, [&](Scope& scope) -> Status {
    Reached reached;
    const Status result = ReachKey(scope, user, StartNodeOf(scope, tree), path, rights, &reached);
    return result.IsOk() ? body(scope, reached) : result;
  });
}

template unsigned int TernaryRegistry::OnKey(unsigned int, const void*, const char*, unsigned char,
                                             bool,
                                             const FunctionRef<Status(StoreAccess&, Reached&)>&);
template unsigned int TernaryRegistry::OnKey(unsigned int, const void*, const char*, unsigned char,
                                             bool,
                                             const FunctionRef<Status(LockedAccess&, Reached&)>&);
template unsigned int TernaryRegistry::OnKey(unsigned int, const void*, const char*, unsigned char,
                                             bool, const FunctionRef<Status(Changes&, Reached&)>&);

unsigned int TernaryRegistry::Initialize(const char* path) {
  lock_.Create();
  if (owner_ == StoreOwner::kMade) DropStore();
  if (file == nullptr) {
    const unsigned int result = OpenStore(path);
    if (result != status::kOk) return result;
  } else {
    CreateRootKey();  // kExists on every file but a new one; operations report a damaged file
  }
  initialized = 1;
  return status::kOk;
}

unsigned int TernaryRegistry::OpenStore(const char* path) {
  file = new (std::nothrow) TernaryFile;
  if (file == nullptr) return status::kNoMemory;
  owner_ = StoreOwner::kMade;
  bool made = false;
  unsigned int result = file->OpenOrCreate(path, &made);
  if (result == status::kOk && made) result = CreateRootKey();
  if (result != status::kOk) DropStore();
  return result;
}

void TernaryRegistry::DropStore() {
  if (file != nullptr) file->Finalize();
  delete file;
  file = nullptr;
}

unsigned int TernaryRegistry::Finalize() {
  if (owner_ != StoreOwner::kShared) DropStore();
  file = nullptr;
  lock_.Destroy();
  initialized = 0;
  return status::kOk;
}

}  // namespace tamu::registry
