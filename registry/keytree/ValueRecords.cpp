#include "registry/keytree/ValueRecords.h"

#include "platform/PCMem.h"

namespace tamu::registry {

namespace {

// As long as it is written, it is a number that is not set, whatever it holds.
TernaryValueNode Unset(const TernaryValueNode& record) {
  TernaryValueNode unset = record;
  unset.setType(kValueTypeInteger);
  unset.setInBlocks(false);
  unset.setSet(false);
  return unset;
}

}  // namespace

unsigned long long LeadingBytes(const Value& value, unsigned int width) {
  unsigned char bytes[TernaryValueNode::kInlineSize] = {};
  PCMem::Copy(bytes, value.data, value.size < width ? value.size : width);
  return GetU64(bytes);
}

void FillRecord(TernaryValueNode* record, const char* name, unsigned long long number, bool isSet) {
  record->setName(name);
  record->setType(kValueTypeInteger);
  record->setSet(isSet);
  record->setInBlocks(false);
  record->setDataSize(TernaryValueNode::kInlineSize);
  record->setNumber(number);
}

void FillRecord(TernaryValueNode* record, const char* name, const Value& value, DataId dataId) {
  if (value.type == kValueTypeInteger) {
    // Read first: they may be the record's own bytes.
    const unsigned long long number = LeadingBytes(value, TernaryValueNode::kInlineSize);
    FillRecord(record, name, number, value.size != 0);
    return;
  }
  record->setName(name);
  record->setType(value.type);
  record->setSet(value.size != 0);
  record->setInBlocks(true);
  record->setDataSize(value.size);
  record->setDataWord(dataId);
}

Status StoreNewData(Changes& changes, const Value& value, DataId* dataId) {
  *dataId = 0;
  const bool isNumber = value.type == kValueTypeInteger;
  if (value.size == 0 || (isNumber && changes.ReusesSpace())) return status::kOk;
  const Status stored = changes.StoreData(value.data, value.size, dataId);
  return isNumber && stored == status::kLimit ? Status(status::kOk) : stored;
}

Status LinkValue(Changes& changes, ValueId valueId, TernaryValueNode* value, KeyId keyId,
                 TernaryKeyNode* key, unsigned int count) {
  value->setNextValue(key->firstValue());
  key->setFirstValue(valueId);
  key->setValueCount(count);
  const Status result = changes.Write(valueId, *value);
  return result.IsOk() ? changes.Write(keyId, *key) : result;
}

Status ExchangeData(Changes& changes, ValueId id, TernaryValueNode* record, const Value& value,
                    DataId* dataId) {
  *dataId = 0;
  if (record->isInBlocks() && record->dataWord() != 0) {
    const DataId block = record->dataWord();
    Status result = LetGoOfBlocks(changes, id, record);
    bool isDone = false;
    if (result.IsOk() && value.type != kValueTypeInteger) {
      result = changes.OverwriteData(block, value.data, value.size, &isDone);
    }
    if (isDone && result.IsOk()) *dataId = block;
    if (result.IsOk() && !isDone) result = changes.ReleaseDataIfSound(block);
    if (isDone || !result.IsOk()) return result;
  }
  if (value.type == kValueTypeInteger || value.size == 0) return status::kOk;
  return changes.StoreData(value.data, value.size, dataId);
}

void ReleaseValue(Changes& changes, ValueId id, const TernaryValueNode& record) {
  if (changes.ReusesSpace() && record.isInBlocks()) {
    changes.ReleaseData(record.dataWord()).Ignore();
  }
  changes.Release(id).Ignore();
}

Status LetGoOfBlocks(Changes& changes, ValueId id, TernaryValueNode* record) {
  const TernaryValueNode unset = Unset(*record);
  const Status result = changes.Write(id, unset);
  if (result.IsOk()) *record = unset;
  return result;
}

// The word of data in blocks is there before the flags tell of it: a second write changes these
// alone.
Status ReplaceValueRecord(Changes& changes, ValueId id, const TernaryValueNode& before,
                          const TernaryValueNode& after) {
  Status result = status::kOk;
  if (after.isInBlocks() && after.dataWord() != before.dataWord()) {
    result = changes.Write(id, Unset(after));
  }
  return result.IsOk() ? changes.Write(id, after) : result;
}

}  // namespace tamu::registry
