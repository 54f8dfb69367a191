// Where the journal of a registry is.
#pragma once

#include "platform/PCSideFile.h"
#include "platform/PCString.h"
#include "registry/format/JournalFormat.h"

namespace tamu::registry {

// Beside the file itself, wherever the symbolic links are that lead to it.
class JournalPath {
 public:
  // False when nothing is at the registry's path, or it is too long.
  bool Find(const char* registryPath) {
    if (!PCSideFile::RealPath(registryPath, text_, kCapacity - sizeof kJournalEnding)) return false;
    PCString::Concate(text_, kCapacity, kJournalEnding);
    return true;
  }
  const char* Text() const { return text_; }

 private:
  static constexpr unsigned int kCapacity = 4096;  // bytes, with the ending 0

  char text_[kCapacity] = {};
};

}  // namespace tamu::registry
