// Writes keys and what is below them to a backup file.
#pragma once

#include "registry/filetree/backup/BackupFile.h"
#include "registry/store/NodeSet.h"
#include "registry/store/TernaryFile.h"

namespace tamu::registry {

// The records go out as they are stored; the ids in them only tell, by being 0 or not, which
// records follow. Statuses: kInputOutput when the backup cannot be written; kInvalidFile for links
// that do not form a tree and for data longer than any value's; else those of reading the registry.
class SubtreeBackup {
 public:
  // `access` is held on `store`; `stream` was made.
  SubtreeBackup(TernaryFile& store, TernaryFile::AccessScope& access, BackupFile& stream)
      : store_(store), access_(access), stream_(stream) {}

  // kNoMemory.
  Status Prepare();
  // A string node, what its lo, hi, equal and child links lead to, then the key on it.
  Status RecursiveBackupKeyTree(StringId stringNode);
  // A key and its values, each directly followed by its data if that lies in blocks.
  Status BackupValue(KeyId keyNode);

 private:
  Status WriteData(const TernaryValueNode& value);

  TernaryFile& store_;
  TernaryFile::AccessScope& access_;
  BackupFile& stream_;
  NodeSet metNodes_;
  NodeSet metValues_;
};

}  // namespace tamu::registry
