// Operations on values: arguments are checked here, the rest is the key trees'.
#include "platform/PCMem.h"
#include "registry/RegistryRouting.h"

namespace tamu::registry {

namespace {

// A value whose data cannot be there.
bool LacksData(const Value& value) {
  return value.size > 0 && value.data == nullptr;
}

// The number that a value to be created holds. All eight bytes are there unless the size tells of
// fewer: it may be left at 0. Test: RegistryValuesTest.ANumberWhoseSizeIsLeftAt0HasEightBytes
unsigned long long NumberIn(const Value& value) {
  unsigned char bytes[sizeof(unsigned long long)] = {};
  const bool isShort = value.size > 0 && value.size < sizeof bytes;
  PCMem::Copy(bytes, value.data, isShort ? value.size : sizeof bytes);
  return GetU64(bytes);
}

}  // namespace

unsigned int Registry::GetValue(unsigned int handle, const char* keyPath, const char* name,
                                Value* value) {
  if (!IsReady()) return status::kNoRight;
  if (keyPath == nullptr || name == nullptr || value == nullptr) return status::kBadArgument;
  if (value->type != kValueTypeOffset) {
    return RouteRead(handle, [&](RegistryInterface& tree, void* treeHandle) {
      return tree.GetValue(userId, treeHandle, keyPath, name, value);
    });
  }
  unsigned int offset = 0;
  if (value->size < sizeof offset || value->data == nullptr) return status::kBadArgument;
  const unsigned int result = RouteLook(handle, [&](RegistryInterface& tree, void* treeHandle) {
    return tree.GetValueOffset(userId, treeHandle, keyPath, name, &offset);
  });
  if (result == status::kOk) PCMem::Copy(value->data, &offset, sizeof offset);
  return result;
}

unsigned int Registry::SetValue(unsigned int handle, const char* keyPath, const char* name,
                                Value* value) {
  if (!MayChange()) return status::kNoRight;
  if (keyPath == nullptr || name == nullptr || value == nullptr || LacksData(*value)) {
    return status::kBadArgument;
  }
  return RouteChange(handle, ChangeKind::kValueSet, keyPath, name,
                     [&](RegistryInterface& tree, void* treeHandle) {
                       return tree.SetValue(userId, treeHandle, keyPath, name, value);
                     });
}

unsigned int Registry::CreateValue(unsigned int handle, const char* keyPath, const char* name,
                                   Value* value) {
  if (!MayChange()) return status::kNoRight;
  if (keyPath == nullptr || name == nullptr || name[0] == 0) return status::kBadArgument;
  if (value == nullptr) {
    return RouteChange(handle, ChangeKind::kValueCreated, keyPath, name,
                       [&](RegistryInterface& tree, void* treeHandle) {
                         return tree.CreateValue(userId, treeHandle, keyPath, name, 0, false);
                       });
  }
  if (LacksData(*value)) return status::kBadArgument;
  if (value->type != kValueTypeInteger) {
    return RouteChange(handle, ChangeKind::kValueCreated, keyPath, name,
                       [&](RegistryInterface& tree, void* treeHandle) {
                         return tree.CreateValue(userId, treeHandle, keyPath, name, value);
                       });
  }
  if (value->data == nullptr) return status::kBadArgument;
  const unsigned long long number = NumberIn(*value);
  return RouteChange(handle, ChangeKind::kValueCreated, keyPath, name,
                     [&](RegistryInterface& tree, void* treeHandle) {
                       return tree.CreateValue(userId, treeHandle, keyPath, name, number, true);
                     });
}

unsigned int Registry::DeleteValue(unsigned int handle, const char* keyPath, const char* name) {
  if (!MayChange()) return status::kNoRight;
  if (name == nullptr) return status::kBadArgument;
  return RouteChange(handle, ChangeKind::kValueDeleted, keyPath, name,
                     [&](RegistryInterface& tree, void* treeHandle) {
                       return tree.DeleteValue(userId, treeHandle, keyPath, name);
                     });
}

unsigned int Registry::GetDefaultValue(unsigned int handle, const char* keyPath,
                                       unsigned long long* value) {
  if (!IsReady()) return status::kNoRight;
  if (keyPath == nullptr || value == nullptr) return status::kBadArgument;
  return RouteRead(handle, [&](RegistryInterface& tree, void* treeHandle) {
    return tree.GetDefaultValue(userId, treeHandle, keyPath, value);
  });
}

unsigned int Registry::SetDefaultValue(unsigned int handle, const char* keyPath,
                                       unsigned long long value) {
  if (!MayChange()) return status::kNoRight;
  if (keyPath == nullptr) return status::kBadArgument;
  return RouteChange(handle, ChangeKind::kDefaultChanged, keyPath, nullptr,
                     [&](RegistryInterface& tree, void* treeHandle) {
                       return tree.SetDefaultValue(userId, treeHandle, keyPath, value, false);
                     });
}

}  // namespace tamu::registry
