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
  ChangeScope changes(*file);
  Reached reached;
  unsigned int result = ReachKey(changes, user, tree, path, kCreate, &reached);
  if (result != status::kOk) return result;
  if (value->type > kValueTypeMax) return status::kNoData;
  result = file->AcquireSlot(changes.id(), NodeKind::kValue, &reached.valueId);
  if (result != status::kOk) return result;
  // A number's bytes are stored in blocks too, which nothing ever frees. Test:
  // FileTreeValues.ANumberCreatedFromAValueTakesBlocksThatNobodyFrees
  const bool isNumber = value->type == kValueTypeInteger;
  unsigned int block = 0;
  if (value->size > 0) {
    result = file->WriteData(changes.id(), value->data, value->size, &block);
    if (result != status::kOk && !isNumber) {
      file->ReleaseValueNode(changes.id(), reached.valueId, nullptr);
      return result;
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
  return LinkNewValue(changes, &reached);
}

unsigned int TernaryRegistry::CreateValue(unsigned int user, void* tree, const char* path,
                                          const char* name, unsigned long long number, bool set) {
  PCMutexGuard guard(lock_);
  if (file == nullptr) return status::kNoRight;
  if (name == nullptr) return status::kBadArgument;
  ChangeScope changes(*file);
  Reached reached;
  unsigned int result = ReachKey(changes, user, tree, path, kCreate, &reached);
  if (result != status::kOk) return result;
  result = file->AcquireSlot(changes.id(), NodeKind::kValue, &reached.valueId);
  if (result != status::kOk) return result;
  TernaryValueNode& record = reached.value;
  record.setName(name);
  record.setSet(set);
  record.setDataSize(TernaryValueNode::kInlineSize);
  record.setNumber(number);
  return LinkNewValue(changes, &reached);
}

// Puts the value at the head of the key's chain. Failed writes are not reported, but a value that
// could not be written is never linked, so that the chain stays whole.
unsigned int TernaryRegistry::LinkNewValue(ChangeScope& changes, Reached* reached) {
  TernaryValueNode& record = reached->value;
  TernaryKeyNode& key = reached->key;
  record.setNextValue(key.firstValue());
  if (file->WriteValueNode(changes.id(), reached->valueId, &record, false) != status::kOk) {
    file->ReleaseValueNode(changes.id(), reached->valueId, nullptr);
    if (record.isInBlocks()) file->DeleteData(changes.id(), record.dataWord());
    return status::kOk;
  }
  key.setFirstValue(reached->valueId);
  if (key.valueCount() < 0xFFFF) key.setValueCount(key.valueCount() + 1u);
  file->WriteKeyNode(changes.id(), reached->keyId, &key, false);
  return status::kOk;
}

unsigned int TernaryRegistry::SetValue(unsigned int user, void* tree, const char* path,
                                       const char* name, Value* value) {
  if (IsTooLarge(value)) return status::kLimit;
  PCMutexGuard guard(lock_);
  if (file == nullptr) return status::kNoRight;
  if (LacksArgument(name, value)) return status::kBadArgument;
  ChangeScope changes(*file);
  Reached reached;
  unsigned int result = ReachKey(changes, user, tree, path, kModify, &reached);
  if (result != status::kOk) return result;
  if (value->type > kValueTypeMax) return status::kNoData;
  result = FindInChain(changes, name, &reached);
  return result == status::kOk ? ReplaceData(changes, *value, &reached) : result;
}

// The old blocks are given back before the new data is stored, so that it takes them again. The
// record lets go of them first: whatever happens from then on, it never leads to blocks of another
// value, and a value whose new data cannot be stored is left unset.
unsigned int TernaryRegistry::ReplaceData(ChangeScope& changes, const Value& value,
                                          Reached* reached) {
  TernaryValueNode& record = reached->value;
  const unsigned int valueId = reached->valueId;
  if (record.isInBlocks() && record.dataWord() != 0) {
    const unsigned int detached = LetGoOfBlocks(*file, changes.id(), valueId, &record);
    if (detached != status::kOk) return detached;
    file->DeleteData(changes.id(), record.dataWord());  // a damaged chain stays where it is
  }
  const TernaryValueNode before = record;
  const bool isNumber = value.type == kValueTypeInteger;
  record.setType(value.type);
  record.setInBlocks(!isNumber);
  record.setDataSize(value.size);
  unsigned int block = 0;
  unsigned int stored = status::kOk;
  if (!isNumber && value.size > 0) {
    stored = file->WriteData(changes.id(), value.data, value.size, &block);
  }
  // Of a number only the low half is written: the upper half of an older one stays.
  // Test: FileTreeValues.SettingANumberKeepsTheUpperHalfOfTheOldOne
  record.setDataWord(isNumber ? static_cast<unsigned int>(LeadingBytes(value, 4)) : block);
  record.setSet(stored == status::kOk);
  const unsigned int written = ReplaceValueRecord(*file, changes.id(), valueId, before, record);
  return stored != status::kOk ? stored : written;
}

// What leads to the value is written before its slot is given back. Its data blocks stay in use.
// Test: FileTreeValues.DeletingAValueKeepsItsBlocksInUse
unsigned int TernaryRegistry::DeleteValue(unsigned int user, void* tree, const char* path,
                                          const char* name) {
  PCMutexGuard guard(lock_);
  if (file == nullptr) return status::kNoRight;
  if (name == nullptr) return status::kBadArgument;
  ChangeScope changes(*file);
  Reached reached;
  unsigned int result = ReachValue(changes, user, tree, path, kDelete, name, &reached);
  if (result != status::kOk) return result;
  TernaryKeyNode& key = reached.key;
  const unsigned int beforeId = reached.beforeId;
  TernaryValueNode before;
  if (beforeId == 0) {
    key.setFirstValue(reached.value.nextValue());
  } else {
    if (changes.Read(beforeId, &before) != status::kOk) return status::kCannotOpen;
    TernaryValueNode relinked = before;
    relinked.setNextValue(reached.value.nextValue());
    result = file->WriteValueNode(changes.id(), beforeId, &relinked, false);
    if (result != status::kOk) return result;
  }
  if (key.valueCount() > 0) key.setValueCount(key.valueCount() - 1u);
  result = file->WriteKeyNode(changes.id(), reached.keyId, &key, false);
  if (result == status::kOk) {
    file->ReleaseValueNode(changes.id(), reached.valueId,
                           nullptr);  // kept in use when it cannot be freed
  } else if (beforeId != 0) {
    file->WriteValueNode(changes.id(), beforeId, &before, false);  // so that the count is right
  }
  return result;
}

unsigned int TernaryRegistry::SetDefaultValue(unsigned int user, void* tree, const char* path,
                                              unsigned long long value, bool clear) {
  PCMutexGuard guard(lock_);
  if (file == nullptr) return status::kNoRight;
  ChangeScope changes(*file);
  Reached reached;
  const unsigned int result = ReachKey(changes, user, tree, path, kModify, &reached);
  if (result != status::kOk) return result;
  if (!clear) reached.key.setDefaultValue(value);
  reached.key.setDefaultSet(!clear);
  return file->WriteKeyNode(changes.id(), reached.keyId, &reached.key, false);
}

}  // namespace tamu::registry
