// Completing what a journal has left.
#pragma once

#include "platform/PCSideFile.h"
#include "registry/base/Array.h"
#include "registry/format/JournalReader.h"
#include "registry/store/StoreFile.h"

namespace tamu::registry {

// Of a registry that is being opened: `file` has it open. A journal that another process has open
// is let alone. One that is for other content than the registry's is removed. May be broken off at
// any point, any number of times.
class JournalRecovery {
 public:
  explicit JournalRecovery(StoreFile& file) : file_(file) {}

  // Writes what the records beside the registry hold, and those in `sideFolder` if that is not
  // null, and removes the journals. kInputOutput, kNoMemory: the journal stays.
  Status Run(const char* registryPath, const char* sideFolder);

 private:
  Status RunIn(const char* sideFolder, const char* registryPath);
  Status Recover(const PCSideFile& side, unsigned int size);
  Status Gather(JournalReader& reader, bool* fits);
  Status Check(const JournalRecord& last, bool* fits);

  StoreFile& file_;
  Array<unsigned char> bytes_;
};

}  // namespace tamu::registry
