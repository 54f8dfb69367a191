// The object itself: opening and closing.
#include "registry/filetree/TernaryRegistry.h"

#include <new>

namespace tamu::registry {

TernaryRegistry::TernaryRegistry(TernaryFile* storeFile, RegistryDaemon* daemonObject)
    : file(storeFile), initialized(1), daemon(daemonObject) {}

TernaryRegistry::~TernaryRegistry() {
  DropMadeFile();
}

void TernaryRegistry::DropMadeFile() {
  if (!madeFile_) return;
  file->Finalize();
  delete file;
  file = nullptr;
  madeFile_ = false;
}

unsigned int TernaryRegistry::Initialize(const char* path) {
  if (!lock_.Create()) return status::kInputOutput;
  DropMadeFile();
  if (file == nullptr) {
    const unsigned int result = OpenOrCreateStore(path);
    if (result != status::kOk) return result;
  } else {
    CreateRootKey();  // kExists on every file but a new one; operations report a damaged file
  }
  initialized = 1;
  return status::kOk;
}

unsigned int TernaryRegistry::OpenOrCreateStore(const char* path) {
  TernaryFile* store = new (std::nothrow) TernaryFile;
  if (store == nullptr) return status::kNoMemory;
  unsigned int result = store->Initialize(path);
  bool made = false;
  if (result == status::kCannotOpen) {
    // A file that exists and cannot be opened must not be emptied by making it.
    result = store->PathMissing() ? store->CreateRegistryFile(path, TernaryFile::kDefaultBudget)
                                  : status::kNoSpace;
    if (result == status::kOk) result = store->Initialize(path);
    made = true;
  }
  if (result == status::kOk) {
    file = store;
    ownsFile_ = true;
    madeFile_ = true;
    if (made) result = CreateRootKey();
  }
  if (result == status::kOk) return status::kOk;
  file = nullptr;
  madeFile_ = false;
  store->Finalize();
  delete store;
  return result;
}

unsigned int TernaryRegistry::Finalize() {
  if (file != nullptr && ownsFile_) {
    file->Finalize();
    delete file;
  }
  file = nullptr;
  madeFile_ = false;
  lock_.Destroy();
  initialized = 0;
  return status::kOk;
}

}  // namespace tamu::registry
