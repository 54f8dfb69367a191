#include "registry/filetree/backup/SubtreeRestore.h"

#include "registry/base/Value.h"

namespace tamu::registry {

Status SubtreeRestore::Restore(const BackupContents& contents, bool asRoot) {
  for (unsigned int i = 0; i < kNodeKinds; ++i) left_[i] = contents.records[i];
  Status result = status::kOk;
  if (contents.hasSubKeys) result = RecursiveRestoreKeyTree(&child_);
  if (result.IsOk()) result = Take(&key_);
  return result.IsOk() ? RestoreKey(key_, asRoot) : result;
}

// True as long as the content has no more records of a kind than the check has found.
bool SubtreeRestore::WasChecked(NodeKind kind) {
  unsigned int& left = left_[static_cast<unsigned int>(kind)];
  if (left == 0) return false;
  --left;
  return true;
}

Status SubtreeRestore::StoreData(const void* data, unsigned int size, DataId* id) {
  return WasChecked(NodeKind::kData) ? changes_.StoreData(data, size, id)
                                     : Status(status::kInvalidFile);
}

// Slots are taken in the order of the records: a string node before what its links lead to, its key
// after that.
Status SubtreeRestore::RecursiveRestoreKeyTree(StringId* first) {
  Status result = Enter();
  if (result.IsOk()) *first = way_.Top().id;
  while (result.IsOk() && !way_.IsEmpty()) {
    NodeLink link;
    if (!way_.Top().following.TakeLink(&link)) {
      result = Leave();
      continue;
    }
    const unsigned int parent = way_.Count() - 1;
    result = Enter();
    if (result.IsOk()) SetLink(&way_[parent].node, link, way_.Top().id);
  }
  return result;
}

// Takes a slot for the next record and reads it.
Status SubtreeRestore::Enter() {
  Frame next;
  Status result = Take(&next.id);
  if (result.IsOk()) result = ReadStringRecord(stream_, &next.node, &next.following);
  if (result.IsOk()) result = way_.Push(next);
  return result;
}

// All that the links lead to is stored: the key's turn, then the node itself.
Status SubtreeRestore::Leave() {
  Frame top = way_.Pop();
  if (top.following.HasKey()) {
    KeyId keyId;
    Status result = Take(&keyId);
    if (result.IsOk()) result = RestoreKey(keyId, false);
    if (!result.IsOk()) return result;
    top.node.setKeyNode(keyId);
  }
  return changes_.Write(top.id, top.node);
}

Status SubtreeRestore::RestoreKey(KeyId keyId, bool asRoot) {
  TernaryKeyNode key;
  bool hasValues = false;
  Status result = ReadKeyRecord(stream_, &key, &hasValues);
  if (result.IsOk() && hasValues) result = RestoreValues(&key);
  if (!result.IsOk()) return result;
  key.setRoot(asRoot);
  return changes_.Write(keyId, key);
}

// The order of the list is that of the file, and the number of values is what there are. A value is
// written when its successor's id is known.
Status SubtreeRestore::RestoreValues(TernaryKeyNode* key) {
  constexpr unsigned int kMostCounted = 0xFFFF;
  ValueId id;
  Status result = Take(&id);
  if (!result.IsOk()) return result;
  key->setFirstValue(id);
  for (unsigned int count = 1; id != 0; ++count) {
    TernaryValueNode value;
    bool hasNext = false;
    ValueId nextId;
    result = RestoreValueRecord(&value, &hasNext);
    if (result.IsOk() && hasNext) result = Take(&nextId);
    if (!result.IsOk()) return result;
    value.setNextValue(nextId);
    result = changes_.Write(id, value);
    if (!result.IsOk()) return result;
    key->setValueCount(count < kMostCounted ? count : kMostCounted);
    id = nextId;
  }
  return status::kOk;
}

// Reads a value's record and stores its data.
Status SubtreeRestore::RestoreValueRecord(TernaryValueNode* value, bool* hasNext) {
  unsigned int size = 0;
  Status result = ReadValueRecord(stream_, value, hasNext, &size);
  if (!result.IsOk() || size == 0) return result;
  unsigned char data[kValueDataMax];
  DataId block;
  result = stream_.Read(data, size);
  if (result.IsOk()) result = StoreData(data, size, &block);
  value->setDataWord(block);
  return result;
}

}  // namespace tamu::registry
