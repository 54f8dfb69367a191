// Operations on keys: arguments are checked here, the rest is the key trees'.
#include "registry/RegistryRouting.h"

namespace tamu::registry {

unsigned int Registry::CreateKey(unsigned int handle, const char* keyPath,
                                 unsigned long long defaultValue) {
  if (!MayChange()) return status::kNoRight;
  return RouteChange(handle, ChangeKind::kKeyCreated, keyPath, nullptr,
                     [&](RegistryInterface& tree, void* treeHandle) {
                       return tree.CreateKey(userId, treeHandle, keyPath, defaultValue, true);
                     });
}

unsigned int Registry::CreateKey(unsigned int handle, const char* keyPath) {
  if (!MayChange()) return status::kNoRight;
  return RouteChange(handle, ChangeKind::kKeyCreated, keyPath, nullptr,
                     [&](RegistryInterface& tree, void* treeHandle) {
                       return tree.CreateKey(userId, treeHandle, keyPath, 0, false);
                     });
}

unsigned int Registry::DeleteKey(unsigned int handle, const char* keyPath) {
  if (!MayChange()) return status::kNoRight;
  return RouteChange(handle, ChangeKind::kKeyDeleted, keyPath, nullptr,
                     [&](RegistryInterface& tree, void* treeHandle) {
                       return tree.DeleteKey(userId, treeHandle, keyPath);
                     });
}

unsigned int Registry::GetKeyInfo(unsigned int handle, const char* keyPath, KeyInfo* info) {
  if (!IsReady()) return status::kNoRight;
  if (keyPath == nullptr || info == nullptr) return status::kBadArgument;
  return RouteLook(handle, [&](RegistryInterface& tree, void* treeHandle) {
    return tree.GetKeyInfo(userId, treeHandle, keyPath, info);
  });
}

unsigned int Registry::GetKeyPermission(unsigned int handle, const char* keyPath,
                                        unsigned char* permission) {
  if (!IsReady()) return status::kNoRight;
  if (keyPath == nullptr || permission == nullptr) return status::kBadArgument;
  return RouteRead(handle, [&](RegistryInterface& tree, void* treeHandle) {
    return tree.GetKeyPermission(userId, treeHandle, keyPath, permission);
  });
}

unsigned int Registry::SetKeyPermission(unsigned int handle, const char* keyPath,
                                        unsigned char permission) {
  if (!MayChange()) return status::kNoRight;
  if (keyPath == nullptr) return status::kBadArgument;
  return RouteChange(handle, ChangeKind::kRightsChanged, keyPath, nullptr,
                     [&](RegistryInterface& tree, void* treeHandle) {
                       return tree.SetKeyPermission(userId, treeHandle, keyPath, permission);
                     });
}

unsigned int Registry::SetKeyWatch(unsigned int handle, const char* keyPath, unsigned char watch) {
  if (!MayChange()) return status::kNoRight;
  if (keyPath == nullptr) return status::kBadArgument;
  return RouteChange(handle, ChangeKind::kWatchChanged, keyPath, nullptr,
                     [&](RegistryInterface& tree, void* treeHandle) {
                       return tree.SetKeyWatch(userId, treeHandle, keyPath, watch);
                     });
}

unsigned int Registry::ListKeys(unsigned int handle, const char* keyPath, unsigned int first,
                                unsigned int, NameList* list, unsigned int flags) {
  if (!IsReady()) return status::kNoRight;
  if (list == nullptr) return status::kBadArgument;
  return RouteLook(handle, [&](RegistryInterface& tree, void* treeHandle) {
    return tree.ListKeys(userId, treeHandle, keyPath, first, list, flags);
  });
}

unsigned int Registry::ListValues(unsigned int handle, const char* keyPath, unsigned int first,
                                  unsigned int, NameList* list) {
  if (!IsReady()) return status::kNoRight;
  if (list == nullptr) return status::kBadArgument;
  return RouteRead(handle, [&](RegistryInterface& tree, void* treeHandle) {
    return tree.ListValues(userId, treeHandle, keyPath, first, list);
  });
}

unsigned int Registry::Walk(unsigned int handle, const char* keyPath, WalkVisitor& visitor) {
  if (!IsReady()) return status::kNoRight;
  return Route(handle, [&](RegistryInterface& tree, void* treeHandle) {
    const RegistryInstance::WalkScope walking(*instance);
    return tree.Walk(userId, treeHandle, keyPath, &visitor);
  });
}

unsigned int Registry::BackupKey(unsigned int handle, const char* keyPath, const char* backupFile) {
  if (!IsReady()) return status::kNoRight;
  if (keyPath == nullptr || backupFile == nullptr) return status::kBadArgument;
  return Route(handle, [&](RegistryInterface& tree, void* treeHandle) {
    return tree.BackupKeyTree(userId, treeHandle, keyPath, backupFile);
  });
}

unsigned int Registry::RestoreKey(unsigned int handle, const char* keyPath,
                                  const char* backupFile) {
  if (!MayChange()) return status::kNoRight;
  if (keyPath == nullptr || backupFile == nullptr) return status::kBadArgument;
  return RouteChange(handle, ChangeKind::kKeyRestored, keyPath, nullptr,
                     [&](RegistryInterface& tree, void* treeHandle) {
                       return tree.RestoreKeyTree(userId, treeHandle, keyPath, backupFile);
                     });
}

}  // namespace tamu::registry
