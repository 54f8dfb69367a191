// Creating, changing and deleting values.
#include <memory>
#include <new>
#include <utility>

#include "registry/base/Rights.h"
#include "registry/base/ValueCheck.h"
#include "registry/keytree/ValueRecords.h"
#include "registry/memtree/StringLock.h"
#include "registry/memtree/TernaryKeyTree.h"
#include "registry/store/TernaryFile.h"

namespace tamu::registry {

namespace {

// Takes a slot and makes a value for it, the caller's. Nothing is written yet.
Status TakeValue(Changes& changes, std::unique_ptr<TernaryValue>* value) {
  unsigned int id = 0;
  const Status result = changes.Take(NodeKind::kValue, &id);
  if (!result.IsOk()) return result;
  TernaryValueNode* record = new (std::nothrow) TernaryValueNode;
  if (record != nullptr) value->reset(new (std::nothrow) TernaryValue(id, record));
  if (*value != nullptr) return result;
  delete record;
  return status::kNoMemory;
}

}  // namespace

// Puts a new value before the key's others.
Status TernaryKeyTree::LinkNewValue(Changes& changes, TernaryKey* key,
                                    std::unique_ptr<TernaryValue> value) {
  value->node->setNextValue(key->node->firstValue());
  TernaryKeyNode after = *key->node;
  after.setFirstValue(value->id);
  after.setValueCount(after.valueCount() + 1u);
  Status result = changes.Write(value->id, *value->node);
  if (result.IsOk()) result = changes.Write(key->id, after);
  result = changes.End(result);
  if (result.IsOk()) key->AddValue(value.release());
  return result;
}

unsigned int TernaryKeyTree::CreateValue(unsigned int user, void* tree, const char* path,
                                         const char* name, Value* value) {
  if (IsTooLarge(value)) return status::kLimit;
  PCMutexGuard guard(treeLock);
  if (initialized == 0) return status::kNoRight;
  if (LacksArgument(name, value)) return status::kBadArgument;
  StringLock lock;
  Found found;
  unsigned int result = LockKey(user, tree, path, kRightCreate, nullptr, &lock, &found);
  if (result != status::kOk) return result;
  Changes changes(*file);
  std::unique_ptr<TernaryValue> made;
  result = TakeValue(changes, &made);
  if (result != status::kOk) return changes.End(result);
  // A value that is refused gives its slot back; a file that has grown for it stays so.
  // Test: LoadedValueWrites.AnUnknownTypeIsRefusedAfterTheFileHasGrown
  result = made->SetValue(name, value, 0);
  if (result != status::kOk) {
    return changes.End(changes.GiveBack(NodeKind::kValue, made->id, result));
  }
  // A number's bytes are stored in blocks too, which nothing ever frees.
  // Test: LoadedValueWrites.ANumberCreatedFromAValueTakesBlocksThatNobodyFrees
  const bool inBlocks = made->node->isInBlocks();
  unsigned int block = 0;
  if (value->size > 0) {
    const Status stored = changes.StoreData(value->data, value->size, &block);
    if (!stored.IsOk() && (inBlocks || stored != status::kLimit)) return stored;
  }
  if (inBlocks) made->node->setDataWord(block);
  return LinkNewValue(changes, found.key, std::move(made));
}

unsigned int TernaryKeyTree::CreateValue(unsigned int user, void* tree, const char* path,
                                         const char* name, unsigned long long number, bool isSet) {
  PCMutexGuard guard(treeLock);
  if (initialized == 0) return status::kNoRight;
  if (name == nullptr) return status::kBadArgument;
  StringLock lock;
  Found found;
  unsigned int result = LockKey(user, tree, path, kRightCreate, nullptr, &lock, &found);
  if (result != status::kOk) return result;
  Changes changes(*file);
  std::unique_ptr<TernaryValue> made;
  result = TakeValue(changes, &made);
  if (result != status::kOk) return changes.End(result);
  made->SetValue(name, number, isSet);
  return LinkNewValue(changes, found.key, std::move(made));
}

// A value of no known type changes nothing, and is not reported.
// Test: LoadedValueWrites.AnUnknownTypeChangesNothingAndIsNotReported
unsigned int TernaryKeyTree::SetValue(unsigned int user, void* tree, const char* path,
                                      const char* name, Value* value) {
  if (IsTooLarge(value)) return status::kLimit;
  PCMutexGuard guard(treeLock);
  if (initialized == 0) return status::kNoRight;
  if (LacksArgument(name, value)) return status::kBadArgument;
  StringLock lock;
  Found found;
  const unsigned int result = LockKey(user, tree, path, kRightModify, name, &lock, &found);
  if (result != status::kOk || value->type > kValueTypeMax) return result;
  return ReplaceData(*found.value, name, *value);
}

// The record in the file lets go of its blocks before the new data is stored, so that it takes them
// again: whatever happens from then on, the value never leads to blocks of another one.
Status TernaryKeyTree::ReplaceData(TernaryValue& target, const char* name, const Value& value) {
  TernaryValueNode* copy = new (std::nothrow) TernaryValueNode(*target.node);
  if (copy == nullptr) return status::kNoMemory;
  TernaryValue next(target.id, copy);
  Status result = next.SetValue(name, &value, 0);
  if (!result.IsOk()) return result;
  Changes changes(*file);
  TernaryValueNode before = *target.node;
  if (before.isInBlocks() && before.dataWord() != 0) {
    result = LetGoOfBlocks(changes, target.id, &before);
    if (!result.IsOk()) return result;
    result = changes.ReleaseDataIfSound(before.dataWord());
    if (!result.IsOk()) return result;
  }
  if (copy->isInBlocks()) {
    unsigned int block = 0;
    if (value.size > 0) result = changes.StoreData(value.data, value.size, &block);
    if (!result.IsOk()) return result;
    copy->setDataWord(block);
  }
  result = changes.End(ReplaceValueRecord(changes, target.id, before, *copy));
  if (result.IsOk()) target.Exchange(next);
  return result;
}

// What leads to the value is written before its slot is given back: the value before it, or else
// the key. So the count in the file is as it was when a value before it is left.
// Test: LoadedValueWrites.TheStoredCountFollowsTheFirstValueAlone
unsigned int TernaryKeyTree::DeleteValue(unsigned int user, void* tree, const char* path,
                                         const char* name) {
  PCMutexGuard guard(treeLock);
  if (initialized == 0) return status::kNoRight;
  if (name == nullptr) return status::kBadArgument;
  StringLock lock;
  Found found;
  unsigned int result = LockKey(user, tree, path, kRightDelete, name, &lock, &found);
  if (result != status::kOk) return result;
  TernaryKey& key = *found.key;
  const TernaryValue* before = nullptr;
  for (TernaryValue* value = key.firstValue; value != found.value; value = value->next) {
    before = value;
  }
  const unsigned int nextId = found.value->next != nullptr ? found.value->next->id : 0;
  Changes changes(*file);
  Status written = status::kOk;
  if (before != nullptr) {
    TernaryValueNode after = *before->node;
    after.setNextValue(nextId);
    written = changes.Write(before->id, after);
  } else {
    TernaryKeyNode after = *key.node;
    after.setFirstValue(nextId);
    after.setValueCount(after.valueCount() - 1u);
    written = changes.Write(key.id, after);
  }
  // Its data blocks stay in use, and so does its slot if that cannot be given back.
  // Test: LoadedValueWrites.DeletingAValueKeepsItsBlocksInUse
  if (written.IsOk()) changes.Release(NodeKind::kValue, found.value->id).Ignore();
  written = changes.End(written);
  if (!written.IsOk()) return written;
  TernaryValue* removed = nullptr;
  TernaryValue* previous = nullptr;
  result = key.RemoveValue(name, removed, previous);
  delete removed;
  return result;
}

}  // namespace tamu::registry
