// Creating, changing and deleting values.
#include <new>
#include <utility>

#include "registry/base/Rights.h"
#include "registry/base/ValueCheck.h"
#include "registry/keytree/ValueRecords.h"
#include "registry/memtree/LoadedObject.h"
#include "registry/memtree/TernaryKeyTree.h"

namespace tamu::registry {

namespace {

// Puts a new value before the key's others.
Status LinkNewValue(Changes& changes, TernaryKey* key, std::unique_ptr<TernaryValue> value) {
  TernaryKeyNode after = key->node;
  const Status result = changes.End(
      LinkValue(changes, value->id, &value->node, key->id, &after, after.valueCount() + 1u));
  if (result.IsOk()) key->AddValue(value.release());
  return result;
}

}  // namespace

unsigned int TernaryKeyTree::CreateValue(unsigned int user, void* tree, const char* path,
                                         const char* name, Value* value) {
  if (IsTooLarge(value)) return status::kLimit;
  const auto create = [&](const Found& found) {
    Changes changes(*file);
    std::unique_ptr<TernaryValue> made;
    Status result = TakeLoaded(changes, TernaryValueNode(), &made);
    if (!result.IsOk()) return changes.End(result);
    // A value that is refused gives its slot back; a file that has grown for it stays so.
    // Test: TernaryKeyTreeValueRefusalsTest.AnUnknownTypeIsRefusedAfterTheFileHasGrown
    result = made->SetValue(name, value, 0);
    if (!result.IsOk()) {
      return changes.End(changes.GiveBack(made->id, result));
    }
    DataId block = 0;
    result = StoreNewData(changes, *value, &block);
    if (!result.IsOk()) return result;
    if (made->node.isInBlocks()) made->node.setDataWord(block);
    return LinkNewValue(changes, found.key, std::move(made));
  };
  const bool given = !LacksArgument(name, value);
  return ChangeKey(user, tree, path, kRightCreate, nullptr, given, create);
}

unsigned int TernaryKeyTree::CreateValue(unsigned int user, void* tree, const char* path,
                                         const char* name, unsigned long long number, bool isSet) {
  const auto create = [&](const Found& found) {
    Changes changes(*file);
    std::unique_ptr<TernaryValue> made;
    const Status result = TakeLoaded(changes, TernaryValueNode(), &made);
    if (!result.IsOk()) return changes.End(result);
    made->SetValue(name, number, isSet);
    return LinkNewValue(changes, found.key, std::move(made));
  };
  return ChangeKey(user, tree, path, kRightCreate, nullptr, name != nullptr, create);
}

// A value of no known type changes nothing, and is not reported.
// Test: TernaryKeyTreeValueRefusalsTest.AnUnknownTypeChangesNothingAndIsNotReported
unsigned int TernaryKeyTree::SetValue(unsigned int user, void* tree, const char* path,
                                      const char* name, Value* value) {
  if (IsTooLarge(value)) return status::kLimit;
  const auto set = [&](const Found& found) {
    if (value->type > kValueTypeMax) return Status(status::kOk);
    return ReplaceData(*found.value, name, *value);
  };
  return ChangeKey(user, tree, path, kRightModify, name, !LacksArgument(name, value), set);
}

Status TernaryKeyTree::ReplaceData(TernaryValue& target, const char* name, const Value& value) {
  TernaryValue next(target.id, target.node);
  Status result = next.SetValue(name, &value, 0);
  if (!result.IsOk()) return result;
  Changes changes(*file);
  TernaryValueNode before = target.node;
  DataId block = 0;
  result = ExchangeData(changes, target.id, &before, value, &block);
  if (!result.IsOk()) return result;
  if (next.node.isInBlocks()) next.node.setDataWord(block);
  result = changes.End(ReplaceValueRecord(changes, target.id, before, next.node));
  if (result.IsOk()) target.Exchange(next);
  return result;
}

// What leads to the value is written before its slot is given back: the value before it, or else
// the key. So the count in the file is as it was when a value before it is left.
// Test: TernaryKeyTreeValueDeletionTest.TheStoredCountFollowsTheFirstValueAlone
unsigned int TernaryKeyTree::DeleteValue(unsigned int user, void* tree, const char* path,
                                         const char* name) {
  const auto remove = [&](const Found& found) -> Status {
    TernaryKey& key = *found.key;
    const TernaryValue* before = nullptr;
    for (TernaryValue* value = key.firstValue; value != found.value; value = value->next) {
      before = value;
    }
    const ValueId nextId = found.value->next != nullptr ? found.value->next->id : ValueId();
    Changes changes(*file);
    Status result = status::kOk;
    if (before != nullptr) {
      TernaryValueNode after = before->node;
      after.setNextValue(nextId);
      result = changes.Write(before->id, after);
    } else {
      TernaryKeyNode after = key.node;
      after.setFirstValue(nextId);
      after.setValueCount(after.valueCount() - 1u);
      result = changes.Write(key.id, after);
    }
    // With SpacePolicy::kExact its data blocks stay in use.
    // Test: TernaryKeyTreeValueDeletionTest.DeletingAValueKeepsItsBlocksInUse
    if (result.IsOk()) ReleaseValue(changes, found.value->id, found.value->node);
    result = changes.End(result);
    if (!result.IsOk()) return result;
    TernaryValue* removed = nullptr;
    TernaryValue* previous = nullptr;
    result = key.RemoveValue(name, removed, previous);
    delete removed;
    return result;
  };
  return ChangeKey(user, tree, path, kRightDelete, name, name != nullptr, remove);
}

}  // namespace tamu::registry
