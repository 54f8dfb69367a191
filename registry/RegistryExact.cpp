// Operations that do exactly what they are told: arguments are checked here.
#include "registry/RegistryRouting.h"

namespace tamu::registry {

unsigned int Registry::MakeKey(const char* keyPath, bool withParents) {
  return ChangeFile(
      keyPath != nullptr, ChangeKind::kKeyCreated, keyPath, nullptr,
      [&](TernaryRegistry& tree) { return tree.MakeKey(userId, keyPath, withParents); });
}

unsigned int Registry::PutValue(const char* keyPath, const char* name, const Value& value,
                                bool withKey) {
  return ChangeFile(
      keyPath != nullptr && name != nullptr, ChangeKind::kValueSet, keyPath, name,
      [&](TernaryRegistry& tree) { return tree.PutValue(userId, keyPath, name, value, withKey); });
}

unsigned int Registry::ReadWholeValue(const char* keyPath, const char* name, Value* value) {
  const bool given = keyPath != nullptr && name != nullptr && value != nullptr;
  return OnFile(
      given, [&](TernaryRegistry& tree) { return tree.ReadWhole(userId, keyPath, name, value); });
}

unsigned int Registry::RemoveValue(const char* keyPath, const char* name) {
  return ChangeFile(keyPath != nullptr && name != nullptr, ChangeKind::kValueDeleted, keyPath, name,
                    [&](TernaryRegistry& tree) { return tree.RemoveValue(userId, keyPath, name); });
}

unsigned int Registry::RemoveKey(const char* keyPath) {
  return ChangeFile(keyPath != nullptr, ChangeKind::kKeyDeleted, keyPath, nullptr,
                    [&](TernaryRegistry& tree) { return tree.RemoveKey(userId, keyPath); });
}

unsigned int Registry::CopyKey(const char* keyPath, const char* newPath) {
  return ChangeFile(keyPath != nullptr && newPath != nullptr, ChangeKind::kKeyCreated, newPath,
                    nullptr,
                    [&](TernaryRegistry& tree) { return tree.CopyKey(userId, keyPath, newPath); });
}

unsigned int Registry::MoveKey(const char* keyPath, const char* newPath) {
  return ChangeFile(keyPath != nullptr && newPath != nullptr, ChangeKind::kKeyDeleted, keyPath,
                    nullptr,
                    [&](TernaryRegistry& tree) { return tree.MoveKey(userId, keyPath, newPath); });
}

}  // namespace tamu::registry
