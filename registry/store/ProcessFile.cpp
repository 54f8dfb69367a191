#include "registry/store/ProcessFile.h"

#include <new>

#include "platform/PCString.h"
#include "registry/base/RCEString.h"
#include "registry/base/RegistryStatus.h"
#include "registry/store/Immortal.h"
#include "registry/store/TernaryFile.h"

namespace tamu::registry {

namespace {

Immortal<PCFile> sFile;
Immortal<PCMutex> sLock;
char* sPath = nullptr;         // owned; null when nothing is open
unsigned int sGeneration = 0;  // of the latest opening
bool sClosing = false;

}  // namespace

PCMutex& ProcessFile::Lock() {
  static const int sCreated = sLock.value.Create();
  static_cast<void>(sCreated);
  return sLock.value;
}

PCFile& ProcessFile::File() {
  return sFile.value;
}

unsigned int ProcessFile::Open(const char* path, unsigned int* generation, bool* missing) {
  const bool same = File().IsOpen() && PCString::Diff(path, sPath) == 0 && File().SameFile(path);
  char* copy = RCEString::Duplicate(path);
  if (copy == nullptr) return status::kNoMemory;
  bool opened = true;
  if (File().IsOpen()) {
    PCFile probe;
    opened = probe.Create(copy, PCFile::kReadWrite) != 0;
    *missing = probe.Missing();
  }
  if (opened) {
    Close();
    opened = File().Create(copy, PCFile::kReadWrite) != 0;
    *missing = File().Missing();
  }
  if (!opened) {
    delete[] copy;
    return status::kCannotOpen;
  }
  sPath = copy;
  if (!same) ++sGeneration;
  *generation = sGeneration;
  return status::kOk;
}

void ProcessFile::Close() {
  File().Destroy();
  delete[] sPath;
  sPath = nullptr;
  sClosing = false;
}

void ProcessFile::CloseLater() {
  sClosing = true;
}

void ProcessFile::OperationEnds() {
  if (sClosing) Close();
}

bool ProcessFile::IsClosing() {
  return sClosing;
}

bool ProcessFile::IsOpen(unsigned int generation) {
  return generation == sGeneration && generation != 0 && File().IsOpen();
}

PCFile& TernaryFile::file = sFile.value;

}  // namespace tamu::registry
