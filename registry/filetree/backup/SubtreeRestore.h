// Stores what a backup file holds in new nodes.
#pragma once

#include "registry/base/Stack.h"
#include "registry/filetree/backup/BackupCheck.h"
#include "registry/filetree/backup/NewSlots.h"

namespace tamu::registry {

// The new nodes hang together but nowhere in the tree. Until they are kept they belong to this
// object, which gives them back when it goes. Statuses: kInputOutput for a backup that is too short
// or cannot be read, or a registry that cannot be written; kInvalidFile for content that is not
// what was checked; else those of acquiring.
class SubtreeRestore {
 public:
  // `stream` stands behind the header byte, after a check.
  SubtreeRestore(TernaryFile& store, TernaryFile::ChangeScope& changes, BackupFile& stream)
      : store_(store), changes_(changes), stream_(stream), slots_(store, changes) {}

  // Restores all that the check has found. `asRoot`: the key becomes the root key.
  unsigned int Restore(const BackupContents& contents, bool asRoot);
  // The first node of the sub-keys' names (0: there are none) and the key.
  unsigned int Child() const { return child_; }
  unsigned int Key() const { return key_; }
  void Keep() { slots_.Keep(); }

 private:
  struct Frame {
    TernaryStringNode node;
    unsigned int id = 0;
    FollowingRecords following;
  };

  unsigned int RecursiveRestoreKeyTree(unsigned int* first);
  unsigned int Enter();
  unsigned int Leave();
  unsigned int RestoreKey(unsigned int keyId, bool asRoot);
  unsigned int RestoreValues(TernaryKeyNode* key);
  unsigned int RestoreValueRecord(TernaryValueNode* value, bool* hasNext);

  TernaryFile& store_;
  TernaryFile::ChangeScope& changes_;
  BackupFile& stream_;
  NewSlots slots_;
  Stack<Frame> way_;  // down to the node that is restored
  unsigned int child_ = 0;
  unsigned int key_ = 0;
};

}  // namespace tamu::registry
