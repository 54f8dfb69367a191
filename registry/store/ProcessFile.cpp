#include "registry/store/ProcessFile.h"

#include <new>

#include "platform/PCString.h"
#include "registry/RCEString.h"
#include "registry/RegistryStatus.h"
#include "registry/store/TernaryFile.h"

namespace tamu::registry {

namespace {

// Storage that is ready before any code runs and never destroyed.
template <class T>
union Immortal {
  constexpr Immortal() : value() {}
  ~Immortal() {}
  T value;
};

Immortal<PCFile> sFile;
Immortal<PCMutex> sLock;
char* sPath = nullptr;         // owned; null when nothing is open
unsigned int sGeneration = 0;  // of the latest opening

}  // namespace

PCMutex& ProcessFile::Lock() {
  static const int sCreated = sLock.value.Create();
  static_cast<void>(sCreated);
  return sLock.value;
}

PCFile& ProcessFile::File() { return sFile.value; }

unsigned int ProcessFile::Open(const char* path, unsigned int* generation) {
  Close();
  char* copy = RCEString::Duplicate(path);
  if (copy == nullptr) return status::kNoMemory;
  if (!File().Create(copy, PCFile::kReadWrite)) {
    delete[] copy;
    return status::kCannotOpen;
  }
  sPath = copy;
  *generation = ++sGeneration;
  return status::kOk;
}

void ProcessFile::Close() {
  File().Destroy();
  delete[] sPath;
  sPath = nullptr;
}

bool ProcessFile::IsOpen(unsigned int generation, const char* path) {
  if (!File().IsOpen()) return false;
  return generation == sGeneration || PCString::Diff(path, sPath) == 0;
}

PCFile& TernaryFile::file = sFile.value;

}  // namespace tamu::registry
