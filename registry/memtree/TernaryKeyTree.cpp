// Opening, closing and finding keys.
#include "registry/memtree/TernaryKeyTree.h"

#include <new>

#include "registry/keytree/KeyRecords.h"

namespace tamu::registry {

TernaryKeyTree::TernaryKeyTree(RegistryDaemon* daemonObject) : StringOperations(daemonObject) {}

TernaryKeyTree::~TernaryKeyTree() {
  Finalize();
}

unsigned int TernaryKeyTree::OnKey(unsigned int user, void* tree, const char* path,
                                   unsigned char rights, const char* name, bool argumentsGiven,
                                   const KeyBody& body) {
  return InTree(argumentsGiven, [&]() -> Status {
    Found found;
    const Status result = Reach(user, tree, path, rights, name, &found);
    return result.IsOk() ? body(found) : result;
  });
}

unsigned int TernaryKeyTree::ChangeKey(unsigned int user, void* tree, const char* path,
                                       unsigned char rights, const char* name, bool argumentsGiven,
                                       const KeyBody& body) {
  return ChangeTree(argumentsGiven && tree != nullptr, [&]() -> Status {
    StringLock lock;
    Found found;
    do {
      const Status result = Reach(user, tree, path, rights, name, &found);
      if (!result.IsOk()) return result;
    } while (!lock.Take(found.owner, static_cast<TernaryHandle*>(tree)));
    return body(found);
  });
}

unsigned int TernaryKeyTree::Initialize(const char* path) {
  CloseFile();
  spareLock.Create();
  treeLock.Create();
  file.reset(new (std::nothrow) TernaryFile);
  if (file == nullptr) {
    spareLock.Destroy();
    treeLock.Destroy();
    return status::kNoMemory;
  }
  file->SetOptions(options_);
  const unsigned int result = file->OpenOrCreate(path);
  if (result == status::kOk) initialized = 1;
  return result;
}

unsigned int TernaryKeyTree::Finalize() {
  UnloadKeyTree(nullptr);
  CloseFile();
  spareLock.Destroy();
  treeLock.Destroy();
  return status::kOk;
}

void TernaryKeyTree::CloseFile() {
  loaded_.FreeEverything();
  if (file != nullptr) file->Finalize();
  file.reset();
  initialized = 0;
}

unsigned int TernaryKeyTree::GetRegistryInfo(RegistryInfo* info) {
  return ChangeTree(info != nullptr, [&] { return file->GetRegistryInfo(info); });
}

unsigned int TernaryKeyTree::FindKey(void* tree, const char* path, TernaryString*& string,
                                     TernaryKey*& key, TernaryString*& owner) {
  return InTree(true, [&] {
    Found found;
    const Status result = Reach(kAdministratorId, tree, path, kOpenToAll, nullptr, &found);
    if (!result.IsOk()) return result;
    string = found.string;
    key = found.key;
    owner = found.owner;
    return result;
  });
}

Status TernaryKeyTree::Reach(unsigned int user, void* tree, const char* path, unsigned char rights,
                             const char* name, Found* found) {
  TernaryString* start =
      tree != nullptr ? static_cast<TernaryHandle*>(tree)->start : GetStartString(0);
  if (start == nullptr) return tree != nullptr ? status::kBadArgument : status::kNotFound;
  const Status result = ReachString(start, path, &found->string, &found->owner);
  if (!result.IsOk()) return result;
  TernaryKey* key = found->string->key;
  if (!IsAllowed(key->node, user, rights)) return status::kNoRight;
  found->key = key;
  if (name == nullptr) return status::kOk;
  return key->FindValue(name, found->value);
}

}  // namespace tamu::registry
