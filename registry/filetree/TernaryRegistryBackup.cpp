// Backing keys up and restoring them.
#include "registry/filetree/SubtreeNodes.h"
#include "registry/filetree/TernaryRegistry.h"
#include "registry/filetree/backup/SubtreeBackup.h"
#include "registry/filetree/backup/SubtreeRestore.h"

namespace tamu::registry {

unsigned int TernaryRegistry::BackupKeyTree(unsigned int user, void* tree, const char* path,
                                            const char* backupFile) {
  PCMutexGuard guard(lock_);
  if (file == nullptr) return status::kNoRight;
  if (path == nullptr || backupFile == nullptr) return status::kBadArgument;
  LockedAccess access(*file);
  access.ExpectNoChange();
  Reached reached;
  Status result = ReachKey(access, user, StartNodeOf(access, tree), path, kRead, &reached);
  if (!result.IsOk()) return result;
  // The backup would take the place of the registry.
  if (TernaryFile::file.SameFile(backupFile)) return status::kInputOutput;
  BackupFile stream;
  SubtreeBackup subtree(*file, access, stream);
  result = subtree.Prepare();
  if (result.IsOk()) result = stream.Make(backupFile);
  if (!result.IsOk()) return result;
  TernaryStringNode node;
  result = access.Read(reached.nodeId, &node);
  if (result.IsOk() && node.child() != 0) {
    result = subtree.RecursiveBackupKeyTree(node.child());
  }
  if (result.IsOk()) result = subtree.BackupValue(reached.keyId);
  const bool isForPower = file->EffectiveDurability() == Durability::kPower;
  return result.IsOk() ? stream.Complete(isForPower) : result;
}

// The file is read twice: first without changing anything, then to store what it holds. With one
// write the key then changes over to the new nodes, and the old ones are given back. Whenever the
// process ends, the tree is the old or the new one.
unsigned int TernaryRegistry::RestoreKeyTree(unsigned int user, void* tree, const char* path,
                                             const char* backupFile) {
  PCMutexGuard guard(lock_);
  if (file == nullptr) return status::kNoRight;
  if (path == nullptr || backupFile == nullptr) return status::kBadArgument;
  Changes changes(*file);
  Reached reached;
  TernaryStringNode after;
  SubtreeNodes old(changes);
  Status result =
      old.CollectKeyTree(user, StartNodeOf(changes, tree), path, kCreate, &reached, &after);
  if (!result.IsOk()) return result;
  if (TernaryFile::file.SameFile(backupFile)) return status::kInputOutput;
  BackupFile stream;
  result = stream.Open(backupFile);
  if (!result.IsOk()) return result;
  BackupContents contents;
  result = BackupCheck(*file, stream).Check(&contents);
  // A new node must not get the slot of one on the way to the key.
  if (result.IsOk() && !old.AreSparedUsed()) result = status::kInvalidFile;
  if (!result.IsOk()) return result;
  stream.Rewind();
  SubtreeRestore restored(changes, stream);
  result = restored.Restore(contents, reached.nodeId == changes.StartNode());
  if (!result.IsOk()) return result;
  after.setChild(restored.Child());
  EndName(&after, restored.Key());
  result = changes.Write(reached.nodeId, after);
  if (result.IsOk()) old.Release(changes).Ignore();  // what cannot be given back stays in use
  return changes.End(result);
}

}  // namespace tamu::registry
