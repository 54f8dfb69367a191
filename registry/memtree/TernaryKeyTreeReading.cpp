// Reading values and what a key tells of itself.
#include "registry/base/Rights.h"
#include "registry/base/UserId.h"
#include "registry/memtree/StringWalk.h"
#include "registry/memtree/TernaryKeyTree.h"
#include "registry/store/TernaryFile.h"

namespace tamu::registry {

namespace {

// Where the area of the table lies that an id names; id 0 is in the newest table.
unsigned int AreaOf(const TernaryNodeDescriptor& descriptor, unsigned int id,
                    unsigned int* offset) {
  const NodeAllocationTable* table = descriptor.lastTable;
  if (id != 0)
    table = TableOf(id) < descriptor.tableCount ? descriptor.tables[TableOf(id)] : nullptr;
  if (table == nullptr || SlotOf(id) >= table->entryCount()) return status::kInvalidFile;
  *offset = table->areaOffset();
  return status::kOk;
}

}  // namespace

unsigned int TernaryKeyTree::ReachKey(unsigned int user, void* tree, const char* path,
                                      unsigned char rights, Found* found) {
  const unsigned int result = FindKey(tree, path, found->string, found->key, found->owner);
  if (result != status::kOk) return result;
  const TernaryKey& key = *found->key;
  const bool isOwner = user == key.node->owner() || user == kAdministratorId;
  const bool may = rights == kMustOwn ? isOwner : key.isPermissible(user, rights);
  return may ? status::kOk : status::kNoRight;
}

unsigned int TernaryKeyTree::ReachValue(unsigned int user, void* tree, const char* path,
                                        unsigned char rights, const char* name, Found* found) {
  const unsigned int result = ReachKey(user, tree, path, rights, found);
  return result == status::kOk ? found->key->FindValue(name, found->value) : result;
}

unsigned int TernaryKeyTree::GetValue(unsigned int user, void* tree, const char* path,
                                      const char* name, Value* value) {
  PCMutexGuard guard(treeLock);
  if (initialized == 0) return status::kNoRight;
  if (name == nullptr || value == nullptr) return status::kBadArgument;
  Found found;
  unsigned int result = ReachValue(user, tree, path, kRightRead, name, &found);
  if (result != status::kOk) return result;
  // A refusal is not reported. Test: LoadedValues.AnotherTypeIsNotHandedOutAndNotReported
  result = found.value->GetValue(value);
  return result == status::kNoMemory ? result : status::kOk;
}

unsigned int TernaryKeyTree::GetDefaultValue(unsigned int user, void* tree, const char* path,
                                             unsigned long long* value) {
  PCMutexGuard guard(treeLock);
  if (initialized == 0) return status::kNoRight;
  if (value == nullptr) return status::kBadArgument;
  Found found;
  const unsigned int result = ReachKey(user, tree, path, kRightRead, &found);
  if (result != status::kOk) return result;
  return found.key->GetDefaultValue(value) == status::kOk ? status::kOk : status::kNoData;
}

// Slots are counted in sizes of a value's record, also those of data blocks.
// Test: LoadedValues.TheOffsetOfDataCountsSlotsOf52Bytes
unsigned int TernaryKeyTree::GetValueOffset(unsigned int user, void* tree, const char* path,
                                            const char* name, unsigned int* offset) {
  PCMutexGuard guard(treeLock);
  if (initialized == 0) return status::kNoRight;
  if (name == nullptr || offset == nullptr) return status::kBadArgument;
  Found found;
  unsigned int result = ReachValue(user, tree, path, kRightModify, name, &found);
  if (result != status::kOk) return result;
  const TernaryValue& value = *found.value;
  if (!value.node->isSet()) return status::kNoData;
  const bool inBlocks = value.node->isInBlocks();
  const unsigned int id = inBlocks ? value.GetDataId() : value.id;
  TernaryFile::AccessScope access(*file);
  unsigned int start = 0;
  result = AreaOf(file->Descriptor(inBlocks ? NodeKind::kData : NodeKind::kValue), id, &start);
  if (result != status::kOk) return result;
  *offset =
      start + (inBlocks ? 0 : TernaryValueNode::kOffData) + SlotOf(id) * TernaryValueNode::kSize;
  return status::kOk;
}

void TernaryKeyTree::CountKeyValues(unsigned int* count, const TernaryKey& key) {
  for (const TernaryValue* value = key.firstValue; value != nullptr; value = value->next) ++*count;
}

// Counts the keys of a directory and all below it. The mark of a string is its level.
void TernaryKeyTree::RecursiveCountKey(KeyInfo* info, TernaryString* string) {
  StringWalk walk(kListingOrder);
  for (walk.Start(string); !walk.IsOver(); walk.Next()) {
    TernaryString& s = walk.Current();
    const TernaryString* parent = walk.Parent();
    if (walk.IsEntered()) {
      if (parent == nullptr) continue;
      s.walkMark = parent->walkMark + (walk.Via() == NodeLink::kChild ? 1 : 0);
    } else if (s.key != nullptr) {
      if (s.walkMark == 0) ++info->subKeyCount;
      ++info->totalKeyCount;
      CountKeyValues(&info->totalValueCount, *s.key);
    }
  }
}

unsigned int TernaryKeyTree::GetKeyInfo(unsigned int user, void* tree, const char* path,
                                        KeyInfo* info) {
  PCMutexGuard guard(treeLock);
  if (initialized == 0) return status::kNoRight;
  if (info == nullptr) return status::kBadArgument;
  Found found;
  const unsigned int result = FindKey(tree, path, found.string, found.key, found.owner);
  if (result != status::kOk) return result;
  info->userId = user;
  info->permission = found.key->node->permission();
  info->subKeyCount = 0;
  info->totalKeyCount = 0;
  info->valueCount = 0;
  info->totalValueCount = 0;
  if (!found.key->isPermissible(user, kRightRead)) return status::kNoRight;
  RecursiveCountKey(info, found.string->directory);
  CountKeyValues(&info->valueCount, *found.key);
  info->totalValueCount += info->valueCount;
  return status::kOk;
}

unsigned int TernaryKeyTree::GetKeyPermission(unsigned int, void* tree, const char* path,
                                              unsigned char* permission) {
  PCMutexGuard guard(treeLock);
  if (initialized == 0) return status::kNoRight;
  if (permission == nullptr) return status::kBadArgument;
  Found found;
  const unsigned int result = FindKey(tree, path, found.string, found.key, found.owner);
  if (result == status::kOk) *permission = found.key->node->permission();
  return result;
}

unsigned int TernaryKeyTree::GetChangeBuffer(ChangeBuffer*&) {
  return status::kNotFound;
}

}  // namespace tamu::registry
