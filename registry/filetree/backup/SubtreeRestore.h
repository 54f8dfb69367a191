// Stores what a backup file holds in new nodes.
#pragma once

#include "registry/base/Stack.h"
#include "registry/filetree/backup/BackupCheck.h"
#include "registry/store/Changes.h"

namespace tamu::registry {

// The new nodes hang together but nowhere in the tree. Statuses: kInputOutput for a backup that is
// too short or cannot be read, or a registry that cannot be written; kInvalidFile for content that
// is not what was checked; else those of Changes::Take.
class SubtreeRestore {
 public:
  // `stream` stands behind the header byte, after a check.
  SubtreeRestore(Changes& changes, BackupFile& stream) : changes_(changes), stream_(stream) {}

  // Restores all that the check has found. `asRoot`: the key becomes the root key.
  Status Restore(const BackupContents& contents, bool asRoot);
  // The first node of the sub-keys' names (0: there are none) and the key.
  StringId Child() const { return child_; }
  KeyId Key() const { return key_; }

 private:
  struct Frame {
    TernaryStringNode node;
    StringId id;
    FollowingRecords following;
  };

  Status RecursiveRestoreKeyTree(StringId* first);
  Status Enter();
  Status Leave();
  Status RestoreKey(KeyId keyId, bool asRoot);
  Status RestoreValues(TernaryKeyNode* key);
  Status RestoreValueRecord(TernaryValueNode* value, bool* hasNext);
  bool WasChecked(NodeKind kind);
  template <NodeKind kind>
  Status Take(NodeIdOf<kind>* id) {
    return WasChecked(kind) ? changes_.Take(id) : Status(status::kInvalidFile);
  }
  Status StoreData(const void* data, unsigned int size, DataId* id);

  Changes& changes_;
  BackupFile& stream_;
  unsigned int left_[kNodeKinds] = {};  // what the check has found and was not restored yet
  Stack<Frame> way_;                    // down to the node that is restored
  StringId child_;
  KeyId key_;
};

}  // namespace tamu::registry
