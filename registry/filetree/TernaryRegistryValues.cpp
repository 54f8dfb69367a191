// Reading values and default values.
#include <new>

#include "registry/filetree/TernaryRegistry.h"

namespace tamu::registry {

// Looks along the chain, newest first.
unsigned int TernaryRegistry::FindInChain(AccessScope& access, const char* name, Reached* reached) {
  const unsigned int limit = file->Descriptor(NodeKind::kValue).totalNodes;
  unsigned int id = reached->key.firstValue();
  for (unsigned int steps = 0; id != 0; ++steps) {
    if (steps >= limit) return status::kInvalidFile;  // the links form a circle
    if (access.Read(id, &reached->value) != status::kOk) return status::kCannotOpen;
    if (reached->value.hasName(name)) {
      reached->valueId = id;
      return status::kOk;
    }
    reached->beforeId = id;
    id = reached->value.nextValue();
  }
  return status::kNotFound;
}

unsigned int TernaryRegistry::ReachValue(AccessScope& access, unsigned int user, const void* tree,
                                         const char* path, unsigned char right, const char* name,
                                         Reached* reached) {
  const unsigned int result = ReachKey(access, user, tree, path, right, reached);
  return result == status::kOk ? FindInChain(access, name, reached) : result;
}

unsigned int TernaryRegistry::FindValue(unsigned int keyNode, const char* name,
                                        unsigned int* valueNode, TernaryValueNode*& record) {
  PCMutexGuard guard(lock_);
  if (file == nullptr) return status::kNoRight;
  if (name == nullptr || valueNode == nullptr) return status::kBadArgument;
  AccessScope access(*file);
  Reached reached;
  unsigned int result = access.Read(keyNode, &reached.key);
  if (result != status::kOk) return result;
  result = FindInChain(access, name, &reached);
  if (result != status::kOk) return result;
  TernaryValueNode* copy = new (std::nothrow) TernaryValueNode(reached.value);
  if (copy == nullptr) return status::kNoMemory;
  *valueNode = reached.valueId;
  record = copy;
  return status::kOk;
}

unsigned int TernaryRegistry::GetValue(unsigned int user, void* tree, const char* path,
                                       const char* name, Value* value) {
  PCMutexGuard guard(lock_);
  if (file == nullptr) return status::kNoRight;
  if (name == nullptr || value == nullptr) return status::kBadArgument;
  AccessScope access(*file);
  Reached reached;
  unsigned int result = ReachValue(access, user, tree, path, kRead, name, &reached);
  if (result != status::kOk) return result;
  const TernaryValueNode& record = reached.value;
  if (!record.isSet()) return status::kNoData;

  // Zeroed, so that what the file does not give is not memory of somebody else.
  const unsigned int capacity = 4 * record.dataSize() + TernaryValueNode::kInlineSize;
  unsigned char* buffer = new (std::nothrow) unsigned char[capacity]();
  if (buffer == nullptr) return status::kNoMemory;
  if (record.isInBlocks()) {
    unsigned int size = record.dataSize();
    result = file->ReadData(buffer, &size, record.dataWord());
    if (result == status::kOk && size < record.dataSize()) result = status::kInvalidFile;
    if (result != status::kOk) {
      delete[] buffer;
      return result;
    }
  } else {
    // A number comes as its low 32 bits. Test: FileTreeValues.ANumberIsReadAsItsLowHalf
    PutU32(buffer, record.dataWord());
  }
  value->type = record.type();
  value->size = record.dataSize();
  value->data = buffer;
  return status::kOk;
}

unsigned int TernaryRegistry::GetDefaultValue(unsigned int user, void* tree, const char* path,
                                              unsigned long long* value) {
  PCMutexGuard guard(lock_);
  if (file == nullptr) return status::kNoRight;
  if (value == nullptr) return status::kBadArgument;
  AccessScope access(*file);
  Reached reached;
  const unsigned int result = ReachKey(access, user, tree, path, kRead, &reached);
  if (result != status::kOk) return result;
  if (!reached.key.isDefaultSet()) return status::kNoData;
  *value = reached.key.defaultValue();
  return status::kOk;
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
  PCMutexGuard guard(lock_);
  if (file == nullptr) return status::kNoRight;
  if (name == nullptr || offset == nullptr) return status::kBadArgument;
  AccessScope access(*file);
  Reached reached;
  unsigned int result = ReachValue(access, user, tree, path, kModify, name, &reached);
  if (result != status::kOk) return result;
  const TernaryValueNode& record = reached.value;
  if (!record.isSet()) return status::kNoData;
  unsigned int start = 0;
  if (record.isInBlocks()) {
    if (record.dataWord() == 0) return status::kNoData;
    result = file->Resolve(NodeKind::kData, record.dataWord(), start);
  } else {
    result = file->Resolve(NodeKind::kValue, reached.valueId, start);
    start += TernaryValueNode::kOffData;
  }
  if (result == status::kOk) *offset = start;
  return result;
}

}  // namespace tamu::registry
