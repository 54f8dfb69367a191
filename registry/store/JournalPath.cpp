#include "registry/store/JournalPath.h"

#include "platform/PCSideFile.h"
#include "platform/PCString.h"
#include "registry/format/JournalFormat.h"

namespace tamu::registry {

namespace {

constexpr unsigned int kNameKept = 64;  // characters of the registry's own name, at most

unsigned long long HashOf(const char* text) {
  unsigned long long hash = 0xCBF29CE484222325;  // FNV-1a
  for (; *text != '\0'; ++text) {
    hash = (hash ^ static_cast<unsigned char>(*text)) * 0x100000001B3;
  }
  return hash;
}

const char* LastName(const char* path) {
  const char* name = path;
  for (; *path != '\0'; ++path) {
    if (*path == '/') name = path + 1;
  }
  return name;
}

}  // namespace

bool JournalPath::Find(const char* registryPath, const char* sideFolder) {
  if (!PCSideFile::RealPath(registryPath, text_, kCapacity - sizeof kJournalEnding)) return false;
  if (sideFolder != nullptr) return Name(sideFolder);
  PCString::Concate(text_, kCapacity, kJournalEnding);
  return true;
}

// The folder's real path, the file's name, and the hash of its whole path.
bool JournalPath::Name(const char* sideFolder) {
  const unsigned long long hash = HashOf(text_);
  char name[kNameKept + 1];
  PCString::Copy(name, sizeof name, LastName(text_));
  constexpr unsigned int kLongestEnding = sizeof name + 18 + sizeof kJournalEnding;
  if (!PCSideFile::RealPath(sideFolder, text_, kCapacity - kLongestEnding)) return false;
  const unsigned int length = PCString::Length(text_);
  PCString::Print(text_ + length, kCapacity - length, "/%s-%016llx%s", name, hash, kJournalEnding);
  return true;
}

}  // namespace tamu::registry
