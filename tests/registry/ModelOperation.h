// A random operation on a registry, and what it has answered.
#pragma once

#include "tests/registry/RegistryRig.h"

namespace tamu::registry {

struct ModelOperation {
  unsigned int kind;
  bool isThroughHandle;
  std::string path;
  std::string name;
  unsigned int type;
  std::string data;
  unsigned long long number;
  unsigned int answer;
};

// Does it, and answers as it does. Restores come from the backup file.
inline unsigned int Apply(Registry& registry, const ModelOperation& operation, unsigned int handle,
                          const std::string& backup) {
  const char* const path = operation.path.c_str();
  const char* const name = operation.name.c_str();
  ExactValue value(operation.type, operation.data);
  switch (operation.kind) {
    case 0:
    case 1:
      return registry.CreateKey(handle, path, operation.number);
    case 2:
      return registry.CreateKey(handle, path);
    case 3:  // never the root
      return operation.number % 3 == 0 && operation.path.find('a') != std::string::npos
                 ? registry.DeleteKey(handle, path)
                 : 0;
    case 4:
    case 5:
      return registry.CreateValue(handle, path, name, &value);
    case 6:
    case 7:
      return registry.SetValue(handle, path, name, &value);
    case 8:
      return registry.DeleteValue(handle, path, name);
    case 9:
      return registry.SetDefaultValue(handle, path, operation.number);
    case 10:
      return registry.SetKeyPermission(handle, path,
                                       static_cast<unsigned char>(operation.number | 0x0F));
    default:
      return operation.number % 2 == 0 && operation.path.find('a') != std::string::npos
                 ? registry.RestoreKey(handle, path, backup.c_str())
                 : registry.SetKeyWatch(handle, path, static_cast<unsigned char>(operation.number));
  }
}

}  // namespace tamu::registry
