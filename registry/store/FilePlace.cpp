#include "registry/store/FilePlace.h"

#include <initializer_list>

#include "platform/PCSideFile.h"
#include "registry/base/RCEString.h"
#include "registry/store/JournalPath.h"

namespace tamu::registry {

namespace {

std::unique_ptr<char[]> CopyOf(const char* text) {
  return std::unique_ptr<char[]>(text != nullptr ? RCEString::Duplicate(text) : nullptr);
}

}  // namespace

bool FilePlace::Set(const char* registryPath, const char* sideFolder) {
  JournalPath journal;
  path_ = CopyOf(registryPath);
  folder_ = CopyOf(sideFolder);
  const bool isBeside = journal.Find(registryPath, nullptr);
  if (isBeside) journal_ = CopyOf(journal.Text());
  const bool isElsewhere = sideFolder != nullptr && journal.Find(registryPath, sideFolder);
  if (isElsewhere) elsewhere_ = CopyOf(journal.Text());
  return path_ != nullptr && (folder_ != nullptr || sideFolder == nullptr) &&
         (journal_ != nullptr || !isBeside) && (elsewhere_ != nullptr || !isElsewhere);
}

unsigned long long FilePlace::State(bool* isYoung) const {
  unsigned long long state = 0;
  for (const char* path : {path_.get(), journal_.get(), elsewhere_.get()}) {
    state = state * 31 + PCSideFile::StateOf(path, isYoung);
  }
  return state;
}

}  // namespace tamu::registry
