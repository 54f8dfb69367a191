// Whether a backup file can be restored.
#pragma once

#include "registry/base/Stack.h"
#include "registry/filetree/backup/BackupRecords.h"
#include "registry/store/SlotBudget.h"

namespace tamu::registry {

// What a backup file holds.
struct BackupContents {
  bool hasSubKeys = false;
  unsigned int records[kNodeKinds] = {};  // by NodeKind; of data: chains of blocks
};

// Reads a backup file from end to end and changes nothing.
class BackupCheck {
 public:
  // `stream` stands behind the header byte. An access to `store` is held.
  BackupCheck(const TernaryFile& store, BackupFile& stream) : budget_(store), stream_(stream) {}

  // 0: all records are complete and can be stored. kInputOutput: the file is too short or cannot be
  // read; kInvalidFile: impossible content; kLimit: more than the store can still hand out; the
  // first of these that is met. kNoMemory. Bytes behind the last record do not count.
  Status Check(BackupContents* contents);

 private:
  Status CheckString(BackupContents* contents);
  Status CheckSubtree(BackupContents* contents);
  Status CheckKey(BackupContents* contents);
  Status CheckValue(BackupContents* contents, bool* hasNext);
  Status Count(BackupContents* contents, NodeKind kind, unsigned int slots);

  SlotBudget budget_;
  BackupFile& stream_;
  Stack<FollowingRecords> open_;  // of the nodes on the way down
};

}  // namespace tamu::registry
