// Creating, changing and deleting values and default values.
#include "platform/PCMem.h"
#include "registry/base/ValueCheck.h"
#include "registry/filetree/TernaryRegistry.h"
#include "registry/keytree/ValueRecords.h"

namespace tamu::registry {

namespace {

// The first bytes of a value's data as a number: as many as there are, at most `width`.
unsigned long long LeadingBytes(const Value& value, unsigned int width) {
  unsigned char bytes[TernaryValueNode::kInlineSize] = {};
  PCMem::Copy(bytes, value.data, value.size < width ? value.size : width);
  return GetU64(bytes);
}

}  // namespace

unsigned int TernaryRegistry::CreateValue(unsigned int user, void* tree, const char* path,
                                          const char* name, Value* value) {
  if (IsTooLarge(value)) return status::kLimit;
  PCMutexGuard guard(lock_);
  if (file == nullptr) return status::kNoRight;
  if (LacksArgument(name, value)) return status::kBadArgument;
  if (value->type == kValueTypeInteger && value->data == nullptr) return status::kBadArgument;
  Changes changes(*file);
  Reached reached;
  Status result = ReachKey(changes, user, tree, path, kCreate, &reached);
  if (!result.IsOk()) return result;
  if (value->type > kValueTypeMax) return status::kNoData;
  result = changes.Take(NodeKind::kValue, &reached.valueId);
  if (!result.IsOk()) return changes.End(result);
  // A number's bytes are stored in blocks too, which nothing ever frees. Test:
  // FileTreeValues.ANumberCreatedFromAValueTakesBlocksThatNobodyFrees
  const bool isNumber = value->type == kValueTypeInteger;
  unsigned int block = 0;
  if (value->size > 0) {
    result = changes.StoreData(value->data, value->size, &block);
    if (!result.IsOk() && !(isNumber && result == status::kLimit)) {
      return changes.End(changes.GiveBack(NodeKind::kValue, reached.valueId, result));
    }
  }
  TernaryValueNode& record = reached.value;
  record.setName(name);
  record.setType(value->type);
  record.setSet(value->size != 0);
  record.setInBlocks(!isNumber);
  record.setDataSize(isNumber ? TernaryValueNode::kInlineSize : value->size);
  if (isNumber) {
    record.setNumber(LeadingBytes(*value, TernaryValueNode::kInlineSize));
  } else {
    record.setDataWord(block);
  }
  return changes.End(LinkNewValue(changes, &reached));
}

unsigned int TernaryRegistry::CreateValue(unsigned int user, void* tree, const char* path,
                                          const char* name, unsigned long long number, bool set) {
  PCMutexGuard guard(lock_);
  if (file == nullptr) return status::kNoRight;
  if (name == nullptr) return status::kBadArgument;
  Changes changes(*file);
  Reached reached;
  Status result = ReachKey(changes, user, tree, path, kCreate, &reached);
  if (!result.IsOk()) return result;
  result = changes.Take(NodeKind::kValue, &reached.valueId);
  if (!result.IsOk()) return changes.End(result);
  TernaryValueNode& record = reached.value;
  record.setName(name);
  record.setSet(set);
  record.setDataSize(TernaryValueNode::kInlineSize);
  record.setNumber(number);
  return changes.End(LinkNewValue(changes, &reached));
}

// Puts the value at the head of the key's chain.
Status TernaryRegistry::LinkNewValue(Changes& changes, Reached* reached) {
  TernaryKeyNode& key = reached->key;
  reached->value.setNextValue(key.firstValue());
  const Status result = changes.Write(reached->valueId, reached->value);
  if (!result.IsOk()) return result;
  key.setFirstValue(reached->valueId);
  if (key.valueCount() < 0xFFFF) key.setValueCount(key.valueCount() + 1u);
  return changes.Write(reached->keyId, key);
}

unsigned int TernaryRegistry::SetValue(unsigned int user, void* tree, const char* path,
                                       const char* name, Value* value) {
  if (IsTooLarge(value)) return status::kLimit;
  PCMutexGuard guard(lock_);
  if (file == nullptr) return status::kNoRight;
  if (LacksArgument(name, value)) return status::kBadArgument;
  Changes changes(*file);
  Reached reached;
  Status result = ReachKey(changes, user, tree, path, kModify, &reached);
  if (!result.IsOk()) return result;
  if (value->type > kValueTypeMax) return status::kNoData;
  result = FindInChain(changes, name, &reached);
  if (result.IsOk()) result = ReplaceData(changes, *value, &reached);
  return result.IsOk() ? changes.End(result) : result;
}

// The old blocks are given back before the new data is stored, so that it takes them again. The
// record lets go of them first: whatever happens from then on, it never leads to blocks of another
// value.
Status TernaryRegistry::ReplaceData(Changes& changes, const Value& value, Reached* reached) {
  TernaryValueNode& record = reached->value;
  const unsigned int valueId = reached->valueId;
  if (record.isInBlocks() && record.dataWord() != 0) {
    const Status detached = LetGoOfBlocks(changes, valueId, &record);
    if (!detached.IsOk()) return detached;
    const Status released = changes.ReleaseDataIfSound(record.dataWord());
    if (!released.IsOk()) return released;
  }
  const TernaryValueNode before = record;
  const bool isNumber = value.type == kValueTypeInteger;
  record.setType(value.type);
  record.setInBlocks(!isNumber);
  record.setDataSize(value.size);
  unsigned int block = 0;
  if (!isNumber && value.size > 0) {
    const Status stored = changes.StoreData(value.data, value.size, &block);
    if (!stored.IsOk()) return stored;
  }
  // Of a number only the low half is written: the upper half of an older one stays.
  // Test: FileTreeValues.SettingANumberKeepsTheUpperHalfOfTheOldOne
  record.setDataWord(isNumber ? static_cast<unsigned int>(LeadingBytes(value, 4)) : block);
  record.setSet(true);
  return ReplaceValueRecord(changes, valueId, before, record);
}

// What leads to the value is written before its slot is given back. Its data blocks stay in use.
// Test: FileTreeValues.DeletingAValueKeepsItsBlocksInUse
unsigned int TernaryRegistry::DeleteValue(unsigned int user, void* tree, const char* path,
                                          const char* name) {
  PCMutexGuard guard(lock_);
  if (file == nullptr) return status::kNoRight;
  if (name == nullptr) return status::kBadArgument;
  Changes changes(*file);
  Reached reached;
  Status result = ReachValue(changes, user, tree, path, kDelete, name, &reached);
  if (!result.IsOk()) return result;
  TernaryKeyNode& key = reached.key;
  if (reached.beforeId == 0) {
    key.setFirstValue(reached.value.nextValue());
  } else {
    TernaryValueNode before;
    if (!changes.Read(reached.beforeId, &before).IsOk()) return status::kCannotOpen;
    before.setNextValue(reached.value.nextValue());
    result = changes.Write(reached.beforeId, before);
  }
  if (key.valueCount() > 0) key.setValueCount(key.valueCount() - 1u);
  if (result.IsOk()) result = changes.Write(reached.keyId, key);
  // What cannot be given back stays in use.
  if (result.IsOk()) changes.Release(NodeKind::kValue, reached.valueId).Ignore();
  return changes.End(result);
}

unsigned int TernaryRegistry::SetDefaultValue(unsigned int user, void* tree, const char* path,
                                              unsigned long long value, bool clear) {
  PCMutexGuard guard(lock_);
  if (file == nullptr) return status::kNoRight;
  Changes changes(*file);
  Reached reached;
  const Status result = ReachKey(changes, user, tree, path, kModify, &reached);
  if (!result.IsOk()) return result;
  if (!clear) reached.key.setDefaultValue(value);
  reached.key.setDefaultSet(!clear);
  return changes.End(changes.Write(reached.keyId, reached.key));
}

}  // namespace tamu::registry
