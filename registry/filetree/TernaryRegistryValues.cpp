// Values and default values.
#include "registry/base/ValueCheck.h"
#include "registry/filetree/ExactChanges.h"
#include "registry/filetree/TernaryRegistry.h"
#include "registry/filetree/ValueWalk.h"
#include "registry/keytree/NameListing.h"
#include "registry/keytree/ValueRecords.h"

namespace tamu::registry {

namespace {

// Puts the value at the head of the key's chain. More values than can be counted are there all the
// same.
Status LinkNewValue(Changes& changes, Reached* reached) {
  const unsigned int count = reached->key.valueCount();
  return LinkValue(changes, reached->valueId, &reached->value, reached->keyId, &reached->key,
                   count < 0xFFFF ? count + 1 : count);
}

Status ReplaceData(Changes& changes, const Value& value, Reached* reached) {
  TernaryValueNode& record = reached->value;
  const ValueId valueId = reached->valueId;
  DataId block = 0;
  const Status stored = ExchangeData(changes, valueId, &record, value, &block);
  if (!stored.IsOk()) return stored;
  const TernaryValueNode before = record;
  const bool isNumber = value.type == kValueTypeInteger;
  record.setType(value.type);
  record.setInBlocks(!isNumber);
  record.setDataSize(value.size);
  // Of a number only the low half is written: the upper half of an older one stays.
  // Test: TernaryRegistryValueWrites.SettingANumberKeepsTheUpperHalfOfTheOldOne
  record.setDataWord(block);
  if (isNumber) record.setDataWord(static_cast<unsigned int>(LeadingBytes(value, 4)));
  record.setSet(true);
  return ReplaceValueRecord(changes, valueId, before, record);
}

}  // namespace

unsigned int TernaryRegistry::CreateValue(unsigned int user, void* tree, const char* path,
                                          const char* name, Value* value) {
  if (IsTooLarge(value)) return status::kLimit;
  const auto create = [&](Changes& changes, Reached& reached) -> Status {
    if (value->type > kValueTypeMax) return status::kNoData;
    Status result = changes.Take(&reached.valueId);
    if (!result.IsOk()) return changes.End(result);
    DataId block = 0;
    result = StoreNewData(changes, *value, &block);
    if (!result.IsOk()) {
      return changes.End(changes.GiveBack(reached.valueId, result));
    }
    FillRecord(&reached.value, name, *value, block);
    return changes.End(LinkNewValue(changes, &reached));
  };
  const bool given =
      !LacksArgument(name, value) && (value->type != kValueTypeInteger || value->data != nullptr);
  return OnKey<Changes>(user, tree, path, kCreate, given, create);
}

unsigned int TernaryRegistry::CreateValue(unsigned int user, void* tree, const char* path,
                                          const char* name, unsigned long long number, bool set) {
  const auto create = [&](Changes& changes, Reached& reached) {
    const Status result = changes.Take(&reached.valueId);
    if (!result.IsOk()) return changes.End(result);
    FillRecord(&reached.value, name, number, set);
    return changes.End(LinkNewValue(changes, &reached));
  };
  return OnKey<Changes>(user, tree, path, kCreate, name != nullptr, create);
}

unsigned int TernaryRegistry::SetValue(unsigned int user, void* tree, const char* path,
                                       const char* name, Value* value) {
  if (IsTooLarge(value)) return status::kLimit;
  const auto set = [&](Changes& changes, Reached& reached) -> Status {
    if (value->type > kValueTypeMax) return status::kNoData;
    Status result = ReachValue(changes, name, &reached);
    if (result.IsOk()) result = ReplaceData(changes, *value, &reached);
    return result.IsOk() ? changes.End(result) : result;
  };
  return OnKey<Changes>(user, tree, path, kModify, !LacksArgument(name, value), set);
}

unsigned int TernaryRegistry::GetValue(unsigned int user, void* tree, const char* path,
                                       const char* name, Value* value) {
  const auto get = [&](StoreAccess& access, Reached& reached) -> Status {
    const Status result = ReachValue(access, name, &reached);
    return result.IsOk() ? ReadRecord(access, reached.value, false, value) : result;
  };
  return OnKey<StoreAccess>(user, tree, path, kRead, name != nullptr && value != nullptr, get);
}

// What leads to the value is written before it is given back; with SpacePolicy::kExact its data
// blocks stay in use.
// Test: TernaryRegistryValueWrites.DeletingAValueKeepsItsBlocksInUse
unsigned int TernaryRegistry::DeleteValue(unsigned int user, void* tree, const char* path,
                                          const char* name) {
  const auto remove = [&](Changes& changes, Reached& reached) -> Status {
    Status result = ReachValue(changes, name, &reached);
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
    if (result.IsOk()) ReleaseValue(changes, reached.valueId, reached.value);
    return changes.End(result);
  };
  return OnKey<Changes>(user, tree, path, kDelete, name != nullptr, remove);
}

unsigned int TernaryRegistry::GetDefaultValue(unsigned int user, void* tree, const char* path,
                                              unsigned long long* value) {
  const auto get = [&](StoreAccess&, Reached& reached) -> Status {
    if (!reached.key.isDefaultSet()) return status::kNoData;
    *value = reached.key.defaultValue();
    return status::kOk;
  };
  return OnKey<StoreAccess>(user, tree, path, kRead, value != nullptr, get);
}

unsigned int TernaryRegistry::SetDefaultValue(unsigned int user, void* tree, const char* path,
                                              unsigned long long value, bool clear) {
  const auto set = [&](Changes& changes, Reached& reached) {
    ChangeDefault(&reached.key, value, clear);
    return changes.End(changes.Write(reached.keyId, reached.key));
  };
  return OnKey<Changes>(user, tree, path, kModify, true, set);
}

unsigned int TernaryRegistry::GetSetValue(unsigned int user, void* tree, const char* path,
                                          const char* name, unsigned long long* number, bool get) {
  if (number == nullptr) return status::kBadArgument;
  if (!get) {
    unsigned char bytes[TernaryValueNode::kInlineSize];
    PutU64(bytes, *number);
    Value value = {kValueTypeInteger, sizeof bytes, bytes};
    return SetValue(user, tree, path, name, &value);
  }
  ReadValue value(kValueTypeInteger);
  const unsigned int result = GetValue(user, tree, path, name, &value);
  if (result == status::kOk) *number = value.number();
  return result;
}

unsigned int TernaryRegistry::GetValueOffset(unsigned int user, void* tree, const char* path,
                                             const char* name, unsigned int* offset) {
  const auto get = [&](StoreAccess& access, Reached& reached) -> Status {
    Status result = ReachValue(access, name, &reached);
    if (!result.IsOk()) return result;
    const TernaryValueNode& record = reached.value;
    if (!record.isSet()) return status::kNoData;
    unsigned int start = 0;
    if (record.isInBlocks()) {
      if (record.dataWord() == 0) return status::kNoData;
      result = access.Resolve(NodeKind::kData, record.dataWord(), &start);
    } else {
      result = access.Resolve(NodeKind::kValue, reached.valueId, &start);
      start += TernaryValueNode::kOffData;
    }
    if (result.IsOk()) *offset = start;
    return result;
  };
  return OnKey<StoreAccess>(user, tree, path, kModify, name != nullptr && offset != nullptr, get);
}

unsigned int TernaryRegistry::ListValues(unsigned int user, void* tree, const char* path,
                                         unsigned int index, NameList* names) {
  const unsigned int before = names != nullptr ? names->Count() : 0;
  const auto list = [&](StoreAccess& access, Reached& reached) -> Status {
    names->CutTo(before);
    if (reached.key.valueCount() <= index) return status::kLimit;
    unsigned int skip = index;
    for (ValueWalk walk(access, reached.key.firstValue()); !walk.IsOver(); walk.Advance()) {
      Status result = walk.Read();
      // A damaged name may lack its terminator.
      if (result.IsOk()) {
        result = AddName(names, &skip, walk.Record().name(), TernaryValueNode::kNameSize);
      }
      if (!result.IsOk()) return result;
    }
    return status::kOk;
  };
  return OnKey<StoreAccess>(user, tree, path, kRead, names != nullptr, list);
}

}  // namespace tamu::registry
