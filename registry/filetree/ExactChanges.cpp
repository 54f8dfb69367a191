#include "registry/filetree/ExactChanges.h"

#include <memory>
#include <new>

#include "platform/PCMem.h"
#include "registry/base/RCEString.h"
#include "registry/base/Rights.h"
#include "registry/filetree/NewKey.h"
#include "registry/filetree/ValueWalk.h"
#include "registry/keytree/ValueRecords.h"

namespace tamu::registry {

namespace {

// A key whose parent is there.
Status MakeLast(Changes& changes, unsigned int user, const char* path) {
  NodeMatch match;
  Status result = SearchNodes(changes, StartNodeOf(changes, nullptr), path, &match);
  if (result.IsOk()) return status::kExists;
  if (result != status::kNotFound) return result;
  TernaryKeyNode key = NewKeyRecord(user, 0, 0, false);
  result = InheritPermission(changes, match, user, &key);
  if (!result.IsOk()) return result;
  bool atNode = false;
  return StoreKeyAt(changes, match, path, key, NewNameRule::kExact, &atNode);
}

Status CheckParent(const StoreAccess& access, const char* path) {
  NodeMatch match;
  const Status result = SearchNodes(access, StartNodeOf(access, nullptr), path, &match);
  return result == status::kNotFound ? Status(status::kBadArgument) : result;
}

bool HasEmptyComponent(const char* path) {
  for (unsigned int i = 0; path[i] != 0; ++i) {
    if (path[i] == '/' && (i == 0 || path[i + 1] == '/' || path[i + 1] == 0)) return true;
  }
  return false;
}

// Whether a value that was reached holds just this.
bool Holds(const StoreAccess& access, const TernaryValueNode& record, const Value& value) {
  if (!record.isSet() || record.type() != value.type || record.dataSize() != value.size) {
    return false;
  }
  Value stored = {};
  if (!ReadRecord(access, record, true, &stored).IsOk()) return false;
  const bool isSame = value.size == 0 || std::memcmp(stored.data, value.data, value.size) == 0;
  FreeValueData(stored);
  return isSame;
}

// Fills the record of a value whose data lies there.
void FillData(const char* name, const Value& value, DataId block, TernaryValueNode* record) {
  if (value.type == kValueTypeInteger) {
    FillRecord(record, name, LeadingBytes(value, TernaryValueNode::kInlineSize), true);
    return;
  }
  FillRecord(record, name, value, block);
  record->setSet(true);
}

Status CreateValueOf(Changes& changes, const char* name, const Value& value, Reached* reached) {
  ValueId id;
  DataId block = 0;
  Status result = changes.Take(&id);
  if (result.IsOk() && value.type != kValueTypeInteger) {
    result = StoreNewData(changes, value, &block);
  }
  if (!result.IsOk()) return result;
  TernaryValueNode record;
  FillData(name, value, block, &record);
  const unsigned int count = reached->key.valueCount();
  return LinkValue(changes, id, &record, reached->keyId, &reached->key,
                   count < 0xFFFF ? count + 1 : count);
}

Status ReplaceValueOf(Changes& changes, const char* name, const Value& value, Reached* reached) {
  TernaryValueNode& record = reached->value;
  const unsigned int next = record.nextValue();
  DataId block = 0;
  const Status result = ExchangeData(changes, reached->valueId, &record, value, &block);
  if (!result.IsOk()) return result;
  TernaryValueNode after;
  FillData(name, value, block, &after);
  after.setNextValue(next);
  return ReplaceValueRecord(changes, reached->valueId, record, after);
}

}  // namespace

Status MakeExactKey(Changes& changes, unsigned int user, const char* path, bool withParents) {
  if (path[0] == '/') ++path;
  if (path[0] == 0) return status::kExists;
  if (HasEmptyComponent(path)) return status::kBadArgument;
  const std::unique_ptr<char[]> beginning(RCEString::Duplicate(path));
  if (beginning == nullptr) return status::kNoMemory;
  for (unsigned int i = 0; path[i] != 0; ++i) {
    if (path[i] != '/') continue;
    beginning[i] = 0;
    const Status result = withParents ? MakeLast(changes, user, beginning.get())
                                      : CheckParent(changes, beginning.get());
    if (!result.IsOk() && result != status::kExists) return result;
    beginning[i] = '/';
  }
  return MakeLast(changes, user, path);
}

Status PutValueOf(Changes& changes, unsigned int user, const char* name, const Value& value,
                  Reached* reached) {
  const Status found = ReachValue(changes, name, reached);
  if (!found.IsOk() && found != status::kNotFound) return found;
  const unsigned char right = found.IsOk() ? kRightModify : kRightCreate;
  if (!IsAllowed(reached->key, user, right)) return status::kNoRight;
  if (!found.IsOk()) {
    changes.TellAs(ChangeKind::kValueCreated, name);
    return CreateValueOf(changes, name, value, reached);
  }
  return Holds(changes, reached->value, value) ? found
                                               : ReplaceValueOf(changes, name, value, reached);
}

Status RemoveReached(Changes& changes, Reached* reached) {
  DataId none;
  const Value nothing = {kValueTypeInteger, 0, nullptr};
  const ValueId next = reached->value.nextValue();
  Status result = ExchangeData(changes, reached->valueId, &reached->value, nothing, &none);
  TernaryKeyNode& key = reached->key;
  if (result.IsOk() && reached->beforeId != 0) {
    TernaryValueNode before;
    result = changes.Read(reached->beforeId, &before);
    before.setNextValue(next);
    if (result.IsOk()) result = changes.Write(reached->beforeId, before);
  } else {
    key.setFirstValue(next);
  }
  if (key.valueCount() > 0) key.setValueCount(key.valueCount() - 1u);
  if (result.IsOk()) result = changes.Write(reached->keyId, key);
  return result.IsOk() ? changes.Release(reached->valueId) : result;
}

Status ReleaseValues(Changes& changes, const Reached& key) {
  Reached rest = key;
  Status result = status::kOk;
  for (ValueId id = rest.key.firstValue(); result.IsOk() && id != 0;) {
    rest.valueId = id;
    result = changes.Read(id, &rest.value);
    if (result.IsOk()) result = RemoveReached(changes, &rest);
    id = rest.key.firstValue();
  }
  return result;
}

Status ReadRecord(const StoreAccess& access, const TernaryValueNode& record, bool whole,
                  Value* value) {
  if (!record.isSet()) return status::kNoData;
  // Zeroed, so that what the file does not give is not memory of somebody else.
  const unsigned int capacity = 4 * record.dataSize() + TernaryValueNode::kInlineSize;
  std::unique_ptr<unsigned char[]> buffer(new (std::nothrow) unsigned char[capacity]());
  if (buffer == nullptr) return status::kNoMemory;
  if (record.isInBlocks()) {
    unsigned int size = record.dataSize();
    Status result = access.ReadData(record.dataWord(), buffer.get(), &size);
    if (result.IsOk() && size < record.dataSize()) result = status::kInvalidFile;
    if (!result.IsOk()) return result;
  } else if (whole) {
    PutU64(buffer.get(), record.number());
  } else {
    // A number comes as its low 32 bits. Test: TernaryRegistryValues.ANumberIsReadAsItsLowHalf
    PutU32(buffer.get(), record.dataWord());
  }
  value->type = record.type();
  value->size = record.dataSize();
  value->data = buffer.release();
  return status::kOk;
}

Status CopyContents(Changes& changes, unsigned int user, const Reached& from, const char* toPath) {
  Reached to;
  Status result = ReachKey(changes, user, changes.StartNode(), toPath, kOpenToAll, &to);
  if (result.IsOk() && from.key.isDefaultSet()) {
    ChangeDefault(&to.key, from.key.defaultValue(), false);
    result = changes.Write(to.keyId, to.key);
  }
  ValueWalk walk(changes, from.key.firstValue());
  for (; result.IsOk() && !walk.IsOver(); walk.Advance()) {
    result = walk.Read();
    if (!result.IsOk()) break;
    const TernaryValueNode& record = walk.Record();
    if (!record.isSet() || ReachValue(changes, record.name(), &to).IsOk()) continue;
    Value value = {};
    result = ReadRecord(changes, record, true, &value);
    if (result.IsOk()) result = CreateValueOf(changes, record.name(), value, &to);
    FreeValueData(value);
  }
  return result;
}

}  // namespace tamu::registry
