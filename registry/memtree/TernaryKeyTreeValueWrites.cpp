// Creating, changing and deleting values.
#include <new>

#include "registry/base/Rights.h"
#include "registry/base/ValueCheck.h"
#include "registry/keytree/ValueRecords.h"
#include "registry/memtree/StringLock.h"
#include "registry/memtree/TernaryKeyTree.h"
#include "registry/store/TernaryFile.h"

namespace tamu::registry {

// A value of a slot just taken. Nothing is written yet.
unsigned int TernaryKeyTree::AcquireValue(unsigned int changes, TernaryValue*& value) {
  unsigned int id = 0;
  TernaryValueNode* record = nullptr;
  const unsigned int result = file->AcquireValueNode(changes, &id, record);
  if (result != status::kOk) return result;
  value = new (std::nothrow) TernaryValue(id, record);
  if (value != nullptr) return status::kOk;
  file->ReleaseValueNode(changes, id, record);
  return status::kNoMemory;
}

// Gives up a new value that no key leads to.
void TernaryKeyTree::DropValue(unsigned int changes, TernaryValue* value) {
  file->ReleaseValueNode(changes, value->id, nullptr);
  file->DeleteData(changes, value->GetDataId());
  delete value;
}

// Puts a new value before the key's others. Failed writes are not reported; the value is then given
// up, and the key is as before.
void TernaryKeyTree::LinkNewValue(unsigned int changes, TernaryKey* key, TernaryValue* value) {
  value->node->setNextValue(key->node->firstValue());
  if (file->WriteValueNode(changes, value->id, value->node, false) != status::kOk) {
    DropValue(changes, value);
    return;
  }
  const TernaryKeyNode before = *key->node;
  key->AddValue(value);
  if (file->WriteKeyNode(changes, key->id, key->node, false) == status::kOk) return;
  key->firstValue = value->next;
  *key->node = before;
  if (file->WriteKeyNode(changes, key->id, key->node, false) == status::kOk) {
    DropValue(changes, value);
  } else {
    delete value;  // the file may lead to its slot
  }
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
  TernaryFile::ChangeScope changes(*file);
  TernaryValue* made = nullptr;
  result = AcquireValue(changes.id(), made);
  if (result != status::kOk) return result;
  result = made->SetValue(name, value, 0);
  if (result != status::kOk) {
    DropValue(changes.id(), made);
    return result;
  }
  // A number's bytes are stored in blocks too, which nothing ever frees. Data that cannot be stored
  // is not reported. Tests: LoadedValueWrites.ANumberCreatedFromAValueTakesBlocksThatNobodyFrees,
  // LoadedValueWrites.DataThatCannotBeStoredIsReadUntilItIsUnloaded
  unsigned int block = 0;
  if (value->size > 0) file->WriteData(changes.id(), value->data, value->size, &block);
  if (made->node->isInBlocks()) made->node->setDataWord(block);
  LinkNewValue(changes.id(), found.key, made);
  return status::kOk;
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
  TernaryFile::ChangeScope changes(*file);
  TernaryValue* made = nullptr;
  result = AcquireValue(changes.id(), made);
  if (result != status::kOk) return result;
  made->SetValue(name, number, isSet);
  LinkNewValue(changes.id(), found.key, made);
  return status::kOk;
}

// Lets the record in the file go of its data blocks, and gives them back so that new data takes
// them again. Whatever happens from then on, the value never leads to blocks of another one.
void TernaryKeyTree::GiveBackData(unsigned int changes, unsigned int valueId,
                                  TernaryValueNode* record) {
  if (!record->isInBlocks() || record->dataWord() == 0) return;
  if (LetGoOfBlocks(*file, changes, valueId, record) == status::kOk) {
    file->DeleteData(changes, record->dataWord());
  }
}

// A value of no known type changes nothing, and is not reported; neither is data that cannot be
// stored. Tests: LoadedValueWrites.AnUnknownTypeChangesNothingAndIsNotReported,
// LoadedValueWrites.DataThatCannotBeStoredIsReadUntilItIsUnloaded
unsigned int TernaryKeyTree::SetValue(unsigned int user, void* tree, const char* path,
                                      const char* name, Value* value) {
  if (IsTooLarge(value)) return status::kLimit;
  PCMutexGuard guard(treeLock);
  if (initialized == 0) return status::kNoRight;
  if (LacksArgument(name, value)) return status::kBadArgument;
  StringLock lock;
  Found found;
  unsigned int result = LockKey(user, tree, path, kRightModify, name, &lock, &found);
  if (result != status::kOk || value->type > kValueTypeMax) return result;
  TernaryValue& target = *found.value;
  TernaryValueNode before = *target.node;
  result = target.SetValue(name, value, 0);
  if (result != status::kOk) return result;  // no memory: nothing is changed
  TernaryFile::ChangeScope changes(*file);
  GiveBackData(changes.id(), target.id, &before);
  if (target.node->isInBlocks()) {
    // The caller's data may have been this value's own, and gone.
    const unsigned int size = target.node->dataSize();
    unsigned int block = 0;
    if (size > 0) file->WriteData(changes.id(), target.data, size, &block);
    target.node->setDataWord(block);
  }
  ReplaceValueRecord(*file, changes.id(), target.id, before, *target.node);
  return status::kOk;
}

// Writes the record that leads to the value behind `before`, or to a key's first value if null.
unsigned int TernaryKeyTree::WriteBefore(unsigned int changes, const TernaryKey& key,
                                         const TernaryValue* before) {
  return before != nullptr ? file->WriteValueNode(changes, before->id, before->node, false)
                           : file->WriteKeyNode(changes, key.id, key.node, false);
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
  TernaryFile::ChangeScope changes(*file);
  TernaryValue* removed = nullptr;
  TernaryValue* before = nullptr;
  result = found.key->RemoveValue(name, removed, before);
  if (result != status::kOk) return result;
  result = WriteBefore(changes.id(), *found.key, before);
  if (result == status::kOk) {
    // Its data blocks stay in use. Test: LoadedValueWrites.DeletingAValueKeepsItsBlocksInUse
    file->ReleaseValueNode(changes.id(), removed->id, nullptr);
    delete removed;
  } else {
    found.key->PutBackValue(removed, before);
    WriteBefore(changes.id(), *found.key, before);  // what was written of it
  }
  return result;
}

}  // namespace tamu::registry
