#include "registry/filetree/backup/SubtreeRestore.h"

#include "registry/base/Value.h"

namespace tamu::registry {

unsigned int SubtreeRestore::Restore(const BackupContents& contents, bool asRoot) {
  unsigned int result = slots_.Prepare(contents.records);
  if (result == status::kOk && contents.hasSubKeys) result = RecursiveRestoreKeyTree(&child_);
  if (result == status::kOk) result = slots_.Take(NodeKind::kKey, &key_);
  return result == status::kOk ? RestoreKey(key_, asRoot) : result;
}

// Slots are taken in the order of the records: a string node before what its links lead to, its key
// after that.
unsigned int SubtreeRestore::RecursiveRestoreKeyTree(unsigned int* first) {
  unsigned int result = Enter();
  if (result == status::kOk) *first = way_.Top().id;
  while (result == status::kOk && !way_.IsEmpty()) {
    NodeLink link;
    if (!way_.Top().following.TakeLink(&link)) {
      result = Leave();
      continue;
    }
    const unsigned int parent = way_.Count() - 1;
    result = Enter();
    if (result == status::kOk) SetLink(&way_[parent].node, link, way_.Top().id);
  }
  return result;
}

// Takes a slot for the next record and reads it.
unsigned int SubtreeRestore::Enter() {
  Frame next;
  unsigned int result = slots_.Take(NodeKind::kString, &next.id);
  if (result == status::kOk) result = ReadStringRecord(stream_, &next.node, &next.following);
  return result == status::kOk ? way_.Push(next) : result;
}

// All that the links lead to is stored: the key's turn, then the node itself.
unsigned int SubtreeRestore::Leave() {
  Frame top = way_.Pop();
  if (top.following.HasKey()) {
    unsigned int keyId = 0;
    unsigned int result = slots_.Take(NodeKind::kKey, &keyId);
    if (result == status::kOk) result = RestoreKey(keyId, false);
    if (result != status::kOk) return result;
    top.node.setKeyNode(keyId);
  }
  return store_.WriteNode(changes_.id(), top.id, &top.node, false);
}

unsigned int SubtreeRestore::RestoreKey(unsigned int keyId, bool asRoot) {
  TernaryKeyNode key;
  bool hasValues = false;
  unsigned int result = ReadKeyRecord(stream_, &key, &hasValues);
  if (result == status::kOk && hasValues) result = RestoreValues(&key);
  if (result != status::kOk) return result;
  key.setRoot(asRoot);
  return store_.WriteKeyNode(changes_.id(), keyId, &key, false);
}

// The order of the list is that of the file, and the number of values is what there are. A value is
// written when its successor's id is known.
unsigned int SubtreeRestore::RestoreValues(TernaryKeyNode* key) {
  constexpr unsigned int kMostCounted = 0xFFFF;
  unsigned int id = 0;
  unsigned int result = slots_.Take(NodeKind::kValue, &id);
  if (result != status::kOk) return result;
  key->setFirstValue(id);
  for (unsigned int count = 1; id != 0; ++count) {
    TernaryValueNode value;
    bool hasNext = false;
    unsigned int nextId = 0;
    result = RestoreValueRecord(&value, &hasNext);
    if (result == status::kOk && hasNext) result = slots_.Take(NodeKind::kValue, &nextId);
    if (result != status::kOk) return result;
    value.setNextValue(nextId);
    result = store_.WriteValueNode(changes_.id(), id, &value, false);
    if (result != status::kOk) return result;
    key->setValueCount(count < kMostCounted ? count : kMostCounted);
    id = nextId;
  }
  return status::kOk;
}

// Reads a value's record and stores its data.
unsigned int SubtreeRestore::RestoreValueRecord(TernaryValueNode* value, bool* hasNext) {
  unsigned int size = 0;
  unsigned int result = ReadValueRecord(stream_, value, hasNext, &size);
  if (result != status::kOk || size == 0) return result;
  unsigned char data[kValueDataMax];
  unsigned int block = 0;
  result = stream_.Read(data, size);
  if (result == status::kOk) result = slots_.TakeData(data, size, &block);
  value->setDataWord(block);
  return result;
}

}  // namespace tamu::registry
