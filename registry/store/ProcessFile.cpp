#include "registry/store/ProcessFile.h"

#include <utility>

#include "platform/PCString.h"
#include "registry/base/RCEString.h"
#include "registry/base/RegistryStatus.h"
#include "registry/store/Immortal.h"
#include "registry/store/TernaryFile.h"

namespace tamu::registry {

namespace {

Immortal<PCFile> sFile;
Immortal<PCMutex> sLock;
Immortal<PCReaders> sReaders;
Immortal<PathMemo> sPaths;

int MakeLock() {
  sLock.value.Admit(&sReaders.value);
  return sLock.value.Create();
}

char* sPath = nullptr;     // owned; null when nothing is open
unsigned int sLatest = 0;  // the latest generation that has started
bool sClosing = false;

}  // namespace

unsigned int ProcessFile::sGeneration = 0;

PCMutex& ProcessFile::Lock() {
  static const int sCreated = MakeLock();
  static_cast<void>(sCreated);
  return sLock.value;
}

PCReaders& ProcessFile::Readers() {
  return sReaders.value;
}

PathMemo& ProcessFile::Paths() {
  return sPaths.value;
}

PCFile& ProcessFile::File() {
  return sFile.value;
}

void ProcessFile::StartAnew() {
  Lock().Create();
  Readers().StartAnew();
  File().Destroy();
  sPath = nullptr;
  sGeneration = 0;
  sClosing = false;
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

ProcessFile::Opening::Opening() {
  Exchange();
}

ProcessFile::Opening::~Opening() {
  if (kept_) return;
  Close();
  Exchange();
}

void ProcessFile::Opening::Exchange() {
  File().Swap(file_);
  std::swap(sPath, path_);
  std::swap(sGeneration, generation_);
  std::swap(sClosing, closing_);
}

unsigned int ProcessFile::Opening::Open(const char* path, int mode, unsigned int* generation,
                                        bool* missing) {
  Close();
  char* copy = RCEString::Duplicate(path);
  if (copy == nullptr) return status::kNoMemory;
  if (!File().Create(copy, mode)) {
    *missing = File().Missing();
    delete[] copy;
    return status::kCannotOpen;
  }
  const bool same = File().SameFile(file_) && PCString::Diff(path, path_) == 0;
  sPath = copy;
  sGeneration = same ? generation_ : ++sLatest;
  *generation = sGeneration;
  *missing = false;
  return status::kOk;
}

void ProcessFile::Opening::Keep() {
  kept_ = true;
  file_.Destroy();
  delete[] path_;
  path_ = nullptr;
}

PCFile& TernaryFile::file = sFile.value;

}  // namespace tamu::registry
