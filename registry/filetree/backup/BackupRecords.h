// The records of a backup file, as they are read from it.
#pragma once

#include "registry/filetree/NodeWalk.h"
#include "registry/filetree/backup/BackupFile.h"
#include "registry/format/TernaryKeyNode.h"
#include "registry/format/TernaryStringNode.h"
#include "registry/format/TernaryValueNode.h"

namespace tamu::registry {

// Which records follow a string node's.
class FollowingRecords {
 public:
  explicit FollowingRecords(const TernaryStringNode& node);
  FollowingRecords() = default;

  // Takes the next link that something was stored for, in the order of the file. False: none left.
  bool TakeLink(NodeLink* link);
  bool HasKey() const { return hasKey_; }

 private:
  unsigned char links_ = 0;  // bit i: entry i of kStoredOrder
  bool hasKey_ = false;
};

// Each reads one record, checks it, and makes it fit to be stored: the ids of the file that it
// comes from are 0, so that nothing can follow them, and reserved bytes are 0. kInputOutput: the
// record is incomplete; kInvalidFile: it holds what no registry stores.

Status ReadStringRecord(BackupFile& stream, TernaryStringNode* node, FollowingRecords* following);
// *hasValues: a value record follows. The key is not a root key.
Status ReadKeyRecord(BackupFile& stream, TernaryKeyNode* key, bool* hasValues);
// *hasNext: another value follows this one and its data. *size: bytes of data that follow, at most
// 1024; 0 for a value that keeps its data in its record.
Status ReadValueRecord(BackupFile& stream, TernaryValueNode* value, bool* hasNext,
                       unsigned int* size);

}  // namespace tamu::registry
