// Opening and closing.
#include "registry/memtree/TernaryKeyTree.h"

#include <new>

#include "registry/store/TernaryFile.h"

namespace tamu::registry {

TernaryKeyTree::TernaryKeyTree(RegistryDaemon* daemonObject) : daemon(daemonObject) {}

TernaryKeyTree::~TernaryKeyTree() {
  Finalize();
}

unsigned int TernaryKeyTree::Initialize(const char* path) {
  CloseFile();
  if (!spareLock.Create()) return status::kInputOutput;
  if (!treeLock.Create()) {
    spareLock.Destroy();
    return status::kInputOutput;
  }
  file = new (std::nothrow) TernaryFile;
  if (file == nullptr) {
    spareLock.Destroy();
    treeLock.Destroy();
    return status::kNoMemory;
  }
  file->SetDurability(durability_);
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
  FreeEverything();
  if (file != nullptr) file->Finalize();
  delete file;
  file = nullptr;
  initialized = 0;
}

unsigned int TernaryKeyTree::GetRegistryInfo(RegistryInfo* info) {
  PCMutexGuard guard(treeLock);
  if (initialized == 0) return status::kNoRight;
  if (info == nullptr) return status::kBadArgument;
  return file->GetRegistryInfo(info);
}

}  // namespace tamu::registry
