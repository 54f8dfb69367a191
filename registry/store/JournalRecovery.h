// Completing what a journal has left.
#pragma once

#include "platform/PCSideFile.h"
#include "registry/base/Array.h"
#include "registry/format/JournalReader.h"
#include "registry/store/StoreFile.h"

namespace tamu::registry {

// Of a registry that `file` has open; nobody else changes it meanwhile. Records that are for other
// content than the registry's are not followed. May be broken off at any point, any number of
// times.
class JournalRecovery {
 public:
  explicit JournalRecovery(StoreFile& file) : file_(file) {}

  // Writes what the records in the journal hold. kInputOutput, kNoMemory: they are still needed.
  Status Complete(const PCSideFile& side);

 private:
  Status RunIn(const char* sideFolder, const char* registryPath);
  Status Recover(const PCSideFile& side, unsigned int size);
  Status Gather(JournalReader& reader, bool* fits);
  Status Check(const JournalRecord& last, bool* fits);

  StoreFile& file_;
  Array<unsigned char> bytes_;
};

}  // namespace tamu::registry
